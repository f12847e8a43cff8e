// Copies and concatenations of Framework::String against std::wstring, the baseline,
// measured in the same run. A String copy takes a reference (one interlocked
// increment) instead of copying the text, and operator+ allocates once.
// Prints nanoseconds per operation and the ratio String / std::wstring.
#include "Framework/String.h"

#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

double secondsNow()
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

volatile size_t sink;

void report(const char* what, double ours, double baseline)
{
    std::printf("%-34s String %8.1f ns   std::wstring %8.1f ns   ratio %.2f\n", what, ours, baseline,
                ours / baseline);
}

}  // namespace

int main()
{
    const int rounds = 200000;
    for (size_t length : {16u, 1000u}) {
        const std::wstring text(length, L'k');
        const Framework::String ours(text.c_str());
        const double copyOurs = nanosecondsPerRound(rounds, [&](int n) {
            for (int i = 0; i < n; ++i) {
                Framework::String copy = ours;
                sink = copy.length();
            }
        });
        const double copyBaseline = nanosecondsPerRound(rounds, [&](int n) {
            for (int i = 0; i < n; ++i) {
                std::wstring copy = text;
                sink = copy.size();
            }
        });
        char label[64];
        std::snprintf(label, sizeof label, "copy of %u characters", unsigned(length));
        report(label, copyOurs, copyBaseline);

        const double concatOurs = nanosecondsPerRound(rounds, [&](int n) {
            for (int i = 0; i < n; ++i)
                sink = (ours + ours).length();
        });
        const double concatBaseline = nanosecondsPerRound(rounds, [&](int n) {
            for (int i = 0; i < n; ++i)
                sink = (text + text).size();
        });
        std::snprintf(label, sizeof label, "a + b of %u characters each", unsigned(length));
        report(label, concatOurs, concatBaseline);
    }
    return 0;
}
