// The base of the log formatters: turns one Record into text. Each formatter has a
// `format` text, a printf text with one conversion (FormatEngine.h) for the item
// classes, a strftime text for DateTimeFormatter, a template for LineFormatter.
//
// A formatter is made, told its registry and its default format during configuration,
// and only read afterwards: format() may run on several threads at once and changes
// nothing. The setters are not guarded and belong to the configuration step.
#pragma once
#include "Framework/Log/Record.h"
#include "Framework/SharedPointer.h"
#include "Framework/String.h"

namespace Framework { namespace Log {

class FormatterRegistry;

class Formatter
{
public:
    Formatter() = default;
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;
    virtual ~Formatter() = default;

    // "format" (any case) goes to setFormat; other keys are ignored.
    virtual void setProperty(const String& key, const String& value);
    virtual void setFormat(const String& text);
    // setFormat("%S").
    virtual void setDefaultFormat();
    virtual String format(const Record& record) const = 0;
    // Where names in templates are looked up; null is allowed. Ignored here.
    virtual void setFormatters(const SharedPointer<FormatterRegistry>& registry);
    // The class's name, under which the registry first holds one of it.
    virtual String name() const = 0;
    // Text a writer puts before its first record and, on close, after its last;
    // empty here.
    virtual String header() const;
    virtual String footer() const;

protected:
    String formatText;
};

}}  // namespace Framework::Log
