#include "support/Processor.h"

namespace processor {

uintptr_t instruction(const CONTEXT& context) { return context.Eip; }
void setInstruction(CONTEXT& context, uintptr_t address) { context.Eip = DWORD(address); }

void* exceptionChainHead()
{
    void* head;
    __asm__ volatile("movl %%fs:0, %0" : "=r"(head));
    return head;
}

bool keepsRegisters(void (*function)())
{
    uint32_t ebx = 0, esi = 0, edi = 0;
    __asm__ volatile("movl $0x11111111, %%ebx\n\t"
                     "movl $0x22222222, %%esi\n\t"
                     "movl $0x33333333, %%edi\n\t"
                     "call *%3\n\t"
                     "movl %%ebx, %0\n\t"
                     "movl %%esi, %1\n\t"
                     "movl %%edi, %2"
                     : "=m"(ebx), "=m"(esi), "=m"(edi)
                     : "a"(function)
                     : "ecx", "edx", "ebx", "esi", "edi", "memory", "cc");
    return ebx == 0x11111111u && esi == 0x22222222u && edi == 0x33333333u;
}

}  // namespace processor
