#include "Framework/Io/FileOutputStream.h"

#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/Path.h"

namespace Framework { namespace Io {

FileOutputStream::~FileOutputStream() = default;

void FileOutputStream::open(const String& path, bool truncate)
{
    file.expectOpenable(path);
    if (isDeviceText(path))
        throw new Framework::ErrorException(SITE);
    if (!FileSystem::exists(path))
        Path(path, false).ensureExists();
    file.open(path, L"r+b");
    if (truncate)
        this->truncate();
}

void FileOutputStream::write(const void* buffer, uint32_t count)
{
    writeFile(file.require(), buffer, count);
    file.passed(count, true);
}

void FileOutputStream::truncate()
{
    truncateFile(file.require());
    file.resized(file.position());
}

void FileOutputStream::flush() { flushFile(file.require()); }

void FileOutputStream::setSize(uint64_t size)
{
    setFileSize(file.require(), size);
    file.resized(size);
}

}}  // namespace Framework::Io
