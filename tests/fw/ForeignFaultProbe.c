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

/* Faults with the registers that calls keep in use, as a function deep in a real
   module would: whoever lands from here must not find them so. */
__declspec(dllexport) int ProbeReadWithRegistersInUse(const volatile int* at)
{
    int value;
#ifdef __x86_64__
    __asm__ volatile("movq $-1, %%rbx\n\t"
                     "movq %%rbx, %%rsi\n\t"
                     "movq %%rbx, %%rdi\n\t"
                     "movq %%rbx, %%r12\n\t"
                     "movq %%rbx, %%r15\n\t"
                     "movq %%rbx, %%xmm6\n\t"
                     "movl (%1), %0"
                     : "=r"(value)
                     : "r"(at)
                     : "rbx", "rsi", "rdi", "r12", "r15", "xmm6");
#else
    __asm__ volatile("movl $-1, %%ebx\n\t"
                     "movl %%ebx, %%esi\n\t"
                     "movl %%ebx, %%edi\n\t"
                     "movl (%1), %0"
                     : "=r"(value)
                     : "r"(at)
                     : "ebx", "esi", "edi");
#endif
    return value;
}
