// The value tree read from a registry key (the layout is in RegistryFormat.h).
// Natively stored types read directly; the others come from tagged REG_MULTI_SZ
// lists, where a scalar read takes the last element:
//   REG_DWORD 7                 getUint 7, getUintArray {7}, getInt FormatException
//   "Int", "5"                  getInt 5, getIntArray {5}
//   "IntArray", "1", "2", "3"   getInt 3
//   "Uint", "5"                 getUint FormatException (only "UintArray" is a Uint list)
//   REG_EXPAND_SZ "%TEMP%\x"    getString expands it; typeOf FormatException
// A missing value throws OsException with code 2: there are no defaults, so ask
// hasValue first. A stored type that doesn't fit the read, or an empty value, throws
// FormatException with position all ones.
//
// group(name) opens a new object on the sub-key (read access, the default view);
// several groups of one name make group(name) throw FormatException, and group(name,
// index) picks one. Each group object owns its own key.
//
// openUnprotected opens a sub-key after giving it a null access list (access for
// everybody), and keeps the old list in the new object; restoreSecurity puts it back,
// and nothing else ever does.
#pragma once
#include "Framework/Values.h"
#include "Framework/Win32/RegistryKey.h"

namespace Framework { namespace Win32 {

class RegistryInputValues : public RegistryKey, public InputValues
{
public:
    RegistryInputValues();
    ~RegistryInputValues() override;

    // As RegistryKey's, and nothing saved to restore.
    virtual void open(const RegistryKey& parent, const String& subKey, uint32_t access);
    void attach(HKEY rootKey, const String& name);
    virtual String className() const;

    // The key name up to its first '['.
    String name() const override;
    String path() const override;
    bool hasValue(const String& name) const override;
    // False for a name with a bracket, without asking the registry.
    bool hasGroup(const String& name) const override;
    Array<String> valueNames() const override;
    // Sub-keys without brackets.
    Array<String> groupNames() const override;
    uint32_t groupCount(const String& name) const override;

    ValueType typeOf(const String& name) const override;
    bool getBool(const String& name) const override;
    Int getInt(const String& name) const override;
    Uint getUint(const String& name) const override;
    Hyper getHyper(const String& name) const override;
    Uhyper getUhyper(const String& name) const override;
    String getString(const String& name) const override;
    AnsiString getBinary(const String& name) const override;
    Array<bool> getBoolArray(const String& name) const override;
    Array<Int> getIntArray(const String& name) const override;
    Array<Uint> getUintArray(const String& name) const override;
    Array<Hyper> getHyperArray(const String& name) const override;
    Array<Uhyper> getUhyperArray(const String& name) const override;
    Array<String> getStringArray(const String& name) const override;
    Array<AnsiString> getBinaryArray(const String& name) const override;
    SharedPointer<InputValues> group(const String& name, uint32_t index) const override;
    SharedPointer<InputValues> group(const String& name) const override;

    // A new object on the sub-key, with no check of the name.
    virtual SharedPointer<InputValues> openSubKey(const String& name, uint32_t access) const;
    virtual uint32_t rawType(const String& name, DWORD* size) const;
    virtual void readRaw(const String& name, void* buffer, DWORD* size) const;
    // Access denied to the access list throws NoAdminRightsException; a missing
    // sub-key OsException with code 2.
    virtual SharedPointer<InputValues> openUnprotected(const String& subKey, uint32_t access) const;
    // Does nothing without a key or a saved list; a failure keeps the saved list, so
    // the call can be repeated.
    virtual void restoreSecurity();
    // A block from LocalAlloc, which restoreSecurity frees.
    virtual void setSavedSecurity(PSECURITY_DESCRIPTOR descriptor);

private:
    SharedPointer<InputValues> openGroup(const String& keyName) const;

    PSECURITY_DESCRIPTOR savedSecurity;
};

} }  // namespace Framework::Win32
