// Loading and saving a large object property policy: 10,000 types of 100 properties each, about
// 64 MB of policy file. Saving includes making the new file reach the disk before it replaces the
// old one; writing the text alone is measured beside it.
#include <corvane/soa/common/ObjectPropertyPolicy.hpp>
#include <corvane/soa/common/xml/SAXToNodeParser.hpp>
#include <corvane/soa/internal/common/PolicyMarshaller.hpp>

#include <benchmark/benchmark.h>

#include <sys/stat.h>
#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace {

using Corvane::Soa::Common::ObjectPropertyPolicy;
using Corvane::Soa::Common::PolicyProperty;
using Corvane::Soa::Common::PolicyType;
using Corvane::Soa::Internal::Common::PolicyMarshaller;

constexpr int kTypes = 10000;
constexpr int kProperties = 100;

// Every type asks for its properties' values; every tenth property is an attribute and every
// seventh a UI value only, as real policies mix them.
const ObjectPropertyPolicy& largePolicy() {
    static const ObjectPropertyPolicy policy = [] {
        ObjectPropertyPolicy made;
        for (int t = 0; t < kTypes; ++t) {
            PolicyType type("BusinessObjectType" + std::to_string(t));
            type.setModifier("withProperties", true);
            for (int p = 0; p < kProperties; ++p) {
                PolicyProperty property("property_" + std::to_string(p));
                if (p % 10 == 0) {
                    property.setModifier("asAttribute", true);
                }
                if (p % 7 == 0) {
                    property.setModifier("uIValueOnly", true);
                }
                type.addProperty(property);
            }
            made.addType(type);
        }
        return made;
    }();
    return policy;
}

const std::string& policyPath() {
    static const std::string path = [] {
        std::string dir = "/tmp/cvsoa-policy-bench-XXXXXX";
        if (::mkdtemp(dir.data()) == nullptr) {
            std::abort();
        }
        return dir + "/policy.xml";
    }();
    return path;
}

std::size_t fileSize() {
    struct stat status {};
    return ::stat(policyPath().c_str(), &status) == 0 ? static_cast<std::size_t>(status.st_size)
                                                      : 0;
}

void setCounters(benchmark::State& state, std::size_t bytes) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * bytes));
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void toXml(benchmark::State& state) {
    const ObjectPropertyPolicy& policy = largePolicy();
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string text = PolicyMarshaller::toXml(policy);
        bytes = text.size();
        benchmark::DoNotOptimize(text.data());
    }
    setCounters(state, bytes);
}

void save(benchmark::State& state) {
    const ObjectPropertyPolicy& policy = largePolicy();
    for (auto _ : state) {
        policy.save(policyPath());
    }
    setCounters(state, fileSize());
}

void load(benchmark::State& state) {
    const ObjectPropertyPolicy& policy = largePolicy();
    policy.save(policyPath());
    {
        ObjectPropertyPolicy loaded;
        loaded.load(policyPath());
        if (loaded != policy) {
            state.SkipWithError("the loaded policy differs from the saved one");
            return;
        }
    }
    for (auto _ : state) {
        ObjectPropertyPolicy loaded;
        loaded.load(policyPath());
        benchmark::DoNotOptimize(loaded.getTypes().size());
        state.PauseTiming();  // destroying it is not loading
        { const ObjectPropertyPolicy gone = std::move(loaded); }
        state.ResumeTiming();
    }
    setCounters(state, fileSize());
}

// The floor under loading: the reader's element tree of the same file, without the model.
void parseOnly(benchmark::State& state) {
    largePolicy().save(policyPath());
    for (auto _ : state) {
        Corvane::Soa::Common::Xml::SAXToNodeParser parser;
        benchmark::DoNotOptimize(parser.parseFile(policyPath(), "UTF-8"));
    }
    setCounters(state, fileSize());
}

BENCHMARK(toXml)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(save)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(load)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(parseOnly)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    const std::string dir = policyPath().substr(0, policyPath().rfind('/'));
    std::remove(policyPath().c_str());
    ::rmdir(dir.c_str());
    return 0;
}
