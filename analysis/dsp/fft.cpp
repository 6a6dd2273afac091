#include "analysis/dsp/fft.h"

#include "analysis/dsp/fft_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

// The transforms must round exactly as written: no contraction of a*b + c
// into fused multiply-adds, which the wide instruction sets would otherwise
// allow the compiler to use (and which would change the last bits between
// processors). The engine is written with GCC's vector extensions.
#pragma GCC optimize("fp-contract=off")

namespace vn {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kSqrtHalf = 0.7071067811865476;

}  // namespace

// The butterflies, once per instruction set (see fft_engine.inc).
namespace fft_base {
#define VN_FFT_LANES 2
#include "analysis/dsp/fft_engine.inc"
#undef VN_FFT_LANES
}  // namespace fft_base

// 256- and 512-bit builds, selected at run time (GCC on x86, 64- and 32-bit).
// On Windows the build has the assembler turn aligned vector moves into
// unaligned ones, because GCC there may spill wide vectors to stack slots
// aligned to 16 bytes (4 bytes for 32-bit code) only; without that option
// the wide builds are left out.
#if defined(__GNUC__) && !defined(__clang__) && (defined(__x86_64__) || defined(__i386__)) && \
    (!defined(_WIN32) || defined(VN_UNALIGNED_VECTOR_MOVES))
#define VN_FFT_HAVE_WIDE 1
#pragma GCC push_options
#pragma GCC target("avx2")
namespace fft_avx2 {
#define VN_FFT_LANES 4
#include "analysis/dsp/fft_engine.inc"
#undef VN_FFT_LANES
}  // namespace fft_avx2
#pragma GCC pop_options
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512vl")
namespace fft_avx512 {
#define VN_FFT_LANES 8
#include "analysis/dsp/fft_engine.inc"
#undef VN_FFT_LANES
}  // namespace fft_avx512
#pragma GCC pop_options
#else
#define VN_FFT_HAVE_WIDE 0
#endif

namespace {

bool IsPowerOfTwo(std::int32_t n) { return n > 0 && (n & (n - 1)) == 0; }

// Checks shared by the checked transforms.
AnalysisStatus CheckLength(std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    if ((n & (n - 1)) != 0) return kErrNotPowerOfTwo;
    return kOk;
}

using fft_internal::Engine;

bool CpuSupports(Engine e) {
    switch (e) {
        case Engine::kBaseline:
            return true;
#if VN_FFT_HAVE_WIDE
        case Engine::kAvx2:
            __builtin_cpu_init();
            return __builtin_cpu_supports("avx2") != 0;
        case Engine::kAvx512:
            __builtin_cpu_init();
            return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                   __builtin_cpu_supports("avx512vl") != 0;
#endif
        default:
            return false;
    }
}

Engine BestEngine() {
    if (CpuSupports(Engine::kAvx512)) return Engine::kAvx512;
    if (CpuSupports(Engine::kAvx2)) return Engine::kAvx2;
    return Engine::kBaseline;
}

Engine Selected() {
    static const Engine best = BestEngine();
    return best;
}

}  // namespace

namespace fft_internal {

bool EngineAvailable(Engine e) {
    static const bool avx2 = CpuSupports(Engine::kAvx2);
    static const bool avx512 = CpuSupports(Engine::kAvx512);
    switch (e) {
        case Engine::kBaseline:
            return true;
        case Engine::kAvx2:
            return avx2;
        case Engine::kAvx512:
            return avx512;
    }
    return false;
}

Engine DefaultEngine() { return Selected(); }

// An engine the processor lacks falls back to the baseline one.
#if VN_FFT_HAVE_WIDE
#define VN_FFT_DISPATCH(e, call)                                   \
    do {                                                           \
        if ((e) == Engine::kAvx512 && EngineAvailable(e)) {        \
            fft_avx512::call;                                      \
        } else if ((e) == Engine::kAvx2 && EngineAvailable(e)) {   \
            fft_avx2::call;                                        \
        } else {                                                   \
            fft_base::call;                                        \
        }                                                          \
    } while (0)
#else
#define VN_FFT_DISPATCH(e, call) fft_base::call
#endif

void ComplexForward(Engine e, double* re, double* im, std::ptrdiff_t n) {
    VN_FFT_DISPATCH(e, ComplexForward(re, im, n));
}

void RealForward(Engine e, double* x, std::ptrdiff_t n) { VN_FFT_DISPATCH(e, RealForward(x, n)); }

void RealInverse(Engine e, double* x, std::ptrdiff_t n) { VN_FFT_DISPATCH(e, RealInverse(x, n)); }

void Hartley(Engine e, double* x, std::ptrdiff_t n) { VN_FFT_DISPATCH(e, HartleyForward(x, n)); }

void BitReverse(Engine e, double* x, std::ptrdiff_t n) { VN_FFT_DISPATCH(e, BitReverse(x, n)); }

void SinCos(double x, double* s, double* c) { fft_base::SinCosV<double, std::uint64_t>(x, *s, *c); }

void SinCosFirstOctant(double x, double* s, double* c) { fft_base::SinCosFirstOctant<double>(x, *s, *c); }

void AccumulatedAngles(Engine e, double start, double step, std::ptrdiff_t count, double* out) {
    VN_FFT_DISPATCH(e, AnglesForTest(start, step, count, out));
}

}  // namespace fft_internal

