// End to end: the tests' packages built by wixl, installed by msiexec under Wine, for
// what only a real installation shows: where and when the engine registers products
// and their uninstall entries, a box from the custom-action host, and the
// installation's log.
#include "support/ActionKeys.h"
#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/MailClient.h"
#include "support/MessageBoxWatcher.h"
#include "support/Processor.h"
#include "support/ScratchLog.h"

#include <msi.h>
#include <gtest/gtest.h>

using namespace actionKeys;

// The probe, a product per user with no Upgrade table, runs the actions; the earlier
// product, installed per machine, has the same upgrade code
// {1776FDB0-CE3E-461A-A04C-7C4CE75F24D0}, which the engine's keys name packed.
TEST(InstallTest, TheActionsFindWhatTheEngineRegisteredWhereAndWhenItDid)
{
    const std::wstring probe = testSetting("KORVALIN_PACKAGES") + L"\\actions-probe.msi";
    const std::wstring earlier = testSetting("KORVALIN_PACKAGES") + L"\\domain-earlier-machine.msi";
    const std::wstring probeCode = L"{406F02EB-4A5F-434C-9420-1B3909083F09}";
    const std::wstring recordKey = L"Software\\WixKorvalinTests\\Probe";
    if (MsiQueryProductStateW(probeCode.c_str()) != INSTALLSTATE_UNKNOWN)
        uninstallQuietly(probe);
    if (MsiQueryProductStateW(L"{922679A3-DF2E-4C39-AE82-B2621BC98728}") != INSTALLSTATE_UNKNOWN)
        uninstallQuietly(earlier);
    deleteRegistryTree(HKEY_CURRENT_USER, recordKey);

    // A malformed upgrade code (here cut short) ends SetDomain with an exception no
    // handler takes; WixKorvalin.wxi's Return="check" rolls the installation back
    // before the probe writes or registers anything. The custom-action host inherits
    // msiexec's environment, so the log file that KORVALIN_LOG_CONFIG configures takes
    // the terminate handler's line, and the same line goes into the installation's log.
    {
        ScratchLog log;
        EXPECT_EQ(DWORD(ERROR_INSTALL_FAILURE), installQuietly(probe, L"GIVENUPGRADECODE=1776FDB0-CE3E-461A-A04C"));
        const std::string fileLine = log.text().substr(0, log.text().find("\r\n"));
        EXPECT_NE(std::string::npos, fileLine.find(" ERROR Framework Crt::handleTerminate() - before abort(): "));
        EXPECT_TRUE(installLogged(probe, L"WixKorvalin SetDomain: " + std::wstring(fileLine.begin(), fileLine.end())))
            << fileLine;
        EXPECT_EQ(INSTALLSTATE_UNKNOWN, MsiQueryProductStateW(probeCode.c_str()));
    }

    ASSERT_EQ(0u, installQuietly(earlier));
    MailClient client;
    client.answer("refuse");
    MessageBoxWatcher watcher(L"WixKorvalin Actions Probe");
    EXPECT_EQ(0u, installQuietly(probe));
    const SeenBox box = watcher.stop();

    // SetDomain finds the earlier product in the machine's list, and formatted fields
    // read later see what it set. A product per user goes into the user's list.
    EXPECT_TRUE(installLogged(probe, L"WixKorvalin SetDomain: found under HKEY_LOCAL_MACHINE\\" + machineUpgradeCodes));
    EXPECT_TRUE(registryKeyExists(HKEY_CURRENT_USER, recordKey + L"\\1-yes")) << "ALLUSERS-AllUsersDisabled";
    EXPECT_TRUE(registryKeyExists(HKEY_CURRENT_USER, userUpgradeCodes + L"\\0BDF6771E3ECA1640AC4C7C47EF5420D"));

    // The uninstall entry, which the DLL looks for in the view of its bitness, exists
    // only once InstallFinalize has run: before it (6500) the size has nowhere to go.
    const std::wstring entry = uninstallEntries + L"\\" + probeCode;
    const std::wstring entryName = L"HKEY_LOCAL_MACHINE\\" + entry;
    const std::wstring size = L"WixKorvalin SetApplicationSize: ";
    EXPECT_TRUE(installLogged(probe, size + L"no uninstall entry " + entryName + L": nothing written"));
    EXPECT_TRUE(installLogged(probe, size + L"wrote \"EstimatedSize\" = 12345 (REG_DWORD) into " + entryName));

    // The box shows even with /qn, and the installation goes on when it is closed.
    EXPECT_TRUE(box.seen);
    EXPECT_EQ(L"The subscription mail could not be sent.", box.text);

    // On removal the size goes into the entry before the engine deletes it, and is not
    // written after.
    EXPECT_EQ(0u, uninstallQuietly(probe));
    EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, entry, processor::ownView));
    EXPECT_EQ(0u, uninstallQuietly(earlier));
}
