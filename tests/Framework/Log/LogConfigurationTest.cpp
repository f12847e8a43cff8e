// Where the logger finds its configuration and what it makes of it, on the real disk:
// files in a scratch working folder and beside this program, the environment
// variable, and the resource built into this program ("[contexts] default=DEBUG");
// the logger at work with what it found, and its clock; and what the fatal handlers
// leave in the log.
#include "Framework/Log/ConfigurationLoader.h"

#include "Framework/Exceptions.h"
#include "Framework/Io/MemoryInputStream.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/Installer.h"
#include "support/LogRecords.h"
#include "support/MessageBoxWatcher.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"
#include "support/WorkingFolder.h"

#include <gtest/gtest.h>

#include <sys/timeb.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <thread>
#include <tuple>
#include <typeinfo>

using namespace Framework;
using namespace Framework::Log;

namespace {

// The text without the date and time that start a log line.
std::string withoutTimes(const std::string& text)
{
    std::istringstream in(text);
    std::string lines;
    for (std::string line; std::getline(in, line);) {
        const bool timed = line.size() > 19 && line[4] == '-' && line[13] == ':';
        lines += line.substr(timed ? 19 : 0) + "\n";
    }
    return lines;
}

Logger* testLogger = nullptr;

class LogConfigurationTest : public ::testing::Test
{
protected:
    LogConfigurationTest() : scratch(L"logconfig"), moved(scratch.path())
    {
        wchar_t program[MAX_PATH];
        beside.assign(program, GetModuleFileNameW(nullptr, program, MAX_PATH));
        beside.erase(beside.rfind(L'\\') + 1);
    }
    ~LogConfigurationTest() override
    {
        for (const wchar_t* name : {L"KorvalinLogConfig.ini", L"named.ini"})
            DeleteFileW((beside + name).c_str());
        _wputenv(L"KORVALIN_LOG_CONFIG=");
    }

    // A context of the test's logger, made as the process's first message makes one: it
    // looks for its configuration when a context first asks for its threshold.
    Context context(const wchar_t* name)
    {
        if (!logger) {
            logger.reset(new Logger(LogMode::Product));
            testLogger = logger.get();
        }
        return Context(name, [] { return testLogger; });
    }

    // One ERROR message from a new logger; the log file as that logger left it.
    std::string logOnce()
    {
        logger.reset();
        context(L"Test").error(LOG_SITE, "after %S", L"configuration");
        logger.reset();
        return read(L"log.txt");
    }

    std::string read(const wchar_t* file) { return scratch.exists(file) ? scratch.readFile(file) : ""; }

