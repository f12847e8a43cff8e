#include "fw/fw_library.h"

#include "fw/fw_faults.h"
#include "fw/fw_purecall.h"
#include "fw/fw_raise.h"
#include "support/Exhaustion.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

namespace {

std::string text(const fw_string& s)
{
    return s.c_str();
}

bool isStamp(const std::string& stamp)
{
    if (stamp.size() != 13 || stamp.compare(0, 2, "FW") != 0 || stamp[8] != '-')
        return false;
    for (size_t i = 2; i < stamp.size(); ++i) {
        if (i != 8 && !std::isdigit(static_cast<unsigned char>(stamp[i])))
            return false;
    }
    return true;
}

using exhaustion::allocateTooMuch;

}  // namespace

TEST(fw_libraryTest, TheLayerComesUpAndGoesDownAgainAndAgain)
{
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(fw_initialized) << round;
        {
            fw_library layer;
            EXPECT_TRUE(fw_initialized);
            EXPECT_NE(nullptr, fw_settings);
            EXPECT_NE(-1, fw_tls_slot);
            EXPECT_TRUE(fw_fault_handler_on);
            EXPECT_EQ("Vendor", text(fw_vendor_name()));
            EXPECT_EQ("", text(fw_product_name()));
            EXPECT_EQ("", text(fw_support_address()));
            // The settings are new with every bring-up.
            EXPECT_EQ(0u, fw_setting_get("left by the round before"));
            EXPECT_TRUE(fw_setting_set("left by the round before", 7));
            EXPECT_EQ(7u, fw_setting_get("left by the round before"));
            // Faults are translated in every round.
            auto fault = expectThrown<fw_exception_assert>([] { faults::readAt(faults::nowhere()); });
            ASSERT_TRUE(fault);
            EXPECT_EQ(0u, text(fault->message()).find("attempt to read at 0x00000000, eip=0x"));
        }
        EXPECT_FALSE(fw_initialized);
        EXPECT_EQ(nullptr, fw_settings);
        EXPECT_EQ(-1, fw_tls_slot);
        EXPECT_FALSE(fw_fault_handler_on);
        EXPECT_EQ(nullptr, fw_fault_handler);
        EXPECT_EQ(nullptr, fw_kernel_module);
    }
}

TEST(fw_libraryTest, TheBuildStampIsASetting)
{
    struct Row {
        const char* date;
        const char* time;
        const char* stamp;
    };
    const Row rows[] = {
        {"Feb 20 2013", "11:16:06", "FW130220-1116"},
        {"Jan  1 2000", "00:00:59", "FW000101-0000"},
        {"Sep  9 2024", "09:05:30", "FW240909-0905"},
        {"Dec 31 2099", "23:59:59", "FW991231-2359"},
        {"Xyz 15 2021", "12:00:00", "FW210015-1200"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof *rows; ++i)
        EXPECT_EQ(rows[i].stamp, text(fw_build_stamp_of(rows[i].date, rows[i].time))) << "row " << i;

    fw_library layer;
    const char* stamp = reinterpret_cast<const char*>(uintptr_t(fw_setting_get("buildtime")));
    EXPECT_EQ(fw_build_stamp, stamp) << "the setting points at the stamp";
    EXPECT_TRUE(isStamp(fw_build_stamp)) << fw_build_stamp;
    EXPECT_STRNE("FWyymmdd-hhmm", fw_build_stamp);
    EXPECT_EQ(0u, fw_setting_get("attach id")) << "nothing else is stored";
}

TEST(fw_libraryTest, WhileTheLayerIsUpNoMemoryIsAnFwException)
{
    const std::new_handler before = std::get_new_handler();
    {
        fw_library layer;
        auto exhausted = expectThrown<fw_exception_memory>(allocateTooMuch);
        ASSERT_TRUE(exhausted);
        EXPECT_STREQ("memory exception", exhausted->title());
        EXPECT_EQ(0u, text(exhausted->message()).find("Insufficient memory to perform the operation."));
        EXPECT_EQ(exhausted.get(), fw_current_exception());
        exhausted.reset();
        // Again: the reserve given back the first time does not have to be there.
        EXPECT_TRUE(expectThrown<fw_exception_memory>(allocateTooMuch));
    }
    EXPECT_EQ(before, std::get_new_handler()) << "the handler before is back";
    // That one was installed when the library was loaded: the layer's raiser, usable
    // while the layer is down.
    EXPECT_TRUE(expectThrown<fw_exception_memory>(allocateTooMuch));
}

TEST(fw_libraryDeathTest, ExhaustedMemoryIsReportedWithAnFwException)
{
    // The address space really filled, a megabyte at a time, then given back.
    EXPECT_EXIT(
        {
            fw_library layer;
            std::vector<char*> blocks;
            blocks.reserve(4096);
            std::string title;
            try {
                for (;;)
                    blocks.push_back(new char[1 << 20]);
            } catch (fw_exception_memory* raw) {
                title = raw->title();
                delete raw;
            }
            for (char* block : blocks)
                delete[] block;
            std::fprintf(stderr, "%s after %u MB\n", title.c_str(), unsigned(blocks.size()));
            std::exit(blocks.size() > 100 ? 42 : 1);
        },
        ::testing::ExitedWithCode(42), "memory exception after \\d+ MB");
}

// Outside the anonymous namespace: the compiler, seeing a whole class tree, would
// find that the only call it allows is the derived one and drop the pure call.
struct fw_libraryTestPureBase;
fw_libraryTestPureBase* volatile underConstruction = nullptr;

// Calls its pure function while it is being made: the call goes through the base's
// table, which has no function in that slot.
struct fw_libraryTestPureBase
{
    fw_libraryTestPureBase()
    {
        underConstruction = this;
        underConstruction->run();
    }
    virtual ~fw_libraryTestPureBase() = default;
    virtual void run() = 0;
};

struct fw_libraryTestPureDerived : fw_libraryTestPureBase
{
    void run() override {}
};

TEST(fw_libraryTest, APureCallThrowsFromTheFirstBringUpOn)
{
    {
        fw_library layer;
        auto pure = expectThrown<fw_exception_purecall>([] { fw_libraryTestPureDerived made; });
        ASSERT_TRUE(pure);
        EXPECT_EQ("Pure Virtual Function Call", text(pure->message()));
        EXPECT_EQ(pure.get(), fw_current_exception());
    }
    auto after = expectThrown<fw_exception_purecall>([] { fw_libraryTestPureDerived made; });
    EXPECT_TRUE(after) << "the handler stays after the teardown";
}

TEST(fw_libraryDeathTest, ASecondLayerWhileOneLivesStopsTheProcess)
{
    EXPECT_DEATH(
        {
            fw_library first;
            fw_library second;
        },
        "^\nterminate = 0 : Double initializing FW library\n");
}

TEST(fw_libraryDeathTest, TheGettersAndSettingsRequireTheLayer)
{
    EXPECT_DEATH(fw_product_name(), "^\nterminate = 0 : FW library must be initialized\n");
    EXPECT_DEATH(fw_setting_get("buildtime"), "^\nterminate = 0 : FW library must be initialized\n");
    EXPECT_DEATH(
        {
            { fw_library layer; }
            fw_vendor_name();
        },
        "^\nterminate = 0 : FW library must be initialized\n");
}

TEST(fw_libraryTest, WhatWorksWithTheLayerUpAndDown)
{
    fw_exception_info down(fw_string("m"));
    EXPECT_STREQ("Error", down.what());
    fw_library layer;
    fw_exception_info up(fw_string("m"));
    EXPECT_STREQ("Error", up.what()) << "the product has no name";
}
