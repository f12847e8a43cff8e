// The narrow, reference-counted text of the FW layer: 8 bits a character, copy on
// write, no length field (the text ends at its first NUL, so it cannot hold one).
//
// Blocks are sized by a fixed rule: for a wanted capacity n, t = n + 5 bytes rounded
// up to 32 + 64k, so capacities step 27, 91, 155, ... A copy shares the block and
// costs one interlocked increment; every write goes through writable() or reserve(),
// which give the string a block of its own first.
//
// This is the part of the string that the exception root and the Framework seam
// need; searching, splitting and replacing come with the rest of the FW layer.
#pragma once
#include <cstdint>

class fw_string
{
public:
    fw_string();
    fw_string(const fw_string& other);
    // A copy of the text; null or empty text gives an empty string without a block.
    explicit fw_string(const char* text);
    // The first `length` bytes of `text`, cut at a NUL among them.
    fw_string(const char* text, uint32_t length);
    virtual ~fw_string();

    // Gives up the present block, then shares the other's.
    fw_string& operator=(const fw_string& other);

    // Replaces the text by a copy; detaches from a shared block.
    void assign(const char* text);
    void assign(const char* text, uint32_t length);

    // Never null: a string without a block reads as one constant empty text.
    const char* c_str() const;
    // The text for writing: afterwards the block is this string's own (made if
    // there was none).
    char* writable();
    // Scans for the NUL.
    uint32_t length() const;
    bool empty() const { return c_str()[0] == 0; }
    uint32_t capacity() const { return capacityField; }

    // Makes room for n characters. A shared block is always replaced by an own one,
    // even when it is large enough; keepText says whether the text comes along.
    void reserve(uint32_t n, bool keepText);

    // Adds text; a length of 0 means up to the NUL. Text lying inside this string's
    // own block is allowed (the block may move while it grows). Detaches.
    void append(const char* text, uint32_t length = 0);
    // NUL adds nothing. Detaches.
    void append(char c);

    // Removes blanks, tabs and the characters 10 to 13 at one end. Detaches.
    void trim_left();
    void trim_right();

    // An empty string equals a null or empty text.
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }

    // Block size in bytes for a wanted capacity, by the 32 + 64k rule.
    static uint32_t block_size_for(uint32_t capacity);

private:
    struct block_header;
    block_header* block;
    uint32_t capacityField;

    void release();
};

fw_string operator+(const fw_string& a, const fw_string& b);
fw_string operator+(const fw_string& a, const char* b);
