// SetProperties: hands the present time to the installer as "CURRENTTIMEMS",
// milliseconds since 1970-01-01 00:00:00 UTC in plain decimal digits, and says so in
// the installation's log.
#include "actions/CustomAction.h"

#include "Framework/Exception.h"

#include <sys/timeb.h>

using Framework::String;

void CustomAction::setProperties()
{
    try {
        __timeb64 now;
        _ftime64(&now);
        const uint64_t milliseconds = uint64_t(now.time) * 1000 + now.millitm;
        const String stamp = Framework::toString(milliseconds);
        setProperty("CURRENTTIMEMS", stamp);
        logLine(L"set \"CURRENTTIMEMS\" = \"%S\"", stamp.c_str());
    } catch (Framework::Exception* raw) {
        delete raw;  // the action ends; the installation goes on
        logLine(L"the time could not be had: \"CURRENTTIMEMS\" not set");
    }
}
