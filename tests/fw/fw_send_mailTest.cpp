// The mail sender against the tests' own mail client, registered as the machine's
// default the way a real client is, and the two helpers beneath it against the real
// registry and disk.
#include "fw/fw_send_mail.h"

#include "fw/fw_exception.h"
#include "fw/fw_library.h"
#include "fw/fw_path_exists.h"
#include "fw/fw_registry_path.h"
#include "support/ExpectThrown.h"
#include "support/MailClient.h"
#include "support/ScratchKey.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <string>

namespace {

std::string text(const fw_string& s)
{
    return s.c_str();
}

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

// A file in the current folder, removed at the end.
class ScratchFile
{
public:
    explicit ScratchFile(const char* fileName) : name(fileName)
    {
        FILE* file = std::fopen(fileName, "wb");
        std::fputs("attached", file);
        std::fclose(file);
    }
    ~ScratchFile() { std::remove(name.c_str()); }
    std::string fullPath() const
    {
        char full[MAX_PATH];
        GetFullPathNameA(name.c_str(), MAX_PATH, full, nullptr);
        return full;
    }

    std::string name;
};

}  // namespace

TEST(fw_send_mailTest, TheMessageCarriesWhatSimpleMapiIsPromised)
{
    MailClient client;
    ASSERT_TRUE(send("someone@example.com"));

    const std::vector<MailCall> calls = client.calls();
    ASSERT_EQ(3u, calls.size());
    EXPECT_EQ(lower(narrow(MailClient::libraryPath())), lower(calls[0]["module"]));
    EXPECT_EQ("MAPILogon", calls[0].name);
    EXPECT_EQ("0", calls[0]["ui"]);
    EXPECT_EQ("<null>", calls[0]["profile"]);
    EXPECT_EQ("<null>", calls[0]["password"]);
    EXPECT_EQ("1", calls[0]["flags"]);
    EXPECT_EQ("0", calls[0]["reserved"]);

    const MailCall& mail = calls[1];
    EXPECT_EQ("MAPISendMail", mail.name);
    EXPECT_EQ("24149", mail["session"]) << "the session MAPILogon gave";
    EXPECT_EQ("0", mail["ui"]);
    EXPECT_EQ("0", mail["flags"]);
    EXPECT_EQ("0", mail["reserved"]);
    EXPECT_EQ("0", mail["message.reserved"]);
    EXPECT_EQ("Subject", mail["subject"]);
    EXPECT_EQ("Body\r\nsecond line", mail["note"]);
    EXPECT_EQ("<null>", mail["messageType"]);
    EXPECT_EQ("<null>", mail["conversationId"]);
    EXPECT_EQ("3", mail["messageFlags"]);
    EXPECT_EQ("0", mail["originator.class"]);
    EXPECT_EQ("<null>", mail["originator.name"]);
    EXPECT_EQ("SMTP:someone@example.com", mail["originator.address"]);
    EXPECT_EQ("1", mail["recipients"]);
    EXPECT_EQ("1", mail["recipient0.class"]);
    EXPECT_EQ("someone@example.com", mail["recipient0.name"]) << "no display name: the bare address";
    EXPECT_EQ("SMTP:someone@example.com", mail["recipient0.address"]);
    EXPECT_EQ("0", mail["files"]);
    EXPECT_EQ("<null>", mail["filesPointer"]);
    // Year, month, day, hour and minute, none with a leading zero.
    EXPECT_TRUE(std::regex_match(mail["date"], std::regex("[1-9][0-9]{3}/[1-9][0-9]?/[1-9][0-9]?"
                                                          " (0|[1-9][0-9]?):(0|[1-9][0-9]?)")))
        << mail["date"];
    EXPECT_EQ(text(fw_mail_date_text()).substr(0, 8), mail["date"].substr(0, 8));

    EXPECT_EQ("MAPILogoff", calls[2].name);
    EXPECT_EQ("24149", calls[2]["session"]);
    EXPECT_EQ("0", calls[2]["ui"]);
    EXPECT_EQ("0", calls[2]["flags"]);
    EXPECT_EQ("0", calls[2]["reserved"]);

    // A display name names the recipient; the dialog switch asks for MAPI_DIALOG; an
    // empty address is passed on as it is.
    client.clear();
    ASSERT_TRUE(send("", "Support", "", true));
    const MailCall second = client.sends().at(0);
    EXPECT_EQ("Support", second["recipient0.name"]);
    EXPECT_EQ("SMTP:", second["recipient0.address"]);
    EXPECT_EQ("SMTP:", second["originator.address"]);
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
    ScratchFile file("fw_send_mail attachment.txt");
    ASSERT_TRUE(send("a@example.com", "", file.name.c_str()));
    MailCall mail = client.sends().at(0);
    EXPECT_EQ("1", mail["files"]);
    EXPECT_EQ("4294967295", mail["file0.position"]);
    EXPECT_EQ(file.fullPath(), mail["file0.path"]) << "a relative path goes as the full one";
    EXPECT_EQ("<null>", mail["file0.name"]);
    EXPECT_EQ("<null>", mail["file0.type"]);

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
        EXPECT_TRUE(send("a@example.com", "", file.name.c_str())) << answer;
        const std::vector<MailCall> sends = client.sends();
        ASSERT_EQ(2u, sends.size()) << answer;
        EXPECT_EQ("1", sends[0]["files"]);
        EXPECT_EQ("0", sends[1]["files"]);
        EXPECT_EQ("<null>", sends[1]["filesPointer"]);
        EXPECT_EQ(sends[0]["flags"], sends[1]["flags"]);
    }
    client.clear();
    client.answer("attachment missing");
    EXPECT_FALSE(send("a@example.com", "", file.name.c_str()));
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

