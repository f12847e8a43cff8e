// The log of the installation that the calling thread is working for: a place where a
// line of text can go, and nothing more. The logging layer knows no installer; whoever
// runs on behalf of one (a custom action, for the length of its call) implements this
// and binds it to its thread, and InstallerLogWriter writes into whatever is bound
// there. A thread with nothing bound has no installation's log.
//
// writeLine must not throw and must not wait on the installation's answer: a line is
// told, never asked. Binding takes no lock, and the bound object is not owned: it
// must outlive its binding, which is undone on the thread that made it, in the
// reverse order of making.
#pragma once
#include "Framework/String.h"

namespace Framework { namespace Log {

class InstallerLog
{
public:
    virtual ~InstallerLog() = default;

    // One line, without a line end. Failures stay inside.
    virtual void writeLine(const String& line) noexcept = 0;

    // What the calling thread has bound; null outside a binding.
    static InstallerLog* current();

    // Binds `log` to the calling thread for the binding's life, and puts back what was
    // bound before it when it goes.
    class Binding
    {
    public:
        explicit Binding(InstallerLog& log);
        ~Binding();
        Binding(const Binding&) = delete;
        Binding& operator=(const Binding&) = delete;

    private:
        InstallerLog* previous;
    };
};

}}  // namespace Framework::Log
