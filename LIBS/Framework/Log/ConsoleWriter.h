// A log writer to the process's standard output, through the runtime's wprintf. The
// text arrives as it was: every "%" is doubled before wprintf sees it, and each
// "\r\n" is handed over as "\n", because standard output is a text-mode stream that
// puts the "\r" back (handed "\r\n" it would write "\r\r\n").
//
// Each text is flushed at once: the fatal handlers log just before abort(), which
// would drop what the stream still buffers.
//
// It has no properties, and it is the one writer that can't fail at its target: what
// wprintf reports is ignored.
#pragma once
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

class ConsoleWriter : public Writer
{
public:
    void output(const String& text) override;
};

}}  // namespace Framework::Log
