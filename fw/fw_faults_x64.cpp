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
// A function is entered with its stack pointer 8 past a multiple of 16, and the
// system's routines that the dump uses depend on it. The body of a function built
// by gcc keeps it a multiple of 16, so the pushed address gives the raiser that; a
// fault where it is not (at a function's first instruction, say) gets the address
// pushed a second time. The unwinder then meets the faulting function twice: the
// second time as a function whose frame is already gone, which has nothing to run.
//
// The raiser walks its dump from the context of the faulting function: its own,
// captured, unwound one frame.
#include "fw/fw_faults.h"

#include "fw/fw_raise.h"

#include <windows.h>

extern "C" {
// Where the handler sends the faulting thread: pushes the faulting instruction + 1
// (in r8) as a return address and jumps to fw_fault_raise, whose arguments are
// already in rcx, rdx and r8.
void fw_fault_entry();
[[noreturn]] __attribute__((used, noinline)) void fw_fault_raise(uint64_t row, uint64_t address,
                                                                  uint64_t instruction);
}

__asm__(".text\n"
        ".globl fw_fault_entry\n"
        "fw_fault_entry:\n"
        "    pushq %r8\n"
        "    addq $1, (%rsp)\n"
        "    testq $8, %rsp\n"
        "    jnz 1f\n"
        "    pushq (%rsp)\n"
        "1:  jmp fw_fault_raise\n");

// Entered as if the faulting instruction had called it: the dump starts where the
// faulting function returns to, as on x86.
void fw_fault_raise(uint64_t row, uint64_t address, uint64_t instruction)
{
    CONTEXT faulting;
    RtlCaptureContext(&faulting);
    DWORD64 base = 0;
    if (PRUNTIME_FUNCTION own = RtlLookupFunctionEntry(faulting.Rip, &base, nullptr)) {
        void* handlerData = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, faulting.Rip, own, &faulting, &handlerData, &establisher, nullptr);
    }
    fw_exception_assert* exception =
        fw_fault_exception(fw_fault{int(row), uintptr_t(address), uintptr_t(instruction)}, &faulting);
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
