#include "Framework/Log/Context.h"

#include "Framework/Exceptions.h"
#include "Framework/Log/Logger.h"

#include <cstdarg>

namespace Framework { namespace Log {

namespace {

Logger* noLogger()
{
    throw new ErrorException(SITE);
}

// va_end on every way out, the logger's exceptions included.
struct Arguments
{
    ~Arguments() { va_end(list); }
    va_list list;
};

}  // namespace

Context::Context() : cachedLevel(0), provider(noLogger), cachedGeneration(0) {}

Context::Context(const String& name, Provider loggerProvider)
    : contextName(name), cachedLevel(0), provider(loggerProvider), cachedGeneration(0)
{
}

Context::Context(const Context& other)
    : contextName(other.contextName),
      cachedLevel(other.cachedLevel),
      provider(other.provider),
      cachedGeneration(other.cachedGeneration.load())
{
}

Context& Context::operator=(const Context& other)
{
    contextName = other.contextName;
    cachedLevel = other.cachedLevel;
    provider = other.provider;
    cachedGeneration = other.cachedGeneration.load();
    return *this;
}

// The call below the threshold ends here, in the caller's frame: the cached
// threshold stands while no logger has adopted a configuration since it was asked
// for (the epoch is one load), so the provider is not even called.
inline bool Context::passes(Level level)
{
    if (cachedGeneration != 0 && cachedGeneration == Logger::configurationEpoch())
        return cachedLevel <= uint32_t(level);
    return refreshedPasses(level);
}

bool Context::refreshedPasses(Level level)
{
    // Reached first of all through the provider, which makes and configures the
    // logger; the epoch is read after that and before the threshold, so a
    // configuration adopted meanwhile makes the next call ask again.
    Logger* const logger = provider();
    logger->generation();
    const uint32_t epoch = Logger::configurationEpoch();
    cachedLevel = uint32_t(logger->levelFor(contextName));
    cachedGeneration.exchange(epoch);
    return cachedLevel <= uint32_t(level);
}

void Context::debug(const ThrowSite* site, const char* format, ...)
{
    if (!passes(Level::Debug))
        return;
    Logger* logger = provider();
    Arguments args;
    va_start(args.list, format);
    logger->log(*this, Level::Debug, site, format, args.list);
}

void Context::error(const ThrowSite* site, const char* format, ...)
{
    if (!passes(Level::Error))
        return;
    Logger* logger = provider();
    Arguments args;
    va_start(args.list, format);
    logger->log(*this, Level::Error, site, format, args.list);
}

}}  // namespace Framework::Log
