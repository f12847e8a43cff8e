// End to end: packages built by wixl, installed by msiexec under Wine. Each test
// starts from a clean state (the product uninstalled, its registry key gone), and
// judges the actions by what they left in the registry.
#include "support/ActionKeys.h"
#include "support/Clock.h"
#include "support/Installer.h"
#include "support/Processor.h"
#include "support/MailClient.h"
#include "support/MessageBoxWatcher.h"
#include "support/ScratchLog.h"

#include <gtest/gtest.h>

#include <cwctype>

namespace {

const wchar_t* const demoKey = L"Software\\WixKorvalinDemo";
const wchar_t* const encaseKey = actionKeys::encase.c_str();
const wchar_t* const domainKey = L"Software\\WixKorvalinTests\\Domain";

// The SetDomain packages' upgrade code {1776FDB0-CE3E-461A-A04C-7C4CE75F24D0} and the
// probe's product code {406F02EB-4A5F-434C-9420-1B3909083F09}, packed as the engine
// names its registry keys.
const std::wstring domainUpgradeCode = L"0BDF6771E3ECA1640AC4C7C47EF5420D";
const std::wstring domainProbeProduct = L"BE20F604F5A4C4344902B1939080F390";
using actionKeys::machineUpgradeCodes;
using actionKeys::userUpgradeCodes;
const std::wstring machineProducts = L"Software\\Classes\\Installer\\Products\\";
const std::wstring userProducts = L"Software\\Microsoft\\Installer\\Products\\";
using actionKeys::uninstallEntries;

std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

// Whether the verbose log of the package's last install holds the action's line.
bool logged(const std::wstring& package, const std::string& action, const std::string& line)
{
    for (const std::string& found : installLogLines(package, action))
        if (found == "WixKorvalin " + action + ": " + line)
            return true;
    return false;
}

std::string allLines(const std::wstring& package, const std::string& action)
{
    std::string text;
    for (const std::string& line : installLogLines(package, action))
        text += line + "\n";
    return text;
}

class InstallTest : public ::testing::Test
{
protected:
    void removeIfInstalled(const std::wstring& package)
    {
        if (isInstalled(package))
            uninstallQuietly(package);
    }

    void startClean(const std::wstring& package, const std::wstring& key)
    {
        removeIfInstalled(package);
        deleteRegistryTree(HKEY_CURRENT_USER, key);
    }

    // Neither the probe nor an earlier product of its upgrade code installed.
    void startDomainClean()
    {
        startClean(testPackage(L"domain-probe.msi"), domainKey);
        removeIfInstalled(testPackage(L"domain-earlier-machine.msi"));
        removeIfInstalled(testPackage(L"domain-earlier-user.msi"));
    }

    void deleteEncaseFlags()
    {
        deleteRegistryTree(HKEY_LOCAL_MACHINE, L"Software\\Guidance Software", KEY_WOW64_32KEY);
        deleteRegistryTree(HKEY_LOCAL_MACHINE, L"Software\\Guidance Software", KEY_WOW64_64KEY);
    }
};

}  // namespace

// The demo package runs every registry action too. Its custom-action host is a 32-bit
// program, so SetEncaseKorvalinFlag resets the flag that 32-bit programs see and leaves
// the 64-bit view's alone.
TEST_F(InstallTest, TheDemoPackageRecordsTheTimeAndResetsTheEncaseFlagOf32BitPrograms)
{
    const std::wstring package = testPackage(L"demo.msi");
    startClean(package, demoKey);
    deleteEncaseFlags();
    writeRegistryDword(HKEY_LOCAL_MACHINE, encaseKey, L"CheckKorvalin", 2, KEY_WOW64_32KEY);
    writeRegistryDword(HKEY_LOCAL_MACHINE, encaseKey, L"CheckKorvalin", 1, KEY_WOW64_64KEY);
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
    EXPECT_TRUE(logged(package, "SetProperties", "set \"CURRENTTIMEMS\" = \"" + narrow(value) + "\""))
        << allLines(package, "SetProperties");
    EXPECT_TRUE(logged(package, "SetEncaseKorvalinFlag", "set \"CheckKorvalin\" to 0"))
        << allLines(package, "SetEncaseKorvalinFlag");

    DWORD flag = 99;
    EXPECT_TRUE(readRegistryDword(HKEY_LOCAL_MACHINE, encaseKey, L"CheckKorvalin", flag, KEY_WOW64_32KEY));
    EXPECT_EQ(0u, flag);
    EXPECT_TRUE(readRegistryDword(HKEY_LOCAL_MACHINE, encaseKey, L"CheckKorvalin", flag, KEY_WOW64_64KEY));
    EXPECT_EQ(1u, flag);

    EXPECT_EQ(0u, uninstallQuietly(package));
    EXPECT_FALSE(readRegistryString(HKEY_CURRENT_USER, demoKey, L"CURRENTTIMEMS", value));
    deleteEncaseFlags();
}

