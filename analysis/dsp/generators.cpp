#include "analysis/dsp/generators.h"

#include <cmath>
#include <limits>
#include <cstdint>

// Products and sums are rounded exactly as written (no fused multiply-add).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC optimize("fp-contract=off")
#elif defined(__clang__)
#pragma clang fp contract(off)
#endif

namespace vn {

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;
constexpr double kDegToRad = 0.017453292519943295;
constexpr double kOver180 = 1.0 / 180.0;
constexpr double kOver360 = 0.002777777777777778;

// ---------------------------------------------------------------------------
// Noise generator state: process-wide, no lock.
constexpr std::int32_t kInitS1 = 1234;
constexpr std::int32_t kInitS2 = 2345;
constexpr std::int32_t kInitS3 = 3456;

std::int32_t g_s1 = kInitS1;
std::int32_t g_s2 = kInitS2;
std::int32_t g_s3 = kInitS3;

// The last non-negative seed given to UniformNoise and to WhiteNoiseGen.
// Kept as the generator always has; nothing reads them.
std::int32_t g_uniform_seed = 0;
std::int32_t g_white_seed = 0;

// Signed 32-bit product with two's-complement wrap-around, as the generator
// is defined (only seeds above 12,558,383 can overflow, on the first step).
std::int32_t Mul32(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// Phase in degrees reduced into [0, 360).
double ReduceDegrees(double p) {
    double q = std::fmod(p, 360.0);
    if (q < 0.0) q += 360.0;
    // A tiny negative remainder plus 360 rounds to 360 itself.
    if (q >= 360.0) q = 0.0;
    return q;
}

// Shared loop of the shape-driven waves.
template <class Shape>
AnalysisStatus RunWave(std::int32_t n, double amp, double f, double* phase, double* x, Shape shape) {
    if (n < 1) return kErrSamplesBelowOne;
    const double step = f * 360.0;
    double p = *phase;
    for (std::int32_t i = 0; i < n; ++i) {
        x[i] = amp * shape(p);
        p = p + step;
    }
    *phase = ReduceDegrees(p);
    return kOk;
}

}  // namespace

// ---------------------------------------------------------------------------
// Deterministic patterns

AnalysisStatus ImpulsePattern(std::int32_t n, double amp, std::int32_t index, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (index < 0 || index >= n) return kErrIndexRange;
    for (std::int32_t i = 0; i < n; ++i) x[i] = 0.0;
    x[index] = amp;
    return kOk;
}

AnalysisStatus PulsePattern(std::int32_t n, double amp, std::int32_t delay, std::int32_t width, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (delay < 0 || width < 0 || static_cast<std::int64_t>(delay) + width > n) return kErrDelayWidth;
    for (std::int32_t i = 0; i < n; ++i) x[i] = (i >= delay && i - delay < width) ? amp : 0.0;
    return kOk;
}

AnalysisStatus RampPattern(std::int32_t n, double first, double last, double* x) {
    if (n < 2) return kErrSamplesBelowTwo;
    const double step = (last - first) / (n - 1);
    x[0] = first;
    for (std::int32_t i = 1; i < n; ++i) x[i] = x[i - 1] + step;
    return kOk;
}

AnalysisStatus TrianglePattern(std::int32_t n, double amp, double* x) {
    if (n < 2) return kErrSamplesBelowTwo;
    const std::int32_t half = n / 2;
    const double step = amp / half;
    const bool odd = (n % 2) != 0;
    x[0] = 0.0;
    if (odd) x[n - 1] = 0.0;
    for (std::int32_t i = 1; i <= half; ++i) {
        x[i] = x[i - 1] + step;
        x[odd ? n - 1 - i : n - i] = x[i];
    }
    return kOk;
}

AnalysisStatus SinePatternGen(std::int32_t n, double amp, double phase, double cycles, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (cycles > n) return kErrCycles;
    const double step = (cycles / n) * kTwoPi;
    double theta = phase * kDegToRad;
    for (std::int32_t i = 0; i < n; ++i) {
        x[i] = amp * std::sin(theta);
        theta = theta + step;
    }
    return kOk;
}

AnalysisStatus ChirpPattern(std::int32_t n, double amp, double f1, double f2, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    const double c = (f2 - f1) / n;
    for (std::int32_t i = 0; i < n; ++i) {
        const double t = static_cast<double>(i);
        x[i] = amp * std::sin(t * (c * kPi * t + f1 * kTwoPi));
    }
    return kOk;
}

AnalysisStatus SincPattern(std::int32_t n, double amp, double delay, double dt, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!(dt > 0.0)) return kErrDtNotPositive;
    for (std::int32_t i = 0; i < n; ++i) {
        const double t = (i * dt - delay) * kPi;
        x[i] = (t == 0.0) ? amp : amp * std::sin(t) / t;
    }
    return kOk;
}

// ---------------------------------------------------------------------------
// Periodic waves

double SawtoothShape(double p) {
    const double q = ReduceDegrees(p);
    const double v = q * kOver180;
    return q < 180.0 ? v : v - 2.0;
}

