// Time-domain windows, applied in place: every kernel multiplies x[0 .. n-1]
// by its window (none returns the bare window; window an array of ones to
// get it). Kernels allocate nothing and keep no state.
//
// The fixed windows are periodic (denominator n, not n - 1): with
// theta = 2*pi*i/n each is a short sum of cosines. Each factor is evaluated
// once, for i = 1 .. count, and multiplies both x[i] and x[n-i], where
// count = n/2 - 1 for even n and (n-1)/2 for odd n. Element 0 gets the
// window's own first factor; for even n the middle element x[n/2] is left as
// it is (these windows are 1 there). GeneralCosineWindow is the exception:
// it multiplies the middle element by its value at theta = pi.
//
// Angles advance by repeated addition of their step; sines and cosines come
// from the transforms' own double-precision routine (about 1 ulp), so the
// results are the same bits on every platform and build.
//
// Checks: n < 1 -> -20003 for every kernel except CosineTaperWindow (never
// fails), ExponentialWindow and ForceWindow (n < 2 -> -20006) and
// ScaledWindowCore (n < 0 -> -20004). Scalar parameters are never rejected.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Factor min(i, n-i)/h with h = n div 2, accumulated from 1/h; x[0] = 0.
// For odd n both middle elements get 1 (n = 5: 0, 0.5, 1, 1, 0.5).
AnalysisStatus TriangleWindow(double* x, std::int32_t n);
// sin^2(pi*i/n); x[0] is set to 0 (not multiplied, so a non-finite x[0]
// becomes 0).
AnalysisStatus HanningWindow(double* x, std::int32_t n);
// 0.54 - 0.46 cos(theta); x[0] times 0.08.
AnalysisStatus HammingWindow(double* x, std::int32_t n);
// 0.42 - 0.5 cos(theta) + 0.08 cos(2 theta); x[0] times the stored
// a0 - a1 + a2 = -1.3877787807814457e-17 (a tiny negative number, not 0).
AnalysisStatus BlackmanWindow(double* x, std::int32_t n);
// (7938 - 9240 cos(theta) + 1430 cos(2 theta))/18608.
AnalysisStatus ExactBlackmanWindow(double* x, std::int32_t n);
// Three-term Blackman-Harris: 0.42323, 0.49755, 0.07922.
AnalysisStatus BlackmanHarrisWindow(double* x, std::int32_t n);
// Flat top: 0.2810638602, 0.5208971735, 0.1980389663.
AnalysisStatus FlatTopWindow(double* x, std::int32_t n);
// I0(beta*sqrt(1 - t^2))/I0(beta) with t = 1 - 2i/n; x[0] times 1/I0(beta).
AnalysisStatus KaiserWindow(double* x, std::int32_t n, double beta);
// sum over k of (-1)^k a[k] cos(k theta), k = 0 .. m-1; x[0] times
// a0 - a1 + a2 - ..., and for even n the middle element times a0 + a1 + ...
// n < 1 or m < 1 -> -20003.
AnalysisStatus GeneralCosineWindow(double* x, std::int32_t n, const double* a, std::int32_t m);
// 10 % cosine taper at each end: k = n div 10; for k < 1 nothing changes
// (fewer than 10 samples pass through); otherwise x[0] = x[n-1] = 0 and
// x[i], x[n-1-i] are multiplied by sin^2(i*pi/(2k)) for i = 1 .. k-1.
AnalysisStatus CosineTaperWindow(double* x, std::int32_t n);
// final_value^(i/(n-1)): exponent accumulated by ln(final_value)/(n-1) per
// sample, so w(0) = 1 and w(n-1) ~ final_value. final_value <= 0 is not
// rejected (the samples after the first are then not meaningful).
AnalysisStatus ExponentialWindow(double* x, std::int32_t n, double final_value);
// Keeps the first k = trunc(n*duty/100) samples (k clamped to [0, n], NaN
// counts as 0) and sets the rest to 0. duty in percent.
AnalysisStatus ForceWindow(double* x, std::int32_t n, double duty);

// Modified Bessel function of order 0 as the Kaiser window uses it: the power
// series sum ((z/2)^k/k!)^2 from sum = term = 1, at most 25 further terms,
// stopping at the first term <= 1e-8. Truncated for large z (above about
// 30) by design.
double BesselI0(double z);

// --- Window code tables -------------------------------------------------

// Code table of ScaledWindow (any code not listed is the rectangular window):
//   0 none   1 Hanning   2 Hamming   3 Blackman-Harris (three-term)
//   4 exact Blackman   5 Blackman   6 flat top
//   7 four-term Blackman-Harris   8 seven-term Blackman-Harris
// ENBW (bins) and coherent gain are stored constants of each window, not
// computed from data (the exact Blackman gain 0.42659071367 is a rounded a0).
struct WindowConstants {
    double enbw;
    double coherent_gain;
};
WindowConstants ScaledWindowConstants(std::int32_t window_type);
// Applies the window of `window_type` to x[0 .. n-1], unscaled. n < 1 ->
// -20003 for the listed windows; the rectangular one accepts any n.
AnalysisStatus ApplyScaledWindowType(double* x, std::int32_t n, std::int32_t window_type);
// ScaledWindow: applies the window, writes its ENBW and coherent gain, and
// multiplies x by 1/coherent gain. n < 0 -> -20004; n = 0 succeeds with
// nothing changed (ENBW and gain still written).
AnalysisStatus ScaledWindowCore(double* x, std::int32_t n, std::int32_t window_type, double* enbw,
                                double* coherent_gain);

// Code table of the windowed FIR designs (a different numbering):
//   2 triangle   3 Hanning   4 Hamming   5 Blackman   6 Kaiser (with beta)
//   any other code: rectangular (x left as it is, any n, status 0).
// Applies the periodic window of that code to x[0 .. n-1].
AnalysisStatus ApplyFirWindowType(double* x, std::int32_t n, std::int32_t window_code, double beta);
// The symmetric window of length n the FIR designs use: w[0 .. n-1] = 1,
// the periodic window of length n - 1 applied to w[0 .. n-2], then
// w[n-1] = w[0]. Returns the window kernel's status (-20003 when a window
// code needs n - 1 < 1 points); w is left all ones on failure. n < 1 writes
// nothing. The caller owns w (n doubles).
AnalysisStatus SymmetricFirWindow(double* w, std::int32_t n, std::int32_t window_code, double beta);

}  // namespace vn
