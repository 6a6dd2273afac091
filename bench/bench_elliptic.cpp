// Elliptic IIR design against scipy.signal.ellip, side by side in one run.
//
// Case: order-8 bandpass, 0.5 dB ripple, 60 dB attenuation, passband
// 100-200 Hz at fs = 1000 (17 coefficients in a and b). Each round times
// ElpCoefDesign (process CPU time, best of a batch), then asks Python for
// scipy's time on the same design; rounds interleave so machine noise hits
// both. Also prints the largest coefficient difference to scipy's design.
#include "analysis/filter/iir.h"
#include "ratio_line.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <vector>

#ifndef VN_BENCH_SOURCE_DIR
#define VN_BENCH_SOURCE_DIR "bench"
#endif

namespace {

constexpr int kRounds = 7, kOrder = 8, kM = 2 * kOrder + 1;

double CpuSeconds() {
    timespec ts;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return ts.tv_sec + ts.tv_nsec * 1e-9;
}

void Design(std::vector<double>& a, std::vector<double>& b) {
    vn::ElpCoefDesign(2, kOrder, 1000, 100, 200, 0.5, 60, a.data(), kM, b.data(), kM);
    benchmark::DoNotOptimize(a.data());
    benchmark::DoNotOptimize(b.data());
}

// Microseconds per design, best of 5 batches of at least 50 ms.
double TimeOurs(std::vector<double>& a, std::vector<double>& b) {
    Design(a, b);
    int calls = 0;
    const double start = CpuSeconds();
    while (CpuSeconds() - start < 0.05) Design(a, b), ++calls;
    double best = 1e300;
    for (int r = 0; r < 5; ++r) {
        const double t0 = CpuSeconds();
        for (int i = 0; i < calls; ++i) Design(a, b);
        best = std::min(best, (CpuSeconds() - t0) / calls);
    }
    return best * 1e6;
}

// scipy's time per design (best of 5 batches) and its a and b.
const char* kScript =
    "import time,sys\n"
    "from scipy import signal\n"
    "d=lambda: signal.ellip(8,0.5,60,[100,200],btype='bandpass',fs=1000)\n"
    "b,a=d()\n"
    "s=time.process_time();c=0\n"
    "while time.process_time()-s<0.05: d();c+=1\n"
    "best=1e9\n"
    "for _ in range(5):\n"
    "  t=time.process_time()\n"
    "  for _ in range(c): d()\n"
    "  best=min(best,(time.process_time()-t)/c)\n"
    "print(best*1e6,*a,*b)\n";

}  // namespace

int main() {
    std::vector<double> a(kM), b(kM);
    std::vector<double> ours_us, ref_us;
    double diff = 0;
    for (int round = 0; round < kRounds; ++round) {
        ours_us.push_back(TimeOurs(a, b));
        setenv("VN_ELLIP_SCRIPT", kScript, 1);
        FILE* q = popen("OPENBLAS_NUM_THREADS=1 /usr/bin/python3 -c \"$VN_ELLIP_SCRIPT\"", "r");
        double us = NAN, ra[kM], rb[kM];
        bool ok = q && std::fscanf(q, "%lf", &us) == 1;
        for (int i = 0; ok && i < kM; ++i) ok = std::fscanf(q, "%lf", &ra[i]) == 1;
        for (int i = 0; ok && i < kM; ++i) ok = std::fscanf(q, "%lf", &rb[i]) == 1;
        if (q) pclose(q);
        if (!ok) {
            std::fprintf(stderr, "python3 with scipy did not answer\n");
            return 1;
        }
        for (int i = 0; i < kM; ++i) diff = std::max({diff, std::fabs(ra[i] - a[i]), std::fabs(rb[i] - b[i])});
        ref_us.push_back(us);
    }
    std::printf("elliptic bandpass order %d: max |scipy - ours| %.3g over a and b\n", kOrder, diff);
    vn_bench::PrintRatio("bench_elliptic", "bp8-design", ours_us, "scipy.signal.ellip", ref_us);
    return 0;
}
