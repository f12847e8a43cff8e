#include "Framework/Diagnostics/StackDump.h"

#include "Framework/Diagnostics/StackFrames.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/Path.h"

#include <windows.h>
#include <imagehlp.h>

#include <algorithm>
#include <cstring>
#include <tlhelp32.h>
#include <unordered_map>

namespace Framework {

namespace {

const uint32_t maximumAddresses = 100;
// Addresses take all the digits of a pointer: 8 on x86, 16 on x86-64.
const bool wide = sizeof(void*) == 8;
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
        StackFrames::loadModule(symbolProcess, entry.szExePath, entry.szModule,
                              uint64_t(reinterpret_cast<uintptr_t>(entry.modBaseAddr)), entry.modBaseSize);
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

// Each symbol look-up costs some microseconds under Wine, and a program's exceptions
// come from the same few places again and again: the answers are kept, each with the
// module it was found in, known by its base, size and time stamp, so that an address
// in a module loaded where another one was is asked anew. At most a few thousand;
// then they start afresh.
struct KnownPlace
{
    uintptr_t moduleBase;
    uint32_t moduleSize;
    uint32_t moduleStamp;
    String place;
    String symbol;
};

std::unordered_map<uint64_t, KnownPlace> knownPlaces;
const size_t knownPlacesLimit = 4096;

// The module's identity as its own headers give it; false for an address in no module.
bool moduleOf(uint64_t address, KnownPlace& known)
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<const char*>(uintptr_t(address)), &module) ||
        !module)
        return false;
    const uintptr_t base = reinterpret_cast<uintptr_t>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    known.moduleBase = base;
    known.moduleSize = headers->OptionalHeader.SizeOfImage;
    known.moduleStamp = headers->FileHeader.TimeDateStamp;
    return true;
}

// The place and symbol of an address, from what is known or from imagehlp.
const KnownPlace& placeAndSymbol(uint64_t address, KnownPlace& scratch)
{
    const bool inModule = moduleOf(address, scratch);
    if (inModule) {
        const auto found = knownPlaces.find(address);
        if (found != knownPlaces.end() && found->second.moduleBase == scratch.moduleBase &&
            found->second.moduleSize == scratch.moduleSize && found->second.moduleStamp == scratch.moduleStamp)
            return found->second;
    }
    scratch.place = StackFrames::placeOf(symbolProcess, address);
    scratch.symbol = StackFrames::symbolOf(symbolProcess, address);
    if (!inModule)
        return scratch;
    if (knownPlaces.size() >= knownPlacesLimit)
        knownPlaces.clear();
    return knownPlaces[address] = scratch;
}

}  // namespace

bool StackFrames::readOwnMemory(uint64_t address, void* buffer, uint32_t size)
{
    const char* const from = reinterpret_cast<const char*>(uintptr_t(address));
    MEMORY_BASIC_INFORMATION region;
    if (!VirtualQuery(from, &region, sizeof region) || region.State != MEM_COMMIT ||
        (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) || region.Protect == 0 ||
        from + size > static_cast<const char*>(region.BaseAddress) + region.RegionSize)
        return false;
    std::memcpy(buffer, from, size);
    return true;
}

String stackDump(const _CONTEXT* given)
{
    // StackWalk changes the context it walks.
    CONTEXT context;
    if (given) {
        context = *given;
    } else {
        StackFrames::presentContext(context);
    }

    Array<uint64_t> addresses;
    Array<String> places;
    Array<String> symbols;
    uint32_t placeWidth = 0;
    {
        Locked locked;
        if (!symbolsPrepared)
            prepareSymbols();
        // The walk runs on the thread it walks, where the pseudo handle names it; a
        // duplicate made and closed for each dump cost two round trips to Wine's server.
        StackFrames::walk(symbolProcess, context, addresses, maximumAddresses);
        if (symbolsReady) {
            for (uint32_t i = 0; i < addresses.size(); ++i) {
                KnownPlace scratch;
                const KnownPlace& known = placeAndSymbol(addresses.at(i), scratch);
                places.add(known.place);
                placeWidth = std::max(placeWidth, places.at(i).length());
                symbols.add(known.symbol);
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
        text += String::format(wide ? L"Base: %016LX\r\n" : L"Base: %08LX\r\n",
                               uint64_t(reinterpret_cast<uintptr_t>(module)));
    }
    for (uint32_t i = 0; i < addresses.size(); ++i) {
        text += String::format(wide ? L"%016LX" : L"%08LX", addresses.at(i));
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
