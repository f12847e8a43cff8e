#include "fw/fw_string.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <cstring>

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

    // The bytes behind the terminator are the string's too (a platform call's buffer):
    // a detach and a growth keep them, up to the smaller capacity.
    fw_string buffer(uint32_t(10));
    std::memcpy(buffer.writable(), "ab\0cd", 6);
    fw_string detached = buffer;
    detached.writable();
    EXPECT_EQ(0, std::memcmp("ab\0cd", detached.c_str(), 6));
    detached.reserve(100, true);
    EXPECT_EQ(0, std::memcmp("ab\0cd", detached.c_str(), 6));
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

TEST(fw_stringTest, BuffersRunsAndRefusedLengths)
{
    fw_string buffer(100u);
    EXPECT_EQ(155u, buffer.capacity());
    EXPECT_STREQ("", buffer.c_str());
    EXPECT_STREQ("xxx", fw_string('x', 3).c_str());
    EXPECT_TRUE(fw_string('\0', 3).empty());
    // A length that went below zero somewhere is refused, not allocated.
    expectThrown<fw_exception_assert>([&] { buffer.reserve(0u - 1, false); });
    EXPECT_EQ(155u, buffer.capacity());
    // So is a pointer into the block's reference count.
    fw_string s("abc");
    expectThrown<fw_exception_assert>([&] { s.append(s.c_str() - 1); });
    EXPECT_STREQ("abc", s.c_str());
}

TEST(fw_stringTest, InsertInPlaceOrIntoANewBlock)
{
    fw_string s("ace");
    s.reserve(10, true);
    const char* before = s.c_str();
    s.insert("b", 1);
    s.insert("d", 3);
    EXPECT_STREQ("abcde", s.c_str());
    EXPECT_EQ(before, s.c_str()) << "own block with room: in place";
    s.insert(">", s.length());
    EXPECT_STREQ("abcde>", s.c_str());

    fw_string shared = s;
    shared.insert("!", 0);
    EXPECT_STREQ("abcde>", s.c_str()) << "the other holder of the block keeps its text";
    EXPECT_STREQ("!abcde>", shared.c_str());

    fw_string own("xy");
    own.insert(own.c_str(), 1);
    EXPECT_STREQ("xxyy", own.c_str()) << "text out of the string's own block";

    fw_string empty;
    expectThrown<fw_exception_assert>([&] { empty.insert("abc", 1); });
    empty.insert("abc", 0);
    EXPECT_STREQ("abc", empty.c_str());
    expectThrown<fw_exception_assert>([&] { s.insert("x", 7); });
    EXPECT_STREQ("abcde>", s.c_str());
}

TEST(fw_stringTest, SubstringsReversalAndSearch)
{
    const fw_string s("abcabc");
    EXPECT_STREQ("bc", s.substr(1, 3).c_str());
    EXPECT_STREQ("", s.substr(2, 2).c_str());
    expectThrown<fw_exception_assert>([&] { s.substr(3, 2); });
    expectThrown<fw_exception_assert>([&] { s.substr(0, 7); });
    EXPECT_STREQ("cbacba", s.reversed().c_str());
    EXPECT_TRUE(fw_string().reversed().empty());

    EXPECT_EQ(4, s.find("bc", 2));
    EXPECT_EQ(-1, s.find("bca", 2));
    EXPECT_EQ(-1, s.find(""));
    EXPECT_EQ(5, s.find('c', 3));
    EXPECT_EQ(-1, s.find("a", 6)) << "at the end: nothing to find";
    EXPECT_EQ(-1, s.find('a', 6));
    expectThrown<fw_exception_assert>([&] { s.find("a", 7); });
    expectThrown<fw_exception_assert>([&] { s.find('a', 7); });
}

TEST(fw_stringTest, ReplaceTextsAndCharacters)
{
    fw_string s("a.b.c");
    EXPECT_EQ(2u, s.replace(".", "::"));
    EXPECT_STREQ("a::b::c", s.c_str());
    fw_string grows("aa");
    EXPECT_EQ(2u, grows.replace("a", "aa")) << "what `to` brings in is not searched again";
    EXPECT_STREQ("aaaa", grows.c_str());
    fw_string from("a.b.c");
    EXPECT_EQ(1u, from.replace(".", nullptr, 2));
    EXPECT_STREQ("a.bc", from.c_str());
    fw_string self("ab");
    EXPECT_EQ(1u, self.replace(self.c_str(), self.c_str() + 1)) << "both texts out of the string's own block";
    EXPECT_STREQ("b", self.c_str());

    fw_string original("kee.p");
    fw_string copy = original;
    EXPECT_EQ(0u, copy.replace("z", "y"));
    EXPECT_EQ(0u, copy.replace('z', 'y'));
    EXPECT_EQ(original.c_str(), copy.c_str()) << "no hit: still the shared block";
    EXPECT_EQ(1u, copy.replace("ee", "E"));
    EXPECT_EQ(1u, original.replace('.', '/', 2));
    EXPECT_STREQ("kee/p", original.c_str());
    EXPECT_STREQ("kE.p", copy.c_str());

    expectThrown<fw_exception_assert>([&] { s.replace("", "x"); });
    expectThrown<fw_exception_assert>([&] { s.replace("a", "x", 8); });
    expectThrown<fw_exception_assert>([&] { s.replace('\0', 'x'); });
    expectThrown<fw_exception_assert>([&] { s.replace('.', '\0'); });
    EXPECT_STREQ("a::b::c", s.c_str());
}

TEST(fw_stringTest, IndexingChecksTheCapacity)
{
    fw_string s("abc");
    const fw_string& read = s;
    EXPECT_EQ('b', read[1]);
    EXPECT_NO_THROW(read[27]) << "the position is checked against the capacity, 27, not the length";
    expectThrown<fw_exception_assert>([&] { read[28]; });
    expectThrown<fw_exception_assert>([&] { s[28] = 'x'; });

    fw_string copy = s;
    copy[0] = 'A';
    EXPECT_STREQ("abc", s.c_str());
    EXPECT_STREQ("Abc", copy.c_str());

    const fw_string none;
    EXPECT_EQ('\0', none[0]);
    fw_string grown;
    grown[0] = 'z';  // over the terminator: the bytes behind it are not cleared
    grown[1] = '\0';
    EXPECT_STREQ("z", grown.c_str());
}

TEST(fw_stringTest, SplittingAtTheFirstSeparator)
{
    fw_string s("=b=c");
    EXPECT_STREQ("", s.split_first('=').c_str());
    EXPECT_STREQ("b", s.split_first('=').c_str());
    EXPECT_STREQ("c", s.c_str());
    EXPECT_STREQ("c", s.split_first('=').c_str()) << "no separator left: the whole string";
    EXPECT_TRUE(s.empty());

    fw_string original("k:v");
    fw_string copy = original;
    EXPECT_STREQ("k", copy.split_first(':').c_str());
    EXPECT_STREQ("k:v", original.c_str());

    fw_string list("a;b,c");
    EXPECT_STREQ("a", list.split_first_of(",;").c_str());
    EXPECT_STREQ("b", list.split_first_of(",;").c_str());
    EXPECT_STREQ("c", list.c_str());
}

TEST(fw_stringTest, BaseNames)
{
    struct Row {
        const char* path;
        const char* name;
    };
    const Row rows[] = {
        {"C:\\dir/sub\\file.txt", "file.txt"}, {"file", "file"}, {"dir/", ""}, {"", ""}, {"\\\\srv\\share", "share"},
    };
    for (const Row& row : rows)
        EXPECT_STREQ(row.name, base_name(fw_string(row.path)).c_str()) << row.path;
}
