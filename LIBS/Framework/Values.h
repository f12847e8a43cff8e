// The value tree: groups that hold named, typed values and named sub-groups, declared
// by abstract classes so that readers and writers don't know whether the store is the
// registry, memory or a parsed file. Several sub-groups may share one name; an index
// from 0 upward tells them apart.
//
// Values describes one group; InputValues reads it and OutputValues writes it. A store
// that is both derives from both, over the one virtual base Values. The read side's
// operations are const and the write side's are not, which is how one class carries
// both group(name) operations: on a const object group(name) reads, on a non-const
// one it writes (and may create).
//
// There is no read with a default: a missing value is a failure, so a caller that can
// live without one asks hasValue or hasGroup first. Failures common to all stores:
//   a value whose stored type doesn't fit the read   FormatException, position all ones
//   a value that doesn't parse as its type           FormatException or OverflowException
//   group(name, index) with index >= groupCount      RangeException
// The virtual operations keep the order in which they are declared here.
#pragma once
#include "Framework/Array.h"
#include "Framework/SharedPointer.h"
#include "Framework/String.h"
#include "Framework/ValueType.h"

namespace Framework {

class Values
{
public:
    virtual ~Values() = default;

    // The group's own name, without an index.
    virtual String name() const = 0;
    // The group's full path in its store.
    virtual String path() const = 0;
    virtual bool hasValue(const String& name) const = 0;
    virtual bool hasGroup(const String& name) const = 0;
    virtual Array<String> valueNames() const = 0;
    // Each name once, however many groups carry it.
    virtual Array<String> groupNames() const = 0;
    // 0 for a name that no sub-group carries.
    virtual uint32_t groupCount(const String& name) const = 0;
};

class InputValues : public virtual Values
{
public:
    virtual ValueType typeOf(const String& name) const = 0;
    virtual bool getBool(const String& name) const = 0;
    virtual Int getInt(const String& name) const = 0;
    virtual Uint getUint(const String& name) const = 0;
    virtual Hyper getHyper(const String& name) const = 0;
    virtual Uhyper getUhyper(const String& name) const = 0;
    virtual String getString(const String& name) const = 0;
    // Bytes, one character each.
    virtual AnsiString getBinary(const String& name) const = 0;
    virtual Array<bool> getBoolArray(const String& name) const = 0;
    virtual Array<Int> getIntArray(const String& name) const = 0;
    virtual Array<Uint> getUintArray(const String& name) const = 0;
    virtual Array<Hyper> getHyperArray(const String& name) const = 0;
    virtual Array<Uhyper> getUhyperArray(const String& name) const = 0;
    virtual Array<String> getStringArray(const String& name) const = 0;
    virtual Array<AnsiString> getBinaryArray(const String& name) const = 0;
    virtual SharedPointer<InputValues> group(const String& name, uint32_t index) const = 0;
    // The one sub-group of that name.
    virtual SharedPointer<InputValues> group(const String& name) const = 0;

    // No values and no sub-groups.
    virtual bool isEmpty() const;
    // The names are equal (case-sensitive) and contentEquals.
    virtual bool equals(const InputValues& other) const;
    // The same values and the same sub-groups, recursively, whatever the order of the
    // names. The names of the two objects must match: a name this group has and
    // `other` lacks fails as `other` fails for a missing value, it doesn't give false.
    virtual bool contentEquals(const InputValues& other) const;
};

class OutputValues : public virtual Values
{
public:
    // Each stores the value under the name, replacing an earlier one.
    virtual void setBool(const String& name, bool value) = 0;
    virtual void setInt(const String& name, Int value) = 0;
    virtual void setUint(const String& name, Uint value) = 0;
    virtual void setHyper(const String& name, Hyper value) = 0;
    virtual void setUhyper(const String& name, Uhyper value) = 0;
    virtual void setString(const String& name, const String& value) = 0;
    virtual void setBinary(const String& name, const AnsiString& value) = 0;
    // Each stores the whole array.
    virtual void setBoolArray(const String& name, Array<bool> values) = 0;
    virtual void setIntArray(const String& name, Array<Int> values) = 0;
    virtual void setUintArray(const String& name, Array<Uint> values) = 0;
    virtual void setHyperArray(const String& name, Array<Hyper> values) = 0;
    virtual void setUhyperArray(const String& name, Array<Uhyper> values) = 0;
    virtual void setStringArray(const String& name, Array<String> values) = 0;
    virtual void setBinaryArray(const String& name, Array<AnsiString> values) = 0;
    // Each appends one element to the array under the name, starting one if the name
    // is free.
    virtual void addBool(const String& name, bool value) = 0;
    virtual void addInt(const String& name, Int value) = 0;
    virtual void addUint(const String& name, Uint value) = 0;
    virtual void addHyper(const String& name, Hyper value) = 0;
    virtual void addUhyper(const String& name, Uhyper value) = 0;
    virtual void addString(const String& name, const String& value) = 0;
    virtual void addBinary(const String& name, const AnsiString& value) = 0;
    // An existing sub-group.
    virtual SharedPointer<OutputValues> group(const String& name, uint32_t index) = 0;
    // The one sub-group of that name, created if there is none.
    virtual SharedPointer<OutputValues> group(const String& name) = 0;
    // A new sub-group under that name, behind those that exist.
    virtual SharedPointer<OutputValues> addGroup(const String& name) = 0;
};

}  // namespace Framework
