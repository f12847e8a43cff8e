// The shape every exported action shares: build the CustomAction round the session
// handle, run one of its actions, destroy it, return 0 (ERROR_SUCCESS).
//
// noexcept on purpose: an exception that the action's own handlers don't take is
// not turned into a result code here. It reaches the terminate handler, which ends
// the custom-action host process; see the README for what the engine then does.
#pragma once
#include "actions/CustomAction.h"

template <void (CustomAction::*action)()>
UINT runAction(MSIHANDLE hInstall, const char* actionName) noexcept
{
    {
        CustomAction call(hInstall, actionName);
        (call.*action)();
    }
    return ERROR_SUCCESS;
}
