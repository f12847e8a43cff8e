#include "fw/fw_hash_table.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <string>
#include <deque>
#include <vector>

namespace {

// Keys outlive the table: they live here, in the fixture, and stay where they are.
class fw_hash_tableTest : public ::testing::Test
{
protected:
    const char* key(uint32_t i)
    {
        while (keys.size() <= i)
            keys.push_back("setting" + std::to_string(keys.size()));
        return keys[i].c_str();
    }

    std::deque<std::string> keys;  // growing never moves a text
};

}  // namespace

TEST_F(fw_hash_tableTest, KeysAreComparedByContent)
{
    fw_hash_table<uint32_t> table;
    char first[] = "buildtime";
    char second[] = "buildtime";
    const uint32_t index = table.set(first, 1);
    EXPECT_EQ(index, table.set(second, 2)) << "equal texts at different addresses are one key";
    EXPECT_EQ(1u, table.size());
    auto found = table.find("buildtime");
    ASSERT_TRUE(found != table.end());
    EXPECT_EQ(2u, table.at(found).value);
    EXPECT_EQ(first, table.at(found).key) << "the key pointer stored first stays";
    table.at(found).value = 3;
    EXPECT_EQ(3u, table.at(table.find(second)).value);
    EXPECT_TRUE(table.find("buildtim") == table.end());
    EXPECT_TRUE(table.find("buildtimes") == table.end());
    EXPECT_TRUE(table.find(nullptr) == table.end());
}

TEST_F(fw_hash_tableTest, GrowingAddsChunksAndNeverMovesAnEntry)
{
    fw_hash_table<uint32_t> table;
    std::vector<uint32_t> indexes;
    struct Step {
        uint32_t entries;
        uint32_t chunks;
        uint32_t buckets;
    };
    // A chunk is 8160 bytes of entries: 1020 of 8 bytes on x86, 510 of 16 on x86-64.
    // x86: 2040 * 51 / 128 = 812 -> 1543; 3060 -> 1219, still 1543; 4080 -> 1625 -> 3079.
    // x86-64: 510 -> 203 -> 389; 1020 -> 406 -> 769; 1530 -> 609, still 769; 2040 -> 1543.
    const Step x86[] = {{1020, 1, 769}, {1021, 2, 1543}, {2040, 2, 1543}, {2041, 3, 1543}, {3061, 4, 3079}, {5000, 5, 3079}};
    const Step x64[] = {{510, 1, 389}, {511, 2, 769}, {1020, 2, 769}, {1021, 3, 769}, {1531, 4, 1543}, {2500, 5, 1543}};
    const bool wide = sizeof(void*) == 8;
    const uint32_t perChunk = wide ? 510 : 1020;
    const Step(&steps)[6] = wide ? x64 : x86;
    for (const Step& step : steps) {
        while (indexes.size() < step.entries)
            indexes.push_back(table.set(key(uint32_t(indexes.size())), uint32_t(indexes.size()) * 7));
        EXPECT_EQ(step.chunks, table.chunk_count()) << step.entries;
        EXPECT_EQ(step.chunks * perChunk, table.capacity_count()) << step.entries;
        EXPECT_EQ(step.buckets, table.bucket_count()) << step.entries;
        EXPECT_EQ(step.entries, table.size());
        for (uint32_t i = 0; i < step.entries; ++i) {
            auto found = table.find(key(i));
            ASSERT_TRUE(found != table.end()) << "entry " << i << " of " << step.entries;
            ASSERT_EQ(indexes[i], uint32_t(found.index)) << "entry " << i << " of " << step.entries;
            ASSERT_EQ(i * 7, table.at(found).value);
        }
    }
    // Overwriting all of them adds nothing.
    const uint32_t all = steps[5].entries;
    for (uint32_t i = 0; i < all; ++i)
        ASSERT_EQ(indexes[i], table.set(key(i), i));
    EXPECT_EQ(all, table.size());
    EXPECT_EQ(5u, table.chunk_count());

    table.clear();
    EXPECT_EQ(0u, table.size());
    EXPECT_TRUE(table.find(key(0)) == table.end());
    table.set(key(1), 11);
    EXPECT_EQ(11u, table.at(table.find(key(1))).value);
    EXPECT_EQ(perChunk, table.capacity_count());
    EXPECT_EQ(steps[0].buckets, table.bucket_count());
}

TEST_F(fw_hash_tableTest, TheHashReadsBytesAsUnsigned)
{
    EXPECT_EQ(0u, fw_hash_primes::hash(""));
    EXPECT_EQ(97u * 33 + 98, fw_hash_primes::hash("ab"));
    EXPECT_EQ(255u * 33 + 128, fw_hash_primes::hash("\xFF\x80"));
    // Texts that share a bucket are told apart along the chain: h("Aa") == h("B@").
    ASSERT_EQ(fw_hash_primes::hash("Aa"), fw_hash_primes::hash("B@"));
    fw_hash_table<uint32_t> table;
    table.set("Aa", 1);
    table.set("B@", 2);
    EXPECT_EQ(1u, table.at(table.find("Aa")).value);
    EXPECT_EQ(2u, table.at(table.find("B@")).value);
}
