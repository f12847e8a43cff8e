#include "fw/fw_stack_dump.h"

#include "support/Processor.h"

#include <gtest/gtest.h>

#include <initializer_list>

using processor::hexAddress;

namespace {

// The text of a dump with these addresses, the first of them in this program or in
// no module at all.
std::string dumpText(std::initializer_list<uintptr_t> addresses, bool inThisProgram = true)
{
    std::string text = "Stack dump:\r\n";
    if (inThisProgram)
        text += "Module: framework_tests.exe\r\nBase: " + hexAddress(uintptr_t(GetModuleHandleA(nullptr))) + "\r\n";
    for (uintptr_t address : addresses)
        text += hexAddress(address) + "\r\n";
    return text;
}

__attribute__((noinline)) std::string dumpFromHere(uintptr_t* returnAddress)
{
    *returnAddress = reinterpret_cast<uintptr_t>(__builtin_return_address(0));
    return fw_stack_dump(nullptr).c_str();
}

}  // namespace

TEST(fw_stack_dumpTest, TheCallersFrameIsWhereItStarts)
{
    uintptr_t returnAddress = 0;
    const std::string dumped = dumpFromHere(&returnAddress);
    const std::string start = dumpText({returnAddress});
    EXPECT_EQ(start, dumped.substr(0, start.size()));
    EXPECT_LT(start.size(), dumped.size()) << "this test's callers follow";
}

// A frame record is a saved frame pointer with the return address behind it.
TEST(fw_stack_dumpTest, TheX86WalkFollowsRisingFrameRecordsOnThisStack)
{
    if (sizeof(void*) == 8)
        GTEST_SKIP() << "x86-64 walks by unwind data";
    struct FrameRecord
    {
        const FrameRecord* next;
        uintptr_t returnAddress;
    } frames[3];
    const auto dump = [](const FrameRecord* frame) { return std::string(fw_stack_dump(frame).c_str()); };
    const uintptr_t a = reinterpret_cast<uintptr_t>(&dumpText) + 1, b = a + 1, c = a + 2;
    frames[0] = {&frames[1], a};
    frames[1] = {&frames[2], b};
    frames[2] = {&frames[0], c};  // leads back down: the end
    EXPECT_EQ(dumpText({a, b, c}), dump(frames));
    frames[2] = {&frames[2], c};  // names itself
    EXPECT_EQ(dumpText({a, b, c}), dump(frames));
    frames[1].returnAddress = 0x3FFFFF;  // below the lowest code address
    EXPECT_EQ(dumpText({a}), dump(frames));

    // A frame pointer that is no frame of this thread's stack ends the walk unread.
    std::unique_ptr<FrameRecord> heap(new FrameRecord{nullptr, b});
    frames[0].next = heap.get();
    EXPECT_EQ(dumpText({a}), dump(frames));

    frames[0] = {&frames[1], 0x7FFE0000u};
    frames[1] = {&frames[0], b};
    EXPECT_EQ(dumpText({0x7FFE0000u, b}, false), dump(frames)) << "an address in no module names none";
}
