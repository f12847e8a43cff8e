// The landing on x86-64.
//
// fw_landing_set keeps the registers that calls keep (rbx, rbp, rdi, rsi, r12 to
// r15, xmm6 to xmm15, the control words), the stack pointer and the resume address.
// The call itself goes through fw_landing_call_in, a small function whose unwind
// data names fw_landing_frame_handler as its exception handler: the system asks it
// during the search for a handler once the frames of the other module, which lie
// below it, have declined, just as it asks the handlers of any function's frame. For
// a fault it keeps the thread's context at the fault in the landing and rewrites it
// so that the thread resumes in fw_landing_entry. There, below the other module's
// frames, which still hold what the dump shows, the exception is built with the dump
// walked from the kept context; then the thread jumps back to the landing with its
// registers as they were, and in this module's frame the exception is raised and
// thrown. The search has ended at the handler's answer, so nothing of the system's
// dispatch is left behind.
//
// fw_landing_entry aligns the stack as a call would (the other module may fault
// anywhere, with the stack pointer at any multiple of 8), since the system's own
// routines that the dump uses store to the stack with 16-byte alignment. Nothing
// unwinds through it: fw_landing_reached catches all and leaves by the jump.
#include "fw/fw_foreign_call.h"

#include <windows.h>

#include <cstddef>
#include <cstring>

extern "C" {
void fw_landing_call_in(fw_landing* landing, void (*thunk)(void*), void* argument);
EXCEPTION_DISPOSITION fw_landing_frame_handler(EXCEPTION_RECORD* record, void* establisher, CONTEXT* context,
                                               void* dispatch);
// Where the handler sends the faulting thread, with the landing in rcx: aligns the
// stack and goes on in fw_landing_reached.
void fw_landing_entry();
[[noreturn]] __attribute__((used)) void fw_landing_reached(fw_landing* landing);
// Back to the landing: the saved registers, and 1 as fw_landing_set's answer.
[[noreturn]] void fw_landing_jump(const fw_landing* landing);
}

static_assert(offsetof(fw_landing, registers) == 16, "the assembly below counts on the layout");

