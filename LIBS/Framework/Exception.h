// The root of the Framework exceptions, on the FW root so that a handler for
// fw_exception pointers sees both layers. Each object carries its throw site, the
// dump of the stack where it was built (Diagnostics/StackDump.h), and its cause: the
// exception that was alive on the same thread when it was built.
//
// Chains come about by themselves. An exception built inside a handler, before the
// caught one is deleted, adopts the caught one as its cause; so a handler that
// throws something new must not delete the old object. Deleting an exception
// deletes its whole chain of causes.
//
// Building an exception while another one is being thrown (in a destructor during
// unwinding) is unrecoverable: the unrecoverable handler runs and, by default, ends
// the process.
#pragma once
#include "Framework/String.h"
#include "Framework/ThrowSite.h"
#include "fw/fw_exception.h"

namespace Framework {

class Exception : public fw_exception
{
public:
    explicit Exception(const ThrowSite& site);
    ~Exception() override;

    // siteText() as narrow text.
    fw_string message() const override;
    // "Exception".
    const char* title() const override;
    // description(true) as narrow text.
    fw_string details() const override;

    virtual String emptyText() const;
    // The tag and, with no separator, the line in upper-case hexadecimal.
    virtual String siteText() const;
    // The text that logs and reports show: siteText, a line feed, the stack dump,
    // and with includeCause "\nCause:\n" and the cause's own description. Classes
    // with fields put their lines ahead of this.
    virtual String description(bool includeCause) const;
    virtual void finish();

    const char* getSiteTag() const { return siteTag; }
    uint32_t getSiteLine() const { return siteLine; }
    const Exception* getCause() const { return cause; }
    const String* getStackDump() const { return stackDump; }

private:
    const char* siteTag;
    uint32_t siteLine;
    String* stackDump;
    Exception* cause;
};

// The exception last built on this thread and still alive, or null.
Exception* currentException();

// Called with the thread's current exception (may be null) and the new one when an
// exception is built while another is in flight. The default writes
// "Unrecoverable uncaught error\n" and the previous exception's description to the
// standard error and output streams, then ends the process through
// HardwareExceptionsHandling::die() (Diagnostics/Crt.h): its log line, exit code 1.
using UnrecoverableHandler = void (*)(Exception* previous, Exception* current);
// Returns the handler that was installed before.
UnrecoverableHandler setUnrecoverableHandler(UnrecoverableHandler handler);

namespace Detail {
// Upper-case hexadecimal without leading zeros: 845 -> "34D".
String upperHex(uint64_t value);
}  // namespace Detail

}  // namespace Framework
