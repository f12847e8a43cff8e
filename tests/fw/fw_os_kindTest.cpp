#include "fw/fw_os_kind.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

TEST(fw_os_kindTest, KindsByPlatformAndVersion)
{
    struct Row {
        uint32_t platform, major, minor;
        int kind;
        const char* name;
    };
    const Row rows[] = {
        {0, 3, 10, 0, "3.1"},    {1, 4, 0, 1, "95"},     {1, 4, 9, 1, "95"},      {1, 4, 10, 2, "98"},
        {1, 4, 89, 2, "98"},     {1, 4, 90, 3, "ME"},    {2, 3, 51, 4, "NT"},     {2, 4, 0, 4, "NT"},
        {2, 5, 0, 5, "2000"},    {2, 5, 1, 6, "XP"},     {2, 5, 2, 7, "2003"},    {2, 5, 3, 10, "Unknown"},
        {2, 6, 0, 8, "Vista"},   {2, 6, 1, 9, "7"},      {2, 6, 2, 10, "Unknown"}, {2, 10, 0, 10, "Unknown"},
        {3, 5, 1, 10, "Unknown"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof *rows; ++i) {
        const Row& row = rows[i];
        const int kind = fw_os_kind_of(row.platform, row.major, row.minor);
        EXPECT_EQ(row.kind, kind) << "row " << i;
        EXPECT_STREQ(row.name, fw_os_kind_name(kind)) << "row " << i;
        EXPECT_EQ(kind >= 6 && kind <= 9, fw_os_kind_translates(kind)) << "row " << i;
    }
    EXPECT_STREQ("Unknown", fw_os_kind_name(-1));
    EXPECT_EQ(9, fw_os_kind()) << "what Wine reports by default: 6.1";
}

