#include "actions/SessionLog.h"

#include "Framework/Exception.h"
#include "fw/fw_raise.h"

#include <msiquery.h>

#include <memory>

using Framework::String;

SessionLog::SessionLog(MSIHANDLE hInstall, const char* actionName)
    : hInstall(hInstall), heading(String(L"WixKorvalin ") + String(actionName) + String(L": "))
{
}

void SessionLog::writeLine(const String& line) noexcept
{
    // The one place of an action where everything is swallowed: a log line must not
    // change what the action does.
    try {
        const String text = heading + line;
        const MSIHANDLE record = MsiCreateRecord(1);
        if (!record)
            return;
        // The text as a field, not as the template: the engine would read "[...]"
        // and "{...}" in a template as its own syntax.
        MsiRecordSetStringW(record, 0, L"[1]");
        MsiRecordSetStringW(record, 1, text.c_str());
        MsiProcessMessage(hInstall, INSTALLMESSAGE_INFO, record);
        MsiCloseHandle(record);
    } catch (Framework::Exception* raw) {
        std::unique_ptr<Framework::Exception> failure(raw);
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> failure(raw);
        fw_clear_current();
    } catch (...) {
    }
}
