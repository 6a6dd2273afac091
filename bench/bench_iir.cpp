// Order-6 Butterworth lowpass over 10^6 samples: the filtering kernel (three
// sections, run pipelined), the direct-form runner with the merged
// coefficients, a plain direct-form loop over the same coefficients, and
// scipy.signal.lfilter (run by a Python script started from here) on the
// same data with the same coefficients.
//
// Google Benchmark times our three variants; then the comparison runs in
// interleaved rounds (ours, the plain loop and the script's lfilter in turn,
// each the fastest of kReps repetitions, CPU time) and prints one ratio line per
// comparison with the median of the rounds and the spread of the per-round
// ratios.
#include "analysis/filter/iir.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr std::int32_t kN = 1000000;
constexpr int kOrder = 6, kM = kOrder + 1, kRounds = 7, kReps = 5;
constexpr double kFs = 1000, kFc = 100;

struct Data {
    std::vector<double> x, a, b;
    Data() : x(kN), a(kM), b(kM) {
        std::uint32_t s = 12345;
        for (std::int32_t i = 0; i < kN; ++i) {
            s = s * 1664525u + 1013904223u;
            x[i] = std::sin(0.01 * i) + (s >> 8) * (1.0 / 16777216.0) - 0.5;
        }
        vn::BwCoefDesign(0, kOrder, kFs, kFc, 0, a.data(), kM, b.data(), kM);
    }
};

const Data& GetData() {
    static const Data d;
    return d;
}

void Kernel(const Data& d, std::vector<double>& y) { vn::BwLowPass(d.x.data(), kN, kFs, kFc, kOrder, y.data()); }

void Runner(const Data& d, std::vector<double>& y) {
    double y1[kM - 1] = {}, x1[kM - 1] = {};
    vn::IIRFilterRun(d.x.data(), kN, d.a.data(), y1, kM, d.b.data(), x1, kM, y.data());
}

// The textbook loop: y[i] = sum b[k] x[i-k] - sum a[k] y[i-k], zero history.
void PlainDirectForm(const Data& d, std::vector<double>& y) {
    const double* x = d.x.data();
    const double* a = d.a.data();
    const double* b = d.b.data();
    for (std::int32_t i = 0; i < kN; ++i) {
        double s = 0;
        for (int k = 0; k < kM && k <= i; ++k) s += b[k] * x[i - k];
        for (int k = 1; k < kM && k <= i; ++k) s -= a[k] * y[i - k];
        y[i] = s;
    }
}

template <void (*F)(const Data&, std::vector<double>&)>
void BM_Iir(benchmark::State& state) {
    const Data& d = GetData();
    std::vector<double> y(kN);
    for (auto _ : state) {
        F(d, y);
        benchmark::DoNotOptimize(y.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kN);
}
BENCHMARK(BM_Iir<Kernel>)->Name("BwLowPass/order6/1e6")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Iir<Runner>)->Name("IIRFilterRun/order6/1e6")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Iir<PlainDirectForm>)->Name("PlainDirectForm/order6/1e6")->Unit(benchmark::kMillisecond);

// Process CPU time: the machine is shared, and both sides are single-threaded
// (the script measures with time.process_time too).
double CpuMicros() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec * 1e6 + ts.tv_nsec * 1e-3;
}

template <void (*F)(const Data&, std::vector<double>&)>
double BestMicros(std::vector<double>& y) {
    double best = 1e300;
    for (int r = 0; r < kReps; ++r) {
        const double t0 = CpuMicros();
        F(GetData(), y);
        best = std::min(best, CpuMicros() - t0);
    }
    return best;
}

void WriteDoubles(const std::string& path, const std::vector<double>& v) {
    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return;
    std::fwrite(v.data(), sizeof(double), v.size(), f);
    std::fclose(f);
}

