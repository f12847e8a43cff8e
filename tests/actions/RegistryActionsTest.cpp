// The three registry actions of the built DLL against real sessions and the real
// registry, which each test prepares and removes again.
#include "actions/CustomAction.h"

#include "Framework/Exceptions.h"
#include "support/ActionKeys.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/InstallerSession.h"
#include "support/Processor.h"
#include "support/ScratchKey.h"
#include "support/ScratchLog.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using Framework::narrowForTest;
using Framework::String;

namespace {

const std::wstring upgradeCode = L"{5A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9}";
const std::wstring& machineList = actionKeys::machineUpgradeCodes;
const std::wstring& userList = actionKeys::userUpgradeCodes;
const std::wstring productCode = L"{0F1E2D3C-4B5A-4968-8776-A5B4C3D2E1F0}";
const std::wstring& uninstallPath = actionKeys::uninstallEntries;
const std::wstring& encasePath = actionKeys::encase;

std::wstring packed(const std::wstring& code)
{
    const String text = CustomAction::packGuid(code.c_str());
    return std::wstring(text.c_str(), text.length());
}

bool keyExists(HKEY root, const std::wstring& path, REGSAM view)
{
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS)
        return false;
    RegCloseKey(key);
    return true;
}

class RegistryActionsTest : public ::testing::Test
{
protected:
    ActionLibrary dll;
};

}  // namespace

TEST(PackGuidTest, TheInstallersPackedForm)
{
    EXPECT_EQ(String(L"87654321CBA90FED21436587A9CBED0F"),
              CustomAction::packGuid(L"{12345678-9ABC-DEF0-1234-56789ABCDEF0}"));
    EXPECT_EQ(String(L"87654321CBA90FED21436587A9CBED0F"),
              CustomAction::packGuid(L"12345678-9ABC-DEF0-1234-56789ABCDEF0"));
    EXPECT_EQ(String(L"87654321cba90fed21436587a9cbed0f"),
              CustomAction::packGuid(L"12345678-9abc-def0-1234-56789abcdef0"))
        << "digits keep their case";
    // Only the last two groups are measured.
    EXPECT_EQ(String(L"987654321CBA0FED21436587A9CBED0F"),
              CustomAction::packGuid(L"123456789-ABC-DEF0-1234-56789ABCDEF0"));
    // A 36-character text that starts with a brace loses it all the same.
    EXPECT_EQ(String(L"8765432CBA90FED21436587A9CBED0F"),
              CustomAction::packGuid(L"{2345678-9ABC-DEF0-1234-56789ABCDEF0"));

    for (const wchar_t* bad : {L"", L"12345678-9ABC-DEF0-1234-56789ABCDEF0AB", L"{12345678-9ABC-DEF0-1234-56789ABCDEF}",
                               L"12345678-9ABC-DEF01234-56789ABCDEF0X", L"12345678-9ABC-DEF0-123-456789ABCDEF0",
                               L"12345678-9ABC-DEF0-12345-6789ABCDEF0", L"12345678-9ABC-DEF0--1234-56789ABCDEF"})
        expectThrown<Framework::ErrorException>([bad] { CustomAction::packGuid(bad); });
}

TEST_F(RegistryActionsTest, SetDomainFollowsTheRegistrationsOfTheUpgradeCode)
{
    struct Row
    {
        bool machine;
        bool user;
        const wchar_t* allUsers;
        const wchar_t* allUsersDisabled;
    } rows[] = {
        {false, false, L"2", L"keep"},
        {false, true, L"2", L"yes"},
        {true, false, L"1", L"yes"},
        {true, true, L"1", L"yes"},
    };
    const std::wstring code = packed(upgradeCode);
    for (const Row& row : rows) {
        std::unique_ptr<ScratchKey> machine, user;
        if (row.machine)
            machine.reset(new ScratchKey(HKEY_LOCAL_MACHINE, machineList + code, KEY_WOW64_64KEY));
        if (row.user)
            user.reset(new ScratchKey(HKEY_CURRENT_USER, userList + code));
        // Sentinels show which property the action left alone.
        InstallerSession session(Properties{{L"UpgradeCode", upgradeCode}});
        session.setProperty(L"ALLUSERS", L"2");
        session.setProperty(L"AllUsersDisabled", L"keep");
        EXPECT_EQ(0u, dll.call("SetDomain", session.handle()));
        EXPECT_EQ(row.allUsers, session.property(L"ALLUSERS")) << row.machine << row.user;
        EXPECT_EQ(row.allUsersDisabled, session.property(L"AllUsersDisabled")) << row.machine << row.user;
    }

    // A code whose packed form holds a bracket is never found, even where a key of
    // that name exists.
    const std::wstring bracketed = L"1234567[-9ABC-DEF0-1234-56789ABCDEF0";
    ScratchKey strange(HKEY_CURRENT_USER, userList + packed(bracketed));
    InstallerSession session(Properties{{L"UpgradeCode", bracketed}});
    EXPECT_EQ(0u, dll.call("SetDomain", session.handle()));
    EXPECT_EQ(L"", session.property(L"AllUsersDisabled"));
}

