// Includes on the real disk: files in a scratch folder, found beside the including
// file or from the working folder, each read once, and errors that name the file
// they stand in.
#include "Framework/Ini/IniParser.h"

#include "Framework/Exceptions.h"
#include "Framework/Io/Exceptions.h"
#include "Framework/Ini/IniTestHelpers.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"
#include "support/WorkingFolder.h"

#include <gtest/gtest.h>

using namespace Framework;
using ini_test::dumpTree;
using ini_test::parseText;

namespace {

class IniIncludeTest : public ::testing::Test
{
protected:
    IniIncludeTest() : scratch(L"ini") {}

    String at(const wchar_t* relative) const { return String(scratch.at(relative).c_str()); }
    String loadTree(const wchar_t* relative)
    {
        IniParser parser;
        return dumpTree(*parser.load(at(relative)));
    }

    ScratchFolder scratch;
};

TEST_F(IniIncludeTest, IncludedFilesLandAtTheTopOnceEachAndCyclesEnd)
{
    scratch.makeFolder(L"conf");
    scratch.writeFile(L"main.ini",
                      "a = 1\n"
                      "@include conf\\inner.ini\n"
                      "a = 3\n"
                      "@include conf\\inner.ini\n"
                      "[sec]\n"
                      "@include   \"conf\\other.ini\"  \r\n"
                      "k = in-sec\n");
    // Found beside itself, not beside main.ini; the way back to main.ini closes a cycle.
    scratch.writeFile(L"conf\\inner.ini",
                      "a = 2\n"
                      "[inner]\n"
                      "x = 1\n"
                      "@include deeper.ini\n");
    scratch.writeFile(L"conf\\deeper.ini",
                      "d = 4\n"
                      "@include ..\\main.ini\n"
                      "[inner]\n"
                      "y = 2\n");
    scratch.writeFile(L"conf\\other.ini", "o = 5\n");
    // The included a = 2 replaces a = 1, and the line behind the include adds to it;
    // the second include of inner.ini changes nothing; groups of one name stay apart;
    // the include in [sec] puts o at the top, and sec goes on behind it.
    EXPECT_EQ(String(L"a=\"2\",\"3\";d=\"4\";o=\"5\";inner{x=\"1\";}inner{y=\"2\";}sec{k=\"in-sec\";}"),
              loadTree(L"main.ini"));

    // Two files that include each other: each is read once.
    scratch.writeFile(L"ping.ini", "ping = 1\n@include pong.ini\n");
    scratch.writeFile(L"pong.ini", "pong = 1\n@include ping.ini\n");
    EXPECT_EQ(String(L"ping=\"1\";pong=\"1\";"), loadTree(L"ping.ini"));

    // A parser remembers what it read: the same name again is refused.
    IniParser parser;
    parser.load(at(L"pong.ini"));
    expectThrown<ValueExistsException>([&] { parser.load(at(L"pong.ini")); });
    expectThrown<ValueExistsException>([&] { parser.load(at(L"ping.ini")); });
}

TEST_F(IniIncludeTest, TheWorkingFolderIsAskedFirstThenTheIncludingFilesFolder)
{
    scratch.makeFolder(L"work");
    scratch.makeFolder(L"work\\conf");
    scratch.makeFolder(L"conf");
    scratch.writeFile(L"work\\conf\\pick.ini", "from = work\n");
    scratch.writeFile(L"conf\\pick.ini", "from = beside\n");
    scratch.writeFile(L"main.ini", "@include 'conf\\pick.ini'\n");
    EXPECT_EQ(String(L"from=\"beside\";"), loadTree(L"main.ini"));
    {
        WorkingFolder moved(scratch.at(L"work"));
        EXPECT_EQ(String(L"from=\"work\";"), loadTree(L"main.ini"));
        // A text with no file name finds what the working folder has, and nothing else.
        EXPECT_EQ(String(L"from=\"work\";"), dumpTree(*parseText("@include conf\\pick.ini")));
        expectThrown<TextFormatException>([] { parseText("@include main.ini"); });
    }
}

TEST_F(IniIncludeTest, ErrorsNameTheFileAndLineTheyStandIn)
{
    scratch.makeFolder(L"conf");
    scratch.makeFolder(L"conf\\folder.ini");
    scratch.writeFile(L"main.ini", "a = 1\n[s]\n@include conf\\bad.ini\n");
    scratch.writeFile(L"conf\\bad.ini", "ok = 1\n\nbroken[ = 2\n");
    auto inner = expectThrown<TextFormatException>([&] { loadTree(L"main.ini"); });
    ASSERT_TRUE(inner);
    EXPECT_EQ(at(L"conf\\bad.ini"), inner->fileName);
    EXPECT_EQ(3u, inner->line);
    inner.reset();

    // A folder is not an include, even when its name is what a file's would be.
    scratch.writeFile(L"folder.ini", "@include conf\\folder.ini\n");
    auto folder = expectThrown<TextFormatException>([&] { loadTree(L"folder.ini"); });
    ASSERT_TRUE(folder);
    EXPECT_EQ(String(L"Can't find include file: conf\\folder.ini"), folder->errorMessage);
    folder.reset();

    // Loading a file that isn't there fails where the file is opened.
    expectThrown<Io::ErrorException>([&] { loadTree(L"absent.ini"); });
}

}  // namespace
