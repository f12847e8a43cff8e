#include "Framework/NameHash.h"

namespace Framework {

uint32_t hashName(const String& name)
{
    // The same value as hashing a lowered copy, without making the copy: a lookup
    // costs no allocation.
    const wchar_t* text = name.c_str();
    uint32_t h = 0;
    for (uint32_t i = 0; i < name.length(); ++i) {
        const uint16_t unit = uint16_t(Detail::lowerUnit(text[i]));
        h = uint32_t(int32_t(int8_t(unit & 0xFF))) + h * 33;
        h = uint32_t(int32_t(int8_t(unit >> 8))) + h * 33;
    }
    return h;
}

}  // namespace Framework
