#include "InstallerSession.h"

#include <msiquery.h>
#include <objbase.h>

#include <stdexcept>
#include <vector>

namespace {

void check(UINT result, const char* what)
{
    if (result != ERROR_SUCCESS)
        throw std::runtime_error(std::string(what) + " failed with " + std::to_string(result));
}

std::wstring scratchPackagePath()
{
    wchar_t folder[MAX_PATH];
    wchar_t file[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"ks", 0, file);
    return file;
}

// An empty package database but for the summary information that Wine's engine
// insists on: a template and a package code.
void makePackage(const std::wstring& path)
{
    DeleteFileW(path.c_str());
    PMSIHANDLE database;
    check(MsiOpenDatabaseW(path.c_str(), reinterpret_cast<LPCWSTR>(MSIDBOPEN_CREATE), &database), "MsiOpenDatabase");
    {
        PMSIHANDLE summary;
        check(MsiGetSummaryInformationW(database, nullptr, 20, &summary), "MsiGetSummaryInformation");
        GUID packageCode;
        CoCreateGuid(&packageCode);
        wchar_t packageCodeText[40];
        StringFromGUID2(packageCode, packageCodeText, 40);
        check(MsiSummaryInfoSetPropertyW(summary, PIDSI_TEMPLATE, VT_LPSTR, 0, nullptr, L"Intel;1033"), "template");
        check(MsiSummaryInfoSetPropertyW(summary, PIDSI_REVNUMBER, VT_LPSTR, 0, nullptr, packageCodeText), "code");
        check(MsiSummaryInfoPersist(summary), "MsiSummaryInfoPersist");
    }
    check(MsiDatabaseCommit(database), "MsiDatabaseCommit");
}

}  // namespace

InstallerSession::InstallerSession(const Properties& properties) : path(scratchPackagePath())
{
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    makePackage(path);
    check(MsiOpenPackageW(path.c_str(), &session), "MsiOpenPackage");
    for (const auto& entry : properties)
        setProperty(entry.first, entry.second);
}

InstallerSession::~InstallerSession()
{
    if (session)
        MsiCloseHandle(session);
    DeleteFileW(path.c_str());
}

std::wstring InstallerSession::property(const std::wstring& name) const
{
    DWORD length = 0;
    wchar_t empty[1] = {0};
    MsiGetPropertyW(session, name.c_str(), empty, &length);
    std::vector<wchar_t> value(++length);
    MsiGetPropertyW(session, name.c_str(), value.data(), &length);
    return std::wstring(value.data(), length);
}

void InstallerSession::setProperty(const std::wstring& name, const std::wstring& value)
{
    check(MsiSetPropertyW(session, name.c_str(), value.c_str()), "MsiSetProperty");
}

InfoRecords::InfoRecords(const InstallerSession& of, int answering) : session(of.handle()), answer(answering)
{
    MsiSetExternalUIRecord(handle, INSTALLLOGMODE_INFO, this, nullptr);
}

InfoRecords::~InfoRecords()
{
    MsiSetExternalUIRecord(nullptr, 0, nullptr, nullptr);
}

int __stdcall InfoRecords::handle(void* context, UINT type, MSIHANDLE record)
{
    InfoRecords& self = *static_cast<InfoRecords*>(context);
    if ((type & 0xFF000000) != INSTALLMESSAGE_INFO)
        return 0;
    DWORD length = 0;
    wchar_t empty[1] = {0};
    MsiFormatRecordW(self.session, record, empty, &length);
    std::vector<wchar_t> text(++length);
    MsiFormatRecordW(self.session, record, text.data(), &length);
    self.lines.emplace_back(text.data(), length);
    return self.answer;
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
