// The file streams against real files in a scratch folder, and the memory stream over
// a block of its own. What a stream wrote is checked with the raw Win32 calls.
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/FileOutputStream.h"
#include "Framework/Io/MemoryInputStream.h"
#include "Framework/Io/StdioFile.h"

#include "Framework/Io/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <vector>

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

const uint64_t fiveGiB = 5ull << 30;

}  // namespace

TEST_F(StreamTest, BytesGoOutAndComeBackUnchanged)
{
    const std::string bytes("\0a\r\nb\n\r\0\xff\x1a z", 12);
    {
        FileOutputStream out;
        out.open(at(L"new\\folders\\bytes.bin"), false);  // makes what is missing
        EXPECT_EQ(0u, out.size());
        out.write(bytes.data(), uint32_t(bytes.size()));
        out.writeText(AnsiString("end"), true);
        EXPECT_EQ(bytes.size() + 4, out.position());
        out.flush();
        EXPECT_EQ(bytes + std::string("end\0", 4), scratch.readFile(L"new\\folders\\bytes.bin"))
            << "flushed data are on the disk while the stream is open";
    }
    FileInputStream in;
    in.open(at(L"new\\folders\\bytes.bin"));
    EXPECT_EQ(bytes.size() + 4, in.size());
    std::vector<char> back(64);
    EXPECT_EQ(bytes.size() + 4, in.read(back.data(), String::npos));
    EXPECT_EQ(bytes, std::string(back.data(), bytes.size()));
    EXPECT_TRUE(in.isAtEnd());
    EXPECT_EQ(0u, in.read(back.data(), String::npos)) << "the end is no error";
    expectThrown<EndOfStreamException>([&] { in.readExact(back.data(), 1); });
}

TEST_F(StreamTest, OpeningClosingAndTheirFailures)
{
    FileInputStream in;
    expectThrown<StreamClosedException>([&] { in.read(nullptr, 1); });
    expectThrown<StreamClosedException>([&] { in.seek(0); });
    {
        const String missing = at(L"missing.bin");
        auto failure = expectThrown<Io::OsException>([&] { in.open(missing); });
        ASSERT_TRUE(failure);
        EXPECT_EQ(String(L"fopen"), failure->operation);
        EXPECT_EQ(String(L"Failed to open file '") + missing + L"'", failure->failureText);
        EXPECT_EQ(uint32_t(ERROR_FILE_NOT_FOUND), failure->osError.lastError);
    }
    EXPECT_FALSE(in.isOpen()) << "a failed open leaves the stream closed";
    expectThrown<Io::ErrorException>([&] { in.open(L""); });

    scratch.writeFile(L"empty.bin", "");
    in.open(at(L"empty.bin"));
    EXPECT_TRUE(in.isAtEnd());
    expectThrown<Io::ErrorException>([&] { in.open(at(L"empty.bin")); });
    in.close();

    FileOutputStream out;
    auto device = expectThrown<Framework::ErrorException>([&] { out.open(L"\\\\.\\COM1", false); });
    ASSERT_TRUE(device);
    EXPECT_EQ(nullptr, dynamic_cast<Io::ErrorException*>(device.get())) << "the plain ErrorException";
    device.reset();
    expectThrown<StreamClosedException>([&] { out.write("x", 1); });
    expectThrown<StreamClosedException>([&] { out.flush(); });
    scratch.writeFile(L"old.txt", "old content");
    out.open(at(L"old.txt"), true);
    EXPECT_EQ(0u, out.size());
    out.close();
    EXPECT_EQ("", scratch.readFile(L"old.txt")) << "open with truncate empties the file";
}

