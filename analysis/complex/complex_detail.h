// Helpers shared by the complex matrix kernels: the scratch value type,
// checked scratch allocation and conversion between split and interleaved
// storage. Internal to analysis/complex.
#pragma once

#include "analysis/limits.h"

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace vn {
namespace cxdetail {

using Cx = std::complex<double>;

// Sizes of an a-by-b block; computed in 64 bits because a product of two
// 32-bit counts need not fit in 32 (nor in a 32-bit size_t), and held to the
// bound of one block (analysis/limits.h).
inline bool BlockCount(std::int64_t a, std::int64_t b, std::size_t* count) {
    const std::uint64_t c = static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b);
    if (a < 0 || b < 0 || a > INT32_MAX || b > INT32_MAX || !BlockFits(c, sizeof(Cx)))
        return false;
    *count = static_cast<std::size_t>(c);
    return true;
}

// Scratch of a*b elements. False when the size overflows or the heap refuses;
// the caller then returns kErrNoMemory.
template <typename T>
bool Allocate(std::vector<T>& v, std::int64_t a, std::int64_t b = 1) noexcept {
    std::size_t count = 0;
    if (!BlockCount(a, b, &count)) return false;
    try {
        v.assign(count, T());
    } catch (...) {
        return false;
    }
    return true;
}

inline void Load(const double* re, const double* im, std::size_t count, Cx* out) {
    for (std::size_t k = 0; k < count; ++k) out[k] = Cx(re[k], im[k]);
}

inline void Store(const Cx* in, std::size_t count, double* re, double* im) {
    for (std::size_t k = 0; k < count; ++k) {
        re[k] = in[k].real();
        im[k] = in[k].imag();
    }
}

// Product by the schoolbook formula. std::complex's operator* also rescues
// infinities from NaNs, which costs a library call per product in inner loops
// and is not wanted here.
inline Cx Mul(Cx a, Cx b) {
    return Cx(a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real());
}

// a * conj(b).
inline Cx MulConj(Cx a, Cx b) {
    return Cx(a.real() * b.real() + a.imag() * b.imag(), a.imag() * b.real() - a.real() * b.imag());
}

// Quotient by Smith's method: the ratio of the divisor's parts keeps the
// intermediate results in range where the textbook formula's |b|^2 would
// overflow or underflow. b must not be zero.
inline Cx Div(Cx a, Cx b) {
    const double br = b.real(), bi = b.imag();
    if (std::abs(br) >= std::abs(bi)) {
        const double r = bi / br;
        const double d = br + bi * r;
        return Cx((a.real() + a.imag() * r) / d, (a.imag() - a.real() * r) / d);
    }
    const double r = br / bi;
    const double d = bi + br * r;
    return Cx((a.real() * r + a.imag()) / d, (a.imag() * r - a.real()) / d);
}

}  // namespace cxdetail
}  // namespace vn
