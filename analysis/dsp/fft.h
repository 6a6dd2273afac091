// Fast Fourier and Hartley transforms, in place, for power-of-two lengths.
//
// Conventions (no scaling on the forward transforms):
//   X[k] = sum_j x[j] exp(-2 pi i jk/n),   x[j] = (1/n) sum_k X[k] exp(+2 pi i jk/n)
//   H[k] = sum_j x[j] (cos(2 pi jk/n) + sin(2 pi jk/n)), inverse scaled by 1/n.
// Complex data is held as two separate arrays (real parts, imaginary parts).
//
// Packed real spectrum (output of RealFFTCore, input of RealInvFFTCore), n
// doubles: x[0 .. n/2] = Re X[0 .. n/2], x[n-k] = Im X[k] for k = 1 .. n/2-1
// (Im X[0] = Im X[n/2] = 0 are not stored).
//
// Argument checks of the checked transforms, in this order: n < 1 -> -20003,
// n not a power of two -> -20009 (no upper bound). The transforms allocate
// nothing (a few kilobytes of stack) and keep no state; any number may run at
// once on different arrays. Twiddle factors are not tabulated: each stage
// accumulates its angles by repeated addition (2*pi/N2 per step, 3*2*pi/N2
// for the second sequence of the split-radix stages) and evaluates their
// sines and cosines itself, in double precision to about one unit in the
// last place. Results are the same bit for bit whichever vector unit the
// processor offers.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Forward complex transform of (re, im), natural order in and out.
AnalysisStatus ComplexFFT(double* re, double* im, std::int32_t n);

// Inverse complex transform, including the 1/n scaling.
AnalysisStatus ComplexInvFFT(double* re, double* im, std::int32_t n);

// Forward real transform into the packed layout, unscaled. m is log2(n);
// the stages are derived from n itself. No argument checks beyond memory
// safety: n <= 1 returns kOk untouched, and a length that is not a power of
// two returns -20009 untouched (callers are expected to have checked).
AnalysisStatus RealFFTCore(double* x, std::int32_t n, std::int32_t m);

// Inverse of RealFFTCore, including the 1/n scaling: a packed spectrum in,
// the real sequence out. n < 2 returns kOk untouched; otherwise as above.
AnalysisStatus RealInvFFTCore(double* x, std::int32_t n, std::int32_t m);

// Real-input transform unpacked to the full Hermitian spectrum: x (in: the
// signal) receives Re X[0 .. n-1], z receives Im X[0 .. n-1].
AnalysisStatus RealFFT(double* x, double* z, std::int32_t n);

// Inverse of a Hermitian spectrum to a real sequence, in xr. Only
// Re X[0 .. n/2] (xr) and Im X[n/2+1 .. n-1] (xi) are read; the spectrum is
// taken to be Hermitian. xi is not modified.
AnalysisStatus RealInvFFT(double* xr, const double* xi, std::int32_t n);

// Two-sided power spectrum |X[k]|^2 / n^2 in place, full length n.
AnalysisStatus PowerSpectrum(double* x, std::int32_t n);

AnalysisStatus HartleyTransform(double* x, std::int32_t n);

// HartleyTransform, then every element times 1/n.
AnalysisStatus InvHartleyTransform(double* x, std::int32_t n);

// In-place bit-reversal permutation of x and, when y is not null, of y.
// n must be a power of two: n <= 2 leaves the data as is, a length that is
// not a power of two returns -20009 untouched.
AnalysisStatus BitReversePermute(double* x, double* y, std::int32_t n);

}  // namespace vn
