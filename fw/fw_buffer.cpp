#include "fw/fw_buffer.h"

#include "fw/fw_assert.h"
#include "fw/fw_block_size.h"

#include <windows.h>
#include <cstring>

namespace {

const uint8_t noBytes[1] = {0};

}  // namespace

uint32_t fw_buffer::block_size_for(uint32_t capacity)
{
    // Four bytes of reference count, no terminator.
    return fw_block_size(capacity + 4);
}

fw_buffer::fw_buffer() : sizeField(0), capacityField(0) {}

fw_buffer::fw_buffer(const fw_buffer& other) = default;

fw_buffer::fw_buffer(const void* bytes, uint32_t size) : fw_buffer()
{
    assign(bytes, size);
}

fw_buffer::~fw_buffer() = default;

void fw_buffer::release()
{
    block.release();
    sizeField = 0;
    capacityField = 0;
}

fw_buffer& fw_buffer::operator=(const fw_buffer& other) = default;

void fw_buffer::assign(const void* bytes, uint32_t size)
{
    if (!bytes || size == 0) {
        release();
        return;
    }
    fw_shared_block keep;  // bytes from our own block must outlive the new block's making
    if (holds(bytes))
        keep = block;
    reserve(size, false);
    std::memmove(block.payload(), bytes, size);
    sizeField = size;
}

void fw_buffer::append(const void* bytes, uint32_t size)
{
    if (!bytes || size == 0)
        return;
    FW_ASSERT(size <= fw_block_capacity_limit - sizeField);
    const bool inside = holds(bytes);
    const uint32_t offset = inside ? uint32_t(static_cast<const uint8_t*>(bytes) - block.payload()) : 0;
    fw_shared_block keep;
    if (inside)
        keep = block;
    const uint32_t old = sizeField;
    reserve(old + size, true);
    const uint8_t* source = inside ? keep.payload() + offset : static_cast<const uint8_t*>(bytes);
    std::memmove(block.payload() + old, source, size);
    sizeField = old + size;
}

void fw_buffer::reserve(uint32_t n, bool keepBytes)
{
    FW_ASSERT(n <= fw_block_capacity_limit);
    const uint32_t blockSize = block_size_for(n);
    const uint32_t newCapacity = blockSize - 4;
    if (block.sole() && newCapacity <= capacityField)
        return;
    uint32_t kept = keepBytes ? sizeField : 0;
    if (kept > newCapacity)
        kept = newCapacity;
    block.renew(blockSize, kept);
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
        std::memset(block.payload() + old, 0, n - old);
    sizeField = n;
}

void fw_buffer::clear()
{
    release();
}

const uint8_t* fw_buffer::data() const
{
    return block.exists() ? block.payload() : noBytes;
}

uint8_t* fw_buffer::writable()
{
    reserve(capacityField, true);
    return block.payload();
}

bool fw_buffer::operator==(const fw_buffer& other) const
{
    return sizeField == other.sizeField && std::memcmp(data(), other.data(), sizeField) == 0;
}
