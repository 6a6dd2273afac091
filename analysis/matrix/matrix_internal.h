// Helpers shared by the matrix kernels (not part of the public interface).
#pragma once

#include "analysis/limits.h"
#include "analysis/status.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

namespace vn {
namespace matrix_detail {

// Index arithmetic is done in the pointer-difference type so that i*n + j
// cannot overflow 32 bits for large matrices.
using Index = std::ptrdiff_t;

// 2^-63 and its square root 2^-31.5 (the relative singularity tests of the
// packed routines and of the condition number).
constexpr double kTwoPowMinus63 = 1.0842021724855044e-19;
constexpr double kTwoPowMinus31p5 = 3.2927225399135965e-10;

// Heap scratch released on every path. The element count is checked against
// the bound of one block first (analysis/limits.h), so a product of two
// 32-bit sizes reports "no memory" instead of wrapping around or taking
// gigabytes. Allocated with the non-throwing operator new, which is the
// allocator the allocation-failure tests replace.
template <typename T>
class Scratch {
public:
    explicit Scratch(std::uint64_t count) {
        if (count == 0) count = 1;
        if (BlockFits(count, sizeof(T)))
            p_ = static_cast<T*>(::operator new(static_cast<std::size_t>(count) * sizeof(T), std::nothrow));
    }
    ~Scratch() { ::operator delete(p_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    explicit operator bool() const { return p_ != nullptr; }
    T* get() const { return p_; }

private:
    T* p_ = nullptr;
};

inline std::uint64_t Product(std::int64_t a, std::int64_t b) {
    return static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
}

inline std::uint64_t PackedCount(std::int64_t n) {
    return static_cast<std::uint64_t>(n) * static_cast<std::uint64_t>(n + 1) / 2;
}

inline void CopyDoubles(const double* from, std::uint64_t count, double* to) {
    if (from != to) std::memmove(to, from, static_cast<std::size_t>(count) * sizeof(double));
}

// Width of the register tile of CombineRows: as many doubles as the vector
// registers hold as accumulators (16 xmm registers on x86-64, 8 on x86).
#if defined(__x86_64__) || defined(_M_X64) || defined(__aarch64__)
constexpr Index kTile = 16;
#else
constexpr Index kTile = 8;
#endif

#if defined(__GNUC__)
// Two doubles of a vector register; arithmetic on it is element-wise IEEE
// double arithmetic, the same operations as the scalar code.
typedef double Double2 __attribute__((vector_size(16)));

inline Double2 Load2(const double* p) {
    Double2 v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
inline void Store2(double* p, Double2 v) { std::memcpy(p, &v, sizeof v); }
#endif

// dst[c] <- dst[c] -/+ s[0]*b[0][c] -/+ s[1]*b[1][c] ... -/+ s[count-1]*b[count-1][c]
// for c in [0, w): each destination entry takes its terms one at a time in
// increasing k, exactly as the scalar loop would, so the result does not
// depend on the tiling. b's rows are ldb apart. A tile of kTile entries is
// held in registers across the whole k loop (vectorised across c, never
// across k, which would change the order of the additions).
template <bool kAdd>
inline void CombineRows(double* dst, Index w, const double* s, Index count, const double* b,
                        Index ldb) {
    Index c = 0;
#if defined(__GNUC__)
    constexpr Index kVec = kTile / 2;
    for (; c + kTile <= w; c += kTile) {
        Double2 acc[kVec];
        for (Index t = 0; t < kVec; ++t) acc[t] = Load2(dst + c + 2 * t);
        const double* bk = b + c;
        for (Index k = 0; k < count; ++k, bk += ldb) {
            const Double2 sk = {s[k], s[k]};
            for (Index t = 0; t < kVec; ++t) {
                if (kAdd)
                    acc[t] += sk * Load2(bk + 2 * t);
                else
                    acc[t] -= sk * Load2(bk + 2 * t);
            }
        }
        for (Index t = 0; t < kVec; ++t) Store2(dst + c + 2 * t, acc[t]);
    }
#endif
    for (; c < w; ++c) {
        double acc = dst[c];
        const double* bk = b + c;
        for (Index k = 0; k < count; ++k, bk += ldb) {
            if (kAdd)
                acc += s[k] * *bk;
            else
                acc -= s[k] * *bk;
        }
        dst[c] = acc;
    }
}

// Engines of the row combinations behind the LU family: the baseline
// 128-bit code above and, on x86 processors that have them, 256-bit (AVX2)
// and 512-bit (AVX-512) builds of the same loops. Multiplications and
// subtractions stay separate (never fused) and each entry takes its terms in
// increasing k on every engine, so all engines give identical bits.
enum class LUEngine { kBaseline, kAvx2, kAvx512 };
// False for an engine the processor or this build lacks; such an engine
// falls back to the baseline one.
bool LUEngineAvailable(LUEngine e);
// The widest available engine, chosen once.
LUEngine DefaultLUEngine();

// dst[c] <- dst[c] - s[0]*b[0][c] - ... - s[count-1]*b[count-1][c], c in [0, w),
// exactly as CombineRows<false>, on the given engine.
using CombineSubFn = void (*)(double* dst, Index w, const double* s, Index count, const double* b, Index ldb);
CombineSubFn CombineSubFor(LUEngine e);

// The LU factorisation on an n-by-n row-major block (n >= 1, no checks).
AnalysisStatus LUFactor(double* a, Index n, std::int32_t* p, std::int32_t* parity, LUEngine e);
inline AnalysisStatus LUFactor(double* a, Index n, std::int32_t* p, std::int32_t* parity) {
    return LUFactor(a, n, p, parity, DefaultLUEngine());
}

// Inverse from LU factors into b (b must not be lu): for every right-hand
// side e_j the interchanges, forward and back substitution of ForwSub and
// BackSub, all columns at once. -20041 for a zero or NaN diagonal of U.
AnalysisStatus LUInverseInto(const double* lu, Index n, const std::int32_t* p, double* b, LUEngine e);
inline AnalysisStatus LUInverseInto(const double* lu, Index n, const std::int32_t* p, double* b) {
    return LUInverseInto(lu, n, p, b, DefaultLUEngine());
}

}  // namespace matrix_detail
}  // namespace vn
