// The log of one installer session: each line goes to the engine as an info message
// (MsiProcessMessage with INSTALLMESSAGE_INFO, the text as the record's template, its
// "[", "]", "{" and "}" escaped so that they come out as they are), which msiexec's
// verbose log (/l*v) shows between the action's start and end lines. Every line is headed "WixKorvalin <action>: ", so that one
// grep finds an action's lines.
//
// A line is told, never asked: the engine's answer, and every failure on the way
// (a record that can't be made, a session that refuses it, no memory for the text),
// stay here. The session handle is not owned.
#pragma once
#include "Framework/Log/InstallerLog.h"

#include <windows.h>
#include <msi.h>

class SessionLog : public Framework::Log::InstallerLog
{
public:
    SessionLog(MSIHANDLE hInstall, const char* actionName);

    void writeLine(const Framework::String& line) noexcept override;

private:
    MSIHANDLE hInstall;
    Framework::String heading;
};
