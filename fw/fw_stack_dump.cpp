#include "fw/fw_stack_dump.h"

#include "fw/fw_format.h"

#include <windows.h>

namespace {

char modulePath[1024];
// Addresses take all the digits of a pointer: 8 on x86, 16 on x86-64.
const bool wide = sizeof(void*) == 8;

}  // namespace

void fw_stack_dump_module(fw_string& text, uintptr_t address)
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const char*>(address), &module) || !module)
        return;
    const DWORD length = GetModuleFileNameA(module, modulePath, sizeof modulePath - 1);
    modulePath[length < sizeof modulePath ? length : sizeof modulePath - 1] = 0;
    text.append(fw_format("Module: %{1}s\r\n", base_name(fw_string(modulePath)).c_str()).c_str());
    text.append(fw_format(wide ? "Base: %{1}016llX\r\n" : "Base: %{1}08llX\r\n",
                          uint64_t(reinterpret_cast<uintptr_t>(module))).c_str());
}

void fw_stack_dump_line(fw_string& text, uintptr_t returnAddress)
{
    text.append(fw_format(wide ? "%{1}016llX\r\n" : "%{1}08llX\r\n", uint64_t(returnAddress)).c_str());
}

fw_string fw_stack_dump_text(const fw_string& lines)
{
    return fw_format("Stack dump:\r\n%{1}s", lines.c_str());
}
