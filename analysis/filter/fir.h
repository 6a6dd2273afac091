// Linear-phase FIR designs: windowed ideal responses (any window of the FIR
// code table, or Kaiser with a shape parameter) and equiripple (minimax)
// multiband designs by the Remez exchange.
//
// Taps h[0 .. n-1] are symmetric (antisymmetric for the differentiator and
// Hilbert shapes of the equiripple design) about the centre (n-1)/2.
// Frequencies are in any unit; only f/fs matters. Every routine checks its
// arguments first, in the order listed, before writing anything (a windowed
// design whose window fails leaves the unwindowed ideal response in h).
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Truncated ideal impulse response of filter type 0 lowpass, 1 highpass,
// 2 bandpass, 3 bandstop, with t = i - (n-1)/2:
//   lowpass   sin(w t)/(pi t)                     centre 2 fc/fs
//   highpass  -sin(w t)/(pi t)                    centre 1 - 2 fc/fs
//   bandpass  (sin(wh t) - sin(wl t))/(pi t)      centre 2 (fh - fl)/fs
//   bandstop  (sin(wl t) - sin(wh t))/(pi t)      centre 1 - 2 (fh - fl)/fs
// (w = 2 pi f/fs). Types 0 and 1 take the cut-off in f_low and ignore
// f_high (it is replaced by (fs/2 + f_low)/2 before the checks). The phases
// and denominators advance by repeated addition from the first tap, and
// each value is written to h[i] and h[n-1-i].
// Checks: type outside 0..3 -> -20061; n < 1 -> -20021; f_low > fs/2 or
// f_high > fs/2 -> -20020 (so fs = 0 with fc > 0 gives -20020); then
// lowpass/highpass fc <= 0 or fs <= 0, band types fs <= 0, fl <= 0, fh <= 0
// or fh <= fl -> -20023 (a NaN fails these too); highpass and bandstop with
// an even n -> -20033.
AnalysisStatus IdealFirResponse(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                                double* h);

// Multiplies h[0 .. n-1] by the symmetric window of the FIR code table
// (2 triangle, 3 Hanning, 4 Hamming, 5 Blackman, 6 Kaiser with beta, other
// codes rectangular): the periodic window of n - 1 points closed by
// repeating its first value, so both end taps get the same factor. A window
// that would need n - 1 < 1 points fails with -20003 and h is unchanged;
// -20001 when the window buffer cannot be had.
AnalysisStatus ApplyFirWindow(std::int32_t window_code, double* h, std::int32_t n, double beta);

// IdealFirResponse then ApplyFirWindow. wind_type: 1 rectangular, 2 triangle,
// 3 Hanning, 4 Hamming, 5 Blackman; anything else is Hamming.
AnalysisStatus WindowedFirDesign(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                                 std::int32_t wind_type, double* h);

// IdealFirResponse then the Kaiser window. A negative (or NaN) beta is taken
// as 4.5; beta = 0 is the rectangular window.
AnalysisStatus KaiserFirDesign(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                               double beta, double* h);

// Equiripple design: minimises max |W(f) (D(f) - H(f))| over the bands
// (band i runs from edges[2i] to edges[2i+1]) by the Remez exchange on a
// grid of spacing 0.5/(16 r) in f/fs, r the number of cosine functions.
//   ftype 1  multiband: D = desired[i], W = weights[i]; symmetric taps
//            (an even n has a zero at fs/2, so its last band must ask 0).
//   ftype 2  differentiator: D = desired[i]*f/fs, W = weights[i]/(f/fs)
//            where desired[i] > 0 (relative error), else weights[i];
//            antisymmetric taps, H(f) = j e^{-j w (n-1)/2} A(f).
//   ftype 3  Hilbert transformer: D = desired[i], W = weights[i];
//            antisymmetric taps as for ftype 2.
// delta receives the levelled weighted error of the final reference, signed:
// positive when the response lies below the desired one at the lowest
// extremal frequency. iteration_limit < 1 is taken as 100.
// Checks, in order: n < 3 -> -20031; bands < 1 -> -20003; fs <= 0 -> -20023;
// an edge < 0, a weight <= 0 or a desired value < 0 -> -20023; last edge/fs
// > 0.5 -> -20020; edges not strictly increasing -> -20023; the band layout
// each ftype needs (see the README) -> -20031 or -20033; ftype other than
// 1..3 -> -20061; r + 2 >= 512 -> -20001; a grid with fewer than r + 1
// points -> -20031. No convergence within the iteration limit -> -20062
// (taps and delta are not written).
AnalysisStatus EquiRippleDesign(std::int32_t bands, const double* desired, const double* weights, double fs,
                                const double* edges, std::int32_t ftype, std::int32_t n, double* h,
                                double* delta, std::int32_t iteration_limit);

// The shortcut designs (ftype 1, iteration limit 100, unit weights):
//   type 0 lowpass   [0, f1] -> 1, [f2, fs/2] -> 0
//   type 1 highpass  [0, f1] -> 0, [f2, fs/2] -> 1
//   type 2 bandpass  [0, f1] -> 0, [f2, f3] -> 1, [f4, fs/2] -> 0
//   type 3 bandstop  [0, f1] -> 1, [f2, f3] -> 0, [f4, fs/2] -> 1
// (f3 and f4 are ignored for types 0 and 1). delta receives |delta|.
// Type outside 0..3 -> -20061, then the checks of EquiRippleDesign.
AnalysisStatus EquiRippleBandDesign(std::int32_t type, double fs, double f1, double f2, double f3, double f4,
                                    std::int32_t n, double* h, double* delta);

}  // namespace vn
