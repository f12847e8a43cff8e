// The value tree written into a registry key, in the layout of RegistryFormat.h:
//   setUint("n", 7)       REG_DWORD 7               setString   REG_SZ
//   setBool("x", true)    REG_MULTI_SZ "Bool", "true", then three zero characters
//   addUint("n", 1), addUint("n", 2)   "UintArray", "1", "2"  (getUint reads 2)
// add* extends only a list started by add* (or by the array setter of its type):
// addInt on a REG_DWORD, or on a list tagged "Int", throws FormatException.
//
// Groups are sub-keys; addGroup("g") three times makes "g", "g[1]", "g[2]".
// group(name) creates the one group of that name, or opens it; with "name[1]" present
// it throws FormatException, and group(name, index) must be used. Group objects are
// new keys with write access in the default view.
//
// Open this class with writeAccess. Closing flushes.
#pragma once
#include "Framework/Values.h"
#include "Framework/Win32/RegistryKey.h"

namespace Framework { namespace Win32 {

class RegistryOutputValues : public RegistryKey, public OutputValues
{
public:
    // The key name up to its first '['.
    String name() const override;
    String path() const override;
    bool hasValue(const String& name) const override;
    bool hasGroup(const String& name) const override;
    Array<String> valueNames() const override;
    // Sub-keys whose names don't end in ']'.
    Array<String> groupNames() const override;
    uint32_t groupCount(const String& name) const override;

    void setBool(const String& name, bool value) override;
    void setInt(const String& name, Int value) override;
    void setUint(const String& name, Uint value) override;
    void setHyper(const String& name, Hyper value) override;
    void setUhyper(const String& name, Uhyper value) override;
    void setString(const String& name, const String& value) override;
    void setBinary(const String& name, const AnsiString& value) override;
    void setBoolArray(const String& name, Array<bool> values) override;
    void setIntArray(const String& name, Array<Int> values) override;
    void setUintArray(const String& name, Array<Uint> values) override;
    void setHyperArray(const String& name, Array<Hyper> values) override;
    void setUhyperArray(const String& name, Array<Uhyper> values) override;
    void setStringArray(const String& name, Array<String> values) override;
    void setBinaryArray(const String& name, Array<AnsiString> values) override;
    void addBool(const String& name, bool value) override;
    void addInt(const String& name, Int value) override;
    void addUint(const String& name, Uint value) override;
    void addHyper(const String& name, Hyper value) override;
    void addUhyper(const String& name, Uhyper value) override;
    void addString(const String& name, const String& value) override;
    void addBinary(const String& name, const AnsiString& value) override;
    // A missing name throws LookupException, a missing index RangeException(0, 0, 0).
    SharedPointer<OutputValues> group(const String& name, uint32_t index) override;
    SharedPointer<OutputValues> group(const String& name) override;
    SharedPointer<OutputValues> addGroup(const String& name) override;

    SharedPointer<OutputValues> createGroup(const String& name, const String& className);
    SharedPointer<OutputValues> addGroup(const String& name, const String& className);

private:
    void appendToList(const String& name, const String& text, ValueType arrayType);
};

} }  // namespace Framework::Win32
