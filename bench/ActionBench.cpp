// One call of each action, the FW layer's bring-up and teardown included, against a
// raw twin: the same installer and registry calls written by hand, on the same
// session, 10,000 calls a side (five interleaved samples of 2,000).
//
//   SetProperties          the time, then MsiSetPropertyW
//   SetDomain              MsiGetPropertyW twice, the packed code, the machine's list
//                          found, both properties set
//   SetApplicationSize     two properties read, the number parsed, the entry opened,
//                          the REG_DWORD written, the key closed
//   SetEncaseKorvalinFlag  the key opened in the 32-bit view, the flag read (3: left)
//
// The twins skip what a hand-written action usually skips and the library does by
// design: the registry actions' flush on close, the existence checks before opening.
// A second row for each registry action times it against a twin that makes those
// calls too: the gap between the two rows is those round trips.
//
// Then memory: every call brings the FW layer up and takes it down, and whatever a
// call leaves behind adds up over 10,000 calls of SetProperties. Wine's engine keeps
// some memory for every value a property had, so the twin's calls, on a session of
// their own and with as many distinct values, are the anchor.
#include "bench/BenchClock.h"
#include "support/ActionLibrary.h"
#include "support/InstallerSession.h"

#include <windows.h>
#include <msiquery.h>

#include <algorithm>
#include <cstdlib>
#include <cwchar>
#include <string>
#include <vector>

using namespace bench;

namespace {

const wchar_t* const upgradeCode = L"{1776FDB0-CE3E-461A-A04C-7C4CE75F24D0}";
const wchar_t* const productCode = L"{5D2E7A31-9C44-4F0B-8E6A-2B1C3D4E5F60}";
const std::wstring machineList = L"Software\\Classes\\Installer\\UpgradeCodes\\";
const std::wstring userList = L"Software\\Microsoft\\Installer\\UpgradeCodes\\";
const std::wstring uninstallEntry = std::wstring(L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\") + productCode;
const wchar_t* const encaseKey = L"Software\\Guidance Software\\EnCase";

std::wstring property(MSIHANDLE session, const wchar_t* name)
{
    DWORD length = 0;
    wchar_t empty[1] = {0};
    MsiGetPropertyW(session, name, empty, &length);
    std::vector<wchar_t> text(length + 1);
    length += 1;
    MsiGetPropertyW(session, name, text.data(), &length);
    return std::wstring(text.data(), length);
}

// The installer's key name for a GUID: each group's digits reversed, the last two
// groups in pairs.
std::wstring pack(const std::wstring& code)
{
    static const int groups[][2] = {{1, 8}, {10, 4}, {15, 4}};
    std::wstring packed;
    for (const auto& group : groups)
        packed.append(code.rbegin() + long(code.size()) - group[0] - group[1], code.rbegin() + long(code.size()) - group[0]);
    for (size_t at : {20u, 22u, 25u, 27u, 29u, 31u, 33u, 35u}) {
        packed += code[at + 1];
        packed += code[at];
    }
    return packed;
}

void rawSetProperties(MSIHANDLE session)
{
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const unsigned long long ticks = (unsigned long long)now.dwHighDateTime << 32 | now.dwLowDateTime;
    wchar_t text[32];
    _snwprintf(text, 32, L"%I64u", (ticks - 116444736000000000ull) / 10000);
    MsiSetPropertyW(session, L"CURRENTTIMEMS", text);
}

void rawSetDomain(MSIHANDLE session)
{
    const std::wstring packed = pack(property(session, L"UpgradeCode"));
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, (machineList + packed).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key) ==
        ERROR_SUCCESS) {
        RegCloseKey(key);
        MsiSetPropertyW(session, L"ALLUSERS", L"1");
        MsiSetPropertyW(session, L"AllUsersDisabled", L"yes");
    } else if (RegOpenKeyExW(HKEY_CURRENT_USER, (userList + packed).c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &key) ==
               ERROR_SUCCESS) {
        RegCloseKey(key);
        MsiSetPropertyW(session, L"AllUsersDisabled", L"yes");
    }
}

void rawSetApplicationSize(MSIHANDLE session)
{
    const std::wstring size = property(session, L"ApplicationSize");
    const std::wstring code = property(session, L"ProductCode");
    wchar_t* end = nullptr;
    const DWORD value = DWORD(std::wcstoul(size.c_str(), &end, 10));
    if (*end)
        return;
    HKEY key = nullptr;
    const std::wstring path = L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + code;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS)
        return;
    RegSetValueExW(key, L"EstimatedSize", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    RegCloseKey(key);
}

