// The writers on real files in a scratch folder. The console writer and the
// installation's log are seen in LogConfigurationTest.
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/Configuration.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/RotatedFileWriter.h"

#include "support/ExpectThrown.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>


using namespace Framework;
using namespace Framework::Log;

namespace {

class WriterTest : public ::testing::Test
{
protected:
    WriterTest() : scratch(L"LogWriters") {}

    // A writer into the scratch folder that hands messages over untouched.
    template <class W>
    W& prepare(W& writer, const wchar_t* fileName = L"log.txt")
    {
        writer.setProperty(L"DIR", scratch.path().c_str());
        writer.setProperty(L"filename", fileName);
        writer.setFormatter(verbatimFormatter());
        return writer;
    }

    // One program run: a new writer, one line, then the writer goes away.
    void runOnce(const wchar_t* text, const wchar_t* backupCount = L"")
    {
        RotatedFileWriter writer;
        prepare(writer).setProperty(L"backupCount", backupCount);
        writer.write(recordWith(text));
    }

    // The runs kept, newest first: log.txt, log001.txt, ... up to the first missing.
    std::string runs()
    {
        std::string kept = scratch.readFile(L"log.txt");
        for (int n = 1; scratch.exists(L"log00" + std::to_wstring(n) + L".txt"); ++n)
            kept += scratch.readFile(L"log00" + std::to_wstring(n) + L".txt");
        return kept;
    }

    ScratchFolder scratch;
};

}  // namespace

TEST_F(WriterTest, EveryTextEndsInOneLineEndInUtf8)
{
    // Text and bytes; null: no file is opened, the old one stays.
    const std::pair<const wchar_t*, const char*> rows[] = {
        {L"x", "x\r\n"}, {L"a\n\nb", "a\r\n\r\nb\r\n"}, {L"a\r\n", "a\r\n"}, {L"a\r", "a\r\r\n"},
        {L"a\r\r\nb\n", "a\r\r\nb\r\n"}, {L"\u00e9\u20ac", "\xc3\xa9\xe2\x82\xac\r\n"}, {L"", nullptr},
    };
    for (const auto& [text, bytes] : rows) {
        SCOPED_TRACE(narrowForTest(text));
        scratch.writeFile(L"log.txt", "an old run that was much longer\r\n");
        FileWriter writer;
        prepare(writer).write(recordWith(text));
        // Flushed at once: the file holds the line while the writer is still open.
        EXPECT_EQ(bytes ? bytes : "an old run that was much longer\r\n", scratch.readFile(L"log.txt"));
    }
}

TEST_F(WriterTest, EachRunShiftsTheOlderRunsUpToTheBackupCountAndTheFirstGap)
{
    for (const wchar_t* text : {L"a", L"b", L"c", L"d"})
        runOnce(text);
    EXPECT_EQ("d\r\nc\r\nb\r\na\r\n", runs());
    {
        RotatedFileWriter idle;  // a run that writes nothing moves nothing
        prepare(idle);
    }
    // With a limit of 2, log002.txt goes and log003.txt, beyond the limit, stays.
    runOnce(L"e", L"2");
    EXPECT_EQ("e\r\nd\r\nc\r\na\r\n", runs());
    // The shift stops at a gap.
    DeleteFileW(scratch.at(L"log002.txt").c_str());
    runOnce(L"f");
    EXPECT_EQ("f\r\ne\r\nd\r\na\r\n", runs());
}

TEST_F(WriterTest, AnsiFileWriterEndsEachTextWithAZeroByteInTheCodePage)
{
    {
        AnsiFileWriter writer;
        prepare(writer).write(recordWith(L"a\u00e9"));
        writer.write(recordWith(L"\u03a9\u4e2d"));
    }
    const wchar_t texts[] = L"a\u00e9\r\n\0\u03a9\u4e2d\r\n";
    char platform[16] = {};
    const int length = WideCharToMultiByte(CP_ACP, 0, texts, sizeof texts / sizeof *texts, platform, sizeof platform,
                                           nullptr, nullptr);
    EXPECT_EQ(std::string(platform, length), scratch.readFile(L"log.txt"));
}

// Each child writes its formatter's head once, before its first record.
TEST_F(WriterTest, MultiWriterGivesEachChildItsOwnFormatAndStopsAtAFailure)
{
    Configuration configuration;
    configuration.prepareFormatters();
    SharedPointer<FileWriter> plain(new FileWriter), xml(new FileWriter), after(new FileWriter);
    prepare(*plain, L"plain.txt");
    prepare(*xml, L"log.xml").setFormatter(configuration.formatters->get(L"Xml"));
    prepare(*after, L"after.txt");
    MultiWriter multi;
    multi.add(plain);
    multi.add(xml);
    multi.write(recordWith(L"m"));
    multi.add(SharedPointer<Writer>(new FileWriter));  // no formatter
    multi.add(after);
    expectThrown<ValueNotInitializedException>([&] { multi.write(recordWith(L"n")); });
    EXPECT_EQ("m\r\nn\r\n", scratch.readFile(L"plain.txt"));
    EXPECT_FALSE(scratch.exists(L"after.txt"));
    const std::string document = scratch.readFile(L"log.xml");
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-16LE\"?>\r\n<log>\r\n<logrecord>";
    EXPECT_EQ(head, document.substr(0, head.size()));
    EXPECT_EQ(std::string::npos, document.find("<?xml", 1)) << document;
}
