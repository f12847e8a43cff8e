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

// A section's name longer than eight bytes is "/offset" into the string table, which
// lives in the file on disk only.
bool sectionIs(HMODULE module, const IMAGE_NT_HEADERS* headers, const IMAGE_SECTION_HEADER& section,
               const char* wanted)
{
    char name[16] = {};
    std::memcpy(name, section.Name, 8);
    if (name[0] == '/') {
        char path[MAX_PATH];
        if (!GetModuleFileNameA(module, path, MAX_PATH))
            return false;
        FILE* file = std::fopen(path, "rb");
        if (!file)
            return false;
        const long strings = long(headers->FileHeader.PointerToSymbolTable + headers->FileHeader.NumberOfSymbols * 18);
        const bool read = std::fseek(file, strings + std::atol(name + 1), SEEK_SET) == 0 &&
                          std::fread(name, 1, sizeof name - 1, file) > 0;
        std::fclose(file);
        if (!read)
            return false;
    }
    return std::strcmp(name, wanted) == 0;
}

struct Redirect
{
    unsigned char* entry = nullptr;
    unsigned char saved[5] = {};
    bool active = false;
};
Redirect invalidParameterRedirect;

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
    const char* base = reinterpret_cast<const char*>(module);
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (unsigned i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
        if (sectionIs(module, headers, section[i], ".eh_frame")) {
            registeredFrames = base + section[i].VirtualAddress;
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
        if (redirect.active && writeCode(redirect.entry, redirect.saved))
            redirect.active = false;
        return !redirect.active;
    }
    if (!redirect.entry) {
        redirect.entry = runtimeFunction<unsigned char*>("_invalid_parameter");
        if (!redirect.entry)
            return false;
        std::memcpy(redirect.saved, redirect.entry, 5);
    }
    // jmp rel32 to the handler: it takes _invalid_parameter's arguments as they are.
    unsigned char jump[5] = {0xE9};
    const int32_t distance = int32_t(reinterpret_cast<uintptr_t>(handler) - reinterpret_cast<uintptr_t>(redirect.entry + 5));
    std::memcpy(jump + 1, &distance, 4);
    if (!writeCode(redirect.entry, jump))
        return false;
    redirect.active = true;
    return true;
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
