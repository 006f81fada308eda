#ifndef CVSOA_BENCH_RATIOREPORTER_HPP
#define CVSOA_BENCH_RATIOREPORTER_HPP

// The console table of Google Benchmark, remembering the real time per iteration of every
// benchmark and repetition so that a program can print its ratios (of medians) against its peers
// after the table.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <iomanip>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace cvsoa::bench {

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) != 0 ? OO_ColorTabular : OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        // Each repetition's time, or the medians when only aggregates are reported.
        for (const Run& run : runs) {
            const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
            if ((run.run_type != Run::RT_Iteration && !median) || run.error_occurred ||
                run.iterations <= 0) {
                continue;
            }
            // Named as registered, without the "/repeats:N" of a benchmark that sets its own
            // repetition count.
            benchmark::BenchmarkName name = run.run_name;
            name.repetitions.clear();
            (median ? m_medians : m_runs)[name.str()].push_back(
                run.real_accumulated_time / static_cast<double>(run.iterations));
        }
    }

    // Median seconds per iteration over the repetitions, or 0 when the benchmark did not run.
    // The median, not the mean: on a shared machine a repetition now and then runs far slower.
    double seconds(const std::string& name) const {
        for (const auto* times : {&m_runs, &m_medians}) {
            const auto found = times->find(name);
            if (found != times->end() && !found->second.empty()) {
                std::vector<double> sorted = found->second;
                std::sort(sorted.begin(), sorted.end());
                const std::size_t middle = sorted.size() / 2;
                return sorted.size() % 2 == 1 ? sorted[middle]
                                              : (sorted[middle - 1] + sorted[middle]) / 2.0;
            }
        }
        return 0.0;
    }

    void printThroughput(std::ostream& os, const std::string& name, std::size_t bytes,
                         const char* note) const {
        const double s = seconds(name);
        if (s > 0.0) {
            os << "throughput " << name << ": " << std::fixed << std::setprecision(2)
               << static_cast<double>(bytes) / s / 1e9 << " GB/s (" << note << ")\n";
        }
    }

    // How many times faster `subject` ran than `baseline`, or 0 when either did not run.
    double ratio(const std::string& baseline, const std::string& subject) const {
        const double base = seconds(baseline);
        const double mine = seconds(subject);
        return base > 0.0 && mine > 0.0 ? base / mine : 0.0;
    }

    // How many times faster `subject` ran than `baseline`.
    void printRatio(std::ostream& os, const std::string& label, const std::string& baseline,
                    const std::string& subject, const char* note) const {
        const double base = seconds(baseline);
        const double mine = seconds(subject);
        if (base > 0.0 && mine > 0.0) {
            os << "ratio " << label << ": " << std::fixed << std::setprecision(2) << base / mine
               << "x (" << note << ")\n";
        }
    }

    // How many times the time of `baseline` `subject` took (lower is better), for targets that
    // are budgets over a floor.
    void printTimeRatio(std::ostream& os, const std::string& label, const std::string& subject,
                        const std::string& baseline, const char* note) const {
        const double base = seconds(baseline);
        const double mine = seconds(subject);
        if (base > 0.0 && mine > 0.0) {
            os << "ratio " << label << ": " << std::fixed << std::setprecision(2) << mine / base
               << " (" << note << ")\n";
        }
    }

    // The median time of one iteration, in milliseconds.
    void printTime(std::ostream& os, const std::string& name, const char* note) const {
        const double s = seconds(name);
        if (s > 0.0) {
            os << "time " << name << ": " << std::fixed << std::setprecision(1) << s * 1e3
               << " ms (" << note << ")\n";
        }
    }

private:
    std::map<std::string, std::vector<double>> m_runs;
    std::map<std::string, std::vector<double>> m_medians;
};

}  // namespace cvsoa::bench

#endif
