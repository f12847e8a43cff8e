#include "Framework/Io/PathText.h"

#include "Framework/Array.h"
#include "Framework/Io/Exceptions.h"

#include <cwctype>
#include <vector>

namespace Framework { namespace Io {

namespace {

const uint32_t npos = String::npos;
// Drive paths from this length on are handed to the platform with "\\?\" in front.
const uint32_t longFormThreshold = 256;

bool isLetter(wchar_t c) { return std::iswalpha(c) != 0; }
bool isSeparator(wchar_t c) { return c == L'\\' || c == L'/'; }

bool hasColon(const String& text) { return text.find(L":", 1) != npos; }

// The first '\' at or after `from`, or npos.
uint32_t nextBackslash(const String& text, uint32_t from)
{
    const wchar_t* t = text.c_str();
    for (uint32_t i = from; i < text.length(); ++i) {
        if (t[i] == L'\\')
            return i;
    }
    return npos;
}

bool isDriveAbsolute(const String& text)
{
    const wchar_t* t = text.c_str();
    return text.length() > 2 && isLetter(t[0]) && t[1] == L':' && t[2] == L'\\';
}

// A share root needs both separators behind its server, a server name and a share
// name. A server "." or "?" would turn the root into a device or a long form.
bool isShareNamed(const String& text, uint32_t server, uint32_t first, uint32_t second)
{
    if (second == npos || first == server || second == first + 1)
        return false;
    const wchar_t* t = text.c_str();
    return !(first == server + 1 && (t[server] == L'.' || t[server] == L'?'));
}

bool isDotDot(const wchar_t* begin, uint32_t length) { return length == 2 && begin[0] == L'.' && begin[1] == L'.'; }

bool isDotComponent(const wchar_t* begin, uint32_t length)
{
    return (length == 1 && begin[0] == L'.') || isDotDot(begin, length);
}

}  // namespace

String toLongForm(const String& text)
{
    String copy = text;
    copy.replaceChar(L'/', L'\\');
    if (copy.startsWith(L"\\\\?\\"))
        return copy;
    if (copy.startsWith(L"\\\\") && !copy.startsWith(L"\\\\.\\"))
        return concat(L"\\\\?\\unc\\", 8, copy.c_str() + 2, copy.length() - 2);
    if (copy.length() < longFormThreshold || !isDriveAbsolute(copy))
        return copy;
    return concat(L"\\\\?\\", 4, copy.c_str(), copy.length());
}

String cleanPathText(const String& text)
{
    const uint32_t n = text.length();
    const wchar_t* t = text.c_str();
    bool changes = n > 0 && std::iswspace(t[n - 1]);
    for (uint32_t i = 0; i < n && !changes; ++i)
        changes = t[i] == L'"' || t[i] == L'/';
    if (!changes)
        return text;  // the common case keeps the shared block

    // Written in place into one string of the longest length, then cut.
    String cleaned(n);
    wchar_t* out = &cleaned.refAt(0);
    uint32_t kept = 0;
    for (uint32_t i = 0; i < n; ++i) {
        if (t[i] != L'"')
            out[kept++] = t[i] == L'/' ? L'\\' : t[i];
    }
    cleaned.truncate(kept);
    cleaned.trimRight();
    return cleaned;
}

String splitRoot(const String& text, uint32_t& rootEnd)
{
    const uint32_t n = text.length();
    const wchar_t* t = text.c_str();
    if (n > 1 && isLetter(t[0]) && t[1] == L':') {
        rootEnd = 2;
        return text.substr(0, 2);
    }
    // Every other root starts with two backslashes.
    if (n < 2 || t[0] != L'\\' || t[1] != L'\\') {
        rootEnd = 0;
        return String();
    }
    if (text.startsWith(L"\\\\?\\unc\\") || text.startsWith(L"\\\\?\\UNC\\")) {
        const uint32_t first = nextBackslash(text, 8);
        const uint32_t second = first == npos ? npos : nextBackslash(text, first + 1);
        if (!isShareNamed(text, 8, first, second))
            throw new Framework::ErrorException(SITE);
        rootEnd = second;
        return String(L"\\\\") + text.substr(8, second);
    }
    if (text.startsWith(L"\\\\?\\")) {
        if (!(n > 5 && isLetter(t[4]) && t[5] == L':'))
            throw new Framework::ErrorException(SITE);
        rootEnd = 6;
        return text.substr(4, 6);
    }
    if (text.startsWith(L"\\\\.\\")) {
        const uint32_t end = nextBackslash(text, 4);
        rootEnd = end == npos ? n : end;
        if (rootEnd == 4)
            throw new Framework::ErrorException(SITE);  // no device without a name
        return text.substr(0, rootEnd);
    }
    if (text.startsWith(L"\\\\")) {
        const uint32_t first = nextBackslash(text, 2);
        const uint32_t second = first == npos ? npos : nextBackslash(text, first + 1);
        if (!isShareNamed(text, 2, first, second))
            throw new Framework::ErrorException(SITE);
        rootEnd = second;
        return text.substr(0, second);
    }
    rootEnd = 0;
    return String();
}

PathParts parseParts(const String& given)
{
    // Most texts come here clean already: a copy only when a '/' must go.
    String replaced;
    bool slashed = false;
    for (uint32_t i = 0; i < given.length() && !slashed; ++i)
        slashed = given.c_str()[i] == L'/';
    if (slashed) {
        replaced = given;
        replaced.replaceChar(L'/', L'\\');
    }
    const String& copy = slashed ? replaced : given;
    PathParts parts;
    uint32_t start = 0;
    parts.root = splitRoot(copy, start);

    const uint32_t n = copy.length();
    const wchar_t* t = copy.c_str();
    for (uint32_t i = n; i > start; --i) {
        if (t[i - 1] == L'\\') {
            parts.folder = copy.substr(start, i);
            start = i;
            break;
        }
    }
    uint32_t dot = npos;
    for (uint32_t i = n; i > start; --i) {
        if (t[i - 1] == L'.') {
            dot = i - 1;
            break;
        }
    }
    if (dot != npos) {
        parts.name = copy.substr(start, dot);
        parts.extension = copy.substr(dot);
    } else {
        parts.name = copy.substr(start);
    }
    return parts;
}

PathParts parseCanonical(const String& text)
{
    PathParts parts = parseParts(text);
    // Most parts are canonical already; they keep their strings.
    if (parts.root.length() > 2)
        parts.root = canonicalRoot(parts.root);
    if (!isCanonicalFolder(parts.folder))
        parts.folder = canonicalFolder(parts.folder);
    return parts;
}

bool endsWithSeparator(const String& text)
{
    return !text.empty() && isSeparator(text.c_str()[text.length() - 1]);
}

bool isDeviceText(const String& text) { return text.length() > 4 && text.startsWith(L"\\\\.\\"); }

bool isBareDeviceText(const String& text) { return isDeviceText(text) && nextBackslash(text, 4) == npos; }

bool isRootOnlyText(const String& text)
{
    const uint32_t n = text.length();
    if (n == 0)
        return false;
    const wchar_t* t = text.c_str();
    uint32_t i = n > 2 && isLetter(t[0]) && t[1] == L':' ? 2 : 0;
    for (; i < n; ++i) {
        if (!isSeparator(t[i]))
            return false;
    }
    return true;
}

String canonicalRoot(const String& root)
{
    const uint32_t n = root.length();
    const wchar_t* r = root.c_str();
    if (n > 2 && isLetter(r[0]) && r[1] == L':')
        return root.substr(0, 2);
    if (root.startsWith(L"\\\\") && root.endsWith(L'\\'))
        return root.substr(0, n - 1);
    return root;
}

bool isCanonicalFolder(const String& text)
{
    const uint32_t n = text.length();
    if (n == 0)
        return true;
    const wchar_t* t = text.c_str();
    if (t[n - 1] != L'\\')
        return false;
    uint32_t previous = npos;
    for (uint32_t i = 0; i < n; ++i) {
        if (t[i] == L'/')
            return false;
        if (t[i] != L'\\')
            continue;
        // The component in front of the first separator is not looked at.
        if (previous != npos && (i - previous == 1 || isDotComponent(t + previous + 1, i - previous - 1)))
            return false;
        previous = i;
    }
    return true;
}

String canonicalFolder(const String& text)
{
    if (text.empty() || isCanonicalFolder(text))
        return text;
    // Components as spans of the text, kept or dropped one by one, then joined once.
    struct Span
    {
        uint32_t begin;
        uint32_t length;
    };
    const wchar_t* const t = text.c_str();
    const uint32_t n = text.length();
    const bool rooted = isSeparator(t[0]);
    // At most one component per two characters ("a\"), plus one without a separator.
    std::vector<Span> kept;
    kept.reserve(n / 2 + 1);
    for (uint32_t i = 0; i < n;) {
        uint32_t end = i;
        while (end < n && !isSeparator(t[end]))
            ++end;
        const Span piece = {i, end - i};
        i = end + 1;
        if (piece.length == 0 || (piece.length == 1 && t[piece.begin] == L'.'))
            continue;
        if (!isDotDot(t + piece.begin, piece.length)) {
            kept.push_back(piece);
        } else if (kept.empty()) {
            // A relative folder may start with "..", a rooted one can't climb above its root.
            if (rooted)
                throw new PathInvalidException(SITE, text);
            kept.push_back(piece);
        } else if (isDotDot(t + kept.back().begin, kept.back().length)) {
            kept.push_back(piece);
        } else {
            kept.pop_back();
        }
    }
    if (kept.empty() && !rooted)
        return String(L".\\");
    // Joined in place into one string of the longest length, then cut.
    String joined(n + 2);
    wchar_t* out = &joined.refAt(0);
    uint32_t used = 0;
    if (rooted)
        out[used++] = L'\\';
    for (const Span& piece : kept) {
        for (uint32_t k = 0; k < piece.length; ++k)
            out[used++] = t[piece.begin + k];
        out[used++] = L'\\';
    }
    joined.truncate(used);
    return joined;
}

String canonicalFolderText(const String& text)
{
    if (text.empty())
        return text;
    if (hasColon(text))
        throw new Framework::ErrorException(SITE);
    return canonicalFolder(cleanPathText(text));
}

String checkName(const String& text)
{
    if (hasColon(text))
        throw new Framework::ErrorException(SITE);
    return text;
}

String canonicalExtension(const String& text)
{
    if (hasColon(text))
        throw new Framework::ErrorException(SITE);
    if (text.empty() || text.startsWith(L'.'))
        return text;
    if (text.length() >= 2)
        return String(L".") + text;
    return String();
}

String canonicalRootText(const String& text)
{
    const uint32_t n = text.length();
    if (n == 0)
        return text;
    const wchar_t* t = text.c_str();
    if (!text.startsWith(L"\\\\")) {
        // A drive, in one of its three short forms: C, C: and C:\ (or C:/).
        const bool drive = n <= 3 && isLetter(t[0]) && (n == 1 || t[1] == L':') && (n < 3 || isSeparator(t[2]));
        if (!drive)
            throw new Framework::ErrorException(SITE);
        return n == 1 ? text + L':' : text.substr(0, 2);
    }
    const Array<String> pieces = text.substr(2).split(L'\\');
    if (pieces.size() != 2 || pieces.at(0) == String(L"?") || pieces.at(0).find(L"/", 1) != npos ||
        pieces.at(1).find(L"/", 1) != npos)
        throw new Framework::ErrorException(SITE);
    return String(L"\\\\") + pieces.at(0) + L'\\' + pieces.at(1);
}

String parentFolderText(const String& text)
{
    if (text.empty())
        return text;
    if (!text.endsWith(L'\\'))
        throw new Framework::ErrorException(SITE);
    const uint32_t last = text.length() - 1;
    for (uint32_t i = last; i > 0; --i) {
        if (text.c_str()[i - 1] == L'\\')
            return text.substr(0, i);
    }
    return String();
}

}}  // namespace Framework::Io
