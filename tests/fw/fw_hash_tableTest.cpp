#include "fw/fw_hash_table.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace {

// Keys outlive the tables: they live here, and growing the deque never moves a text.
const char* key(uint32_t i)
{
    static std::deque<std::string> keys;
    while (keys.size() <= i)
        keys.push_back("setting" + std::to_string(keys.size()));
    return keys[i].c_str();
}

}  // namespace

TEST(fw_hash_tableTest, KeysAreComparedByContent)
{
    fw_hash_table<uint32_t> table;
    char first[] = "buildtime";
    char second[] = "buildtime";
    const uint32_t index = table.set(first, 1);
    EXPECT_EQ(index, table.set(second, 2)) << "equal texts at different addresses are one key";
    EXPECT_EQ(1u, table.size());
    const auto found = table.find("buildtime");
    ASSERT_TRUE(found != table.end());
    EXPECT_EQ(2u, table.at(found).value);
    EXPECT_EQ(first, table.at(found).key) << "the key pointer stored first stays";
    EXPECT_TRUE(table.find("buildtim") == table.end());
    EXPECT_TRUE(table.find("buildtimes") == table.end());
    EXPECT_TRUE(table.find(nullptr) == table.end());
}

TEST(fw_hash_tableTest, GrowingAddsChunksAndNeverMovesAnEntry)
{
    fw_hash_table<uint32_t> table;
    const uint32_t perChunk = fw_hash_table<uint32_t>::entriesPerChunk;
    std::vector<uint32_t> indexes;
    for (uint32_t entries : {perChunk, perChunk + 1, 3 * perChunk + 1}) {
        while (indexes.size() < entries)
            indexes.push_back(table.set(key(uint32_t(indexes.size())), uint32_t(indexes.size()) * 7));
        EXPECT_EQ((entries + perChunk - 1) / perChunk, table.chunk_count()) << entries;
        EXPECT_LE(table.size(), 3 * table.bucket_count()) << entries << ": the chains stay short";
        for (uint32_t i = 0; i < entries; ++i) {
            const auto found = table.find(key(i));
            ASSERT_EQ(int32_t(indexes[i]), found.index) << "entry " << i << " of " << entries;
            ASSERT_EQ(i * 7, table.at(found).value) << "entry " << i << " of " << entries;
        }
    }
    for (uint32_t i = 0; i < indexes.size(); ++i)
        ASSERT_EQ(indexes[i], table.set(key(i), i)) << "overwriting adds nothing";
    EXPECT_EQ(indexes.size(), table.size());
    EXPECT_FALSE(table.renew()) << "a table that grew is not renewed";
    table.clear();
    EXPECT_EQ(0u, table.size());
    EXPECT_TRUE(table.find(key(0)) == table.end());
}
