// The base of the log writers: takes a Record, has its formatter make the text, and
// hands the text to output(), the one operation a plain writer supplies.
//
// All text reaches output() through writeText, which ends every line with "\r\n":
//   "a\n\nb" -> "a\r\n\r\nb\r\n"     "a\r\n" -> "a\r\n"     "a\r" -> "a\r\r\n"
//   ""       -> nothing at all, not even a line end
// The formatter's header goes out before the first record, once, even when threads
// race for the first record. Formatting runs outside every lock; `lock` covers only
// output(), so the text of one record leaves whole, and the order of lines is the
// order in which threads get the lock.
//
// Writers catch nothing: a failure at the target passes up to the logger.
#pragma once
#include "Framework/CriticalSection.h"
#include "Framework/Log/Formatter.h"

#include <atomic>

namespace Framework { namespace Log {

class Writer
{
public:
    Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    virtual ~Writer() = default;

    virtual void setFormatter(const SharedPointer<Formatter>& newFormatter);
    // Keys compare without case; this base ignores all of them.
    virtual void setProperty(const String& key, const String& value);
    // No formatter throws ValueNotInitializedException.
    virtual void write(const Record& record);
    // Finished text that ends in "\r\n"; called under `lock`.
    virtual void output(const String& text) = 0;
    // Writes the formatter's footer, if there is a formatter. The logger never calls it.
    virtual void close();
    // Whether this writer, or one it hands records to, writes into the installation's
    // log (InstallerLogWriter); false in this base.
    virtual bool reachesInstallerLog() const;

    // Normalises the line ends and calls output() under `lock`; see above.
    void writeText(const String& text);

protected:
    CriticalSection lock;
    SharedPointer<Formatter> formatter;
    std::atomic<bool> headerPending{true};
};

// The key compared without case: keyIs(key, L"fileName").
bool keyIs(const String& key, const wchar_t* name);

}}  // namespace Framework::Log