void rawSetEncaseKorvalinFlag(MSIHANDLE)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, encaseKey, 0, KEY_READ | KEY_WOW64_32KEY, &key) != ERROR_SUCCESS)
        return;
    DWORD flag = 0, type = 0, size = sizeof flag;
    if (RegQueryValueExW(key, L"CheckKorvalin", nullptr, &type, reinterpret_cast<BYTE*>(&flag), &size) ==
            ERROR_SUCCESS &&
        type == REG_DWORD && (flag == 1 || flag == 2)) {
        HKEY writable = nullptr;
        if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, encaseKey, 0, KEY_SET_VALUE | KEY_WOW64_32KEY, &writable) ==
            ERROR_SUCCESS) {
            const DWORD zero = 0;
            RegSetValueExW(writable, L"CheckKorvalin", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&zero), sizeof zero);
            RegCloseKey(writable);
        }
    }
    RegCloseKey(key);
}

// Every committed private region of the address space, heaps and stacks among them
// (Wine reports no PrivateUsage).
size_t committedPrivateBytes()
{
    size_t total = 0;
    MEMORY_BASIC_INFORMATION region;
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) == sizeof region;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
        if (static_cast<const char*>(region.BaseAddress) + region.RegionSize < at)
            break;
    }
    return total;
}

// The growth of committed private memory over `calls` calls, after 100 to warm up.
template <class Call>
long long growthOver(int calls, Call call)
{
    for (int i = 0; i < 100; ++i)
        call();
    const size_t before = committedPrivateBytes();
    for (int i = 0; i < calls; ++i)
        call();
    return (long long)committedPrivateBytes() - (long long)before;
}

void memory(const ActionLibrary& dll)
{
    const int calls = 10000;
    InstallerSession twinSession;
    const long long twin = growthOver(calls, [&] { rawSetProperties(twinSession.handle()); });
    InstallerSession session;
    const ActionLibrary::Action setProperties = dll.action("SetProperties");
    const long long ours = growthOver(calls, [&] { setProperties(session.handle()); });
    char oursText[64], anchorText[96];
    std::snprintf(oursText, sizeof oursText, "ours %+lld KiB", ours / 1024);
    std::snprintf(anchorText, sizeof anchorText, "raw twin %+lld KiB", twin / 1024);
    // The twin may grow by nothing, so no quotient: the ratio column holds the bytes a
    // call leaves behind beyond the twin's (a leak of 50 bytes a call shows as 50).
    reportLine("memory, SetProperties (bytes/call over twin)", oursText, anchorText, double(ours - twin) / calls);
}

// The library's own twins: the raw twins' work with every registry call the registry
// classes make (an existence check opens and closes the key, a close flushes first,
// a value is asked for its type before it is read), in the library's order. Against
// them the ratio is what the layers themselves cost; against the raw twins it also
// holds those extra round trips to Wine's server.
const REGSAM readAccess = 0x20019;
const REGSAM writeAccess = 0x2001F;

bool hasSubKey(HKEY parent, const std::wstring& path, REGSAM view)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(parent, path.c_str(), 0, readAccess | view, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

void flushAndClose(HKEY key)
{
    RegFlushKey(key);
    RegCloseKey(key);
}

bool ownListHolds(HKEY root, const std::wstring& list, const std::wstring& packed)
{
    if (!hasSubKey(root, list, KEY_WOW64_64KEY))
        return false;
    HKEY key = nullptr;
    RegOpenKeyExW(root, list.c_str(), 0, readAccess | KEY_WOW64_64KEY, &key);
    const bool found = hasSubKey(key, packed, KEY_WOW64_64KEY);
    flushAndClose(key);
    return found;
}

void ownSetDomain(MSIHANDLE session)
{
    const std::wstring packed = pack(property(session, L"UpgradeCode"));
    const bool perMachine = ownListHolds(HKEY_LOCAL_MACHINE, machineList.substr(0, machineList.size() - 1), packed);
    const bool perUser = ownListHolds(HKEY_CURRENT_USER, userList.substr(0, userList.size() - 1), packed);
    if (perMachine)
        MsiSetPropertyW(session, L"ALLUSERS", L"1");
    if (perMachine || perUser)
        MsiSetPropertyW(session, L"AllUsersDisabled", L"yes");
    flushAndClose(HKEY_CURRENT_USER);
    flushAndClose(HKEY_LOCAL_MACHINE);
}

void ownSetApplicationSize(MSIHANDLE session)
{
    const std::wstring size = property(session, L"ApplicationSize");
    const std::wstring code = property(session, L"ProductCode");
    wchar_t path[200];
    _snwprintf(path, 200, L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\%s", code.c_str());
    wchar_t* end = nullptr;
    const DWORD value = DWORD(std::wcstoul(size.c_str(), &end, 10));
    if (*end || !hasSubKey(HKEY_LOCAL_MACHINE, path, 0))
        return;
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, writeAccess, &key);
    RegSetValueExW(key, L"EstimatedSize", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof value);
    flushAndClose(key);
    flushAndClose(HKEY_LOCAL_MACHINE);
}

void ownSetEncaseKorvalinFlag(MSIHANDLE)
{
    if (!hasSubKey(HKEY_LOCAL_MACHINE, encaseKey, KEY_WOW64_32KEY))
        return;
    HKEY key = nullptr;
    RegOpenKeyExW(HKEY_LOCAL_MACHINE, encaseKey, 0, readAccess | KEY_WOW64_32KEY, &key);
    DWORD size = 0, type = 0, flag = 0;
    if (RegQueryValueExW(key, L"CheckKorvalin", nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS &&
        RegQueryValueExW(key, L"CheckKorvalin", nullptr, &type, nullptr, &size) == ERROR_SUCCESS &&
        type == REG_DWORD) {
        size = sizeof flag;
        RegQueryValueExW(key, L"CheckKorvalin", nullptr, &type, reinterpret_cast<BYTE*>(&flag), &size);
        if (flag == 1 || flag == 2) {
            HKEY writable = nullptr;
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, encaseKey, 0, writeAccess | KEY_WOW64_32KEY, &writable);
            const DWORD zero = 0;
            RegSetValueExW(writable, L"CheckKorvalin", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&zero), sizeof zero);
            flushAndClose(writable);
            flushAndClose(HKEY_LOCAL_MACHINE);
        }
    }
    flushAndClose(key);
}