    ScratchFolder scratch;
    std::wstring beside;
    WorkingFolder moved;
    std::unique_ptr<Logger> logger;
};

TEST_F(LogConfigurationTest, TheSearchTakesTheFirstPlaceThatHasAFile)
{
    const std::wstring places[] = {scratch.at(L"KorvalinLogConfig.ini"), beside + L"KorvalinLogConfig.ini",
                                   scratch.at(L"named.ini"), beside + L"named.ini"};
    for (const std::wstring& place : places)
        EXPECT_TRUE(CloseHandle(CreateFileW(place.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr)));
    _wputenv(L"KORVALIN_LOG_CONFIG=named.ini");
    for (const std::wstring& place : places) {
        loadConfiguration(LogMode::Product);
        EXPECT_EQ(String(place.c_str()), configurationLocation());
        DeleteFileW(place.c_str());
    }
    EXPECT_EQ(Level::Debug, loadConfiguration(LogMode::Product).defaultLevel);
    EXPECT_EQ(String(L"KorvalinLogConfig"), configurationLocation());
}

// A configuration a support engineer might write, read by a child program that logs
// as the library does: its own line format for the file, whose formatters come later
// in the text and take the keys of [formatters] before their own, the built-in line on
// the console, and the run before kept as setup001.txt.
TEST_F(LogConfigurationTest, AConfigurationWithItsOwnFormattersWritesAFileAndTheConsole)
{
    scratch.writeFile(L"KorvalinLogConfig.ini",
                      "[contexts]\ndefault=WARNING\nFramework=INFO\nFramework::Log::Logger=INFO\nOther=ERROR\n"
                      "[formatters]\nformat=<%S>\n"
                      "[formatters.myline]\ntype=LineFormatter\nformat=%(shortlevel)S %(context)S: %(text)S\n"
                      "[formatters.shortlevel]\ntype=LevelFormatter\nformat=%-7S\n"
                      "[formatters.text]\ntype=MessageFormatter\n"
                      "[writers]\nactive=main\nactive=console\n"
                      "[writers.main]\ntype=RotatedFileWriter\nformatter=myline\nfileName=setup.txt\ndir=" +
                          narrow(scratch.path()) + "logs\n"
                      "[writers.console]\nformatter=Line\n");
    scratch.makeFolder(L"logs");
    scratch.writeFile(L"logs\\setup.txt", "the run before\r\n");
    std::string console;
    EXPECT_EQ(0u, runProgram(L"\"" + testSetting("KORVALIN_FATAL_PROBE") + L"\" log", console));

    const std::string used = "Used configuration from " + narrow(scratch.at(L"KorvalinLogConfig.ini"));
    EXPECT_EQ("INFO    Framework::Log::Logger: <" + used + ">\r\n"
              "ERROR   Framework: <first 100% %d>\r\n"
              "ERROR   Other: <second>\r\n",
              scratch.readFile(L"logs\\setup.txt"));
    EXPECT_EQ("the run before\r\n", scratch.readFile(L"logs\\setup001.txt"));
    EXPECT_EQ(" Thread000 INFO Framework::Log::Logger " + used + "\r\n"
              " Thread000 ERROR Framework first 100% %d\r\n"
              " Thread000 ERROR Other second\r\n"
              "returned\r\n",
              withoutTimes(console));
}

// Each way a configuration can be broken, by the exact class its reader raises.
TEST(LogConfigurationReaderTest, EachBrokenConfigurationRaisesItsFailure)
{
    // The text's form, a formatter's template and a loop are seen in IniParserTest,
    // FormatterTest and the default writer's test.
    const std::pair<const char*, const std::type_info&> rows[] = {
        {"[contexts]\ndefault=LOUD\n", typeid(LookupException)},
        {"[formatters.f]\ntype=NoSuchFormatter\n", typeid(ValueNotInitializedException)},
        {"[formatters.line]\ntype=LineFormatter\n", typeid(ValueExistsException)},
        {"[writers]\n[writers.file]\nformatter=Line\n", typeid(LookupException)},
        {"[writers]\nactive=missing\n", typeid(LookupException)},
        {"[writers]\nactive=file\n[writers]\n[writers.file]\nformatter=Line\n", typeid(FormatException)},
        {"[writers]\nactive=file\n[writers.file]\nformatter=NoSuch\n", typeid(LookupException)},
        {"[writers]\nactive=r\n[writers.r]\ntype=RotatedFileWriter\nformatter=Line\nbackupCount=many\n",
         typeid(FormatException)},
        {"[writers]\nactive=w\n[writers.w]\nformatter=Line\n", typeid(ValueNotInitializedException)},
    };
    for (const auto& [text, failure] : rows) {
        Io::MemoryInputStream stream(text, uint32_t(std::strlen(text)));
        EXPECT_EQ(failure.name(), thrownClass([&] { readConfiguration(stream); })) << text;
    }
}

// Without a writer of its own, or broken, a configuration ends in the default writer,
// which keeps the run before as log001.txt.
TEST_F(LogConfigurationTest, TheDefaultWriterTakesOverFromAConfigurationWithoutWritersOrABrokenOne)
{
    const std::string location = narrow(scratch.at(L"KorvalinLogConfig.ini"));
    scratch.writeFile(L"log.txt", "the run before\r\n");
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts]\nDEFAULT=ERROR\nFramework::Log::Logger=INFO\n");
    EXPECT_EQ(" Thread000 INFO Framework::Log::Logger Used configuration from " + location + "\r\n" +
                  " Thread000 INFO Framework::Log::Logger Used default writer and formatter\r\n" +
                  " Thread000 ERROR Test after configuration\r\n",
              withoutTimes(logOnce()));
    EXPECT_EQ("the run before\r\n", scratch.readFile(L"log001.txt"));

