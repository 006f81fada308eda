// Loading properties files: a client configuration of 100,000 keys read from its file, beside a
// hand-written peer on the same file (lines split at the first "=" into a hash map, as a program
// without a properties reader would do it, with no escapes, continuations or order), and the time
// per key as the text grows from 1,000 to 1,000,000 keys, which stays flat: loading is linear.
#include <corvane/soa/common/Properties.hpp>

#include <benchmark/benchmark.h>

#include "RatioReporter.hpp"

#include <unistd.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <unordered_map>

namespace {

using Corvane::Soa::Common::Properties;

constexpr int kFileKeys = 100000;

// `keys` keys as a client's configuration holds them: dotted names, a comment before each group
// of ten, and now and then an escape, a UTF-8 value or a value continued on the next line.
std::string configuration(int keys) {
    std::string text;
    text.reserve(static_cast<std::size_t>(keys) * 64);
    for (int i = 0; i < keys; ++i) {
        const std::string n = std::to_string(i);
        if (i % 10 == 0) {
            text += "# service group " + n + "\n";
        }
        switch (i % 10) {
            case 3:
                text += "service." + n + ".url = https\\://host" + n + ".example.test\\:8443/soa\n";
                break;
            case 6:
                text += "service." + n + ".label=R\\u00e9seau \xC3\xA9tendu " + n + "\n";
                break;
            case 9:
                text += "service." + n + ".path=/opt/app/lib\\\n    :/opt/app/ext/" + n + "\n";
                break;
            default:
                text += "service." + n + ".timeout = " + std::to_string(i % 997 + 30) + "\n";
                break;
        }
    }
    return text;
}

const std::string& filePath() {
    static const std::string path = [] {
        std::string dir = "/tmp/cvsoa-properties-bench-XXXXXX";
        if (::mkdtemp(dir.data()) == nullptr) {
            std::abort();
        }
        const std::string file = dir + "/client.properties";
        std::ofstream(file, std::ios::binary) << configuration(kFileKeys);
        return file;
    }();
    return path;
}

void loadFile(benchmark::State& state) {
    for (auto _ : state) {
        Properties properties;
        properties.load(filePath());
        if (properties.size() != static_cast<std::size_t>(kFileKeys)) {
            state.SkipWithError("not every key was loaded");
            break;
        }
        benchmark::DoNotOptimize(properties.entries().data());
    }
    state.counters["keys"] = kFileKeys;
}

// The peer: std::getline, the first "=" and std::unordered_map.
void naiveFile(benchmark::State& state) {
    for (auto _ : state) {
        std::ifstream in(filePath(), std::ios::binary);
        std::unordered_map<std::string, std::string> map;
        std::string line;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#') {
                continue;
            }
            const std::size_t separator = line.find('=');
            map[line.substr(0, separator)] =
                separator == std::string::npos ? std::string() : line.substr(separator + 1);
        }
        benchmark::DoNotOptimize(map.size());
    }
    state.counters["keys"] = kFileKeys;
}

void loadText(benchmark::State& state) {
    const std::string text = configuration(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        Properties properties;
        properties.loadText(text);
        benchmark::DoNotOptimize(properties.entries().data());
    }
    state.SetComplexityN(state.range(0));
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.counters["per_key"] = benchmark::Counter(
        static_cast<double>(state.range(0)),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    benchmark::RegisterBenchmark("file/Properties", loadFile)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("file/getline", naiveFile)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("text/Properties", loadText)
        ->RangeMultiplier(10)
        ->Range(1000, 1000000)
        ->Unit(benchmark::kMicrosecond)
        ->Complexity(benchmark::oN);
    cvsoa::bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printRatio(std::cout, "Properties/getline (100,000 keys from a file)", "file/getline",
                        "file/Properties", "the peer reads no escapes and keeps no order");
    // Time per key at a thousand times the keys, against the smallest text: 1.00 is linear.
    const double small = reporter.seconds("text/Properties/1000") / 1000.0;
    const double large = reporter.seconds("text/Properties/1000000") / 1000000.0;
    if (small > 0.0 && large > 0.0) {
        std::cout << "ratio time per key, 1,000,000 keys / 1,000 keys: " << large / small
                  << " (1.00 is linear; " << large * 1e9 << " ns a key at 1,000,000)\n";
    }
    benchmark::Shutdown();
    const std::string dir = filePath().substr(0, filePath().rfind('/'));
    std::remove(filePath().c_str());
    ::rmdir(dir.c_str());
    return 0;
}
