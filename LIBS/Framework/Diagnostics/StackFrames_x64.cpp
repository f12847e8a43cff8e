// The walk on x86-64: imagehlp's StackWalk64 for the AMD64 machine, which follows the
// unwind data of each function, and the symbol calls with 64-bit addresses.
#include "Framework/Diagnostics/StackFrames.h"

#include "Framework/Io/Path.h"

#include <imagehlp.h>

#include <cstring>


namespace Framework { namespace StackFrames {

namespace {

// What one walk has learnt of memory and modules. The walk asks about the same few
// regions (the thread's stack, a handful of images) again and again, and under Wine
// each VirtualQuery and each module look-up is a call into the system. Kept for one
// walk only (walk() empties it), under the dump's lock like every call here.
struct Range
{
    uintptr_t begin;
    uintptr_t end;
};

template <uint32_t size>
class RangeCache
{
public:
    void clear() { count = 0; }
    // The range that holds [from, from + length), or null.
    const Range* find(uintptr_t from, uintptr_t length) const
    {
        for (uint32_t i = 0; i < count; ++i) {
            if (from >= ranges[i].begin && from + length <= ranges[i].end && from + length >= from)
                return &ranges[i];
        }
        return nullptr;
    }
    void add(uintptr_t begin, uintptr_t end)
    {
        ranges[count < size ? count++ : next++ % size] = Range{begin, end};
    }

private:
    Range ranges[size];
    uint32_t count = 0;
    uint32_t next = 0;
};

RangeCache<8> readableRegions;
RangeCache<8> moduleImages;

// The walk's reader: StackFrames.h's own-memory read, with what this walk has learnt
// of readable regions.
BOOL CALLBACK readMemory(HANDLE, DWORD64 address, void* buffer, DWORD size, DWORD* copied)
{
    const char* const from = reinterpret_cast<const char*>(uintptr_t(address));
    if (!readableRegions.find(uintptr_t(address), size)) {
        MEMORY_BASIC_INFORMATION region;
        if (!VirtualQuery(from, &region, sizeof region) || region.State != MEM_COMMIT ||
            (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) || region.Protect == 0 ||
            from + size > static_cast<const char*>(region.BaseAddress) + region.RegionSize)
            return FALSE;
        const uintptr_t begin = reinterpret_cast<uintptr_t>(region.BaseAddress);
        readableRegions.add(begin, begin + region.RegionSize);
    }
    std::memcpy(buffer, from, size);
    if (copied)
        *copied = size;
    return TRUE;
}

// The unwind data and module of an address, from the loader's own tables: imagehlp's
// versions know only the modules it was given, and without a .pdb it is given none.
void* CALLBACK functionTable(HANDLE, DWORD64 address)
{
    DWORD64 base = 0;
    return RtlLookupFunctionEntry(address, &base, nullptr);
}

DWORD64 CALLBACK moduleBase(HANDLE, DWORD64 address)
{
    if (const Range* image = moduleImages.find(uintptr_t(address), 1))
        return DWORD64(image->begin);
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const char*>(uintptr_t(address)), &module))
        return 0;
    // The module's image spans SizeOfImage bytes from its base, by its own headers.
    const uintptr_t base = reinterpret_cast<uintptr_t>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    moduleImages.add(base, base + headers->OptionalHeader.SizeOfImage);
    return DWORD64(base);
}

// One step up from a context, as the function at its instruction returns.
void unwindOnce(CONTEXT& context)
{
    DWORD64 base = 0;
    PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
    if (!function) {
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += 8;
        return;
    }
    void* handlerData = nullptr;
    DWORD64 establisher = 0;
    RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData, &establisher, nullptr);
}

}  // namespace

__attribute__((noinline)) void presentContext(CONTEXT& context)
{
    // Captured here, then one frame up: the caller at the point of its call.
    RtlCaptureContext(&context);
    unwindOnce(context);
}

void walk(HANDLE process, CONTEXT& context, Array<uint64_t>& addresses, uint32_t limit)
{
    readableRegions.clear();
    moduleImages.clear();
    const HANDLE thread = GetCurrentThread();
    STACKFRAME64 frame = {};
    frame.AddrPC.Offset = context.Rip;
    frame.AddrFrame.Offset = context.Rbp;
    frame.AddrStack.Offset = context.Rsp;
    frame.AddrPC.Mode = frame.AddrFrame.Mode = frame.AddrStack.Mode = AddrModeFlat;
    addresses.add(context.Rip);
    while (StackWalk64(IMAGE_FILE_MACHINE_AMD64, process, thread, &frame, &context, readMemory, functionTable,
                       moduleBase, nullptr)) {
        const uint64_t returnAddress = frame.AddrReturn.Offset;
        if (addresses.size() > limit || returnAddress == addresses.at(addresses.size() - 1))
            break;
        // A frame that returns to 0 is passed over; the walk goes on.
        if (returnAddress != 0)
            addresses.add(returnAddress);
    }
}

void loadModule(HANDLE process, const char* path, const char* name, uint64_t base, uint32_t size)
{
    SymLoadModule64(process, nullptr, path, name, base, size);
}

String placeOf(HANDLE process, uint64_t address)
{
    IMAGEHLP_LINE64 line = {};
    line.SizeOfStruct = sizeof line;
    DWORD displacement = 0;
    if (!SymGetLineFromAddr64(process, address, &displacement, &line) || !line.FileName)
        return String();
    const Io::Path source(String(line.FileName), false);
    return String::format(L"%S:%d", source.nameAndExtension().c_str(), int(line.LineNumber));
}

String symbolOf(HANDLE process, uint64_t address)
{
    union {
        IMAGEHLP_SYMBOL64 symbol;
        char space[sizeof(IMAGEHLP_SYMBOL64) + 2048];
    } buffer = {};
    buffer.symbol.SizeOfStruct = sizeof(IMAGEHLP_SYMBOL64);
    buffer.symbol.MaxNameLength = 2048;
    DWORD64 displacement = 0;
    if (!SymGetSymFromAddr64(process, address, &displacement, &buffer.symbol))
        return String();
    String text(buffer.symbol.Name);
    if (displacement != 0)
        text += String::format(L"+0x%LX", uint64_t(displacement));
    return text;
}

}}  // namespace Framework::StackFrames
