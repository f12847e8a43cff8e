#include "Framework/Diagnostics/Crt.h"

#include "Framework/Diagnostics/RuntimeHooks.h"
#include "Framework/Exceptions.h"
#include "Framework/Log/Context.h"
#include "Framework/Log/Logger.h"
#include "fw/fw_exception.h"
#include "fw/fw_library.h"
#include "fw/fw_purecall.h"
#include "fw/fw_raise.h"

#include <windows.h>

#include <clocale>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>

namespace Framework {

namespace {

bool fatalHandlersInstalled = false;

// The one line of a handler. Nothing may leave it: the handler is on its way out and
// its last step must run, whatever the log did.
void logLine(const ThrowSite& site, const char* format)
{
    try {
        Log::Context context(L"Framework", Log::Logger::instance);
        context.error(&site, format, String().c_str());
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> failure(raw);
        fw_clear_current();
    } catch (...) {
    }
}

void purecallHandler() { Crt::handlePurecall(); }

void memoryRaiser() { fw_raise_memory(); }

// At the library's load.
const bool installedAtLoad = Crt::initialize();

}  // namespace

bool Crt::initialize()
{
    if (fatalHandlersInstalled)
        return true;
    installHandlers();
    std::setlocale(LC_ALL, "");
    fatalHandlersInstalled = true;
    return true;
}

bool Crt::isInitialized()
{
    return fatalHandlersInstalled;
}

bool Crt::installHandlers()
{
    // msvcrt has no _set_abort_behavior. With this error mode its own reports (abort's
    // message, a failed assertion) go to the console and the standard error stream
    // instead of a box, and a program of the windows subsystem that has neither, such
    // as the installer's host, says nothing; the handlers here end with silentAbort,
    // which says nothing at all.
    _set_error_mode(_OUT_TO_STDERR);
    RuntimeHooks::enableUnwindingThroughRuntime();
    std::set_terminate(handleTerminate);
    fw_set_purecall_handler(purecallHandler);
    RuntimeHooks::setInvalidParameterHandler(handleInvalidParameter);
    SetErrorMode(SEM_FAILCRITICALERRORS);
    RuntimeHooks::setRuntimeNewMode(1);
    RuntimeHooks::setRuntimeNewHandler(handleInsufficientMemory);
    // The raiser takes over both slots, but msvcrt's own slot is left empty: what
    // msvcrt calls from there is called inside malloc, for every module of the
    // process, and an exception from it would pass C frames that neither expect one
    // nor give back their locks (msvcrt's stdio allocates under its lock). So a
    // failed malloc keeps msvcrt's answer, a null pointer, and a failed new reaches
    // the raiser through the C++ runtime's slot.
    RuntimeHooks::setRuntimeNewHandler(nullptr);
    std::set_new_handler(memoryRaiser);
    return true;
}

void Crt::handleTerminate()
{
    logLine(SITE, "Crt::handleTerminate() - before abort(): %S");
    RuntimeHooks::silentAbort();
}

void Crt::handlePurecall()
{
    logLine(SITE, "Crt::handlePurecall() - before abort(): %S");
    throw new ErrorException(SITE);
}

void __cdecl Crt::handleInvalidParameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t)
{
    logLine(SITE, "Crt::handleInvalidParameter() - before abort(): %S");
    throw new ErrorException(SITE);
}

int __cdecl Crt::handleInsufficientMemory(size_t)
{
    logLine(SITE, "Crt::handleInsufficientMemory() - before abort(): %S");
    fw_raise_memory();
}

void HardwareExceptionsHandling::die()
{
    logLine(SITE, "HardwareExceptionsHandling::die() - before abort(): %S");
    std::exit(1);
}

}  // namespace Framework
