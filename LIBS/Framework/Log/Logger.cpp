#include "Framework/Log/Logger.h"

#include "Framework/Exceptions.h"
#include "Framework/Log/ConfigurationLoader.h"
#include "Framework/Log/Context.h"
#include "fw/fw_raise.h"

#include <windows.h>
#include <ctime>
#include <memory>

namespace Framework { namespace Log {

namespace {

const wchar_t ownContext[] = L"Framework::Log::Logger";

// The search and the reader. Where the text was found is passed on even when reading
// it fails, so that the report can name the place.
Configuration searchedConfiguration(LogMode mode, String& location)
{
    struct Publish
    {
        String& out;
        ~Publish() { out = configurationLocation(); }
    } publish{location};
    return loadConfiguration(mode);
}

// Made among the static initialisers, before anything can log.
CriticalSection instanceLock;
SharedPointer<Logger> instanceHolder;

}  // namespace

std::atomic<Logger*> Logger::madeInstance{nullptr};
std::atomic<uint32_t> Logger::epoch{1};

void Logger::advanceEpoch()
{
    // 0 is what a context that never asked holds: the count skips it when it wraps.
    if (++epoch == 0)
        ++epoch;
}

Logger* Logger::createInstance()
{
    if (instanceHolder.isNull()) {
        CriticalSection::Hold hold(instanceLock);
        if (instanceHolder.isNull())
            instanceHolder.reset(new Logger(LogMode::Product));
    }
    if (instanceHolder.isNull())
        throw new ErrorException(SITE);
    madeInstance = instanceHolder.get();
    return instanceHolder.get();
}

uint64_t Logger::currentTime()
{
    // The system clock read directly: _ftime64 gives the same milliseconds, but asks
    // for the zone again on the way, which costs more than the rest of this.
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    const uint64_t ticks = uint64_t(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    const int64_t utcMilliseconds = int64_t((ticks - 116444736000000000ull) / 10000);
    _tzset();
    const int64_t offset = int64_t(_timezone) + int64_t(_dstbias) * (_daylight ? 1 : 0);
    return uint64_t(utcMilliseconds - offset * 1000);
}

Logger::Logger(LogMode logMode) : Logger(logMode, searchedConfiguration) {}

Logger::Logger(LogMode logMode, Loader configurationLoader)
    : generationCount(0),
      mode(logMode),
      loader(configurationLoader),
      disabled(false),
      configured(false),
      defaultsUsed(false),
      buffering(true),
      configuring(false),
      startTime(currentTime())
{
}

Logger::~Logger()
{
    // At exit the holder goes: a later instance() makes a new logger, as before the first.
    Logger* self = this;
    madeInstance.compare_exchange_strong(self, nullptr);
    advanceEpoch();
}

Level Logger::levelFor(const String& contextName)
{
    configure();
    CriticalSection::Hold hold(configLock);
    return configuration.levelFor(contextName);
}

void Logger::log(const Context& context, Level level, const ThrowSite* site, const char* format, va_list args)
{
    // Nothing may get out of here: a failure turns logging off, without a word.
    try {
        if (disabled)
            return;
        configure();
        flushOwnRecords();
        if (!site || !format)
            throw new ErrorException(SITE);
        const String message = String::vformat(String(format).c_str(), args);
        dispatch(makeRecord(context.name(), level, *site, message));
    } catch (Exception* raw) {
        std::unique_ptr<Exception> failure(raw);
        disabled = true;
    } catch (fw_exception* raw) {
        std::unique_ptr<fw_exception> failure(raw);
        disabled = true;
        fw_clear_current();
    } catch (...) {
        disabled = true;
    }
}

void Logger::configure()
{
    if (configured || configuring)
        return;
    CriticalSection::Hold hold(configLock);
    if (configured || configuring)
        return;
    configuring = true;
    struct StepEnd
    {
        std::atomic<bool>& flag;
        ~StepEnd() { flag = false; }
    } stepEnd{configuring};

    String error;
    String location;
    try {
        Configuration loaded = loader(mode, location);
        if (!loaded.isEmpty() && loaded.writer.isNull())
            loaded.setWriter(configuration.writer);
        adopt(loaded);
    } catch (Exception* raw) {
        std::unique_ptr<Exception> failure(raw);
        error = failure->description(true);
    }
    defaultsUsed = false;
    if (configuration.writer.isNull()) {
        configuration.useDefaults(mode);
        defaultsUsed = true;
    }
    configuration.joinInstallerLog();
    configuring = false;
    configured = !configuration.writer.isNull();
    hold.release();

    if (!configured)
        return;
    if (!error.empty()) {
        addOwnRecord(SITE, location.empty() ? String(L"Default configuration search failed")
                                            : String(L"Failed configuration at ") + location,
                     Level::Warning);
        addOwnRecord(SITE, error, Level::Warning);
    } else if (!location.empty()) {
        addOwnRecord(SITE, String(L"Used configuration from ") + location, Level::Info);
    }
    if (defaultsUsed)
        addOwnRecord(SITE, L"Used default writer and formatter", Level::Info);
}

void Logger::adopt(const Configuration& newConfiguration)
{
    CriticalSection::Hold hold(configLock);
    disabled = false;
    configuration = newConfiguration;
    ++generationCount;
    configured = !configuration.writer.isNull();
    advanceEpoch();
}

void Logger::addOwnRecord(const ThrowSite& site, const String& message, Level level)
{
    const Record record = makeRecord(ownContext, level, site, message);
    CriticalSection::Hold hold(bufferLock);
    if (buffering)
        buffer.add(record);
}

void Logger::flushOwnRecords()
{
    if (!buffering)
        return;
    Array<Record> records;
    {
        CriticalSection::Hold hold(bufferLock);
        if (!buffering)
            return;
        for (uint32_t i = 0; i < buffer.size(); ++i)
            records.add(buffer.at(i));
        buffer = Array<Record>();
        buffering = false;
    }
    Level threshold;
    {
        CriticalSection::Hold hold(configLock);
        threshold = configuration.levelFor(ownContext);
    }
    for (uint32_t i = 0; i < records.size(); ++i)
        if (uint32_t(records.at(i).level) >= uint32_t(threshold))
            dispatch(records.at(i));
}

void Logger::dispatch(const Record& record)
{
    SharedPointer<Writer> writer;
    {
        CriticalSection::Hold hold(configLock);
        writer = configuration.writer;
    }
    if (writer.isNull())
        throw new ErrorException(SITE);
    writer->write(record);
}

Record Logger::makeRecord(const String& context, Level level, const ThrowSite& site, const String& message) const
{
    const uint64_t time = currentTime();
    return Record{context, level, site, time - startTime, time, message};
}

}}  // namespace Framework::Log
