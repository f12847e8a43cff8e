// Sends one text mail through the Simple MAPI interface of the machine's default mail
// client, without a window unless `showDialog` asks for the client's own one.
//
// The client is the one named by the default value of HKLM "SOFTWARE\Clients\Mail";
// its library is that client's "DllPath" (REG_SZ). Without a client, or without a
// usable "DllPath", the library is "MAPI32.DLL". The library stays loaded afterwards.
//
// The mail goes to "SMTP:<address>", named `displayName` (or the address when that is
// empty), with the same address as originator, flags MAPI_UNREAD |
// MAPI_RECEIPT_REQUESTED and the local time as "2013/2/20 9:5" (no leading zeros).
// An attachment is added when `attachmentPath` names an existing file; if the client
// answers MAPI_E_ATTACHMENT_OPEN_FAILURE or _WRITE_FAILURE, the mail is sent once more
// without it.
//
// True when the client took the mail (MAPISendMail answered SUCCESS_SUCCESS); false
// when no library or entry point was found or the client refused, the user's cancel
// included. A hardware fault inside the client is thrown here as fw_exception_assert
// while the FW layer translates faults (fw/fw_foreign_call.h); there is no handler of
// its own. All texts are narrow, in the system's ANSI code page.
#pragma once
#include "fw/fw_string.h"

bool fw_send_mail(const fw_string& address, const fw_string& subject, const fw_string& body,
                  const fw_string& displayName, const fw_string& attachmentPath, bool showDialog);

// The library fw_send_mail loads as it finds it now: the default client's "DllPath",
// or "MAPI32.DLL".
fw_string fw_mail_library_path();

// "%{1}d/%{2}d/%{3}d %{4}d:%{5}d" of the local year, month, day, hour and minute; an
// empty text when the present time is not to be had.
fw_string fw_mail_date_text();
