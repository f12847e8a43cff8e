#include "fw/fw_foreign_call.h"

#include "fw/fw_raise.h"

void fw_landing_throw(fw_landing& landing)
{
    fw_exception_assert* exception = landing.exception;
    landing.exception = nullptr;
    if (!exception)
        std::rethrow_exception(landing.failure);
    fw_raise(exception);
    throw exception;
}
