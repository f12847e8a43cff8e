// The child process of the console writer's test: logs two texts through a
// ConsoleWriter, which the test reads from this program's standard output.
#include "Framework/Log/ConsoleWriter.h"

#include "support/LogRecords.h"

int main()
{
    Framework::Log::ConsoleWriter writer;
    writer.setFormatter(verbatimFormatter());
    writer.write(recordWith(L"100% sure: %d %S %%"));
    writer.write(recordWith(L"first\nsecond"));
    return 0;
}
