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
//
// In the installation's log: the key or value that is missing, or the value read and
// then whether it was reset, left, or could not be read as a number or written.
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
    if (!root.hasGroup(encasePath)) {
        logLine(L"no key HKEY_LOCAL_MACHINE\\%S: nothing changed", encasePath.c_str());
        return;
    }
    RegistryInputValues encase;
    encase.use32BitView();
    encase.open(root, encasePath, readAccess);
    if (!encase.hasValue(flagName)) {
        logLine(L"no value \"%S\" under HKEY_LOCAL_MACHINE\\%S: nothing changed", flagName.c_str(),
                encasePath.c_str());
        return;
    }
    bool flagRead = false;
    try {
        const uint32_t flag = encase.getUint(flagName);
        flagRead = true;
        logLine(L"read \"%S\" = %u", flagName.c_str(), flag);
        if (flag != 1 && flag != 2) {
            logLine(L"\"%S\" is neither 1 nor 2: nothing changed", flagName.c_str());
            return;
        }
        RegistryOutputValues writeRoot;
        writeRoot.use32BitView();
        writeRoot.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
        RegistryOutputValues writeKey;
        writeKey.use32BitView();
        writeKey.open(writeRoot, encasePath, writeAccess);
        writeKey.setUint(flagName, 0);
        writeKey.close();
        writeRoot.close();
        logLine(L"set \"%S\" to 0", flagName.c_str());
    } catch (Framework::Exception* raw) {
        delete raw;  // the flag keeps its value; the installation goes on
        logLine(flagRead ? L"\"%S\" could not be written: nothing changed"
                         : L"\"%S\" does not read as a number: nothing changed",
                flagName.c_str());
    }
    encase.close();
    root.close();
}
