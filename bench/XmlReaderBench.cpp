// Reading a 10 MB response document into an XMLNode tree, against the floor (Xerces' own SAX2
// scan with a handler that does nothing), Xerces' DOM parser and pugixml, all on the same text;
// and the memory each tree holds against the size of the document.
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <pugixml.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "RatioReporter.hpp"
#include "SplitMix.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

namespace {

namespace X = XERCES_CPP_NAMESPACE;
using Corvane::Soa::Common::Xml::SAXToNodeParser;

using Random = cvsoa::bench::SplitMix;

// A service response of about 10 MB, indented as servers send it: namespaced model objects
// with attributes, properties holding one or more values, references between objects, escaped
// text and a few partial errors.
const std::string& responseXml() {
    static const std::string text = [] {
        static const char* const kClasses[] = {"ItemRevision", "Dataset", "Folder", "Item", "Form"};
        static const char* const kNames[] = {"Bracket &amp; nut",       "Housing &lt;left&gt;",
                                             "Cover &quot;B&quot;",     "Shaft",
                                             "Seal &apos;O&apos; ring", "Spring plate"};
        Random random(20161205);
        std::string out =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<ns0:GetPropertiesResponse "
            "xmlns:ns0=\"http://corvane.com/Schemas/Core/2006-03/DataManagement\" "
            "xmlns:ns1=\"http://corvane.com/Schemas/Soa/2006-03/Base\" "
            "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
            "  <ns1:ServiceData>\n";
        char item[2048];
        for (int i = 0; out.size() < 10 * 1000 * 1000; ++i) {
            const char* name = kNames[random.below(std::size(kNames))];
            std::snprintf(
                item, sizeof item,
                "    <ns1:modelObjects uid=\"Qx%07dAbCd\" className=\"%s\" type=\"Document\" "
                "xsi:type=\"ns1:ModelObject\">\n"
                "      <ns1:properties name=\"object_name\" uiValue=\"%s %d\">\n"
                "        <ns1:values>%s %d</ns1:values>\n"
                "      </ns1:properties>\n"
                "      <ns1:properties name=\"creation_date\">\n"
                "        <ns1:values>2016-%02zu-%02zuT14:%02zu:09+01:00</ns1:values>\n"
                "      </ns1:properties>\n"
                "      <ns1:properties name=\"sequence\" isNull=\"false\">\n"
                "        <ns1:values>%zu</ns1:values>\n"
                "      </ns1:properties>\n"
                "      <ns1:properties name=\"contents\">\n"
                "        <ns1:values>Qx%07zuAbCd</ns1:values>\n"
                "        <ns1:values>Qx%07zuAbCd</ns1:values>\n"
                "      </ns1:properties>\n"
                "    </ns1:modelObjects>\n",
                i, kClasses[random.below(std::size(kClasses))], name, i, name, i,
                1 + random.below(12), 1 + random.below(28), random.below(60), random.below(1000),
                random.below(1000000), random.below(1000000));
            out += item;
            if (i % 500 == 499) {
                std::snprintf(item, sizeof item,
                              "    <ns1:partialErrors clientId=\"get-%d\">\n"
                              "      <ns1:errorValues code=\"515024\" level=\"3\">The object "
                              "Qx%07dAbCd is checked out by &quot;someone&quot; &amp; cannot "
                              "be read.</ns1:errorValues>\n"
                              "    </ns1:partialErrors>\n",
                              i, i);
                out += item;
            }
        }
        out += "  </ns1:ServiceData>\n</ns0:GetPropertiesResponse>\n";
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

// The floor: Xerces' SAX2 reader as XMLReaderFactory makes it, with an empty handler: the
// integrated scanner (IGXMLScanner) with namespace processing and schema processing on and
// validation off. SAXToNodeParser turns schema processing off: with validation off and no
// schema loaded, all that it did was look up a grammar for the namespace of every start tag
// (GrammarResolver::getGrammar, about a tenth of the scan) and check xsi:schemaLocation values,
// which the parser's handler checks itself. So the same scan with schema processing off is
// printed as well: the reader's margin over exactly the scanning that it asks for. What the
// parser sets besides adds no scanning work: external DTDs, schemas named by xsi:schemaLocation
// and default entity resolution are off (nothing is fetched), and it listens for DTD, lexical and
// declaration events, which a document without a document type does not raise, and for the XML
// declaration (through an advanced document handler that it removes at the root element).
void bareSax2(benchmark::State& state, bool schema) {
    initialiseXerces();
    const std::string& text = responseXml();
    X::DefaultHandler handler;
    for (auto _ : state) {
        std::unique_ptr<X::SAX2XMLReader> reader(X::XMLReaderFactory::createXMLReader());
        reader->setContentHandler(&handler);
        reader->setErrorHandler(&handler);
        reader->setFeature(X::XMLUni::fgXercesSchema, schema);
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

// Heap held with the tree alive, measured around one parse. Each parser reads a small document
// first, so that what it sets up once (Xerces' reader and its buffers) is not counted.
void printTreeMemory(std::ostream& os) {
    const std::string& text = responseXml();
    const auto document = static_cast<double>(text.size());
    std::size_t tree = 0;
    {
        SAXToNodeParser parser;
        parser.parseString("<a/>");
        const std::size_t before = mallinfo2().uordblks;
        benchmark::DoNotOptimize(parser.parseString(text));
        tree = mallinfo2().uordblks - before;
    }
    std::size_t dom = 0;
    {
        X::XercesDOMParser parser;
        parser.setDoNamespaces(true);
        X::MemBufInputSource warm(reinterpret_cast<const XMLByte*>("<a/>"), 4, "warm", false);
        parser.parse(warm);
        parser.resetDocumentPool();
        const std::size_t before = mallinfo2().uordblks;
        X::MemBufInputSource input(reinterpret_cast<const XMLByte*>(text.data()), text.size(),
                                   "bench", false);
        input.setCopyBufToStream(false);
        parser.parse(input);
        dom = mallinfo2().uordblks - before;
    }
    std::size_t pugi = 0;
    {
        const std::size_t before = mallinfo2().uordblks;
        pugi::xml_document document;
        document.load_buffer(text.data(), text.size());
        pugi = mallinfo2().uordblks - before;
    }
    os << std::fixed << std::setprecision(1) << "document: " << document / 1e6
       << " MB; memory held with the tree alive: XMLNode tree " << tree / 1e6
       << " MB, XercesDOMParser " << dom / 1e6 << " MB, pugixml " << pugi / 1e6 << " MB\n"
       << std::setprecision(2) << "tree memory / document size: " << tree / document
       << " (XercesDOMParser " << dom / document << ", pugixml " << pugi / document << ")\n";
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    // The reader's margin over the scan is the narrowest of the ratios, and a shared machine
    // drifts by about as much over the seconds that a run takes: these always run eleven times,
    // whatever repetitions the command line asks for, so that their medians come from samples
    // spread over the whole run.
    constexpr int kRepetitions = 11;
    for (auto* run :
         {benchmark::RegisterBenchmark("read/SAXToNodeParser", readerTree),
          benchmark::RegisterBenchmark("read/bare SAX2 scan", bareSax2, true),
          benchmark::RegisterBenchmark("read/bare SAX2 scan, schema off", bareSax2, false),
          benchmark::RegisterBenchmark("read/XercesDOMParser", xercesDom),
          benchmark::RegisterBenchmark("read/pugixml", pugixmlLoad)}) {
        run->Unit(benchmark::kMillisecond)->Repetitions(kRepetitions);
    }
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::ostream& os = std::cout;
    initialiseXerces();
    reporter.printTimeRatio(os, "reader/bare SAX2 scan", "read/SAXToNodeParser",
                            "read/bare SAX2 scan", "target <= 1.3");
    reporter.printTimeRatio(os, "reader/bare SAX2 scan, schema off", "read/SAXToNodeParser",
                            "read/bare SAX2 scan, schema off", "the reader's own settings");
    reporter.printTimeRatio(os, "reader/XercesDOMParser", "read/SAXToNodeParser",
                            "read/XercesDOMParser", "target < 1");
    reporter.printTime(os, "read/pugixml", "for reference");
    reporter.printTimeRatio(os, "reader/pugixml", "read/SAXToNodeParser", "read/pugixml",
                            "for reference");
    printTreeMemory(os);
    benchmark::Shutdown();
    return 0;
}
