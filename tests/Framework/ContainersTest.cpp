#include "Framework/Array.h"
#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/HexText.h"
#include "Framework/SharedPointer.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

using namespace Framework;

namespace {

int alive = 0;

struct Base
{
    Base() { ++alive; }
    virtual ~Base() { --alive; }
};

struct Derived : Base
{
};

}  // namespace

TEST(SharedPointerTest, TheLastOwningHandleDeletesThroughAnyOfItsTypes)
{
    expectThrown<ValueNotInitializedException>([] { SharedPointer<Base>(nullptr).get(); });
    {
        SharedPointer<Base> asBase;
        {
            SharedPointer<Derived> derived(new Derived);
            asBase = derived;
            SharedPointer<Base> third = asBase;
            third = third;
        }
        EXPECT_EQ(1, alive) << "the base handle still holds the object";
    }
    EXPECT_EQ(0, alive);
    Base kept;
    SharedPointer<Base>(&kept, false);
    EXPECT_EQ(1, alive) << "a handle that doesn't own leaves the object alone";
}

TEST(ArrayTest, CopiesShareOneListAndEraseStaysInside)
{
    Array<int> first;
    Array<int> second = first;
    for (int value : {10, 20, 30})
        second.add(value);
    EXPECT_EQ(3u, first.size()) << "no copy on write";
    expectThrown<RangeException>([&] { first.erase(3, 1); });
    first.erase(1, 1);
    EXPECT_EQ(30, second.at(1));
    EXPECT_EQ(4, thrownField<RangeException>([&] { first.at(4); }, &RangeException::index));
}

// Hexadecimal text against msvcrt's "%02X" for every byte value.
TEST(HexTextTest, BytesAsTextAndBack)
{
    AnsiString all;
    std::string spaced;
    for (int i = 0; i < 256; ++i) {
        char two[3];
        std::snprintf(two, sizeof two, "%02X", i);
        all.append(char(i));
        spaced += (i > 0 ? " " : "") + std::string(two);
    }
    EXPECT_EQ(AnsiString(spaced.c_str()), hexText(all));
    EXPECT_EQ(all, fromHexText(hexText(all)));
    EXPECT_EQ(AnsiString("\x00\xAB\x0F", 3), fromHexText("\r\n00\tab,0f\r\n")) << "anything else separates";
    EXPECT_EQ(1u, thrownField<FormatException>([] { fromHexText("A B"); }, &FormatException::position));
    EXPECT_EQ(6u, thrownField<FormatException>([] { fromHexText("00 AB0"); }, &FormatException::position));
}

TEST(EnvironmentTest, EachNameIsExpandedOnce)
{
    _wputenv(L"KORVALIN_TEST_X=1");
    _wputenv(L"KORVALIN_TEST_P=%KORVALIN_TEST_X%");
    _wputenv(L"KORVALIN_TEST_UNSET=");
    EXPECT_FALSE(hasEnvironmentVariable(L"KORVALIN_TEST_UNSET"));
    EXPECT_EQ(String(L"a1b<%KORVALIN_TEST_X%>"), expandEnvironment(L"a%KORVALIN_TEST_X%b<%KORVALIN_TEST_P%>"));
    EXPECT_EQ(String(L"KORVALIN_TEST_UNSET"),
              thrownField<EnvironmentException>([] { expandEnvironment(L"%KORVALIN_TEST_UNSET%"); },
                                                 &EnvironmentException::element));
    EXPECT_EQ(FormatException::unknownPosition,
              thrownField<FormatException>([] { expandEnvironment(L"100%"); }, &FormatException::position));
    expectThrown<ErrorException>([] { expandEnvironment(L"100%% sure"); });
}
