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
// The walk follows the chain of saved frame pointers of 32-bit x86 code, so frames of
// code built without frame pointers are skipped or end the chain early; the FW layer
// is built with them. A frame record is a saved frame pointer with the return
// address behind it. The walk ends at a return address below 0x400000, at a frame
// that is not above the one before it, and at a frame outside this thread's stack;
// it never faults and never loops.
//
// The module name goes through one static buffer without a lock: two threads dumping
// at once may see each other's name.
#pragma once
#include "fw/fw_string.h"

// `frame` null means the frame record of the function that calls this one, so the
// first address is where that function returns to.
fw_string fw_stack_dump(const void* frame);
