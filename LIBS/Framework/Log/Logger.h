// The process's one logger, behind every Context: it holds the configuration (the
// threshold of each context and the one writer), keeps its own early records until
// the first message goes out, and hands each record to the writer.
//
// Everything is lazy. Logger::instance() makes the logger at the first call; the
// first message, passing or not, configures it once: the loader's configuration is
// adopted whole or not at all, and without a writer the default one is set up (a
// RotatedFileWriter of "log.txt" with the "Line" formatter). Whatever the writer, an
// InstallerLogWriter joins it (Configuration::joinInstallerLog): a record logged on a
// thread that runs an installer's action also goes into that installation's log. The
// logger reports on that step in records of its own context "Framework::Log::Logger",
// which wait in a buffer with the time they were made and go out, those that pass
// that context's threshold, just before the first message that passes its own;
// records it makes after that are dropped.
//
// Locks: a static one for creating the logger, configLock around the configuration
// step and each short read of the configuration, bufferLock around the buffer. No
// thread holds two of them, and none is held while a record is formatted or written.
//
// log() swallows every failure (a bad format text, a writer without formatter, a full
// disk) and turns logging off, silently, until another configuration is adopted.
#pragma once
#include "Framework/Array.h"
#include "Framework/CriticalSection.h"
#include "Framework/Log/Configuration.h"
#include "Framework/Log/Record.h"

#include <atomic>
#include <cstdarg>

namespace Framework { namespace Log {

class Context;

class Logger
{
public:
    // Finds the configuration for a mode (LogMode, Configuration.h). It sets `location` to where it found one
    // (empty for nowhere) before it can fail, and gives an empty configuration when
    // there is none. A Framework exception from it is reported in the log, and the
    // logger goes on with the default writer.
    using Loader = Configuration (*)(LogMode mode, String& location);

    // The process's logger, made at the first call in the product mode. Once it exists this
    // is one load.
    static Logger* instance()
    {
        Logger* const made = madeInstance;
        return made ? made : createInstance();
    }
    // Milliseconds since 1970 on the local clock: the zone's offset and, in a zone
    // with daylight rules, its daylight bias all year are added to UTC.
    static uint64_t currentTime();

    explicit Logger(LogMode logMode);
    Logger(LogMode logMode, Loader configurationLoader);
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;
    // Does not close the writer: no footer is written.
    virtual ~Logger();

    // Both configure the logger first. After the configuration step generation()
    // is two loads of flags and one of the count, with no lock.
    uint32_t generation()
    {
        if (!configured && !configuring)
            configure();
        return generationCount;
    }
    Level levelFor(const String& contextName);
    // Moves on whenever any logger adopts a configuration and whenever one goes; never
    // 0. A context that finds the value it saw when it last asked may keep its
    // threshold without reaching its logger at all: one load.
    static uint32_t configurationEpoch() { return epoch.load(std::memory_order_acquire); }
    // The one path of a message; see above. Never throws.
    void log(const Context& context, Level level, const ThrowSite* site, const char* format, va_list args);

    // The configuration step, once in the logger's life.
    void configure();
    // Takes the configuration whole and turns logging back on.
    void adopt(const Configuration& newConfiguration);
    // Buffers a record of the logger's own context, until the first flush.
    void addOwnRecord(const ThrowSite& site, const String& message, Level level);
    // Sends the buffered records that pass the threshold of the logger's own context.
    void flushOwnRecords();
    // To the writer; no writer throws ErrorException.
    void dispatch(const Record& record);

private:
    static Logger* createInstance();
    static std::atomic<Logger*> madeInstance;
    static std::atomic<uint32_t> epoch;
    static void advanceEpoch();

    Record makeRecord(const String& context, Level level, const ThrowSite& site, const String& message) const;

    std::atomic<uint32_t> generationCount;
    Configuration configuration;
    LogMode mode;
    Loader loader;
    std::atomic<bool> disabled;
    std::atomic<bool> configured;
    std::atomic<bool> defaultsUsed;
    std::atomic<bool> buffering;
    std::atomic<bool> configuring;
    Array<Record> buffer;
    CriticalSection bufferLock;
    CriticalSection configLock;
    uint64_t startTime;
};

}}  // namespace Framework::Log
