// LineReader over a memory block and over a stream that hands out a few bytes per
// read, as a pipe would.
#include "Framework/Io/LineReader.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/MemoryInputStream.h"
#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

using namespace Framework;
using namespace Framework::Io;
using namespace std::string_literals;

namespace {

// Not seekable, and never more than `step` bytes per read.
class TrickleStream : public InputStream
{
public:
    TrickleStream(const std::string& text, uint32_t most) : bytes(text), step(most), at(0) {}
    uint32_t read(void* buffer, uint32_t count) override
    {
        const uint32_t n = uint32_t(std::min<size_t>({count, step, bytes.size() - at}));
        std::memcpy(buffer, bytes.data() + at, n);
        at += n;
        return n;
    }
    void close() override {}
    bool isOpen() const override { return true; }
    bool isAtEnd() const override { return at >= bytes.size(); }

private:
    std::string bytes;
    uint32_t step;
    size_t at;
};

std::vector<std::string> allLines(InputStream& stream, const std::string& delimiter)
{
    LineReader reader(stream);
    reader.setDelimiter(AnsiString(delimiter.data(), uint32_t(delimiter.size())));
    std::vector<std::string> lines;
    AnsiString line;
    while (!reader.isAtEnd()) {
        reader.readLine(line);
        lines.push_back(std::string(line.c_str(), line.length()));
    }
    expectThrown<IterationException>([&] { reader.readLine(line); });
    return lines;
}

struct LineRow
{
    std::string delimiter;
    std::string input;
    std::vector<std::string> lines;
};

}  // namespace

TEST(LineReaderTest, LinesEndWhereTheDelimiterMatchesWhateverTheReadsGive)
{
    const std::string longLine(3 * 0x10000 + 17, 'x');
    const LineRow rows[] = {
        {"\n", "a\nb\n", {"a", "b"}},
        {"\n", "a\r\nb\r\n", {"a\r", "b\r"}},
        {"\n", "a\n\nlast without end", {"a", "", "last without end"}},
        {"\n", "", {}},
        // A byte that breaks a partial match is not tried again.
        {"\r\n", "a\r\nb\r\r\nc", {"a", "b\r\r\nc"}},
        {"\r\n", "a\r", {"a"}},
        {"ab", "xaab", {"xaab"}},
        {"ab", "aababb", {"aab", "b"}},
        {"", "one\0two\0\0"s, {"one", "two", ""}},
        {"\n", longLine + "\nz", {longLine, "z"}},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        const LineRow& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i));
        MemoryInputStream memory(row.input.data(), uint32_t(row.input.size()));
        EXPECT_EQ(row.lines, allLines(memory, row.delimiter)) << "from memory";
        if (row.input.size() < 1000) {
            for (uint32_t step : {1u, 3u}) {
                TrickleStream trickle(row.input, step);
                EXPECT_EQ(row.lines, allLines(trickle, row.delimiter)) << step << " bytes a read";
            }
        }
    }
}

// What the reader read ahead goes back to the stream when the reader goes.
TEST(LineReaderTest, TheStreamStandsBehindTheLastLineOnceTheReaderIsGone)
{
    const std::string bytes = "header\r\nrest";
    MemoryInputStream memory(bytes.data(), uint32_t(bytes.size()));
    {
        LineReader reader(memory);
        reader.setDelimiter("\r\n");
        AnsiString line;
        reader.readLine(line);
        EXPECT_EQ(AnsiString("header"), line);
        EXPECT_FALSE(reader.isAtEnd()) << "the rest is read ahead, not gone";
    }
    EXPECT_EQ(8u, memory.position());
}
