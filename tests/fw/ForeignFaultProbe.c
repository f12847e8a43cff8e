/* A module that is not ours: plain C, built apart from the layer and loaded at run
   time, whose functions fault on demand. The tests call it through fw_foreign_call.
   What needs the processor's own instructions is in ForeignFaultProbe_x86.c and
   ForeignFaultProbe_x64.c. */
#include <windows.h>

/* The system probes the memory under a handler of its own and answers. */
__declspec(dllexport) int ProbeIsBadRead(const void* at)
{
    return IsBadReadPtr(at, sizeof(int));
}
