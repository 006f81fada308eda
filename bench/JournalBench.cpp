// The performance journal's cost to the program it measures, and `cvsoa journal`'s reading and
// drawing of a journal of a million records.
//
// ScopedMonitor pairs (enter and exit of one operation):
//   - with the journal off: the price every instrumented call pays in production;
//   - with the journal on, one thread, then two threads recording at once. An outer operation
//     stays open meanwhile, so records are written 1000 lines at a time, as in a real nested
//     session, rather than once per pair; that write is part of the figure.
#include "FlameChart.hpp"
#include "JournalReader.hpp"
#include "JournalSummary.hpp"

#include <corvane/soa/internal/common/Monitor.hpp>
#include <corvane/soa/internal/common/ScopedMonitor.hpp>

#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

namespace {

using ::Corvane::Soa::Internal::Common::Monitor;
using ::Corvane::Soa::Internal::Common::ScopedMonitor;
namespace Journal = ::cvsoa::journal;

const std::string kName = "Session::login";  // held in the string itself, as most names are

void journalOff(const benchmark::State&) { Monitor::enable(false); }

void journalOn(const benchmark::State&) { Monitor::enable(true); }

// Ends the journal and removes its file.
void journalDone(const benchmark::State&) {
    const std::string path = Monitor::dumpTimes();
    if (!path.empty()) {
        std::remove(path.c_str());
    }
}

void BM_ScopedMonitorPair(benchmark::State& state) {
    const ScopedMonitor outer("benchmark");
    for (auto _ : state) {
        const ScopedMonitor marked(kName);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ScopedMonitorPair)->Name("ScopedMonitor pair/journal off")->Setup(journalOff);
// Fixed counts: a pair writes about 40 bytes of journal.
BENCHMARK(BM_ScopedMonitorPair)
    ->Name("ScopedMonitor pair/journal on")
    ->Setup(journalOn)
    ->Teardown(journalDone)
    ->Iterations(2000000);
BENCHMARK(BM_ScopedMonitorPair)
    ->Name("ScopedMonitor pair/journal on, two threads")
    ->Setup(journalOn)
    ->Teardown(journalDone)
    ->Iterations(1000000)
    ->Threads(2)
    ->UseRealTime();

// A million records on four threads: operations three deep among 40 names, with a command
// around every tenth outer operation.
const std::string& millionRecords() {
    static const std::string text = [] {
        std::string journal =
            "0|HD|1000000000|SOA-CPP|V11000.2.0.30_20161205.00|Linux|6.1|2024-05-01 "
            "12:00:00|UsesThreads\n\n";
        long long ticks = 1000;
        int records = 0;
        auto record = [&](int thread, const std::string& rest) {
            ticks += 137 + records % 1000;
            journal += std::to_string(ticks) + "|" + std::to_string(4000 + thread) + rest + "\n";
            ++records;
        };
        for (int op = 0; records < 1000000; ++op) {
            const int thread = op % 4;
            const std::string name = "Service" + std::to_string(op % 40) + "::operation";
            const bool command = op % 10 == 0;
            if (command) {
                record(thread, "|SC|command" + std::to_string(op % 7));
            }
            record(thread, "|EN|" + name);
            for (int inner = 0; inner < 3; ++inner) {
                record(thread, "|EN|XmlStream::write");
                record(thread, "|EN|Utf8String::encode");
                record(thread, "|EX");
                record(thread, "|EX");
            }
            record(thread, "|EX");
            if (command) {
                record(thread, "|EC|command" + std::to_string(op % 7));
            }
        }
        return journal + std::to_string(ticks + 1) + "|TR\n";
    }();
    return text;
}

void BM_ReadJournal(benchmark::State& state) {
    const std::string& text = millionRecords();
    for (auto _ : state) {
        const Journal::Journal journal = Journal::JournalReader::read(text);
        const Journal::JournalSummary summary(journal);
        std::ostringstream table;
        summary.writeTable(table);
        benchmark::DoNotOptimize(table);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
    state.counters["records"] = 1000000;
}
BENCHMARK(BM_ReadJournal)
    ->Name("cvsoa journal/read and table, 1,000,000 records")
    ->Unit(benchmark::kMillisecond);

void BM_DrawJournal(benchmark::State& state) {
    const Journal::Journal journal = Journal::JournalReader::read(millionRecords());
    std::size_t boxes = 0;
    for (auto _ : state) {
        const Journal::FlameChart chart(journal);
        std::ostringstream svg;
        chart.writeSvg(svg);
        boxes = chart.boxes().size();
        benchmark::DoNotOptimize(svg);
    }
    state.counters["boxes"] = static_cast<double>(boxes);
}
BENCHMARK(BM_DrawJournal)
    ->Name("cvsoa journal/flame chart, 1,000,000 records")
    ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    // The journal goes to a directory of its own, removed at the end.
    const std::filesystem::path directory = std::filesystem::temp_directory_path() /
                                            ("cvsoa-journal-bench-" + std::to_string(::getpid()));
    std::filesystem::create_directories(directory);
    ::setenv("TEMP", directory.c_str(), 1);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::filesystem::remove_all(directory);
    return 0;
}
