// The file streams against real files in a scratch folder; what a stream wrote is read
// back with the raw Win32 calls. The memory stream is read through LineReader.
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/FileOutputStream.h"

#include "Framework/Io/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <typeinfo>

using namespace Framework;
using namespace Framework::Io;

namespace {

class StreamTest : public ::testing::Test
{
protected:
    StreamTest() : scratch(L"Streams") {}

    String at(const wchar_t* relative) const { return String(scratch.at(relative).c_str()); }

    ScratchFolder scratch;
};

}  // namespace

TEST_F(StreamTest, BytesGoOutAndComeBackUnchanged)
{
    const std::string bytes("\0a\r\nb\n\r\0\xff\x1a z", 12);
    FileOutputStream out;
    out.open(at(L"new\\folders\\bytes.bin"), false);  // makes what is missing
    out.write(bytes.data(), uint32_t(bytes.size()));
    out.writeText(AnsiString("end"), true);
    out.flush();
    EXPECT_EQ(bytes + std::string("end\0", 4), scratch.readFile(L"new\\folders\\bytes.bin")) << "flushed, still open";
    out.close();
    FileInputStream in;
    in.open(at(L"new\\folders\\bytes.bin"));
    char back[64] = {};
    EXPECT_EQ(bytes.size() + 4, in.read(back, String::npos));
    EXPECT_EQ(bytes, std::string(back, bytes.size()));
    EXPECT_EQ(0u, in.read(back, String::npos)) << "the end is no error";
    expectThrown<EndOfStreamException>([&] { in.readExact(back, 1); });
}

TEST_F(StreamTest, OpeningAndItsFailures)
{
    FileInputStream in;
    expectThrown<StreamClosedException>([&] { in.read(nullptr, 1); });
    {
        const auto failure = expectThrown<Io::OsException>([&] { in.open(at(L"missing.bin")); });
        ASSERT_TRUE(failure);
        EXPECT_EQ(String(L"fopen"), failure->operation);
        EXPECT_EQ(L"Failed to open file '" + at(L"missing.bin") + L"'", failure->failureText);
        EXPECT_EQ(uint32_t(ERROR_FILE_NOT_FOUND), failure->osError.lastError);
    }
    scratch.writeFile(L"old.txt", "old content");
    in.open(at(L"old.txt"));
    expectThrown<Io::ErrorException>([&] { in.open(at(L"old.txt")); });  // already open
    in.close();

    FileOutputStream out;
    EXPECT_EQ(typeid(Framework::ErrorException).name(), thrownClass([&] { out.open(L"\\\\.\\COM1", false); }));
    out.open(at(L"old.txt"), true);
    out.close();
    EXPECT_EQ("", scratch.readFile(L"old.txt")) << "open with truncate empties the file";
}

TEST_F(StreamTest, SeekingStopsAtTheEndAndCuttingNeedsNoFlush)
{
    FileOutputStream out;
    out.open(at(L"cut.bin"), false);
    out.fill('a', 200);
    expectThrown<EndOfStreamException>([&] { out.seek(201); });
    EXPECT_EQ(200u, out.position()) << "a failed seek leaves the position";
    // The last bytes are still in the runtime's buffer when the file is cut.
    out.seek(100);
    out.write("BBBB", 4);
    out.truncate();
    EXPECT_EQ(std::string(100, 'a') + "BBBB", scratch.readFile(L"cut.bin")) << "seen from outside, before any flush";
    out.setSize(10);
    out.write("CC", 2);
    out.setSize(20);
    EXPECT_EQ(12u, out.position()) << "growing leaves the position";
    out.close();
    EXPECT_EQ(std::string(10, 'a') + "CC" + std::string(8, '\0'), scratch.readFile(L"cut.bin"));
}
