/* The probe's functions that need 32-bit x86 instructions. */
#include <windows.h>

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
