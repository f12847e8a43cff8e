// Environment variables of the process, as the runtime library sees them (_wgetenv,
// with the platform's rule for the case of names).
//
// expandEnvironment replaces each %NAME% once, from left to right:
//   "a%X%b%Y%" with X=1, Y=2  ->  "a1b2"
//   "100%"                    ->  FormatException (unclosed, position all ones)
//   "%%"                      ->  ErrorException  (empty name: there is no escape)
//   "%UNSET%"                 ->  EnvironmentException naming UNSET
// A value that holds a % is not expanded again.
#pragma once
#include "Framework/String.h"

namespace Framework {

// An empty name throws ErrorException in all three.
bool hasEnvironmentVariable(const String& name);
// A variable that isn't set throws EnvironmentException holding the name.
String environmentVariable(const String& name);
String expandEnvironment(const String& text);

}  // namespace Framework
