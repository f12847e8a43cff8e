#include "support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace {

// Raw calls reach beyond MAX_PATH through the long form of an absolute path.
std::wstring longPathForTest(const std::wstring& absolute) { return L"\\\\?\\" + absolute; }

void removeTree(const std::wstring& folder)
{
    WIN32_FIND_DATAW found;
    const HANDLE search = FindFirstFileW(longPathForTest(folder + L"*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE) {
        do {
            const std::wstring name = found.cFileName;
            if (name == L"." || name == L"..")
                continue;
            const std::wstring child = folder + name;
            if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
                removeTree(child + L"\\");
            } else {
                SetFileAttributesW(longPathForTest(child).c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileW(longPathForTest(child).c_str());
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    SetFileAttributesW(longPathForTest(folder).c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectoryW(longPathForTest(folder).c_str());
}

}  // namespace

ScratchFolder::ScratchFolder(const std::wstring& label)
{
    static unsigned count = 0;
    wchar_t temp[MAX_PATH + 1];
    const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
    EXPECT_TRUE(length > 0 && length <= MAX_PATH) << "GetTempPathW failed: " << GetLastError();
    folder = std::wstring(temp, length) + label + L"-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
             std::to_wstring(++count) + L"\\";
    removeTree(folder);
    EXPECT_TRUE(CreateDirectoryW(folder.c_str(), nullptr)) << "CreateDirectoryW failed: " << GetLastError();
}

ScratchFolder::~ScratchFolder() { removeTree(folder); }

void ScratchFolder::writeFile(const std::wstring& relative, const std::string& bytes) const
{
    const HANDLE file = CreateFileW(longPathForTest(at(relative)).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file) << "CreateFileW failed: " << GetLastError();
    DWORD written = 0;
    EXPECT_TRUE(WriteFile(file, bytes.data(), DWORD(bytes.size()), &written, nullptr) && written == bytes.size());
    CloseHandle(file);
}

std::string ScratchFolder::readFile(const std::wstring& relative) const
{
    const HANDLE file = CreateFileW(longPathForTest(at(relative)).c_str(), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        ADD_FAILURE() << "CreateFileW failed: " << GetLastError();
        return std::string();
    }
    std::string bytes;
    char buffer[4096];
    DWORD got = 0;
    while (ReadFile(file, buffer, sizeof buffer, &got, nullptr) && got > 0)
        bytes.append(buffer, got);
    CloseHandle(file);
    return bytes;
}

void ScratchFolder::makeFolder(const std::wstring& relative) const
{
    EXPECT_TRUE(CreateDirectoryW(longPathForTest(at(relative)).c_str(), nullptr))
        << "CreateDirectoryW failed: " << GetLastError();
}

bool ScratchFolder::exists(const std::wstring& relative) const
{
    return GetFileAttributesW(longPathForTest(at(relative)).c_str()) != INVALID_FILE_ATTRIBUTES;
}
