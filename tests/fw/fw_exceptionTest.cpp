#include "fw/fw_exception.h"

#include "Framework/Exceptions.h"
#include "fw/fw_assert.h"
#include "fw/fw_raise.h"
#include "fw/fw_library.h"
#include "support/ExpectThrown.h"
#include "support/MailClient.h"
#include "support/TextHelpers.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

std::string text(const fw_string& s)
{
    return s.c_str();
}

std::string upperHex(uint32_t value)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%X", value);
    return digits;
}

// Keeps the nesting count of the tests apart: each test sees the live objects it
// made, whatever earlier tests left behind.
class fw_exceptionTest : public ::testing::Test
{
protected:
    void SetUp() override { fw_exception_nesting = 0; }
};

}  // namespace

TEST_F(fw_exceptionTest, TitlesMessagesAndDetailsOfTheFamily)
{
    // Each one alone, so that the nesting count stays low.
    auto check = [](fw_exception* made, const char* title, const char* message) {
        std::unique_ptr<fw_exception> e(made);
        EXPECT_STREQ(title, e->title()) << message;
        EXPECT_EQ(message, text(e->message()));
    };
    check(new fw_exception(fw_string("root"), fw_string()), "General exception", "root");
    check(new fw_exception_assert(fw_string("L"), fw_string("m"), fw_string("d"), fw_string()), "Assert exception",
          "m : d");
    check(new fw_exception_purecall(), "Assert exception", "Pure Virtual Function Call");
    check(new fw_exception_info(fw_string("for the user")), "Info exception", "for the user");
    check(new fw_exception_memory(), "memory exception",
          "Insufficient memory to perform the operation.\r\n\r\nYou can free additional memory by closing\r\n"
          "other applications.");

    std::unique_ptr<fw_exception> info(new fw_exception_info(fw_string("i")));
    const std::string dump = text(info->details());
    EXPECT_EQ(0u, dump.find("Stack dump:\r\nModule: framework_tests.exe\r\n")) << dump;
    info.reset();
    std::unique_ptr<fw_exception> assertion(
        new fw_exception_assert(fw_string("L"), fw_string("m"), fw_string(), fw_string("more")));
    const std::string withExtra = text(assertion->details());
    EXPECT_EQ(0u, withExtra.find("Stack dump:\r\n")) << withExtra;
    EXPECT_EQ(withExtra.size() - 8, withExtra.rfind("\r\n\r\nmore")) << "the extra text goes behind the dump";
    assertion.reset();

    // The message of an assertion: message and detail, or whichever is there.
    EXPECT_EQ("d", text(fw_exception_assert(fw_string(), fw_string(), fw_string("d"), fw_string()).message()));
    const fw_exception_assert plain(fw_string(), fw_string("m"), fw_string(), fw_string());
    EXPECT_EQ(0u, text(plain.details()).find("Stack dump:\r\n")) << "no extra: the dump alone";
    EXPECT_EQ(std::string::npos, text(plain.details()).find("\r\n\r\n"));
}

TEST_F(fw_exceptionTest, DeepNestingSilencesAssertionsOnly)
{
    std::unique_ptr<fw_exception> assertion(
        new fw_exception_assert(fw_string("L"), fw_string("assert text"), fw_string(), fw_string()));
    std::unique_ptr<fw_exception> info(new fw_exception_info(fw_string("info text")));
    std::unique_ptr<fw_exception> third(new fw_exception_info(fw_string("3")));
    EXPECT_EQ(3, fw_exception_nesting);
    EXPECT_EQ("assert text", text(assertion->message()));
    std::unique_ptr<fw_exception> fourth(new fw_exception_info(fw_string("4")));
    EXPECT_EQ(4, fw_exception_nesting);
    EXPECT_EQ("", text(assertion->message()));
    EXPECT_EQ("info text", text(info->message()));
    fourth.reset();
    EXPECT_EQ("assert text", text(assertion->message()));

    // Deleting more than were counted leaves the count at 0.
    fw_exception_nesting = 1;
    third.reset();
    info.reset();
    assertion.reset();
    EXPECT_EQ(0, fw_exception_nesting);
}

