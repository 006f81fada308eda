// Reading and writing wire-form dates, in nanoseconds per call. A parse decides daylight saving
// from a per-year table; mktime, what a direct decision would cost, is measured beside it.
#include <corvane/soa/common/DateTime.hpp>
#include "internal/common/LocalZone.hpp"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

using Corvane::Soa::Common::DateTime;
using Corvane::Soa::Internal::Common::LocalZone;

namespace {

// Dates spread over several years and both seasons, as a response document carries them.
std::vector<std::string> sampleTexts() {
    std::vector<std::string> texts;
    char text[64];
    for (int i = 0; i < 256; ++i) {
        std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d%s", 2010 + i % 12,
                      1 + i % 12, 1 + i % 28, i % 24, i % 60, (i * 7) % 60,
                      i % 3 == 0 ? "+01:00" : (i % 3 == 1 ? "-0500" : "Z"));
        texts.emplace_back(text);
    }
    return texts;
}

void parseDate(benchmark::State& state) {
    const std::vector<std::string> texts = sampleTexts();
    std::size_t i = 0;
    for (auto _ : state) {
        DateTime date(texts[i++ & 255]);
        benchmark::DoNotOptimize(date);
    }
    state.SetItemsProcessed(state.iterations());
}

void writeDate(benchmark::State& state) {
    std::vector<DateTime> dates;
    for (const std::string& text : sampleTexts()) {
        dates.emplace_back(text);
    }
    std::size_t i = 0;
    for (auto _ : state) {
        std::string text = dates[i++ & 255].toString();
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}

void daylightByTable(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        ++i;
        benchmark::DoNotOptimize(
            LocalZone::isDaylight(2010 + i % 12, 1 + i % 12, 1 + i % 28, i % 24, 0, 0));
    }
}

void daylightByMktime(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) {
        ++i;
        benchmark::DoNotOptimize(
            LocalZone::isDaylightByMktime(2010 + i % 12, 1 + i % 12, 1 + i % 28, i % 24, 0, 0));
    }
}

BENCHMARK(parseDate);
BENCHMARK(writeDate);
BENCHMARK(daylightByTable);
BENCHMARK(daylightByMktime);

}  // namespace

int main(int argc, char** argv) {
    // Measure in a zone with daylight saving unless the caller chose one.
    setenv("TZ", "Europe/Berlin", 0);
    tzset();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
