// Moves the process into a folder for one scope, and back: for code that looks for
// files in the working folder. Child processes started meanwhile inherit it.
#pragma once
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

class WorkingFolder
{
public:
    explicit WorkingFolder(const std::wstring& folder)
    {
        GetCurrentDirectoryW(MAX_PATH, previous);
        EXPECT_TRUE(SetCurrentDirectoryW(folder.c_str())) << "SetCurrentDirectoryW failed: " << GetLastError();
    }
    ~WorkingFolder() { SetCurrentDirectoryW(previous); }
    WorkingFolder(const WorkingFolder&) = delete;
    WorkingFolder& operator=(const WorkingFolder&) = delete;

private:
    wchar_t previous[MAX_PATH];
};
