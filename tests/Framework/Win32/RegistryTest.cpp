// The registry classes against the real registry, under a scratch key of the current
// user. What lies in the registry is read and written with the raw Win32 calls.
#include "Framework/Win32/RegistryInputValues.h"
#include "Framework/Win32/RegistryOutputValues.h"

#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "support/ExpectThrown.h"
#include "support/ScratchKey.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <typeinfo>

using namespace Framework;
using namespace Framework::Win32;

namespace {

const wchar_t* const scratchPath = L"Software\\WixKorvalinTests\\Registry";

class RegistryTest : public ::testing::Test
{
protected:
    RegistryTest() : scratch(HKEY_CURRENT_USER, scratchPath)
    {
        root.attach(HKEY_CURRENT_USER, L"HKEY_CURRENT_USER");
        writeRoot.attach(HKEY_CURRENT_USER, L"HKEY_CURRENT_USER");
        reader.open(root, scratchPath, readAccess);
        writer.open(writeRoot, scratchPath, writeAccess);
    }

    ScratchKey scratch;
    RegistryInputValues root;
    RegistryOutputValues writeRoot;
    RegistryInputValues reader;
    RegistryOutputValues writer;
};

void expectOsError(const std::unique_ptr<OsException>& e, uint32_t lastError, uint64_t code)
{
    ASSERT_TRUE(e);
    EXPECT_EQ(lastError, e->osError.lastError);
    EXPECT_EQ(code, e->code);
}

// Stored bytes: a wide literal with its own terminating zero, a narrow one without.
template <size_t N>
std::vector<BYTE> units(const wchar_t (&text)[N])
{
    return std::vector<BYTE>(reinterpret_cast<const BYTE*>(text), reinterpret_cast<const BYTE*>(text + N));
}

template <size_t N>
std::vector<BYTE> bytes(const char (&text)[N])
{
    return std::vector<BYTE>(text, text + N - 1);
}

template <class T>
Array<T> list(std::initializer_list<T> items)
{
    Array<T> result;
    for (const T& item : items)
        result.add(item);
    return result;
}

// A value read back as text: valueText, the elements of a list joined by ','.
template <class T>
String textOf(const T& value)
{
    return valueText(value);
}
template <class T>
String textOf(const Array<T>& values)
{
    Array<String> texts;
    for (uint32_t i = 0; i < values.size(); ++i)
        texts.add(valueText(values.at(i)));
    return String::join(L",", texts);
}

using Read = std::function<String(const InputValues&)>;

// One value type: a value written under "v" through the class, its read, and the type
// and bytes that the registry holds for it.
struct StoredForm
{
    ValueType type;
    std::function<void(OutputValues&)> write;
    Read read;
    String value;
    DWORD rawType;
    std::vector<BYTE> raw;
};

template <class T, class Set, class Get>
StoredForm form(ValueType type, Set set, Get get, T value, DWORD rawType, std::vector<BYTE> raw)
{
    return StoredForm{type, [=](OutputValues& out) { (out.*set)(L"v", value); },
                      [=](const InputValues& in) { return textOf((in.*get)(L"v")); }, textOf(value), rawType, raw};
}

}  // namespace

