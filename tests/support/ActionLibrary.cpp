#include "ActionLibrary.h"

#include <cstdlib>
#include <stdexcept>
#include <vector>

std::wstring testSetting(const char* name)
{
    const char* value = std::getenv(name);
    if (!value || !*value)
        throw std::runtime_error(std::string("the test needs the environment variable ") + name);
    const int n = MultiByteToWideChar(CP_ACP, 0, value, -1, nullptr, 0);
    std::vector<wchar_t> wide(n);
    MultiByteToWideChar(CP_ACP, 0, value, -1, wide.data(), n);
    return std::wstring(wide.data());
}

ActionLibrary::ActionLibrary(const char* pathVariable)
    : module(LoadLibraryW(testSetting(pathVariable).c_str()))
{
    if (!module)
        throw std::runtime_error("LoadLibrary failed with " + std::to_string(GetLastError()));
}

ActionLibrary::~ActionLibrary()
{
    FreeLibrary(module);
}

ActionLibrary::Action ActionLibrary::action(const char* exportName) const
{
    return reinterpret_cast<Action>(reinterpret_cast<void*>(GetProcAddress(module, exportName)));
}

UINT ActionLibrary::call(const char* exportName, MSIHANDLE session) const
{
    Action entry = action(exportName);
    if (!entry)
        throw std::runtime_error(std::string("no export ") + exportName);
    return entry(session);
}
