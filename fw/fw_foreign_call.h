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
// This module's unwinder cannot throw from inside another module's code, so the
// call saves a landing in its own frame first; a fault in the other module that its
// own handlers do not take sends the thread back to that landing, and the exception
// is thrown from there. How, on each processor, is told in fw_foreign_call_x86.cpp
// and fw_foreign_call_x64.cpp.
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
//   that probes memory under a handler) stays with it: the landing is asked only
//   after the module's own handlers have declined.
// - A callback of this module that the other module calls runs in front of the other
//   module's frames. No exception may leave it (catch inside the callback); a fault
//   in it is a fault of this module and is thrown in the callback. A callback may
//   call fw_foreign_call again: landings nest.
// - The result of the callable is passed back as it is; an exception of this
//   module's code inside the callable passes through.
#pragma once
#include "fw/fw_faults.h"

#include <exception>
#include <optional>
#include <type_traits>

// One landing: lives in the frame of fw_foreign_call for the length of the call.
struct fw_landing
{
    // On x86 the SEH registration record, which the system wants first; unused on
    // x86-64, where the landing's handler comes from the unwind data.
    void* next;
    void* handler;
    // The registers that calls keep, the stack pointer and the resume address, as
    // fw_landing_set saw them: room for either processor's set.
    unsigned char registers[256];
    // Filled when a fault comes to the landing.
    fw_fault fault;
    fw_exception_assert* exception;
    std::exception_ptr failure;
    // The thread's context at the fault, where the processor's landing keeps it
    // (x86-64: its dump is walked from there).
    alignas(16) unsigned char faultContext[1280];
};

// Saves the registers in the landing and returns 0; returns 1 once more when a fault
// sends the thread back to the landing. Like setjmp, only for fw_foreign_call.
extern "C" __attribute__((returns_twice)) int fw_landing_set(fw_landing* landing);
// Runs thunk(argument) with the landing's handler in place.
void fw_landing_run(fw_landing& landing, void (*thunk)(void*), void* argument);
// At the landing, after the jump: raises and throws the fault's exception, or throws
// what went wrong while it was built.
[[noreturn]] void fw_landing_throw(fw_landing& landing);

// Runs call() under a landing and returns what it returns.
template <class Call>
decltype(auto) fw_foreign_call(Call&& call)
{
    using Callable = std::remove_reference_t<Call>;
    using Result = decltype(call());
    fw_landing landing = {};
    if (fw_landing_set(&landing) != 0)
        fw_landing_throw(landing);
    if constexpr (std::is_void_v<Result>) {
        fw_landing_run(landing, [](void* callable) { (*static_cast<Callable*>(callable))(); }, &call);
    } else {
        struct Slot
        {
            Callable* call;
            std::optional<Result> result;
        } slot{&call, std::nullopt};
        fw_landing_run(landing, [](void* state) {
            Slot& called = *static_cast<Slot*>(state);
            called.result.emplace((*called.call)());
        }, &slot);
        return Result(*slot.result);
    }
}
