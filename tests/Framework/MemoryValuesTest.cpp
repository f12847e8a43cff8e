#include "Framework/MemoryValues.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <utility>

using namespace Framework;

namespace {

// The read side of a group that is also writable.
const InputValues& reader(const MemoryValues& values)
{
    return values;
}

Array<String> texts(std::initializer_list<const wchar_t*> items)
{
    Array<String> result;
    for (const wchar_t* item : items)
        result.add(item);
    return result;
}

std::vector<String> asVector(const Array<String>& array)
{
    std::vector<String> result;
    for (uint32_t i = 0; i < array.size(); ++i)
        result.push_back(array.at(i));
    return result;
}

}  // namespace

TEST(ValueTypeTest, NamesFormatsAndBooleans)
{
    EXPECT_EQ(ValueType::Uint, parseType(L"uint"));
    EXPECT_EQ(9u, static_cast<uint32_t>(parseType(L"UINTARRAY")));
    expectThrown<LookupException>([] { parseType(L"Uint64"); });
    expectThrown<LookupException>([] { parseType(String()); });
    for (uint32_t number = 0; number < valueTypeCount; ++number)
        EXPECT_EQ(number, static_cast<uint32_t>(parseType(typeName(static_cast<ValueType>(number)))));
    EXPECT_EQ(String(L"BinaryArray"), typeName(ValueType::BinaryArray));
    expectThrown<LookupException>([] { typeName(static_cast<ValueType>(14)); });

    EXPECT_STREQ("%Ld", printFormat(ValueType::Hyper));
    EXPECT_STREQ("%S", printFormat(ValueType::StringArray));
    EXPECT_STREQ("%s", printFormat(ValueType::Binary));
    // The print formats mean what the types say when they go through the format engine.
    EXPECT_EQ(AnsiString("18446744073709551615"), AnsiString::format(printFormat(ValueType::Uhyper), ~uint64_t(0)));
    EXPECT_EQ(AnsiString("-9000000000"), AnsiString::format(printFormat(ValueType::HyperArray), -9000000000LL));
    EXPECT_EQ(AnsiString("4294967295"), AnsiString::format(printFormat(ValueType::Uint), 0xFFFFFFFFu));
    EXPECT_EQ(AnsiString("wide"), AnsiString::format(printFormat(ValueType::String), L"wide"));

    EXPECT_TRUE(parseBool(L"YES"));
    EXPECT_TRUE(parseBool(L"1"));
    EXPECT_TRUE(parseBool(L"True"));
    EXPECT_FALSE(parseBool(L"No"));
    EXPECT_FALSE(parseBool(L"FALSE"));
    EXPECT_EQ(String(L"false"), boolText(parseBool(L"0")));
    EXPECT_EQ(String(L"true"), boolText(true));
    for (const wchar_t* bad : {L"", L"2", L" yes", L"yes ", L"on"})
        EXPECT_EQ(FormatException::unknownPosition,
                  expectThrown<FormatException>([bad] { parseBool(bad); })->position)
            << narrowForTest(bad);
}

TEST(MemoryValuesTest, ValuesAreListsOfTextsUnderCaseInsensitiveNames)
{
    MemoryValues values(L"r");
    values.addString(L"k", L"1");
    values.addString(L"k", L"0");
    values.addString(L"K", L"yes");
    EXPECT_TRUE(values.getBool(L"k"));
    EXPECT_EQ(String(L"yes"), values.getString(L"K"));
    EXPECT_EQ((std::vector<String>{L"1", L"0", L"yes"}), asVector(values.getStringArray(L"k")));
    EXPECT_EQ((std::vector<String>{L"k"}), asVector(values.valueNames()));
    const Array<bool> flags = values.getBoolArray(L"k");
    ASSERT_EQ(3u, flags.size());
    EXPECT_FALSE(flags.at(1));

    // A read hands out a copy: changing it changes nothing stored.
    values.getStringArray(L"k").add(L"extra");
    EXPECT_EQ(3u, values.getStringArray(L"k").size());

    // Typed writes store text; the name keeps its place when it is replaced.
    values.setInt(L"n", -5);
    values.setHyper(L"h", 1);
    EXPECT_EQ(String(L"-5"), values.getString(L"n"));
    expectThrown<FormatException>([&] { values.getUint(L"n"); });
    values.setBool(L"H", true);
    EXPECT_EQ(String(L"true"), values.getString(L"h"));
    EXPECT_EQ((std::vector<String>{L"k", L"n", L"h"}), asVector(values.valueNames()));
    values.setUhyper(L"big", ~uint64_t(0));
    EXPECT_EQ(String(L"18446744073709551615"), values.getString(L"big"));
    EXPECT_EQ(~uint64_t(0), values.getUhyper(L"big"));
    values.setHyper(L"low", INT64_MIN);
    EXPECT_EQ(INT64_MIN, values.getHyper(L"low"));
    values.setUint(L"u", 4000000000u);
    EXPECT_EQ(4000000000u, values.getUint(L"u"));
    expectThrown<OverflowException>([&] { values.getInt(L"u"); });

    // The number rule: "0x" after lowering means 16, and nothing may stand before it.
    values.setString(L"x", L"0x1F");
    EXPECT_EQ(31, values.getInt(L"x"));
    values.setString(L"x", L"0X1f");
    EXPECT_EQ(31u, values.getUint(L"x"));
    values.setString(L"x", L"010");
    EXPECT_EQ(10, values.getInt(L"x"));
    values.setString(L"x", L"-0x10");
    expectThrown<FormatException>([&] { values.getInt(L"x"); });
    values.setString(L"x", L"12 ");
    expectThrown<FormatException>([&] { values.getHyper(L"x"); });

    // Binary values are hexadecimal text.
    AnsiString data;
    data.append(char(0x01));
    data.append(char(0xFF));
    values.setBinary(L"b", data);
    EXPECT_EQ(String(L"01 FF"), values.getString(L"b"));
    EXPECT_EQ(data, values.getBinary(L"b"));
    values.addBinary(L"b", AnsiString("AB"));
    const Array<AnsiString> blobs = values.getBinaryArray(L"b");
    ASSERT_EQ(2u, blobs.size());
    EXPECT_EQ(AnsiString("AB"), blobs.at(1));
    values.setString(L"b", L"0");
    expectThrown<FormatException>([&] { values.getBinary(L"b"); });

    // Missing names: typeOf doesn't look, the reads fail.
    EXPECT_EQ(ValueType::StringArray, values.typeOf(L"missing"));
    EXPECT_FALSE(values.hasValue(L"missing"));
    expectThrown<LookupException>([&] { values.getString(L"missing"); });
    expectThrown<LookupException>([&] { values.getIntArray(L"missing"); });
}

