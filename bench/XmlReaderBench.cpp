// Reading a 10 MB response document into an XMLNode tree, against the floor (Xerces' own SAX2
// scan with a handler that does nothing), Xerces' DOM parser and pugixml; the memory the tree
// holds; and Shift_JIS to UTF-8 and back through Utf8String against ICU's ucnv_convert.
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/Utf8String.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unicode/ucnv.h>
#include <pugixml.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "RatioReporter.hpp"

#include <cstdio>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

namespace {

namespace X = XERCES_CPP_NAMESPACE;
using Corvane::Soa::Common::Xml::SAXToNodeParser;
using Corvane::Soa::Common::Xml::Utf8String;

// A service response of about 10 MB: namespaced model objects with attributes and escaped text.
const std::string& responseXml() {
    static const std::string text = [] {
        std::string out =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<ns0:GetPropertiesResponse "
            "xmlns:ns0=\"http://corvane.com/Schemas/Core/2006-03/DataManagement\" "
            "xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\">\n<ns1:ServiceData>";
        char item[768];
        for (int i = 0; out.size() < 10 * 1000 * 1000; ++i) {
            std::snprintf(item, sizeof item,
                          "\n<ns1:modelObjects uid=\"Qx%07dAbCd\" className=\"ItemRevision\" "
                          "type=\"Document\"><ns1:properties name=\"object_name\" "
                          "uiValue=\"Bracket &quot;%d&quot;\"><ns1:values>Bracket &amp; "
                          "nut %d &lt;left&gt;</ns1:values></ns1:properties><ns1:properties "
                          "name=\"creation_date\"><ns1:values>2016-%02d-%02dT14:03:09+01:00"
                          "</ns1:values></ns1:properties><ns1:properties name=\"sequence\">"
                          "<ns1:values>%d</ns1:values></ns1:properties></ns1:modelObjects>",
                          i, i, i, 1 + i % 12, 1 + i % 28, i % 1000);
            out += item;
        }
        out += "\n</ns1:ServiceData>\n</ns0:GetPropertiesResponse>\n";
        return out;
    }();
    return text;
}

void initialiseXerces() {
    static const bool done = [] {
        X::XMLPlatformUtils::Initialize();
        return true;
    }();
    (void)done;
}

void readerTree(benchmark::State& state) {
    const std::string& text = responseXml();
    for (auto _ : state) {
        SAXToNodeParser parser;
        benchmark::DoNotOptimize(parser.parseString(text));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void bareSax2(benchmark::State& state) {
    initialiseXerces();
    const std::string& text = responseXml();
    X::DefaultHandler handler;
    for (auto _ : state) {
        std::unique_ptr<X::SAX2XMLReader> reader(X::XMLReaderFactory::createXMLReader());
        reader->setContentHandler(&handler);
        reader->setErrorHandler(&handler);
        X::MemBufInputSource input(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                   "bench", false);
        input.setCopyBufToStream(false);
        reader->parse(input);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void xercesDom(benchmark::State& state) {
    initialiseXerces();
    const std::string& text = responseXml();
    for (auto _ : state) {
        X::XercesDOMParser parser;
        parser.setDoNamespaces(true);
        X::MemBufInputSource input(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                   "bench", false);
        input.setCopyBufToStream(false);
        parser.parse(input);
        benchmark::DoNotOptimize(parser.getDocument());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void pugixmlLoad(benchmark::State& state) {
    const std::string& text = responseXml();
    for (auto _ : state) {
        pugi::xml_document document;
        benchmark::DoNotOptimize(document.load_buffer(text.data(), text.size()));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// About 10 MB of Shift_JIS text: Japanese and ASCII mixed, as local text would be.
const std::string& shiftJisText() {
    static const std::string text = [] {
        const std::string unit =
            "\xe6\x97\xa5\xe6\x9c\xac\xe8\xaa\x9e\xe3\x81\xae\xe3\x83\x86"
            "\xe3\x82\xad\xe3\x82\xb9\xe3\x83\x88 item-42 \xe9\x83\xa8\xe5"
            "\x93\x81\xe3\x80\x82\n";
        std::string utf8;
        while (utf8.size() < 13 * 1000 * 1000) {
            utf8 += unit;
        }
        std::string out(utf8.size(), '\0');
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            ucnv_convert("Shift_JIS", "UTF-8", out.data(), static_cast<int32_t>(out.size()),
                         utf8.data(), static_cast<int32_t>(utf8.size()), &status);
        out.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
        return out;
    }();
    return text;
}

void codePageUtf8String(benchmark::State& state) {
    const std::string& local = shiftJisText();
    Utf8String converter("Shift_JIS");
    for (auto _ : state) {
        std::string utf8;
        converter.encode(local, utf8);
        std::string back;
        converter.decode(utf8, back);
        benchmark::DoNotOptimize(back.size());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * local.size()));
}

void codePageIcu(benchmark::State& state) {
    const std::string& local = shiftJisText();
    std::string utf8(local.size() * 2, '\0');
    std::string back(local.size() + 16, '\0');
    for (auto _ : state) {
        UErrorCode status = U_ZERO_ERROR;
        const int32_t length =
            ucnv_convert("UTF-8", "Shift_JIS", utf8.data(), static_cast<int32_t>(utf8.size()),
                         local.data(), static_cast<int32_t>(local.size()), &status);
        benchmark::DoNotOptimize(ucnv_convert("Shift_JIS", "UTF-8", back.data(),
                                              static_cast<int32_t>(back.size()), utf8.data(),
                                              length, &status));
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * local.size()));
}

void printTreeMemory(std::ostream& os) {
    const std::string& text = responseXml();
    SAXToNodeParser parser;
    const std::size_t before = mallinfo2().uordblks;
    parser.parseString(text);
    const std::size_t held = mallinfo2().uordblks - before;
    os << std::fixed << std::setprecision(1) << "tree memory: " << held / 1e6 << " MB for "
       << text.size() / 1e6 << " MB of text, " << std::setprecision(2)
       << static_cast<double>(held) / static_cast<double>(text.size()) << "x the document\n";
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RegisterBenchmark("read/SAXToNodeParser", readerTree)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read/bare SAX2 scan", bareSax2)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read/XercesDOMParser", xercesDom)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read/pugixml", pugixmlLoad)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("codepage/Utf8String", codePageUtf8String)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("codepage/ucnv_convert", codePageIcu)
        ->Unit(benchmark::kMillisecond);
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::ostream& os = std::cout;
    // Time ratios: how many times the floor's time the reader takes (lower is better).
    reporter.printRatio(os, "bare SAX2 scan/reader (reader costs 1/x of the floor)",
                        "read/bare SAX2 scan", "read/SAXToNodeParser",
                        "target >= 0.77, i.e. at most 1.3 times the scan");
    reporter.printRatio(os, "reader/XercesDOMParser speed", "read/XercesDOMParser",
                        "read/SAXToNodeParser", "target > 1");
    reporter.printRatio(os, "reader/pugixml speed", "read/pugixml", "read/SAXToNodeParser",
                        "for reference");
    reporter.printRatio(os, "ucnv_convert/Utf8String (Utf8String costs 1/x)",
                        "codepage/ucnv_convert", "codepage/Utf8String",
                        "target >= 0.67, i.e. at most 1.5 times");
    printTreeMemory(os);
    benchmark::Shutdown();
    return 0;
}