TEST(RegistryActionsDeathTest, SetDomainWithoutAProperUpgradeCodeIsFatal)
{
    for (const wchar_t* code : {L"", L"{12345678-9ABC-DEF0-1234-56789ABCDEF}"}) {
        ScratchLog log;
        EXPECT_EXIT(
            {
                ActionLibrary dll;
                InstallerSession session(Properties{{L"UpgradeCode", code}});
                dll.call("SetDomain", session.handle());
            },
            ::testing::ExitedWithCode(3), lacks("terminate called"));
        EXPECT_NE(std::string::npos, log.text().find(" ERROR Framework Crt::handleTerminate() - before abort(): \r\n"))
            << log.text();
    }
}

TEST_F(RegistryActionsTest, SetApplicationSizeWritesOnlyIntoAnExistingEntry)
{
    struct Row
    {
        const wchar_t* size;
        bool written;
        DWORD value;
    } rows[] = {
        {L"12345", true, 12345},      {L"", true, 0},           {L"4294967295", true, 4294967295u},
        {L"007", true, 7},            {L"12ab", false, 0},      {L"4294967296", false, 0},
        {L"-1", false, 0},            {L"+5", false, 0},        {L"0x10", false, 0},
    };
    for (const Row& row : rows) {
        // The entry in the view of the DLL's own bitness, as the engine makes it.
        ScratchKey entry(HKEY_LOCAL_MACHINE, uninstallPath + productCode, processor::ownView);
        InstallerSession session(Properties{{L"ProductCode", productCode}});
        session.setProperty(L"ApplicationSize", row.size);
        EXPECT_EQ(0u, dll.call("SetApplicationSize", session.handle()));
        DWORD value = 0xDEADBEEF;
        EXPECT_EQ(row.written, entry.readDword(L"EstimatedSize", value)) << narrowForTest(row.size);
        if (row.written) {
            EXPECT_EQ(row.value, value) << narrowForTest(row.size);
        }
        DWORD type = 0;
        std::vector<BYTE> data;
        EXPECT_EQ(row.written, entry.read(L"EstimatedSize", type, data)) << "nothing else was written";
    }

    // No entry: nothing is created, in either view.
    const std::wstring missing = L"{11111111-2222-3333-4444-555555555555}";
    InstallerSession noEntry(Properties{{L"ProductCode", missing}, {L"ApplicationSize", L"10"}});
    EXPECT_EQ(0u, dll.call("SetApplicationSize", noEntry.handle()));
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, uninstallPath + missing, KEY_WOW64_32KEY));
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, uninstallPath + missing, KEY_WOW64_64KEY));

    // An entry in the other view only is not the one the action sees.
    {
        ScratchKey other(HKEY_LOCAL_MACHINE, uninstallPath + productCode, processor::otherView);
        InstallerSession session(Properties{{L"ProductCode", productCode}, {L"ApplicationSize", L"10"}});
        EXPECT_EQ(0u, dll.call("SetApplicationSize", session.handle()));
        DWORD value = 0;
        EXPECT_FALSE(other.readDword(L"EstimatedSize", value));
        EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, uninstallPath + productCode, processor::ownView));
    }

    // A product code with a bracket counts as having no entry.
    const std::wstring bracketed = L"{0F1E2D3C-4B5A-4968-8776-A5B4C3D2E1F[}";
    ScratchKey strange(HKEY_LOCAL_MACHINE, uninstallPath + bracketed, processor::ownView);
    InstallerSession session(Properties{{L"ProductCode", bracketed}, {L"ApplicationSize", L"10"}});
    EXPECT_EQ(0u, dll.call("SetApplicationSize", session.handle()));
    DWORD value = 0;
    EXPECT_FALSE(strange.readDword(L"EstimatedSize", value));
}

