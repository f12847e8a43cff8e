#include "fw/fw_format.h"

#include "fw/fw_assert.h"

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

// One item of a format: `spec` is a printf format with exactly this conversion and
// the literal text behind it, up to the next item.
struct format_item
{
    uint32_t argument = 0;
    uint32_t position = 0;
    fw_string spec;
    fw_string result;
};

const uint32_t stackBufferSize = 2047;
const uint32_t firstHeapSize = 4096;
// Doubling stops here: a format that msvcrt refuses at every size (a wide text it
// cannot convert, say) must not eat the address space.
const uint32_t largestSize = 64u << 20;

// msvcrt's own _vsnprintf, deliberately: it takes the I64 size, and it reports a text
// that does not fit by a negative result, which the retry below relies on. mingw
// routes only the standard names (vsnprintf) to its C99 printf.
int render(char* out, uint32_t size, const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    const int n = _vsnprintf(out, size, format, copy);
    va_end(copy);
    return n;
}

fw_string print(const char* format, va_list args)
{
    if (!format)
        return fw_string();
    char buffer[stackBufferSize];
    int n = render(buffer, stackBufferSize, format, args);
    if (n >= 0)
        return fw_string(buffer, static_cast<uint32_t>(n));
    fw_string text(firstHeapSize);
    uint32_t size = firstHeapSize;
    for (;;) {
        n = render(text.writable(), text.capacity(), format, args);
        if (n >= 0) {
            // At exactly the capacity msvcrt writes no terminator; the block has room.
            text.writable()[n] = 0;
            return text;
        }
        FW_ASSERT(size < largestSize);
        size *= 2;
        // 37 leaves the block at exactly `size` bytes: 32 + 64k, header included.
        if (size - 37 > text.capacity())
            text.reserve(size - 37, false);
    }
}

// Counts the items, and asserts that every odd percent run opens one.
uint32_t count_items(const char* format)
{
    uint32_t count = 0;
    for (const char* at = format; *at;) {
        if (*at != '%') {
            ++at;
            continue;
        }
        const size_t run = std::strspn(at, "%");
        at += run;
        if (run % 2 == 1) {
            FW_ASSERT(*at == '{');
            ++count;
        }
    }
    return count;
}

// The "{" of the last item that starts before `end`: one with an odd percent run in
// front of it, the item's own "%" included. 0 if there is none ("{" at 0 has no "%").
uint32_t find_item_backward(const char* text, uint32_t end)
{
    for (uint32_t brace = end; brace-- > 1;) {
        if (text[brace] != '{' || text[brace - 1] != '%')
            continue;
        uint32_t run = 0;
        while (run < brace && text[brace - 1 - run] == '%')
            ++run;
        if (run % 2 == 1)
            return brace;
    }
    return 0;
}

bool is_integer_conversion(char c)
{
    return c != 0 && std::strchr("idouxX", c) != nullptr;
}

// "ll" or "L" as the size of an integer conversion is msvcrt's "I64". Only the first
// character behind the flags, width and precision can be a size; literal text behind
// the conversion is left alone.
void widen_size(fw_string& spec)
{
    const char* text = spec.c_str();
    const uint32_t at = 1 + static_cast<uint32_t>(std::strspn(text + 1, " +-.#0123456789"));
    uint32_t sizeLength = 0;
    if (text[at] == 'l' && text[at + 1] == 'l' && is_integer_conversion(text[at + 2]))
        sizeLength = 2;
    else if (text[at] == 'L' && is_integer_conversion(text[at + 1]))
        sizeLength = 1;
    if (sizeLength == 0)
        return;
    fw_string widened(text, at);
    widened.append("I64");
    widened.append(text + at + sizeLength);
    spec = widened;
}

