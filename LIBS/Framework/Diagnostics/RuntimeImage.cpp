#include "Framework/Diagnostics/RuntimeImage.h"

#include <cstdio>

namespace Framework { namespace RuntimeImage {

const IMAGE_NT_HEADERS* headers(HMODULE module)
{
    const char* base = reinterpret_cast<const char*>(module);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
}

bool readFile(HMODULE module, long offset, void* out, size_t count)
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

}}  // namespace Framework::RuntimeImage
