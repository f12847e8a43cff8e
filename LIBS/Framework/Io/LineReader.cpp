#include "Framework/Io/LineReader.h"

#include "Framework/Exceptions.h"

#include <cstring>

namespace Framework { namespace Io {

// Whether the stream can be read ahead is a matter of its class, which does not
// change: settled once here rather than by a cast per line.
LineReader::LineReader(InputStream& source)
    : stream(&source),
      delimiterLength(1),
      pieceSize(dynamic_cast<SeekableInputStream*>(&source) ? sizeof ahead : 1),
      aheadStart(0),
      aheadEnd(0)
{
}

LineReader::~LineReader()
{
    if (aheadStart == aheadEnd)
        return;
    // Only a seekable stream is ever read ahead. A destructor must not throw: a stream
    // closed behind the reader's back keeps its position, which no one can read then.
    try {
        static_cast<SeekableInputStream*>(stream)->moveBackward(aheadEnd - aheadStart);
    } catch (Exception* failure) {
        delete failure;
    }
}

void LineReader::setDelimiter(const AnsiString& text)
{
    delimiter = text;
    delimiterLength = text.empty() ? 1 : text.length();
}

bool LineReader::isAtEnd() const { return aheadStart == aheadEnd && stream->isAtEnd(); }

void LineReader::readLine(AnsiString& out)
{
    if (isAtEnd())
        throw new IterationException(SITE);
    out.truncate(0);
    // c_str() ends with a zero, which an empty delimiter matches.
    const char* const wanted = delimiter.c_str();
    uint32_t matched = 0;
    for (;;) {
        if (aheadStart == aheadEnd) {
            if (stream->isAtEnd())
                break;
            aheadStart = 0;
            aheadEnd = stream->read(ahead, pieceSize);
            if (aheadEnd == 0)
                break;
        }
        // Bytes that cannot start the delimiter are appended in runs, found by memchr.
        uint32_t runStart = aheadStart;
        for (uint32_t i = aheadStart; i < aheadEnd; ++i) {
            if (matched == 0) {
                const void* start = std::memchr(ahead + i, wanted[0], aheadEnd - i);
                if (!start)
                    break;
                i = uint32_t(static_cast<const char*>(start) - ahead);
            }
            const char c = ahead[i];
            out.append(ahead + runStart, i - runStart);
            runStart = i + 1;
            if (c != wanted[matched]) {
                // The byte that broke the match isn't tried as the delimiter's start.
                out.append(wanted, matched);
                matched = 0;
                out.append(c);
            } else if (++matched == delimiterLength) {
                aheadStart = i + 1;
                return;
            }
        }
        out.append(ahead + runStart, aheadEnd - runStart);
        aheadStart = aheadEnd;
    }
    // A partial match at the end of the stream is dropped.
}

}}  // namespace Framework::Io
