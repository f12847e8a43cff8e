#include "Framework/Log/ConfigurationLoader.h"

#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/Ini/IniParser.h"
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/MemoryInputStream.h"
#include "Framework/Io/Path.h"
#include "Framework/Log/ConsoleWriter.h"
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/InstallerLogWriter.h"
#include "Framework/Log/ItemFormatters.h"
#include "Framework/Log/LineFormatter.h"
#include "Framework/Log/MultiWriter.h"
#include "Framework/Log/RotatedFileWriter.h"
#include "Framework/NameHash.h"

#include <windows.h>

#include <memory>

namespace Framework { namespace Log {

namespace {

template <class Base>
using Factory = SharedPointer<Base> (*)();

template <class Base, class Made>
SharedPointer<Base> make()
{
    return SharedPointer<Base>(new Made);
}

const NameMap<Factory<Formatter>>& formatterFactories()
{
    static const NameMap<Factory<Formatter>> table = {
        {L"LineFormatter", make<Formatter, LineFormatter>},
        {L"DateTimeFormatter", make<Formatter, DateTimeFormatter>},
        {L"ElapsedTimeFormatter", make<Formatter, ElapsedTimeFormatter>},
        {L"LevelFormatter", make<Formatter, LevelFormatter>},
        {L"ThreadIdFormatter", make<Formatter, ThreadIdFormatter>},
        {L"ThreadNameFormatter", make<Formatter, ThreadNameFormatter>},
        {L"ContextFormatter", make<Formatter, ContextFormatter>},
        {L"ContextIndentFormatter", make<Formatter, ContextIndentFormatter>},
        {L"SourceFileFormatter", make<Formatter, SourceFileFormatter>},
        {L"SourceLineFormatter", make<Formatter, SourceLineFormatter>},
        {L"MessageFormatter", make<Formatter, MessageFormatter>},
        {L"XmlFormatter", make<Formatter, XmlFormatter>},
    };
    return table;
}

const NameMap<Factory<Writer>>& writerFactories()
{
    static const NameMap<Factory<Writer>> table = {
        {L"AnsiFileWriter", make<Writer, AnsiFileWriter>},
        {L"ConsoleWriter", make<Writer, ConsoleWriter>},
        {L"FileWriter", make<Writer, FileWriter>},
        {L"InstallerLogWriter", make<Writer, InstallerLogWriter>},
        {L"MultiWriter", make<Writer, MultiWriter>},
        {L"RotatedFileWriter", make<Writer, RotatedFileWriter>},
    };
    return table;
}

template <class Base>
SharedPointer<Base> create(const NameMap<Factory<Base>>& table, const String& className)
{
    const auto found = table.find(className);
    if (found == table.end())
        throw new ValueNotInitializedException(SITE);
    return found->second();
}

struct SourceNames
{
    const wchar_t* file;
    const wchar_t* variable;
    const wchar_t* resource;
};

SourceNames sourceNamesFor(LogMode mode)
{
    if (mode == LogMode::Internal)
        return {L"InternalLog.ini", L"INTERNAL_LOG", L"InternalLog"};
    if (mode == LogMode::Product)
        return {L"KorvalinLogConfig.ini", L"KORVALIN_LOG_CONFIG", L"KorvalinLogConfig"};
    throw new ValueNotInitializedException(SITE);
}

String location;

bool isName(const String& name, const wchar_t* wanted)
{
    return compareNoCase(name.c_str(), name.length(), wanted, String::textLength(wanted)) == 0;
}

using StreamHolder = std::unique_ptr<Io::InputStream>;

StreamHolder openFile(const String& path)
{
    std::unique_ptr<Io::FileInputStream> stream(new Io::FileInputStream);
    stream->open(path);
    return StreamHolder(stream.release());
}

// A relative name is looked for in the working folder, then beside the main program.
StreamHolder tryFile(const String& name)
{
    if (name.empty())
        return StreamHolder();
    if (Io::FileSystem::exists(name)) {
        StreamHolder stream = openFile(name);
        const Io::Path given(name, false);
        if (given.isAbsolute()) {
            location = name;
        } else {
            Io::Path full(Io::FileSystem::currentFolder(), true);
            full.append(given);
            location = full.fullText();
        }
        return stream;
    }
    Io::Path beside(Io::Path(Io::FileSystem::moduleFileName(), false).rootAndFolder(), true);
    beside.append(Io::Path(name, false));
    if (!Io::FileSystem::exists(beside.fullText()))
        return StreamHolder();
    StreamHolder stream = openFile(beside.fullText());
    location = beside.fullText();
    return stream;
}

// The module that holds this code: the library in an installer's host, the program
// in a test.
HMODULE ownModule()
{
    MEMORY_BASIC_INFORMATION memory;
    if (!VirtualQuery(reinterpret_cast<const void*>(&ownModule), &memory, sizeof memory))
        return nullptr;
    return static_cast<HMODULE>(memory.AllocationBase);
}

StreamHolder tryResource(const wchar_t* name)
{
    const HMODULE module = ownModule();
    const HRSRC resource = module ? FindResourceW(module, name, L"INI") : nullptr;
    const HGLOBAL loaded = resource ? LoadResource(module, resource) : nullptr;
    const DWORD size = loaded ? SizeofResource(module, resource) : 0;
    const void* bytes = size ? LockResource(loaded) : nullptr;
    if (!bytes)
        return StreamHolder();
    location = name;
    return StreamHolder(new Io::MemoryInputStream(bytes, size));
}

StreamHolder search(LogMode mode)
{
    location = String();
    const SourceNames names = sourceNamesFor(mode);
    if (StreamHolder found = tryFile(names.file))
        return found;
    if (hasEnvironmentVariable(names.variable)) {
        if (StreamHolder found = tryFile(environmentVariable(names.variable)))
            return found;
    }
    return tryResource(names.resource);
}

// The class a section names with "type", else the section's name and the suffix:
// "console" -> "consolewriter".
String className(const InputValues& section, const String& name, const wchar_t* suffix)
{
    return section.hasValue(L"type") ? section.getString(L"type") : name + String(suffix);
}

void readContexts(const InputValues& tree, Configuration& configuration)
{
    if (!tree.hasGroup(L"contexts"))
        return;
    const SharedPointer<InputValues> contexts = tree.group(L"contexts");
    const Array<String> names = contexts->valueNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const String& name = names.at(i);
        const String level = contexts->getString(name);
        if (isName(name, L"default"))
            configuration.setDefaultLevel(level);
        else
            configuration.setContextLevel(level, name);
    }
}

void readFormatters(const InputValues& tree, Configuration& configuration)
{
    configuration.prepareFormatters();
    if (!tree.hasGroup(L"formatters"))
        return;
    FormatterRegistry& registry = *configuration.formatters;
    const SharedPointer<InputValues> section = tree.group(L"formatters");
    const Array<String> names = section->groupNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const SharedPointer<InputValues> own = section->group(names.at(i));
        const SharedPointer<Formatter> formatter = createFormatter(className(*own, names.at(i), L"formatter"));
        registry.add(names.at(i), formatter);
        formatter->setFormatters(configuration.formatters);
        formatter->setDefaultFormat();
    }
    // Now that every name is known, templates may name any of them.
    const Array<String> shared = section->valueNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const SharedPointer<Formatter> formatter = registry.get(names.at(i));
        formatter->setDefaultFormat();
        for (uint32_t k = 0; k < shared.size(); ++k)
            formatter->setProperty(shared.at(k), section->getString(shared.at(k)));
        const SharedPointer<InputValues> own = section->group(names.at(i));
        const Array<String> keys = own->valueNames();
        for (uint32_t k = 0; k < keys.size(); ++k) {
            if (!isName(keys.at(k), L"type"))
                formatter->setProperty(keys.at(k), own->getString(keys.at(k)));
        }
    }
}

