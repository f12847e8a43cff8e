#include "fw/fw_os_kind.h"

#include <windows.h>

namespace {

const int unknownKind = 10;

const char* const kindNames[] = {"3.1", "95", "98", "ME", "NT", "2000", "XP", "2003", "Vista", "7", "Unknown"};

}  // namespace

int fw_os_kind_of(uint32_t platformId, uint32_t major, uint32_t minor)
{
    switch (platformId) {
    case 0:
        return 0;
    case 1:
        return minor < 10 ? 1 : minor < 90 ? 2 : 3;
    case 2:
        if (major < 5)
            return 4;
        if (major == 5 && minor <= 2)
            return 5 + int(minor);
        if (major == 6 && minor <= 1)
            return 8 + int(minor);
        return unknownKind;
    default:
        return unknownKind;
    }
}

namespace {

int asked_kind()
{
    OSVERSIONINFOA version = {};
    // The record without the service-pack fields: 148 bytes.
    version.dwOSVersionInfoSize = sizeof version;
    static_assert(sizeof version == 148, "the short version record");
    if (!GetVersionExA(&version))
        return unknownKind;
    return fw_os_kind_of(version.dwPlatformId, version.dwMajorVersion, version.dwMinorVersion);
}

}  // namespace

int fw_os_kind()
{
    // The version a process is told does not change while it runs; asking costs about
    // a microsecond under Wine, on every bring-up of the layer.
    static const int kind = asked_kind();
    return kind;
}

const char* fw_os_kind_name(int kind)
{
    if (kind < 0 || kind > unknownKind)
        return kindNames[unknownKind];
    return kindNames[kind];
}

bool fw_os_kind_translates(int kind)
{
    return kind >= 6 && kind <= 9;
}
