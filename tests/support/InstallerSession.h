// A real installer session for tests: an empty package database made on disk, opened
// with MsiOpenPackageW, and the given properties set on the session (so a text keeps
// every character, where the database would keep its code page's). The database file
// is removed when the session goes.
#pragma once
#include <windows.h>
#include <msi.h>

#include <map>
#include <string>
#include <vector>

using Properties = std::map<std::wstring, std::wstring>;

class InstallerSession
{
public:
    explicit InstallerSession(const Properties& properties = {});
    ~InstallerSession();
    InstallerSession(const InstallerSession&) = delete;
    InstallerSession& operator=(const InstallerSession&) = delete;

    MSIHANDLE handle() const { return session; }
    // The whole value, a NUL inside it included, up to 4095 characters.
    std::wstring property(const std::wstring& name) const;
    void setProperty(const std::wstring& name, const std::wstring& value);

private:
    std::wstring path;
    MSIHANDLE session = 0;
};

// The info records (INSTALLMESSAGE_INFO) that actions hand to any session of this
// process while it lives, as text: each record formatted against `session` (its
// properties resolved, as msiexec's verbose log has them). It is the engine's
// external record handler (MsiSetExternalUIRecord), process-wide: one at a time, and
// none is left when it goes. A line longer than 4095 characters is cut.
class InfoRecords
{
public:
    explicit InfoRecords(const InstallerSession& session);
    ~InfoRecords() { MsiSetExternalUIRecord(nullptr, 0, nullptr, nullptr); }
    InfoRecords(const InfoRecords&) = delete;
    InfoRecords& operator=(const InfoRecords&) = delete;

    // The lines headed "WixKorvalin <action>: ", without the heading, in order.
    std::vector<std::wstring> linesOf(const std::wstring& action) const;

private:
    static int __stdcall handle(void* context, UINT type, MSIHANDLE record);

    MSIHANDLE session;
    std::vector<std::wstring> lines;
};
