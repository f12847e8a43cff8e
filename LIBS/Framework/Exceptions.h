// The exception classes of the Framework core, all under ErrorException. Classes
// that are mixed with others derive virtually from ErrorException, so a mixed object
// holds one ErrorException and one site. Thrown as `throw new X(SITE, ...)`.
//
// Descriptions put each class's own lines ahead of the base text:
//   RangeException(SITE, 0, 3, 5)  -> "RangeFrom: 0\nRangeTo: 3\nIndex: 5\n" + base
//   EnvironmentException(SITE, "HOME") -> "Missing element: HOME\n" + base
#pragma once
#include "Framework/Exception.h"

namespace Framework {

// A broken precondition: null or impossible arguments, inconsistent state. No text
// but the site.
class ErrorException : public Exception
{
public:
    explicit ErrorException(const ThrowSite& site) : Exception(site) {}
};

// Use of an empty handle.
class ValueNotInitializedException : public virtual ErrorException
{
public:
    explicit ValueNotInitializedException(const ThrowSite& site) : ErrorException(site) {}
};

// An index or position outside its range.
class RangeException : public virtual ErrorException
{
public:
    explicit RangeException(const ThrowSite& site) : RangeException(site, 0, 0, 0) {}
    RangeException(const ThrowSite& site, int64_t rangeFrom, int64_t rangeTo, int64_t badIndex)
        : ErrorException(site), from(rangeFrom), to(rangeTo), index(badIndex)
    {
    }
    String description(bool includeCause) const override;

    const int64_t from;
    const int64_t to;
    const int64_t index;
};

// A number that doesn't fit its type.
class OverflowException : public virtual ErrorException
{
public:
    explicit OverflowException(const ThrowSite& site) : ErrorException(site) {}
};

// Text that can't be parsed; position is all ones when unknown, and isn't printed.
class FormatException : public virtual ErrorException
{
public:
    static constexpr uint64_t unknownPosition = ~uint64_t(0);
    FormatException(const ThrowSite& site, uint64_t failedAt) : ErrorException(site), position(failedAt) {}

    const uint64_t position;
};

// A syntax error in a text file, with everything a reader needs to find it.
class TextFormatException : public virtual FormatException
{
public:
    TextFormatException(const ThrowSite& site, uint32_t lineNumber, uint32_t columnNumber, const String& citedText,
                        const String& why, const String& sourceFile)
        : ErrorException(site),
          FormatException(site, unknownPosition),
          line(lineNumber),
          column(columnNumber),
          citation(citedText),
          errorMessage(why),
          fileName(sourceFile)
    {
    }
    // "fileName: ...\nline: ...\ncolumn: ...\nmessage: ...\ncitation: ...\n" + base
    String description(bool includeCause) const override;

    const uint32_t line;
    const uint32_t column;
    const String citation;
    const String errorMessage;
    const String fileName;
};

// The registry denied an operation that needs an administrator.
class NoAdminRightsException : public ErrorException
{
public:
    explicit NoAdminRightsException(const ThrowSite& site) : ErrorException(site) {}
};

// An element asked for by name or key is missing.
class LookupException : public virtual ErrorException
{
public:
    explicit LookupException(const ThrowSite& site) : ErrorException(site) {}
};

// Base of search failures.
class SearchException : public virtual ErrorException
{
public:
    explicit SearchException(const ThrowSite& site) : ErrorException(site) {}
};

// An iterator used past its end.
class IterationException : public virtual ErrorException
{
public:
    explicit IterationException(const ThrowSite& site) : ErrorException(site) {}
};

// A requested feature that doesn't exist; prints "Unsupported: <feature>\n" when
// the feature is named.
class NotImplementedException : public ErrorException
{
public:
    explicit NotImplementedException(const ThrowSite& site) : ErrorException(site) {}
    NotImplementedException(const ThrowSite& site, const String& featureName)
        : ErrorException(site), feature(featureName)
    {
    }
    String description(bool includeCause) const override;

    const String feature;
};

// An element added under a name that is taken.
class ValueExistsException : public virtual ErrorException
{
public:
    explicit ValueExistsException(const ThrowSite& site) : ErrorException(site) {}
};

// A missing environment variable.
class EnvironmentException : public virtual ErrorException
{
public:
    EnvironmentException(const ThrowSite& site, const String& variableName)
        : ErrorException(site), element(variableName)
    {
    }
    String description(bool includeCause) const override;

    const String element;
};

}  // namespace Framework
