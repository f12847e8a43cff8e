// The built WixKorvalin.dll, loaded as the engine's host loads it, against real
// installer sessions.
#include "support/Clock.h"
#include "support/ActionLibrary.h"
#include "support/InstallerSession.h"
#include "support/ScratchLog.h"
#include "support/TextHelpers.h"

#include <msiquery.h>
#include <psapi.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cwchar>
#include <cwctype>

namespace {

const char* const allActions[] = {"Subscribe", "SetDomain", "SetApplicationSize", "SetProperties",
                                  "SetEncaseKorvalinFlag"};

class ActionSessionTest : public ::testing::Test
{
protected:
    ActionLibrary dll;
};

}  // namespace

TEST_F(ActionSessionTest, EveryExportHasItsPlainAndDecoratedNameAtOneAddress)
{
    // x86 has the stdcall name beside the plain one; x86-64 has one convention and
    // plain names only.
    const bool decoratedNames = sizeof(void*) == 4;
    for (const char* name : allActions) {
        const std::string decorated = std::string("_") + name + "@4";
        ASSERT_NE(nullptr, dll.action(name)) << name;
        EXPECT_EQ(decoratedNames ? dll.action(name) : nullptr, dll.action(decorated.c_str())) << name;
    }
}

TEST_F(ActionSessionTest, SetPropertiesHandsTheTimeInMillisecondsToTheSession)
{
    InstallerSession session;
    EXPECT_EQ(L"", session.property(L"CURRENTTIMEMS"));
    InfoRecords records(session);
    const uint64_t before = nowInMilliseconds();
    EXPECT_EQ(0u, dll.call("SetProperties", session.handle()));
    const uint64_t after = nowInMilliseconds();
    const std::wstring value = session.property(L"CURRENTTIMEMS");
    EXPECT_EQ(std::vector<std::wstring>{L"set \"CURRENTTIMEMS\" = \"" + value + L"\""},
              records.linesOf(L"SetProperties"));
    ASSERT_EQ(13u, value.size()) << "13 digits from 2001 to 2286";
    for (wchar_t c : value)
        EXPECT_TRUE(std::iswdigit(c)) << "plain digits only";
    const uint64_t stamp = std::stoull(value);
    EXPECT_LE(before, stamp);
    EXPECT_GE(after, stamp);
}

// SetDomain is the exception: an empty upgrade code is malformed, and fatal (see
// RegistryActionsTest).
TEST_F(ActionSessionTest, EveryOtherActionReturnsZeroOnASessionWithEmptyProperties)
{
    InstallerSession session(Properties{{L"ApplicationSize", L""}, {L"ProductCode", L""}, {L"UpgradeCode", L""},
                              {L"ADDRESS", L""}, {L"SUBJECT", L""}, {L"MESSAGE", L""}});
    for (const char* name : allActions) {
        if (std::string(name) != "SetDomain") {
            EXPECT_EQ(0u, dll.call(name, session.handle())) << name;
        }
    }
    // Nothing an unfinished action could have set by mistake.
    EXPECT_EQ(L"", session.property(L"ALLUSERS"));
    EXPECT_EQ(L"", session.property(L"AllUsersDisabled"));
}

TEST_F(ActionSessionTest, AnActionCallLeavesNoStateBehind)
{
    InstallerSession first;
    InstallerSession second;
    EXPECT_EQ(0u, dll.call("SetProperties", first.handle()));
    EXPECT_EQ(L"", second.property(L"CURRENTTIMEMS")) << "an action writes only its own session";
    EXPECT_EQ(0u, dll.call("SetProperties", second.handle()));
    EXPECT_EQ(13u, second.property(L"CURRENTTIMEMS").size());
}

namespace {

// What the system reports as the process's private memory. Wine leaves it at 0.
size_t reportedPrivateBytes()
{
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    counters.cb = sizeof counters;
    GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters), sizeof counters);
    return counters.PrivateUsage;
}

// The same counted by hand: every committed private region of the address space,
// heaps and stacks among them.
size_t committedPrivateBytes()
{
    size_t total = 0;
    MEMORY_BASIC_INFORMATION region;
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region) == sizeof region;
         at = static_cast<const char*>(region.BaseAddress) + region.RegionSize) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE)
            total += region.RegionSize;
        if (static_cast<const char*>(region.BaseAddress) + region.RegionSize < at)
            break;
    }
    return total;
}

}  // namespace

// Every call brings the FW layer up and takes it down: handlers, fault translation,
// settings. Whatever a call leaves behind adds up here. Wine's engine itself keeps
// some memory for every value a property had, so the same number of bare
// MsiSetPropertyW calls on a session of their own is the baseline.
TEST_F(ActionSessionTest, TenThousandCallsInOneSessionLeaveThePrivateMemoryWhereItWas)
{
    const int calls = 10000;
    InstallerSession bare;
    for (int i = 0; i < 100; ++i)
        MsiSetPropertyW(bare.handle(), L"CURRENTTIMEMS", L"1600000000000");
    const size_t bareBefore = committedPrivateBytes();
    for (int i = 0; i < calls; ++i) {
        wchar_t value[16];
        std::swprintf(value, 16, L"16%011d", i);
        MsiSetPropertyW(bare.handle(), L"CURRENTTIMEMS", value);
    }
    const int64_t bareGrowth = int64_t(committedPrivateBytes()) - int64_t(bareBefore);

    InstallerSession session;
    const ActionLibrary::Action setProperties = dll.action("SetProperties");
    ASSERT_NE(nullptr, setProperties);
    for (int i = 0; i < 100; ++i)
        setProperties(session.handle());
    const size_t reportedBefore = reportedPrivateBytes();
    const size_t before = committedPrivateBytes();
    int failed = 0;
    for (int i = 0; i < calls; ++i) {
        if (setProperties(session.handle()) != 0)
            ++failed;
    }
    const size_t after = committedPrivateBytes();
    const size_t reportedAfter = reportedPrivateBytes();
    const int64_t growth = int64_t(after) - int64_t(before);
    std::printf("%d calls of SetProperties: committed private memory %u KB before, %u KB after, %+d KB; "
                "%d bare MsiSetPropertyW calls: %+d KB; PrivateUsage as reported: %u KB before, %u KB after\n",
                calls, unsigned(before / 1024), unsigned(after / 1024), int(growth / 1024), calls,
                int(bareGrowth / 1024), unsigned(reportedBefore / 1024), unsigned(reportedAfter / 1024));
    EXPECT_EQ(0, failed);
    EXPECT_EQ(13u, session.property(L"CURRENTTIMEMS").size());
    ASSERT_NE(0u, before);
    // A leak of 50 bytes a call would show as 500 KB above the engine's own share.
    EXPECT_LT(growth, bareGrowth + 500 * 1024);
}

// The library's terminate handler writes its line to the log and ends the host with
// abort's exit code, without abort's message (a box, in a windowed host).
TEST(ActionFrameDeathTest, AnExceptionNoActionTakesEndsInTheTerminateHandler)
{
    ScratchLog log;
    EXPECT_EXIT(
        {
            ActionLibrary probe("KORVALIN_PROBE_DLL");
            InstallerSession session;
            probe.call("ThrowUncaught", session.handle());
        },
        ::testing::ExitedWithCode(3), lacks("terminate called"));
    EXPECT_NE(std::string::npos, log.text().find(" ERROR Framework Crt::handleTerminate() - before abort(): \r\n"))
        << log.text();
}