    // Dropped whole, its contexts too: two warnings say where and why.
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts]\ndefault=DEBUG\n[contexts\n");
    std::string log = logOnce();
    EXPECT_EQ(" Thread000 WARNING Framework::Log::Logger Failed configuration at " + location + "\r\n" +
                  " Thread000 WARNING Framework::Log::Logger \r\nfileName: \r\nline: 3\r\ncolumn: 9\r\n" +
                  "message: there is no end pair bracket in section\r\n",
              withoutTimes(log.substr(0, log.find("citation:"))));
    EXPECT_NE(std::string::npos, log.find("\r\ncitation: [contexts\r\n")) << log;
    EXPECT_NE(std::string::npos, log.find(" Thread000 ERROR Test after configuration\r\n")) << log;
    EXPECT_EQ(std::string::npos, log.find("Used default writer")) << log;

    // A file that is there but can't be read has no location yet.
    DeleteFileW(scratch.at(L"KorvalinLogConfig.ini").c_str());
    scratch.makeFolder(L"KorvalinLogConfig.ini");
    EXPECT_NE(std::string::npos, logOnce().find(" WARNING Framework::Log::Logger Default configuration search failed"));
}

// A record logged while an installation's log is bound goes there too, in the "Line"
// format, and first: a configured writer that fails can't keep it away. A configuration
// that names an InstallerLogWriter gives it its own format, and the line comes once.
TEST_F(LogConfigurationTest, TheInstallationsLogJoinsEveryConfiguredWriter)
{
    KeptInstallerLog installation;
    InstallerLog::Binding binding(installation);
    for (const char* writers : {"active=file\n[writers.file]\nformatter=Message\n",
                                "active=file\n[writers.file]\n",  // no formatter: fails at every record
                                "active=installerlog\n[writers.installerlog]\nformatter=Message\n"}) {
        scratch.writeFile(L"KorvalinLogConfig.ini", std::string("[writers]\n") + writers);
        logOnce();
    }
    // A thread with no installation's log bound writes into none.
    std::thread([&] { logOnce(); }).join();
    ASSERT_EQ(3u, installation.lines.size());
    EXPECT_EQ(L" Thread000 ERROR Test after configuration", installation.lines[0].substr(19));
    EXPECT_EQ(L" Thread000 ERROR Test after configuration", installation.lines[1].substr(19));
    EXPECT_EQ(L"after configuration", installation.lines[2]);
}

// A failure turns logging off until the logger adopts a configuration again, which
// then reaches a context that cached the old threshold.
TEST_F(LogConfigurationTest, FailuresTurnLoggingOffUntilTheNextConfiguration)
{
    scratch.writeFile(L"KorvalinLogConfig.ini", "[writers]\nactive=file\n[writers.file]\nformatter=Message\n");
    Context test = context(L"Test");
    test.error(LOG_SITE, "before");
    // The format engine refuses a result of 20 million characters.
    test.error(LOG_SITE, "%20000000d", 1);
    test.error(LOG_SITE, "after");
    EXPECT_EQ("before\r\n", read(L"log.txt"));
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts]\nTest=DEBUG\n[writers]\nactive=file\n"
                                                "[writers.file]\nformatter=Message\nfileName=again.txt\n");
    logger->adopt(loadConfiguration(LogMode::Product));
    test.debug(LOG_SITE, "on again");
    EXPECT_EQ("on again\r\n", read(L"again.txt"));
}

