#include "Framework/Diagnostics/RuntimeHooks.h"

#include "Framework/Diagnostics/RuntimeImage.h"

#include <windows.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Framework { namespace RuntimeHooks {

namespace {

HMODULE runtime() { return GetModuleHandleW(L"msvcrt.dll"); }

struct Redirect
{
    unsigned char* entry = nullptr;
    // The entry's bytes as msvcrt's file has them: what goes back at unload.
    unsigned char original[RuntimeImage::jumpRoom] = {};
    bool haveOriginal = false;
    unsigned char jump[RuntimeImage::jumpRoom] = {};
};
Redirect invalidParameterRedirect;

// The bytes at an address of a loaded module, as its file on disk has them. Another
// module may have redirected the entry too, so the bytes in memory aren't trusted.
bool fileBytes(HMODULE module, const unsigned char* at, unsigned char* out, size_t count)
{
    const IMAGE_NT_HEADERS* headers = RuntimeImage::headers(module);
    const uint32_t rva = uint32_t(at - reinterpret_cast<const unsigned char*>(module));
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    for (unsigned i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
        if (rva >= section[i].VirtualAddress && rva + count <= section[i].VirtualAddress + section[i].SizeOfRawData)
            return RuntimeImage::readFile(module, long(section[i].PointerToRawData + (rva - section[i].VirtualAddress)), out, count);
    }
    return false;
}

bool writeCode(unsigned char* at, const unsigned char* bytes)
{
    const size_t length = RuntimeImage::jumpLength;
    DWORD old = 0;
    if (!VirtualProtect(at, length, PAGE_EXECUTE_READWRITE, &old))
        return false;
    std::memcpy(at, bytes, length);
    VirtualProtect(at, length, old, &old);
    FlushInstructionCache(GetCurrentProcess(), at, length);
    return true;
}

// Puts msvcrt back as it was when this module goes: the redirect leads into code
// that is about to be unmapped, and the unwinder with its tables goes too.
struct UnloadGuard
{
    ~UnloadGuard()
    {
        setInvalidParameterHandler(nullptr);
        RuntimeImage::forgetUnwindTables();
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
    const HMODULE module = runtime();
    return module && RuntimeImage::registerUnwindTables(module);
}

bool setInvalidParameterHandler(InvalidParameterHandler handler)
{
    Redirect& redirect = invalidParameterRedirect;
    if (!handler) {
        // Only our own jump goes: one that another module put there since is that
        // module's to take back.
        if (redirect.entry && std::memcmp(redirect.entry, redirect.jump, RuntimeImage::jumpLength) == 0 &&
            redirect.haveOriginal)
            return writeCode(redirect.entry, redirect.original);
        return true;
    }
    if (!redirect.entry) {
        redirect.entry = runtimeFunction<unsigned char*>("_invalid_parameter");
        if (!redirect.entry)
            return false;
        redirect.haveOriginal = fileBytes(runtime(), redirect.entry, redirect.original, RuntimeImage::jumpLength);
        if (!redirect.haveOriginal)
            return false;
    }
    // A jump to the handler: it takes _invalid_parameter's arguments as they are.
    RuntimeImage::makeJump(redirect.jump, redirect.entry, reinterpret_cast<const void*>(handler));
    return writeCode(redirect.entry, redirect.jump);
}

NewHandler setRuntimeNewHandler(NewHandler handler)
{
    using Setter = NewHandler(__cdecl*)(NewHandler);
    const Setter set = runtimeFunction<Setter>(RuntimeImage::newHandlerSetter);
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
