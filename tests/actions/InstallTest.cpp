// End to end: packages built by wixl, installed by msiexec under Wine. Each test
// starts from a clean state (the product uninstalled, its registry key gone), and
// judges the actions by what they left in the registry.
#include "support/Clock.h"
#include "support/Installer.h"

#include <gtest/gtest.h>

#include <cwctype>

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
// handler. The engine then treats the action as failed: with Return="check" the
// installation stops and rolls back (1603, later steps never run); with
// Return="ignore" it goes on to the end.
TEST_F(InstallTest, AnUncaughtExceptionFailsTheActionAsItsReturnAttributeSays)
{
    struct Row {
        const wchar_t* package;
        const wchar_t* key;
        DWORD exitCode;
        bool laterStepsRan;
    };
    const Row rows[] = {
        {L"uncaught-check.msi", L"Software\\WixKorvalinTests\\Uncaught_check", ERROR_INSTALL_FAILURE, false},
        {L"uncaught-ignore.msi", L"Software\\WixKorvalinTests\\Uncaught_ignore", 0, true},
    };
    for (const Row& row : rows) {
        const std::wstring package = testPackage(row.package);
        startClean(package, row.key);
        EXPECT_EQ(row.exitCode, installQuietly(package)) << std::string(package.begin(), package.end());
        std::wstring value;
        EXPECT_EQ(row.laterStepsRan, readRegistryString(HKEY_CURRENT_USER, row.key, L"Reached", value))
            << std::string(package.begin(), package.end());
        uninstallQuietly(package);
    }
}
