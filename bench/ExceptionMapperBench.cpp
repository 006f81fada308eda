// Mapping error documents with many messages to their exceptions: the reader's parse plus the
// dispatch, and the dispatch alone over a parsed tree. Each runs at 1,000, 10,000 and 100,000
// messages and reports its fitted complexity, which is linear (time per message stays flat).
// Writing goes to a stream that keeps nothing: an ostringstream's own growth to 12 MB would
// dominate at 100,000 messages.
#include <corvane/soa/common/exceptions/ExceptionMapper.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/InternalServerException.hpp>
#include <corvane/soa/schemas/Soa/_2006_03/Exceptions/ServiceException.hpp>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

namespace {

using ::Corvane::Schemas::Soa::_2006_03::Exceptions::InternalServerException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::ServiceException;
using ::Corvane::Schemas::Soa::_2006_03::Exceptions::SoaException;
using ::Corvane::Soa::Common::Exceptions::ExceptionMapper;
using ::Corvane::Soa::Common::Xml::SAXToNodeParser;

// A document written by the mapper itself, with `count` messages of realistic length.
std::string serviceDocument(std::int64_t count) {
    ServiceException e;
    for (std::int64_t i = 0; i < count; ++i) {
        e.addError("Object " + std::to_string(i) + " is checked out by jane.doe & cannot be saved.",
                   515000 + static_cast<int>(i % 100), static_cast<int>(i % 4));
    }
    e.setUid("QKj5AAAAAAAAAA");
    std::ostringstream out;
    ExceptionMapper::writeSoaException(e, out);
    return out.str();
}

std::string legacyDocument(std::int64_t count) {
    std::string xml = "<CvResponse><CvError>";
    for (std::int64_t i = 0; i < count; ++i) {
        xml += "<CvErrorValue code=\"1003\" level=\"3\" message=\"Login failed for user " +
               std::to_string(i) + ".\"/>\n";
    }
    return xml + "</CvError></CvResponse>";
}

void finish(benchmark::State& state, std::size_t bytes) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.SetComplexityN(state.range(0));
}

void parseAndMapService(benchmark::State& state) {
    const std::string xml = serviceDocument(state.range(0));
    for (auto _ : state) {
        try {
            ExceptionMapper::parseExceptionString(xml);
        } catch (const SoaException& e) {
            benchmark::DoNotOptimize(e.getErrors().size());
        }
    }
    finish(state, xml.size());
}

void mapParsedService(benchmark::State& state) {
    const std::string xml = serviceDocument(state.range(0));
    SAXToNodeParser parser;
    const auto* root = parser.parseString(xml);
    for (auto _ : state) {
        try {
            ExceptionMapper::parseExceptionString(root);
        } catch (const SoaException& e) {
            benchmark::DoNotOptimize(e.getErrors().size());
        }
    }
    finish(state, xml.size());
}

void parseAndMapLegacy(benchmark::State& state) {
    const std::string xml = legacyDocument(state.range(0));
    for (auto _ : state) {
        try {
            ExceptionMapper::parseExceptionString(xml);
        } catch (const InternalServerException& e) {
            benchmark::DoNotOptimize(e.getMessage().size());
        }
    }
    finish(state, xml.size());
}

// Counts what it is given and keeps nothing, so that the writer's own cost is measured.
class CountingBuffer : public std::streambuf {
public:
    std::size_t count = 0;

protected:
    std::streamsize xsputn(const char* /*text*/, std::streamsize size) override {
        count += static_cast<std::size_t>(size);
        return size;
    }
    int_type overflow(int_type c) override {
        ++count;
        return c;
    }
};

void writeService(benchmark::State& state) {
    std::size_t bytes = 0;
    ServiceException e;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        e.addError("Object " + std::to_string(i) + " is checked out by jane.doe & cannot be saved.",
                   515000, 3);
    }
    for (auto _ : state) {
        CountingBuffer buffer;
        std::ostream out(&buffer);
        ExceptionMapper::writeSoaException(e, out);
        bytes = buffer.count;
        benchmark::DoNotOptimize(bytes);
    }
    finish(state, bytes);
}

BENCHMARK(parseAndMapService)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(mapParsedService)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(parseAndMapLegacy)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(writeService)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Complexity(benchmark::oN)
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
