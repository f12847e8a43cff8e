#include "actions/SessionLog.h"

#include "Framework/Exception.h"
#include "fw/fw_raise.h"

#include <msiquery.h>

#include <memory>

using Framework::String;

SessionLog::SessionLog(MSIHANDLE session, const char* actionName)
    : hInstall(session), heading(String(L"WixKorvalin ") + String(actionName) + String(L": "))
{
}

namespace {

// The engine formats a record's text with the session before it logs it, and reads
// "[...]" and "{...}" as its own syntax (Wine's does even inside a field's value, so a
// "[1]" template with the text in field 1 is no shelter). "[\x]" stands for x alone.
String formatSafe(const String& text)
{
    String safe;
    safe.reserve(text.length());
    for (const wchar_t* c = text.c_str(); *c; ++c) {
        if (*c == L'[' || *c == L']' || *c == L'{' || *c == L'}') {
            const wchar_t escaped[] = {L'[', L'\\', *c, L']'};
            safe.append(escaped, 4);
        } else {
            safe.append(*c);
        }
    }
    return safe;
}

}  // namespace

void SessionLog::writeLine(const String& line) noexcept
{
    // The one place of an action where everything is swallowed: a log line must not
    // change what the action does.
    try {
        const String text = formatSafe(heading + line);
        const MSIHANDLE record = MsiCreateRecord(0);
        if (!record)
            return;
        MsiRecordSetStringW(record, 0, text.c_str());
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
