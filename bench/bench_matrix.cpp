// LinEqs, InvMatrix, Determinant and LUDecompose against the reference
// LAPACK routines (dgesv; dgetrf followed by dgetri; dgetrf) on one thread,
// in interleaved rounds, with a ratio table at the end.
//
// The reference calls use column-major storage on the same buffer, i.e. they
// factorise A^T: the same amount of work, without the transposing copies the
// row-major LAPACKE wrappers would add. Both sides copy the matrix each
// iteration (LinEqs internally, the reference explicitly, as it overwrites).

#include "analysis/matrix/linalg.h"
#include "bench/ratio_line.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#ifdef VN_HAVE_LAPACKE
#include <lapacke.h>
extern "C" void openblas_set_num_threads(int);
#endif

namespace {

std::vector<double> RandomMatrix(int rows, int cols, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    std::vector<double> a(static_cast<std::size_t>(rows) * cols);
    for (double& v : a) v = dist(gen);
    return a;
}

void LinEqsVn(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1), y = RandomMatrix(n, 1, 2);
    std::vector<double> x(n);
    for (auto _ : state) {
        if (vn::LinEqs(a.data(), y.data(), n, x.data()) != vn::kOk) state.SkipWithError("LinEqs failed");
        benchmark::DoNotOptimize(x.data());
    }
}

void InvMatrixVn(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1);
    std::vector<double> b(a.size());
    for (auto _ : state) {
        if (vn::InvMatrix(a.data(), n, b.data()) != vn::kOk) state.SkipWithError("InvMatrix failed");
        benchmark::DoNotOptimize(b.data());
    }
}

void DeterminantVn(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1);
    double det = 0;
    for (auto _ : state) {
        if (vn::Determinant(a.data(), n, &det) != vn::kOk) state.SkipWithError("Determinant failed");
        benchmark::DoNotOptimize(det);
    }
}

void LUDecomposeVn(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1);
    std::vector<double> b(a.size());
    std::vector<std::int32_t> p(n);
    std::int32_t parity = 0;
    for (auto _ : state) {
        b = a;
        if (vn::LUDecompose(b.data(), n, p.data(), &parity) != vn::kOk) state.SkipWithError("LUDecompose failed");
        benchmark::DoNotOptimize(b.data());
    }
}

#ifdef VN_HAVE_LAPACKE
void LinEqsLapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1), y = RandomMatrix(n, 1, 2);
    std::vector<double> work(a.size()), x(n);
    std::vector<lapack_int> ipiv(n);
    for (auto _ : state) {
        work = a;
        x = y;
        if (LAPACKE_dgesv(LAPACK_COL_MAJOR, n, 1, work.data(), n, ipiv.data(), x.data(), n) != 0)
            state.SkipWithError("dgesv failed");
        benchmark::DoNotOptimize(x.data());
    }
}

void InvMatrixLapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1);
    std::vector<double> b(a.size());
    std::vector<lapack_int> ipiv(n);
    for (auto _ : state) {
        b = a;
        if (LAPACKE_dgetrf(LAPACK_COL_MAJOR, n, n, b.data(), n, ipiv.data()) != 0 ||
            LAPACKE_dgetri(LAPACK_COL_MAJOR, n, b.data(), n, ipiv.data()) != 0)
            state.SkipWithError("dgetrf/dgetri failed");
        benchmark::DoNotOptimize(b.data());
    }
}

void DeterminantLapack(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    const auto a = RandomMatrix(n, n, 1);
    std::vector<double> b(a.size());
    std::vector<lapack_int> ipiv(n);
    for (auto _ : state) {
        b = a;
        if (LAPACKE_dgetrf(LAPACK_COL_MAJOR, n, n, b.data(), n, ipiv.data()) < 0) state.SkipWithError("dgetrf failed");
        double det = 1;
        for (int i = 0; i < n; ++i) det *= ipiv[i] != i + 1 ? -b[static_cast<std::size_t>(i) * n + i]
                                                             : b[static_cast<std::size_t>(i) * n + i];
        benchmark::DoNotOptimize(det);
    }
}
#endif

const int kSizes[] = {10, 100, 500, 1000};
constexpr int kRounds = 5;
const char* const kKernels[] = {"LinEqs", "InvMatrix", "Determinant", "LUDecompose"};

void Register() {
    using Fn = void (*)(benchmark::State&);
    struct Pair {
        const char* kernel;
        Fn ours;
        Fn ref;
    };
#ifdef VN_HAVE_LAPACKE
    const Pair pairs[] = {{"LinEqs", LinEqsVn, LinEqsLapack},
                          {"InvMatrix", InvMatrixVn, InvMatrixLapack},
                          {"Determinant", DeterminantVn, DeterminantLapack},
                          {"LUDecompose", LUDecomposeVn, DeterminantLapack}};  // dgetrf alone
#else
    const Pair pairs[] = {{"LinEqs", LinEqsVn, nullptr},
                          {"InvMatrix", InvMatrixVn, nullptr},
                          {"Determinant", DeterminantVn, nullptr},
                          {"LUDecompose", LUDecomposeVn, nullptr}};
#endif
    for (int round = 0; round < kRounds; ++round)
        for (int n : kSizes)
            for (const Pair& p : pairs) {
                // Few iterations for the large sizes: a round stays short.
                const double min_time = n >= 500 ? 0.05 : 0.02;
                benchmark::RegisterBenchmark((std::string(p.kernel) + "/vn").c_str(), p.ours)
                    ->Arg(n)->MinTime(min_time);
                if (p.ref)
                    benchmark::RegisterBenchmark((std::string(p.kernel) + "/lapack").c_str(), p.ref)
                        ->Arg(n)->MinTime(min_time);
            }
}

}  // namespace

int main(int argc, char** argv) {
#ifdef VN_HAVE_LAPACKE
    // The environment variable is read when the library loads; set it for
    // child processes and switch the loaded library explicitly as well.
    setenv("OPENBLAS_NUM_THREADS", "1", 1);
    openblas_set_num_threads(1);
#endif
    Register();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    vn_bench::RoundsReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    for (const char* kernel : kKernels)
        for (int n : kSizes) {
            const std::string suffix = "/" + std::to_string(n);
            vn_bench::PrintRatio("bench_matrix", std::string(kernel) + "/n=" + std::to_string(n),
                                 reporter.Of(std::string(kernel) + "/vn" + suffix),
                                 std::string(kernel) == "LinEqs"        ? "dgesv"
                                 : std::string(kernel) == "InvMatrix"   ? "dgetrf+dgetri"
                                                                        : "dgetrf",
                                 reporter.Of(std::string(kernel) + "/lapack" + suffix));
        }
    return 0;
}
