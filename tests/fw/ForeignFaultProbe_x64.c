/* The probe's functions that need x86-64 instructions. */
#include <windows.h>

/* Faults with the registers that calls keep in use, as a function deep in a real
   module would: whoever lands from here must not find them so. */
__declspec(dllexport) int ProbeReadWithRegistersInUse(const volatile int* at)
{
    int value;
    __asm__ volatile("movq $0xBAD0BAD0BAD0BAD0, %%rbx\n\t"
                     "movq %%rbx, %%rsi\n\t"
                     "movq %%rbx, %%rdi\n\t"
                     "movq %%rbx, %%r12\n\t"
                     "movq %%rbx, %%r13\n\t"
                     "movq %%rbx, %%r14\n\t"
                     "movq %%rbx, %%r15\n\t"
                     "movq %%rbx, %%xmm6\n\t"
                     "movl (%1), %0"
                     : "=r"(value)
                     : "r"(at)
                     : "rbx", "rsi", "rdi", "r12", "r13", "r14", "r15", "xmm6");
    return value;
}
