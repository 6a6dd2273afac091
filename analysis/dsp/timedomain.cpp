#include "analysis/dsp/timedomain.h"

#include "analysis/dsp/fft.h"
#include "analysis/dsp/fft_internal.h"
#include "analysis/dsp/timedomain_internal.h"
#include "analysis/stat/descriptive.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

// Products and sums are rounded exactly as written (no fused multiply-add),
// so the vector engines and the scalar loop agree bit for bit.
#pragma GCC optimize("fp-contract=off")

namespace vn {

namespace {

// Zeros on each side of the padded copy of the inner sequence; at least the
// widest engine's block of outputs.
constexpr std::ptrdiff_t kPad = 64;

}  // namespace

namespace conv_base {
#define VN_CONV_LANES 2
#include "analysis/dsp/conv_engine.inc"
#undef VN_CONV_LANES
}  // namespace conv_base

// Wider builds as for the transforms (GCC on x86-64; on Windows only where
// aligned vector moves are assembled as unaligned ones).
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && \
    (!defined(_WIN32) || defined(VN_UNALIGNED_VECTOR_MOVES))
#define VN_CONV_HAVE_WIDE 1
#pragma GCC push_options
#pragma GCC target("avx2")
namespace conv_avx2 {
#define VN_CONV_LANES 4
#include "analysis/dsp/conv_engine.inc"
#undef VN_CONV_LANES
}  // namespace conv_avx2
#pragma GCC pop_options
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512vl")
namespace conv_avx512 {
#define VN_CONV_LANES 8
#include "analysis/dsp/conv_engine.inc"
#undef VN_CONV_LANES
}  // namespace conv_avx512
#pragma GCC pop_options
#else
#define VN_CONV_HAVE_WIDE 0
#endif

namespace {

using fft_internal::Engine;

template <typename T>
std::unique_ptr<T[]> Scratch(std::size_t count) noexcept {
    try {
        return std::unique_ptr<T[]>(new T[count]);
    } catch (...) {
        return nullptr;
    }
}

// out[m] = sum over i ascending of a[i] * b(m - i), b(j) = b[j] or, when
// reversed, b[nb-1-j]: the loop nest "for i, for j: out[i+j] += b(j)*a[i]".
AnalysisStatus DirectSum(Engine e, const double* a, std::int32_t na, const double* b, std::int32_t nb, bool reversed,
                         double* out) {
    if (na < 1 || nb < 1) return kErrSamplesBelowOne;
    const std::int64_t nout64 = static_cast<std::int64_t>(na) + nb - 1;
    if (nout64 > std::numeric_limits<std::int32_t>::max()) return kErrNoMemory;
    const std::ptrdiff_t nout = static_cast<std::ptrdiff_t>(nout64);

    bool finite = true;
    for (std::int32_t i = 0; i < na; ++i) finite = finite && std::isfinite(a[i]);
    std::unique_ptr<double[]> pad;
    if (finite) pad = Scratch<double>(static_cast<std::size_t>(nb) + 2 * kPad);

    if (!pad) {
        // A non-finite a[i] times a padding zero would be NaN: the plain loop
        // nest (also the way out when the padded copy cannot be had).
        for (std::ptrdiff_t m = 0; m < nout; ++m) out[m] = 0.0;
        for (std::int32_t i = 0; i < na; ++i)
            for (std::int32_t j = 0; j < nb; ++j) out[i + j] += (reversed ? b[nb - 1 - j] : b[j]) * a[i];
        return kOk;
    }
    double* p = pad.get();
    std::fill(p, p + kPad, 0.0);
    for (std::int32_t j = 0; j < nb; ++j) p[kPad + j] = reversed ? b[nb - 1 - j] : b[j];
    std::fill(p + kPad + nb, p + 2 * kPad + nb, 0.0);
    switch (fft_internal::EngineAvailable(e) ? e : Engine::kBaseline) {
#if VN_CONV_HAVE_WIDE
        case Engine::kAvx512: conv_avx512::Blocks(a, na, p, nb, out, nout); break;
        case Engine::kAvx2: conv_avx2::Blocks(a, na, p, nb, out, nout); break;
#endif
        default: conv_base::Blocks(a, na, p, nb, out, nout); break;
    }
    return kOk;
}

}  // namespace

namespace timedomain_internal {

AnalysisStatus Convolve(Engine e, const double* x, std::int32_t nx, const double* y, std::int32_t ny, double* out) {
    return DirectSum(e, x, nx, y, ny, false, out);
}

// "for j over y, for k over x: out[j+k] += x[nx-1-k] * y[j]" is the
// convolution of y with x reversed, summed in increasing j.
AnalysisStatus Correlate(Engine e, const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                         double* out) {
    if (nx < 1 || ny < 1) return kErrSamplesBelowOne;
    return DirectSum(e, y, ny, x, nx, true, out);
}

}  // namespace timedomain_internal

AnalysisStatus ConvolveDirect(const double* x, std::int32_t nx, const double* y, std::int32_t ny, double* out) {
    return timedomain_internal::Convolve(fft_internal::DefaultEngine(), x, nx, y, ny, out);
}

AnalysisStatus CorrelateDirect(const double* x, std::int32_t nx, const double* y, std::int32_t ny, double* out) {
    return timedomain_internal::Correlate(fft_internal::DefaultEngine(), x, nx, y, ny, out);
}

AnalysisStatus DeconvolveFFT(const double* y, std::int32_t ny, const double* x, std::int32_t nx, double* out) {
    if (ny < 1 || nx < 1) return kErrSamplesBelowOne;
    const std::int32_t nout = ny - nx + 1;  // no overflow: both counts >= 1
    if (nout < 0) return kErrWrongCount;
    // nout = 0 has nothing to compute. It is also the one case where x does
    // not fit the transform length (nx = ny + 1 with ny a power of two).
    if (nout == 0) return kOk;

    std::int32_t m = 0;
    std::int64_t big = 1;
    while (big < ny) big *= 2, ++m;
    if (big > std::numeric_limits<std::int32_t>::max()) return kErrNoMemory;
    const std::int32_t n = static_cast<std::int32_t>(big);

    auto xs = Scratch<double>(static_cast<std::size_t>(n));
    if (!xs) return kErrNoMemory;
    auto ys = Scratch<double>(static_cast<std::size_t>(n));
    if (!ys) return kErrNoMemory;
    double* X = xs.get();
    double* Y = ys.get();
    std::copy(x, x + nx, X);
    std::fill(X + nx, X + n, 0.0);
    std::copy(y, y + ny, Y);
    std::fill(Y + ny, Y + n, 0.0);
    RealFFTCore(X, n, m);
    RealFFTCore(Y, n, m);

    // Packed spectra: Re at 0 .. n/2, Im of bin k at n - k. For n = 1 bins 0
    // and n/2 are the same bin, divided once.
    Y[0] = Y[0] / X[0];
    if (n > 1) Y[n / 2] = Y[n / 2] / X[n / 2];
    for (std::int32_t k = 1; k < n / 2; ++k) {
        const double xr = X[k], xi = X[n - k], yr = Y[k], yi = Y[n - k];
        const double d = 1.0 / (xr * xr + xi * xi);
        Y[k] = (yr * xr + yi * xi) * d;
        Y[n - k] = (yi * xr - yr * xi) * d;
    }
    RealInvFFTCore(Y, n, m);
    std::copy(Y, Y + nout, out);
    return kOk;
}

AnalysisStatus IntegrateSimpson(const double* x, std::int32_t n, double dt, double x_init, double x_final,
                                double* out) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!(dt > 0.0)) return kErrDtNotPositive;
    const double h = dt * 0.16666666666666666;
    double sum = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double before = i > 0 ? x[i - 1] : x_init;
        const double after = i < n - 1 ? x[i + 1] : x_final;
        sum = sum + (before + 4.0 * x[i] + after) * h;
        out[i] = sum;
    }
    return kOk;
}

