// How a fault becomes a throw on 32-bit x86.
//
// The C++ runtime's unwinder (DWARF tables) cannot walk from inside an exception
// handler back through the system's dispatcher frames, so nothing is thrown inside
// the handler. The handler only decides; then it rewrites the thread's context so
// that, when the system resumes the thread, it enters a raising function as if the
// faulting instruction had called it: the registers of the faulting code kept, its
// frame pointer among them, and a return address that leads the unwinder to the
// faulting instruction. That function builds the exception, takes the dump from the
// faulting frame, raises and throws it, and the unwinder carries it from there.
#include "fw/fw_faults.h"

#include "fw/fw_raise.h"

#include <windows.h>

extern "C" {
// Where the handler sends the faulting thread: pushes the fault's return address and
// jumps to fw_fault_raise (below). The registers carry the fault: eax the row, edx
// the address, ecx the faulting instruction.
void fw_fault_entry();
[[noreturn]] __attribute__((regparm(3), used)) void fw_fault_raise(uint32_t row, uint32_t address, uint32_t eip);
}

// The return address is one past the faulting instruction's first byte: the unwinder
// looks at the byte before a return address to find the instruction that "called",
// and so finds the faulting instruction itself, inside the handler region that
// covers it (an instruction that starts such a region would be missed otherwise).
__asm__(".text\n"
        ".globl _fw_fault_entry\n"
        "_fw_fault_entry:\n"
        "    pushl %ecx\n"
        "    addl $1, (%esp)\n"
        "    jmp _fw_fault_raise\n");

// Entered as if the faulting instruction had called it, so the frame pointer that
// its prologue saved is the faulting code's.
void fw_fault_raise(uint32_t row, uint32_t address, uint32_t eip)
{
    const void* faultFrame = *static_cast<void* const*>(__builtin_frame_address(0));
    fw_exception_assert* exception = fw_fault_exception(fw_fault{int(row), address, eip}, faultFrame);
    fw_raise(exception);
    throw exception;
}

uintptr_t fw_fault_instruction(const CONTEXT& context)
{
    return context.Eip;
}

void fw_fault_redirect(CONTEXT& context, const fw_fault& fault)
{
    context.Eax = DWORD(fault.row);
    context.Edx = DWORD(fault.address);
    context.Ecx = DWORD(fault.instruction);
    context.Eip = DWORD(reinterpret_cast<uintptr_t>(&fw_fault_entry));
}
