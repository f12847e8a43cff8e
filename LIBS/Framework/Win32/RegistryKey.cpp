#include "Framework/Win32/RegistryKey.h"

#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "fw/fw_library.h"

namespace Framework { namespace Win32 {

namespace Detail {

void throwRegistryError(LONG result, bool withCode)
{
    const uint32_t code = uint32_t(result);
    throw new OsException(SITE, OsError::fromLastError(code), withCode ? uint64_t(int64_t(int32_t(code))) : 0,
                          String(), String());
}

}  // namespace Detail

RegistryKey::RegistryKey() : hKey(nullptr), ownsKey(false), viewFlags(0) {}

RegistryKey::~RegistryKey()
{
    if (!ownsKey)
        return;
    try {
        close();
    } catch (Exception* raw) {
        delete raw;  // nothing can be told from a destructor
    }
    ownsKey = false;
}

void RegistryKey::close()
{
    if (!hKey)
        return;
    LONG result = RegFlushKey(hKey);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    result = RegCloseKey(hKey);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    hKey = nullptr;
}

void RegistryKey::attach(HKEY rootKey, const String& name)
{
    hKey = rootKey;
    ownsKey = false;
    keyName = name;
    keyPath = name;
}

void RegistryKey::took(HKEY opened, const RegistryKey& parent, const String& subKey)
{
    hKey = opened;
    ownsKey = true;
    keyName = subKey;
    keyPath = parent.path() + L"\\" + subKey;
}

void RegistryKey::open(const RegistryKey& parent, const String& subKey, uint32_t access)
{
    HKEY opened = nullptr;
    const LONG result = RegOpenKeyExW(parent.handle(), subKey.c_str(), 0, viewFlags | access, &opened);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    took(opened, parent, subKey);
}

void RegistryKey::create(const RegistryKey& parent, const String& subKey, const String& className)
{
    HKEY created = nullptr;
    const LONG result = RegCreateKeyExW(parent.handle(), subKey.c_str(), 0, const_cast<wchar_t*>(className.c_str()),
                                        0, viewFlags | createAccess, nullptr, &created, nullptr);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    took(created, parent, subKey);
}

HKEY RegistryKey::requireKey() const
{
    if (!hKey)
        throw new ValueNotInitializedException(SITE);
    return hKey;
}

HKEY RegistryKey::handle() const { return requireKey(); }

String RegistryKey::name() const
{
    requireKey();
    return keyName;
}

String RegistryKey::path() const
{
    requireKey();
    return keyPath;
}

bool RegistryKey::hasValue(const String& name) const
{
    DWORD size = 0;
    return RegQueryValueExW(requireKey(), name.c_str(), nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS;
}

bool RegistryKey::hasSubKey(const String& subKey) const
{
    HKEY temporary = nullptr;
    if (RegOpenKeyExW(requireKey(), subKey.c_str(), 0, viewFlags | readAccess, &temporary) != ERROR_SUCCESS)
        return false;
    RegCloseKey(temporary);
    return true;
}

uint32_t RegistryKey::rawType(const String& name, DWORD* size) const
{
    if (!size)
        throw new ErrorException(SITE);
    DWORD type = 0;
    const LONG result = RegQueryValueExW(requireKey(), name.c_str(), nullptr, &type, nullptr, size);
    if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA)
        Detail::throwRegistryError(result, true);
    return type;
}

void RegistryKey::readRaw(const String& name, void* buffer, DWORD* size) const
{
    DWORD type = 0;
    const LONG result =
        RegQueryValueExW(requireKey(), name.c_str(), nullptr, &type, static_cast<BYTE*>(buffer), size);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result, true);
}

void RegistryKey::writeRaw(const String& name, uint32_t type, const void* data, DWORD size)
{
    const LONG result = RegSetValueExW(requireKey(), name.c_str(), 0, type, static_cast<const BYTE*>(data), size);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
}

String RegistryKey::className() const
{
    String text(256u);
    DWORD length = 256;
    const LONG result = RegQueryInfoKeyW(requireKey(), &text.refAt(0), &length, nullptr, nullptr, nullptr, nullptr,
                                         nullptr, nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    text.trimAtZero();
    return text;
}

namespace {

// Reads count and longest name, then enumerates each index into a fresh String.
template <class Query, class Enumerate>
Array<String> listNames(Query query, Enumerate enumerate)
{
    Array<String> names;
    DWORD count = 0, longest = 0;
    if (query(&count, &longest) != ERROR_SUCCESS)
        return names;
    for (DWORD index = 0; index < count; ++index) {
        String name(uint32_t(longest + 1));
        DWORD length = longest + 1;
        if (enumerate(index, &name.refAt(0), &length) != ERROR_SUCCESS)
            continue;
        name.trimAtZero();
        names.add(name);
    }
    return names;
}

}  // namespace

Array<String> RegistryKey::valueNames() const
{
    const HKEY key = requireKey();
    return listNames(
        [key](DWORD* count, DWORD* longest) {
            return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, count, longest,
                                    nullptr, nullptr, nullptr);
        },
        [key](DWORD index, wchar_t* name, DWORD* length) {
            return RegEnumValueW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
        });
}

Array<String> RegistryKey::subKeyNames() const
{
    const HKEY key = requireKey();
    return listNames(
        [key](DWORD* count, DWORD* longest) {
            return RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, count, longest, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr);
        },
        [key](DWORD index, wchar_t* name, DWORD* length) {
            return RegEnumKeyExW(key, index, name, length, nullptr, nullptr, nullptr, nullptr);
        });
}

