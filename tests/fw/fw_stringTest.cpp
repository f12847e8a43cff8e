#include "fw/fw_string.h"

#include <gtest/gtest.h>

TEST(fw_stringTest, BlockSizesStepBySixtyFour)
{
    struct Row {
        uint32_t wanted;
        uint32_t capacity;
    };
    const Row rows[] = {{0, 27}, {27, 27}, {28, 91}, {91, 91}, {92, 155}, {155, 155}, {156, 219}};
    for (const Row& row : rows) {
        fw_string s;
        s.reserve(row.wanted, false);
        EXPECT_EQ(row.capacity, s.capacity()) << "wanted " << row.wanted;
        EXPECT_STREQ("", s.c_str());
    }
}

TEST(fw_stringTest, CopiesShareAndWritesDetach)
{
    fw_string a("shared");
    fw_string b = a;
    EXPECT_EQ(a.c_str(), b.c_str());
    b.assign("x");
    EXPECT_STREQ("shared", a.c_str());
    EXPECT_STREQ("x", b.c_str());

    fw_string c = a;
    c.writable()[0] = 'S';
    EXPECT_STREQ("shared", a.c_str());
    EXPECT_STREQ("Shared", c.c_str());

    fw_string d = a;
    d.reserve(1, true);  // large enough, but shared: it still gets its own block
    EXPECT_NE(a.c_str(), d.c_str());
    EXPECT_STREQ("shared", d.c_str());
}

TEST(fw_stringTest, AppendingIncludingItsOwnText)
{
    fw_string a("abc");
    a.append(a.c_str());
    EXPECT_STREQ("abcabc", a.c_str());
    a.append(a.c_str() + 4, 2);
    EXPECT_STREQ("abcabcbc", a.c_str());
    fw_string grow;
    for (int i = 0; i < 100; ++i)
        grow.append(grow.empty() ? 'x' : grow.c_str()[0]);
    EXPECT_EQ(100u, grow.length());
    grow.append('\0');
    EXPECT_EQ(100u, grow.length());
    fw_string cut("ab\0cd", 5);
    EXPECT_STREQ("ab", cut.c_str());
    EXPECT_TRUE(fw_string() == nullptr);
    EXPECT_TRUE(fw_string("") == "");

    fw_string padded(" \t\r\n x y \n");
    padded.trim_left();
    padded.trim_right();
    EXPECT_STREQ("x y", padded.c_str());
    EXPECT_STREQ("ab", (fw_string("a") + "b").c_str());
}
