// Largest and smallest elements (MaxArray, MinArray, MaxMinValues,
// MaxMinMatrix) at memory speed, with exactly the results of the plain
// element-by-element rules.
//
// The rules are sequential: a maximum is replaced only by a strictly larger
// element (so ties keep the first index), and a NaN behaves as the rules
// make it behave (MaxArray takes it and lets the next element replace it;
// MaxMinValues never takes it as maximum and always as minimum). Without a
// NaN, though, the result is simply the first element equal to the extreme
// value. So the data is cut into blocks of kBlock elements: a wide pass
// finds each block's extremes and whether it holds a NaN; a block without a
// NaN, entered with a state free of NaN, changes the state only when its
// extreme is strictly beyond it, and only the winning block is remembered.
// A block with a NaN, or entered with a NaN in the state, runs the plain
// rules element by element. At the end the first element equal to the
// remembered extreme is looked up inside its block (the value is taken from
// there too, which also gives the right sign to a zero extreme: maxpd and
// minpd may return either of +0 and -0).
//
// Comparisons round nothing, so every engine gives the same bits.

#include "analysis/array/array_ops.h"
#include "analysis/array/extremes_internal.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

// The 256-bit scan is built where GCC can target it per function. On Windows
// the build must also turn aligned vector moves into unaligned ones (GCC
// keeps that stack 16-byte aligned only), as for the transform engines.
#if defined(__GNUC__) && !defined(__clang__) && (defined(__x86_64__) || defined(__i386__)) && \
    (!defined(_WIN32) || defined(VN_UNALIGNED_VECTOR_MOVES))
#define VN_EXTREMES_HAVE_AVX2 1
#else
#define VN_EXTREMES_HAVE_AVX2 0
#endif

