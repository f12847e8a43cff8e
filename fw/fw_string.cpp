#include "fw/fw_string.h"

#include <windows.h>
#include <cstring>
#include <new>

struct fw_string::block_header
{
    volatile LONG refCount;
    char text[1];
};

namespace {

const char emptyText[1] = {0};

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || (c >= 10 && c <= 13);
}

}  // namespace

uint32_t fw_string::block_size_for(uint32_t capacity)
{
    const uint32_t t = capacity + 5;
    if (t <= 32)
        return 32;
    const uint32_t r = t % 64;
    return r <= 32 ? t - r + 32 : t - r + 96;
}

fw_string::fw_string() : block(nullptr), capacityField(0) {}

fw_string::fw_string(const fw_string& other) : block(other.block), capacityField(other.capacityField)
{
    if (block)
        InterlockedIncrement(&block->refCount);
}

fw_string::fw_string(const char* text) : fw_string()
{
    assign(text);
}

fw_string::fw_string(const char* text, uint32_t length) : fw_string()
{
    assign(text, length);
}

fw_string::~fw_string()
{
    release();
}

void fw_string::release()
{
    if (block && InterlockedDecrement(&block->refCount) == 0)
        ::operator delete(block);
    block = nullptr;
    capacityField = 0;
}

fw_string& fw_string::operator=(const fw_string& other)
{
    if (other.block)
        InterlockedIncrement(&other.block->refCount);
    release();
    block = other.block;
    capacityField = other.capacityField;
    return *this;
}

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
    const bool inside = block && text >= block->text && text <= block->text + capacityField;
    fw_string keep;
    if (inside)
        keep = *this;
    reserve(length, false);
    std::memmove(block->text, text, length);
    block->text[length] = 0;
}

const char* fw_string::c_str() const
{
    return block ? block->text : emptyText;
}

char* fw_string::writable()
{
    reserve(capacityField, true);
    return block->text;
}

uint32_t fw_string::length() const
{
    return static_cast<uint32_t>(std::strlen(c_str()));
}

void fw_string::reserve(uint32_t n, bool keepText)
{
    const uint32_t size = block_size_for(n);
    const uint32_t newCapacity = size - 5;
    if (block && newCapacity <= capacityField && block->refCount < 2)
        return;
    uint32_t kept = 0;
    if (keepText && block) {
        kept = static_cast<uint32_t>(strnlen(block->text, capacityField));
        if (kept > newCapacity)
            kept = newCapacity;
    }
    fw_string holder(*this);
    release();
    auto* fresh = static_cast<block_header*>(::operator new(size));
    if (kept)
        std::memcpy(fresh->text, holder.block->text, kept);
    fresh->text[kept] = 0;
    reinterpret_cast<char*>(fresh)[size - 1] = 0;
    fresh->refCount = 1;
    block = fresh;
    capacityField = newCapacity;
}

void fw_string::append(const char* text, uint32_t length)
{
    if (!text)
        return;
    if (length == 0)
        length = static_cast<uint32_t>(std::strlen(text));
    else if (const char* end = static_cast<const char*>(std::memchr(text, 0, length)))
        length = static_cast<uint32_t>(end - text);
    if (length == 0)
        return;
    // Text from our own block: remember its offset, since reserve may move the block.
    const char* base = block ? block->text : nullptr;
    const bool inside = base && text >= base && text < base + capacityField + 1;
    const uint32_t offset = inside ? static_cast<uint32_t>(text - base) : 0;
    fw_string keep;  // keeps the old block alive while we copy out of it
    if (inside)
        keep = *this;
    const uint32_t old = this->length();
    reserve(old + length, true);
    const char* source = inside ? keep.block->text + offset : text;
    std::memmove(block->text + old, source, length);
    block->text[old + length] = 0;
}

void fw_string::append(char c)
{
    if (c == 0)
        return;
    const char text[2] = {c, 0};
    append(text, 1);
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
