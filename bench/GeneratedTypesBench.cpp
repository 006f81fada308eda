// Binding a 10 MB FileTicketsResponse to its generated type and writing it back, in XML and in
// JSON, and the heap blocks that binding costs per bound element. (The peers of the issue's
// comparison, gSOAP and CodeSynthesis XSD, are not wired in yet.)
#include <corvane/soa/common/xml/JsonStream.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/common/xml/XMLNode.hpp>
#include <corvane/soa/common/xml/XmlStream.hpp>
#include <corvane/soa/internal/json/JSONObject.hpp>
#include <corvane/soa/internal/json/Parser.hpp>
#include <corvane/soa/schemas/Core/_2006_03/Filemanagement.hpp>

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <new>
#include <sstream>
#include <string>

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

constexpr std::size_t kTickets = 100000;

AutoPtr<Files::FileTicketsResponse> makeResponse() {
    AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
    for (std::size_t i = 0; i < kTickets; ++i) {
        AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
        entry->getKey()->setUid("QWr5AAAAAAAA" + std::to_string(i));
        entry->setValue("https://fms.example.com/ticket/" + std::to_string(i * 7919) + "?e=1");
        response->addTickets(entry);
    }
    return response;
}

const std::string& xmlText() {
    static const std::string text = [] {
        Xml::XmlStream stream;
        makeResponse()->outputXML(stream);
        return stream.str();
    }();
    return text;
}

const std::string& jsonText() {
    static const std::string text = [] {
        std::ostringstream out;
        Xml::JsonStream stream(&out);
        makeResponse()->writeJSON(&stream);
        return out.str();
    }();
    return text;
}

void XmlReadAndBind(benchmark::State& state) {
    const std::string& text = xmlText();
    for (auto _ : state) {
        Xml::SAXToNodeParser parser;
        AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
        const std::size_t before = gAllocations.load();
        response->parse(*parser.parseString(text));
        state.counters["blocks_per_ticket"] =
            static_cast<double>(gAllocations.load() - before) / kTickets;
        benchmark::DoNotOptimize(response.get());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void XmlWrite(benchmark::State& state) {
    const AutoPtr<Files::FileTicketsResponse> response = makeResponse();
    for (auto _ : state) {
        std::ostringstream out;
        Xml::XmlStream stream(&out);
        response->outputXML(stream);
        benchmark::DoNotOptimize(out.tellp());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * xmlText().size()));
}

void JsonReadAndBind(benchmark::State& state) {
    const std::string& text = jsonText();
    for (auto _ : state) {
        AutoPtr<Files::FileTicketsResponse> response(new Files::FileTicketsResponse);
        response->parseJSON(Json::Parser().parse(text).dynamicCast<Json::JSONObject>());
        benchmark::DoNotOptimize(response.get());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void JsonWrite(benchmark::State& state) {
    const AutoPtr<Files::FileTicketsResponse> response = makeResponse();
    for (auto _ : state) {
        std::ostringstream out;
        Xml::JsonStream stream(&out);
        response->writeJSON(&stream);
        benchmark::DoNotOptimize(out.tellp());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * jsonText().size()));
}

void Construct(benchmark::State& state) {
    for (auto _ : state) {
        const std::size_t before = gAllocations.load();
        AutoPtr<Files::TicketMap> entry(new Files::TicketMap);
        state.counters["blocks"] = static_cast<double>(gAllocations.load() - before);
        benchmark::DoNotOptimize(entry.get());
    }
}

BENCHMARK(XmlReadAndBind)->Unit(benchmark::kMillisecond);
BENCHMARK(XmlWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(JsonReadAndBind)->Unit(benchmark::kMillisecond);
BENCHMARK(JsonWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(Construct);

}  // namespace

BENCHMARK_MAIN();
