#include "Framework/Array.h"
#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/HexText.h"
#include "Framework/NameHash.h"
#include "Framework/SharedPointer.h"
#include "Framework/ValueType.h"
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
    expectThrown<ValueNotInitializedException>([&] { (void)empty->tag; });
    expectThrown<ValueNotInitializedException>([&] { (void)(*SharedPointer<int>()); });
    SharedPointer<Base> copyOfEmpty = empty;  // copies of nothing stay nothing
    EXPECT_TRUE(copyOfEmpty.isNull());

    alive = 0;
    {
        SharedPointer<Base> first(new Base);
        SharedPointer<Base> second = first;
        SharedPointer<Base> third;
        third = second;
        third = third;  // self-assignment keeps the share
        EXPECT_TRUE(third.sharesWith(first));
        first.release();
        EXPECT_TRUE(first.isNull());
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

    // reset releases the old object and keeps the owner flag.
    SharedPointer<Base> resettable(new Base);
    EXPECT_EQ(2, alive);
    resettable.reset(new Base);
    EXPECT_EQ(2, alive);
    resettable.reset();
    EXPECT_TRUE(resettable.isNull());
    EXPECT_EQ(1, alive);
    SharedPointer<Base> notOwner(&kept, false);
    notOwner.reset(new Base);
    EXPECT_FALSE(notOwner.isOwner());
}

TEST(SharedPointerTest, UpCastsShareTheCounterAndDeleteTheWholeObject)
{
    alive = 0;
    Derived::derivedGone = false;
    SharedPointer<Base> asBase;
    {
        SharedPointer<Derived> derived(new Derived);
        asBase = derived;
        EXPECT_EQ(2, asBase.dynamicCast<Derived>()->extra);
        EXPECT_TRUE(asBase.dynamicCast<Derived>().sharesWith(derived));
    }
    EXPECT_EQ(1, alive) << "the base handle still holds the object";
    EXPECT_TRUE(SharedPointer<Base>(new Base).dynamicCast<Derived>().isNull());
    asBase.release();
    EXPECT_EQ(0, alive);
    EXPECT_TRUE(Derived::derivedGone) << "deleted through the virtual destructor";
}

TEST(ArrayTest, CopiesShareOneListWithoutCopyOnWrite)
{
    Array<Int> first;
    EXPECT_FALSE(first.isNull());
    EXPECT_EQ(0u, first.size());
    expectRange(expectThrown<RangeException>([&] { first.at(0); }), 0, 0, 0);

    Array<Int> second = first;
    second.add(10);
    second.add(20);
    second.add(30);
    EXPECT_EQ(3u, first.size());
    first.at(1) = 21;
    EXPECT_EQ(21, second.at(1));
    expectRange(expectThrown<RangeException>([&] { first.at(3); }), 0, 3, 3);

    // erase: position + count may reach size() but not pass it.
    expectRange(expectThrown<RangeException>([&] { first.erase(3, 1); }), 0, 3, 4);
    first.erase(3, 0);
    EXPECT_EQ(3u, first.size());
    first.erase(2, 1);
    EXPECT_EQ(2u, second.size());
    EXPECT_EQ(21, second.at(1));
    first.erase(0, 2);
    EXPECT_EQ(0u, second.size());

    // A new Array is a new list.
    Array<Int> other;
    other.add(1);
    EXPECT_EQ(0u, first.size());

    Array<bool> flags;
    flags.add(true);
    flags.add(false);
    bool& secondFlag = flags.at(1);
    secondFlag = true;
    EXPECT_TRUE(flags.at(1));
    static_assert(sizeof(Detail::ArraySlot<bool>) == 1, "one byte a flag");

    Array<Array<String>> nested;
    nested.add(Array<String>());
    nested.at(0).add(L"x");
    EXPECT_EQ(String(L"x"), nested.at(0).at(0));
}

TEST(ArrayTest, IteratorsWalkAndStopAtTheEnd)
{
    Array<String> names;
    for (const wchar_t* name : {L"a", L"b", L"c"})
        names.add(name);
    String seen;
    for (ArrayIterator<String> it = names.iterator(0); it.current != it.end; it.next())
        seen += it.value();
    EXPECT_EQ(String(L"abc"), seen);

    ArrayIterator<String> last = names.iterator(2);
    EXPECT_EQ(String(L"c"), last.value());
    last.next();
    expectThrown<IterationException>([&] { last.value(); });
    expectThrown<IterationException>([&] { last.next(); });
    EXPECT_EQ(last.end, names.iterator(3).current);
    expectRange(expectThrown<RangeException>([&] { names.iterator(4); }), 0, 3, 4);

    Array<Int> none;
    ArrayIterator<Int> empty = none.iterator(0);
    EXPECT_EQ(empty.current, empty.end);
    expectThrown<IterationException>([&] { empty.value(); });
}

