// The walk on 32-bit x86: along the chain of saved frame pointers.
#include "fw/fw_stack_dump.h"

#include "fw/fw_exception.h"

#include <windows.h>

namespace {

struct frame_record
{
    const frame_record* next;
    uintptr_t returnAddress;
};

// The stack of the running thread, from its thread information block. A frame
// pointer outside it is a register that some code used for something else.
class thread_stack
{
public:
    thread_stack()
    {
        // The block's own address at fs:0x18, read directly: mingw's NtCurrentTeb
        // sets off a false array-bounds warning in gcc 12.
        const NT_TIB* tib;
        __asm__("movl %%fs:0x18, %0" : "=r"(tib));
        low = reinterpret_cast<uintptr_t>(tib->StackLimit);
        high = reinterpret_cast<uintptr_t>(tib->StackBase);
    }

    bool holds(const frame_record* frame) const
    {
        const uintptr_t at = reinterpret_cast<uintptr_t>(frame);
        return at >= low && at <= high - sizeof(frame_record) && at % alignof(frame_record) == 0;
    }

private:
    uintptr_t low;
    uintptr_t high;
};

}  // namespace

fw_string fw_stack_dump(const void* frame)
{
    fw_string text;
    const frame_record* record = static_cast<const frame_record*>(frame);
    if (!record)
        record = static_cast<const frame_record*>(__builtin_frame_address(0))->next;
    const thread_stack stack;
    try {
        if (stack.holds(record))
            fw_stack_dump_module(text, record->returnAddress);
        while (stack.holds(record) && record->returnAddress >= fw_stack_dump_lowest_code) {
            fw_stack_dump_line(text, record->returnAddress);
            if (record->next <= record)
                break;
            record = record->next;
        }
    } catch (fw_exception* failure) {
        // A failure during the walk (a translated fault, no memory) ends it; what was
        // collected so far is still worth having.
        delete failure;
    } catch (...) {
    }
    return fw_stack_dump_text(text);
}
