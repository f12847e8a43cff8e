#include "Framework/Log/InstallerLog.h"

#include "Framework/Diagnostics/ThreadLocalPointer.h"
#include "Framework/Exception.h"

namespace Framework { namespace Log {

namespace {

// Made among the static initialisers, before any action can run.
ThreadLocalPointer boundLog(nullptr);

}  // namespace

InstallerLog* InstallerLog::current()
{
    return static_cast<InstallerLog*>(boundLog.peek());
}

InstallerLog::Binding::Binding(InstallerLog& log) : previous(current())
{
    boundLog.set(&log);
}

InstallerLog::Binding::~Binding()
{
    // TlsSetValue fails only for a slot that was never allocated; this one was, at load.
    try {
        boundLog.set(previous);
    } catch (Exception* raw) {
        delete raw;
    }
}

}}  // namespace Framework::Log
