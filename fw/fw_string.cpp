#include "fw/fw_string.h"

#include "fw/fw_assert.h"
#include "fw/fw_block_size.h"

#include <windows.h>
#include <cstring>

namespace {

const char emptyText[1] = {0};

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || (c >= 10 && c <= 13);
}

}  // namespace

uint32_t fw_string::block_size_for(uint32_t capacity)
{
    // Four bytes of reference count and one of terminator.
    return fw_block_size(capacity + 5);
}

fw_string::fw_string() : capacityField(0) {}

fw_string::fw_string(const fw_string& other) = default;

fw_string::fw_string(const char* text) : fw_string()
{
    assign(text);
}

fw_string::fw_string(const char* text, uint32_t length) : fw_string()
{
    assign(text, length);
}

fw_string::fw_string(uint32_t capacity) : fw_string()
{
    reserve(capacity, false);
}

fw_string::fw_string(char c, uint32_t count) : fw_string()
{
    if (c == 0 || count == 0)
        return;
    reserve(count, false);
    std::memset(chars(), c, count);
    chars()[count] = 0;
}

fw_string::~fw_string() = default;

void fw_string::release()
{
    block.release();
    capacityField = 0;
}

fw_string& fw_string::operator=(const fw_string& other) = default;

void fw_string::assign(const char* text)
{
    assign(text, text ? static_cast<uint32_t>(std::strlen(text)) : 0);
}

void fw_string::assign(const char* text, uint32_t length)
{
    if (!text || length == 0 || text[0] == 0) {
        release();
        return;
    }
    const char* end = static_cast<const char*>(std::memchr(text, 0, length));
    if (end)
        length = static_cast<uint32_t>(end - text);
    // Text from our own block must outlive the new block's making.
    fw_shared_block keep;
    if (holds(text))
        keep = block;
    reserve(length, false);
    std::memmove(chars(), text, length);
    chars()[length] = 0;
}

const char* fw_string::c_str() const
{
    return block.exists() ? chars() : emptyText;
}

char* fw_string::writable()
{
    reserve(capacityField, true);
    return chars();
}

uint32_t fw_string::length() const
{
    return static_cast<uint32_t>(std::strlen(c_str()));
}

void fw_string::reserve(uint32_t n, bool keepText)
{
    FW_ASSERT(n <= fw_block_capacity_limit);
    const uint32_t size = block_size_for(n);
    const uint32_t newCapacity = size - 5;
    if (block.sole() && newCapacity <= capacityField)
        return;
    // The whole capacity comes along, not only the text: the bytes behind the
    // terminator are the string's buffer too.
    uint32_t kept = 0;
    if (keepText)
        kept = capacityField < newCapacity ? capacityField : newCapacity;
    reinterpret_cast<char*>(block.renew(size, kept))[kept] = 0;
    capacityField = newCapacity;
}

void fw_string::append(const char* text, uint32_t length)
{
    if (!text)
        return;
    FW_ASSERT(!block.holds_count(text));
    if (length == 0)
        length = static_cast<uint32_t>(std::strlen(text));
    else if (const char* end = static_cast<const char*>(std::memchr(text, 0, length)))
        length = static_cast<uint32_t>(end - text);
    if (length == 0)
        return;
    // Text from our own block: remember its offset, since reserve may move the block.
    const bool inside = holds(text);
    const uint32_t offset = inside ? static_cast<uint32_t>(text - chars()) : 0;
    fw_shared_block keep;  // keeps the old block alive while we copy out of it
    if (inside)
        keep = block;
    const uint32_t old = this->length();
    reserve(old + length, true);
    const char* source = inside ? reinterpret_cast<const char*>(keep.payload()) + offset : text;
    std::memmove(chars() + old, source, length);
    chars()[old + length] = 0;
}

void fw_string::append(char c)
{
    if (c == 0)
        return;
    const char text[2] = {c, 0};
    append(text, 1);
}

void fw_string::insert(const char* text, uint32_t position)
{
    const uint32_t old = length();
    FW_ASSERT(position <= old);
    if (!text || text[0] == 0)
        return;
    const uint32_t added = static_cast<uint32_t>(std::strlen(text));
    if (block.sole() && old + added <= capacityField && !holds(text)) {
        std::memmove(chars() + position + added, chars() + position, old - position + 1);
        std::memcpy(chars() + position, text, added);
        return;
    }
    // A shared block, too little room, or text out of our own block: build anew, and
    // let the old block go only when everything has been copied out of it.
    fw_string fresh;
    fresh.reserve(old + added, false);
    std::memcpy(fresh.chars(), c_str(), position);
    std::memcpy(fresh.chars() + position, text, added);
    std::memcpy(fresh.chars() + position + added, c_str() + position, old - position + 1);
    *this = fresh;
}

fw_string fw_string::substr(uint32_t from, uint32_t to) const
{
    FW_ASSERT(from <= to);
    FW_ASSERT(to <= length());
    return fw_string(c_str() + from, to - from);
}

