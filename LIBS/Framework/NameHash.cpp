#include "Framework/NameHash.h"

namespace Framework {

uint32_t hashName(const String& name)
{
    // The same value as hashing a lowered copy, without making the copy: a lookup
    // costs no allocation. An ASCII unit lowers to ASCII, whose high byte is 0 and
    // whose low byte is positive, so its two steps fold into one: h * 33 * 33 + low * 33.
    const wchar_t* text = name.c_str();
    const uint32_t length = name.length();
    uint32_t h = 0;
    for (uint32_t i = 0; i < length; ++i) {
        const wchar_t c = text[i];
        if (c < 0x80) {
            const uint32_t low = c >= L'A' && c <= L'Z' ? uint32_t(c) + 32 : uint32_t(c);
            h = h * 1089 + low * 33;
            continue;
        }
        const uint16_t unit = uint16_t(Detail::lowerUnit(c));
        h = uint32_t(int32_t(int8_t(unit & 0xFF))) + h * 33;
        h = uint32_t(int32_t(int8_t(unit >> 8))) + h * 33;
    }
    return h;
}

}  // namespace Framework