AnalysisStatus DifferenceCentral(const double* x, std::int32_t n, double dt, double x_init, double x_final,
                                 double* out) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!(dt > 0.0)) return kErrDtNotPositive;
    const double c = 0.5 / dt;
    for (std::int32_t i = 0; i < n; ++i) {
        const double before = i > 0 ? x[i - 1] : x_init;
        const double after = i < n - 1 ? x[i + 1] : x_final;
        out[i] = (after - before) * c;
    }
    return kOk;
}

std::int32_t DecimatedLength(std::int32_t n, std::int32_t d) {
    if (n < 1 || d < 1 || d > n) return 0;
    return (n - 1) / d + 1;  // ceil(n/d) without overflowing n + d - 1
}

AnalysisStatus DecimateCore(const double* x, std::int32_t n, std::int32_t d, bool average, double* out) {
    if (n < 1) return kErrSamplesBelowOne;
    if (d < 1 || d > n) return kErrDecimatingFactor;
    const std::int32_t count = DecimatedLength(n, d);
    for (std::int32_t k = 0; k < count; ++k) {
        const std::int64_t start = static_cast<std::int64_t>(k) * d;
        if (!average) {
            out[k] = x[start];
            continue;
        }
        const std::int64_t stop = std::min<std::int64_t>(start + d, n);
        double sum = 0.0;
        for (std::int64_t i = start; i < stop; ++i) sum += x[i];
        out[k] = sum / static_cast<double>(stop - start);
    }
    return kOk;
}

