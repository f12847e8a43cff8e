#include "Framework/Ini/IniParser.h"

#include "Framework/Environment.h"
#include "Framework/Exceptions.h"
#include "Framework/Io/Exceptions.h"
#include "Framework/Io/FileInputStream.h"
#include "Framework/Io/FileSystem.h"
#include "Framework/Io/LineReader.h"
#include "Framework/Io/Path.h"

namespace Framework {

namespace {

const char includeKeyword[] = "@include";
const uint32_t includeKeywordLength = 8;

// The text before the first ';' or '#', quotes or not: comments are cut blindly.
AnsiString beforeComment(const AnsiString& text)
{
    const Array<AnsiString> pieces = text.split(";#");
    return pieces.size() > 0 ? pieces.at(0) : AnsiString();
}

// An include names a file that can be read: a folder is no include.
bool isReadableFile(const String& text)
{
    return !text.empty() && Io::FileSystem::exists(text) && !Io::FileSystem::isFolderOnDisk(text);
}

}  // namespace

IniParser::IniParser(bool merge)
    : lineNumber(0), column(0), delimiters("./\\"), mergeSections(merge), includes(new FileSet)
{
}

IniParser::IniParser(const IniParser& parent, const SharedPointer<FileSet>& filesRead)
    : lineNumber(0),
      column(0),
      delimiters(parent.delimiters),
      mergeSections(parent.mergeSections),
      includes(filesRead)
{
}

IniParser::~IniParser() = default;

SharedPointer<InputValues> IniParser::parse(Io::InputStream& stream)
{
    fileName = String();
    return parseLines(stream);
}

SharedPointer<InputValues> IniParser::load(const String& name)
{
    fileName = name;
    if (!includes->insert(name).second)
        throw new ValueExistsException(SITE);
    Io::FileInputStream stream;
    stream.open(name);
    return parseLines(stream);
}

SharedPointer<InputValues> IniParser::parseLines(Io::InputStream& stream)
{
    Io::LineReader reader(stream);
    reader.setDelimiter("\n");
    lineNumber = 0;
    root.reset(new MemoryValues(String()));
    section.release();
    while (!reader.isAtEnd()) {
        reader.readLine(line);
        ++lineNumber;
        column = 0;
        AnsiString copy = line;
        copy.trimLeft();
        if (copy.empty() || copy.front() == 0 || copy.front() == ';' || copy.front() == '#')
            continue;
        if (copy.front() == '[')
            readSection();
        else if (copy.startsWith(includeKeyword))
            readInclude();
        else
            readPair();
    }
    // The caller gets the tree and the parser lets go of it: a parser read again
    // builds a new one.
    SharedPointer<InputValues> result = root;
    root.release();
    section.release();
    return result;
}

void IniParser::readPair()
{
    AnsiString piece = beforeComment(line);
    piece.trimRight();
    const char equals = '=';
    const uint32_t p = piece.find(&equals, 1);
    AnsiString name;
    AnsiString value;
    if (p == AnsiString::npos) {
        name = checkName(piece);
    } else {
        name = checkName(piece.substr(0, p));
        column += p + 1;
        value = valueText(piece.substr(p + 1));
    }
    SharedPointer<OutputValues> target = section.isNull() ? SharedPointer<OutputValues>(root) : section;
    target->addString(fromUtf8(name), fromUtf8(value));
}

void IniParser::readSection()
{
    AnsiString piece = beforeComment(line);
    piece.trimRight();
    if (!piece.endsWith(']'))
        fail("there is no end pair bracket in section", line.length());
    // The first byte goes unseen: a blank before "[" costs the blank, not the bracket,
    // and the bracket then fails the name check.
    piece.removeLast();
    piece.removeFirst();
    ++column;
    const AnsiString name = checkName(piece);
    const Array<AnsiString> parts = name.split(delimiters.c_str());
    Array<String> path;
    for (uint32_t i = 0; i < parts.size(); ++i)
        path.add(fromUtf8(parts.at(i)));
    section = openSection(path);
}

SharedPointer<OutputValues> IniParser::openSection(const Array<String>& path)
{
    if (path.size() == 0)
        throw new FormatException(SITE, FormatException::unknownPosition);
    SharedPointer<OutputValues> at(root);
    for (uint32_t i = 0; i + 1 < path.size(); ++i) {
        const String& component = path.at(i);
        const uint32_t count = at->groupCount(component);
        at = count > 0 ? at->group(component, count - 1) : at->addGroup(component);
    }
    const String& last = path.at(path.size() - 1);
    if (mergeSections && at->hasGroup(last))
        return at->group(last, at->groupCount(last) - 1);
    return at->addGroup(last);
}

AnsiString IniParser::checkName(const AnsiString& text)
{
    AnsiString name = text;
    name.trim();
    for (uint32_t i = 0; i < name.length(); ++i) {
        const char c = name.c_str()[i];
        if (c == '=' || c == '[' || c == ']')
            fail("there are restricted symbols in name", column + text.length());
    }
    name.unquote();
    ++column;
    return name;
}

AnsiString IniParser::valueText(const AnsiString& text)
{
    AnsiString value = text;
    value.trim();
    const char quote = value.unquoteAll();
    if (quote != '\'')
        expandVariables(value);
    ++column;
    return value;
}

void IniParser::expandVariables(AnsiString& value)
{
    static const char opening[] = "$(";
    const char closing = ')';
    uint32_t start = value.find(opening, 2);
    while (start != AnsiString::npos) {
        const uint32_t close = value.find(&closing, 1, start);
        const uint32_t next = start + 2 <= value.length() ? value.find(opening, 2, start + 2) : AnsiString::npos;
        if (close == AnsiString::npos || (next != AnsiString::npos && next < close))
            fail("There is no closing bracket in system variable", column + value.length());
        const AnsiString form = value.substr(start, close + 1);
        const AnsiString text(environmentVariable(String(value.substr(start + 2, close))));
        value.replaceFirst(form.c_str(), text.c_str(), start);
        start += text.length();
        start = start <= value.length() ? value.find(opening, 2, start) : AnsiString::npos;
    }
}

void IniParser::readInclude()
{
    if (line.length() <= includeKeywordLength + 1 || line.at(includeKeywordLength) != ' ')
        fail("Wrong include directive", line.length());
    String file(line.substr(includeKeywordLength + 1));
    file.trim();
    file.unquoteAll();
    file = findInclude(file);
    if (includes->count(file))
        return;
    IniParser child(*this, includes);
    const SharedPointer<InputValues> included = child.load(file);
    copyValues(*root, *included);
}

String IniParser::findInclude(const String& file) const
{
    if (isReadableFile(file))
        return file;
    if (!file.empty()) {
        // A name that is no path at all (bad characters, a bare share) is simply not
        // found: the message then says which name it was.
        try {
            Io::Path base(Io::Path(fileName, false).rootAndFolder(), true);
            if (!base.isEmpty()) {
                base.append(Io::Path(file, false));
                if (isReadableFile(base.fullText()))
                    return base.fullText();
            }
        } catch (ErrorException* raw) {
            delete raw;
        }
    }
    fail(String(L"Can't find include file: ") + file, line.length());
}

void IniParser::copyValues(OutputValues& target, const InputValues& source)
{
    const Array<String> names = source.valueNames();
    for (uint32_t i = 0; i < names.size(); ++i) {
        const String& name = names.at(i);
        switch (source.typeOf(name)) {
        case ValueType::Bool: target.setBool(name, source.getBool(name)); break;
        case ValueType::Int: target.setInt(name, source.getInt(name)); break;
        case ValueType::Uint: target.setUint(name, source.getUint(name)); break;
        case ValueType::Hyper: target.setHyper(name, source.getHyper(name)); break;
        case ValueType::Uhyper: target.setUhyper(name, source.getUhyper(name)); break;
        case ValueType::String: target.setString(name, source.getString(name)); break;
        case ValueType::Binary: target.setBinary(name, source.getBinary(name)); break;
        case ValueType::BoolArray: target.setBoolArray(name, source.getBoolArray(name)); break;
        case ValueType::IntArray: target.setIntArray(name, source.getIntArray(name)); break;
        case ValueType::UintArray: target.setUintArray(name, source.getUintArray(name)); break;
        case ValueType::HyperArray: target.setHyperArray(name, source.getHyperArray(name)); break;
        case ValueType::UhyperArray: target.setUhyperArray(name, source.getUhyperArray(name)); break;
        case ValueType::StringArray: target.setStringArray(name, source.getStringArray(name)); break;
        case ValueType::BinaryArray: target.setBinaryArray(name, source.getBinaryArray(name)); break;
        default: throw new Io::ErrorException(SITE);
        }
    }
    const Array<String> groups = source.groupNames();
    for (uint32_t i = 0; i < groups.size(); ++i) {
        const String& name = groups.at(i);
        const uint32_t count = source.groupCount(name);
        for (uint32_t index = 0; index < count; ++index)
            copyValues(*target.addGroup(name), *source.group(name, index));
    }
}

void IniParser::fail(const String& message, uint32_t errorColumn) const
{
    throw new TextFormatException(SITE, lineNumber, errorColumn, String(line), message, fileName);
}

}  // namespace Framework
