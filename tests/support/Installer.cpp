#include "Installer.h"

#include "ActionLibrary.h"

#include <msiquery.h>

#include <fstream>
#include <stdexcept>
#include <vector>

std::wstring testPackage(const wchar_t* fileName)
{
    return testSetting("KORVALIN_PACKAGES") + L"\\" + fileName;
}

DWORD runMsiexec(const std::wstring& arguments)
{
    return runProgram(L"msiexec.exe " + arguments);
}

namespace {

// Starts the command line with the given standard handles, or throws.
PROCESS_INFORMATION start(const std::wstring& commandLine, STARTUPINFOW& startup, BOOL inheritHandles)
{
    std::vector<wchar_t> writable(commandLine.begin(), commandLine.end());
    writable.push_back(0);
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, inheritHandles, 0, nullptr, nullptr, &startup,
                        &process))
        throw std::runtime_error("could not start (error " + std::to_string(GetLastError()) +
                                 "): " + std::string(commandLine.begin(), commandLine.end()));
    return process;
}

DWORD waitForExit(const PROCESS_INFORMATION& process)
{
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

}  // namespace

DWORD runProgram(const std::wstring& commandLine)
{
    STARTUPINFOW startup = {};
    return waitForExit(start(commandLine, startup, FALSE));
}

DWORD runProgram(const std::wstring& commandLine, std::string& output)
{
    SECURITY_ATTRIBUTES inheritable = {sizeof inheritable, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inheritable, 0))
        throw std::runtime_error("CreatePipe failed: " + std::to_string(GetLastError()));
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = writeEnd;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    PROCESS_INFORMATION process;
    try {
        process = start(commandLine, startup, TRUE);
    } catch (...) {
        CloseHandle(writeEnd);
        CloseHandle(readEnd);
        throw;
    }
    // Only the child holds the write end now, so reading ends when it exits.
    CloseHandle(writeEnd);
    output.clear();
    char buffer[4096];
    DWORD got = 0;
    while (ReadFile(readEnd, buffer, sizeof buffer, &got, nullptr) && got > 0)
        output.append(buffer, got);
    CloseHandle(readEnd);
    return waitForExit(process);
}

DWORD installQuietly(const std::wstring& package, const std::wstring& properties)
{
    return runMsiexec(L"/i \"" + package + L"\" /qn /l*v \"" + package + L".install.log\" " + properties);
}

DWORD uninstallQuietly(const std::wstring& package)
{
    return runMsiexec(L"/x \"" + package + L"\" /qn /l*v \"" + package + L".uninstall.log\"");
}

std::vector<std::string> installLogLines(const std::wstring& package, const std::string& action)
{
    std::ifstream log((package + L".install.log").c_str(), std::ios::binary);
    const std::string heading = "WixKorvalin " + action + ": ";
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(log, line)) {
        const size_t at = line.find(heading);
        if (at == std::string::npos)
            continue;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line.substr(at));
    }
    return lines;
}

std::wstring productCodeOf(const std::wstring& package)
{
    PMSIHANDLE database;
    PMSIHANDLE view;
    PMSIHANDLE record;
    wchar_t code[39] = {};
    DWORD length = 39;
    if (MsiOpenDatabaseW(package.c_str(), reinterpret_cast<LPCWSTR>(MSIDBOPEN_READONLY), &database) != ERROR_SUCCESS ||
        MsiDatabaseOpenViewW(database, L"SELECT `Value` FROM `Property` WHERE `Property` = 'ProductCode'", &view) !=
            ERROR_SUCCESS ||
        MsiViewExecute(view, 0) != ERROR_SUCCESS || MsiViewFetch(view, &record) != ERROR_SUCCESS ||
        MsiRecordGetStringW(record, 1, code, &length) != ERROR_SUCCESS)
        throw std::runtime_error("the package's ProductCode could not be read");
    return code;
}

bool isInstalled(const std::wstring& package)
{
    return MsiQueryProductStateW(productCodeOf(package).c_str()) != INSTALLSTATE_UNKNOWN;
}

bool readRegistryString(HKEY root, const std::wstring& key, const std::wstring& name, std::wstring& value,
                        REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return false;
    DWORD type = 0;
    DWORD size = 0;
    LONG result = RegQueryValueExW(opened, name.c_str(), nullptr, &type, nullptr, &size);
    std::vector<wchar_t> text(size / sizeof(wchar_t) + 1);
    if (result == ERROR_SUCCESS)
        result = RegQueryValueExW(opened, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
    RegCloseKey(opened);
    if (result != ERROR_SUCCESS || (type != REG_SZ && type != REG_EXPAND_SZ))
        return false;
    value.assign(text.data());
    return true;
}

bool readRegistryDword(HKEY root, const std::wstring& key, const std::wstring& name, DWORD& value, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return false;
    DWORD type = 0;
    DWORD data = 0;
    DWORD size = sizeof data;
    const LONG result = RegQueryValueExW(opened, name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&data), &size);
    RegCloseKey(opened);
    if (result != ERROR_SUCCESS || type != REG_DWORD || size != sizeof data)
        return false;
    value = data;
    return true;
}

void writeRegistryDword(HKEY root, const std::wstring& key, const std::wstring& name, DWORD value, REGSAM view)
{
    HKEY created = nullptr;
    LONG result = RegCreateKeyExW(root, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE | view, nullptr, &created, nullptr);
    if (result == ERROR_SUCCESS) {
        result = RegSetValueExW(created, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                                sizeof value);
        RegCloseKey(created);
    }
    if (result != ERROR_SUCCESS)
        throw std::runtime_error("registry value could not be written: " + std::to_string(result));
}

bool registryKeyExists(HKEY root, const std::wstring& key, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_QUERY_VALUE | view, &opened) != ERROR_SUCCESS)
        return false;
    RegCloseKey(opened);
    return true;
}

void deleteRegistryTree(HKEY root, const std::wstring& key, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_ALL_ACCESS | view, &opened) != ERROR_SUCCESS)
        return;
    RegDeleteTreeW(opened, nullptr);
    RegCloseKey(opened);
    RegDeleteKeyExW(root, key.c_str(), view, 0);
}
