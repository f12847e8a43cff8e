// The walk on x86-64: imagehlp's StackWalk64 for the AMD64 machine, which follows the
// unwind data of each function, and the symbol calls with 64-bit addresses.
#include "Framework/Diagnostics/StackFrames.h"

#include "Framework/Io/Path.h"

#include <imagehlp.h>


namespace Framework { namespace StackFrames {

namespace {

// The walk's reader (StackFrames.h says why directly).
BOOL CALLBACK readMemory(HANDLE, DWORD64 address, void* buffer, DWORD size, DWORD* copied)
{
    if (!readOwnMemory(address, buffer, size))
        return FALSE;
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
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const char*>(uintptr_t(address)), &module))
        return 0;
    return DWORD64(reinterpret_cast<uintptr_t>(module));
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
