#include "fw/fw_foreign_call.h"

#include "fw/fw_library.h"
#include "fw/fw_raise.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/FwText.h"
#include "support/Processor.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {

using ReadFunction = int (*)(const volatile int*);

// The test's other module, loaded from the path that CTest gives.
const HMODULE probe = LoadLibraryW(testSetting("KORVALIN_FAULT_PROBE_DLL").c_str());

template <class Function>
Function probeFunction(const char* name)
{
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(probe, name)));
}

const ReadFunction probeRead = probeFunction<ReadFunction>("ProbeRead");

int destroyed = 0;

struct CountsItsEnd
{
    ~CountsItsEnd() { ++destroyed; }
};

class fw_foreign_callTest : public ::testing::Test
{
protected:
    fw_library layer;
};

}  // namespace

TEST_F(fw_foreign_callTest, AFaultInTheOtherModuleIsThrownAtTheLanding)
{
    ASSERT_NE(nullptr, probeRead) << "the probe library did not load";
    void* const head = processor::exceptionChainHead();
    destroyed = 0;
    for (int round = 1; round <= 2; ++round) {
        auto fault = expectThrown<fw_exception_assert>([] {
            CountsItsEnd guard;
            fw_foreign_call([] { return probeRead(nullptr); });
        });
        ASSERT_TRUE(fault) << round;
        const std::string message = text(fault->message());
        EXPECT_EQ(0u, message.find("attempt to read at 0x00000000, eip=0x")) << message;
        const uintptr_t eip = uintptr_t(std::strtoull(message.c_str() + 37, nullptr, 16));
        EXPECT_TRUE(faults::isInside(eip, faults::codeOf(probeRead))) << message;
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised at the landing";
        EXPECT_EQ(head, processor::exceptionChainHead()) << "the SEH chain is as it was";
        EXPECT_EQ(round, destroyed) << "frames above the landing are unwound";
    }
    static const int value = 42;
    EXPECT_EQ(42, fw_foreign_call([] { return probeRead(&value); }));
    EXPECT_EQ(head, processor::exceptionChainHead());

    // A fault that the module's own handler takes (here the system's memory probe)
    // stays with it.
    const auto isBadRead = probeFunction<int (*)(const void*)>("ProbeIsBadRead");
    EXPECT_EQ(1, fw_foreign_call([isBadRead] { return isBadRead(nullptr); }));
    EXPECT_EQ(0, fw_foreign_call([isBadRead] { return isBadRead(&value); }));
}

namespace {

int registersCaught = 0;

// Lands from a fault that struck with the kept registers in use, and returns as if
// nothing had happened.
extern "C" __attribute__((noinline)) void landFromAFaultWithRegistersInUse()
{
    static const ReadFunction read = probeFunction<ReadFunction>("ProbeReadWithRegistersInUse");
    try {
        fw_foreign_call([] { return read(nullptr); });
    } catch (fw_exception_assert* raw) {
        std::unique_ptr<fw_exception_assert> fault(raw);
        ++registersCaught;
    }
}

}  // namespace

TEST_F(fw_foreign_callTest, TheRegistersThatCallsKeepComeBackAsTheyWere)
{
    registersCaught = 0;
    EXPECT_TRUE(processor::keepsRegisters(&landFromAFaultWithRegistersInUse));
    EXPECT_EQ(1, registersCaught);
}

// A landing takes a fault that can go on, and only while the translation is on.
TEST(fw_foreign_callLandingTest, TakesAFaultOnlyWhileTheTranslationIsOn)
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
