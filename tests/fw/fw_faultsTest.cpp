#include "fw/fw_faults.h"

#include "Framework/Exceptions.h"
#include "fw/fw_library.h"
#include "fw/fw_os_kind.h"
#include "fw/fw_raise.h"
#include "fw/fw_site_tag.h"
#include "support/ExpectThrown.h"
#include "support/Processor.h"
#include "support/Faults.h"
#include "support/FwText.h"
#include "support/ScratchKey.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>

namespace {

std::string hexAddress(uintptr_t value)
{
    return processor::hexAddress(value);
}

// The tag that the layer's fault handling puts in the location of its exceptions.
const std::string faultsTag =
    fw_site_tag<fw_site_hash("fw/fw_faults.cpp", 0xcbf29ce484222325ull),
                fw_site_hash("fw/fw_faults.cpp", 0x84222325cbf29ce4ull)>::value.text;

// The faulting instruction named at the end of a message: ", eip=0x" and exactly as
// many lower-case hexadecimal digits as an address has. 0 when the message does not
// end so.
uintptr_t eipAtTheEnd(const std::string& message)
{
    const std::string::size_type at = message.rfind(", eip=0x");
    if (at == std::string::npos || message.size() != at + 8 + processor::addressDigits)
        return 0;
    for (std::string::size_type i = at + 8; i < message.size(); ++i) {
        if (!std::isxdigit(static_cast<unsigned char>(message[i])) || std::isupper(static_cast<unsigned char>(message[i])))
            return 0;
    }
    return uintptr_t(std::strtoull(message.c_str() + at + 8, nullptr, 16));
}

std::string dumpHeader()
{
    return "Stack dump:\r\nModule: framework_tests.exe\r\nBase: " +
           hexAddress(reinterpret_cast<uintptr_t>(GetModuleHandleA(nullptr))) + "\r\n";
}

// While a test runs, the layer is up and faults are translated.
class fw_faultsTest : public ::testing::Test
{
protected:
    fw_library layer;
};

}  // namespace

TEST_F(fw_faultsTest, FaultsAreThrownAsAssertionsNamingTheFaultAndTheInstruction)
{
    ASSERT_TRUE(fw_fault_handler_on) << "Wine reports Windows 7 unless told otherwise";
    struct Row {
        std::function<void()> fault;
        const void* function;
        const char* text;
    };
    const Row rows[] = {
        {[] { faults::readAt(faults::nowhere()); }, reinterpret_cast<const void*>(&faults::readAt),
         "attempt to read at 0x00000000"},
        {[] { faults::readAt(faults::nowhere() + 0x10); }, reinterpret_cast<const void*>(&faults::readAt),
         "attempt to read at 0x00000010"},
        {[] { faults::writeAt(faults::nowhere(), 1); }, reinterpret_cast<const void*>(&faults::writeAt),
         "attempt to write at 0x00000000"},
        {[] { faults::divide(1, faults::zero()); }, reinterpret_cast<const void*>(&faults::divide),
         "integer divide by 0"},
        {[] { faults::illegalInstruction(); }, reinterpret_cast<const void*>(&faults::illegalInstruction),
         "illegal instruction"},
    };
    for (const Row& row : rows) {
        faults::lastReturnAddress = 0;
        auto fault = expectThrown<fw_exception_assert>(row.fault);
        ASSERT_TRUE(fault) << row.text;
        const std::string message = text(fault->message());
        EXPECT_EQ(0u, message.find(row.text)) << message;
        EXPECT_EQ(std::strlen(row.text), message.rfind(", eip=0x")) << message;
        EXPECT_TRUE(faults::isInside(eipAtTheEnd(message), row.function)) << message;
        EXPECT_EQ(0u, text(fault->get_location()).find(faultsTag)) << text(fault->get_location());
        EXPECT_STREQ("Assert exception", fault->title());
        EXPECT_EQ(fault.get(), fw_current_exception()) << "raised before it was thrown";
        // The dump starts at the faulting function's frame: its first address is
        // where that function returns to.
        const std::string dump = text(fault->details());
        ASSERT_NE(0u, faults::lastReturnAddress);
        EXPECT_EQ(0u, dump.find(dumpHeader() + hexAddress(faults::lastReturnAddress) + "\r\n")) << message << "\n" << dump;
    }
}

namespace {

int destroyed = 0;

struct CountsItsEnd
{
    ~CountsItsEnd() { ++destroyed; }
};

// The fault strikes in the frame that holds the object and the handler: the
// instruction itself, not a call, must be covered by them.
__attribute__((noinline)) int readInScope(uintptr_t address)
{
    CountsItsEnd guard;
    return *reinterpret_cast<const volatile int*>(address);
}

__attribute__((noinline)) int readOrMinusOne(uintptr_t address)
{
    try {
        return *reinterpret_cast<const volatile int*>(address);
    } catch (fw_exception_assert* raw) {
        std::unique_ptr<fw_exception_assert> fault(raw);
        return -1;
    }
}

}  // namespace

