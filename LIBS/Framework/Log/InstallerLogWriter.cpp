#include "Framework/Log/InstallerLogWriter.h"

#include "Framework/Log/InstallerLog.h"

namespace Framework { namespace Log {

void InstallerLogWriter::write(const Record& record)
{
    if (InstallerLog::current())
        Writer::write(record);
}

void InstallerLogWriter::output(const String& text)
{
    InstallerLog* const log = InstallerLog::current();
    if (!log)
        return;
    // writeText ended the text in "\r\n"; the installation's log ends its lines itself.
    log->writeLine(text.substr(0, text.length() - 2));
}

}}  // namespace Framework::Log
