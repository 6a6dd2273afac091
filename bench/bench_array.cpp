// The compare-based reductions (MaxArray, MinArray, MaxMin1D) on 10^6
// doubles against numpy (max, min, and argmax with argmin, which also give
// the indices) on the same data, on one thread.
//
// numpy runs in a python3 child started once per round (popen) on a copy of
// the data written to a temporary file; each round times our kernels, then
// the child's, so both sides see the same load. Both sides report thread CPU
// time per call, each call repeated until 50 ms have passed.
#include "analysis/array/array_ops.h"
#include "analysis/array/extremes_internal.h"
#include "bench/ratio_line.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr int kRounds = 7;
constexpr std::int32_t kN = 1000000;

double ThreadSeconds() {
    timespec t;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

template <typename F>
double MicrosPerCall(F f) {
    long reps = 1;
    for (;;) {
        const double t0 = ThreadSeconds();
        for (long k = 0; k < reps; ++k) f();
        const double t = ThreadSeconds() - t0;
        if (t >= 0.05) return 1e6 * t / static_cast<double>(reps);
        reps *= t > 0.005 ? 2 : 10;
    }
}

const char kScript[] = R"(import sys, time
import numpy as np
x = np.fromfile(sys.argv[1], dtype=np.float64)
def per_call(f):
    reps = 1
    while True:
        t0 = time.thread_time()
        for _ in range(reps):
            f()
        t = time.thread_time() - t0
        if t >= 0.05:
            return 1e6 * t / reps
        reps *= 2 if t > 0.005 else 10
print("MaxArray", per_call(lambda: np.max(x)))
print("MinArray", per_call(lambda: np.min(x)))
print("MaxMin1D", per_call(lambda: (np.argmax(x), np.argmin(x))))
)";

}  // namespace

int main() {
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> x(kN);
    for (double& v : x) v = u(rng);

    char dir[] = "/tmp/vn-bench-array-XXXXXX";
    if (!mkdtemp(dir)) return 1;
    const std::string data = std::string(dir) + "/x.f64", script = std::string(dir) + "/ref.py";
    FILE* f = std::fopen(data.c_str(), "wb");
    if (!f) return 1;
    std::fwrite(x.data(), sizeof(double), x.size(), f);
    std::fclose(f);
    f = std::fopen(script.c_str(), "w");
    if (!f) return 1;
    std::fputs(kScript, f);
    std::fclose(f);

    using vn::extremes_internal::Engine;
    std::printf("scan engine: %s\n", vn::extremes_internal::DefaultEngine() == Engine::kAvx2 ? "256-bit" : "128-bit");
    std::map<std::string, std::vector<double>> ours, ref;
    bool haveRef = true;
    for (int round = 0; round < kRounds; ++round) {
        double sink = 0;
        ours["MaxArray"].push_back(MicrosPerCall([&] {
            double v;
            vn::LargestValue(x.data(), kN, &v);
            sink += v;
        }));
        ours["MinArray"].push_back(MicrosPerCall([&] {
            double v;
            vn::SmallestValue(x.data(), kN, &v);
            sink += v;
        }));
        ours["MaxMin1D"].push_back(MicrosPerCall([&] {
            double hi, lo;
            std::int32_t ihi, ilo;
            vn::MaxMinValues(x.data(), kN, &hi, &ihi, &lo, &ilo);
            sink += hi + lo + ihi + ilo;
        }));
        if (sink == 42.0) std::printf(" ");  // keeps the calls
        if (!haveRef) continue;
        // Debian's interpreter, which has Debian's numpy (a python3 earlier
        // on PATH may be another installation without it).
        const char* python = std::getenv("VN_PYTHON");
        const std::string command = std::string("OPENBLAS_NUM_THREADS=1 ") + (python ? python : "/usr/bin/python3") +
                                    " " + script + " " + data + " 2>/dev/null";
        FILE* p = popen(command.c_str(), "r");
        char name[64];
        double us;
        int got = 0;
        while (p && std::fscanf(p, "%63s %lf", name, &us) == 2) {
            ref[name].push_back(us);
            ++got;
        }
        if (p) pclose(p);
        if (got == 0) {
            std::printf("numpy is not available: no reference column\n");
            haveRef = false;
        }
    }
    for (const char* name : {"MaxArray", "MinArray", "MaxMin1D"}) {
        double best = ours[name][0];
        for (double t : ours[name]) best = t < best ? t : best;
        std::printf("%-10s n=%d ours %.1f us\n", name, kN, best);
    }
    if (haveRef) {
        vn_bench::PrintRatio("bench_array", "MaxArray/n=10^6", ours["MaxArray"], "numpy.max", ref["MaxArray"]);
        vn_bench::PrintRatio("bench_array", "MinArray/n=10^6", ours["MinArray"], "numpy.min", ref["MinArray"]);
        vn_bench::PrintRatio("bench_array", "MaxMin1D/n=10^6", ours["MaxMin1D"], "numpy.argmax+argmin",
                             ref["MaxMin1D"]);
    }
    std::remove(data.c_str());
    std::remove(script.c_str());
    rmdir(dir);
    return 0;
}
