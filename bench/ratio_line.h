// The one summary line every benchmark program prints per comparison, which
// scripts/bench.sh collects into a table:
//
//   ratio <program> <case> ours_us=<t> ref=<refname> ref_us=<t> ratio=<ours/ref> spread=<percent>
//
// Both sides are timed in several rounds, interleaved (ours, reference,
// ours, ...), so that a burst of load on a shared machine hits both alike.
// ours_us and ref_us are the fastest round of each side (microseconds per
// operation) and ratio is their quotient. spread says how far the rounds
// disagree: half the range of the per-round ratios, in percent of their
// median. A large spread means the figure is not to be trusted.
#pragma once

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace vn_bench {

inline void PrintRatio(const char* program, const std::string& name, const std::vector<double>& ours_us,
                       const char* ref, const std::vector<double>& ref_us) {
    const std::size_t rounds = std::min(ours_us.size(), ref_us.size());
    if (rounds == 0) return;
    std::vector<double> ratios;
    for (std::size_t k = 0; k < rounds; ++k) ratios.push_back(ours_us[k] / ref_us[k]);
    std::sort(ratios.begin(), ratios.end());
    const double median = ratios[rounds / 2];
    const double spread = median > 0 ? 50.0 * (ratios.back() - ratios.front()) / median : 0.0;
    const double o = *std::min_element(ours_us.begin(), ours_us.end());
    const double r = *std::min_element(ref_us.begin(), ref_us.end());
    std::printf("ratio %s %s ours_us=%.3f ref=%s ref_us=%.3f ratio=%.3f spread=%.1f\n", program, name.c_str(), o, ref,
                r, o / r, spread);
}

// Console output as usual, and the CPU microseconds per iteration of every
// run kept by its full name (function/args) in the order the rounds ran.
class RoundsReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred || run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
            const double us = 1e6 * run.cpu_accumulated_time / static_cast<double>(run.iterations);
            rounds[run.run_name.function_name + "/" + run.run_name.args].push_back(us);
        }
        ConsoleReporter::ReportRuns(runs);
    }
    const std::vector<double>& Of(const std::string& name) const {
        static const std::vector<double> none;
        auto it = rounds.find(name);
        return it == rounds.end() ? none : it->second;
    }
    std::map<std::string, std::vector<double>> rounds;
};

}  // namespace vn_bench
