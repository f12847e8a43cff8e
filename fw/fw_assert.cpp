#include "fw/fw_assert.h"

#include "fw/fw_format.h"
#include "fw/fw_raise.h"

void fw_assert_failed(const char* tag, uint32_t line)
{
    // Good formats only: fw_format asserts through here, so a bad one would recurse.
    const fw_string text = fw_format("assertion failed at %{1}s%{2}X", tag, line);
    const fw_string location = fw_format("%{1}s%{2}X", tag, line);
    fw_exception_assert* exception = new fw_exception_assert(location, text, fw_string(), fw_string());
    fw_raise(exception);
    throw exception;
}