TEST_F(StreamTest, SeekingStopsAtTheEndAndCuttingNeedsNoFlush)
{
    FileOutputStream out;
    out.open(at(L"cut.bin"), false);
    out.fill('a', 200);
    EXPECT_EQ(200u, out.size());
    out.seek(200);
    expectThrown<EndOfStreamException>([&] { out.seek(201); });
    expectThrown<EndOfStreamException>([&] { out.moveForward(1); });
    EXPECT_EQ(200u, out.position()) << "a failed seek leaves the position";

    // The last bytes are still in the runtime's buffer when the file is cut.
    out.seek(100);
    out.write("BBBB", 4);
    out.truncate();
    EXPECT_EQ(104u, out.size());
    EXPECT_EQ(std::string(100, 'a') + "BBBB", scratch.readFile(L"cut.bin")) << "seen from outside, before any flush";
    out.seek(100);
    out.setSize(10);
    EXPECT_EQ(10u, out.position());
    EXPECT_EQ(10u, out.size());
    out.write("CC", 2);
    out.setSize(20);
    EXPECT_EQ(12u, out.position()) << "growing leaves the position";
    out.close();
    EXPECT_EQ(std::string(10, 'a') + "CC" + std::string(8, '\0'), scratch.readFile(L"cut.bin"));

    FileInputStream in;
    in.open(at(L"cut.bin"));
    in.seek(20);
    expectThrown<EndOfStreamException>([&] { in.seek(21); });
    expectThrown<EndOfStreamException>([&] { in.skip(1); });
    in.moveBackward(20);
    expectThrown<Io::ErrorException>([&] { in.moveBackward(1); });
    EXPECT_EQ(0u, in.position());
    in.close();

    // A FILE that has read ahead is cut where it stands, not where the system's file
    // pointer went.
    FILE* file = openFile(at(L"cut.bin"), L"r+b");
    char head[4] = {};
    EXPECT_EQ(4u, readFile(file, head, 4));
    truncateFile(file);
    EXPECT_EQ(4u, fileSize(file));
    closeFile(file);
    EXPECT_EQ("aaaa", scratch.readFile(L"cut.bin"));
}

TEST_F(StreamTest, PositionsBeyondFourGiBStayWhole)
{
    FileOutputStream out;
    out.open(at(L"sparse.bin"), false);
    out.setSize(fiveGiB);
    out.seekToEnd();
    EXPECT_EQ(fiveGiB, out.position());
    out.write("Z", 1);
    EXPECT_EQ(fiveGiB + 1, out.size());
    out.moveBackward(fiveGiB);
    out.write("A", 1);
    out.close();

    WIN32_FILE_ATTRIBUTE_DATA data = {};
    ASSERT_TRUE(GetFileAttributesExW(at(L"sparse.bin").c_str(), GetFileExInfoStandard, &data));
    EXPECT_EQ(fiveGiB + 1, (uint64_t(data.nFileSizeHigh) << 32) | data.nFileSizeLow);

    FileInputStream in;
    in.open(at(L"sparse.bin"));
    EXPECT_EQ(fiveGiB + 1, in.size());
    char read = 0;
    in.readExact(&read, 1);
    EXPECT_EQ('\0', read);
    in.readExact(&read, 1);
    EXPECT_EQ('A', read) << "moveBackward landed on byte 1";
    in.seek(fiveGiB - 1);
    char last[2] = {};
    in.readExact(last, 2);
    EXPECT_EQ(std::string("\0Z", 2), std::string(last, 2));
    EXPECT_TRUE(in.isAtEnd());
    in.moveBackward(fiveGiB);
    EXPECT_EQ(1u, in.position());
    in.close();
    EXPECT_TRUE(DeleteFileW(at(L"sparse.bin").c_str())) << "don't leave 5 GiB behind";
}

TEST(MemoryInputStreamTest, ReadsItsBlockAndNotABytePast)
{
    // Five bytes of a larger block, with no terminator behind them.
    const char block[] = {'a', 'b', '\0', '\n', 'c', 'X', 'X', 'X'};
    MemoryInputStream stream(block, 5);
    EXPECT_EQ(5u, stream.size());
    char back[8] = {};
    EXPECT_EQ(2u, stream.read(back, 2));
    stream.skip(1);
    EXPECT_EQ(2u, stream.read(back + 2, 100));
    EXPECT_EQ(std::string("ab\nc", 4), std::string(back, 4));
    EXPECT_TRUE(stream.isAtEnd());
    EXPECT_EQ(0u, stream.read(back, String::npos));
    expectThrown<EndOfStreamException>([&] { stream.seek(6); });
    stream.moveBackward(5);
    expectThrown<EndOfStreamException>([&] { stream.moveBackward(1); });
    expectThrown<Io::ErrorException>([&] { stream.read(nullptr, 1); });
    stream.close();
    expectThrown<StreamClosedException>([&] { stream.read(back, 1); });

    MemoryInputStream nothing(nullptr, 10);
    EXPECT_FALSE(nothing.isOpen());
    expectThrown<StreamClosedException>([&] { nothing.read(back, 1); });
}
