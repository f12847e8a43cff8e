// Throws a Framework exception three calls deep and prints its image's base in
// hexadecimal and the source line of the throw, then the exception's description.
#include "Framework/Exceptions.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cinttypes>
#include <cstdio>

namespace {

int throwLine;
// Read at run time, so that the compiler can't see that the innermost call never
// returns and end its caller with the call.
volatile bool throwing = true;

__attribute__((noinline)) void throwingInner()
{
    throwLine = __LINE__ + 2;
    if (throwing)
        throw new Framework::ErrorException(SITE);
}

// The empty statements behind the calls keep them calls, not jumps.
__attribute__((noinline)) void throwingMiddle()
{
    throwingInner();
    asm volatile("");
}

__attribute__((noinline)) void throwingOuter()
{
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
        std::printf("%" PRIXPTR " %d\n", reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)), throwLine);
        std::fputs(Framework::AnsiString(exception->description(false)).c_str(), stdout);
        delete exception;
    }
    return 0;
}
