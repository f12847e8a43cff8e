/* A module that is not ours: plain C, built apart from the layer and loaded at run
   time, whose functions fault on demand. The tests call it through fw_foreign_call. */
#include <windows.h>

__declspec(dllexport) int ProbeRead(const volatile int* at)
{
    return *at;
}

/* The system probes the memory under a handler of its own and answers. */
__declspec(dllexport) int ProbeIsBadRead(const void* at)
{
    return IsBadReadPtr(at, sizeof(int));
}
