#include "Framework/FormatEngine.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdint>

using namespace Framework;

namespace {

const int64_t big = -9000000000LL;  // needs all 64 bits
const uint64_t allOnes = ~uint64_t(0);

}  // namespace

TEST(FormatEngineTest, TextArgumentsMeanTheSameInBothWidths)
{
    // %s is always narrow text and %S always wide text, whatever the format's width.
    EXPECT_EQ(AnsiString("ab|cd"), AnsiString::format("%s|%S", "ab", L"cd"));
    EXPECT_EQ(String(L"ab|cd"), String::format(L"%s|%S", "ab", L"cd"));
    EXPECT_EQ(String(L"n007"), String::format(L"%S%03d", L"n", 7));
    EXPECT_EQ(String(L"k=FF"), String::format(L"%s=%X", "k", 255u));
    // Flags, width and precision stay with the swapped letter.
    EXPECT_EQ(String(L"ab      |   cd|abc"), String::format(L"%-8s|%5S|%.3s", "ab", L"cd", "abcdef"));
    EXPECT_EQ(AnsiString("ab      |   cd|abc"), AnsiString::format("%-8s|%5S|%.3S", "ab", L"cd", L"abcdef"));
    // Non-ASCII wide text survives a wide format unchanged.
    EXPECT_EQ(String(L"[\x00e9\x4e2d]"), String::format(L"[%S]", L"\x00e9\x4e2d"));
}

TEST(FormatEngineTest, SixtyFourBitLengthsTakeWholeArguments)
{
    // Every 64-bit spelling gives the same text, and the argument behind it is read
    // from the right place: a 32-bit reading would shift it.
    EXPECT_EQ(AnsiString("-9000000000 -9000000000 -9000000000 7"),
              AnsiString::format("%lld %Ld %I64d %d", big, big, big, 7));
    EXPECT_EQ(String(L"-9000000000 -9000000000 -9000000000 7"),
              String::format(L"%lld %Ld %I64d %d", big, big, big, 7));
    EXPECT_EQ(AnsiString("Code 0x1F\n"), AnsiString::format("Code 0x%LX\n", uint64_t(0x1F)));
    EXPECT_EQ(String(L"18446744073709551615|FFFFFFFFFFFFFFFF|ffffffffffffffff"),
              String::format(L"%Lu|%LX|%llx", allOnes, allOnes, allOnes));
    EXPECT_EQ(AnsiString("0000000100000000"), AnsiString::format("%016LX", uint64_t(1) << 32));
    // The lengths of the runtime pass as they stand.
    EXPECT_EQ(AnsiString("-1 65535 7"), AnsiString::format("%hd %hu %I32d", -1, 0xFFFF, 7));
    EXPECT_EQ(String(L"-2147483648|4294967295"), String::format(L"%ld|%lu", INT32_MIN, UINT32_MAX));
}

TEST(FormatEngineTest, FlagsWidthPrecisionAndPlainText)
{
    EXPECT_EQ(AnsiString(" 3.14|+5|00042|0xff| 7|-3   |"),
              AnsiString::format("%5.2f|%+d|%05d|%#x| %d|%-5d|", 3.14159, 5, 42, 255, 7, -3));
    EXPECT_EQ(String(L" 3.14|+5|00042|0XFF"), String::format(L"%5.2f|%+d|%05d|%#X", 3.14159, 5, 42, 255));
    EXPECT_EQ(AnsiString("100%"), AnsiString::format("100%%"));
    EXPECT_EQ(String(L"100%"), String::format(L"100%%"));
    EXPECT_EQ(AnsiString("%lld"), AnsiString::format("%%lld"));
    EXPECT_EQ(String(L"%5"), String::format(L"%%%d", 5));
    EXPECT_EQ(AnsiString(""), AnsiString::format(""));
    EXPECT_EQ(0u, String::format(L"").length());
    EXPECT_EQ(String(L"no conversion at all"), String::format(L"no conversion at all"));
    EXPECT_EQ(AnsiString("c=x"), AnsiString::format("c=%c", 'x'));
}

TEST(FormatEngineTest, RewriteSteps)
{
    struct Row
    {
        const char* format;
        const char* rewritten;
    } rows[] = {
        {"%lld", "%I64d"},   {"%Lu", "%I64u"},       {"%-08LX", "%-08I64X"}, {"%I64d", "%I64d"},
        {"%hld", "%hld"},    {"%lLd", "%lI64d"},     {"%Lhd", "%Lhd"},       {"%%lld", "%%lld"},
        {"%5.2f", "%5.2f"},  {"%y%Ld", "%y%I64d"},   {"%ll", "%ll"},         {"%5%Lu", "%5%I64u"},
        {"%.x", "%.x"},      {"a%Lz%Ld", "a%Lz%I64d"}, {"abc%", "abc%"},     {"%", "%"},
        {"", ""},            {"%I6d", "%I6d"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(AnsiString(row.rewritten), normalizeFormat(row.format)) << row.format;
        EXPECT_EQ(String(row.rewritten), normalizeFormat(String(row.format).c_str())) << row.format;
    }

    String wide(L"%s %S %-5s %%s %ls %hS %y s S %Ls");
    swapStringConversions(wide);
    EXPECT_EQ(String(L"%S %s %-5S %%s %lS %hs %y s S %LS"), wide);
    // The caller's copy of a shared text is not touched.
    String original(L"%s");
    String shared = original;
    swapStringConversions(shared);
    EXPECT_EQ(String(L"%s"), original);

    expectThrown<ErrorException>([] { normalizeFormat(static_cast<const char*>(nullptr)); });
    expectThrown<ErrorException>([] { AnsiString::format(nullptr); });
    expectThrown<ErrorException>([] { String::format(nullptr); });
}

TEST(FormatEngineTest, WideResultsStopAtTheLimit)
{
    // Counted exactly, allocated once: the limit is on the count, not on the format.
    const String atLimit = String::format(L"%10485760d", 1);
    EXPECT_EQ(0xA00000u, atLimit.length());
    EXPECT_EQ(L'1', atLimit.at(0xA00000 - 1));
    expectThrown<ErrorException>([] { String::format(L"%10485761d", 1); });
    expectThrown<ErrorException>([] { String::format(L"%5000000d%5485761d", 1, 2); });
    // The narrow side has no limit.
    const AnsiString narrow = AnsiString::format("%10485761d", 1);
    EXPECT_EQ(10485761u, narrow.length());
    EXPECT_EQ(' ', narrow.at(0));
}

TEST(FormatEngineTest, AFailedCountIsAnError)
{
    // The runtime can't put this wide text into the narrow "C" locale, so its count
    // fails; the engine reports that instead of allocating from a negative count.
    expectThrown<ErrorException>([] { AnsiString::format("[%S]", L"\x4e2d"); });
    EXPECT_EQ(AnsiString("[abc]"), AnsiString::format("[%S]", L"abc"));
}
