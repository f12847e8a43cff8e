// The byte streams' capabilities. Two of them are virtual bases, so that a stream
// that can do both holds one of each:
//
//   Stream                   close, isOpen, isAtEnd
//   SeekableStream           seek, seekToEnd, position, moveForward, moveBackward
//   InputStream              Stream + skip, read, readExact
//   OutputStream             Stream + truncate, flush, write, writeText
//   SeekableInputStream      InputStream + SeekableStream + size
//   SeekableOutputStream     OutputStream + SeekableStream + setSize, fill
//
// Streams carry bytes and nothing else: no encoding, no byte-order mark, no
// conversion. Positions and sizes are 64-bit; a single read or write counts in 32
// bits. No locks: a stream belongs to one thread at a time.
//
// Failures: a closed stream throws StreamClosedException; reading or seeking behind
// the end throws EndOfStreamException; a failed runtime call throws Io::OsException.
#pragma once
#include "Framework/String.h"

namespace Framework { namespace Io {

class Stream
{
public:
    virtual ~Stream() = default;
    // Releases the resource; nothing on a closed stream.
    virtual void close() = 0;
    virtual bool isOpen() const = 0;
    // The position is at or behind the size.
    virtual bool isAtEnd() const = 0;
};

class SeekableStream
{
public:
    virtual ~SeekableStream() = default;
    virtual void seek(uint64_t position) = 0;
    virtual void seekToEnd() = 0;
    virtual uint64_t position() const = 0;
    // seek(position() + count) and seek(position() - count).
    virtual void moveForward(uint64_t count);
    virtual void moveBackward(uint64_t count);
};

class InputStream : public virtual Stream
{
public:
    // Reads and drops count bytes, in a buffer of at most 1 MiB; a short stream
    // throws EndOfStreamException, a count within 1 MiB of 2^64 ErrorException.
    virtual void skip(uint64_t count);
    // Up to count bytes; fewer only at the end. npos (all ones) means the rest.
    virtual uint32_t read(void* buffer, uint32_t count) = 0;

    // All count bytes, or EndOfStreamException.
    void readExact(void* buffer, uint32_t count);
};

class SeekableInputStream : public InputStream, public virtual SeekableStream
{
public:
    // moveForward(count).
    void skip(uint64_t count) override;
    uint32_t read(void* buffer, uint32_t count) override = 0;
    virtual uint64_t size() const = 0;
};

class OutputStream : public virtual Stream
{
public:
    // Cuts the file at the current position.
    virtual void truncate() = 0;
    // Pushes buffered data out.
    virtual void flush() = 0;
    // Writes all count bytes or throws.
    virtual void write(const void* buffer, uint32_t count) = 0;

    // The text's bytes, and its terminating zero with withTerminator.
    void writeText(const AnsiString& text, bool withTerminator);
};

class SeekableOutputStream : public OutputStream, public virtual SeekableStream
{
public:
    // Cuts at size, or adds zero bytes up to it; the position ends at the new end.
    virtual void setSize(uint64_t size);
    // count bytes of value at the current position, in a buffer of at most 1 MiB.
    virtual void fill(uint8_t value, uint64_t count);
};

}}  // namespace Framework::Io
