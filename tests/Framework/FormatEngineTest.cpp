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

// Both engines against msvcrt's own bounded printf, given the runtime's spelling of the
// same format. A trailing 7 checks that the argument before it was read whole.
template <class Value>
void expectAsTheRuntime(const std::string& ours, const std::string& runtimes, Value value)
{
    const std::string tail = "|%d";
    char narrow[256] = {};
    _snprintf(narrow, sizeof narrow - 1, (runtimes + tail).c_str(), value, 7);
    EXPECT_EQ(AnsiString(narrow), AnsiString::format((ours + tail).c_str(), value, 7)) << ours << " with " << value;
    wchar_t wide[256] = {};
    _snwprintf(wide, 255, String((runtimes + tail).c_str()).c_str(), value, 7);
    EXPECT_EQ(String(wide), String::format(String((ours + tail).c_str()).c_str(), value, 7))
        << ours << " with " << value;
}

}  // namespace

TEST(FormatEngineTest, ConversionsAreTheRuntimes)
{
    for (const char* conversion : {"%d", "%-5d", "%+d", "%05d", "% d", "%.3d", "%#x", "%X", "%o", "%u", "%hd", "%ld"}) {
        for (int value : {-42, 0, 255, INT32_MIN})
            expectAsTheRuntime(conversion, conversion, value);
    }
    for (const char* conversion : {"%5.2f", "%e", "%g", "%+.0f"})
        expectAsTheRuntime(conversion, conversion, -3.14159);
    // The dialect's 64-bit spellings are msvcrt's I64.
    const char* const sizes[][2] = {{"%ll", "%I64"}, {"%L", "%I64"}, {"%I64", "%I64"}, {"%-016L", "%-016I64"}};
    for (const char* letter : {"d", "u", "X"}) {
        for (const auto& size : sizes) {
            for (uint64_t value : {uint64_t(-9000000000LL), ~uint64_t(0), uint64_t(1) << 32})
                expectAsTheRuntime(size[0] + std::string(letter), size[1] + std::string(letter), value);
        }
    }
}

TEST(FormatEngineTest, TextArgumentsMeanTheSameInBothWidths)
{
    // %s is always narrow text and %S always wide text; flags, width and precision
    // stay with the swapped letter.
    EXPECT_EQ(String(L"ab      |   cd|abc"), String::format(L"%-8s|%5S|%.3s", "ab", L"cd", "abcdef"));
    EXPECT_EQ(AnsiString("ab      |   cd|abc"), AnsiString::format("%-8s|%5S|%.3S", "ab", L"cd", L"abcdef"));
    EXPECT_EQ(String(L"[\x00e9\x4e2d]"), String::format(L"[%S]", L"\x00e9\x4e2d"));
    String original(L"%s");
    String shared = original;
    swapStringConversions(shared);
    EXPECT_EQ(String(L"%s"), original) << "the caller's copy of a shared text is not touched";
}

TEST(FormatEngineTest, PercentSignsAndFormatsOutsideTheGrammarPassAsTheyAre)
{
    const std::pair<const char*, const char*> rows[] = {
        {"%%lld", "%%lld"}, {"%5%Lu", "%5%I64u"}, {"%lLd", "%lI64d"}, {"%Lhd", "%Lhd"}, {"a%Lz%Ld", "a%Lz%I64d"},
        {"abc%", "abc%"},   {"%-5lld", "%-5I64d"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(AnsiString(row.second), normalizeFormat(row.first)) << row.first;
        EXPECT_EQ(String(row.second), normalizeFormat(String(row.first).c_str())) << row.first;
    }
    EXPECT_EQ(String(L"%lld"), String::format(L"%%lld"));
    expectThrown<ErrorException>([] { String::format(nullptr); });
}

TEST(FormatEngineTest, TheWideResultStopsAtItsLimitAndAFailedCountIsAnError)
{
    EXPECT_EQ(0xA00000u, String::format(L"%10485760d", 1).length());
    expectThrown<ErrorException>([] { String::format(L"%5000000d%5485761d", 1, 2); });
    EXPECT_EQ(10485761u, AnsiString::format("%10485761d", 1).length()) << "the narrow side has no limit";
    // The runtime can't put this wide text into the "C" locale, so its count fails.
    expectThrown<ErrorException>([] { AnsiString::format("[%S]", L"\x4e2d"); });
}