TEST_F(RegistryTest, EveryTypeHasOneStoredFormBothWays)
{
    using In = InputValues;
    using Out = OutputValues;
    const StoredForm forms[] = {
        form(ValueType::Uint, &Out::setUint, &In::getUint, Uint(4000000000u), REG_DWORD, bytes("\x00\x28\x6B\xEE")),
        form(ValueType::Uhyper, &Out::setUhyper, &In::getUhyper, ~Uhyper(0), REG_QWORD,
             bytes("\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF")),
        // The class leaves the terminator out of the size; the registry stores it.
        form(ValueType::String, &Out::setString, &In::getString, String(L"text \x4e2d"), REG_SZ, units(L"text \x4e2d")),
        form(ValueType::Binary, &Out::setBinary, &In::getBinary, AnsiString("\x01\xFF"), REG_BINARY, bytes("\x01\xFF")),
        // The other types are tagged lists, with one zero more than REG_MULTI_SZ needs.
        form(ValueType::Bool, &Out::setBool, &In::getBool, true, REG_MULTI_SZ, units(L"Bool\0true\0\0")),
        form(ValueType::Int, &Out::setInt, &In::getInt, Int(-5), REG_MULTI_SZ, units(L"Int\0-5\0\0")),
        form(ValueType::Hyper, &Out::setHyper, &In::getHyper, INT64_MIN, REG_MULTI_SZ,
             units(L"Hyper\0-9223372036854775808\0\0")),
        form(ValueType::BoolArray, &Out::setBoolArray, &In::getBoolArray, list({true, false}), REG_MULTI_SZ,
             units(L"BoolArray\0true\0false\0\0")),
        form(ValueType::IntArray, &Out::setIntArray, &In::getIntArray, list<Int>({1, -2}), REG_MULTI_SZ,
             units(L"IntArray\0" L"1\0-2\0\0")),
        form(ValueType::UintArray, &Out::setUintArray, &In::getUintArray, list<Uint>({7}), REG_MULTI_SZ,
             units(L"UintArray\0" L"7\0\0")),
        form(ValueType::HyperArray, &Out::setHyperArray, &In::getHyperArray, list<Hyper>({-9000000000LL}),
             REG_MULTI_SZ, units(L"HyperArray\0-9000000000\0\0")),
        form(ValueType::UhyperArray, &Out::setUhyperArray, &In::getUhyperArray, list<Uhyper>({~Uhyper(0)}),
             REG_MULTI_SZ, units(L"UhyperArray\0" L"18446744073709551615\0\0")),
        form(ValueType::StringArray, &Out::setStringArray, &In::getStringArray, list<String>({L"a b", L"\x00e9"}),
             REG_MULTI_SZ, units(L"StringArray\0a b\0\x00e9\0\0")),
        form(ValueType::BinaryArray, &Out::setBinaryArray, &In::getBinaryArray,
             list<AnsiString>({AnsiString("\xDE\xAD"), AnsiString("\0", 1)}), REG_MULTI_SZ,
             units(L"BinaryArray\0DE AD\0" L"00\0\0")),
    };
    for (const StoredForm& row : forms) {
        SCOPED_TRACE(narrowForTest(typeName(row.type)));
        row.write(writer);
        DWORD rawType = 0;
        std::vector<BYTE> raw;
        ASSERT_TRUE(scratch.read(L"v", rawType, raw));
        EXPECT_EQ(row.rawType, rawType);
        EXPECT_EQ(row.raw, raw);

        EXPECT_EQ(row.value, row.read(reader));
        EXPECT_EQ(row.type, reader.typeOf(L"v"));
    }
}

