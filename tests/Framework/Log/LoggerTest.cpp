// The logger behind contexts, each test with loggers of its own whose loader hands
// them a configuration made here, writing into a scratch folder.
#include "Framework/Log/Context.h"
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/Logger.h"

#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/Installer.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/timeb.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <thread>

using namespace Framework;
using namespace Framework::Log;

namespace {

Configuration handed;
Configuration handOver(LogMode, String&)
{
    return handed;
}

Logger* current = nullptr;
Logger* provide()
{
    return current;
}

class LoggerTest : public ::testing::Test
{
protected:
    LoggerTest() : scratch(L"Logger") { handed = configured(L"%(level)S %(context)S %(message)S", L"log.txt"); }
    ~LoggerTest() override
    {
        current = nullptr;
        handed = Configuration();
    }

    // Writes `file` in the scratch folder by the template.
    Configuration configured(const wchar_t* line, const wchar_t* file)
    {
        Configuration configuration = readyConfiguration(line);
        configuration.setWriter(SharedPointer<Writer>(new FileWriter));
        configuration.writer->setProperty(L"dir", scratch.path().c_str());
        configuration.writer->setProperty(L"fileName", file);
        configuration.writer->setFormatter(configuration.formatters->get(L"test"));
        return configuration;
    }

    // A new logger, which the loader will hand what `handed` holds at its first message.
    void makeLogger()
    {
        logger.reset(new Logger(LogMode::Product, handOver));
        current = logger.get();
    }

    std::string text(const wchar_t* file = L"log.txt") { return scratch.exists(file) ? scratch.readFile(file) : ""; }

    ScratchFolder scratch;
    std::unique_ptr<Logger> logger;
};

}  // namespace

// A record logged while an installation's log is bound goes there too, in the "Line"
// format, and first: a configured writer that fails can't keep it away. A configuration
// that names an InstallerLogWriter itself gives it its own format, and the line comes once.
TEST_F(LoggerTest, TheInstallationsLogJoinsTheConfiguredWriter)
{
    KeptInstallerLog installation;
    InstallerLog::Binding binding(installation);
    Configuration failing = readyConfiguration();
    failing.setWriter(SharedPointer<Writer>(new FileWriter));  // no formatter: fails at every record
    Configuration named = readyConfiguration();
    SharedPointer<MultiWriter> writers(new MultiWriter);
    writers->add(SharedPointer<Writer>(new InstallerLogWriter));
    writers->setFormatter(verbatimFormatter());
    named.setWriter(writers);
    for (const Configuration& next : {handed, failing, named}) {
        handed = next;
        makeLogger();
        Context(L"Framework", provide).error(LOG_SITE, "fatal %d", 1);
    }
    EXPECT_EQ("ERROR Framework fatal 1\r\n", text());
    ASSERT_EQ(3u, installation.lines.size());
    // Behind the date and time.
    EXPECT_EQ(L" Thread000 ERROR Framework fatal 1", installation.lines[0].substr(19));
    EXPECT_EQ(L" Thread000 ERROR Framework fatal 1", installation.lines[1].substr(19));
    EXPECT_EQ(L"fatal 1", installation.lines[2]);
}

TEST_F(LoggerTest, FailuresTurnLoggingOffUntilTheNextConfigurationWhichEveryContextSees)
{
    makeLogger();
    Context framework(L"Framework", provide);
    framework.error(LOG_SITE, "before");
    // The format engine refuses a result of 20 million characters.
    framework.error(LOG_SITE, "%20000000d", 1);
    framework.error(LOG_SITE, "after");
    EXPECT_EQ("ERROR Framework before\r\n", text());
    // The context that cached its threshold sees the new one.
    Configuration again = configured(L"%(message)S", L"again.txt");
    again.setContextLevel(L"DEBUG", L"Framework");
    logger->adopt(again);
    framework.debug(LOG_SITE, "on again");
    EXPECT_EQ("on again\r\n", text(L"again.txt"));

    // A logger with no configuration has no writer, a context without a logger no provider.
    Logger bare(LogMode::Product, handOver);
    expectThrown<ErrorException>([&] { bare.dispatch(recordWith(L"x")); });
    expectThrown<ErrorException>([] { Context().error(LOG_SITE, "x"); });
}

// Every line is committed on its own, so a few hundred a thread meet at the lock as
// often as thousands would.
TEST_F(LoggerTest, ManyThreadsThroughOneFileWriterLoseNoLineAndBreakNone)
{
    const int threadCount = 8;
    const int recordsPerThread = 300;
    const std::string payload(60, 'x');
    handed = configured(L"%(message)S", L"log.txt");
    makeLogger();
    Context shared(L"Threads", provide);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < recordsPerThread; ++i)
                shared.error(LOG_SITE, "%d %d %s", t, i, payload.c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    // Each line whole, and each thread's lines in their order.
    std::istringstream lines(text());
    std::vector<int> next(threadCount, 0);
    int broken = 0;
    for (std::string line; std::getline(lines, line);) {
        const int thread = std::atoi(line.c_str());
        if (thread >= 0 && thread < threadCount &&
            line == std::to_string(thread) + " " + std::to_string(next[thread]) + " " + payload + "\r")
            ++next[thread];
        else
            ++broken;
    }
    EXPECT_EQ(0, broken);
    EXPECT_EQ(std::vector<int>(threadCount, recordsPerThread), next);
}

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
