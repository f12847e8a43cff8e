// The logger behind contexts, each test with a logger of its own whose loader hands
// it a configuration made here, writing into a scratch folder: thresholds, the
// logger's own early records, the failures that turn logging off, and many threads
// through one FileWriter.
#include "Framework/Log/Context.h"
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/Logger.h"

#include "support/ExpectThrown.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <sys/timeb.h>

#include <cstdlib>
#include <memory>
#include <set>
#include <sstream>

using namespace Framework;
using namespace Framework::Log;

namespace {

// What the loader of the logger under test hands over.
Configuration* handedConfiguration = nullptr;
const wchar_t* handedLocation = L"";
bool loaderFails = false;
int loads = 0;

Configuration handOver(LogMode, String& location)
{
    ++loads;
    location = handedLocation;
    if (loaderFails)
        throw new TextFormatException(SITE, 3, 7, L"[writers", L"missing ]", L"broken.ini");
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
    LoggerTest() : scratch(L"Logger"), configuration(readyConfiguration(L"%(level)S %(context)S %(message)S"))
    {
        loads = 0;
        loaderFails = false;
        handedLocation = L"";
        handedConfiguration = &configuration;
        configuration.setWriter(fileWriter(L"log.txt"));
    }
    ~LoggerTest() override
    {
        currentLogger = nullptr;
        handedConfiguration = nullptr;
    }

    SharedPointer<Writer> fileWriter(const wchar_t* name, const wchar_t* formatter = L"test")
    {
        SharedPointer<Writer> writer(new FileWriter);
        writer->setProperty(L"dir", scratch.path().c_str());
        writer->setProperty(L"fileName", name);
        writer->setFormatter(configuration.formatters->get(formatter));
        return writer;
    }

    // The logger is made after the test has shaped the configuration.
    Logger& logger()
    {
        if (!made) {
            made.reset(new Logger(LogMode::Product, handOver));
            currentLogger = made.get();
        }
        return *made;
    }

    Context context(const wchar_t* name)
    {
        logger();
        return Context(name, provideLogger);
    }

    std::string logText() { return scratch.exists(L"log.txt") ? scratch.readFile(L"log.txt") : std::string(); }

    ScratchFolder scratch;
    Configuration configuration;
    std::unique_ptr<Logger> made;
};

}  // namespace

TEST_F(LoggerTest, MessagesAtOrAboveTheirThresholdAreWritten)
{
    configuration.setContextLevel(L"error", L"Quiet");
    configuration.setContextLevel(L"DEBUG", L"Exact");
    configuration.setContextLevel(L"Info", L"Info");
    configuration.setContextLevel(L"UNDEFINED", L"All");
    Context quiet = context(L"Quiet::Child");
    Context exact = context(L"Exact");
    Context info = context(L"Info");
    Context all = context(L"All");
    Context other = context(L"other");

    quiet.debug(LOG_SITE, "quiet debug");
    quiet.error(LOG_SITE, "quiet error %d", 40);
    exact.debug(LOG_SITE, "exact debug");
    info.debug(LOG_SITE, "info debug");
    all.debug(LOG_SITE, "all %S", L"debug");
    other.debug(LOG_SITE, "other debug");
    other.error(LOG_SITE, "other error");
    EXPECT_EQ("ERROR Quiet::Child quiet error 40\r\n"
              "DEBUG Exact exact debug\r\n"
              "DEBUG All all debug\r\n"
              "ERROR other other error\r\n",
              logText());
    EXPECT_EQ(1, loads);
    EXPECT_EQ(1u, logger().generation());

    // A new configuration reaches contexts that cached the old threshold.
    Configuration louder = readyConfiguration(L"%(message)S");
    louder.setContextLevel(L"DEBUG", L"Quiet");
    louder.setWriter(SharedPointer<Writer>(new FileWriter));
    louder.writer->setProperty(L"dir", scratch.path().c_str());
    louder.writer->setProperty(L"fileName", L"louder.txt");
    louder.writer->setFormatter(louder.formatters->get(L"test"));
    logger().adopt(louder);
    quiet.debug(LOG_SITE, "now heard");
    EXPECT_EQ("now heard\r\n", scratch.readFile(L"louder.txt"));
}

