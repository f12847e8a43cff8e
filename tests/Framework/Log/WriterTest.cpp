// The writers on real files in scratch folders, and the console writer's output as a
// child process writes it to its standard output.
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/RotatedFileWriter.h"

#include "support/ExpectThrown.h"
#include "support/Installer.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

using namespace Framework;
using namespace Framework::Log;

namespace {

class WriterTest : public ::testing::Test
{
protected:
    WriterTest() : scratch(L"LogWriters") {}

    // A writer of the scratch folder that hands messages over untouched.
    template <class W>
    void prepare(W& writer, const wchar_t* fileName = L"log.txt")
    {
        writer.setProperty(L"DIR", scratch.path().c_str());
        writer.setProperty(L"filename", fileName);
        writer.setFormatter(verbatimFormatter());
    }

    // One program run: a new writer, one line, then the writer goes away.
    void runOnce(const wchar_t* text, const wchar_t* backupCount = L"")
    {
        RotatedFileWriter writer;
        prepare(writer);
        writer.setProperty(L"backupCount", backupCount);
        writer.write(recordWith(text));
    }

    ScratchFolder scratch;
};

}  // namespace

TEST_F(WriterTest, EveryTextEndsInOneLineEndInUtf8)
{
    const struct
    {
        const wchar_t* text;
        const char* bytes;  // null: no file at all
    } rows[] = {
        {L"x", "x\r\n"},
        {L"a\n\nb", "a\r\n\r\nb\r\n"},
        {L"a\r\n", "a\r\n"},
        {L"a\r", "a\r\r\n"},
        {L"\ra\rb", "\ra\rb\r\n"},
        {L"a\r\r\nb\n", "a\r\r\nb\r\n"},
        {L"\u00e9\u20ac", "\xc3\xa9\xe2\x82\xac\r\n"},
        {L"", nullptr},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        SCOPED_TRACE(::testing::Message() << "row " << i << ": " << narrowForTest(rows[i].text));
        const std::wstring name = L"row" + std::to_wstring(i) + L".txt";
        {
            FileWriter writer;
            prepare(writer, name.c_str());
            writer.write(recordWith(rows[i].text));
        }
        if (rows[i].bytes)
            EXPECT_EQ(rows[i].bytes, scratch.readFile(name));
        else
            EXPECT_FALSE(scratch.exists(name));
    }
}

TEST_F(WriterTest, FileWriterReplacesAnOldFileAndNeedsAFormatter)
{
    scratch.writeFile(L"log.txt", "an old run that was much longer\r\n");
    FileWriter writer;
    expectThrown<ValueNotInitializedException>([&] { writer.write(recordWith(L"lost")); });
    EXPECT_EQ("an old run that was much longer\r\n", scratch.readFile(L"log.txt"));
    prepare(writer);
    writer.write(recordWith(L"new"));
    // Flushed at once: the file holds the line while the writer is still open.
    EXPECT_EQ("new\r\n", scratch.readFile(L"log.txt"));
    writer.write(recordWith(L"more"));
    EXPECT_EQ("new\r\nmore\r\n", scratch.readFile(L"log.txt"));
    // Told nothing, it writes log.txt in the working folder.
    EXPECT_EQ(String(L"log.txt"), FileWriter().filePath().fullText());
}

