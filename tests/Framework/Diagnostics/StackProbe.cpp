// Throws a Framework exception and prints its image's base in hexadecimal and the
// source line of the throw, then the exception's description with its stack dump.
#include "Framework/Exceptions.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cinttypes>
#include <cstdio>

int main()
{
    _setmode(_fileno(stdout), _O_BINARY);
    try {
        std::printf("%" PRIXPTR " %d\n", reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)), __LINE__ + 1);
        throw new Framework::ErrorException(SITE);
    } catch (Framework::Exception* exception) {
        std::fputs(Framework::AnsiString(exception->description(false)).c_str(), stdout);
        delete exception;
    }
    return 0;
}
