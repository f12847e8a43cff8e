#include "fw/fw_shared_block.h"

#include <windows.h>
#include <cstring>
#include <new>

struct fw_shared_block::header
{
    volatile LONG refCount;
    uint8_t payload[1];
};

fw_shared_block::fw_shared_block(const fw_shared_block& other) : block(other.block)
{
    if (block)
        InterlockedIncrement(&block->refCount);
}

fw_shared_block& fw_shared_block::operator=(const fw_shared_block& other)
{
    if (other.block)
        InterlockedIncrement(&other.block->refCount);
    release();
    block = other.block;
    return *this;
}

fw_shared_block::~fw_shared_block()
{
    release();
}

void fw_shared_block::release()
{
    if (block && InterlockedDecrement(&block->refCount) == 0)
        ::operator delete(block);
    block = nullptr;
}

uint8_t* fw_shared_block::renew(uint32_t size, uint32_t kept)
{
    auto* fresh = static_cast<header*>(::operator new(size));
    fresh->refCount = 1;
    reinterpret_cast<uint8_t*>(fresh)[size - 1] = 0;
    if (kept)
        std::memcpy(fresh->payload, block->payload, kept);
    release();
    block = fresh;
    return fresh->payload;
}

bool fw_shared_block::sole() const
{
    return block && block->refCount < 2;
}

uint8_t* fw_shared_block::payload() const
{
    return block ? block->payload : nullptr;
}

bool fw_shared_block::holds(const void* at, uint32_t payloadBytes) const
{
    if (!block)
        return false;
    const uintptr_t where = reinterpret_cast<uintptr_t>(at);
    const uintptr_t start = reinterpret_cast<uintptr_t>(block->payload);
    return where >= start && where <= start + payloadBytes;
}

bool fw_shared_block::holds_count(const void* at) const
{
    if (!block)
        return false;
    const uintptr_t where = reinterpret_cast<uintptr_t>(at);
    return where >= reinterpret_cast<uintptr_t>(block) && where < reinterpret_cast<uintptr_t>(block->payload);
}
