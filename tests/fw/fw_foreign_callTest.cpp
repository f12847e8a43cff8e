#include "fw/fw_foreign_call.h"

#include "fw/fw_library.h"
#include "fw/fw_raise.h"
#include "support/ActionLibrary.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/Processor.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace {

using ReadFunction = int (*)(const volatile int*);
using DivideFunction = int (*)(int, int);
using ProbeFunction = int (*)(const void*);
using CountFunction = int (*)();

// The test's other module, loaded from the path that CTest gives.
class ForeignProbe
{
public:
    ~ForeignProbe() { FreeLibrary(module); }

    const HMODULE module = LoadLibraryW(testSetting("KORVALIN_FAULT_PROBE_DLL").c_str());
    template <class Function>
    Function function(const char* name) const
    {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

    const ReadFunction read = function<ReadFunction>("ProbeRead");
    const DivideFunction divide = function<DivideFunction>("ProbeDivide");
    const ProbeFunction isBadRead = function<ProbeFunction>("ProbeIsBadRead");
    const ReadFunction readWithRegistersInUse = function<ReadFunction>("ProbeReadWithRegistersInUse");
    const ReadFunction readUnderOwnHandler = function<ReadFunction>("ProbeReadUnderOwnHandler");
    const CountFunction declined = function<CountFunction>("ProbeDeclined");
};

bool startsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

int destroyed = 0;

struct CountsItsEnd
{
    ~CountsItsEnd() { ++destroyed; }
};

class fw_foreign_callTest : public ::testing::Test
{
protected:
    fw_library layer;
    ForeignProbe probe;
};

}  // namespace

TEST_F(fw_foreign_callTest, AFaultInTheOtherModuleIsThrownAtTheLanding)
{
    ASSERT_NE(nullptr, probe.read) << "the probe library did not load";
    void* const head = processor::exceptionChainHead();
    destroyed = 0;
    for (int round = 0; round < 3; ++round) {
        auto fault = expectThrown<fw_exception_assert>([this] {
            CountsItsEnd guard;
            fw_foreign_call([this] { return probe.read(nullptr); });
        });
        ASSERT_TRUE(fault) << round;
        const std::string message = fault->message().c_str();
        EXPECT_TRUE(startsWith(message, "attempt to read at 0x00000000, eip=0x")) << message;
        EXPECT_TRUE(faults::isInside(uintptr_t(std::strtoull(message.c_str() + 37, nullptr, 16)), probe.read))
            << message;
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised at the landing";
        EXPECT_EQ(head, processor::exceptionChainHead()) << "the SEH chain is as it was";
        EXPECT_EQ(round + 1, destroyed) << "frames above the landing are unwound";
    }

    auto divided = expectThrown<fw_exception_assert>([this] { fw_foreign_call([this] { return probe.divide(1, 0); }); });
    ASSERT_TRUE(divided);
    EXPECT_TRUE(startsWith(divided->message().c_str(), "integer divide by 0, eip=0x")) << divided->message().c_str();
    divided.reset();

    // Without a fault the answer comes back as it is, and the chain is left clean.
    static const int value = 42;
    EXPECT_EQ(42, fw_foreign_call([this] { return probe.read(&value); }));
    EXPECT_EQ(head, processor::exceptionChainHead());
}

namespace {

const ForeignProbe* registersProbe = nullptr;
int registersCaught = 0;

// Lands from a fault that struck with the kept registers in use, and returns as if
// nothing had happened.
extern "C" __attribute__((noinline)) void landFromAFaultWithRegistersInUse()
{
    try {
        fw_foreign_call([] { return registersProbe->readWithRegistersInUse(nullptr); });
    } catch (fw_exception_assert* raw) {
        std::unique_ptr<fw_exception_assert> fault(raw);
        ++registersCaught;
    }
}

}  // namespace

TEST_F(fw_foreign_callTest, TheRegistersThatCallsKeepComeBackAsTheyWere)
{
    registersProbe = &probe;
    registersCaught = 0;
    EXPECT_TRUE(processor::keepsRegisters(&landFromAFaultWithRegistersInUse));
    EXPECT_EQ(1, registersCaught);
}

TEST_F(fw_foreign_callTest, TheOtherModulesOwnHandlersComeFirst)
{
    void* const head = processor::exceptionChainHead();
    // The system's memory probe takes its fault itself and answers.
    EXPECT_EQ(1, fw_foreign_call([this] { return probe.isBadRead(nullptr); }));
    EXPECT_EQ(0, fw_foreign_call([this, &head] { return probe.isBadRead(&head); }));
    EXPECT_EQ(nullptr, fw_current_exception());

    // A handler of the module that declines is asked, and then the landing takes it.
    const int declinedBefore = probe.declined();
    auto fault = expectThrown<fw_exception_assert>(
        [this] { fw_foreign_call([this] { return probe.readUnderOwnHandler(nullptr); }); });
    ASSERT_TRUE(fault);
    EXPECT_TRUE(startsWith(fault->message().c_str(), "attempt to read at 0x00000000, eip=0x"))
        << fault->message().c_str();
    EXPECT_LE(declinedBefore + 1, probe.declined());
    EXPECT_EQ(head, processor::exceptionChainHead()) << "the module's own record went with its frames";
}

TEST(fw_foreign_callDeathTest, OutsideALandingOrTheLayerAForeignFaultTakesItsOrdinaryCourse)
{
    EXPECT_EXIT(
        {
            // The fault ends the process with its code, without starting the debugger.
            SetErrorMode(SEM_NOGPFAULTERRORBOX);
            fw_library layer;
            ForeignProbe probe;
            try {
                probe.read(nullptr);
            } catch (...) {
                std::exit(3);
            }
            std::exit(4);
        },
        ::testing::ExitedWithCode(int(EXCEPTION_ACCESS_VIOLATION)), "");
    EXPECT_EXIT(
        {
            SetErrorMode(SEM_NOGPFAULTERRORBOX);
            ForeignProbe probe;
            try {
                fw_foreign_call([&probe] { return probe.read(nullptr); });
            } catch (...) {
                std::exit(3);
            }
            std::exit(4);
        },
        ::testing::ExitedWithCode(int(EXCEPTION_ACCESS_VIOLATION)), "");
}
