#include "fw/fw_faults.h"

#include "fw/fw_library.h"
#include "fw/fw_os_kind.h"
#include "fw/fw_raise.h"
#include "support/ExpectThrown.h"
#include "support/Faults.h"
#include "support/FwText.h"
#include "support/Processor.h"
#include "support/ScratchKey.h"

#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>

using faults::codeOf;
using processor::hexAddress;

namespace {

DWORD WINAPI divideByZero(void* message)
{
    try {
        faults::divide(7, faults::zero());
    } catch (fw_exception_assert* raw) {
        std::unique_ptr<fw_exception_assert> fault(raw);
        *static_cast<std::string*>(message) = fw_current_exception() == raw ? text(fault->message()) : "not current";
    }
    return 0;
}

}  // namespace

TEST(fw_faultsTest, AFaultIsThrownWhereItStrikesOnAnyThreadNamingItselfAndItsInstruction)
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
    const int32_t nesting = fw_exception_nesting;
    faults::destroyed = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        auto fault = expectThrown<fw_exception_assert>(row.fault);
        ASSERT_TRUE(fault);
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised before it was thrown";
        // The text, then the instruction with all the digits of an address, lower case.
        const std::string message = text(fault->message());
        const size_t at = std::strlen(row.text) + 8;
        EXPECT_EQ(row.text + std::string(", eip=0x"), message.substr(0, at));
        const uintptr_t eip = uintptr_t(std::strtoull(message.c_str() + at, nullptr, 16));
        EXPECT_LT(eip - row.function, 64u) << "in the faulting function's first bytes";
        char digits[24];
        std::snprintf(digits, sizeof digits, "%0*llx", int(processor::addressDigits), (unsigned long long)eip);
        EXPECT_EQ(digits, message.substr(at));
        // The dump's first address is where the faulting function returns to.
        const std::string dump = text(fault->details());
        EXPECT_EQ(dump.find("\r\n", dump.find("\r\nBase: ") + 2),
                  dump.find("\r\n" + hexAddress(faults::lastReturnAddress) + "\r\n"))
            << dump;
    }
    EXPECT_EQ(1, faults::destroyed) << "the destructor in the faulting frame ran";
    EXPECT_EQ(nesting, fw_exception_nesting) << "one exception a fault, and every one deleted";

    // The handler serves every thread, and each thread's current exception is its own.
    std::unique_ptr<fw_exception> mine(new fw_exception_info(fw_string("this thread's")));
    fw_raise(mine.get());
    std::string message;
    HANDLE thread = CreateThread(nullptr, 0, divideByZero, &message, 0, nullptr);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_EQ(0u, message.find("integer divide by 0, eip=0x")) << message;
    EXPECT_EQ(mine.get(), fw_current_exception());
}

// The handler asked directly: it takes a fault of this module's code only, and what
// it leaves it leaves as it found it.
TEST(fw_faultsTest, TheHandlerTakesFaultsOfThisModuleOnly)
{
    const uintptr_t ours = codeOf(&faults::readAt) + 4;
    const uintptr_t system = codeOf(GetProcAddress(GetModuleHandleA("kernel32.dll"), "GetTickCount"));
    const struct {
        DWORD code;
        uintptr_t instruction;
        bool taken;
    } rows[] = {
        {EXCEPTION_ACCESS_VIOLATION, ours, true},
        {EXCEPTION_ACCESS_VIOLATION, system, false},
        {EXCEPTION_BREAKPOINT, ours, false},
        {0xC0000027, ours, false},  // unwinding
        {0xE06D7363, ours, false},  // a C++ exception
    };
    for (const auto& row : rows) {
        EXCEPTION_RECORD record = {};
        record.ExceptionCode = row.code;
        CONTEXT context = {};
        processor::setInstruction(context, row.instruction);
        const CONTEXT before = context;
        EXCEPTION_POINTERS pointers = {&record, &context};
        EXPECT_EQ(row.taken ? EXCEPTION_CONTINUE_EXECUTION : 0, fw_fault_vector(&pointers)) << std::hex << row.code;
        EXPECT_EQ(row.taken, std::memcmp(&before, &context, sizeof context) != 0) << std::hex << row.code;
    }
    EXPECT_EQ(0, fw_fault_vector(nullptr));
}

TEST(fw_faultsTest, AnAccessViolationsTextFollowsItsParameters)
{
    const uintptr_t high = ~uintptr_t(0) - 0xF;
    const struct {
        uint32_t count;
        uintptr_t parameters[2];
        std::string text;
    } rows[] = {
        {2, {1, 0x10}, "attempt to write at 0x00000010"},
        {2, {0, high}, "attempt to read at 0x" + hexAddress(high)},  // all the digits
        {2, {8, 0x10}, "access violation"},  // execute
        {1, {0, 0}, "access violation"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(row.text, text(fw_fault_text(EXCEPTION_ACCESS_VIOLATION, row.count, row.parameters)));
    EXPECT_EQ("", text(fw_fault_text(0xE06D7363, 2, rows[0].parameters))) << "not the layer's business";
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
