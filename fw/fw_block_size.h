// The one sizing rule of the FW layer's shared blocks (fw_string, fw_buffer): a block
// that must hold `bytes` bytes, header included, is 32 bytes if that is enough and
// otherwise the smallest 32 + 64k not below it. Small texts fit one 32-byte block, and
// text that grows by appending moves at most once every 64 bytes.
#pragma once
#include <cstdint>

// Blocks of 2 GB or more are refused before this is asked, so nothing here overflows.
inline uint32_t fw_block_size(uint32_t bytes)
{
    if (bytes <= 32)
        return 32;
    const uint32_t r = bytes % 64;
    return r <= 32 ? bytes - r + 32 : bytes - r + 96;
}

// The largest capacity a block may be asked for: a bigger one in a 32-bit process is
// a length that went below zero somewhere.
constexpr uint32_t fw_block_capacity_limit = 0x7FFFFF00u;
