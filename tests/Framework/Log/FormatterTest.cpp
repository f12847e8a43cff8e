// The formatters on known records: the template language with its quirks, and what
// each built-in formatter makes of a record.
#include "Framework/Log/Configuration.h"
#include "Framework/Log/LineFormatter.h"

#include "support/ExpectThrown.h"
#include "support/LogRecords.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>

#include <thread>
#include <tuple>
#include <typeinfo>

using namespace Framework;
using namespace Framework::Log;

TEST(FormatterTest, TemplateLanguageKeepsItsQuirksAndRefusesLoops)
{
    Configuration configuration;
    configuration.prepareFormatters();
    const SharedPointer<Formatter> formatter = configuration.formatters->get(L"Line");
    const Record record = recordWith(L"m", Level::Error, L"A::B");
    const std::pair<const wchar_t*, const wchar_t*> accepted[] = {
        {L"abc%(level)S", L"abcERROR"}, {L"abc%def%(level)S", L"defERROR"},
        {L"%(level)S tail", L"ERROR tail"}, {L"%(level)S%tail", L"ERROR"},
        {L"no conversion at all", L""}, {L"100%%(level)S", L"100ERROR"},
        {L"%-8(level)S|", L"ERROR   |"}, {L"%(LEVEL)S/%(Context)S", L"ERROR/A::B"},
    };
    for (const auto& [text, expected] : accepted) {
        formatter->setFormat(text);
        EXPECT_EQ(String(expected), formatter->format(record)) << narrowForTest(text);
    }

    // "outer" names "Line": a template that reaches "Line" again would never end.
    const SharedPointer<Formatter> outer(new LineFormatter);
    configuration.formatters->add(L"outer", outer);
    outer->setFormatters(configuration.formatters);
    outer->setFormat(L"<%(line)S>");
    const std::pair<const wchar_t*, std::string> refused[] = {
        {L"%(level", typeid(FormatException).name()},
        {L"%(nosuch)S", typeid(LookupException).name()},
        {L"at (x): %(level)S", typeid(LookupException).name()},
        {L"%(line)S", typeid(FormatException).name()},
        {L"%(level)S %(outer)S", typeid(FormatException).name()},
    };
    for (const auto& [text, failure] : refused) {
        EXPECT_EQ(failure, thrownClass([&] { formatter->setFormat(text); })) << narrowForTest(text);
        // Nothing of the refused template stays, so nothing loops.
        EXPECT_EQ(String(L"<>"), outer->format(record));
    }
}

TEST(FormatterTest, ItemFormattersPrintTheirFields)
{
    Configuration configuration;
    configuration.prepareFormatters();
    Record bigElapsed = recordWith(L"x");
    bigElapsed.elapsed = 0x100000005ull;
    // The formatter, its format (null keeps the default), the record, the text.
    const std::tuple<const wchar_t*, const wchar_t*, Record, String> rows[] = {
        // The composed formatters first, while the items keep their default formats.
        {L"Line", nullptr, recordWith(L"some text"), L"2013-02-20 08:21:24 Thread000 ERROR Framework some text"},
        // Without the level and without escaping; WriterTest has the document around it.
        {L"Xml", nullptr, recordWith(L"a<b", Level::Debug, L"A::B"),
         L"<logrecord>\n<datetime>2013-02-20 08:21:24</datetime>\n<threadname>Thread000</threadname>\n"
         L"<context>A::B</context>\n<message>a<b</message>\n</logrecord>"},
        {L"Level", L"[%S]", recordWith(L"x", Level::Warning), L"[WARNING]"},
        {L"Level", L"[%S]", recordWith(L"x", Level(25)), L"25"},
        {L"Message", nullptr, recordWith(L"a\nb"), L"\r\na\nb"},
        {L"Message", nullptr, recordWith(L"\na"), L"\na"},
        {L"DateTime", L"%d.%m.%Y", recordWith(L"x"), L"20.02.2013"},
        {L"ElapsedTime", nullptr, bigElapsed, L"5"},
        {L"ElapsedTime", L"%Lu ms", bigElapsed, L"4294967301 ms"},
        {L"Context", L"<%S>", recordWith(L"x", Level::Error, L"A::B"), L"<A::B>"},
    };
    for (const auto& [name, format, record, expected] : rows) {
        SCOPED_TRACE(narrowForTest(name));
        const SharedPointer<Formatter> formatter = configuration.formatters->get(name);
        formatter->setDefaultFormat();
        if (format)
            formatter->setProperty(L"FORMAT", format);
        EXPECT_EQ(expected, formatter->format(record));
    }

    const SharedPointer<Formatter> indent = configuration.formatters->get(L"ContextIndent");
    indent->setProperty(L"Indent", L"2");
    EXPECT_EQ(String(L"    "), indent->format(recordWith(L"x", Level::Error, L"A::B::C")));
    // The thread that formats, not the one that made the record.
    String otherId, formatted;
    std::thread([&] {
        otherId = toString(uint32_t(GetCurrentThreadId()));
        formatted = configuration.formatters->get(L"ThreadId")->format(recordWith(L"x"));
    }).join();
    EXPECT_EQ(otherId, formatted);
}
