/* Exits 0 when this machine can run 32-bit x86 code in a 64-bit process (what Wine's
 * wow64 mode needs): it far-calls a tiny routine through the 32-bit user code segment.
 * Some virtual machines lack that segment; there the call faults and we exit 1. */
#define _GNU_SOURCE
#include <setjmp.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>

static sigjmp_buf landing;

static void on_fault(int sig)
{
    siglongjmp(landing, sig);
}

int main(void)
{
    static const unsigned char code32[] = {0xb8, 0x2a, 0, 0, 0, 0xcb}; /* mov eax,42; retf */
    unsigned char* low = mmap(0, 1 << 16, PROT_READ | PROT_WRITE | PROT_EXEC,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_32BIT, -1, 0);
    unsigned long result = 0;
    if (low == MAP_FAILED || (unsigned long)low > 0xffff0000UL)
        return 1;
    memcpy(low, code32, sizeof code32);
    signal(SIGSEGV, on_fault);
    signal(SIGBUS, on_fault);
    signal(SIGILL, on_fault);
    if (sigsetjmp(landing, 1))
        return 1;
    __asm__ volatile("movq %%rsp, %%r12\n\t"
                     "movq %2, %%rsp\n\t"
                     "subq $8, %%rsp\n\t"
                     "movl $0x23, 4(%%rsp)\n\t"
                     "movl %k1, 0(%%rsp)\n\t"
                     "lcall *(%%rsp)\n\t"
                     "movq %%r12, %%rsp\n\t"
                     : "=a"(result)
                     : "r"(low), "r"((unsigned long)low + 0x8000)
                     : "r12", "memory");
    return result == 42 ? 0 : 1;
}
