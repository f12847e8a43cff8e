// A built action DLL loaded into the test process with LoadLibrary, as the engine's
// custom-action host loads it, with its exports called by name.
#pragma once
#include <windows.h>
#include <msi.h>

#include <string>

class ActionLibrary
{
public:
    // The path comes from the named environment variable (set by CTest).
    explicit ActionLibrary(const char* pathVariable = "KORVALIN_DLL");
    ~ActionLibrary() { FreeLibrary(module); }
    ActionLibrary(const ActionLibrary&) = delete;
    ActionLibrary& operator=(const ActionLibrary&) = delete;

    using Action = UINT(__stdcall*)(MSIHANDLE);
    // Null when the DLL has no such export.
    Action action(const char* exportName) const;
    UINT call(const char* exportName, MSIHANDLE session) const;
    HMODULE handle() const { return module; }

private:
    HMODULE module;
};

// The value of an environment variable that CTest set for the test, or a failure.
std::wstring testSetting(const char* name);
