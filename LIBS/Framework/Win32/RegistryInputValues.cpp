#include "Framework/Win32/RegistryInputValues.h"

#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/HexText.h"
#include "Framework/OsException.h"
#include "Framework/Win32/RegistryFormat.h"

#include <memory>

namespace Framework { namespace Win32 {

using Detail::StoredList;

namespace {

[[noreturn]] void misfit()
{
    throw new FormatException(SITE, FormatException::unknownPosition);
}

struct Stored
{
    uint32_t type;
    DWORD size;
};

Stored storedOf(const RegistryInputValues& values, const String& name)
{
    Stored stored{0, 0};
    stored.type = values.rawType(name, &stored.size);
    return stored;
}

// The list under the name when it is one and carries one of the two tags.
StoredList listOf(const RegistryKey& key, const String& name, const Stored& stored, ValueType tag, ValueType otherTag)
{
    if (stored.type != REG_MULTI_SZ || stored.size == 0)
        misfit();
    StoredList list = Detail::readList(key, name, stored.size);
    if (list.tag != tag && list.tag != otherTag)
        misfit();
    return list;
}

String lastPiece(const StoredList& list)
{
    return list.pieces.at(list.pieces.size() - 1);
}

template <class T, class Convert>
Array<T> elementsOf(const StoredList& list, Convert convert)
{
    Array<T> elements;
    elements.reserve(list.pieces.size() - 1);
    for (uint32_t i = 1; i < list.pieces.size(); ++i)
        elements.add(convert(list.pieces.at(i)));
    return elements;
}

template <class T>
Array<T> one(const T& value)
{
    Array<T> elements;
    elements.add(value);
    return elements;
}

template <class Number>
Number readNumber(const RegistryInputValues& values, const String& name)
{
    Number number = 0;
    DWORD size = sizeof number;
    values.readRaw(name, &number, &size);
    return number;
}

AnsiString readBytes(const RegistryInputValues& values, const String& name, DWORD size)
{
    AnsiString bytes{uint32_t(size)};
    if (size == 0)
        return bytes;
    DWORD read = size;
    values.readRaw(name, &bytes.refAt(0), &read);
    return bytes;
}

bool pieceToBool(const String& piece) { return parseBool(piece); }
Int pieceToInt(const String& piece) { return piece.toInt(10); }
Uint pieceToUint(const String& piece) { return piece.toUint(10); }
Hyper pieceToHyper(const String& piece) { return piece.toHyper(10); }
Uhyper pieceToUhyper(const String& piece) { return piece.toUhyper(10); }
String pieceToString(const String& piece) { return piece; }
AnsiString pieceToBinary(const String& piece) { return fromHexText(AnsiString(piece)); }

}  // namespace

RegistryInputValues::RegistryInputValues() : savedSecurity(nullptr) {}

RegistryInputValues::~RegistryInputValues()
{
    // Never restored here: that is the caller's decision. The saved copy goes.
    if (savedSecurity)
        LocalFree(savedSecurity);
}

void RegistryInputValues::open(const RegistryKey& parent, const String& subKey, uint32_t access)
{
    RegistryKey::open(parent, subKey, access);
    savedSecurity = nullptr;
}

void RegistryInputValues::attach(HKEY rootKey, const String& name)
{
    RegistryKey::attach(rootKey, name);
    savedSecurity = nullptr;
}

String RegistryInputValues::className() const { return RegistryKey::className(); }

String RegistryInputValues::name() const
{
    const String full = RegistryKey::name();
    const wchar_t bracket = L'[';
    const uint32_t at = full.find(&bracket, 1);
    return at == String::npos ? full : full.substr(0, at);
}

String RegistryInputValues::path() const { return RegistryKey::path(); }
bool RegistryInputValues::hasValue(const String& name) const { return RegistryKey::hasValue(name); }

bool RegistryInputValues::hasGroup(const String& name) const
{
    return !Detail::hasBracket(name) && hasSubKey(name);
}

Array<String> RegistryInputValues::valueNames() const { return RegistryKey::valueNames(); }

Array<String> RegistryInputValues::groupNames() const
{
    const Array<String> keys = subKeyNames();
    Array<String> names;
    for (uint32_t i = 0; i < keys.size(); ++i)
        if (!Detail::hasBracket(keys.at(i)))
            names.add(keys.at(i));
    return names;
}

uint32_t RegistryInputValues::groupCount(const String& name) const { return Detail::groupCountIn(*this, name); }

ValueType RegistryInputValues::typeOf(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.size == 0)
        misfit();
    switch (stored.type) {
    case REG_SZ:
        return ValueType::String;
    case REG_BINARY:
        return ValueType::Binary;
    case REG_DWORD:
        return ValueType::Uint;
    case REG_QWORD:
        return ValueType::Uhyper;
    case REG_MULTI_SZ:
        return Detail::readList(*this, name, stored.size).tag;
    }
    misfit();
}

bool RegistryInputValues::getBool(const String& name) const
{
    return parseBool(lastPiece(listOf(*this, name, storedOf(*this, name), ValueType::Bool, ValueType::BoolArray)));
}

Int RegistryInputValues::getInt(const String& name) const
{
    return lastPiece(listOf(*this, name, storedOf(*this, name), ValueType::Int, ValueType::IntArray)).toInt(10);
}

Uint RegistryInputValues::getUint(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_DWORD && stored.size != 0)
        return readNumber<Uint>(*this, name);
    return lastPiece(listOf(*this, name, stored, ValueType::UintArray, ValueType::UintArray)).toUint(10);
}