TEST_F(RegistryActionsTest, SetEncaseKorvalinFlagResetsOneAndTwoOnly)
{
    InstallerSession session;
    for (DWORD flag : {0u, 1u, 2u, 3u, 0xFFFFFFFFu}) {
        ScratchKey encase(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY);
        encase.setDword(L"CheckKorvalin", flag);
        EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
        DWORD value = 0xDEADBEEF;
        ASSERT_TRUE(encase.readDword(L"CheckKorvalin", value)) << flag;
        EXPECT_EQ(flag == 1 || flag == 2 ? 0u : flag, value) << flag;
    }

    {
        // A text that isn't a number as the registry values read it: left alone.
        ScratchKey encase(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY);
        encase.setText(L"CheckKorvalin", L"1");
        EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
        DWORD type = 0;
        std::vector<BYTE> data;
        ASSERT_TRUE(encase.read(L"CheckKorvalin", type, data));
        EXPECT_EQ(DWORD(REG_SZ), type);
    }
    {
        // A number list reads as its last number, and is replaced by a plain 0.
        ScratchKey encase(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY);
        encase.setList(L"CheckKorvalin", {L"UintArray", L"5", L"2"});
        EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
        DWORD value = 0xDEADBEEF;
        ASSERT_TRUE(encase.readDword(L"CheckKorvalin", value));
        EXPECT_EQ(0u, value);
    }
    {
        // No value: none is made.
        ScratchKey encase(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY);
        encase.setDword(L"Other", 1);
        EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
        DWORD type = 0;
        std::vector<BYTE> data;
        EXPECT_FALSE(encase.read(L"CheckKorvalin", type, data));
    }
    {
        // The flag in the other view is not EnCase's.
        ScratchKey wide(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_64KEY);
        wide.setDword(L"CheckKorvalin", 1);
        EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
        DWORD value = 0;
        ASSERT_TRUE(wide.readDword(L"CheckKorvalin", value));
        EXPECT_EQ(1u, value);
    }
    // No key: none is made.
    EXPECT_EQ(0u, dll.call("SetEncaseKorvalinFlag", session.handle()));
    EXPECT_FALSE(keyExists(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY));
}