// Runs the script once: prints "<best lfilter microseconds> <max |diff|>".
bool RunReference(const std::string& script, double& micros, double& diff) {
    // Debian's interpreter, which has numpy and scipy (a python3 earlier on
    // PATH may not).
    const char* python = access("/usr/bin/python3", X_OK) == 0 ? "/usr/bin/python3 " : "python3 ";
    FILE* p = popen((python + script).c_str(), "r");
    if (!p) return false;
    const int got = std::fscanf(p, "%lf %lf", &micros, &diff);
    return pclose(p) == 0 && got == 2;
}

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

void PrintRatio(const char* name, const std::vector<double>& ours, const char* ref, const std::vector<double>& theirs) {
    std::vector<double> ratios;
    for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(ours[i] / theirs[i]);
    const double lo = *std::min_element(ratios.begin(), ratios.end());
    const double hi = *std::max_element(ratios.begin(), ratios.end());
    const double mid = Median(ratios);
    std::printf("ratio bench_iir %s ours_us=%.1f ref=%s ref_us=%.1f ratio=%.3f spread=%.1f\n", name, Median(ours), ref,
                Median(theirs), mid, 100 * (hi - lo) / mid);
}

void Compare() {
    const Data& d = GetData();
    const std::string dir = "/tmp/vn_bench_iir_" + std::to_string(getpid());
    if (std::system(("mkdir -p " + dir).c_str()) != 0) return;
    std::vector<double> yk(kN), yr(kN), yp(kN);
    Kernel(d, yk);
    Runner(d, yr);
    WriteDoubles(dir + "/x.bin", d.x);
    WriteDoubles(dir + "/a.bin", d.a);
    WriteDoubles(dir + "/b.bin", d.b);
    WriteDoubles(dir + "/ours.bin", yr);
    const std::string script = dir + "/ref.py";
    if (FILE* f = std::fopen(script.c_str(), "w")) {
        std::fprintf(f,
                     "import time, numpy as np\n"
                     "from scipy.signal import lfilter\n"
                     "d = '%s/'\n"
                     "x = np.fromfile(d + 'x.bin'); a = np.fromfile(d + 'a.bin'); b = np.fromfile(d + 'b.bin')\n"
                     "best = 1e300\n"
                     "for r in range(%d):\n"
                     "    t = time.process_time(); y = lfilter(b, a, x); best = min(best, time.process_time() - t)\n"
                     "print(best * 1e6, np.max(np.abs(y - np.fromfile(d + 'ours.bin'))))\n",
                     dir.c_str(), kReps);
        std::fclose(f);
    }
    double maxKernelDiff = 0;
    for (std::int32_t i = 0; i < kN; ++i) maxKernelDiff = std::max(maxKernelDiff, std::fabs(yk[i] - yr[i]));

    std::vector<double> kernel, runner, plain, lfilter;
    double diff = 0;
    for (int round = 0; round < kRounds; ++round) {
        kernel.push_back(BestMicros<Kernel>(yk));
        runner.push_back(BestMicros<Runner>(yr));
        plain.push_back(BestMicros<PlainDirectForm>(yp));
        double us = 0;
        if (!RunReference(script, us, diff)) {
            std::printf("python3 with numpy and scipy is needed for the lfilter comparison\n");
            break;
        }
        lfilter.push_back(us);
    }
    std::system(("rm -rf " + dir).c_str());
    std::printf("\nmax |sections - merged| = %.3g, max |lfilter - IIRFilterRun| = %.3g\n", maxKernelDiff, diff);
    std::printf("medians of %d interleaved rounds (each the fastest of %d), microseconds per 10^6 samples\n", kRounds,
                kReps);
    PrintRatio("bwlpf6_kernel", kernel, "direct-form-loop", plain);
    PrintRatio("iirfiltering6", runner, "direct-form-loop", plain);
    if (lfilter.size() == kernel.size()) {
        PrintRatio("bwlpf6_kernel", kernel, "scipy.lfilter", lfilter);
        PrintRatio("iirfiltering6", runner, "scipy.lfilter", lfilter);
    }
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    Compare();
    return 0;
}
