// Transform speed against FFTW 3 (FFTW_ESTIMATE plans), side by side.
//
// For n = 2^10, 2^16, 2^20 and each of complex, real-input and Hartley
// transforms this times:
//   vn        the public kernel (ComplexFFT, RealFFTCore, HartleyTransform),
//             on the engine the processor selects;
//   vn-avx2   the same transform forced onto the 256-bit engine;
//   vn-base   the same transform forced onto the baseline 128-bit engine;
//   fftw-in   FFTW in place (dft_1d, dft_r2c_1d, r2r_1d FFTW_DHT);
//   fftw-out  FFTW out of place.
// The kernels work in place, so their buffer is refreshed from a pristine
// copy every kRefresh iterations (the copy is included in their time, an
// overhead of about 1/kRefresh of a memcpy). FFTW in place is treated alike.
// The machine may be shared, so every benchmark is run in several rounds,
// all variants interleaved within a round; the summary printed at the end
// uses the fastest round of each and gives vn / best-FFTW ratios (lower is
// better for vn).
#include "analysis/dsp/fft.h"
#include "analysis/dsp/fft_internal.h"
#include "bench/ratio_line.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef VN_HAVE_FFTW
#include <fftw3.h>
#endif

namespace {

constexpr int kRefresh = 16;
constexpr int kRounds = 7;
const int kLogSizes[] = {10, 16, 20};

std::vector<double> RandomVector(std::size_t n, unsigned seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> v(n);
    for (double& x : v) x = u(rng);
    return v;
}

enum class Kind { kComplex, kReal, kHartley };
const char* KindName(Kind k) {
    switch (k) {
        case Kind::kComplex:
            return "complex";
        case Kind::kReal:
            return "real";
        default:
            return "hartley";
    }
}

// engine < 0: the public kernel (default engine); otherwise forced.
void RunVn(benchmark::State& state, Kind kind, int engine) {
    const bool baseline = engine >= 0;
    const std::int32_t n = static_cast<std::int32_t>(state.range(0));
    const std::vector<double> src_re = RandomVector(n, 1), src_im = RandomVector(n, 2);
    std::vector<double> re(src_re), im(src_im);
    const vn::fft_internal::Engine base = static_cast<vn::fft_internal::Engine>(engine < 0 ? 0 : engine);
    int k = 0;
    for (auto _ : state) {
        if (++k == kRefresh) {
            k = 0;
            std::memcpy(re.data(), src_re.data(), sizeof(double) * n);
            std::memcpy(im.data(), src_im.data(), sizeof(double) * n);
        }
        switch (kind) {
            case Kind::kComplex:
                if (baseline)
                    vn::fft_internal::ComplexForward(base, re.data(), im.data(), n);
                else
                    vn::ComplexFFT(re.data(), im.data(), n);
                break;
            case Kind::kReal:
                if (baseline)
                    vn::fft_internal::RealForward(base, re.data(), n);
                else
                    vn::RealFFTCore(re.data(), n, 0);
                break;
            case Kind::kHartley:
                if (baseline)
                    vn::fft_internal::Hartley(base, re.data(), n);
                else
                    vn::HartleyTransform(re.data(), n);
                break;
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

#ifdef VN_HAVE_FFTW
void RunFftw(benchmark::State& state, Kind kind, bool in_place) {
    const int n = static_cast<int>(state.range(0));
    const std::vector<double> src = RandomVector(2 * (n + 2), 3);
    double* in = fftw_alloc_real(2 * (n + 2));
    double* out = in_place ? in : fftw_alloc_real(2 * (n + 2));
    fftw_plan plan = nullptr;
    switch (kind) {
        case Kind::kComplex:
            plan = fftw_plan_dft_1d(n, reinterpret_cast<fftw_complex*>(in), reinterpret_cast<fftw_complex*>(out),
                                    FFTW_FORWARD, FFTW_ESTIMATE);
            break;
        case Kind::kReal:
            plan = fftw_plan_dft_r2c_1d(n, in, reinterpret_cast<fftw_complex*>(out), FFTW_ESTIMATE);
            break;
        case Kind::kHartley:
            plan = fftw_plan_r2r_1d(n, in, out, FFTW_DHT, FFTW_ESTIMATE);
            break;
    }
    // Planning with FFTW_ESTIMATE leaves the arrays alone; fill afterwards.
    std::memcpy(in, src.data(), sizeof(double) * src.size());
    int k = 0;
    for (auto _ : state) {
        if (in_place && ++k == kRefresh) {
            k = 0;
            std::memcpy(in, src.data(), sizeof(double) * src.size());
        }
        fftw_execute(plan);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    fftw_destroy_plan(plan);
    if (out != in) fftw_free(out);
    fftw_free(in);
}
#endif

// Keeps every round of every benchmark; prints the fastest-round table and
// the ratio lines (reference: the faster of FFTW in and out of place, round
// by round).
class RatioReporter : public vn_bench::RoundsReporter {
public:
    void Finalize() override {
        RoundsReporter::Finalize();
        std::printf("\nFastest round, microseconds per transform (CPU time); ratio = vn / best FFTW\n");
        std::printf("%-8s %8s %10s %10s %10s %10s %10s %7s %7s %7s\n", "kind", "n", "vn", "vn-avx2", "vn-base",
                    "fftw-in", "fftw-out", "ratio", "avx2", "base");
        for (Kind kind : {Kind::kComplex, Kind::kReal, Kind::kHartley}) {
            for (int lg : kLogSizes) {
                const std::string suffix = "/" + std::to_string(1 << lg);
                const std::string kn = KindName(kind);
                const double vn = Best(kn + "/vn" + suffix);
                const double avx2 = Best(kn + "/vn-avx2" + suffix);
                const double base = Best(kn + "/vn-base" + suffix);
                const double fin = Best(kn + "/fftw-in" + suffix);
                const double fout = Best(kn + "/fftw-out" + suffix);
                const double fbest = std::min(fin, fout);
                std::printf("%-8s %8d %10.2f %10.2f %10.2f %10.2f %10.2f %7.2f %7.2f %7.2f\n", kn.c_str(), 1 << lg,
                            vn, avx2, base, fin, fout, vn / fbest, avx2 / fbest, base / fbest);
            }
        }
        for (Kind kind : {Kind::kComplex, Kind::kReal, Kind::kHartley})
            for (int lg : kLogSizes) {
                const std::string suffix = "/" + std::to_string(1 << lg);
                const std::string kn = KindName(kind);
                const std::vector<double>& in = Of(kn + "/fftw-in" + suffix);
                const std::vector<double>& out = Of(kn + "/fftw-out" + suffix);
                std::vector<double> ref;
                for (std::size_t k = 0; k < std::min(in.size(), out.size()); ++k) ref.push_back(std::min(in[k], out[k]));
                vn_bench::PrintRatio("bench_fft", kn + "/2^" + std::to_string(lg), Of(kn + "/vn" + suffix), "fftw",
                                     ref);
                vn_bench::PrintRatio("bench_fft", kn + "/2^" + std::to_string(lg) + "/base",
                                     Of(kn + "/vn-base" + suffix), "fftw", ref);
            }
    }

private:
    double Best(const std::string& name) const {
        const std::vector<double>& r = Of(name);
        return r.empty() ? NAN : *std::min_element(r.begin(), r.end());
    }
};

void Register() {
    for (int round = 0; round < kRounds; ++round)
    for (int lg : kLogSizes) {
        for (Kind kind : {Kind::kComplex, Kind::kReal, Kind::kHartley}) {
            const std::string kn = KindName(kind);
            auto setup = [](benchmark::internal::Benchmark* b, int lg2) {
                b->Arg(1 << lg2)->Unit(benchmark::kMicrosecond);
            };
            setup(benchmark::RegisterBenchmark((kn + "/vn").c_str(),
                                               [kind](benchmark::State& s) { RunVn(s, kind, -1); }),
                  lg);
            setup(benchmark::RegisterBenchmark((kn + "/vn-avx2").c_str(),
                                               [kind](benchmark::State& s) { RunVn(s, kind, 1); }),
                  lg);
            setup(benchmark::RegisterBenchmark((kn + "/vn-base").c_str(),
                                               [kind](benchmark::State& s) { RunVn(s, kind, 0); }),
                  lg);
#ifdef VN_HAVE_FFTW
            setup(benchmark::RegisterBenchmark((kn + "/fftw-in").c_str(),
                                               [kind](benchmark::State& s) { RunFftw(s, kind, true); }),
                  lg);
            setup(benchmark::RegisterBenchmark((kn + "/fftw-out").c_str(),
                                               [kind](benchmark::State& s) { RunFftw(s, kind, false); }),
                  lg);
#endif
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    Register();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    using vn::fft_internal::Engine;
    const Engine e = vn::fft_internal::DefaultEngine();
    std::printf("engine: %s\n", e == Engine::kAvx512 ? "512-bit" : e == Engine::kAvx2 ? "256-bit" : "baseline 128-bit");
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
