#include "fw/fw_foreign_call.h"

#include "fw/fw_raise.h"

#include <windows.h>

namespace {

// Flags of an exception record.
const DWORD noncontinuable = 0x1;
const DWORD unwindingNow = 0x2 | 0x4;

}  // namespace

bool fw_landing_takes(const EXCEPTION_RECORD* record, CONTEXT* context, fw_fault& fault)
{
    if (!record || (record->ExceptionFlags & (noncontinuable | unwindingNow)) || !fw_fault_handler_on)
        return false;
    EXCEPTION_POINTERS pointers = {const_cast<EXCEPTION_RECORD*>(record), context};
    return fw_fault_of(&pointers, fault);
}

void fw_landing_throw(fw_landing& landing)
{
    fw_exception_assert* exception = landing.exception;
    landing.exception = nullptr;
    if (!exception)
        std::rethrow_exception(landing.failure);
    fw_raise(exception);
    throw exception;
}
