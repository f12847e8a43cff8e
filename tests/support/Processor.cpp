#include "support/Processor.h"

#include <cstdio>

namespace processor {

std::string hexAddress(uintptr_t address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*llX", int(addressDigits), static_cast<unsigned long long>(address));
    return text;
}

}  // namespace processor
