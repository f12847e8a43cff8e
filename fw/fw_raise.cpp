#include "fw/fw_raise.h"

#include "fw/fw_error_report.h"

#include <windows.h>
#include <cstdio>
#include <exception>

volatile long fw_tls_slot = -1;

namespace {

LONG WINAPI run_the_handler(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

// TlsGetValue and TlsSetValue reset the thread's last error; the slot is read from
// destructors, which must not change what a failed call left there.
class last_error_kept
{
public:
    last_error_kept() : saved(GetLastError()) {}
    ~last_error_kept() { SetLastError(saved); }

private:
    DWORD saved;
};

}  // namespace

bool fw_tls_slot_acquire()
{
    if (fw_tls_slot != -1)
        return true;
    const DWORD fresh = TlsAlloc();
    if (fresh == TLS_OUT_OF_INDEXES)
        return false;
    // Two threads may allocate at once: the first index published wins.
    if (InterlockedCompareExchange(&fw_tls_slot, static_cast<LONG>(fresh), -1) != -1)
        TlsFree(fresh);
    return true;
}

void fw_tls_slot_release()
{
    const LONG index = InterlockedExchange(&fw_tls_slot, -1);
    if (index != -1)
        TlsFree(static_cast<DWORD>(index));
}

fw_exception* fw_current_exception()
{
    const LONG index = fw_tls_slot;
    if (index == -1)
        return nullptr;
    last_error_kept kept;
    return static_cast<fw_exception*>(TlsGetValue(static_cast<DWORD>(index)));
}

void fw_set_current_exception(fw_exception* exception)
{
    if (!exception && fw_tls_slot == -1)
        return;
    last_error_kept kept;
    if (fw_tls_slot_acquire())
        TlsSetValue(static_cast<DWORD>(fw_tls_slot), exception);
}

void fw_clear_current()
{
    fw_set_current_exception(nullptr);
}

void fw_raise(fw_exception* exception)
{
    fw_exception* current = fw_current_exception();
    if (std::uncaught_exceptions() > 0) {
        // A failure while another one unwinds: there is no way back to a handler.
        fw_report_fatal(current ? current : exception, exception);
        std::fflush(nullptr);
        TerminateProcess(GetCurrentProcess(), 1);
        ExitProcess(1);
    }
    fw_set_current_exception(exception);
}

void fw_report_fatal(fw_exception* first, fw_exception* second)
{
    // A failure inside the report itself (a fault in the mail client while this
    // thread still unwinds) comes back here through fw_raise: it gets no report of
    // its own, and the process ends after the first.
    static thread_local bool reporting = false;
    if (reporting)
        return;
    reporting = true;
    SetUnhandledExceptionFilter(run_the_handler);
    try {
        fw_error_report* report = new fw_error_report();
        report->handle(first);
        report->handle(second);
        delete report;
    } catch (...) {
        // The process is about to end: nothing that the report throws may stop that.
    }
    reporting = false;
}
