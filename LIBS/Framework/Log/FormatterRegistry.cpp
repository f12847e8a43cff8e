#include "Framework/Log/FormatterRegistry.h"

#include "Framework/Log/ItemFormatters.h"
#include "Framework/Log/LineFormatter.h"

namespace Framework { namespace Log {

namespace {

template <class F>
void addBuiltIn(FormatterRegistry& registry)
{
    SharedPointer<Formatter> formatter(new F);
    registry.add(formatter->name(), formatter);
}

}  // namespace

FormatterRegistry::FormatterRegistry() : entries(new Map)
{
    addBuiltIn<DateTimeFormatter>(*this);
    addBuiltIn<ElapsedTimeFormatter>(*this);
    addBuiltIn<LevelFormatter>(*this);
    addBuiltIn<ThreadIdFormatter>(*this);
    addBuiltIn<ThreadNameFormatter>(*this);
    addBuiltIn<ContextFormatter>(*this);
    addBuiltIn<ContextIndentFormatter>(*this);
    addBuiltIn<SourceFileFormatter>(*this);
    addBuiltIn<SourceLineFormatter>(*this);
    addBuiltIn<MessageFormatter>(*this);
    addBuiltIn<LineFormatter>(*this);
    addBuiltIn<XmlFormatter>(*this);
}

FormatterRegistry::~FormatterRegistry()
{
    const SharedPointer<FormatterRegistry> none;
    for (auto& entry : *entries)
        entry.second->setFormatters(none);
    entries->clear();
}

void FormatterRegistry::add(const String& name, const SharedPointer<Formatter>& formatter)
{
    if (entries->find(name) != entries->end())
        throw new ValueExistsException(SITE);
    entries->emplace(name, formatter);
}

SharedPointer<Formatter> FormatterRegistry::get(const String& name) const
{
    const auto found = entries->find(name);
    if (found == entries->end())
        throw new LookupException(SITE);
    return found->second;
}

Array<String> FormatterRegistry::names() const
{
    Array<String> result;
    for (const auto& entry : *entries)
        result.add(entry.first);
    return result;
}

}}  // namespace Framework::Log
