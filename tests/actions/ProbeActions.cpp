// A test-only action DLL: the same frame as the product's exports, with actions
// that end in ways no product action can be made to end on demand. It shows what
// the frame and the installer engine do with an exception no handler takes.
#include "actions/ActionFrame.h"

#include "Framework/Exceptions.h"

namespace {

struct ProbeAction : CustomAction
{
    using CustomAction::CustomAction;
    void throwUncaught() { throw new Framework::ErrorException(SITE); }
};

}  // namespace

extern "C" UINT __stdcall ThrowUncaught(MSIHANDLE hInstall) noexcept
{
    {
        ProbeAction call(hInstall, "ThrowUncaught");
        call.setProperty("PROBE_STARTED", "1");
        call.throwUncaught();
    }
    return ERROR_SUCCESS;
}
