// The named handle through which code logs: cheap, made on the stack where it is
// needed, and leading to a Logger through its provider (usually Logger::instance).
//
//   Framework::Log::Context log(L"Framework::Io", Framework::Log::Logger::instance);
//   log.error(LOG_SITE, "Failed to open %S: %d", name.c_str(), code);
//
// A call below the context's threshold costs two comparisons and no lock, no
// allocation, and the arguments are not touched: the context keeps the threshold it
// last got from the logger with the loggers' configuration epoch, and asks again only
// when a logger has adopted another configuration (or gone) since. The first call of
// all creates and configures the logger, even when it is below the threshold.
//
// Failures of logging never reach the caller (the logger turns itself off instead),
// but an exception of the provider does, and so does one that the configuration step
// lets through.
#pragma once
#include "Framework/Log/Level.h"
#include "Framework/ThrowSite.h"

#include <atomic>

namespace Framework { namespace Log {

class Logger;

// The site of the call as the pointer the front ends take; valid for the call.
inline const ThrowSite* sitePointer(const ThrowSite& site)
{
    return &site;
}
#define LOG_SITE (::Framework::Log::sitePointer(SITE))

class Context
{
public:
    using Provider = Logger* (*)();

    // An empty name, and a provider that throws ErrorException.
    Context();
    Context(const String& name, Provider provider);
    Context(const Context& other);
    Context& operator=(const Context& other);

    // `format` is a narrow printf text of the format engine (FormatEngine.h).
    void debug(const ThrowSite* site, const char* format, ...);
    void error(const ThrowSite* site, const char* format, ...);

    const String& name() const { return contextName; }

private:
    // Whether a message of `level` passes, refreshing the cached threshold if a
    // logger has adopted a configuration since it was cached.
    bool passes(Level level);
    bool refreshedPasses(Level level);

    String contextName;
    uint32_t cachedLevel;
    Provider provider;
    // The loggers' configuration epoch (Logger::configurationEpoch) when cachedLevel
    // was asked for; 0 before the first call.
    std::atomic<uint32_t> cachedGeneration;
};

}}  // namespace Framework::Log
