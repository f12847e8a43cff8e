#include "Framework/FormatEngine.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cwchar>

using namespace Framework;

namespace {

const int64_t big = -9000000000LL;  // needs all 64 bits

String widened(const char* text)
{
    String out;
    for (; *text; ++text)
        out.append(wchar_t(*text));
    return out;
}

// Both engines against msvcrt's own bounded printf (the platform's twin) with the
// runtime's spelling of the same format: `ours` as the dialect writes it, `runtimes`
// as msvcrt reads it. A trailing 7 checks that the argument before it was read whole.
template <class Value>
void expectAsTheRuntime(const char* ours, const char* runtimes, Value value)
{
    const std::string withTail = std::string(ours) + "|%d";
    const std::string runtimeTail = std::string(runtimes) + "|%d";
    char narrow[256] = {};
    _snprintf(narrow, sizeof narrow - 1, runtimeTail.c_str(), value, 7);
    EXPECT_EQ(AnsiString(narrow), AnsiString::format(withTail.c_str(), value, 7)) << ours << " with " << value;
    wchar_t wide[256] = {};
    _snwprintf(wide, 255, widened(runtimeTail.c_str()).c_str(), value, 7);
    EXPECT_EQ(String(wide), String::format(widened(withTail.c_str()).c_str(), value, 7)) << ours << " with " << value;
}

}  // namespace

TEST(FormatEngineTest, ConversionsAreTheRuntimes)
{
    const char* const integerConversions[] = {"%d", "%5d", "%-5d", "%+d", "%05d", "% d", "%.3d", "%x",
                                              "%#x", "%#X", "%o", "%u", "%hd", "%hu", "%ld", "%I32d"};
    for (const char* conversion : integerConversions) {
        for (int value : {-42, 0, 255, INT32_MIN})
            expectAsTheRuntime(conversion, conversion, value);
    }
    for (const char* conversion : {"%5.2f", "%e", "%g", "%-10.3f", "%+.0f"}) {
        for (double value : {3.14159, -0.5, 1e10})
            expectAsTheRuntime(conversion, conversion, value);
    }

    // The three 64-bit spellings of the dialect are msvcrt's I64.
    for (const char* letter : {"d", "u", "X", "x"}) {
        const char* const sizes[][2] = {{"%ll", "%I64"}, {"%L", "%I64"}, {"%I64", "%I64"}, {"%-016L", "%-016I64"}};
        for (const auto& size : sizes) {
            const std::string ours = size[0] + std::string(letter);
            const std::string runtimes = size[1] + std::string(letter);
            for (uint64_t value : {uint64_t(big), ~uint64_t(0), uint64_t(1) << 32, uint64_t(0x1F)})
                expectAsTheRuntime(ours.c_str(), runtimes.c_str(), value);
        }
    }
}

TEST(FormatEngineTest, TextArgumentsMeanTheSameInBothWidths)
{
    // %s is always narrow text and %S always wide text, whatever the format's width;
    // flags, width and precision stay with the swapped letter.
    EXPECT_EQ(AnsiString("ab|cd"), AnsiString::format("%s|%S", "ab", L"cd"));
    EXPECT_EQ(String(L"n007"), String::format(L"%S%03d", L"n", 7));
    EXPECT_EQ(String(L"k=FF"), String::format(L"%s=%X", "k", 255u));
    EXPECT_EQ(String(L"ab      |   cd|abc"), String::format(L"%-8s|%5S|%.3s", "ab", L"cd", "abcdef"));
    EXPECT_EQ(AnsiString("ab      |   cd|abc"), AnsiString::format("%-8s|%5S|%.3S", "ab", L"cd", L"abcdef"));
    EXPECT_EQ(String(L"[\x00e9\x4e2d]"), String::format(L"[%S]", L"\x00e9\x4e2d"));
    // The caller's copy of a shared text is not touched by the swap.
    String original(L"%s");
    String shared = original;
    swapStringConversions(shared);
    EXPECT_EQ(String(L"%S"), shared);
    EXPECT_EQ(String(L"%s"), original);
}

TEST(FormatEngineTest, PercentSignsAndFormatsOutsideTheGrammar)
{
    struct Row
    {
        const char* format;
        const char* rewritten;
    } rows[] = {
        {"%%lld", "%%lld"}, {"%5%Lu", "%5%I64u"}, {"%hld", "%hld"}, {"%lLd", "%lI64d"}, {"%Lhd", "%Lhd"},
        {"%ll", "%ll"},     {"a%Lz%Ld", "a%Lz%I64d"}, {"abc%", "abc%"}, {"%", "%"}, {"%I6d", "%I6d"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(AnsiString(row.rewritten), normalizeFormat(row.format)) << row.format;
        EXPECT_EQ(String(row.rewritten), normalizeFormat(String(row.format).c_str())) << row.format;
    }
    EXPECT_EQ(AnsiString("100%"), AnsiString::format("100%%"));
    EXPECT_EQ(String(L"%lld"), String::format(L"%%lld"));
    EXPECT_EQ(AnsiString(""), AnsiString::format(""));
    EXPECT_EQ(String(L"no conversion at all"), String::format(L"no conversion at all"));
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
    EXPECT_EQ(10485761u, AnsiString::format("%10485761d", 1).length());
}

TEST(FormatEngineTest, AFailedCountIsAnError)
{
    // The runtime can't put this wide text into the narrow "C" locale, so its count
    // fails; the engine reports that instead of allocating from a negative count.
    expectThrown<ErrorException>([] { AnsiString::format("[%S]", L"\x4e2d"); });
    EXPECT_EQ(AnsiString("[abc]"), AnsiString::format("[%S]", L"abc"));
}
