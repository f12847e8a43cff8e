#include "Framework/Io/Stream.h"

#include "Framework/Io/Exceptions.h"

#include <algorithm>
#include <vector>

namespace Framework { namespace Io {

namespace {
// The largest buffer that skip and fill hold at once.
const uint64_t chunkSize = 0x100000;
}  // namespace

void SeekableStream::moveForward(uint64_t count) { seek(position() + count); }

void SeekableStream::moveBackward(uint64_t count) { seek(position() - count); }

void InputStream::skip(uint64_t count)
{
    if (count > ~uint64_t(0) - chunkSize)
        throw new Io::ErrorException(SITE);
    if (count == 0)
        return;
    std::vector<uint8_t> buffer(size_t(std::min(count, chunkSize)));
    while (count > 0) {
        const uint32_t part = uint32_t(std::min(count, chunkSize));
        readExact(buffer.data(), part);
        count -= part;
    }
}

void InputStream::readExact(void* buffer, uint32_t count)
{
    uint8_t* bytes = static_cast<uint8_t*>(buffer);
    uint32_t done = 0;
    // A stream may give less than asked before its end; only 0 means the end.
    while (done < count) {
        const uint32_t got = read(bytes + done, count - done);
        if (got == 0)
            throw new EndOfStreamException(SITE);
        done += got;
    }
}

void SeekableInputStream::skip(uint64_t count) { moveForward(count); }

void OutputStream::writeText(const AnsiString& text, bool withTerminator)
{
    write(text.c_str(), text.length() + (withTerminator ? 1 : 0));
}

void SeekableOutputStream::setSize(uint64_t size)
{
    seekToEnd();
    const uint64_t current = position();
    if (size <= current) {
        seek(size);
        truncate();
    } else {
        fill(0, size - current);
    }
}

void SeekableOutputStream::fill(uint8_t value, uint64_t count)
{
    if (count == 0)
        return;
    const uint64_t chunk = std::min(count, chunkSize);
    const std::vector<uint8_t> buffer(size_t(chunk), value);
    while (count > chunk) {
        write(buffer.data(), uint32_t(chunk));
        count -= chunk;
    }
    write(buffer.data(), uint32_t(count));
}

}}  // namespace Framework::Io
