#include "fw/fw_string.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using Edit = std::function<void(fw_string&)>;

}  // namespace

// Every edit works on a copy that shares the block with another string, which keeps
// its text: a write detaches first.
TEST(fw_stringTest, EditsDetachFromASharedBlock)
{
    const struct {
        const char* text;
        Edit edit;
        const char* result;
    } rows[] = {
        {"abc", [](fw_string& s) { s.assign("x"); }, "x"},
        {"abc", [](fw_string& s) { s.writable()[0] = 'A'; }, "Abc"},
        {"abc", [](fw_string& s) { s.reserve(1, true); }, "abc"},  // room enough, but shared
        {"abc", [](fw_string& s) { s.append(s.c_str()); }, "abcabc"},
        {"ab", [](fw_string& s) { s.append('!'); }, "ab!"},
        {"ace", [](fw_string& s) { s.insert("b", 1); }, "abce"},
        {"abc", [](fw_string& s) { s.insert(">", 3); }, "abc>"},
        {"xy", [](fw_string& s) { s.insert(s.c_str(), 1); }, "xxyy"},
        {"aa", [](fw_string& s) { s.replace("a", "aa"); }, "aaaa"},  // what comes in is not searched again
        {"a.b.c", [](fw_string& s) { s.replace(".", nullptr, 2); }, "a.bc"},
        {"ab", [](fw_string& s) { s.replace(s.c_str(), s.c_str() + 1); }, "b"},
        {"a.b.c", [](fw_string& s) { s.replace('.', '/', 2); }, "a.b/c"},
        {" \t\r\n x y \n", [](fw_string& s) { s.trim_left(); }, "x y \n"},
        {" x y \t\r\n ", [](fw_string& s) { s.trim_right(); }, " x y"},
        {"k=v=w", [](fw_string& s) { s.split_first('='); }, "v=w"},
    };
    for (const auto& row : rows) {
        fw_string s(row.text);
        const fw_string shared = s;
        row.edit(s);
        EXPECT_STREQ(row.result, s.c_str()) << row.text;
        EXPECT_STREQ(row.text, shared.c_str()) << row.text;
    }
    fw_string s("a.b.c");
    const fw_string shared = s;
    EXPECT_EQ(0u, s.replace("z", "y") + s.replace('z', 'y'));
    EXPECT_EQ(shared.c_str(), s.c_str()) << "no hit: still the shared block";
    EXPECT_EQ(2u, s.replace(".", "::"));
    EXPECT_EQ(3u, s.replace(':', '-', 2));

    // The bytes behind the terminator are the string's too (a platform call's buffer).
    fw_string buffer(uint32_t(10));
    std::memcpy(buffer.writable(), "ab\0cd", 6);
    fw_string grown = buffer;
    grown.reserve(100, true);
    EXPECT_EQ(0, std::memcmp("ab\0cd", grown.c_str(), 6));
}

// Against std::string over every position of a short text; its npos reads as -1.
TEST(fw_stringTest, FindSubstrAndReversedAsTheStandardString)
{
    const std::string plain = "abcabc";
    const fw_string s(plain.c_str());
    for (uint32_t from = 0; from <= plain.size(); ++from) {
        for (const char* needle : {"a", "bc", "bca", "cab", "x"}) {
            EXPECT_EQ(int32_t(plain.find(needle, from)), s.find(needle, from)) << needle << " from " << from;
            EXPECT_EQ(int32_t(plain.find(needle[0], from)), s.find(needle[0], from)) << needle[0] << " from " << from;
        }
        for (uint32_t to = from; to <= plain.size(); ++to)
            EXPECT_EQ(plain.substr(from, to - from), s.substr(from, to).c_str()) << from << ".." << to;
    }
    EXPECT_EQ(-1, s.find(""));
    EXPECT_EQ(std::string(plain.rbegin(), plain.rend()), s.reversed().c_str());

    fw_string list("=b;c");
    EXPECT_STREQ("", list.split_first('=').c_str());
    EXPECT_STREQ("b", list.split_first_of(",;").c_str());
    EXPECT_STREQ("c", list.split_first('=').c_str()) << "no separator left: the whole string";
    EXPECT_TRUE(list.empty());
    EXPECT_STREQ("file.txt", base_name(fw_string("C:\\dir/sub\\file.txt")).c_str());
}

// A broken precondition asserts and leaves the string as it was. Positions are checked
// against the capacity (27 here), not the length.
TEST(fw_stringTest, BrokenPreconditionsAssert)
{
    const struct {
        const char* name;
        Edit edit;
    } rows[] = {
        {"a length below zero", [](fw_string& s) { s.reserve(0u - 1, false); }},
        {"a pointer into the reference count", [](fw_string& s) { s.append(s.c_str() - 1); }},
        {"insert past the end", [](fw_string& s) { s.insert("x", 7); }},
        {"substr backwards", [](fw_string& s) { s.substr(3, 2); }},
        {"find past the end", [](fw_string& s) { s.find("a", 7); }},
        {"find a character past the end", [](fw_string& s) { s.find('a', 7); }},
        {"replace an empty text", [](fw_string& s) { s.replace("", "x"); }},
        {"replace from past the end", [](fw_string& s) { s.replace("a", "x", 8); }},
        {"replace a NUL", [](fw_string& s) { s.replace('\0', 'x'); }},
        {"write past the capacity", [](fw_string& s) { s[28] = 'x'; }},
    };
    for (const auto& row : rows) {
        fw_string s("abcabc");
        EXPECT_TRUE(expectThrown<fw_exception_assert>([&] { row.edit(s); })) << row.name;
        EXPECT_STREQ("abcabc", s.c_str()) << row.name;
        EXPECT_EQ(27u, s.capacity()) << row.name;
    }
    EXPECT_NO_THROW(static_cast<const fw_string&>(fw_string("abc"))[27]);
}
