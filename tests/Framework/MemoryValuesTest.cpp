// The memory store. Names, lists of texts and groups by index are what the INI
// parser builds, and its tests read them back; these are the rules it doesn't reach.
#include "Framework/MemoryValues.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using namespace Framework;

TEST(MemoryValuesTest, TypedValuesAreKeptAsText)
{
    MemoryValues values(L"r");
    values.setHyper(L"h", -5);
    values.setBool(L"H", true);  // replaces "h"
    values.setUhyper(L"big", ~uint64_t(0));
    values.setBinary(L"b", AnsiString("\x01\xFF"));
    EXPECT_EQ(String(L"true|18446744073709551615|01 FF"),
              values.getString(L"h") + L"|" + values.getString(L"big") + L"|" + values.getString(L"b"));
    EXPECT_EQ(AnsiString("\x01\xFF"), values.getBinary(L"b"));
    // "0x" after lowering means 16, and nothing may stand before it.
    for (const wchar_t* text : {L"0x1F", L"0X1f"}) {
        values.setString(L"x", text);
        EXPECT_EQ(31, values.getInt(L"x")) << narrowForTest(text);
    }
    values.setString(L"x", L"-0x10");
    expectThrown<FormatException>([&] { values.getInt(L"x"); });
    EXPECT_EQ(ValueType::StringArray, values.typeOf(L"missing")) << "typeOf doesn't look";
    expectThrown<LookupException>([&] { values.getString(L"missing"); });
    expectThrown<ErrorException>([&] { values.setStringArray(L"x", Array<String>()); });
    EXPECT_EQ(String(L"-0x10"), values.getString(L"x")) << "a refused list leaves the value";
}

TEST(MemoryValuesTest, GroupsOnBothSides)
{
    MemoryValues root(L"r");
    const InputValues& reader = root;
    expectThrown<LookupException>([&] { reader.group(L"g"); });
    SharedPointer<OutputValues> made = root.group(L"g");
    EXPECT_TRUE(root.group(L"G").sharesWith(made)) << "the write side creates once";
    EXPECT_EQ(String(L"/r/g/b"), made->group(L"b")->path());
    root.addGroup(L"g");
    expectThrown<FormatException>([&] { reader.group(L"g"); });
    expectThrown<FormatException>([&] { root.group(L"g"); });
    expectThrown<RangeException>([&] { root.group(L"g", 2); });
    expectThrown<LookupException>([&] { root.group(L"x", 0); });

    root.clear();
    EXPECT_TRUE(root.isEmpty());
    root.group(L"empty");
    EXPECT_FALSE(root.isEmpty()) << "an empty sub-group still counts";
    // Content compares without case down the tree; equals compares the names too.
    MemoryValues other(L"other");
    other.group(L"EMPTY");
    EXPECT_TRUE(root.contentEquals(other));
    EXPECT_FALSE(root.equals(other));
    other.group(L"empty")->setString(L"a", L"2");
    EXPECT_FALSE(root.contentEquals(other)) << "a difference deep inside";
    root.reset();
    EXPECT_EQ(String(), root.path());
}
