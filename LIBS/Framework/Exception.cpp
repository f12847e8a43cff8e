#include "Framework/Exception.h"

#include "Framework/Diagnostics/Crt.h"
#include "Framework/Diagnostics/StackDump.h"
#include "Framework/Diagnostics/ThreadLocalPointer.h"

#include <windows.h>
#include <cstdio>
#include <cwchar>
#include <exception>

namespace Framework {

namespace {

// The cell through which a new exception finds its cause. Made when the library is
// loaded, released when it is unloaded.
ThreadLocalPointer currentCell(nullptr);

Exception* current() { return static_cast<Exception*>(currentCell.peek()); }

void writeBoth(const char* text)
{
    std::fputs(text, stderr);
    std::fputs(text, stdout);
}

void defaultUnrecoverable(Exception* previous, Exception*)
{
    // die() logs, and the logger may build and catch exceptions of its own while this
    // stack still unwinds: those come back here, and must be let through.
    static bool ending = false;
    if (ending)
        return;
    ending = true;
    writeBoth("Unrecoverable uncaught error\n");
    if (previous) {
        const String text = previous->description(true);
        std::fputws(text.c_str(), stderr);
        std::fputws(text.c_str(), stdout);
    }
    std::fflush(stderr);
    std::fflush(stdout);
    HardwareExceptionsHandling::die();
}

UnrecoverableHandler unrecoverableHandler = defaultUnrecoverable;

}  // namespace

Exception* currentException()
{
    return current();
}

UnrecoverableHandler setUnrecoverableHandler(UnrecoverableHandler handler)
{
    UnrecoverableHandler previous = unrecoverableHandler;
    unrecoverableHandler = handler ? handler : defaultUnrecoverable;
    return previous;
}

Exception::Exception(const ThrowSite& site)
    : fw_exception(fw_string(), fw_string()),
      siteTag(site.tag),
      siteLine(site.line),
      stackDump(nullptr),
      cause(current())
{
    // The fatal handlers are installed at load; this is the safeguard for a module
    // whose static initialisers haven't run in the expected order.
    Crt::initialize();
    if (std::uncaught_exceptions() > 0) {
        // Built while the stack unwinds: there is no nesting of throws in flight.
        cause = nullptr;
        stackDump = new String(Framework::stackDump(nullptr));
        unrecoverableHandler(current(), this);
        return;
    }
    stackDump = new String(Framework::stackDump(nullptr));
    currentCell.set(this);
}

Exception::~Exception()
{
    if (cause && cause != this) {
        delete cause;
        cause = nullptr;
    }
    delete stackDump;
    if (current() == this)
        currentCell.set(nullptr);
}

fw_string Exception::message() const
{
    return toFwString(siteText());
}

const char* Exception::title() const
{
    return "Exception";
}

fw_string Exception::details() const
{
    return toFwString(description(true));
}

String Exception::emptyText() const
{
    return String();
}

String Exception::siteText() const
{
    return String(siteTag) + Detail::upperHex(siteLine);
}

String Exception::description(bool includeCause) const
{
    String text = siteText() + L'\n';
    if (stackDump)
        text += *stackDump;
    if (includeCause && cause)
        text += String(L"\nCause:\n") + cause->description(includeCause);
    return text;
}

void Exception::finish() {}

String Detail::upperHex(uint64_t value)
{
    wchar_t digits[17];
    uint32_t n = 17;
    do {
        digits[--n] = L"0123456789ABCDEF"[value & 15];
        value >>= 4;
    } while (value);
    return String(digits + n, 17 - n);
}

}  // namespace Framework
