// The landing on 32-bit x86.
//
// fw_foreign_call saves a landing in its own frame before it calls (the registers
// that calls keep, the frame, stack and resume address, like setjmp) together with
// the head of the thread's SEH chain at fs:[0], and puts a record of its own at the
// head of that chain. A fault in the other module that its own handlers do not take
// comes to that record. There the exception is built as for any fault (text,
// location, the dump from the faulting frame, which still exists); then the SEH
// chain is set back to the saved head, the thread jumps back to the landing with
// its registers as they were, and in this module's frame the exception is raised and
// thrown. (The compiler's __builtin_setjmp would keep only the frame and stack
// pointers: the registers that the frames above keep in ebx, esi and edi would come
// back as the faulting code left them.)
#include "fw/fw_foreign_call.h"

#include <windows.h>

#include <cstddef>

extern "C" {
// Where the record sends the faulting thread: pushes the fault's return address and
// jumps to fw_landing_reached; eax carries the landing, ecx the faulting instruction.
void fw_landing_entry();
[[noreturn]] __attribute__((regparm(3), used)) void fw_landing_reached(fw_landing* landing);
// Back to the landing: the saved registers, and 1 as fw_landing_set's answer.
[[noreturn]] void fw_landing_jump(const fw_landing* landing);
}

static_assert(offsetof(fw_landing, registers) == 8, "the assembly below counts on the layout");

__asm__(".text\n"
        ".globl _fw_landing_entry\n"
        "_fw_landing_entry:\n"
        "    pushl %ecx\n"
        "    addl $1, (%esp)\n"
        "    jmp _fw_landing_reached\n"
        "\n"
        ".globl _fw_landing_set\n"
        "_fw_landing_set:\n"
        "    movl 4(%esp), %eax\n"
        "    movl %ebx, 8(%eax)\n"
        "    movl %esi, 12(%eax)\n"
        "    movl %edi, 16(%eax)\n"
        "    movl %ebp, 20(%eax)\n"
        "    leal 4(%esp), %ecx\n"
        "    movl %ecx, 24(%eax)\n"
        "    movl (%esp), %ecx\n"
        "    movl %ecx, 28(%eax)\n"
        "    xorl %eax, %eax\n"
        "    ret\n"
        "\n"
        ".globl _fw_landing_jump\n"
        "_fw_landing_jump:\n"
        "    movl 4(%esp), %eax\n"
        "    movl 8(%eax), %ebx\n"
        "    movl 12(%eax), %esi\n"
        "    movl 16(%eax), %edi\n"
        "    movl 20(%eax), %ebp\n"
        "    movl 24(%eax), %esp\n"
        "    movl 28(%eax), %ecx\n"
        "    movl $1, %eax\n"
        "    jmp *%ecx\n");

namespace {


void* seh_head()
{
    void* head;
    __asm__ volatile("movl %%fs:0, %0" : "=r"(head));
    return head;
}

void set_seh_head(void* head)
{
    __asm__ volatile("movl %0, %%fs:0" : : "r"(head) : "memory");
}

// Asked after the other module's own handlers, during the system's search for a
// handler; leaves everything but a translated fault to the handlers behind it.
EXCEPTION_DISPOSITION __cdecl landing_handler(EXCEPTION_RECORD* record, void* establisher, CONTEXT* context, void*)
{
    fw_fault fault;
    if (!fw_landing_takes(record, context, fault))
        return ExceptionContinueSearch;
    fw_landing* landing = static_cast<fw_landing*>(establisher);
    landing->fault = fault;
    context->Eax = DWORD(reinterpret_cast<uintptr_t>(landing));
    context->Ecx = DWORD(fault.instruction);
    context->Eip = DWORD(reinterpret_cast<uintptr_t>(&fw_landing_entry));
    return ExceptionContinueExecution;
}

// Puts the landing's record at the head of this thread's SEH chain for as long as it
// lives; the landing takes it away itself when a fault jumps past.
class landing_scope
{
public:
    explicit landing_scope(fw_landing& record) : landing(record)
    {
        record.next = seh_head();
        record.handler = reinterpret_cast<void*>(&landing_handler);
        set_seh_head(&record);
    }
    ~landing_scope() { set_seh_head(landing.next); }
    landing_scope(const landing_scope&) = delete;
    landing_scope& operator=(const landing_scope&) = delete;

private:
    fw_landing& landing;
};

}  // namespace

// Runs on the faulting thread in front of the other module's frames, which still
// hold what the dump shows; nothing may be thrown out of here.
void fw_landing_reached(fw_landing* landing)
{
    const void* faultFrame = *static_cast<void* const*>(__builtin_frame_address(0));
    try {
        landing->exception = fw_fault_exception(landing->fault, faultFrame);
    } catch (...) {
        landing->failure = std::current_exception();
    }
    set_seh_head(landing->next);
    fw_landing_jump(landing);
}

void fw_landing_run(fw_landing& landing, void (*thunk)(void*), void* argument)
{
    landing_scope scope(landing);
    thunk(argument);
}
