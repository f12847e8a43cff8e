// Stack dumps: from the probe program with and without its .pdb, and in this program,
// which has none, from a given context and at the walk's limits.
#include "Framework/Diagnostics/StackDump.h"

#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/Processor.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using processor::addressDigits;
using processor::hexAddress;

// Checks the head of three lines and that each line after it starts with an address;
// those lines, without their "\r\n".
std::vector<std::string> bodyOf(const std::string& dump, const std::string& module, uintptr_t base)
{
    const std::string head = "Stack dump:\r\nModule: " + module + "\r\nBase: " + hexAddress(base) + "\r\n";
    EXPECT_EQ(head, dump.substr(0, head.size()));
    std::vector<std::string> lines;
    std::istringstream body(dump.substr(std::min(head.size(), dump.size())));
    for (std::string line; std::getline(body, line) && !line.empty();) {
        line.pop_back();
        const bool address = line.size() >= addressDigits &&
                             line.find_first_not_of("0123456789ABCDEF") >= addressDigits &&
                             (line.size() == addressDigits || line[addressDigits] == ' ');
        EXPECT_TRUE(address) << line;
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> bodyOf(const Framework::String& dump)
{
    return bodyOf(Framework::AnsiString(dump).c_str(), "framework_tests.exe",
                  reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)));
}

// A recursion through one call site returns to the same address again and again.
__attribute__((noinline)) Framework::String dumpAtDepth(int depth)
{
    if (depth == 0)
        return Framework::stackDump(nullptr);
    Framework::String dump = dumpAtDepth(depth - 1);
    asm volatile("");
    return dump;
}

// Two functions that call each other: a deep stack of distinct return addresses.
__attribute__((noinline)) Framework::String dumpAtEvenDepth(int depth);
__attribute__((noinline)) Framework::String dumpAtOddDepth(int depth)
{
    Framework::String dump = dumpAtEvenDepth(depth - 1);
    asm volatile("");
    return dump;
}
__attribute__((noinline)) Framework::String dumpAtEvenDepth(int depth)
{
    if (depth == 0)
        return Framework::stackDump(nullptr);
    Framework::String dump = dumpAtOddDepth(depth - 1);
    asm volatile("");
    return dump;
}

}  // namespace

// With its .pdb beside it, the probe's dump names the place and symbol of each frame,
// the symbols in one column; this program has no .pdb, and its dumps only addresses.
TEST(StackDumpTest, AnExceptionCarriesItsStackWithItsSymbolsWhenThePdbStandsBesideTheProgram)
{
    std::string output;
    ASSERT_EQ(0u, runProgram(L"\"" + testSetting("KORVALIN_STACK_PROBE") + L"\"", output));
    std::istringstream given(output);
    uintptr_t base = 0, returns[3] = {};
    int throwLine = 0;
    given >> std::hex >> base >> returns[0] >> returns[1] >> returns[2] >> std::dec >> throwLine;
    const std::vector<std::string> lines = bodyOf(output.substr(output.find("Stack dump:")), "stack_probe.exe", base);
    // The three calls that threw, in order, behind the frame of the throw itself.
    size_t inner = 0;
    while (inner < lines.size() && lines[inner].compare(0, addressDigits, hexAddress(returns[0])) != 0)
        ++inner;
    ASSERT_TRUE(inner >= 1 && inner + 2 < lines.size()) << output;
    EXPECT_EQ(hexAddress(returns[1]), lines[inner + 1].substr(0, addressDigits));
    EXPECT_EQ(hexAddress(returns[2]), lines[inner + 2].substr(0, addressDigits));
    const std::string& thrower = lines[inner - 1];
    EXPECT_NE(std::string::npos, thrower.find(" StackProbe.cpp:" + std::to_string(throwLine) + " ")) << thrower;
    EXPECT_NE(std::string::npos, thrower.find("throwingInner")) << thrower;
    EXPECT_NE(std::string::npos, lines[inner].find("throwingMiddle")) << lines[inner];
    std::set<size_t> symbolColumns;
    for (const std::string& line : lines) {
        const size_t placeEnd = line.find(' ', addressDigits + 1);
        if (placeEnd != std::string::npos)
            symbolColumns.insert(line.find_first_not_of(' ', placeEnd));
    }
    EXPECT_EQ(1u, symbolColumns.size());

    for (const std::string& line : bodyOf(Framework::stackDump(nullptr)))
        EXPECT_EQ(addressDigits, line.size()) << line;
}

TEST(StackDumpTest, AGivenContextIsKeptAndTheWalkHasItsLimits)
{
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    RtlCaptureContext(&context);
    const CONTEXT before = context;
    const std::vector<std::string> fromContext = bodyOf(Framework::stackDump(&context));
    EXPECT_EQ(0, std::memcmp(&before, &context, sizeof context)) << "the caller's context was changed";
    ASSERT_FALSE(fromContext.empty());
    EXPECT_EQ(hexAddress(processor::instruction(context)), fromContext[0]);

    EXPECT_EQ(101u, bodyOf(dumpAtEvenDepth(150)).size()) << "the first address and 100 more";
    // The walk ends at the first return address that repeats the one before: inside
    // stackDump, into the innermost call, into the one that called it.
    EXPECT_EQ(3u, bodyOf(dumpAtDepth(20)).size());
}
