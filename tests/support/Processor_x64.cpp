#include "support/Processor.h"

#include <cstring>

namespace processor {

uintptr_t instruction(const CONTEXT& context) { return context.Rip; }
void setInstruction(CONTEXT& context, uintptr_t address) { context.Rip = address; }

void* exceptionChainHead()
{
    return nullptr;
}

bool keepsRegisters(void (*function)())
{
    uint64_t kept[8] = {};
    // rbp is the frame pointer here and xmm6 stands for the vector registers.
    __asm__ volatile("movq $0x1111111111111111, %%rbx\n\t"
                     "movq $0x2222222222222222, %%rsi\n\t"
                     "movq $0x3333333333333333, %%rdi\n\t"
                     "movq $0x4444444444444444, %%r12\n\t"
                     "movq $0x5555555555555555, %%r13\n\t"
                     "movq $0x6666666666666666, %%r14\n\t"
                     "movq $0x7777777777777777, %%r15\n\t"
                     "movq %%r15, %%xmm6\n\t"
                     "pushq %%rcx\n\t"
                     "subq $40, %%rsp\n\t"
                     "call *%%rax\n\t"
                     "addq $40, %%rsp\n\t"
                     "popq %%rcx\n\t"
                     "movq %%rbx, 0(%%rcx)\n\t"
                     "movq %%rsi, 8(%%rcx)\n\t"
                     "movq %%rdi, 16(%%rcx)\n\t"
                     "movq %%r12, 24(%%rcx)\n\t"
                     "movq %%r13, 32(%%rcx)\n\t"
                     "movq %%r14, 40(%%rcx)\n\t"
                     "movq %%r15, 48(%%rcx)\n\t"
                     "movq %%xmm6, 56(%%rcx)\n\t"
                     :
                     : "a"(function), "c"(kept)
                     : "rdx", "rbx", "rsi", "rdi", "r8", "r9", "r10", "r11", "r12", "r13", "r14", "r15", "xmm0",
                       "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "xmm6", "memory", "cc");
    const uint64_t wanted[8] = {0x1111111111111111, 0x2222222222222222, 0x3333333333333333, 0x4444444444444444,
                                0x5555555555555555, 0x6666666666666666, 0x7777777777777777, 0x7777777777777777};
    return std::memcmp(kept, wanted, sizeof kept) == 0;
}

}  // namespace processor
