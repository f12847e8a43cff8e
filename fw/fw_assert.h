// Assertions of the FW layer. A failed assertion never stops the process: it throws
// an fw_exception_assert, made and raised like every FW exception, which any handler
// for fw_exception pointers can catch (and must delete).
//
//   FW_ASSERT(position <= length());
//
// at line 845 of a file whose tag is 32 zeros throws an exception whose message is
// "assertion failed at 0000000000000000000000000000000034D" and whose location is
// "0000000000000000000000000000000034D": the file's tag (fw/fw_site_tag.h) and the
// line in upper-case hexadecimal, with no separator and no leading zeros.
#pragma once
#include "fw/fw_exception.h"
#include "fw/fw_site_tag.h"

#include <cstdint>

// Builds the exception of a failed assertion at `line` of the file tagged `tag`,
// raises it (fw_raise) and throws it.
[[noreturn]] void fw_assert_failed(const char* tag, uint32_t line);

#define FW_ASSERT(condition)                                \
    do {                                                    \
        if (!(condition))                                   \
            ::fw_assert_failed(FW_SITE_TAG, __LINE__);      \
    } while (0)
