// The runtime's reactions to a broken program, replaced by handlers that first write
// one ERROR line to the log, under the context "Framework", and then end as the line
// says or turn the event into an exception:
//
//   terminate (an exception no handler takes)  "Crt::handleTerminate() - before abort(): "
//                                              then a silent abort, exit code 3
//   pure virtual call                          "Crt::handlePurecall() - before abort(): "
//                                              then ErrorException: no abort
//   invalid parameter to a runtime function    "Crt::handleInvalidParameter() - before abort(): "
//                                              then ErrorException, in the caller of
//                                              the runtime function: no abort
//   exhausted memory, between two install steps "Crt::handleInsufficientMemory() - before abort(): "
//                                              then fw_exception_memory
//   HardwareExceptionsHandling::die()          "HardwareExceptionsHandling::die() - before abort(): "
//                                              then exit(1), with atexit and static
//                                              destructors
//
// The first line of a process creates the logger, which looks for its configuration
// then (Logger.h); a run that never reaches a handler never touches a log file. A log
// that can't be written stays the logger's problem: the handler goes on to its end.
//
// initialize() runs when the library is loaded and again, as a safeguard, at the first
// exception; it installs once per process. The FW layer's bring-up puts its own
// allocation-failure and pure-call handlers over these (fw/fw_library.h), so from the
// first action call on a pure call throws fw_exception_purecall. How each hook is
// reached in msvcrt is in RuntimeHooks.h.
#pragma once
#include <cstddef>
#include <cstdint>

namespace Framework {

class Crt
{
public:
    // installHandlers() and setlocale(LC_ALL, ""), once per process; true.
    static bool initialize();
    // The handlers; the error modes without boxes, msvcrt's (abort and a failed
    // assertion report to the console, not in a box) and the system's (no
    // critical-error boxes); and at the end the FW layer's raiser of
    // fw_exception_memory as the allocation-failure handler: a failed new raises with
    // no log line. A failed malloc is not sent there and gives null, as msvcrt has it:
    // msvcrt's hook for it runs inside malloc, for every module of the process, and
    // an exception from there would cross C code that can't let one pass (see
    // Crt.cpp). True.
    static bool installHandlers();
    // Whether initialize() has run.
    static bool isInitialized();

    [[noreturn]] static void handleTerminate();
    [[noreturn]] static void handlePurecall();
    [[noreturn]] static void __cdecl handleInvalidParameter(const wchar_t* expression, const wchar_t* function,
                                                            const wchar_t* file, unsigned line, uintptr_t reserved);
    static int __cdecl handleInsufficientMemory(size_t size);
};

class HardwareExceptionsHandling
{
public:
    [[noreturn]] static void die();
};

}  // namespace Framework
