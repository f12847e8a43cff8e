#include "Framework/Io/LineReader.h"

#include "Framework/Exceptions.h"

#include <cstring>

namespace Framework { namespace Io {

LineReader::LineReader(InputStream& stream)
    : stream(&stream), delimiterLength(1), bufferBegin(0), bufferEnd(0), streamDry(false)
{
}

void LineReader::setDelimiter(const AnsiString& text)
{
    delimiter = text;
    delimiterLength = text.empty() ? 1 : text.length();
}

bool LineReader::isAtEnd() const { return bufferBegin == bufferEnd && (streamDry || stream->isAtEnd()); }

bool LineReader::refill()
{
    if (streamDry || stream->isAtEnd())
        return false;
    if (buffer.empty())
        buffer.resize(bufferSize);
    bufferBegin = 0;
    bufferEnd = stream->read(buffer.data(), bufferSize);
    streamDry = bufferEnd == 0;
    return !streamDry;
}

void LineReader::readLine(AnsiString& out)
{
    if (isAtEnd())
        throw new IterationException(SITE);
    out.truncate(0);
    const char* const wanted = delimiter.c_str();
    const char last = wanted[delimiterLength - 1];
    // Jump from one occurrence of the delimiter's last byte to the next, and look
    // back from there: the line may already hold the rest of the delimiter, read in
    // an earlier buffer.
    while (bufferBegin < bufferEnd || refill()) {
        const char* const from = buffer.data() + bufferBegin;
        const uint32_t available = bufferEnd - bufferBegin;
        const char* const hit = static_cast<const char*>(std::memchr(from, last, available));
        const uint32_t taken = hit ? uint32_t(hit - from) + 1 : available;
        bufferBegin += taken;
        // The common case: the whole delimiter stands in this piece of the buffer.
        if (hit && taken >= delimiterLength &&
            std::memcmp(hit + 1 - delimiterLength, wanted, delimiterLength) == 0) {
            out.append(from, taken - delimiterLength);
            return;
        }
        out.append(from, taken);
        const uint32_t length = out.length();
        if (hit && length >= delimiterLength &&
            std::memcmp(out.c_str() + length - delimiterLength, wanted, delimiterLength) == 0) {
            out.truncate(length - delimiterLength);
            return;
        }
    }
    dropPartialDelimiter(out);
}

void LineReader::dropPartialDelimiter(AnsiString& out) const
{
    const char* const wanted = delimiter.c_str();
    for (uint32_t matched = delimiterLength - 1; matched > 0; --matched) {
        const uint32_t length = out.length();
        if (length >= matched && std::memcmp(out.c_str() + length - matched, wanted, matched) == 0) {
            out.truncate(length - matched);
            return;
        }
    }
}

}}  // namespace Framework::Io
