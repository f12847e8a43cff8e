// The runtime's stdio, one call each, as the file streams use it. A failure throws
// Io::OsException with the Win32 error read right after the call (setFileSize: the
// plain Framework::OsException):
//
//   openFile          "fopen"           "Failed to open file '<path>'"   code 0
//   readFile          "fread"           "Failed to read file"            code: bytes read
//   writeFile         "fwrite"          "Failed to write file"           code: count
//   seekFileEnd       "_lseeki64"       "Seek failed"                    code all ones
//   flushFile         "fflush", "_commit"  "Flush error"                 code all ones
//   setFilePosition   "fsetpos"         no text                          code: the result
//   filePosition      "fgetpos"         no text                          code: the result
//   truncateFile      "SetEndOfFile"    no text                          code 0
//   setFileSize       "SetFilePointer"  no text, code 0xFFFFFFFF; then "SetEndOfFile", code 0
//
// A failure clears the FILE's error flag again, so that the next call starts clean.
//
// truncateFile and setFileSize cut at the system's file pointer, which the runtime's
// buffer can leave behind or ahead of the FILE's position. Both first bring the
// pointer to that position (which pushes pending writes out and drops read-ahead), so
// a caller doesn't have to flush first: what was written before the cut stays, what
// stood behind it goes.
#pragma once
#include "Framework/String.h"

#include <cstdio>

namespace Framework { namespace Io {

// _wfopen of the long form, with a wide mode such as L"rb".
FILE* openFile(const String& path, const wchar_t* mode);
// openFile, then fileSize into `size`; a file that cannot be measured is closed
// again before the failure goes on.
FILE* openMeasuredFile(const String& path, const wchar_t* mode, uint64_t& size);
// fclose; its result is not looked at.
void closeFile(FILE* file);
// fread of count bytes; reaching the end is not an error, only the error flag is.
// count 0 gives 0 at once; a null buffer throws Io::ErrorException.
uint32_t readFile(FILE* file, void* buffer, uint32_t count);
// fwrite of all count bytes; count 0 returns at once; a null buffer throws
// Io::ErrorException.
void writeFile(FILE* file, const void* buffer, uint32_t count);
// _lseeki64 of the descriptor to its end.
void seekFileEnd(FILE* file);
// fflush, then _commit: the data are on the disk when it returns.
void flushFile(FILE* file);
void setFilePosition(FILE* file, uint64_t position);
uint64_t filePosition(FILE* file);
// Measured by seeking to the end and back; the FILE's position is kept. A null file
// throws Io::ErrorException.
uint64_t fileSize(FILE* file);
// Cuts the file at the FILE's position.
void truncateFile(FILE* file);
// Cuts or extends the file (with zero bytes) to size. The FILE's position is kept,
// or pulled back to the new end if it stood behind it.
void setFileSize(FILE* file, uint64_t size);

// One file open through stdio, with the position and the size kept beside it: the
// state, the opening and closing and the seeking that FileInputStream and
// FileOutputStream share. The size is measured once, at open, and then follows what
// the stream reports (grown, cut). Closed until open(); a closed file can be opened
// again, and the destructor closes.
//
// Every operation but open, close and the readers of state throws
// StreamClosedException on a closed file. Seeking goes up to the size and no further
// (EndOfStreamException); moving behind the start throws Io::ErrorException.
class StdioFile
{
public:
    StdioFile() = default;
    StdioFile(const StdioFile&) = delete;
    StdioFile& operator=(const StdioFile&) = delete;
    ~StdioFile() { close(); }

    // What open checks first, for a caller with more to check before it opens: an
    // open file or an empty path throws Io::ErrorException.
    void expectOpenable(const String& path) const;
    // openMeasuredFile at position 0; a failed open leaves the file closed.
    void open(const String& path, const wchar_t* mode);
    // closeFile; nothing when closed.
    void close();

    bool isOpen() const { return file != nullptr; }
    bool isAtEnd() const { return currentPosition >= fileLength; }
    uint64_t position() const { return currentPosition; }
    uint64_t size() const { return fileLength; }
    // The text given to open; empty when closed.
    const String& pathText() const { return openPath; }
    // The FILE for one of the calls above.
    FILE* require() const;
    // What is left behind the position; 0 when a read went past the measured size.
    uint64_t remaining() const { return currentPosition < fileLength ? fileLength - currentPosition : 0; }

    void seek(uint64_t position);
    void seekToEnd() { seek(fileLength); }
    void moveForward(uint64_t count);
    void moveBackward(uint64_t count);

    // The position after `count` bytes went through; a write past the end grows the size.
    void passed(uint64_t count, bool grows);
    // The size after a cut or an extension; the position comes back to the new end
    // if it stood behind it.
    void resized(uint64_t newSize);

private:
    FILE* file = nullptr;
    uint64_t currentPosition = 0;
    uint64_t fileLength = 0;
    String openPath;
};

}}  // namespace Framework::Io
