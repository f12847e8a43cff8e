// Where the logger finds its configuration and what it makes of it, on the real disk:
// files in a scratch working folder and beside this program, the environment
// variable, and the resource built into this program ("[contexts] default=DEBUG").
#include "Framework/Log/ConfigurationLoader.h"

#include "Framework/Exceptions.h"
#include "Framework/Io/MemoryInputStream.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "support/ExpectThrown.h"
#include "support/Installer.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"
#include "support/WorkingFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <typeinfo>
#include <sstream>
#include <vector>

using namespace Framework;
using namespace Framework::Log;

namespace {

std::wstring programFolder()
{
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    std::wstring folder(path, length);
    return folder.substr(0, folder.rfind(L'\\') + 1);
}

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

// Lines without their "\r\n", each without the leading date and time.
std::vector<std::string> linesWithoutTime(const std::string& text)
{
    std::vector<std::string> lines;
    size_t at = 0;
    while (at < text.size()) {
        size_t end = text.find("\r\n", at);
        if (end == std::string::npos)
            end = text.size();
        std::string line = text.substr(at, end - at);
        const size_t dateAndTime = sizeof "2026-01-01 00:00:00" - 1;
        EXPECT_TRUE(line.size() > dateAndTime && line[4] == '-' && line[13] == ':') << line;
        lines.push_back(line.size() > dateAndTime ? line.substr(dateAndTime) : line);
        at = end + 2;
    }
    return lines;
}

class LogConfigurationTest : public ::testing::Test
{
protected:
    LogConfigurationTest() : scratch(L"logconfig"), beside(programFolder()), moved(scratch.path()) {}
    ~LogConfigurationTest() override
    {
        for (const wchar_t* name : {L"KorvalinLogConfig.ini", L"named.ini"})
            DeleteFileW((beside + name).c_str());
        _wputenv(L"KORVALIN_LOG_CONFIG=");
    }

    void writeBeside(const wchar_t* name, const std::string& text)
    {
        FILE* file = _wfopen((beside + name).c_str(), L"wb");
        ASSERT_TRUE(file);
        std::fwrite(text.data(), 1, text.size(), file);
        std::fclose(file);
    }

    // A logger of its own, as the process's first message would make it, then one
    // ERROR message through a context "Test"; the log file as it was left.
    std::string logOnce(const std::wstring& logFile = L"log.txt")
    {
        {
            Logger logger(LogMode::Product);
            testLogger = &logger;
            Context context(L"Test", provide);
            context.error(LOG_SITE, "after %S", L"configuration");
            testLogger = nullptr;
        }
        return scratch.exists(logFile) ? scratch.readFile(logFile) : std::string();
    }

    static Logger* provide() { return testLogger; }
    static Logger* testLogger;

    ScratchFolder scratch;
    std::wstring beside;
    WorkingFolder moved;
};

Logger* LogConfigurationTest::testLogger = nullptr;

TEST_F(LogConfigurationTest, TheSearchTakesTheFirstPlaceThatHasAFile)
{
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts]\ndefault=ERROR\n");
    writeBeside(L"KorvalinLogConfig.ini", "[contexts]\ndefault=INFO\n");
    scratch.writeFile(L"named.ini", "[contexts]\ndefault=UNDEFINED\n");
    writeBeside(L"named.ini", "[contexts]\ndefault=warning\nMarker=ERROR\n");
    _wputenv(L"KORVALIN_LOG_CONFIG=named.ini");

    struct Step
    {
        const wchar_t* removed;  // before the search
        Level level;
        std::wstring location;
    };
    const Step steps[] = {
        {nullptr, Level::Error, scratch.at(L"KorvalinLogConfig.ini")},
        {L"KorvalinLogConfig.ini", Level::Info, beside + L"KorvalinLogConfig.ini"},
        {L"beside KorvalinLogConfig.ini", Level::Undefined, scratch.at(L"named.ini")},
        {L"named.ini", Level::Warning, beside + L"named.ini"},
        {L"beside named.ini", Level::Debug, L"KorvalinLogConfig"},
    };
    for (const Step& step : steps) {
        if (step.removed) {
            const std::wstring removed = step.removed;
            if (removed.compare(0, 7, L"beside ") == 0)
                EXPECT_TRUE(DeleteFileW((beside + removed.substr(7)).c_str()));
            else
                EXPECT_TRUE(DeleteFileW(scratch.at(removed).c_str()));
        }
        const Configuration loaded = loadConfiguration(LogMode::Product);
        EXPECT_EQ(step.level, loaded.defaultLevel) << narrow(step.location);
        EXPECT_EQ(String(step.location.c_str()), configurationLocation());
    }

