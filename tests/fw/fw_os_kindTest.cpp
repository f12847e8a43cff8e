#include "fw/fw_os_kind.h"

#include <gtest/gtest.h>

#include <cstdint>

// Faults are translated on XP to 7 only; the rows are the edges of that range.
TEST(fw_os_kindTest, OnlyXpTo7Translate)
{
    const struct {
        uint32_t platform, major, minor;
        const char* name;
        bool translates;
    } rows[] = {
        {2, 4, 0, "NT", false},       {2, 5, 0, "2000", false},   {2, 5, 1, "XP", true},
        {2, 5, 2, "2003", true},      {2, 5, 3, "Unknown", false}, {2, 6, 0, "Vista", true},
        {2, 6, 1, "7", true},         {2, 6, 2, "Unknown", false}, {2, 10, 0, "Unknown", false},
        {1, 4, 90, "ME", false},      {3, 6, 1, "Unknown", false},
    };
    for (const auto& row : rows) {
        const int kind = fw_os_kind_of(row.platform, row.major, row.minor);
        EXPECT_STREQ(row.name, fw_os_kind_name(kind)) << row.platform << ", " << row.major << "." << row.minor;
        EXPECT_EQ(row.translates, fw_os_kind_translates(kind)) << row.name;
    }
    EXPECT_STREQ("Unknown", fw_os_kind_name(-1));
    EXPECT_EQ(9, fw_os_kind()) << "what Wine reports by default: 6.1";
}
