// The case-insensitive name maps of the Framework layer: a key is found by hashName
// and then by compareNoCase, so "Level" and "LEVEL" are one key. Such a map keeps its
// keys in no order a caller can use; a store that must keep the order of insertion
// keeps a list of its own beside the map.
#pragma once
#include "Framework/String.h"

#include <cwchar>
#include <unordered_map>

namespace Framework {

// Over the lowered text (towlower, unit by unit), each byte of the UTF-16 text, low
// byte of a unit first, taken as a signed 8-bit number: h = byte + h * 33, from 0,
// wrapping. The empty name hashes to 0; "Abc" and "aBC" hash alike.
uint32_t hashName(const String& name);

struct NameHash
{
    size_t operator()(const String& name) const { return hashName(name); }
};

struct NameEquals
{
    // Names of other lengths differ whatever their case; a name asked for in its
    // stored spelling (the usual case) is settled by comparing the units as they are.
    bool operator()(const String& a, const String& b) const
    {
        const uint32_t length = a.length();
        if (length != b.length())
            return false;
        const wchar_t* x = a.c_str();
        const wchar_t* y = b.c_str();
        return x == y || std::wmemcmp(x, y, length) == 0 || compareNoCase(x, length, y, length) == 0;
    }
};

template <class Value>
using NameMap = std::unordered_map<String, Value, NameHash, NameEquals>;

}  // namespace Framework
