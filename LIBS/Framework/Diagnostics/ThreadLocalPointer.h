// One pointer per thread over a Win32 TLS slot: null at first on every thread. The
// cell owns its slot, not what the pointers point to; that belongs to whoever stored
// them. get() treats null as a broken precondition; peek() is for callers that can
// live with null.
#pragma once
#include <cstdint>

namespace Framework {

class ThreadLocalPointer
{
public:
    // TlsAlloc, then set(initial) on the constructing thread.
    explicit ThreadLocalPointer(void* initial);
    ThreadLocalPointer(const ThreadLocalPointer&) = delete;
    ThreadLocalPointer& operator=(const ThreadLocalPointer&) = delete;
    // Frees the slot.
    ~ThreadLocalPointer();

    void set(void* value);
    // The calling thread's pointer; null raises ErrorException.
    void* get() const;
    // The calling thread's pointer, null included.
    void* peek() const;

private:
    uint32_t index;
};

}  // namespace Framework
