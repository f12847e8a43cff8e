// Splits what an input stream gives into lines at a delimiter of one or more bytes.
// The delimiter is not part of a line. Bytes stay bytes: no encoding, and a "\n"
// delimiter leaves the "\r" of a CRLF line in place. With no delimiter set, a zero
// byte ends a line.
//
// The match is simple and never looks back: a byte that breaks a partial match is
// not tried again as the start of the delimiter.
//
//   delimiter "\n",   bytes "a\r\nb\n"  ->  "a\r", "b", then isAtEnd()
//   delimiter "\n",   bytes "a\n\nb"    ->  "a", "", "b"   (a last line needs no end)
//   delimiter "ab",   bytes "xaab"      ->  "xaab": the second "a" broke the match
//   delimiter "\r\n", bytes "a\r\r\nb"  ->  "a\r\r\nb", for the same reason
//   delimiter "\r\n", bytes "a\r"       ->  "a": a delimiter begun at the very end
//                                           of the stream is dropped
//
// A seekable stream is read ahead in pieces, since a read per byte (or a seek per
// line) costs a runtime call each; when the reader goes, it gives back what it read
// ahead, so the stream then stands right behind the last line's delimiter and the
// caller may go on reading it. Any other stream is read one byte at a time, so that
// nothing is taken from it that isn't part of a line. The stream isn't owned and must
// outlive the reader; while the reader lives, only the reader reads it. readLine at
// the end throws IterationException; what the stream throws goes through.
#pragma once
#include "Framework/Io/Stream.h"

namespace Framework { namespace Io {

class LineReader
{
public:
    explicit LineReader(InputStream& stream);
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    // Replaces out with the next line; detaches out.
    virtual void readLine(AnsiString& out);
    // The stream is at its end and nothing read ahead is left.
    virtual bool isAtEnd() const;
    // Gives back to a seekable stream what was read ahead.
    virtual ~LineReader();

    void setDelimiter(const AnsiString& text);

private:
    InputStream* stream;
    AnsiString delimiter;
    // At least 1: an empty delimiter is its terminating zero.
    uint32_t delimiterLength;
    // How much one read asks of the stream: the buffer for a seekable one, else 1.
    uint32_t pieceSize;
    // Read from the stream but not yet handed out: ahead[aheadStart, aheadEnd).
    char ahead[4096];
    uint32_t aheadStart;
    uint32_t aheadEnd;
};

}}  // namespace Framework::Io