// Every line is committed on its own, so a few hundred a thread meet at the lock as
// often as thousands would.
TEST_F(LogConfigurationTest, ManyThreadsThroughOneFileWriterLoseNoLineAndBreakNone)
{
    const int threadCount = 8;
    const int recordsPerThread = 300;
    const std::string payload(60, 'x');
    scratch.writeFile(L"KorvalinLogConfig.ini", "[writers]\nactive=file\n[writers.file]\nformatter=Message\n");
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

    // Each line whole, and each thread's lines in their order.
    std::istringstream lines(read(L"log.txt"));
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

// The fatal handlers, in the probe told the ways to break, with no configuration: the
// default writer's log.txt holds their lines. The terminate handler, which ends with
// abort's exit code, is seen in the session tests.
using FatalHandlersTest = LogConfigurationTest;

// The probe's console build, or its windows build, told the ways to break.
std::wstring probe(const std::string& ways, const char* build = "KORVALIN_FATAL_PROBE")
{
    return L"\"" + testSetting(build) + L"\" " + std::wstring(ways.begin(), ways.end());
}

// Handlers that raise let the program go on: those ways run in one program. A failed
// new raises with no line, and a failed malloc keeps msvcrt's null.
TEST_F(FatalHandlersTest, EachHandlerWritesItsLineThenEndsItsOwnWay)
{
    // The ways, the exit code, the output, the log.
    const std::tuple<const char*, DWORD, const char*, const char*> rows[] = {
        // The invalid parameter raises inside msvcrt's strcpy_s, caught in the caller,
        // with its clean-up run.
        {"purecall invalid new malloc", 0,
         "caught ErrorException\r\ncleaned up\r\ncaught ErrorException\r\ncaught fw_exception_memory\r\n"
         "malloc gave null\r\nreturned\r\n",
         " Thread000 ERROR Framework Crt::handlePurecall() - before abort(): \r\n"
         " Thread000 ERROR Framework Crt::handleInvalidParameter() - before abort(): \r\n"},
        // The default unrecoverable handler ends through die(), with its line.
        {"unrecoverable", 1, "Unrecoverable uncaught error\r\n",
         " Thread000 ERROR Framework HardwareExceptionsHandling::die() - before abort(): \r\n"},
    };
    for (const auto& [ways, exitCode, expectedOutput, log] : rows) {
        // Each run's default writer moves the log of the run before to log001.txt.
        std::string output;
        EXPECT_EQ(exitCode, runProgram(probe(ways), output)) << ways;
        EXPECT_EQ(expectedOutput, output) << ways;
        EXPECT_EQ(log, withoutTimes(read(L"log.txt"))) << ways;
    }
}

// An abort while the layer is loaded ends with exit code 3 and without a word to the
// user: in a program of the windows subsystem msvcrt would say it in a box, which in an
// unattended installation nobody closes. Wine's msvcrt shows one for a failed assertion.
TEST_F(FatalHandlersTest, AFailedAssertionInAWindowedProgramEndsWithoutABox)
{
    MessageBoxWatcher watcher(L"Wine C++ Runtime Library");
    EXPECT_EQ(3u, runProgram(probe("runtime-assert", "KORVALIN_FATAL_PROBE_WINDOWED")));
    const SeenBox box = watcher.stop();
    EXPECT_FALSE(box.seen) << narrow(box.text);
}

// Every module that links the layer redirects msvcrt's invalid-parameter check to its
// own handler. Two libraries unloaded in the order they were loaded must not leave a
// jump into the first: msvcrt's own code comes back, and a bad argument is then only
// an error code.
TEST_F(FatalHandlersTest, LibrariesUnloadedInAnyOrderLeaveMsvcrtWhole)
{
    std::unique_ptr<ActionLibrary> first(new ActionLibrary("KORVALIN_DLL"));
    std::unique_ptr<ActionLibrary> second(new ActionLibrary("KORVALIN_PROBE_DLL"));
    first.reset();
    second.reset();
    char buffer[2];
    EXPECT_EQ("nothing", thrownClass([&] { EXPECT_EQ(ERANGE, strcpy_s(buffer, sizeof buffer, "too long")); }));
}

// Log times are local: UTC with the zone's offset and, in a zone with daylight rules,
// its daylight bias all year. The probe reads the zones, with TZ set from its start:
// under Wine a process that read the system's zone first keeps that zone's bias.
TEST(LoggerTimeTest, TheLocalClockIsUtcPlusTheZoneAndItsDaylightBias)
{
    const std::pair<std::string, int64_t> rows[] = {
        {"UTC0", 0}, {"EST5", -300}, {"IST-5:30", 330}, {"EST5EDT", -240}, {"CET-1CEST", 120},
    };
    std::wstring command = L"\"" + testSetting("KORVALIN_FATAL_PROBE") + L"\"";
    for (const auto& [zone, minutesAhead] : rows)
        command += L" TZ=" + std::wstring(zone.begin(), zone.end());
    _putenv("TZ=UTC0");
    std::string output;
    __timeb64 before, after;
    _ftime64(&before);
    EXPECT_EQ(0u, runProgram(command, output));
    _ftime64(&after);
    _putenv("TZ=");
    std::istringstream times(output);
    for (const auto& [zone, minutesAhead] : rows) {
        int64_t local = 0;
        times >> local;
        EXPECT_LE(before.time * 1000 + before.millitm + minutesAhead * 60000, local) << zone;
        EXPECT_GE(after.time * 1000 + after.millitm + minutesAhead * 60000, local) << zone;
    }
}

}  // namespace
