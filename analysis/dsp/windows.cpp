#include "analysis/dsp/windows.h"

#include "analysis/dsp/fft_internal.h"

#include <cmath>
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

double Cos(double a) {
    double s, c;
    fft_internal::SinCos(a, &s, &c);
    return c;
}

double Sin(double a) {
    double s, c;
    fft_internal::SinCos(a, &s, &c);
    return s;
}

// Number of mirrored pairs (i, n-i) with i >= 1; for even n the middle
// element n/2 is not part of any pair.
std::int32_t PairCount(std::int32_t n) { return (n % 2 == 0) ? n / 2 - 1 : (n - 1) / 2; }

// Three-term cosine sum a0 - a1 cos(theta) + a2 cos(2 theta), written as
// b0 + c (b2 c - a1) with cos(2 theta) = 2c^2 - 1 (b0 = a0 - a2, b2 = 2 a2).
// first is the stored value of a0 - a1 + a2 for element 0.
struct ThreeTerm {
    double b0, b2, a1, first;
};

constexpr ThreeTerm kBlackman{0.33999999999999997, 0.16, 0.5, -1.3877787807814457e-17};
constexpr ThreeTerm kExactBlackman{0.3497420464316423, 0.15369733447979364, 0.4965606190885641,
                                   0.006878761822871851};
constexpr ThreeTerm kBlackmanHarris{0.34401, 0.15844, 0.49755, 0.004900000000000002};
constexpr ThreeTerm kFlatTop{0.08302489390000001, 0.3960779326, 0.5208971735, -0.041794346999999954};

AnalysisStatus ThreeTermWindow(double* x, std::int32_t n, const ThreeTerm& t) {
    if (n < 1) return kErrSamplesBelowOne;
    x[0] *= t.first;
    const std::int32_t count = PairCount(n);
    const double step = kTwoPi / n;
    double theta = 0.0;
    for (std::int32_t i = 1; i <= count; ++i) {
        theta += step;
        const double c = Cos(theta);
        const double w = t.b0 + c * (t.b2 * c - t.a1);
        x[i] *= w;
        x[n - i] *= w;
    }
    return kOk;
}

// ln and exp in 80-bit precision, rounded once to double. The x87 routines of
// the native and the Windows runtimes differ only far below a double's last
// place, so the rounded values agree unless one lands almost exactly on a
// rounding boundary.
double LogExtended(double v) { return static_cast<double>(std::log(static_cast<long double>(v))); }
double ExpExtended(double v) { return static_cast<double>(std::exp(static_cast<long double>(v))); }

}  // namespace

AnalysisStatus TriangleWindow(double* x, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    x[0] = 0.0;
    const std::int32_t count = PairCount(n);
    if (count < 1) return kOk;  // n <= 2: h may be 0
    const double step = 1.0 / (n / 2);
    double w = step;
    for (std::int32_t i = 1; i <= count; ++i) {
        x[i] *= w;
        x[n - i] *= w;
        w += step;
    }
    return kOk;
}

AnalysisStatus HanningWindow(double* x, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    x[0] = 0.0;
    const std::int32_t count = PairCount(n);
    const double step = kPi / n;
    double phi = 0.0;
    for (std::int32_t i = 1; i <= count; ++i) {
        phi += step;
        const double s = Sin(phi);
        const double w = s * s;
        x[i] *= w;
        x[n - i] *= w;
    }
    return kOk;
}

AnalysisStatus HammingWindow(double* x, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    x[0] *= 0.08;
    const std::int32_t count = PairCount(n);
    const double step = kTwoPi / n;
    double theta = 0.0;
    for (std::int32_t i = 1; i <= count; ++i) {
        theta += step;
        const double w = 0.54 - 0.46 * Cos(theta);
        x[i] *= w;
        x[n - i] *= w;
    }
    return kOk;
}

AnalysisStatus BlackmanWindow(double* x, std::int32_t n) { return ThreeTermWindow(x, n, kBlackman); }
AnalysisStatus ExactBlackmanWindow(double* x, std::int32_t n) { return ThreeTermWindow(x, n, kExactBlackman); }
AnalysisStatus BlackmanHarrisWindow(double* x, std::int32_t n) { return ThreeTermWindow(x, n, kBlackmanHarris); }
AnalysisStatus FlatTopWindow(double* x, std::int32_t n) { return ThreeTermWindow(x, n, kFlatTop); }

double BesselI0(double z) {
    const double z2 = z * z;
    double sum = 1.0, term = 1.0, k2 = 0.0;
    for (int k = 0; k < 25; ++k) {
        k2 += 2.0;
        term = term * z2 / (k2 * k2);
        sum += term;
        if (term <= 1e-8) break;
    }
    return sum;
}

AnalysisStatus KaiserWindow(double* x, std::int32_t n, double beta) {
    if (n < 1) return kErrSamplesBelowOne;
    const double i0b = BesselI0(beta);
    x[0] *= BesselI0(0.0) / i0b;
    const std::int32_t count = PairCount(n);
    const double s = 2.0 / n;
    for (std::int32_t i = 1; i <= count; ++i) {
        const double t = 1.0 - i * s;  // from i, not accumulated
        const double w = BesselI0(beta * std::sqrt(1.0 - t * t)) / i0b;
        x[i] *= w;
        x[n - i] *= w;
    }
    return kOk;
}

