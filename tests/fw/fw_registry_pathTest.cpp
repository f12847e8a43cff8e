#include "fw/fw_registry_path.h"

#include "support/ScratchKey.h"

#include <gtest/gtest.h>

TEST(fw_registry_pathTest, ReadsTextValuesOnly)
{
    ScratchKey key(HKEY_CURRENT_USER, L"Software\\WixKorvalinTests\\fw_registry_path");
    key.setText(L"", L"default text");
    key.setText(L"empty", L"");
    key.setRaw(L"no terminator", REG_SZ, L"ab", 2 * sizeof(wchar_t));
    key.setText(L"expandable", L"%TEMP%", REG_EXPAND_SZ);
    key.setDword(L"number", 7);

    // Separators of either kind, doubled or trailing, in both parts of the path.
    const fw_registry_path path(fw_registry_root(fw_registry_root::current_user), fw_string("Software/WixKorvalinTests\\"));
    const struct {
        const char* subKey;
        const char* name;
        const char* value;  // null: not read
    } rows[] = {
        {"/fw_registry_path//", "", "default text"},
        {"fw_registry_path", "empty", ""},
        {"fw_registry_path", "no terminator", "ab"},
        {"fw_registry_path", "expandable", nullptr},
        {"fw_registry_path", "number", nullptr},
        {"fw_registry_path", "missing", nullptr},
        {"missing", "", nullptr},
    };
    for (const auto& row : rows) {
        fw_string result("untouched");
        EXPECT_EQ(row.value != nullptr, path.readString(fw_string(row.subKey), fw_string(row.name), result)) << row.name;
        EXPECT_STREQ(row.value ? row.value : "untouched", result.c_str()) << row.subKey << ": " << row.name;
    }
}