TEST_F(fw_exceptionTest, HandlersOfTheBasesCatchTheDerived)
{
    int caught = 0;
    try {
        fw_exception_memory* e = new fw_exception_memory();
        fw_raise(e);
        throw e;
    } catch (fw_exception_info* e) {
        std::unique_ptr<fw_exception_info> own(e);
        EXPECT_STREQ("memory exception", e->title());
        ++caught;
    }
    try {
        throw new fw_exception_purecall();
    } catch (Framework::Exception*) {
        ADD_FAILURE() << "the FW family is not a Framework exception";
    } catch (fw_exception_assert* e) {
        std::unique_ptr<fw_exception_assert> own(e);
        ++caught;
    }
    EXPECT_EQ(2, caught);
    EXPECT_EQ(0, fw_exception_nesting);
}

TEST_F(fw_exceptionTest, AssertionTextsNameTheSourceTagAndTheLineInHex)
{
    auto e = expectThrown<fw_exception_assert>([] { fw_assert_failed("00000000000000000000000000000000", 845); });
    ASSERT_TRUE(e);
    EXPECT_EQ("assertion failed at 00000000000000000000000000000000" "34D", text(e->message()));
    EXPECT_EQ("00000000000000000000000000000000" "34D", text(e->get_location()));
    EXPECT_EQ(0u, text(e->details()).find("Stack dump:\r\n"));
    EXPECT_EQ(e.get(), fw_current_exception()) << "raised before it was thrown";
    e.reset();
    EXPECT_EQ(nullptr, fw_current_exception()) << "deleting the current exception empties the slot";

    const uint32_t line = __LINE__ + 1;
    auto here = expectThrown<fw_exception_assert>([] { FW_ASSERT(1 + 1 == 3); });
    ASSERT_TRUE(here);
    // The tag of this file's path, the same in every build and in both layers.
    const std::string tag = "83CA2AD96F8E99DBA0FB7FCD578C8930";
    EXPECT_EQ(tag + upperHex(line), text(here->get_location()));
    EXPECT_EQ("assertion failed at " + tag + upperHex(line), text(here->message()));
    EXPECT_EQ(tag, SITE.tag);
    here.reset();
    EXPECT_NO_THROW(FW_ASSERT(1 + 1 == 2));

    // A failed check inside the layer carries the tag of the file it is in.
    auto inString = expectThrown<fw_exception_assert>([] { fw_string("ab").substr(2, 1); });
    ASSERT_TRUE(inString);
    EXPECT_EQ(0u, text(inString->get_location()).find("46AEA0D4276640A7C7BC00BC87718376"))
        << "fw/fw_string.cpp: " << text(inString->get_location());
}

namespace {

DWORD WINAPI raiseOnThisThread(void* out)
{
    fw_exception* e = new fw_exception_info(fw_string("elsewhere"));
    fw_raise(e);
    *static_cast<fw_exception**>(out) = e;
    return fw_current_exception() == e ? 0 : 1;
}

}  // namespace

