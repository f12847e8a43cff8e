#include "Framework/NameHash.h"

namespace Framework {

namespace {

// An ASCII unit lowered: still ASCII, with a high byte of 0 and a positive low byte.
inline uint32_t lowerAscii(wchar_t c)
{
    return c >= L'A' && c <= L'Z' ? uint32_t(c) + 32 : uint32_t(c);
}

}  // namespace

uint32_t hashName(const String& name)
{
    // The same value as hashing a lowered copy, without making the copy: a lookup
    // costs no allocation. An ASCII unit's two steps fold into one,
    // h * 33 * 33 + low * 33, and two ASCII units in a row into one multiplication on
    // h, h * 1089 * 1089 + (low0 * 1089 + low1) * 33, which halves the chain of
    // dependent multiplications a name costs.
    const wchar_t* text = name.c_str();
    const uint32_t length = name.length();
    uint32_t h = 0;
    uint32_t i = 0;
    while (i < length) {
        const wchar_t c = text[i];
        if (c < 0x80) {
            if (i + 1 < length && text[i + 1] < 0x80) {
                h = h * (1089u * 1089u) + (lowerAscii(c) * 1089u + lowerAscii(text[i + 1])) * 33u;
                i += 2;
            } else {
                h = h * 1089u + lowerAscii(c) * 33u;
                i += 1;
            }
            continue;
        }
        const uint16_t unit = uint16_t(Detail::lowerUnit(c));
        h = uint32_t(int32_t(int8_t(unit & 0xFF))) + h * 33;
        h = uint32_t(int32_t(int8_t(unit >> 8))) + h * 33;
        i += 1;
    }
    return h;
}

}  // namespace Framework
