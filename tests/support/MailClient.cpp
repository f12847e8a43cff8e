#include "support/MailClient.h"

#include "support/ActionLibrary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

const wchar_t* const mailClients = L"SOFTWARE\\Clients\\Mail";
const wchar_t* const clientName = L"WixKorvalin Test Mail";
const std::wstring clientKey = std::wstring(mailClients) + L"\\" + clientName;
const wchar_t* const ordersKey = L"Software\\WixKorvalin Tests\\Mail client";

void setText(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& value)
{
    EXPECT_EQ(ERROR_SUCCESS, RegSetKeyValueW(root, path.c_str(), name, REG_SZ, value.c_str(),
                                             DWORD((value.size() + 1) * sizeof(wchar_t))));
}

}  // namespace

std::wstring MailClient::libraryPath()
{
    // CTest's path may come with forward slashes; a real client registers backslashes.
    std::wstring path = testSetting("KORVALIN_MAIL_CLIENT_DLL");
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
}

std::wstring MailClient::fallbackLibraryPath()
{
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::wstring path(program);
    return path.substr(0, path.find_last_of(L'\\') + 1) + L"MAPI32.DLL";
}

MailClient::MailClient(Registration registration)
{
    // One fixed file: a death test's child makes its own MailClient when it runs the
    // test's body, and must record where the parent will look.
    wchar_t folder[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    recordPath = std::wstring(folder) + L"WixKorvalin mail record.txt";
    DeleteFileW(recordPath.c_str());
    setText(HKEY_CURRENT_USER, ordersKey, L"Record", recordPath);
    answer("success");

    wchar_t previous[1024] = L"";
    DWORD size = sizeof previous;
    RegGetValueW(HKEY_LOCAL_MACHINE, mailClients, nullptr, RRF_RT_REG_SZ, nullptr, previous, &size);
    previousDefault = previous;
    if (registration == Registration::asDefault) {
        setText(HKEY_LOCAL_MACHINE, mailClients, nullptr, clientName);
        setText(HKEY_LOCAL_MACHINE, clientKey, L"DllPath", libraryPath());
    } else {
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, mailClients, nullptr);
    }
}

MailClient::~MailClient()
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, clientKey.c_str());
    if (!previousDefault.empty())
        setText(HKEY_LOCAL_MACHINE, mailClients, nullptr, previousDefault);
    else
        RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, mailClients, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, ordersKey);
    DeleteFileW(recordPath.c_str());
}

void MailClient::answer(const std::string& answer)
{
    setText(HKEY_CURRENT_USER, ordersKey, L"Answer", std::wstring(answer.begin(), answer.end()));
}

void MailClient::setDllPath(DWORD type, const void* data, DWORD size)
{
    EXPECT_EQ(ERROR_SUCCESS, RegSetKeyValueW(HKEY_LOCAL_MACHINE, clientKey.c_str(), L"DllPath", type, data, size));
}

std::vector<MailCall> MailClient::calls() const
{
    std::vector<MailCall> result;
    std::ifstream record(recordPath.c_str(), std::ios::binary);
    std::string key, value;
    while (std::getline(record, key, '\0') && std::getline(record, value, '\0')) {
        if (key == "call")
            result.push_back(MailCall{value, {}});
        else if (!result.empty())
            result.back().fields[key] = value;
    }
    return result;
}

std::vector<MailCall> MailClient::sends() const
{
    std::vector<MailCall> result;
    for (const MailCall& call : calls())
        if (call.name == "MAPISendMail")
            result.push_back(call);
    return result;
}
