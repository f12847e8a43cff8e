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

void execute(MSIHANDLE database, const wchar_t* sql)
{
    MSIHANDLE view = 0;
    check(MsiDatabaseOpenViewW(database, sql, &view), "MsiDatabaseOpenView");
    check(MsiViewExecute(view, 0), "MsiViewExecute");
    MsiCloseHandle(view);
}

std::wstring scratchPackagePath()
{
    wchar_t folder[MAX_PATH];
    wchar_t file[MAX_PATH];
    GetTempPathW(MAX_PATH, folder);
    GetTempFileNameW(folder, L"ks", 0, file);
    return file;
}

}  // namespace

InstallerSession::InstallerSession(const std::map<std::wstring, std::wstring>& properties)
    : path(scratchPackagePath())
{
    MsiSetInternalUI(INSTALLUILEVEL_NONE, nullptr);
    DeleteFileW(path.c_str());
    MSIHANDLE database = 0;
    check(MsiOpenDatabaseW(path.c_str(), reinterpret_cast<LPCWSTR>(MSIDBOPEN_CREATE), &database), "MsiOpenDatabase");
    execute(database,
            L"CREATE TABLE `Property` (`Property` CHAR(72) NOT NULL, `Value` CHAR(0) NOT NULL LOCALIZABLE "
            L"PRIMARY KEY `Property`)");
    for (const auto& entry : properties) {
        if (entry.second.empty())
            continue;  // the table can't hold an empty value: such a property is simply not set
        MSIHANDLE view = 0;
        check(MsiDatabaseOpenViewW(database, L"INSERT INTO `Property` (`Property`, `Value`) VALUES (?, ?)", &view),
              "MsiDatabaseOpenView");
        MSIHANDLE record = MsiCreateRecord(2);
        MsiRecordSetStringW(record, 1, entry.first.c_str());
        MsiRecordSetStringW(record, 2, entry.second.c_str());
        check(MsiViewExecute(view, record), "insert property");
        MsiCloseHandle(record);
        MsiCloseHandle(view);
    }
    MSIHANDLE summary = 0;
    check(MsiGetSummaryInformationW(database, nullptr, 20, &summary), "MsiGetSummaryInformation");
    GUID revision;
    CoCreateGuid(&revision);
    wchar_t revisionText[40];
    StringFromGUID2(revision, revisionText, 40);
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_TEMPLATE, VT_LPSTR, 0, nullptr, L"Intel;1033"), "template");
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_REVNUMBER, VT_LPSTR, 0, nullptr, revisionText), "revision");
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_PAGECOUNT, VT_I4, 200, nullptr, nullptr), "page count");
    check(MsiSummaryInfoSetPropertyW(summary, PIDSI_WORDCOUNT, VT_I4, 2, nullptr, nullptr), "word count");
    check(MsiSummaryInfoPersist(summary), "MsiSummaryInfoPersist");
    MsiCloseHandle(summary);
    check(MsiDatabaseCommit(database), "MsiDatabaseCommit");
    MsiCloseHandle(database);
    check(MsiOpenPackageW(path.c_str(), &session), "MsiOpenPackage");
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
    std::vector<wchar_t> value(length + 1);
    length += 1;
    MsiGetPropertyW(session, name.c_str(), value.data(), &length);
    return std::wstring(value.data(), length);
}

void InstallerSession::setProperty(const std::wstring& name, const std::wstring& value)
{
    check(MsiSetPropertyW(session, name.c_str(), value.c_str()), "MsiSetProperty");
}

InfoRecords::InfoRecords(const InstallerSession& of, int answering, bool closing)
    : session(of.handle()), answer(answering), closeRecord(closing)
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
    std::vector<wchar_t> text(length + 1);
    length += 1;
    MsiFormatRecordW(self.session, record, text.data(), &length);
    self.lines.emplace_back(text.data(), length);
    if (self.closeRecord)
        MsiCloseHandle(record);
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
