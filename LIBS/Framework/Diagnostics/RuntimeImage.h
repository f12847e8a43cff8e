// What the runtime hooks (RuntimeHooks.h) need to know of msvcrt's loaded image and
// of the processor: the image's headers and file, the jump that redirects an entry,
// the export name of the allocation-handler setter, and whether this module's
// unwinder must be told of msvcrt's unwind tables. The processor's parts live in
// RuntimeImage_x86.cpp and RuntimeImage_x64.cpp.
#pragma once
#include <windows.h>

#include <cstddef>

namespace Framework { namespace RuntimeImage {

const IMAGE_NT_HEADERS* headers(HMODULE module);
// Bytes of a loaded module's file on disk, from an offset in the file: what the image
// in memory lacks (the string table of section names) or may have changed.
bool readFile(HMODULE module, long offset, void* out, size_t count);

// The bytes that a redirect writes over an entry: a jump from `at` to `target`,
// `jumpLength` bytes long (at most `jumpRoom`).
const size_t jumpRoom = 16;
extern const size_t jumpLength;
void makeJump(unsigned char* out, const unsigned char* at, const void* target);

// msvcrt's export of _set_new_handler: its C++ name, which differs by processor.
extern const char* const newHandlerSetter;

// Makes a throw from a handler that msvcrt calls reach this module's catch: true
// when it can (or needs nothing). Forgotten again when the module unloads.
bool registerUnwindTables(HMODULE runtime);
void forgetUnwindTables();

}}  // namespace Framework::RuntimeImage
