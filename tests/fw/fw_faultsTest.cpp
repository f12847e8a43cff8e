#include "fw/fw_faults.h"

#include "fw/fw_library.h"
#include "fw/fw_os_kind.h"
#include "fw/fw_raise.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/Processor.h"
#include "support/ScratchKey.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>

using faults::codeOf;
using processor::hexAddress;

TEST(fw_faultsTest, AFaultIsThrownWhereItStrikesNamingItselfAndItsInstruction)
{
    fw_library layer;
    ASSERT_TRUE(fw_fault_handler_on) << "Wine reports Windows 7 unless told otherwise";
    const struct {
        const char* text;
        std::function<void()> fault;
        uintptr_t function;
    } rows[] = {
        {"attempt to read at 0x00000010", [] { faults::readAt(faults::nowhere() + 0x10); }, codeOf(&faults::readAt)},
        {"integer divide by 0", [] { faults::divide(1, faults::zero()); }, codeOf(&faults::divide)},
        {"attempt to read at 0x00000000", [] { faults::readInScope(faults::nowhere()); }, codeOf(&faults::readInScope)},
    };
    faults::destroyed = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        auto fault = expectThrown<fw_exception_assert>(row.fault);
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised before it was thrown";
        // The text, then the instruction with all the digits of an address, lower case.
        const std::string message = fault->message().c_str();
        const uintptr_t eip = uintptr_t(std::strtoull(message.c_str() + std::strlen(row.text) + 8, nullptr, 16));
        char expected[96];
        std::snprintf(expected, sizeof expected, "%s, eip=0x%0*llx", row.text, int(processor::addressDigits),
                      static_cast<unsigned long long>(eip));
        EXPECT_EQ(expected, message);
        EXPECT_LT(eip - row.function, 64u) << "in the faulting function's first bytes";
        // The dump's first address is where the faulting function returns to.
        const std::string dump = fault->details().c_str();
        EXPECT_EQ(dump.find("\r\n", dump.find("\r\nBase: ") + 2),
                  dump.find("\r\n" + hexAddress(faults::lastReturnAddress) + "\r\n"))
            << dump;
    }
    EXPECT_EQ(1, faults::destroyed) << "the destructor in the faulting frame ran";
}

// The handler asked directly: it takes a fault of this module's code only, and what
// it leaves it leaves as it found it. The text follows an access violation's parameters.
TEST(fw_faultsTest, TheHandlerTakesFaultsOfThisModuleOnlyAndNamesThem)
{
    const uintptr_t ours = codeOf(&faults::readAt) + 4;
    const uintptr_t system = codeOf(GetProcAddress(GetModuleHandleA("kernel32.dll"), "GetTickCount"));
    const uintptr_t high = ~uintptr_t(0) - 0xF;
    const struct {
        DWORD code;
        uintptr_t parameters[2];
        uintptr_t instruction;
        bool taken;
        std::string text;
    } rows[] = {
        {EXCEPTION_ACCESS_VIOLATION, {1, 0x10}, ours, true, "attempt to write at 0x00000010"},
        {EXCEPTION_ACCESS_VIOLATION, {0, high}, ours, true, "attempt to read at 0x" + hexAddress(high)},
        {EXCEPTION_ACCESS_VIOLATION, {8, 0x10}, ours, true, "access violation"},  // execute
        {EXCEPTION_ACCESS_VIOLATION, {}, ours, true, "access violation"},  // no address
        {EXCEPTION_ACCESS_VIOLATION, {0, 0x10}, system, false, "attempt to read at 0x00000010"},
        {EXCEPTION_BREAKPOINT, {}, ours, false, "breakpoint"},
        {0xC0000027, {}, ours, false, ""},  // unwinding
        {0xE06D7363, {}, ours, false, ""},  // a C++ exception
    };
    for (const auto& row : rows) {
        EXCEPTION_RECORD record = {};
        record.ExceptionCode = row.code;
        record.NumberParameters = row.parameters[0] || row.parameters[1] ? 2 : 0;
        record.ExceptionInformation[0] = row.parameters[0];
        record.ExceptionInformation[1] = row.parameters[1];
        CONTEXT context = {};
        processor::setInstruction(context, row.instruction);
        const CONTEXT before = context;
        EXCEPTION_POINTERS pointers = {&record, &context};
        EXPECT_EQ(row.taken ? EXCEPTION_CONTINUE_EXECUTION : 0, fw_fault_vector(&pointers)) << row.text;
        EXPECT_EQ(row.taken, std::memcmp(&before, &context, sizeof context) != 0) << row.text;
        EXPECT_STREQ(row.text.c_str(), fw_fault_text(row.code, record.NumberParameters, row.parameters).c_str());
    }
}

// On a system newer than 7 nothing is registered, so a fault takes its ordinary
// course. The death test's child reads the version anew; this process keeps its own.
TEST(fw_faultsDeathTest, OnANewerSystemNoHandlerIsRegistered)
{
    wchar_t path[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, path, MAX_PATH);
    ScratchKey appDefaults(HKEY_CURRENT_USER, std::wstring(L"Software\\Wine\\AppDefaults\\") + (wcsrchr(path, L'\\') + 1));
    appDefaults.setText(L"Version", L"win10");
    EXPECT_EXIT(
        {
            fw_library layer;
            std::fprintf(stderr, "kind %d, handler %s\n", fw_os_kind(),
                         fw_fault_handler_on || fw_fault_handler || fw_kernel_module ? "registered" : "none");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "kind 10, handler none");
}
