// The heap block under fw_string and fw_buffer: a reference count, then the payload.
// A value that shares: a copy takes one more reference (one interlocked increment),
// assignment takes the other's block before it gives up its own, and the last
// reference frees the block. Having no block at all is the empty state.
//
// Only a block that nobody else shares (sole()) may be written; the text types see to
// that by renewing the block first. Sizes include the count's four bytes.
#pragma once
#include <cstdint>

class fw_shared_block
{
public:
    static constexpr uint32_t count_size = 4;

    fw_shared_block() = default;
    fw_shared_block(const fw_shared_block& other);
    fw_shared_block& operator=(const fw_shared_block& other);
    ~fw_shared_block();

    // Gives up this reference; afterwards there is no block.
    void release();
    // A new block of `size` bytes in place of this one, with a count of 1 and its last
    // byte 0, and the first `kept` bytes of the old payload copied over. The old block
    // stays this one until the new one is made: a failed allocation changes nothing.
    uint8_t* renew(uint32_t size, uint32_t kept);

    bool exists() const { return block != nullptr; }
    // A block that no other value shares; false without a block.
    bool sole() const;
    // The bytes behind the count; null without a block.
    uint8_t* payload() const;
    // Whether `at` points into the payload, from its start up to and with the byte
    // at `payloadBytes`.
    bool holds(const void* at, uint32_t payloadBytes) const;
    // Whether `at` points into the count: a pointer gone wrong, not data.
    bool holds_count(const void* at) const;

private:
    struct header;
    header* block = nullptr;
};
