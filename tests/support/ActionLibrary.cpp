#include "ActionLibrary.h"

#include <cstring>
#include <stdexcept>

std::wstring testSetting(const char* name)
{
    const wchar_t* value = _wgetenv(std::wstring(name, name + std::strlen(name)).c_str());
    if (!value || !*value)
        throw std::runtime_error(std::string("the test needs the environment variable ") + name);
    return value;
}

ActionLibrary::ActionLibrary(const char* pathVariable)
    : module(LoadLibraryW(testSetting(pathVariable).c_str()))
{
    if (!module)
        throw std::runtime_error("LoadLibrary failed with " + std::to_string(GetLastError()));
}

ActionLibrary::Action ActionLibrary::action(const char* exportName) const
{
    return reinterpret_cast<Action>(reinterpret_cast<void*>(GetProcAddress(module, exportName)));
}

UINT ActionLibrary::call(const char* exportName, MSIHANDLE session) const
{
    const Action entry = action(exportName);
    if (!entry)
        throw std::runtime_error(std::string("no export ") + exportName);
    return entry(session);
}
