// The stack dump of this program, which has no .pdb beside it. (The places and symbols
// that a .pdb brings are for a developer's eyes; an installer's host has none.)
#include "Framework/Diagnostics/StackDump.h"

#include "support/Processor.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
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

// The head names the module of the first address and its base; this program has no
// .pdb beside it, so each line is an address alone, with all the digits of a pointer.
TEST(StackDumpTest, WithoutThePdbEachLineIsAnAddress)
{
    const Framework::AnsiString dump(Framework::stackDump(nullptr));
    const std::vector<std::string> lines =
        bodyOf(dump.c_str(), "framework_tests.exe", reinterpret_cast<uintptr_t>(GetModuleHandleW(nullptr)));
    EXPECT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_EQ(addressDigits, line.size()) << line;
}
