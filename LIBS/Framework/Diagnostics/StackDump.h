// The text of a thread's stack that every Framework exception carries: a head of
// "Stack dump:", the module of the first address and its base, then one return
// address a line, walked with the platform's StackWalk. When a .pdb stands beside
// the main program, each line also gets its source place and symbol, the symbols
// in one column:
//
//   Stack dump:
//   Module: probe.exe
//   Base: 00400000
//   00401A2B StackDump.cpp:212 Framework::stackDump+0x4B
//   00401C10                   inner()+0x1F
//
// The walk ends with the first frame it can't take, the same address twice in a row,
// or beyond 100 addresses. Nothing here fails: a dump with less in it is still a dump.
// An address has as many digits as a pointer: 8 on x86, 16 on x86-64. On x86 the walk
// follows frame pointers, on x86-64 each function's unwind data.
#pragma once
#include "Framework/String.h"

#include <cstdint>

struct _CONTEXT;

namespace Framework {

// The stack from a processor context (left unchanged), or from the present point
// when context is null.
String stackDump(const _CONTEXT* context);

}  // namespace Framework
