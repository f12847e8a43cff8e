#include "Framework/String.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "fw/fw_string.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using namespace Framework;

namespace {

void expectRange(const std::unique_ptr<RangeException>& e, int64_t from, int64_t to, int64_t index)
{
    ASSERT_TRUE(e);
    EXPECT_EQ(from, e->from);
    EXPECT_EQ(to, e->to);
    EXPECT_EQ(index, e->index);
}

}  // namespace

TEST(StringTest, EmptyFormsHaveNoBlockButAValidText)
{
    const String a(L"", String::npos);
    const String b(static_cast<const wchar_t*>(nullptr), 0);
    const AnsiString c(static_cast<const char*>(nullptr), 0);
    for (const String* s : {&a, &b}) {
        EXPECT_EQ(0u, s->length());
        EXPECT_EQ(nullptr, s->data());
        ASSERT_NE(nullptr, s->c_str());
        EXPECT_EQ(L'\0', s->c_str()[0]);
    }
    EXPECT_EQ(nullptr, c.data());
    EXPECT_STREQ("", c.c_str());
    expectThrown<ErrorException>([] { String s(static_cast<const wchar_t*>(nullptr), String::npos); });
    expectThrown<ErrorException>([] { AnsiString s(static_cast<const char*>(nullptr), 5); });
}

TEST(StringTest, CopiesShareUntilOneIsWritten)
{
    String original(L"hello");
    String copy = original;
    EXPECT_EQ(original.c_str(), copy.c_str());
    copy.refAt(0) = L'j';
    EXPECT_STREQ(L"hello", original.c_str());
    EXPECT_STREQ(L"jello", copy.c_str());

    String third = original;
    third.append(L" world");
    third.erase(0, 1);
    EXPECT_STREQ(L"hello", original.c_str());
    EXPECT_STREQ(L"ello world", third.c_str());
}

TEST(StringTest, IndexesOutsideTheTextThrowRangeWithTheirNumbers)
{
    const String s(L"abc");
    expectRange(expectThrown<RangeException>([&] { s.at(3); }), 0, 3, 3);
    expectRange(expectThrown<RangeException>([] { String().front(); }), 0, 0, 0);
    EXPECT_EQ(0u, s.substr(3, 3).length());
    expectRange(expectThrown<RangeException>([&] { s.substr(4, 3); }), 0, 3, 4);
    expectRange(expectThrown<RangeException>([&] { s.find(L"a", 1, 4); }), 0, 3, 4);
    String t = s;
    expectRange(expectThrown<RangeException>([&] { t.truncate(4); }), 0, 3, 4);
    expectRange(expectThrown<RangeException>([&] { t.erase(2, 1); }), 0, 1, 2);
    expectRange(expectThrown<RangeException>([&] { t.insert(4, L'x'); }), 0, 3, 4);
    EXPECT_STREQ(L"abc", t.c_str()) << "a throwing operation leaves the string as it was";
}

TEST(StringTest, SearchingAndEditing)
{
    String s(L"aaab aab");
    EXPECT_EQ(1u, s.find(L"aab", 3));
    EXPECT_EQ(5u, s.find(L"aab", 3, 2));
    EXPECT_EQ(String::npos, s.find(L"abc", 3));
    EXPECT_TRUE(s.startsWith(String(L"aaa")));
    EXPECT_FALSE(String(L"aa").startsWith(String(L"aaa")));
    EXPECT_TRUE(s.endsWith(L"ab"));

    EXPECT_EQ(3u, s.replaceAll(L"a", L"aa", 2)) << "goes on behind the inserted text";
    EXPECT_STREQ(L"aaaab aaaab", s.c_str());
    s.insert(1, L"--");
    EXPECT_STREQ(L"a--aaab aaaab", s.c_str());
}

TEST(StringTest, AppendingGrowsAndRefusesItsOwnPointer)
{
    String s(L"abc");
    s += s;  // through a String, a string can be appended to itself
    EXPECT_EQ(String(L"abcabc"), s);
    expectThrown<ErrorException>([&] { s.append(s.c_str()); });
    expectThrown<ErrorException>([&] { s.append(static_cast<const wchar_t*>(nullptr), 3); });

    const String withZero(L"a\0b", 3);
    EXPECT_EQ(3u, withZero.length());
    EXPECT_EQ(String(L"a\0bc", 4), withZero + L'c');
    String cut = withZero;
    cut.trimAtZero();
    EXPECT_EQ(String(L"a"), cut) << "a text read with its NUL ends there";
}

