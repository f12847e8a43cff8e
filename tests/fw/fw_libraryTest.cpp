#include "fw/fw_library.h"

#include "fw/fw_faults.h"
#include "fw/fw_raise.h"
#include "support/Exhaustion.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>

// What the compiler calls for a pure virtual function: this module's own.
extern "C" [[noreturn]] void __cxa_pure_virtual();

// Each bring-up starts afresh: no setting and no current exception of the lifetime
// before; faults, no memory and pure calls are FW exceptions again.
TEST(fw_libraryTest, EveryBringUpStartsAfresh)
{
    const std::new_handler before = std::set_new_handler(nullptr);
    std::unique_ptr<fw_exception> left(new fw_exception_info(fw_string("left in the slot")));
    for (int round = 0; round < 2; ++round) {
        {
            fw_library layer;
            EXPECT_EQ(nullptr, fw_current_exception()) << round;
            EXPECT_EQ(0u, fw_setting_get("left by the round before")) << round;
            fw_setting_set("left by the round before", 7);
            EXPECT_TRUE(expectThrown<fw_exception_assert>([] { faults::readAt(faults::nowhere()); })) << round;
            auto pure = expectThrown<fw_exception_purecall>(__cxa_pure_virtual);
            EXPECT_EQ(pure.get(), fw_current_exception()) << round;
            auto exhausted = expectThrown<fw_exception_memory>(exhaustion::allocateTooMuch);
            EXPECT_EQ(exhausted.get(), fw_current_exception()) << round;
            // Again: the reserve given back the first time does not have to be there.
            EXPECT_TRUE(expectThrown<fw_exception_memory>(exhaustion::allocateTooMuch)) << round;
            fw_raise(left.get());
        }
        EXPECT_FALSE(fw_fault_handler_on);
        EXPECT_EQ(nullptr, std::get_new_handler()) << "the handler before is back";
    }
    EXPECT_TRUE(expectThrown<fw_exception_purecall>(__cxa_pure_virtual)) << "the pure call's handler stays";
    EXPECT_STRNE("FWyymmdd-hhmm", fw_build_stamp) << "stamped; the error report names it (fw_exceptionTest)";
    std::set_new_handler(before);
}

TEST(fw_libraryTest, TheBuildStampNamesTheBuildsDateAndTime)
{
    EXPECT_STREQ("FW130220-1116", fw_build_stamp_of("Feb 20 2013", "11:16:06").c_str());
    EXPECT_STREQ("FW240909-0905", fw_build_stamp_of("Sep  9 2024", "09:05:30").c_str());
}

// Where the death test's child keeps what it takes, so that no allocation is dropped.
static char* volatile taken = nullptr;

// The address space filled to its last bytes by malloc, which asks no handler: the
// reserve given back is what the exception is then made of.
TEST(fw_libraryDeathTest, ExhaustedMemoryIsAnFwException)
{
    EXPECT_EXIT(
        {
            fw_library layer;
            for (size_t size = size_t(1) << 20; size >= 8; size /= 8) {
                while ((taken = static_cast<char*>(std::malloc(size)))) {
                }
            }
            try {
                taken = new char[64];
            } catch (fw_exception_memory*) {
                std::exit(42);
            }
        },
        ::testing::ExitedWithCode(42), "");
}

// A second layer while one lives stops the process the same way (FatalHandlersTest).
TEST(fw_libraryDeathTest, AGetterWithoutTheLayerStopsTheProcess)
{
    EXPECT_DEATH(
        {
            { fw_library layer; }
            fw_vendor_name();
        },
        "^\nterminate = 0 : FW library must be initialized\n");
}
