// A log writer that keeps earlier runs. Before the first text of a run it moves
// "log.txt" to "log001.txt", "log001.txt" to "log002.txt" and so on, so a lower
// number is always a newer run; the number goes between name and extension. The
// renames run from the oldest file to the newest, and a gap in the numbers ends the
// shifting there: with log.txt and log002.txt, log.txt becomes log001.txt and
// log002.txt stays.
//
// "backupCount" caps how many old files stay: with 2, log002.txt is deleted rather
// than moved. 0, the default, and an empty value mean no limit.
//
// Rotation happens once per writer, under the writer's lock, and only when there is
// something to write and a file to move: a run that logs nothing leaves the old
// files alone. Afterwards it writes as FileWriter does.
#pragma once
#include "Framework/Log/FileWriter.h"

namespace Framework { namespace Log {

class RotatedFileWriter : public FileWriter
{
public:
    // Accepts "fileName" and "dir" (see FileWriter) and "backupCount": empty means
    // no limit, anything else is read as a decimal number.
    void setProperty(const String& key, const String& value) override;
    void output(const String& text) override;

private:
    // Moves `source` to the next number up, after making room there.
    void rotate(const String& source);

    uint32_t rotationIndex = 0;
    bool rotatePending = true;
    uint32_t backupCount = 0;
};

}}  // namespace Framework::Log
