#include "Framework/ValueType.h"

#include "Framework/Exceptions.h"
#include "Framework/HexText.h"

namespace Framework {

namespace {

struct TypeText
{
    const wchar_t* name;
    const char* format;
};

const TypeText typeTexts[valueTypeCount] = {
    {L"Bool", "%d"},         {L"Int", "%d"},          {L"Uint", "%u"},        {L"Hyper", "%Ld"},
    {L"Uhyper", "%Lu"},      {L"String", "%S"},       {L"Binary", "%s"},      {L"BoolArray", "%d"},
    {L"IntArray", "%d"},     {L"UintArray", "%u"},    {L"HyperArray", "%Ld"}, {L"UhyperArray", "%Lu"},
    {L"StringArray", "%S"},  {L"BinaryArray", "%s"},
};

const TypeText& textOf(ValueType type)
{
    const uint32_t number = static_cast<uint32_t>(type);
    if (number >= valueTypeCount)
        throw new LookupException(SITE);
    return typeTexts[number];
}

}  // namespace

String typeName(ValueType type)
{
    return String(textOf(type).name);
}

ValueType parseType(const String& text)
{
    for (uint32_t number = 0; number < valueTypeCount; ++number) {
        const wchar_t* name = typeTexts[number].name;
        if (compareNoCase(text.c_str(), text.length(), name, String::textLength(name)) == 0)
            return static_cast<ValueType>(number);
    }
    throw new LookupException(SITE);
}

String boolText(bool value)
{
    return String(value ? L"true" : L"false");
}

bool parseBool(const String& text)
{
    String lowered = text;
    lowered.toLower();
    const auto is = [&lowered](const wchar_t* word) {
        return compare(lowered.c_str(), lowered.length(), word, String::textLength(word)) == 0;
    };
    if (is(L"0") || is(L"false") || is(L"no"))
        return false;
    if (is(L"1") || is(L"true") || is(L"yes"))
        return true;
    throw new FormatException(SITE, FormatException::unknownPosition);
}

const char* printFormat(ValueType type)
{
    return textOf(type).format;
}

namespace {

template <class T>
String numberText(ValueType type, T value)
{
    return String(AnsiString::format(printFormat(type), value));
}

}  // namespace

String valueText(bool value) { return boolText(value); }
String valueText(Int value) { return numberText(ValueType::Int, value); }
String valueText(Uint value) { return numberText(ValueType::Uint, value); }
String valueText(Hyper value) { return numberText(ValueType::Hyper, value); }
String valueText(Uhyper value) { return numberText(ValueType::Uhyper, value); }
String valueText(const String& value) { return value; }
String valueText(const AnsiString& bytes) { return String(hexText(bytes)); }

}  // namespace Framework
