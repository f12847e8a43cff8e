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

}  // namespace processor
