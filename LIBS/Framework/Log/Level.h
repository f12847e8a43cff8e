// How important a log message is, and the threshold a context is compared with: a
// 32-bit number where lower is more verbose. A message passes a threshold that is
// less than or equal to its level, so a message exactly at the threshold is logged,
// Undefined as a threshold passes everything, and no threshold silences Error.
//
//   Undefined 0 "UNDEFINED", Debug 10 "DEBUG", Info 20 "INFO", Warning 30 "WARNING",
//   Error 40 "ERROR"; any other number has no name.
#pragma once
#include "Framework/String.h"

#include <cstdint>

namespace Framework { namespace Log {

enum class Level : uint32_t
{
    Undefined = 0,
    Debug = 10,
    Info = 20,
    Warning = 30,
    Error = 40,
};

// The printed name, or null for a number outside the five.
const wchar_t* levelName(Level level);
// The name compared without regard to case: "warning" -> Warning. An unknown name
// throws LookupException.
Level levelFromName(const String& name);

}}  // namespace Framework::Log
