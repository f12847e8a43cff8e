// The built WixKorvalin.dll, loaded as the engine's host loads it, against real
// installer sessions.
#include "support/Clock.h"
#include "support/ActionLibrary.h"
#include "support/InstallerSession.h"

#include <gtest/gtest.h>

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
    for (const char* name : allActions) {
        const std::string decorated = std::string("_") + name + "@4";
        ASSERT_NE(nullptr, dll.action(name)) << name;
        EXPECT_EQ(dll.action(name), dll.action(decorated.c_str())) << name;
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

    // The decorated name runs the same action and overwrites the value.
    session.setProperty(L"CURRENTTIMEMS", L"0");
    EXPECT_EQ(0u, dll.call("_SetProperties@4", session.handle()));
    EXPECT_EQ(13u, session.property(L"CURRENTTIMEMS").size());
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

TEST(ActionFrameDeathTest, AnExceptionNoActionTakesEndsInTheTerminateHandler)
{
    EXPECT_DEATH(
        {
            ActionLibrary probe("KORVALIN_PROBE_DLL");
            InstallerSession session;
            probe.call("ThrowUncaught", session.handle());
        },
        "terminate called after throwing an instance of 'Framework::ErrorException\\*'");
}
