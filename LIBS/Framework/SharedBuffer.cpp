#include "Framework/SharedBuffer.h"

#include <windows.h>
#include <new>

namespace Framework {

struct SharedBuffer::Header
{
    volatile LONG refCount;
    uint32_t byteSize;
};

SharedBuffer::SharedBuffer(uint32_t byteSize) : block(nullptr)
{
    if (byteSize == 0)
        return;
    block = static_cast<Header*>(::operator new(sizeof(Header) + byteSize));
    block->byteSize = byteSize;
    InterlockedExchange(&block->refCount, 1);
}

SharedBuffer::SharedBuffer(const SharedBuffer& other) : block(other.block)
{
    if (block)
        InterlockedIncrement(&block->refCount);
}

SharedBuffer& SharedBuffer::operator=(const SharedBuffer& other)
{
    Header* old = block;
    if (other.block)
        InterlockedIncrement(&other.block->refCount);
    block = other.block;
    if (old && InterlockedDecrement(&old->refCount) == 0)
        ::operator delete(old);
    return *this;
}

SharedBuffer::~SharedBuffer()
{
    if (block && InterlockedDecrement(&block->refCount) == 0)
        ::operator delete(block);
}

void* SharedBuffer::payload() const
{
    return block ? block + 1 : nullptr;
}

uint32_t SharedBuffer::byteSize() const
{
    return block ? block->byteSize : 0;
}

uint32_t SharedBuffer::refCount() const
{
    return block ? static_cast<uint32_t>(block->refCount) : 0;
}

}  // namespace Framework
