// The fatal handlers, in a child program that breaks in the ways it is told: the log
// holds the handlers' lines, and the exit code and output say how the program ended.
// The terminate handler, which ends with abort's exit code, is seen in the session tests.
#include "Framework/Exceptions.h"
#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/MessageBoxWatcher.h"
#include "support/ScratchFolder.h"
#include "support/WorkingFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <sstream>

namespace {

// The probe's console build, or its windows build, told the ways to break.
std::wstring probe(const std::string& ways, const char* build = "KORVALIN_FATAL_PROBE")
{
    return L"\"" + testSetting(build) + L"\" " + std::wstring(ways.begin(), ways.end());
}

// Handlers that raise let the program go on: those ways run in one program. A failed
// new raises with no line, and a failed malloc keeps msvcrt's null.
TEST(FatalHandlersTest, EachHandlerWritesItsLineThenEndsItsOwnWay)
{
    const struct
    {
        const char* ways;
        DWORD exitCode;
        const char* output;
        const char* log;
    } rows[] = {
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
    for (const auto& row : rows) {
        // No configuration: the default writer's log.txt in the working folder.
        ScratchFolder scratch(L"fatal");
        WorkingFolder moved(scratch.path());
        std::string output;
        EXPECT_EQ(row.exitCode, runProgram(probe(row.ways), output)) << row.ways;
        EXPECT_EQ(row.output, output) << row.ways;
        std::istringstream lines(scratch.readFile(L"log.txt"));
        std::string log;
        for (std::string line; std::getline(lines, line);)
            log += line.substr(19) + "\n";
        EXPECT_EQ(row.log, log) << row.ways;
    }
}

// An abort while the layer is loaded ends with exit code 3 and without a word to the
// user: in a program of the windows subsystem msvcrt would say it in a box, which in an
// unattended installation nobody closes. Wine's msvcrt shows one for a failed assertion.
TEST(FatalHandlersTest, AFailedAssertionInAWindowedProgramEndsWithoutABox)
{
    MessageBoxWatcher watcher(L"Wine C++ Runtime Library");
    EXPECT_EQ(3u, runProgram(probe("runtime-assert", "KORVALIN_FATAL_PROBE_WINDOWED")));
    const SeenBox box = watcher.stop();
    EXPECT_FALSE(box.seen) << std::string(box.text.begin(), box.text.end());
}

// Every module that links the layer redirects msvcrt's invalid-parameter check to its
// own handler. Two libraries unloaded in the order they were loaded must not leave a
// jump into the first: msvcrt's own code comes back, and a bad argument is then only
// an error code.
TEST(FatalHandlersTest, LibrariesUnloadedInAnyOrderLeaveMsvcrtWhole)
{
    std::unique_ptr<ActionLibrary> first(new ActionLibrary("KORVALIN_DLL"));
    std::unique_ptr<ActionLibrary> second(new ActionLibrary("KORVALIN_PROBE_DLL"));
    first.reset();
    second.reset();
    char buffer[2];
    int result = 0;
    try {
        result = strcpy_s(buffer, sizeof buffer, "too long");
    } catch (Framework::ErrorException* raw) {
        std::unique_ptr<Framework::ErrorException> thrown(raw);
        ADD_FAILURE() << "this program's handler should have gone with the libraries' redirects";
    }
    EXPECT_EQ(ERANGE, result);
}

}  // namespace