TEST(NameHashTest, CaseDoesNotMatterAndBytesAreSigned)
{
    EXPECT_EQ(hashName(L"Abc"), hashName(L"aBC"));
    EXPECT_EQ(0u, hashName(String()));
    // 'a' is the bytes 0x61 0x00: 97, then 97 * 33.
    EXPECT_EQ(3201u, hashName(L"A"));
    // U+00E9 is 0xE9 0x00: the low byte counts as -23.
    EXPECT_EQ(uint32_t(-23 * 33), hashName(L"\x00e9"));
    EXPECT_NE(hashName(L"ab"), hashName(L"ba"));

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
    EXPECT_EQ(AnsiString("FF"), hexText(bytes({0xFF})));
    EXPECT_EQ(0u, hexText(AnsiString()).length());
    EXPECT_EQ(0u, hexDigits(AnsiString()).length());

    EXPECT_EQ(data, fromHexText("00 ab,0F"));
    EXPECT_EQ(data, fromHexText("\r\n00\tAB\r\n0f\r\n"));
    EXPECT_EQ(0u, fromHexText("").length());
    EXPECT_EQ(0u, fromHexText(" , ").length());
    EXPECT_EQ(1u, expectThrown<FormatException>([] { fromHexText("A"); })->position);
    EXPECT_EQ(1u, expectThrown<FormatException>([] { fromHexText("A B"); })->position);
    EXPECT_EQ(6u, expectThrown<FormatException>([] { fromHexText("00 AB0"); })->position);
    EXPECT_EQ(1u, expectThrown<FormatException>([] { fromHexText("0G"); })->position);

    // Every byte value survives the round trip.
    AnsiString all;
    for (int i = 0; i < 256; ++i)
        all.append(char(i));
    EXPECT_EQ(all, fromHexText(hexText(all)));
    EXPECT_EQ(all, fromHexText(hexDigits(all)));
    EXPECT_EQ(767u, hexText(all).length());
}

TEST(EnvironmentTest, VariablesAndExpansion)
{
    _wputenv(L"KORVALIN_TEST_X=1");
    _wputenv(L"KORVALIN_TEST_Y=2");
    _wputenv(L"KORVALIN_TEST_P=%KORVALIN_TEST_X%");
    _wputenv(L"KORVALIN_TEST_UNSET=");

    EXPECT_TRUE(hasEnvironmentVariable(L"KORVALIN_TEST_X"));
    EXPECT_FALSE(hasEnvironmentVariable(L"KORVALIN_TEST_UNSET"));
    EXPECT_EQ(String(L"2"), environmentVariable(L"KORVALIN_TEST_Y"));
    EXPECT_EQ(String(L"KORVALIN_TEST_UNSET"),
              expectThrown<EnvironmentException>([] { environmentVariable(L"KORVALIN_TEST_UNSET"); })->element);
    expectThrown<ErrorException>([] { hasEnvironmentVariable(String()); });
    expectThrown<ErrorException>([] { environmentVariable(String()); });

    EXPECT_EQ(String(L"a1b2"), expandEnvironment(L"a%KORVALIN_TEST_X%b%KORVALIN_TEST_Y%"));
    EXPECT_EQ(String(L"12-"), expandEnvironment(L"%KORVALIN_TEST_X%%KORVALIN_TEST_Y%-"));
    EXPECT_EQ(String(L"plain text"), expandEnvironment(L"plain text"));
    EXPECT_EQ(String(), expandEnvironment(String()));
    // Expanded once: a value that holds a percent sign stays as it is.
    EXPECT_EQ(String(L"<%KORVALIN_TEST_X%>"), expandEnvironment(L"<%KORVALIN_TEST_P%>"));
    EXPECT_EQ(FormatException::unknownPosition,
              expectThrown<FormatException>([] { expandEnvironment(L"100%"); })->position);
    expectThrown<FormatException>([] { expandEnvironment(L"a%KORVALIN_TEST_X%b%"); });
    expectThrown<ErrorException>([] { expandEnvironment(L"100%% sure"); });
    expectThrown<EnvironmentException>([] { expandEnvironment(L"%KORVALIN_TEST_UNSET%"); });
}

TEST(SplitJoinTest, PiecesAndSeparators)
{
    const Array<String> pieces = String(L";;a;;b;").split(L';');
    ASSERT_EQ(2u, pieces.size());
    EXPECT_EQ(String(L"a"), pieces.at(0));
    EXPECT_EQ(String(L"b"), pieces.at(1));
    EXPECT_EQ(0u, String().split(L';').size());
    EXPECT_EQ(0u, String(L";;;").split(L';').size());

    const Array<String> set = String(L"a, b;c").split(L", ;");
    ASSERT_EQ(3u, set.size());
    EXPECT_EQ(String(L"c"), set.at(2));
    const Array<AnsiString> narrow = AnsiString("x|y||z").split("|");
    ASSERT_EQ(3u, narrow.size());
    EXPECT_EQ(AnsiString("z"), narrow.at(2));
    expectThrown<ErrorException>([] { String(L"a").split(static_cast<const wchar_t*>(nullptr)); });

    EXPECT_EQ(String(L"a, b, c"), String::join(L", ", set));
    EXPECT_EQ(String(L"a"), String::join(L"--", String(L"a").split(L';')));
    EXPECT_EQ(String(), String::join(L", ", Array<String>()));
    const String joined = String::join(String(), pieces);
    EXPECT_EQ(String(L"ab"), joined);
}