AnalysisStatus UnwrapPhase(double* p, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    if (n <= 2) return kOk;
    constexpr double kPi = 3.141592653589793;
    constexpr double kTwoPi = 6.283185307179586;
    for (std::int32_t i = 1; i < n; ++i) {
        const double d = p[i] - p[i - 1];
        // Each correction shifts the whole tail, one rounded step at a time,
        // so that every element sees the same sequence of additions.
        if (d > kPi) {
            for (std::int32_t j = i; j < n; ++j) p[j] = p[j] - kTwoPi;
        } else if (d < -kPi) {
            for (std::int32_t j = i; j < n; ++j) p[j] = p[j] + kTwoPi;
        }
    }
    return kOk;
}

AnalysisStatus PulseParamCore(const double* x, std::int32_t n, PulseParameters* out) {
    if (n < 1) return kErrSamplesBelowOne;
    double hi_value = x[0], lo_value = x[0];
    for (std::int32_t i = 1; i < n; ++i) {
        if (x[i] > hi_value)
            hi_value = x[i];
        else if (x[i] < lo_value)
            lo_value = x[i];
    }

    PulseParameters r;
    if (!(hi_value > lo_value)) {
        // No histogram over an empty range: a flat record has no pulse.
        r.top = r.base = hi_value;
        *out = r;
        return kOk;
    }

    constexpr std::int32_t kIntervals = 25;
    std::int32_t counts[kIntervals];
    double centres[kIntervals];
    Histogram(x, n, lo_value, hi_value, kIntervals, counts, centres);

    // Modes of the lower and upper twelve intervals; ties keep the outermost.
    double base = centres[0], top = centres[kIntervals - 1];
    std::int32_t best = 0;
    for (std::int32_t k = 0; k <= 11; ++k)
        if (counts[k] > best) best = counts[k], base = centres[k];
    best = 0;
    for (std::int32_t k = kIntervals - 1; k >= 13; --k)
        if (counts[k] > best) best = counts[k], top = centres[k];

    r.top = top;
    r.base = base;
    r.top_overshoot = hi_value - top;
    r.base_overshoot = base - lo_value;
    r.amp = top - base;
    r.amp10 = 0.1 * r.amp;
    r.amp50 = 0.5 * r.amp;
    r.amp90 = 0.9 * r.amp;
    const double l10 = base + r.amp10, l50 = base + r.amp50, l90 = base + r.amp90;

    // One forward scan: last sample below 10 % before the rising 50 %
    // crossing, the 90 % crossing, the end of the top (last sample above
    // 90 %), and the fall below 10 %.
    std::int32_t i = 0, lo = 0, r50 = 0;
    if (!(x[0] >= l50)) {
        for (; i < n; ++i) {
            if (x[i] < l10) lo = i;
            if (x[i] >= l50) break;
        }
        r50 = i;
    }
    r.delay = r50;
    while (i < n && x[i] < l90) ++i;
    r.rise_time = i - lo;
    std::int32_t hi = i;
    for (; i < n && x[i] > l50; ++i)
        if (x[i] > l90) hi = i;
    r.width = i - r50;
    while (i < n && x[i] > l10) ++i;
    r.fall_time = i - hi;
    r.slew_rate = r.rise_time != 0 ? (r.amp90 - r.amp10) / r.rise_time : 1e30;
    *out = r;
    return kOk;
}

}  // namespace vn
