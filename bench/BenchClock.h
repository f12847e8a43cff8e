// What every benchmark shares: the clock, rounds timed after a warm-up, and one line
// per figure with its baseline, the ratio (ours / baseline, lower is better) and the
// lane it ran in: the architecture, and whether inside the emulated machine
// (tools/wine-host sets KORVALIN_EMULATED there), where the figures are the
// emulator's as much as the code's.
#pragma once
#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <utility>
#include <vector>

namespace bench {

inline double secondsNow()
{
    LARGE_INTEGER frequency, counter;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&counter);
    return double(counter.QuadPart) / double(frequency.QuadPart);
}

template <class Body>
double nanosecondsPerRound(int rounds, Body body)
{
    body(rounds / 10);  // warm up
    const double start = secondsNow();
    body(rounds);
    return (secondsNow() - start) * 1e9 / rounds;
}

// Keeps results alive, so the compiler cannot drop the work that made them.
inline volatile size_t sink;

// Times ours and the baseline in turn, `samples` times each, `rounds` rounds a time,
// and returns the two medians: interleaving spreads a disturbance of the machine over
// both sides, and the median leaves out the sample it struck.
template <class Ours, class Baseline>
std::pair<double, double> interleaved(int rounds, Ours ours, Baseline baseline, int samples = 5)
{
    std::vector<double> oursTimes, baselineTimes;
    for (int i = 0; i < samples; ++i) {
        oursTimes.push_back(nanosecondsPerRound(rounds, ours));
        baselineTimes.push_back(nanosecondsPerRound(rounds, baseline));
    }
    std::sort(oursTimes.begin(), oursTimes.end());
    std::sort(baselineTimes.begin(), baselineTimes.end());
    return {oursTimes[samples / 2], baselineTimes[samples / 2]};
}

inline const char* lane()
{
    const bool emulated = std::getenv("KORVALIN_EMULATED") != nullptr;
    if (sizeof(void*) == 8)
        return emulated ? "x64 emulated" : "x64 native";
    return emulated ? "x86 emulated" : "x86 native";
}

// One figure: "what | ours | anchor and its figure | ratio | lane", the fields apart
// by " | " so that tools/bench.sh can gather them into one table. The ratio is
// ours / anchor, lower is better, for times; for rates it is given as it stands.
inline void reportLine(const char* what, const char* ours, const char* anchor, double ratio)
{
    std::printf("%-44s | %-22s | %-40s | ratio %8.4f | %s\n", what, ours, anchor, ratio, lane());
}

inline void report(const char* what, const char* baselineName, double ours, double baseline)
{
    char oursText[64], anchorText[96];
    std::snprintf(oursText, sizeof oursText, "ours %.1f ns", ours);
    std::snprintf(anchorText, sizeof anchorText, "%s %.1f ns", baselineName, baseline);
    reportLine(what, oursText, anchorText, ours / baseline);
}

template <class Ours, class Baseline>
void compare(const char* what, const char* baselineName, int rounds, Ours ours, Baseline baseline)
{
    const std::pair<double, double> medians = interleaved(rounds, ours, baseline);
    report(what, baselineName, medians.first, medians.second);
}

}  // namespace bench
