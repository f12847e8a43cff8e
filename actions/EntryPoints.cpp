// The five exported actions. Each has one shape: build the CustomAction (the FW
// layer comes up), run the action, destroy it (the layer goes down), return 0.
// No action passes a failure to the engine through its result.
//
// The entry points catch nothing. They are noexcept, so an exception that the
// action's own handlers do not take ends here in the terminate handler: the
// process's fatal road, never a silent success.
#include "actions/ActionFrame.h"

extern "C" {

UINT __stdcall Subscribe(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::subscribe>(hInstall, "Subscribe");
}

UINT __stdcall SetDomain(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::setDomain>(hInstall, "SetDomain");
}

UINT __stdcall SetApplicationSize(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::setApplicationSize>(hInstall, "SetApplicationSize");
}

UINT __stdcall SetProperties(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::setProperties>(hInstall, "SetProperties");
}

UINT __stdcall SetEncaseKorvalinFlag(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::setEncaseKorvalinFlag>(hInstall, "SetEncaseKorvalinFlag");
}

}  // extern "C"
