#include "fw/fw_buffer.h"

#include "support/ExpectThrown.h"

#include <gtest/gtest.h>

TEST(fw_bufferTest, ZerosAreBytesAndCopiesShareUntilOneIsWritten)
{
    const uint8_t bytes[100] = {1, 0, 2, 0, 3, 0, 2, 0, 3};
    const fw_buffer a(bytes, 5);
    fw_buffer b = a;
    EXPECT_EQ(a.data(), b.data());
    b.append(b.data() + 1, 4);
    EXPECT_EQ(fw_buffer(bytes, 9), b) << "bytes out of its own block";
    b.assign(b.data() + 6, 3);
    EXPECT_EQ(fw_buffer(bytes + 6, 3), b);
    b.resize(94);
    EXPECT_EQ(fw_buffer(bytes + 6, 94), b) << "growing adds zeros";
    EXPECT_EQ(fw_buffer(bytes, 5), a);
    EXPECT_TRUE(expectThrown<fw_exception_assert>([&] { b.append(bytes, 0xFFFFFFF0u); })) << "a size past 4 GB";
    EXPECT_EQ(94u, b.size());
}
