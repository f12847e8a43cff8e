// A failed platform call. OsError records which error it was: a Win32 code from
// GetLastError, or the runtime's errno. OsException carries it with the caller's
// number, the name of the failed call (kept, never printed) and a sentence for the
// reader. Its description is:
//   "<sentence>\n<platform text>\n" ["Code 0x<code>\n" when code isn't 0] + base
#pragma once
#include "Framework/Exceptions.h"

namespace Framework {

struct OsError
{
    // Captures GetLastError() when isLastError, else errno.
    explicit OsError(bool isLastError);
    // An explicit Win32 code.
    static OsError fromLastError(uint32_t lastError);

    bool isLastError;
    int32_t errnoValue;
    uint32_t lastError;
};

// The platform's text for a Win32 code, on one line; the code in decimal when the
// platform has none.
String osErrorText(uint32_t lastError);

class OsException : public virtual ErrorException
{
public:
    OsException(const ThrowSite& site, const OsError& osError, uint64_t code, const String& operation,
                const String& failureText);

    // The platform's text: osErrorText for a Win32 code, strerror for an errno.
    virtual String osText() const;
    virtual String failureMessage() const;
    virtual bool isNoError() const;
    // errno 13 or Win32 code 5.
    virtual bool isAccessDenied() const;
    // errno 28 or Win32 code 112.
    virtual bool isDiskFull() const;
    // Win32 code 32; never for an errno.
    virtual bool isSharingViolation() const;

    String description(bool includeCause) const override;

    const OsError osError;
    const uint64_t code;
    const String operation;
    const String failureText;
};

}  // namespace Framework
