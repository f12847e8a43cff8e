// A second module that links the library's layers the way WixKorvalin.dll does, with
// one action in the same frame: for the tests of what such a module does to msvcrt
// while it is loaded and once it is unloaded (log_config_tests).
#include "actions/ActionFrame.h"

extern "C" UINT __stdcall ProbeSetProperties(MSIHANDLE hInstall) noexcept
{
    return runAction<&CustomAction::setProperties>(hInstall, "ProbeSetProperties");
}
