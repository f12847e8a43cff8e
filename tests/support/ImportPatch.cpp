#include "support/ImportPatch.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace {

void writeSlot(void** slot, void* value)
{
    DWORD old = 0;
    if (!VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &old))
        throw std::runtime_error("an import slot can't be written");
    *slot = value;
    VirtualProtect(slot, sizeof *slot, old, &old);
}

// The import table entry of `function` from `dll` in the module's image, or null.
void** findSlot(HMODULE module, const char* dll, const char* function)
{
    auto* base = reinterpret_cast<BYTE*>(module ? module : GetModuleHandleW(nullptr));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* nt = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const DWORD imports = nt->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports); entry->Name != 0; ++entry) {
        if (_stricmp(reinterpret_cast<const char*>(base + entry->Name), dll) != 0)
            continue;
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + entry->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + entry->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++slots) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal))
                continue;
            const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function) == 0)
                return reinterpret_cast<void**>(&slots->u1.Function);
        }
    }
    return nullptr;
}

}  // namespace

ImportPatch::ImportPatch(const char* dll, const char* function, void* standIn, HMODULE module)
    : slot(findSlot(module, dll, function)), saved(nullptr)
{
    if (!slot)
        throw std::runtime_error(std::string("the module does not import ") + function + " from " + dll);
    saved = *slot;
    writeSlot(slot, standIn);
}

ImportPatch::~ImportPatch()
{
    writeSlot(slot, saved);
}
