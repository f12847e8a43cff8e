// Stack dumps: from the probe program, which has its .pdb, and in this program, which
// has none.
#include "Framework/Diagnostics/StackDump.h"

#include "support/ActionLibrary.h"
#include "support/Installer.h"
#include "support/Processor.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
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

}  // namespace

// With its .pdb beside it, the probe's dump names the place and symbol of each frame,
// the symbols in one column; this program has no .pdb, and its dumps only addresses.
TEST(StackDumpTest, AnExceptionCarriesItsStackWithItsSymbolsWhenThePdbStandsBesideTheProgram)
{
    std::string output;
    ASSERT_EQ(0u, runProgram(L"\"" + testSetting("KORVALIN_STACK_PROBE") + L"\"", output));
    std::istringstream given(output);
    uintptr_t base = 0;
    int throwLine = 0;
    given >> std::hex >> base >> std::dec >> throwLine;
    const std::vector<std::string> lines = bodyOf(output.substr(output.find("Stack dump:")), "stack_probe.exe", base);
    // The throw's own frame with its place and symbol; all symbols in one column.
    const std::string place = " StackProbe.cpp:" + std::to_string(throwLine) + " ";
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
        return line.find(place) != std::string::npos && line.find("main") != std::string::npos;
    })) << output;
    std::set<size_t> symbolColumns;
    for (const std::string& line : lines) {
        const size_t placeEnd = line.find(' ', addressDigits + 1);
        if (placeEnd != std::string::npos)
            symbolColumns.insert(line.find_first_not_of(' ', placeEnd));
    }
    EXPECT_EQ(1u, symbolColumns.size());

    const Framework::AnsiString own(Framework::stackDump(nullptr));
    const uintptr_t ownBase = reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr));
    for (const std::string& line : bodyOf(own.c_str(), "framework_tests.exe", ownBase))
        EXPECT_EQ(addressDigits, line.size()) << line;
}
