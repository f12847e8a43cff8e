// Where the logger's settings come from: the search for a configuration text, the
// reader that turns INI text into a Configuration, and the two factory tables that
// make formatters and writers by class name (without regard to case).
//
// The search, for the product mode (the internal mode has "InternalLog.ini",
// "INTERNAL_LOG", "InternalLog": see LogMode in Configuration.h), stops at the first
// place that has a file:
//   1. "KorvalinLogConfig.ini" in the working folder, then beside the main program
//      (not beside this library);
//   2. the file that the environment variable "KORVALIN_LOG_CONFIG" names: as given
//      (so a relative name from the working folder), then beside the main program;
//   3. the resource "KorvalinLogConfig" of type "INI" in the module that holds this
//      code (a build may add one; see the README);
//   4. nothing: a fresh, empty configuration.
// configurationLocation() then tells where: an absolute file path, the resource
// name, or empty. It is set as soon as a source is open, so that a failure while the
// text is read can still name it.
//
// The text, all of it optional (names of sections and keys without regard to case):
//   [contexts]              default=WARNING, and "context name = level", with case
//   [formatters]            keys given to every configured formatter first
//   [formatters.N]          type=<formatter class>, then its properties
//   [writers]               active=N, repeated for each writer, in order
//   [writers.N]             type=<writer class> (default N + "writer"), formatter=<name>,
//                           then its properties
// Named writers become the children of one MultiWriter. Formatters are read in two
// passes, so a template may name a formatter whose section comes later.
//
// Everything raises: TextFormatException for bad text, LookupException for an unknown
// level, formatter name, missing "active" or missing writer section,
// ValueNotInitializedException for an unknown class, ValueExistsException for a
// formatter section named like one that exists (built-in names included), and what
// the formatters and writers raise for their properties. The logger catches it and
// falls back to its default writer.
#pragma once
#include "Framework/Io/Stream.h"
#include "Framework/Log/Configuration.h"

namespace Framework { namespace Log {

SharedPointer<Formatter> createFormatter(const String& className);
SharedPointer<Writer> createWriter(const String& className);

Configuration loadConfiguration(LogMode mode);
String configurationLocation();

// The reader alone, on a text from anywhere.
Configuration readConfiguration(Io::InputStream& stream);

}}  // namespace Framework::Log