Hyper RegistryInputValues::getHyper(const String& name) const
{
    return lastPiece(listOf(*this, name, storedOf(*this, name), ValueType::Hyper, ValueType::HyperArray)).toHyper(10);
}

Uhyper RegistryInputValues::getUhyper(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_QWORD && stored.size != 0)
        return readNumber<Uhyper>(*this, name);
    return lastPiece(listOf(*this, name, stored, ValueType::UhyperArray, ValueType::UhyperArray)).toUhyper(10);
}

String RegistryInputValues::getString(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if ((stored.type == REG_SZ || stored.type == REG_EXPAND_SZ) && stored.size != 0) {
        const String text = Detail::readText(*this, name, stored.size);
        return stored.type == REG_EXPAND_SZ ? expandEnvironment(text) : text;
    }
    return lastPiece(listOf(*this, name, stored, ValueType::StringArray, ValueType::StringArray));
}

AnsiString RegistryInputValues::getBinary(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_BINARY)
        return readBytes(*this, name, stored.size);
    return pieceToBinary(lastPiece(listOf(*this, name, stored, ValueType::BinaryArray, ValueType::BinaryArray)));
}

Array<bool> RegistryInputValues::getBoolArray(const String& name) const
{
    return elementsOf<bool>(listOf(*this, name, storedOf(*this, name), ValueType::Bool, ValueType::BoolArray),
                            pieceToBool);
}

Array<Int> RegistryInputValues::getIntArray(const String& name) const
{
    return elementsOf<Int>(listOf(*this, name, storedOf(*this, name), ValueType::Int, ValueType::IntArray),
                           pieceToInt);
}

Array<Uint> RegistryInputValues::getUintArray(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_DWORD && stored.size != 0)
        return one(readNumber<Uint>(*this, name));
    return elementsOf<Uint>(listOf(*this, name, stored, ValueType::UintArray, ValueType::UintArray), pieceToUint);
}

Array<Hyper> RegistryInputValues::getHyperArray(const String& name) const
{
    return elementsOf<Hyper>(listOf(*this, name, storedOf(*this, name), ValueType::Hyper, ValueType::HyperArray),
                             pieceToHyper);
}

Array<Uhyper> RegistryInputValues::getUhyperArray(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_QWORD && stored.size != 0)
        return one(readNumber<Uhyper>(*this, name));
    return elementsOf<Uhyper>(listOf(*this, name, stored, ValueType::UhyperArray, ValueType::UhyperArray),
                              pieceToUhyper);
}

Array<String> RegistryInputValues::getStringArray(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_SZ && stored.size != 0)
        return one(Detail::readText(*this, name, stored.size));
    return elementsOf<String>(listOf(*this, name, stored, ValueType::StringArray, ValueType::StringArray),
                              pieceToString);
}

Array<AnsiString> RegistryInputValues::getBinaryArray(const String& name) const
{
    const Stored stored = storedOf(*this, name);
    if (stored.type == REG_BINARY && stored.size != 0)
        return one(readBytes(*this, name, stored.size));
    return elementsOf<AnsiString>(listOf(*this, name, stored, ValueType::BinaryArray, ValueType::BinaryArray),
                                  pieceToBinary);
}

SharedPointer<InputValues> RegistryInputValues::openGroup(const String& groupKey) const
{
    SharedPointer<RegistryInputValues> child(new RegistryInputValues);
    child->open(*this, groupKey, readAccess);
    return child;
}

SharedPointer<InputValues> RegistryInputValues::group(const String& name, uint32_t index) const
{
    if (Detail::hasBracket(name))
        misfit();
    if (index >= groupCount(name))
        throw new RangeException(SITE, 0, 0, 0);
    return openGroup(Detail::indexedName(name, index));
}

SharedPointer<InputValues> RegistryInputValues::group(const String& name) const
{
    if (Detail::hasBracket(name))
        misfit();
    if (groupCount(name) >= 2)
        misfit();
    return openGroup(name);
}

SharedPointer<InputValues> RegistryInputValues::openSubKey(const String& name, uint32_t access) const
{
    SharedPointer<RegistryInputValues> child(new RegistryInputValues);
    child->open(*this, name, access);
    return child;
}

uint32_t RegistryInputValues::rawType(const String& name, DWORD* size) const
{
    return RegistryKey::rawType(name, size);
}

void RegistryInputValues::readRaw(const String& name, void* buffer, DWORD* size) const
{
    RegistryKey::readRaw(name, buffer, size);
}

SharedPointer<InputValues> RegistryInputValues::openUnprotected(const String& subKey, uint32_t access) const
{
    SharedPointer<RegistryInputValues> child(new RegistryInputValues);
    // Owned by the child only once it has its key: until then every way out frees it.
    std::unique_ptr<void, decltype(&LocalFree)> saved(accessList(subKey), &LocalFree);
    clearAccessList(subKey);
    child->open(*this, subKey, access);
    child->setSavedSecurity(saved.release());
    return child;
}

void RegistryInputValues::restoreSecurity()
{
    if (!hKey || !savedSecurity)
        return;
    setAccessList(String(), savedSecurity);
    LocalFree(savedSecurity);
    savedSecurity = nullptr;
}

void RegistryInputValues::setSavedSecurity(PSECURITY_DESCRIPTOR descriptor)
{
    savedSecurity = descriptor;
}

} }  // namespace Framework::Win32
