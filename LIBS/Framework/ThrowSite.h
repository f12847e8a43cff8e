// Where an exception was thrown: a tag of 32 hexadecimal digits that stands for the
// source file, and the line. Throw with `throw new SomeException(SITE, ...)`.
//
// The tag is the FW layer's file tag (fw/fw_site_tag.h): made at compile time from the
// file's path relative to the source root, so it names the file without showing it
// and stays the same from build to build. Each file's tag lives once, in static storage.
#pragma once
#include "fw/fw_site_tag.h"

#include <cstdint>

namespace Framework {

struct ThrowSite
{
    const char* tag;
    uint32_t line;
};

}  // namespace Framework

#define SITE (::Framework::ThrowSite{FW_SITE_TAG, static_cast<uint32_t>(__LINE__)})
