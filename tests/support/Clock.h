// The present time as the actions see it: milliseconds since 1970-01-01 UTC.
#pragma once
#include <chrono>
#include <cstdint>

inline uint64_t nowInMilliseconds()
{
    return uint64_t(std::chrono::duration_cast<std::chrono::milliseconds>(
                        std::chrono::system_clock::now().time_since_epoch())
                        .count());
}
