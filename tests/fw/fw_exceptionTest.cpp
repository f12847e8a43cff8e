#include "fw/fw_exception.h"

#include "fw/fw_assert.h"
#include "fw/fw_library.h"
#include "fw/fw_raise.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/MailClient.h"
#include "support/TextHelpers.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

std::string messageOf(fw_exception* made)
{
    return std::unique_ptr<fw_exception>(made)->message().c_str();
}

}  // namespace

// Each test counts from 0 the live objects it makes: earlier tests may have left some.
TEST(fw_exceptionTest, MessagesAndDetailsOfTheFamily)
{
    fw_exception_nesting = 0;
    const fw_string none;
    EXPECT_EQ("root", messageOf(new fw_exception(fw_string("root"), none)));
    EXPECT_EQ("m : d", messageOf(new fw_exception_assert(none, fw_string("m"), fw_string("d"), none)));
    EXPECT_EQ("d", messageOf(new fw_exception_assert(none, none, fw_string("d"), none)));

    // The extra text of an assertion goes behind its stack dump, after a blank line.
    const fw_exception_assert assertion(none, fw_string("a"), none, fw_string("more"));
    EXPECT_EQ(std::string(assertion.fw_exception::details().c_str()) + "\r\n\r\nmore", assertion.details().c_str());

    // With four alive, an assertion's message is left out; an info exception keeps its text.
    const fw_exception_info info(fw_string("i")), third(none), fourth(none);
    EXPECT_STREQ("", assertion.message().c_str());
    EXPECT_STREQ("i", info.message().c_str());
}

// The current exception is the one last raised, until it is deleted or cleared.
TEST(fw_exceptionTest, AnAssertionIsRaisedNamingTheFilesTagAndTheLineInHex)
{
    fw_exception_nesting = 0;
    auto e = expectThrown<fw_exception_assert>([] { fw_assert_failed("00000000000000000000000000000000", 845); });
    ASSERT_TRUE(e);
    EXPECT_STREQ("assertion failed at 00000000000000000000000000000000" "34D", e->message().c_str());
    delete new fw_exception_info(fw_string("another"));
    EXPECT_EQ(e.get(), fw_current_exception()) << "deleting another one leaves it";
    e.reset();
    EXPECT_EQ(nullptr, fw_current_exception());

    const uint32_t line = __LINE__ + 1;
    auto here = expectThrown<fw_exception_assert>([] { FW_ASSERT(1 + 1 == 3); });
    ASSERT_TRUE(here);
    // The tag of this file's path, the same in every build and in both layers.
    char location[64];
    std::snprintf(location, sizeof location, "83CA2AD96F8E99DBA0FB7FCD578C8930%X", line);
    EXPECT_STREQ(location, here->get_location().c_str());
    SetLastError(1234);
    fw_clear_current();
    EXPECT_EQ(nullptr, fw_current_exception());
    EXPECT_EQ(1234u, GetLastError()) << "the slot leaves the last error alone";
}

namespace {

// Faults while an exception is in flight: a destructor run by the unwinding.
struct FaultsWhenDestroyed
{
    ~FaultsWhenDestroyed() { faults::readAt(faults::nowhere()); }
};

// The layer up, with a support address or none, a failure in flight and a fault on
// top of it.
void faultWhileUnwinding(bool withAddress)
{
    fw_library layer;
    if (withAddress) {
        fw_set_support_address(fw_string("support@example.com"));
        fw_set_product_name(fw_string("Korvalin"));
        fw_set_product_version({2, 5, 77});
    }
    try {
        FaultsWhenDestroyed guard;
        fw_exception* e = new fw_exception_info(fw_string("in flight"));
        fw_raise(e);
        throw e;
    } catch (fw_exception* e) {
        delete e;
    }
    std::exit(5);
}

}  // namespace

// A failure during unwinding ends the process with 1 after mailing both failures to
// the support address, the later one first; without an address, or when the report
// itself fails (a fault inside the client starts no report of its own), it still ends
// with 1.
TEST(fw_exceptionDeathTest, AFailureDuringUnwindingEndsTheProcessWithOneAfterItsReport)
{
    { fw_library stamped; }
    const std::string productLine = std::string("Korvalin 2.5 build 77 ") + fw_build_stamp;
    const struct {
        const char* scene;
        bool withAddress;
        const char* clientAnswer;
    } rows[] = {
        {"no support address: silent", false, "success"},
        {"the mail goes", true, "success"},
        {"the client crashes inside the report", true, "crash"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.scene);
        MailClient client;
        client.answer(row.clientAnswer);
        EXPECT_EXIT(faultWhileUnwinding(row.withAddress), ::testing::ExitedWithCode(1), lacks("Warning"));

        // No ASSERT in this loop: a death test's child runs the rows before its own
        // without their children, and must not leave the loop early.
        EXPECT_EQ(row.withAddress ? 1u : 0u, client.sends().size());
        EXPECT_TRUE(row.withAddress || client.calls().empty()) << "without an address not even a logon";
        if (client.sends().size() != 1)
            continue;
        const MailCall mail = client.sends()[0];
        EXPECT_EQ("SMTP:support@example.com", mail["recipient0.address"]);
        EXPECT_EQ("Vendor", mail["recipient0.name"]);
        EXPECT_EQ("Error Report - " + productLine, mail["subject"]);
        const std::string note = mail["note"];
        EXPECT_EQ(0u, note.find(productLine + "\n\nDouble nested error:\r\nattempt to read at 0x00000000, eip=0x")) << note;
        EXPECT_NE(std::string::npos, note.find("\r\nInternal error:\r\nin flight\r\n\r\nStack dump:")) << note;
    }
}