TEST_F(fw_faultsTest, AFaultUnwindsLikeAThrowAgainAndAgain)
{
    const int32_t nesting = fw_exception_nesting;
    destroyed = 0;
    for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(expectThrown<fw_exception_assert>([] { readInScope(faults::nowhere()); })) << round;
        EXPECT_EQ(round + 1, destroyed) << "the destructor in the faulting frame ran";
        EXPECT_EQ(-1, readOrMinusOne(faults::nowhere() + 4)) << round;
    }
    static const int value = 42;
    EXPECT_EQ(42, readOrMinusOne(reinterpret_cast<uintptr_t>(&value)));
    EXPECT_EQ(nesting, fw_exception_nesting) << "every fault's exception was deleted";
}

namespace {

struct ThreadResult
{
    std::string message;
    bool current = false;
};

DWORD WINAPI faultOnThisThread(void* out)
{
    ThreadResult& result = *static_cast<ThreadResult*>(out);
    try {
        faults::divide(7, faults::zero());
    } catch (fw_exception_assert* raw) {
        std::unique_ptr<fw_exception_assert> fault(raw);
        result.message = fault->message().c_str();
        result.current = fw_current_exception() == raw;
    }
    return 0;
}

}  // namespace

TEST_F(fw_faultsTest, TheHandlerServesEveryThread)
{
    ThreadResult result;
    HANDLE thread = CreateThread(nullptr, 0, faultOnThisThread, &result, 0, nullptr);
    ASSERT_NE(nullptr, thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_EQ(0u, result.message.find("integer divide by 0, eip=0x")) << result.message;
    EXPECT_TRUE(result.current) << "raised in the faulting thread's own slot";
    EXPECT_EQ(nullptr, fw_current_exception()) << "and not in this one";
}

namespace {

// Registered last, behind the layer's handler: sees what the layer lets pass, and
// lets the raiser go on.
struct Bystander
{
    static DWORD lastCode;
    static int seen;

    static LONG CALLBACK handler(EXCEPTION_POINTERS* pointers)
    {
        const DWORD code = pointers->ExceptionRecord->ExceptionCode;
        if (code != EXCEPTION_BREAKPOINT && code != 0xE06D7363)
            return EXCEPTION_CONTINUE_SEARCH;
        ++seen;
        lastCode = code;
        return EXCEPTION_CONTINUE_EXECUTION;
    }
};
DWORD Bystander::lastCode = 0;
int Bystander::seen = 0;

}  // namespace

TEST_F(fw_faultsTest, SoftwareExceptionsAndBreakpointsPassUntouched)
{
    // Thrown objects of both families arrive as they were thrown.
    fw_exception_info* info = new fw_exception_info(fw_string("thrown"));
    auto caughtInfo = expectThrown<fw_exception_info>([info] { throw info; });
    EXPECT_EQ(info, caughtInfo.get());
    EXPECT_EQ("thrown", text(caughtInfo->message()));
    caughtInfo.reset();
    auto caughtError = expectThrown<Framework::ErrorException>([] { throw new Framework::ErrorException(SITE); });
    EXPECT_TRUE(caughtError);
    caughtError.reset();

    // A breakpoint and another compiler's C++ exception reach the handlers behind.
    // (The breakpoint is raised: an int3 instruction kills the process under Wine in
    // the emulated machine, "nested exception on signal stack", with any handler.)
    Bystander::seen = 0;
    void* bystander = AddVectoredExceptionHandler(0, &Bystander::handler);
    ASSERT_NE(nullptr, bystander);
    EXPECT_NO_THROW(RaiseException(EXCEPTION_BREAKPOINT, 0, 0, nullptr));
    EXPECT_EQ(1, Bystander::seen);
    EXPECT_EQ(DWORD(EXCEPTION_BREAKPOINT), Bystander::lastCode);
    EXPECT_NO_THROW(RaiseException(0xE06D7363, 0, 0, nullptr));
    EXPECT_EQ(2, Bystander::seen);
    EXPECT_EQ(0xE06D7363u, Bystander::lastCode);
    RemoveVectoredExceptionHandler(bystander);
    EXPECT_EQ(nullptr, fw_current_exception());

    // The handler asked directly, with the instruction in this module: what it
    // leaves, it leaves as it found it.
    EXCEPTION_RECORD record = {};
    CONTEXT context = {};
    processor::setInstruction(context, reinterpret_cast<uintptr_t>(&faults::readAt) + 4);
    processor::setFramePointer(context, 0x12345678);
    EXCEPTION_POINTERS pointers = {&record, &context};
    const DWORD untouched[] = {EXCEPTION_BREAKPOINT, 0xC0000027 /* unwinding */, 0xE06D7363 /* MSVC C++ */,
                               0x20474343 /* g++ on SEH */, 0x406D1388 /* thread name */, 0x40010006 /* debug text */,
                               0xC0000409 /* not in the table */};
    for (DWORD code : untouched) {
        record.ExceptionCode = code;
        const CONTEXT before = context;
        EXPECT_EQ(0, fw_fault_vector(&pointers)) << std::hex << code;
        EXPECT_EQ(0, std::memcmp(&before, &context, sizeof context)) << std::hex << code;
    }
    EXPECT_EQ(0, fw_fault_vector(nullptr));
    // A fault in another module is that module's.
    record.ExceptionCode = EXCEPTION_ACCESS_VIOLATION;
    record.NumberParameters = 2;
    const uintptr_t ours = processor::instruction(context);
    processor::setInstruction(
        context, reinterpret_cast<uintptr_t>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "GetTickCount")));
    EXPECT_EQ(0, fw_fault_vector(&pointers));
    // The same fault in this module is taken: the thread would go on elsewhere.
    processor::setInstruction(context, ours);
    EXPECT_EQ(EXCEPTION_CONTINUE_EXECUTION, fw_fault_vector(&pointers));
    EXPECT_NE(ours, processor::instruction(context));
    EXPECT_EQ(0x12345678u, processor::framePointer(context)) << "the faulting frame stays the frame";
}

