// The recording mail client (RecordingMailClient.c) as a test uses it: registered as
// the machine's default client the way a real one is (HKLM "SOFTWARE\Clients\Mail",
// default value = client name, "<name>\DllPath" = its library), told how to answer,
// and asked afterwards what it was handed. The machine's own default client is put
// back, and the client's key, its orders and its record removed, when the object goes.
//
// The registry is that of the test's own view, which is the view a 32-bit sender of
// the same prefix reads. The record is one fixed file, emptied by every new object:
// in a death test, look at it after each EXPECT_EXIT, since the child's own object
// empties it again.
#pragma once
#include <windows.h>

#include <map>
#include <string>
#include <vector>

// One call the client received: "MAPILogon", "MAPISendMail" or "MAPILogoff", with its
// fields as recorded ("subject", "recipient0.address", "files", ...; see the client).
struct MailCall
{
    std::string name;
    std::map<std::string, std::string> fields;

    // The field's text; a missing field throws std::out_of_range, which fails the test.
    std::string operator[](const std::string& key) const { return fields.at(key); }
};

class MailClient
{
public:
    enum class Registration { asDefault, none };

    // With Registration::none the machine has no default mail client while the object
    // lives; the orders and the record still work for a copy of the client that the
    // sender finds some other way (the "MAPI32.DLL" beside the test program).
    explicit MailClient(Registration registration = Registration::asDefault);
    ~MailClient();
    MailClient(const MailClient&) = delete;
    MailClient& operator=(const MailClient&) = delete;

    // See the client for the answers; "success" is the default.
    void answer(const std::string& answer);
    // Replaces the registered "DllPath" by raw data of any type.
    void setDllPath(DWORD type, const void* data, DWORD size);

    // Every call since the object was made (or since clear), in order.
    std::vector<MailCall> calls() const;
    // Only the MAPISendMail calls.
    std::vector<MailCall> sends() const;
    void clear() { DeleteFileW(recordPath.c_str()); }

    // The client's library, from KORVALIN_MAIL_CLIENT_DLL.
    static std::wstring libraryPath();
    // The copy named MAPI32.DLL beside the test program: where the sender's fallback
    // lands, with backslashes.
    static std::wstring fallbackLibraryPath();

private:
    std::wstring recordPath;
    std::wstring previousDefault;  // empty for none
};
