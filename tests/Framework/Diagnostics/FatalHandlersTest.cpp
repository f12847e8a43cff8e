// The fatal handlers, each in a child program that breaks in one way, run in a scratch
// folder with no log configuration: the default writer's "log.txt" there holds the
// handler's line, and the exit code and output say how the program ended.
#include "Framework/Diagnostics/Crt.h"

#include "Framework/Exceptions.h"
#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/MessageBoxWatcher.h"
#include "support/ScratchFolder.h"
#include "support/WorkingFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <exception>

namespace {

struct Outcome
{
    DWORD exitCode;
    std::string output;
    std::string log;
};

// The probe's console build, or with KORVALIN_FATAL_PROBE_WINDOWED its windows build.
Outcome runProbe(const char* way, const char* probeVariable = "KORVALIN_FATAL_PROBE")
{
    ScratchFolder scratch(L"fatal");
    WorkingFolder moved(scratch.path());
    _wputenv(L"KORVALIN_LOG_CONFIG=");
    const char* probe = std::getenv(probeVariable);
    EXPECT_TRUE(probe) << probeVariable << " names the probe";
    Outcome outcome;
    const std::string command = std::string("\"") + (probe ? probe : "") + "\" " + way;
    std::string output;
    outcome.exitCode = runProgram(std::wstring(command.begin(), command.end()), output);
    // Standard output is in text mode.
    for (char c : output) {
        if (c != '\r')
            outcome.output += c;
    }
    if (scratch.exists(L"log.txt"))
        outcome.log = scratch.readFile(L"log.txt");
    return outcome;
}

// The one line of the default format, without its date and time.
std::string lineOf(const std::string& log)
{
    const size_t dateAndTime = sizeof "2026-01-01 00:00:00" - 1;
    return log.size() > dateAndTime ? log.substr(dateAndTime) : log;
}

TEST(FatalHandlersTest, EachHandlerWritesItsLineThenEndsItsOwnWay)
{
    struct Row
    {
        const char* way;
        DWORD exitCode;
        const char* output;
        const char* line;
    };
    const Row rows[] = {
        // abort without its message: no box, nothing on the console.
        {"terminate", 3, "", " Thread000 ERROR Framework Crt::handleTerminate() - before abort(): \r\n"},
        {"purecall", 0, "caught ErrorException\n", " Thread000 ERROR Framework Crt::handlePurecall() - before abort(): \r\n"},
        // Raised inside msvcrt's strcpy_s, caught in the caller, with its clean-up run.
        {"invalid", 0, "cleaned up\ncaught ErrorException\n",
         " Thread000 ERROR Framework Crt::handleInvalidParameter() - before abort(): \r\n"},
        {"insufficient", 0, "caught fw_exception_memory\n",
         " Thread000 ERROR Framework Crt::handleInsufficientMemory() - before abort(): \r\n"},
        {"die", 1, "", " Thread000 ERROR Framework HardwareExceptionsHandling::die() - before abort(): \r\n"},
        // The default unrecoverable handler ends through die(), and so leaves its line.
        {"unrecoverable", 1, "Unrecoverable uncaught error\n",
         " Thread000 ERROR Framework HardwareExceptionsHandling::die() - before abort(): \r\n"},
        // A failed new after the installation goes to the FW layer's raiser: no line,
        // and so no logger and no file.
        {"memory", 0, "caught fw_exception_memory\n", ""},
        // A failed malloc keeps msvcrt's answer, for C code that checks for it.
        {"malloc", 0, "malloc gave null\n", ""},
    };
    for (const Row& row : rows) {
        const Outcome outcome = runProbe(row.way);
        EXPECT_EQ(row.exitCode, outcome.exitCode) << row.way;
        EXPECT_EQ(row.output, outcome.output) << row.way;
        EXPECT_EQ(row.line, lineOf(outcome.log)) << row.way;
    }
}

// Every abort while the layer is loaded ends with exit code 3 and without a word to
// the user. In a program of the windows subsystem msvcrt would say it in a box, which
// in an unattended installation nobody closes: Windows' msvcrt does for abort and a
// failed assertion, Wine's for the assertion (so that row is what fails here when the
// error mode is not set).
TEST(FatalHandlersTest, EveryAbortInAWindowedProgramEndsWithoutABox)
{
    const char* const ways[] = {"abort", "double-bring-up", "runtime-terminate", "runtime-assert"};
    for (const char* way : ways) {
        MessageBoxWatcher watcher(L"Wine C++ Runtime Library");
        const Outcome outcome = runProbe(way, "KORVALIN_FATAL_PROBE_WINDOWED");
        const SeenBox box = watcher.stop();
        EXPECT_FALSE(box.seen) << way << ": " << box.text;
        EXPECT_EQ(3u, outcome.exitCode) << way;
    }
}

// Every module that links the layer redirects msvcrt's invalid-parameter check to its
// own handler. Two libraries unloaded in the order they were loaded must not leave a
// jump into the first: msvcrt's own code goes back, and a bad argument is then only
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
        ADD_FAILURE() << "the program's own handler was expected to be gone with the libraries' redirects";
    }
    EXPECT_EQ(ERANGE, result);
}

void otherTerminate() { std::abort(); }

TEST(FatalHandlersTest, InstalledAtLoadAndOnlyOnce)
{
    EXPECT_TRUE(Framework::Crt::isInitialized());
    EXPECT_EQ(&Framework::Crt::handleTerminate, std::get_terminate());
    const std::terminate_handler before = std::set_terminate(otherTerminate);
    EXPECT_TRUE(Framework::Crt::initialize());
    EXPECT_EQ(&otherTerminate, std::get_terminate());
    std::set_terminate(before);
}

}  // namespace
