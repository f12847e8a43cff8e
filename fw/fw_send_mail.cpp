#include "fw/fw_send_mail.h"

#include "fw/fw_foreign_call.h"
#include "fw/fw_format.h"
#include "fw/fw_path_exists.h"
#include "fw/fw_registry_path.h"

#include <windows.h>
#include <mapi.h>

#include <ctime>

namespace {

// The full path of an existing file, or an empty text when it is not usable.
fw_string attachmentFullPath(const fw_string& path)
{
    if (path.empty() || !fw_path_exists(path, true, false))
        return fw_string();
    const DWORD length = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr);
    if (length == 0)
        return fw_string();
    fw_string full{uint32_t(length)};
    const DWORD written = GetFullPathNameA(path.c_str(), length, full.writable(), nullptr);
    if (written != length - 1)
        return fw_string();
    return full;
}

// An export of the mail library as its Simple MAPI type; null if it has none.
template <class Entry>
Entry entryPoint(HMODULE module, const char* name)
{
    return reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

char* text(const fw_string& value)
{
    // Simple MAPI takes plain pointers and writes through none of them.
    return const_cast<char*>(value.c_str());
}

}  // namespace

fw_string fw_mail_library_path()
{
    const fw_registry_path clients(fw_registry_root(fw_registry_root::local_machine),
                                   fw_string("SOFTWARE\\Clients\\Mail"));
    fw_string client;
    fw_string library;
    // A failed read leaves `library` empty.
    if (clients.readString(fw_string(), fw_string(), client) && !client.empty())
        clients.readString(client, fw_string("DllPath"), library);
    if (library.empty())
        library = fw_string("MAPI32.DLL");
    return library;
}

fw_string fw_mail_date_text()
{
    const std::time_t now = std::time(nullptr);
    if (now < 0)
        return fw_string();
    const std::tm* local = std::localtime(&now);
    if (!local)
        return fw_string();
    return fw_format("%{1}d/%{2}d/%{3}d %{4}d:%{5}d", local->tm_year + 1900, local->tm_mon + 1, local->tm_mday,
                     local->tm_hour, local->tm_min);
}

bool fw_send_mail(const fw_string& address, const fw_string& subject, const fw_string& body,
                  const fw_string& displayName, const fw_string& attachmentPath, bool showDialog)
{
    const fw_string smtpAddress = fw_format("SMTP:%{1}s", address.c_str());
    MapiRecipDesc recipient = {};
    recipient.ulRecipClass = MAPI_TO;
    recipient.lpszName = text(displayName.empty() ? address : displayName);
    recipient.lpszAddress = text(smtpAddress);
    MapiRecipDesc originator = {};
    originator.ulRecipClass = MAPI_ORIG;
    originator.lpszAddress = text(smtpAddress);
    const fw_string date = fw_mail_date_text();

    MapiMessage message = {};
    message.lpszSubject = text(subject);
    message.lpszNoteText = text(body);
    message.lpszDateReceived = text(date);
    message.flFlags = MAPI_UNREAD | MAPI_RECEIPT_REQUESTED;
    message.lpOriginator = &originator;
    message.nRecipCount = 1;
    message.lpRecips = &recipient;

    const fw_string attachment = attachmentFullPath(attachmentPath);
    MapiFileDesc file = {};
    if (!attachment.empty()) {
        file.nPosition = 0xFFFFFFFF;
        file.lpszPathName = text(attachment);
        message.nFileCount = 1;
        message.lpFiles = &file;
    }

    const fw_string library = fw_mail_library_path();
    const HMODULE module = fw_foreign_call([&library] { return LoadLibraryA(library.c_str()); });
    if (!module)
        return false;
    const auto logon = entryPoint<LPMAPILOGON>(module, "MAPILogon");
    const auto logoff = entryPoint<LPMAPILOGOFF>(module, "MAPILogoff");
    const auto sendMail = entryPoint<LPMAPISENDMAIL>(module, "MAPISendMail");
    if (!logon || !logoff || !sendMail)
        return false;

    // A refused logon is not read: the client then gets session 0 and decides.
    LHANDLE session = 0;
    fw_foreign_call([&] { return logon(0, nullptr, nullptr, MAPI_LOGON_UI, 0, &session); });
    const FLAGS flags = showDialog ? MAPI_DIALOG : 0;
    ULONG sent = fw_foreign_call([&] { return sendMail(session, 0, &message, flags, 0); });
    if (sent == MAPI_E_ATTACHMENT_OPEN_FAILURE || sent == MAPI_E_ATTACHMENT_WRITE_FAILURE) {
        message.nFileCount = 0;
        message.lpFiles = nullptr;
        sent = fw_foreign_call([&] { return sendMail(session, 0, &message, flags, 0); });
    }
    fw_foreign_call([&] { return logoff(session, 0, 0, 0); });
    return sent == SUCCESS_SUCCESS;
}
