#include "Framework/FormatEngine.h"

#include "Framework/Exceptions.h"

#include <cstdarg>
#include <cstdio>
#include <memory>

namespace Framework {

namespace {

// The largest result String::format makes, in characters.
const uint32_t formatLimit = 0xA00000;

template <class Char>
bool isFlag(Char c)
{
    return c == '+' || c == '-' || c == '0' || c == ' ' || c == '#';
}

template <class Char>
bool isDigit(Char c)
{
    return c >= '0' && c <= '9';
}

template <class Char>
bool isConversion(Char c)
{
    for (const char* letter = "cCdiouxXeEfFgGnpsSaA"; *letter; ++letter)
        if (c == Char(*letter))
            return true;
    return false;
}

// The number of characters of a length modifier at text[i], or 0.
template <class Char>
uint32_t lengthAt(const Char* text, uint32_t size, uint32_t i)
{
    const Char c = text[i];
    if (c == 'I' && i + 2 < size && ((text[i + 1] == '6' && text[i + 2] == '4') || (text[i + 1] == '3' && text[i + 2] == '2')))
        return 3;
    if ((c == 'h' || c == 'l') && i + 1 < size && text[i + 1] == c)
        return 2;
    if (c == 'h' || c == 'l' || c == 'L')
        return 1;
    return 0;
}

// Walks a format as the dialect reads it and tells the visitor what to emit:
// copy(text, n) for text that stays as it is, length64() where an ll or L stood in
// front of a conversion, and conversion(letter) for each conversion letter found.
// Never reads past `size`.
template <class Char, class Visitor>
void scanFormat(const Char* text, uint32_t size, Visitor& visitor)
{
    uint32_t i = 0;
    while (i < size) {
        if (text[i] != '%') {
            const uint32_t start = i;
            while (i < size && text[i] != '%')
                ++i;
            visitor.copy(text + start, i - start);
            continue;
        }
        const uint32_t percent = i++;
        if (i < size && text[i] == '%') {
            visitor.copy(text + percent, 2);
            ++i;
            continue;
        }
        while (i < size && isFlag(text[i]))
            ++i;
        while (i < size && isDigit(text[i]))
            ++i;
        if (i + 1 < size && text[i] == '.' && isDigit(text[i + 1])) {
            i += 2;
            while (i < size && isDigit(text[i]))
                ++i;
        }
        visitor.copy(text + percent, i - percent);
        if (i >= size)
            return;
        if (text[i] == '%')
            continue;

        // Lengths, the last of which counts, then the conversion letter.
        const uint32_t start = i;
        uint32_t lengthStart = i, lengthSize = 0, j = i;
        while (j < size) {
            const uint32_t n = lengthAt(text, size, j);
            if (n == 0)
                break;
            lengthStart = j;
            lengthSize = n;
            j += n;
        }
        if (j >= size || !isConversion(text[j])) {
            // No conversion: the first character is ordinary text, and so is what follows.
            visitor.copy(text + start, 1);
            i = start + 1;
            continue;
        }
        visitor.copy(text + start, lengthStart - start);  // lengths that were replaced
        const bool is64 = (lengthSize == 2 && text[lengthStart] == 'l') || (lengthSize == 1 && text[lengthStart] == 'L');
        if (is64)
            visitor.length64();
        else
            visitor.copy(text + lengthStart, lengthSize);
        visitor.conversion(text + j);
        i = j + 1;
    }
}

template <class StringType, class Char>
class Normalizer
{
public:
    explicit Normalizer(uint32_t size) { output.reserve(size); }
    void copy(const Char* text, uint32_t n) { output.append(text, n); }
    void length64()
    {
        // The runtime's 64-bit length.
        static const Char i64[] = {'I', '6', '4', 0};
        output.append(i64, 3);
    }
    void conversion(const Char* letter) { output.append(*letter); }

