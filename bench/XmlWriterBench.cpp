// Escaping and XML writing throughput, each measured beside a baseline run on the same input in
// the same program: the text escapers against a character-at-a-time escaper, the XmlStream
// writer against pugixml building and saving the same document. The ratios are printed after
// the benchmark table.

#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/common/xml/XmlText.hpp>

#include <benchmark/benchmark.h>

#include <pugixml.hpp>
#include "RatioReporter.hpp"
#include "ReferenceEscapers.hpp"
#include "SplitMix.hpp"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <unistd.h>

namespace {

namespace Xml = Corvane::Soa::Common::Xml;

constexpr std::size_t kTextBytes = std::size_t{1} << 20;
constexpr std::size_t kDocumentElements = 200000;
// Share of words followed by a fragment to escape: about 5% of the bytes either way.
constexpr std::size_t kXmlFragmentPercent = 31;
constexpr std::size_t kJsonFragmentPercent = 29;

// Benchmark names, also the keys of the summary.
constexpr const char* kToXml = "toXmlString/1MiB";
constexpr const char* kNaiveXml = "naiveXmlEscape/1MiB";
constexpr const char* kToJson = "toJsonString/1MiB";
constexpr const char* kNaiveJson = "naiveJsonEscape/1MiB";
constexpr const char* kXmlStream = "XmlStream/200k_elements";
constexpr const char* kPugixml = "pugixml/200k_elements";

using Random = cvsoa::bench::SplitMix;

const std::vector<std::string>& words() {
    static const std::vector<std::string> list = {
        "the",        "request",  "service",  "document", "value",     "session",  "client",
        "response",   "error",    "property", "policy",   "object",    "type",     "name",
        "server",     "returns",  "with",     "and",      "for",       "an",       "of",
        "revision",   "dataset",  "release",  "status",   "item",      "assembly", "owner",
        "group",      "modified", "date",     "is",       "not",       "valid",    "in",
        "attachment", "folder",   "query",    "results",  "a",         "to",       "engineering",
        "change",     "approved", "by",       "workflow", "performed", "on",       "this"};
    return list;
}

// Fragments that carry the characters to escape, placed between words.
const std::vector<std::string>& xmlFragments() {
    static const std::vector<std::string> list = {" & ", "'s ", " <", "> ", " \"",
                                                  "\" ", "% ",  "\n", "\t", "\r\n"};
    return list;
}

const std::vector<std::string>& jsonFragments() {
    static const std::vector<std::string> list = {" \"", "\" ", "/", " \\ ", "\n", "\t", "\r\n"};
    return list;
}

// Words separated by spaces and punctuation, with a fragment after `fragmentPercent` percent of
// the words (about 30 gives 5% of bytes to escape). The same seed always gives the same text.
std::string makeText(std::size_t bytes, const std::vector<std::string>& fragments,
                     std::size_t fragmentPercent, std::uint64_t seed) {
    Random random(seed);
    const std::vector<std::string>& list = words();
    std::string text;
    text.reserve(bytes + 64);
    while (text.size() < bytes) {
        text += list[random.below(list.size())];
        const std::size_t roll = random.below(100);
        if (roll < fragmentPercent) {
            text += fragments[random.below(fragments.size())];
        } else if (roll < fragmentPercent + 8) {
            text += ", ";
        } else if (roll < fragmentPercent + 14) {
            text += ". ";
        } else {
            text += ' ';
        }
    }
    text.resize(bytes);
    return text;
}

const std::string& xmlText() {
    static const std::string text =
        makeText(kTextBytes, xmlFragments(), kXmlFragmentPercent, 20240611);
    return text;
}

const std::string& jsonText() {
    static const std::string text =
        makeText(kTextBytes, jsonFragments(), kJsonFragmentPercent, 20240612);
    return text;
}

bool needsXmlEscape(char c) {
    switch (c) {
        case '\t':
        case '\n':
        case '\f':
        case '\r':
        case '"':
        case '%':
        case '&':
        case '\'':
        case '<':
        case '>':
            return true;
        default:
            return false;
    }
}

bool needsJsonEscape(char c) {
    switch (c) {
        case '"':
        case '\\':
        case '/':
        case '\b':
        case '\f':
        case '\n':
        case '\r':
        case '\t':
            return true;
        default:
            return false;
    }
}

double escapedShare(const std::string& text, bool (*needsEscape)(char)) {
    std::size_t count = 0;
    for (char c : text) {
        count += needsEscape(c) ? 1 : 0;
    }
    return text.empty() ? 0.0 : static_cast<double>(count) / static_cast<double>(text.size());
}

template <std::string (*Escape)(const std::string&)>
void runEscape(benchmark::State& state, const std::string& input, bool (*needsEscape)(char)) {
    std::size_t outputBytes = 0;
    for (auto _ : state) {
        std::string out = Escape(input);
        outputBytes = out.size();
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(input.size()));
    state.counters["growth"] = static_cast<double>(outputBytes) / static_cast<double>(input.size());
    std::ostringstream label;
    label << std::fixed << std::setprecision(1) << 100.0 * escapedShare(input, needsEscape)
          << "% escaped";
    state.SetLabel(label.str());
}

void benchToXmlString(benchmark::State& state) {
    runEscape<Xml::toXmlString>(state, xmlText(), needsXmlEscape);
}
void benchNaiveXml(benchmark::State& state) {
    runEscape<cvsoa::reference::xmlEscape>(state, xmlText(), needsXmlEscape);
}
void benchToJsonString(benchmark::State& state) {
    runEscape<Xml::toJsonString>(state, jsonText(), needsJsonEscape);
}
void benchNaiveJson(benchmark::State& state) {
    runEscape<cvsoa::reference::jsonEscape>(state, jsonText(), needsJsonEscape);
}

// The document: a root holding 200,000 elements, each with an id and a kind attribute and a
// short text; some kinds and most texts need escaping.
struct Document {
    std::vector<std::string> ids;
    std::vector<std::string> kinds;
    std::vector<std::string> texts;
};

const Document& document() {
    static const Document doc = [] {
        static const char* const kinds[] = {"part",     "assembly",  "drawing",
                                            "R&D note", "\"draft\"", "<none>"};
        Random random(7);
        Document d;
        d.ids.reserve(kDocumentElements);
        d.kinds.reserve(kDocumentElements);
        d.texts.reserve(kDocumentElements);
        for (std::size_t i = 0; i < kDocumentElements; ++i) {
            d.ids.push_back("item-" + std::to_string(i));
            d.kinds.emplace_back(kinds[random.below(std::size(kinds))]);
            d.texts.push_back(
                makeText(24 + random.below(40), xmlFragments(), kXmlFragmentPercent, i));
        }
        return d;
    }();
    return doc;
}

constexpr const char* kNamespace = "http://corvane.com/Schemas/Bench/2024-06/Catalogue";

void benchXmlStream(benchmark::State& state) {
    const Document& doc = document();
    const std::string ns = kNamespace;
    const std::string root = "catalogue";
    const std::string item = "item";
    std::size_t outputBytes = 0;
    for (auto _ : state) {
        std::ostringstream out;
        Xml::XmlStream xml(&out);
        xml.addNamespace(ns);
        xml.writeOpenElement(ns, root, {});
        for (std::size_t i = 0; i < kDocumentElements; ++i) {
            xml.writeOpenElement(
                ns, item,
                {{"id", Xml::toXmlString(doc.ids[i])}, {"kind", Xml::toXmlString(doc.kinds[i])}});
            xml << Xml::toXmlString(doc.texts[i]);
            xml.writeCloseElement(ns, item);
        }
        xml.writeCloseElement(ns, root);
        outputBytes = static_cast<std::size_t>(out.tellp());
        benchmark::DoNotOptimize(outputBytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(outputBytes));
    state.counters["output_bytes"] = static_cast<double>(outputBytes);
}

void benchPugixml(benchmark::State& state) {
    const Document& doc = document();
    std::size_t outputBytes = 0;
    for (auto _ : state) {
        pugi::xml_document tree;
        pugi::xml_node root = tree.append_child("ns0:catalogue");
        root.append_attribute("xmlns:ns0").set_value(kNamespace);
        for (std::size_t i = 0; i < kDocumentElements; ++i) {
            pugi::xml_node node = root.append_child("ns0:item");
            node.append_attribute("id").set_value(doc.ids[i].c_str());
            node.append_attribute("kind").set_value(doc.kinds[i].c_str());
            node.append_child(pugi::node_pcdata).set_value(doc.texts[i].c_str());
        }
        std::ostringstream out;
        tree.save(out);
        outputBytes = static_cast<std::size_t>(out.tellp());
        benchmark::DoNotOptimize(outputBytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(outputBytes));
    state.counters["output_bytes"] = static_cast<double>(outputBytes);
}

void printSummary(const cvsoa::bench::RatioReporter& reporter, std::ostream& os) {
    reporter.printThroughput(os, kToXml, xmlText().size(), "target >= 1 GB/s");
    reporter.printThroughput(os, kToJson, jsonText().size(), "target >= 1 GB/s");
    reporter.printRatio(os, "toXmlString/naive", kNaiveXml, kToXml, "target >= 4x");
    reporter.printRatio(os, "toJsonString/naive", kNaiveJson, kToJson, "target >= 4x");
    reporter.printRatio(os, "XmlStream/pugixml", kPugixml, kXmlStream,
                        "higher is better, target >= 1x");
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RegisterBenchmark(kToXml, benchToXmlString);
    benchmark::RegisterBenchmark(kNaiveXml, benchNaiveXml);
    benchmark::RegisterBenchmark(kToJson, benchToJsonString);
    benchmark::RegisterBenchmark(kNaiveJson, benchNaiveJson);
    benchmark::RegisterBenchmark(kXmlStream, benchXmlStream)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(kPugixml, benchPugixml)->Unit(benchmark::kMillisecond);

    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printSummary(reporter, std::cout);
    benchmark::Shutdown();
    return 0;
}
