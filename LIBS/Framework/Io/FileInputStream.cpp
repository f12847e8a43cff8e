#include "Framework/Io/FileInputStream.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/StdioFile.h"

namespace Framework { namespace Io {

FileInputStream::FileInputStream() : file(nullptr), currentPosition(0), fileLength(0) {}

FileInputStream::~FileInputStream() { close(); }

void FileInputStream::open(const String& path)
{
    if (file || path.empty())
        throw new Io::ErrorException(SITE);
    file = openMeasuredFile(path, L"rb", fileLength);
    currentPosition = 0;
    openPath = path;
}

void FileInputStream::close()
{
    if (!file)
        return;
    closeFile(file);
    file = nullptr;
    currentPosition = 0;
    fileLength = 0;
    openPath = String();
}

uint32_t FileInputStream::read(void* buffer, uint32_t count)
{
    if (!file)
        throw new StreamClosedException(SITE);
    if (count == String::npos) {
        const uint64_t rest = currentPosition < fileLength ? fileLength - currentPosition : 0;
        count = rest < String::npos ? uint32_t(rest) : String::npos;
    }
    const uint32_t got = readFile(file, buffer, count);
    currentPosition += got;
    return got;
}

void FileInputStream::seek(uint64_t position)
{
    if (!file)
        throw new StreamClosedException(SITE);
    if (position > fileLength)
        throw new EndOfStreamException(SITE);
    setFilePosition(file, position);
    currentPosition = position;
}

void FileInputStream::seekToEnd() { seek(fileLength); }

void FileInputStream::moveForward(uint64_t count)
{
    if (!file)
        throw new StreamClosedException(SITE);
    if (count > (currentPosition < fileLength ? fileLength - currentPosition : 0))
        throw new EndOfStreamException(SITE);
    seek(currentPosition + count);
}

void FileInputStream::moveBackward(uint64_t count)
{
    if (!file)
        throw new StreamClosedException(SITE);
    if (count > currentPosition)
        throw new Io::ErrorException(SITE);
    seek(currentPosition - count);
}

}}  // namespace Framework::Io
