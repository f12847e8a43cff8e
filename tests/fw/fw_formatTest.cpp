#include "fw/fw_format.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

TEST(fw_formatTest, ItemsTakeTheirArgumentsByNumber)
{
    const int64_t big = (int64_t(1) << 40) + 5;
    const struct {
        const char* expected;
        fw_string made;
    } rows[] = {
        {"x", fw_format("%{1}s", "x")},
        {"", fw_format(nullptr)},
        {"50%%", fw_format("50%%")},  // no item: no printf format
        {"50%", fw_format("%{1}d%%", 50)},
        {"%x", fw_format("%%%{1}s", "x")},  // a percent run is read in pairs
        {"%{1}s=x", fw_format("%%{1}s=%{1}s", "x")},
        {"b-a", fw_format("%{2}s-%{1}s", "a", "b")},
        {"[7|x]", fw_format("[%{2}d|%{1}s]", "x", 7)},  // the head stays at the start
        {"<0042|ab >", fw_format("<%{2}04d|%{1}-3s>", "ab", 42)},
        {"b\x1F\x1F\x1F\x1F" "a", fw_format("%{2}s\x1F\x1F\x1F\x1F%{1}s", "a", "b")},  // the separator's own text
        {"  2.50|ab    |c", fw_format("%{1}6.2f|%{2}-6s|%{3}c", 2.5, "ab", 'c')},
        {"wide", fw_format("%{1}S", L"wide")},  // wide text, as in msvcrt
        // 64 bits with "ll" or "L"; the next argument is read from behind all eight bytes.
        {"1099511627781 tail", fw_format("%{1}lld %{2}s", big, "tail")},
        {"tail 1099511627781", fw_format("%{2}s %{1}lld", big, "tail")},
        {"-1099511627781", fw_format("%{1}Ld", -big)},
        {"FFFFFFFFFFFFFFFF", fw_format("%{1}llX", ~uint64_t(0))},
        {"x ll L", fw_format("%{1}s ll L", "x")},
    };
    for (const auto& row : rows)
        EXPECT_STREQ(row.expected, row.made.c_str());

    char format[] = "%{2}s+%{1}s";
    EXPECT_STREQ("y+x", fw_format(format, "x", "y").c_str());
    EXPECT_STREQ("%{2}s+%{1}s", format) << "the caller's format is never written";
}

// One integer item against msvcrt's own _snprintf with the plain conversion.
TEST(fw_formatTest, ConversionsAreThoseOfTheRuntime)
{
    for (const char* conversion : {"d", "5d", "-5d|", "+d", "x", "#x", "o", "u", "08X", " d", ".3d"}) {
        for (int value : {-42, 0, 255, 123456789}) {
            char expected[64];
            _snprintf(expected, sizeof expected, (std::string("%") + conversion).c_str(), value);
            EXPECT_STREQ(expected, fw_format((std::string("%{1}") + conversion).c_str(), value).c_str())
                << conversion << " with " << value;
        }
    }
}

// A printf conversion without a number, a number out of range, used twice or missing,
// no closing brace, an odd percent run not followed by "{".
TEST(fw_formatTest, FormatsOutsideTheLanguageAssert)
{
    for (const char* format : {"%d", "%{3}s", "%{1}s %{1}s", "%{0}s", "%{}s", "%{x}s", "%{1s", "100% %{1}s",
                               "%{2}s %{3}s %{1}s %{2}s"}) {
        auto failure = expectThrown<fw_exception_assert>([&] { fw_format(format, "a", "b", "c", "d"); });
        ASSERT_TRUE(failure) << format;
        EXPECT_EQ(0u, std::string(failure->message().c_str()).find("assertion failed at ")) << format;
    }
}
