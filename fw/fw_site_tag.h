// A tag for a source file, made at compile time: 32 hexadecimal digits from two
// 64-bit FNV-1a hashes (two seeds) of the file's path. The build maps the source root
// away from __FILE__, so the path is relative, the tag names the file without showing
// it, and it stays the same from build to build and machine to machine.
//
// FW_SITE_TAG is the tag of the file it is written in, one constant in static storage
// per file. Both layers tag their throw sites with it, so a tag means the same file
// whichever layer printed it.
#pragma once
#include <cstdint>

constexpr uint64_t fw_site_hash(const char* text, uint64_t hash)
{
    while (*text) {
        hash ^= static_cast<unsigned char>(*text++);
        hash *= 0x100000001b3ull;
    }
    return hash;
}

struct fw_site_tag_text
{
    char text[33];
};

template <uint64_t high, uint64_t low>
struct fw_site_tag
{
    static constexpr fw_site_tag_text make()
    {
        fw_site_tag_text tag{};
        const char digits[] = "0123456789ABCDEF";
        for (int i = 0; i < 16; ++i) {
            tag.text[i] = digits[(high >> (60 - 4 * i)) & 15];
            tag.text[16 + i] = digits[(low >> (60 - 4 * i)) & 15];
        }
        tag.text[32] = 0;
        return tag;
    }
    static constexpr fw_site_tag_text value = make();
};

#define FW_SITE_TAG                                                 \
    (::fw_site_tag<::fw_site_hash(__FILE__, 0xcbf29ce484222325ull), \
                   ::fw_site_hash(__FILE__, 0x84222325cbf29ce4ull)>::value.text)
