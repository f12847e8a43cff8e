// The mail sender against the tests' own mail client, registered as the machine's
// default the way a real client is.
#include "fw/fw_send_mail.h"

#include "fw/fw_exception.h"
#include "fw/fw_library.h"
#include "support/ExpectThrown.h"
#include "support/FwText.h"
#include "support/MailClient.h"
#include "support/ScratchFolder.h"
#include "support/WorkingFolder.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

namespace {

bool send(const char* address, const char* displayName = "", const char* attachment = "", bool dialog = false)
{
    return fw_send_mail(fw_string(address), fw_string("Subject"), fw_string("Body\r\nsecond line"),
                        fw_string(displayName), fw_string(attachment), dialog);
}

std::string lower(std::string s)
{
    for (char& c : s)
        c = char(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

std::string narrow(const std::wstring& s)
{
    return std::string(s.begin(), s.end());
}

}  // namespace

TEST(fw_send_mailTest, TheMessageCarriesWhatSimpleMapiIsPromised)
{
    MailClient client;
    ASSERT_TRUE(send("someone@example.com"));

    const std::vector<MailCall> calls = client.calls();
    ASSERT_EQ(3u, calls.size());
    EXPECT_EQ("MAPILogon", calls[0].name);
    EXPECT_EQ(lower(narrow(MailClient::libraryPath())), lower(calls[0]["module"]));
    EXPECT_EQ("MAPILogoff", calls[2].name);
    EXPECT_EQ("24149", calls[2]["session"]);

    const MailCall& mail = calls[1];
    EXPECT_EQ("MAPISendMail", mail.name);
    EXPECT_EQ("24149", mail["session"]) << "the session MAPILogon gave";
    EXPECT_EQ("0", mail["flags"]);
    EXPECT_EQ("Subject", mail["subject"]);
    EXPECT_EQ("Body\r\nsecond line", mail["note"]);
    EXPECT_EQ("SMTP:someone@example.com", mail["originator.address"]);
    EXPECT_EQ("someone@example.com", mail["recipient0.name"]) << "no display name: the bare address";
    EXPECT_EQ("SMTP:someone@example.com", mail["recipient0.address"]);
    EXPECT_EQ("0", mail["files"]);
    // Year, month, day, hour and minute, none with a leading zero.
    EXPECT_TRUE(std::regex_match(mail["date"], std::regex("[1-9][0-9]{3}/[1-9][0-9]?/[1-9][0-9]?"
                                                          " (0|[1-9][0-9]?):(0|[1-9][0-9]?)")))
        << mail["date"];

    // A display name names the recipient; the dialog switch asks for MAPI_DIALOG; an
    // empty address is passed on as it is.
    client.clear();
    ASSERT_TRUE(send("", "Support", "", true));
    const MailCall second = client.sends().at(0);
    EXPECT_EQ("Support", second["recipient0.name"]);
    EXPECT_EQ("SMTP:", second["recipient0.address"]);
    EXPECT_EQ("8", second["flags"]);
}

TEST(fw_send_mailTest, TheClientsAnswerDecides)
{
    MailClient client;
    client.answer("refuse");
    EXPECT_FALSE(send("a@example.com"));
    EXPECT_EQ(3u, client.calls().size()) << "logged off after a refusal too";

    // A refused logon is not read: the mail is tried with session 0.
    client.clear();
    client.answer("logon refused");
    EXPECT_TRUE(send("a@example.com"));
    EXPECT_EQ("0", client.sends().at(0)["session"]);

    // A client without a library file: nothing to call.
    client.clear();
    const char missing[] = "Z:\\nowhere\\no-mail-client.dll";
    client.setDllPath(REG_SZ, missing, sizeof missing);
    EXPECT_FALSE(send("a@example.com"));
    EXPECT_TRUE(client.calls().empty());
}

TEST(fw_send_mailTest, AnAttachmentGoesWhenUsableAndIsDroppedWhenTheClientCannotOpenIt)
{
    MailClient client;
    ScratchFolder scratch(L"MailAttachment");
    WorkingFolder here(scratch.path());
    scratch.writeFile(L"attachment.txt", "attached");
    const char* const file = "attachment.txt";
    ASSERT_TRUE(send("a@example.com", "", file));
    MailCall mail = client.sends().at(0);
    EXPECT_EQ("1", mail["files"]);
    EXPECT_EQ(lower(narrow(scratch.at(L"attachment.txt"))), lower(mail["file0.path"]))
        << "a relative path goes as the full one";

    // Missing files and folders are left out without a word.
    for (const char* unusable : {"no such attachment.txt", "."}) {
        client.clear();
        ASSERT_TRUE(send("a@example.com", "", unusable)) << unusable;
        EXPECT_EQ("0", client.sends().at(0)["files"]) << unusable;
    }

    // 12 and 13 bring a second attempt without the file; 11 does not.
    for (const char* answer : {"attachment open", "attachment write"}) {
        client.clear();
        client.answer(answer);
        EXPECT_TRUE(send("a@example.com", "", file)) << answer;
        const std::vector<MailCall> sends = client.sends();
        ASSERT_EQ(2u, sends.size()) << answer;
        EXPECT_EQ("1", sends[0]["files"]);
        EXPECT_EQ("0", sends[1]["files"]);
    }
    client.clear();
    client.answer("attachment missing");
    EXPECT_FALSE(send("a@example.com", "", file));
    EXPECT_EQ(1u, client.sends().size());
}

// Without a usable client the sender takes "MAPI32.DLL": the copy of the test client
// that stands beside this program, where the library is looked for first.
TEST(fw_send_mailTest, WithoutAUsableClientTheSenderTakesMapi32)
{
    const std::wstring fallback = MailClient::fallbackLibraryPath();
    const auto expectFallback = [&](MailClient& client, const char* why) {
        client.clear();
        EXPECT_TRUE(send("a@example.com")) << why;
        const std::vector<MailCall> sends = client.sends();
        ASSERT_EQ(1u, sends.size()) << why;
        EXPECT_EQ(lower(narrow(fallback)), lower(sends[0]["module"])) << why;
    };
    {
        MailClient client(MailClient::Registration::none);
        expectFallback(client, "no default client");
    }
    MailClient client;
    client.deleteDllPath();
    expectFallback(client, "no DllPath");
    const std::wstring path = MailClient::libraryPath();
    client.setDllPath(REG_EXPAND_SZ, path.c_str(), DWORD((path.size() + 1) * sizeof(wchar_t)));
    expectFallback(client, "a DllPath of REG_EXPAND_SZ");
    const DWORD number = 1;
    client.setDllPath(REG_DWORD, &number, sizeof number);
    expectFallback(client, "a DllPath of REG_DWORD");
    client.setDllPath(REG_SZ, "", 1);
    expectFallback(client, "an empty DllPath");
}

TEST(fw_send_mailTest, AFaultInTheClientIsThrownToTheSender)
{
    MailClient client;
    client.answer("crash");
    fw_library layer;
    const auto fault = expectThrown<fw_exception_assert>([] { send("a@example.com"); });
    EXPECT_EQ(0u, text(fault->message()).find("attempt to write at 0x00000000")) << text(fault->message());
    const std::vector<MailCall> calls = client.calls();
    ASSERT_EQ(2u, calls.size()) << "no logoff after the fault";
    EXPECT_EQ("MAPISendMail", calls[1].name);
}
