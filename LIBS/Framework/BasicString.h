// The copy-on-write string of the Framework layer, for 16-bit units (String) and bytes
// (AnsiString). A copy shares the block and costs one interlocked increment; every
// operation that writes first detaches, that is, gives this string a private block
// when the block is shared. length() counts characters (units), never a terminator;
// the text may hold zeros, and length, not the terminator, says where it ends.
//
// Capacity rules, in characters: constructors and resize give (n + 66) & ~63, so one
// character gets room for 64 and 62 characters room for 128; reserve gives
// (n + 10) & ~7. npos (all ones) as a length means "up to the terminator", as a `to`
// the end of the text, and as a search result "not found".
//
// Failures: a broken precondition (null text, self-append through a raw pointer, a
// length above 0x80000000) throws ErrorException; an index outside the text throws
// RangeException(from, to, index) with the numbers given at each operation. A
// throwing operation leaves the string as it was.
#pragma once
#include "Framework/SharedBuffer.h"

#include <cstdint>

namespace Framework {

class String;
class AnsiString;

template <class Char>
struct StringTypeOf;
template <>
struct StringTypeOf<wchar_t>
{
    using Type = String;
};
template <>
struct StringTypeOf<char>
{
    using Type = AnsiString;
};

template <class Char>
class BasicString
{
public:
    using Derived = typename StringTypeOf<Char>::Type;
    static constexpr uint32_t npos = 0xFFFFFFFFu;

    BasicString() : count(0) {}
    // A private copy. A length of 0 gives the empty string even for a null pointer;
    // npos measures up to the terminator.
    BasicString(const Char* text, uint32_t length);
    // A string of `length` characters that are not set, for a platform call to fill.
    explicit BasicString(uint32_t length);
    BasicString(const BasicString& other) = default;
    BasicString& operator=(const BasicString& other) = default;
    // A temporary hands its block over without touching the count; it is empty after.
    BasicString(BasicString&& other) noexcept : buffer(static_cast<SharedBuffer&&>(other.buffer)), count(other.count)
    {
        other.count = 0;
    }
    BasicString& operator=(BasicString&& other) noexcept
    {
        if (this != &other) {
            buffer = static_cast<SharedBuffer&&>(other.buffer);
            count = other.count;
            other.count = 0;
        }
        return *this;
    }
    virtual ~BasicString() = default;

    // Never null: the payload, or one static empty text per character width. Inline:
    // every read of a string's text passes here.
    const Char* c_str() const
    {
        const Char* text = data();
        return text ? text : emptyChars;
    }
    // Null when there is no block.
    const Char* data() const { return static_cast<const Char*>(buffer.payload()); }
    uint32_t length() const { return count; }
    bool empty() const { return count == 0; }
    // Characters the block holds, 0 without a block.
    uint32_t capacity() const { return buffer.byteSize() / sizeof(Char); }

    // i >= length gives Range(0, length, i).
    Char at(uint32_t i) const;
    // The same check, then detaches and gives a reference into the payload.
    Char& refAt(uint32_t i);
    // Empty gives Range(0, 0, 0).
    Char front() const;

    bool startsWith(Char c) const { return count > 0 && c_str()[0] == c; }
    bool endsWith(Char c) const { return count > 0 && c_str()[count - 1] == c; }
    // Null text asserts; empty text is a prefix of everything.
    bool startsWith(const Char* text) const;

    // First occurrence at or after `from`, or npos; from > length gives
    // Range(0, length, from).
    uint32_t find(const Char* sequence, uint32_t sequenceLength, uint32_t from = 0) const;

    // All of these detach.
    void append(Char c);
    // length 0 does nothing; null text asserts; this string's own c_str() asserts.
    void append(const Char* text, uint32_t length);
    void append(const Char* text) { append(text, npos); }
    void append(const BasicString& other);
    BasicString& operator+=(const BasicString& other)
    {
        append(other);
        return *this;
    }
    BasicString& operator+=(Char c)
    {
        append(c);
        return *this;
    }

    // New characters are not set.
    void resize(uint32_t n);
    // Returns the usable capacity: the block's bytes less 2, in characters.
    uint32_t reserve(uint32_t n);
    // n > length gives Range(0, length, n).
    void truncate(uint32_t n);
    void removeLast();
    void removeFirst();
    // from > to gives Range(0, to, from); to > length gives Range(0, length, to).
    void erase(uint32_t from, uint32_t to);
    // [from, to); to npos means length; the checks of erase.
    Derived substr(uint32_t from, uint32_t to = npos) const;
    // position + oldLength > length gives Range(0, length, position + oldLength).
    void replace(uint32_t position, uint32_t oldLength, const Char* text, uint32_t newLength);
    void fill(Char c);
    // from >= length gives Range(0, length, from) on a non-empty string; count is
    // clipped to the end.
    void fill(Char c, uint32_t from, uint32_t fillCount);

    // Remove isspace/iswspace characters at one or both ends.
    void trimLeft();
    void trimRight();
    void trim();
    // Strips matching ' or " pairs from both ends until none is left; returns the
    // first quote character removed, else 0.
    Char unquoteAll();

    // Units before the first zero; null asserts.
    static uint32_t textLength(const Char* text);
    // Index of c in a zero-terminated text, or npos.
    static uint32_t findChar(const Char* text, Char c);

protected:
    static constexpr Char emptyChars[2] = {0, 0};

    // Gives the string a private block when it shares one; keeps the capacity.
    void detach();
    // payload[length] = 0, and payload[length + 1] too when length is even and
    // there is room.
    void terminate();
    Char* payload() { return static_cast<Char*>(buffer.payload()); }
    Char* writablePayload()
    {
        detach();
        return payload();
    }

    SharedBuffer buffer;
    uint32_t count;
};

// Ordering by code unit over the shorter length, then by length: -1, 0 or 1.
template <class Char>
int compare(const Char* a, uint32_t aLength, const Char* b, uint32_t bLength);

}  // namespace Framework
