#include "Framework/BasicString.h"

#include "Framework/Exceptions.h"
#include "Framework/String.h"

#include <cstring>
#include <cwctype>
#include <cctype>
#include <type_traits>

namespace Framework {

namespace {

bool isSpace(wchar_t c) { return std::iswspace(c) != 0; }
bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// Capacity in characters for a string sized by a constructor or resize.
uint32_t sizedCapacity(uint32_t n) { return (n + 66) & ~63u; }

template <class Char>
uint32_t byteSizeFor(uint32_t characters)
{
    const uint64_t bytes = uint64_t(characters) * sizeof(Char);
    if (bytes > 0xFFFFFFF0u)
        throw new ErrorException(SITE);
    return static_cast<uint32_t>(bytes);
}

}  // namespace

template <class Char>
uint32_t BasicString<Char>::textLength(const Char* text)
{
    if (!text)
        throw new ErrorException(SITE);
    uint32_t n = 0;
    while (text[n])
        ++n;
    return n;
}

template <class Char>
uint32_t BasicString<Char>::findChar(const Char* text, Char c)
{
    for (uint32_t i = 0; text[i]; ++i) {
        if (text[i] == c)
            return i;
    }
    return npos;
}

namespace {

// A block for a string of `length` characters by the constructors' rule, with their
// two checks: the length limit and a capacity that wrapped round.
template <class Char>
SharedBuffer sizedBlock(uint32_t length)
{
    if (length > 0x80000000u)
        throw new ErrorException(SITE);
    const uint32_t capacity = sizedCapacity(length);
    if (capacity < length)
        throw new ErrorException(SITE);
    return SharedBuffer(byteSizeFor<Char>(capacity));
}

}  // namespace

template <class Char>
BasicString<Char>::BasicString(const Char* text, uint32_t length) : count(0)
{
    if (length == 0)
        return;
    if (!text)
        throw new ErrorException(SITE);
    if (length == npos) {
        length = textLength(text);
        if (length == 0)
            return;
    }
    buffer = sizedBlock<Char>(length);
    std::memcpy(buffer.payload(), text, length * sizeof(Char));
    count = length;
    terminate();
}

template <class Char>
BasicString<Char>::BasicString(uint32_t length) : count(0)
{
    if (length == 0)
        return;
    buffer = sizedBlock<Char>(length);
    count = length;
    terminate();
}

template <class Char>
void BasicString<Char>::detach()
{
    if (buffer.isNull() || buffer.refCount() == 1)
        return;
    SharedBuffer own(buffer.byteSize());
    std::memcpy(own.payload(), buffer.payload(), buffer.byteSize());
    buffer = static_cast<SharedBuffer&&>(own);
}

template <class Char>
void BasicString<Char>::terminate()
{
    if (buffer.isNull())
        return;
    Char* text = payload();
    text[count] = 0;
    if (count % 2 == 0 && capacity() > count + 1)
        text[count + 1] = 0;
}

template <class Char>
Char BasicString<Char>::at(uint32_t i) const
{
    if (i >= count)
        throw new RangeException(SITE, 0, count, i);
    return c_str()[i];
}

template <class Char>
Char& BasicString<Char>::refAt(uint32_t i)
{
    if (i >= count)
        throw new RangeException(SITE, 0, count, i);
    return writablePayload()[i];
}

template <class Char>
Char BasicString<Char>::front() const
{
    if (count == 0)
        throw new RangeException(SITE, 0, 0, 0);
    return c_str()[0];
}

template <class Char>
bool BasicString<Char>::startsWith(const Char* text) const
{
    const uint32_t n = textLength(text);
    return n <= count && std::memcmp(c_str(), text, n * sizeof(Char)) == 0;
}

template <class Char>
uint32_t BasicString<Char>::find(const Char* sequence, uint32_t sequenceLength, uint32_t from) const
{
    if (from > count)
        throw new RangeException(SITE, 0, count, from);
    if (count == 0)
        return npos;
    if (sequenceLength == npos)
        sequenceLength = textLength(sequence);
    if (sequenceLength == 0)
        return from;
    const Char* text = c_str();
    // A failed partial match restarts one character past where it began.
    for (uint32_t start = from; start + sequenceLength <= count; ++start) {
        uint32_t k = 0;
        while (k < sequenceLength && text[start + k] == sequence[k])
            ++k;
        if (k == sequenceLength)
            return start;
    }
    return npos;
}

template <class Char>
void BasicString<Char>::append(Char c)
{
    const uint32_t old = count;
    resize(old + 1);
    payload()[old] = c;
}

template <class Char>
void BasicString<Char>::append(const Char* text, uint32_t length)
{
    if (length == 0)
        return;
    if (!text)
        throw new ErrorException(SITE);
    // The block may move while it grows, so our own text can't come by raw pointer.
    if (text == c_str())
        throw new ErrorException(SITE);
    if (length == npos)
        length = textLength(text);
    if (length == 0)
        return;
    const uint32_t old = count;
    if (uint64_t(old) + length > 0x80000000u)
        throw new ErrorException(SITE);
    resize(old + length);
    std::memcpy(payload() + old, text, length * sizeof(Char));
}

template <class Char>
void BasicString<Char>::append(const BasicString& other)
{
    if (other.count == 0)
        return;
    const BasicString keep(other);  // other may be this very string
    const uint32_t old = count;
    resize(old + keep.count);
    std::memcpy(payload() + old, keep.c_str(), keep.count * sizeof(Char));
}

template <class Char>
void BasicString<Char>::resize(uint32_t n)
{
    detach();
    if (buffer.isNull() || n >= capacity()) {
        if (n > 0x80000000u)
            throw new ErrorException(SITE);
        SharedBuffer fresh(byteSizeFor<Char>(sizedCapacity(n)));
        if (count)
            std::memcpy(fresh.payload(), buffer.payload(), count * sizeof(Char));
        buffer = static_cast<SharedBuffer&&>(fresh);
    }
    count = n;
    terminate();
}

template <class Char>
uint32_t BasicString<Char>::reserve(uint32_t n)
{
    const auto usable = [this]() -> uint32_t {
        const uint32_t bytes = buffer.byteSize();
        return (bytes < 2 ? bytes : bytes - 2) / sizeof(Char);
    };
    if (!buffer.isNull() && n <= usable())
        return usable();
    if (n > 0x80000000u)
        throw new ErrorException(SITE);
    SharedBuffer fresh(byteSizeFor<Char>((n + 10) & ~7u));
    if (count)
        std::memcpy(fresh.payload(), buffer.payload(), count * sizeof(Char));
    buffer = static_cast<SharedBuffer&&>(fresh);
    terminate();
    return usable();
}

template <class Char>
void BasicString<Char>::truncate(uint32_t n)
{
    if (n > count)
        throw new RangeException(SITE, 0, count, n);
    if (count == 0 || n == count)
        return;
    detach();
    count = n;
    terminate();
}

template <class Char>
void BasicString<Char>::removeLast()
{
    if (count == 0)
        throw new RangeException(SITE, 0, 0, 0);
    truncate(count - 1);
}

template <class Char>
void BasicString<Char>::removeFirst()
{
    if (count == 0)
        throw new RangeException(SITE, 0, 0, 0);
    erase(0, 1);
}

template <class Char>
void BasicString<Char>::erase(uint32_t from, uint32_t to)
{
    if (from > to)
        throw new RangeException(SITE, 0, to, from);
    if (to > count)
        throw new RangeException(SITE, 0, count, to);
    if (from == to)
        return;
    Char* text = writablePayload();
    std::memmove(text + from, text + to, (count - to) * sizeof(Char));
    count -= to - from;
    terminate();
}

template <class Char>
typename BasicString<Char>::Derived BasicString<Char>::substr(uint32_t from, uint32_t to) const
{
    if (to == npos)
        to = count;
    if (from > to)
        throw new RangeException(SITE, 0, to, from);
    if (to > count)
        throw new RangeException(SITE, 0, count, to);
    if (from == to)
        return Derived();
    return Derived(BasicString(c_str() + from, to - from));
}

template <class Char>
void BasicString<Char>::replace(uint32_t position, uint32_t oldLength, const Char* text, uint32_t newLength)
{
    if (uint64_t(position) + oldLength > count)
        throw new RangeException(SITE, 0, count, int64_t(position) + oldLength);
    if (newLength == npos)
        newLength = textLength(text);
    if (newLength && !text)
        throw new ErrorException(SITE);
    // The replacement may come from our own block, which can move.
    const BasicString source(text, newLength);
    const uint32_t tail = count - position - oldLength;
    if (newLength > oldLength) {
        const uint32_t old = count;
        resize(old + (newLength - oldLength));
        Char* p = payload();
        std::memmove(p + position + newLength, p + position + oldLength, tail * sizeof(Char));
    } else if (newLength < oldLength) {
        Char* p = writablePayload();
        std::memmove(p + position + newLength, p + position + oldLength, tail * sizeof(Char));
        count -= oldLength - newLength;
        terminate();
    } else if (newLength == 0) {
        return;
    } else {
        detach();
    }
    if (newLength)
        std::memcpy(payload() + position, source.c_str(), newLength * sizeof(Char));
}

template <class Char>
void BasicString<Char>::fill(Char c)
{
    if (count)
        fill(c, 0, count);
}

template <class Char>
void BasicString<Char>::fill(Char c, uint32_t from, uint32_t fillCount)
{
    if (count == 0 || fillCount == 0)
        return;
    if (from >= count)
        throw new RangeException(SITE, 0, count, from);
    if (fillCount > count - from)
        fillCount = count - from;
    Char* text = writablePayload();
    for (uint32_t i = 0; i < fillCount; ++i)
        text[from + i] = c;
}

template <class Char>
void BasicString<Char>::trimLeft()
{
    uint32_t skip = 0;
    const Char* text = c_str();
    while (skip < count && isSpace(text[skip]))
        ++skip;
    if (skip)
        erase(0, skip);
}

template <class Char>
void BasicString<Char>::trimRight()
{
    uint32_t keep = count;
    const Char* text = c_str();
    while (keep > 0 && isSpace(text[keep - 1]))
        --keep;
    if (keep != count)
        truncate(keep);
}

template <class Char>
void BasicString<Char>::trim()
{
    trimRight();
    trimLeft();
}

template <class Char>
Char BasicString<Char>::unquoteAll()
{
    Char first = 0;
    for (;;) {
        const Char* text = c_str();
        if (count < 2 || text[0] != text[count - 1] || (text[0] != '\'' && text[0] != '"'))
            return first;
        if (!first)
            first = text[0];
        erase(count - 1, count);
        erase(0, 1);
    }
}

template <class Char>
int compare(const Char* a, uint32_t aLength, const Char* b, uint32_t bLength)
{
    const uint32_t shorter = aLength < bLength ? aLength : bLength;
    for (uint32_t i = 0; i < shorter; ++i) {
        using Unit = typename std::make_unsigned<Char>::type;
        const Unit x = static_cast<Unit>(a[i]);
        const Unit y = static_cast<Unit>(b[i]);
        if (x != y)
            return x < y ? -1 : 1;
    }
    return aLength < bLength ? -1 : (aLength > bLength ? 1 : 0);
}

template class BasicString<wchar_t>;
template class BasicString<char>;
template int compare<wchar_t>(const wchar_t*, uint32_t, const wchar_t*, uint32_t);
template int compare<char>(const char*, uint32_t, const char*, uint32_t);

}  // namespace Framework
