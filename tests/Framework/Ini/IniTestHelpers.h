// What the INI tests share: parsing a text held in memory, and the tree as one line
// that a table row can state. Values come first, in the order of their names, then
// each group in order:
//   "a = 1\na = 2\n[s]\nk"  ->  a="1","2";s{k="";}
#pragma once
#include "Framework/Ini/IniParser.h"
#include "Framework/Io/MemoryInputStream.h"

#include <string>

namespace ini_test {

inline Framework::String dumpTree(const Framework::InputValues& values)
{
    using Framework::String;
    String out;
    const Framework::Array<String> names = values.valueNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        out += names.at(i);
        out += L'=';
        const Framework::Array<String> texts = values.getStringArray(names.at(i));
        for (uint32_t t = 0; t < texts.size(); ++t) {
            if (t > 0)
                out += L',';
            out += L'"';
            out += texts.at(t);
            out += L'"';
        }
        out += L';';
    }
    const Framework::Array<String> groups = values.groupNames();
    for (uint32_t i = 0; i < groups.size(); ++i) {
        for (uint32_t index = 0; index < values.groupCount(groups.at(i)); ++index) {
            out += groups.at(i);
            out += L'{';
            out += dumpTree(*values.group(groups.at(i), index));
            out += L'}';
        }
    }
    return out;
}

inline Framework::SharedPointer<Framework::InputValues> parseText(const std::string& text, bool merge = false)
{
    Framework::IniParser parser(merge);
    Framework::Io::MemoryInputStream stream(text.data(), uint32_t(text.size()));
    return parser.parse(stream);
}

}  // namespace ini_test
