// Records and formatters for tests of the log layer: a record with known fields, a
// formatter that hands a record's message over untouched (so a test sees exactly
// what a writer does with a text), and an installation's log that keeps its lines.
#pragma once
#include "Framework/Log/InstallerLog.h"
#include "Framework/Log/Formatter.h"
#include "Framework/Log/Record.h"

#include <string>
#include <vector>

inline Framework::Log::Record recordWith(const wchar_t* message,
                                         Framework::Log::Level level = Framework::Log::Level::Error,
                                         const wchar_t* context = L"Framework")
{
    // The time is 2013-02-20 08:21:24 as the logger's clock gives it (already local).
    return Framework::Log::Record{context, level, SITE, 1234, 1361348484000ull, message};
}

class VerbatimFormatter : public Framework::Log::Formatter
{
public:
    Framework::String format(const Framework::Log::Record& record) const override { return record.message; }
    Framework::String name() const override { return L"Verbatim"; }
};

inline Framework::SharedPointer<Framework::Log::Formatter> verbatimFormatter()
{
    return Framework::SharedPointer<Framework::Log::Formatter>(new VerbatimFormatter);
}

class KeptInstallerLog : public Framework::Log::InstallerLog
{
public:
    void writeLine(const Framework::String& line) noexcept override { lines.emplace_back(line.c_str(), line.length()); }

    std::vector<std::wstring> lines;
};
