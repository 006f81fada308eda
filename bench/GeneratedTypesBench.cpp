// Binding a 10 MB FileTicketsResponse to its generated type and writing it back, in XML and in
// JSON, side by side with the binding peers built from the same schema files: CodeSynthesis XSD
// and gSOAP for XML, nlohmann/json and Boost.JSON on equivalent plain structs for JSON. Two
// documents: one of 100,000 tickets, and one of a few tickets whose service data holds model
// objects with properties (the benchmarks named Objects/...). The generated types read in two
// ways: straight from the text ("generated", the library's reader) and through the element tree
// or JSON tree ("tree", what it is equivalent to). Every peer's bound objects are checked to hold
// the same tickets and objects before anything is timed. Also printed: the heap that each bound
// document holds against the document's size, and the heap blocks that binding costs per bound
// element.
#include "BindingPeer.hpp"
#include "RatioReporter.hpp"
#include "ServiceDataDocument.hpp"
#include "SplitMix.hpp"

#include <corvane/soa/common/xml/DocumentReader.hpp>
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/schemas/Core/_2006_03/Filemanagement.hpp>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <iomanip>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// The replaced global allocation functions below pair operator new with free by design; GCC
// cannot see that once they are inlined.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

namespace {

std::atomic<std::size_t> gAllocations{0};

}  // namespace

void* operator new(std::size_t size) {
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void* block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }

