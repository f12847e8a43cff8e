// The road of an FW exception from its making to its throw, and the end of the
// process when a failure strikes while another one is being thrown.
//
// Each thread has a current-exception slot: the FW exception last raised on it. The
// slot is a platform TLS index kept in fw_tls_slot (-1 while there is none). The
// layer's bring-up allocates it (fw_tls_slot_acquire, from fw_faults_start) and its
// teardown gives it back (fw_tls_slot_release), so the exceptions recorded during one
// action call are forgotten after it; outside the layer it is allocated the first
// time an exception is stored. Reading or clearing an unallocated slot gives null and
// does nothing. A new index reads null on every thread. Deleting an
// exception that the slot holds empties the slot, so it never points at a freed object.
//
//   fw_exception_assert* e = new fw_exception_assert(...);
//   fw_raise(e);            // records e, or ends the process (below)
//   throw e;
//
// fw_raise during unwinding (a destructor that fails while an exception is in
// flight) does not return: the two exceptions go to fw_report_fatal and the process
// ends with exit code 1 at once, without running anyone's clean-up.
//
// fw_report_fatal first makes any further fault end the process quietly (an
// unhandled-exception filter that runs the handler), then hands the two exceptions to
// an error report (fw/fw_error_report.h), under a handler that swallows everything,
// so the report cannot raise a third failure out of itself. The report mails them to
// the product's support address; without one, the default, nothing is shown, written
// or sent, and the process ends right after. A failure inside the report that comes
// back through fw_raise (a fault in the mail client while the thread still unwinds)
// gets no report of its own: the process ends at once.
#pragma once
#include "fw/fw_exception.h"

// The TLS index of the current-exception slot, -1 when none is allocated.
extern volatile long fw_tls_slot;

// Allocates the slot if there is none; false if the platform has no index to give.
bool fw_tls_slot_acquire();
// Gives the slot up; the exceptions it held are not touched, and every thread reads
// null from the next slot. When only this thread stored anything, its cell is
// emptied and the index kept for the next acquire instead of going back to the system.
void fw_tls_slot_release();

// This thread's current exception, or null.
fw_exception* fw_current_exception();
// Stores the exception (null empties the slot); allocates the slot if needed. If no
// slot can be had the exception is not recorded: the thread then has none.
void fw_set_current_exception(fw_exception* exception);
// Empties the slot. A handler that is done with an FW exception calls this before it
// deletes the object (deleting it empties the slot as well).
void fw_clear_current();

// The step before every throw of the FW family; see above.
void fw_raise(fw_exception* exception);

// `first` is the exception being handled, `second` the one on top of it; they may be
// the same object. A report owns them, and must delete a shared one once.
void fw_report_fatal(fw_exception* first, fw_exception* second);
