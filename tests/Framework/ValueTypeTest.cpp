#include "Framework/ValueType.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using namespace Framework;

TEST(ValueTypeTest, NamesAndBooleans)
{
    EXPECT_EQ(ValueType::Uint, parseType(L"uint"));
    EXPECT_EQ(9u, static_cast<uint32_t>(parseType(L"UINTARRAY")));
    expectThrown<LookupException>([] { parseType(L"Uint64"); });
    for (uint32_t number = 0; number < valueTypeCount; ++number)
        EXPECT_EQ(number, static_cast<uint32_t>(parseType(typeName(static_cast<ValueType>(number)))));
    expectThrown<LookupException>([] { typeName(static_cast<ValueType>(valueTypeCount)); });

    for (const wchar_t* yes : {L"YES", L"1", L"True"})
        EXPECT_TRUE(parseBool(yes)) << narrowForTest(yes);
    for (const wchar_t* no : {L"No", L"0", L"FALSE"})
        EXPECT_FALSE(parseBool(no)) << narrowForTest(no);
    EXPECT_EQ(String(L"false"), boolText(parseBool(L"0")));
    EXPECT_EQ(String(L"true"), boolText(true));
    for (const wchar_t* bad : {L"", L"2", L" yes", L"on"})
        EXPECT_EQ(FormatException::unknownPosition,
                  expectThrown<FormatException>([bad] { parseBool(bad); })->position)
            << narrowForTest(bad);
}
