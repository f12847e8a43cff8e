// The formatters that print one item each, a field of the record or the thread that
// formats it, through their printf `format` with one conversion:
//
//   class                    name            default   prints
//   DateTimeFormatter        "DateTime"      "%Y-%m-%d %H:%M:%S"  time, by strftime
//   ElapsedTimeFormatter     "ElapsedTime"   "%u"      elapsed, passed as 64 bits:
//                                                      "%u" shows the low 32, "%Lu" all
//   LevelFormatter           "Level"         "%S"      "ERROR" for 40; any number
//                                                      outside the five as "%u", "25",
//                                                      whatever the format says
//   ThreadIdFormatter        "ThreadId"      "%u"      GetCurrentThreadId() now
//   ThreadNameFormatter      "ThreadName"    "%S"      the thread's name now,
//                                                      "Thread000" for an unnamed one
//   ContextFormatter         "Context"       "%S"      context
//   ContextIndentFormatter   "ContextIndent" (none)    `indent` blanks per "::" of
//                                                      context: indent 2, "A::B::C"
//                                                      -> 4 blanks; format is unused
//   SourceFileFormatter      "SourceFile"    "%S"      the tag of the source site
//   SourceLineFormatter      "SourceLine"    "%u"      the line of the source site
//   MessageFormatter         "Message"       "%S"      message; a text with a line
//                                                      feed that doesn't start with
//                                                      "\n" or "\r\n" gets "\r\n" in
//                                                      front: "a\nb" -> "\r\na\nb"
//
// The thread formatters show the thread that formats, which for a logger's own early
// record is the thread that flushes it, not the one that made it.
#pragma once
#include "Framework/Log/Formatter.h"

namespace Framework { namespace Log {

// strftime over `time` (milliseconds, local clock already) broken into calendar
// fields with no zone shift. An empty format gives "". A result that doesn't fit the
// buffer (length + 50 per '%') throws ErrorException.
String formatTime(const String& format, uint64_t time);

class DateTimeFormatter : public Formatter
{
public:
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    String name() const override { return L"DateTime"; }
};

class ElapsedTimeFormatter : public Formatter
{
public:
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    String name() const override { return L"ElapsedTime"; }
};

class LevelFormatter : public Formatter
{
public:
    String format(const Record& record) const override;
    String name() const override { return L"Level"; }
};

class ThreadIdFormatter : public Formatter
{
public:
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    String name() const override { return L"ThreadId"; }
};

class ThreadNameFormatter : public Formatter
{
public:
    String format(const Record& record) const override;
    String name() const override { return L"ThreadName"; }
};

class ContextFormatter : public Formatter
{
public:
    String format(const Record& record) const override;
    String name() const override { return L"Context"; }
};

class ContextIndentFormatter : public Formatter
{
public:
    // The base's keys, then "indent" (any case) as a decimal number.
    void setProperty(const String& key, const String& value) override;
    // Sets indent to 0.
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    String name() const override { return L"ContextIndent"; }

private:
    int32_t indent = 0;
};

class SourceFileFormatter : public Formatter
{
public:
    String format(const Record& record) const override;
    String name() const override { return L"SourceFile"; }
};

class SourceLineFormatter : public Formatter
{
public:
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    String name() const override { return L"SourceLine"; }
};

class MessageFormatter : public Formatter
{
public:
    String format(const Record& record) const override;
    String name() const override { return L"Message"; }
};

}}  // namespace Framework::Log
