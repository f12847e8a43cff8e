#include "fw/fw_stack_dump.h"

#include "support/Processor.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace {

struct FrameRecord
{
    const FrameRecord* next;
    uintptr_t returnAddress;
};

std::string hexAddress(uintptr_t value)
{
    return processor::hexAddress(value);
}

// Addresses inside this program, which the dump names as the module.
uintptr_t codeAddress(int offset)
{
    return reinterpret_cast<uintptr_t>(&hexAddress) + uintptr_t(offset);
}

std::string dumpOf(const FrameRecord* frame)
{
    return fw_stack_dump(frame).c_str();
}

std::string header()
{
    return "Stack dump:\r\nModule: framework_tests.exe\r\nBase: " +
           hexAddress(reinterpret_cast<uintptr_t>(GetModuleHandleA(nullptr))) + "\r\n";
}

__attribute__((noinline)) std::string dumpFromHere(uintptr_t* returnAddress)
{
    *returnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return fw_stack_dump(nullptr).c_str();
}

}  // namespace

TEST(fw_stack_dumpTest, WalksRisingFramesAndStopsWhereTheChainEnds)
{
    if (sizeof(void*) == 8)
        GTEST_SKIP() << "x86-64 walks by unwind data; frame records are x86's";
    // Frame records on this stack, in rising addresses.
    FrameRecord frames[4];
    frames[0] = {&frames[1], codeAddress(1)};
    frames[1] = {&frames[2], codeAddress(2)};
    frames[2] = {&frames[0], codeAddress(3)};  // leads back down: the end
    EXPECT_EQ(header() + hexAddress(codeAddress(1)) + "\r\n" + hexAddress(codeAddress(2)) + "\r\n" + hexAddress(codeAddress(3)) + "\r\n",
              dumpOf(&frames[0]));

    frames[2] = {&frames[2], codeAddress(3)};  // a frame that names itself
    EXPECT_EQ(header() + hexAddress(codeAddress(1)) + "\r\n" + hexAddress(codeAddress(2)) + "\r\n" + hexAddress(codeAddress(3)) + "\r\n",
              dumpOf(&frames[0]));

    frames[1] = {&frames[2], 0x3FFFFF};  // below the lowest code address
    EXPECT_EQ(header() + hexAddress(codeAddress(1)) + "\r\n", dumpOf(&frames[0]));

    // A frame pointer that is no frame of this thread's stack ends the walk rather
    // than being read.
    std::unique_ptr<FrameRecord[]> heap(new FrameRecord[2]);
    heap[0] = {&heap[1], codeAddress(4)};
    heap[1] = {nullptr, codeAddress(5)};
    frames[0] = {&heap[0], codeAddress(1)};
    EXPECT_EQ(header() + hexAddress(codeAddress(1)) + "\r\n", dumpOf(&frames[0]));
    EXPECT_EQ("Stack dump:\r\n", dumpOf(&heap[0]));
    frames[0] = {reinterpret_cast<const FrameRecord*>(uintptr_t(0x10)), codeAddress(1)};
    EXPECT_EQ(header() + hexAddress(codeAddress(1)) + "\r\n", dumpOf(&frames[0]));

    // An address in no module gives no module lines.
    frames[0] = {&frames[1], 0x7FFE0000u};
    frames[1] = {&frames[0], codeAddress(2)};
    EXPECT_EQ("Stack dump:\r\n" + hexAddress(0x7FFE0000u) + "\r\n" + hexAddress(codeAddress(2)) + "\r\n",
              dumpOf(&frames[0]));
}

TEST(fw_stack_dumpTest, TheCallersFrameIsWhereItStarts)
{
    uintptr_t returnAddress = 0;
    const std::string dump = dumpFromHere(&returnAddress);
    EXPECT_EQ(0u, dump.find(header() + hexAddress(returnAddress) + "\r\n")) << dump;
    // This test, then GoogleTest's callers: more than one frame.
    EXPECT_LT(header().size() + processor::addressDigits + 2, dump.rfind("\r\n")) << dump;
}
