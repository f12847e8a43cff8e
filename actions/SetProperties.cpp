// SetProperties: hands the present time to the installer as "CURRENTTIMEMS",
// milliseconds since 1970-01-01 00:00:00 UTC in plain decimal digits, and says so in
// the installation's log.
#include "actions/CustomAction.h"

#include "Framework/Exception.h"

#include <windows.h>

using Framework::String;

void CustomAction::setProperties()
{
    try {
        // The system's clock in 100 ns units since 1601, read directly: the runtime's
        // _ftime64 gives the same milliseconds but asks for the time zone first, which
        // costs more than the rest of the action under Wine.
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        const uint64_t ticks = uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime;
        const uint64_t ticksFrom1601To1970 = 116444736000000000ull;
        const uint64_t milliseconds = (ticks - ticksFrom1601To1970) / 10000;
        const String stamp = Framework::toString(milliseconds);
        setProperty("CURRENTTIMEMS", stamp);
        logLine(L"set \"CURRENTTIMEMS\" = \"%S\"", stamp.c_str());
    } catch (Framework::Exception* raw) {
        delete raw;  // the action ends; the installation goes on
        logLine(L"the time could not be had: \"CURRENTTIMEMS\" not set");
    }
}
