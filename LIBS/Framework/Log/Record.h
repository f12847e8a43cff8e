// One log message as it travels from a Context through the Logger to a writer: a
// value that is copied freely. The thread is not part of it; the thread formatters
// ask for the thread that formats the record.
#pragma once
#include "Framework/Log/Level.h"
#include "Framework/String.h"
#include "Framework/ThrowSite.h"

#include <cstdint>

namespace Framework { namespace Log {

struct Record
{
    // The name of the context that logged it, "::" between its levels.
    String context;
    Level level;
    // Where it was logged; the tag points to static storage.
    ThrowSite source;
    // Milliseconds from the logger's start to `time`.
    uint64_t elapsed;
    // Logger::currentTime() when the record was made: local clock, milliseconds.
    uint64_t time;
    // The finished message.
    String message;
};

}}  // namespace Framework::Log
