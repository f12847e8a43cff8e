#include "fw/fw_hash_table.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

// Keys are compared by content; growing adds chunks and never moves an entry, so an
// index that set() gave stays good.
TEST(fw_hash_tableTest, KeysByContentInEntriesThatNeverMove)
{
    std::deque<std::string> keys;  // they outlive the table, and growing never moves one
    fw_hash_table<uint32_t> table;
    std::vector<uint32_t> indexes;
    for (uint32_t i = 0; i <= 3 * fw_hash_table<uint32_t>::entriesPerChunk; ++i) {
        keys.push_back("setting" + std::to_string(i));
        indexes.push_back(table.set(keys.back().c_str(), i * 7));
    }
    EXPECT_EQ(4u, table.chunk_count());
    EXPECT_LE(table.size(), 3 * table.bucket_count()) << "the chains stay short";
    for (uint32_t i = 0; i < keys.size(); ++i) {
        const std::string copy = keys[i];  // equal text at another address
        const auto found = table.find(copy.c_str());
        ASSERT_EQ(int32_t(indexes[i]), found.index) << "entry " << i;
        ASSERT_EQ(i * 7, table.at(found).value) << "entry " << i;
        ASSERT_EQ(indexes[i], table.set(copy.c_str(), i)) << "overwriting adds nothing";
        ASSERT_EQ(keys[i].c_str(), table.at(found).key) << "the key pointer stored first stays";
    }
    EXPECT_EQ(keys.size(), table.size());
    EXPECT_TRUE(table.find("setting1x") == table.end());
    EXPECT_FALSE(table.renew()) << "a table that grew is not renewed";
}
