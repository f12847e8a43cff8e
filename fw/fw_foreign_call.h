// Calls into another module (a DLL that is not linked into this one, such as a mail
// client) with the hardware faults of that module's code thrown in the caller as
// fw_exception_assert, like the faults of this module's own code (fw/fw_faults.h):
//
//   try {
//       const ULONG sent = fw_foreign_call([&] { return sendMail(session, 0, &message, 0, 0); });
//   } catch (fw_exception_assert* raw) {
//       std::unique_ptr<fw_exception_assert> fault(raw);   // "attempt to read at 0x00000000, eip=0x..."
//   }
//
// Why a guard: this module's unwinder knows only this module's frames, so no
// exception can be thrown from inside another module's code (it would end in
// terminate). Instead fw_foreign_call saves a landing in its own frame before it
// calls (the registers that calls keep, the frame, stack and resume address, like
// setjmp, and the head of the thread's SEH chain at fs:[0]) and puts a record of its
// own at the head of that chain. A fault in the other module that its own handlers
// do not take comes to that record. There the exception is built as for any fault
// (text, location, the dump from the faulting frame, which still exists); then the
// SEH chain is set back to the saved head, the thread jumps back to the landing with
// its registers as they were, and in this module's frame the exception is raised and
// thrown. (The compiler's __builtin_setjmp would keep only the frame and stack
// pointers: the registers that the frames above keep in ebx, esi and edi would come
// back as the faulting code left them.)
//
// What a caller must know:
// - The frames between the landing and the fault are abandoned: their clean-up does
//   not run, and the other module may be left holding locks or half made state.
//   Treat it as broken after a fault. The callable's own frame is among them, so
//   keep it to the bare call: objects made inside it would not be destroyed.
// - Only faults are caught so, and only while the translation is on (the layer up,
//   on a system where fw_os_kind_translates); otherwise the fault takes its ordinary
//   course. Software exceptions of the other module pass untouched.
// - A fault that the other module handles itself (its own __try, or a system call
//   that probes memory under a handler) stays with it: the landing's record is
//   asked only after the module's own handlers have declined.
// - A callback of this module that the other module calls runs in front of the other
//   module's frames. No exception may leave it (catch inside the callback); a fault
//   in it is a fault of this module and is thrown in the callback. A callback may
//   call fw_foreign_call again: landings nest.
// - The result of the callable is passed back as it is; an exception of this
//   module's code inside the callable passes through, and the record is removed.
#pragma once
#include "fw/fw_faults.h"

#include <exception>

// One landing: lives in the frame of fw_foreign_call for the length of the call.
struct fw_landing
{
    // The SEH registration record: the system wants these two words first.
    void* next;
    void* handler;
    // ebx, esi, edi, ebp, esp and the resume address, as fw_landing_set saw them.
    uint32_t registers[6];
    // Filled when a fault comes to the record.
    fw_fault fault;
    fw_exception_assert* exception;
    std::exception_ptr failure;
};

// Saves the registers in the landing and returns 0; returns 1 once more when a fault
// sends the thread back to the landing. Like setjmp, only for fw_foreign_call.
extern "C" __attribute__((returns_twice)) int fw_landing_set(fw_landing* landing);

// Puts the landing's record at the head of this thread's SEH chain.
void fw_landing_enter(fw_landing& landing);
// Sets the chain head back to what it was before fw_landing_enter.
void fw_landing_leave(const fw_landing& landing);
// At the landing, after the jump: raises and throws the fault's exception, or throws
// what went wrong while it was built.
[[noreturn]] void fw_landing_throw(fw_landing& landing);

class fw_landing_scope
{
public:
    explicit fw_landing_scope(fw_landing& landing) : landing(landing) { fw_landing_enter(landing); }
    ~fw_landing_scope() { fw_landing_leave(landing); }
    fw_landing_scope(const fw_landing_scope&) = delete;
    fw_landing_scope& operator=(const fw_landing_scope&) = delete;

private:
    fw_landing& landing;
};

// Runs call() under a landing and returns what it returns.
template <class Call>
decltype(auto) fw_foreign_call(Call&& call)
{
    fw_landing landing = {};
    if (fw_landing_set(&landing) != 0)
        fw_landing_throw(landing);
    fw_landing_scope scope(landing);
    return call();
}
