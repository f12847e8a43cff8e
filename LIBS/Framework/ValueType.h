// The closed list of value types of the value tree, with their stored names and the
// narrow print formats that writers hand to AnsiString::format.
//
//   typeName(ValueType::Uint) -> "Uint"     parseType("UINTARRAY") -> ValueType::UintArray
//   printFormat(ValueType::Hyper) -> "%Ld"  parseBool("YES") -> true, parseBool("No") -> false
#pragma once
#include "Framework/Array.h"
#include "Framework/String.h"

namespace Framework {

// Numbered as stored; the names are the stored type names.
enum class ValueType : uint32_t {
    Bool = 0,         // bool                 "%d"
    Int = 1,          // Int                  "%d"
    Uint = 2,         // Uint                 "%u"
    Hyper = 3,        // Hyper                "%Ld"
    Uhyper = 4,       // Uhyper               "%Lu"
    String = 5,       // String               "%S"
    Binary = 6,       // AnsiString of bytes  "%s"
    BoolArray = 7,    // Array<bool>          "%d"
    IntArray = 8,     // Array<Int>           "%d"
    UintArray = 9,    // Array<Uint>          "%u"
    HyperArray = 10,  // Array<Hyper>         "%Ld"
    UhyperArray = 11, // Array<Uhyper>        "%Lu"
    StringArray = 12, // Array<String>        "%S"
    BinaryArray = 13, // Array<AnsiString>    "%s"
};

const uint32_t valueTypeCount = 14;

// The number types by the names of their value types. Declared behind the list, so
// that its enumerators don't shadow them.
using Int = int32_t;
using Uint = uint32_t;
using Hyper = int64_t;
using Uhyper = uint64_t;

// A number outside the list throws LookupException.
String typeName(ValueType type);
// The first name that equals the text under compareNoCase; none throws LookupException.
ValueType parseType(const String& text);
// "true" or "false".
String boolText(bool value);
// Lowered, then exact: "0", "false", "no" -> false; "1", "true", "yes" -> true;
// anything else throws FormatException with position all ones.
bool parseBool(const String& text);
// A number outside the list throws LookupException.
const char* printFormat(ValueType type);

// The text a value is kept as by stores that hold text (memory, registry lists):
// boolText, decimal numbers through printFormat, bytes as hexText ("01 FF"), and a
// String as it is.
String valueText(bool value);
String valueText(Int value);
String valueText(Uint value);
String valueText(Hyper value);
String valueText(Uhyper value);
String valueText(const String& value);
String valueText(const AnsiString& bytes);

}  // namespace Framework
