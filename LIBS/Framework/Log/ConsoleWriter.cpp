#include "Framework/Log/ConsoleWriter.h"

#include <cwchar>

namespace Framework { namespace Log {

void ConsoleWriter::output(const String& text)
{
    String escaped = text;
    escaped.replaceAll(L"%", L"%%");
    std::wprintf(escaped.c_str());
}

}}  // namespace Framework::Log
