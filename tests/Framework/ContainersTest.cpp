#include "Framework/Array.h"
#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/HexText.h"
#include "Framework/NameHash.h"
#include "Framework/SharedPointer.h"
#include "Framework/ValueType.h"
#include "support/ArrayView.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Framework;

namespace {

// Counts how many objects of a small class tree are alive.
int alive = 0;

struct Base
{
    Base() { ++alive; }
    virtual ~Base() { --alive; }
    int tag = 1;
};

struct Derived : Base
{
    ~Derived() override { derivedGone = true; }
    static bool derivedGone;
    int extra = 2;
};
bool Derived::derivedGone = false;

void expectRange(const std::unique_ptr<RangeException>& e, int64_t from, int64_t to, int64_t index)
{
    ASSERT_TRUE(e);
    EXPECT_EQ(from, e->from);
    EXPECT_EQ(to, e->to);
    EXPECT_EQ(index, e->index);
}

AnsiString bytes(std::initializer_list<unsigned char> values)
{
    AnsiString result;
    for (unsigned char b : values)
        result.append(char(b));
    return result;
}

}  // namespace

TEST(SharedPointerTest, EmptyHandlesAndOwnership)
{
    SharedPointer<Base> empty(nullptr);
    EXPECT_TRUE(empty.isNull());
    expectThrown<ValueNotInitializedException>([&] { empty.get(); });

    alive = 0;
    {
        SharedPointer<Base> first(new Base);
        SharedPointer<Base> second = first;
        SharedPointer<Base> third;
        third = second;
        third = third;  // self-assignment keeps the share
        EXPECT_TRUE(third.sharesWith(first));
        first.release();
        second.release();
        EXPECT_EQ(1, alive) << "one handle is left";
        EXPECT_EQ(1, third->tag);
    }
    EXPECT_EQ(0, alive) << "the last owning handle deletes";

    // owner false: the last handle frees its counter but leaves the object alone.
    Base kept;
    {
        SharedPointer<Base> a(&kept, false);
        SharedPointer<Base> b = a;
        EXPECT_FALSE(b.isOwner());
    }
    EXPECT_EQ(1, alive);
    EXPECT_EQ(1, kept.tag);
}

TEST(SharedPointerTest, UpCastsShareTheCounterAndDeleteTheWholeObject)
{
    alive = 0;
    Derived::derivedGone = false;
    SharedPointer<Base> asBase;
    {
        SharedPointer<Derived> derived(new Derived);
        asBase = derived;
    }
    EXPECT_EQ(1, alive) << "the base handle still holds the object";
    asBase.release();
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(Derived::derivedGone) << "deleted through the virtual destructor";
}

TEST(ArrayTest, CopiesShareOneListWithoutCopyOnWrite)
{
    Array<Int> first;
    EXPECT_EQ(0u, first.size());
    expectRange(expectThrown<RangeException>([&] { first.at(0); }), 0, 0, 0);

    Array<Int> second = first;
    second.add(10);
    second.add(20);
    second.add(30);
    EXPECT_EQ(3u, first.size());

    // erase: position + count may reach size() but not pass it.
    expectRange(expectThrown<RangeException>([&] { first.erase(3, 1); }), 0, 3, 4);
    first.erase(3, 0);
    EXPECT_EQ(3u, first.size());
    first.erase(2, 1);
    EXPECT_EQ((std::vector<Int>{10, 20}), asVector(second)) << "the last one went";
}

TEST(NameHashTest, CaseDoesNotMatter)
{
    EXPECT_EQ(hashName(L"Abc"), hashName(L"aBC"));

    NameMap<int> map;
    map[L"Level"] = 1;
    map[L"LEVEL"] = 2;
    EXPECT_EQ(1u, map.size());
    EXPECT_EQ(2, map.at(L"level"));
    EXPECT_EQ(String(L"Level"), map.begin()->first) << "the first spelling stays";
}

TEST(HexTextTest, BytesAsTextAndBack)
{
    const AnsiString data = bytes({0x00, 0xAB, 0x0F});
    EXPECT_EQ(AnsiString("00 AB 0F"), hexText(data));
    EXPECT_EQ(AnsiString("00AB0F"), hexDigits(data));

    EXPECT_EQ(data, fromHexText("00 ab,0F"));
    EXPECT_EQ(data, fromHexText("\r\n00\tAB\r\n0f\r\n"));
    EXPECT_EQ(0u, fromHexText("").length());
    EXPECT_EQ(1u, expectThrown<FormatException>([] { fromHexText("A"); })->position);
    EXPECT_EQ(1u, expectThrown<FormatException>([] { fromHexText("A B"); })->position);
    EXPECT_EQ(6u, expectThrown<FormatException>([] { fromHexText("00 AB0"); })->position);

    // Every byte value survives the round trip.
    AnsiString all;
    for (int i = 0; i < 256; ++i)
        all.append(char(i));
    EXPECT_EQ(all, fromHexText(hexText(all)));
    EXPECT_EQ(all, fromHexText(hexDigits(all)));
}

TEST(EnvironmentTest, VariablesAndExpansion)
{
    _wputenv(L"KORVALIN_TEST_X=1");
    _wputenv(L"KORVALIN_TEST_Y=2");
    _wputenv(L"KORVALIN_TEST_P=%KORVALIN_TEST_X%");
    _wputenv(L"KORVALIN_TEST_UNSET=");

    EXPECT_FALSE(hasEnvironmentVariable(L"KORVALIN_TEST_UNSET"));
    EXPECT_EQ(String(L"2"), environmentVariable(L"KORVALIN_TEST_Y"));
    EXPECT_EQ(String(L"KORVALIN_TEST_UNSET"),
              expectThrown<EnvironmentException>([] { environmentVariable(L"KORVALIN_TEST_UNSET"); })->element);

    EXPECT_EQ(String(L"a1b2"), expandEnvironment(L"a%KORVALIN_TEST_X%b%KORVALIN_TEST_Y%"));
    EXPECT_EQ(String(L"plain text"), expandEnvironment(L"plain text"));
    // Expanded once: a value that holds a percent sign stays as it is.
    EXPECT_EQ(String(L"<%KORVALIN_TEST_X%>"), expandEnvironment(L"<%KORVALIN_TEST_P%>"));
    EXPECT_EQ(FormatException::unknownPosition,
              expectThrown<FormatException>([] { expandEnvironment(L"100%"); })->position);
    expectThrown<ErrorException>([] { expandEnvironment(L"100%% sure"); });
    expectThrown<EnvironmentException>([] { expandEnvironment(L"%KORVALIN_TEST_UNSET%"); });
}
