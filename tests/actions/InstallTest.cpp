// End to end: packages built by wixl, installed by msiexec under Wine. Each test
// starts from a clean state (the product uninstalled, its registry key gone), and
// judges the actions by what they left in the registry.
#include "support/Clock.h"
#include "support/Installer.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <iostream>

namespace {

const wchar_t* const demoKey = L"Software\\WixKorvalinDemo";

class InstallTest : public ::testing::Test
{
protected:
    void startClean(const std::wstring& package, const std::wstring& key)
    {
        uninstallQuietly(package);
        deleteRegistryTree(HKEY_CURRENT_USER, key);
    }
};

}  // namespace

TEST_F(InstallTest, TheDemoPackageRecordsTheTimeThatSetPropertiesHandedOver)
{
    const std::wstring package = testPackage(L"demo.msi");
    startClean(package, demoKey);
    const uint64_t before = nowInMilliseconds();
    EXPECT_EQ(0u, installQuietly(package));
    const uint64_t after = nowInMilliseconds();

    std::wstring value;
    ASSERT_TRUE(readRegistryString(HKEY_CURRENT_USER, demoKey, L"CURRENTTIMEMS", value))
        << "the package wrote no value: the action did not run or set nothing";
    ASSERT_EQ(13u, value.size()) << "value was \"" << std::string(value.begin(), value.end()) << "\"";
    for (wchar_t c : value)
        ASSERT_TRUE(std::iswdigit(c));
    const uint64_t stamp = std::stoull(value);
    EXPECT_LE(before, stamp);
    EXPECT_GE(after, stamp);

    EXPECT_EQ(0u, uninstallQuietly(package));
    EXPECT_FALSE(readRegistryString(HKEY_CURRENT_USER, demoKey, L"CURRENTTIMEMS", value));
}

// An exception that no handler takes ends the custom-action host in the terminate
// handler. These record what the engine makes of that, for each Return attribute.
TEST_F(InstallTest, AnUncaughtExceptionWithReturnCheck)
{
    const std::wstring package = testPackage(L"uncaught-check.msi");
    const std::wstring key = L"Software\\WixKorvalinTests\\Uncaught_check";
    startClean(package, key);
    const DWORD exitCode = installQuietly(package);
    std::wstring value;
    const bool reached = readRegistryString(HKEY_CURRENT_USER, key, L"Reached", value);
    std::cout << "Return=check: msiexec exit code " << exitCode << ", later steps ran: " << reached << std::endl;
    uninstallQuietly(package);
}

TEST_F(InstallTest, AnUncaughtExceptionWithReturnIgnore)
{
    const std::wstring package = testPackage(L"uncaught-ignore.msi");
    const std::wstring key = L"Software\\WixKorvalinTests\\Uncaught_ignore";
    startClean(package, key);
    const DWORD exitCode = installQuietly(package);
    std::wstring value;
    const bool reached = readRegistryString(HKEY_CURRENT_USER, key, L"Reached", value);
    std::cout << "Return=ignore: msiexec exit code " << exitCode << ", later steps ran: " << reached << std::endl;
    uninstallQuietly(package);
}