// Fills the items from the end of the format to its start and says whether they
// stand in the order of their numbers. The format is copied first: the caller's text
// is never written.
bool parse(const char* format, std::vector<format_item>& items)
{
    const uint32_t count = static_cast<uint32_t>(items.size());
    fw_string work(format);
    char* text = work.writable();
    uint32_t end = work.length();
    std::vector<bool> seen(count, false);
    bool inOrder = true;
    for (uint32_t k = count; k-- > 0;) {
        format_item& item = items[k];
        item.position = k;
        const uint32_t brace = find_item_backward(text, end);
        FW_ASSERT(brace != 0);
        uint32_t at = brace + 1;
        uint32_t number = 0;
        for (; text[at] >= '0' && text[at] <= '9'; ++at) {
            // Saturates above the item count, which is out of range anyway.
            number = number > count ? count + 1 : number * 10 + uint32_t(text[at] - '0');
        }
        FW_ASSERT(at > brace + 1);
        FW_ASSERT(number >= 1 && number <= count);
        item.argument = number - 1;
        FW_ASSERT(!seen[item.argument]);
        seen[item.argument] = true;
        if (item.argument != k)
            inOrder = false;
        FW_ASSERT(at < end && text[at] == '}');
        // The "}" becomes the "%" of a plain printf conversion.
        text[at] = '%';
        item.spec = fw_string(text + at, end - at);
        widen_size(item.spec);
        end = brace - 1;
    }
    if (end > 0) {
        // Text in front of the first item rides with it, so it stays at the start.
        items[0].spec.insert(fw_string(text, end).c_str(), 0);
    }
    return inOrder;
}

// A run of one control character that the format does not hold, 4 long if possible.
fw_string find_separator(const char* format)
{
    const uint32_t length = static_cast<uint32_t>(std::strlen(format));
    FW_ASSERT(length >= 4);
    for (uint32_t runLength = 4; runLength <= length; ++runLength) {
        for (int c = 31; c >= 1; --c) {
            fw_string candidate(static_cast<char>(c), runLength);
            if (!std::strstr(format, candidate.c_str()))
                return candidate;
        }
    }
    FW_ASSERT(false);
    return fw_string();
}

// printf consumes arguments in its own order, so the items are rendered in the order
// of their numbers with a separator behind each, and the pieces are put back in the
// order of the text.
fw_string format_out_of_order(const char* format, std::vector<format_item>& items, va_list args)
{
    const uint32_t count = static_cast<uint32_t>(items.size());
    const fw_string separator = find_separator(format);
    std::vector<uint32_t> byArgument(count);
    for (uint32_t i = 0; i < count; ++i) {
        items[i].spec.append(separator.c_str());
        byArgument[items[i].argument] = i;
    }
    fw_string joined;
    for (uint32_t argument = 0; argument < count; ++argument)
        joined.append(items[byArgument[argument]].spec.c_str());
    const fw_string output = print(joined.c_str(), args);
    const uint32_t separatorLength = separator.length();
    const char* rest = output.c_str();
    for (uint32_t argument = 0; argument < count; ++argument) {
        const char* hit = std::strstr(rest, separator.c_str());
        FW_ASSERT(hit != nullptr);
        items[byArgument[argument]].result = fw_string(rest, static_cast<uint32_t>(hit - rest));
        rest = hit + separatorLength;
    }
    fw_string result;
    for (const format_item& item : items)
        result.append(item.result.c_str());
    return result;
}

}  // namespace

fw_string fw_vformat(const char* format, va_list args)
{
    if (!format || !format[0])
        return fw_string();
    const uint32_t count = count_items(format);
    if (count == 0)
        return fw_string(format);
    std::vector<format_item> items(count);
    const bool inOrder = parse(format, items);
    if (count == 1)
        return print(items[0].spec.c_str(), args);
    if (inOrder) {
        fw_string joined;
        for (const format_item& item : items)
            joined.append(item.spec.c_str());
        return print(joined.c_str(), args);
    }
    return format_out_of_order(format, items, args);
}

fw_string fw_format(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    try {
        fw_string result = fw_vformat(format, args);
        va_end(args);
        return result;
    } catch (...) {
        va_end(args);
        throw;
    }
}
