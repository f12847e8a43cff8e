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
    uint32_t kept[3] = {};
    __asm__ volatile("movl $0x11111111, %%ebx\n\t"
                     "movl %%ebx, %%esi\n\t"
                     "movl %%ebx, %%edi\n\t"
                     "pushl %%ecx\n\t"
                     "call *%%eax\n\t"
                     "popl %%ecx\n\t"
                     "movl %%ebx, 0(%%ecx)\n\t"
                     "movl %%esi, 4(%%ecx)\n\t"
                     "movl %%edi, 8(%%ecx)"
                     :
                     : "a"(function), "c"(kept)
                     : "edx", "ebx", "esi", "edi", "memory", "cc");
    return kept[0] == 0x11111111u && kept[1] == kept[0] && kept[2] == kept[0];
}

}  // namespace processor