TEST_F(fw_exceptionTest, TheCurrentExceptionSlotIsPerThreadAndMadeWhenNeeded)
{
    fw_tls_slot_release();
    EXPECT_EQ(-1, fw_tls_slot);
    EXPECT_EQ(nullptr, fw_current_exception());
    fw_clear_current();
    EXPECT_EQ(-1, fw_tls_slot) << "reading and clearing allocate nothing";

    std::unique_ptr<fw_exception> first(new fw_exception_info(fw_string("first")));
    fw_raise(first.get());
    EXPECT_NE(-1, fw_tls_slot);
    EXPECT_EQ(first.get(), fw_current_exception());

    fw_exception* elsewhere = nullptr;
    HANDLE thread = CreateThread(nullptr, 0, raiseOnThisThread, &elsewhere, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    DWORD threadResult = 2;
    GetExitCodeThread(thread, &threadResult);
    CloseHandle(thread);
    EXPECT_EQ(0u, threadResult) << "the other thread saw its own exception";
    EXPECT_EQ(first.get(), fw_current_exception()) << "and this thread still sees its own";
    delete elsewhere;
    EXPECT_EQ(first.get(), fw_current_exception()) << "deleting another one leaves the slot";

    SetLastError(1234);
    fw_clear_current();
    EXPECT_EQ(nullptr, fw_current_exception());
    first.reset();
    EXPECT_EQ(1234u, GetLastError()) << "the slot leaves the last error alone";

    // A released slot is made anew, and reads empty on every thread.
    std::unique_ptr<fw_exception> second(new fw_exception_info(fw_string("second")));
    fw_raise(second.get());
    fw_tls_slot_release();
    EXPECT_EQ(nullptr, fw_current_exception());
    EXPECT_TRUE(fw_tls_slot_acquire());
    EXPECT_EQ(nullptr, fw_current_exception());
}

namespace {

// Fails while an exception is in flight: a destructor run by the unwinding.
struct RaisesWhenDestroyed
{
    ~RaisesWhenDestroyed()
    {
        fw_exception* e = new fw_exception_info(fw_string("on top"));
        fw_raise(e);
        delete e;  // not reached: the process has ended
    }
};

// The failure in flight, and the one on top of it from the destructor.
void failWhileUnwinding()
{
    try {
        RaisesWhenDestroyed guard;
        fw_exception* e = new fw_exception_info(fw_string("in flight"));
        fw_raise(e);
        throw e;
    } catch (fw_exception* e) {
        delete e;
    }
}

}  // namespace

// The error report at the end is silent without a support address: no mail, no word,
// with the layer up and with it down.
TEST(fw_exceptionDeathTest, AFailureDuringUnwindingEndsTheProcessWithOne)
{
    MailClient client;
    EXPECT_EXIT(
        {
            fw_library layer;
            failWhileUnwinding();
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), lacks("Warning"));
    EXPECT_TRUE(client.calls().empty());

    // With the slot empty the new exception stands in both places.
    EXPECT_EXIT(
        {
            fw_clear_current();
            try {
                RaisesWhenDestroyed guard;
                throw 1;
            } catch (...) {
            }
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), lacks("Warning"));
    EXPECT_TRUE(client.calls().empty());
}

TEST(fw_exceptionDeathTest, TheErrorReportMailsBothFailuresTheLaterFirst)
{
    MailClient client;
    EXPECT_EXIT(
        {
            fw_library layer;
            fw_set_support_address(fw_string("support@example.com"));
            fw_set_product_name(fw_string("Korvalin"));
            fw_set_product_version({2, 5, 77});
            failWhileUnwinding();
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), "");

    const std::vector<MailCall> sends = client.sends();
    ASSERT_EQ(1u, sends.size());
    const MailCall& mail = sends[0];
    EXPECT_EQ("SMTP:support@example.com", mail["recipient0.address"]);
    EXPECT_EQ("Vendor", mail["recipient0.name"]);
    EXPECT_EQ("0", mail["flags"]) << "no Ctrl key down, no mail window";
    const std::string productLine = "Korvalin 2.5 build 77 FW";
    EXPECT_EQ(0u, mail["subject"].find("Error Report - " + productLine)) << mail["subject"];
    const std::string note = mail["note"];
    EXPECT_EQ(0u, note.find(productLine)) << note;
    const std::string messages = "\n\nDouble nested error:\r\non top\r\nInternal error:\r\nin flight\r\n\r\n";
    EXPECT_NE(std::string::npos, note.find(messages)) << note;
}

TEST(fw_exceptionDeathTest, AReportThatCannotBeSentSaysSoOnTheErrorStream)
{
    MailClient client;
    const char missing[] = "Z:\\nowhere\\no-mail-client.dll";
    client.setDllPath(REG_SZ, missing, sizeof missing);
    EXPECT_EXIT(
        {
            fw_library layer;
            fw_set_support_address(fw_string("support@example.com"));
            failWhileUnwinding();
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), "\nWarning: Failed to send message\n");
}

// A fault in the mail client while the report is sent cannot start a report of its
// own, nor stop the end; called directly, the report still leaves further faults to
// end the process quietly.
TEST(fw_exceptionDeathTest, AFailureInsideTheReportEndsTheProcessAllTheSame)
{
    MailClient client;
    client.answer("crash");
    EXPECT_EXIT(
        {
            fw_library layer;
            fw_set_support_address(fw_string("support@example.com"));
            failWhileUnwinding();
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), "");
    EXPECT_EQ(1u, client.sends().size());

    EXPECT_EXIT(
        {
            SetErrorMode(SEM_NOGPFAULTERRORBOX);
            fw_library layer;
            fw_set_support_address(fw_string("support@example.com"));
            SetUnhandledExceptionFilter(nullptr);
            fw_exception* e = new fw_exception_info(fw_string("x"));
            fw_report_fatal(e, e);  // the client's fault stays inside
            LPTOP_LEVEL_EXCEPTION_FILTER filter = SetUnhandledExceptionFilter(nullptr);
            std::exit(filter && filter(nullptr) == EXCEPTION_EXECUTE_HANDLER ? 7 : 3);
        },
        ::testing::ExitedWithCode(7), "");
}
