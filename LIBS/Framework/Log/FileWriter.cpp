#include "Framework/Log/FileWriter.h"

#include "Framework/Io/FileSystem.h"

namespace Framework { namespace Log {

FileWriter::FileWriter()
{
    path.setFileName(L"log.txt");
}

FileWriter::~FileWriter()
{
    stream.close();
}

void FileWriter::setProperty(const String& key, const String& value)
{
    if (keyIs(key, L"fileName")) {
        path.setFileName(value);
    } else if (keyIs(key, L"dir")) {
        String folder = value;
        if (!folder.endsWith(L'\\'))
            folder += L'\\';
        path.setFolderPath(folder);
    } else {
        return;
    }
    if (stream.isOpen()) {
        CriticalSection::Hold hold(lock);
        stream.close();
        stream.open(path.fullText(), false);
        // Opening stands at 0; without this the new text would overwrite the old.
        stream.seekToEnd();
    }
}

void FileWriter::openFresh()
{
    if (stream.isOpen())
        return;
    const String& full = path.fullText();
    if (Io::FileSystem::exists(full))
        Io::FileSystem::removeFileQuietly(full);
    stream.open(full, false);
}

void FileWriter::output(const String& text)
{
    openFresh();
    const AnsiString bytes = toUtf8(text);
    stream.write(bytes.c_str(), bytes.length());
    stream.flush();
}

void AnsiFileWriter::output(const String& text)
{
    openFresh();
    stream.writeText(AnsiString(text), true);
}

}}  // namespace Framework::Log