double TriangleShape(double p) {
    const double v = ReduceDegrees(p) * kOver180;
    if (v < 0.5) return 2.0 * v;
    if (v < 1.5) return 2.0 * (1.0 - v);
    return 2.0 * (v - 2.0);
}

double SquareShape(double p, double duty) { return ReduceDegrees(p) < duty * 360.0 ? 1.0 : -1.0; }

AnalysisStatus SineWaveGen(std::int32_t n, double amp, double f, double* phase, double* x) {
    return RunWave(n, amp, f, phase, x, [](double p) { return std::sin(p * kDegToRad); });
}

AnalysisStatus SawtoothWaveGen(std::int32_t n, double amp, double f, double* phase, double* x) {
    return RunWave(n, amp, f, phase, x, [](double p) { return SawtoothShape(p); });
}

AnalysisStatus TriangleWaveGen(std::int32_t n, double amp, double f, double* phase, double* x) {
    return RunWave(n, amp, f, phase, x, [](double p) { return TriangleShape(p); });
}

AnalysisStatus SquareWaveGen(std::int32_t n, double amp, double f, double duty_cycle, double* phase, double* x) {
    double d = duty_cycle * 0.01;
    if (d < 0.0) d = 0.0;
    if (d > 1.0) d = 1.0;
    return RunWave(n, amp, f, phase, x, [d](double p) { return SquareShape(p, d); });
}

AnalysisStatus ArbitraryWaveGen(std::int32_t n, double amp, double f, const double* table, std::int32_t m,
                                std::int32_t interp, double* phase, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    const double md = static_cast<double>(m);
    const double step = f * md;
    double u = md * kOver360 * *phase;  // phase in table units
    for (std::int32_t i = 0; i < n; ++i) {
        double v = 0.0;
        if (m >= 1) {
            double r = std::fmod(u, md);
            if (r < 0.0) r += md;
            if (r >= md) r = 0.0;  // a tiny negative remainder plus m rounds to m
            // A NaN or infinite phase or frequency leaves no position in the
            // table: the sample is NaN, and no index is formed from it.
            const std::int32_t k = r == r ? static_cast<std::int32_t>(r) : -1;
            if (k < 0) {
                v = std::numeric_limits<double>::quiet_NaN();
            } else if (interp == 1) {
                const std::int32_t k1 = (k + 1) % m;
                v = table[k] + (r - std::floor(r)) * (table[k1] - table[k]);
            } else {
                v = table[k];
            }
        }
        x[i] = amp * v;
        u = u + step;
    }
    double p = *phase;
    if (m != 0) p = u * 360.0 / md;
    *phase = ReduceDegrees(p);
    return kOk;
}

// ---------------------------------------------------------------------------
// Noise

void NoiseReseed(std::int32_t seed) {
    g_s1 = seed == 0 ? 32767 : seed;
    // The mask can leave s2 (and then s3) at zero for good; that is the
    // generator's defined behaviour.
    g_s2 = Mul32(g_s1, 8191) & 16383;
    g_s3 = Mul32(g_s2, 8191) & 16383;
}

std::int32_t NoiseNext() {
    g_s1 = Mul32(171, g_s1) % 30269;
    g_s2 = Mul32(172, g_s2) % 30307;
    g_s3 = Mul32(170, g_s3) % 30323;
    const double r = g_s2 * 3.2995677566238825e-5 + g_s1 * 3.3037100664045725e-5 + g_s3 * 3.297826732183491e-5;
    return static_cast<std::int32_t>((r - std::trunc(r)) * 32768.0);
}

void ResetNoiseGenerator() {
    g_s1 = kInitS1;
    g_s2 = kInitS2;
    g_s3 = kInitS3;
    g_uniform_seed = 0;
    g_white_seed = 0;
}

AnalysisStatus UniformNoise(std::int32_t n, std::int32_t seed, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (seed >= 0) {
        g_uniform_seed = seed;
        NoiseReseed(seed);
    }
    for (std::int32_t i = 0; i < n; ++i) x[i] = NoiseNext() * 3.051850947599719e-5;
    return kOk;
}

AnalysisStatus WhiteNoiseGen(std::int32_t n, double amp, std::int32_t seed, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (seed >= 0) {
        g_white_seed = seed;
        NoiseReseed(seed);
    }
    const double scale = amp * 6.103515625e-5;
    for (std::int32_t i = 0; i < n; ++i) x[i] = (NoiseNext() - 16383) * scale;
    return kOk;
}

AnalysisStatus GaussNoiseGen(std::int32_t n, double sdev, std::int32_t seed, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (seed >= 0) NoiseReseed(seed);
    const double scale = sdev * 3.0517578125e-5;
    for (std::int32_t i = 0; i < n; ++i) {
        std::int32_t sum = 0;
        for (int k = 0; k < 12; ++k) sum += NoiseNext();
        x[i] = (sum - 196596) * scale;
    }
    return kOk;
}

}  // namespace vn
