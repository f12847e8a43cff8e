// Writes a file through the runtime's stdio, in binary mode ("r+b"). open makes the
// file, and the folders on its way, when it is missing, and starts at position 0, not
// at the end: a writer that appends calls seekToEnd() itself. The position and the
// size live in the object; the size follows the writes.
//
// Seeking stops at the size, as in FileInputStream; setSize is how a file grows
// without writing (with zero bytes, sparse where the file system allows). truncate()
// and setSize() need no flush first (see StdioFile.h). flush() puts the data on the
// disk before it returns; close() and the destructor write out what is buffered but
// don't look at the result.
//
// open on an open stream or with an empty path throws Io::ErrorException, and a
// device ("\\.\COM1") throws ErrorException: a device can't be opened for output.
#pragma once
#include "Framework/Io/StdioFile.h"
#include "Framework/Io/Stream.h"

namespace Framework { namespace Io {

class FileOutputStream : public SeekableOutputStream
{
public:
    FileOutputStream() = default;
    FileOutputStream(const FileOutputStream&) = delete;
    FileOutputStream& operator=(const FileOutputStream&) = delete;
    ~FileOutputStream() override;

    // truncate empties an existing file.
    void open(const String& path, bool truncate);
    void close() override { file.close(); }
    bool isOpen() const override { return file.isOpen(); }
    bool isAtEnd() const override { return file.isAtEnd(); }

    void write(const void* buffer, uint32_t count) override;
    // Cuts the file at the position.
    void truncate() override;
    void flush() override;
    // Cuts or extends the file; the position is pulled back to the new end if it
    // stood behind it.
    void setSize(uint64_t size) override;
    uint64_t size() const { return file.size(); }

    // Up to the size and no further: behind it throws EndOfStreamException.
    void seek(uint64_t position) override { file.seek(position); }
    void seekToEnd() override { file.seekToEnd(); }
    uint64_t position() const override { return file.position(); }
    void moveForward(uint64_t count) override { file.moveForward(count); }
    // Behind the start throws Io::ErrorException.
    void moveBackward(uint64_t count) override { file.moveBackward(count); }

    // The text given to open; empty when closed.
    const String& pathText() const { return file.pathText(); }

private:
    StdioFile file;
};

}}  // namespace Framework::Io
