/* A module that is not ours: plain C, built apart from the layer and loaded at run
   time, whose functions fault on demand. The tests call it through fw_foreign_call.
   What needs the processor's own instructions is in ForeignFaultProbe_x86.c and
   ForeignFaultProbe_x64.c. */
#include <windows.h>

int probeDeclined = 0;

__declspec(dllexport) int ProbeRead(const volatile int* at)
{
    return *at;
}

__declspec(dllexport) int ProbeDivide(int dividend, int divisor)
{
    return dividend / divisor;
}

/* The system probes the memory under a handler of its own and answers. */
__declspec(dllexport) int ProbeIsBadRead(const void* at)
{
    return IsBadReadPtr(at, sizeof(int));
}

/* A handler of this module that looks at the fault and declines it. */
EXCEPTION_DISPOSITION __cdecl probeDecline(struct _EXCEPTION_RECORD* record, void* frame, struct _CONTEXT* context,
                                           void* dispatcher)
{
    (void)record;
    (void)frame;
    (void)context;
    (void)dispatcher;
    ++probeDeclined;
    return ExceptionContinueSearch;
}

__declspec(dllexport) int ProbeDeclined(void)
{
    return probeDeclined;
}

/* Calls back into the caller's module. */
__declspec(dllexport) int ProbeCallBack(int (*callback)(void*), void* data)
{
    return callback(data) + 1;
}
