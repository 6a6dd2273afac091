// Direct convolution against a plain scalar loop and numpy.convolve, side by
// side in one run.
//
// For (nx, ny) = (10^4, 10^3) and (10^5, 64) this times:
//   vn        ConvolveDirect on the engine the processor selects;
//   vn-base   the same sums forced onto the baseline 128-bit engine;
//   scalar    the defining loop nest "for i, for j: out[i+j] += y[j]*x[i]",
//             compiled without vectorisation;
//   numpy     numpy.convolve on the same data, timed by convolve_numpy.py
//             (process CPU time, best of several batches), started from here
//             with popen once per round.
// Every variant runs once per round and the rounds interleave, so a shared,
// noisy machine affects all alike. The summary uses the fastest round of each
// variant; spread is (slowest - fastest)/fastest of the per-round ratio.
#include "analysis/dsp/fft_internal.h"
#include "analysis/dsp/timedomain.h"
#include "analysis/dsp/timedomain_internal.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

#ifndef VN_BENCH_SOURCE_DIR
#define VN_BENCH_SOURCE_DIR "bench"
#endif

namespace {

constexpr int kRounds = 7;

struct Case {
    const char* name;
    int nx, ny;
    std::vector<double> x, y, out;
    std::string xFile, yFile, outFile;
};

std::vector<Case>& Cases() {
    static std::vector<Case> cases = {{"1e4x1e3", 10000, 1000, {}, {}, {}, "", "", ""},
                                      {"1e5x64", 100000, 64, {}, {}, {}, "", "", ""}};
    return cases;
}

std::string WriteTemp(const std::vector<double>& v) {
    char name[] = "/tmp/vn_bench_conv_XXXXXX";
    const int fd = mkstemp(name);
    if (fd < 0) return "";
    FILE* f = fdopen(fd, "wb");
    std::fwrite(v.data(), sizeof(double), v.size(), f);
    std::fclose(f);
    return name;
}

void Prepare() {
    std::mt19937_64 rng(12345);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (Case& c : Cases()) {
        c.x.resize(c.nx);
        c.y.resize(c.ny);
        for (double& v : c.x) v = u(rng);
        for (double& v : c.y) v = u(rng);
        c.out.assign(c.nx + c.ny - 1, 0.0);
        vn::ConvolveDirect(c.x.data(), c.nx, c.y.data(), c.ny, c.out.data());
        c.xFile = WriteTemp(c.x);
        c.yFile = WriteTemp(c.y);
        c.outFile = WriteTemp(c.out);
    }
}

__attribute__((optimize("no-tree-vectorize"))) void ScalarConvolve(const double* x, int nx, const double* y, int ny,
                                                                   double* out) {
    for (int m = 0; m < nx + ny - 1; ++m) out[m] = 0.0;
    for (int i = 0; i < nx; ++i)
        for (int j = 0; j < ny; ++j) out[i + j] += y[j] * x[i];
}

void RunVn(benchmark::State& state, Case* c, int engine) {
    std::vector<double> out(c->out.size());
    using vn::fft_internal::Engine;
    for (auto _ : state) {
        if (engine < 0)
            vn::ConvolveDirect(c->x.data(), c->nx, c->y.data(), c->ny, out.data());
        else
            vn::timedomain_internal::Convolve(Engine::kBaseline, c->x.data(), c->nx, c->y.data(), c->ny, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    if (out != c->out) state.SkipWithError("results differ between engines");
}

void RunScalar(benchmark::State& state, Case* c) {
    std::vector<double> out(c->out.size());
    for (auto _ : state) {
        ScalarConvolve(c->x.data(), c->nx, c->y.data(), c->ny, out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    if (out != c->out) state.SkipWithError("the scalar loop gives other bits");
}

std::map<std::string, double>& MaxDiff() {
    static std::map<std::string, double> d;
    return d;
}

void RunNumpy(benchmark::State& state, Case* c) {
    const std::string cmd = "OPENBLAS_NUM_THREADS=1 /usr/bin/python3 " VN_BENCH_SOURCE_DIR "/convolve_numpy.py " + c->xFile +
                            " " + c->yFile + " " + c->outFile + " 5";
    for (auto _ : state) {
        FILE* p = popen(cmd.c_str(), "r");
        double us = NAN, diff = NAN;
        if (!p || std::fscanf(p, "%lf %lf", &us, &diff) != 2) {
            if (p) pclose(p);
            state.SkipWithError("python3 with numpy did not answer");
            return;
        }
        pclose(p);
        MaxDiff()[c->name] = diff;
        state.SetIterationTime(us * 1e-6);
    }
}

// Per variant, the time of every round in order (CPU time; for numpy the
// script's own process CPU time).
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.iterations == 0 || run.error_occurred) continue;
            const std::string name = run.run_name.function_name;
            const bool manual = name.find("numpy") != std::string::npos;
            const double total = manual ? run.real_accumulated_time : run.cpu_accumulated_time;
            times_[name].push_back(total / static_cast<double>(run.iterations));
        }
        ConsoleReporter::ReportRuns(runs);
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nFastest round, microseconds per convolution (CPU time)\n");
        std::printf("%-8s %10s %10s %10s %10s %9s %9s %12s\n", "case", "vn", "vn-base", "scalar", "numpy",
                    "scalar/vn", "numpy/vn", "max|diff|");
        for (const Case& c : Cases()) {
            const std::string k = c.name;
            const double vn = Best(k + "/vn"), base = Best(k + "/vn-base"), sc = Best(k + "/scalar"),
                         np = Best(k + "/numpy");
            const auto d = MaxDiff().find(k);
            std::printf("%-8s %10.1f %10.1f %10.1f %10.1f %9.2f %9.2f %12.2e\n", c.name, vn * 1e6, base * 1e6,
                        sc * 1e6, np * 1e6, sc / vn, np / vn, d == MaxDiff().end() ? NAN : d->second);
        }
        std::printf("\n");
        for (const Case& c : Cases()) {
            const std::string k = c.name;
            for (const char* ref : {"scalar", "numpy"}) {
                const double ours = Best(k + "/vn"), theirs = Best(k + "/" + ref);
                std::printf("ratio bench_convolve %s ours_us=%.1f ref=%s ref_us=%.1f ratio=%.3f spread=%.1f\n", c.name,
                            ours * 1e6, ref, theirs * 1e6, ours / theirs, Spread(k + "/vn", k + "/" + ref));
            }
        }
    }

private:
    double Best(const std::string& name) const {
        auto it = times_.find(name);
        if (it == times_.end() || it->second.empty()) return NAN;
        return *std::min_element(it->second.begin(), it->second.end());
    }
    // Spread of the per-round ratio ours/ref, in percent of its smallest value.
    double Spread(const std::string& ours, const std::string& ref) const {
        auto a = times_.find(ours), b = times_.find(ref);
        if (a == times_.end() || b == times_.end()) return NAN;
        const std::size_t n = std::min(a->second.size(), b->second.size());
        if (n == 0) return NAN;
        double lo = INFINITY, hi = 0;
        for (std::size_t i = 0; i < n; ++i) {
            const double r = a->second[i] / b->second[i];
            lo = std::min(lo, r), hi = std::max(hi, r);
        }
        return (hi - lo) / lo * 100;
    }
    std::map<std::string, std::vector<double>> times_;
};

void Register() {
    for (int round = 0; round < kRounds; ++round) {
        for (Case& c : Cases()) {
            const std::string k = c.name;
            Case* p = &c;
            benchmark::RegisterBenchmark((k + "/vn").c_str(), [p](benchmark::State& s) { RunVn(s, p, -1); })
                ->Unit(benchmark::kMicrosecond)
                ->MinTime(0.2);
            benchmark::RegisterBenchmark((k + "/vn-base").c_str(), [p](benchmark::State& s) { RunVn(s, p, 0); })
                ->Unit(benchmark::kMicrosecond)
                ->MinTime(0.2);
            benchmark::RegisterBenchmark((k + "/scalar").c_str(), [p](benchmark::State& s) { RunScalar(s, p); })
                ->Unit(benchmark::kMicrosecond)
                ->MinTime(0.2);
            benchmark::RegisterBenchmark((k + "/numpy").c_str(), [p](benchmark::State& s) { RunNumpy(s, p); })
                ->Unit(benchmark::kMicrosecond)
                ->UseManualTime()
                ->Iterations(1);
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    Prepare();
    Register();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    using vn::fft_internal::Engine;
    const Engine e = vn::fft_internal::DefaultEngine();
    std::printf("engine: %s\n", e == Engine::kAvx512 ? "512-bit" : e == Engine::kAvx2 ? "256-bit" : "baseline 128-bit");
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    for (const Case& c : Cases())
        for (const std::string& f : {c.xFile, c.yFile, c.outFile})
            if (!f.empty()) std::remove(f.c_str());
    return 0;
}
