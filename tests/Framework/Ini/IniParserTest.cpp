// INI texts held in memory: what each accepted text gives, the exact error of each
// rejected one, and $(NAME) from the process environment.
#include "Framework/Ini/IniParser.h"

#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/Ini/IniTestHelpers.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <typeinfo>
#include <utility>

using namespace Framework;
using ini_test::dumpTree;
using ini_test::parseText;
using namespace std::string_literals;

namespace {

struct AcceptedRow
{
    std::string text;
    const wchar_t* tree;
    bool merge;
};

const AcceptedRow acceptedRows[] = {
    {"", L"", false},
    {"key\n", L"key=\"\";", false},
    {"key = value ; comment", L"key=\"value\";", false},
    {"key = value#1", L"key=\"value\";", false},
    {"a = 1\nA = 2", L"a=\"1\",\"2\";", false},
    {"top = 1\n[sec]\nk = v", L"top=\"1\";sec{k=\"v\";}", false},
    {"\r\n[s]\r\nk = v\r\n\r\n", L"s{k=\"v\";}", false},
    {"[sec] ; comment\n# c\n; c\n   \n\t\nk=v", L"sec{k=\"v\";}", false},
    {"\0junk\nk=v"s, L"k=\"v\";", false},
    // Quoting: one pair around a name, every pair around a value; the cut at ; and #
    // comes first and knows no quotes.
    {"'a b' = 1", L"a b=\"1\";", false},
    {"'a=b' = 1", L"'a=\"b' = 1\";", false},
    {"k = \"'x'\"\nl = ''\nm = '  s  '", L"k=\"x\";l=\"\";m=\"  s  \";", false},
    {"k = \"x ; y\"", L"k=\"\"x\";", false},
    {"= v", L"=\"v\";", false},
    // Sections are paths; a name is a new section unless merging.
    {"[a.b]\n[a.c]", L"a{b{}c{}}", false},
    {"[a]\n[a]", L"a{}a{}", false},
    {"[a.b/c\\d]\nk=1", L"a{b{c{d{k=\"1\";}}}}", false},
    {"[ 'q s' ]", L"q s{}", false},
    {"[w]\nx=1\n[w]\ny=2\n[w.sub]\nz=3", L"w{x=\"1\";}w{y=\"2\";sub{z=\"3\";}}", false},
    {"[a]\nx=1\n[b]\n[a]\ny=2\n[a.c]\n[a.c]", L"a{x=\"1\";y=\"2\";c{}}b{}", true},
    // Names and values are UTF-8; a $( in a name is only text.
    {"[Gr\xC3\xBC\xC3\x9F" "e]\nnam\xC3\xA9 = v\xC3\xA4rde \xE2\x82\xAC",
     L"Gr\u00fc\u00dfe{nam\u00e9=\"v\u00e4rde \u20ac\";}", false},
    {"$(NOT_EXPANDED) = 1\n[$(NOR_HERE)]", L"$(NOT_EXPANDED)=\"1\";$(NOR_HERE){}", false},
};

TEST(IniParserTest, AcceptedTextsGiveTheirTrees)
{
    for (size_t i = 0; i < sizeof acceptedRows / sizeof acceptedRows[0]; ++i) {
        const AcceptedRow& row = acceptedRows[i];
        try {
            EXPECT_EQ(String(row.tree), dumpTree(*parseText(row.text, row.merge))) << "row " << i << ": " << row.text;
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ADD_FAILURE() << "row " << i << " threw " << typeid(*raw).name() << ": " << row.text;
        }
    }
}

struct RejectedRow
{
    std::string text;
    const char* message;
    uint32_t line;
    uint32_t column;
    std::string citation;
};

const RejectedRow rejectedRows[] = {
    {"[sec", "there is no end pair bracket in section", 1, 4, "[sec"},
    {"[sec ; comment]", "there is no end pair bracket in section", 1, 15, "[sec ; comment]"},
    {"ok=1\n\n# c\n[bad  \r\nnext", "there is no end pair bracket in section", 4, 7, "[bad  \r"},
    // The first byte of a section line is dropped unseen, so a blank before "[" leaves
    // the bracket in the name: 1 for the bracket, 4 for "[sec".
    {" [sec]", "there are restricted symbols in name", 1, 5, " [sec]"},
    // A byte-order mark makes the line a pair whose name holds "[".
    {"\xEF\xBB\xBF[sec]", "there are restricted symbols in name", 1, 8, "\xEF\xBB\xBF[sec]"},
    {"a[b = 1", "there are restricted symbols in name", 1, 4, "a[b = 1"},
    {"k = v\n[x=y]", "there are restricted symbols in name", 2, 4, "[x=y]"},
    // 1 for the name, 3 for "a =", then the value's length.
    {"a = $(B", "There is no closing bracket in system variable", 1, 7, "a = $(B"},
    {"a = $(B$(C)", "There is no closing bracket in system variable", 1, 11, "a = $(B$(C)"},
    {"@include", "Wrong include directive", 1, 8, "@include"},
    {"@include ", "Wrong include directive", 1, 9, "@include "},
    {"@includefile", "Wrong include directive", 1, 12, "@includefile"},
    {"@include\tx.ini", "Wrong include directive", 1, 14, "@include\tx.ini"},
    {"[s]\n@include   ", "Can't find include file: ", 2, 11, "@include   "},
    {"@include 'no such.ini' ", "Can't find include file: no such.ini", 1, 23, "@include 'no such.ini' "},
};

TEST(IniParserTest, RejectedTextsNameTheirLineColumnAndMessage)
{
    for (size_t i = 0; i < sizeof rejectedRows / sizeof rejectedRows[0]; ++i) {
        const RejectedRow& row = rejectedRows[i];
        auto error = expectThrown<TextFormatException>([&] { parseText(row.text); });
        if (!error) {
            ADD_FAILURE() << "row " << i << ": " << row.text;
            continue;
        }
        EXPECT_EQ(String(row.message), error->errorMessage) << "row " << i << ": " << row.text;
        EXPECT_EQ(row.line, error->line) << "row " << i << ": " << row.text;
        EXPECT_EQ(row.column, error->column) << "row " << i << ": " << row.text;
        EXPECT_EQ(String(AnsiString(row.citation.data(), uint32_t(row.citation.size()))), error->citation)
            << "row " << i << ": " << row.text;
        EXPECT_EQ(String(), error->fileName) << "row " << i;
    }
}

TEST(IniParserTest, EmptySectionPathsAndBadVariablesFailWithTheirOwnClasses)
{
    ASSERT_FALSE(hasEnvironmentVariable(L"KORVALIN_INI_UNSET"));
    const std::pair<const char*, std::string> rows[] = {
        {"[]", typeid(FormatException).name()},     {"[.]", typeid(FormatException).name()},
        {"[./\\]", typeid(FormatException).name()}, {"a = $()", typeid(ErrorException).name()},
        {"[s]\na = x$(KORVALIN_INI_UNSET)", typeid(EnvironmentException).name()},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.second, thrownClass([&] { parseText(row.first); })) << row.first;
}

struct VariableRow
{
    std::string text;
    const wchar_t* value;
};

// KORVALIN_INI_EMPTY is set to the empty text in the environment the test starts
// with: the runtime's own setter would remove it instead.
TEST(IniParserTest, SystemVariablesAreReplacedOutsideSingleQuotes)
{
    _wputenv(L"KORVALIN_INI_B=bee");
    _wputenv(L"KORVALIN_INI_C=see");
    _wputenv(L"KORVALIN_INI_LOOP=$(KORVALIN_INI_C)");
    _wputenv(L"KORVALIN_INI_SPACED= s p ");
    ASSERT_TRUE(hasEnvironmentVariable(L"KORVALIN_INI_EMPTY")) << "the test's environment must set it, empty";
    const VariableRow rows[] = {
        {"a = $(KORVALIN_INI_B)", L"bee"},
        {"a = \"$(KORVALIN_INI_B)\"", L"bee"},
        {"a = '$(KORVALIN_INI_B)'", L"$(KORVALIN_INI_B)"},
        {"a = x)$(KORVALIN_INI_B)y", L"x)beey"},
        {"a = $(KORVALIN_INI_B)$(KORVALIN_INI_C)", L"beesee"},
        {"a = $(KORVALIN_INI_LOOP)$(KORVALIN_INI_C)", L"$(KORVALIN_INI_C)see"},
        {"a = <$(KORVALIN_INI_EMPTY)>", L"<>"},
        {"a = $(KORVALIN_INI_SPACED)", L" s p "},
        {"a = $ (x) $", L"$ (x) $"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        try {
            EXPECT_EQ(String(rows[i].value), parseText(rows[i].text)->getString(L"a")) << "row " << i << ": " << rows[i].text;
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ADD_FAILURE() << "row " << i << " threw " << typeid(*raw).name() << ": " << rows[i].text;
        }
    }
}

// Plain pairs, which the platform's own reader takes too, read as it reads them.
TEST(IniParserTest, PlainPairsReadAsThePlatformReadsThem)
{
    const char* const lines[] = {
        "plain = value", "  indented\t=\tx  ", "empty =", "eq = b = c", "dq = \"quoted text\"",
        "sq = '  s  '",  "inner = a 'b' c",   "Case = 1", "tail = x  \r",
    };
    std::string text = "[sec]\r\n";
    for (const char* line : lines)
        text += std::string(line) + "\r\n";
    ScratchFolder scratch(L"IniTwin");
    scratch.writeFile(L"twin.ini", text);
    const SharedPointer<InputValues> section = parseText(text)->group(L"sec");
    for (const char* line : lines) {
        std::string key(line, std::strcspn(line, "="));
        key.erase(0, key.find_first_not_of(" \t"));
        key.erase(key.find_last_not_of(" \t\r") + 1);
        wchar_t platform[256] = {};
        GetPrivateProfileStringW(L"sec", String(key.c_str()).c_str(), L"<none>", platform, 256,
                                 scratch.at(L"twin.ini").c_str());
        EXPECT_EQ(String(platform), section->getString(String(key.c_str()))) << line;
    }
}

}  // namespace

