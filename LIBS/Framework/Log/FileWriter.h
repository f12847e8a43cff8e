// Writers into one file: FileWriter in UTF-8, AnsiFileWriter in the system's ANSI
// code page. Told nothing, they write "log.txt" in the process's working folder.
//
// The file is opened at the first output, not before: a run that logs nothing leaves
// an old file alone. At that first output an existing file of the name is removed and
// the new one starts empty; if it can't be removed, the new text overwrites it from
// the start. FileWriter flushes each text to the disk before it returns; no byte-order
// mark is ever written.
//
// Properties (keys without regard to case):
//   "fileName"  the file's name and extension, no folder: "setup.txt"
//   "dir"       the folder, "\" added when missing: "C:\Logs" -> "C:\Logs\"
// Either of them, given while the file is open, closes it and opens the new path
// without emptying it, at its end: later text goes to the new file at once.
#pragma once
#include "Framework/Io/FileOutputStream.h"
#include "Framework/Io/Path.h"
#include "Framework/Log/Writer.h"

namespace Framework { namespace Log {

class FileWriter : public Writer
{
public:
    FileWriter();
    ~FileWriter() override;

    void setProperty(const String& key, const String& value) override;
    // UTF-8, flushed to the disk.
    void output(const String& text) override;

    // The file that is or will be written.
    const Io::Path& filePath() const { return path; }

protected:
    // Opens the stream at path, removing an old file first, unless it is open.
    void openFresh();

    Io::FileOutputStream stream;
    Io::Path path;
};

// Each text goes out in the ANSI code page followed by one zero byte, so the file is
// a run of zero-terminated texts; a character outside the code page becomes the code
// page's default character. It doesn't flush.
class AnsiFileWriter : public FileWriter
{
public:
    void output(const String& text) override;
};

}}  // namespace Framework::Log
