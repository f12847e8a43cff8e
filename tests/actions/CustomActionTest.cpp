// The action object, and the built DLL's actions loaded as the engine's host loads
// them, against real installer sessions and the real registry, which each row
// prepares and removes again: what an action leaves in the session, the registry or
// the mail client, and its lines in the installation's log.
#include "actions/CustomAction.h"

#include "Framework/Exceptions.h"
#include "support/ActionKeys.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/ImportPatch.h"
#include "support/Installer.h"
#include "support/InstallerSession.h"
#include "support/MailClient.h"
#include "support/MessageBoxWatcher.h"
#include "support/Processor.h"
#include "support/ScratchKey.h"
#include "support/ScratchLog.h"
#include "support/TextHelpers.h"

#include <msiquery.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using Framework::String;
using Lines = std::vector<std::wstring>;
using namespace actionKeys;

namespace {

const ActionLibrary& library()
{
    static const ActionLibrary dll;
    return dll;
}

// Runs the action on the session; its lines in the installation's log.
Lines run(const char* action, const InstallerSession& session)
{
    InfoRecords records(session);
    EXPECT_EQ(0u, library().call(action, session.handle())) << action;
    return records.linesOf(std::wstring(action, action + std::strlen(action)));
}

const std::wstring productCode = L"{0F1E2D3C-4B5A-4968-8776-A5B4C3D2E1F0}";
const std::wstring entryPath = uninstallEntries + L"\\" + productCode;

// Wine keeps no access lists on registry keys: patched in for the DLL's own
// RegOpenKeyExW, this refuses every key asked for writing.
LONG WINAPI refuseWriting(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY key)
{
    return (access & KEY_SET_VALUE) ? ERROR_ACCESS_DENIED : RegOpenKeyExW(parent, path, options, access, key);
}

// The text in the system's ANSI code page, as the mail client is handed it.
std::string ansi(const std::wstring& text)
{
    char buffer[1024] = "";
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, buffer, sizeof buffer, nullptr, nullptr);
    return buffer;
}

}  // namespace

TEST(CustomActionTest, ReadsAPropertyWholeUpToItsFirstNulAndAFailedReadAsEmpty)
{
    const std::wstring longValue(1000, L'v');
    InstallerSession session(Properties{{L"LONG", longValue}});
    // A NUL gets into a value only through a property-setting action: "[~]" formats as one.
    PMSIHANDLE database = MsiGetActiveDatabase(session.handle());
    for (const wchar_t* sql : {L"CREATE TABLE `CustomAction` (`Action` CHAR(72) NOT NULL, `Type` SHORT NOT NULL, "
                               L"`Source` CHAR(72), `Target` CHAR(255) PRIMARY KEY `Action`) HOLD",
                               L"INSERT INTO `CustomAction` (`Action`, `Type`, `Source`, `Target`) "
                               L"VALUES ('SetWithNul', 51, 'WITHNUL', 'ab[~]cd') TEMPORARY"}) {
        PMSIHANDLE view;
        ASSERT_EQ(0u, MsiDatabaseOpenViewW(database, sql, &view));
        ASSERT_EQ(0u, MsiViewExecute(view, 0));
    }
    ASSERT_EQ(0u, MsiDoActionW(session.handle(), L"SetWithNul"));
    ASSERT_EQ(std::wstring(L"ab\0cd", 5), session.property(L"WITHNUL"));

    {
        CustomAction action(session.handle());
        EXPECT_EQ(String(longValue.c_str()), action.getProperty("LONG"));
        EXPECT_EQ(String(L"ab"), action.getProperty("WITHNUL"));
    }
    // A handle the engine never gave out: both calls fail and write nothing, so the
    // read's one-character buffer must not show what a freed block left in it. (One
    // action object at a time: the FW layer stops the process on a second bring-up.)
    CustomAction unknown(0);
    {
        String leftover(1u);
        leftover.refAt(0) = L'x';
    }
    EXPECT_EQ(String(), unknown.getProperty("ANY"));
}

