/* A module that is not ours: plain C, built apart from the layer and loaded at run
   time, whose functions fault on demand. The tests call it through fw_foreign_call. */
#include <windows.h>

static int declined = 0;

__declspec(dllexport) int ProbeRead(const volatile int* at)
{
    return *at;
}

__declspec(dllexport) int ProbeDivide(int dividend, int divisor)
{
    return dividend / divisor;
}

/* Faults with the registers that calls keep (ebx, esi, edi) in use, as a function
   deep in a real module would: whoever lands from here must not find them so. */
__declspec(dllexport) int ProbeReadWithRegistersInUse(const volatile int* at)
{
    int value;
    __asm__ volatile("movl $0xBAD0BAD0, %%ebx\n\t"
                     "movl %%ebx, %%esi\n\t"
                     "movl %%ebx, %%edi\n\t"
                     "movl (%1), %0"
                     : "=r"(value)
                     : "r"(at)
                     : "ebx", "esi", "edi");
    return value;
}

/* The system probes the memory under a handler of its own and answers. */
__declspec(dllexport) int ProbeIsBadRead(const void* at)
{
    return IsBadReadPtr(at, sizeof(int));
}

typedef struct Registration
{
    struct Registration* next;
    void* handler;
} Registration;

static EXCEPTION_DISPOSITION __cdecl decline(struct _EXCEPTION_RECORD* record, void* frame, struct _CONTEXT* context,
                                             void* dispatcher)
{
    (void)record;
    (void)frame;
    (void)context;
    (void)dispatcher;
    ++declined;
    return ExceptionContinueSearch;
}

/* Reads under a handler of this module that looks at the fault and declines it. */
__declspec(dllexport) int ProbeReadUnderOwnHandler(const volatile int* at)
{
    Registration registration;
    int value;
    __asm__ volatile("movl %%fs:0, %0" : "=r"(registration.next));
    registration.handler = (void*)decline;
    __asm__ volatile("movl %0, %%fs:0" : : "r"(&registration) : "memory");
    value = *at;
    __asm__ volatile("movl %0, %%fs:0" : : "r"(registration.next) : "memory");
    return value;
}

__declspec(dllexport) int ProbeDeclined(void)
{
    return declined;
}

/* Calls back into the caller's module. */
__declspec(dllexport) int ProbeCallBack(int (*callback)(void*), void* data)
{
    return callback(data) + 1;
}