// Each decision of the registry actions is one line in the installation's log, headed
// with the library's and the action's name: what was read, what was found, what was
// written, or why nothing was.
TEST_F(RegistryActionsTest, EachDecisionIsALineInTheInstallationsLog)
{
    enum Registry { nothing, machineHit, userHit, uninstallEntry, flagTwo, flagThree, flagText, otherValue };
    struct Row
    {
        const wchar_t* action;
        Properties properties;
        Registry registry;
        std::vector<std::wstring> lines;
    };
    const std::wstring code = packed(upgradeCode);
    const std::wstring readCode = L"read \"UpgradeCode\" = \"" + upgradeCode + L"\"";
    const std::wstring lookFor = L"looking for the packed code " + code;
    const std::wstring machine = L"under HKEY_LOCAL_MACHINE\\Software\\Classes\\Installer\\UpgradeCodes";
    const std::wstring user = L"under HKEY_CURRENT_USER\\Software\\Microsoft\\Installer\\UpgradeCodes";
    const std::wstring entry = L"HKEY_LOCAL_MACHINE\\" + uninstallPath + productCode;
    const auto readSize = [](const std::wstring& size) {
        return L"read \"ApplicationSize\" = \"" + size + L"\", \"ProductCode\" = \"" + productCode + L"\"";
    };
    const std::wstring encase = L"HKEY_LOCAL_MACHINE\\" + encasePath;
    const Row rows[] = {
        {L"SetDomain", {{L"UpgradeCode", upgradeCode}}, machineHit,
         {readCode, lookFor, L"found " + machine, L"not found " + user, L"set \"ALLUSERS\" = \"1\"",
          L"set \"AllUsersDisabled\" = \"yes\""}},
        {L"SetDomain", {{L"UpgradeCode", upgradeCode}}, userHit,
         {readCode, lookFor, L"not found " + machine, L"found " + user, L"set \"AllUsersDisabled\" = \"yes\""}},
        {L"SetDomain", {{L"UpgradeCode", upgradeCode}}, nothing,
         {readCode, lookFor, L"not found " + machine, L"not found " + user,
          L"no earlier product of this upgrade code is registered: no property set"}},
        {L"SetApplicationSize", {{L"ApplicationSize", L"12345"}, {L"ProductCode", productCode}}, uninstallEntry,
         {readSize(L"12345"), L"wrote \"EstimatedSize\" = 12345 (REG_DWORD) into " + entry}},
        // A value the engine would read as its own syntax in a template arrives as it is.
        {L"SetApplicationSize", {{L"ApplicationSize", L"[ProductCode]"}, {L"ProductCode", productCode}},
         uninstallEntry,
         {readSize(L"[ProductCode]"), L"\"ApplicationSize\" is not a decimal number within 32 bits: nothing written"}},
        {L"SetApplicationSize", {{L"ApplicationSize", L"10"}, {L"ProductCode", productCode}}, nothing,
         {readSize(L"10"), L"no uninstall entry " + entry + L": nothing written"}},
        {L"SetEncaseKorvalinFlag", {}, flagTwo, {L"read \"CheckKorvalin\" = 2", L"set \"CheckKorvalin\" to 0"}},
        {L"SetEncaseKorvalinFlag", {}, flagThree,
         {L"read \"CheckKorvalin\" = 3", L"\"CheckKorvalin\" is neither 1 nor 2: nothing changed"}},
        {L"SetEncaseKorvalinFlag", {}, flagText, {L"\"CheckKorvalin\" does not read as a number: nothing changed"}},
        {L"SetEncaseKorvalinFlag", {}, otherValue,
         {L"no value \"CheckKorvalin\" under " + encase + L": nothing changed"}},
        {L"SetEncaseKorvalinFlag", {}, nothing, {L"no key " + encase + L": nothing changed"}},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        const Row& row = rows[i];
        std::vector<std::unique_ptr<ScratchKey>> keys;
        if (row.registry == machineHit)
            keys.emplace_back(new ScratchKey(HKEY_LOCAL_MACHINE, machineList + code, KEY_WOW64_64KEY));
        if (row.registry == userHit)
            keys.emplace_back(new ScratchKey(HKEY_CURRENT_USER, userList + code));
        if (row.registry == uninstallEntry)
            keys.emplace_back(new ScratchKey(HKEY_LOCAL_MACHINE, uninstallPath + productCode, processor::ownView));
        if (row.registry >= flagTwo)
            keys.emplace_back(new ScratchKey(HKEY_LOCAL_MACHINE, encasePath, KEY_WOW64_32KEY));
        if (row.registry == flagTwo)
            keys.back()->setDword(L"CheckKorvalin", 2);
        if (row.registry == flagThree)
            keys.back()->setDword(L"CheckKorvalin", 3);
        if (row.registry == flagText)
            keys.back()->setText(L"CheckKorvalin", L"1");
        if (row.registry == otherValue)
            keys.back()->setDword(L"Other", 1);
        const std::vector<std::wstring>& expected = row.lines;
        InstallerSession session(row.properties);
        InfoRecords records(session);
        const std::string name = std::to_string(i) + " " + narrowForTest(row.action);
        EXPECT_EQ(0u, dll.call(narrowForTest(row.action).c_str(), session.handle())) << name;
        const std::vector<std::wstring> lines = records.linesOf(row.action);
        ASSERT_EQ(expected.size(), lines.size()) << "row " << name;
        for (size_t l = 0; l < lines.size(); ++l)
            EXPECT_EQ(expected[l], lines[l]) << "row " << name << ", line " << l;
    }
}

// The engine's answer to a record is not read, and a record the session closed or
// refused is no failure: the action does all its work.
TEST_F(RegistryActionsTest, AnActionWhoseSessionRejectsItsRecordsStillDoesItsWork)
{
    struct Row
    {
        int answer;
        bool closeRecord;
    } rows[] = {{IDCANCEL, false}, {IDABORT, false}, {-1, false}, {IDOK, true}};
    ScratchKey machine(HKEY_LOCAL_MACHINE, machineList + packed(upgradeCode), KEY_WOW64_64KEY);
    for (const Row& row : rows) {
        InstallerSession session(Properties{{L"UpgradeCode", upgradeCode}});
        InfoRecords records(session, row.answer, row.closeRecord);
        EXPECT_EQ(0u, dll.call("SetDomain", session.handle()));
        EXPECT_EQ(6u, records.linesOf(L"SetDomain").size()) << row.answer << " " << row.closeRecord;
        EXPECT_EQ(L"1", session.property(L"ALLUSERS")) << row.answer << " " << row.closeRecord;
        EXPECT_EQ(L"yes", session.property(L"AllUsersDisabled")) << row.answer << " " << row.closeRecord;
    }
}
