// A shared run of bytes with a length, the plain relative of fw_string: what the FW
// layer reads from the registry. Zeros are ordinary bytes here and nothing is
// terminated.
//
// Blocks follow fw_string's rule with four bytes of header, so capacities step 28,
// 92, 156, ... A copy shares the block (one interlocked increment); every write goes
// through writable(), reserve() or resize(), which give the buffer a block of its own
// first. An empty buffer may have no block; data() is never null.
//
//   fw_buffer b;
//   b.resize(size);                       // room for the platform to write into
//   RegQueryValueExA(key, name, 0, &type, b.writable(), &size);
//   b.resize(size);                       // what it actually wrote
#pragma once
#include "fw/fw_shared_block.h"

#include <cstdint>

class fw_buffer
{
public:
    fw_buffer();
    fw_buffer(const fw_buffer& other);
    // A copy of `size` bytes; null bytes or a size of 0 give an empty buffer.
    fw_buffer(const void* bytes, uint32_t size);
    ~fw_buffer();

    // Gives up the present block, then shares the other's.
    fw_buffer& operator=(const fw_buffer& other);

    // Replaces the bytes by a copy; they may lie in this buffer's own block. Detaches.
    void assign(const void* bytes, uint32_t size);
    // Adds bytes, which may lie in this buffer's own block. Detaches.
    void append(const void* bytes, uint32_t size);
    // Makes room for n bytes. A shared block is always replaced by an own one;
    // keepBytes says whether the bytes come along (cut to n if fewer fit).
    void reserve(uint32_t n, bool keepBytes);
    // Sets the size: growing keeps the bytes and adds zeros, shrinking cuts. Detaches.
    void resize(uint32_t n);
    void clear();

    const uint8_t* data() const;
    // The bytes for writing, up to capacity(): afterwards the block is this buffer's own.
    uint8_t* writable();
    uint32_t size() const { return sizeField; }
    uint32_t capacity() const { return capacityField; }
    bool empty() const { return sizeField == 0; }

    // Equal sizes and equal bytes.
    bool operator==(const fw_buffer& other) const;
    bool operator!=(const fw_buffer& other) const { return !(*this == other); }

    // Block size in bytes for a wanted capacity.
    static uint32_t block_size_for(uint32_t capacity);

private:
    fw_shared_block block;
    uint32_t sizeField;
    uint32_t capacityField;

    void release();
    bool holds(const void* bytes) const { return block.holds(bytes, capacityField); }
};
