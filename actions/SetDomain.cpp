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
#include "actions/CustomAction.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryInputValues.h"

using Framework::String;
using Framework::Win32::RegistryInputValues;

namespace {

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
    const String packedCode = packGuid(getProperty("UpgradeCode"));
    bool perMachine = false;
    bool registered = false;

    RegistryInputValues machine;
    machine.use64BitView();
    machine.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
    if (listHolds(machine, "Software\\Classes\\Installer\\UpgradeCodes", packedCode)) {
        perMachine = true;
        registered = true;
    }

    RegistryInputValues user;
    user.use64BitView();
    user.attach(HKEY_CURRENT_USER, "HKEY_CURRENT_USER");
    if (listHolds(user, "Software\\Microsoft\\Installer\\UpgradeCodes", packedCode))
        registered = true;

    if (perMachine)
        setProperty("ALLUSERS", "1");
    if (registered)
        setProperty("AllUsersDisabled", "yes");
    user.close();
    machine.close();
}
