#include "Framework/String.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "fw/fw_string.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace Framework;

TEST(StringTest, CopiesShareUntilOneIsWritten)
{
    const String empty(L"", String::npos);
    EXPECT_TRUE(empty.data() == nullptr && empty.c_str()[0] == L'\0') << "no block, but a text";
    String original(L"hello");
    String copy = original;
    EXPECT_EQ(original.c_str(), copy.c_str());
    copy.refAt(0) = L'j';
    String third = original;
    third.erase(0, 1);
    EXPECT_EQ(String(L"hello"), original);
    EXPECT_EQ(String(L"jello"), copy);
    EXPECT_EQ(String(L"ello"), third);
}

TEST(StringTest, BadArgumentsThrowAndLeaveTheStringAsItWas)
{
    String s(L"abc");
    {
        const auto range = expectThrown<RangeException>([&] { s.insert(4, L'x'); });
        ASSERT_TRUE(range);
        EXPECT_EQ(0, range->from);
        EXPECT_EQ(3, range->to);
        EXPECT_EQ(4, range->index);
    }
    expectThrown<RangeException>([&] { s.substr(4, 3); });
    expectThrown<RangeException>([&] { s.erase(2, 1); });
    expectThrown<ErrorException>([&] { s.append(s.c_str()); });  // its own text through a raw pointer
    expectThrown<ErrorException>([] { String(static_cast<const wchar_t*>(nullptr), String::npos); });
    EXPECT_EQ(String(L"abc"), s);
    EXPECT_EQ(0u, s.substr(3, 3).length());
}

TEST(StringTest, SearchingAndEditing)
{
    String s(L"aaab aab");
    EXPECT_EQ(1u, s.find(L"aab", 3));
    EXPECT_EQ(5u, s.find(L"aab", 3, 2));
    EXPECT_EQ(3u, s.replaceAll(L"a", L"aa", 2)) << "goes on behind the inserted text";
    EXPECT_EQ(String(L"aaaab aaaab"), s);
    s += s;  // through a String, a string may append itself
    EXPECT_EQ(String(L"aaaab aaaabaaaab aaaab"), s);
    String withZero(L"a\0b", 3);
    EXPECT_EQ(String(L"a\0bc", 4), withZero + L'c');
    withZero.trimAtZero();
    EXPECT_EQ(String(L"a"), withZero);
    EXPECT_EQ(String(L"a|b"), String::join(L"|", String(L";;a;;b;").split(L';'))) << "empty pieces dropped";
    EXPECT_EQ(String(L"a|b|c"), String::join(L"|", String(L"a, b;c").split(L", ;")));
}

// Valid numbers read as msvcrt's _wcstoi64 reads them; the rest fail at their place.
TEST(StringTest, NumbersParseAsTheRuntimeAndFailWhereTheyBreak)
{
    const std::pair<const wchar_t*, uint32_t> valid[] = {
        {L"12", 10}, {L"+12", 10}, {L"-0x1f", 0}, {L"0x1F", 16}, {L"007", 10},  {L"0x10x5", 16}, {L"", 10},
        {L"-", 10},  {L"zz", 36},  {L"0X7", 0},   {L"10", 2},    {L"9223372036854775807", 10},
        {L"-9223372036854775808", 10},
    };
    for (const auto& row : valid) {
        EXPECT_EQ(_wcstoi64(row.first, nullptr, int(row.second)), String(row.first).toHyper(row.second))
            << narrowForTest(row.first) << " in radix " << row.second;
    }
    const struct
    {
        const wchar_t* text;
        uint32_t radix;
        uint64_t position;
    } bad[] = {{L"-1", 10, 0}, {L"+1", 10, 0}, {L"129", 8, 2}, {L"1 2", 10, 1}, {L"0x10", 10, 1}};
    for (const auto& row : bad) {
        const auto parse = [&] { String(row.text).toUint(row.radix); };
        EXPECT_EQ(row.position, thrownField<FormatException>(parse, &FormatException::position))
            << narrowForTest(row.text) << " unsigned";
    }
    expectThrown<OverflowException>([] { String(L"2147483648").toInt(); });
    expectThrown<OverflowException>([] { String(L"18446744073709551616").toUhyper(); });
    expectThrown<ErrorException>([] { String(L"1").toInt(37); });
}

TEST(StringTest, ComparisonsAndConversions)
{
    EXPECT_EQ(0, compareNoCase(L"abc", 3, L"ABC", 3));
    EXPECT_EQ(-1, compareNoCase(L"ABC", 3, L"abd", 3));
    EXPECT_EQ(1, compare("\xe9", 1, "a", 1)) << "bytes compare unsigned";
    EXPECT_EQ(String(L"-9223372036854775808"), toString(int64_t(INT64_MIN)));
    EXPECT_EQ(String(L"18446744073709551615"), toString(uint64_t(UINT64_MAX)));

    // UTF-8 is pinned where it is written and read: the log file and the INI text.
    const AnsiString narrowed(String(L"a\u65e5b"));
    EXPECT_TRUE(narrowed.at(0) == 'a' && narrowed.at(narrowed.length() - 1) == 'b') << "the default character between";
    EXPECT_STREQ("ab", toFwString(AnsiString("ab\0cd", 5)).c_str()) << "FW text ends at the first zero";
}
