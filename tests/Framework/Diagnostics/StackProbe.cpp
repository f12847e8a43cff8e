// Throws a Framework exception three calls deep and writes into the file that its
// argument names: the image's base, the return addresses of the three calls, the
// source line of the throw, and the exception's description.
#include "Framework/Exceptions.h"

#include <windows.h>

#include <cinttypes>
#include <cstdio>

namespace {

uint64_t returns[3];
int throwLine;
// Read at run time, so that the compiler can't see that the innermost call never
// returns and end its caller with the call.
volatile bool throwing = true;

uint64_t returnAddress(void* address) { return reinterpret_cast<uintptr_t>(address); }

__attribute__((noinline)) void throwingInner()
{
    returns[0] = returnAddress(__builtin_return_address(0));
    throwLine = __LINE__ + 2;
    if (throwing)
        throw new Framework::ErrorException(SITE);
}

// The empty statements behind the calls keep them calls, not jumps.
__attribute__((noinline)) void throwingMiddle()
{
    returns[1] = returnAddress(__builtin_return_address(0));
    throwingInner();
    asm volatile("");
}

__attribute__((noinline)) void throwingOuter()
{
    returns[2] = returnAddress(__builtin_return_address(0));
    throwingMiddle();
    asm volatile("");
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    FILE* out = std::fopen(argv[1], "wb");
    if (!out)
        return 3;
    try {
        throwingOuter();
    } catch (Framework::Exception* exception) {
        std::fprintf(out, "base %" PRIX64 "\nreturns %" PRIX64 " %" PRIX64 " %" PRIX64 "\nline %d\n",
                     returnAddress(GetModuleHandleW(nullptr)), returns[0], returns[1], returns[2], throwLine);
        const Framework::AnsiString description(exception->description(false));
        std::fwrite(description.c_str(), 1, description.length(), out);
        delete exception;
    }
    std::fclose(out);
    return 0;
}
