#include "Framework/Values.h"

#include "Framework/Exceptions.h"

namespace Framework {

namespace {

template <class T>
bool sameElements(const Array<T>& a, const Array<T>& b)
{
    if (a.size() != b.size())
        return false;
    for (uint32_t i = 0; i < a.size(); ++i)
        if (!(a.at(i) == b.at(i)))
            return false;
    return true;
}

bool sameValue(const InputValues& a, const InputValues& b, const String& name)
{
    const ValueType type = a.typeOf(name);
    if (b.typeOf(name) != type)
        return false;
    switch (type) {
    case ValueType::Bool:
        return a.getBool(name) == b.getBool(name);
    case ValueType::Int:
        return a.getInt(name) == b.getInt(name);
    case ValueType::Uint:
        return a.getUint(name) == b.getUint(name);
    case ValueType::Hyper:
        return a.getHyper(name) == b.getHyper(name);
    case ValueType::Uhyper:
        return a.getUhyper(name) == b.getUhyper(name);
    case ValueType::String:
        return a.getString(name) == b.getString(name);
    case ValueType::Binary:
        return a.getBinary(name) == b.getBinary(name);
    case ValueType::BoolArray:
        return sameElements(a.getBoolArray(name), b.getBoolArray(name));
    case ValueType::IntArray:
        return sameElements(a.getIntArray(name), b.getIntArray(name));
    case ValueType::UintArray:
        return sameElements(a.getUintArray(name), b.getUintArray(name));
    case ValueType::HyperArray:
        return sameElements(a.getHyperArray(name), b.getHyperArray(name));
    case ValueType::UhyperArray:
        return sameElements(a.getUhyperArray(name), b.getUhyperArray(name));
    case ValueType::StringArray:
        return sameElements(a.getStringArray(name), b.getStringArray(name));
    case ValueType::BinaryArray:
        return sameElements(a.getBinaryArray(name), b.getBinaryArray(name));
    }
    throw new NotImplementedException(SITE, toString(static_cast<uint32_t>(type)));
}

}  // namespace

bool InputValues::isEmpty() const
{
    return valueNames().size() == 0 && groupNames().size() == 0;
}

bool InputValues::equals(const InputValues& other) const
{
    const String ours = name();
    const String theirs = other.name();
    if (compare(ours.c_str(), ours.length(), theirs.c_str(), theirs.length()) != 0)
        return false;
    return contentEquals(other);
}

bool InputValues::contentEquals(const InputValues& other) const
{
    const Array<String> values = valueNames();
    const Array<String> groups = groupNames();
    if (values.size() != other.valueNames().size() || groups.size() != other.groupNames().size())
        return false;
    for (uint32_t i = 0; i < values.size(); ++i)
        if (!sameValue(*this, other, values.at(i)))
            return false;
    for (uint32_t i = 0; i < groups.size(); ++i) {
        const String& groupName = groups.at(i);
        const uint32_t count = groupCount(groupName);
        if (other.groupCount(groupName) != count)
            return false;
        for (uint32_t index = 0; index < count; ++index)
            if (!group(groupName, index)->contentEquals(*other.group(groupName, index)))
                return false;
    }
    return true;
}

}  // namespace Framework
