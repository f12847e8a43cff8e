#include "fw/fw_stack_dump.h"

#include "fw/fw_exception.h"
#include "fw/fw_format.h"

#include <windows.h>
#include <cstdint>

namespace {

// The lowest address that the walk takes for code; below it a value ends the chain.
const uintptr_t lowestCode = 0x400000;

struct frame_record
{
    const frame_record* next;
    uintptr_t returnAddress;
};

char modulePath[1024];

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

void append_module(fw_string& text, uintptr_t address)
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const char*>(address), &module) || !module)
        return;
    const DWORD length = GetModuleFileNameA(module, modulePath, sizeof modulePath - 1);
    modulePath[length < sizeof modulePath ? length : sizeof modulePath - 1] = 0;
    text.append(fw_format("Module: %{1}s\r\n", base_name(fw_string(modulePath)).c_str()).c_str());
    text.append(fw_format("Base: %{1}08X\r\n", reinterpret_cast<uintptr_t>(module)).c_str());
}

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
            append_module(text, record->returnAddress);
        while (stack.holds(record) && record->returnAddress >= lowestCode) {
            text.append(fw_format("%{1}08X\r\n", record->returnAddress).c_str());
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
    return fw_format("Stack dump:\r\n%{1}s", text.c_str());
}
