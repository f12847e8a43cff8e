#include "Framework/Io/LineReader.h"

#include "Framework/Exceptions.h"

namespace Framework { namespace Io {

LineReader::LineReader(InputStream& stream) : stream(&stream), delimiterLength(1) {}

void LineReader::setDelimiter(const AnsiString& text)
{
    delimiter = text;
    delimiterLength = text.empty() ? 1 : text.length();
}

bool LineReader::isAtEnd() const { return stream->isAtEnd(); }

void LineReader::readLine(AnsiString& out)
{
    if (stream->isAtEnd())
        throw new IterationException(SITE);
    out.truncate(0);
    // c_str() ends with a zero, which an empty delimiter matches.
    const char* const wanted = delimiter.c_str();
    uint32_t matched = 0;
    // A seekable stream is read a piece at a time, and what follows the line is
    // given back; any other stream one byte at a time, so nothing is taken too many.
    SeekableInputStream* const seekable = dynamic_cast<SeekableInputStream*>(stream);
    char piece[4096];
    const uint32_t pieceSize = seekable ? sizeof piece : 1;
    while (!stream->isAtEnd()) {
        const uint32_t n = stream->read(piece, pieceSize);
        if (n == 0)
            break;
        // Bytes that cannot start the delimiter are appended in runs.
        uint32_t runStart = 0;
        for (uint32_t i = 0; i < n; ++i) {
            const char c = piece[i];
            if (matched == 0 && c != wanted[0])
                continue;
            out.append(piece + runStart, i - runStart);
            runStart = i + 1;
            if (c != wanted[matched]) {
                out.append(wanted, matched);
                matched = 0;
                out.append(c);
            } else if (++matched == delimiterLength) {
                if (runStart < n)
                    seekable->moveBackward(n - runStart);
                return;
            }
        }
        out.append(piece + runStart, n - runStart);
    }
    // A partial match at the end of the stream is dropped.
}

}}  // namespace Framework::Io