TEST(CustomActionTest, PacksAnUpgradeCodeAsTheInstallersListsNameIt)
{
    EXPECT_EQ(String(L"87654321CBA90FED21436587A9CBED0F"),
              CustomAction::packGuid(L"{12345678-9ABC-DEF0-1234-56789ABCDEF0}"));
    const wchar_t* const malformed[] = {
        L"123456789-9ABC-DEF0-1234-56789ABCDEF0",   // 37 characters
        L"1234-5678-9ABC-DEF0-123456789ABC-123",    // six groups
        L"12345678-9ABC-DEF-12345-56789ABCDEF0",    // a fourth group of 5
        L"12345678-9ABC-DEF-1234-56789ABCDEF01",    // a fifth group of 13
    };
    for (const wchar_t* code : malformed) {
        SCOPED_TRACE(Framework::narrowForTest(code));
        expectThrown<Framework::ErrorException>([code] { CustomAction::packGuid(code); });
    }
}

TEST(CustomActionTest, SetPropertiesHandsTheTimeInMillisecondsToTheSession)
{
    using namespace std::chrono;
    InstallerSession session;
    const uint64_t before = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    const Lines lines = run("SetProperties", session);
    const uint64_t after = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    const std::wstring value = session.property(L"CURRENTTIMEMS");
    const uint64_t stamp = std::wcstoull(value.c_str(), nullptr, 10);
    EXPECT_EQ(std::to_wstring(stamp), value) << "plain decimal digits";
    EXPECT_LE(before, stamp);
    EXPECT_GE(after, stamp);
    EXPECT_EQ(Lines{L"set \"CURRENTTIMEMS\" = \"" + value + L"\""}, lines);
}

TEST(CustomActionTest, SetDomainFollowsTheRegistrationsOfTheUpgradeCode)
{
    const std::wstring code = L"{5A1B2C3D-4E5F-4061-8273-94A5B6C7D8E9}";
    const std::wstring packed = L"D3C2B1A5F5E416042837495A6B7C8D9E";
    const std::wstring read = L"read \"UpgradeCode\" = \"" + code + L"\"";
    const std::wstring look = L"looking for the packed code " + packed;
    const std::wstring inMachineList = L" under HKEY_LOCAL_MACHINE\\" + machineUpgradeCodes;
    const std::wstring inUserList = L" under HKEY_CURRENT_USER\\" + userUpgradeCodes;
    const std::wstring disabled = L"set \"AllUsersDisabled\" = \"yes\"";
    struct Row
    {
        HKEY registeredIn;        // the root of the list that has the code; null for none
        const wchar_t* allUsers;  // "2" and "keep" before
        const wchar_t* allUsersDisabled;
        Lines lines;
    } rows[] = {
        {nullptr, L"2", L"keep",
         {read, look, L"not found" + inMachineList, L"not found" + inUserList,
          L"no earlier product of this upgrade code is registered: no property set"}},
        {HKEY_CURRENT_USER, L"2", L"yes", {read, look, L"not found" + inMachineList, L"found" + inUserList, disabled}},
        {HKEY_LOCAL_MACHINE, L"1", L"yes",
         {read, look, L"found" + inMachineList, L"not found" + inUserList, L"set \"ALLUSERS\" = \"1\"", disabled}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines[2] + row.lines[3]);
        const std::wstring& list = row.registeredIn == HKEY_CURRENT_USER ? userUpgradeCodes : machineUpgradeCodes;
        std::unique_ptr<ScratchKey> registration(
            row.registeredIn ? new ScratchKey(row.registeredIn, list + L"\\" + packed, KEY_WOW64_64KEY) : nullptr);
        InstallerSession session({{L"UpgradeCode", code}, {L"ALLUSERS", L"2"}, {L"AllUsersDisabled", L"keep"}});
        EXPECT_EQ(row.lines, run("SetDomain", session));
        EXPECT_EQ(row.allUsers, session.property(L"ALLUSERS"));
        EXPECT_EQ(row.allUsersDisabled, session.property(L"AllUsersDisabled"));
    }
}

