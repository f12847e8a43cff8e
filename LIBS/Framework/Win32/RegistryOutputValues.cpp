#include "Framework/Win32/RegistryOutputValues.h"

#include "Framework/Exceptions.h"
#include "Framework/Win32/RegistryFormat.h"

namespace Framework { namespace Win32 {

namespace {

[[noreturn]] void misfit()
{
    throw new FormatException(SITE, FormatException::unknownPosition);
}

// The tag and then each element as text.
template <class T>
Array<String> taggedList(ValueType tag, const Array<T>& values)
{
    Array<String> items;
    items.reserve(values.size() + 1);
    items.add(typeName(tag));
    for (uint32_t i = 0; i < values.size(); ++i)
        items.add(valueText(values.at(i)));
    return items;
}

template <class T>
Array<String> taggedScalar(ValueType tag, const T& value)
{
    Array<T> one;
    one.add(value);
    return taggedList(tag, one);
}

}  // namespace

String RegistryOutputValues::name() const
{
    const String full = RegistryKey::name();
    const wchar_t bracket = L'[';
    const uint32_t at = full.find(&bracket, 1);
    return at == String::npos ? full : full.substr(0, at);
}

String RegistryOutputValues::path() const { return RegistryKey::path(); }
bool RegistryOutputValues::hasValue(const String& name) const { return RegistryKey::hasValue(name); }

bool RegistryOutputValues::hasGroup(const String& name) const
{
    return !Detail::hasBracket(name) && hasSubKey(name);
}

Array<String> RegistryOutputValues::valueNames() const { return RegistryKey::valueNames(); }

Array<String> RegistryOutputValues::groupNames() const
{
    const Array<String> keys = subKeyNames();
    Array<String> names;
    for (uint32_t i = 0; i < keys.size(); ++i)
        if (!keys.at(i).endsWith(L']'))
            names.add(keys.at(i));
    return names;
}

uint32_t RegistryOutputValues::groupCount(const String& name) const { return Detail::groupCountIn(*this, name); }

void RegistryOutputValues::setUint(const String& name, Uint value) { writeRaw(name, REG_DWORD, &value, 4); }
void RegistryOutputValues::setUhyper(const String& name, Uhyper value) { writeRaw(name, REG_QWORD, &value, 8); }

void RegistryOutputValues::setString(const String& name, const String& value)
{
    // The registry adds the terminator that the size leaves out.
    writeRaw(name, REG_SZ, value.c_str(), value.length() * sizeof(wchar_t));
}

void RegistryOutputValues::setBinary(const String& name, const AnsiString& value)
{
    writeRaw(name, REG_BINARY, value.c_str(), value.length());
}

void RegistryOutputValues::setBool(const String& name, bool value)
{
    Detail::writeList(*this, name, taggedScalar(ValueType::Bool, value));
}
void RegistryOutputValues::setInt(const String& name, Int value)
{
    Detail::writeList(*this, name, taggedScalar(ValueType::Int, value));
}
void RegistryOutputValues::setHyper(const String& name, Hyper value)
{
    Detail::writeList(*this, name, taggedScalar(ValueType::Hyper, value));
}

void RegistryOutputValues::setBoolArray(const String& name, Array<bool> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::BoolArray, values));
}
void RegistryOutputValues::setIntArray(const String& name, Array<Int> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::IntArray, values));
}
void RegistryOutputValues::setUintArray(const String& name, Array<Uint> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::UintArray, values));
}
void RegistryOutputValues::setHyperArray(const String& name, Array<Hyper> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::HyperArray, values));
}
void RegistryOutputValues::setUhyperArray(const String& name, Array<Uhyper> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::UhyperArray, values));
}
void RegistryOutputValues::setStringArray(const String& name, Array<String> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::StringArray, values));
}
void RegistryOutputValues::setBinaryArray(const String& name, Array<AnsiString> values)
{
    Detail::writeList(*this, name, taggedList(ValueType::BinaryArray, values));
}

void RegistryOutputValues::appendToList(const String& name, const String& text, ValueType arrayType)
{
    Array<String> items;
    if (hasValue(name)) {
        DWORD size = 0;
        if (rawType(name, &size) != REG_MULTI_SZ || size == 0)
            misfit();
        const Detail::StoredList stored = Detail::readList(*this, name, size);
        if (stored.tag != arrayType)
            misfit();
        items = stored.pieces;
    } else {
        items.add(typeName(arrayType));
    }
    items.add(text);
    Detail::writeList(*this, name, items);
}

void RegistryOutputValues::addBool(const String& name, bool value)
{
    appendToList(name, valueText(value), ValueType::BoolArray);
}
void RegistryOutputValues::addInt(const String& name, Int value)
{
    appendToList(name, valueText(value), ValueType::IntArray);
}
void RegistryOutputValues::addUint(const String& name, Uint value)
{
    appendToList(name, valueText(value), ValueType::UintArray);
}
void RegistryOutputValues::addHyper(const String& name, Hyper value)
{
    appendToList(name, valueText(value), ValueType::HyperArray);
}
void RegistryOutputValues::addUhyper(const String& name, Uhyper value)
{
    appendToList(name, valueText(value), ValueType::UhyperArray);
}
void RegistryOutputValues::addString(const String& name, const String& value)
{
    appendToList(name, value, ValueType::StringArray);
}
void RegistryOutputValues::addBinary(const String& name, const AnsiString& value)
{
    appendToList(name, valueText(value), ValueType::BinaryArray);
}

SharedPointer<OutputValues> RegistryOutputValues::group(const String& name, uint32_t index)
{
    if (Detail::hasBracket(name))
        misfit();
    if (!hasGroup(name))
        throw new LookupException(SITE);
    const String groupKey = Detail::indexedName(name, index);
    if (index != 0 && !hasSubKey(groupKey))
        throw new RangeException(SITE, 0, 0, 0);
    SharedPointer<RegistryOutputValues> child(new RegistryOutputValues);
    child->open(*this, groupKey, writeAccess);
    return child;
}

SharedPointer<OutputValues> RegistryOutputValues::group(const String& name)
{
    return createGroup(name, String());
}

SharedPointer<OutputValues> RegistryOutputValues::createGroup(const String& name, const String& className)
{
    if (Detail::hasBracket(name))
        misfit();
    if (hasSubKey(Detail::indexedName(name, 1)))
        misfit();
    SharedPointer<RegistryOutputValues> child(new RegistryOutputValues);
    child->create(*this, name, className);
    return child;
}

SharedPointer<OutputValues> RegistryOutputValues::addGroup(const String& name)
{
    return addGroup(name, String());
}

SharedPointer<OutputValues> RegistryOutputValues::addGroup(const String& name, const String& className)
{
    String groupKey = name;
    if (hasGroup(name)) {
        uint32_t n = 1;
        while (hasSubKey(Detail::indexedName(name, n)))
            ++n;
        groupKey = Detail::indexedName(name, n);
    }
    SharedPointer<RegistryOutputValues> child(new RegistryOutputValues);
    child->create(*this, groupKey, className);
    return child;
}

} }  // namespace Framework::Win32
