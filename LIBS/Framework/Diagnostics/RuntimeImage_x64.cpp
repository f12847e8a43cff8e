// msvcrt on x86-64. Every function there has unwind data in the image, which the
// system's unwinder (the one a throw goes through here) reads for any module: a
// handler's exception passes msvcrt's frames with nothing registered.
#include "Framework/Diagnostics/RuntimeImage.h"

#include <cstdint>
#include <cstring>

namespace Framework { namespace RuntimeImage {

// movabs rax, target; jmp rax. msvcrt may lie beyond the reach of a 32-bit
// displacement, and rax carries no argument in the calling convention.
const size_t jumpLength = 12;

void makeJump(unsigned char* out, const unsigned char*, const void* target)
{
    const uint64_t address = uint64_t(reinterpret_cast<uintptr_t>(target));
    out[0] = 0x48;
    out[1] = 0xB8;
    std::memcpy(out + 2, &address, 8);
    out[10] = 0xFF;
    out[11] = 0xE0;
}

const char* const newHandlerSetter = "?_set_new_handler@@YAP6AH_K@ZP6AH0@Z@Z";

bool registerUnwindTables(HMODULE)
{
    return true;
}

void forgetUnwindTables()
{
}

}}  // namespace Framework::RuntimeImage