AnalysisStatus GeneralCosineWindow(double* x, std::int32_t n, const double* a, std::int32_t m) {
    if (n < 1 || m < 1) return kErrSamplesBelowOne;
    double first = a[0];
    for (std::int32_t k = 1; k < m; ++k) first = (k % 2 != 0) ? first - a[k] : first + a[k];
    x[0] *= first;

    const std::int32_t count = (n + 1) / 2 - 1;
    const double step = kTwoPi / n;
    double theta = 0.0;
    for (std::int32_t i = 1; i <= count; ++i) {
        theta += step;
        // The multiples k*theta by repeated addition of theta.
        double w = a[0], angle = 0.0;
        for (std::int32_t k = 1; k < m; ++k) {
            angle += theta;
            const double term = a[k] * Cos(angle);
            w = (k % 2 != 0) ? w - term : w + term;
        }
        x[i] *= w;
        x[n - i] *= w;
    }
    if (n % 2 == 0) {
        // At theta = pi every (-1)^k cos(k pi) is +1.
        double middle = a[0];
        for (std::int32_t k = 1; k < m; ++k) middle += a[k];
        x[n / 2] *= middle;
    }
    return kOk;
}

AnalysisStatus CosineTaperWindow(double* x, std::int32_t n) {
    const std::int32_t k = n / 10;
    if (k < 1) return kOk;
    x[0] = 0.0;
    x[n - 1] = 0.0;
    const double step = kPi / (2 * k);
    double phi = 0.0;
    for (std::int32_t i = 1; i < k; ++i) {
        phi += step;
        const double s = Sin(phi);
        const double w = s * s;
        x[i] *= w;
        x[n - 1 - i] *= w;
    }
    return kOk;
}

AnalysisStatus ExponentialWindow(double* x, std::int32_t n, double final_value) {
    if (n < 2) return kErrSamplesBelowTwo;
    const double step = LogExtended(final_value) / (n - 1);
    double e = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        x[i] *= ExpExtended(e);
        e += step;
    }
    return kOk;
}

AnalysisStatus ForceWindow(double* x, std::int32_t n, double duty) {
    if (n < 2) return kErrSamplesBelowTwo;
    // Clamped in double before the conversion, so that no value of duty
    // (huge, infinite or NaN) reaches an out-of-range integer conversion.
    const double v = std::trunc(n * (duty * 0.01));
    const std::int32_t k = (v >= n) ? n : (v > 0.0) ? static_cast<std::int32_t>(v) : 0;
    for (std::int32_t i = k; i < n; ++i) x[i] = 0.0;
    return kOk;
}

// --- Code tables -----------------------------------------------------------

namespace {

constexpr double kBlackmanHarris4[] = {0.35875, 0.48829, 0.14128, 0.01168};
constexpr double kBlackmanHarris7[] = {0.27105140069342415,  0.43329793923448606,   0.21812299954311062,
                                       0.0659254463880309,   0.010811742098372268,  0.0007765848252250934,
                                       1.3887217350903198e-05};

}  // namespace

WindowConstants ScaledWindowConstants(std::int32_t window_type) {
    switch (window_type) {
        case 1: return {1.5, 0.5};
        case 2: return {1.36, 0.54};
        case 3: return {1.708538, 0.42323};
        case 4: return {1.693699, 0.42659071367};
        case 5: return {1.726757, 0.42};
        case 6: return {2.965606, 0.28106388};
        case 7: return {2.004353, 0.35875};
        case 8: return {2.631905, 0.27105140069342415};
        default: return {1.0, 1.0};
    }
}

AnalysisStatus ApplyScaledWindowType(double* x, std::int32_t n, std::int32_t window_type) {
    switch (window_type) {
        case 1: return HanningWindow(x, n);
        case 2: return HammingWindow(x, n);
        case 3: return BlackmanHarrisWindow(x, n);
        case 4: return ExactBlackmanWindow(x, n);
        case 5: return BlackmanWindow(x, n);
        case 6: return FlatTopWindow(x, n);
        case 7: return GeneralCosineWindow(x, n, kBlackmanHarris4, 4);
        case 8: return GeneralCosineWindow(x, n, kBlackmanHarris7, 7);
        default: return kOk;
    }
}

AnalysisStatus ScaledWindowCore(double* x, std::int32_t n, std::int32_t window_type, double* enbw,
                                double* coherent_gain) {
    if (n < 0) return kErrSamplesNegative;
    // An empty record has nothing to window; the constants are still given.
    if (n > 0) {
        const AnalysisStatus st = ApplyScaledWindowType(x, n, window_type);
        if (st < 0) return st;
    }
    const WindowConstants k = ScaledWindowConstants(window_type);
    *enbw = k.enbw;
    *coherent_gain = k.coherent_gain;
    const double scale = 1.0 / k.coherent_gain;
    for (std::int32_t i = 0; i < n; ++i) x[i] *= scale;
    return kOk;
}

AnalysisStatus ApplyFirWindowType(double* x, std::int32_t n, std::int32_t window_code, double beta) {
    switch (window_code) {
        case 2: return TriangleWindow(x, n);
        case 3: return HanningWindow(x, n);
        case 4: return HammingWindow(x, n);
        case 5: return BlackmanWindow(x, n);
        case 6: return KaiserWindow(x, n, beta);
        default: return kOk;
    }
}

AnalysisStatus SymmetricFirWindow(double* w, std::int32_t n, std::int32_t window_code, double beta) {
    for (std::int32_t i = 0; i < n; ++i) w[i] = 1.0;
    // A window that needs n - 1 < 1 points fails before writing; the
    // rectangular one accepts it.
    const AnalysisStatus st = ApplyFirWindowType(w, n - 1, window_code, beta);
    if (st < 0) return st;
    if (n >= 1) w[n - 1] = w[0];
    return st;
}

}  // namespace vn
