#include "Framework/HexText.h"

#include "Framework/Exceptions.h"

namespace Framework {

namespace {

// The two digits of every byte value, worked out once, so that no formatting call
// runs per byte.
class HexEncoder
{
public:
    explicit HexEncoder(const char* between) : separator(between), separatorLength(0)
    {
        while (between[separatorLength])
            ++separatorLength;
        const char digits[] = "0123456789ABCDEF";
        for (int i = 0; i < 256; ++i) {
            pairs[i][0] = digits[i >> 4];
            pairs[i][1] = digits[i & 15];
        }
    }

    AnsiString encode(const AnsiString& bytes) const
    {
        const uint32_t length = bytes.length();
        if (length == 0)
            return AnsiString();
        const char* in = bytes.data();
        if (!in)
            throw new ErrorException(SITE);
        AnsiString result(2 * length + (length - 1) * separatorLength);
        char* out = &result.refAt(0);  // a fresh string is private
        for (uint32_t i = 0; i < length; ++i) {
            if (i > 0)
                for (uint32_t s = 0; s < separatorLength; ++s)
                    *out++ = separator[s];
            const unsigned char byte = static_cast<unsigned char>(in[i]);
            *out++ = pairs[byte][0];
            *out++ = pairs[byte][1];
        }
        return result;
    }

private:
    const char* separator;
    uint32_t separatorLength;
    char pairs[256][2];
};

const HexEncoder spacedEncoder(" ");
const HexEncoder plainEncoder("");

int digitValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

}  // namespace

AnsiString hexText(const AnsiString& bytes)
{
    return spacedEncoder.encode(bytes);
}

AnsiString hexDigits(const AnsiString& bytes)
{
    return plainEncoder.encode(bytes);
}

AnsiString fromHexText(const AnsiString& text)
{
    const char* in = text.c_str();
    const uint32_t length = text.length();
    uint32_t skipped = 0;
    for (uint32_t i = 0; i < length; ++i)
        if (digitValue(in[i]) < 0)
            ++skipped;
    AnsiString result((length - skipped) / 2);
    // A fresh string is private; an empty one has nothing to write.
    char* out = result.empty() ? nullptr : &result.refAt(0);
    for (uint32_t i = 0; i < length;) {
        const int high = digitValue(in[i]);
        if (high < 0) {
            ++i;
            continue;
        }
        // The terminator behind the last character is no digit either.
        const int low = i + 1 < length ? digitValue(in[i + 1]) : -1;
        if (low < 0)
            throw new FormatException(SITE, i + 1);
        *out++ = char(high * 16 + low);
        i += 2;
    }
    return result;
}

}  // namespace Framework
