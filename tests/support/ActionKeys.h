// The registry keys the actions read and write, as the tests look at them: sub-keys
// of HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER.
#pragma once
#include <string>

namespace actionKeys {

const std::wstring machineUpgradeCodes = L"Software\\Classes\\Installer\\UpgradeCodes";
const std::wstring userUpgradeCodes = L"Software\\Microsoft\\Installer\\UpgradeCodes";
const std::wstring uninstallEntries = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
const std::wstring encase = L"Software\\Guidance Software\\EnCase";

}  // namespace actionKeys
