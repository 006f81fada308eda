#ifndef CVSOA_BENCH_RATIOREPORTER_HPP
#define CVSOA_BENCH_RATIOREPORTER_HPP

// The console table of Google Benchmark, remembering the mean real time per iteration of every
// benchmark so that a program can print its ratios against its peers after the table.

#include <benchmark/benchmark.h>
#include <unistd.h>

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
        // Single runs, or the means when only aggregates are reported.
        for (const Run& run : runs) {
            const bool mean = run.run_type == Run::RT_Aggregate && run.aggregate_name == "mean";
            if ((run.run_type != Run::RT_Iteration && !mean) || run.error_occurred ||
                run.iterations <= 0) {
                continue;
            }
            auto& [total, count] = (mean ? m_means : m_seconds)[run.run_name.str()];
            total += run.real_accumulated_time / static_cast<double>(run.iterations);
            ++count;
        }
    }

    // Mean seconds per iteration, or 0 when the benchmark did not run.
    double seconds(const std::string& name) const {
        for (const auto* times : {&m_seconds, &m_means}) {
            const auto found = times->find(name);
            if (found != times->end()) {
                return found->second.first / found->second.second;
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

    // The mean time of one iteration, in milliseconds.
    void printTime(std::ostream& os, const std::string& name, const char* note) const {
        const double s = seconds(name);
        if (s > 0.0) {
            os << "time " << name << ": " << std::fixed << std::setprecision(1) << s * 1e3
               << " ms (" << note << ")\n";
        }
    }

private:
    std::map<std::string, std::pair<double, int>> m_seconds;
    std::map<std::string, std::pair<double, int>> m_means;
};

}  // namespace cvsoa::bench

#endif
