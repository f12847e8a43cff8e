// Stack dumps: from the probe program with and without its .pdb, and in this program,
// which has none, from a given context, a deep recursion, a frame that returns to
// itself, and two threads at once.
#include "Framework/Diagnostics/StackDump.h"

#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/Processor.h"
#include "support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using Framework::String;

namespace {

using processor::addressDigits;
using processor::hexAddress;

std::vector<std::string> linesOf(const std::string& text)
{
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        const size_t end = text.find("\r\n", start);
        lines.push_back(text.substr(start, end - start));
        start = end == std::string::npos ? text.size() : end + 2;
    }
    return lines;
}

bool startsWithAddress(const std::string& line)
{
    if (line.size() < addressDigits || (line.size() > addressDigits && line[addressDigits] != ' '))
        return false;
    for (size_t i = 0; i < addressDigits; ++i) {
        if (!std::strchr("0123456789ABCDEF", line[i]))
            return false;
    }
    return true;
}

std::vector<std::string> dumpLines(const String& dump)
{
    return linesOf(std::string(Framework::AnsiString(dump).c_str()));
}

// The head of three lines, then nothing but address lines; how many there are.
size_t checkWhole(const std::vector<std::string>& lines, const std::string& module, const std::string& base)
{
    EXPECT_GE(lines.size(), 4u);
    if (lines.size() < 4)
        return 0;
    EXPECT_EQ("Stack dump:", lines[0]);
    EXPECT_EQ("Module: " + module, lines[1]);
    EXPECT_EQ("Base: " + base, lines[2]);
    for (size_t i = 3; i < lines.size(); ++i)
        EXPECT_TRUE(startsWithAddress(lines[i])) << "line " << i << ": " << lines[i];
    return lines.size() - 3;
}

struct ProbeRun
{
    uint64_t base = 0;
    uint64_t returns[3] = {};
    int throwLine = 0;
    std::vector<std::string> dump;
};

ProbeRun runProbe(const char* setting)
{
    ScratchFolder folder(L"StackProbe");
    const std::wstring out = folder.at(L"probe.txt");
    EXPECT_EQ(0u, runProgram(L"\"" + testSetting(setting) + L"\" \"" + out + L"\""));
    std::istringstream text(folder.readFile(L"probe.txt"));
    ProbeRun run;
    std::string word, siteLine, rest;
    text >> word >> std::hex >> run.base >> word >> run.returns[0] >> run.returns[1] >> run.returns[2] >> word >>
        std::dec >> run.throwLine;
    std::getline(text, rest);
    std::getline(text, siteLine);  // the description's first line: the throw site
    std::getline(text, rest, '\0');
    run.dump = linesOf(rest);
    return run;
}

size_t lineStartingWith(const std::vector<std::string>& lines, uint64_t address)
{
    for (size_t i = 0; i < lines.size(); ++i) {
        if (lines[i].compare(0, addressDigits, hexAddress(address)) == 0)
            return i;
    }
    return std::string::npos;
}

// A recursion through one call site returns to the same address again and again.
__attribute__((noinline)) String dumpAtDepth(int depth)
{
    if (depth == 0)
        return Framework::stackDump(nullptr);
    String dump = dumpAtDepth(depth - 1);
    asm volatile("");
    return dump;
}

// Two functions that call each other: a deep stack of distinct return addresses.
__attribute__((noinline)) String dumpAtEvenDepth(int depth);
__attribute__((noinline)) String dumpAtOddDepth(int depth)
{
    String dump = dumpAtEvenDepth(depth - 1);
    asm volatile("");
    return dump;
}
__attribute__((noinline)) String dumpAtEvenDepth(int depth)
{
    if (depth == 0)
        return Framework::stackDump(nullptr);
    String dump = dumpAtOddDepth(depth - 1);
    asm volatile("");
    return dump;
}

}  // namespace

