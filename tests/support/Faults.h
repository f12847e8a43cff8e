// Hardware faults on demand, for the tests of their translation. Each happens in a
// function of its own, with operands the compiler cannot know (they come through
// volatile variables), so the faulting instruction is a real load or division in a
// real frame, and the test can find both: the function's address (the fault's eip
// lies a few bytes behind it) and the address it returns to (the first line of the
// fault's stack dump).
#pragma once
#include <cstdint>

namespace faults {

// Where the last helper called returns to.
inline uintptr_t lastReturnAddress = 0;
// How many CountsItsEnd went out of scope, by a fault's unwinding too.
inline int destroyed = 0;

struct CountsItsEnd
{
    ~CountsItsEnd() { ++destroyed; }
};

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

// The fault strikes in the frame that holds an object: the instruction itself, not a
// call, must be covered by its clean-up.
__attribute__((noinline)) inline int readInScope(uintptr_t address)
{
    CountsItsEnd guard;
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return *reinterpret_cast<const volatile int*>(address);
}

__attribute__((noinline)) inline int divide(int dividend, int divisor)
{
    lastReturnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return dividend / divisor;
}

template <class Function>
uintptr_t codeOf(Function* function)
{
    return reinterpret_cast<uintptr_t>(function);
}

}  // namespace faults