namespace vn {

namespace {

using extremes_internal::Engine;

// 16 KiB: the closing look-up inside the winning block reads it from cache
// only when the block was seen last; otherwise it is one short extra read.
constexpr std::int64_t kBlock = 2048;

struct BlockScan {
    double hi;
    double lo;
    bool nan;
};

// Plain scan of a block (also the tail of the vector scans).
template <bool kHi, bool kLo>
void ScanTail(const double* x, std::int64_t n, BlockScan* s) {
    for (std::int64_t i = 0; i < n; ++i) {
        const double v = x[i];
        if (kHi && v > s->hi) s->hi = v;
        if (kLo && v < s->lo) s->lo = v;
        if (v != v) s->nan = true;
    }
}

#if defined(__SSE2__)
template <bool kHi, bool kLo>
BlockScan ScanSse2(const double* x, std::int64_t n) {
    BlockScan s{x[0], x[0], false};
    std::int64_t i = 0;
    if (n >= 8) {
        __m128d h0 = _mm_set1_pd(x[0]), h1 = h0, h2 = h0, h3 = h0;
        __m128d l0 = h0, l1 = h0, l2 = h0, l3 = h0;
        __m128d u = _mm_setzero_pd();
        for (; i + 8 <= n; i += 8) {
            const __m128d a = _mm_loadu_pd(x + i), b = _mm_loadu_pd(x + i + 2);
            const __m128d c = _mm_loadu_pd(x + i + 4), d = _mm_loadu_pd(x + i + 6);
            if (kHi) {
                h0 = _mm_max_pd(h0, a);
                h1 = _mm_max_pd(h1, b);
                h2 = _mm_max_pd(h2, c);
                h3 = _mm_max_pd(h3, d);
            }
            if (kLo) {
                l0 = _mm_min_pd(l0, a);
                l1 = _mm_min_pd(l1, b);
                l2 = _mm_min_pd(l2, c);
                l3 = _mm_min_pd(l3, d);
            }
            // Unordered compares of two vectors flag a NaN in either.
            u = _mm_or_pd(u, _mm_or_pd(_mm_cmpunord_pd(a, b), _mm_cmpunord_pd(c, d)));
        }
        alignas(16) double lanes[2];
        s.nan = _mm_movemask_pd(u) != 0;
        // The lane values are only used when no NaN was seen.
        if (kHi) {
            _mm_store_pd(lanes, _mm_max_pd(_mm_max_pd(h0, h1), _mm_max_pd(h2, h3)));
            s.hi = lanes[0] > lanes[1] ? lanes[0] : lanes[1];
        }
        if (kLo) {
            _mm_store_pd(lanes, _mm_min_pd(_mm_min_pd(l0, l1), _mm_min_pd(l2, l3)));
            s.lo = lanes[0] < lanes[1] ? lanes[0] : lanes[1];
        }
    }
    ScanTail<kHi, kLo>(x + i, n - i, &s);
    return s;
}
#endif

#if VN_EXTREMES_HAVE_AVX2
template <bool kHi, bool kLo>
__attribute__((target("avx2"))) BlockScan ScanAvx2(const double* x, std::int64_t n) {
    BlockScan s{x[0], x[0], false};
    std::int64_t i = 0;
    if (n >= 16) {
        __m256d h0 = _mm256_set1_pd(x[0]), h1 = h0, h2 = h0, h3 = h0;
        __m256d l0 = h0, l1 = h0, l2 = h0, l3 = h0;
        __m256d u = _mm256_setzero_pd();
        for (; i + 16 <= n; i += 16) {
            const __m256d a = _mm256_loadu_pd(x + i), b = _mm256_loadu_pd(x + i + 4);
            const __m256d c = _mm256_loadu_pd(x + i + 8), d = _mm256_loadu_pd(x + i + 12);
            if (kHi) {
                h0 = _mm256_max_pd(h0, a);
                h1 = _mm256_max_pd(h1, b);
                h2 = _mm256_max_pd(h2, c);
                h3 = _mm256_max_pd(h3, d);
            }
            if (kLo) {
                l0 = _mm256_min_pd(l0, a);
                l1 = _mm256_min_pd(l1, b);
                l2 = _mm256_min_pd(l2, c);
                l3 = _mm256_min_pd(l3, d);
            }
            u = _mm256_or_pd(u, _mm256_or_pd(_mm256_cmp_pd(a, b, _CMP_UNORD_Q), _mm256_cmp_pd(c, d, _CMP_UNORD_Q)));
        }
        s.nan = _mm256_movemask_pd(u) != 0;
        // Narrow to 128 bits with SSE instructions only (no aligned stores of
        // wide vectors to the stack).
        if (kHi) {
            const __m256d h = _mm256_max_pd(_mm256_max_pd(h0, h1), _mm256_max_pd(h2, h3));
            const __m128d q = _mm_max_pd(_mm256_castpd256_pd128(h), _mm256_extractf128_pd(h, 1));
            const double a = _mm_cvtsd_f64(q), b = _mm_cvtsd_f64(_mm_unpackhi_pd(q, q));
            s.hi = a > b ? a : b;
        }
        if (kLo) {
            const __m256d l = _mm256_min_pd(_mm256_min_pd(l0, l1), _mm256_min_pd(l2, l3));
            const __m128d q = _mm_min_pd(_mm256_castpd256_pd128(l), _mm256_extractf128_pd(l, 1));
            const double a = _mm_cvtsd_f64(q), b = _mm_cvtsd_f64(_mm_unpackhi_pd(q, q));
            s.lo = a < b ? a : b;
        }
        _mm256_zeroupper();
    }
    ScanTail<kHi, kLo>(x + i, n - i, &s);
    return s;
}
#endif

template <bool kHi, bool kLo>
BlockScan Scan(Engine e, const double* x, std::int64_t n) {
#if VN_EXTREMES_HAVE_AVX2
    if (e == Engine::kAvx2) return ScanAvx2<kHi, kLo>(x, n);
#endif
#if defined(__SSE2__)
    return ScanSse2<kHi, kLo>(x, n);
#else
    BlockScan s{x[0], x[0], false};
    ScanTail<kHi, kLo>(x, n, &s);
    return s;
#endif
}

// First index in [from, to) whose element equals v (v is there and no
// element of the range is a NaN).
std::int64_t FirstEqual(const double* x, std::int64_t from, std::int64_t to, double v) {
    for (std::int64_t i = from; i < to; ++i)
        if (x[i] == v) return i;
    return from;  // not reached
}

bool HasAvx2() {
#if VN_EXTREMES_HAVE_AVX2
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") != 0;
#else
    return false;
#endif
}

Engine Usable(Engine e) { return extremes_internal::EngineAvailable(e) ? e : Engine::kBaseline; }

// MaxArray (kLargest) or MinArray: the current value v is replaced by an
// element that is not <= v (not >= v), so a NaN is taken and the next
// element replaces it.
template <bool kLargest>
double Extreme(Engine e, const double* x, std::int64_t n) {
    e = Usable(e);
    double v = x[0];
    std::int64_t pending = -1;  // block whose first element equal to v is the result
    for (std::int64_t start = 0; start < n; start += kBlock) {
        const std::int64_t len = std::min(kBlock, n - start);
        if (v == v) {
            const BlockScan s = Scan<kLargest, !kLargest>(e, x + start, len);
            if (!s.nan) {
                if (kLargest ? s.hi > v : s.lo < v) {
                    v = kLargest ? s.hi : s.lo;
                    pending = start;
                }
                continue;
            }
        }
        for (std::int64_t i = start; i < start + len; ++i) {
            const bool keep = kLargest ? x[i] <= v : x[i] >= v;
            if (!keep) {
                v = x[i];
                pending = -1;
            }
        }
    }
    if (pending >= 0) v = x[FirstEqual(x, pending, std::min(pending + kBlock, n), v)];
    return v;
}

}  // namespace

namespace extremes_internal {

bool EngineAvailable(Engine e) {
    static const bool avx2 = HasAvx2();
    return e == Engine::kBaseline || (e == Engine::kAvx2 && avx2);
}

Engine DefaultEngine() {
    static const Engine best = EngineAvailable(Engine::kAvx2) ? Engine::kAvx2 : Engine::kBaseline;
    return best;
}

double Largest(Engine e, const double* x, std::int64_t n) { return Extreme<true>(e, x, n); }
double Smallest(Engine e, const double* x, std::int64_t n) { return Extreme<false>(e, x, n); }

// MaxMinValues' rules: a strictly larger element becomes the maximum;
// otherwise an element that is not >= the minimum (a NaN included) becomes
// the minimum. Without a NaN in the state, lo <= hi, so an element below lo
// is never a new maximum and the two searches are independent.
void MaxMin(Engine e, const double* x, std::int64_t n, double* max, std::int64_t* imax, double* min,
            std::int64_t* imin) {
    e = Usable(e);
    double hi = x[0], lo = x[0];
    std::int64_t ihi = 0, ilo = 0;
    bool hiPending = false, loPending = false;  // ihi / ilo name a block, not yet the element
    for (std::int64_t start = 0; start < n; start += kBlock) {
        const std::int64_t len = std::min(kBlock, n - start);
        if (hi == hi && lo == lo) {
            const BlockScan s = Scan<true, true>(e, x + start, len);
            if (!s.nan) {
                if (s.hi > hi) {
                    hi = s.hi;
                    ihi = start;
                    hiPending = true;
                }
                if (s.lo < lo) {
                    lo = s.lo;
                    ilo = start;
                    loPending = true;
                }
                continue;
            }
        }
        for (std::int64_t i = start; i < start + len; ++i) {
            const double v = x[i];
            if (v > hi) {
                hi = v;
                ihi = i;
                hiPending = false;
            } else if (!(v >= lo)) {
                lo = v;
                ilo = i;
                loPending = false;
            }
        }
    }
    if (hiPending) ihi = FirstEqual(x, ihi, std::min(ihi + kBlock, n), hi);
    if (loPending) ilo = FirstEqual(x, ilo, std::min(ilo + kBlock, n), lo);
    *max = x[ihi];
    *imax = ihi;
    *min = x[ilo];
    *imin = ilo;
}

}  // namespace extremes_internal

AnalysisStatus MaxMinValues(const double* x, std::int32_t n, double* max, std::int32_t* imax,
                            double* min, std::int32_t* imin) {
    if (n < 1) return kErrSamplesBelowOne;
    std::int64_t ihi = 0, ilo = 0;
    extremes_internal::MaxMin(extremes_internal::DefaultEngine(), x, n, max, &ihi, min, &ilo);
    *imax = static_cast<std::int32_t>(ihi);
    *imin = static_cast<std::int32_t>(ilo);
    return kOk;
}

AnalysisStatus MaxMinMatrix(const double* x, std::int32_t rows, std::int32_t cols, double* max,
                            std::int32_t* imax, std::int32_t* jmax, double* min, std::int32_t* imin,
                            std::int32_t* jmin) {
    if (rows < 1 || cols < 1) return kErrSamplesBelowOne;
    // Walking i over rows and j over columns is walking the block in storage
    // order, so the position p = i * cols + j splits into i and j at the end.
    std::int64_t phi = 0, plo = 0;
    extremes_internal::MaxMin(extremes_internal::DefaultEngine(), x, static_cast<std::int64_t>(rows) * cols, max,
                              &phi, min, &plo);
    *imax = static_cast<std::int32_t>(phi / cols);
    *jmax = static_cast<std::int32_t>(phi % cols);
    *imin = static_cast<std::int32_t>(plo / cols);
    *jmin = static_cast<std::int32_t>(plo % cols);
    return kOk;
}

AnalysisStatus LargestValue(const double* x, std::int32_t n, double* result) {
    if (n < 1) return kErrSamplesBelowOne;
    *result = extremes_internal::Largest(extremes_internal::DefaultEngine(), x, n);
    return kOk;
}

AnalysisStatus SmallestValue(const double* x, std::int32_t n, double* result) {
    if (n < 1) return kErrSamplesBelowOne;
    *result = extremes_internal::Smallest(extremes_internal::DefaultEngine(), x, n);
    return kOk;
}

}  // namespace vn
