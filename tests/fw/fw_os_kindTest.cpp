#include "fw/fw_os_kind.h"

#include <gtest/gtest.h>

// Faults are translated on XP to 7 only; the rows are the edges of that range.
TEST(fw_os_kindTest, OnlyXpTo7Translate)
{
    const struct {
        uint32_t platform, major, minor;
        bool translates;
    } rows[] = {
        {2, 4, 0, false}, {2, 5, 0, false}, {2, 5, 1, true},  {2, 5, 2, true},  {2, 5, 3, false}, {2, 6, 0, true},
        {2, 6, 1, true},  {2, 6, 2, false}, {2, 10, 0, false}, {1, 4, 90, false}, {3, 6, 1, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.translates, fw_os_kind_translates(fw_os_kind_of(row.platform, row.major, row.minor)))
            << row.platform << ", " << row.major << "." << row.minor;
    }
    EXPECT_EQ(9, fw_os_kind()) << "what Wine reports by default: 6.1";
}
