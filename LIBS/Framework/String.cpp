#include "Framework/String.h"

#include "Framework/Array.h"
#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "fw/fw_string.h"

#include <windows.h>
#include <cstring>
#include <cwchar>
#include <cwctype>
#include <limits>

namespace Framework {

namespace {

// The system's ANSI code page and the flag the conversions have always used.
const UINT ansiCodePage = CP_ACP;
const DWORD precomposed = MB_PRECOMPOSED;

[[noreturn]] void throwLastError(const ThrowSite& site)
{
    throw new OsException(site, OsError(true), 0, String(), String());
}

}  // namespace

// --- conversions -------------------------------------------------------------

String::String(const char* text, uint32_t length) : String(AnsiString(text, length)) {}

String::String(const AnsiString& text)
{
    if (text.empty())
        return;
    resize(text.length());
    int converted = MultiByteToWideChar(ansiCodePage, precomposed, text.c_str(), int(text.length()),
                                        payload(), int(length()));
    if (converted == 0) {
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER)
            throwLastError(SITE);
        const int needed =
            MultiByteToWideChar(ansiCodePage, precomposed, text.c_str(), int(text.length()), nullptr, 0);
        resize(uint32_t(needed));
        converted = MultiByteToWideChar(ansiCodePage, precomposed, text.c_str(), int(text.length()),
                                        payload(), int(length()));
        if (converted == 0)
            throwLastError(SITE);
    }
    if (uint32_t(converted) != length())
        resize(uint32_t(converted));
}

AnsiString::AnsiString(const String& text)
{
    if (text.empty())
        return;
    resize(text.length());
    int converted = WideCharToMultiByte(ansiCodePage, 0, text.c_str(), int(text.length()), payload(),
                                        int(length()), nullptr, nullptr);
    if (converted == 0) {
        if (GetLastError() != ERROR_INSUFFICIENT_BUFFER)
            throwLastError(SITE);
        const int needed =
            WideCharToMultiByte(ansiCodePage, 0, text.c_str(), int(text.length()), nullptr, 0, nullptr, nullptr);
        resize(uint32_t(needed));
        converted = WideCharToMultiByte(ansiCodePage, 0, text.c_str(), int(text.length()), payload(),
                                        int(length()), nullptr, nullptr);
        if (converted == 0)
            throwLastError(SITE);
    }
    if (uint32_t(converted) != length())
        resize(uint32_t(converted));
}

AnsiString toUtf8(const String& text)
{
    if (text.empty())
        return AnsiString();
    AnsiString result(text.length() * 3);
    const int converted = WideCharToMultiByte(CP_UTF8, 0, text.c_str(), int(text.length()),
                                              &result.refAt(0), int(result.length()), nullptr, nullptr);
    if (converted == 0)
        throwLastError(SITE);
    result.resize(uint32_t(converted));
    return result;
}

String fromUtf8(const AnsiString& utf8)
{
    if (utf8.empty())
        return String();
    String result(utf8.length() * 2);
    const int converted =
        MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), int(utf8.length()), &result.refAt(0), int(result.length()));
    if (converted == 0)
        throwLastError(SITE);
    result.resize(uint32_t(converted));
    return result;
}

fw_string toFwString(const AnsiString& text)
{
    return fw_string(text.c_str());
}

fw_string toFwString(const String& text)
{
    return toFwString(AnsiString(text));
}

// --- numbers as text ---------------------------------------------------------

