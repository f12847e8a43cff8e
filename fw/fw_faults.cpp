#include "fw/fw_faults.h"

#include "fw/fw_format.h"
#include "fw/fw_os_kind.h"
#include "fw/fw_raise.h"
#include "fw/fw_site_tag.h"
#include "fw/fw_stack_dump.h"

#include <windows.h>

#include <memory>

bool fw_fault_handler_on = false;
void* fw_fault_handler = nullptr;
void* fw_kernel_module = nullptr;
fw_add_handler_function fw_add_handler = nullptr;
fw_remove_handler_function fw_remove_handler = nullptr;

// The start of this module's image, from the linker.
extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace {

const uint32_t accessViolation = 0xC0000005;
const uint32_t breakpoint = 0x80000003;
const uint32_t unwinding = 0xC0000027;

struct fault_row
{
    uint32_t code;
    const char* text;
};

// The first three rows are the forms of an access violation, chosen by its first
// parameter; the others are found by the code.
const fault_row faultRows[] = {
    // 64-bit items: the same 8 digits for a 32-bit address, all of them for a wider one.
    {accessViolation, "attempt to write at 0x%{1}08llX"},
    {accessViolation, "attempt to read at 0x%{1}08llX"},
    {accessViolation, "access violation"},
    {0x80000002, "datatype misalignment"},
    {breakpoint, "breakpoint"},
    {0x80000004, "single step"},
    {0xC000008C, "array bounds exceed"},
    {0xC000008D, "FPU denormal operand"},
    {0xC000008E, "FPU divide by 0"},
    {0xC000008F, "FPU inexact result"},
    {0xC0000090, "PPU invalid operation"},
    {0xC0000091, "FPU overflow"},
    {0xC0000092, "FPU stack check"},
    {0xC0000093, "FPU underflow"},
    {0xC0000094, "integer divide by 0"},
    {0xC0000095, "integer overflow"},
    {0xC0000096, "privileged instruction"},
    {0xC0000006, "in page error"},
    {0xC000001D, "illegal instruction"},
    {0xC0000025, "noncontinuable exception"},
    {0xC00000FD, "stack overflow"},
    {0xC0000026, "invalid disposition"},
    {0x80000001, "guard page"},
    {0xC0000008, "invalid handle"},
};
const int rowCount = int(sizeof faultRows / sizeof *faultRows);

int row_of(uint32_t code, uint32_t parameterCount, uintptr_t first)
{
    if (code == accessViolation) {
        if (parameterCount >= 2 && first == 1)
            return 0;
        if (parameterCount >= 2 && first == 0)
            return 1;
        return 2;
    }
    for (int row = 3; row < rowCount; ++row) {
        if (faultRows[row].code == code)
            return row;
    }
    return -1;
}

template <class Function>
Function find_function(HMODULE module, const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

// kernel32 is in every process from its start: taking a reference to the loaded
// module is what LoadLibraryA would do, without its search of the path (about 10 us
// under Wine). LoadLibraryA remains for a system where that fails.
HMODULE load_kernel()
{
    HMODULE kernel = nullptr;
    if (GetModuleHandleExA(0, "kernel32.dll", &kernel) && kernel)
        return kernel;
    return LoadLibraryA("kernel32.dll");
}

// The two functions as found in the module last loaded. kernel32 never leaves a
// process, so its exports keep their addresses from one bring-up to the next; the
// search (a few us under Wine, where both are forwarded to ntdll) runs again only for
// another module handle.
struct handler_functions
{
    HMODULE module;
    fw_add_handler_function add;
    fw_remove_handler_function remove;
};

handler_functions found = {};

const handler_functions& functions_in(HMODULE module)
{
    if (found.module != module || !found.add || !found.remove) {
        found.module = module;
        found.add = find_function<fw_add_handler_function>(module, "AddVectoredExceptionHandler");
        found.remove = find_function<fw_remove_handler_function>(module, "RemoveVectoredExceptionHandler");
    }
    return found;
}

}  // namespace

bool fw_fault_in_this_module(uintptr_t instruction)
{
    const uintptr_t base = reinterpret_cast<uintptr_t>(&__ImageBase);
    const IMAGE_NT_HEADERS* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + __ImageBase.e_lfanew);
    return instruction - base < headers->OptionalHeader.SizeOfImage;
}

