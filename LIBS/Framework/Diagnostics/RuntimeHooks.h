// The C runtime's hooks as this module reaches them. The runtime is msvcrt.dll as
// mingw-w64 links it, and under Wine that library lacks several of the hooks that
// later runtimes export, so each is reached in the real way that exists:
//
//   pure virtual call      the compiler calls __cxa_pure_virtual, which this module
//                          brings (fw/fw_purecall.h): no runtime hook is involved
//   invalid parameter      msvcrt has no _set_invalid_parameter_handler (mingw-w64's
//                          stand-in stores a handler that msvcrt never calls), but
//                          every check in msvcrt ends in its exported
//                          _invalid_parameter: its entry is redirected to the handler
//   allocation failure     _set_new_handler and _set_new_mode exist under their C++
//                          export names only (which differ by processor), and are
//                          looked up by those
//   abort behaviour        no _set_abort_behavior. The error mode of _set_error_mode
//                          (Crt.cpp sets _OUT_TO_STDERR) sends msvcrt's reports, those
//                          of abort and of a failed assertion, to the console and the
//                          standard error stream instead of a box, which would hang an
//                          unattended installation; a program of the windows subsystem
//                          that has neither, such as the installer's host, says
//                          nothing. silentAbort() is abort without even that line
//
// A handler that msvcrt calls runs on top of msvcrt's frames. On x86 this module's
// unwinder knows only its own unwind tables, and an exception thrown there would end
// in terminate, so the installation also registers msvcrt's own .eh_frame section
// with it; on x86-64 the system's unwinder, which reads every module's unwind data,
// needs nothing. Either way a handler's exception reaches the caller of the runtime
// function, with every destructor on the way run (RuntimeImage.h has the processor's
// parts: these tables, the jump of the redirect, the export names).
//
// Everything installed is taken back when the module unloads: the redirect points
// into this module's code. Several modules that link this layer (a program and the
// library it loads) each redirect the entry; the last one wins, and each takes back
// only its own jump, putting back the bytes of msvcrt's file, so no order of
// unloading leaves a jump into a module that is gone.
#pragma once
#include <cstddef>
#include <cstdint>

namespace Framework { namespace RuntimeHooks {

using InvalidParameterHandler = void(__cdecl*)(const wchar_t* expression, const wchar_t* function,
                                               const wchar_t* file, unsigned line, uintptr_t reserved);
using NewHandler = int(__cdecl*)(size_t size);

// Registers msvcrt's unwind tables, once; false when they can't be found.
bool enableUnwindingThroughRuntime();
// Null takes the redirect away. False when msvcrt's entry can't be changed.
bool setInvalidParameterHandler(InvalidParameterHandler handler);
// The runtime's own slot, for malloc in new mode 1; returns the handler before.
NewHandler setRuntimeNewHandler(NewHandler handler);
int setRuntimeNewMode(int mode);
// What abort does, without the message: SIGABRT's handler, then exit code 3.
[[noreturn]] void silentAbort();

}}  // namespace Framework::RuntimeHooks
