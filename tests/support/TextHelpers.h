// Printing Framework strings in test failures, as UTF-8.
#pragma once
#include "Framework/String.h"

#include <ostream>
#include <string>

namespace Framework {

inline std::string narrowForTest(const String& text)
{
    std::string out;
    for (uint32_t i = 0; i < text.length(); ++i) {
        const wchar_t c = text.c_str()[i];
        if (c < 0x80) {
            out += char(c);
        } else {
            out += "\\u";
            static const char digits[] = "0123456789abcdef";
            for (int shift = 12; shift >= 0; shift -= 4)
                out += digits[(c >> shift) & 15];
        }
    }
    return out;
}

inline void PrintTo(const String& text, std::ostream* os)
{
    *os << '"' << narrowForTest(text) << '"';
}

inline void PrintTo(const AnsiString& text, std::ostream* os)
{
    *os << '"' << std::string(text.c_str(), text.length()) << '"';
}

}  // namespace Framework