TEST(MemoryValuesTest, ArrayWritesCopyAndRefuseEmptyArrays)
{
    MemoryValues values(L"r");
    Array<Int> numbers;
    numbers.add(3);
    numbers.add(-4);
    values.setIntArray(L"n", numbers);
    numbers.add(5);  // the store took a copy
    EXPECT_EQ((std::vector<String>{L"3", L"-4"}), asVector(values.getStringArray(L"n")));
    const Array<Int> back = values.getIntArray(L"n");
    EXPECT_EQ(-4, back.at(1));

    values.setStringArray(L"s", texts({L"a", L"b"}));
    expectThrown<ErrorException>([&] { values.setStringArray(L"s", Array<String>()); });
    expectThrown<ErrorException>([&] { values.setUintArray(L"s", Array<Uint>()); });
    EXPECT_EQ((std::vector<String>{L"a", L"b"}), asVector(values.getStringArray(L"s")));
    expectThrown<ErrorException>([&] { values.setBoolArray(L"new", Array<bool>()); });
    EXPECT_FALSE(values.hasValue(L"new"));
    EXPECT_EQ((std::vector<String>{L"n", L"s"}), asVector(values.valueNames()));

    Array<Uhyper> wide;
    wide.add(uint64_t(1) << 40);
    values.setUhyperArray(L"w", wide);
    EXPECT_EQ(String(L"1099511627776"), values.getString(L"w"));
    values.addHyper(L"w", -1);
    EXPECT_EQ(-1, values.getHyperArray(L"w").at(1));
    expectThrown<FormatException>([&] { values.getUhyperArray(L"w"); });
}

TEST(MemoryValuesTest, GroupsByNameAndIndexOnBothSides)
{
    MemoryValues root(L"r");
    expectThrown<LookupException>([&] { reader(root).group(L"g"); });
    SharedPointer<OutputValues> made = root.group(L"g");
    EXPECT_TRUE(root.group(L"G").sharesWith(made)) << "the write side creates once";
    EXPECT_EQ(String(L"/r/g"), made->path());
    EXPECT_EQ(String(L"g"), made->name());
    EXPECT_EQ(String(L"/r/g/b"), made->group(L"b")->path());

    // Both sides are handles on one object.
    made->setInt(L"level", 3);
    SharedPointer<InputValues> read = reader(root).group(L"g");
    EXPECT_EQ(3, read->getInt(L"LEVEL"));
    EXPECT_TRUE(read.dynamicCast<OutputValues>().sharesWith(made));

    root.addGroup(L"item")->setString(L"v", L"first");
    root.addGroup(L"ITEM")->setString(L"v", L"second");
    EXPECT_EQ(2u, root.groupCount(L"Item"));
    EXPECT_EQ(0u, root.groupCount(L"none"));
    EXPECT_EQ((std::vector<String>{L"g", L"item"}), asVector(root.groupNames()));
    EXPECT_EQ(FormatException::unknownPosition,
              expectThrown<FormatException>([&] { reader(root).group(L"item"); })->position);
    expectThrown<FormatException>([&] { root.group(L"item"); });
    EXPECT_EQ(String(L"second"), reader(root).group(L"item", 1)->getString(L"v"));
    root.group(L"item", 0)->setString(L"v", L"changed");
    EXPECT_EQ(String(L"changed"), reader(root).group(L"item", 0)->getString(L"v"));
    EXPECT_EQ(String(L"/r/ITEM"), reader(root).group(L"item", 1)->path());
    {
        // Deleted before the next throw, which would otherwise adopt it as its cause.
        const auto range = expectThrown<RangeException>([&] { reader(root).group(L"item", 2); });
        ASSERT_TRUE(range);
        EXPECT_EQ(0, range->from);
        EXPECT_EQ(0, range->to);
        EXPECT_EQ(0, range->index);
    }
    expectThrown<RangeException>([&] { root.group(L"item", 2); });
    expectThrown<LookupException>([&] { reader(root).group(L"x", 0); });
    expectThrown<LookupException>([&] { root.group(L"x", 0); });

    // A value and a group may share a name.
    root.setString(L"g", L"value");
    EXPECT_TRUE(root.hasValue(L"g"));
    EXPECT_TRUE(root.hasGroup(L"g"));

    // A group lives as long as a handle on it.
    SharedPointer<OutputValues> survivor;
    {
        MemoryValues parent(L"p");
        survivor = parent.addGroup(L"child");
    }
    survivor->setBool(L"ok", true);
    EXPECT_TRUE(survivor.dynamicCast<InputValues>()->getBool(L"ok"));

    MemoryValues unnamed(L"");
    EXPECT_EQ(String(L"/"), unnamed.path());
    EXPECT_EQ(String(L"//a"), unnamed.group(L"a")->path());
}

