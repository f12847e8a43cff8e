#include "Framework/Io/Exceptions.h"

namespace Framework { namespace Io {

String PathInvalidException::description(bool includeCause) const
{
    return String(L"Invalid path: ") + path + L'\n' + Exception::description(includeCause);
}

String PathNotFoundException::description(bool includeCause) const
{
    return String(L"Path not found: ") + path + L'\n' + Exception::description(includeCause);
}

String PathExistsException::description(bool includeCause) const
{
    return String(L"Path exists: ") + path + L'\n' + Exception::description(includeCause);
}

}}  // namespace Framework::Io