namespace {

const uint32_t readSecurityAccess = 0x20200;   // READ_CONTROL, KEY_WOW64_32KEY
const uint32_t writeSecurityAccess = 0x40200;  // WRITE_DAC, KEY_WOW64_32KEY

[[noreturn]] void securityFailure(LONG result, bool deniedMeansNoRights)
{
    if (deniedMeansNoRights && result == ERROR_ACCESS_DENIED)
        throw new NoAdminRightsException(SITE);
    Detail::throwRegistryError(result);
}

// A key opened for one call: closed on every way out, and by close() where its
// failure is to be heard.
class TemporaryKey
{
public:
    TemporaryKey(HKEY parent, const String& subKey, uint32_t access, bool deniedMeansNoRights)
    {
        const LONG result = RegOpenKeyExW(parent, subKey.c_str(), 0, access, &key);
        if (result != ERROR_SUCCESS)
            securityFailure(result, deniedMeansNoRights);
    }
    ~TemporaryKey()
    {
        if (key)
            RegCloseKey(key);
    }
    TemporaryKey(const TemporaryKey&) = delete;
    TemporaryKey& operator=(const TemporaryKey&) = delete;

    void close()
    {
        const LONG result = RegCloseKey(key);
        key = nullptr;
        if (result != ERROR_SUCCESS)
            Detail::throwRegistryError(result);
    }

    HKEY key = nullptr;
};

// A zero-filled block from LocalAlloc, freed on every way out unless released.
class LocalBlock
{
public:
    explicit LocalBlock(SIZE_T size) : block(LocalAlloc(LPTR, size))
    {
        if (!block)
            fw_raise_memory();
    }
    ~LocalBlock()
    {
        if (block)
            LocalFree(block);
    }
    LocalBlock(const LocalBlock&) = delete;
    LocalBlock& operator=(const LocalBlock&) = delete;

    void* get() const { return block; }
    void* release()
    {
        void* kept = block;
        block = nullptr;
        return kept;
    }

private:
    void* block;
};

}  // namespace

PSECURITY_DESCRIPTOR RegistryKey::accessList(const String& subKey) const
{
    TemporaryKey key(requireKey(), subKey, readSecurityAccess, true);
    DWORD size = 0;
    LONG result = RegGetKeySecurity(key.key, DACL_SECURITY_INFORMATION, nullptr, &size);
    if (result != ERROR_INSUFFICIENT_BUFFER && result != ERROR_SUCCESS)
        securityFailure(result, true);
    LocalBlock copy(size);
    result = RegGetKeySecurity(key.key, DACL_SECURITY_INFORMATION, copy.get(), &size);
    if (result != ERROR_SUCCESS)
        securityFailure(result, true);
    key.close();
    return copy.release();
}

void RegistryKey::clearAccessList(const String& subKey) const
{
    LocalBlock open(SECURITY_DESCRIPTOR_MIN_LENGTH);
    if (!InitializeSecurityDescriptor(open.get(), SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(open.get(), TRUE, nullptr, FALSE)) {
        const OsError error(true);
        throw new OsException(SITE, error, 0, String(), String());
    }
    writeAccessList(subKey, open.get(), true);
}

void RegistryKey::setAccessList(const String& subKey, PSECURITY_DESCRIPTOR descriptor) const
{
    writeAccessList(subKey, descriptor, false);
}

void RegistryKey::writeAccessList(const String& subKey, PSECURITY_DESCRIPTOR descriptor,
                                  bool deniedMeansNoRights) const
{
    TemporaryKey key(requireKey(), subKey, writeSecurityAccess, deniedMeansNoRights);
    const LONG result = RegSetKeySecurity(key.key, DACL_SECURITY_INFORMATION, descriptor);
    if (result != ERROR_SUCCESS)
        Detail::throwRegistryError(result);
    key.close();
}

} }  // namespace Framework::Win32
