// The formatters of a configuration by name, without regard to case ("line" finds
// "Line"). It starts with one object of each of the twelve formatter classes under
// that class's name(), and a configuration may add more under names of its own.
//
// An entry is ready for use only after setFormatters(registry) and then
// setDefaultFormat() have been called on it: Configuration::prepareFormatters does so
// for all of them. Entries that are LineFormatters point back at the registry with a
// plain pointer, which the destructor clears before it lets the entries go.
#pragma once
#include "Framework/Array.h"
#include "Framework/Log/Formatter.h"
#include "Framework/NameHash.h"

namespace Framework { namespace Log {

class FormatterRegistry
{
public:
    FormatterRegistry();
    FormatterRegistry(const FormatterRegistry&) = delete;
    FormatterRegistry& operator=(const FormatterRegistry&) = delete;
    virtual ~FormatterRegistry();

    // A taken name throws ValueExistsException.
    void add(const String& name, const SharedPointer<Formatter>& formatter);
    // An unknown name throws LookupException.
    SharedPointer<Formatter> get(const String& name) const;
    // In the map's order, which is no order a caller can use.
    Array<String> names() const;

private:
    using Map = NameMap<SharedPointer<Formatter>>;
    SharedPointer<Map> entries;
};

}}  // namespace Framework::Log
