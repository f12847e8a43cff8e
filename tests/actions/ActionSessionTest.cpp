// The built WixKorvalin.dll, loaded as the engine's host loads it, against real
// installer sessions.
#include "support/Clock.h"
#include "support/ActionLibrary.h"
#include "support/InstallerSession.h"
#include "support/ScratchLog.h"
#include "support/TextHelpers.h"

#include <msiquery.h>
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
    const uint64_t before = nowInMilliseconds();
    EXPECT_EQ(0u, dll.call("SetProperties", session.handle()));
    const uint64_t after = nowInMilliseconds();
    const std::wstring value = session.property(L"CURRENTTIMEMS");
    ASSERT_EQ(13u, value.size()) << "13 digits from 2001 to 2286";
    for (wchar_t c : value)
        EXPECT_TRUE(std::iswdigit(c)) << "plain digits only";
    const uint64_t stamp = std::stoull(value);
    EXPECT_LE(before, stamp);
    EXPECT_GE(after, stamp);
}

// Properties empty (SetDomain's code well formed, found nowhere): every action ends
// quietly, and none sets what only SetDomain may set, and only when it finds the code.
TEST_F(ActionSessionTest, EveryActionOnASessionWithoutItsInputSetsNothing)
{
    InstallerSession session(Properties{{L"ApplicationSize", L""}, {L"ProductCode", L""},
                                        {L"UpgradeCode", L"{00000000-1111-2222-3333-444444444444}"},
                                        {L"ADDRESS", L""}, {L"SUBJECT", L""}, {L"MESSAGE", L""}});
    for (const char* name : allActions) {
        if (std::string(name) != "Subscribe")  // it would show its box
            dll.call(name, session.handle());
    }
    EXPECT_EQ(L"", session.property(L"ALLUSERS"));
    EXPECT_EQ(L"", session.property(L"AllUsersDisabled"));
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
