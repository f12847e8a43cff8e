#include "support/Processor.h"

namespace processor {

uintptr_t instruction(const CONTEXT& context) { return context.Rip; }
void setInstruction(CONTEXT& context, uintptr_t address) { context.Rip = address; }

void* exceptionChainHead()
{
    return nullptr;
}

}  // namespace processor
