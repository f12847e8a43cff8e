// A log writer that hands everything to several writers, in the order they were
// added. It formats nothing itself: each child formats a record with its own
// formatter and writes its own header. A formatter given to it goes to every child,
// and so do properties.
//
// It catches nothing: when one child fails, the children after it don't get that
// record, and the failure goes up to the logger. The children share no lock.
#pragma once
#include "Framework/Array.h"
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

class MultiWriter : public Writer
{
public:
    void add(const SharedPointer<Writer>& writer);

    void setFormatter(const SharedPointer<Formatter>& newFormatter) override;
    void setProperty(const String& key, const String& value) override;
    void write(const Record& record) override;
    void output(const String& text) override;
    // Its own footer, when it has a formatter, to each child's output; then each
    // child's close.
    void close() override;
    bool reachesInstallerLog() const override;

private:
    Array<SharedPointer<Writer>> writers;
};

}}  // namespace Framework::Log
