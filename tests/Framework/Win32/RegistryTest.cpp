// The registry classes against the real registry, under scratch keys of the current
// user (and of the machine, for the views).
#include "Framework/Win32/RegistryInputValues.h"
#include "Framework/Win32/RegistryOutputValues.h"

#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "support/ArrayView.h"
#include "support/ExpectThrown.h"
#include "support/ImportPatch.h"
#include "support/ScratchKey.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>

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
    EXPECT_TRUE(e->osError.isLastError);
    EXPECT_EQ(lastError, e->osError.lastError);
    EXPECT_EQ(code, e->code);
}

void expectMisfit(const std::unique_ptr<FormatException>& e)
{
    ASSERT_TRUE(e);
    EXPECT_EQ(FormatException::unknownPosition, e->position);
}

}  // namespace

TEST_F(RegistryTest, KeysKnowTheirNamesAndReportAbsence)
{
    EXPECT_EQ(String(L"HKEY_CURRENT_USER\\Software\\WixKorvalinTests\\Registry"), reader.path());
    EXPECT_EQ(String(scratchPath), reader.RegistryKey::name());
    EXPECT_TRUE(reader.hasSubKey(L"")) << "an empty sub-key opens the key itself";
    EXPECT_TRUE(reader.valueNames().size() == 0 && reader.groupNames().size() == 0);
    EXPECT_TRUE(reader.isEmpty());

    scratch.setRaw(L"empty", REG_BINARY, "", 0);
    scratch.setRaw(L"", REG_SZ, L"default", 16);
    EXPECT_TRUE(reader.hasValue(L"empty")) << "a value of size 0 exists";
    EXPECT_TRUE(reader.hasValue(L"")) << "the empty name is the default value";
    EXPECT_EQ(String(L"default"), reader.getString(L""));
    EXPECT_FALSE(reader.hasValue(L"missing"));
    expectOsError(expectThrown<OsException>([&] { reader.getString(L"missing"); }), 2, 2);
    DWORD size = 0;
    expectOsError(expectThrown<OsException>([&] { reader.rawType(L"missing", &size); }), 2, 2);
    expectThrown<ErrorException>([&] { reader.rawType(L"empty", nullptr); });

    RegistryInputValues missing;
    expectOsError(expectThrown<OsException>([&] { missing.open(reader, L"no\\such\\key", readAccess); }), 2, 0);
    EXPECT_FALSE(missing.hasKey());

    // A fresh object has no key: everything but close() refuses.
    RegistryInputValues fresh;
    expectThrown<ValueNotInitializedException>([&] { fresh.RegistryKey::name(); });
    expectThrown<ValueNotInitializedException>([&] { fresh.path(); });
    expectThrown<ValueNotInitializedException>([&] { fresh.hasValue(L"x"); });
    expectThrown<ValueNotInitializedException>([&] { fresh.getUint(L"x"); });
    fresh.close();

    // Keys made with a class, listed in index order.
    RegistryOutputValues made;
    made.create(writer, L"classy", L"KorvalinClass");
    EXPECT_EQ(String(L"KorvalinClass"), made.className());
    made.close();
    scratch.addSubKey(L"second");
    EXPECT_EQ((std::vector<String>{L"classy", L"second"}), asVector(reader.groupNames()));
    EXPECT_EQ((std::vector<String>{L"", L"empty"}), asVector(reader.valueNames()));
}

TEST_F(RegistryTest, AnAttachedKeyIsNeverClosedByItsWrapper)
{
    HKEY raw = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(HKEY_CURRENT_USER, scratchPath, 0, KEY_ALL_ACCESS, &raw));
    {
        RegistryInputValues wrapper;
        wrapper.attach(raw, L"raw");
        EXPECT_EQ(String(L"raw"), wrapper.path());
    }
    DWORD values = 99;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryInfoKeyW(raw, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, &values,
                                              nullptr, nullptr, nullptr, nullptr))
        << "the handle must still be open";
    RegCloseKey(raw);
}

