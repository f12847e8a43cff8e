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
    char c = 0;
    while (!stream->isAtEnd() && stream->read(&c, 1) == 1) {
        if (c != wanted[matched]) {
            out.append(wanted, matched);
            matched = 0;
            out.append(c);
            continue;
        }
        if (++matched == delimiterLength)
            return;
    }
    // A partial match at the end of the stream is dropped.
}

}}  // namespace Framework::Io
