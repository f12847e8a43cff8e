// SetApplicationSize: writes "ApplicationSize" as the REG_DWORD "EstimatedSize" into
// the product's entry under
// HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\Uninstall\<ProductCode>,
// in the registry view of the DLL's own bitness: where the installer engine puts the
// entry of a package of that bitness (the 32-bit view for the 32-bit DLL, the 64-bit
// view for the 64-bit one). The size goes as it is, with no unit converted; an empty
// size writes 0.
//
// A size that is no decimal number, or too large for 32 bits, ends the action before
// the registry is touched. An entry that doesn't exist (yet) is never created: the
// action then writes nothing. A failure to open or write the entry leaves the action.
#include "actions/CustomAction.h"

#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryOutputValues.h"

using Framework::String;
using Framework::Win32::RegistryOutputValues;

void CustomAction::setApplicationSize()
{
    const String sizeText = getProperty("ApplicationSize");
    const String productCode = getProperty("ProductCode");
    const String entryPath =
        String::format(L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\%S", productCode.c_str());
    uint32_t size;
    try {
        size = sizeText.toUint(10);
    } catch (Framework::Exception* raw) {
        delete raw;  // not a size: nothing to write
        return;
    }

    RegistryOutputValues root;
    root.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
    if (!root.hasGroup(entryPath))
        return;
    RegistryOutputValues entry;
    entry.open(root, entryPath, Framework::Win32::writeAccess);
    entry.setUint("EstimatedSize", size);
    entry.close();
    root.close();
}
