#include "Framework/Log/MultiWriter.h"

namespace Framework { namespace Log {

void MultiWriter::add(const SharedPointer<Writer>& writer)
{
    writers.add(writer);
}

void MultiWriter::setFormatter(const SharedPointer<Formatter>& newFormatter)
{
    Writer::setFormatter(newFormatter);
    for (uint32_t i = 0; i < writers.size(); ++i)
        writers.at(i)->setFormatter(newFormatter);
}

void MultiWriter::setProperty(const String& key, const String& value)
{
    for (uint32_t i = 0; i < writers.size(); ++i)
        writers.at(i)->setProperty(key, value);
}

void MultiWriter::write(const Record& record)
{
    for (uint32_t i = 0; i < writers.size(); ++i)
        writers.at(i)->write(record);
}

void MultiWriter::output(const String& text)
{
    for (uint32_t i = 0; i < writers.size(); ++i)
        writers.at(i)->output(text);
}

void MultiWriter::close()
{
    Writer::close();
    for (uint32_t i = 0; i < writers.size(); ++i)
        writers.at(i)->close();
}

bool MultiWriter::reachesInstallerLog() const
{
    for (uint32_t i = 0; i < writers.size(); ++i)
        if (writers.at(i)->reachesInstallerLog())
            return true;
    return false;
}

}}  // namespace Framework::Log
