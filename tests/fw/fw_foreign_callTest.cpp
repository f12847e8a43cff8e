#include "fw/fw_foreign_call.h"

#include "fw/fw_library.h"
#include "fw/fw_raise.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/Processor.h"

#include <gtest/gtest.h>

namespace {

// The test's other module, loaded from the path that CTest gives.
template <class Function>
Function probeFunction(const char* name)
{
    static const HMODULE probe = LoadLibraryW(testSetting("KORVALIN_FAULT_PROBE_DLL").c_str());
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(probe, name)));
}

const auto probeRead = probeFunction<int (*)(const volatile int*)>("ProbeRead");

int registersCaught = 0;

// Lands from a fault that struck with the kept registers in use, and returns as if
// nothing had happened.
void landFromAFaultWithRegistersInUse()
{
    static const auto read = probeFunction<int (*)(const volatile int*)>("ProbeReadWithRegistersInUse");
    try {
        fw_foreign_call([] { return read(nullptr); });
    } catch (fw_exception_assert* raw) {
        delete raw;
        ++registersCaught;
    }
}

}  // namespace

TEST(fw_foreign_callTest, AFaultInTheOtherModuleIsThrownAtTheLanding)
{
    ASSERT_NE(nullptr, probeRead) << "the probe library did not load";
    fw_library layer;
    void* const head = processor::exceptionChainHead();
    faults::destroyed = 0;
    for (int round = 1; round <= 2; ++round) {
        auto fault = expectThrown<fw_exception_assert>([] {
            faults::CountsItsEnd guard;
            fw_foreign_call([] { return probeRead(nullptr); });
        });
        ASSERT_TRUE(fault) << round;
        const std::string message = fault->message().c_str();
        EXPECT_EQ(0u, message.find("attempt to read at 0x00000000, eip=0x")) << message;
        const uintptr_t eip = uintptr_t(std::strtoull(message.c_str() + 37, nullptr, 16));
        EXPECT_LT(eip - faults::codeOf(probeRead), 64u) << "in the probe's first bytes";
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised at the landing";
        EXPECT_EQ(head, processor::exceptionChainHead()) << "the SEH chain is as it was";
        EXPECT_EQ(round, faults::destroyed) << "frames above the landing are unwound";
    }
    static const int value = 42;
    EXPECT_EQ(42, fw_foreign_call([] { return probeRead(&value); }));
    EXPECT_EQ(head, processor::exceptionChainHead());

    // A fault that the module's own handler takes (the system's memory probe) stays there.
    const auto isBadRead = probeFunction<int (*)(const void*)>("ProbeIsBadRead");
    EXPECT_EQ(1, fw_foreign_call([isBadRead] { return isBadRead(nullptr); }));
    EXPECT_EQ(0, fw_foreign_call([isBadRead] { return isBadRead(&value); }));

    // The landing gives back the registers that calls keep, as a return would.
    EXPECT_TRUE(processor::keepsRegisters(&landFromAFaultWithRegistersInUse));
    EXPECT_EQ(1, registersCaught);
}

// A landing takes a fault that can go on, and only while the translation is on.
TEST(fw_foreign_callTest, TheLandingTakesAFaultOnlyWhileTheTranslationIsOn)
{
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    CONTEXT context = {};
    fw_fault fault = {};
    EXPECT_FALSE(fw_landing_takes(&record, &context, fault));
    fw_library layer;
    EXPECT_TRUE(fw_landing_takes(&record, &context, fault));
    record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
    EXPECT_FALSE(fw_landing_takes(&record, &context, fault));
}
