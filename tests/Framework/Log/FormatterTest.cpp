// The formatters on known records: the default line, the quirks of the template
// language in one table, the item formatters, templates that would loop, and the XML
// document as a real XML parser (Wine's XmlLite) reads it from a writer's file.
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/FormatterRegistry.h"
#include "Framework/Log/ItemFormatters.h"
#include "Framework/Log/LineFormatter.h"

#include "support/ExpectThrown.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <msxml2.h>

using namespace Framework;
using namespace Framework::Log;

TEST(FormatterTest, DefaultLineHasTheFieldsWithSingleBlanks)
{
    Configuration configuration = readyConfiguration();
    const SharedPointer<Formatter> line = configuration.formatters->get(L"line");
    EXPECT_EQ(String(L"2013-02-20 08:21:24 Thread000 ERROR Framework some text"),
              line->format(recordWith(L"some text")));
}

namespace {

enum class Refused { No, Format, Lookup };

struct TemplateRow
{
    const wchar_t* text;
    const wchar_t* expected;
    Refused refused;
};

}  // namespace

TEST(FormatterTest, TemplateLanguageKeepsItsQuirks)
{
    const TemplateRow rows[] = {
        {L"abc%(level)S", L"abcERROR", Refused::No},
        {L"abc%def%(level)S", L"defERROR", Refused::No},
        {L"%(level)S tail", L"ERROR tail", Refused::No},
        {L"%(level)S%tail", L"ERROR", Refused::No},
        {L"no conversion at all", L"", Refused::No},
        {L"100%%(level)S", L"100ERROR", Refused::No},
        {L"%-8(level)S|", L"ERROR   |", Refused::No},
        {L"%(LEVEL)S/%(Context)S", L"ERROR/A::B", Refused::No},
        {L"%(level", nullptr, Refused::Format},
        {L"%(nosuch)S", nullptr, Refused::Lookup},
        {L"at (x): %(level)S", nullptr, Refused::Lookup},
    };
    Configuration configuration = readyConfiguration(L"%(level)S");
    const SharedPointer<Formatter> formatter = configuration.formatters->get(L"test");
    Record record = recordWith(L"one line", Level::Error, L"A::B");
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        const TemplateRow& row = rows[i];
        SCOPED_TRACE(::testing::Message() << "row " << i << ": " << narrowForTest(row.text));
        if (row.refused == Refused::No) {
            formatter->setFormat(row.text);
            EXPECT_EQ(String(row.expected), formatter->format(record));
        } else if (row.refused == Refused::Format) {
            expectThrown<FormatException>([&] { formatter->setFormat(row.text); });
        } else {
            expectThrown<LookupException>([&] { formatter->setFormat(row.text); });
        }
    }
    LineFormatter unattached;
    expectThrown<ValueNotInitializedException>([&] { unattached.setFormat(L"%(level)S"); });
}

TEST(FormatterTest, ItemFormattersPrintTheirFields)
{
    Configuration configuration = readyConfiguration();
    FormatterRegistry& registry = *configuration.formatters;
    struct Row
    {
        const wchar_t* formatter;
        const wchar_t* format;  // null keeps the default
        Record record;
        const wchar_t* expected;
    };
    Record bigElapsed = recordWith(L"x");
    bigElapsed.elapsed = 0x100000005ull;
    const Row rows[] = {
        {L"Level", L"[%S]", recordWith(L"x", Level::Warning), L"[WARNING]"},
        {L"Level", L"[%S]", recordWith(L"x", Level(25)), L"25"},
        {L"Message", nullptr, recordWith(L"a\nb"), L"\r\na\nb"},
        {L"Message", nullptr, recordWith(L"\na"), L"\na"},
        {L"ContextIndent", nullptr, recordWith(L"x", Level::Error, L"A::B::C"), L""},
        {L"DateTime", L"", recordWith(L"x"), L""},
        {L"DateTime", L"%d.%m.%Y", recordWith(L"x"), L"20.02.2013"},
        {L"ElapsedTime", nullptr, bigElapsed, L"5"},
        {L"ElapsedTime", L"%Lu ms", bigElapsed, L"4294967301 ms"},
        {L"Context", L"<%S>", recordWith(L"x", Level::Error, L"A::B"), L"<A::B>"},
    };
    for (size_t i = 0; i < sizeof rows / sizeof rows[0]; ++i) {
        const Row& row = rows[i];
        SCOPED_TRACE(::testing::Message() << "row " << i << ": " << narrowForTest(row.formatter));
        const SharedPointer<Formatter> formatter = registry.get(row.formatter);
        formatter->setDefaultFormat();
        if (row.format)
            formatter->setProperty(L"FORMAT", row.format);
        EXPECT_EQ(String(row.expected), formatter->format(row.record));
    }

    const SharedPointer<Formatter> indent = registry.get(L"ContextIndent");
    indent->setProperty(L"Indent", L"2");
    EXPECT_EQ(String(L"    "), indent->format(recordWith(L"x", Level::Error, L"A::B::C")));
}

