// A request for memory that no heap gives: the road of exhausted memory on demand,
// without exhausting the machine. 2 GB minus a little is beyond any 32-bit heap; a
// 64-bit one would give that, so there it is 4 EB.
#pragma once
#include <cstddef>

namespace exhaustion {

inline size_t tooMuch()
{
    static volatile size_t size = sizeof(void*) == 8 ? size_t(1) << 62 : size_t(0x7FFFFFF0);
    return size;
}

// Asks new for it; volatile, so the compiler can neither judge the request nor drop it.
inline void allocateTooMuch()
{
    char* volatile block = new char[tooMuch()];
    delete[] block;
}

}  // namespace exhaustion
