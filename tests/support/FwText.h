// An fw_string as std::string, for comparisons and failure messages in tests.
#pragma once
#include "fw/fw_string.h"

#include <string>

inline std::string text(const fw_string& s)
{
    return s.c_str();
}
