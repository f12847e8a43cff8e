// What every benchmark shares: the clock, rounds timed after a warm-up, and one line
// per figure with its baseline, the ratio (ours / baseline, lower is better) and the
// lane it ran in: the architecture, and whether inside the emulated machine
// (tools/wine-host sets KORVALIN_EMULATED there), where the figures are the
// emulator's as much as the code's.
#pragma once
#include <windows.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

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

inline const char* lane()
{
    const bool emulated = std::getenv("KORVALIN_EMULATED") != nullptr;
    if (sizeof(void*) == 8)
        return emulated ? "x64 emulated" : "x64 native";
    return emulated ? "x86 emulated" : "x86 native";
}

inline void report(const char* what, const char* baselineName, double ours, double baseline)
{
    std::printf("%-40s ours %9.1f ns   %-22s %9.1f ns   ratio %.2f   %s\n", what, ours, baselineName, baseline,
                ours / baseline, lane());
}

}  // namespace bench
