// Subscribe: sends the mail the package prepared in "ADDRESS" (bare, without "SMTP:"),
// "SUBJECT" and "MESSAGE" through the machine's default mail client, without a mail
// window. When the client is missing or refuses the mail (the user's cancel of its
// logon included), a box with the package's "DLL_SEND_MESSAGE_FAILED" as text and
// "DLL_SEND_MESSAGE_FAILED_TITLE" as title says so; those two are read only then.
//
// The texts go to the client in the system's ANSI code page; a character the code
// page lacks becomes its default character. No property is checked: an empty address
// goes to the client as "SMTP:".
//
// A failure of either exception layer while the mail is on its way, a fault inside the
// mail client among them, ends the action quietly: no box. Anything else that is
// thrown leaves the action.
//
// In the installation's log: the address and subject read (never the body), the mail
// library asked, and whether the client took the mail, or why no mail went.
#include "actions/CustomAction.h"

#include "Framework/String.h"
#include "fw/fw_raise.h"
#include "fw/fw_send_mail.h"

using Framework::AnsiString;
using Framework::String;

namespace {

fw_string ansiText(const String& text)
{
    return fw_string(AnsiString(text).c_str());
}

}  // namespace

void CustomAction::subscribe()
{
    const String address = getProperty("ADDRESS");
    const String subject = getProperty("SUBJECT");
    const String message = getProperty("MESSAGE");
    logLine(L"read \"ADDRESS\" = \"%S\", \"SUBJECT\" = \"%S\"", address.c_str(), subject.c_str());

    fw_exception_nesting = 0;
    fw_require_initialized();
    try {
        const fw_string displayName;
        const fw_string attachmentPath;
        const fw_string body = ansiText(message);
        const fw_string subjectText = ansiText(subject);
        const fw_string to = ansiText(address);
        logLine(L"asking the mail library \"%S\"", String(fw_mail_library_path().c_str()).c_str());
        if (fw_send_mail(to, subjectText, body, displayName, attachmentPath, false)) {
            logLine(L"the mail client took the mail");
            return;
        }
        const String text = getProperty("DLL_SEND_MESSAGE_FAILED");
        const String title = getProperty("DLL_SEND_MESSAGE_FAILED_TITLE");
        logLine(L"the mail client is missing or refused the mail: showing the box \"%S\"", title.c_str());
        MessageBoxW(nullptr, text.c_str(), title.c_str(), MB_OK | MB_ICONERROR);
    } catch (fw_exception* raw) {
        fw_clear_current();
        delete raw;  // no mail and no box; the installation goes on
        logLine(L"the mail failed inside the mail client: no mail, no box");
    }
}