using fft_internal::DefaultEngine;

AnalysisStatus BitReversePermute(double* x, double* y, std::int32_t n) {
    if (n <= 2) return kOk;
    if (!IsPowerOfTwo(n)) return kErrNotPowerOfTwo;
    fft_internal::BitReverse(DefaultEngine(), x, n);
    if (y) fft_internal::BitReverse(DefaultEngine(), y, n);
    return kOk;
}

AnalysisStatus ComplexFFT(double* re, double* im, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) return kOk;
    fft_internal::ComplexForward(DefaultEngine(), re, im, n);
    return kOk;
}

AnalysisStatus ComplexInvFFT(double* re, double* im, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) return kOk;
    // Conjugate and scale, transform forward, conjugate back.
    for (std::int32_t i = 0; i < n; ++i) {
        const double r = 1.0 / n;
        re[i] = re[i] * r;
        im[i] = im[i] * -r;
    }
    ComplexFFT(re, im, n);
    for (std::int32_t i = 0; i < n; ++i) im[i] = -im[i];
    return kOk;
}

AnalysisStatus RealFFTCore(double* x, std::int32_t n, std::int32_t /*m*/) {
    if (n <= 1) return kOk;
    if (!IsPowerOfTwo(n)) return kErrNotPowerOfTwo;
    fft_internal::RealForward(DefaultEngine(), x, n);
    return kOk;
}

AnalysisStatus RealInvFFTCore(double* x, std::int32_t n, std::int32_t /*m*/) {
    if (n < 2) return kOk;
    if (!IsPowerOfTwo(n)) return kErrNotPowerOfTwo;
    const double r = 1.0 / n;
    for (std::int32_t i = 0; i < n; ++i) x[i] = x[i] * r;
    fft_internal::RealInverse(DefaultEngine(), x, n);
    return kOk;
}

AnalysisStatus RealFFT(double* x, double* z, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) {
        z[0] = 0.0;
        return kOk;
    }
    fft_internal::RealForward(DefaultEngine(), x, n);
    // Unpack: Im X[k] sits at n-k; the upper half mirrors the lower one.
    z[0] = 0.0;
    for (std::int32_t k = 1; k < n / 2; ++k) {
        z[k] = x[n - k];
        z[n - k] = -x[n - k];
        x[n - k] = x[k];
    }
    z[n / 2] = 0.0;
    return kOk;
}

AnalysisStatus RealInvFFT(double* xr, const double* xi, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) return kOk;
    // Fold the (assumed Hermitian) spectrum into its Hartley transform:
    // H[k] = Re X[k] - Im X[k], with Im X[k] = -Im X[n-k].
    for (std::int32_t k = 1; k < n / 2; ++k) {
        const double re = xr[k];
        const double im = xi[n - k];
        xr[k] = re + im;
        xr[n - k] = re - im;
    }
    return InvHartleyTransform(xr, n);
}

AnalysisStatus PowerSpectrum(double* x, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) {
        x[0] = x[0] * x[0];
        return kOk;
    }
    fft_internal::RealForward(DefaultEngine(), x, n);
    const double nn = static_cast<double>(n);
    const double f = 1.0 / (nn * nn);
    x[0] = x[0] * x[0] * f;
    for (std::int32_t k = 1; k < n / 2; ++k) {
        const double p = (x[k] * x[k] + x[n - k] * x[n - k]) * f;
        x[k] = p;
        x[n - k] = p;
    }
    x[n / 2] = x[n / 2] * x[n / 2] * f;
    return kOk;
}

AnalysisStatus HartleyTransform(double* x, std::int32_t n) {
    const AnalysisStatus st = CheckLength(n);
    if (st != kOk) return st;
    if (n == 1) return kOk;
    fft_internal::Hartley(DefaultEngine(), x, n);
    return kOk;
}

AnalysisStatus InvHartleyTransform(double* x, std::int32_t n) {
    const AnalysisStatus st = HartleyTransform(x, n);
    if (st != kOk) return st;
    const double r = 1.0 / n;
    for (std::int32_t i = 0; i < n; ++i) x[i] = x[i] * r;
    return kOk;
}

}  // namespace vn