TEST(MemoryValuesTest, ClearResetAndEmptiness)
{
    MemoryValues root(L"r");
    EXPECT_TRUE(root.isEmpty());
    root.group(L"empty");
    EXPECT_FALSE(root.isEmpty()) << "an empty sub-group still counts";
    root.setString(L"v", L"1");
    root.clear();
    EXPECT_TRUE(root.isEmpty());
    EXPECT_EQ(String(L"r"), root.name());
    EXPECT_EQ(String(L"/r"), root.path());
    EXPECT_FALSE(root.hasGroup(L"empty"));
    root.setString(L"v", L"2");
    EXPECT_EQ((std::vector<String>{L"v"}), asVector(root.valueNames()));
    root.reset();
    EXPECT_TRUE(root.isEmpty());
    EXPECT_EQ(String(), root.name());
    EXPECT_EQ(String(), root.path());
}

namespace {

// A store under MemoryValues whose children are of its own kind.
class CountingValues : public MemoryValues
{
public:
    explicit CountingValues(const String& name) : MemoryValues(name) {}
    SharedPointer<InputValues> newGroup(const String& name) const override
    {
        ++made;
        return SharedPointer<InputValues>(new CountingValues(name), true);
    }
    static int made;
};
int CountingValues::made = 0;

}  // namespace

TEST(MemoryValuesTest, ChildrenAreMadeByNewGroup)
{
    CountingValues root(L"r");
    root.group(L"a")->addGroup(L"b");
    root.addGroup(L"a");
    EXPECT_EQ(3, CountingValues::made);
    EXPECT_FALSE(reader(root).group(L"a", 1).dynamicCast<CountingValues>().isNull());
}

TEST(MemoryValuesTest, ContentComparison)
{
    MemoryValues left(L"left");
    MemoryValues right(L"right");
    left.setString(L"a", L"1");
    left.setString(L"b", L"2");
    left.addGroup(L"g")->setString(L"x", L"deep");
    left.addGroup(L"g");
    right.addGroup(L"G")->setString(L"X", L"deep");
    right.addGroup(L"g");
    right.setString(L"B", L"2");
    right.setString(L"A", L"1");

    EXPECT_TRUE(left.contentEquals(right)) << "order and case of names don't matter";
    EXPECT_TRUE(right.contentEquals(left));
    EXPECT_FALSE(left.equals(right)) << "the names differ";
    MemoryValues alsoLeft(L"left");
    EXPECT_TRUE(alsoLeft.equals(MemoryValues(L"left")));
    EXPECT_FALSE(alsoLeft.equals(MemoryValues(L"LEFT"))) << "names compare with case";

    // A difference deep inside a group, in a value, in a list, in the group count.
    right.group(L"g", 0)->setString(L"x", L"other");
    EXPECT_FALSE(left.contentEquals(right));
    right.group(L"g", 0)->setString(L"x", L"deep");
    right.addString(L"a", L"again");
    EXPECT_FALSE(left.contentEquals(right));
    right.setString(L"a", L"1");
    EXPECT_TRUE(left.contentEquals(right));
    right.addGroup(L"g");
    EXPECT_FALSE(left.contentEquals(right));
    left.addGroup(L"g");
    EXPECT_TRUE(left.contentEquals(right));
    right.setString(L"c", L"3");
    EXPECT_FALSE(left.contentEquals(right)) << "more values";

    // Same number of names, different names: the other store's failure comes through.
    left.setString(L"d", L"3");
    expectThrown<LookupException>([&] { left.contentEquals(right); });
}
