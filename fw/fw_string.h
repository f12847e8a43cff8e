// The narrow, reference-counted text of the FW layer: 8 bits a character, copy on
// write, no length field (the text ends at its first NUL, so it cannot hold one, and
// length() scans).
//
// Blocks are sized by a fixed rule: for a wanted capacity n, t = n + 5 bytes rounded
// up to 32 + 64k, so capacities step 27, 91, 155, ... A copy shares the block and
// costs one interlocked increment; every write goes through writable() or reserve(),
// which give the string a block of its own first, so text in a shared block is never
// written. An empty string may have no block at all; nobody may count on one.
//
// Broken preconditions (an index above the capacity, a position past the end, an
// empty search text in replace, a NUL in the character form of replace, a `to` before
// `from` in substr) throw fw_exception_assert and leave the string as it was.
//
// Positions are unsigned; find answers -1 (as a signed number) for "not found".
//
//   fw_string("a=b=c").split_first('=')    -> returns "a", keeps "b=c"
//   fw_string("abc").split_first('x')      -> returns "abc", keeps ""
//   fw_string("a.b").replace(".", "::", 0) -> 1, "a::b"
//   base_name("C:\\dir/sub\\file.txt")     -> "file.txt"
#pragma once
#include "fw/fw_shared_block.h"

#include <cstdint>

class fw_string
{
public:
    fw_string();
    fw_string(const fw_string& other);
    // A copy of the text; null or empty text gives an empty string without a block.
    explicit fw_string(const char* text);
    // The first `length` bytes of `text`, cut at a NUL among them; 0 gives "".
    fw_string(const char* text, uint32_t length);
    // An empty text with room for at least `capacity` characters: a buffer for a
    // platform call, written through writable().
    explicit fw_string(uint32_t capacity);
    // `count` copies of `c`; a NUL or a count of 0 gives "".
    fw_string(char c, uint32_t count);
    virtual ~fw_string();

    // Gives up the present block, then shares the other's.
    fw_string& operator=(const fw_string& other);

    // Replaces the text by a copy; detaches from a shared block. The text may lie in
    // this string's own block.
    void assign(const char* text);
    void assign(const char* text, uint32_t length);

    // Never null: a string without a block reads as one constant empty text.
    const char* c_str() const;
    // The text for writing: afterwards the block is this string's own (made if
    // there was none). Pointers taken from c_str() before may be stale.
    char* writable();
    // Scans for the NUL.
    uint32_t length() const;
    bool empty() const { return c_str()[0] == 0; }
    uint32_t capacity() const { return capacityField; }

    // Makes room for n characters. A shared block is always replaced by an own one,
    // even when it is large enough; keepText says whether the text comes along (cut
    // to the new capacity if that is smaller).
    void reserve(uint32_t n, bool keepText);

    // Adds text; a length of 0 means up to the NUL. Text lying inside this string's
    // own block is allowed (the block may move while it grows). Detaches.
    void append(const char* text, uint32_t length = 0);
    // NUL adds nothing. Detaches.
    void append(char c);
    // Puts the text in front of the character at `position` (length() appends);
    // null or empty text changes nothing. Detaches.
    void insert(const char* text, uint32_t position);

    // The characters from `from` up to, not including, `to`; both at most length().
    fw_string substr(uint32_t from, uint32_t to) const;
    fw_string reversed() const;

    // Position of the first hit at or after `from`, or -1. `from` equal to length()
    // gives -1, beyond it asserts. Null or empty text, and NUL, are found nowhere.
    int32_t find(const char* text, uint32_t from = 0) const;
    int32_t find(char c, uint32_t from = 0) const;

    // Replaces every occurrence of `from` by `to` (null means ""), searching from
    // position `start`; text that `to` brings in is not searched again. Returns the
    // number of replacements; with none the string is left as it was, block and all.
    // Detaches when there is a hit.
    uint32_t replace(const char* from, const char* to, uint32_t start = 0);
    uint32_t replace(char from, char to, uint32_t start = 0);

    // Removes blanks, tabs and the characters 10 to 13 at one end. Detaches.
    void trim_left();
    void trim_right();

    // The position is checked against capacity(), not length(): the bytes behind the
    // text up to the capacity belong to the string too, as a buffer, and are not
    // cleared when a block is made. Writing over the terminator is writing into that
    // buffer: the caller ends the text. Reading a string without a block at position
    // 0 gives NUL.
    char operator[](uint32_t position) const;
    // For writing: detaches first, even if the caller only reads. Use c_str() to read
    // a shared string without copying it.
    char& operator[](uint32_t position);

    // Cuts the string at the first `c`: returns what stands before it and keeps what
    // stands behind it. Without a `c` it returns the whole string and is left empty.
    fw_string split_first(char c);
    // The same at the first character that is one of `characters`.
    fw_string split_first_of(const char* characters);
    // How many characters at the end come before one of `characters` is met, going
    // backwards; the length if none is.
    uint32_t count_tail_without(const char* characters) const;

    // An empty string equals a null or empty text.
    bool operator==(const char* text) const;
    bool operator!=(const char* text) const { return !(*this == text); }
    bool operator==(const fw_string& other) const { return *this == other.c_str(); }
    bool operator!=(const fw_string& other) const { return !(*this == other.c_str()); }

    // Block size in bytes for a wanted capacity, by the 32 + 64k rule.
    static uint32_t block_size_for(uint32_t capacity);

private:
    fw_shared_block block;
    uint32_t capacityField;

    void release();
    // split_first at `hit`, a pointer into c_str(); null: no separator.
    fw_string split_at(const char* hit);
    // Whether `text` lies in this string's own text, terminator included.
    bool holds(const char* text) const { return block.holds(text, capacityField); }
    char* chars() const { return reinterpret_cast<char*>(block.payload()); }
};

// If one side is empty the result shares the other side's block.
fw_string operator+(const fw_string& a, const fw_string& b);
fw_string operator+(const fw_string& a, const char* b);
fw_string operator+(const char* a, const fw_string& b);

// The text behind the last "/" or backslash of a path; all of it without one.
fw_string base_name(const fw_string& path);
