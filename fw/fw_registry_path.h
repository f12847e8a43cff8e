// A small read-only access to the registry in narrow text, for the mail sender's
// search of the default mail client. It opens keys one path component at a time with
// KEY_READ from a fixed hive, reads one REG_SZ value, and closes (and flushes) every
// handle before it returns: nothing stays open between two reads.
//
//   fw_registry_path mail(fw_registry_root::local_machine, fw_string("SOFTWARE\\Clients\\Mail"));
//   fw_string client;
//   mail.readString(fw_string(), fw_string(), client);   // the key's default value
//
// Paths may use "/" or "\", doubled or trailing; they are normalised before use. The
// access goes through the registry view of the calling process (a 32-bit caller on a
// 64-bit system reads the 32-bit view).
#pragma once
#include "fw/fw_string.h"

#include <windows.h>

// Names a hive by its row in a fixed table.
class fw_registry_root
{
public:
    enum : uint32_t { local_machine = 0, current_user = 1, none = 2 };

    // An index past the table names no hive, like `none`.
    explicit fw_registry_root(uint32_t tableRow = none) : index(tableRow) {}

    // Null for `none`.
    HKEY handle() const;
    uint32_t row() const { return index; }

private:
    uint32_t index;
};

class fw_registry_path
{
public:
    fw_registry_path(fw_registry_root hive, const fw_string& basePath) : base(basePath), root(hive) {}
    virtual ~fw_registry_path() = default;

    // Reads the REG_SZ value `valueName` (empty: the key's default value) of the key
    // at base path + "\" + subKey (either part may be empty). False when the key
    // cannot be opened, the value is missing or of another type, or a read fails;
    // `result` is then left as it was. The text ends at its first NUL.
    bool readString(const fw_string& subKey, const fw_string& valueName, fw_string& result) const;

    // The base path and `subKey` joined by a backslash and normalised: "/" becomes
    // "\", doubled backslashes become one, a final one is cut.
    //   "SOFTWARE/Clients//Mail\" + "" -> "SOFTWARE\Clients\Mail"
    fw_string fullPath(const fw_string& subKey) const;

private:
    fw_string base;
    fw_registry_root root;
};
