// The object of one action call: built on the entry point's stack round the session
// handle the engine passed in, and destroyed before the entry point returns. Its
// fw_library base brings the FW layer up for the call and takes it down after.
//
// It does not own the handle and never closes it, and it keeps no state: everything
// an action reads, it reads anew from the session or the registry in that call.
//
// While it lives, the session's log is the installation's log of its thread
// (Framework/Log/InstallerLog.h): the action's own lines go there, and so does the
// line of a fatal handler that runs on that thread while the action is running.
#pragma once
#include "Framework/String.h"
#include "actions/SessionLog.h"
#include "fw/fw_library.h"

#include <windows.h>
#include <msi.h>

class CustomAction : public fw_library
{
public:
    // The action's name heads its lines in the installation's log.
    explicit CustomAction(MSIHANDLE hInstall, const char* actionName = "CustomAction");
    ~CustomAction() override = default;

    // The property's value; a property that is not set, or a call that fails,
    // reads as the empty string. The value ends at its first NUL. The engine's
    // return codes are not read.
    Framework::String getProperty(const Framework::String& name) const;
    // An empty value clears the property. Returns the engine's code, which no
    // caller reads.
    UINT setProperty(const Framework::String& name, const Framework::String& value) const;

    // An upgrade code as the installer's registry lists name it: 32 digits, without
    // braces and hyphens, the first three groups reversed and the pairs of the last
    // two reversed, case kept:
    //   {12345678-9ABC-DEF0-1234-56789ABCDEF0} -> 87654321CBA90FED21436587A9CBED0F
    // A text that isn't 36 characters, or 38 in braces, or that doesn't split into
    // five groups whose last two have 4 and 12 digits, throws ErrorException.
    static Framework::String packGuid(const Framework::String& text);

    // One line into the installation's log, "WixKorvalin <action>: " and the printf
    // text of the format (Framework/FormatEngine.h: "%S" takes a wide text). It costs
    // the action nothing it can fail on: a format or a session that fails loses the
    // line, nothing else, and the engine's answer is not read.
    void logLine(const wchar_t* format, ...) const noexcept;

    // The actions. Each decides for itself what it catches; see its file.
    void setProperties();
    void setDomain();
    void setApplicationSize();
    void setEncaseKorvalinFlag();
    void subscribe();

private:
    MSIHANDLE hInstall;
    // mutable: writing a line changes nothing the action can see.
    mutable SessionLog sessionLog;
    Framework::Log::InstallerLog::Binding installerLogBinding;
};
