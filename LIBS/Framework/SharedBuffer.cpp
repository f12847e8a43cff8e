#include "Framework/SharedBuffer.h"

#include <new>

namespace Framework {

SharedBuffer::SharedBuffer(uint32_t byteSize) : block(nullptr)
{
    if (byteSize == 0)
        return;
    block = static_cast<Header*>(::operator new(sizeof(Header) + byteSize));
    block->byteSize = byteSize;
    // Nobody else can see the block yet: a plain store. Whatever hands the handle to
    // another thread publishes it.
    block->refCount = 1;
}

SharedBuffer& SharedBuffer::operator=(const SharedBuffer& other)
{
    Header* old = block;
    if (other.block)
        __atomic_add_fetch(&other.block->refCount, 1, __ATOMIC_SEQ_CST);
    block = other.block;
    if (old && __atomic_sub_fetch(&old->refCount, 1, __ATOMIC_SEQ_CST) == 0)
        release(old);
    return *this;
}

void SharedBuffer::release(Header* block)
{
    ::operator delete(block);
}

}  // namespace Framework
