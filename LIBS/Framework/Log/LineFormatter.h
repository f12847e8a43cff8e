// A formatter that puts other formatters together by a template, and XmlFormatter,
// the same with a fixed template and a document head and tail.
//
// A template is a run of conversions  %flags(name)rest : `name` is a formatter in the
// registry (any case), `flags` is printf text up to the "(", `rest` runs to the next
// "%" and starts with the conversion letter. Each conversion renders the named
// formatter's finished text through "%" flags rest, so "%-8(level)S|" pads the level
// name to 8 and keeps "|". The template is parsed when it is set, never when a record
// is formatted. Its quirks, kept on purpose:
//
//   "%(level)S tail"        -> one piece "%S tail": text behind a conversion is its rest
//   "abc%(level)S"          -> "abc%S": text before the first conversion leads it
//   "abc%def%(level)S"      -> "def%S": a "%" token without "(" replaces the pending
//                              text, so "abc" is lost
//   "%(level)S%tail"        -> "%S": a trailing token without "(" is dropped
//   "%%"                    -> no escape: the template is split at "%", empty parts go
//   "at (x): %(level)S"     -> looks up a formatter named "x"
//   no "%" at all           -> no pieces; format gives ""
//
// Failures when the template is set: a "(" without ")" throws FormatException; an
// unknown name LookupException; no registry yet ValueNotInitializedException; a
// template that reaches this formatter again, itself or through other LineFormatters,
// FormatException, since formatting it would never end. A failed template leaves the
// formatter without pieces.
//
// The formatter keeps shared references to the formatters of its pieces but only a
// plain pointer to the registry, so that registry and entries form no cycle of
// ownership; the registry clears that pointer when it goes.
#pragma once
#include "Framework/Array.h"
#include "Framework/Log/Formatter.h"

namespace Framework { namespace Log {

class LineFormatter : public Formatter
{
public:
    // Parses at once; see above.
    void setFormat(const String& text) override;
    // "%(datetime)S %(threadname)S %(level)S %(context)S %(message)S"
    void setDefaultFormat() override;
    String format(const Record& record) const override;
    void setFormatters(const SharedPointer<FormatterRegistry>& registry) override;
    String name() const override { return L"Line"; }

protected:
    struct Piece
    {
        // printf text with one conversion, which gets the inner formatter's text.
        String pattern;
        SharedPointer<Formatter> formatter;
    };

    // Whether formatting `from` would come to `target`, through LineFormatter pieces.
    static bool reaches(const Formatter* from, const Formatter* target);

    Array<Piece> pieces;
    FormatterRegistry* registry = nullptr;
};

// Records as XML elements, without escaping and without the level:
//   <logrecord>\n<datetime>...</datetime>\n<threadname>...</threadname>\n
//   <context>...</context>\n<message>...</message>\n</logrecord>
// The head claims UTF-16LE, though the file writers write UTF-8 and the 8-bit writer
// the ANSI code page; no writer changes its encoding to match.
class XmlFormatter : public LineFormatter
{
public:
    void setDefaultFormat() override;
    String name() const override { return L"Xml"; }
    // "<?xml version=\"1.0\" encoding=\"UTF-16LE\"?>\n<log>"
    String header() const override;
    // "</log>"; written only by a writer's close().
    String footer() const override;
};

}}  // namespace Framework::Log
