#include "Framework/Diagnostics/StackDump.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/Path.h"

#include <windows.h>
#include <imagehlp.h>

#include <algorithm>
#include <cstring>
#include <tlhelp32.h>

namespace Framework {

namespace {

const uint32_t maximumAddresses = 100;
const DWORD allAccess = 0x1F0FFF;

// Every imagehlp call, and the one-time preparation, run under this lock: imagehlp
// is not made for several threads.
class StackWalkLock
{
public:
    StackWalkLock() { InitializeCriticalSection(&section); }
    ~StackWalkLock() { DeleteCriticalSection(&section); }
    void enter() { EnterCriticalSection(&section); }
    void leave() { LeaveCriticalSection(&section); }

private:
    CRITICAL_SECTION section;
};

StackWalkLock stackWalkLock;
bool symbolsPrepared = false;
bool symbolsReady = false;
HANDLE symbolProcess = nullptr;
// Written outside the lock: two threads that dump at once may mix their module lines.
wchar_t moduleName[2046];

class Locked
{
public:
    Locked() { stackWalkLock.enter(); }
    ~Locked() { stackWalkLock.leave(); }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
};

// A real handle for the pseudo handle of GetCurrentProcess, for every imagehlp call.
HANDLE realHandle(HANDLE pseudo)
{
    HANDLE handle = nullptr;
    if (!DuplicateHandle(GetCurrentProcess(), pseudo, GetCurrentProcess(), &handle, allAccess, FALSE, 0) ||
        !handle)
        throw new ValueNotInitializedException(SITE);
    return handle;
}

// Where the platform can't invade the process (Wine's wow64 mode refuses it), the
// modules that are loaded now are given to imagehlp one by one; the outcome is the same.
bool initializeModuleByModule(const char* searchPath)
{
    if (!SymInitialize(symbolProcess, const_cast<char*>(searchPath), FALSE))
        return false;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return true;
    MODULEENTRY32 entry;
    entry.dwSize = sizeof entry;
    for (BOOL more = Module32First(snapshot, &entry); more; more = Module32Next(snapshot, &entry))
        SymLoadModule(symbolProcess, nullptr, entry.szExePath, entry.szModule,
                      DWORD(reinterpret_cast<uintptr_t>(entry.modBaseAddr)), entry.modBaseSize);
    CloseHandle(snapshot);
    return true;
}

// Symbols are looked for only when a .pdb stands beside the main program.
void prepareSymbols()
{
    // Set first: an exception raised in here builds a dump of its own, which must not
    // prepare again.
    symbolsPrepared = true;
    ImagehlpApiVersion();
    symbolProcess = realHandle(GetCurrentProcess());
    Io::Path pdb(Io::FileSystem::moduleFileName(), false);
    pdb.setExtension(L".pdb");
    if (!pdb.exists())
        return;
    SymSetOptions(SYMOPT_UNDNAME | SYMOPT_LOAD_LINES);
    // With the drive: a path without one would be looked for on the working drive.
    const AnsiString searchPath(pdb.rootAndFolder());
    symbolsReady = SymInitialize(symbolProcess, const_cast<char*>(searchPath.c_str()), TRUE) ||
                   initializeModuleByModule(searchPath.c_str());
}

// The walk reads only this process's own stack. The platform's own reader goes
// through the process handle, which under Wine is a round trip to its server for
// every read and made a dump cost a third of a second; a page that isn't readable
// fails the read, as it would there.
BOOL CALLBACK readOwnMemory(HANDLE, DWORD address, void* buffer, DWORD size, DWORD* copied)
{
    const char* const from = reinterpret_cast<const char*>(uintptr_t(address));
    MEMORY_BASIC_INFORMATION region;
    if (!VirtualQuery(from, &region, sizeof region) || region.State != MEM_COMMIT ||
        (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) || region.Protect == 0 ||
        from + size > static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        return FALSE;
    std::memcpy(buffer, from, size);
    if (copied)
        *copied = size;
    return TRUE;
}

String placeOf(DWORD address)
{
    IMAGEHLP_LINE line = {};
    line.SizeOfStruct = 20;
    DWORD displacement = 0;
    if (!SymGetLineFromAddr(symbolProcess, address, &displacement, &line) || !line.FileName)
        return String();
    const Io::Path source(String(line.FileName), false);
    return String::format(L"%S:%d", source.nameAndExtension().c_str(), int(line.LineNumber));
}

String symbolOf(DWORD address)
{
    union {
        IMAGEHLP_SYMBOL symbol;
        char space[sizeof(IMAGEHLP_SYMBOL) + 2048];
    } buffer = {};
    buffer.symbol.SizeOfStruct = 24;
    buffer.symbol.MaxNameLength = 2048;
    DWORD displacement = 0;
    if (!SymGetSymFromAddr(symbolProcess, address, &displacement, &buffer.symbol))
        return String();
    String text(buffer.symbol.Name);
    if (displacement != 0)
        text += String::format(L"+0x%X", unsigned(displacement));
    return text;
}

}  // namespace

__attribute__((noinline)) void currentFrame(uint32_t& instruction, uint32_t& frame, uint32_t& stack)
{
    // Our own frame: the caller's frame pointer, then the return address into it.
    void* const* const own = static_cast<void* const*>(__builtin_frame_address(0));
    instruction = uint32_t(reinterpret_cast<uintptr_t>(own[1]));
    frame = uint32_t(reinterpret_cast<uintptr_t>(own[0]));
    stack = uint32_t(reinterpret_cast<uintptr_t>(own + 2));
}

String stackDump(const _CONTEXT* given)
{
    // StackWalk changes the context it walks.
    CONTEXT context;
    if (given) {
        context = *given;
    } else {
        ZeroMemory(&context, sizeof context);
        uint32_t instruction, frame, stack;
        currentFrame(instruction, frame, stack);
        context.Eip = instruction;
        context.Ebp = frame;
        context.Esp = stack;
    }

    Array<uint32_t> addresses;
    Array<String> places;
    Array<String> symbols;
    uint32_t placeWidth = 0;
    {
        Locked locked;
        if (!symbolsPrepared)
            prepareSymbols();
        // The walk runs on the thread it walks, where the pseudo handle names it; a
        // duplicate made and closed for each dump cost two round trips to Wine's server.
        const HANDLE thread = GetCurrentThread();
        STACKFRAME frame = {};
        frame.AddrPC.Offset = context.Eip;
        frame.AddrFrame.Offset = context.Ebp;
        frame.AddrStack.Offset = context.Esp;
        frame.AddrPC.Mode = frame.AddrFrame.Mode = frame.AddrStack.Mode = AddrModeFlat;
        addresses.add(context.Eip);
        while (StackWalk(IMAGE_FILE_MACHINE_I386, symbolProcess, thread, &frame, &context, readOwnMemory,
                         SymFunctionTableAccess, SymGetModuleBase, nullptr)) {
            const uint32_t returnAddress = frame.AddrReturn.Offset;
            if (addresses.size() > maximumAddresses || returnAddress == addresses.at(addresses.size() - 1))
                break;
            // A frame that returns to 0 is passed over; the walk goes on.
            if (returnAddress != 0)
                addresses.add(returnAddress);
        }
        if (symbolsReady) {
            for (uint32_t i = 0; i < addresses.size(); ++i) {
                places.add(placeOf(addresses.at(i)));
                placeWidth = std::max(placeWidth, places.at(i).length());
                symbols.add(symbolOf(addresses.at(i)));
            }
        }
    }

    String text(L"Stack dump:\r\n");
    HMODULE module = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<const char*>(uintptr_t(addresses.at(0))), &module)) {
        const DWORD length = GetModuleFileNameW(module, moduleName, sizeof moduleName / sizeof moduleName[0]);
        const Io::Path path(String(moduleName, length), false);
        text += String::format(L"Module: %S\r\n", path.nameAndExtension().c_str());
        text += String::format(L"Base: %08X\r\n", unsigned(reinterpret_cast<uintptr_t>(module)));
    }
    for (uint32_t i = 0; i < addresses.size(); ++i) {
        text += String::format(L"%08X", unsigned(addresses.at(i)));
        if (symbolsReady) {
            const String& place = places.at(i);
            const String& symbol = symbols.at(i);
            if (placeWidth != 0 && !(place.empty() && symbol.empty()))
                text += String(L" ") + place;
            if (!symbol.empty()) {
                for (uint32_t pad = placeWidth - place.length() + 1; pad > 0; --pad)
                    text += L' ';
                text += symbol;
            }
        }
        text += String(L"\r\n");
    }
    return text;
}

}  // namespace Framework
