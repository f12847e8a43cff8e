#include "Framework/MemoryValues.h"

#include "Framework/Exceptions.h"
#include "support/ArrayView.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using namespace Framework;

namespace {

// The read side of a group that is also writable.
const InputValues& reader(const MemoryValues& values)
{
    return values;
}

}  // namespace

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

    // The number rule: "0x" after lowering means 16, and nothing may stand before it.
    const struct
    {
        const wchar_t* text;
        Int value;
    } numbers[] = {{L"0x1F", 31}, {L"0X1f", 31}, {L"010", 10}};
    for (const auto& row : numbers) {
        values.setString(L"x", row.text);
        EXPECT_EQ(row.value, values.getInt(L"x")) << narrowForTest(row.text);
    }
    values.setString(L"x", L"-0x10");
    expectThrown<FormatException>([&] { values.getInt(L"x"); });

    // Binary values are hexadecimal text.
    AnsiString data;
    data.append(char(0x01));
    data.append(char(0xFF));
    values.setBinary(L"b", data);
    EXPECT_EQ(String(L"01 FF"), values.getString(L"b"));
    EXPECT_EQ(data, values.getBinary(L"b"));

    // Missing names: typeOf doesn't look, the reads fail.
    EXPECT_EQ(ValueType::StringArray, values.typeOf(L"missing"));
    expectThrown<LookupException>([&] { values.getString(L"missing"); });

    // An empty list is refused, and what stood before stays.
    Array<String> one;
    one.add(L"a");
    values.setStringArray(L"s", one);
    expectThrown<ErrorException>([&] { values.setStringArray(L"s", Array<String>()); });
    EXPECT_EQ((std::vector<String>{L"a"}), asVector(values.getStringArray(L"s")));
}

TEST(MemoryValuesTest, GroupsByNameAndIndexOnBothSides)
{
    MemoryValues root(L"r");
    expectThrown<LookupException>([&] { reader(root).group(L"g"); });
    SharedPointer<OutputValues> made = root.group(L"g");
    EXPECT_TRUE(root.group(L"G").sharesWith(made)) << "the write side creates once";
    EXPECT_EQ(String(L"/r/g/b"), made->group(L"b")->path());
    made->setInt(L"level", 3);
    EXPECT_EQ(3, reader(root).group(L"g")->getInt(L"LEVEL")) << "both sides are handles on one object";

    root.addGroup(L"item")->setString(L"v", L"first");
    root.addGroup(L"ITEM")->setString(L"v", L"second");
    EXPECT_EQ(2u, root.groupCount(L"Item"));
    EXPECT_EQ((std::vector<String>{L"g", L"item"}), asVector(root.groupNames()));
    expectThrown<FormatException>([&] { reader(root).group(L"item"); });
    expectThrown<FormatException>([&] { root.group(L"item"); });
    EXPECT_EQ(String(L"second"), reader(root).group(L"item", 1)->getString(L"v"));
    expectThrown<RangeException>([&] { reader(root).group(L"item", 2); });
    expectThrown<RangeException>([&] { root.group(L"item", 2); });
    expectThrown<LookupException>([&] { reader(root).group(L"x", 0); });
    expectThrown<LookupException>([&] { root.group(L"x", 0); });
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
    EXPECT_EQ(String(L"/r"), root.path());
    root.reset();
    EXPECT_EQ(String(), root.name());
    EXPECT_EQ(String(), root.path());
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
    EXPECT_FALSE(left.equals(right)) << "the names differ";
    right.group(L"g", 0)->setString(L"x", L"other");
    EXPECT_FALSE(left.contentEquals(right)) << "a difference deep inside";
}
