// What the tests must know of the processor, in one place: the instruction register
// of a context, the head of the thread's SEH chain, the program's own registry view,
// and how wide an address is in a dump. One implementation file per architecture
// (Processor_x86.cpp, Processor_x64.cpp).
#pragma once
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace processor {

uintptr_t instruction(const CONTEXT& context);
void setInstruction(CONTEXT& context, uintptr_t address);

// The head of the thread's SEH chain on x86; null on x86-64, which keeps no chain
// (its handlers come from the unwind data).
void* exceptionChainHead();

// Calls `function` with a known value in each register that calls keep (on x86-64 a
// sample of them: rbx, rsi, rdi, r12, r15 and xmm6), and says whether all came back.
bool keepsRegisters(void (*function)());

// The registry view of a program of this bitness, and the other one.
const REGSAM ownView = sizeof(void*) == 8 ? KEY_WOW64_64KEY : KEY_WOW64_32KEY;
const REGSAM otherView = sizeof(void*) == 8 ? KEY_WOW64_32KEY : KEY_WOW64_64KEY;

// The digits of an address in a stack dump: 8 on x86, 16 on x86-64.
const size_t addressDigits = 2 * sizeof(void*);

// An address as a dump writes it.
inline std::string hexAddress(uintptr_t address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*llX", int(addressDigits), static_cast<unsigned long long>(address));
    return text;
}

}  // namespace processor