TEST_F(RegistryTest, EveryTypeRoundTripsInItsStoredForm)
{
    Array<bool> flags;
    flags.add(true);
    flags.add(false);
    Array<Int> ints;
    ints.add(1);
    ints.add(-2);
    Array<Hyper> hypers;
    hypers.add(-9000000000LL);
    Array<Uhyper> uhypers;
    uhypers.add(~uint64_t(0));
    Array<Uint> uints;
    uints.add(7);
    Array<String> texts;
    texts.add(L"a b");
    texts.add(L"\x00e9");
    Array<AnsiString> blobs;
    blobs.add(AnsiString("\xDE\xAD"));
    blobs.add(AnsiString("\0", 1));

    writer.setBool(L"bool", true);
    writer.setInt(L"int", -5);
    writer.setUint(L"uint", 4000000000u);
    writer.setHyper(L"hyper", INT64_MIN);
    writer.setUhyper(L"uhyper", ~uint64_t(0));
    writer.setString(L"string", L"text \x4e2d");
    writer.setBinary(L"binary", AnsiString("\x01\xFF", 2));
    writer.setBoolArray(L"bools", flags);
    writer.setIntArray(L"ints", ints);
    writer.setUintArray(L"uints", uints);
    writer.setHyperArray(L"hypers", hypers);
    writer.setUhyperArray(L"uhypers", uhypers);
    writer.setStringArray(L"texts", texts);
    writer.setBinaryArray(L"blobs", blobs);

    EXPECT_TRUE(reader.getBool(L"bool"));
    EXPECT_EQ(-5, reader.getInt(L"int"));
    EXPECT_EQ(4000000000u, reader.getUint(L"uint"));
    EXPECT_EQ(INT64_MIN, reader.getHyper(L"hyper"));
    EXPECT_EQ(~uint64_t(0), reader.getUhyper(L"uhyper"));
    EXPECT_EQ(String(L"text \x4e2d"), reader.getString(L"string"));
    EXPECT_EQ(AnsiString("\x01\xFF", 2), reader.getBinary(L"binary"));
    EXPECT_FALSE(reader.getBoolArray(L"bools").at(1));
    EXPECT_EQ(-2, reader.getIntArray(L"ints").at(1));
    EXPECT_EQ(7u, reader.getUintArray(L"uints").at(0));
    EXPECT_EQ(-9000000000LL, reader.getHyperArray(L"hypers").at(0));
    EXPECT_EQ(~uint64_t(0), reader.getUhyperArray(L"uhypers").at(0));
    EXPECT_EQ((std::vector<String>{L"a b", L"\x00e9"}), asVector(reader.getStringArray(L"texts")));
    EXPECT_EQ(AnsiString("\0", 1), reader.getBinaryArray(L"blobs").at(1));
    // Every name has its type back (the registry lists names in its own order).
    const std::pair<const wchar_t*, ValueType> expected[] = {
        {L"bool", ValueType::Bool},           {L"int", ValueType::Int},
        {L"uint", ValueType::Uint},           {L"hyper", ValueType::Hyper},
        {L"uhyper", ValueType::Uhyper},       {L"string", ValueType::String},
        {L"binary", ValueType::Binary},       {L"bools", ValueType::BoolArray},
        {L"ints", ValueType::IntArray},       {L"uints", ValueType::UintArray},
        {L"hypers", ValueType::HyperArray},   {L"uhypers", ValueType::UhyperArray},
        {L"texts", ValueType::StringArray},   {L"blobs", ValueType::BinaryArray}};
    EXPECT_EQ(14u, reader.valueNames().size());
    for (const auto& row : expected)
        EXPECT_EQ(row.second, reader.typeOf(row.first)) << narrowForTest(row.first);

    // What lies in the registry.
    DWORD type = 0, number = 0;
    std::vector<BYTE> data;
    ASSERT_TRUE(scratch.readDword(L"uint", number));
    EXPECT_EQ(4000000000u, number);
    ASSERT_TRUE(scratch.read(L"uhyper", type, data));
    EXPECT_EQ(DWORD(REG_QWORD), type);
    ASSERT_TRUE(scratch.read(L"string", type, data));
    EXPECT_EQ(DWORD(REG_SZ), type);
    EXPECT_EQ(std::vector<BYTE>({'t', 0, 'e', 0, 'x', 0, 't', 0, ' ', 0, 0x2d, 0x4e, 0, 0}), data)
        << "stored with its terminator";
    ASSERT_TRUE(scratch.read(L"bool", type, data));
    EXPECT_EQ(DWORD(REG_MULTI_SZ), type);
    const wchar_t boolList[] = L"Bool\0true\0\0";  // and the literal's own zero: three in all
    EXPECT_EQ(std::vector<BYTE>(reinterpret_cast<const BYTE*>(boolList),
                                reinterpret_cast<const BYTE*>(boolList) + sizeof boolList),
              data);
    EXPECT_EQ((std::vector<std::wstring>{L"IntArray", L"1", L"-2"}), scratch.readList(L"ints"));
    EXPECT_EQ((std::vector<std::wstring>{L"Hyper", L"-9223372036854775808"}), scratch.readList(L"hyper"));
    EXPECT_EQ((std::vector<std::wstring>{L"BinaryArray", L"DE AD", L"00"}), scratch.readList(L"blobs"));

    // An empty string is written, and lost on reading.
    Array<String> withEmpty;
    withEmpty.add(L"a");
    withEmpty.add(String());
    withEmpty.add(L"b");
    writer.setStringArray(L"gaps", withEmpty);
    EXPECT_EQ((std::vector<String>{L"a", L"b"}), asVector(reader.getStringArray(L"gaps")));
}

