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

// Freeing a TLS index is what makes every thread's cell read null again, and it is
// the dear part: the system visits every thread (about 10 us under Wine, where the
// rest of a bring-up costs a few). Almost always only the thread that brings the
// layer up and down has stored anything, so a release that finds that case empties
// this thread's cell and keeps the index as a spare, which then reads null on every
// thread like a new one; any other case frees the index as before. The spare goes
// back to the system when the module unloads.
namespace {

// The only thread that stored a non-null exception under the present index, 0 for
// none, and -1 when more than one did.
volatile LONG onlyWriter = 0;

class spare_index
{
public:
    ~spare_index()
    {
        const LONG index = InterlockedExchange(&value, -1);
        if (index != -1)
            TlsFree(static_cast<DWORD>(index));
    }
    LONG take() { return InterlockedExchange(&value, -1); }
    void keep(LONG index)
    {
        const LONG before = InterlockedExchange(&value, index);
        if (before != -1 && before != index)
            TlsFree(static_cast<DWORD>(before));
    }

private:
    volatile LONG value = -1;
};

spare_index spare;

void note_writer()
{
    const LONG thisThread = LONG(GetCurrentThreadId());
    const LONG writer = onlyWriter;
    if (writer == thisThread || writer == -1)
        return;
    if (writer == 0 && InterlockedCompareExchange(&onlyWriter, thisThread, 0) == 0)
        return;
    onlyWriter = -1;
}

}  // namespace

bool fw_tls_slot_acquire()
{
    if (fw_tls_slot != -1)
        return true;
    LONG fresh = spare.take();
    if (fresh == -1) {
        const DWORD made = TlsAlloc();
        if (made == TLS_OUT_OF_INDEXES)
            return false;
        fresh = static_cast<LONG>(made);
    }
    // Two threads may allocate at once: the first index published wins.
    if (InterlockedCompareExchange(&fw_tls_slot, fresh, -1) != -1)
        TlsFree(static_cast<DWORD>(fresh));
    return true;
}

void fw_tls_slot_release()
{
    const LONG index = InterlockedExchange(&fw_tls_slot, -1);
    if (index == -1)
        return;
    const LONG writer = InterlockedExchange(&onlyWriter, 0);
    if (writer == 0 || writer == LONG(GetCurrentThreadId())) {
        last_error_kept kept;
        TlsSetValue(static_cast<DWORD>(index), nullptr);
        spare.keep(index);
    } else {
        TlsFree(static_cast<DWORD>(index));
    }
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
    if (!fw_tls_slot_acquire())
        return;
    if (exception)
        note_writer();
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
