#include "actions/CustomAction.h"

#include <msiquery.h>

using Framework::String;

CustomAction::CustomAction(MSIHANDLE session) : hInstall(session) {}

String CustomAction::getProperty(const String& name) const
{
    // c_str() is never null: a name with no text goes as an empty wide string.
    DWORD length = 0;
    MsiGetPropertyW(hInstall, name.c_str(), nullptr, &length);
    length += 1;
    String value(static_cast<uint32_t>(length));
    // A fresh string is private, so its characters may be written directly. A call
    // that fails writes nothing: the text starts empty, not with what the heap held.
    value.refAt(0) = 0;
    MsiGetPropertyW(hInstall, name.c_str(), &value.refAt(0), &length);
    value.trimAtZero();
    return value;
}

UINT CustomAction::setProperty(const String& name, const String& value) const
{
    return MsiSetPropertyW(hInstall, name.c_str(), value.c_str());
}
