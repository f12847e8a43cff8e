#include "fw/fw_buffer.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

#include <cstring>

TEST(fw_bufferTest, BytesWithZerosAndSharing)
{
    const uint8_t bytes[] = {1, 0, 2, 0, 3};
    fw_buffer a(bytes, sizeof bytes);
    ASSERT_EQ(5u, a.size());
    EXPECT_EQ(0, std::memcmp(bytes, a.data(), 5)) << "zeros are ordinary bytes";

    fw_buffer b = a;
    EXPECT_EQ(a.data(), b.data());
    b.writable()[0] = 9;
    EXPECT_EQ(1, a.data()[0]) << "writing gives the copy a block of its own";
    EXPECT_EQ(9, b.data()[0]);
    EXPECT_NE(a, b);
    b.writable()[0] = 1;
    EXPECT_EQ(a, b);

    fw_buffer c = a;
    c.append(c.data() + 1, 4);
    EXPECT_EQ(9u, c.size());
    const uint8_t doubled[] = {1, 0, 2, 0, 3, 0, 2, 0, 3};
    EXPECT_EQ(fw_buffer(doubled, sizeof doubled), c) << "bytes out of its own block";
    EXPECT_EQ(5u, a.size());

    c.assign(c.data() + 4, 3);
    EXPECT_EQ(fw_buffer(doubled + 4, 3), c);

    fw_buffer none(nullptr, 4);
    EXPECT_TRUE(none.empty());
    EXPECT_NE(nullptr, none.data());
}

TEST(fw_bufferTest, ResizeKeepsBytesAndAddsZeros)
{
    const uint8_t bytes[] = {7, 8, 9};
    fw_buffer a(bytes, 3);
    fw_buffer shared = a;
    a.resize(100);
    ASSERT_EQ(100u, a.size());
    EXPECT_EQ(156u, a.capacity());
    EXPECT_EQ(9, a.data()[2]);
    for (uint32_t i = 3; i < 100; ++i)
        ASSERT_EQ(0, a.data()[i]) << i;
    a.resize(2);
    EXPECT_EQ(fw_buffer(bytes, 2), a);
    EXPECT_EQ(fw_buffer(bytes, 3), shared);
    shared.resize(0);
    EXPECT_TRUE(shared.empty());
    EXPECT_EQ(0u, shared.capacity());

    expectThrown<fw_exception_assert>([&] { a.append(bytes, 0xFFFFFFF0u); });
    EXPECT_EQ(2u, a.size());
}
