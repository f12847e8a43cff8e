// The heap block under a string: a reference count and a byte size in front of the
// payload. Copying the handle takes a reference (one interlocked increment); the last
// handle frees the block. A requested size of 0 gives the null handle, never a block.
//
// The handle does not copy on write by itself: its owner (BasicString) decides when
// to detach, by looking at refCount().
#pragma once
#include <cstdint>

namespace Framework {

class SharedBuffer
{
public:
    SharedBuffer() : block(nullptr) {}
    // A new block of byteSize payload bytes, not set; 0 gives the null handle.
    // Allocation failures pass through.
    explicit SharedBuffer(uint32_t byteSize);
    SharedBuffer(const SharedBuffer& other);
    // Takes the new reference first, then drops the old one: self-assignment is safe.
    SharedBuffer& operator=(const SharedBuffer& other);
    ~SharedBuffer();

    bool isNull() const { return block == nullptr; }
    // Null when there is no block.
    void* payload() const;
    uint32_t byteSize() const;
    // A plain read: only the holder's own answer is reliable.
    uint32_t refCount() const;
    bool sharesWith(const SharedBuffer& other) const { return block == other.block; }

private:
    struct Header;
    Header* block;
};

}  // namespace Framework
