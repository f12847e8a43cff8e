/* The probe's functions that need 32-bit x86 instructions. */
#include <windows.h>

EXCEPTION_DISPOSITION __cdecl probeDecline(struct _EXCEPTION_RECORD* record, void* frame, struct _CONTEXT* context,
                                           void* dispatcher);

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

typedef struct Registration
{
    struct Registration* next;
    void* handler;
} Registration;

/* Reads under a handler of this module that looks at the fault and declines it. */
__declspec(dllexport) int ProbeReadUnderOwnHandler(const volatile int* at)
{
    Registration registration;
    int value;
    __asm__ volatile("movl %%fs:0, %0" : "=r"(registration.next));
    registration.handler = (void*)probeDecline;
    __asm__ volatile("movl %0, %%fs:0" : : "r"(&registration) : "memory");
    value = *at;
    __asm__ volatile("movl %0, %%fs:0" : : "r"(registration.next) : "memory");
    return value;
}
