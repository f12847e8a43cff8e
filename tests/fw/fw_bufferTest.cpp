#include "fw/fw_buffer.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

TEST(fw_bufferTest, ZerosAreBytesAndCopiesShareUntilOneIsWritten)
{
    const uint8_t bytes[] = {1, 0, 2, 0, 3, 0, 2, 0, 3};
    const fw_buffer a(bytes, 5);
    fw_buffer b = a;
    EXPECT_EQ(a.data(), b.data());
    b.writable()[0] = 9;
    EXPECT_NE(a, b);
    b.writable()[0] = 1;
    EXPECT_EQ(a, b);
    b.append(b.data() + 1, 4);
    EXPECT_EQ(fw_buffer(bytes, 9), b) << "bytes out of its own block";
    b.assign(b.data() + 4, 3);
    EXPECT_EQ(fw_buffer(bytes + 4, 3), b);
    EXPECT_EQ(fw_buffer(bytes, 5), a);
}

TEST(fw_bufferTest, ResizeKeepsTheBytesAndAddsZeros)
{
    const uint8_t bytes[100] = {7, 8, 9};
    fw_buffer a(bytes, 3);
    const fw_buffer shared = a;
    a.resize(100);
    EXPECT_EQ(fw_buffer(bytes, 100), a);
    EXPECT_EQ(156u, a.capacity()) << "blocks step 28, 92, 156";
    a.resize(2);
    EXPECT_EQ(fw_buffer(bytes, 2), a);
    EXPECT_EQ(fw_buffer(bytes, 3), shared);
    EXPECT_TRUE(expectThrown<fw_exception_assert>([&] { a.append(bytes, 0xFFFFFFF0u); })) << "a size past 4 GB";
    EXPECT_EQ(fw_buffer(bytes, 2), a);
}
