// The text types of the Framework layer: String holds UTF-16 (one character is one
// 16-bit unit), AnsiString holds bytes in the system's ANSI code page, or UTF-8 where
// a function says so. Both are copy-on-write BasicStrings; see BasicString.h for the
// sharing, capacity and failure rules.
//
// Conversions between them go through the platform:
//   String(AnsiString)  MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED)
//   AnsiString(String)  WideCharToMultiByte(CP_ACP), unmappable characters become
//                       the code page's default character, silently
//   toUtf8 / fromUtf8   CP_UTF8
// A failed conversion throws OsException with the platform's error.
#pragma once
#include "Framework/BasicString.h"

#include <cstdarg>
#include <cwctype>

class fw_string;

namespace Framework {

class AnsiString;
template <class T>
class Array;

class String : public BasicString<wchar_t>
{
public:
    String() = default;
    String(const wchar_t* text, uint32_t length = npos) : BasicString(text, length) {}
    // Narrow text in the ANSI code page, widened: how a narrow literal becomes a String.
    String(const char* text, uint32_t length = npos);
    explicit String(uint32_t length) : BasicString(length) {}
    String(const BasicString<wchar_t>& other) : BasicString(other) {}
    explicit String(const AnsiString& text);

    // printf-style rendering in the dialect of FormatEngine.h: %s narrow text, %S wide
    // text, %Ld / %lld 64-bit. A null format, a failed count or a result above 0xA00000
    // characters throws ErrorException.
    static String format(const wchar_t* format, ...);
    static String vformat(const wchar_t* format, va_list args);

    // The pieces between delimiters, empty pieces dropped: ";;a;;b;" by ';' -> "a", "b".
    Array<String> split(wchar_t delimiter) const;
    // Any character of `delimiters` separates; null asserts.
    Array<String> split(const wchar_t* delimiters) const;
    // The items with the separator between them, in one allocation; no items give "".
    static String join(const String& separator, const Array<String>& items);

    // Last occurrence whose final character stands at or before index upTo (npos
    // means length); upTo > length gives Range(0, length, upTo).
    uint32_t rfind(const wchar_t* sequence, uint32_t sequenceLength, uint32_t upTo = npos) const;
    uint32_t count(wchar_t c) const;
    // False if the argument is longer.
    bool startsWith(const String& prefix) const;
    using BasicString::startsWith;
    // Null text asserts.
    bool endsWith(const wchar_t* text) const;
    using BasicString::endsWith;

    // Before `position`; position > length gives Range(0, length, position). Detaches.
    void insert(uint32_t position, wchar_t c);
    void insert(uint32_t position, const wchar_t* text);
    // Replaces every occurrence from `from` on, going on behind the inserted text;
    // returns the count. Detaches when something is replaced.
    uint32_t replaceAll(const wchar_t* oldText, const wchar_t* newText, uint32_t from = 0);
    uint32_t replaceChar(wchar_t oldChar, wchar_t newChar, uint32_t from = 0);
    // In place; detach first.
    void reverse();
    void toLower();
    // Cuts at the first zero unit: for strings that a platform call filled.
    void trimAtZero();

    // Number parsing. radix 0 means detectRadix(); a radix of 1 or above 36 asserts.
    // A character that can't be part of the number throws FormatException with its
    // position; a value that doesn't fit throws OverflowException. A digit at or
    // above the radix ends the number silently: "0x10x5" in radix 16 is 16.
    //   "12", "+12", "007" -> 12, 12, 7       "-0x1f" (radix 0) -> -31
    //   "0x10" in radix 10  -> FormatException at 1
    //   "-1" unsigned       -> FormatException at 0
    int32_t toInt(uint32_t radix = 10) const;
    uint32_t toUint(uint32_t radix = 10) const;
    int64_t toHyper(uint32_t radix = 10) const;
    uint64_t toUhyper(uint32_t radix = 10) const;
    // 16 when, after one optional sign, the text starts with 0x or 0X and has at
    // least 3 characters; else 10.
    uint32_t detectRadix() const;
};

class AnsiString : public BasicString<char>
{
public:
    AnsiString() = default;
    AnsiString(const char* text, uint32_t length = npos) : BasicString(text, length) {}
    explicit AnsiString(uint32_t length) : BasicString(length) {}
    AnsiString(const BasicString<char>& other) : BasicString(other) {}
    explicit AnsiString(const String& text);

    // The dialect of FormatEngine.h, with no limit on the result's length; a null
    // format or a failed count throws ErrorException.
    static AnsiString format(const char* format, ...);
    static AnsiString vformat(const char* format, va_list args);

    // Any character of `delimiters` separates; empty pieces are dropped; null asserts.
    Array<AnsiString> split(const char* delimiters) const;

    // Removes one pair of matching ' or " from the ends of a text of at least 2
    // characters and returns the quote character; else returns 0.
    char unquote();
    // Replaces the first occurrence at or after `from`; null arguments assert.
    bool replaceFirst(const char* oldText, const char* newText, uint32_t from = 0);
};

String operator+(const String& a, const String& b);
String operator+(const String& a, wchar_t c);
// One new string of the summed length, in one allocation.
String concat(const wchar_t* a, uint32_t aLength, const wchar_t* b, uint32_t bLength);

inline bool operator==(const String& a, const String& b)
{
    return compare(a.c_str(), a.length(), b.c_str(), b.length()) == 0;
}
inline bool operator!=(const String& a, const String& b) { return !(a == b); }
inline bool operator==(const AnsiString& a, const AnsiString& b)
{
    return compare(a.c_str(), a.length(), b.c_str(), b.length()) == 0;
}
inline bool operator!=(const AnsiString& a, const AnsiString& b) { return !(a == b); }

namespace Detail {
// The runtime's towlower, with ASCII answered here: towlower gives the same for it,
// and name lookups lower every unit of every key.
inline wchar_t lowerUnit(wchar_t c)
{
    if (c < 0x80)
        return c >= L'A' && c <= L'Z' ? wchar_t(c + 32) : c;
    return wchar_t(std::towlower(c));
}
}  // namespace Detail

// Each unit through the runtime's towlower; at the first difference the result is
// the difference of the lowered units, else -1, 0 or 1 by length.
int compareNoCase(const wchar_t* a, uint32_t aLength, const wchar_t* b, uint32_t bLength);

AnsiString toUtf8(const String& text);
String fromUtf8(const AnsiString& utf8);
// The bytes up to the first zero; a String goes through AnsiString first.
fw_string toFwString(const AnsiString& text);
fw_string toFwString(const String& text);

// Decimal, no grouping; a negative value gets a leading "-".
String toString(int64_t value);
String toString(uint32_t value);
String toString(uint64_t value);

}  // namespace Framework
