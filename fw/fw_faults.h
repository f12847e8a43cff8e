// Hardware faults as exceptions. While the FW layer is up (fw_library), a fault in
// this module's code (a read or write through a bad pointer, a division by zero, an
// illegal instruction) is thrown as an fw_exception_assert at the point of the
// fault, so the handlers around the code take it like any other failure and the
// destructors of the frames in between run:
//
//   try {
//       int* volatile p = nullptr;
//       *p = 1;
//   } catch (fw_exception_assert* raw) {
//       std::unique_ptr<fw_exception_assert> fault(raw);
//       // fault->message(): "attempt to write at 0x00000000, eip=0x6e941a2c"
//   }
//
// The message is the fault's text from the table of fw_fault_text and, behind
// ", eip=0x", the address of the faulting instruction in lower-case digits, as many
// as a pointer has (8 on x86, 16 on x86-64; the label is "eip" in both builds). The
// details are a stack dump (fw/fw_stack_dump.h) that starts at the faulting
// function's frame. The exception goes through fw_raise before it is thrown, so a
// fault while another exception unwinds ends the process with exit code 1.
//
// What a caller must know:
// - Code in which a fault must be catchable is built with -fnon-call-exceptions and
//   with frame pointers. Without the first the compiler assumes that only calls
//   throw, and a fault inside a function with clean-ups or handlers ends in
//   terminate; without the second the dump misses frames. The layer is built so,
//   and passes both options on to everything that links it. The C++ runtime linked
//   into the module is not: a fault inside its code may end in terminate.
// - Only faults whose instruction lies in this module are translated. A fault inside
//   another module (a system DLL, a mail client) is left to that module's own
//   handlers and takes its ordinary course, unless the call into that module runs
//   under fw_foreign_call (fw/fw_foreign_call.h).
// - Software exceptions pass untouched: breakpoints, unwinding, C++ exceptions of any
//   compiler, and every code outside the table.
// - The translation is on only where fw_os_kind_translates (XP to 7); on other
//   systems fw_faults_start registers nothing and faults take their ordinary course.
// - The handler serves every thread of the process while it is registered.
// - How the thread gets from the fault to the throw depends on the processor; each
//   architecture's half (fw_faults_x86.cpp, fw_faults_x64.cpp) says how.
//
#pragma once
#include "fw/fw_exception.h"

#include <cstdint>

struct _EXCEPTION_POINTERS;
struct _EXCEPTION_RECORD;
struct _CONTEXT;

using fw_fault_handler_function = long(__stdcall*)(_EXCEPTION_POINTERS* pointers);
using fw_add_handler_function = void*(__stdcall*)(unsigned long first, fw_fault_handler_function handler);
using fw_remove_handler_function = unsigned long(__stdcall*)(void* handle);

// The handler is registered (set by fw_faults_start, cleared by fw_faults_stop).
extern bool fw_fault_handler_on;
// What registering the handler returned, or null.
extern void* fw_fault_handler;
// The system library with the two functions below (an HMODULE), or null.
extern void* fw_kernel_module;
// AddVectoredExceptionHandler and RemoveVectoredExceptionHandler as found at run time.
extern fw_add_handler_function fw_add_handler;
extern fw_remove_handler_function fw_remove_handler;

// Called by the bring-up of the layer: allocates the current-exception slot
// (fw/fw_raise.h) and, where the system's kind translates faults, registers the
// handler first in the chain.
void fw_faults_start();
// Called by the teardown: frees the slot, removes the handler, frees the library.
void fw_faults_stop();

// The handler itself, as registered. Returns 0 (continue the search) for anything it
// leaves alone, -1 (continue execution) after it has set the thread on the way to
// the throw.
long __stdcall fw_fault_vector(_EXCEPTION_POINTERS* pointers);

// The text of a fault, by the code and parameters of its exception record; empty for
// a code that is none of the layer's business.
//
//   0xC0000005, parameters {1, a}    "attempt to write at 0x%{1}08X" with a
//   0xC0000005, parameters {0, a}    "attempt to read at 0x%{1}08X" with a
//   0xC0000005, otherwise            "access violation"
//   0x80000002  "datatype misalignment"     0xC0000092  "FPU stack check"
//   0x80000003  "breakpoint"                0xC0000093  "FPU underflow"
//   0x80000004  "single step"               0xC0000094  "integer divide by 0"
//   0xC000008C  "array bounds exceed"       0xC0000095  "integer overflow"
//   0xC000008D  "FPU denormal operand"      0xC0000096  "privileged instruction"
//   0xC000008E  "FPU divide by 0"           0xC0000006  "in page error"
//   0xC000008F  "FPU inexact result"        0xC000001D  "illegal instruction"
//   0xC0000090  "PPU invalid operation"     0xC0000025  "noncontinuable exception"
//   0xC0000091  "FPU overflow"              0xC00000FD  "stack overflow"
//   0x80000001  "guard page"                0xC0000026  "invalid disposition"
//   0xC0000008  "invalid handle"            anything else: ""
//
// The handler itself leaves breakpoints (0x80000003) and unwinding (0xC0000027)
// alone although the first has a text.
fw_string fw_fault_text(uint32_t code, uint32_t parameterCount, const uintptr_t* parameters);

// One fault as the handlers saw it: its row in the table above, the address that
// the text names, and the faulting instruction.
struct fw_fault
{
    int row;
    uintptr_t address;
    uintptr_t instruction;
};

// True, with the fault filled in, when the exception is a fault that the layer
// translates: a record with a code that has a text, not a breakpoint or unwinding.
bool fw_fault_of(const _EXCEPTION_POINTERS* pointers, fw_fault& fault);
// The exception of a fault, not yet raised: its text, the location of the layer's
// fault handling, and the dump of the frames from `faultFrame` (the faulting code's
// frame pointer) upward.
fw_exception_assert* fw_fault_exception(const fw_fault& fault, const void* faultFrame);
// True when an instruction lies in this module's image, where the unwinder can
// follow a throw.
bool fw_fault_in_this_module(uintptr_t instruction);

// The architecture's half (fw_faults_x86.cpp, fw_faults_x64.cpp).
// The faulting instruction of a context.
uintptr_t fw_fault_instruction(const _CONTEXT& context);
// Rewrites the context of a translated fault in this module so that the thread,
// when it resumes, raises and throws the fault's exception as if the faulting
// instruction had called a function that throws.
void fw_fault_redirect(_CONTEXT& context, const fw_fault& fault);