TEST(fw_faultsTextTest, TextsByCodeAndParameters)
{
    struct Row {
        uint32_t code;
        uint32_t count;
        uintptr_t parameters[2];
        const char* text;
    };
    // The rows whose parameters decide the text; the plain codes are one lookup.
    const Row rows[] = {
        {0xC0000005, 2, {1, 0xDEADBEEF}, "attempt to write at 0xDEADBEEF"},
        {0xC0000005, 2, {0, 0x10}, "attempt to read at 0x00000010"},
        {0xC0000005, 2, {8, 0x401000}, "access violation"},
        {0xC0000005, 1, {0, 0}, "access violation"},
        {0xC0000005, 0, {0, 0}, "access violation"},
        {0xC0000006, 3, {0, 0x2000}, "in page error"},
        {0xC0000094, 0, {}, "integer divide by 0"},
        {0x80000003, 0, {}, "breakpoint"},
        {0xC0000027, 0, {}, ""},
        {0xE06D7363, 0, {}, ""},
    };
    for (size_t i = 0; i < sizeof rows / sizeof *rows; ++i) {
        const Row& row = rows[i];
        EXPECT_EQ(row.text, text(fw_fault_text(row.code, row.count, row.parameters)))
            << "row " << i << ": " << std::hex << row.code;
    }
}

namespace {

std::string programName()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof path);
    return text(base_name(fw_string(path)));
}

std::wstring widened(const std::string& narrow)
{
    return std::wstring(narrow.begin(), narrow.end());
}

}  // namespace

// The child process that the death test starts reads the version anew; this process
// keeps the one it started with.
TEST(fw_faultsDeathTest, OnANewerSystemNoHandlerIsRegisteredAndAFaultTakesItsOrdinaryCourse)
{
    ScratchKey appDefaults(HKEY_CURRENT_USER, L"Software\\Wine\\AppDefaults\\" + widened(programName()));
    appDefaults.setText(L"Version", L"win10");
    EXPECT_EXIT(
        {
            // The fault ends the process with its code, without starting the debugger.
            SetErrorMode(SEM_NOGPFAULTERRORBOX);
            fw_library layer;
            std::fprintf(stderr, "kind %d, handler %s\n", fw_os_kind(),
                         fw_fault_handler_on || fw_fault_handler || fw_kernel_module ? "registered" : "none");
            std::fflush(stderr);
            try {
                faults::readAt(faults::nowhere());
            } catch (...) {
                std::exit(3);
            }
            std::exit(4);
        },
        ::testing::ExitedWithCode(int(EXCEPTION_ACCESS_VIOLATION)), "kind 10, handler none");
}

namespace {

struct FaultsWhenDestroyed
{
    ~FaultsWhenDestroyed() { faults::readAt(faults::nowhere()); }
};

}  // namespace

// What the report then says is the error report's own matter (fw_exceptionTest).
TEST(fw_faultsDeathTest, AFaultWhileAFaultUnwindsEndsTheProcessWithOne)
{
    EXPECT_EXIT(
        {
            fw_library layer;
            try {
                FaultsWhenDestroyed guard;
                faults::divide(1, faults::zero());
            } catch (fw_exception* e) {
                delete e;
            }
            std::exit(5);
        },
        ::testing::ExitedWithCode(1), "");
}
