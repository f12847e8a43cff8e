// What every benchmark shares: the clock, rounds timed after a warm-up, and one line
// per figure with its baseline and the ratio (ours / baseline, lower is better).
#pragma once
#include <windows.h>

#include <cstddef>
#include <cstdio>

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

inline void report(const char* what, const char* baselineName, double ours, double baseline)
{
    std::printf("%-40s ours %9.1f ns   %-22s %9.1f ns   ratio %.2f\n", what, ours, baselineName, baseline,
                ours / baseline);
}

}  // namespace bench
