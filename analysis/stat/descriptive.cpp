#include "analysis/stat/descriptive.h"

#include "analysis/array/array_ops.h"
#include "analysis/stat/scratch.h"

#include <cmath>
#include <cstddef>

namespace vn {

namespace {

double SumOf(const double* x, std::int32_t n) {
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) s += x[i];
    return s;
}

// S1 = sum x and S2 = sum x^2 in one loop.
void SumAndSquares(const double* x, std::int32_t n, double* s1, double* s2) {
    double a = 0.0, b = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        a += x[i];
        b += x[i] * x[i];
    }
    *s1 = a;
    *s2 = b;
}

// d^order formed as d*d*...*d, left to right (order - 1 roundings), but in
// bounded time. The first kExactPowerSteps multiplications are made one by
// one, as the recipe says, and stop early with the exact final value once the
// power can change only in sign: at 0, at an infinity, at NaN, or at
// magnitude 1. Any |d| <= 1/2 reaches 0 and any |d| >= 2 reaches an infinity
// within 2048 steps, so only 1/2 < |d| < 2 (d != +-1) with order > 2048 gets
// further: its remainder is raised by binary powering (at most 62 more
// multiplications), whose last bits may differ from the step-by-step product.
constexpr std::int32_t kExactPowerSteps = 2048;

double RepeatedPower(double d, std::int32_t order) {
    double p = d;
    std::int32_t k = 1;
    const std::int32_t exactEnd = order < kExactPowerSteps ? order : kExactPowerSteps;
    for (; k < exactEnd; ++k) {
        const double a = std::fabs(p);
        if (a == 0.0 || a == 1.0 || !(a < HUGE_VAL)) break;  // also NaN
        p *= d;
    }
    std::int32_t rest = order - k;  // multiplications still to make
    if (rest == 0) return p;
    const double a = std::fabs(p);
    if (a == 0.0 || a == 1.0 || !(a < HUGE_VAL)) {
        // Each remaining step multiplies by d and keeps the magnitude; only
        // the sign flips, once per step when d < 0.
        return (d < 0.0 && (rest & 1)) ? -p : p;
    }
    double base = d, power = 1.0;
    while (rest != 0) {
        if (rest & 1) power *= base;
        base *= base;
        rest >>= 1;
    }
    return p * power;
}

}  // namespace

AnalysisStatus Mean(const double* x, std::int32_t n, double* mean) {
    if (n < 1) return kErrSamplesBelowOne;
    *mean = SumOf(x, n) / n;
    return kOk;
}

AnalysisStatus StdDev(const double* x, std::int32_t n, double* mean, double* sdev) {
    if (n < 1) return kErrSamplesBelowOne;
    double s1, s2;
    SumAndSquares(x, n, &s1, &s2);
    const double m = s1 / n;
    *mean = m;
    *sdev = std::sqrt(std::fabs(s2 / n - m * m));
    return kOk;
}

AnalysisStatus Variance(const double* x, std::int32_t n, double* mean, double* variance) {
    if (n < 1) return kErrSamplesBelowOne;
    double s1, s2;
    SumAndSquares(x, n, &s1, &s2);
    const double m = s1 / n;
    *mean = m;
    *variance = s2 / n - m * m;
    return kOk;
}

AnalysisStatus RMS(const double* x, std::int32_t n, double* rms) {
    if (n < 1) return kErrSamplesBelowOne;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) s += x[i] * x[i];
    *rms = std::sqrt(s / n);
    return kOk;
}

AnalysisStatus Moment(const double* x, std::int32_t n, std::int32_t order, double* moment) {
    if (n < 1) return kErrSamplesBelowOne;
    if (order < 1) return kErrOrderNotPositive;
    const double m = SumOf(x, n) / n;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        s += RepeatedPower(x[i] - m, order);
    }
    *moment = s / n;
    return kOk;
}

AnalysisStatus Median(const double* x, std::int32_t n, double* median) {
    if (n < 1) return kErrSamplesBelowOne;
    auto s = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(n));
    if (!s) return kErrNoMemory;
    SortValues(x, n, 0, s.get());  // copies, and sorts only when n > 1
    const std::int32_t h = n / 2;
    *median = (n % 2 != 0) ? s[h] : (s[h - 1] + s[h]) * 0.5;
    return kOk;
}

AnalysisStatus Histogram(const double* x, std::int32_t n, double base, double top, std::int32_t intervals,
                         std::int32_t* counts, double* centres) {
    if (!(top > base)) return kErrTopNotAboveBase;
    if (n < 1 || intervals < 1) return kErrSamplesBelowOne;

    const double w = (top - base) / intervals;
    double ctr = w * 0.5 + base;
    for (std::int32_t i = 0; i < intervals; ++i) {
        centres[i] = ctr;
        counts[i] = 0;
        ctr += (top - base) / intervals;
    }

    const double s = 1.0 / w;
    const double limit = static_cast<double>(intervals);
    for (std::int32_t i = 0; i < n; ++i) {
        // The bin test is made on the floored double so that samples far out
        // of range (or NaN) are rejected without an out-of-range conversion
        // to int; in-range values convert exactly.
        const double v = x[i];
        const double bin = std::floor((v - base) * s);
        if (bin >= 0.0 && bin < limit)
            ++counts[static_cast<std::int32_t>(bin)];
        else if (v == top)
            ++counts[intervals - 1];
    }
    return kOk;
}

AnalysisStatus Mode(const double* x, std::int32_t n, double base, double top, std::int32_t intervals,
                    double* mode) {
    if (intervals < 1) return kErrSamplesBelowOne;
    const auto len = static_cast<std::size_t>(intervals);
    auto counts = stat_detail::AllocateScratch<std::int32_t>(len);
    auto centres = stat_detail::AllocateScratch<double>(len);
    if (!counts || !centres) return kErrNoMemory;

    const AnalysisStatus st = Histogram(x, n, base, top, intervals, counts.get(), centres.get());
    if (st < 0) return st;

    std::int32_t best = 0;
    double result = centres[0];
    for (std::int32_t i = 0; i < intervals; ++i) {
        if (counts[i] > best) {
            best = counts[i];
            result = centres[i];
        }
    }
    *mode = result;
    return kOk;
}

AnalysisStatus MeanSquaredError(const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                                double* mse) {
    if (nx < 1 || ny < 1) return kErrSamplesBelowOne;
    const std::int32_t n = nx < ny ? nx : ny;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double d = x[i] - y[i];
        s += d * d;
    }
    *mse = s / n;
    return kOk;
}

}  // namespace vn
