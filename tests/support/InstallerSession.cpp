#include "InstallerSession.h"

#include <msiquery.h>

#include <stdexcept>

namespace {

void check(UINT result, const char* what)
{
    if (result != ERROR_SUCCESS)
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(result));
}

// A scratch package database, empty but for the summary information that Wine's
// engine insists on: a template and a package code. Its path.
std::wstring makePackage()
{
    wchar_t folder[MAX_PATH];
    wchar_t path[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"ks", 0, path);
    PMSIHANDLE database;
    check(MsiOpenDatabaseW(path, reinterpret_cast<LPCWSTR>(MSIDBOPEN_CREATE), &database), "MsiOpenDatabase");
    PMSIHANDLE summary;
    check(MsiGetSummaryInformationW(database, nullptr, 20, &summary), "MsiGetSummaryInformation");
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_TEMPLATE, VT_LPSTR, 0, nullptr, L"Intel;1033"), "template");
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_REVNUMBER, VT_LPSTR, 0, nullptr,
                                     L"{6B1F2E3D-4C5A-4B69-8D7E-9F0A1B2C3D4E}"),
          "package code");
    check(MsiSummaryInfoPersist(summary), "MsiSummaryInfoPersist");
    check(MsiDatabaseCommit(database), "MsiDatabaseCommit");
    return path;
}

}  // namespace

InstallerSession::InstallerSession(const Properties& properties) : path(makePackage())
{
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    check(MsiOpenPackageW(path.c_str(), &session), "MsiOpenPackage");
    for (const auto& entry : properties)
        setProperty(entry.first, entry.second);
}

InstallerSession::~InstallerSession()
{
    MsiCloseHandle(session);
    DeleteFileW(path.c_str());
}

std::wstring InstallerSession::property(const std::wstring& name) const
{
    wchar_t value[4096];
    DWORD length = 4096;
    MsiGetPropertyW(session, name.c_str(), value, &length);
    return std::wstring(value, length < 4096 ? length : 4095);
}

void InstallerSession::setProperty(const std::wstring& name, const std::wstring& value)
{
    check(MsiSetPropertyW(session, name.c_str(), value.c_str()), "MsiSetProperty");
}

InfoRecords::InfoRecords(const InstallerSession& of) : session(of.handle())
{
    MsiSetExternalUIRecord(handle, INSTALLLOGMODE_INFO, this, nullptr);
}

int __stdcall InfoRecords::handle(void* context, UINT type, MSIHANDLE record)
{
    InfoRecords& self = *static_cast<InfoRecords*>(context);
    if ((type & 0xFF000000) != INSTALLMESSAGE_INFO)
        return 0;
    wchar_t text[4096];
    DWORD length = 4096;
    MsiFormatRecordW(self.session, record, text, &length);
    self.lines.emplace_back(text, length < 4096 ? length : 4095);
    return IDOK;
}

std::vector<std::wstring> InfoRecords::linesOf(const std::wstring& action) const
{
    const std::wstring heading = L"WixKorvalin " + action + L": ";
    std::vector<std::wstring> found;
    for (const std::wstring& line : lines)
        if (line.compare(0, heading.size(), heading) == 0)
            found.push_back(line.substr(heading.size()));
    return found;
}