TEST_F(RegistryTest, ListsGrowOnlyFromTheirArrayTag)
{
    writer.addUint(L"n", 1);
    writer.addUint(L"n", 2);
    EXPECT_EQ((std::vector<std::wstring>{L"UintArray", L"1", L"2"}), scratch.readList(L"n"));
    EXPECT_EQ(2u, reader.getUint(L"n"));
    writer.addString(L"s", L"x");
    writer.addBinary(L"b", AnsiString("\x0F"));
    EXPECT_EQ((std::vector<std::wstring>{L"BinaryArray", L"0F"}), scratch.readList(L"b"));

    writer.setUint(L"native", 3);
    expectMisfit(expectThrown<FormatException>([&] { writer.addUint(L"native", 4); }));
    writer.setInt(L"scalar", 3);
    expectMisfit(expectThrown<FormatException>([&] { writer.addInt(L"scalar", 4); }));
    EXPECT_EQ(3, reader.getInt(L"scalar")) << "a failed add leaves the value";
    writer.addInt(L"started", 5);
    EXPECT_EQ(5, reader.getInt(L"started"));
}

TEST_F(RegistryTest, ReadsAcceptOnlyTheFormsOfTheirType)
{
    scratch.setDword(L"dword", 7);
    EXPECT_EQ(7u, reader.getUint(L"dword"));
    EXPECT_EQ(1u, reader.getUintArray(L"dword").size());
    expectMisfit(expectThrown<FormatException>([&] { reader.getInt(L"dword"); }));
    expectMisfit(expectThrown<FormatException>([&] { reader.getString(L"dword"); }));

    scratch.setList(L"int", {L"Int", L"5"});
    EXPECT_EQ(5, reader.getInt(L"int"));
    EXPECT_EQ(1u, reader.getIntArray(L"int").size());
    scratch.setList(L"ints", {L"IntArray", L"1", L"2", L"3"});
    EXPECT_EQ(3, reader.getInt(L"ints"));
    scratch.setList(L"uint", {L"Uint", L"5"});
    expectMisfit(expectThrown<FormatException>([&] { reader.getUint(L"uint"); }));
    scratch.setList(L"hex", {L"IntArray", L"0x10"});
    expectThrown<FormatException>([&] { reader.getInt(L"hex"); });
    scratch.setList(L"big", {L"Int", L"2147483648"});
    expectThrown<OverflowException>([&] { reader.getInt(L"big"); });

    scratch.setList(L"lonely", {L"Int"});
    expectThrown<ErrorException>([&] { reader.getInt(L"lonely"); });
    scratch.setList(L"unknown", {L"Integer", L"1"});
    expectThrown<LookupException>([&] { reader.typeOf(L"unknown"); });
    expectThrown<LookupException>([&] { reader.getInt(L"unknown"); });

    scratch.setRaw(L"noText", REG_SZ, L"", 0);
    expectMisfit(expectThrown<FormatException>([&] { reader.getString(L"noText"); }));
    expectMisfit(expectThrown<FormatException>([&] { reader.typeOf(L"noText"); }));
    scratch.setText(L"terminator", L"");
    EXPECT_EQ(String(), reader.getString(L"terminator"));
    // The registry adds a missing terminator only when a zero follows the data.
    scratch.setRaw(L"unterminated", REG_SZ, L"abcdX", 8);
    EXPECT_EQ(String(L"abc"), reader.getString(L"unterminated")) << "(size - 1) / 2 characters";

    scratch.setRaw(L"noBytes", REG_BINARY, "", 0);
    EXPECT_EQ(0u, reader.getBinary(L"noBytes").length());
    expectMisfit(expectThrown<FormatException>([&] { reader.getBinaryArray(L"noBytes"); }));

    _wputenv(L"KORVALIN_REGISTRY_TEST=expanded");
    scratch.setText(L"expand", L"%KORVALIN_REGISTRY_TEST%\\x", REG_EXPAND_SZ);
    EXPECT_EQ(String(L"expanded\\x"), reader.getString(L"expand"));
    expectMisfit(expectThrown<FormatException>([&] { reader.typeOf(L"expand"); }));
    scratch.setText(L"unset", L"%KORVALIN_REGISTRY_UNSET%", REG_EXPAND_SZ);
    expectThrown<EnvironmentException>([&] { reader.getString(L"unset"); });
}