TEST(CustomActionTest, SetApplicationSizeWritesOnlyIntoAnExistingEntryOfItsView)
{
    const std::wstring entryName = L"HKEY_LOCAL_MACHINE\\" + entryPath;
    HKEY list = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, uninstallEntries.c_str(), 0, nullptr, 0,
                                             KEY_ALL_ACCESS | processor::ownView, nullptr, &list, nullptr));
    RegDeleteValueW(list, L"EstimatedSize");  // as earlier versions of this test left it
    struct Row
    {
        const wchar_t* size;
        std::wstring product;
        bool entry;       // whether the product's uninstall entry exists
        int64_t written;  // -1 for nothing
        std::wstring decision;
    } rows[] = {
        {L"4294967295", productCode, true, 4294967295,
         L"wrote \"EstimatedSize\" = 4294967295 (REG_DWORD) into " + entryName},
        {L"", productCode, true, 0, L"wrote \"EstimatedSize\" = 0 (REG_DWORD) into " + entryName},
        {L"4294967296", productCode, true, -1,
         L"\"ApplicationSize\" is not a decimal number within 32 bits: nothing written"},
        {L"10", productCode, false, -1, L"no uninstall entry " + entryName + L": nothing written"},
        // The uninstall list itself, under an entry's path that ends in a backslash.
        {L"11", L"", true, -1, L"\"ProductCode\" is empty: nothing written"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(Framework::narrowForTest(row.size));
        std::unique_ptr<ScratchKey> entry(row.entry ? new ScratchKey(HKEY_LOCAL_MACHINE, entryPath, processor::ownView)
                                                    : nullptr);
        InstallerSession session(Properties{{L"ProductCode", row.product}, {L"ApplicationSize", row.size}});
        const std::wstring read = L"read \"ApplicationSize\" = \"" + std::wstring(row.size) +
                                  L"\", \"ProductCode\" = \"" + row.product + L"\"";
        EXPECT_EQ((Lines{read, row.decision}), run("SetApplicationSize", session));
        DWORD value = 0;
        EXPECT_EQ(row.written >= 0, entry && entry->readDword(L"EstimatedSize", value));
        EXPECT_EQ(row.written >= 0 ? row.written : 0, value);
        EXPECT_NE(ERROR_SUCCESS, RegQueryValueExW(list, L"EstimatedSize", nullptr, nullptr, nullptr, nullptr))
            << "the uninstall list itself";
        EXPECT_EQ(row.entry, registryKeyExists(HKEY_LOCAL_MACHINE, entryPath, processor::ownView)) << "none is made";
    }
    RegCloseKey(list);
}

TEST(CustomActionDeathTest, SetApplicationSizeRefusedItsEntryIsFatal)
{
    ScratchKey entry(HKEY_LOCAL_MACHINE, entryPath, processor::ownView);
    ScratchLog log;
    EXPECT_EXIT(
        {
            const ImportPatch refused("advapi32.dll", "RegOpenKeyExW", reinterpret_cast<void*>(refuseWriting),
                                      library().handle());
            InstallerSession session(Properties{{L"ProductCode", productCode}, {L"ApplicationSize", L"10"}});
            library().call("SetApplicationSize", session.handle());
        },
        ::testing::ExitedWithCode(3), "");
    EXPECT_NE(std::string::npos, log.text().find(" ERROR Framework Crt::handleTerminate() - before abort(): \r\n"))
        << log.text();
}

