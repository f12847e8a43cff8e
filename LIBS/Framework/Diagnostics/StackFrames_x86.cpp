// The walk on 32-bit x86: imagehlp's StackWalk along the frame pointers, and its
// symbol calls with 32-bit addresses.
#include "Framework/Diagnostics/StackFrames.h"

#include "Framework/Io/Path.h"

#include <imagehlp.h>


namespace Framework { namespace StackFrames {

namespace {

// The walk's reader (StackFrames.h says why directly).
BOOL CALLBACK readMemory(HANDLE, DWORD address, void* buffer, DWORD size, DWORD* copied)
{
    if (!readOwnMemory(address, buffer, size))
        return FALSE;
    if (copied)
        *copied = size;
    return TRUE;
}

}  // namespace

__attribute__((noinline)) void presentContext(CONTEXT& context)
{
    // Our own frame: the caller's frame pointer, then the return address into it.
    void* const* const own = static_cast<void* const*>(__builtin_frame_address(0));
    ZeroMemory(&context, sizeof context);
    context.Eip = DWORD(reinterpret_cast<uintptr_t>(own[1]));
    context.Ebp = DWORD(reinterpret_cast<uintptr_t>(own[0]));
    context.Esp = DWORD(reinterpret_cast<uintptr_t>(own + 2));
}

void walk(HANDLE process, CONTEXT& context, Array<uint64_t>& addresses, uint32_t limit)
{
    // The walk runs on the thread it walks, where the pseudo handle names it; a
    // duplicate made and closed for each dump cost two round trips to Wine's server.
    const HANDLE thread = GetCurrentThread();
    STACKFRAME frame = {};
    frame.AddrPC.Offset = context.Eip;
    frame.AddrFrame.Offset = context.Ebp;
    frame.AddrStack.Offset = context.Esp;
    frame.AddrPC.Mode = frame.AddrFrame.Mode = frame.AddrStack.Mode = AddrModeFlat;
    addresses.add(context.Eip);
    while (StackWalk(IMAGE_FILE_MACHINE_I386, process, thread, &frame, &context, readMemory,
                     SymFunctionTableAccess, SymGetModuleBase, nullptr)) {
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
    SymLoadModule(process, nullptr, const_cast<char*>(path), const_cast<char*>(name), DWORD(base), size);
}

String placeOf(HANDLE process, uint64_t address)
{
    IMAGEHLP_LINE line = {};
    line.SizeOfStruct = 20;
    DWORD displacement = 0;
    if (!SymGetLineFromAddr(process, DWORD(address), &displacement, &line) || !line.FileName)
        return String();
    const Io::Path source(String(line.FileName), false);
    return String::format(L"%S:%d", source.nameAndExtension().c_str(), int(line.LineNumber));
}

String symbolOf(HANDLE process, uint64_t address)
{
    union {
        IMAGEHLP_SYMBOL symbol;
        char space[sizeof(IMAGEHLP_SYMBOL) + 2048];
    } buffer = {};
    buffer.symbol.SizeOfStruct = 24;
    buffer.symbol.MaxNameLength = 2048;
    DWORD displacement = 0;
    if (!SymGetSymFromAddr(process, DWORD(address), &displacement, &buffer.symbol))
        return String();
    String text(buffer.symbol.Name);
    if (displacement != 0)
        text += String::format(L"+0x%X", unsigned(displacement));
    return text;
}

}}  // namespace Framework::StackFrames
