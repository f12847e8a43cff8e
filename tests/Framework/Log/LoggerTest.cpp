// The logger's clock. The logger at work is seen in LogConfigurationTest, with the
// configurations it reads.
#include "Framework/Log/Logger.h"

#include "support/ActionLibrary.h"
#include "support/Installer.h"

#include <gtest/gtest.h>

#include <sys/timeb.h>

#include <sstream>

using namespace Framework;
using namespace Framework::Log;

// Log times are local: UTC with the zone's offset and, in a zone with daylight rules,
// its daylight bias all year. A child reads the zones, where TZ was set from the start:
// under Wine a process that read the system's zone first keeps that zone's bias.
TEST(LoggerTimeTest, TheLocalClockIsUtcPlusTheZoneAndItsDaylightBias)
{
    const std::pair<std::string, int64_t> rows[] = {
        {"UTC0", 0}, {"EST5", -300}, {"IST-5:30", 330}, {"EST5EDT", -240}, {"CET-1CEST", 120},
    };
    std::wstring command = L"\"" + testSetting("KORVALIN_LOG_CONSOLE_CHILD") + L"\"";
    for (const auto& [zone, minutesAhead] : rows)
        command += L" " + std::wstring(zone.begin(), zone.end());
    _putenv("TZ=UTC0");
    std::string output;
    __timeb64 before, after;
    _ftime64(&before);
    EXPECT_EQ(0u, runProgram(command, output));
    _ftime64(&after);
    _putenv("TZ=");
    std::istringstream times(output);
    for (const auto& [zone, minutesAhead] : rows) {
        std::string printed;
        int64_t local = 0;
        times >> printed >> local;
        EXPECT_LE(before.time * 1000 + before.millitm + minutesAhead * 60000, local) << zone;
        EXPECT_GE(after.time * 1000 + after.millitm + minutesAhead * 60000, local) << zone;
    }
}