namespace {

namespace Xml = Corvane::Soa::Common::Xml;
namespace Json = Corvane::Soa::Internal::Json;
namespace Files = Corvane::Schemas::Core::_2006_03::Filemanagement;
using Corvane::Soa::Common::AutoPtr;
using cvsoa::bench::BindingPeer;
using cvsoa::bench::BindingSummary;

constexpr std::size_t kTickets = 100000;
// A bound ticket is two elements: the TicketMap and its ModelObject key.
constexpr std::size_t kElements = 2 * kTickets + 2;

AutoPtr<Files::FileTicketsResponse> makeResponse() {
    AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
    cvsoa::bench::SplitMix random(0x7ac4e75ULL);
    for (std::size_t i = 0; i < kTickets; ++i) {
        AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
        entry->getKey()->setUid(cvsoa::bench::uidOf(random.next()));
        entry->setValue("https://fms.example.com/ticket/" + std::to_string(i * 7919) + "?e=1");
        response->addTickets(entry);
    }
    return response;
}

BindingSummary summaryOf(const Files::FileTicketsResponse& response, bool withValues) {
    BindingSummary result;
    for (const auto& ticket : response.getTickets()) {
        result.add(ticket->getKey()->getUid(), withValues ? &ticket->getValue() : nullptr);
    }
    cvsoa::bench::addServiceData(*response.getServiceData(), result);
    return result;
}

std::string xmlOf(const Files::FileTicketsResponse& response) {
    std::ostringstream out;
    Xml::XmlStream stream(&out);
    response.outputXML(stream);
    return out.str();
}

std::string jsonOf(const Files::FileTicketsResponse& response) {
    std::ostringstream out;
    Xml::JsonStream stream(&out);
    response.writeJSON(&stream);
    return out.str();
}

const std::string& xmlText() {
    static const std::string text = xmlOf(*makeResponse());
    return text;
}

const std::string& jsonText() {
    static const std::string text = jsonOf(*makeResponse());
    return text;
}

const std::string& objectsXmlText() {
    static const std::string text = xmlOf(*cvsoa::bench::makeServiceDataResponse());
    return text;
}

const std::string& objectsJsonText() {
    static const std::string text = jsonOf(*cvsoa::bench::makeServiceDataResponse());
    return text;
}

// The direct reader alone: a document it would hand to the tree path fails the check.
void readDirectly(const std::string& text, Files::FileTicketsResponse& response) {
    Xml::DocumentReader::read(text, response, Xml::DocumentReader::Path::DirectOnly);
}

class GeneratedXml : public BindingPeer {
public:
    explicit GeneratedXml(bool direct) : m_direct(direct) {}
    void read(const std::string& text) override {
        AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
        if (m_direct) {
            readDirectly(text, *response);
        } else {
            Xml::SAXToNodeParser parser;
            response->parse(*parser.parseString(text));
        }
        m_response = response;
    }
    std::string write() const override { return xmlOf(*m_response); }
    BindingSummary summary(bool withValues) const override {
        return summaryOf(*m_response, withValues);
    }

private:
    bool m_direct;
    AutoPtr<Files::FileTicketsResponse> m_response;
};

class GeneratedJson : public BindingPeer {
public:
    explicit GeneratedJson(bool direct) : m_direct(direct) {}
    void read(const std::string& text) override {
        AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
        if (m_direct) {
            readDirectly(text, *response);
        } else {
            response->parseJSON(Json::Parser().parse(text).dynamicCast<Json::JSONObject>());
        }
        m_response = response;
    }
    std::string write() const override { return jsonOf(*m_response); }
    BindingSummary summary(bool withValues) const override {
        return summaryOf(*m_response, withValues);
    }

private:
    bool m_direct;
    AutoPtr<Files::FileTicketsResponse> m_response;
};

using PeerFactory = std::function<std::unique_ptr<BindingPeer>()>;

// One binder of one format: its name in the benchmark table, the document it reads, and whether
// its reader keeps the tickets' values (JSON holds tickets as a map from key to value, and the
// generated types keep the keys only).
struct Binder {
    std::string format;  // "Xml" or "Json"
    std::string name;
    PeerFactory make;
    const std::string* document;
    bool keepsValues;
    // Before the benchmark names: empty for the tickets document, "Objects/" for the other.
    std::string prefix{};
    std::size_t elements = kElements;
};

// The same binders on the document whose service data holds model objects.
std::vector<Binder> objectBinders(const std::vector<Binder>& tickets, std::size_t elements) {
    std::vector<Binder> result = tickets;
    for (Binder& binder : result) {
        binder.document = binder.format == "Xml" ? &objectsXmlText() : &objectsJsonText();
        binder.prefix = "Objects/";
        binder.elements = elements;
    }
    return result;
}

std::size_t heapInUse() {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

std::vector<Binder> binders() {
    std::vector<Binder> result;
    result.push_back({"Xml", "generated", [] { return std::make_unique<GeneratedXml>(true); },
                      &xmlText(), true});
    result.push_back(
        {"Xml", "tree", [] { return std::make_unique<GeneratedXml>(false); }, &xmlText(), true});
#ifdef CVSOA_BENCH_XSD
    result.push_back({"Xml", "CodeSynthesis", cvsoa::bench::makeXsdPeer, &xmlText(), true});
#else
    std::cout << "CodeSynthesis XSD left out: xsdcxx was not found at configure time "
                 "(scripts/install-deps bench installs it)\n";
#endif
#ifdef CVSOA_BENCH_GSOAP
    result.push_back({"Xml", "gSOAP", cvsoa::bench::makeGsoapPeer, &xmlText(), true});
#else
    std::cout << "gSOAP left out: wsdl2h, soapcpp2 or gsoap++ was not found at configure time "
                 "(scripts/install-deps bench installs them)\n";
#endif
    result.push_back({"Json", "generated", [] { return std::make_unique<GeneratedJson>(true); },
                      &jsonText(), false});
    result.push_back({"Json", "tree", [] { return std::make_unique<GeneratedJson>(false); },
                      &jsonText(), false});
    result.push_back({"Json", "nlohmann", cvsoa::bench::makeNlohmannPeer, &jsonText(), false});
#ifdef CVSOA_BENCH_BOOST_JSON
    result.push_back({"Json", "Boost.JSON", cvsoa::bench::makeBoostJsonPeer, &jsonText(), false});
#else
    std::cout << "Boost.JSON left out: it was not found at configure time\n";
#endif
    return result;
}

// Reads the binder's document, checks the bound tickets, writes them, reads that back and checks
// again. Prints the heap held by the bound document and the blocks allocated per element while
// reading, the reader's own passing blocks included. (gSOAP takes most of its blocks with malloc,
// which the count does not see.)
bool check(const Binder& binder, const BindingSummary& expected, std::ostream& os) {
    const std::string label = binder.prefix + binder.format + " " + binder.name;
    try {
        const std::size_t heapBefore = heapInUse();
        const std::size_t blocksBefore = gAllocations.load();
        std::unique_ptr<BindingPeer> peer = binder.make();
        peer->read(*binder.document);
        const std::size_t blocks = gAllocations.load() - blocksBefore;
        const auto held = static_cast<double>(heapInUse() - heapBefore);
        const BindingSummary read = peer->summary(binder.keepsValues);
        std::unique_ptr<BindingPeer> again = binder.make();
        again->read(peer->write());
        if (!(read == expected) || !(again->summary(binder.keepsValues) == expected)) {
            os << label << ": the bound tickets or objects differ (" << read.tickets << " and "
               << read.objects << " read, " << expected.tickets << " and " << expected.objects
               << " written)\n";
            return false;
        }
        os << std::fixed << std::setprecision(2) << "memory " << label << ": " << held / 1e6
           << " MB held by the bound document, "
           << held / static_cast<double>(binder.document->size()) << "x the document ("
           << static_cast<double>(binder.document->size()) / 1e6 << " MB); "
           << static_cast<double>(blocks) / static_cast<double>(binder.elements)
           << " operator new blocks allocated while reading, per bound element\n";
        return true;
    } catch (const std::exception& error) {
        os << label << ": " << error.what() << "\n";
        return false;
    }
}

void registerBinder(const Binder& binder) {
    // The writers are all charged the generated types' document size, since they write the same
    // tickets; their texts differ only in namespace declarations and white space.
    const std::size_t bytes = binder.document->size();
    benchmark::RegisterBenchmark(
        (binder.prefix + binder.format + "ReadAndBind/" + binder.name).c_str(),
        [binder, bytes](benchmark::State& state) {
            std::unique_ptr<BindingPeer> peer = binder.make();
            for (auto _ : state) {
                peer->read(*binder.document);
            }
            state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
        })
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(
        (binder.prefix + binder.format + "Write/" + binder.name).c_str(),
        [binder, bytes](benchmark::State& state) {
            std::unique_ptr<BindingPeer> peer = binder.make();
            peer->read(*binder.document);
            for (auto _ : state) {
                benchmark::DoNotOptimize(peer->write());
            }
            state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
        })
        ->Unit(benchmark::kMillisecond);
}

void Construct(benchmark::State& state) {
    for (auto _ : state) {
        const std::size_t before = gAllocations.load();
        AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
        state.counters["blocks"] = static_cast<double>(gAllocations.load() - before);
        benchmark::DoNotOptimize(entry.get());
    }
}

void printSpeeds(const cvsoa::bench::RatioReporter& reporter, const std::vector<Binder>& all,
                 std::ostream& os) {
    for (const Binder& binder : all) {
        for (const char* step : {"ReadAndBind/", "Write/"}) {
            const std::string name = binder.prefix + binder.format + step + binder.name;
            const double seconds = reporter.seconds(name);
            if (seconds > 0.0) {
                os << "speed " << name << ": " << std::fixed << std::setprecision(1)
                   << static_cast<double>(binder.document->size()) / seconds / 1e6 << " MB/s\n";
            }
        }
    }
}

// The ratios of medians of both documents side by side: how many times faster the generated types
// ran than each peer, a dash where a peer did not run.
void printRatios(const cvsoa::bench::RatioReporter& reporter, std::ostream& os) {
    struct Row {
        const char* label;
        const char* step;
        const char* peer;
        const char* target;
    };
    static const Row rows[] = {
        {"XML read+bind, generated/CodeSynthesis", "XmlReadAndBind/", "CodeSynthesis", ">= 2"},
        {"XML read+bind, generated/gSOAP", "XmlReadAndBind/", "gSOAP", ">= 0.6"},
        {"XML write, generated/CodeSynthesis", "XmlWrite/", "CodeSynthesis", "none"},
        {"XML write, generated/gSOAP", "XmlWrite/", "gSOAP", ">= 1"},
        {"JSON read+bind, generated/nlohmann", "JsonReadAndBind/", "nlohmann", ">= 2"},
        {"JSON write, generated/nlohmann", "JsonWrite/", "nlohmann", ">= 1.5"},
        {"JSON read+bind, generated/Boost.JSON", "JsonReadAndBind/", "Boost.JSON", "none"},
        {"JSON write, generated/Boost.JSON", "JsonWrite/", "Boost.JSON", "none"},
        {"XML read+bind, generated/its tree path", "XmlReadAndBind/", "tree", "> 1"},
        {"JSON read+bind, generated/its tree path", "JsonReadAndBind/", "tree", "> 1"},
    };
    // The tree path against the same peers, for comparison with the direct reader's rows.
    static const Row treeRows[] = {
        {"XML read+bind, tree/CodeSynthesis", "XmlReadAndBind/", "CodeSynthesis", ""},
        {"XML read+bind, tree/gSOAP", "XmlReadAndBind/", "gSOAP", ""},
        {"JSON read+bind, tree/nlohmann", "JsonReadAndBind/", "nlohmann", ""},
        {"JSON read+bind, tree/Boost.JSON", "JsonReadAndBind/", "Boost.JSON", ""},
    };
    os << std::left << std::setw(46) << "ratio" << std::right << std::setw(9) << "tickets"
       << std::setw(9) << "objects"
       << "  target\n";
    auto print = [&](const Row& row, const char* subject) {
        os << "ratio " << std::left << std::setw(40) << row.label << std::right;
        for (const char* prefix : {"", "Objects/"}) {
            const std::string step = std::string(prefix) + row.step;
            const double ratio = reporter.ratio(step + row.peer, step + subject);
            std::ostringstream cell;
            if (ratio > 0.0) {
                cell << std::fixed << std::setprecision(2) << ratio << "x";
            } else {
                cell << "-";
            }
            os << std::setw(9) << cell.str();
        }
        os << "  " << row.target << "\n";
    };
    for (const Row& row : rows) {
        print(row, "generated");
    }
    for (const Row& row : treeRows) {
        print(row, "tree");
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    std::ostream& os = std::cout;
    // The dates of the objects document are in UTC, and the JSON reader gives dates back in local
    // time: in UTC they read back as written, on any machine.
    setenv("TZ", "UTC", 1);
    tzset();
    const AutoPtr<Files::FileTicketsResponse> written = makeResponse();
    const std::vector<Binder> all = binders();
    bool same = true;
    for (const Binder& binder : all) {
        same = check(binder, summaryOf(*written, binder.keepsValues), os) && same;
    }
    if (!same) {
        os << "The binders disagree on the document: nothing timed.\n";
        return 1;
    }
    // A peer that cannot bind the objects document is left out of its benchmarks, with the reason.
    const AutoPtr<Files::FileTicketsResponse> objects = cvsoa::bench::makeServiceDataResponse();
    std::vector<Binder> withObjects;
    for (const Binder& binder : objectBinders(all, cvsoa::bench::elementCount(*objects))) {
        if (check(binder, summaryOf(*objects, binder.keepsValues), os)) {
            withObjects.push_back(binder);
        } else if (binder.name == "generated") {
            os << "The generated types do not bind the objects document: nothing timed.\n";
            return 1;
        } else {
            os << binder.prefix << binder.format << " " << binder.name
               << " left out of the objects document's benchmarks\n";
        }
    }
    for (const Binder& binder : all) {
        registerBinder(binder);
    }
    for (const Binder& binder : withObjects) {
        registerBinder(binder);
    }
    benchmark::RegisterBenchmark("Construct", Construct);

    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    printSpeeds(reporter, all, os);
    printSpeeds(reporter, withObjects, os);
    printRatios(reporter, os);
    benchmark::Shutdown();
    return 0;
}
