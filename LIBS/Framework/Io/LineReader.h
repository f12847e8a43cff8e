// Splits what an input stream gives into lines at a delimiter of one or more bytes.
// The delimiter is not part of a line; the line is whatever stands before the first
// occurrence of it. Bytes stay bytes: no encoding, and a "\n" delimiter leaves the
// "\r" of a CRLF line in place. With no delimiter set, a zero byte ends a line.
//
//   delimiter "\n",   bytes "a\r\nb\n"  ->  "a\r", "b", then isAtEnd()
//   delimiter "\n",   bytes "a\n\nb"    ->  "a", "", "b"   (a last line needs no end)
//   delimiter "\r\n", bytes "a\r\r\nb"  ->  "a\r", "b"
//   delimiter "ab",   bytes "xaab"      ->  "xa"
//   delimiter "\r\n", bytes "a\r"       ->  "a": a delimiter begun at the very end
//                                           of the stream is dropped
//
// The reader reads ahead, up to bufferSize bytes at a time, so the stream's position
// runs ahead of the lines given out: while a reader uses a stream, read the stream
// only through the reader. The stream isn't owned and must outlive the reader.
// readLine at the end throws IterationException; what the stream throws goes through.
#pragma once
#include "Framework/Io/Stream.h"

#include <vector>

namespace Framework { namespace Io {

class LineReader
{
public:
    static const uint32_t bufferSize = 0x10000;

    explicit LineReader(InputStream& stream);
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Replaces out with the next line; detaches out.
    virtual void readLine(AnsiString& out);
    // Nothing is left in the reader's buffer and the stream is at its end.
    virtual bool isAtEnd() const;
    virtual ~LineReader() = default;

    void setDelimiter(const AnsiString& text);

private:
    // False when the stream has nothing more.
    bool refill();
    void dropPartialDelimiter(AnsiString& out) const;

    InputStream* stream;
    AnsiString delimiter;
    // At least 1: an empty delimiter is its terminating zero.
    uint32_t delimiterLength;
    std::vector<char> buffer;
    uint32_t bufferBegin;
    uint32_t bufferEnd;
    // The stream gave nothing although it didn't say it was at its end.
    bool streamDry;
};

}}  // namespace Framework::Io
