#include "Framework/Log/Level.h"

#include "Framework/Exceptions.h"

namespace Framework { namespace Log {

namespace {

struct NamedLevel
{
    Level level;
    const wchar_t* name;
};

const NamedLevel namedLevels[] = {
    {Level::Undefined, L"UNDEFINED"}, {Level::Debug, L"DEBUG"}, {Level::Info, L"INFO"},
    {Level::Warning, L"WARNING"},     {Level::Error, L"ERROR"},
};

}  // namespace

const wchar_t* levelName(Level level)
{
    for (const NamedLevel& named : namedLevels)
        if (named.level == level)
            return named.name;
    return nullptr;
}

Level levelFromName(const String& name)
{
    for (const NamedLevel& named : namedLevels)
        if (compareNoCase(name.c_str(), name.length(), named.name, String::textLength(named.name)) == 0)
            return named.level;
    throw new LookupException(SITE);
}

}}  // namespace Framework::Log
