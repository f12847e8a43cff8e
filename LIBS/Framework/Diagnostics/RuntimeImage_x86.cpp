// msvcrt on 32-bit x86. Its code carries DWARF unwind tables (.eh_frame), which this
// module's statically linked unwinder doesn't know: a handler's exception thrown on
// top of msvcrt's frames would end in terminate. Registering msvcrt's .eh_frame with
// this module's unwinder lets it through, with every destructor on the way run.
#include "Framework/Diagnostics/RuntimeImage.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" void __register_frame_info(const void* begin, void* object);
extern "C" void* __deregister_frame_info(const void* begin);

namespace Framework { namespace RuntimeImage {

namespace {

// The unwinder's record of a registered table: opaque, a few words.
void* frameObject[16];
const void* registeredFrames = nullptr;

// A section's name longer than eight bytes is "/offset" into the string table, which
// lives in the file on disk only.
bool sectionIs(HMODULE module, const IMAGE_SECTION_HEADER& section, const char* wanted)
{
    char name[16] = {};
    std::memcpy(name, section.Name, 8);
    if (name[0] == '/') {
        const IMAGE_FILE_HEADER& file = headers(module)->FileHeader;
        const long strings = long(file.PointerToSymbolTable + file.NumberOfSymbols * 18);
        if (!readFile(module, strings + std::atol(name + 1), name, std::strlen(wanted) + 1))
            return false;
    }
    return std::strcmp(name, wanted) == 0;
}

}  // namespace

const size_t jumpLength = 5;

void makeJump(unsigned char* out, const unsigned char* at, const void* target)
{
    // jmp rel32
    out[0] = 0xE9;
    const int32_t distance = int32_t(reinterpret_cast<uintptr_t>(target) - reinterpret_cast<uintptr_t>(at + 5));
    std::memcpy(out + 1, &distance, 4);
}

const char* const newHandlerSetter = "?_set_new_handler@@YAP6AHI@ZP6AHI@Z@Z";

bool registerUnwindTables(HMODULE runtime)
{
    if (registeredFrames)
        return true;
    const IMAGE_NT_HEADERS* image = headers(runtime);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(image);
    for (unsigned i = 0; i < image->FileHeader.NumberOfSections; ++i) {
        if (sectionIs(runtime, section[i], ".eh_frame")) {
            registeredFrames = reinterpret_cast<const char*>(runtime) + section[i].VirtualAddress;
            __register_frame_info(registeredFrames, frameObject);
            return true;
        }
    }
    return false;
}

void forgetUnwindTables()
{
    if (registeredFrames)
        __deregister_frame_info(registeredFrames);
    registeredFrames = nullptr;
}

}}  // namespace Framework::RuntimeImage
