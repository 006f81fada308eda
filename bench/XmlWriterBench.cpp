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
constexpr const char* kXmlStreamTickets = "XmlStream/tickets";
constexpr const char* kPugixmlTickets = "pugixml/tickets";

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

// The second document, shaped as a 10 MB FileTicketsResponse: per ticket a short element with a
// long escaped attribute value (the ticket URL, full of '&') holding an empty key element with
// many attributes, some of them escaped too.
struct Ticket {
    std::vector<std::pair<std::string, std::string>> keyAttributes;
    std::string url;
};

const std::vector<Ticket>& tickets() {
    static const std::vector<Ticket> all = [] {
        static const char* const classes[] = {"ImanFile", "Dataset", "ItemRevision"};
        static const char* const owners[] = {"Smith, J. <eng>", "O'Brien & Sons", "M\xc3\xbcller"};
        Random random(18);
        std::vector<Ticket> list;
        std::size_t bytes = 0;
        while (bytes < 10 * 1000 * 1000) {
            Ticket t;
            const std::uint64_t n = random.next();
            const std::string uid = "gQ" + std::to_string(n % 100000000000ULL) + "AAAAAAAA";
            t.url = "https://fms.example.com:4544/fms/fmsdownload/?ticket=" + std::to_string(n) +
                    "&policy=read&volume=vol_" + std::to_string(random.below(64)) + "&file=" + uid +
                    ".pdf&expires=" + std::to_string(n % 86400) +
                    "&signature=" + std::to_string(n ^ 0x5DEECE66DULL) + "&mode=\"inline\"";
            t.keyAttributes = {
                {"uid", uid},
                {"className", classes[random.below(std::size(classes))]},
                {"type", "PDF"},
                {"objectName", "Report <" + std::to_string(random.below(100000)) + "> & notes"},
                {"owningUser", owners[random.below(std::size(owners))]},
                {"lastModified",
                 "2016-0" + std::to_string(1 + random.below(9)) + "-12T14:03:09+01:00"},
                {"size", std::to_string(random.below(1U << 30U))},
                {"volume", "vol_" + std::to_string(random.below(64))}};
            bytes += 60 + Xml::toXmlString(t.url).size();
            for (const auto& [name, value] : t.keyAttributes) {
                bytes += name.size() + Xml::toXmlString(value).size() + 4;
            }
            list.push_back(std::move(t));
        }
        return list;
    }();
    return all;
}

constexpr const char* kFilesNamespace = "http://corvane.com/Schemas/Core/2006-03/FileManagement";
constexpr const char* kBaseNamespace = "http://corvane.com/Schemas/Soa/2006-03/Base";

// As the generated types write: the attributes one by one, values escaped by the caller.
void writeTickets(Xml::XmlStream& xml) {
    const std::string files = kFilesNamespace;
    const std::string base = kBaseNamespace;
    const std::string root = "FileTicketsResponse";
    const std::string entry = "ns0:tickets";
    const std::string key = "ns0:key";
    const std::string value = "value";
    xml.addNamespace(files);
    xml.addNamespace(base);
    xml.writeOpenElement(files, root);
    xml.writeOpenElementClose(root, false);
    for (const Ticket& t : tickets()) {
        xml.writeOpenElement(files, entry);
        xml.writeAttribute(value, Xml::toXmlString(t.url));
        xml.writeOpenElementClose(entry, false);
        xml.writeOpenElement(files, key);
        for (const auto& [name, text] : t.keyAttributes) {
            xml.writeAttribute(name, Xml::toXmlString(text));
        }
        xml.writeOpenElementClose(key, true);
        xml.writeCloseElement(files, entry);
    }
    xml.writeCloseElement(files, root);
}

void benchXmlStreamTickets(benchmark::State& state) {
    std::size_t outputBytes = 0;
    for (auto _ : state) {
        std::ostringstream out;
        Xml::XmlStream xml(&out);
        writeTickets(xml);
        outputBytes = static_cast<std::size_t>(out.tellp());
        benchmark::DoNotOptimize(outputBytes);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(outputBytes));
    state.counters["output_bytes"] = static_cast<double>(outputBytes);
}

void buildTickets(pugi::xml_document& tree) {
    pugi::xml_node root = tree.append_child("ns0:FileTicketsResponse");
    root.append_attribute("xmlns:ns0").set_value(kFilesNamespace);
    root.append_attribute("xmlns:ns1").set_value(kBaseNamespace);
    for (const Ticket& t : tickets()) {
        pugi::xml_node node = root.append_child("ns0:tickets");
        node.append_attribute("value").set_value(t.url.c_str());
        pugi::xml_node key = node.append_child("ns0:key");
        for (const auto& [name, text] : t.keyAttributes) {
            key.append_attribute(name.c_str()).set_value(text.c_str());
        }
    }
}

void benchPugixmlTickets(benchmark::State& state) {
    std::size_t outputBytes = 0;
    for (auto _ : state) {
        pugi::xml_document tree;
        buildTickets(tree);
        std::ostringstream out;
        tree.save(out, "", pugi::format_raw);
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
    reporter.printRatio(os, "XmlStream/pugixml (tickets)", kPugixmlTickets, kXmlStreamTickets,
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
    benchmark::RegisterBenchmark(kXmlStreamTickets, benchXmlStreamTickets)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(kPugixmlTickets, benchPugixmlTickets)
        ->Unit(benchmark::kMillisecond);

    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printSummary(reporter, std::cout);
    benchmark::Shutdown();
    return 0;
}
