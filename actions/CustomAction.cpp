#include "actions/CustomAction.h"

#include "Framework/Exception.h"
#include "fw/fw_raise.h"

#include <msiquery.h>

#include <cstdarg>
#include <memory>

using Framework::String;

CustomAction::CustomAction(MSIHANDLE session, const char* actionName)
    : hInstall(session), sessionLog(session, actionName), installerLogBinding(sessionLog)
{
}

void CustomAction::logLine(const wchar_t* format, ...) const noexcept
{
    va_list args;
    va_start(args, format);
    // Swallowed as the session's log swallows: a line must not change the action.
    try {
        sessionLog.writeLine(String::vformat(format, args));
    } catch (Framework::Exception* raw) {
        std::unique_ptr<Framework::Exception> failure(raw);
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> failure(raw);
        fw_clear_current();
    } catch (...) {
    }
    va_end(args);
}

String CustomAction::getProperty(const String& name) const
{
    // c_str() is never null: a name with no text goes as an empty wide string.
    DWORD length = 0;
    MsiGetPropertyW(hInstall, name.c_str(), nullptr, &length);
    length += 1;
    String value(static_cast<uint32_t>(length));
    // A fresh string is private, so its characters may be written directly. A call
    // that fails writes nothing: the text starts empty, not with what the heap held.
    value.refAt(0) = 0;
    MsiGetPropertyW(hInstall, name.c_str(), &value.refAt(0), &length);
    value.trimAtZero();
    return value;
}

UINT CustomAction::setProperty(const String& name, const String& value) const
{
    return MsiSetPropertyW(hInstall, name.c_str(), value.c_str());
}
