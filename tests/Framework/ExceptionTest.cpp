#include "Framework/Exception.h"

#include "Framework/Exceptions.h"
#include "Framework/OsException.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

using namespace Framework;

namespace {

// The description of a new exception, deleted at once so that it is no one's cause.
std::string describedOnce(Exception* made)
{
    const std::unique_ptr<Exception> owned(made);
    return narrowForTest(owned->description(false));
}

}  // namespace

TEST(ExceptionTest, TheSiteIsTheTagAndTheLineInHex)
{
    std::unique_ptr<ErrorException> e(new ErrorException(ThrowSite{"00000000000000000000000000000000", 845}));
    EXPECT_STREQ("0000000000000000000000000000000034D", e->message().c_str());
    EXPECT_STREQ("Error", e->what()) << "the product has no name";
}

// A handler that builds a new exception before deleting the caught one chains them;
// one built on another thread is not this thread's.
TEST(ExceptionTest, CausesChainOnTheirOwnThread)
{
    Exception* outer = nullptr;
    try {
        throw new RangeException(SITE, 0, 3, 5);
    } catch (RangeException* caught) {
        outer = new EnvironmentException(SITE, String(L"HOME"));
        EXPECT_EQ(caught, outer->getCause());
    }
    ASSERT_NE(nullptr, outer->getCause());
    const std::string full = narrowForTest(outer->description(true));
    const std::string cause = narrowForTest(outer->getCause()->description(true));
    EXPECT_EQ(0u, full.find("Missing element: HOME\n")) << full;
    EXPECT_EQ(0u, cause.find("RangeFrom: 0\nRangeTo: 3\nIndex: 5\n")) << cause;
    EXPECT_NE(std::string::npos, full.find("\nCause:\n" + cause)) << full;
    EXPECT_EQ(std::string::npos, narrowForTest(outer->description(false)).find("Cause")) << full;

    Exception* elsewhere = nullptr;
    std::thread([&] { elsewhere = new ErrorException(SITE); }).join();
    EXPECT_EQ(nullptr, elsewhere->getCause());
    delete elsewhere;
    EXPECT_EQ(outer, currentException());
    delete outer;  // and its cause with it
    EXPECT_EQ(nullptr, currentException());
}

TEST(ExceptionTest, DescriptionsPutTheirFieldsFirst)
{
    const std::string denied = describedOnce(
        new Framework::OsException(SITE, OsError::fromLastError(5), 0, L"RegOpenKeyExW", L"Open failed"));
    EXPECT_EQ(0u, denied.find("Open failed\n" + narrowForTest(osErrorText(5)) + "\n")) << denied;
    EXPECT_TRUE(denied.find("Code 0x") == std::string::npos && denied.find("RegOpenKeyExW") == std::string::npos)
        << "no code line, and the call is never printed: " << denied;
    EXPECT_EQ(0u, describedOnce(new Framework::OsException(SITE, OsError::fromLastError(0x2FFFFFFF), ~0ull, L"", L"x"))
                      .find("x\n805306367\nCode 0xFFFFFFFFFFFFFFFF\n"))
        << "the code in decimal stands in for a missing text";
    EXPECT_EQ(0u, describedOnce(new TextFormatException(SITE, 3, 7, L"key = 'x", L"Unclosed quote", L"C:\\a.ini"))
                      .find("fileName: C:\\a.ini\nline: 3\ncolumn: 7\nmessage: Unclosed quote\ncitation: key = 'x\n"));

    EXPECT_TRUE(Framework::OsException(SITE, OsError::fromLastError(5), 0, L"", L"").isAccessDenied());
    EXPECT_FALSE(Framework::OsException(SITE, OsError::fromLastError(13), 0, L"", L"").isAccessDenied());
}