    // An absolute name in the variable stands as it is; a name found nowhere falls
    // through to the resource.
    scratch.writeFile(L"absolute.ini", "[contexts]\ndefault=ERROR\n");
    _wputenv((L"KORVALIN_LOG_CONFIG=" + scratch.at(L"absolute.ini")).c_str());
    EXPECT_EQ(Level::Error, loadConfiguration(LogMode::Product).defaultLevel);
    EXPECT_EQ(String(scratch.at(L"absolute.ini").c_str()), configurationLocation());
    _wputenv(L"KORVALIN_LOG_CONFIG=nowhere.ini");
    EXPECT_EQ(Level::Debug, loadConfiguration(LogMode::Product).defaultLevel);
    EXPECT_EQ(String(L"KorvalinLogConfig"), configurationLocation());

    expectThrown<ValueNotInitializedException>([] { loadConfiguration(LogMode(3)); });
}

// The example a support engineer starts from, with the log folder in the scratch
// folder: the file log in its own line format, the console in the built-in one, the
// run before kept as setup001.txt.
TEST_F(LogConfigurationTest, TheExampleConfigurationWritesBothLogs)
{
    const std::string folder = narrow(scratch.path());
    scratch.writeFile(L"KorvalinLogConfig.ini",
                      "[contexts]\n"
                      "default=WARNING\n"
                      "Framework=INFO\n"
                      "Framework::Log::Logger=INFO\n"
                      "\n"
                      "[formatters.shortlevel]\n"
                      "type=LevelFormatter\n"
                      "format=%-7S\n"
                      "\n"
                      "[formatters.myline]\n"
                      "type=LineFormatter\n"
                      "format=%(datetime)S %(shortlevel)S %(context)S: %(message)S\n"
                      "\n"
                      "[writers]\n"
                      "active=main\n"
                      "active=console\n"
                      "\n"
                      "[writers.main]\n"
                      "type=RotatedFileWriter\n"
                      "formatter=myline\n"
                      "dir=" + folder + "logs\n"
                      "fileName=setup.txt\n"
                      "backupCount=5\n"
                      "\n"
                      "[writers.console]\n"
                      "formatter=Line\n");
    scratch.makeFolder(L"logs");
    scratch.writeFile(L"logs\\setup.txt", "the run before\r\n");

    const char* probe = std::getenv("KORVALIN_FATAL_PROBE");
    ASSERT_TRUE(probe);
    std::string console;
    EXPECT_EQ(0u, runProgram(L"\"" + std::wstring(probe, probe + std::strlen(probe)) + L"\" log", console));

    const std::string used = "Used configuration from " + narrow(scratch.at(L"KorvalinLogConfig.ini"));
    const std::vector<std::string> file = linesWithoutTime(scratch.readFile(L"logs\\setup.txt"));
    const std::vector<std::string> expectedFile = {
        " INFO    Framework::Log::Logger: " + used,
        " ERROR   Framework: first error",
        " ERROR   Other: second",
    };
    EXPECT_EQ(expectedFile, file);
    EXPECT_EQ("the run before\r\n", scratch.readFile(L"logs\\setup001.txt"));

    // The console gets "\n" line ends from the runtime's text mode.
    std::string consoleCrlf;
    for (char c : console) {
        if (c == '\n' && (consoleCrlf.empty() || consoleCrlf.back() != '\r'))
            consoleCrlf += '\r';
        consoleCrlf += c;
    }
    const std::vector<std::string> expectedConsole = {
        " Thread000 INFO Framework::Log::Logger " + used,
        " Thread000 ERROR Framework first error",
        " Thread000 ERROR Other second",
    };
    EXPECT_EQ(expectedConsole, linesWithoutTime(consoleCrlf));
}

