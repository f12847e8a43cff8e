// Throws a Framework exception three calls deep and prints, in hexadecimal, the image's
// base and the return addresses of the three calls, then the source line of the throw
// and the exception's description.
#include "Framework/Exceptions.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cinttypes>
#include <cstdio>

namespace {

uintptr_t returns[3];
int throwLine;
// Read at run time, so that the compiler can't see that the innermost call never
// returns and end its caller with the call.
volatile bool throwing = true;

__attribute__((noinline)) void throwingInner()
{
    returns[0] = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    throwLine = __LINE__ + 2;
    if (throwing)
        throw new Framework::ErrorException(SITE);
}

// The empty statements behind the calls keep them calls, not jumps.
__attribute__((noinline)) void throwingMiddle()
{
    returns[1] = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    throwingInner();
    asm volatile("");
}

__attribute__((noinline)) void throwingOuter()
{
    returns[2] = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    throwingMiddle();
    asm volatile("");
}

}  // namespace

int main()
{
    _setmode(_fileno(stdout), _O_BINARY);
    try {
        throwingOuter();
    } catch (Framework::Exception* exception) {
        std::printf("%" PRIXPTR " %" PRIXPTR " %" PRIXPTR " %" PRIXPTR " %d\n",
                    reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)), returns[0], returns[1], returns[2],
                    throwLine);
        std::fputs(Framework::AnsiString(exception->description(false)).c_str(), stdout);
        delete exception;
    }
    return 0;
}