TEST(StackDumpTest, AnExceptionCarriesItsStackWithSymbolsExactlyWhenThePdbStandsBesideTheProgram)
{
    for (const bool symbols : {false, true}) {
        SCOPED_TRACE(symbols ? "with the .pdb" : "without it");
        const ProbeRun run = runProbe(symbols ? "KORVALIN_STACK_PROBE" : "KORVALIN_PLAIN_STACK_PROBE");
        checkWhole(run.dump, "stack_probe.exe", hexAddress(run.base));
        // The three calls that threw, in order, behind the frame of the throw itself.
        const size_t inMiddle = lineStartingWith(run.dump, run.returns[0]);
        ASSERT_NE(std::string::npos, inMiddle);
        ASSERT_GE(inMiddle, 4u);
        ASSERT_LT(inMiddle + 2, run.dump.size());
        EXPECT_EQ(hexAddress(run.returns[1]), run.dump[inMiddle + 1].substr(0, addressDigits));
        EXPECT_EQ(hexAddress(run.returns[2]), run.dump[inMiddle + 2].substr(0, addressDigits));
        if (!symbols) {
            for (size_t i = 3; i < run.dump.size(); ++i)
                EXPECT_EQ(addressDigits, run.dump[i].size()) << run.dump[i];
            continue;
        }
        const std::string& thrower = run.dump[inMiddle - 1];
        EXPECT_NE(std::string::npos, thrower.find(" StackProbe.cpp:" + std::to_string(run.throwLine) + " ")) << thrower;
        EXPECT_NE(std::string::npos, thrower.find("throwingInner")) << thrower;
        EXPECT_NE(std::string::npos, run.dump[inMiddle].find("throwingMiddle")) << run.dump[inMiddle];
        // Places in one column behind the address, symbols in one column behind the
        // widest place.
        const size_t place = addressDigits + 1;
        size_t placeWidth = 0;
        for (size_t i = 3; i < run.dump.size(); ++i) {
            if (run.dump[i].size() > place)
                placeWidth = std::max(placeWidth, run.dump[i].find(' ', place) - place);
        }
        for (size_t i = 3; i < run.dump.size(); ++i) {
            const std::string& line = run.dump[i];
            const size_t symbol =
                line.find_first_not_of(' ', place + std::min(line.size() - place, line.find(' ', place) - place));
            if (line.size() > place && symbol != std::string::npos) {
                EXPECT_EQ(place + 1 + placeWidth, symbol) << line;
            }
        }
    }
}

TEST(StackDumpTest, AGivenContextIsKeptAndTheWalkHasItsLimits)
{
    const std::string module = "framework_tests.exe";
    const std::string base = hexAddress(reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)));

    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    RtlCaptureContext(&context);
    const CONTEXT before = context;
    const std::vector<std::string> fromContext = dumpLines(Framework::stackDump(&context));
    EXPECT_EQ(0, std::memcmp(&before, &context, sizeof context)) << "the caller's context was changed";
    checkWhole(fromContext, module, base);
    ASSERT_GE(fromContext.size(), 4u);
    EXPECT_EQ(hexAddress(processor::instruction(context)), fromContext[3]);

    EXPECT_EQ(101u, checkWhole(dumpLines(dumpAtEvenDepth(150)), module, base)) << "the first address and 100 more";
    // The walk ends at the first return address that repeats the one before: inside
    // stackDump, into the innermost call, into the one that called it.
    EXPECT_EQ(3u, checkWhole(dumpLines(dumpAtDepth(20)), module, base));
}

TEST(StackDumpTest, TwoThreadsDumpingAtOnceGetWholeDumps)
{
    std::atomic<int> ready(0), broken(0);
    auto dumper = [&] {
        ++ready;
        while (ready < 2) {
        }
        for (int i = 0; i < 8; ++i) {
            const std::vector<std::string> lines = dumpLines(dumpAtEvenDepth(6));
            bool whole = lines.size() >= 9 && lines[0] == "Stack dump:";
            for (size_t j = 3; j < lines.size(); ++j)
                whole = whole && startsWithAddress(lines[j]) && lines[j].size() == addressDigits;
            if (!whole)
                ++broken;
        }
    };
    std::thread first(dumper), second(dumper);
    first.join();
    second.join();
    EXPECT_EQ(0, broken.load());
}
