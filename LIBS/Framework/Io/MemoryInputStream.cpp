#include "Framework/Io/MemoryInputStream.h"

#include "Framework/Io/Exceptions.h"

#include <cstring>

namespace Framework { namespace Io {

MemoryInputStream::MemoryInputStream(const void* data, uint32_t size)
    : bytes(static_cast<const uint8_t*>(data)), length(data ? size : 0), currentPosition(0)
{
}

MemoryInputStream::~MemoryInputStream() { close(); }

void MemoryInputStream::close()
{
    bytes = nullptr;
    length = 0;
    currentPosition = 0;
}

uint32_t MemoryInputStream::read(void* buffer, uint32_t count)
{
    if (!bytes)
        throw new StreamClosedException(SITE);
    if (count == 0)
        return 0;
    if (!buffer)
        throw new Io::ErrorException(SITE);
    const uint64_t rest = currentPosition < length ? length - currentPosition : 0;
    const uint32_t taken = count > rest ? uint32_t(rest) : count;
    std::memcpy(buffer, bytes + currentPosition, taken);
    currentPosition += taken;
    return taken;
}

void MemoryInputStream::seek(uint64_t position)
{
    if (!bytes)
        throw new StreamClosedException(SITE);
    if (position > length)
        throw new EndOfStreamException(SITE);
    currentPosition = position;
}

void MemoryInputStream::seekToEnd() { seek(length); }

}}  // namespace Framework::Io
