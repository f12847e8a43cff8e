// Reads a block of bytes that the caller keeps alive: nothing is copied, and the
// block needs no terminator. A null block makes a stream that is closed from the
// start; close() forgets the block, and a closed memory stream stays closed.
#pragma once
#include "Framework/Io/Stream.h"

namespace Framework { namespace Io {

class MemoryInputStream : public SeekableInputStream
{
public:
    MemoryInputStream(const void* data, uint32_t size);
    ~MemoryInputStream() override;

    void close() override;
    bool isOpen() const override { return bytes != nullptr; }
    bool isAtEnd() const override { return currentPosition >= length; }

    // npos, or a count behind the end, reads the rest; 0 at the end. A null buffer
    // throws Io::ErrorException.
    uint32_t read(void* buffer, uint32_t count) override;
    uint64_t size() const override { return length; }

    // Behind the size throws EndOfStreamException.
    void seek(uint64_t position) override;
    void seekToEnd() override;
    uint64_t position() const override { return currentPosition; }

private:
    const uint8_t* bytes;
    uint32_t length;
    uint64_t currentPosition;
};

}}  // namespace Framework::Io