// The registers at 16 + : rbx 0, rbp 8, rdi 16, rsi 24, r12 32, r13 40, r14 48,
// r15 56, rsp 64, resume address 72, xmm6..xmm15 80..239, mxcsr 240, x87 control 244.
__asm__(".text\n"
        ".globl fw_landing_set\n"
        "fw_landing_set:\n"
        "    movq %rbx, 16(%rcx)\n"
        "    movq %rbp, 24(%rcx)\n"
        "    movq %rdi, 32(%rcx)\n"
        "    movq %rsi, 40(%rcx)\n"
        "    movq %r12, 48(%rcx)\n"
        "    movq %r13, 56(%rcx)\n"
        "    movq %r14, 64(%rcx)\n"
        "    movq %r15, 72(%rcx)\n"
        "    leaq 8(%rsp), %rax\n"
        "    movq %rax, 80(%rcx)\n"
        "    movq (%rsp), %rax\n"
        "    movq %rax, 88(%rcx)\n"
        "    movdqu %xmm6, 96(%rcx)\n"
        "    movdqu %xmm7, 112(%rcx)\n"
        "    movdqu %xmm8, 128(%rcx)\n"
        "    movdqu %xmm9, 144(%rcx)\n"
        "    movdqu %xmm10, 160(%rcx)\n"
        "    movdqu %xmm11, 176(%rcx)\n"
        "    movdqu %xmm12, 192(%rcx)\n"
        "    movdqu %xmm13, 208(%rcx)\n"
        "    movdqu %xmm14, 224(%rcx)\n"
        "    movdqu %xmm15, 240(%rcx)\n"
        "    stmxcsr 256(%rcx)\n"
        "    fnstcw 260(%rcx)\n"
        "    xorl %eax, %eax\n"
        "    ret\n"
        "\n"
        ".globl fw_landing_jump\n"
        "fw_landing_jump:\n"
        "    movq 16(%rcx), %rbx\n"
        "    movq 24(%rcx), %rbp\n"
        "    movq 32(%rcx), %rdi\n"
        "    movq 40(%rcx), %rsi\n"
        "    movq 48(%rcx), %r12\n"
        "    movq 56(%rcx), %r13\n"
        "    movq 64(%rcx), %r14\n"
        "    movq 72(%rcx), %r15\n"
        "    movdqu 96(%rcx), %xmm6\n"
        "    movdqu 112(%rcx), %xmm7\n"
        "    movdqu 128(%rcx), %xmm8\n"
        "    movdqu 144(%rcx), %xmm9\n"
        "    movdqu 160(%rcx), %xmm10\n"
        "    movdqu 176(%rcx), %xmm11\n"
        "    movdqu 192(%rcx), %xmm12\n"
        "    movdqu 208(%rcx), %xmm13\n"
        "    movdqu 224(%rcx), %xmm14\n"
        "    movdqu 240(%rcx), %xmm15\n"
        "    ldmxcsr 256(%rcx)\n"
        "    fldcw 260(%rcx)\n"
        "    movq 80(%rcx), %rsp\n"
        "    movl $1, %eax\n"
        "    jmp *88(%rcx)\n"
        "\n"
        // The landing's pointer stays at 32 above the stack pointer of the body,
        // which is the frame that the system hands the handler.
        ".globl fw_landing_call_in\n"
        ".def fw_landing_call_in; .scl 2; .type 32; .endef\n"
        ".seh_proc fw_landing_call_in\n"
        "fw_landing_call_in:\n"
        "    .seh_handler fw_landing_frame_handler, @except\n"
        "    subq $40, %rsp\n"
        "    .seh_stackalloc 40\n"
        "    .seh_endprologue\n"
        "    movq %rcx, 32(%rsp)\n"
        "    movq %r8, %rcx\n"
        "    call *%rdx\n"
        "    nop\n"
        "    addq $40, %rsp\n"
        "    ret\n"
        ".seh_endproc\n"
        "\n"
        ".globl fw_landing_entry\n"
        "fw_landing_entry:\n"
        "    andq $-16, %rsp\n"
        "    subq $8, %rsp\n"
        "    jmp fw_landing_reached\n");

namespace {

// Flags of an exception record.
const DWORD noncontinuable = 0x1;
const DWORD unwindingNow = 0x2 | 0x4;

}  // namespace

EXCEPTION_DISPOSITION fw_landing_frame_handler(EXCEPTION_RECORD* record, void* establisher, CONTEXT* context, void*)
{
    if (!record || (record->ExceptionFlags & (noncontinuable | unwindingNow)) || !fw_fault_handler_on)
        return ExceptionContinueSearch;
    EXCEPTION_POINTERS pointers = {record, context};
    fw_fault fault;
    if (!fw_fault_of(&pointers, fault))
        return ExceptionContinueSearch;
    fw_landing* landing = *reinterpret_cast<fw_landing**>(static_cast<char*>(establisher) + 32);
    landing->fault = fault;
    static_assert(sizeof(CONTEXT) <= sizeof landing->faultContext, "the landing keeps a whole context");
    std::memcpy(landing->faultContext, context, sizeof(CONTEXT));
    context->Rcx = DWORD64(reinterpret_cast<uintptr_t>(landing));
    context->Rip = DWORD64(reinterpret_cast<uintptr_t>(&fw_landing_entry));
    return ExceptionContinueExecution;
}

// Runs on the faulting thread below the other module's frames, which still hold what
// the dump shows; nothing may be thrown out of here.
void fw_landing_reached(fw_landing* landing)
{
    try {
        landing->exception = fw_fault_exception(landing->fault, landing->faultContext);
    } catch (...) {
        landing->failure = std::current_exception();
    }
    fw_landing_jump(landing);
}

void fw_landing_run(fw_landing& landing, void (*thunk)(void*), void* argument)
{
    fw_landing_call_in(&landing, thunk, argument);
}