SharedPointer<Writer> readWriters(const InputValues& tree, const Configuration& configuration)
{
    if (!tree.hasGroup(L"writers"))
        return SharedPointer<Writer>();
    const SharedPointer<InputValues> section = tree.group(L"writers");
    const Array<String> active = section->getStringArray(L"active");
    if (active.size() == 0)
        return SharedPointer<Writer>();
    SharedPointer<MultiWriter> all(new MultiWriter);
    for (uint32_t i = 0; i < active.size(); ++i) {
        const SharedPointer<InputValues> own = section->group(active.at(i));
        const SharedPointer<Writer> writer = createWriter(className(*own, active.at(i), L"writer"));
        const Array<String> keys = own->valueNames();
        for (uint32_t k = 0; k < keys.size(); ++k) {
            const String& key = keys.at(k);
            if (isName(key, L"formatter"))
                writer->setFormatter(configuration.formatters->get(own->getString(key)));
            else if (!isName(key, L"type"))
                writer->setProperty(key, own->getString(key));
        }
        all->add(writer);
    }
    return all;
}

}  // namespace

SharedPointer<Formatter> createFormatter(const String& className)
{
    return create(formatterFactories(), className);
}

SharedPointer<Writer> createWriter(const String& className)
{
    return create(writerFactories(), className);
}

Configuration readConfiguration(Io::InputStream& stream)
{
    IniParser parser(false);
    const SharedPointer<InputValues> tree = parser.parse(stream);
    Configuration configuration;
    readContexts(*tree, configuration);
    readFormatters(*tree, configuration);
    configuration.setWriter(readWriters(*tree, configuration));
    return configuration;
}

Configuration loadConfiguration(LogMode mode)
{
    const StreamHolder stream = search(mode);
    if (!stream)
        return Configuration();
    return readConfiguration(*stream);
}

String configurationLocation()
{
    return location;
}

}}  // namespace Framework::Log