TEST_F(RegistryTest, ReadsAcceptOnlyTheFormsOfTheirType)
{
    const std::string misfit = typeid(FormatException).name();
    _wputenv(L"KORVALIN_REGISTRY_TEST=expanded");
    const struct
    {
        DWORD rawType;
        std::vector<BYTE> raw;
        std::function<String()> read;
        std::string outcome;  // the value as text, or the class thrown
    } rows[] = {
        {REG_DWORD, bytes("\x07\0\0\0"), [&] { return textOf(reader.getUintArray(L"v")); }, "7"},
        {REG_DWORD, bytes("\x07\0\0\0"), [&] { return textOf(reader.getInt(L"v")); }, misfit},
        {REG_MULTI_SZ, units(L"Int\0" L"5\0"), [&] { return textOf(reader.getIntArray(L"v")); }, "5"},
        {REG_MULTI_SZ, units(L"intarray\0" L"1\0" L"2\0" L"3\0"), [&] { return textOf(reader.getInt(L"v")); }, "3"},
        {REG_MULTI_SZ, units(L"Uint\0" L"5\0"), [&] { return textOf(reader.getUint(L"v")); }, misfit},
        {REG_MULTI_SZ, units(L"Int\0"), [&] { return textOf(reader.getInt(L"v")); }, typeid(ErrorException).name()},
        {REG_MULTI_SZ, units(L"Integer\0" L"1\0"), [&] { return typeName(reader.typeOf(L"v")); },
         typeid(LookupException).name()},
        {REG_MULTI_SZ, units(L"StringArray\0a\0\0b\0"), [&] { return textOf(reader.getStringArray(L"v")); }, "a,b"},
        {REG_SZ, {}, [&] { return reader.getString(L"v"); }, misfit},
        {REG_SZ, {}, [&] { return typeName(reader.typeOf(L"v")); }, misfit},
        // No terminator and an odd size: (size - 1) / 2 characters.
        {REG_SZ, bytes("a\0b\0c\0d\0X"), [&] { return reader.getString(L"v"); }, "abcd"},
        {REG_BINARY, {}, [&] { return textOf(reader.getBinary(L"v")); }, ""},
        {REG_BINARY, {}, [&] { return textOf(reader.getBinaryArray(L"v")); }, misfit},
        {REG_EXPAND_SZ, units(L"%KORVALIN_REGISTRY_TEST%\\x"), [&] { return reader.getString(L"v"); }, "expanded\\x"},
        {REG_EXPAND_SZ, units(L"%KORVALIN_REGISTRY_TEST%\\x"), [&] { return typeName(reader.typeOf(L"v")); }, misfit},
        {REG_EXPAND_SZ, units(L"%KORVALIN_REGISTRY_UNSET%"), [&] { return reader.getString(L"v"); },
         typeid(EnvironmentException).name()},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        scratch.setRaw(L"v", rows[i].rawType, rows[i].raw.data(), DWORD(rows[i].raw.size()));
        EXPECT_EQ(rows[i].outcome, resultOrThrown([&] { return narrowForTest(rows[i].read()); })) << "row " << i;
    }
    EXPECT_EQ(FormatException::unknownPosition,
              thrownField<FormatException>([&] { reader.getInt(L"v"); }, &FormatException::position))
        << "a misfit has no position";
}

TEST_F(RegistryTest, NamesOfValuesAndGroups)
{
    EXPECT_EQ(String(L"HKEY_CURRENT_USER\\Software\\WixKorvalinTests\\Registry"), reader.path());
    scratch.setRaw(L"empty", REG_BINARY, "", 0);
    scratch.setText(L"", L"default");
    EXPECT_EQ(String(L",empty"), textOf(reader.valueNames())) << "in index order; a value of size 0 is there";
    EXPECT_EQ(String(L"default"), reader.getString(L"")) << "the empty name is the default value";
    expectOsError(expectThrown<OsException>([&] { reader.getString(L"missing"); }), 2, 2);
    expectOsError(expectThrown<OsException>([&] { reader.group(L"missing"); }), 2, 0);

    for (const wchar_t* key : {L"a", L"a[1]", L"a[3]", L"b", L"c[1]x"})
        scratch.addSubKey(key);
    EXPECT_EQ(2u, reader.groupCount(L"a")) << "the count stops at the first gap";
    EXPECT_EQ(String(L"a,b"), textOf(reader.groupNames()));
    EXPECT_EQ(String(L"a,b,c[1]x"), textOf(writer.groupNames())) << "the write side leaves out names ending in ']'";
    expectThrown<FormatException>([&] { reader.group(L"a"); });
    EXPECT_EQ(String(L"a"), reader.group(L"a", 1)->name());
    expectThrown<RangeException>([&] { reader.group(L"a", 2); });
    for (Uint i = 0; i < 3; ++i)
        writer.addGroup(L"g")->setUint(L"i", i);
    EXPECT_EQ(2u, reader.group(L"g", 2)->getUint(L"i"));
    expectThrown<FormatException>([&] { writer.group(L"g"); });
    expectThrown<LookupException>([&] { writer.group(L"h", 0); });
    writer.group(L"h")->setBool(L"made", true);
    EXPECT_TRUE(reader.group(L"h")->getBool(L"made"));
}