TEST_F(WriterTest, ChangingTheFileWhileOpenMovesLaterOutput)
{
    scratch.writeFile(L"other.txt", "kept\r\n");
    FileWriter writer;
    prepare(writer);
    writer.write(recordWith(L"one"));
    writer.setProperty(L"fileName", L"other.txt");
    writer.write(recordWith(L"two"));
    scratch.makeFolder(L"sub");
    writer.setProperty(L"dir", (scratch.path() + L"sub").c_str());
    writer.write(recordWith(L"three"));
    EXPECT_EQ("one\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("kept\r\ntwo\r\n", scratch.readFile(L"other.txt"));
    EXPECT_EQ("three\r\n", scratch.readFile(L"sub\\other.txt"));
}

TEST_F(WriterTest, EachRunShiftsTheOlderRunsUp)
{
    runOnce(L"first");
    runOnce(L"second");
    EXPECT_EQ("second\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("first\r\n", scratch.readFile(L"log001.txt"));
    runOnce(L"third");
    runOnce(L"fourth", L"");
    EXPECT_EQ("fourth\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("third\r\n", scratch.readFile(L"log001.txt"));
    EXPECT_EQ("second\r\n", scratch.readFile(L"log002.txt"));
    EXPECT_EQ("first\r\n", scratch.readFile(L"log003.txt"));
    // A run that writes nothing moves nothing.
    {
        RotatedFileWriter idle;
        prepare(idle);
    }
    EXPECT_FALSE(scratch.exists(L"log004.txt"));
    // With a limit of 2 the oldest beyond it go; the rest shift.
    runOnce(L"fifth", L"2");
    EXPECT_EQ("fifth\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("fourth\r\n", scratch.readFile(L"log001.txt"));
    EXPECT_EQ("third\r\n", scratch.readFile(L"log002.txt"));
    EXPECT_EQ("first\r\n", scratch.readFile(L"log003.txt"));  // beyond the limit, untouched
}

TEST_F(WriterTest, BackupCountOfOneKeepsOneOldFileAndGapsStopTheShift)
{
    for (const wchar_t* text : {L"a", L"b", L"c", L"d"})
        runOnce(text, L"1");
    EXPECT_EQ("d\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("c\r\n", scratch.readFile(L"log001.txt"));
    EXPECT_FALSE(scratch.exists(L"log002.txt"));

    scratch.writeFile(L"log003.txt", "beyond the gap\r\n");
    runOnce(L"e");
    runOnce(L"f");
    EXPECT_EQ("f\r\n", scratch.readFile(L"log.txt"));
    EXPECT_EQ("e\r\n", scratch.readFile(L"log001.txt"));
    EXPECT_EQ("d\r\n", scratch.readFile(L"log002.txt"));
    // The shift stopped at the gap before it and has now reached it.
    EXPECT_EQ("c\r\n", scratch.readFile(L"log003.txt"));
    EXPECT_EQ("beyond the gap\r\n", scratch.readFile(L"log004.txt"));
}

TEST_F(WriterTest, AnsiFileWriterEndsEachTextWithAZeroByte)
{
    const String outside(L"\u03a9\u4e2d");
    {
        AnsiFileWriter writer;
        prepare(writer);
        writer.write(recordWith(L"a\u00e9"));
        writer.write(recordWith(outside.c_str()));
    }
    const AnsiString accent(String(L"a\u00e9\r\n"));
    const AnsiString replaced(String(outside + L"\r\n"));
    // Compared with the platform's own conversion to the code page.
    char platform[16] = {};
    const int length = WideCharToMultiByte(CP_ACP, 0, L"\u03a9\u4e2d\r\n", 4, platform, sizeof platform, nullptr, nullptr);
    EXPECT_EQ(std::string(platform, length), std::string(replaced.c_str(), replaced.length()));
    EXPECT_EQ(std::string(accent.c_str(), accent.length() + 1) + std::string(replaced.c_str(), replaced.length() + 1),
              scratch.readFile(L"log.txt"));
}

TEST_F(WriterTest, MultiWriterGivesEachChildItsOwnFormatAndStopsAtAFailure)
{
    Configuration configuration = readyConfiguration(L"[%(message)S]");
    SharedPointer<FileWriter> plain(new FileWriter);
    prepare(*plain, L"plain.txt");
    SharedPointer<FileWriter> xml(new FileWriter);
    xml->setProperty(L"dir", scratch.path().c_str());
    xml->setProperty(L"fileName", L"log.xml");
    xml->setFormatter(configuration.formatters->get(L"xml"));
    SharedPointer<FileWriter> bracketed(new FileWriter);
    prepare(*bracketed, L"bracketed.txt");
    bracketed->setFormatter(configuration.formatters->get(L"test"));
    MultiWriter multi;
    multi.add(plain);
    multi.add(xml);
    multi.add(bracketed);
    multi.write(recordWith(L"m"));
    EXPECT_EQ("m\r\n", scratch.readFile(L"plain.txt"));
    EXPECT_EQ(0u, scratch.readFile(L"log.xml").find("<?xml"));
    EXPECT_EQ("[m]\r\n", scratch.readFile(L"bracketed.txt"));

    // A child without a formatter ends the record there.
    SharedPointer<FileWriter> broken(new FileWriter);
    SharedPointer<FileWriter> after(new FileWriter);
    prepare(*after, L"after.txt");
    MultiWriter failing;
    failing.add(plain);
    failing.add(broken);
    failing.add(after);
    expectThrown<ValueNotInitializedException>([&] { failing.write(recordWith(L"n")); });
    EXPECT_EQ("m\r\nn\r\n", scratch.readFile(L"plain.txt"));
    EXPECT_FALSE(scratch.exists(L"after.txt"));
}

// The installation's log is the one the writing thread has bound, the innermost
// binding first; a thread with none bound has no such log, and its records are
// neither formatted nor written anywhere.
TEST(InstallerLogWriterTest, WritesIntoTheInstallationLogOfTheWritingThreadOnly)
{
    InstallerLogWriter unformatted;
    unformatted.write(recordWith(L"nowhere"));  // no formatter and no log: no failure either

    InstallerLogWriter writer;
    writer.setFormatter(verbatimFormatter());
    KeptInstallerLog outer;
    KeptInstallerLog inner;
    KeptInstallerLog::Binding outerBinding(outer);
    writer.write(recordWith(L"a\nb"));
    {
        KeptInstallerLog::Binding innerBinding(inner);
        writer.write(recordWith(L"inner"));
    }
    writer.write(recordWith(L"outer again"));
    std::thread other([&writer] { writer.write(recordWith(L"other thread")); });
    other.join();
    EXPECT_EQ((std::vector<std::wstring>{L"a\r\nb", L"outer again"}), outer.lines);
    EXPECT_EQ((std::vector<std::wstring>{L"inner"}), inner.lines);
}

TEST(ConsoleWriterTest, TextReachesStandardOutputUnchanged)
{
    wchar_t child[MAX_PATH];
    ASSERT_NE(0u, GetEnvironmentVariableW(L"KORVALIN_LOG_CONSOLE_CHILD", child, MAX_PATH));
    std::string output;
    EXPECT_EQ(0u, runProgram(std::wstring(L"\"") + child + L"\"", output));
    EXPECT_EQ("100% sure: %d %S %%\r\nfirst\r\nsecond\r\n", output);
}