// Whatever writer the configuration names, a record logged while an installation's
// log is bound also goes there, in the "Line" format, and first: a configured writer
// that fails can't keep it away. A configuration that names an InstallerLogWriter
// itself gives it its own format, and the line arrives once.
TEST_F(LoggerTest, TheInstallationsLogJoinsTheConfiguredWriter)
{
    KeptInstallerLog installation;
    InstallerLog::Binding binding(installation);
    context(L"Framework").error(LOG_SITE, "fatal %d", 1);
    EXPECT_EQ("ERROR Framework fatal 1\r\n", logText());
    ASSERT_EQ(1u, installation.lines.size());
    // The "Line" format: "2013-02-20 08:21:24 <thread> ERROR Framework fatal 1".
    const std::wstring line = installation.lines[0];
    const std::wstring end = L" ERROR Framework fatal 1";
    ASSERT_GT(line.size(), 20 + end.size()) << narrowForTest(line.c_str());
    EXPECT_EQ(end, line.substr(line.size() - end.size()));
    EXPECT_EQ(L'-', line[4]);
    EXPECT_EQ(L':', line[13]);

    Configuration failing = readyConfiguration();
    failing.setWriter(SharedPointer<Writer>(new FileWriter));  // no formatter: fails at every record
    handedConfiguration = &failing;
    made.reset();
    context(L"Framework").error(LOG_SITE, "second");
    EXPECT_EQ(2u, installation.lines.size()) << "a failing writer came first";

    Configuration named = readyConfiguration();
    SharedPointer<MultiWriter> writers(new MultiWriter);
    SharedPointer<Writer> own(new InstallerLogWriter);
    own->setFormatter(verbatimFormatter());
    writers->add(own);
    named.setWriter(writers);
    handedConfiguration = &named;
    made.reset();
    context(L"Framework").error(LOG_SITE, "third");
    EXPECT_EQ((std::vector<std::wstring>{L"third"}),
              std::vector<std::wstring>(installation.lines.begin() + 2, installation.lines.end()));
}

TEST_F(LoggerTest, OwnRecordsComeFirstInOrderWithTheirOwnTimes)
{
    configuration = readyConfiguration(L"%(elapsedtime)S|%(level)S %(context)S %(message)S");
    configuration.setWriter(fileWriter(L"log.txt"));
    configuration.setContextLevel(L"INFO", L"Framework::Log::Logger");
    handedConfiguration = &configuration;
    handedLocation = L"C:\\config\\KorvalinLogConfig.ini";
    Context quiet = context(L"Quiet");

    // The first call configures even below the threshold; the reports wait.
    quiet.debug(LOG_SITE, "not written");
    EXPECT_EQ(1, loads);
    logger().addOwnRecord(SITE, L"made second", Level::Warning);
    logger().addOwnRecord(SITE, L"below its threshold", Level::Debug);
    EXPECT_FALSE(scratch.exists(L"log.txt"));
    Sleep(300);
    quiet.error(LOG_SITE, "the message");
    logger().addOwnRecord(SITE, L"after the flush", Level::Error);
    quiet.error(LOG_SITE, "the next message");

    std::istringstream lines(logText());
    std::string line;
    std::vector<unsigned long> elapsed;
    std::vector<std::string> texts;
    while (std::getline(lines, line)) {
        const size_t bar = line.find('|');
        ASSERT_NE(std::string::npos, bar) << line;
        elapsed.push_back(std::stoul(line.substr(0, bar)));
        texts.push_back(line.substr(bar + 1));
    }
    const std::vector<std::string> expected = {
        "INFO Framework::Log::Logger Used configuration from C:\\config\\KorvalinLogConfig.ini\r",
        "WARNING Framework::Log::Logger made second\r",
        "ERROR Quiet the message\r",
        "ERROR Quiet the next message\r",
    };
    EXPECT_EQ(expected, texts);
    ASSERT_EQ(4u, elapsed.size());
    EXPECT_LE(elapsed[0], elapsed[1]);
    EXPECT_GE(elapsed[2], elapsed[1] + 250) << "own records carry the time they were made";
}

TEST_F(LoggerTest, FailedConfigurationIsReportedAndTheDefaultsTakeOver)
{
    loaderFails = true;
    handedLocation = L"C:\\broken.ini";
    // The default writer writes log.txt in the working folder: make that the scratch folder.
    wchar_t before[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, before);
    scratch.writeFile(L"log.txt", "the run before\r\n");
    ASSERT_TRUE(SetCurrentDirectoryW(scratch.path().c_str()));
    Context framework = context(L"Framework");
    framework.error(LOG_SITE, "written by the default");
    SetCurrentDirectoryW(before);
    made.reset();  // closes the file

    EXPECT_EQ("the run before\r\n", scratch.readFile(L"log001.txt"));
    const std::string text = scratch.readFile(L"log.txt");
    const std::string first = "Thread000 WARNING Framework::Log::Logger Failed configuration at C:\\broken.ini\r\n";
    EXPECT_EQ(20u, text.find(first)) << text;
    EXPECT_NE(std::string::npos, text.find("WARNING Framework::Log::Logger \r\nfileName: broken.ini\r\nline: 3"))
        << text;
    EXPECT_NE(std::string::npos, text.find(" Thread000 ERROR Framework written by the default\r\n")) << text;
    // Its INFO report stays below the default threshold.
    EXPECT_EQ(std::string::npos, text.find("Used default writer")) << text;
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
    SharedPointer<Writer> noFormatter(new FileWriter);
    noFormatter->setProperty(L"dir", scratch.path().c_str());
    noFormatter->setProperty(L"fileName", L"again.txt");
    again.setWriter(noFormatter);
    logger().adopt(again);
    framework.error(LOG_SITE, "lost: the writer has no formatter");
    noFormatter->setFormatter(again.formatters->get(L"test"));
    framework.error(LOG_SITE, "lost too: logging is off");
    EXPECT_FALSE(scratch.exists(L"again.txt"));
    logger().adopt(again);
    framework.error(LOG_SITE, "on again");
    EXPECT_EQ("on again\r\n", scratch.readFile(L"again.txt"));
}

