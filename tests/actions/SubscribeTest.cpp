// Subscribe in the built DLL against real sessions, with the tests' own mail client as
// the machine's default, and the failure box watched for and closed as a user would.
#include "support/ActionLibrary.h"
#include "support/InstallerSession.h"
#include "support/MailClient.h"
#include "support/MessageBoxWatcher.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const Properties mail = {
    {L"ADDRESS", L"news@example.com"},
    {L"SUBJECT", L"Subscribe \x00e9t\x00e9 \x03a9"},
    {L"MESSAGE", L"Please add me.\r\nThanks"},
    {L"DLL_SEND_MESSAGE_FAILED", L"The subscription mail could not be sent."},
    {L"DLL_SEND_MESSAGE_FAILED_TITLE", L"Subscription"},
};

// The text as the system's ANSI code page has it, which is what the client is handed.
std::string ansi(const std::wstring& text)
{
    char buffer[1024] = "";
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, buffer, sizeof buffer, nullptr, nullptr);
    return buffer;
}

class SubscribeTest : public ::testing::Test
{
protected:
    // Runs the action with a watcher for the failure box going; the box seen, if any.
    // Its lines in the installation's log are kept in `lines`.
    SeenBox subscribe(InstallerSession& session, const std::wstring& boxTitle = L"Subscription")
    {
        MessageBoxWatcher watcher(boxTitle);
        InfoRecords records(session);
        EXPECT_EQ(0u, dll.call("Subscribe", session.handle()));
        lines = records.linesOf(L"Subscribe");
        return watcher.stop();
    }

    // The lines up to the mail client's answer, with the subject as the session holds
    // it (its database's code page); never the mail's body.
    static std::vector<std::wstring> linesBefore(const InstallerSession& session)
    {
        return {L"read \"ADDRESS\" = \"news@example.com\", \"SUBJECT\" = \"" + session.property(L"SUBJECT") + L"\"",
                L"asking the mail library \"" + MailClient::libraryPath() + L"\""};
    }

    ActionLibrary dll;
    MailClient client;
    std::vector<std::wstring> lines;
};

}  // namespace

TEST_F(SubscribeTest, TheMailGoesOutWithoutABox)
{
    InstallerSession session(mail);
    EXPECT_FALSE(subscribe(session).seen);

    const std::vector<MailCall> sends = client.sends();
    ASSERT_EQ(1u, sends.size());
    EXPECT_EQ("SMTP:news@example.com", sends[0]["recipient0.address"]);
    EXPECT_EQ("news@example.com", sends[0]["recipient0.name"]);
    EXPECT_EQ(ansi(mail.at(L"SUBJECT")), sends[0]["subject"]) << "in the ANSI code page";
    EXPECT_EQ("Please add me.\r\nThanks", sends[0]["note"]);
    EXPECT_EQ("3", sends[0]["messageFlags"]);
    EXPECT_EQ("0", sends[0]["flags"]);
    EXPECT_EQ("0", sends[0]["files"]);
    std::vector<std::wstring> expected = linesBefore(session);
    expected.push_back(L"the mail client took the mail");
    EXPECT_EQ(expected, lines);

    // An empty address still goes to the client, which decides.
    InstallerSession bare(Properties{{L"SUBJECT", L"s"}});
    client.clear();
    EXPECT_FALSE(subscribe(bare, L"").seen);
    ASSERT_EQ(1u, client.sends().size());
    EXPECT_EQ("SMTP:", client.sends()[0]["recipient0.address"]);
}

TEST_F(SubscribeTest, ARefusalShowsThePackagesBox)
{
    client.answer("refuse");
    InstallerSession session(mail);
    const SeenBox box = subscribe(session);
    ASSERT_TRUE(box.seen) << "no box: is there a display (xvfb-run)?";
    EXPECT_EQ(mail.at(L"DLL_SEND_MESSAGE_FAILED_TITLE"), box.title);
    EXPECT_EQ(mail.at(L"DLL_SEND_MESSAGE_FAILED"), box.text);
    EXPECT_TRUE(box.okOnly);
    EXPECT_EQ(1u, client.sends().size());
    std::vector<std::wstring> expected = linesBefore(session);
    expected.push_back(L"the mail client is missing or refused the mail: showing the box \"Subscription\"");
    EXPECT_EQ(expected, lines);

    // Without the two texts the box still comes, empty.
    InstallerSession bare(Properties{{L"ADDRESS", L"news@example.com"}});
    const SeenBox empty = subscribe(bare, L"");
    ASSERT_TRUE(empty.seen);
    EXPECT_EQ(L"", empty.text);

    // No client library at all: the same box.
    const char missing[] = "Z:\\nowhere\\no-mail-client.dll";
    client.setDllPath(REG_SZ, missing, sizeof missing);
    EXPECT_TRUE(subscribe(session).seen);
}

TEST_F(SubscribeTest, ACrashInsideTheMailClientEndsTheActionQuietly)
{
    client.answer("crash");
    InstallerSession session(mail);
    EXPECT_FALSE(subscribe(session).seen);
    EXPECT_EQ(1u, client.sends().size());
    EXPECT_EQ(2u, client.calls().size()) << "the client was left at the fault";
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(L"the mail failed inside the mail client: no mail, no box", lines.back());

    // The action after it runs as usual.
    client.clear();
    client.answer("success");
    EXPECT_FALSE(subscribe(session).seen);
    EXPECT_EQ(3u, client.calls().size());
}

