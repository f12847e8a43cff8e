#include "fw/fw_registry_path.h"

#include "support/FwText.h"
#include "support/ScratchKey.h"

#include <windows.h>
#include <gtest/gtest.h>

TEST(fw_registry_pathTest, ReadsTextValuesOnly)
{
    ScratchKey key(HKEY_CURRENT_USER, L"Software\\WixKorvalinTests\\fw_registry_path");
    key.setText(L"", L"default text");
    key.addSubKey(L"inner\\deeper");
    ScratchKey deeper(HKEY_CURRENT_USER, key.path() + L"\\inner\\deeper");
    deeper.setText(L"name", L"value");
    deeper.setText(L"empty", L"");
    deeper.setText(L"expandable", L"%TEMP%", REG_EXPAND_SZ);
    deeper.setDword(L"number", 7);
    deeper.setRaw(L"no terminator", REG_SZ, L"ab", 2 * sizeof(wchar_t));

    const fw_registry_path path(fw_registry_root(fw_registry_root::current_user),
                                fw_string("Software/WixKorvalinTests\\\\fw_registry_path\\"));
    fw_string result("untouched");
    EXPECT_TRUE(path.readString(fw_string(), fw_string(), result));
    EXPECT_EQ("default text", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner//deeper/"), fw_string("name"), result));
    EXPECT_EQ("value", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner\\deeper"), fw_string("empty"), result));
    EXPECT_EQ("", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner\\deeper"), fw_string("no terminator"), result));
    EXPECT_EQ("ab", text(result));

    result = fw_string("untouched");
    for (const char* name : {"expandable", "number", "missing"}) {
        EXPECT_FALSE(path.readString(fw_string("inner\\deeper"), fw_string(name), result)) << name;
    }
    EXPECT_FALSE(path.readString(fw_string("inner\\missing"), fw_string("name"), result));
    EXPECT_EQ("untouched", text(result));

    const fw_registry_path nowhere(fw_registry_root(fw_registry_root::none), fw_string("Software"));
    EXPECT_FALSE(nowhere.readString(fw_string(), fw_string(), result));
}