// Each way a configuration can be broken, by the failure its reader raises.
TEST(LogConfigurationReaderTest, EachBrokenConfigurationRaisesItsFailure)
{
    struct Row
    {
        const char* text;
        const std::type_info& failure;
    };
    const Row rows[] = {
        {"[contexts\n", typeid(TextFormatException)},
        {"[contexts]\ndefault=LOUD\n", typeid(LookupException)},
        {"[formatters.f]\ntype=NoSuchFormatter\n", typeid(ValueNotInitializedException)},
        {"[formatters.line]\ntype=LineFormatter\n", typeid(ValueExistsException)},
        {"[formatters.f]\ntype=LineFormatter\nformat=%(nosuch)S\n", typeid(LookupException)},
        {"[formatters.a]\ntype=LineFormatter\nformat=%(b)S\n[formatters.b]\ntype=LineFormatter\nformat=<%(a)S>\n",
         typeid(FormatException)},
        {"[writers]\n[writers.file]\nformatter=Line\n", typeid(LookupException)},
        {"[writers]\nactive=missing\n", typeid(LookupException)},
        {"[writers]\nactive=file\n[writers]\n[writers.file]\nformatter=Line\n", typeid(FormatException)},
        {"[writers]\nactive=file\n[writers.file]\nformatter=NoSuch\n", typeid(LookupException)},
        {"[writers]\nactive=r\n[writers.r]\ntype=RotatedFileWriter\nformatter=Line\nbackupCount=many\n",
         typeid(FormatException)},
        {"[writers]\nactive=w\n[writers.w]\nformatter=Line\n", typeid(ValueNotInitializedException)},
    };
    for (size_t i = 0; i < sizeof rows / sizeof *rows; ++i) {
        const Row& row = rows[i];
        EXPECT_EQ(row.failure.name(), thrownClass([&] {
                      Io::MemoryInputStream stream(row.text, uint32_t(std::strlen(row.text)));
                      readConfiguration(stream);
                  }))
            << "row " << i << ": " << row.text;
    }
}

// A broken configuration is dropped whole: the default writer takes over, and the log
// says why in two warnings before the first message.
TEST_F(LogConfigurationTest, ABrokenConfigurationEndsInTheDefaultWriterWithTwoWarnings)
{
    const std::string location = narrow(scratch.at(L"KorvalinLogConfig.ini"));
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts\n");
    DeleteFileW(scratch.at(L"log.txt").c_str());
    {
        const std::string log = logOnce();
        EXPECT_EQ(0u, log.find(log.substr(0, 19) + " Thread000 WARNING Framework::Log::Logger Failed configuration at " +
                               location + "\r\n"))
            << log;
        EXPECT_NE(std::string::npos, log.find("message: there is no end pair bracket in section")) << log;
        const std::string last = " Thread000 ERROR Test after configuration\r\n";
        EXPECT_TRUE(log.size() > last.size() && log.compare(log.size() - last.size(), last.size(), last) == 0) << log;
    }

    // A file that is there but can't be read: no location yet.
    DeleteFileW(scratch.at(L"KorvalinLogConfig.ini").c_str());
    scratch.makeFolder(L"KorvalinLogConfig.ini");
    DeleteFileW(scratch.at(L"log.txt").c_str());
    const std::string log = logOnce();
    EXPECT_NE(std::string::npos, log.find(" WARNING Framework::Log::Logger Default configuration search failed\r\n"))
        << log;
}

TEST_F(LogConfigurationTest, FormattersNameEachOtherInEitherOrderAndSharedKeysComeFirst)
{
    const char* const texts[] = {
        "[formatters]\nformat=<%S>\n"
        "[formatters.outer]\ntype=LineFormatter\nformat=[%(inner)S] %(plain)S\n"
        "[formatters.inner]\ntype=LevelFormatter\nformat=%-7S\n"
        "[formatters.plain]\ntype=MessageFormatter\n",
        "[formatters]\nformat=<%S>\n"
        "[formatters.plain]\ntype=MessageFormatter\n"
        "[formatters.inner]\ntype=LevelFormatter\nformat=%-7S\n"
        "[formatters.outer]\ntype=LineFormatter\nformat=[%(inner)S] %(plain)S\n",
    };
    for (const char* formatters : texts) {
        scratch.writeFile(L"KorvalinLogConfig.ini", std::string(formatters) +
                                                        "[contexts]\nFramework::Log::Logger=INFO\n"
                                                        "[writers]\nactive=file\n"
                                                        "[writers.file]\nformatter=outer\nfileName=out.txt\n");
        DeleteFileW(scratch.at(L"out.txt").c_str());
        const std::string used = "Used configuration from " + narrow(scratch.at(L"KorvalinLogConfig.ini"));
        // plain takes the shared format; outer and inner keep their own.
        EXPECT_EQ("[INFO   ] <" + used + ">\r\n[ERROR  ] <after configuration>\r\n", logOnce(L"out.txt")) << formatters;
    }

    // Contexts without writers: both stay, the default writer joins the contexts.
    scratch.writeFile(L"KorvalinLogConfig.ini", "[contexts]\nDEFAULT=ERROR\nFramework::Log::Logger=INFO\n");
    const std::vector<std::string> lines = linesWithoutTime(logOnce());
    const std::vector<std::string> expected = {
        " Thread000 INFO Framework::Log::Logger Used configuration from " +
            narrow(scratch.at(L"KorvalinLogConfig.ini")),
        " Thread000 INFO Framework::Log::Logger Used default writer and formatter",
        " Thread000 ERROR Test after configuration",
    };
    EXPECT_EQ(expected, lines);
}

}  // namespace
