#include "Framework/Log/ItemFormatters.h"

#include "Framework/Diagnostics/ThreadName.h"
#include "Framework/Exceptions.h"

#include <windows.h>
#include <ctime>
#include <cwchar>

namespace Framework { namespace Log {

String formatTime(const String& format, uint64_t time)
{
    if (format.empty() || format.at(0) == 0)
        return String();
    const __time64_t seconds = __time64_t(time / 1000);
    // The time is on the local clock already: no zone shift here.
    const struct tm* fields = _gmtime64(&seconds);
    if (!fields)
        throw new ErrorException(SITE);
    const uint32_t size = format.length() + 50 * format.count(L'%');
    String buffer(size + 1);
    buffer.fill(0);
    const size_t written = wcsftime(&buffer.refAt(0), size + 1, format.c_str(), fields);
    if (buffer.c_str()[written] != 0)
        throw new ErrorException(SITE);
    buffer.trimAtZero();
    return buffer;
}

void DateTimeFormatter::setDefaultFormat()
{
    setFormat(L"%Y-%m-%d %H:%M:%S");
}

String DateTimeFormatter::format(const Record& record) const
{
    return formatTime(formatText, record.time);
}

void ElapsedTimeFormatter::setDefaultFormat()
{
    setFormat(L"%u");
}

String ElapsedTimeFormatter::format(const Record& record) const
{
    return String::format(formatText.c_str(), record.elapsed);
}

String LevelFormatter::format(const Record& record) const
{
    if (const wchar_t* name = levelName(record.level))
        return String::format(formatText.c_str(), name);
    return String::format(L"%u", uint32_t(record.level));
}

void ThreadIdFormatter::setDefaultFormat()
{
    setFormat(L"%u");
}

String ThreadIdFormatter::format(const Record&) const
{
    return String::format(formatText.c_str(), uint32_t(GetCurrentThreadId()));
}

String ThreadNameFormatter::format(const Record&) const
{
    return String::format(formatText.c_str(), currentThreadName().c_str());
}

String ContextFormatter::format(const Record& record) const
{
    return String::format(formatText.c_str(), record.context.c_str());
}

void ContextIndentFormatter::setProperty(const String& key, const String& value)
{
    Formatter::setProperty(key, value);
    if (compareNoCase(key.c_str(), key.length(), L"indent", 6) == 0)
        indent = value.toInt(10);
}

void ContextIndentFormatter::setDefaultFormat()
{
    indent = 0;
}

String ContextIndentFormatter::format(const Record& record) const
{
    uint32_t depth = 0;
    const String& context = record.context;
    for (uint32_t at = context.find(L"::", 2); at != String::npos; at = context.find(L"::", 2, at + 2))
        ++depth;
    const int64_t blanks = int64_t(indent) * depth;
    String result;
    if (blanks > 0) {
        result = String(uint32_t(blanks));
        result.fill(L' ');
    }
    return result;
}

String SourceFileFormatter::format(const Record& record) const
{
    return String::format(formatText.c_str(), String(record.source.tag ? record.source.tag : "").c_str());
}

void SourceLineFormatter::setDefaultFormat()
{
    setFormat(L"%u");
}

String SourceLineFormatter::format(const Record& record) const
{
    return String::format(formatText.c_str(), record.source.line);
}

String MessageFormatter::format(const Record& record) const
{
    String text = String::format(formatText.c_str(), record.message.c_str());
    if (text.find(L"\n", 1) != String::npos && !text.startsWith(L'\n') && !text.startsWith(L"\r\n"))
        text.insert(0, L"\r\n");
    return text;
}

}}  // namespace Framework::Log
