// The value tree in memory: one object is both the read side and the write side of a
// group, so a tree can be filled and then read, for example by the INI parser and then
// the log configuration.
//
// It has no typed storage: every value is a list of one or more texts. A typed write
// turns the value into text and a typed read parses the text again on every call, so
// a tree that came from a file reads as Bool, Int or String as the reader asks:
//   setInt("k", -5)      -> "-5"         setBinary("k", 01 FF) -> "01 FF"
//   setBool("k", true)   -> "true"       addString twice      -> a list of two texts
//   getInt of "0x1F" or "0X1f" -> 31, of "010" -> 10, of "-0x10" -> FormatException
// A scalar read takes the last text of the list; typeOf is always StringArray.
//
// Names of values and of groups are case-insensitive ("Level" and "LEVEL" are one
// name) and keep the spelling and the order of their first insertion. A value and a
// group may share a name. Several groups may share one name; group(name) wants
// exactly one of them, group(name, index) picks one.
//
// Group handles share the group object and its counter with the parent's own handle,
// whichever side they were taken from: a write through one is seen through the other.
// Paths: a root made as MemoryValues("r") has the path "/r", its child "a" "/r/a", and
// a root named "" has "/" with a child "//a".
//
// No lock: a tree is built by one thread and then read.
#pragma once
#include "Framework/NameHash.h"
#include "Framework/Values.h"

namespace Framework {

class MemoryValues : public InputValues, public OutputValues
{
public:
    explicit MemoryValues(const String& name);
    MemoryValues(const MemoryValues&) = delete;
    MemoryValues& operator=(const MemoryValues&) = delete;

    String name() const override;
    String path() const override;
    bool hasValue(const String& name) const override;
    bool hasGroup(const String& name) const override;
    // New arrays, in the order of first insertion.
    Array<String> valueNames() const override;
    Array<String> groupNames() const override;
    uint32_t groupCount(const String& name) const override;

    // A name that doesn't exist throws LookupException in all reads but typeOf.
    ValueType typeOf(const String& name) const override;
    bool getBool(const String& name) const override;
    Int getInt(const String& name) const override;
    Uint getUint(const String& name) const override;
    Hyper getHyper(const String& name) const override;
    Uhyper getUhyper(const String& name) const override;
    String getString(const String& name) const override;
    // fromHexText of the text.
    AnsiString getBinary(const String& name) const override;
    // New arrays, one element for each text, in order.
    Array<bool> getBoolArray(const String& name) const override;
    Array<Int> getIntArray(const String& name) const override;
    Array<Uint> getUintArray(const String& name) const override;
    Array<Hyper> getHyperArray(const String& name) const override;
    Array<Uhyper> getUhyperArray(const String& name) const override;
    Array<String> getStringArray(const String& name) const override;
    Array<AnsiString> getBinaryArray(const String& name) const override;
    // A missing name throws LookupException; an index beyond the list throws
    // RangeException(0, 0, 0).
    SharedPointer<InputValues> group(const String& name, uint32_t index) const override;
    // A missing name throws LookupException, several groups of the name throw
    // FormatException.
    SharedPointer<InputValues> group(const String& name) const override;

    // The set operations replace the whole list; a replaced name keeps its place in
    // valueNames(). The array forms copy the array, and an empty one throws
    // ErrorException and leaves the old value.
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
    SharedPointer<OutputValues> group(const String& name, uint32_t index) override;
    // Creates the group when the name has none; several throw FormatException.
    SharedPointer<OutputValues> group(const String& name) override;
    SharedPointer<OutputValues> addGroup(const String& name) override;

    // Removes all values and groups; name and path stay.
    virtual void clear();
    // A new, empty group of this class; every child is made here.
    virtual SharedPointer<InputValues> newGroup(const String& name) const;
    // clear(), and name and path become empty.
    virtual void reset();

private:
    using TextList = Array<String>;
    using GroupList = Array<SharedPointer<MemoryValues>>;

    const TextList& textList(const String& name) const;
    String lastText(const String& name) const;
    const GroupList& groupList(const String& name) const;
    SharedPointer<MemoryValues> makeChild(const String& name) const;
    void storeList(const String& name, const TextList& list);
    void addText(const String& name, const String& text);
    template <class T, class Convert>
    Array<T> convertAll(const String& name, Convert convert) const;
    template <class T>
    void storeArray(const String& name, const Array<T>& values);

    SharedPointer<NameMap<TextList>> valueMap;
    SharedPointer<NameMap<GroupList>> groupMap;
    Array<String> valueNameList;
    Array<String> groupNameList;
    String groupName;
    String groupPath;
};

}  // namespace Framework
