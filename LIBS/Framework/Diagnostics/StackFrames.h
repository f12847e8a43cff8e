// The processor's half of the stack dump (StackDump.h): the walk over a context and
// the symbol look-ups, in imagehlp's forms for that processor. One file per
// architecture, StackFrames_x86.cpp and StackFrames_x64.cpp; every call here is made under
// the dump's lock.
#pragma once
#include "Framework/Array.h"
#include "Framework/String.h"

#include <windows.h>

#include <cstdint>

namespace Framework { namespace StackFrames {

// The context of the caller of the function that calls this one, at the point of
// the call: the first address of a dump from the present point.
void presentContext(CONTEXT& context);
// Adds the context's instruction, then the return address of each frame, until the
// walk fails, an address repeats, or more than `limit` are there. Changes `context`.
void walk(HANDLE process, CONTEXT& context, Array<uint64_t>& addresses, uint32_t limit);
// Gives imagehlp one loaded module, where it can't find them by itself.
void loadModule(HANDLE process, const char* path, const char* name, uint64_t base, uint32_t size);
// Copies from this process's own memory, as the walk's reader: directly, since under
// Wine the platform's reader is a round trip to its server for every read. A page
// that isn't readable fails the read, as it would there.
bool readOwnMemory(uint64_t address, void* buffer, uint32_t size);
// "File.cpp:12" and "symbol+0x1F", or "" where imagehlp knows none.
String placeOf(HANDLE process, uint64_t address);
String symbolOf(HANDLE process, uint64_t address);

}}  // namespace Framework::StackFrames
