#include "Framework/Io/FileOutputStream.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/Path.h"
#include "Framework/Io/StdioFile.h"

#include <algorithm>

namespace Framework { namespace Io {

FileOutputStream::FileOutputStream() : file(nullptr), currentPosition(0), fileLength(0) {}

FileOutputStream::~FileOutputStream() { close(); }

FILE* FileOutputStream::requireOpen() const
{
    if (!file)
        throw new StreamClosedException(SITE);
    return file;
}

void FileOutputStream::open(const String& path, bool truncate)
{
    if (file || path.empty())
        throw new Io::ErrorException(SITE);
    if (isDeviceText(path))
        throw new Framework::ErrorException(SITE);
    if (!FileSystem::exists(path))
        Path(path, false).ensureExists();
    file = openMeasuredFile(path, L"r+b", fileLength);
    currentPosition = 0;
    openPath = path;
    if (truncate)
        this->truncate();
}

void FileOutputStream::close()
{
    if (!file)
        return;
    closeFile(file);
    file = nullptr;
    currentPosition = 0;
    fileLength = 0;
    openPath = String();
}

void FileOutputStream::write(const void* buffer, uint32_t count)
{
    writeFile(requireOpen(), buffer, count);
    currentPosition += count;
    fileLength = std::max(fileLength, currentPosition);
}

void FileOutputStream::truncate()
{
    truncateFile(requireOpen());
    fileLength = currentPosition;
}

void FileOutputStream::flush() { flushFile(requireOpen()); }

void FileOutputStream::setSize(uint64_t size)
{
    setFileSize(requireOpen(), size);
    fileLength = size;
    currentPosition = std::min(currentPosition, size);
}

void FileOutputStream::seek(uint64_t position)
{
    FILE* const open = requireOpen();
    if (position > fileLength)
        throw new EndOfStreamException(SITE);
    setFilePosition(open, position);
    currentPosition = position;
}

void FileOutputStream::seekToEnd() { seek(fileLength); }

void FileOutputStream::moveForward(uint64_t count)
{
    requireOpen();
    if (count > fileLength - currentPosition)
        throw new EndOfStreamException(SITE);
    seek(currentPosition + count);
}

void FileOutputStream::moveBackward(uint64_t count)
{
    requireOpen();
    if (count > currentPosition)
        throw new Io::ErrorException(SITE);
    seek(currentPosition - count);
}

}}  // namespace Framework::Io
