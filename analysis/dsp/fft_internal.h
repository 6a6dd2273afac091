// Internal entry points of the transform engine, for the unit tests and the
// benchmark only. The public kernels in fft.h pick the engine themselves.
//
// Several builds of the same butterflies exist: the baseline one (128-bit
// vectors, runs everywhere) and, on x86-64, 256-bit (AVX2) and 512-bit
// (AVX-512) ones. They perform identical IEEE operations in identical order,
// so their results agree bit for bit; the tests check that.
#pragma once

#include <cstddef>

namespace vn {
namespace fft_internal {

enum class Engine { kBaseline, kAvx2, kAvx512 };

// True when the engine is compiled in and the processor supports it. The
// functions below run an unavailable engine's work on the baseline one.
bool EngineAvailable(Engine e);

// The engine the public kernels use.
Engine DefaultEngine();

// Unchecked transforms on one engine; n is a power of two, n >= 2.
// Forward complex, natural order in and out, unscaled.
void ComplexForward(Engine e, double* re, double* im, std::ptrdiff_t n);
// Forward real, natural order in, packed spectrum out, unscaled.
void RealForward(Engine e, double* x, std::ptrdiff_t n);
// Inverse real, packed spectrum in, natural order out, unscaled (n times the
// sequence).
void RealInverse(Engine e, double* x, std::ptrdiff_t n);
// Hartley, natural order in and out, unscaled.
void Hartley(Engine e, double* x, std::ptrdiff_t n);

// The angle sequence the transforms use: out[i] = start + step + ... + step
// with i rounded additions (computed in runs of closed form, see AngleSeq).
void AccumulatedAngles(Engine e, double start, double step, std::ptrdiff_t count, double* out);

// In-place bit-reversal permutation; n is a power of two.
void BitReverse(Engine e, double* x, std::ptrdiff_t n);

// sin and cos as the transforms evaluate them (for the accuracy tests).
void SinCos(double x, double* s, double* c);
// The shortcut for 0 <= x < pi/4 (must agree with SinCos bit for bit there).
void SinCosFirstOctant(double x, double* s, double* c);

}  // namespace fft_internal
}  // namespace vn
