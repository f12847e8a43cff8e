// A real installer session for tests: a package database made on disk with the given
// properties (and the summary information the engine insists on), opened with
// MsiOpenPackageW. The database file is removed when the session goes.
#pragma once
#include <windows.h>
#include <msi.h>

#include <map>
#include <string>

using Properties = std::map<std::wstring, std::wstring>;

class InstallerSession
{
public:
    explicit InstallerSession(const std::map<std::wstring, std::wstring>& properties = {});
    ~InstallerSession();
    InstallerSession(const InstallerSession&) = delete;
    InstallerSession& operator=(const InstallerSession&) = delete;

    MSIHANDLE handle() const { return session; }
    std::wstring property(const std::wstring& name) const;
    void setProperty(const std::wstring& name, const std::wstring& value);

private:
    std::wstring path;
    MSIHANDLE session = 0;
};
