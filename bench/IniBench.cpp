// The INI parser against the platform's own INI reader, in the same run, on one file
// of 10,000 keys in 100 sections.
//
//   ours      IniParser::load, then every key read back through InputValues
//   baseline  GetPrivateProfileStringW for every key of the same file
//
// Both read every value and check it against what was written. The baseline asks the
// platform once per key, which is what a program that reads its settings that way
// does. An argument N times the baseline on the first N keys only and scales it up
// (the platform's reader can take minutes under emulation); the line says so.
#include "Framework/Ini/IniParser.h"
#include "bench/BenchClock.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

using namespace Framework;
using namespace bench;

namespace {

const int sectionCount = 100;
const int keysPerSection = 100;

std::wstring sectionName(int s) { return L"section" + std::to_wstring(s); }
std::wstring keyName(int k) { return L"key" + std::to_wstring(k); }
std::wstring valueFor(int s, int k) { return L"value " + std::to_wstring(s * 1000 + k) + L" of the bench"; }

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

void writeFile(const std::wstring& name)
{
    FILE* file = _wfopen(name.c_str(), L"wb");
    if (!file) {
        std::printf("cannot write the INI file\n");
        std::exit(1);
    }
    for (int s = 0; s < sectionCount; ++s) {
        std::fprintf(file, "[%s]\r\n", narrow(sectionName(s)).c_str());
        for (int k = 0; k < keysPerSection; ++k)
            std::fprintf(file, "%s = %s\r\n", narrow(keyName(k)).c_str(), narrow(valueFor(s, k)).c_str());
    }
    std::fclose(file);
}

}  // namespace

int main(int argc, char** argv)
{
    const int totalKeys = sectionCount * keysPerSection;
    const int baselineKeys = argc > 1 ? std::max(1, std::min(totalKeys, std::atoi(argv[1]))) : totalKeys;

    wchar_t temp[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temp);
    const std::wstring name = std::wstring(temp) + L"IniBench-" + std::to_wstring(GetCurrentProcessId()) + L".ini";
    writeFile(name);

    int mismatches = 0;
    double best = 1e30;
    for (int pass = 0; pass < 3; ++pass) {
        const double start = secondsNow();
        IniParser parser;
        const SharedPointer<InputValues> root = parser.load(String(name.c_str()));
        for (int s = 0; s < sectionCount; ++s) {
            const SharedPointer<InputValues> section = root->group(String(sectionName(s).c_str()));
            for (int k = 0; k < keysPerSection; ++k) {
                const String value = section->getString(String(keyName(k).c_str()));
                if (pass == 0 && std::wstring(value.c_str()) != valueFor(s, k))
                    ++mismatches;
            }
        }
        best = std::min(best, secondsNow() - start);
    }

    const double start = secondsNow();
    for (int i = 0; i < baselineKeys; ++i) {
        const int s = i / keysPerSection, k = i % keysPerSection;
        wchar_t value[128];
        GetPrivateProfileStringW(sectionName(s).c_str(), keyName(k).c_str(), L"", value, 128, name.c_str());
        if (valueFor(s, k) != value)
            ++mismatches;
    }
    const double baseline = (secondsNow() - start) * totalKeys / baselineKeys;
    DeleteFileW(name.c_str());

    if (mismatches)
        std::printf("%d values differ from what was written\n", mismatches);
    char oursText[64], anchorText[96];
    std::snprintf(oursText, sizeof oursText, "ours %.1f ms", best * 1e3);
    std::snprintf(anchorText, sizeof anchorText, "GetPrivateProfileStringW %.1f ms%s", baseline * 1e3,
                  baselineKeys < totalKeys ? " (scaled)" : "");
    reportLine("INI: 10,000 keys in 100 sections, parse + read", oursText, anchorText, best / baseline);
    return mismatches ? 1 : 0;
}
