#include "Framework/MemoryValues.h"

#include "Framework/Exceptions.h"
#include "Framework/HexText.h"

namespace Framework {

namespace {

// "0x" after lowering means radix 16, anything else 10; so a sign in front of the
// prefix makes the parse fail.
template <class T>
T parseNumber(const String& text, T (String::*parse)(uint32_t) const)
{
    String lowered = text;
    lowered.toLower();
    return (lowered.*parse)(lowered.startsWith(L"0x") ? 16 : 10);
}

bool toBool(const String& text) { return parseBool(text); }
Int toInt(const String& text) { return parseNumber(text, &String::toInt); }
Uint toUint(const String& text) { return parseNumber(text, &String::toUint); }
Hyper toHyper(const String& text) { return parseNumber(text, &String::toHyper); }
Uhyper toUhyper(const String& text) { return parseNumber(text, &String::toUhyper); }
AnsiString toBinary(const String& text) { return fromHexText(AnsiString(text)); }

}  // namespace

MemoryValues::MemoryValues(const String& name)
    : valueMap(new NameMap<TextList>), groupMap(new NameMap<GroupList>), groupName(name), groupPath(L"/" + name)
{
}

String MemoryValues::name() const { return groupName; }
String MemoryValues::path() const { return groupPath; }

bool MemoryValues::hasValue(const String& name) const { return valueMap->count(name) != 0; }
bool MemoryValues::hasGroup(const String& name) const { return groupMap->count(name) != 0; }

namespace {

Array<String> copyNames(const Array<String>& list, size_t mapSize)
{
    if (list.size() != mapSize)
        throw new ErrorException(SITE);
    Array<String> names;
    names.reserve(list.size());
    for (uint32_t i = 0; i < list.size(); ++i)
        names.add(list.at(i));
    return names;
}

}  // namespace

Array<String> MemoryValues::valueNames() const { return copyNames(valueNameList, valueMap->size()); }
Array<String> MemoryValues::groupNames() const { return copyNames(groupNameList, groupMap->size()); }

uint32_t MemoryValues::groupCount(const String& name) const
{
    const auto found = groupMap->find(name);
    return found == groupMap->end() ? 0 : found->second.size();
}

namespace {

// The non-empty list under a name; a missing name is LookupException.
template <class List>
const List& listIn(const NameMap<List>& map, const String& name)
{
    const auto found = map.find(name);
    if (found == map.end())
        throw new LookupException(SITE);
    if (found->second.size() == 0)
        throw new ErrorException(SITE);
    return found->second;
}

}  // namespace

const MemoryValues::TextList& MemoryValues::textList(const String& name) const
{
    return listIn(*valueMap, name);
}

String MemoryValues::lastText(const String& name) const
{
    const TextList& list = textList(name);
    return list.at(list.size() - 1);
}

template <class T, class Convert>
Array<T> MemoryValues::convertAll(const String& name, Convert convert) const
{
    const TextList& list = textList(name);
    Array<T> result;
    result.reserve(list.size());
    for (uint32_t i = 0; i < list.size(); ++i)
        result.add(convert(list.at(i)));
    return result;
}

ValueType MemoryValues::typeOf(const String&) const { return ValueType::StringArray; }
bool MemoryValues::getBool(const String& name) const { return toBool(lastText(name)); }
Int MemoryValues::getInt(const String& name) const { return toInt(lastText(name)); }
Uint MemoryValues::getUint(const String& name) const { return toUint(lastText(name)); }
Hyper MemoryValues::getHyper(const String& name) const { return toHyper(lastText(name)); }
Uhyper MemoryValues::getUhyper(const String& name) const { return toUhyper(lastText(name)); }
String MemoryValues::getString(const String& name) const { return lastText(name); }
AnsiString MemoryValues::getBinary(const String& name) const { return toBinary(lastText(name)); }

Array<bool> MemoryValues::getBoolArray(const String& name) const { return convertAll<bool>(name, toBool); }
Array<Int> MemoryValues::getIntArray(const String& name) const { return convertAll<Int>(name, toInt); }
Array<Uint> MemoryValues::getUintArray(const String& name) const { return convertAll<Uint>(name, toUint); }
Array<Hyper> MemoryValues::getHyperArray(const String& name) const { return convertAll<Hyper>(name, toHyper); }
Array<Uhyper> MemoryValues::getUhyperArray(const String& name) const
{
    return convertAll<Uhyper>(name, toUhyper);
}
Array<String> MemoryValues::getStringArray(const String& name) const
{
    return convertAll<String>(name, [](const String& text) { return text; });
}
Array<AnsiString> MemoryValues::getBinaryArray(const String& name) const
{
    return convertAll<AnsiString>(name, toBinary);
}

const MemoryValues::GroupList& MemoryValues::groupList(const String& name) const
{
    return listIn(*groupMap, name);
}

SharedPointer<InputValues> MemoryValues::group(const String& name, uint32_t index) const
{
    const GroupList& list = groupList(name);
    if (index >= list.size())
        throw new RangeException(SITE, 0, 0, 0);
    return list.at(index);
}

SharedPointer<InputValues> MemoryValues::group(const String& name) const
{
    const GroupList& list = groupList(name);
    if (list.size() > 1)
        throw new FormatException(SITE, FormatException::unknownPosition);
    return list.at(0);
}

void MemoryValues::storeList(const String& name, const TextList& list)
{
    TextList copy;
    copy.reserve(list.size());
    for (uint32_t i = 0; i < list.size(); ++i)
        copy.add(list.at(i));
    const auto found = valueMap->find(name);
    if (found != valueMap->end()) {
        found->second = copy;
        return;
    }
    valueMap->emplace(name, copy);
    valueNameList.add(name);
}

void MemoryValues::addText(const String& name, const String& text)
{
    const auto found = valueMap->find(name);
    if (found != valueMap->end()) {
        found->second.add(text);
        return;
    }
    TextList list;
    list.add(text);
    valueMap->emplace(name, list);
    valueNameList.add(name);
}

template <class T>
void MemoryValues::storeArray(const String& name, const Array<T>& values)
{
    if (values.size() == 0)
        throw new ErrorException(SITE);
    TextList list;
    list.reserve(values.size());
    for (uint32_t i = 0; i < values.size(); ++i)
        list.add(valueText(values.at(i)));
    storeList(name, list);
}

namespace {

Array<String> oneText(const String& text)
{
    Array<String> list;
    list.add(text);
    return list;
}

}  // namespace

void MemoryValues::setBool(const String& name, bool value) { storeList(name, oneText(valueText(value))); }
void MemoryValues::setInt(const String& name, Int value) { storeList(name, oneText(valueText(value))); }
void MemoryValues::setUint(const String& name, Uint value) { storeList(name, oneText(valueText(value))); }
void MemoryValues::setHyper(const String& name, Hyper value) { storeList(name, oneText(valueText(value))); }
void MemoryValues::setUhyper(const String& name, Uhyper value) { storeList(name, oneText(valueText(value))); }
void MemoryValues::setString(const String& name, const String& value) { storeList(name, oneText(value)); }
void MemoryValues::setBinary(const String& name, const AnsiString& value)
{
    storeList(name, oneText(valueText(value)));
}

void MemoryValues::setBoolArray(const String& name, Array<bool> values)
{
    storeArray(name, values);
}
void MemoryValues::setIntArray(const String& name, Array<Int> values)
{
    storeArray(name, values);
}
void MemoryValues::setUintArray(const String& name, Array<Uint> values)
{
    storeArray(name, values);
}
void MemoryValues::setHyperArray(const String& name, Array<Hyper> values)
{
    storeArray(name, values);
}
void MemoryValues::setUhyperArray(const String& name, Array<Uhyper> values)
{
    storeArray(name, values);
}
void MemoryValues::setStringArray(const String& name, Array<String> values)
{
    storeArray(name, values);
}
void MemoryValues::setBinaryArray(const String& name, Array<AnsiString> values)
{
    storeArray(name, values);
}

void MemoryValues::addBool(const String& name, bool value) { addText(name, valueText(value)); }
void MemoryValues::addInt(const String& name, Int value) { addText(name, valueText(value)); }
void MemoryValues::addUint(const String& name, Uint value) { addText(name, valueText(value)); }
void MemoryValues::addHyper(const String& name, Hyper value) { addText(name, valueText(value)); }
void MemoryValues::addUhyper(const String& name, Uhyper value) { addText(name, valueText(value)); }
void MemoryValues::addString(const String& name, const String& value) { addText(name, value); }
void MemoryValues::addBinary(const String& name, const AnsiString& value) { addText(name, valueText(value)); }

SharedPointer<OutputValues> MemoryValues::group(const String& name, uint32_t index)
{
    const GroupList& list = groupList(name);
    if (index >= list.size())
        throw new RangeException(SITE, 0, 0, 0);
    return list.at(index);
}

SharedPointer<MemoryValues> MemoryValues::makeChild(const String& name) const
{
    const SharedPointer<MemoryValues> child = newGroup(name).dynamicCast<MemoryValues>();
    // newGroup of a class under MemoryValues must make its own kind.
    if (child.isNull())
        throw new ErrorException(SITE);
    child->groupPath = groupPath + L"/" + name;
    return child;
}

SharedPointer<OutputValues> MemoryValues::group(const String& name)
{
    const auto found = groupMap->find(name);
    if (found != groupMap->end()) {
        const GroupList& list = found->second;
        if (list.size() == 0)
            throw new ErrorException(SITE);
        if (list.size() > 1)
            throw new FormatException(SITE, FormatException::unknownPosition);
        return list.at(0);
    }
    GroupList list;
    list.add(makeChild(name));
    groupMap->emplace(name, list);
    groupNameList.add(name);
    return list.at(0);
}

SharedPointer<OutputValues> MemoryValues::addGroup(const String& name)
{
    const SharedPointer<MemoryValues> child = makeChild(name);
    const auto found = groupMap->find(name);
    if (found != groupMap->end()) {
        found->second.add(child);
    } else {
        GroupList list;
        list.add(child);
        groupMap->emplace(name, list);
        groupNameList.add(name);
    }
    return child;
}

void MemoryValues::clear()
{
    groupMap->clear();
    groupNameList.erase(0, groupNameList.size());
    valueMap->clear();
    valueNameList.erase(0, valueNameList.size());
}

SharedPointer<InputValues> MemoryValues::newGroup(const String& name) const
{
    return SharedPointer<InputValues>(new MemoryValues(name), true);
}

void MemoryValues::reset()
{
    clear();
    groupName = String();
    groupPath = String();
}

}  // namespace Framework
