// The INI parser on texts in memory and on files in a scratch folder. A tree is shown
// as one line, values first, then each group:  "a = 1\na = 2\n[s]\nk"  ->  a="1","2";s{k="";}
#include "Framework/Ini/IniParser.h"

#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/Io/Exceptions.h"
#include "Framework/Io/MemoryInputStream.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"
#include "support/WorkingFolder.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <tuple>

using namespace Framework;
using namespace std::string_literals;

namespace {

String dumpTree(const InputValues& values)
{
    String out;
    const Array<String> names = values.valueNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const Array<String> texts = values.getStringArray(names.at(i));
        for (uint32_t t = 0; t < texts.size(); ++t)
            out += (t == 0 ? names.at(i) + L"=\"" : String(L",\"")) + texts.at(t) + L'"';
        out += L';';
    }
    const Array<String> groups = values.groupNames();
    for (uint32_t i = 0; i < groups.size(); ++i) {
        for (uint32_t index = 0; index < values.groupCount(groups.at(i)); ++index)
            out += groups.at(i) + L'{' + dumpTree(*values.group(groups.at(i), index)) + L'}';
    }
    return out;
}

SharedPointer<InputValues> parseText(const std::string& text, bool merge = false)
{
    IniParser parser(merge);
    Io::MemoryInputStream stream(text.data(), uint32_t(text.size()));
    return parser.parse(stream);
}

const std::pair<std::string, const wchar_t*> acceptedRows[] = {
    {"", L""}, {"key\n", L"key=\"\";"}, {"= v", L"=\"v\";"},
    {"a = x ; c\nb = y#1", L"a=\"x\";b=\"y\";"}, {"a = 1\nA = 2", L"a=\"1\",\"2\";"},
    {"top = 1\n[sec]\nk = v", L"top=\"1\";sec{k=\"v\";}"}, {"\r\n[s]\r\nk = v\r\n\r\n", L"s{k=\"v\";}"},
    {"[sec] ; comment\n# c\n; c\n   \n\t\nk=v", L"sec{k=\"v\";}"}, {"\0junk\nk=v"s, L"k=\"v\";"},
    // One pair of quotes comes off a name, every pair off a value; the cut at ; and #
    // comes first and knows no quotes.
    {"'a b' = 1", L"a b=\"1\";"}, {"'a=b' = 1", L"'a=\"b' = 1\";"}, {"k = \"x ; y\"", L"k=\"\"x\";"},
    {"k = \"'x'\"\nl = ''\nm = '  s  '", L"k=\"x\";l=\"\";m=\"  s  \";"},
    {"[a.b]\n[a.c]", L"a{b{}c{}}"}, {"[a.b/c\\d]\nk=1", L"a{b{c{d{k=\"1\";}}}}"}, {"[ 'q s' ]", L"q s{}"},
    {"[w]\nx=1\n[w]\ny=2\n[w.sub]\nz=3", L"w{x=\"1\";}w{y=\"2\";sub{z=\"3\";}}"},
    {"[Gr\xC3\xBC\xC3\x9F" "e]\nnam\xC3\xA9 = v\xC3\xA4rde \xE2\x82\xAC",
     L"Gr\u00fc\u00dfe{nam\u00e9=\"v\u00e4rde \u20ac\";}"},
    // Variables: only in values, not between single quotes, a replacement not
    // searched again. KORVALIN_INI_EMPTY comes empty from the test's environment: the
    // runtime's setter would remove it.
    {"$(NOT_EXPANDED) = 1\n[$(NOR_HERE)]", L"$(NOT_EXPANDED)=\"1\";$(NOR_HERE){}"},
    {"a = \"$(KORVALIN_INI_B)\"\nb = '$(KORVALIN_INI_B)'", L"a=\"bee\";b=\"$(KORVALIN_INI_B)\";"},
    {"a = x)$(KORVALIN_INI_B)$(KORVALIN_INI_C)y", L"a=\"x)beeseey\";"}, {"a = $ (x) $", L"a=\"$ (x) $\";"},
    {"a = $(KORVALIN_INI_LOOP)$(KORVALIN_INI_C)", L"a=\"$(KORVALIN_INI_C)see\";"},
    {"a = <$(KORVALIN_INI_EMPTY)>\nb = $(KORVALIN_INI_SPACED)", L"a=\"<>\";b=\" s p \";"},
};

TEST(IniParserTest, AcceptedTextsGiveTheirTrees)
{
    _wputenv(L"KORVALIN_INI_B=bee");
    _wputenv(L"KORVALIN_INI_C=see");
    _wputenv(L"KORVALIN_INI_LOOP=$(KORVALIN_INI_C)");
    _wputenv(L"KORVALIN_INI_SPACED= s p ");
    ASSERT_TRUE(hasEnvironmentVariable(L"KORVALIN_INI_EMPTY"));
    for (const auto& [text, tree] : acceptedRows) {
        try {
            EXPECT_EQ(String(tree), dumpTree(*parseText(text))) << text;
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ADD_FAILURE() << "threw " << typeid(*raw).name() << ": " << text;
        }
    }
    // Merging, a section named again goes on where it was.
    EXPECT_EQ(String(L"a{x=\"1\";y=\"2\";c{}}b{}"),
              dumpTree(*parseText("[a]\nx=1\n[b]\n[a]\ny=2\n[a.c]\n[a.c]", true)));
}