    StringType output;
};

template <class StringType, class Char>
StringType normalize(const Char* format)
{
    if (!format)
        throw new ErrorException(SITE);
    const uint32_t size = StringType::textLength(format);
    Normalizer<StringType, Char> normalizer(size);
    scanFormat(format, size, normalizer);
    return normalizer.output;
}

class Swapper
{
public:
    explicit Swapper(wchar_t* format) : text(format) {}
    void copy(const wchar_t*, uint32_t) {}
    void length64() {}
    void conversion(const wchar_t* letter)
    {
        wchar_t& c = text[letter - text];
        if (c == L's')
            c = L'S';
        else if (c == L'S')
            c = L's';
    }

private:
    wchar_t* text;
};

// va_end on every way out.
struct ArgumentsCopy
{
    explicit ArgumentsCopy(va_list args) { va_copy(list, args); }
    ~ArgumentsCopy() { va_end(list); }
    va_list list;
};

}  // namespace

AnsiString normalizeFormat(const char* format)
{
    return normalize<AnsiString>(format);
}

String normalizeFormat(const wchar_t* format)
{
    return normalize<String>(format);
}

void swapStringConversions(String& format)
{
    if (format.empty())
        return;
    wchar_t* text = &format.refAt(0);
    Swapper swapper(text);
    scanFormat<wchar_t>(text, format.length(), swapper);
}

// The runtime services are msvcrt's own exports: _vscprintf, _vsnprintf, _vscwprintf
// and _vsnwprintf are never routed to mingw's C99 printf by the mingw headers (only
// the standard names are), so the rewrite above always meets msvcrt's conventions.

namespace {

// Most results are short: the first rendering goes into a buffer on the stack, and
// a result that fits is copied into a string of its exact size, so it costs one pass
// of the runtime's printf instead of a count and a rendering. msvcrt reports a result
// that does not fit, and a failed conversion, by a negative count; both take the
// general road, which counts, allocates once and renders. There a count above
// `limit`, which includes a failed (negative) count taken as unsigned, and a
// rendering that reports another count throw ErrorException.
const uint32_t stackResultSize = 512;

template <class StringType, class Char>
StringType render(const Char* rewritten, va_list args, uint32_t limit,
                  int (*countChars)(const Char*, va_list), int (*renderChars)(Char*, size_t, const Char*, va_list))
{
    {
        Char buffer[stackResultSize];
        ArgumentsCopy first(args);
        const int n = renderChars(buffer, stackResultSize, rewritten, first.list);
        // n == size: msvcrt fills the buffer and writes no terminator.
        if (n >= 0 && uint32_t(n) < stackResultSize && uint32_t(n) <= limit)
            return StringType(buffer, uint32_t(n));
    }
    uint32_t count;
    {
        ArgumentsCopy counting(args);
        count = static_cast<uint32_t>(countChars(rewritten, counting.list));
    }
    if (count > limit)
        throw new ErrorException(SITE);
    StringType result(count);
    if (count == 0)
        return result;
    ArgumentsCopy rendering(args);
    // A fresh string is private and has room for the terminator.
    if (renderChars(&result.refAt(0), size_t(count) + 1, rewritten, rendering.list) != int(count))
        throw new ErrorException(SITE);
    return result;
}

// The rewritten format of the dialect (steps 1 and 2 at once) in a buffer on the
// stack, or on the heap when it is longer: formats are short, and this spares an
// allocation per call.
template <class Char, bool swap>
class FormatWriter
{
public:
    explicit FormatWriter(uint32_t size) : text(inPlace), capacity(sizeof inPlace / sizeof *inPlace)
    {
        // The dialect's rewrite grows a format by at most one unit per character (L to I64).
        const uint32_t needed = size * 2 + 1;
        if (needed > capacity) {
            heap.reset(new Char[needed]);
            text = heap.get();
            capacity = needed;
        }
    }
    void copy(const Char* from, uint32_t n)
    {
        for (uint32_t i = 0; i < n; ++i)
            text[used++] = from[i];
    }
    void length64()
    {
        text[used++] = 'I';
        text[used++] = '6';
        text[used++] = '4';
    }
    void conversion(const Char* letter)
    {
        Char c = *letter;
        if (swap && c == 's')
            c = 'S';
        else if (swap && c == 'S')
            c = 's';
        text[used++] = c;
    }
    const Char* finished()
    {
        text[used] = 0;
        return text;
    }

private:
    Char inPlace[256];
    std::unique_ptr<Char[]> heap;
    Char* text;
    uint32_t capacity;
    uint32_t used = 0;
};

template <class StringType, class Char, bool swap>
StringType formatWith(const Char* format, va_list args, uint32_t limit, int (*countChars)(const Char*, va_list),
                      int (*renderChars)(Char*, size_t, const Char*, va_list))
{
    if (!format)
        throw new ErrorException(SITE);
    const uint32_t size = StringType::textLength(format);
    FormatWriter<Char, swap> rewritten(size);
    scanFormat(format, size, rewritten);
    return render<StringType>(rewritten.finished(), args, limit, countChars, renderChars);
}

int countNarrow(const char* format, va_list args) { return _vscprintf(format, args); }
int renderNarrow(char* out, size_t size, const char* format, va_list args) { return _vsnprintf(out, size, format, args); }
int countWide(const wchar_t* format, va_list args) { return _vscwprintf(format, args); }
int renderWide(wchar_t* out, size_t size, const wchar_t* format, va_list args)
{
    return _vsnwprintf(out, size, format, args);
}

}  // namespace

AnsiString AnsiString::vformat(const char* format, va_list args)
{
    // Narrow results have no limit of their own: only a failed count is refused.
    return formatWith<AnsiString, char, false>(format, args, 0x7FFFFFFFu, countNarrow, renderNarrow);
}

String String::vformat(const wchar_t* format, va_list args)
{
    return formatWith<String, wchar_t, true>(format, args, formatLimit, countWide, renderWide);
}

// va_start must stand in the function with the "...".
AnsiString AnsiString::format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    ArgumentsCopy guard(args);
    va_end(args);
    return vformat(format, guard.list);
}

String String::format(const wchar_t* format, ...)
{
    va_list args;
    va_start(args, format);
    ArgumentsCopy guard(args);
    va_end(args);
    return vformat(format, guard.list);
}

}  // namespace Framework