TEST(fw_registry_pathTest, ReadsTextValuesOnly)
{
    ScratchKey key(HKEY_CURRENT_USER, L"Software\\WixKorvalinTests\\fw_registry_path");
    key.setText(L"", L"default text");
    key.addSubKey(L"inner\\deeper");
    ScratchKey deeper(HKEY_CURRENT_USER, key.path() + L"\\inner\\deeper");
    deeper.setText(L"name", L"value");
    deeper.setText(L"empty", L"");
    deeper.setText(L"expandable", L"%TEMP%", REG_EXPAND_SZ);
    deeper.setDword(L"number", 7);
    deeper.setRaw(L"no terminator", REG_SZ, L"ab", 2 * sizeof(wchar_t));

    const fw_registry_path path(fw_registry_root(fw_registry_root::current_user),
                                fw_string("Software/WixKorvalinTests\\\\fw_registry_path\\"));
    fw_string result("untouched");
    EXPECT_TRUE(path.readString(fw_string(), fw_string(), result));
    EXPECT_EQ("default text", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner//deeper/"), fw_string("name"), result));
    EXPECT_EQ("value", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner\\deeper"), fw_string("empty"), result));
    EXPECT_EQ("", text(result));
    EXPECT_TRUE(path.readString(fw_string("inner\\deeper"), fw_string("no terminator"), result));
    EXPECT_EQ("ab", text(result));

    result = fw_string("untouched");
    for (const char* name : {"expandable", "number", "missing"}) {
        EXPECT_FALSE(path.readString(fw_string("inner\\deeper"), fw_string(name), result)) << name;
    }
    EXPECT_FALSE(path.readString(fw_string("inner\\missing"), fw_string("name"), result));
    EXPECT_EQ("untouched", text(result));

    const fw_registry_path nowhere(fw_registry_root(fw_registry_root::none), fw_string("Software"));
    EXPECT_FALSE(nowhere.readString(fw_string(), fw_string(), result));
}

TEST(fw_path_existsTest, FilesAndFoldersOnTheRealDisk)
{
    ScratchFile file("fw_path_exists file.txt");
    CreateDirectoryA("fw_path_exists folder", nullptr);
    char current[MAX_PATH];
    GetCurrentDirectoryA(MAX_PATH, current);
    const std::string here(current);

    struct Case
    {
        std::string path;
        bool file;
        bool folder;
    };
    const Case cases[] = {
        {"", true, true},
        {"fw_path_exists file.txt", true, false},
        {"./fw_path_exists file.txt", true, false},
        {"fw_path_exists folder", false, true},
        {"fw_path_exists folder/", false, true},
        {".\\\\fw_path_exists folder\\\\", false, true},
        {here + "\\fw_path_exists file.txt", true, false},
        {here + "//fw_path_exists folder", false, true},
        // Rooted: on the current drive.
        {here.substr(2) + "/fw_path_exists file.txt", true, false},
        {"no such thing", false, false},
        {"fw_path_exists file.txt/inside", false, false},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.file, fw_path_exists(fw_string(c.path.c_str()), true, false)) << c.path;
        EXPECT_EQ(c.folder, fw_path_exists(fw_string(c.path.c_str()), false, false)) << c.path;
    }
    RemoveDirectoryA("fw_path_exists folder");

    EXPECT_EQ("\\/server/share", text(fw_normal_path(fw_string("\\\\server\\share"))));
}

