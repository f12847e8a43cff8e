// What the logger is set up with: the threshold of each context, the one writer, and
// the registry of formatters that writers take their formatters from. A value that
// copies by sharing: a copy holds the same writer, registry and list of contexts.
//
// A context's threshold is that of the most specific entry whose name is the context
// name or a whole "::" level above it, compared with case, else the default level:
//   entries "A" DEBUG:  "A" -> DEBUG, "A::B" -> DEBUG, "AB" -> default, "a::b" -> default
//
// A fresh configuration is empty: no writer, no contexts, default level WARNING, and
// a registry with the twelve built-in formatters, which are not ready until
// prepareFormatters has run.
#pragma once
#include "Framework/Array.h"
#include "Framework/Log/FormatterRegistry.h"
#include "Framework/Log/Level.h"
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

// Which names a logger's configuration is looked for under, and which file its
// default writer writes (ConfigurationLoader.h):
//   Internal  1   "InternalLog.ini", INTERNAL_LOG, resource "InternalLog"; "logd.txt"
//   Product   2   "KorvalinLogConfig.ini", KORVALIN_LOG_CONFIG, resource
//                 "KorvalinLogConfig"; "log.txt"
// Logger::instance() always takes the product mode; the internal one is no second
// log. Any other number throws ValueNotInitializedException where it is used.
enum class LogMode : uint32_t
{
    Internal = 1,
    Product = 2,
};

struct ContextLevel
{
    String name;
    Level level;
};

class Configuration
{
public:
    Configuration();
    virtual ~Configuration() = default;

    // Takes no lock and allocates nothing.
    Level levelFor(const String& contextName) const;
    // By level name, without regard to case; an unknown name throws LookupException.
    void setDefaultLevel(const String& levelName);
    void setContextLevel(const String& levelName, const String& contextName);
    // Null is allowed.
    void setWriter(const SharedPointer<Writer>& newWriter);
    // No writer and no contexts.
    bool isEmpty() const;
    // Gives every formatter in the registry the registry, then its default format.
    void prepareFormatters();
    // The default writer: a RotatedFileWriter of the mode's default file, with the
    // formatter "Line".
    void useDefaults(LogMode mode);
    // Puts an InstallerLogWriter with the formatter "Line" in front of the writer, the
    // two under one MultiWriter, so that every record also reaches the log of the
    // installation the logging thread works for. Nothing changes when there is no
    // writer or when the writer reaches that log already (the text named one).
    void joinInstallerLog();

    Array<ContextLevel> contexts;
    SharedPointer<Writer> writer;
    SharedPointer<FormatterRegistry> formatters;
    Level defaultLevel;
};

}}  // namespace Framework::Log
