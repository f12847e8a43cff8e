// The logger behind contexts, each test with a logger of its own whose loader hands
// it a configuration made here, writing into a scratch folder.
#include "Framework/Log/Context.h"
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/Logger.h"

#include "support/ExpectThrown.h"
#include "support/Installer.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <thread>

using namespace Framework;
using namespace Framework::Log;

namespace {

// What the loader of the logger under test hands over.
Configuration* handedConfiguration = nullptr;
const wchar_t* handedLocation = L"";
int loads = 0;

Configuration handOver(LogMode, String& location)
{
    ++loads;
    location = handedLocation;
    return *handedConfiguration;
}

Logger* currentLogger = nullptr;
Logger* provideLogger()
{
    return currentLogger;
}

class LoggerTest : public ::testing::Test
{
protected:
    LoggerTest() : scratch(L"Logger") { use(L"%(level)S %(context)S %(message)S"); }
    ~LoggerTest() override { currentLogger = nullptr; }

    // A configuration writing log.txt in the scratch folder with the template.
    void use(const wchar_t* line)
    {
        loads = 0;
        handedLocation = L"";
        configuration = readyConfiguration(line);
        configuration.setWriter(fileWriter(configuration, L"log.txt"));
        handedConfiguration = &configuration;
    }

    SharedPointer<Writer> fileWriter(const Configuration& to, const wchar_t* name)
    {
        SharedPointer<Writer> writer(new FileWriter);
        writer->setProperty(L"dir", scratch.path().c_str());
        writer->setProperty(L"fileName", name);
        writer->setFormatter(to.formatters->get(L"test"));
        return writer;
    }

    // The logger is made at the first context, after the test has shaped the configuration.
    Context context(const wchar_t* name)
    {
        if (!made) {
            made.reset(new Logger(LogMode::Product, handOver));
            currentLogger = made.get();
        }
        return Context(name, provideLogger);
    }

    std::string logText() { return scratch.exists(L"log.txt") ? scratch.readFile(L"log.txt") : std::string(); }

    ScratchFolder scratch;
    Configuration configuration;
    std::unique_ptr<Logger> made;
};

}  // namespace

TEST_F(LoggerTest, MessagesAtOrAboveTheirThresholdAreWrittenAndANewConfigurationReachesEveryContext)
{
    configuration.setContextLevel(L"error", L"Quiet");
    configuration.setContextLevel(L"DEBUG", L"Exact");
    configuration.setContextLevel(L"UNDEFINED", L"All");
    Context quiet = context(L"Quiet::Child");
    Context exact = context(L"Exact");
    Context all = context(L"All");
    Context other = context(L"other");
    quiet.debug(LOG_SITE, "quiet debug");
    quiet.error(LOG_SITE, "quiet error %d", 40);
    exact.debug(LOG_SITE, "exact debug");
    all.debug(LOG_SITE, "all %S", L"debug");
    other.debug(LOG_SITE, "other debug");
    other.error(LOG_SITE, "other error");
    EXPECT_EQ("ERROR Quiet::Child quiet error 40\r\nDEBUG Exact exact debug\r\nDEBUG All all debug\r\n"
              "ERROR other other error\r\n",
              logText());
    EXPECT_EQ(1, loads);

    // Contexts that cached the old threshold see the new one.
    Configuration louder = readyConfiguration(L"%(message)S");
    louder.setContextLevel(L"DEBUG", L"Quiet");
    louder.setWriter(fileWriter(louder, L"louder.txt"));
    made->adopt(louder);
    quiet.debug(LOG_SITE, "now heard");
    EXPECT_EQ("now heard\r\n", scratch.readFile(L"louder.txt"));
}

// A record logged while an installation's log is bound goes there too, and first: a
// configured writer that fails can't keep it away. A configuration that names an
// InstallerLogWriter itself gives it its own format, and the line arrives once.
TEST_F(LoggerTest, TheInstallationsLogJoinsTheConfiguredWriter)
{
    KeptInstallerLog installation;
    InstallerLog::Binding binding(installation);
    context(L"Framework").error(LOG_SITE, "fatal %d", 1);
    EXPECT_EQ("ERROR Framework fatal 1\r\n", logText());
    ASSERT_EQ(1u, installation.lines.size());
    // In the "Line" format, behind the date and time.
    EXPECT_EQ(L" Thread000 ERROR Framework fatal 1", installation.lines[0].substr(19));

    Configuration failing = readyConfiguration();
    failing.setWriter(SharedPointer<Writer>(new FileWriter));  // no formatter: fails at every record
    Configuration named = readyConfiguration();
    SharedPointer<MultiWriter> writers(new MultiWriter);
    SharedPointer<Writer> own(new InstallerLogWriter);
    own->setFormatter(verbatimFormatter());
    writers->add(own);
    named.setWriter(writers);
    for (Configuration* next : {&failing, &named}) {
        handedConfiguration = next;
        made.reset();
        context(L"Framework").error(LOG_SITE, "again");
    }
    ASSERT_EQ(3u, installation.lines.size());
    EXPECT_EQ(L" Thread000 ERROR Framework again", installation.lines[1].substr(19));
    EXPECT_EQ(L"again", installation.lines[2]);
}

