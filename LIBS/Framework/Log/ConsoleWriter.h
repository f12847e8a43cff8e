// A log writer to the process's standard output, through the runtime's wprintf. Text
// with "%" arrives as it was: every "%" is doubled before wprintf sees it. It has no
// properties, and it is the one writer that can't fail at its target: what wprintf
// reports is ignored.
#pragma once
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

class ConsoleWriter : public Writer
{
public:
    void output(const String& text) override;
};

}}  // namespace Framework::Log
