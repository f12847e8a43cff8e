#include "fw/fw_hash_table.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

// Keys are compared by content; growing adds chunks and never moves an entry, so an
// index stays good.
TEST(fw_hash_tableTest, KeysByContentInEntriesThatNeverMove)
{
    std::deque<std::string> keys;  // growing never moves a text: they outlive the table
    fw_hash_table<uint32_t> table;
    const uint32_t perChunk = fw_hash_table<uint32_t>::entriesPerChunk;
    std::vector<uint32_t> indexes;
    for (uint32_t entries : {perChunk, perChunk + 1, 3 * perChunk + 1}) {
        while (indexes.size() < entries) {
            keys.push_back("setting" + std::to_string(keys.size()));
            indexes.push_back(table.set(keys.back().c_str(), uint32_t(indexes.size()) * 7));
        }
        EXPECT_EQ((entries + perChunk - 1) / perChunk, table.chunk_count()) << entries;
        EXPECT_LE(table.size(), 3 * table.bucket_count()) << entries << ": the chains stay short";
        for (uint32_t i = 0; i < entries; ++i) {
            const std::string copy = keys[i];  // equal text at another address
            const auto found = table.find(copy.c_str());
            ASSERT_EQ(int32_t(indexes[i]), found.index) << "entry " << i << " of " << entries;
            ASSERT_EQ(i * 7, table.at(found).value) << "entry " << i << " of " << entries;
            ASSERT_EQ(keys[i].c_str(), table.at(found).key) << "the key pointer stored first stays";
        }
    }
    for (uint32_t i = 0; i < indexes.size(); ++i)
        ASSERT_EQ(indexes[i], table.set(keys[i].c_str(), i)) << "overwriting adds nothing";
    EXPECT_EQ(indexes.size(), table.size());
    EXPECT_TRUE(table.find("setting1x") == table.end());
    EXPECT_TRUE(table.find(nullptr) == table.end());
    EXPECT_FALSE(table.renew()) << "a table that grew is not renewed";
}
