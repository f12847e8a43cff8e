// SetProperties: hands the present time to the installer as "CURRENTTIMEMS",
// milliseconds since 1970-01-01 00:00:00 UTC in plain decimal digits.
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
        setProperty("CURRENTTIMEMS", Framework::toString(milliseconds));
    } catch (Framework::Exception* raw) {
        delete raw;  // the action ends without a word; the installation goes on
    }
}
