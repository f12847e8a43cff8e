#include "Framework/OsException.h"

#include <windows.h>
#include <cerrno>
#include <cstring>

namespace Framework {

OsError::OsError(bool fromLastError)
    : isLastError(fromLastError),
      errnoValue(fromLastError ? 0 : errno),
      lastError(fromLastError ? GetLastError() : 0)
{
}

OsError OsError::fromLastError(uint32_t lastError)
{
    OsError error(true);
    error.lastError = lastError;
    return error;
}

String osErrorText(uint32_t lastError)
{
    // The width mask (0xFF) keeps the platform's line breaks out of the text.
    const DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS |
                        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_MAX_WIDTH_MASK;
    wchar_t* block = nullptr;
    const DWORD length =
        FormatMessageW(flags, nullptr, lastError, 0, reinterpret_cast<wchar_t*>(&block), 0, nullptr);
    if (length == 0) {
        if (block)
            LocalFree(block);
        return toString(lastError);
    }
    String text(block, length);
    LocalFree(block);
    return text;
}

OsException::OsException(const ThrowSite& site, const OsError& error, uint64_t errorCode, const String& failedCall,
                         const String& sentence)
    : ErrorException(site), osError(error), code(errorCode), operation(failedCall), failureText(sentence)
{
}

String OsException::osText() const
{
    if (osError.isLastError)
        return osErrorText(osError.lastError);
    return String(std::strerror(osError.errnoValue));
}

String OsException::failureMessage() const
{
    return failureText;
}

bool OsException::isNoError() const
{
    return osError.isLastError ? osError.lastError == 0 : osError.errnoValue == 0;
}

bool OsException::isAccessDenied() const
{
    return osError.isLastError ? osError.lastError == ERROR_ACCESS_DENIED : osError.errnoValue == EACCES;
}

bool OsException::isDiskFull() const
{
    return osError.isLastError ? osError.lastError == ERROR_DISK_FULL : osError.errnoValue == ENOSPC;
}

bool OsException::isSharingViolation() const
{
    return osError.isLastError && osError.lastError == ERROR_SHARING_VIOLATION;
}

String OsException::description(bool includeCause) const
{
    String text = failureText + L'\n' + osText() + L'\n';
    if (code != 0)
        text += String(L"Code 0x") + Detail::upperHex(code) + L'\n';
    return text + Exception::description(includeCause);
}

}  // namespace Framework
