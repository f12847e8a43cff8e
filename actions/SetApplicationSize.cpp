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
// action then writes nothing. An empty "ProductCode" names no entry either: its path
// would end in a backslash, which the registry reads as the uninstall list itself. A failure to open or write the entry leaves the action.
//
// In the installation's log: the two properties read, then what was written where, or
// why nothing was.
#include "actions/CustomAction.h"

#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryOutputValues.h"

using Framework::String;
using Framework::Win32::RegistryOutputValues;

void CustomAction::setApplicationSize()
{
    const String sizeText = getProperty("ApplicationSize");
    const String productCode = getProperty("ProductCode");
    logLine(L"read \"ApplicationSize\" = \"%S\", \"ProductCode\" = \"%S\"", sizeText.c_str(),
            productCode.c_str());
    const String entryPath =
        String::format(L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\%S", productCode.c_str());
    uint32_t size;
    try {
        size = sizeText.toUint(10);
    } catch (Framework::Exception* raw) {
        delete raw;  // not a size: nothing to write
        logLine(L"\"ApplicationSize\" is not a decimal number within 32 bits: nothing written");
        return;
    }

    if (productCode.length() == 0) {
        logLine(L"\"ProductCode\" is empty: nothing written");
        return;
    }

    RegistryOutputValues root;
    root.attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE");
    if (!root.hasGroup(entryPath)) {
        logLine(L"no uninstall entry HKEY_LOCAL_MACHINE\\%S: nothing written", entryPath.c_str());
        return;
    }
    RegistryOutputValues entry;
    entry.open(root, entryPath, Framework::Win32::writeAccess);
    entry.setUint("EstimatedSize", size);
    entry.close();
    root.close();
    logLine(L"wrote \"EstimatedSize\" = %u (REG_DWORD) into HKEY_LOCAL_MACHINE\\%S", size, entryPath.c_str());
}