TEST_F(LoggerTest, OwnRecordsComeFirstInOrderWithTheirOwnTimes)
{
    use(L"%(elapsedtime)S|%(level)S %(context)S %(message)S");
    configuration.setContextLevel(L"INFO", L"Framework::Log::Logger");
    handedLocation = L"C:\\config\\KorvalinLogConfig.ini";
    Context quiet = context(L"Quiet");
    // The first call configures even below the threshold; the reports wait.
    quiet.debug(LOG_SITE, "not written");
    EXPECT_EQ(1, loads);
    made->addOwnRecord(SITE, L"made second", Level::Warning);
    made->addOwnRecord(SITE, L"below its threshold", Level::Debug);
    EXPECT_FALSE(scratch.exists(L"log.txt"));
    Sleep(300);
    quiet.error(LOG_SITE, "the message");
    made->addOwnRecord(SITE, L"after the flush", Level::Error);
    quiet.error(LOG_SITE, "the next message");

    std::istringstream lines(logText());
    std::string texts;
    std::vector<unsigned long> elapsed;
    for (std::string line; std::getline(lines, line, '|');) {
        elapsed.push_back(std::stoul(line));
        std::getline(lines, line);
        texts += line + "\n";
    }
    EXPECT_EQ("INFO Framework::Log::Logger Used configuration from C:\\config\\KorvalinLogConfig.ini\r\n"
              "WARNING Framework::Log::Logger made second\r\n"
              "ERROR Quiet the message\r\n"
              "ERROR Quiet the next message\r\n",
              texts);
    ASSERT_EQ(4u, elapsed.size());
    EXPECT_GE(elapsed[2], elapsed[1] + 250) << "own records carry the time they were made";
}

TEST_F(LoggerTest, FailuresTurnLoggingOffUntilTheNextConfiguration)
{
    Context framework = context(L"Framework");
    framework.error(LOG_SITE, "before");
    // The format engine refuses a result of 20 million characters.
    framework.error(LOG_SITE, "%20000000d", 1);
    framework.error(LOG_SITE, "after");
    EXPECT_EQ("ERROR Framework before\r\n", logText());

    Configuration again = readyConfiguration(L"%(message)S");
    again.setWriter(fileWriter(again, L"again.txt"));
    made->adopt(again);
    framework.error(LOG_SITE, "on again");
    EXPECT_EQ("on again\r\n", scratch.readFile(L"again.txt"));
    // A logger with no configuration at all has no writer to dispatch to, and a
    // context without a logger has no provider.
    Logger bare(LogMode::Product, handOver);
    expectThrown<ErrorException>([&] { bare.dispatch(recordWith(L"x")); });
    expectThrown<ErrorException>([&] { Context().error(LOG_SITE, "x"); });
}

// Every line is committed on its own, so a few hundred a thread meet at the lock as
// often as thousands would.
TEST_F(LoggerTest, ManyThreadsThroughOneFileWriterLoseNoLineAndBreakNone)
{
    const int threadCount = 8;
    const int recordsPerThread = 300;
    const std::string payload(60, 'x');
    use(L"%(message)S");
    Context shared = context(L"Threads");
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < recordsPerThread; ++i)
                shared.error(LOG_SITE, "%d %d %s", t, i, payload.c_str());
        });
    }
    for (std::thread& thread : threads)
        thread.join();

    std::istringstream lines(logText());
    std::vector<int> next(threadCount, 0);
    int broken = 0;
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        int thread = -1, index = -1;
        std::string rest;
        fields >> thread >> index >> rest;
        // One thread's lines keep their order.
        if (line.empty() || line.back() != '\r' || thread < 0 || thread >= threadCount || index != next[thread] ||
            rest != payload || !(fields >> rest).eof())
            ++broken;
        else
            ++next[thread];
    }
    EXPECT_EQ(0, broken);
    EXPECT_EQ(std::vector<int>(threadCount, recordsPerThread), next);
}

// Log times are local: UTC with the zone's offset and, in a zone with daylight rules,
// its daylight bias all year. A child reads each zone, where TZ was set from the start:
// under Wine a process that read the system's zone first keeps that zone's bias.
TEST(LoggerTimeTest, TheLocalClockIsUtcPlusTheZoneAndItsDaylightBias)
{
    struct Row
    {
        const char* zone;
        int64_t minutesAhead;
    } rows[] = {{"UTC0", 0}, {"EST5", -300}, {"IST-5:30", 330}, {"EST5EDT", -240}, {"CET-1CEST", 120}};
    wchar_t child[MAX_PATH];
    ASSERT_NE(0u, GetEnvironmentVariableW(L"KORVALIN_LOG_CONSOLE_CHILD", child, MAX_PATH));
    std::wstring command = std::wstring(L"\"") + child + L"\"";
    for (const Row& row : rows)
        command += L" " + std::wstring(row.zone, row.zone + std::strlen(row.zone));
    const auto utcNow = [] {
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        return int64_t((uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime) / 10000 - 11644473600000ull);
    };
    _putenv("TZ=UTC0");
    std::string output;
    const int64_t before = utcNow();
    EXPECT_EQ(0u, runProgram(command, output));
    const int64_t after = utcNow();
    _putenv("TZ=");
    std::istringstream times(output);
    for (const Row& row : rows) {
        std::string zone;
        int64_t local = 0;
        times >> zone >> local;
        EXPECT_EQ(row.zone, zone);
        EXPECT_LE(before + row.minutesAhead * 60000, local) << row.zone;
        EXPECT_GE(after + row.minutesAhead * 60000, local) << row.zone;
    }
}
