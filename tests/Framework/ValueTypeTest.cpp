#include "Framework/ValueType.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <utility>

using namespace Framework;

TEST(ValueTypeTest, NamesAndBooleans)
{
    EXPECT_EQ(ValueType::Uint, parseType(L"uint"));
    EXPECT_EQ(9u, static_cast<uint32_t>(parseType(L"UINTARRAY")));
    expectThrown<LookupException>([] { parseType(L"Uint64"); });
    for (uint32_t number = 0; number < valueTypeCount; ++number)
        EXPECT_EQ(number, static_cast<uint32_t>(parseType(typeName(static_cast<ValueType>(number)))));
    expectThrown<LookupException>([] { typeName(static_cast<ValueType>(valueTypeCount)); });

    // What parseBool makes of each text: its answer, or the class it throws.
    const auto parsed = [](const wchar_t* text) -> std::string {
        bool answer = false;
        const std::string thrown = thrownClass([&] { answer = parseBool(text); });
        return thrown != "nothing" ? thrown : answer ? "true" : "false";
    };
    const std::string refused = typeid(FormatException).name();
    const std::pair<const wchar_t*, std::string> rows[] = {
        {L"YES", "true"}, {L"1", "true"},    {L"True", "true"}, {L"No", "false"},  {L"0", "false"},
        {L"FALSE", "false"}, {L"", refused}, {L"2", refused},   {L" yes", refused}, {L"on", refused},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.second, parsed(row.first)) << narrowForTest(row.first);
    EXPECT_EQ(String(L"false"), boolText(parseBool(L"0")));
    EXPECT_EQ(String(L"true"), boolText(true));
}
