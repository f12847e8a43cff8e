#include "Framework/Log/ConsoleWriter.h"

#include <cstdio>
#include <cwchar>

namespace Framework { namespace Log {

void ConsoleWriter::output(const String& text)
{
    String escaped = text;
    escaped.replaceAll(L"%", L"%%");
    escaped.replaceAll(L"\r\n", L"\n");
    std::wprintf(escaped.c_str());
    std::fflush(stdout);
}

}}  // namespace Framework::Log
