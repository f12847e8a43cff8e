// Running packages the way a person does: msiexec in its own process, waited for,
// and what it left in the registry afterwards. Wine's engine reports a crashed or
// missing action as a success, so tests look at effects, not only at exit codes.
#pragma once
#include <windows.h>

#include <string>

// A package built for the tests, by file name, from KORVALIN_PACKAGES.
std::wstring testPackage(const wchar_t* fileName);
// Runs "msiexec <arguments>" and returns its exit code.
DWORD runMsiexec(const std::wstring& arguments);
// Quiet install and uninstall with a verbose log beside the package.
DWORD installQuietly(const std::wstring& package);
DWORD uninstallQuietly(const std::wstring& package);

// A string value, or false when the key or the value is missing. view is 0,
// KEY_WOW64_32KEY or KEY_WOW64_64KEY.
bool readRegistryString(HKEY root, const std::wstring& key, const std::wstring& name, std::wstring& value,
                        REGSAM view = 0);
void deleteRegistryTree(HKEY root, const std::wstring& key, REGSAM view = 0);
