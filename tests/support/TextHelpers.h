// Printing Framework strings in test failures, as UTF-8, and matching error output.
#pragma once
#include "Framework/String.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>

// ASCII text (paths, names) as bytes.
inline std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

namespace Framework {

inline std::string narrowForTest(const String& text)
{
    std::string out(text.length() * 3, '\0');
    out.resize(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), int(text.length()), &out[0], int(out.size()), nullptr,
                                   nullptr));
    return out;
}

inline void PrintTo(const String& text, std::ostream* os)
{
    *os << '"' << narrowForTest(text) << '"';
}

inline void PrintTo(const AnsiString& text, std::ostream* os)
{
    *os << '"' << std::string(text.c_str(), text.length()) << '"';
}

}  // namespace Framework

namespace testing_text {

// For death tests: the error output must not hold `text` (GoogleTest alone, without
// its mocking half, has no such matcher).
class Lacks : public ::testing::MatcherInterface<const std::string&>
{
public:
    explicit Lacks(std::string unwanted) : text(std::move(unwanted)) {}
    bool MatchAndExplain(const std::string& output, ::testing::MatchResultListener*) const override
    {
        return output.find(text) == std::string::npos;
    }
    void DescribeTo(std::ostream* os) const override { *os << "has no \"" << text << '"'; }

private:
    std::string text;
};

}  // namespace testing_text

inline ::testing::Matcher<const std::string&> lacks(const std::string& text)
{
    return ::testing::Matcher<const std::string&>(new testing_text::Lacks(text));
}
