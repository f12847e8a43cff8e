// The exceptions of the file layer. Each is found by the handlers of both of its
// parents: an Io::OsException by one for Framework::OsException and by one for
// Io::ErrorException. Those with a path put a line ahead of the base text:
//   PathNotFoundException(SITE, "C:\\x") -> "Path not found: C:\\x\n" + base
#pragma once
#include "Framework/OsException.h"

namespace Framework { namespace Io {

// Root of the file family.
class ErrorException : public virtual Framework::ErrorException
{
public:
    explicit ErrorException(const ThrowSite& site) : Framework::ErrorException(site) {}
};

// A failed file call; the file layer passes all ones as the code.
class OsException : public Framework::OsException, public Io::ErrorException
{
public:
    OsException(const ThrowSite& site, const OsError& error, uint64_t errorCode, const String& failedCall,
                const String& sentence)
        : Framework::ErrorException(site),
          Framework::OsException(site, error, errorCode, failedCall, sentence),
          Io::ErrorException(site)
    {
    }
};

class EndOfStreamException : public Io::ErrorException
{
public:
    explicit EndOfStreamException(const ThrowSite& site) : Framework::ErrorException(site), Io::ErrorException(site) {}
};

class StreamClosedException : public Io::ErrorException
{
public:
    explicit StreamClosedException(const ThrowSite& site) : Framework::ErrorException(site), Io::ErrorException(site) {}
};

class PathInvalidException : public Io::ErrorException, public virtual ValueNotInitializedException
{
public:
    PathInvalidException(const ThrowSite& site, const String& pathText)
        : Framework::ErrorException(site), ValueNotInitializedException(site), Io::ErrorException(site), path(pathText)
    {
    }
    // "Invalid path: <path>\n" + base
    String description(bool includeCause) const override;

    const String path;
};

class PathNotFoundException : public Io::ErrorException, public SearchException
{
public:
    PathNotFoundException(const ThrowSite& site, const String& pathText)
        : Framework::ErrorException(site), Io::ErrorException(site), SearchException(site), path(pathText)
    {
    }
    // "Path not found: <path>\n" + base
    String description(bool includeCause) const override;

    const String path;
};

class PathExistsException : public Io::ErrorException, public virtual ValueExistsException
{
public:
    PathExistsException(const ThrowSite& site, const String& pathText)
        : Framework::ErrorException(site), ValueExistsException(site), Io::ErrorException(site), path(pathText)
    {
    }
    // "Path exists: <path>\n" + base
    String description(bool includeCause) const override;

    const String path;
};

}}  // namespace Framework::Io
