#include "Framework/Exception.h"

#include "Framework/Exceptions.h"
#include "Framework/Io/Exceptions.h"
#include "Framework/OsException.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace Framework;

namespace {

std::string text(const String& s)
{
    return narrowForTest(s);
}

bool startsWith(const std::string& s, const std::string& prefix)
{
    return s.compare(0, prefix.size(), prefix) == 0;
}

}  // namespace

TEST(ExceptionTest, TheSiteIsTheTagAndTheLineInHex)
{
    std::unique_ptr<ErrorException> e(new ErrorException(ThrowSite{"00000000000000000000000000000000", 845}));
    EXPECT_EQ("00000000000000000000000000000000" "34D", text(e->siteText()));
    EXPECT_STREQ("0000000000000000000000000000000034D", e->message().c_str());
    const char* what = e->what();
    EXPECT_STREQ("Error", what) << "the product has no name";
    EXPECT_EQ(what, e->what()) << "built once";
}

TEST(ExceptionTest, CausesChainThroughTheCurrentCell)
{
    EXPECT_EQ(nullptr, currentException());
    std::unique_ptr<ErrorException> alone(new ErrorException(SITE));
    EXPECT_EQ(nullptr, alone->getCause());
    EXPECT_EQ(std::string::npos, text(alone->description(true)).find("\nCause:\n"));
    EXPECT_EQ(alone.get(), currentException());
    alone.reset();
    EXPECT_EQ(nullptr, currentException());

    // A handler that builds a new exception before deleting the caught one.
    Exception* outer = nullptr;
    try {
        throw new RangeException(SITE, 0, 3, 5);
    } catch (RangeException* caught) {
        outer = new EnvironmentException(SITE, String(L"HOME"));
        EXPECT_EQ(caught, outer->getCause());
    }
    ASSERT_NE(nullptr, outer);
    const std::string full = text(outer->description(true));
    const std::string causeText = text(outer->getCause()->description(true));
    EXPECT_TRUE(startsWith(full, "Missing element: HOME\n")) << full;
    EXPECT_NE(std::string::npos, full.find("\nCause:\n" + causeText)) << full;
    EXPECT_TRUE(startsWith(causeText, "RangeFrom: 0\nRangeTo: 3\nIndex: 5\n")) << causeText;
    EXPECT_EQ(std::string::npos, text(outer->description(false)).find("Cause")) << "description(false) leaves it out";
    EXPECT_EQ(std::string(outer->details().c_str()), full);
    delete outer;  // deletes the cause with it
    EXPECT_EQ(nullptr, currentException());
}

namespace {

DWORD WINAPI buildOnThisThread(void* out)
{
    *static_cast<Exception**>(out) = new ErrorException(SITE);
    return 0;
}

}  // namespace

