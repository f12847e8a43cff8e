// SetEncaseKorvalinFlag: resets EnCase's "CheckKorvalin" under
// HKEY_LOCAL_MACHINE\Software\Guidance Software\EnCase to 0 when it holds 1 or 2, in
// the 32-bit view of the registry, in both builds: the key is EnCase's, a 32-bit
// program's. It doesn't touch the session.
//
// No key or no value: nothing happens. Any other number stays. A value that doesn't
// read as a number (a string, say), or a key that can't be opened for writing, ends
// the action quietly with the flag as it was. Only a key that exists but can't be
// opened for reading leaves the action.
//
// The flag is read through one pair of key objects and written through another, which
// is opened only when the flag has to change.
#include "actions/CustomAction.h"

#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryInputValues.h"
#include "Framework/Win32/RegistryOutputValues.h"

using Framework::String;
using namespace Framework::Win32;

void CustomAction::setEncaseKorvalinFlag()
{
    const String encasePath = "Software\\Guidance Software\\EnCase";
    const String flagName = "CheckKorvalin";

    RegistryInputValues root;
    root.use32BitView();
    root.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
    if (!root.hasGroup(encasePath))
        return;
    RegistryInputValues encase;
    encase.use32BitView();
    encase.open(root, encasePath, readAccess);
    if (!encase.hasValue(flagName))
        return;
    try {
        const uint32_t flag = encase.getUint(flagName);
        if (flag != 1 && flag != 2)
            return;
        RegistryOutputValues writeRoot;
        writeRoot.use32BitView();
        writeRoot.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
        RegistryOutputValues writeKey;
        writeKey.use32BitView();
        writeKey.open(writeRoot, encasePath, writeAccess);
        writeKey.setUint(flagName, 0);
        writeKey.close();
        writeRoot.close();
    } catch (Framework::Exception* raw) {
        delete raw;  // the flag keeps its value; the installation goes on
    }
    encase.close();
    root.close();
}
