#include "fw/fw_format.h"

#include "fw/fw_assert.h"
#include "support/ExpectThrown.h"
#include "support/FwText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

TEST(fw_formatTest, ItemsInTheOrderOfTheirNumbers)
{
    EXPECT_EQ("x", text(fw_format("%{1}s", "x")));
    EXPECT_EQ("abc", text(fw_format("abc")));
    EXPECT_EQ("50%%", text(fw_format("50%%"))) << "no item: not a printf format";
    EXPECT_EQ("50%", text(fw_format("%{1}d%%", 50)));
    EXPECT_EQ("%x", text(fw_format("%%%{1}s", "x"))) << "a percent run is read in pairs";
    EXPECT_EQ("%{1}s=x", text(fw_format("%%{1}s=%{1}s", "x"))) << "an even run before { is no item";
    EXPECT_EQ("0000BEEF", text(fw_format("%{1}08X", 0xBEEFu)));
    EXPECT_EQ("", text(fw_format(nullptr)));
    EXPECT_EQ("", text(fw_format("")));
}

TEST(fw_formatTest, ConversionsAreThoseOfTheRuntime)
{
    // One integer item against msvcrt's own _snprintf with the plain conversion.
    const char* const conversions[] = {"d", "5d", "-5d|", "+d", "x", "#x", "o", "u", "08X", " d", ".3d"};
    const int values[] = {-42, 0, 255, 123456789};
    for (const char* conversion : conversions) {
        const std::string item = std::string("%{1}") + conversion;
        const std::string plain = std::string("%") + conversion;
        for (int value : values) {
            char expected[64];
            _snprintf(expected, sizeof expected, plain.c_str(), value);
            EXPECT_EQ(expected, text(fw_format(item.c_str(), value))) << item << " with " << value;
        }
    }
    EXPECT_EQ("  2.50|ab    |c", text(fw_format("%{1}6.2f|%{2}-6s|%{3}c", 2.5, "ab", 'c')));
    EXPECT_EQ("wide", text(fw_format("%{1}S", L"wide"))) << "%S takes wide text, as in msvcrt";
}

TEST(fw_formatTest, SixtyFourBitSizesBecomeTheRuntimesOwn)
{
    const int64_t big = (int64_t(1) << 40) + 5;
    EXPECT_EQ("1099511627781", text(fw_format("%{1}lld", big)));
    EXPECT_EQ("-1099511627781", text(fw_format("%{1}Ld", -big)));
    EXPECT_EQ("FFFFFFFFFFFFFFFF", text(fw_format("%{1}llX", ~uint64_t(0))));
    // The next argument is read from behind all eight bytes.
    EXPECT_EQ("1099511627781 tail", text(fw_format("%{1}lld %{2}s", big, "tail")));
    EXPECT_EQ("tail 1099511627781", text(fw_format("%{2}s %{1}lld", big, "tail")));
    // Only the size of the conversion: "ll" in the text behind it stays.
    EXPECT_EQ("x ll L", text(fw_format("%{1}s ll L", "x")));
}

TEST(fw_formatTest, ItemsOutOfOrderAreMovedBack)
{
    EXPECT_EQ("b-a", text(fw_format("%{2}s-%{1}s", "a", "b")));
    EXPECT_EQ("[7|x]", text(fw_format("[%{2}d|%{1}s]", "x", 7))) << "the head stays at the start";
    EXPECT_EQ("3 1 2", text(fw_format("%{3}d %{1}d %{2}d", 1, 2, 3)));
    EXPECT_EQ("<0042|ab >", text(fw_format("<%{2}04d|%{1}-3s>", "ab", 42)));

    // The separator is a run of control characters that the format does not hold.
    EXPECT_EQ("b\x1F\x1F\x1F\x1F" "a", text(fw_format("%{2}s\x1F\x1F\x1F\x1F%{1}s", "a", "b")));

    // The caller's format is never written.
    char format[] = "%{2}s+%{1}s";
    EXPECT_EQ("y+x", text(fw_format(format, "x", "y")));
    EXPECT_STREQ("%{2}s+%{1}s", format);
}

TEST(fw_formatTest, LongResultsGrowPastTheStackBuffer)
{
    // Around the stack buffer (2047) and the first two heap capacities (4123, 8155).
    const uint32_t lengths[] = {2047, 2048, 4124, 5000, 8156, 40000};
    for (uint32_t length : lengths) {
        const std::string long_text(length, 'q');
        const fw_string result = fw_format("%{1}s", long_text.c_str());
        EXPECT_EQ(length, result.length()) << length;
        EXPECT_EQ(long_text, text(result)) << length;
        const fw_string swapped = fw_format("%{2}s|%{1}s", "end", long_text.c_str());
        EXPECT_EQ(long_text + "|end", text(swapped)) << length;
    }
}

TEST(fw_formatTest, FormatsOutsideTheLanguageAssert)
{
    const char* const bad[] = {
        "%d",           // a printf conversion without a number is no item
        "%{3}s",        // only one item exists
        "%{1}s %{1}s",  // a number used twice
        "%{0}s",        // numbers start at 1
        "%{}s",         // no number
        "%{x}s",
        "%{1s",         // no closing brace
        "100% %{1}s",   // an odd run not followed by {
        "%{2}s %{3}s %{1}s %{2}s",
    };
    for (const char* format : bad) {
        auto failure = expectThrown<fw_exception_assert>([&] { fw_format(format, "a", "b", "c", "d"); });
        ASSERT_TRUE(failure) << format;
        const std::string message = failure->message().c_str();
        EXPECT_EQ(0u, message.find("assertion failed at ")) << format << ": " << message;
    }
}
