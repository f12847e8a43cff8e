// The child process of the log tests. Without arguments it logs two texts through a
// ConsoleWriter; with zones (TZ texts) it prints "<zone> <Logger::currentTime()>" a
// line for each, in a process where TZ was set before anything read the zone.
#include "Framework/Log/ConsoleWriter.h"
#include "Framework/Log/Logger.h"

#include "support/LogRecords.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    for (int i = 1; i < argc; ++i) {
        _putenv((std::string("TZ=") + argv[i]).c_str());
        std::printf("%s %" PRIu64 "\n", argv[i], Framework::Log::Logger::currentTime());
    }
    if (argc > 1)
        return 0;
    Framework::Log::ConsoleWriter writer;
    writer.setFormatter(verbatimFormatter());
    writer.write(recordWith(L"100% sure: %d %S %%"));
    writer.write(recordWith(L"first\nsecond"));
    return 0;
}
