// The Io layer against the standard library and the runtime, measured in the same
// run. Each row prints ours, the baseline and the ratio ours / baseline (below 1 is
// faster than the baseline).
//
//   LineReader             50 MB of text, "\n" lines, over a FileInputStream
//                            vs std::getline on a std::ifstream of the same file
//                            (lines per second; the best of three passes each, so
//                            both read from the system's cache)
//   Path(text, false)      split and made canonical, no disk   vs msvcrt _wsplitpath
//   Path(text)             the same and one attribute query    vs GetFileAttributesExW
//   toLongForm             short and long drive paths, shares  vs the same rule on
//                                                                 std::wstring
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/LineReader.h"
#include "Framework/Io/Path.h"
#include "bench/BenchClock.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

using Framework::String;
using namespace Framework::Io;

namespace {

using namespace bench;

// Lines of 0 to 159 characters, as a log or a configuration has them.
size_t writeTextFile(const std::wstring& name, size_t bytes)
{
    FILE* file = _wfopen(name.c_str(), L"wb");
    if (!file) {
        std::printf("cannot write the text file\n");
        std::exit(1);
    }
    std::string line;
    size_t written = 0, lines = 0;
    unsigned state = 12345;
    while (written < bytes) {
        state = state * 1103515245u + 12345u;
        line.assign((state >> 16) % 160, char('a' + (state >> 8) % 26));
        line += '\n';
        std::fwrite(line.data(), 1, line.size(), file);
        written += line.size();
        ++lines;
    }
    std::fclose(file);
    return lines;
}

template <class Pass>
double bestSeconds(Pass pass)
{
    double best = 1e30;
    for (int i = 0; i < 3; ++i) {
        const double start = secondsNow();
        pass();
        best = std::min(best, secondsNow() - start);
    }
    return best;
}

void lineReading()
{
    wchar_t temp[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temp);
    const std::wstring name = std::wstring(temp) + L"IoLayerBench-" + std::to_wstring(GetCurrentProcessId()) + L".txt";
    const size_t expected = writeTextFile(name, 50u << 20);

    size_t ours = 0, theirs = 0;
    const double oursSeconds = bestSeconds([&] {
        FileInputStream stream;
        stream.open(String(name.c_str()));
        LineReader reader(stream);
        reader.setDelimiter("\n");
        Framework::AnsiString line;
        ours = 0;
        while (!reader.isAtEnd()) {
            reader.readLine(line);
            sink = line.length();
            ++ours;
        }
    });
    const double theirsSeconds = bestSeconds([&] {
        std::ifstream stream(name.c_str(), std::ios::binary);
        std::string line;
        theirs = 0;
        while (std::getline(stream, line)) {
            sink = line.size();
            ++theirs;
        }
    });
    DeleteFileW(name.c_str());
    if (ours != expected || theirs != expected)
        std::printf("line counts differ: %u written, %u ours, %u getline\n", unsigned(expected), unsigned(ours),
                    unsigned(theirs));
    char oursText[64], anchorText[96];
    std::snprintf(oursText, sizeof oursText, "ours %.0f MB/s", 50.0 / oursSeconds);
    std::snprintf(anchorText, sizeof anchorText, "std::getline %.0f MB/s", 50.0 / theirsSeconds);
    reportLine("LineReader, 50 MB, \"\\n\"", oursText, anchorText, oursSeconds / theirsSeconds);
}

const wchar_t* const pathTexts[] = {
    L"C:\\Program Files\\Korvalin\\bin\\WixKorvalin.dll",
    L"C:/Users/someone/AppData/Local/Temp/log001.txt",
    L"\\\\server\\share\\folder\\sub\\..\\report.final.pdf",
    L"relative\\dir\\file.ini",
    L"D:\\a\\b\\c\\d\\e\\f\\g\\h\\archive.tar.gz",
    L"KorvalinLogConfig.ini",
};
const int pathCount = sizeof pathTexts / sizeof pathTexts[0];

void paths(int rounds)
{
    std::vector<String> texts;
    for (const wchar_t* text : pathTexts)
        texts.push_back(String(text));

    const double ours = nanosecondsPerRound(rounds, [&](int n) {
        for (int i = 0; i < n; ++i)
            sink = Path(texts[i % pathCount], false).fullText().length();
    });
    const double baseline = nanosecondsPerRound(rounds, [&](int n) {
        wchar_t drive[_MAX_DRIVE], dir[_MAX_DIR], name[_MAX_FNAME], extension[_MAX_EXT];
        for (int i = 0; i < n; ++i) {
            _wsplitpath(pathTexts[i % pathCount], drive, dir, name, extension);
            sink = size_t(dir[0]) + size_t(name[0]);
        }
    });
    report("Path(text, false), 6 texts", "_wsplitpath", ours, baseline);

    const double oursDisk = nanosecondsPerRound(rounds / 100, [&](int n) {
        for (int i = 0; i < n; ++i)
            sink = size_t(Path(texts[i % pathCount]).kind());
    });
    const double baselineDisk = nanosecondsPerRound(rounds / 100, [&](int n) {
        WIN32_FILE_ATTRIBUTE_DATA data;
        for (int i = 0; i < n; ++i)
            sink = GetFileAttributesExW(pathTexts[i % pathCount], GetFileExInfoStandard, &data);
    });
    report("Path(text), asks the disk", "GetFileAttributesExW", oursDisk, baselineDisk);
}

// The conversion rule on plain wide strings: what toLongForm costs beyond the rule.
std::wstring plainLongForm(std::wstring text)
{
    for (wchar_t& c : text) {
        if (c == L'/')
            c = L'\\';
    }
    if (text.compare(0, 4, L"\\\\?\\") == 0)
        return text;
    if (text.compare(0, 2, L"\\\\") == 0 && text.compare(0, 4, L"\\\\.\\") != 0)
        return L"\\\\?\\unc\\" + text.substr(2);
    if (text.size() < 256 || !(text.size() > 2 && text[1] == L':' && text[2] == L'\\'))
        return text;
    return L"\\\\?\\" + text;
}

void longForms(int rounds)
{
    const std::wstring longText = L"C:\\" + std::wstring(300, L'x') + L"\\file.txt";
    const std::wstring plain[] = {pathTexts[0], pathTexts[2], longText};
    const String ours[] = {String(plain[0].c_str()), String(plain[1].c_str()), String(plain[2].c_str())};
    const double oursTime = nanosecondsPerRound(rounds, [&](int n) {
        for (int i = 0; i < n; ++i)
            sink = toLongForm(ours[i % 3]).length();
    });
    const double baselineTime = nanosecondsPerRound(rounds, [&](int n) {
        for (int i = 0; i < n; ++i)
            sink = plainLongForm(plain[i % 3]).size();
    });
    report("toLongForm: short, share, 310 chars", "std::wstring rule", oursTime, baselineTime);
}

}  // namespace

int main()
{
    lineReading();
    paths(200000);
    longForms(200000);
    return 0;
}
