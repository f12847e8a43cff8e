#include "Framework/Io/StdioFile.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/PathText.h"

#include <windows.h>

#include <io.h>

#include <algorithm>

namespace Framework { namespace Io {

namespace {

const uint64_t allOnes = ~uint64_t(0);

// The error record comes first, before anything else can touch it; the FILE's error
// flag is cleared so that one failure doesn't fail every call after it.
[[noreturn]] void fail(FILE* file, const OsError& error, uint64_t code, const wchar_t* operation,
                       const String& message)
{
    if (file)
        std::clearerr(file);
    throw new OsException(SITE, error, code, String(operation), message);
}

HANDLE systemHandle(FILE* file) { return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file))); }

// Moves the system's file pointer to where the FILE stands: fsetpos writes pending
// data out and drops what was read ahead.
uint64_t alignSystemPointer(FILE* file)
{
    const uint64_t here = filePosition(file);
    setFilePosition(file, here);
    return here;
}

}  // namespace

FILE* openFile(const String& path, const wchar_t* mode)
{
    FILE* file = _wfopen(toLongForm(path).c_str(), mode);
    if (!file) {
        const OsError error(true);
        fail(nullptr, error, 0, L"fopen", String::format(L"Failed to open file '%S'", path.c_str()));
    }
    return file;
}

FILE* openMeasuredFile(const String& path, const wchar_t* mode, uint64_t& size)
{
    FILE* file = openFile(path, mode);
    try {
        size = fileSize(file);
    } catch (Exception*) {
        closeFile(file);
        throw;
    }
    return file;
}

void closeFile(FILE* file) { std::fclose(file); }

uint32_t readFile(FILE* file, void* buffer, uint32_t count)
{
    if (count == 0)
        return 0;
    if (!buffer)
        throw new Io::ErrorException(SITE);
    const size_t got = std::fread(buffer, 1, count, file);
    if (std::ferror(file)) {
        const OsError error(true);
        fail(file, error, got, L"fread", String(L"Failed to read file"));
    }
    return uint32_t(got);
}

void writeFile(FILE* file, const void* buffer, uint32_t count)
{
    if (count == 0)
        return;
    if (!buffer)
        throw new Io::ErrorException(SITE);
    const size_t written = std::fwrite(buffer, 1, count, file);
    if (written < count || std::ferror(file)) {
        const OsError error(true);
        fail(file, error, count, L"fwrite", String(L"Failed to write file"));
    }
}

void seekFileEnd(FILE* file)
{
    if (_lseeki64(_fileno(file), 0, SEEK_END) == -1) {
        const OsError error(true);
        fail(file, error, allOnes, L"_lseeki64", String(L"Seek failed"));
    }
}

void flushFile(FILE* file)
{
    // A failed fflush means data never left the buffer: as much a flush error as a
    // failed _commit.
    if (std::fflush(file) != 0) {
        const OsError error(true);
        fail(file, error, allOnes, L"fflush", String(L"Flush error"));
    }
    if (_commit(_fileno(file)) == -1) {
        const OsError error(true);
        fail(file, error, allOnes, L"_commit", String(L"Flush error"));
    }
}

void setFilePosition(FILE* file, uint64_t position)
{
    const fpos_t target = fpos_t(position);
    const int result = std::fsetpos(file, &target);
    if (result != 0 || std::ferror(file)) {
        const OsError error(true);
        fail(file, error, uint64_t(int64_t(result)), L"fsetpos", String());
    }
}

uint64_t filePosition(FILE* file)
{
    fpos_t position = 0;
    const int result = std::fgetpos(file, &position);
    if (result != 0) {
        const OsError error(true);
        fail(file, error, uint64_t(int64_t(result)), L"fgetpos", String());
    }
    return uint64_t(position);
}

uint64_t fileSize(FILE* file)
{
    if (!file)
        throw new Io::ErrorException(SITE);
    // With the runtime's buffer empty, the FILE's position after the descriptor's
    // seek is the descriptor's, which is the size.
    const uint64_t here = alignSystemPointer(file);
    seekFileEnd(file);
    const uint64_t size = filePosition(file);
    setFilePosition(file, here);
    return size;
}

void truncateFile(FILE* file)
{
    alignSystemPointer(file);
    if (!SetEndOfFile(systemHandle(file))) {
        const OsError error(true);
        fail(file, error, 0, L"SetEndOfFile", String());
    }
}

void setFileSize(FILE* file, uint64_t size)
{
    const uint64_t here = alignSystemPointer(file);
    const HANDLE handle = systemHandle(file);
    LONG high = LONG(uint32_t(size >> 32));
    // INVALID_SET_FILE_POINTER is also a valid low word: only the last error tells.
    SetLastError(NO_ERROR);
    const DWORD low = SetFilePointer(handle, LONG(uint32_t(size)), &high, FILE_BEGIN);
    if (low == INVALID_SET_FILE_POINTER && GetLastError() != NO_ERROR) {
        const OsError error(true);
        std::clearerr(file);
        throw new Framework::OsException(SITE, error, 0xFFFFFFFFu, String(L"SetFilePointer"), String());
    }
    if (!SetEndOfFile(handle)) {
        const OsError error(true);
        std::clearerr(file);
        throw new Framework::OsException(SITE, error, 0, String(L"SetEndOfFile"), String());
    }
    setFilePosition(file, std::min(here, size));
}

void StdioFile::expectOpenable(const String& path) const
{
    if (file || path.empty())
        throw new Io::ErrorException(SITE);
}

void StdioFile::open(const String& path, const wchar_t* mode)
{
    expectOpenable(path);
    uint64_t length = 0;
    file = openMeasuredFile(path, mode, length);
    fileLength = length;
    currentPosition = 0;
    openPath = path;
}

void StdioFile::close()
{
    if (!file)
        return;
    closeFile(file);
    file = nullptr;
    currentPosition = 0;
    fileLength = 0;
    openPath = String();
}

FILE* StdioFile::require() const
{
    if (!file)
        throw new StreamClosedException(SITE);
    return file;
}

void StdioFile::seek(uint64_t position)
{
    FILE* const stream = require();
    if (position > fileLength)
        throw new EndOfStreamException(SITE);
    setFilePosition(stream, position);
    currentPosition = position;
}

void StdioFile::moveForward(uint64_t count)
{
    require();
    if (count > remaining())
        throw new EndOfStreamException(SITE);
    seek(currentPosition + count);
}

void StdioFile::moveBackward(uint64_t count)
{
    require();
    if (count > currentPosition)
        throw new Io::ErrorException(SITE);
    seek(currentPosition - count);
}

void StdioFile::passed(uint64_t count, bool grows)
{
    currentPosition += count;
    if (grows)
        fileLength = std::max(fileLength, currentPosition);
}

void StdioFile::resized(uint64_t newSize)
{
    fileLength = newSize;
    currentPosition = std::min(currentPosition, newSize);
}

}}  // namespace Framework::Io
