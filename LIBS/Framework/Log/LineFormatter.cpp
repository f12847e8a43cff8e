#include "Framework/Log/LineFormatter.h"

#include "Framework/Log/FormatterRegistry.h"

namespace Framework { namespace Log {

bool LineFormatter::reaches(const Formatter* from, const Formatter* target)
{
    if (from == target)
        return true;
    const LineFormatter* line = dynamic_cast<const LineFormatter*>(from);
    if (!line)
        return false;
    // Every template was refused if it closed a loop, so the walk always ends.
    const Array<Piece> inner = line->pieces;
    for (uint32_t i = 0; i < inner.size(); ++i)
        if (reaches(inner.at(i).formatter.get(), target))
            return true;
    return false;
}

void LineFormatter::setFormat(const String& text)
{
    pieces = Array<Piece>();
    Array<Piece> parsed;
    String pending;
    const Array<String> tokens = text.split(L'%');
    for (uint32_t i = 0; i < tokens.size(); ++i) {
        const String& token = tokens.at(i);
        const uint32_t open = token.find(L"(", 1);
        if (open == String::npos) {
            pending = token;
            continue;
        }
        const uint32_t close = token.find(L")", 1, open + 1);
        if (close == String::npos)
            throw new FormatException(SITE, FormatException::unknownPosition);
        Piece piece;
        piece.pattern = pending + L'%' + token.substr(0, open) + token.substr(close + 1);
        pending = String();
        if (!registry)
            throw new ValueNotInitializedException(SITE);
        piece.formatter = registry->get(token.substr(open + 1, close));
        parsed.add(piece);
    }
    for (uint32_t i = 0; i < parsed.size(); ++i)
        if (reaches(parsed.at(i).formatter.get(), this))
            throw new FormatException(SITE, FormatException::unknownPosition);
    pieces = parsed;
}

void LineFormatter::setDefaultFormat()
{
    setFormat(L"%(datetime)S %(threadname)S %(level)S %(context)S %(message)S");
}

String LineFormatter::format(const Record& record) const
{
    String result;
    const Array<Piece> own = pieces;
    for (uint32_t i = 0; i < own.size(); ++i) {
        const Piece& piece = own.at(i);
        result += String::format(piece.pattern.c_str(), piece.formatter->format(record).c_str());
    }
    return result;
}

void LineFormatter::setFormatters(const SharedPointer<FormatterRegistry>& formatters)
{
    registry = formatters.isNull() ? nullptr : formatters.get();
}

void XmlFormatter::setDefaultFormat()
{
    setFormat(L"<logrecord>\n<datetime>%(datetime)S</datetime>\n<threadname>%(threadname)S</threadname>\n"
              L"<context>%(context)S</context>\n<message>%(message)S</message>\n</logrecord>");
}

String XmlFormatter::header() const
{
    return L"<?xml version=\"1.0\" encoding=\"UTF-16LE\"?>\n<log>";
}

String XmlFormatter::footer() const
{
    return L"</log>";
}

}}  // namespace Framework::Log