// An exception that no handler takes ends the custom-action host in the terminate
// handler, which writes its line to the log first. The engine then treats the action as failed: with Return="check" the
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
        ScratchLog log;
        EXPECT_EQ(row.exitCode, installQuietly(package)) << std::string(package.begin(), package.end());
        EXPECT_NE(std::string::npos, log.text().find(" ERROR Framework Crt::handleTerminate() - before abort(): \r\n"))
            << log.text();
        std::wstring value;
        EXPECT_EQ(row.laterStepsRan, readRegistryString(HKEY_CURRENT_USER, row.key, L"Reached", value))
            << std::string(package.begin(), package.end());
        uninstallQuietly(package);
    }
}

// Wine's engine registers the upgrade code of a per-machine product under
// HKLM\Software\Classes\Installer\UpgradeCodes in the 64-bit view, and of a
// per-user product under HKCU\Software\Microsoft\Installer\UpgradeCodes: the two lists
// SetDomain reads. The probe, a later per-user product of the same upgrade code with no
// Upgrade table, leaves the earlier product registered; SetDomain runs first in its
// execute sequence, and the probe records both properties as they are afterwards. The
// engine sets neither of them for a per-user package: without an earlier product both
// stay empty. The probe is registered per user even where SetDomain set ALLUSERS to
// "1": Wine's engine has fixed the installation's context before the execute sequence.
TEST_F(InstallTest, SetDomainFindsTheEarlierProductWhereTheEngineRegisteredIt)
{
    struct Row {
        const wchar_t* earlier;  // installed before the probe; null for none
        bool inMachineList;
        bool inUserList;
        const wchar_t* allUsers;
        const wchar_t* allUsersDisabled;
        const char* decision;  // its line in the installation's log
    };
    const Row rows[] = {
        {L"domain-earlier-machine.msi", true, false, L"1", L"yes",
         "found under HKEY_LOCAL_MACHINE\\Software\\Classes\\Installer\\UpgradeCodes"},
        {L"domain-earlier-user.msi", false, true, L"", L"yes",
         "found under HKEY_CURRENT_USER\\Software\\Microsoft\\Installer\\UpgradeCodes"},
        {nullptr, false, false, L"", L"", "no earlier product of this upgrade code is registered: no property set"},
    };
    const std::wstring probe = testPackage(L"domain-probe.msi");
    for (const Row& row : rows) {
        const std::string name = row.earlier ? narrow(row.earlier) : "no earlier product";
        startDomainClean();
        if (row.earlier) {
            ASSERT_EQ(0u, installQuietly(testPackage(row.earlier))) << name;
        }
        const std::wstring machineList = machineUpgradeCodes + domainUpgradeCode;
        EXPECT_EQ(row.inMachineList, registryKeyExists(HKEY_LOCAL_MACHINE, machineList, KEY_WOW64_64KEY)) << name;
        EXPECT_EQ(row.inUserList, registryKeyExists(HKEY_CURRENT_USER, userUpgradeCodes + domainUpgradeCode)) << name;

        EXPECT_EQ(0u, installQuietly(probe)) << name;
        std::wstring allUsers;
        std::wstring allUsersDisabled;
        ASSERT_TRUE(readRegistryString(HKEY_CURRENT_USER, domainKey, L"ALLUSERS", allUsers))
            << name << ": the probe recorded nothing";
        ASSERT_TRUE(readRegistryString(HKEY_CURRENT_USER, domainKey, L"AllUsersDisabled", allUsersDisabled)) << name;
        EXPECT_EQ(row.allUsers, allUsers) << name;
        EXPECT_EQ(row.allUsersDisabled, allUsersDisabled) << name;
        EXPECT_TRUE(logged(probe, "SetDomain", row.decision)) << name << ":\n" << allLines(probe, "SetDomain");
        EXPECT_TRUE(registryKeyExists(HKEY_CURRENT_USER, userProducts + domainProbeProduct)) << name;
        EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, machineProducts + domainProbeProduct, KEY_WOW64_64KEY))
            << name;

        EXPECT_EQ(0u, uninstallQuietly(probe)) << name;
        if (row.earlier) {
            EXPECT_EQ(0u, uninstallQuietly(testPackage(row.earlier))) << name;
        }
    }
}