TEST(CustomActionTest, SetEncaseKorvalinFlagResetsOneAndTwoOnly)
{
    const std::wstring key = L"HKEY_LOCAL_MACHINE\\" + encase;
    const std::wstring reset = L"set \"CheckKorvalin\" to 0";
    enum Stored { dword, text, otherValue, otherView, refusedWriting };
    struct Row
    {
        Stored stored;  // as the REG_DWORD "CheckKorvalin" in the 32-bit view, or ...
        DWORD flag;
        bool reset;
        Lines lines;
    } rows[] = {
        {dword, 1, true, {L"read \"CheckKorvalin\" = 1", reset}},
        {dword, 2, true, {L"read \"CheckKorvalin\" = 2", reset}},
        {dword, 3, false, {L"read \"CheckKorvalin\" = 3", L"\"CheckKorvalin\" is neither 1 nor 2: nothing changed"}},
        {text, 1, false, {L"\"CheckKorvalin\" does not read as a number: nothing changed"}},
        {otherValue, 1, false, {L"no value \"CheckKorvalin\" under " + key + L": nothing changed"}},
        {otherView, 1, false, {L"no key " + key + L": nothing changed"}},
        {refusedWriting, 2, false,
         {L"read \"CheckKorvalin\" = 2", L"\"CheckKorvalin\" could not be written: nothing changed"}},
    };
    InstallerSession session;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.lines.front() + L" / " + row.lines.back());
        ScratchKey flagKey(HKEY_LOCAL_MACHINE, encase, row.stored == otherView ? KEY_WOW64_64KEY : KEY_WOW64_32KEY);
        const wchar_t* const name = row.stored == otherValue ? L"Other" : L"CheckKorvalin";
        if (row.stored == text)
            flagKey.setText(name, std::to_wstring(row.flag));
        else
            flagKey.setDword(name, row.flag);
        std::unique_ptr<ImportPatch> refused;
        if (row.stored == refusedWriting)
            refused.reset(new ImportPatch("advapi32.dll", "RegOpenKeyExW", reinterpret_cast<void*>(refuseWriting),
                                          library().handle()));
        EXPECT_EQ(row.lines, run("SetEncaseKorvalinFlag", session));
        DWORD value = 0;
        EXPECT_EQ(row.stored != text, flagKey.readDword(name, value)) << "a text stays one";
        EXPECT_EQ(row.reset || row.stored == text ? 0 : row.flag, value);
    }
}

// The rows run in order in one process: after a crash inside the client, the next
// calls still send and show their box.
TEST(CustomActionTest, SubscribeMailsThroughTheClientWhoseAnswerDecidesOnTheBox)
{
    const Properties mail = {
        {L"ADDRESS", L"news@example.com"},
        // Brackets, the engine's own syntax in a record's template, come out as they are.
        {L"SUBJECT", L"Subscribe [\x00e9t\x00e9] {\x03a9}"},
        {L"MESSAGE", L"Please add me.\r\nThanks"},
        {L"DLL_SEND_MESSAGE_FAILED", L"The subscription mail could not be sent."},
        {L"DLL_SEND_MESSAGE_FAILED_TITLE", L"Subscription"},
    };
    struct Row
    {
        const char* answer;
        Properties properties;
        bool box;
        const wchar_t* decision;
    } rows[] = {
        {"crash", mail, false, L"the mail failed inside the mail client: no mail, no box"},
        {"success", mail, false, L"the mail client took the mail"},
        {"refuse", mail, true, L"the mail client is missing or refused the mail: showing the box \"Subscription\""},
        // No property is checked: without them there is a mail all the same, and an empty box.
        {"refuse", {}, true, L"the mail client is missing or refused the mail: showing the box \"\""},
    };
    MailClient client;
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << row.answer << ", " << row.properties.size() << " properties");
        client.clear();
        client.answer(row.answer);
        InstallerSession session(row.properties);
        const std::wstring address = session.property(L"ADDRESS");
        const std::wstring subject = session.property(L"SUBJECT");
        MessageBoxWatcher watcher(session.property(L"DLL_SEND_MESSAGE_FAILED_TITLE"));
        const Lines lines = run("Subscribe", session);
        const SeenBox box = watcher.stop();
        ASSERT_EQ(row.box, box.seen) << "no box: is there a display (xvfb-run)?";
        EXPECT_EQ(row.box ? session.property(L"DLL_SEND_MESSAGE_FAILED") : L"", box.text);
        EXPECT_EQ(row.box, box.okOnly);
        EXPECT_EQ((Lines{L"read \"ADDRESS\" = \"" + address + L"\", \"SUBJECT\" = \"" + subject + L"\"",
                         L"asking the mail library \"" + MailClient::libraryPath() + L"\"", row.decision}),
                  lines);
        const std::vector<MailCall> sends = client.sends();
        ASSERT_EQ(1u, sends.size());
        EXPECT_EQ("SMTP:" + ansi(address), sends[0]["recipient0.address"]);
        EXPECT_EQ(ansi(subject), sends[0]["subject"]);
        EXPECT_EQ(ansi(session.property(L"MESSAGE")), sends[0]["note"]);
        EXPECT_EQ("0", sends[0]["flags"]) << "no mail window";
        EXPECT_EQ("3", sends[0]["messageFlags"]) << "unread, with a receipt requested";
    }
}
