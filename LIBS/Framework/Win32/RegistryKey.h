// An open registry key that remembers its name and its path, and the one place where
// the registry is called. Every failed call becomes an OsException with the Win32
// code in osError (its `code` is 0, except for rawType and readRaw, where it is the
// Win32 code too); asking for a value or a sub-key that isn't there (hasValue,
// hasSubKey, the name lists) reports absence instead.
//
// Root keys are attached, not opened: attach(HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE")
// gives a key whose name is the label, and which the wrapper never closes by itself.
// A key opened as "Software\Test" under it has the name "Software\Test" and the path
// "HKEY_LOCAL_MACHINE\Software\Test". A sub-key text may hold several names.
//
// Views: a program sees the view of its own bitness of HKEY_LOCAL_MACHINE\Software by
// default; use64BitView() adds KEY_WOW64_64KEY, use32BitView() KEY_WOW64_32KEY, to
// every access this object asks for (objects opened from it start again without).
//
// Closing flushes first, so that written values reach the disk; a failed flush throws
// and leaves the key open. The destructor closes an owned key. An empty name is passed
// as an empty text, so it addresses the default value. No lock: one thread at a time.
#pragma once
#include "Framework/Array.h"
#include "Framework/String.h"

#include <windows.h>

namespace Framework { namespace Win32 {

// Access masks of the value stores.
const uint32_t readAccess = 0x20019;       // KEY_READ
const uint32_t writeAccess = 0x2001F;      // KEY_READ, KEY_SET_VALUE, KEY_CREATE_SUB_KEY
const uint32_t createAccess = 0xF003F;     // KEY_ALL_ACCESS
const uint32_t view64Flag = 0x100;         // KEY_WOW64_64KEY
const uint32_t view32Flag = 0x200;         // KEY_WOW64_32KEY

class RegistryKey
{
public:
    RegistryKey();
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    // Closes an owned key; a failure to close is dropped here, since a destructor
    // can't report it. Call close() to hear about it.
    virtual ~RegistryKey();
    // Flush, then close, whatever handle there is; nothing without a key.
    virtual void close();

    // A root key from outside, under a label; never closed by the destructor.
    void attach(HKEY rootKey, const String& name);
    // Overwrites the handle without closing what was there.
    void open(const RegistryKey& parent, const String& subKey, uint32_t access);
    // Creates the key, or opens it if it exists, with all access.
    void create(const RegistryKey& parent, const String& subKey, const String& className);

    // These throw ValueNotInitializedException without a key.
    HKEY handle() const;
    String name() const;
    String path() const;
    void use64BitView() { viewFlags = view64Flag; }
    void use32BitView() { viewFlags = view32Flag; }
    bool hasKey() const { return hKey != nullptr; }

    // True for a value of any type and size.
    bool hasValue(const String& name) const;
    // True when the sub-key opens; "" opens the key itself.
    bool hasSubKey(const String& subKey) const;
    // The REG_* type; the data's size in bytes goes to *size. A missing value throws
    // OsException with code 2. A null size throws ErrorException.
    uint32_t rawType(const String& name, DWORD* size) const;
    // Copies at most *size bytes into buffer; *size becomes the data's size.
    void readRaw(const String& name, void* buffer, DWORD* size) const;
    void writeRaw(const String& name, uint32_t type, const void* data, DWORD size);
    // The key's class text.
    String className() const;
    // In index order; an index that fails to enumerate is skipped, and a key that
    // can't be queried lists nothing.
    Array<String> valueNames() const;
    Array<String> subKeyNames() const;

    // Access lists (DACLs) of the sub-key `subKey` ("" for this key), always in the
    // 32-bit view, through a key opened for the one call and closed on every way out.
    // A block that can't be had raises fw_exception_memory.
    //   accessList       a copy in a block from LocalAlloc, the caller's to LocalFree;
    //                    access denied to the key or its list throws NoAdminRightsException
    //   clearAccessList  a null list, which restricts nobody; access denied to the key
    //                    throws NoAdminRightsException
    //   setAccessList    a list given back; every failure is an OsException
    PSECURITY_DESCRIPTOR accessList(const String& subKey) const;
    void clearAccessList(const String& subKey) const;
    void setAccessList(const String& subKey, PSECURITY_DESCRIPTOR descriptor) const;

protected:
    HKEY hKey;
    bool ownsKey;
    String keyName;
    String keyPath;
    uint32_t viewFlags;

private:
    HKEY requireKey() const;
    void took(HKEY opened, const RegistryKey& parent, const String& subKey);
    void writeAccessList(const String& subKey, PSECURITY_DESCRIPTOR descriptor, bool deniedMeansNoRights) const;
};

namespace Detail {
// The OsException of a failed registry call: the Win32 code in osError, and in `code`
// when withCode.
[[noreturn]] void throwRegistryError(LONG result, bool withCode = false);
}  // namespace Detail

} }  // namespace Framework::Win32
