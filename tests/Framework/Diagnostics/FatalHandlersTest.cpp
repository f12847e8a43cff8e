// The fatal handlers, in a child program that breaks in the ways it is told, run in a
// scratch folder with no log configuration: the default writer's "log.txt" there holds
// the handlers' lines, and the exit code and output say how the program ended. The
// terminate handler, which ends with abort's exit code, is seen in the session tests.
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

struct Outcome
{
    DWORD exitCode;
    std::string output;
    std::string log;  // each line without its date and time
};

// The probe's console build, or with KORVALIN_FATAL_PROBE_WINDOWED its windows build.
Outcome runProbe(const char* ways, const char* probeVariable = "KORVALIN_FATAL_PROBE")
{
    ScratchFolder scratch(L"fatal");
    WorkingFolder moved(scratch.path());
    _wputenv(L"KORVALIN_LOG_CONFIG=");
    const std::string given = ways;
    const std::wstring command = L"\"" + testSetting(probeVariable) + L"\" " + std::wstring(given.begin(), given.end());
    Outcome outcome;
    outcome.exitCode = runProgram(command, outcome.output);
    std::istringstream log(scratch.exists(L"log.txt") ? scratch.readFile(L"log.txt") : "");
    for (std::string line; std::getline(log, line);)
        outcome.log += line.substr(std::min<size_t>(19, line.size())) + "\n";
    return outcome;
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
        {"purecall invalid insufficient new malloc", 0,
         "caught ErrorException\r\ncleaned up\r\ncaught ErrorException\r\ncaught fw_exception_memory\r\n"
         "caught fw_exception_memory\r\nmalloc gave null\r\nreturned\r\n",
         " Thread000 ERROR Framework Crt::handlePurecall() - before abort(): \r\n"
         " Thread000 ERROR Framework Crt::handleInvalidParameter() - before abort(): \r\n"
         " Thread000 ERROR Framework Crt::handleInsufficientMemory() - before abort(): \r\n"},
        // The default unrecoverable handler ends through die(), with its line.
        {"unrecoverable", 1, "Unrecoverable uncaught error\r\n",
         " Thread000 ERROR Framework HardwareExceptionsHandling::die() - before abort(): \r\n"},
    };
    for (const auto& row : rows) {
        const Outcome outcome = runProbe(row.ways);
        EXPECT_EQ(row.exitCode, outcome.exitCode) << row.ways;
        EXPECT_EQ(row.output, outcome.output) << row.ways;
        EXPECT_EQ(row.log, outcome.log) << row.ways;
    }
}

// An abort while the layer is loaded ends with exit code 3 and without a word to the
// user: in a program of the windows subsystem msvcrt would say it in a box, which in an
// unattended installation nobody closes. Wine's msvcrt shows one for a failed assertion.
TEST(FatalHandlersTest, AFailedAssertionInAWindowedProgramEndsWithoutABox)
{
    MessageBoxWatcher watcher(L"Wine C++ Runtime Library");
    const Outcome outcome = runProbe("runtime-assert", "KORVALIN_FATAL_PROBE_WINDOWED");
    const SeenBox box = watcher.stop();
    EXPECT_FALSE(box.seen) << std::string(box.text.begin(), box.text.end());
    EXPECT_EQ(3u, outcome.exitCode);
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
