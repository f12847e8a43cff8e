// The text layer against the standard library and the runtime, measured in the same
// run. Each row prints nanoseconds per operation for ours and for the baseline, and
// the ratio ours / baseline (below 1 is faster than the baseline).
//
//   String copy          a reference taken (one interlocked increment)  vs std::wstring copy
//   a + b                one allocation of the summed length             vs std::wstring +
//   String::format       rewrite, count, allocate once, render           vs msvcrt _snwprintf
//                                                                           into a fixed buffer
//   MemoryValues lookup  hashName + compareNoCase, then the typed read   vs unordered_map find
#include "Framework/FormatEngine.h"
#include "Framework/MemoryValues.h"
#include "Framework/String.h"
#include "bench/BenchClock.h"

#include <windows.h>

#include <cstdio>
#include <string>
#include <unordered_map>
#include <vector>

using Framework::String;

namespace {

using namespace bench;

void copiesAndConcatenation(int rounds)
{
    for (size_t length : {16u, 1000u}) {
        const std::wstring text(length, L'k');
        const String ours(text.c_str());
        char label[64];
        std::snprintf(label, sizeof label, "String copy, %u characters", unsigned(length));
        compare(label, "std::wstring copy", rounds,
                [&](int n) {
                    for (int i = 0; i < n; ++i) {
                        String copy = ours;
                        sink = copy.length();
                    }
                },
                [&](int n) {
                    for (int i = 0; i < n; ++i) {
                        std::wstring copy = text;
                        sink = copy.size();
                    }
                });
        std::snprintf(label, sizeof label, "a + b, %u characters each", unsigned(length));
        compare(label, "std::wstring +", rounds,
                [&](int n) {
                    for (int i = 0; i < n; ++i)
                        sink = (ours + ours).length();
                },
                [&](int n) {
                    for (int i = 0; i < n; ++i)
                        sink = (text + text).size();
                });
    }
}

void formatting(int rounds)
{
    // The same output both ways; the runtime's format is what the engine rewrites to.
    const wchar_t* key = L"EstimatedSize";
    const long long size = 123456789012LL;
    compare("String::format, 4 conversions", "_snwprintf into a buffer", rounds,
            [&](int n) {
                for (int i = 0; i < n; ++i)
                    sink = String::format(L"%S = %d (%Ld bytes, 0x%08X)", key, i, size, 0xBEEFu).length();
            },
            [&](int n) {
                wchar_t buffer[128];
                for (int i = 0; i < n; ++i)
                    sink = size_t(_snwprintf(buffer, 128, L"%s = %d (%I64d bytes, 0x%08X)", key, i, size, 0xBEEFu));
            });
}

void lookups(int rounds)
{
    const int names = 64;
    Framework::MemoryValues values(L"bench");
    std::unordered_map<std::wstring, std::wstring> map;
    std::vector<String> keys;
    std::vector<std::wstring> plainKeys;
    for (int i = 0; i < names; ++i) {
        wchar_t name[32];
        _snwprintf(name, 32, L"SettingName%d", i);
        values.setString(name, L"value");
        map[name] = L"value";
        keys.push_back(String(name));
        plainKeys.push_back(name);
    }
    compare("MemoryValues getString, 64 names", "unordered_map find", rounds,
            [&](int n) {
                for (int i = 0; i < n; ++i)
                    sink = values.getString(keys[i % names]).length();
            },
            [&](int n) {
                for (int i = 0; i < n; ++i)
                    sink = map.find(plainKeys[i % names])->second.size();
            });
    compare("MemoryValues hasValue, 64 names", "unordered_map count", rounds,
            [&](int n) {
                for (int i = 0; i < n; ++i)
                    sink = values.hasValue(keys[i % names]);
            },
            [&](int n) {
                for (int i = 0; i < n; ++i)
                    sink = map.count(plainKeys[i % names]);
            });
}

}  // namespace

int main()
{
    const int rounds = 50000;
    copiesAndConcatenation(rounds);
    formatting(rounds / 4);
    lookups(rounds);
    return 0;
}
