#include "Framework/Environment.h"

#include "Framework/Exceptions.h"

#include <cstdlib>

namespace Framework {

bool hasEnvironmentVariable(const String& name)
{
    if (name.empty())
        throw new ErrorException(SITE);
    return _wgetenv(name.c_str()) != nullptr;
}

String environmentVariable(const String& name)
{
    if (name.empty())
        throw new ErrorException(SITE);
    const wchar_t* value = _wgetenv(name.c_str());
    if (!value)
        throw new EnvironmentException(SITE, name);
    return String(value);
}

String expandEnvironment(const String& text)
{
    const wchar_t percent = L'%';
    uint32_t opening = text.find(&percent, 1);
    if (opening == String::npos)
        return text;
    String result;
    uint32_t position = 0;
    while (opening != String::npos) {
        result.append(text.c_str() + position, opening - position);
        const uint32_t closing = text.find(&percent, 1, opening + 1);
        if (closing == String::npos)
            throw new FormatException(SITE, FormatException::unknownPosition);
        result.append(environmentVariable(text.substr(opening + 1, closing)));
        position = closing + 1;
        opening = text.find(&percent, 1, position);
    }
    result.append(text.c_str() + position, text.length() - position);
    return result;
}

}  // namespace Framework
