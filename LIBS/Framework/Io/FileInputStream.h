// Reads a file through the runtime's stdio, in binary mode. The position and the size
// live in the object: the size is measured once, at open, so position(), size() and
// isAtEnd() make no runtime call, and a file that grows after open reads as it was.
//
// Closed from construction until open(); open on an open stream, or with an empty
// path, throws Io::ErrorException, and a failed open leaves it closed. A closed stream
// can be opened again. The destructor closes.
#pragma once
#include "Framework/Io/StdioFile.h"
#include "Framework/Io/Stream.h"

namespace Framework { namespace Io {

class FileInputStream : public SeekableInputStream
{
public:
    FileInputStream() = default;
    FileInputStream(const FileInputStream&) = delete;
    FileInputStream& operator=(const FileInputStream&) = delete;
    ~FileInputStream() override;

    void open(const String& path) { file.open(path, L"rb"); }
    void close() override { file.close(); }
    bool isOpen() const override { return file.isOpen(); }
    bool isAtEnd() const override { return file.isAtEnd(); }

    // npos reads the rest (as much of it as 32 bits count); 0 at the end.
    uint32_t read(void* buffer, uint32_t count) override;
    uint64_t size() const override { return file.size(); }

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