TEST(StringTest, NumberParsingTable)
{
    struct Row {
        const wchar_t* text;
        uint32_t radix;
        int64_t value;
    };
    const Row hyperRows[] = {
        {L"12", 10, 12}, {L"+12", 10, 12}, {L"-0x1f", 0, -31}, {L"0x1F", 16, 31}, {L"007", 10, 7},
        {L"0x10x5", 16, 16}, {L"", 10, 0}, {L"-", 10, 0}, {L"zz", 36, 1295}, {L"0", 10, 0},
        {L"9223372036854775807", 10, INT64_MAX}, {L"-9223372036854775808", 10, INT64_MIN},
        {L"0X7", 0, 7}, {L"10", 2, 2},
    };
    for (size_t i = 0; i < sizeof hyperRows / sizeof hyperRows[0]; ++i) {
        const Row& row = hyperRows[i];
        EXPECT_EQ(row.value, String(row.text).toHyper(row.radix)) << "row " << i << ": " << narrowForTest(row.text);
    }
    EXPECT_EQ(INT32_MIN, String(L"-2147483648").toInt());
    EXPECT_EQ(UINT64_MAX, String(L"0xFFFFFFFFFFFFFFFF").toUhyper(0));

    struct Bad {
        const wchar_t* text;
        uint32_t radix;
        uint64_t position;
    };
    const Bad badRows[] = {
        {L"-1", 10, 0}, {L"+1", 10, 0}, {L"128", 8, 2}, {L"129", 8, 2}, {L"0x10", 10, 1},
        {L"1 2", 10, 1}, {L"g", 16, 0},
    };
    for (size_t i = 0; i < sizeof badRows / sizeof badRows[0]; ++i) {
        const Bad& row = badRows[i];
        auto e = expectThrown<FormatException>([&] { String(row.text).toUint(row.radix); });
        ASSERT_TRUE(e) << "row " << i << ": " << narrowForTest(row.text);
        EXPECT_EQ(row.position, e->position) << "row " << i << ": " << narrowForTest(row.text);
    }
    expectThrown<OverflowException>([] { String(L"2147483648").toInt(); });
    expectThrown<OverflowException>([] { String(L"9223372036854775808").toHyper(); });
    expectThrown<OverflowException>([] { String(L"18446744073709551616").toUhyper(); });
    expectThrown<ErrorException>([] { String(L"1").toInt(1); });
    expectThrown<ErrorException>([] { String(L"1").toInt(37); });
}

TEST(StringTest, ComparisonsAndNumbersAsText)
{
    EXPECT_EQ(-1, compareNoCase(L"ABC", 3, L"abd", 3));
    EXPECT_EQ(0, compareNoCase(L"abc", 3, L"ABC", 3));
    EXPECT_EQ(1, compareNoCase(L"abcd", 4, L"ABC", 3));
    EXPECT_EQ(-1, compare(L"ab", 2, L"abc", 3));
    EXPECT_EQ(1, compare(L"b", 1, L"abc", 3));
    EXPECT_EQ(1, compare("\xe9", 1, "a", 1)) << "bytes compare unsigned";
    EXPECT_EQ(String(L"-9223372036854775808"), toString(int64_t(INT64_MIN)));
    EXPECT_EQ(String(L"18446744073709551615"), toString(uint64_t(UINT64_MAX)));
}

TEST(StringTest, ConversionsThroughThePlatform)
{
    // Plain ASCII is the same in every ANSI code page.
    EXPECT_EQ(String(L"Setup 1.0"), String("Setup 1.0"));
    EXPECT_EQ(AnsiString("Setup 1.0"), AnsiString(String(L"Setup 1.0")));
    const String text(L"gr\u00fc\u00dfe \u65e5\u672c \U0001F600");
    const AnsiString utf8 = toUtf8(text);
    EXPECT_EQ(AnsiString("gr\xc3\xbc\xc3\x9f" "e \xe6\x97\xa5\xe6\x9c\xac \xf0\x9f\x98\x80"), utf8);
    EXPECT_EQ(text, fromUtf8(utf8));
    // A character the code page lacks becomes its default character, silently.
    const AnsiString narrowed(String(L"a\u65e5b"));
    EXPECT_EQ('a', narrowed.at(0));
    EXPECT_EQ('b', narrowed.at(narrowed.length() - 1));
    EXPECT_STREQ("abc", toFwString(String(L"abc")).c_str());
    EXPECT_STREQ("ab", toFwString(AnsiString("ab\0cd", 5)).c_str()) << "FW text ends at the first zero";
}

TEST(StringTest, SplitDropsEmptyPieces)
{
    const Array<String> pieces = String(L";;a;;b;").split(L';');
    ASSERT_EQ(2u, pieces.size());
    EXPECT_EQ(String(L"a"), pieces.at(0));
    EXPECT_EQ(String(L"b"), pieces.at(1));
    EXPECT_EQ(0u, String().split(L';').size());
    const Array<String> set = String(L"a, b;c").split(L", ;");
    ASSERT_EQ(3u, set.size()) << "any character of the set separates";
    EXPECT_EQ(String(L"c"), set.at(2));
}
