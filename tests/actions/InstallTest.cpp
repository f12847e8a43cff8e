// End to end: the tests' packages built by wixl, installed by msiexec under Wine, for
// what only a real installation shows: where the engine registers products and their
// uninstall entries, and when; a box from the custom-action host; the installation's
// log. Each test starts with neither the probe nor the earlier product installed.
#include "support/ActionKeys.h"
#include "support/Installer.h"
#include "support/MailClient.h"
#include "support/MessageBoxWatcher.h"
#include "support/Processor.h"
#include "support/ScratchLog.h"

#include <msi.h>
#include <gtest/gtest.h>

#include <algorithm>

using namespace actionKeys;

namespace {

const wchar_t* const probeCode = L"{406F02EB-4A5F-434C-9420-1B3909083F09}";
const wchar_t* const earlierCode = L"{922679A3-DF2E-4C39-AE82-B2621BC98728}";
// The packages' upgrade code {1776FDB0-CE3E-461A-A04C-7C4CE75F24D0} and the probe's
// product code, packed as the engine names its registry keys.
const std::wstring packedUpgradeCode = L"0BDF6771E3ECA1640AC4C7C47EF5420D";
const std::wstring packedProbeCode = L"BE20F604F5A4C4344902B1939080F390";
const wchar_t* const recordKey = L"Software\\WixKorvalinTests\\Probe";

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

class InstallTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (MsiQueryProductStateW(probeCode) != INSTALLSTATE_UNKNOWN)
            uninstallQuietly(probe);
        if (MsiQueryProductStateW(earlierCode) != INSTALLSTATE_UNKNOWN)
            uninstallQuietly(earlier);
        deleteRegistryTree(HKEY_CURRENT_USER, recordKey);
    }

    const std::wstring probe = testPackage(L"actions-probe.msi");
    const std::wstring earlier = testPackage(L"domain-earlier-machine.msi");
};

}  // namespace

// A malformed upgrade code (here cut short) ends SetDomain with an exception no handler
// takes; WixKorvalin.wxi schedules it with Return="check", so the installation rolls
// back before the probe writes or registers anything. The custom-action host inherits
// msiexec's environment, so the log file that KORVALIN_LOG_CONFIG configures takes the
// terminate handler's line, and the same line goes into the installation's log.
TEST_F(InstallTest, AMalformedUpgradeCodeFailsTheInstallation)
{
    ScratchLog log;
    EXPECT_EQ(DWORD(ERROR_INSTALL_FAILURE), installQuietly(probe, L"GIVENUPGRADECODE=1776FDB0-CE3E-461A-A04C"));
    const std::vector<std::string> lines = installLogLines(probe, "SetDomain");
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("WixKorvalin SetDomain: read \"UpgradeCode\" = \"1776FDB0-CE3E-461A-A04C\"", lines[0]);
    EXPECT_NE(std::string::npos, lines[1].find(" ERROR Framework Crt::handleTerminate() - before abort(): ")) << lines[1];
    EXPECT_EQ("WixKorvalin SetDomain: " + log.text(), lines[1] + "\r\n") << "the file's line";
    EXPECT_FALSE(registryKeyExists(HKEY_CURRENT_USER, recordKey));
    EXPECT_EQ(INSTALLSTATE_UNKNOWN, MsiQueryProductStateW(probeCode));
}

// The earlier product installed per machine, then the probe per user, with the mail
// client refusing.
TEST_F(InstallTest, TheActionsFindWhatTheEngineRegisteredWhereAndWhenItDid)
{
    ASSERT_EQ(0u, installQuietly(earlier));
    MailClient client;
    client.answer("refuse");
    MessageBoxWatcher watcher(L"WixKorvalin Actions Probe");
    EXPECT_EQ(0u, installQuietly(probe));
    const SeenBox box = watcher.stop();

    // SetDomain finds the earlier product in the machine's list. Formatted fields read
    // later see its "1", but the probe stays registered per user: the engine fixed the
    // installation's context before the execute sequence. A product per user goes into
    // the user's list.
    const std::vector<std::string> domain = installLogLines(probe, "SetDomain");
    const std::string found = "WixKorvalin SetDomain: found under HKEY_LOCAL_MACHINE\\" + narrow(machineUpgradeCodes);
    EXPECT_NE(domain.end(), std::find(domain.begin(), domain.end(), found)) << domain.size() << " lines";
    std::wstring allUsers, allUsersDisabled;
    EXPECT_TRUE(readRegistryString(HKEY_CURRENT_USER, recordKey, L"ALLUSERS", allUsers));
    EXPECT_TRUE(readRegistryString(HKEY_CURRENT_USER, recordKey, L"AllUsersDisabled", allUsersDisabled));
    EXPECT_EQ(L"1", allUsers);
    EXPECT_EQ(L"yes", allUsersDisabled);
    EXPECT_TRUE(registryKeyExists(HKEY_CURRENT_USER, L"Software\\Microsoft\\Installer\\Products\\" + packedProbeCode));
    EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, L"Software\\Classes\\Installer\\Products\\" + packedProbeCode,
                                   KEY_WOW64_64KEY));
    EXPECT_TRUE(registryKeyExists(HKEY_CURRENT_USER, userUpgradeCodes + L"\\" + packedUpgradeCode));

    // The uninstall entry, in the view of the package's bitness, exists only once
    // InstallFinalize has run: before it the size has nowhere to go.
    const std::wstring entry = uninstallEntries + L"\\" + probeCode;
    const std::vector<std::string> size = installLogLines(probe, "SetApplicationSize");
    ASSERT_EQ(4u, size.size());
    const std::string heading = "WixKorvalin SetApplicationSize: ";
    EXPECT_EQ(heading + "no uninstall entry HKEY_LOCAL_MACHINE\\" + narrow(entry) + ": nothing written", size[1]);
    EXPECT_EQ(heading + "wrote \"EstimatedSize\" = 12345 (REG_DWORD) into HKEY_LOCAL_MACHINE\\" + narrow(entry),
              size[3]);
    DWORD estimatedSize = 0;
    EXPECT_TRUE(readRegistryDword(HKEY_LOCAL_MACHINE, entry, L"EstimatedSize", estimatedSize, processor::ownView));
    EXPECT_EQ(12345u, estimatedSize);
    EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, entry, processor::otherView));

    // The box shows even with /qn, and the installation goes on when it is closed.
    EXPECT_TRUE(box.seen);
    EXPECT_EQ(L"The subscription mail could not be sent.", box.text);
    ASSERT_EQ(1u, client.sends().size());
    EXPECT_EQ("Subscribe me", client.sends()[0]["subject"]);
    const std::vector<std::string> subscribe = installLogLines(probe, "Subscribe");
    ASSERT_FALSE(subscribe.empty());
    EXPECT_EQ("WixKorvalin Subscribe: the mail client is missing or refused the mail: showing the box \"WixKorvalin "
              "Actions Probe\"",
              subscribe.back());

    // On removal the size goes into the entry before the engine deletes it, and is not
    // written after.
    EXPECT_EQ(0u, uninstallQuietly(probe));
    EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, entry, processor::ownView));
    EXPECT_EQ(0u, uninstallQuietly(earlier));
}
