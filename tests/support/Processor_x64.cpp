#include "support/Processor.h"

namespace processor {

uintptr_t instruction(const CONTEXT& context) { return context.Rip; }
void setInstruction(CONTEXT& context, uintptr_t address) { context.Rip = address; }

void* exceptionChainHead()
{
    return nullptr;
}

bool keepsRegisters(void (*function)())
{
    uint64_t kept[6] = {};
    __asm__ volatile("movq $0x1111111111111111, %%rbx\n\t"
                     "movq %%rbx, %%rsi\n\t"
                     "movq %%rbx, %%rdi\n\t"
                     "movq %%rbx, %%r12\n\t"
                     "movq %%rbx, %%r15\n\t"
                     "movq %%rbx, %%xmm6\n\t"
                     "pushq %%rcx\n\t"
                     "subq $40, %%rsp\n\t"
                     "call *%%rax\n\t"
                     "addq $40, %%rsp\n\t"
                     "popq %%rcx\n\t"
                     "movq %%rbx, 0(%%rcx)\n\t"
                     "movq %%rsi, 8(%%rcx)\n\t"
                     "movq %%rdi, 16(%%rcx)\n\t"
                     "movq %%r12, 24(%%rcx)\n\t"
                     "movq %%r15, 32(%%rcx)\n\t"
                     "movq %%xmm6, 40(%%rcx)"
                     :
                     : "a"(function), "c"(kept)
                     : "rdx", "rbx", "rsi", "rdi", "r8", "r9", "r10", "r11", "r12", "r15", "xmm0", "xmm1", "xmm2",
                       "xmm3", "xmm4", "xmm5", "xmm6", "memory", "cc");
    for (uint64_t value : kept) {
        if (value != 0x1111111111111111)
            return false;
    }
    return true;
}

}  // namespace processor