TEST_F(RegistryTest, GroupsAreSiblingKeysWithIndexes)
{
    for (const wchar_t* key : {L"a", L"a[1]", L"a[3]", L"b", L"c[1]x"})
        scratch.addSubKey(key);
    EXPECT_EQ(2u, reader.groupCount(L"a")) << "the count stops at the first gap";
    EXPECT_EQ(1u, reader.groupCount(L"b"));
    EXPECT_EQ(0u, reader.groupCount(L"none"));
    EXPECT_EQ(0u, reader.groupCount(L"a[1]"));
    EXPECT_EQ((std::vector<String>{L"a", L"b"}), asVector(reader.groupNames()));
    EXPECT_EQ((std::vector<String>{L"a", L"b", L"c[1]x"}), asVector(writer.groupNames()))
        << "the write side leaves out only names that end in ']'";
    EXPECT_TRUE(reader.hasGroup(L"a"));
    EXPECT_FALSE(reader.hasGroup(L"a[1]")) << "such a key exists, but isn't a group";

    expectMisfit(expectThrown<FormatException>([&] { reader.group(L"a"); }));
    expectMisfit(expectThrown<FormatException>([&] { reader.group(L"a[1]", 0); }));
    const SharedPointer<InputValues> second = reader.group(L"a", 1);
    EXPECT_EQ(String(L"a"), second->name());
    EXPECT_EQ(String(L"HKEY_CURRENT_USER\\Software\\WixKorvalinTests\\Registry\\a[1]"), second->path());
    expectThrown<RangeException>([&] { reader.group(L"a", 2); });
    expectOsError(expectThrown<OsException>([&] { reader.group(L"none"); }), 2, 0);
    EXPECT_TRUE(reader.group(L"b")->isEmpty());

    // The write side makes the siblings.
    for (int i = 0; i < 3; ++i)
        writer.addGroup(L"g")->setUint(L"i", uint32_t(i));
    EXPECT_TRUE(scratch.hasSubKey(L"g[2]"));
    EXPECT_EQ(3u, writer.groupCount(L"g"));
    EXPECT_EQ(2u, reader.group(L"g", 2)->getUint(L"i"));
    expectMisfit(expectThrown<FormatException>([&] { writer.createGroup(L"g", String()); }));
    writer.group(L"g", 1)->setString(L"s", L"changed");
    EXPECT_EQ(String(L"changed"), reader.group(L"g", 1)->getString(L"s"));
    expectThrown<LookupException>([&] { writer.group(L"h", 0); });
    writer.group(L"h")->setBool(L"made", true);
    EXPECT_TRUE(reader.group(L"h")->getBool(L"made"));
    expectThrown<RangeException>([&] { writer.group(L"h", 5); });
    expectMisfit(expectThrown<FormatException>([&] { writer.group(L"h]"); }));

    // Deeper keys in one step, with the index on the whole text.
    writer.addGroup(L"deep\\er");
    writer.addGroup(L"deep\\er");
    EXPECT_TRUE(scratch.hasSubKey(L"deep\\er[1]"));
    EXPECT_EQ(2u, reader.groupCount(L"deep\\er"));

    // Trees compare by content, whichever store they live in.
    EXPECT_TRUE(reader.group(L"g", 0)->contentEquals(*reader.group(L"g", 0)));
    EXPECT_FALSE(reader.group(L"g", 0)->contentEquals(*reader.group(L"g", 2)));
}

