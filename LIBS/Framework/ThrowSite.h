// Where an exception was thrown: a tag of 32 hexadecimal digits that stands for the
// source file, and the line. Throw with `throw new SomeException(SITE, ...)`.
//
// The tag is made at compile time from the file's path relative to the source root
// (two 64-bit FNV-1a hashes), so it names the file without showing it and stays the
// same from build to build. Each file's tag lives once, in static storage.
#pragma once
#include <cstdint>

namespace Framework {

struct ThrowSite
{
    const char* tag;
    uint32_t line;
};

namespace Detail {

constexpr uint64_t fnv1a(const char* text, uint64_t hash)
{
    while (*text) {
        hash ^= static_cast<unsigned char>(*text++);
        hash *= 0x100000001b3ull;
    }
    return hash;
}

struct SiteTagText
{
    char text[33];
};

template <uint64_t high, uint64_t low>
struct SiteTag
{
    static constexpr SiteTagText make()
    {
        SiteTagText tag{};
        const char digits[] = "0123456789ABCDEF";
        for (int i = 0; i < 16; ++i) {
            tag.text[i] = digits[(high >> (60 - 4 * i)) & 15];
            tag.text[16 + i] = digits[(low >> (60 - 4 * i)) & 15];
        }
        tag.text[32] = 0;
        return tag;
    }
    static constexpr SiteTagText value = make();
};

}  // namespace Detail
}  // namespace Framework

#define SITE                                                                                    \
    (::Framework::ThrowSite{                                                                    \
        ::Framework::Detail::SiteTag<::Framework::Detail::fnv1a(__FILE__, 0xcbf29ce484222325ull), \
                                     ::Framework::Detail::fnv1a(__FILE__, 0x84222325cbf29ce4ull)>::value.text, \
        static_cast<uint32_t>(__LINE__)})
