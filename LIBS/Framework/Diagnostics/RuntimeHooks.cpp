#include "Framework/Diagnostics/RuntimeHooks.h"

#include <windows.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" void __register_frame_info(const void* begin, void* object);
extern "C" void* __deregister_frame_info(const void* begin);

namespace Framework { namespace RuntimeHooks {

namespace {

HMODULE runtime() { return GetModuleHandleW(L"msvcrt.dll"); }

// The unwinder's record of a registered table: opaque, a few words.
void* frameObject[16];
const void* registeredFrames = nullptr;

const IMAGE_NT_HEADERS* imageHeaders(HMODULE module)
{
    const char* base = reinterpret_cast<const char*>(module);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
}

// Bytes of a loaded module's file on disk, from an offset in the file: what the image
// in memory lacks (the string table of section names) or may have changed.
bool readModuleFile(HMODULE module, long offset, void* out, size_t count)
{
    char path[MAX_PATH];
    if (!GetModuleFileNameA(module, path, MAX_PATH))
        return false;
    FILE* file = std::fopen(path, "rb");
    if (!file)
        return false;
    const bool read = std::fseek(file, offset, SEEK_SET) == 0 && std::fread(out, 1, count, file) == count;
    std::fclose(file);
    return read;
}

// A section's name longer than eight bytes is "/offset" into the string table, which
// lives in the file on disk only.
bool sectionIs(HMODULE module, const IMAGE_SECTION_HEADER& section, const char* wanted)
{
    char name[16] = {};
    std::memcpy(name, section.Name, 8);
    if (name[0] == '/') {
        const IMAGE_FILE_HEADER& file = imageHeaders(module)->FileHeader;
        const long strings = long(file.PointerToSymbolTable + file.NumberOfSymbols * 18);
        if (!readModuleFile(module, strings + std::atol(name + 1), name, std::strlen(wanted) + 1))
            return false;
    }
    return std::strcmp(name, wanted) == 0;
}

struct Redirect
{
    unsigned char* entry = nullptr;
    // The entry's bytes as msvcrt's file has them: what goes back at unload.
    unsigned char original[5] = {};
    bool haveOriginal = false;
    unsigned char jump[5] = {};
};
Redirect invalidParameterRedirect;

// The bytes at an address of a loaded module, as its file on disk has them. Another
// module may have redirected the entry too, so the bytes in memory aren't trusted.
bool fileBytes(HMODULE module, const unsigned char* at, unsigned char* out, size_t count)
{
    const IMAGE_NT_HEADERS* headers = imageHeaders(module);
    const uint32_t rva = uint32_t(at - reinterpret_cast<const unsigned char*>(module));
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (unsigned i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
        if (rva >= section[i].VirtualAddress && rva + count <= section[i].VirtualAddress + section[i].SizeOfRawData)
            return readModuleFile(module, long(section[i].PointerToRawData + (rva - section[i].VirtualAddress)), out, count);
    }
    return false;
}

bool writeCode(unsigned char* at, const unsigned char* bytes)
{
    DWORD old = 0;
    if (!VirtualProtect(at, 5, PAGE_EXECUTE_READWRITE, &old))
        return false;
    std::memcpy(at, bytes, 5);
    VirtualProtect(at, 5, old, &old);
    FlushInstructionCache(GetCurrentProcess(), at, 5);
    return true;
}

// Puts msvcrt back as it was when this module goes: the redirect leads into code
// that is about to be unmapped, and the unwinder with its tables goes too.
struct UnloadGuard
{
    ~UnloadGuard()
    {
        setInvalidParameterHandler(nullptr);
        if (registeredFrames)
            __deregister_frame_info(registeredFrames);
        registeredFrames = nullptr;
    }
} unloadGuard;

template <class Function>
Function runtimeFunction(const char* name)
{
    const HMODULE module = runtime();
    return module ? reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name))) : nullptr;
}

}  // namespace

bool enableUnwindingThroughRuntime()
{
    if (registeredFrames)
        return true;
    const HMODULE module = runtime();
    if (!module)
        return false;
    const IMAGE_NT_HEADERS* headers = imageHeaders(module);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (unsigned i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
        if (sectionIs(module, section[i], ".eh_frame")) {
            registeredFrames = reinterpret_cast<const char*>(module) + section[i].VirtualAddress;
            __register_frame_info(registeredFrames, frameObject);
            return true;
        }
    }
    return false;
}

bool setInvalidParameterHandler(InvalidParameterHandler handler)
{
    Redirect& redirect = invalidParameterRedirect;
    if (!handler) {
        // Only our own jump goes: one that another module put there since is that
        // module's to take back.
        if (redirect.entry && std::memcmp(redirect.entry, redirect.jump, 5) == 0 && redirect.haveOriginal)
            return writeCode(redirect.entry, redirect.original);
        return true;
    }
    if (!redirect.entry) {
        redirect.entry = runtimeFunction<unsigned char*>("_invalid_parameter");
        if (!redirect.entry)
            return false;
        redirect.haveOriginal = fileBytes(runtime(), redirect.entry, redirect.original, 5);
        if (!redirect.haveOriginal)
            return false;
    }
    // jmp rel32 to the handler: it takes _invalid_parameter's arguments as they are.
    redirect.jump[0] = 0xE9;
    const int32_t distance = int32_t(reinterpret_cast<uintptr_t>(handler) - reinterpret_cast<uintptr_t>(redirect.entry + 5));
    std::memcpy(redirect.jump + 1, &distance, 4);
    return writeCode(redirect.entry, redirect.jump);
}

NewHandler setRuntimeNewHandler(NewHandler handler)
{
    using Setter = NewHandler(__cdecl*)(NewHandler);
    const Setter set = runtimeFunction<Setter>("?_set_new_handler@@YAP6AHI@ZP6AHI@Z@Z");
    return set ? set(handler) : nullptr;
}

int setRuntimeNewMode(int mode)
{
    using Setter = int(__cdecl*)(int);
    const Setter set = runtimeFunction<Setter>("?_set_new_mode@@YAHH@Z");
    return set ? set(mode) : 0;
}

void silentAbort()
{
    std::raise(SIGABRT);
    _exit(3);
}

}}  // namespace Framework::RuntimeHooks