fw_string fw_string::reversed() const
{
    const uint32_t n = length();
    if (n == 0)
        return fw_string();
    fw_string result;
    result.reserve(n, false);
    const char* text = c_str();
    for (uint32_t i = 0; i < n; ++i)
        result.chars()[i] = text[n - 1 - i];
    result.chars()[n] = 0;
    return result;
}

int32_t fw_string::find(const char* text, uint32_t from) const
{
    const uint32_t n = length();
    FW_ASSERT(from <= n);
    if (from == n || !text || text[0] == 0)
        return -1;
    const char* hit = std::strstr(c_str() + from, text);
    return hit ? static_cast<int32_t>(hit - c_str()) : -1;
}

int32_t fw_string::find(char c, uint32_t from) const
{
    const uint32_t n = length();
    FW_ASSERT(from <= n);
    if (from == n || c == 0)
        return -1;
    const char* hit = std::strchr(c_str() + from, c);
    return hit ? static_cast<int32_t>(hit - c_str()) : -1;
}

uint32_t fw_string::replace(const char* from, const char* to, uint32_t start)
{
    FW_ASSERT(from && from[0]);
    const uint32_t n = length();
    FW_ASSERT(start <= n);
    const char* text = c_str();
    const char* hit = std::strstr(text + start, from);
    if (!hit)
        return 0;
    if (!to)
        to = "";
    const uint32_t fromLength = static_cast<uint32_t>(std::strlen(from));
    const uint32_t toLength = static_cast<uint32_t>(std::strlen(to));
    // One pass into a new string: `from` and `to` may lie in our own block, which
    // stays alive until the result replaces it.
    fw_string result;
    result.reserve(n, false);
    const char* rest = text;
    uint32_t count = 0;
    for (; hit; hit = std::strstr(rest, from)) {
        if (hit > rest)
            result.append(rest, static_cast<uint32_t>(hit - rest));
        if (toLength)
            result.append(to, toLength);
        rest = hit + fromLength;
        ++count;
    }
    if (*rest)
        result.append(rest);
    *this = result;
    return count;
}

uint32_t fw_string::replace(char from, char to, uint32_t start)
{
    FW_ASSERT(from != 0 && to != 0);
    const uint32_t n = length();
    FW_ASSERT(start <= n);
    const char* hit = std::strchr(c_str() + start, from);
    if (!hit)
        return 0;
    const uint32_t first = static_cast<uint32_t>(hit - c_str());
    char* text = writable();
    uint32_t count = 0;
    for (uint32_t i = first; i < n; ++i) {
        if (text[i] == from) {
            text[i] = to;
            ++count;
        }
    }
    return count;
}

void fw_string::trim_left()
{
    const char* text = c_str();
    uint32_t skip = 0;
    while (text[skip] && is_blank(text[skip]))
        ++skip;
    if (skip == 0)
        return;
    char* own = writable();
    std::memmove(own, own + skip, std::strlen(own + skip) + 1);
}

void fw_string::trim_right()
{
    uint32_t n = length();
    const char* text = c_str();
    uint32_t keep = n;
    while (keep > 0 && is_blank(text[keep - 1]))
        --keep;
    if (keep == n)
        return;
    writable()[keep] = 0;
}

char fw_string::operator[](uint32_t position) const
{
    FW_ASSERT(position <= capacityField);
    return c_str()[position];
}

char& fw_string::operator[](uint32_t position)
{
    FW_ASSERT(position <= capacityField);
    return writable()[position];
}

fw_string fw_string::split_at(const char* hit)
{
    if (!hit) {
        fw_string whole(*this);
        release();
        return whole;
    }
    const char* text = c_str();
    fw_string head(text, static_cast<uint32_t>(hit - text));
    assign(hit + 1);
    return head;
}

fw_string fw_string::split_first(char c)
{
    return split_at(c ? std::strchr(c_str(), c) : nullptr);
}

fw_string fw_string::split_first_of(const char* characters)
{
    return split_at(characters && characters[0] ? std::strpbrk(c_str(), characters) : nullptr);
}

uint32_t fw_string::count_tail_without(const char* characters) const
{
    const char* text = c_str();
    const uint32_t n = length();
    uint32_t i = n;
    while (i > 0 && !(characters && std::strchr(characters, text[i - 1])))
        --i;
    return n - i;
}

bool fw_string::operator==(const char* text) const
{
    if (!text)
        return empty();
    return std::strcmp(c_str(), text) == 0;
}

fw_string operator+(const fw_string& a, const fw_string& b)
{
    if (b.empty())
        return a;
    if (a.empty())
        return b;
    fw_string result;
    result.reserve(a.length() + b.length(), false);
    result.append(a.c_str());
    result.append(b.c_str());
    return result;
}

fw_string operator+(const fw_string& a, const char* b)
{
    return a + fw_string(b);
}

fw_string operator+(const char* a, const fw_string& b)
{
    return fw_string(a) + b;
}

fw_string base_name(const fw_string& path)
{
    const uint32_t n = path.length();
    const uint32_t tail = path.count_tail_without("/\\");
    if (tail == n)
        return path;
    return path.substr(n - tail, n);
}
