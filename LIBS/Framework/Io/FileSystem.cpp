#include "Framework/Io/FileSystem.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/Path.h"

#include <windows.h>

#include <direct.h>
#include <io.h>
#include <sys/stat.h>
#include <sys/utime.h>

#include <cstdio>
#include <vector>

namespace Framework { namespace Io { namespace FileSystem {

namespace {

const uint64_t allOnes = ~uint64_t(0);
// What _waccess leaves in GetLastError for a device name such as \\.\COM1.
const uint32_t invalidParameter = ERROR_INVALID_PARAMETER;
const uint32_t invalidFunction = ERROR_INVALID_FUNCTION;

// A locked or forbidden file is there all the same.
bool isThereAnyway(uint32_t lastError) { return lastError == ERROR_SHARING_VIOLATION || lastError == ERROR_ACCESS_DENIED; }

// The error record is taken first, before the message is built, so that nothing
// in between can change it.
[[noreturn]] void throwFailure(const OsError& error, uint64_t code, const wchar_t* operation, const String& message)
{
    throw new OsException(SITE, error, code, String(operation), message);
}

String quoted(const wchar_t* sentence, const String& text) { return String::format(sentence, text.c_str()); }

}  // namespace

bool accessible(const String& text, int mode, uint32_t* lastError)
{
    if (text.empty())
        return false;
    const int result = _waccess(toLongForm(text).c_str(), mode);
    if (result == 0 || mode != 0)
        return result == 0;
    const uint32_t error = GetLastError();
    if (lastError)
        *lastError = error;
    return isThereAnyway(error);
}

bool exists(const String& text)
{
    uint32_t error = 0;
    if (accessible(text, 0, &error))
        return true;
    if (error != invalidParameter && error != invalidFunction)
        return false;
    return canOpen(text);
}

bool canOpen(const String& text)
{
    // The wide call: the narrow one would read the name in the ANSI code page.
    FILE* file = _wfopen(text.c_str(), L"rb");
    const uint32_t error = GetLastError();
    if (file) {
        std::fclose(file);
        return true;
    }
    return isThereAnyway(error);
}

bool isFolderOnDisk(const String& text)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExW(toLongForm(text).c_str(), GetFileExInfoStandard, &data))
        return false;
    return (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool isReadOnly(const String& text)
{
    if (text.empty())
        throw new PathNotFoundException(SITE, text);
    if (accessible(text, 2))
        return false;
    return accessible(text, 4);
}

void createFile(const String& text)
{
    const int descriptor = _wcreat(toLongForm(text).c_str(), _S_IREAD | _S_IWRITE);
    if (descriptor == -1) {
        const OsError error(true);
        throwFailure(error, allOnes, L"_wcreat", quoted(L"Failed to create file '%S'", text));
    }
    _close(descriptor);
}

void createFolder(const String& text)
{
    if (_wmkdir(toLongForm(text).c_str()) == -1) {
        const OsError error(false);
        throwFailure(error, allOnes, L"_wmkdir", quoted(L"Failed to create folder '%S'", text));
    }
}

void removeFile(const String& text)
{
    if (text.empty())
        throw new Framework::ErrorException(SITE);
    if (_wremove(toLongForm(text).c_str()) == -1) {
        const OsError error(true);
        throwFailure(error, allOnes, L"_wremove", quoted(L"Failed to remove file '%S'", text));
    }
}

bool removeFileQuietly(const String& text)
{
    return !text.empty() && _wremove(toLongForm(text).c_str()) == 0;
}

void removeFolder(const String& text)
{
    if (text.empty())
        throw new Framework::ErrorException(SITE);
    if (_wrmdir(toLongForm(text).c_str()) == -1) {
        const OsError error(false);
        throwFailure(error, allOnes, L"_wrmdir", quoted(L"Failed to remove folder '%S'", text));
    }
}

uint16_t statMode(const String& text)
{
    struct _stati64 status;
    if (_wstati64(toLongForm(text).c_str(), &status) == -1) {
        const OsError error(false);
        throwFailure(error, allOnes, L"_wstati64", quoted(L"Failed to get file attributes '%S'", text));
    }
    return uint16_t(status.st_mode);
}

uint16_t fileMode(const String& text)
{
    if (!endsWithSeparator(text) || isRootOnlyText(text))
        return statMode(text);
    String cut = text;
    while (endsWithSeparator(cut))
        cut.removeLast();
    return statMode(cut);
}

void setFileMode(const String& text, uint16_t mode)
{
    if (_wchmod(toLongForm(text).c_str(), mode) == -1) {
        const OsError error(false);
        throwFailure(error, allOnes, L"_wchmod", quoted(L"Failed to set file attributes '%S'", text));
    }
}

void makeWritable(const String& text)
{
    if (!exists(text))
        throw new PathNotFoundException(SITE, text);
    setFileMode(text, uint16_t(fileMode(text) | _S_IWRITE));
}

void touch(const String& text)
{
    if (_wutime(toLongForm(text).c_str(), nullptr) == -1) {
        const OsError error(false);
        throwFailure(error, allOnes, L"_wutime", String(L"Time error"));
    }
}

String currentFolder()
{
    std::vector<wchar_t> buffer(32768);
    if (!_wgetcwd(buffer.data(), int(buffer.size()))) {
        const OsError error(false);
        throwFailure(error, 0, L"_wgetcwd", String(L"pwd error"));
    }
    const Path folder(String(buffer.data()), true);
    if (folder.isEmpty())
        throw new Framework::ErrorException(SITE);
    return folder.fullText();
}

String moduleFileName()
{
    std::vector<wchar_t> buffer(32768);
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), DWORD(buffer.size()));
    if (length == 0) {
        const OsError error(true);
        throwFailure(error, 0, L"GetModuleFileNameW", String());
    }
    String name(buffer.data(), length);
    name.trimAtZero();
    if (name.startsWith(L"\\\\?\\UNC\\"))
        return String(L"\\\\") + name.substr(8);
    if (name.startsWith(L"\\\\?\\"))
        return name.substr(4);
    return name;
}

}}}  // namespace Framework::Io::FileSystem
