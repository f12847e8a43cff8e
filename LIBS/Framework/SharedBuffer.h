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
    SharedBuffer(const SharedBuffer& other) : block(other.block)
    {
        if (block)
            __atomic_add_fetch(&block->refCount, 1, __ATOMIC_SEQ_CST);
    }
    // Takes the other's reference over: no count changes, and the other is null after.
    SharedBuffer(SharedBuffer&& other) noexcept : block(other.block) { other.block = nullptr; }
    // Takes the new reference first, then drops the old one: self-assignment is safe.
    SharedBuffer& operator=(const SharedBuffer& other);
    SharedBuffer& operator=(SharedBuffer&& other) noexcept
    {
        if (this != &other) {
            Header* const old = block;
            block = other.block;
            other.block = nullptr;
            if (old && __atomic_sub_fetch(&old->refCount, 1, __ATOMIC_SEQ_CST) == 0)
                release(old);
        }
        return *this;
    }
    ~SharedBuffer()
    {
        if (block && __atomic_sub_fetch(&block->refCount, 1, __ATOMIC_SEQ_CST) == 0)
            release(block);
    }

    bool isNull() const { return block == nullptr; }
    // Null when there is no block.
    void* payload() const { return block ? block + 1 : nullptr; }
    uint32_t byteSize() const { return block ? block->byteSize : 0; }
    // A plain read: only the holder's own answer is reliable.
    uint32_t refCount() const { return block ? static_cast<uint32_t>(block->refCount) : 0; }
    bool sharesWith(const SharedBuffer& other) const { return block == other.block; }

private:
    // Inline, with the count's atomic steps: every string read and copy passes here,
    // and a call per c_str() cost more than the read it makes.
    struct Header
    {
        int32_t refCount;
        uint32_t byteSize;
    };
    static void release(Header* block);

    Header* block;
};

}  // namespace Framework
