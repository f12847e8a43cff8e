// A stack dump of return addresses as text, for FW exceptions and fault reports. No
// symbols: the module that holds the first address, its base, and one address a line.
//
//   Stack dump:\r\n
//   Module: WixKorvalin.dll\r\n
//   Base: 6E940000\r\n
//   6E941A2C\r\n
//   6E94213F\r\n
//   ...
//
// An address has as many digits as a pointer: 8 on x86, 16 on x86-64.
//
// How the frames are found depends on the processor. On x86 the walk follows the
// chain of saved frame pointers, so frames of code built without frame pointers are
// skipped or end the chain early (the FW layer is built with them); a frame record is
// a saved frame pointer with the return address behind it. On x86-64 it follows each
// function's unwind data, as the system's unwinder does. Either walk ends at a return
// address below 0x400000, at a frame that is not above the one before it, and at a
// frame outside this thread's stack; it never faults and never loops.
//
// The module name goes through one static buffer without a lock: two threads dumping
// at once may see each other's name.
#pragma once
#include "fw/fw_string.h"

#include <cstdint>

// `frame` null means the frame of the function that calls this one, so the first
// address is where that function returns to. Otherwise it names another function's
// frame in the processor's terms, and the first address is where that function
// returns to: on x86 its frame record, on x86-64 a CONTEXT of the thread in it
// (as the fault handling has; the walk needs the registers that frames restore).
fw_string fw_stack_dump(const void* frame);

// The parts of the text, shared by the walks of both architectures: the module and
// base lines of the module that holds an address, one address line, and the whole
// text around the lines.
const uintptr_t fw_stack_dump_lowest_code = 0x400000;
void fw_stack_dump_module(fw_string& text, uintptr_t address);
void fw_stack_dump_line(fw_string& text, uintptr_t returnAddress);
fw_string fw_stack_dump_text(const fw_string& lines);
