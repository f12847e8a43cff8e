#include "Framework/Log/Formatter.h"

namespace Framework { namespace Log {

void Formatter::setProperty(const String& key, const String& value)
{
    if (compareNoCase(key.c_str(), key.length(), L"format", 6) == 0)
        setFormat(value);
}

void Formatter::setFormat(const String& text)
{
    formatText = text;
}

void Formatter::setDefaultFormat()
{
    setFormat(L"%S");
}

void Formatter::setFormatters(const SharedPointer<FormatterRegistry>&) {}

String Formatter::header() const
{
    return String();
}

String Formatter::footer() const
{
    return String();
}

}}  // namespace Framework::Log