namespace {

DWORD WINAPI formatOnThisThread(void* parameter)
{
    auto* job = static_cast<std::pair<Formatter*, String>*>(parameter);
    job->second = job->first->format(recordWith(L"x"));
    return GetCurrentThreadId();
}

}  // namespace

TEST(FormatterTest, ThreadIdIsThatOfTheFormattingThread)
{
    Configuration configuration = readyConfiguration();
    std::pair<Formatter*, String> job(configuration.formatters->get(L"ThreadId").get(), String());
    DWORD id = 0;
    const HANDLE thread = CreateThread(nullptr, 0, formatOnThisThread, &job, 0, &id);
    ASSERT_NE(nullptr, thread);
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
    EXPECT_EQ(toString(uint32_t(id)), job.second);
    EXPECT_EQ(toString(uint32_t(GetCurrentThreadId())), job.first->format(recordWith(L"x")));
}

TEST(FormatterTest, TemplateThatReachesItselfIsRefused)
{
    Configuration configuration = readyConfiguration(L"%(message)S");
    FormatterRegistry& registry = *configuration.formatters;
    const SharedPointer<Formatter> first = registry.get(L"test");
    const SharedPointer<Formatter> second(new LineFormatter);
    registry.add(L"second", second);
    second->setFormatters(configuration.formatters);
    second->setFormat(L"<%(test)S>");

    // Directly, and through "second", which already names "test".
    expectThrown<FormatException>([&] { first->setFormat(L"%(test)S"); });
    expectThrown<FormatException>([&] { first->setFormat(L"%(level)S %(second)S"); });
    // The refused template is gone; nothing loops.
    first->setFormat(L"[%(message)S]");
    EXPECT_EQ(String(L"<[m]>"), second->format(recordWith(L"m")));
    // The built-in line names itself.
    expectThrown<FormatException>([&] { registry.get(L"Line")->setFormat(L"%(line)S"); });
}

namespace {

// MSXML's DOM document (Wine's msxml3); the import library that would define its
// identifiers isn't there.
const CLSID domDocumentClass = {0xf5078f32, 0xc551, 0x11d3, {0x89, 0xb9, 0x00, 0x00, 0xf8, 0x1f, 0xe2, 0x21}};
const IID domDocumentInterface = {0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};

// The element names of the text in document order, as an XML parser reads them;
// empty when the parser refuses the text.
std::vector<std::wstring> parseXml(const std::wstring& text)
{
    std::vector<std::wstring> elements;
    CoInitialize(nullptr);
    IXMLDOMDocument* document = nullptr;
    CoCreateInstance(domDocumentClass, nullptr, CLSCTX_INPROC_SERVER, domDocumentInterface,
                     reinterpret_cast<void**>(&document));
    BSTR source = SysAllocStringLen(text.data(), UINT(text.size()));
    VARIANT_BOOL loaded = VARIANT_FALSE;
    IXMLDOMNodeList* nodes = nullptr;
    if (document && document->loadXML(source, &loaded) == S_OK && loaded == VARIANT_TRUE)
        document->getElementsByTagName(SysAllocString(L"*"), &nodes);
    IXMLDOMNode* node = nullptr;
    while (nodes && nodes->nextNode(&node) == S_OK && node) {
        BSTR name = nullptr;
        node->get_nodeName(&name);
        elements.push_back(name ? name : L"");
        SysFreeString(name);
        node->Release();
    }
    if (nodes)
        nodes->Release();
    SysFreeString(source);
    if (document)
        document->Release();
    CoUninitialize();
    return elements;
}

}  // namespace

TEST(FormatterTest, XmlHeadRecordsAndTailFormADocument)
{
    ScratchFolder scratch(L"LogXml");
    Configuration configuration = readyConfiguration();
    {
        FileWriter writer;
        writer.setProperty(L"dir", scratch.path().c_str());
        writer.setFormatter(configuration.formatters->get(L"Xml"));
        writer.write(recordWith(L"first"));
        writer.write(recordWith(L"second", Level::Debug, L"A::B"));
        writer.close();
    }
    const std::string bytes = scratch.readFile(L"log.txt");
    const String text = fromUtf8(AnsiString(bytes.data(), uint32_t(bytes.size())));
    const std::vector<std::wstring> elements = parseXml(text.c_str());
    const std::vector<std::wstring> expected = {L"log",     L"logrecord",  L"datetime", L"threadname", L"context",
                                                L"message", L"logrecord", L"datetime", L"threadname", L"context",
                                                L"message"};
    EXPECT_EQ(expected, elements);
}
