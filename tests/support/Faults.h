// Hardware faults on demand, for the tests of their translation. Each happens in a
// function of its own, with operands the compiler cannot know (they come through
// volatile variables), so the faulting instruction is a real load, store or division
// in a real frame, and the test can find both: the function's address (the fault's
// eip lies a few bytes behind it) and the address it returns to (the first line of
// the fault's stack dump).
#pragma once
#include <cstdint>

namespace faults {

// Where the last helper called returns to.
inline uintptr_t lastReturnAddress = 0;

inline uintptr_t nowhere()
{
    static volatile uintptr_t zero = 0;
    return zero;
}

inline int zero()
{
    static volatile int value = 0;
    return value;
}

__attribute__((noinline)) inline int readAt(uintptr_t address)
{
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return *reinterpret_cast<const volatile int*>(address);
}

__attribute__((noinline)) inline void writeAt(uintptr_t address, int value)
{
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    *reinterpret_cast<volatile int*>(address) = value;
}

__attribute__((noinline)) inline int divide(int dividend, int divisor)
{
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return dividend / divisor;
}

__attribute__((noinline)) inline void illegalInstruction()
{
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    __asm__ volatile("ud2");
}

// Whether an address lies in the first bytes of a function's code.
template <class Function>
bool isInside(uintptr_t address, Function* function, uintptr_t size = 64)
{
    const uintptr_t start = reinterpret_cast<uintptr_t>(function);
    return address >= start && address < start + size;
}

}  // namespace faults
