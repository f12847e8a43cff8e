#include "Framework/Log/Configuration.h"

#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/RotatedFileWriter.h"

namespace Framework { namespace Log {

Configuration::Configuration() : formatters(new FormatterRegistry), defaultLevel(Level::Warning) {}

Level Configuration::levelFor(const String& contextName) const
{
    const wchar_t* name = contextName.c_str();
    uint32_t prefix = contextName.length();
    const uint32_t entries = contexts.size();
    for (;;) {
        for (uint32_t i = 0; i < entries; ++i) {
            const ContextLevel& entry = contexts.at(i);
            if (compare(entry.name.c_str(), entry.name.length(), name, prefix) == 0)
                return entry.level;
        }
        // The last "::" that lies wholly inside the prefix.
        uint32_t cut = prefix;
        while (cut >= 2 && !(name[cut - 2] == L':' && name[cut - 1] == L':'))
            --cut;
        if (cut < 2)
            return defaultLevel;
        prefix = cut - 2;
    }
}

void Configuration::setDefaultLevel(const String& levelName)
{
    defaultLevel = levelFromName(levelName);
}

void Configuration::setContextLevel(const String& levelName, const String& contextName)
{
    contexts.add(ContextLevel{contextName, levelFromName(levelName)});
}

void Configuration::setWriter(const SharedPointer<Writer>& newWriter)
{
    writer = newWriter;
}

bool Configuration::isEmpty() const
{
    return writer.isNull() && contexts.size() == 0;
}

void Configuration::prepareFormatters()
{
    const Array<String> names = formatters->names();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const SharedPointer<Formatter> formatter = formatters->get(names.at(i));
        formatter->setFormatters(formatters);
        formatter->setDefaultFormat();
    }
}

void Configuration::useDefaults(LogMode mode)
{
    const wchar_t* fileName = mode == LogMode::Internal ? L"logd.txt" : mode == LogMode::Product ? L"log.txt" : nullptr;
    if (!fileName)
        throw new ValueNotInitializedException(SITE);
    SharedPointer<Writer> rotated(new RotatedFileWriter);
    rotated->setProperty(L"filename", fileName);
    prepareFormatters();
    rotated->setFormatter(formatters->get(L"Line"));
    writer = rotated;
}

void Configuration::joinInstallerLog()
{
    if (writer.isNull() || writer->reachesInstallerLog())
        return;
    // In front: the installation's log never fails, so a configured writer that fails
    // at its target can't keep the line from it.
    SharedPointer<Writer> installerLog(new InstallerLogWriter);
    installerLog->setFormatter(formatters->get(L"Line"));
    SharedPointer<MultiWriter> both(new MultiWriter);
    both->add(installerLog);
    both->add(writer);
    writer = both;
}

}}  // namespace Framework::Log