HKEY makeKey(HKEY root, const std::wstring& path, REGSAM view)
{
    HKEY key = nullptr;
    RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS | view, nullptr, &key, nullptr);
    return key;
}

// The DLL of this build tree stands beside the benchmark.
void findTheDll()
{
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
    std::string folder(path, length);
    folder.erase(folder.find_last_of("\\/") + 1);
    _putenv(("KORVALIN_DLL=" + folder + "WixKorvalin.dll").c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    findTheDll();
    const ActionLibrary dll;
    InstallerSession session({{L"UpgradeCode", upgradeCode}, {L"ProductCode", productCode}, {L"ApplicationSize", L"2048"}});
    const MSIHANDLE handle = session.handle();

    // The scene: an earlier product registered per machine, the product's uninstall
    // entry in the view of this build, EnCase's flag at 3.
    HKEY machine = makeKey(HKEY_LOCAL_MACHINE, machineList + pack(upgradeCode), KEY_WOW64_64KEY);
    HKEY entry = makeKey(HKEY_LOCAL_MACHINE, uninstallEntry, 0);
    HKEY encase = makeKey(HKEY_LOCAL_MACHINE, encaseKey, KEY_WOW64_32KEY);
    const DWORD three = 3;
    RegSetValueExW(encase, L"CheckKorvalin", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&three), sizeof three);

    // An argument sets the calls of one sample (default 2,000, five samples a side):
    // in the emulated machine every registry call is a slow trip to Wine's server.
    const int calls = argc > 1 ? std::max(1, std::atoi(argv[1])) : 2000;
    struct Row {
        const char* name;
        const char* what;
        void (*raw)(MSIHANDLE);
        const char* ownWhat;
        void (*own)(MSIHANDLE);
    } rows[] = {
        {"SetProperties", "action SetProperties, one call", rawSetProperties, nullptr, nullptr},
        {"SetDomain", "action SetDomain, one call (found)", rawSetDomain, "action SetDomain, vs its own calls by hand",
         ownSetDomain},
        {"SetApplicationSize", "action SetApplicationSize, one call", rawSetApplicationSize,
         "action SetApplicationSize, vs own calls", ownSetApplicationSize},
        {"SetEncaseKorvalinFlag", "action SetEncaseKorvalinFlag, one call", rawSetEncaseKorvalinFlag,
         "action SetEncaseKorvalinFlag, vs own calls", ownSetEncaseKorvalinFlag},
    };
    for (const Row& row : rows) {
        const ActionLibrary::Action action = dll.action(row.name);
        const auto callAction = [&](int n) {
            for (int i = 0; i < n; ++i)
                sink = action(handle);
        };
        compare(row.what, "raw twin, same calls", calls, callAction,
                [&](int n) {
                    for (int i = 0; i < n; ++i)
                        row.raw(handle);
                });
        if (!row.own)
            continue;
        compare(row.ownWhat, "the library's registry calls by hand", calls, callAction,
                [&](int n) {
                    for (int i = 0; i < n; ++i)
                        row.own(handle);
                });
    }
    if (property(handle, L"ALLUSERS") != L"1")
        std::printf("SetDomain did not find the earlier product\n");
    memory(dll);

    RegCloseKey(machine);
    RegCloseKey(entry);
    RegCloseKey(encase);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, (machineList + pack(upgradeCode)).c_str(), KEY_WOW64_64KEY, 0);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, uninstallEntry.c_str(), 0, 0);
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, encaseKey, KEY_WOW64_32KEY, 0);
    return 0;
}
