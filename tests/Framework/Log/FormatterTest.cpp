// The formatters on known records: the template language with its quirks, the item
// formatters, and the XML document as Wine's MSXML reads it from a writer's file.
#include "Framework/Log/FileWriter.h"
#include "Framework/Log/FormatterRegistry.h"
#include "Framework/Log/LineFormatter.h"

#include "support/ExpectThrown.h"
#include "support/LogRecords.h"
#include "support/ScratchFolder.h"
#include "support/TextHelpers.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <msxml2.h>

#include <thread>

using namespace Framework;
using namespace Framework::Log;

namespace {

enum class Refused { No, Format, Lookup };

struct TemplateRow
{
    const wchar_t* text;
    const wchar_t* expected;
    Refused refused;
};

}  // namespace

TEST(FormatterTest, TemplateLanguageKeepsItsQuirksAndRefusesLoops)
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
        // Formatting would never end: itself, or through "outer", which names it.
        {L"%(test)S", nullptr, Refused::Format},
        {L"%(level)S %(outer)S", nullptr, Refused::Format},
    };
    Configuration configuration = readyConfiguration(L"%(level)S");
    const SharedPointer<Formatter> formatter = configuration.formatters->get(L"test");
    const SharedPointer<Formatter> outer(new LineFormatter);
    configuration.formatters->add(L"outer", outer);
    outer->setFormatters(configuration.formatters);
    outer->setFormat(L"<%(test)S>");
    const Record record = recordWith(L"m", Level::Error, L"A::B");
    for (const TemplateRow& row : rows) {
        SCOPED_TRACE(narrowForTest(row.text));
        if (row.refused == Refused::No) {
            formatter->setFormat(row.text);
            EXPECT_EQ(String(row.expected), formatter->format(record));
            continue;
        }
        if (row.refused == Refused::Format)
            expectThrown<FormatException>([&] { formatter->setFormat(row.text); });
        else
            expectThrown<LookupException>([&] { formatter->setFormat(row.text); });
        // Nothing of the refused template stays, so nothing loops.
        EXPECT_EQ(String(L"<>"), outer->format(record));
    }
    LineFormatter unattached;
    expectThrown<ValueNotInitializedException>([&] { unattached.setFormat(L"%(level)S"); });
}

TEST(FormatterTest, ItemFormattersPrintTheirFields)
{
    Configuration configuration = readyConfiguration();
    struct Row
    {
        const wchar_t* formatter;
        const wchar_t* format;  // null keeps the default
        Record record;
        String expected;
    };
    Record bigElapsed = recordWith(L"x");
    bigElapsed.elapsed = 0x100000005ull;
    const Row rows[] = {
        {L"Line", nullptr, recordWith(L"some text"), L"2013-02-20 08:21:24 Thread000 ERROR Framework some text"},
        {L"Level", L"[%S]", recordWith(L"x", Level::Warning), L"[WARNING]"},
        {L"Level", L"[%S]", recordWith(L"x", Level(25)), L"25"},
        {L"Message", nullptr, recordWith(L"a\nb"), L"\r\na\nb"},
        {L"Message", nullptr, recordWith(L"\na"), L"\na"},
        {L"DateTime", L"", recordWith(L"x"), L""},
        {L"DateTime", L"%d.%m.%Y", recordWith(L"x"), L"20.02.2013"},
        {L"ElapsedTime", nullptr, bigElapsed, L"5"},
        {L"ElapsedTime", L"%Lu ms", bigElapsed, L"4294967301 ms"},
        {L"Context", L"<%S>", recordWith(L"x", Level::Error, L"A::B"), L"<A::B>"},
        {L"ContextIndent", nullptr, recordWith(L"x", Level::Error, L"A::B::C"), L""},
        {L"ThreadId", nullptr, recordWith(L"x"), toString(uint32_t(GetCurrentThreadId()))},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(narrowForTest(row.formatter));
        const SharedPointer<Formatter> formatter = configuration.formatters->get(row.formatter);
        formatter->setDefaultFormat();
        if (row.format)
            formatter->setProperty(L"FORMAT", row.format);
        EXPECT_EQ(row.expected, formatter->format(row.record));
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

    // MSXML's DOM document; the import library that would define these is not there.
    const CLSID domDocumentClass = {0xf5078f32, 0xc551, 0x11d3, {0x89, 0xb9, 0x00, 0x00, 0xf8, 0x1f, 0xe2, 0x21}};
    const IID domDocumentInterface = {0x2933bf81, 0x7b36, 0x11d2, {0xb2, 0x0e, 0x00, 0xc0, 0x4f, 0x98, 0x3e, 0x60}};
    CoInitialize(nullptr);
    IXMLDOMDocument* document = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(domDocumentClass, nullptr, CLSCTX_INPROC_SERVER, domDocumentInterface,
                                     reinterpret_cast<void**>(&document)));
    BSTR source = SysAllocStringLen(text.c_str(), text.length());
    VARIANT_BOOL loaded = VARIANT_FALSE;
    EXPECT_EQ(S_OK, document->loadXML(source, &loaded));
    EXPECT_EQ(VARIANT_TRUE, loaded) << narrowForTest(text);
    // Two records under the root "log", each with its four elements, in order.
    for (const wchar_t* tag : {L"log", L"logrecord", L"datetime", L"threadname", L"context", L"message"}) {
        IXMLDOMNodeList* nodes = nullptr;
        long count = 0;
        BSTR name = SysAllocString(tag);
        if (document->getElementsByTagName(name, &nodes) == S_OK) {
            nodes->get_length(&count);
            nodes->Release();
        }
        SysFreeString(name);
        EXPECT_EQ(tag == std::wstring(L"log") ? 1 : 2, count) << narrowForTest(tag);
    }
    BSTR xml = nullptr;
    IXMLDOMElement* root = nullptr;
    if (document->get_documentElement(&root) == S_OK && root)
        root->get_text(&xml);
    EXPECT_EQ(String(L"2013-02-20 08:21:24 Thread000 Framework first 2013-02-20 08:21:24 Thread000 A::B second"),
              String(xml ? xml : L""));
    SysFreeString(xml);
    SysFreeString(source);
    if (root)
        root->Release();
    document->Release();
    CoUninitialize();
}