// A malformed upgrade code (here one cut short) ends SetDomain with an exception no
// handler takes; WixKorvalin.wxi schedules it with Return="check", so the installation
// rolls back before the probe writes or registers anything. The custom-action host
// inherits msiexec's environment, so the log configuration that KORVALIN_LOG_CONFIG
// names takes the terminate handler's line, and the host ends without a box. The same
// line goes into the installation's log, after the code the action read.
TEST_F(InstallTest, SetDomainWithAMalformedUpgradeCodeFailsTheInstallation)
{
    const std::wstring probe = testPackage(L"domain-probe.msi");
    startDomainClean();
    ScratchLog log;
    EXPECT_EQ(DWORD(ERROR_INSTALL_FAILURE), installQuietly(probe, L"GIVENUPGRADECODE=1776FDB0-CE3E-461A-A04C"));
    const std::string fileText = log.text();
    const size_t end = fileText.find(" ERROR Framework Crt::handleTerminate() - before abort(): \r\n");
    ASSERT_NE(std::string::npos, end) << fileText;
    const size_t start = fileText.rfind("\r\n", end);
    const size_t from = start == std::string::npos ? 0 : start + 2;
    const std::string fileLine = fileText.substr(from, fileText.find("\r\n", end) - from);
    const std::vector<std::string> lines = installLogLines(probe, "SetDomain");
    ASSERT_EQ(2u, lines.size()) << allLines(probe, "SetDomain");
    EXPECT_EQ("WixKorvalin SetDomain: read \"UpgradeCode\" = \"1776FDB0-CE3E-461A-A04C\"", lines[0]);
    EXPECT_EQ("WixKorvalin SetDomain: " + fileLine, lines[1]) << "the file's line: " << fileLine;
    EXPECT_FALSE(registryKeyExists(HKEY_CURRENT_USER, domainKey));
    EXPECT_FALSE(registryKeyExists(HKEY_CURRENT_USER, userProducts + domainProbeProduct));
}

// Wine's engine writes the product's registration when InstallFinalize runs the
// installation script. The uninstall entry of a 32-bit package goes to
// HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\<ProductCode> in the 32-bit
// view (Wow6432Node), with an "EstimatedSize" of the engine's own: 0 for this package,
// which has no files. SetApplicationSize after InstallFinalize overwrites it with the
// size; a size too large for 32 bits leaves the engine's. The action runs again on
// removal, after the engine has deleted the entry, and does not bring it back.
// The package has the DLL's bitness, and so does the view of its entry.
TEST_F(InstallTest, SetApplicationSizeAfterInstallFinalizeWritesTheSizeIntoTheUninstallEntryOfItsView)
{
    struct Row {
        const wchar_t* properties;
        DWORD estimatedSize;
        const char* decision;  // the line that ends the action in the installation's log
    };
    const std::string written = "wrote \"EstimatedSize\" = 12345 (REG_DWORD) into HKEY_LOCAL_MACHINE\\" +
                                narrow(uninstallEntries + productCodeOf(testPackage(L"size-after-finalize.msi")));
    const Row rows[] = {
        {L"", 12345, written.c_str()},  // the Property table's
        {L"GIVENSIZE=4294967296", 0, "\"ApplicationSize\" is not a decimal number within 32 bits: nothing written"},
    };
    const std::wstring package = testPackage(L"size-after-finalize.msi");
    const std::wstring entry = uninstallEntries + productCodeOf(package);
    for (const Row& row : rows) {
        const std::string name = row.properties[0] ? narrow(row.properties) : "ApplicationSize=12345";
        removeIfInstalled(package);
        EXPECT_EQ(0u, installQuietly(package, row.properties)) << name;
        EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, entry, processor::otherView)) << name;
        DWORD size = 99;
        EXPECT_TRUE(readRegistryDword(HKEY_LOCAL_MACHINE, entry, L"EstimatedSize", size, processor::ownView))
            << name << ": no REG_DWORD in the entry of the package's view";
        EXPECT_EQ(row.estimatedSize, size) << name;
        const std::vector<std::string> lines = installLogLines(package, "SetApplicationSize");
        ASSERT_FALSE(lines.empty()) << name;
        EXPECT_EQ(std::string("WixKorvalin SetApplicationSize: ") + row.decision, lines.back()) << name;

        EXPECT_EQ(0u, uninstallQuietly(package)) << name;
        EXPECT_FALSE(registryKeyExists(HKEY_LOCAL_MACHINE, entry, processor::ownView)) << name;
    }
}