TEST(ExceptionTest, DeletingAnExceptionThatIsNotCurrentLeavesTheCell)
{
    // One built and left alive on another thread is not this thread's current one.
    Exception* current = new ErrorException(SITE);
    Exception* elsewhere = nullptr;
    HANDLE thread = CreateThread(nullptr, 0, buildOnThisThread, &elsewhere, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    ASSERT_NE(nullptr, elsewhere);
    EXPECT_EQ(nullptr, elsewhere->getCause()) << "chains never cross threads";
    delete elsewhere;
    EXPECT_EQ(current, currentException());
    delete current;
    EXPECT_EQ(nullptr, currentException());
}

namespace {

// Whether a handler for Handler takes the thrown object; deleted through the class
// the handler names, so that the virtual destructor is found from there.
template <class Handler, class Thrown>
bool caughtAs(Thrown* thrown)
{
    try {
        try {
            throw thrown;
        } catch (Handler* e) {
            delete e;
            return true;
        }
    } catch (fw_exception* e) {  // apart, so that Handler may be fw_exception itself
        delete e;
        return false;
    }
}

}  // namespace

TEST(ExceptionTest, MixedClassesAreFoundByEveryHandlerAbove)
{
    EXPECT_TRUE(caughtAs<ErrorException>(new LookupException(SITE)));
    EXPECT_TRUE(caughtAs<Exception>(new LookupException(SITE)));
    EXPECT_TRUE(caughtAs<fw_exception>(new LookupException(SITE)));
    EXPECT_TRUE(caughtAs<Framework::OsException>(
        new Io::OsException(SITE, OsError::fromLastError(2), ~0ull, String(), String())));
    EXPECT_TRUE(caughtAs<Io::ErrorException>(
        new Io::OsException(SITE, OsError::fromLastError(2), ~0ull, String(), String())));
    EXPECT_TRUE(caughtAs<SearchException>(new Io::PathNotFoundException(SITE, String(L"C:\\missing"))));
    EXPECT_FALSE(caughtAs<Io::ErrorException>(new LookupException(SITE)));
    EXPECT_EQ(nullptr, currentException());
}

TEST(ExceptionTest, OsExceptionTextsAndQuestions)
{
    std::unique_ptr<Framework::OsException> denied(
        new Framework::OsException(SITE, OsError::fromLastError(5), 0, String(L"RegOpenKeyExW"), String(L"Open failed")));
    const std::string d = text(denied->description(false));
    EXPECT_TRUE(startsWith(d, "Open failed\n" + text(osErrorText(5)) + "\n")) << d;
    EXPECT_EQ(std::string::npos, d.find("Code 0x"));
    EXPECT_EQ(std::string::npos, d.find("RegOpenKeyExW")) << "the operation is kept, never printed";
    EXPECT_TRUE(denied->isAccessDenied());
    denied.reset();

    std::unique_ptr<Framework::OsException> unknown(
        new Framework::OsException(SITE, OsError::fromLastError(0x2FFFFFFF), ~0ull, String(), String()));
    const std::string u = text(unknown->description(false));
    EXPECT_NE(std::string::npos, u.find("\n805306367\n")) << "the code in decimal stands in for a missing text: " << u;
    EXPECT_NE(std::string::npos, u.find("Code 0xFFFFFFFFFFFFFFFF\n")) << u;
    unknown.reset();

    errno = 13;
    std::unique_ptr<Framework::OsException> fromErrno(new Framework::OsException(SITE, OsError(false), 0, String(), String()));
    EXPECT_TRUE(fromErrno->isAccessDenied());
    EXPECT_FALSE(fromErrno->isSharingViolation());
    fromErrno.reset();
    std::unique_ptr<Framework::OsException> win32Thirteen(
        new Framework::OsException(SITE, OsError::fromLastError(13), 0, String(), String()));
    EXPECT_FALSE(win32Thirteen->isAccessDenied());
    win32Thirteen.reset();
}

TEST(ExceptionTest, ATextFormatExceptionNamesItsPlace)
{
    std::unique_ptr<TextFormatException> syntax(new TextFormatException(
        SITE, 3, 7, String(L"key = 'x"), String(L"Unclosed quote"), String(L"C:\\a.ini")));
    EXPECT_TRUE(startsWith(text(syntax->description(false)),
                           "fileName: C:\\a.ini\nline: 3\ncolumn: 7\nmessage: Unclosed quote\ncitation: key = 'x\n"));
}

namespace {

Exception* seenPrevious = nullptr;
Exception* seenCurrent = nullptr;
void recordUnrecoverable(Exception* previous, Exception* current)
{
    seenPrevious = previous;
    seenCurrent = current;
}

struct BuildsAnExceptionWhenDestroyed
{
    Exception** made;
    ~BuildsAnExceptionWhenDestroyed() { *made = new ErrorException(SITE); }
};

}  // namespace

TEST(ExceptionTest, AnExceptionBuiltDuringUnwindingIsUnrecoverable)
{
    const UnrecoverableHandler previous = setUnrecoverableHandler(recordUnrecoverable);
    Exception* duringUnwind = nullptr;
    RangeException* inFlight = nullptr;
    try {
        BuildsAnExceptionWhenDestroyed guard{&duringUnwind};
        inFlight = new RangeException(SITE, 1, 2, 3);
        throw inFlight;
    } catch (RangeException* caught) {
        EXPECT_EQ(inFlight, caught);
    }
    setUnrecoverableHandler(previous);
    EXPECT_EQ(inFlight, seenPrevious);
    EXPECT_EQ(duringUnwind, seenCurrent);
    ASSERT_NE(nullptr, duringUnwind);
    EXPECT_EQ(nullptr, duringUnwind->getCause()) << "no nesting of throws in flight";
    EXPECT_EQ(inFlight, currentException());
    delete duringUnwind;
    delete inFlight;
    EXPECT_EQ(nullptr, currentException());
}

TEST(ExceptionDeathTest, TheDefaultUnrecoverableHandlerPrintsAndExitsWithOne)
{
    EXPECT_EXIT(
        {
            Exception* made = nullptr;
            try {
                BuildsAnExceptionWhenDestroyed guard{&made};
                throw new RangeException(SITE, 0, 3, 5);
            } catch (...) {
            }
        },
        ::testing::ExitedWithCode(1),
        "Unrecoverable uncaught error\nRangeFrom: 0\nRangeTo: 3\nIndex: 5\n\\w+\nStack dump:\r\nModule: "
        "framework_tests\\.exe\r\nBase: \\w+\r\n\\w+\r\n");
}
