// A log writer into the log of the installation that the writing thread works for
// (InstallerLog): each record's text goes there as one line, without its line end.
// On a thread with no installation's log bound, a record goes nowhere, and that is no
// failure. It has no properties.
//
// The logger puts one of these, with the formatter "Line", in front of every
// configured writer (Logger.h), so that a fatal handler's line reaches the
// installation's log of the action that is dying as well as the configured file. A
// configuration that names an InstallerLogWriter itself decides its formatter, and
// then no second one is added.
#pragma once
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

class InstallerLogWriter : public Writer
{
public:
    // Formats the record only when the thread has an installation's log.
    void write(const Record& record) override;
    void output(const String& text) override;
    bool reachesInstallerLog() const override { return true; }
};

}}  // namespace Framework::Log
