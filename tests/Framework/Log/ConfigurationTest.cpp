// Which level a context gets: its own entry, else the nearest enclosing context's
// ("A::B::C" under "A::B", then "A"), else the default. Levels of a context name
// match whole, with case.
#include "Framework/Log/Configuration.h"

#include "support/TextHelpers.h"

#include <gtest/gtest.h>

using namespace Framework;
using namespace Framework::Log;

TEST(ConfigurationTest, AContextTakesItsOwnOrItsNearestEnclosingLevel)
{
    Configuration configuration;
    configuration.setContextLevel(L"ERROR", L"A");
    configuration.setContextLevel(L"DEBUG", L"A::B");
    const std::pair<const wchar_t*, Level> rows[] = {
        {L"A", Level::Error},     {L"A::B", Level::Debug},  {L"A::B::C", Level::Debug}, {L"A::C", Level::Error},
        {L"A::", Level::Error},   {L"AB", Level::Warning},  {L"A::BC", Level::Error},   {L"a", Level::Warning},
        {L"a::b", Level::Warning}, {L"B::A", Level::Warning}, {L"", Level::Warning},
    };
    for (const auto& [context, level] : rows)
        EXPECT_EQ(int(level), int(configuration.levelFor(context))) << narrowForTest(context);
}
