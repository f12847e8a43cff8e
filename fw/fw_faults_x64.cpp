// How a fault becomes a throw on x86-64.
//
// The C++ runtime throws through the system's own table-based unwinder, which walks
// every frame by its unwind data. Nothing is thrown inside the handler (the
// dispatcher's frames lie between it and the fault); the handler rewrites the
// thread's context so that, when the system resumes the thread, it enters a raising
// function as if the faulting instruction had called it: a return address one past
// the faulting instruction is pushed (by fw_fault_entry, after the resume, when the
// dispatcher's frames are gone), and the arguments travel in the registers of the
// calling convention, which the faulting code may lose: they are volatile across a
// call. The unwinder finds the faulting function's unwind data by that return
// address, and the personality looks at the byte before it, which lies in the
// faulting instruction, so the handler regions of -fnon-call-exceptions cover it.
//
// The raising function is entered with the stack pointer that the fault left, less
// the pushed address. In code built by gcc the stack pointer of a function's body
// stays 16-byte aligned, so the raiser sees the alignment of an ordinary call.
#include "fw/fw_faults.h"

#include "fw/fw_raise.h"
#include "fw/fw_stack_dump.h"

#include <windows.h>

extern "C" {
// Where the handler sends the faulting thread: pushes the faulting instruction + 1
// (in r8) as a return address and jumps to fw_fault_raise, whose first three
// arguments are already in rcx, rdx and r8; the fourth, r9, is the slot of that
// return address.
void fw_fault_entry();
[[noreturn]] __attribute__((used)) void fw_fault_raise(uint64_t row, uint64_t address, uint64_t instruction,
                                                        const void* slot);
}

__asm__(".text\n"
        ".globl fw_fault_entry\n"
        "fw_fault_entry:\n"
        "    pushq %r8\n"
        "    addq $1, (%rsp)\n"
        "    movq %rsp, %r9\n"
        "    jmp fw_fault_raise\n");

// Entered as if the faulting instruction had called it: the dump starts where the
// faulting function returns to, as on x86.
void fw_fault_raise(uint64_t row, uint64_t address, uint64_t instruction, const void* slot)
{
    fw_exception_assert* exception =
        fw_fault_exception(fw_fault{int(row), uintptr_t(address), uintptr_t(instruction)}, slot);
    fw_raise(exception);
    throw exception;
}

uintptr_t fw_fault_instruction(const CONTEXT& context)
{
    return context.Rip;
}

void fw_fault_redirect(CONTEXT& context, const fw_fault& fault)
{
    context.Rcx = DWORD64(fault.row);
    context.Rdx = DWORD64(fault.address);
    context.R8 = DWORD64(fault.instruction);
    context.Rip = DWORD64(reinterpret_cast<uintptr_t>(&fw_fault_entry));
}
