#include "fw/fw_buffer.h"

#include "fw/fw_assert.h"
#include "fw/fw_block_size.h"

#include <windows.h>
#include <cstring>
#include <new>

struct fw_buffer::block_header
{
    volatile LONG refCount;
    uint8_t bytes[1];
};

namespace {

const uint8_t noBytes[1] = {0};

}  // namespace

uint32_t fw_buffer::block_size_for(uint32_t capacity)
{
    // Four bytes of reference count, no terminator.
    return fw_block_size(capacity + 4);
}

fw_buffer::fw_buffer() : block(nullptr), sizeField(0), capacityField(0) {}

fw_buffer::fw_buffer(const fw_buffer& other)
    : block(other.block), sizeField(other.sizeField), capacityField(other.capacityField)
{
    if (block)
        InterlockedIncrement(&block->refCount);
}

fw_buffer::fw_buffer(const void* bytes, uint32_t size) : fw_buffer()
{
    assign(bytes, size);
}

fw_buffer::~fw_buffer()
{
    release();
}

void fw_buffer::release()
{
    if (block && InterlockedDecrement(&block->refCount) == 0)
        ::operator delete(block);
    block = nullptr;
    sizeField = 0;
    capacityField = 0;
}

bool fw_buffer::holds(const void* bytes) const
{
    if (!block)
        return false;
    const uintptr_t at = reinterpret_cast<uintptr_t>(bytes);
    return at >= reinterpret_cast<uintptr_t>(block->bytes) &&
           at < reinterpret_cast<uintptr_t>(block->bytes) + capacityField;
}

fw_buffer& fw_buffer::operator=(const fw_buffer& other)
{
    if (other.block)
        InterlockedIncrement(&other.block->refCount);
    release();
    block = other.block;
    sizeField = other.sizeField;
    capacityField = other.capacityField;
    return *this;
}

void fw_buffer::assign(const void* bytes, uint32_t size)
{
    if (!bytes || size == 0) {
        release();
        return;
    }
    fw_buffer keep;  // bytes from our own block must outlive the new block's making
    if (holds(bytes))
        keep = *this;
    reserve(size, false);
    std::memmove(block->bytes, bytes, size);
    sizeField = size;
}

void fw_buffer::append(const void* bytes, uint32_t size)
{
    if (!bytes || size == 0)
        return;
    FW_ASSERT(size <= fw_block_capacity_limit - sizeField);
    const bool inside = holds(bytes);
    const uint32_t offset = inside ? uint32_t(static_cast<const uint8_t*>(bytes) - block->bytes) : 0;
    fw_buffer keep;
    if (inside)
        keep = *this;
    const uint32_t old = sizeField;
    reserve(old + size, true);
    const uint8_t* source = inside ? keep.block->bytes + offset : static_cast<const uint8_t*>(bytes);
    std::memmove(block->bytes + old, source, size);
    sizeField = old + size;
}

void fw_buffer::reserve(uint32_t n, bool keepBytes)
{
    FW_ASSERT(n <= fw_block_capacity_limit);
    const uint32_t blockSize = block_size_for(n);
    const uint32_t newCapacity = blockSize - 4;
    if (block && newCapacity <= capacityField && block->refCount < 2)
        return;
    uint32_t kept = keepBytes ? sizeField : 0;
    if (kept > newCapacity)
        kept = newCapacity;
    fw_buffer holder(*this);
    release();
    auto* fresh = static_cast<block_header*>(::operator new(blockSize));
    fresh->refCount = 1;
    if (kept)
        std::memcpy(fresh->bytes, holder.block->bytes, kept);
    block = fresh;
    sizeField = kept;
    capacityField = newCapacity;
}

void fw_buffer::resize(uint32_t n)
{
    if (n == 0) {
        release();
        return;
    }
    const uint32_t old = sizeField;
    reserve(n, true);
    if (n > old)
        std::memset(block->bytes + old, 0, n - old);
    sizeField = n;
}

void fw_buffer::clear()
{
    release();
}

const uint8_t* fw_buffer::data() const
{
    return block ? block->bytes : noBytes;
}

uint8_t* fw_buffer::writable()
{
    reserve(capacityField, true);
    return block->bytes;
}

bool fw_buffer::operator==(const fw_buffer& other) const
{
    return sizeField == other.sizeField && std::memcmp(data(), other.data(), sizeField) == 0;
}
