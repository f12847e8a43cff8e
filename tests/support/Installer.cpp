#include "Installer.h"

#include "ActionLibrary.h"

#include <stdexcept>
#include <vector>

std::wstring testPackage(const wchar_t* fileName)
{
    return testSetting("KORVALIN_PACKAGES") + L"\\" + fileName;
}

DWORD runMsiexec(const std::wstring& arguments)
{
    std::wstring commandLine = L"msiexec.exe " + arguments;
    std::vector<wchar_t> writable(commandLine.begin(), commandLine.end());
    writable.push_back(0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        throw std::runtime_error("msiexec could not be started: " + std::to_string(GetLastError()));
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return exitCode;
}

DWORD installQuietly(const std::wstring& package)
{
    return runMsiexec(L"/i \"" + package + L"\" /qn /l*v \"" + package + L".install.log\"");
}

DWORD uninstallQuietly(const std::wstring& package)
{
    return runMsiexec(L"/x \"" + package + L"\" /qn /l*v \"" + package + L".uninstall.log\"");
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

void deleteRegistryTree(HKEY root, const std::wstring& key, REGSAM view)
{
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, key.c_str(), 0, KEY_ALL_ACCESS | view, &opened) != ERROR_SUCCESS)
        return;
    RegDeleteTreeW(opened, nullptr);
    RegCloseKey(opened);
    RegDeleteKeyExW(root, key.c_str(), view, 0);
}