TEST_F(RegistryTest, AccessListsOpenUpAndComeBack)
{
    scratch.addSubKey(L"guarded");
    auto daclOf = [&](PSECURITY_DESCRIPTOR* block, PACL* dacl, BOOL* present) {
        HKEY key = nullptr;
        ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(scratch.handle(), L"guarded", 0, READ_CONTROL, &key));
        DWORD size = 0;
        RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, nullptr, &size);
        *block = LocalAlloc(LPTR, size);
        ASSERT_EQ(ERROR_SUCCESS, RegGetKeySecurity(key, DACL_SECURITY_INFORMATION, *block, &size));
        RegCloseKey(key);
        BOOL defaulted = FALSE;
        ASSERT_TRUE(GetSecurityDescriptorDacl(*block, present, dacl, &defaulted));
    };
    PSECURITY_DESCRIPTOR before = nullptr;
    PACL beforeDacl = nullptr;
    BOOL beforePresent = FALSE;
    daclOf(&before, &beforeDacl, &beforePresent);
    ASSERT_TRUE(beforePresent && beforeDacl) << "a new key has an access list";

    SharedPointer<InputValues> opened = reader.openUnprotected(L"guarded", readAccess);
    PSECURITY_DESCRIPTOR during = nullptr;
    PACL duringDacl = nullptr;
    BOOL duringPresent = FALSE;
    daclOf(&during, &duringDacl, &duringPresent);
    EXPECT_TRUE(duringPresent);
    EXPECT_EQ(nullptr, duringDacl) << "a null access list restricts nobody";

    RegistryInputValues* guarded = dynamic_cast<RegistryInputValues*>(opened.get());
    ASSERT_NE(nullptr, guarded);
    EXPECT_TRUE(guarded->hasKey());
    guarded->restoreSecurity();
    guarded->restoreSecurity();  // nothing saved any more: nothing happens
    PSECURITY_DESCRIPTOR after = nullptr;
    PACL afterDacl = nullptr;
    BOOL afterPresent = FALSE;
    daclOf(&after, &afterDacl, &afterPresent);
    ASSERT_TRUE(afterPresent && afterDacl);
    EXPECT_EQ(beforeDacl->AceCount, afterDacl->AceCount);
    EXPECT_EQ(beforeDacl->AclSize, afterDacl->AclSize);
    EXPECT_EQ(0, memcmp(beforeDacl, afterDacl, beforeDacl->AclSize));
    LocalFree(before);
    LocalFree(during);
    LocalFree(after);

    expectOsError(expectThrown<OsException>([&] { reader.openUnprotected(L"missing", readAccess); }), 2, 0);
}

