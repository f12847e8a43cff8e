// A folder on the real disk that one test owns: made fresh under the Windows temp
// folder, removed with everything in it when the object goes, read-only files and
// paths beyond MAX_PATH included. Files are made and looked at with the raw Win32
// calls, so a test can prepare any state and check exactly what the code under test
// left behind.
#pragma once
#include <windows.h>

#include <string>

class ScratchFolder
{
public:
    // The folder's name starts with label; the process id and a count make it unique.
    explicit ScratchFolder(const std::wstring& label);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder, with a trailing backslash.
    const std::wstring& path() const { return folder; }
    // path() + relative.
    std::wstring at(const std::wstring& relative) const { return folder + relative; }

    // Creates or replaces a file with exactly these bytes.
    void writeFile(const std::wstring& relative, const std::string& bytes) const;
    // The file's bytes; a missing file fails the test and gives "".
    std::string readFile(const std::wstring& relative) const;
    void makeFolder(const std::wstring& relative) const;
    bool exists(const std::wstring& relative) const;

private:
    std::wstring folder;
};