TEST_F(LoggerTest, ContextWithoutLoggerOrProviderFailsLoudly)
{
    Context none;
    expectThrown<ErrorException>([&] { none.error(LOG_SITE, "x"); });
    // A logger with no configuration at all has no writer to dispatch to.
    Logger bare(LogMode::Product, handOver);
    expectThrown<ErrorException>([&] { bare.dispatch(recordWith(L"x")); });
}

namespace {

const int threadCount = 8;
// A few hundred lines a thread interleave as thoroughly as thousands: every line is
// committed on its own, so the threads meet at the lock on each one.
const int recordsPerThread = 300;
const std::string payload(60, 'x');

struct ThreadJob
{
    Context* context;
    int thread;
};

DWORD WINAPI logMany(void* parameter)
{
    const ThreadJob* job = static_cast<const ThreadJob*>(parameter);
    for (int i = 0; i < recordsPerThread; ++i)
        job->context->error(LOG_SITE, "%d %d %s", job->thread, i, payload.c_str());
    return 0;
}

}  // namespace

TEST_F(LoggerTest, ManyThreadsThroughOneFileWriterLoseNoLineAndBreakNone)
{
    configuration = readyConfiguration(L"%(message)S");
    configuration.setWriter(fileWriter(L"log.txt"));
    handedConfiguration = &configuration;
    Context shared = context(L"Threads");
    ThreadJob jobs[threadCount];
    HANDLE threads[threadCount];
    for (int t = 0; t < threadCount; ++t) {
        jobs[t] = ThreadJob{&shared, t};
        threads[t] = CreateThread(nullptr, 0, logMany, &jobs[t], 0, nullptr);
        ASSERT_NE(nullptr, threads[t]);
    }
    WaitForMultipleObjects(threadCount, threads, TRUE, INFINITE);
    for (HANDLE thread : threads)
        CloseHandle(thread);

    const std::string text = logText();
    std::vector<int> next(threadCount, 0);
    size_t start = 0;
    size_t lines = 0;
    int broken = 0;
    while (start < text.size()) {
        const size_t end = text.find("\r\n", start);
        ASSERT_NE(std::string::npos, end) << "the file ends inside a line";
        std::istringstream fields(text.substr(start, end - start));
        int thread = -1, index = -1;
        std::string rest;
        fields >> thread >> index >> rest;
        if (thread < 0 || thread >= threadCount || rest != payload || !fields.eof()) {
            if (++broken < 5)
                ADD_FAILURE() << "broken line: " << text.substr(start, end - start);
        } else {
            // One thread's lines keep their order.
            EXPECT_EQ(next[thread], index);
            next[thread] = index + 1;
        }
        ++lines;
        start = end + 2;
    }
    EXPECT_EQ(0, broken);
    EXPECT_EQ(size_t(threadCount * recordsPerThread), lines);
    for (int t = 0; t < threadCount; ++t)
        EXPECT_EQ(recordsPerThread, next[t]) << "thread " << t;
}

// Log times are local: UTC and the zone's offset, as the runtime reads the zone from
// TZ. (Zones with daylight rules are left out: under Wine the runtime keeps the
// daylight bias of the first zone it read, whatever TZ says later.)
TEST(LoggerTimeTest, TheLocalClockIsUtcPlusTheZone)
{
    struct Row
    {
        const char* zone;
        int64_t minutesAhead;
    } rows[] = {{"UTC0", 0}, {"EST5", -300}, {"IST-5:30", 330}};
    for (const Row& row : rows) {
        _putenv((std::string("TZ=") + row.zone).c_str());
        struct __timeb64 utc;
        _ftime64(&utc);
        const int64_t expected = (int64_t(utc.time) + row.minutesAhead * 60) * 1000 + utc.millitm;
        const int64_t local = int64_t(Logger::currentTime());
        EXPECT_LE(expected, local) << row.zone;
        EXPECT_GT(expected + 1000, local) << row.zone;
    }
    _putenv("TZ=");
    _tzset();
}
