#include "Framework/Exceptions.h"

namespace Framework {

String RangeException::description(bool includeCause) const
{
    return String(L"RangeFrom: ") + toString(from) + String(L"\nRangeTo: ") + toString(to) + String(L"\nIndex: ") +
           toString(index) + L'\n' + Exception::description(includeCause);
}

String TextFormatException::description(bool includeCause) const
{
    return String(L"fileName: ") + fileName + String(L"\nline: ") + toString(line) + String(L"\ncolumn: ") +
           toString(column) + String(L"\nmessage: ") + errorMessage + String(L"\ncitation: ") + citation + L'\n' +
           Exception::description(includeCause);
}

String NotImplementedException::description(bool includeCause) const
{
    if (feature.empty())
        return Exception::description(includeCause);
    return String(L"Unsupported: ") + feature + L'\n' + Exception::description(includeCause);
}

String EnvironmentException::description(bool includeCause) const
{
    return String(L"Missing element: ") + element + L'\n' + Exception::description(includeCause);
}

}  // namespace Framework
