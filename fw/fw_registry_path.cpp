#include "fw/fw_registry_path.h"

#include "fw/fw_assert.h"
#include "fw/fw_buffer.h"

namespace {

const HKEY rootHandles[3] = {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER, nullptr};

// One open key, for the length of one read. It holds one handle at a time, so each
// step of the walk down the path closes the key it came from.
class fw_registry_key
{
public:
    explicit fw_registry_key(const fw_registry_path* owner) : path(owner) {}
    ~fw_registry_key() { close(); }
    fw_registry_key(const fw_registry_key&) = delete;
    fw_registry_key& operator=(const fw_registry_key&) = delete;

    // Opens `keyPath` (normalised, may be empty) under the hive, component by
    // component. False if a component cannot be opened.
    bool open(HKEY hive, const fw_string& keyPath)
    {
        FW_ASSERT(path != nullptr);
        if (!hive)
            return false;
        fw_string rest = keyPath;
        HKEY from = hive;
        bool fromHive = true;
        do {
            const fw_string component = rest.split_first('\\');
            HKEY next = nullptr;
            const LONG status = RegOpenKeyExA(from, component.c_str(), 0, KEY_READ, &next);
            if (!fromHive)
                close();
            if (status != ERROR_SUCCESS)
                return false;
            handle = from = next;
            fromHive = false;
        } while (!rest.empty());
        return true;
    }

    HKEY get() const { return handle; }

private:
    void close()
    {
        if (!handle)
            return;
        RegFlushKey(handle);
        RegCloseKey(handle);
        handle = nullptr;
    }

    const fw_registry_path* path;
    HKEY handle = nullptr;
};

}  // namespace

HKEY fw_registry_root::handle() const
{
    return index < 3 ? rootHandles[index] : nullptr;
}

fw_string fw_registry_path::fullPath(const fw_string& subKey) const
{
    fw_string joined = base;
    if (!joined.empty() && !subKey.empty())
        joined.append('\\');
    joined.append(subKey.c_str());
    joined.replace('/', '\\');
    while (joined.replace("\\\\", "\\") != 0) {
    }
    const uint32_t length = joined.length();
    if (length != 0 && joined[length - 1] == '\\')
        joined = joined.substr(0, length - 1);
    return joined;
}

bool fw_registry_path::readString(const fw_string& subKey, const fw_string& valueName, fw_string& result) const
{
    fw_registry_key key(this);
    if (!key.open(root.handle(), fullPath(subKey)))
        return false;
    const char* name = valueName.empty() ? nullptr : valueName.c_str();
    DWORD type = 0;
    DWORD size = 0;
    if (RegQueryValueExA(key.get(), name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS || type != REG_SZ)
        return false;
    if (size == 0) {
        result = fw_string();
        return true;
    }
    fw_buffer bytes;
    bytes.resize(size);
    if (RegQueryValueExA(key.get(), name, nullptr, &type, bytes.writable(), &size) != ERROR_SUCCESS)
        return false;
    bytes.resize(size);
    // The bytes read, whether or not the value carries its terminator.
    result = fw_string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return true;
}
