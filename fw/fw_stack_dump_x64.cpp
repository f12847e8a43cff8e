// The walk on x86-64: by the unwind data of each function, as the system's own
// unwinder does it (RtlLookupFunctionEntry, RtlVirtualUnwind). Frame pointers are no
// chain here: a function may point its frame register anywhere in its frame.
#include "fw/fw_stack_dump.h"

#include "fw/fw_exception.h"

#include <windows.h>

namespace {

// The stack of the running thread, from its thread information block: the walk
// never reads outside it.
class thread_stack
{
public:
    thread_stack()
    {
        // The block's own address at gs:0x30, read directly: mingw's NtCurrentTeb
        // sets off a false array-bounds warning in gcc 12.
        const NT_TIB* tib;
        __asm__("movq %%gs:0x30, %0" : "=r"(tib));
        low = reinterpret_cast<uintptr_t>(tib->StackLimit);
        high = reinterpret_cast<uintptr_t>(tib->StackBase);
    }

    bool holds(uintptr_t at) const { return at >= low && at <= high - sizeof(uintptr_t) && at % 8 == 0; }

private:
    uintptr_t low;
    uintptr_t high;
};

// One step up: the context of the caller, as the function at context.Rip returns to
// it. False when the step leaves the stack or doesn't rise.
bool unwind(CONTEXT& context, const thread_stack& stack)
{
    const DWORD64 before = context.Rsp;
    DWORD64 base = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (function) {
        void* handlerData = nullptr;
        DWORD64 establisher = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &establisher,
                         nullptr);
    } else {
        // A function without unwind data is a leaf: its return address is on top.
        if (!stack.holds(uintptr_t(context.Rsp)))
            return false;
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += 8;
    }
    return context.Rsp > before && stack.holds(uintptr_t(context.Rsp - 8));
}

}  // namespace

// `frame`, when given, is a context of this thread in some function of its chain of
// calls: the dump starts where that function returns to.
__attribute__((noinline)) fw_string fw_stack_dump(const void* frame)
{
    fw_string text;
    const thread_stack stack;
    try {
        CONTEXT context;
        if (frame) {
            context = *static_cast<const CONTEXT*>(frame);
        } else {
            // Captured here, then one frame up: in the caller, whose return address
            // comes first, as with a frame record.
            RtlCaptureContext(&context);
            if (!unwind(context, stack))
                return fw_stack_dump_text(text);
        }
        bool first = true;
        while (unwind(context, stack) && context.Rip >= fw_stack_dump_lowest_code) {
            if (first)
                fw_stack_dump_module(text, uintptr_t(context.Rip));
            first = false;
            fw_stack_dump_line(text, uintptr_t(context.Rip));
        }
    } catch (fw_exception* failure) {
        // A failure during the walk (no memory) ends it; what was collected so far
        // is still worth having.
        delete failure;
    } catch (...) {
    }
    return fw_stack_dump_text(text);
}
