#include "Framework/Log/RotatedFileWriter.h"

namespace Framework { namespace Log {

void RotatedFileWriter::setProperty(const String& key, const String& value)
{
    if (keyIs(key, L"backupCount"))
        backupCount = value.empty() ? 0 : uint32_t(value.toInt(10));
    else
        FileWriter::setProperty(key, value);
}

void RotatedFileWriter::output(const String& text)
{
    rotationIndex = 0;
    if (rotatePending && path.exists())
        rotate(path.fullText());
    rotatePending = false;
    FileWriter::output(text);
}

void RotatedFileWriter::rotate(const String& source)
{
    ++rotationIndex;
    Io::Path target(path.fullText(), false);
    target.setName(String::format(L"%S%03d", target.name().c_str(), rotationIndex));
    if (target.exists() && (backupCount == 0 || rotationIndex < backupCount))
        rotate(target.fullText());
    target.remove(true);
    Io::Path(source, false).rename(target);
}

}}  // namespace Framework::Log