// Before InstallFinalize, even after RegisterProduct and PublishProduct in the sequence,
// the entry does not exist yet, and InstallFinalize writes it afterwards: the size never
// reaches it.
TEST_F(InstallTest, SetApplicationSizeBeforeInstallFinalizeLeavesTheEnginesSize)
{
    const std::wstring package = testPackage(L"size-before-finalize.msi");
    const std::wstring entry = uninstallEntries + productCodeOf(package);
    removeIfInstalled(package);
    EXPECT_EQ(0u, installQuietly(package));
    DWORD size = 99;
    EXPECT_TRUE(readRegistryDword(HKEY_LOCAL_MACHINE, entry, L"EstimatedSize", size, processor::ownView));
    EXPECT_EQ(0u, size);
    EXPECT_EQ(0u, uninstallQuietly(package));
}

// Subscribe through msiexec, with the tests' mail client as the machine's default: the
// mail goes out with the package's texts; a refusal shows the package's box in the
// custom-action host, which a user closes, and the installation goes on. (A crash in
// the client is left to the session tests: Wine's engine reports a crashed host as a
// success, so here it would pass either way.)
TEST_F(InstallTest, SubscribeMailsOrShowsThePackagesBoxAndTheInstallationGoesOn)
{
    const std::wstring package = testPackage(L"subscribe-probe.msi");
    const wchar_t* const reachedKey = L"Software\\WixKorvalinTests\\Subscribe";
    const std::wstring boxTitle = L"WixKorvalin Subscribe Probe";
    MailClient client;
    struct Row {
        const char* answer;
        bool box;
        const char* decision;  // its line in the installation's log
    };
    for (const Row row :
         {Row{"success", false, "the mail client took the mail"},
          Row{"refuse", true,
              "the mail client is missing or refused the mail: showing the box \"WixKorvalin Subscribe Probe\""}}) {
        startClean(package, reachedKey);
        client.clear();
        client.answer(row.answer);
        MessageBoxWatcher watcher(boxTitle);
        EXPECT_EQ(0u, installQuietly(package)) << row.answer;
        const SeenBox box = watcher.stop();
        EXPECT_EQ(row.box, box.seen) << row.answer;
        if (box.seen) {
            EXPECT_EQ(L"The subscription mail could not be sent.", box.text);
            EXPECT_TRUE(box.okOnly);
        }
        const std::vector<MailCall> sends = client.sends();
        ASSERT_EQ(1u, sends.size()) << row.answer;
        EXPECT_EQ("SMTP:news@example.com", sends[0]["recipient0.address"]);
        EXPECT_EQ("Subscribe me", sends[0]["subject"]);
        EXPECT_EQ("Sent by the installer.", sends[0]["note"]);
        std::wstring value;
        EXPECT_TRUE(readRegistryString(HKEY_CURRENT_USER, reachedKey, L"Reached", value)) << row.answer;
        EXPECT_TRUE(logged(package, "Subscribe", row.decision))
            << row.answer << ":\n" << allLines(package, "Subscribe");
    }
    uninstallQuietly(package);
}
