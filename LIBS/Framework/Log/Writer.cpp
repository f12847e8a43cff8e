#include "Framework/Log/Writer.h"

#include "Framework/Exceptions.h"

namespace Framework { namespace Log {

namespace {

String withLineEnds(const String& text)
{
    const wchar_t* chars = text.c_str();
    const uint32_t length = text.length();
    String result;
    result.reserve(length + 2);
    uint32_t start = 0;
    for (uint32_t i = 0; i < length; ++i) {
        if (chars[i] != L'\n')
            continue;
        uint32_t end = i;
        if (end > start && chars[end - 1] == L'\r')
            --end;
        result.append(chars + start, end - start);
        result.append(L"\r\n", 2);
        start = i + 1;
    }
    result.append(chars + start, length - start);
    if (!result.endsWith(L"\r\n"))
        result.append(L"\r\n", 2);
    return result;
}

}  // namespace

bool keyIs(const String& key, const wchar_t* name)
{
    return compareNoCase(key.c_str(), key.length(), name, String::textLength(name)) == 0;
}

void Writer::setFormatter(const SharedPointer<Formatter>& newFormatter)
{
    formatter = newFormatter;
}

void Writer::setProperty(const String&, const String&) {}

void Writer::write(const Record& record)
{
    if (formatter.isNull())
        throw new ValueNotInitializedException(SITE);
    if (headerPending) {
        // Test and clear under the lock, and write while holding it: no thread's
        // record can get ahead of the header, and no two threads write it.
        CriticalSection::Hold hold(lock);
        if (headerPending) {
            writeText(formatter->header());
            headerPending = false;
        }
    }
    writeText(formatter->format(record));
}

void Writer::close()
{
    if (!formatter.isNull())
        writeText(formatter->footer());
}

bool Writer::reachesInstallerLog() const
{
    return false;
}

void Writer::writeText(const String& text)
{
    if (text.empty())
        return;
    const String finished = withLineEnds(text);
    CriticalSection::Hold hold(lock);
    output(finished);
}

}}  // namespace Framework::Log
