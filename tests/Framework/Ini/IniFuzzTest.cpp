// Texts made by mutating good ones, with a fixed seed: each must give a tree that can
// be read back whole, or one of the parser's defined failures. A crash, a hang or any
// other exception class fails the test with the seed, the round and the text.
#include "Framework/Ini/IniParser.h"

#include "Framework/Exceptions.h"
#include "Framework/Ini/IniTestHelpers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

using namespace Framework;

namespace {

const char* const seeds[] = {
    "top = 1\n[sec]\nk = v ; c\nk = w\n",
    "[a.b/c\\d]\r\nname = 'quoted ; x'\r\n# comment\r\n",
    "'a b' = \"v\"\n[w]\n[w.sub]\nz = $(KORVALIN_FUZZ_B)\n",
    "x = \"$(KORVALIN_FUZZ_B)-$(KORVALIN_FUZZ_B)\"\ny = '$(literal)'\n",
    "[Gr\xC3\xBC\xC3\x9F" "e]\nnam\xC3\xA9 = \xE2\x82\xAC\n\n;\n",
    "@include nothing-here.ini\n[s]\nk\n",
    "a = b = c\n  [x]\n[y] ; z\n",
};

// Bytes that mean something to the parser, and some that don't.
const char alphabet[] = "[]=;#'\"$()@ \t\r\n./\\abcKx\xC3\xBC\0";

std::string mutate(std::string text, std::mt19937& random)
{
    auto pick = [&](size_t below) { return below == 0 ? size_t(0) : size_t(random() % below); };
    const int edits = 1 + int(random() % 4);
    for (int e = 0; e < edits; ++e) {
        const size_t at = pick(text.size() + 1);
        const char c = alphabet[pick(sizeof alphabet - 1)];
        switch (random() % 5) {
        case 0:
            if (at < text.size())
                text[at] = c;
            break;
        case 1:
            text.insert(at, 1, c);
            break;
        case 2:
            if (at < text.size())
                text.erase(at, 1 + pick(4));
            break;
        case 3: {
            // A span repeated: lines and sections twice.
            const size_t length = pick(text.size() - std::min(at, text.size()) + 1);
            text.insert(at, text.substr(at, length));
            break;
        }
        default: {
            // A piece of another seed spliced in.
            const std::string other = seeds[pick(sizeof seeds / sizeof seeds[0])];
            const size_t from = pick(other.size());
            text.insert(at, other.substr(from, pick(other.size() - from + 1)));
            break;
        }
        }
    }
    return text;
}

// The failures the parser defines: syntax errors, an empty section path, an unset
// variable, and $() with no name.
bool isDefinedFailure(const fw_exception& thrown)
{
    if (dynamic_cast<const TextFormatException*>(&thrown) || dynamic_cast<const EnvironmentException*>(&thrown))
        return true;
    if (const FormatException* format = dynamic_cast<const FormatException*>(&thrown))
        return typeid(*format) == typeid(FormatException) && format->position == FormatException::unknownPosition;
    return typeid(thrown) == typeid(ErrorException);
}

std::string printable(const std::string& text)
{
    std::string out;
    for (unsigned char c : text) {
        if (c >= 0x20 && c < 0x7F && c != '\\') {
            out += char(c);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
            out += escaped;
        }
    }
    return out;
}

TEST(IniFuzzTest, MutatedTextsGiveATreeOrADefinedFailure)
{
    _wputenv(L"KORVALIN_FUZZ_B=bee");
    const unsigned seed = 20261123;
    const int rounds = 3000;
    std::mt19937 random(seed);
    int trees = 0, failures = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string text = mutate(seeds[random() % (sizeof seeds / sizeof seeds[0])], random);
        try {
            ini_test::dumpTree(*ini_test::parseText(text, round % 2 == 1));
            ++trees;
        } catch (fw_exception* raw) {
            std::unique_ptr<fw_exception> thrown(raw);
            ++failures;
            if (!isDefinedFailure(*raw)) {
                ADD_FAILURE() << "seed " << seed << ", round " << round << ": " << typeid(*raw).name()
                              << " from \"" << printable(text) << '"';
                return;
            }
        }
    }
    // The mutations must reach both roads, or the test proves little.
    EXPECT_GT(trees, rounds / 10);
    EXPECT_GT(failures, rounds / 10);
    std::printf("%d trees, %d defined failures\n", trees, failures);
}

}  // namespace