const char noBracket[] = "there is no end pair bracket in section";
const char restricted[] = "there are restricted symbols in name";
const char unclosed[] = "There is no closing bracket in system variable";
const char badInclude[] = "Wrong include directive";

// Text, line, the parser's rough column (IniParser.h), message.
const std::tuple<std::string, uint32_t, uint32_t, std::string> rejectedRows[] = {
    {"[sec ; comment]", 1, 15, noBracket}, {"ok=1\n\n# c\n[bad  \r\nnext", 4, 7, noBracket},
    // The first byte of a section line goes unseen, so the "[" stays in the name.
    {" [sec]", 1, 5, restricted},
    // No byte-order mark is looked for: the line is a pair whose name holds "[".
    {"\xEF\xBB\xBF[sec]", 1, 8, restricted},
    {"a[b = 1", 1, 4, restricted}, {"k = v\n[x=y]", 2, 4, restricted},
    {"a = $(B", 1, 7, unclosed}, {"a = $(B$(C)", 1, 11, unclosed},
    {"@include ", 1, 9, badInclude}, {"@include\tx.ini", 1, 14, badInclude},
    {"[s]\n@include   ", 2, 11, "Can't find include file: "},
    {"@include 'no such.ini' ", 1, 23, "Can't find include file: no such.ini"},
};

TEST(IniParserTest, RejectedTextsNameTheirLineColumnAndMessage)
{
    for (const auto& [text, line, column, message] : rejectedRows) {
        SCOPED_TRACE(text);
        auto error = expectThrown<TextFormatException>([&] { parseText(text); });
        if (!error)
            continue;
        EXPECT_EQ(String(message.c_str()), error->errorMessage);
        EXPECT_EQ(line, error->line);
        EXPECT_EQ(column, error->column);
    }
    // A variable that isn't set is no fault of the text.
    ASSERT_FALSE(hasEnvironmentVariable(L"KORVALIN_INI_UNSET"));
    expectThrown<EnvironmentException>([] { parseText("a = x$(KORVALIN_INI_UNSET)"); });
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
        std::string key;
        std::istringstream(line) >> key;
        wchar_t platform[256] = {};
        GetPrivateProfileStringW(L"sec", String(key.c_str()).c_str(), L"<none>", platform, 256,
                                 scratch.at(L"twin.ini").c_str());
        EXPECT_EQ(String(platform), section->getString(String(key.c_str()))) << line;
    }
}

// Included files land at the top of the tree, each once, and a cycle ends; an include
// is looked for as given (from the working folder), then beside the including file;
// an error names the file it stands in.
TEST(IniParserTest, IncludesAreReadOnceAndNameTheirErrors)
{
    ScratchFolder scratch(L"ini");
    const auto at = [&](const wchar_t* relative) { return String(scratch.at(relative).c_str()); };
    const auto loadTree = [&](const wchar_t* relative) { return dumpTree(*IniParser().load(at(relative))); };
    scratch.makeFolder(L"conf");
    scratch.writeFile(L"main.ini", "a = 1\n@include conf\\inner.ini\na = 3\n@include conf\\inner.ini\n"
                                   "[sec]\n@include   \"conf\\other.ini\"  \r\nk = in-sec\n");
    scratch.writeFile(L"conf\\inner.ini", "a = 2\n[inner]\nx = 1\n@include deeper.ini\n");
    scratch.writeFile(L"conf\\deeper.ini", "d = 4\n@include ..\\main.ini\n[inner]\ny = 2\n");
    scratch.writeFile(L"conf\\other.ini", "o = 5\n");
    // The included a replaces the one before, the one behind adds to it; groups of one
    // name stay apart; the include in [sec] puts o at the top, and sec goes on behind it.
    EXPECT_EQ(String(L"a=\"2\",\"3\";d=\"4\";o=\"5\";inner{x=\"1\";}inner{y=\"2\";}sec{k=\"in-sec\";}"),
              loadTree(L"main.ini"));
    // A parser remembers what it read: the same file again is refused.
    IniParser parser;
    parser.load(at(L"conf\\other.ini"));
    expectThrown<ValueExistsException>([&] { parser.load(at(L"conf\\other.ini")); });

    {
        // A text with no file of its own finds an include from the working folder.
        WorkingFolder moved(scratch.at(L"conf"));
        EXPECT_EQ(String(L"o=\"5\";"), dumpTree(*parseText("@include other.ini")));
    }
    scratch.writeFile(L"conf\\bad.ini", "ok = 1\n\nbroken[ = 2\n");
    scratch.writeFile(L"bad.ini", "a = 1\n[s]\n@include conf\\bad.ini\n");
    if (auto inner = expectThrown<TextFormatException>([&] { loadTree(L"bad.ini"); })) {
        EXPECT_EQ(at(L"conf\\bad.ini"), inner->fileName);
        EXPECT_EQ(3u, inner->line);
    }
    // A folder is no include, even one named like a file.
    scratch.makeFolder(L"conf\\folder.ini");
    scratch.writeFile(L"folder.ini", "@include conf\\folder.ini\n");
    if (auto folder = expectThrown<TextFormatException>([&] { loadTree(L"folder.ini"); })) {
        EXPECT_EQ(String(L"Can't find include file: conf\\folder.ini"), folder->errorMessage);
    }
    expectThrown<Io::ErrorException>([&] { loadTree(L"absent.ini"); });
}

}  // namespace
