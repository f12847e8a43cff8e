// Reads INI text into a MemoryValues tree: a section is a group, a key is a list of
// texts, and a key given twice holds both, in file order. The log configuration reads
// the result through InputValues and never sees the text.
//
//   a = 1                 root: a = "1"
//   [w]                   group w:
//   level = "x ; y"         level = "\"x"   (the cut at ; and # ignores quotes)
//   name = 'a b'            name = "a b"
//   [w.sub/deep\er]       w > sub > deep > er: ".", "/" and "\" separate a path
//   [w]                   a second group w (unless mergeSections)
//   key                   key = ""
//   p = $(TEMP)\x         the environment variable TEMP, then "\x"
//   q = '$(TEMP)'         the text "$(TEMP)": single quotes stop substitution
//   @include other.ini    other.ini's keys and sections, at the top of the tree
//
// Bytes are bytes until a name or value is stored, then they are read as UTF-8; no
// byte-order mark is looked for. A line ends at "\n"; a "\r" before it is trimmed.
// An include's file name is in the ANSI code page. It is looked for as given, which
// means from the working folder, and then beside the including file; each file is
// read once per parse (the set of files read is shared with the child parser of an
// include), so cycles and repeats end quietly.
//
// Failures: a syntax error throws TextFormatException with the file (empty for a bare
// stream), the line from 1, a column, the message and the line itself. The column is
// a rough count, not a byte position: +1 for each finished name, value or section
// bracket, +p+1 at an "=" found at p, plus the length of the text in hand.
//   "there are restricted symbols in name"            "=", "[" or "]" in a name
//   "there is no end pair bracket in section"         "[a" (also "[a ; c]")
//   "There is no closing bracket in system variable"  "$(A", "$(A$(B))"
//   "Wrong include directive"                         "@include", "@includex", " @include a"
//   "Can't find include file: <name>"                 no such file, or a folder
// Other failures pass as they are: FormatException for an empty section path ("[]"),
// EnvironmentException for a variable that isn't set, ErrorException for "$()", what
// FileInputStream::open throws, and ValueExistsException from load of a file already
// read. The parse stops at the first error, and nothing of the tree reaches the caller.
#pragma once
#include "Framework/Io/Stream.h"
#include "Framework/MemoryValues.h"

#include <set>

namespace Framework {

class IniParser
{
public:
    // The files read so far, compared by exact 16-bit units (case counts).
    struct ExactLess
    {
        bool operator()(const String& a, const String& b) const
        {
            return compare(a.c_str(), a.length(), b.c_str(), b.length()) < 0;
        }
    };
    using FileSet = std::set<String, ExactLess>;

    // mergeSections: a section line naming an existing last-level section goes on in
    // it instead of making a second one of that name.
    explicit IniParser(bool mergeSections = false);
    // The parser of an include: parent's delimiters and merging, the shared set.
    IniParser(const IniParser& parent, const SharedPointer<FileSet>& includes);
    IniParser(const IniParser&) = delete;
    IniParser& operator=(const IniParser&) = delete;
    virtual ~IniParser();

    // Reads the stream to its end; errors name no file, and an include is found only
    // as given, since there is no including file to look beside.
    SharedPointer<InputValues> parse(Io::InputStream& stream);
    // Reads a file, after adding its name to the set of files read.
    SharedPointer<InputValues> load(const String& fileName);

    // Characters that separate the parts of a section name; "./\" unless changed.
    const AnsiString& pathDelimiters() const { return delimiters; }
    void setPathDelimiters(const AnsiString& text) { delimiters = text; }
    bool mergesSections() const { return mergeSections; }

    // The value of a pair from the text behind its "=": trimmed, every pair of
    // surrounding quotes removed, and $(NAME) replaced unless the first pair was '.
    //   "  x  " -> "x"   "\"'a'\"" -> "a"   "'$(A)'" -> "$(A)"   "\"$(A)\"" -> A's value
    AnsiString valueText(const AnsiString& text);
    // Replaces each $(NAME) from left to right; a replacement is not searched again.
    void expandVariables(AnsiString& value);
    // Every value and every group of source, recursively, into target; values replace
    // those of the same name, groups go behind those of the same name.
    static void copyValues(OutputValues& target, const InputValues& source);

private:
    SharedPointer<InputValues> parseLines(Io::InputStream& stream);
    void readPair();
    void readSection();
    void readInclude();
    AnsiString checkName(const AnsiString& text);
    SharedPointer<OutputValues> openSection(const Array<String>& path);
    String findInclude(const String& file) const;
    [[noreturn]] void fail(const String& message, uint32_t errorColumn) const;

    AnsiString line;
    SharedPointer<OutputValues> section;
    SharedPointer<MemoryValues> root;
    String fileName;
    uint32_t lineNumber;
    uint32_t column;
    AnsiString delimiters;
    bool mergeSections;
    SharedPointer<FileSet> includes;
};

}  // namespace Framework
