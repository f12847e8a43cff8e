// The mail sender against the tests' own mail client, registered as the machine's
// default the way a real client is.
#include "fw/fw_send_mail.h"

#include "support/MailClient.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <regex>

namespace {

bool send(const char* address, const char* displayName = "", bool dialog = false)
{
    return fw_send_mail(fw_string(address), fw_string("Subject"), fw_string("Body\r\nsecond line"),
                        fw_string(displayName), fw_string(), dialog);
}

}  // namespace

TEST(fw_send_mailTest, TheMessageCarriesWhatSimpleMapiIsPromised)
{
    MailClient client;
    ASSERT_TRUE(send("someone@example.com"));
    const std::vector<MailCall> calls = client.calls();
    ASSERT_EQ(3u, calls.size());
    EXPECT_EQ("MAPILogon", calls[0].name);
    EXPECT_STRCASEEQ(narrow(MailClient::libraryPath()).c_str(), calls[0]["module"].c_str());
    const MailCall& mail = calls[1];
    EXPECT_EQ("24149", mail["session"]) << "the session MAPILogon gave";
    EXPECT_EQ("0", mail["flags"]);
    EXPECT_EQ("Subject", mail["subject"]);
    EXPECT_EQ("Body\r\nsecond line", mail["note"]);
    EXPECT_EQ("SMTP:someone@example.com", mail["originator.address"]);
    EXPECT_EQ("SMTP:someone@example.com", mail["recipient0.address"]);
    EXPECT_EQ("someone@example.com", mail["recipient0.name"]) << "no display name: the bare address";
    // Year, month, day, hour and minute, none with a leading zero.
    const std::regex date("[1-9][0-9]{3}/[1-9][0-9]?/[1-9][0-9]? (0|[1-9][0-9]?):(0|[1-9][0-9]?)");
    EXPECT_TRUE(std::regex_match(mail["date"], date)) << mail["date"];
    EXPECT_EQ("MAPILogoff", calls[2].name);

    client.clear();
    ASSERT_TRUE(send("", "Support", true));
    EXPECT_EQ("SMTP:", client.sends().at(0)["recipient0.address"]) << "an empty address goes as it is";
    EXPECT_EQ("Support", client.sends().at(0)["recipient0.name"]);
    EXPECT_EQ("8", client.sends().at(0)["flags"]) << "MAPI_DIALOG";
}

TEST(fw_send_mailTest, TheClientsAnswerDecides)
{
    MailClient client;
    client.answer("refuse");
    EXPECT_FALSE(send("a@example.com"));
    EXPECT_EQ(3u, client.calls().size()) << "logged off after a refusal too";

    client.clear();
    client.answer("logon refused");
    EXPECT_TRUE(send("a@example.com"));
    EXPECT_EQ("0", client.sends().at(0)["session"]) << "a refused logon is not read";

    client.clear();
    client.setDllPath(REG_SZ, L"Z:\\nowhere.dll", sizeof L"Z:\\nowhere.dll");
    EXPECT_FALSE(send("a@example.com"));
    EXPECT_TRUE(client.calls().empty()) << "a library that is missing";
}

// Without a usable client the sender takes "MAPI32.DLL": the copy of the test client
// that stands beside this program, where the library is looked for first.
TEST(fw_send_mailTest, WithoutAUsableClientTheSenderTakesMapi32)
{
    const std::string fallback = narrow(MailClient::fallbackLibraryPath());
    {
        MailClient client(MailClient::Registration::none);
        EXPECT_TRUE(send("a@example.com"));
        EXPECT_STRCASEEQ(fallback.c_str(), client.calls().at(0)["module"].c_str()) << "no default client";
    }
    MailClient client;
    client.setDllPath(REG_SZ, L"", sizeof L"");
    EXPECT_TRUE(send("a@example.com"));
    EXPECT_STRCASEEQ(fallback.c_str(), client.calls().at(0)["module"].c_str()) << "an empty DllPath";
}
