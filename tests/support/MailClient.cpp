#include "support/MailClient.h"

#include "support/ActionLibrary.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

const wchar_t* const mailClients = L"SOFTWARE\\Clients\\Mail";
const wchar_t* const ordersKey = L"Software\\WixKorvalin Tests\\Mail client";

HKEY createKey(HKEY root, const std::wstring& path)
{
    HKEY key = nullptr;
    const LONG status = RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS)
        throw std::runtime_error("cannot create a key for the mail client");
    return key;
}

void setText(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& value)
{
    const HKEY key = createKey(root, path);
    RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                   DWORD((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
}

bool readText(HKEY root, const std::wstring& path, const wchar_t* name, std::wstring& value)
{
    wchar_t buffer[1024];
    DWORD size = sizeof buffer - sizeof(wchar_t);
    DWORD type = 0;
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    const LONG status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer), &size);
    RegCloseKey(key);
    if (status != ERROR_SUCCESS || type != REG_SZ)
        return false;
    buffer[size / sizeof(wchar_t)] = 0;
    value = buffer;
    return true;
}

void deleteValue(HKEY root, const std::wstring& path, const wchar_t* name)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_ALL_ACCESS, &key) != ERROR_SUCCESS)
        return;
    RegDeleteValueW(key, name);
    RegCloseKey(key);
}

std::string unescape(const std::string& text)
{
    std::string result;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            result += text[i];
            continue;
        }
        const char next = text[++i];
        result += next == 'r' ? '\r' : next == 'n' ? '\n' : next;
    }
    return result;
}

}  // namespace

const wchar_t* const MailClient::clientName = L"WixKorvalin Test Mail";

std::string MailCall::operator[](const std::string& key) const
{
    const auto found = fields.find(key);
    if (found == fields.end()) {
        ADD_FAILURE() << name << " has no field " << key;
        return "<missing>";
    }
    return found->second;
}

std::wstring MailClient::libraryPath()
{
    // CTest's path may come with forward slashes; a real client registers backslashes.
    std::wstring path = testSetting("KORVALIN_MAIL_CLIENT_DLL");
    for (wchar_t& c : path) {
        if (c == L'/')
            c = L'\\';
    }
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
    setOrder(L"Record", recordPath);
    setOrder(L"Answer", L"success");

    hadDefault = readText(HKEY_LOCAL_MACHINE, mailClients, nullptr, previousDefault);
    if (registration == Registration::asDefault) {
        setText(HKEY_LOCAL_MACHINE, mailClients, nullptr, clientName);
        setText(HKEY_LOCAL_MACHINE, std::wstring(mailClients) + L"\\" + clientName, L"DllPath", libraryPath());
    } else {
        deleteValue(HKEY_LOCAL_MACHINE, mailClients, nullptr);
    }
}

MailClient::~MailClient()
{
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (std::wstring(mailClients) + L"\\" + clientName).c_str());
    if (hadDefault)
        setText(HKEY_LOCAL_MACHINE, mailClients, nullptr, previousDefault);
    else
        deleteValue(HKEY_LOCAL_MACHINE, mailClients, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, ordersKey);
    DeleteFileW(recordPath.c_str());
}

void MailClient::setOrder(const wchar_t* name, const std::wstring& value)
{
    setText(HKEY_CURRENT_USER, ordersKey, name, value);
}

void MailClient::answer(const std::string& answer)
{
    setOrder(L"Answer", std::wstring(answer.begin(), answer.end()));
}

void MailClient::setDllPath(DWORD type, const void* data, DWORD size)
{
    const HKEY key = createKey(HKEY_LOCAL_MACHINE, std::wstring(mailClients) + L"\\" + clientName);
    RegSetValueExW(key, L"DllPath", 0, type, static_cast<const BYTE*>(data), size);
    RegCloseKey(key);
}

void MailClient::deleteDllPath()
{
    deleteValue(HKEY_LOCAL_MACHINE, std::wstring(mailClients) + L"\\" + clientName, L"DllPath");
}

std::vector<MailCall> MailClient::calls() const
{
    std::vector<MailCall> result;
    std::ifstream record(recordPath.c_str(), std::ios::binary);
    std::string line;
    while (std::getline(record, line)) {
        const size_t equals = line.find('=');
        if (equals == std::string::npos)
            continue;
        const std::string key = line.substr(0, equals);
        const std::string value = unescape(line.substr(equals + 1));
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
    for (const MailCall& call : calls()) {
        if (call.name == "MAPISendMail")
            result.push_back(call);
    }
    return result;
}

void MailClient::clear()
{
    DeleteFileW(recordPath.c_str());
}
