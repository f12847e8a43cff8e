// The cost of logging. A call below its context's threshold, through the process's
// logger, against a plain function that compares a level and returns: the aim is
// under 20 ns, with no lock and no allocation (every operator new is counted). Then
// records per second through a FileWriter with the default line format, which
// flushes each line to the disk, against fwrite of the same finished lines, once
// buffered and once with the same flush to the disk after each line.
#include "Framework/Log/Context.h"
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/Logger.h"
#include "bench/BenchClock.h"

#include <io.h>
#include <atomic>
#include <cstdlib>
#include <new>
#include <vector>

using namespace bench;
using namespace Framework;
using namespace Framework::Log;

namespace {
std::atomic<long> allocations{0};
}

void* operator new(size_t size)
{
    ++allocations;
    if (void* block = HeapAlloc(GetProcessHeap(), 0, size ? size : 1))
        return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept
{
    if (block)
        HeapFree(GetProcessHeap(), 0, block);
}
void operator delete(void* block, size_t) noexcept { operator delete(block); }

namespace {

volatile uint32_t plainThreshold = 30;

__attribute__((noinline)) void plainDebug(const ThrowSite*, const char*, ...)
{
    if (plainThreshold > 10)
        return;
    sink = 1;
}

Record benchRecord(int i)
{
    return Record{L"Bench::Writer", Level::Error, SITE, uint64_t(i), Logger::currentTime(),
                  String::format(L"record number %d with some text behind it", i)};
}

}  // namespace

int main()
{
    // Below the threshold: the process's logger has the default level WARNING.
    Context context(L"Bench", Logger::instance);
    context.debug(LOG_SITE, "configures the logger: %d", 0);
    const int calls = 2000000;
    const long before = allocations;
    const double ours = nanosecondsPerRound(calls, [&](int n) {
        for (int i = 0; i < n; ++i)
            context.debug(LOG_SITE, "value %d", i);
    });
    const long allocated = allocations - before;
    const double baseline = nanosecondsPerRound(calls, [](int n) {
        for (int i = 0; i < n; ++i)
            plainDebug(nullptr, "value %d", i);
    });
    report("debug below the threshold", "compare and return", ours, baseline);
    std::printf("%-40s %ld allocations in %d calls\n", "debug below the threshold", allocated, calls + calls / 10);

    wchar_t temp[MAX_PATH + 1];
    GetTempPathW(MAX_PATH + 1, temp);
    const String folder = String(temp) + L"log_bench\\";
    CreateDirectoryW(folder.c_str(), nullptr);
    const String ourFile = folder + L"log.txt";
    const String plainFile = folder + L"plain.txt";

    Configuration configuration;
    configuration.prepareFormatters();
    const SharedPointer<Formatter> line = configuration.formatters->get(L"Line");
    const int records = 2000;

    const double start = secondsNow();
    {
        FileWriter writer;
        writer.setProperty(L"dir", folder);
        writer.setFormatter(line);
        for (int i = 0; i < records; ++i)
            writer.write(benchRecord(i));
    }
    const double writerSeconds = secondsNow() - start;

    std::vector<AnsiString> finished;
    const double formatStart = secondsNow();
    for (int i = 0; i < records; ++i)
        finished.push_back(toUtf8(line->format(benchRecord(i)) + L"\r\n"));
    const double formatSeconds = secondsNow() - formatStart;
    auto fwriteAll = [&](bool commitEach) {
        FILE* file = _wfopen(plainFile.c_str(), L"wb");
        const double begin = secondsNow();
        for (const AnsiString& text : finished) {
            std::fwrite(text.c_str(), 1, text.length(), file);
            if (commitEach) {
                std::fflush(file);
                _commit(_fileno(file));
            }
        }
        std::fclose(file);
        return secondsNow() - begin;
    };
    const double plainSeconds = fwriteAll(false);
    const double committedSeconds = fwriteAll(true);

    // Rates: ratio = ours / anchor in records per second, higher is better.
    char oursText[64], plainText[96], committedText[96];
    std::snprintf(oursText, sizeof oursText, "ours %.0f rec/s", records / writerSeconds);
    std::snprintf(plainText, sizeof plainText, "fwrite, buffered %.0f rec/s", records / plainSeconds);
    std::snprintf(committedText, sizeof committedText, "fwrite+fflush+_commit %.0f rec/s", records / committedSeconds);
    reportLine("FileWriter, one committed line (rec/s)", oursText, plainText, plainSeconds / writerSeconds);
    reportLine("FileWriter, one committed line (rec/s)", oursText, committedText, committedSeconds / writerSeconds);
    std::printf("%-40s %9.0f rec/s of the %.0f s of FileWriter\n", "of which formatting alone", records / formatSeconds,
                writerSeconds);

    DeleteFileW(ourFile.c_str());
    DeleteFileW(plainFile.c_str());
    RemoveDirectoryW(folder.c_str());
    return 0;
}
