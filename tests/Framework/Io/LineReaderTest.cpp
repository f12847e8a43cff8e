// LineReader over a memory block, which it reads ahead in pieces, and over a stream
// that can't seek, which it reads a byte at a time.
#include "Framework/Io/LineReader.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/MemoryInputStream.h"
#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Framework;
using namespace Framework::Io;
using namespace std::string_literals;

namespace {

class PipeStream : public InputStream
{
public:
    explicit PipeStream(const std::string& text) : memory(text.data(), uint32_t(text.size())) {}
    uint32_t read(void* buffer, uint32_t count) override { return memory.read(buffer, count); }
    void close() override {}
    bool isOpen() const override { return true; }
    bool isAtEnd() const override { return memory.isAtEnd(); }

private:
    MemoryInputStream memory;
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

}  // namespace

TEST(LineReaderTest, LinesEndWhereTheDelimiterMatchesWhateverTheStream)
{
    const std::string longLine(3 * 0x10000 + 17, 'x');
    const struct
    {
        std::string delimiter;
        std::string input;
        std::vector<std::string> lines;
    } rows[] = {
        {"\n", "a\r\nb\r\n", {"a\r", "b\r"}},
        {"\n", "a\n\nlast without end", {"a", "", "last without end"}},
        {"\n", "", {}},
        // A byte that breaks a partial match is not tried again.
        {"\r\n", "a\r\nb\r\r\nc", {"a", "b\r\r\nc"}},
        {"\r\n", "a\r", {"a"}},
        {"ab", "aababb", {"aab", "b"}},
        {"", "one\0two\0\0"s, {"one", "two", ""}},
        {"\n", longLine + "\nz", {longLine, "z"}},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        MemoryInputStream memory(rows[i].input.data(), uint32_t(rows[i].input.size()));
        EXPECT_EQ(rows[i].lines, allLines(memory, rows[i].delimiter)) << "row " << i << " from memory";
        PipeStream pipe(rows[i].input);
        EXPECT_EQ(rows[i].lines, allLines(pipe, rows[i].delimiter)) << "row " << i << " from a pipe";
    }
}
