// The child process of the log clock's test: for each zone (a TZ text) it names, a
// line "<zone> <Logger::currentTime()>", in a process where TZ was set before anything
// read the zone.
#include "Framework/Log/Logger.h"

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
    return 0;
}
