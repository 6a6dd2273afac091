// LinEqs and InvMatrix against the reference LAPACK routines (dgesv, and
// dgetrf followed by dgetri) on one thread, with a ratio table at the end.
//
// The reference calls use column-major storage on the same buffer, i.e. they
// factorise A^T: the same amount of work, without the transposing copies the
// row-major LAPACKE wrappers would add. Both sides copy the matrix each
// iteration (LinEqs internally, the reference explicitly, as it overwrites).

#include "analysis/matrix/linalg.h"

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

BENCHMARK(LinEqsVn)->Arg(10)->Arg(100)->Arg(500);
BENCHMARK(InvMatrixVn)->Arg(10)->Arg(100)->Arg(500);

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

BENCHMARK(LinEqsLapack)->Arg(10)->Arg(100)->Arg(500);
BENCHMARK(InvMatrixLapack)->Arg(10)->Arg(100)->Arg(500);
#endif

// Console output as usual, plus the seconds per iteration of every run kept
// by (benchmark, size) for the ratio table. The table gives the ratio of
// thread CPU times too: on a loaded machine it is the steadier of the two.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) {
            if (r.error_occurred || r.run_type != Run::RT_Iteration || r.iterations == 0) continue;
            const std::string name = r.benchmark_name();
            const auto slash = name.find('/');
            if (slash == std::string::npos) continue;
            const double iterations = static_cast<double>(r.iterations);
            seconds[{name.substr(0, slash), std::atoi(name.c_str() + slash + 1)}] = {
                r.real_accumulated_time / iterations, r.cpu_accumulated_time / iterations};
        }
        ConsoleReporter::ReportRuns(runs);
    }
    // (real, cpu) seconds per iteration.
    std::map<std::pair<std::string, int>, std::pair<double, double>> seconds;
};

}  // namespace

int main(int argc, char** argv) {
#ifdef VN_HAVE_LAPACKE
    // The environment variable is read when the library loads; set it for
    // child processes and switch the loaded library explicitly as well.
    setenv("OPENBLAS_NUM_THREADS", "1", 1);
    openblas_set_num_threads(1);
#endif
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::printf("\n%-10s %5s %12s %12s %12s %12s\n", "kernel", "n", "vn [us]", "ref [us]",
                "ratio real", "ratio cpu");
    for (const char* kernel : {"LinEqs", "InvMatrix"}) {
        for (int n : {10, 100, 500}) {
            const auto vn_it = reporter.seconds.find({std::string(kernel) + "Vn", n});
            const auto ref_it = reporter.seconds.find({std::string(kernel) + "Lapack", n});
            if (vn_it == reporter.seconds.end() || ref_it == reporter.seconds.end()) continue;
            const auto& v = vn_it->second;
            const auto& r = ref_it->second;
            std::printf("%-10s %5d %12.2f %12.2f %12.2f %12.2f\n", kernel, n, v.first * 1e6,
                        r.first * 1e6, v.first / r.first, v.second / r.second);
        }
    }
    return 0;
}