namespace {

// Digits least significant first, then reversed.
String decimal(uint64_t magnitude, bool negative)
{
    wchar_t digits[24];
    uint32_t n = 0;
    do {
        digits[n++] = wchar_t(L'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude);
    if (negative)
        digits[n++] = L'-';
    String result(digits, n);
    result.reverse();
    return result;
}

}  // namespace

String toString(int64_t value)
{
    const bool negative = value < 0;
    const uint64_t magnitude = negative ? 0 - uint64_t(value) : uint64_t(value);
    return decimal(magnitude, negative);
}

String toString(uint32_t value)
{
    return decimal(value, false);
}

String toString(uint64_t value)
{
    return decimal(value, false);
}

// --- String only -------------------------------------------------------------

uint32_t String::rfind(const wchar_t* sequence, uint32_t sequenceLength, uint32_t upTo) const
{
    if (upTo == npos)
        upTo = length();
    if (upTo > length())
        throw new RangeException(SITE, 0, length(), upTo);
    if (empty())
        return npos;
    if (sequenceLength == npos)
        sequenceLength = textLength(sequence);
    if (sequenceLength == 0 || sequenceLength > upTo + 1)
        return npos;
    const wchar_t* text = c_str();
    // The final character may stand at upTo itself, but never beyond the text.
    uint32_t lastEnd = upTo + 1 < length() ? upTo + 1 : length();
    if (lastEnd < sequenceLength)
        return npos;
    for (uint32_t start = lastEnd - sequenceLength + 1; start-- > 0;) {
        if (std::wmemcmp(text + start, sequence, sequenceLength) == 0)
            return start;
    }
    return npos;
}

uint32_t String::count(wchar_t c) const
{
    uint32_t n = 0;
    const wchar_t* text = c_str();
    for (uint32_t i = 0; i < length(); ++i)
        n += text[i] == c;
    return n;
}

bool String::startsWith(const String& prefix) const
{
    return prefix.length() <= length() && std::wmemcmp(c_str(), prefix.c_str(), prefix.length()) == 0;
}

bool String::endsWith(const wchar_t* text) const
{
    const uint32_t n = textLength(text);
    return n <= length() && std::wmemcmp(c_str() + length() - n, text, n) == 0;
}

void String::insert(uint32_t position, wchar_t c)
{
    const wchar_t text[2] = {c, 0};
    if (position > length())
        throw new RangeException(SITE, 0, length(), position);
    replace(position, 0, text, 1);
}

void String::insert(uint32_t position, const wchar_t* text)
{
    if (position > length())
        throw new RangeException(SITE, 0, length(), position);
    const uint32_t n = textLength(text);
    if (n)
        replace(position, 0, text, n);
}

uint32_t String::replaceAll(const wchar_t* oldText, const wchar_t* newText, uint32_t from)
{
    if (!oldText || !newText)
        throw new ErrorException(SITE);
    const uint32_t oldLength = textLength(oldText);
    const uint32_t newLength = textLength(newText);
    if (oldLength == 0)
        return 0;
    uint32_t replaced = 0;
    uint32_t at = find(oldText, oldLength, from);
    while (at != npos) {
        replace(at, oldLength, newText, newLength);
        ++replaced;
        at = find(oldText, oldLength, at + newLength);
    }
    return replaced;
}

uint32_t String::replaceChar(wchar_t oldChar, wchar_t newChar, uint32_t from)
{
    uint32_t replaced = 0;
    for (uint32_t i = from; i < length(); ++i) {
        if (c_str()[i] == oldChar) {
            refAt(i) = newChar;
            ++replaced;
        }
    }
    return replaced;
}

void String::reverse()
{
    if (length() < 2)
        return;
    wchar_t* text = writablePayload();
    for (uint32_t i = 0, j = length() - 1; i < j; ++i, --j) {
        const wchar_t c = text[i];
        text[i] = text[j];
        text[j] = c;
    }
}

void String::toLower()
{
    if (empty())
        return;
    wchar_t* text = writablePayload();
    for (uint32_t i = 0; i < length(); ++i)
        text[i] = Detail::lowerUnit(text[i]);
}

void String::trimAtZero()
{
    const wchar_t* text = c_str();
    for (uint32_t i = 0; i < length(); ++i) {
        if (text[i] == 0) {
            truncate(i);
            return;
        }
    }
}

uint32_t String::detectRadix() const
{
    const wchar_t* text = c_str();
    uint32_t i = (length() > 0 && (text[0] == L'+' || text[0] == L'-')) ? 1 : 0;
    if (length() >= 3 && i + 1 < length() && text[i] == L'0' && (text[i + 1] == L'x' || text[i + 1] == L'X'))
        return 16;
    return 10;
}

int compareNoCase(const wchar_t* a, uint32_t aLength, const wchar_t* b, uint32_t bLength)
{
    const uint32_t shorter = aLength < bLength ? aLength : bLength;
    for (uint32_t i = 0; i < shorter; ++i) {
        const int x = int(Detail::lowerUnit(a[i]));
        const int y = int(Detail::lowerUnit(b[i]));
        if (x != y)
            return x - y;
    }
    return aLength < bLength ? -1 : (aLength > bLength ? 1 : 0);
}

String operator+(const String& a, const String& b)
{
    return concat(a.c_str(), a.length(), b.c_str(), b.length());
}

String operator+(const String& a, wchar_t c)
{
    return concat(a.c_str(), a.length(), &c, 1);
}

String concat(const wchar_t* a, uint32_t aLength, const wchar_t* b, uint32_t bLength)
{
    if (uint64_t(aLength) + bLength > 0x80000000u)
        throw new ErrorException(SITE);
    const uint32_t total = aLength + bLength;
    if (total == 0)
        return String();
    String result(total);
    wchar_t* text = &result.refAt(0);
    std::wmemcpy(text, a, aLength);
    std::wmemcpy(text + aLength, b, bLength);
    return result;
}

// --- AnsiString only ---------------------------------------------------------

char AnsiString::unquote()
{
    const char* text = c_str();
    const uint32_t n = length();
    if (n < 2 || text[0] != text[n - 1] || (text[0] != '\'' && text[0] != '"'))
        return 0;
    const char quote = text[0];
    erase(n - 1, n);
    erase(0, 1);
    return quote;
}

bool AnsiString::replaceFirst(const char* oldText, const char* newText, uint32_t from)
{
    if (!oldText || !newText)
        throw new ErrorException(SITE);
    const uint32_t oldLength = textLength(oldText);
    if (oldLength == 0)
        return false;
    const uint32_t at = find(oldText, oldLength, from);
    if (at == npos)
        return false;
    replace(at, oldLength, newText, textLength(newText));
    return true;
}

// --- number parsing ----------------------------------------------------------

namespace {

enum class ParseState { Start, AfterSign, LeadingZeros, Digits };

// One state machine for the four targets. The overflow test is exact: it refuses
// every value beyond the target's range, which includes every case where the
// wrapped-around next value would not exceed the previous one.
template <class T, bool isSigned>
T parseNumber(const wchar_t* text, uint32_t length, uint32_t radix)
{
    using Limits = std::numeric_limits<T>;
    if (radix == 1 || radix > 36)
        throw new ErrorException(SITE);
    T result = 0;
    bool positive = true;
    ParseState state = ParseState::Start;
    uint32_t i = 0;
    while (i < length) {
        const wchar_t c = text[i];
        if (c == L'-' || c == L'+' || (radix == 16 && (c == L'x' || c == L'X'))) {
            // signs, and the x of a hexadecimal prefix, pass the filter
        } else if (radix <= 10) {
            if (c > wchar_t(L'0' + radix - 1))
                throw new FormatException(SITE, i);
        } else if ((c >= L'a' && c <= L'z' && c > wchar_t(L'a' + radix - 11)) ||
                   (c >= L'A' && c <= L'Z' && c > wchar_t(L'A' + radix - 11))) {
            throw new FormatException(SITE, i);
        }
        const bool nextIsX = i + 1 < length && (text[i + 1] == L'x' || text[i + 1] == L'X');
        switch (state) {
        case ParseState::Start:
            state = ParseState::AfterSign;
            if (isSigned && (c == L'-' || c == L'+')) {
                positive = c == L'+';
                ++i;
                continue;
            }
            // fall through
        case ParseState::AfterSign:
            state = ParseState::LeadingZeros;
            if (c != L'0') {
                state = ParseState::Digits;
                break;
            }
            if (nextIsX && radix != 16)
                throw new FormatException(SITE, i + 1);
            i += nextIsX ? 2 : 1;
            continue;
        case ParseState::LeadingZeros:
            if (c == L'0') {
                ++i;
                continue;
            }
            state = ParseState::Digits;
            break;
        case ParseState::Digits:
            break;
        }
        uint32_t digit;
        if (c >= L'0' && c <= L'9')
            digit = uint32_t(c - L'0');
        else if (c >= L'A' && c <= L'Z')
            digit = uint32_t(c - L'A' + 10);
        else if (c >= L'a' && c <= L'z')
            digit = uint32_t(c - L'a' + 10);
        else
            throw new FormatException(SITE, i);
        if (digit >= radix)
            return result;
        const T r = T(radix);
        const T d = T(digit);
        if (positive) {
            if (result > (Limits::max() - d) / r)
                throw new OverflowException(SITE);
            result = T(result * r + d);
        } else {
            if (result < (Limits::min() + d) / r)
                throw new OverflowException(SITE);
            result = T(result * r - d);
        }
        ++i;
    }
    return result;
}

}  // namespace

int32_t String::toInt(uint32_t radix) const
{
    return parseNumber<int32_t, true>(c_str(), length(), radix ? radix : detectRadix());
}

uint32_t String::toUint(uint32_t radix) const
{
    return parseNumber<uint32_t, false>(c_str(), length(), radix ? radix : detectRadix());
}

int64_t String::toHyper(uint32_t radix) const
{
    return parseNumber<int64_t, true>(c_str(), length(), radix ? radix : detectRadix());
}

uint64_t String::toUhyper(uint32_t radix) const
{
    return parseNumber<uint64_t, false>(c_str(), length(), radix ? radix : detectRadix());
}

namespace {

// The pieces of text between characters for which isDelimiter holds; empty pieces
// are dropped.
template <class StringType, class Char, class IsDelimiter>
Array<StringType> splitText(const StringType& text, IsDelimiter isDelimiter)
{
    Array<StringType> pieces;
    const Char* chars = text.c_str();
    uint32_t start = 0;
    for (uint32_t i = 0; i <= text.length(); ++i) {
        if (i < text.length() && !isDelimiter(chars[i]))
            continue;
        if (i > start)
            pieces.add(StringType(chars + start, i - start));
        start = i + 1;
    }
    return pieces;
}

}  // namespace

Array<String> String::split(wchar_t delimiter) const
{
    return splitText<String, wchar_t>(*this, [delimiter](wchar_t c) { return c == delimiter; });
}

Array<String> String::split(const wchar_t* delimiters) const
{
    textLength(delimiters);
    return splitText<String, wchar_t>(*this, [delimiters](wchar_t c) { return findChar(delimiters, c) != npos; });
}

Array<AnsiString> AnsiString::split(const char* delimiters) const
{
    textLength(delimiters);
    return splitText<AnsiString, char>(*this, [delimiters](char c) { return findChar(delimiters, c) != npos; });
}

String String::join(const String& separator, const Array<String>& items)
{
    String result;
    const uint32_t n = items.size();
    if (n == 0)
        return result;
    uint64_t total = uint64_t(separator.length()) * (n - 1);
    for (uint32_t i = 0; i < n; ++i)
        total += items.at(i).length();
    if (total > 0x80000000u)
        throw new ErrorException(SITE);
    result.reserve(uint32_t(total));
    for (uint32_t i = 0; i < n; ++i) {
        if (i > 0)
            result.append(separator);
        result.append(items.at(i));
    }
    return result;
}

}  // namespace Framework