fw_string fw_fault_text(uint32_t code, uint32_t parameterCount, const uintptr_t* parameters)
{
    const int row = row_of(code, parameterCount, parameterCount >= 1 ? parameters[0] : 0);
    if (row < 0)
        return fw_string();
    return fw_format(faultRows[row].text, uint64_t(parameterCount >= 2 ? parameters[1] : 0));
}

bool fw_fault_of(const EXCEPTION_POINTERS* pointers, fw_fault& fault)
{
    if (!pointers || !pointers->ExceptionRecord || !pointers->ContextRecord)
        return false;
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == breakpoint || record.ExceptionCode == unwinding)
        return false;
    const int row = row_of(record.ExceptionCode, record.NumberParameters,
                           record.NumberParameters >= 1 ? uintptr_t(record.ExceptionInformation[0]) : 0);
    if (row < 0)
        return false;
    fault.row = row;
    fault.address = record.NumberParameters >= 2 ? uintptr_t(record.ExceptionInformation[1]) : 0;
    fault.instruction = fw_fault_instruction(*pointers->ContextRecord);
    return true;
}

fw_exception_assert* fw_fault_exception(const fw_fault& fault, const void* faultFrame)
{
    fw_string text = fw_format(faultRows[fault.row].text, uint64_t(fault.address));
    // The instruction with all the digits of a pointer: 8 on x86, 16 on x86-64.
    text.append(fw_format(sizeof(void*) == 8 ? ", eip=0x%{1}016llx" : ", eip=0x%{1}08llx",
                          uint64_t(fault.instruction)).c_str());
    const fw_string location = fw_format("%{1}s%{2}X", FW_SITE_TAG, uint32_t(__LINE__));
    std::unique_ptr<fw_exception_assert> exception(new fw_exception_assert(location, text, fw_string(), fw_string()));
    exception->setDetails(fw_stack_dump(faultFrame));
    return exception.release();
}

long __stdcall fw_fault_vector(EXCEPTION_POINTERS* pointers)
{
    fw_fault fault;
    if (!fw_fault_of(pointers, fault))
        return EXCEPTION_CONTINUE_SEARCH;
    // Outside this module the unwinder cannot follow; see fw/fw_foreign_call.h.
    if (!fw_fault_in_this_module(fault.instruction))
        return EXCEPTION_CONTINUE_SEARCH;
    fw_fault_redirect(*pointers->ContextRecord, fault);
    return EXCEPTION_CONTINUE_EXECUTION;
}

void fw_faults_start()
{
    fw_tls_slot_acquire();
    if (!fw_os_kind_translates(fw_os_kind()))
        return;
    HMODULE kernel = load_kernel();
    if (!kernel)
        return;
    fw_kernel_module = kernel;
    const handler_functions& functions = functions_in(kernel);
    fw_add_handler = functions.add;
    fw_remove_handler = functions.remove;
    if (!fw_add_handler || !fw_remove_handler)
        return;
    fw_fault_handler = fw_add_handler(1, &fw_fault_vector);
    fw_fault_handler_on = fw_fault_handler != nullptr;
}

void fw_faults_stop()
{
    fw_tls_slot_release();
    fw_fault_handler_on = false;
    if (fw_fault_handler) {
        fw_remove_handler(fw_fault_handler);
        fw_fault_handler = nullptr;
    }
    fw_add_handler = nullptr;
    fw_remove_handler = nullptr;
    if (fw_kernel_module) {
        FreeLibrary(static_cast<HMODULE>(fw_kernel_module));
        fw_kernel_module = nullptr;
    }
}
