// SetDomain: finds out whether an earlier version of the product, known by its
// upgrade code, is registered for the machine or for the user, and tells the
// installation through "ALLUSERS" = "1" (per machine) and "AllUsersDisabled" = "yes"
// (the scope is no longer a choice):
//
//   machine-wide list   per-user list   ALLUSERS    AllUsersDisabled
//   no                  no              untouched   untouched
//   no                  yes             untouched   "yes"
//   yes                 either          "1"         "yes"
//
// Both hives are always searched, in this order, in the 64-bit view of the registry.
// Nothing is caught: a malformed "UpgradeCode" (an empty one too) or a registry
// failure leaves the action, before any property has been set.
//
// In the installation's log: the code read and its packed form, one line per list
// (found or not), then each property set, or that none was.
#include "actions/CustomAction.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryInputValues.h"

using Framework::String;
using Framework::Win32::RegistryInputValues;

namespace {

const wchar_t machineList[] = L"Software\\Classes\\Installer\\UpgradeCodes";
const wchar_t userList[] = L"Software\\Microsoft\\Installer\\UpgradeCodes";

String reversed(const String& text, uint32_t from, uint32_t to)
{
    String piece = text.substr(from, to);
    piece.reverse();
    return piece;
}

// Whether the list under the root holds the packed code, looked at in the 64-bit view.
bool listHolds(const RegistryInputValues& root, const String& listPath, const String& packedCode)
{
    if (!root.hasGroup(listPath))
        return false;
    RegistryInputValues list;
    list.use64BitView();
    list.open(root, listPath, Framework::Win32::readAccess);
    const bool found = list.hasGroup(packedCode);
    list.close();
    return found;
}

}  // namespace

String CustomAction::packGuid(const String& text)
{
    const uint32_t length = text.length();
    const bool braced = length == 38 && text.startsWith(L'{') && text.endsWith(L'}');
    if (length != 36 && !braced)
        throw new Framework::ErrorException(SITE);
    const uint32_t from = text.startsWith(L'{') ? 1 : 0;
    const uint32_t to = text.endsWith(L'}') ? length - 1 : length;
    const Framework::Array<String> pieces = text.substr(from, to).split(L'-');
    if (pieces.size() != 5)
        throw new Framework::ErrorException(SITE);

    String packed = reversed(pieces.at(0), 0, String::npos);
    packed += reversed(pieces.at(1), 0, String::npos);
    packed += reversed(pieces.at(2), 0, String::npos);
    const String& fourth = pieces.at(3);
    if (fourth.length() != 4)
        throw new Framework::ErrorException(SITE);
    packed += reversed(fourth, 0, 2);
    packed += reversed(fourth, 2, 4);
    const String& fifth = pieces.at(4);
    if (fifth.length() != 12)
        throw new Framework::ErrorException(SITE);
    for (uint32_t pair = 0; pair < 12; pair += 2)
        packed += reversed(fifth, pair, pair + 2);
    return packed;
}

void CustomAction::setDomain()
{
    const String upgradeCode = getProperty("UpgradeCode");
    logLine(L"read \"UpgradeCode\" = \"%S\"", upgradeCode.c_str());
    const String packedCode = packGuid(upgradeCode);
    logLine(L"looking for the packed code %S", packedCode.c_str());

    RegistryInputValues machine;
    machine.use64BitView();
    machine.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
    const bool perMachine = listHolds(machine, machineList, packedCode);
    logLine(L"%S under HKEY_LOCAL_MACHINE\\%S", perMachine ? L"found" : L"not found", machineList);

    RegistryInputValues user;
    user.use64BitView();
    user.attach(HKEY_CURRENT_USER, "HKEY_CURRENT_USER");
    const bool perUser = listHolds(user, userList, packedCode);
    logLine(L"%S under HKEY_CURRENT_USER\\%S", perUser ? L"found" : L"not found", userList);

    if (perMachine) {
        setProperty("ALLUSERS", "1");
        logLine(L"set \"ALLUSERS\" = \"1\"");
    }
    if (perMachine || perUser) {
        setProperty("AllUsersDisabled", "yes");
        logLine(L"set \"AllUsersDisabled\" = \"yes\"");
    } else {
        logLine(L"no earlier product of this upgrade code is registered: no property set");
    }
    user.close();
    machine.close();
}
