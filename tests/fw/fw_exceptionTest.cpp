#include "fw/fw_exception.h"

#include "Framework/Exceptions.h"
#include "fw/fw_assert.h"
#include "fw/fw_raise.h"
#include "fw/fw_library.h"
#include "support/ExpectThrown.h"
#include "support/FwText.h"
#include "support/MailClient.h"
#include "support/TextHelpers.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

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
    auto check = [](fw_exception* made, const char* title, const char* message) {
        std::unique_ptr<fw_exception> e(made);
        EXPECT_STREQ(title, e->title()) << message;
        EXPECT_EQ(message, text(e->message()));
    };
    check(new fw_exception(fw_string("root"), fw_string()), "General exception", "root");
    check(new fw_exception_assert(fw_string("L"), fw_string("m"), fw_string("d"), fw_string()), "Assert exception",
          "m : d");
    check(new fw_exception_assert(fw_string("L"), fw_string(), fw_string("d"), fw_string()), "Assert exception", "d");
    check(new fw_exception_purecall(), "Assert exception", "Pure Virtual Function Call");
    check(new fw_exception_info(fw_string("for the user")), "Info exception", "for the user");
    check(new fw_exception_memory(), "memory exception",
          "Insufficient memory to perform the operation.\r\n\r\nYou can free additional memory by closing\r\n"
          "other applications.");

    // The extra text of an assertion goes behind the stack dump, after a blank line.
    fw_exception_assert withExtra(fw_string("L"), fw_string("m"), fw_string(), fw_string("more"));
    const std::string details = text(withExtra.details());
    EXPECT_EQ(0u, details.find("Stack dump:\r\n")) << details;
    EXPECT_EQ(details.size() - 8, details.rfind("\r\n\r\nmore")) << details;
}

TEST_F(fw_exceptionTest, DeepNestingSilencesAssertionsOnly)
{
    std::unique_ptr<fw_exception> assertion(
        new fw_exception_assert(fw_string("L"), fw_string("assert text"), fw_string(), fw_string()));
    std::unique_ptr<fw_exception> info(new fw_exception_info(fw_string("info text")));
    std::unique_ptr<fw_exception> third(new fw_exception_info(fw_string("3")));
    EXPECT_EQ("assert text", text(assertion->message())) << "3 alive";
    std::unique_ptr<fw_exception> fourth(new fw_exception_info(fw_string("4")));
    EXPECT_EQ("", text(assertion->message())) << "4 alive";
    EXPECT_EQ("info text", text(info->message()));
    fourth.reset();
    EXPECT_EQ("assert text", text(assertion->message())) << "3 alive again";

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
        throw new fw_exception_memory();
    } catch (fw_exception_info* e) {
        delete e;
        ++caught;
    }
    try {
        throw new fw_exception_purecall();
    } catch (Framework::Exception*) {
        ADD_FAILURE() << "the FW family is not a Framework exception";
    } catch (fw_exception_assert* e) {
        delete e;
        ++caught;
    }
    EXPECT_EQ(2, caught);
}

TEST_F(fw_exceptionTest, AssertionTextsNameTheSourceTagAndTheLineInHex)
{
    auto e = expectThrown<fw_exception_assert>([] { fw_assert_failed("00000000000000000000000000000000", 845); });
    ASSERT_TRUE(e);
    EXPECT_EQ("assertion failed at 00000000000000000000000000000000" "34D", text(e->message()));
    EXPECT_EQ(e.get(), fw_current_exception()) << "raised before it was thrown";
    e.reset();
    EXPECT_EQ(nullptr, fw_current_exception()) << "deleting the current exception empties the slot";

    const uint32_t line = __LINE__ + 1;
    auto here = expectThrown<fw_exception_assert>([] { FW_ASSERT(1 + 1 == 3); });
    ASSERT_TRUE(here);
    // The tag of this file's path, the same in every build and in both layers.
    char location[64];
    std::snprintf(location, sizeof location, "83CA2AD96F8E99DBA0FB7FCD578C8930%X", line);
    EXPECT_EQ(location, text(here->get_location()));
    here.reset();
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

TEST_F(fw_exceptionTest, TheCurrentExceptionIsPerThread)
{
    std::unique_ptr<fw_exception> first(new fw_exception_info(fw_string("first")));
    fw_raise(first.get());
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
    EXPECT_EQ(1234u, GetLastError()) << "the slot leaves the last error alone";
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

// The child of every death test below: the layer up with `address` as its support
// address (none when null), a failure in flight and one on top of it.
void failWhileUnwinding(const char* address)
{
    fw_library layer;
    if (address) {
        fw_set_support_address(fw_string(address));
        fw_set_product_name(fw_string("Korvalin"));
        fw_set_product_version({2, 5, 77});
    }
    try {
        RaisesWhenDestroyed guard;
        fw_exception* e = new fw_exception_info(fw_string("in flight"));
        fw_raise(e);
        throw e;
    } catch (fw_exception* e) {
        delete e;
    }
    std::exit(5);
}

}  // namespace

// A failure during unwinding ends the process with 1 and reports both failures to the
// support address, the later one first; without an address, or when the report itself
// fails (a fault inside the client cannot start a report of its own), it still ends
// with 1.
TEST(fw_exceptionDeathTest, AFailureDuringUnwindingEndsTheProcessWithOneAfterItsReport)
{
    const char* const support = "support@example.com";
    struct Row
    {
        const char* scene;
        const char* address;
        const char* clientAnswer;  // null: the client's library is missing
        size_t sends;
        const char* errorOutput;  // what the error stream holds, or lacks when it starts with '!'
    };
    const Row rows[] = {
        {"no support address: silent", nullptr, "success", 0, "!Warning"},
        {"the mail goes", support, "success", 1, "!Warning"},
        {"no client to send with", support, nullptr, 0, "\nWarning: Failed to send message\n"},
        {"the client crashes inside the report", support, "crash", 1, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.scene);
        MailClient client;
        if (row.clientAnswer) {
            client.answer(row.clientAnswer);
        } else {
            const char missing[] = "Z:\\nowhere\\no-mail-client.dll";
            client.setDllPath(REG_SZ, missing, sizeof missing);
        }
        if (row.errorOutput[0] == '!') {
            EXPECT_EXIT(failWhileUnwinding(row.address), ::testing::ExitedWithCode(1), lacks(row.errorOutput + 1));
        } else {
            EXPECT_EXIT(failWhileUnwinding(row.address), ::testing::ExitedWithCode(1), row.errorOutput);
        }

        // No ASSERT in this loop: a death test's child runs the rows before its own
        // without their children, and must not leave the loop early.
        const std::vector<MailCall> sends = client.sends();
        EXPECT_EQ(row.sends, sends.size());
        if (!row.address) {
            EXPECT_TRUE(client.calls().empty()) << "not even a logon";
        }
        if (sends.size() != 1)
            continue;
        const MailCall& mail = sends[0];
        EXPECT_EQ("SMTP:support@example.com", mail["recipient0.address"]);
        EXPECT_EQ("Vendor", mail["recipient0.name"]);
        EXPECT_EQ("0", mail["flags"]) << "no Ctrl key down, no mail window";
        const std::string productLine = "Korvalin 2.5 build 77 FW";
        EXPECT_EQ(0u, mail["subject"].find("Error Report - " + productLine)) << mail["subject"];
        const std::string note = mail["note"];
        EXPECT_EQ(0u, note.find(productLine)) << note;
        EXPECT_NE(std::string::npos,
                  note.find("\n\nDouble nested error:\r\non top\r\nInternal error:\r\nin flight\r\n\r\n"))
            << note;
    }
}
