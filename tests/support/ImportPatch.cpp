#include "support/ImportPatch.h"

#include <stdexcept>
#include <string>

namespace {

// Writes the slot, which the loader leaves read-only; whether it could.
bool writeSlot(void** slot, void* value)
{
    DWORD old = 0;
    if (!VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &old))
        return false;
    *slot = value;
    return VirtualProtect(slot, sizeof *slot, old, &old) != 0;
}

// The slot of the module's import address table that holds `function` of `dll`, as
// the loader filled it in (forwarded exports resolved), or null.
void** findSlot(HMODULE module, const char* dll, const char* function)
{
    auto* base = reinterpret_cast<BYTE*>(module ? module : GetModuleHandleW(nullptr));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& table = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IAT];
    const HMODULE exporter = GetModuleHandleA(dll);
    void* const real = exporter ? reinterpret_cast<void*>(GetProcAddress(exporter, function)) : nullptr;
    auto** slots = reinterpret_cast<void**>(base + table.VirtualAddress);
    for (size_t i = 0; real && i < table.Size / sizeof(void*); ++i)
        if (slots[i] == real)
            return &slots[i];
    return nullptr;
}

}  // namespace

ImportPatch::ImportPatch(const char* dll, const char* function, void* standIn, HMODULE module)
    : slot(findSlot(module, dll, function)), saved(nullptr)
{
    if (!slot)
        throw std::runtime_error(std::string("the module does not import ") + function + " from " + dll);
    saved = *slot;
    if (!writeSlot(slot, standIn))
        throw std::runtime_error(std::string("the import slot of ") + function + " can't be written");
}

ImportPatch::~ImportPatch()
{
    writeSlot(slot, saved);
}