namespace {

// The stand-ins of the allocation-failure test: the first `allocationsLeft` blocks are
// real, every later one fails; keys opened and closed are counted.
int allocationsLeft = 0;
int keysOpen = 0;
ImportPatch* realAlloc = nullptr;
ImportPatch* realOpen = nullptr;
ImportPatch* realClose = nullptr;

HLOCAL WINAPI scarceLocalAlloc(UINT flags, SIZE_T size)
{
    if (allocationsLeft-- > 0)
        return reinterpret_cast<decltype(&LocalAlloc)>(realAlloc->original())(flags, size);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

LONG WINAPI countingOpen(HKEY parent, LPCWSTR subKey, DWORD options, REGSAM access, PHKEY opened)
{
    const LONG result = reinterpret_cast<decltype(&RegOpenKeyExW)>(realOpen->original())(parent, subKey, options,
                                                                                         access, opened);
    keysOpen += result == ERROR_SUCCESS;
    return result;
}

LONG WINAPI countingClose(HKEY key)
{
    const LONG result = reinterpret_cast<decltype(&RegCloseKey)>(realClose->original())(key);
    keysOpen -= result == ERROR_SUCCESS;
    return result;
}

}  // namespace

// Each of openUnprotected's two blocks fails in turn: the memory failure of the FW
// layer, and every key it opened closed again.
TEST_F(RegistryTest, AnAllocationFailureOfOpenUnprotectedLeavesNothingOpen)
{
    scratch.addSubKey(L"guarded");
    for (int allowed = 0; allowed < 2; ++allowed) {
        keysOpen = 0;
        allocationsLeft = allowed;
        {
            ImportPatch alloc("kernel32.dll", "LocalAlloc", reinterpret_cast<void*>(scarceLocalAlloc));
            ImportPatch open("advapi32.dll", "RegOpenKeyExW", reinterpret_cast<void*>(countingOpen));
            ImportPatch close("advapi32.dll", "RegCloseKey", reinterpret_cast<void*>(countingClose));
            realAlloc = &alloc;
            realOpen = &open;
            realClose = &close;
            expectThrown<fw_exception_memory>([&] { reader.openUnprotected(L"guarded", readAccess); });
        }
        EXPECT_EQ(0, keysOpen) << "block " << allowed + 1 << " failed";
    }
}

TEST(RegistryViewTest, TheViewFlagReachesTheOtherView)
{
    // HKEY_LOCAL_MACHINE\Software is split into two views; a 32-bit program sees its own.
    const wchar_t* const path = L"Software\\WixKorvalinTests\\Views";
    ScratchKey view64(HKEY_LOCAL_MACHINE, path, KEY_WOW64_64KEY);
    ScratchKey view32(HKEY_LOCAL_MACHINE, path, KEY_WOW64_32KEY);

    RegistryOutputValues machine;
    machine.use64BitView();
    machine.attach(HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE");
    RegistryOutputValues wide;
    wide.use64BitView();
    wide.open(machine, path, writeAccess);
    wide.setUint(L"seen", 64);
    wide.close();

    DWORD value = 0;
    EXPECT_TRUE(view64.readDword(L"seen", value));
    EXPECT_EQ(64u, value);
    EXPECT_FALSE(view32.readDword(L"seen", value)) << "written through the 64-bit view only";

    RegistryInputValues plainRoot;
    plainRoot.attach(HKEY_LOCAL_MACHINE, L"HKEY_LOCAL_MACHINE");
    RegistryInputValues plain;
    plain.open(plainRoot, path, readAccess);
    // A program's default view is its own: the 32-bit one on x86, the 64-bit one on x86-64.
    const bool ownViewIs64 = sizeof(void*) == 8;
    EXPECT_EQ(ownViewIs64, plain.hasValue(L"seen"));
    RegistryInputValues viewed;
    viewed.use64BitView();
    viewed.open(plainRoot, path, readAccess);
    EXPECT_EQ(64u, viewed.getUint(L"seen"));
    view64.addSubKey(L"child");
    EXPECT_TRUE(viewed.hasGroup(L"child"));
    EXPECT_EQ(ownViewIs64, plain.hasGroup(L"child"));
}
