// The property operations of the action object against a real installer session.
#include "actions/CustomAction.h"

#include "support/InstallerSession.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using Framework::String;

TEST(CustomActionTest, ReadsPropertiesOfAnyLength)
{
    const std::wstring longValue(1000, L'v');
    InstallerSession session(Properties{{L"SHORT", L"x"}, {L"LONG", longValue}});
    // Set at run time: the package database keeps its texts in its code page.
    session.setProperty(L"WIDE", L"gr\u00fc\u00df \u65e5\u672c");
    CustomAction action(session.handle());
    EXPECT_EQ(String(L"x"), action.getProperty("SHORT"));
    EXPECT_EQ(String(longValue.c_str()), action.getProperty("LONG"));
    EXPECT_EQ(1000u, action.getProperty("LONG").length()) << "no terminator counted";
    EXPECT_EQ(String(L"gr\u00fc\u00df \u65e5\u672c"), action.getProperty(String(L"WIDE")));
}

TEST(CustomActionTest, AMissingPropertyOrAFailedReadIsEmpty)
{
    {
        InstallerSession session;
        CustomAction action(session.handle());
        EXPECT_EQ(String(), action.getProperty("NOT_SET"));
        EXPECT_EQ(String(), action.getProperty("NOT_SET"));
        EXPECT_EQ(String(), action.getProperty(String()));
    }
    // A handle the engine never gave out: both calls fail and write nothing, so the
    // read's one-character buffer must not show what a freed block left in it.
    CustomAction unknown(0);
    for (int attempt = 0; attempt < 3; ++attempt) {
        {
            String leftover(1u);
            leftover.refAt(0) = L'x';
        }
        EXPECT_EQ(String(), unknown.getProperty("ANY")) << "attempt " << attempt;
    }
}

TEST(CustomActionTest, TwoReadsGiveIndependentStrings)
{
    InstallerSession session(Properties{{L"NAME", L"value"}});
    CustomAction action(session.handle());
    String first = action.getProperty("NAME");
    const String second = action.getProperty("NAME");
    first.refAt(0) = L'V';
    first.append(L"!");
    EXPECT_EQ(String(L"value"), second);
    EXPECT_EQ(String(L"Value!"), first);
}

TEST(CustomActionTest, SetPropertyWritesAndAnEmptyValueClears)
{
    InstallerSession session(Properties{{L"KEEP", L"old"}});
    CustomAction action(session.handle());
    EXPECT_EQ(0u, action.setProperty("KEEP", String(L"new \u00e9")));
    EXPECT_EQ(L"new \u00e9", session.property(L"KEEP"));
    EXPECT_EQ(String(L"new \u00e9"), action.getProperty("KEEP"));
    action.setProperty("KEEP", String());
    EXPECT_EQ(L"", session.property(L"KEEP"));
}
