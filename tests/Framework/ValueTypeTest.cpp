#include "Framework/ValueType.h"

#include "Framework/Exceptions.h"
#include "support/ExpectThrown.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <typeinfo>
#include <utility>

using namespace Framework;

// The type names are checked where they are stored, in the registry's lists.
TEST(ValueTypeTest, ParseBoolTakesThreeSpellingsEachWay)
{
    const std::string refused = typeid(FormatException).name();
    const std::pair<const wchar_t*, std::string> rows[] = {
        {L"YES", "true"},    {L"1", "true"},  {L"True", "true"}, {L"No", "false"},   {L"0", "false"},
        {L"FALSE", "false"}, {L"", refused},  {L"2", refused},   {L" yes", refused}, {L"on", refused},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.second, resultOrThrown([&] { return parseBool(row.first) ? "true" : "false"; }))
            << narrowForTest(row.first);
}
