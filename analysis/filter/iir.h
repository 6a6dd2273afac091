// IIR filtering and coefficient design: Butterworth, Chebyshev (passband
// ripple R dB), inverse Chebyshev (stopband attenuation A dB at the cutoff)
// and elliptic (both), each as lowpass, highpass, bandpass and bandstop, and
// the general direct-form runner.
//
// Filtering kernels design the cascade of sections (analysis/filter/
// iir_design.h) and run every section over the whole sequence from rest, in
// design order; the sections are never merged. x and y may be the same
// buffer; otherwise x is copied into y first. Checks, first failure wins:
//   n < 1: -20003; order < 1: -20021;
//   fc <= 0 or fs <= 0 (band: fl <= 0, fh <= 0, fs <= 0 or fh <= fl): -20023;
//   ripple <= 0: -20024 / attenuation <= 0: -20025;
//   fc (band: fh) > fs/2: -20020 (fs/2 itself is accepted).
// A NaN fails the test it appears in.
//
// The Chebyshev lowpass and highpass of even order carry 10^(-R/20) in
// their first pole pair (DC or fs/2 gain -R dB, passband within [-R, 0] dB);
// the band forms do not, so an even-order Chebyshev bandpass or bandstop
// ripples between 0 and +R dB. A first-order Chebyshev bandpass or bandstop
// equals the Butterworth one whatever the ripple. The inverse Chebyshev
// cutoff is the stopband edge: the gain there is -A dB.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

AnalysisStatus BwLowPass(const double* x, std::int32_t n, double fs, double fc, std::int32_t order, double* y);
AnalysisStatus BwHighPass(const double* x, std::int32_t n, double fs, double fc, std::int32_t order, double* y);
AnalysisStatus BwBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, std::int32_t order,
                          double* y);
AnalysisStatus BwBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, std::int32_t order,
                          double* y);

AnalysisStatus ChLowPass(const double* x, std::int32_t n, double fs, double fc, double ripple, std::int32_t order,
                         double* y);
AnalysisStatus ChHighPass(const double* x, std::int32_t n, double fs, double fc, double ripple, std::int32_t order,
                          double* y);
AnalysisStatus ChBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                          std::int32_t order, double* y);
AnalysisStatus ChBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                          std::int32_t order, double* y);

AnalysisStatus InvChLowPass(const double* x, std::int32_t n, double fs, double fc, double atten, std::int32_t order,
                            double* y);
AnalysisStatus InvChHighPass(const double* x, std::int32_t n, double fs, double fc, double atten, std::int32_t order,
                             double* y);
AnalysisStatus InvChBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double atten,
                             std::int32_t order, double* y);
AnalysisStatus InvChBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double atten,
                             std::int32_t order, double* y);

// Elliptic: passband ripple R dB and stopband attenuation A dB, A > R. fc
// (band: fl and fh) are passband edges, where the gain is -R dB; the
// passband lies within [-R, 0] dB for every type and order (an even order
// carries 10^(-R/20) in its first pair). The stopband begins where the
// degree equation puts it, at the prewarped edge tan(pi fc/fs)/k for the
// lowpass (k the selectivity modulus; iir_design.cpp), and stays at or below
// -A dB from there on. Checks as above with ripple <= 0: -20024, then
// attenuation <= 0: -20025, then attenuation <= ripple: -20028.
AnalysisStatus ElpLowPass(const double* x, std::int32_t n, double fs, double fc, double ripple, double atten,
                          std::int32_t order, double* y);
AnalysisStatus ElpHighPass(const double* x, std::int32_t n, double fs, double fc, double ripple, double atten,
                           std::int32_t order, double* y);
AnalysisStatus ElpBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                           double atten, std::int32_t order, double* y);
AnalysisStatus ElpBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                           double atten, std::int32_t order, double* y);

// Direct-form coefficients of the same cascades: a (feedback, a[0] = 1) and
// b in ascending powers of z^-1, m = order + 1 entries for types 0 and 1,
// 2*order + 1 for types 2 and 3; entries m .. na-1 (nb-1) are not touched.
// Checks, first failure wins: order < 1: -20021; for types 0 and 1 fh is
// replaced by (fs/2 + fl)/2 first; fl <= 0, fh <= 0 or fs <= 0: -20023;
// ripple <= 0: -20024 (attenuation <= 0: -20025; elliptic: ripple, then
// attenuation, then attenuation <= ripple: -20028); fl >= fh: -20023;
// fh > fs/2: -20020; m > na or m > nb: -20008 (m counted as order + 1 for
// an unknown type); type outside 0..3: -20061; no memory: -20001.
AnalysisStatus BwCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double* a,
                            std::int32_t na, double* b, std::int32_t nb);
AnalysisStatus ChCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double ripple,
                            double* a, std::int32_t na, double* b, std::int32_t nb);
AnalysisStatus InvChCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double atten,
                               double* a, std::int32_t na, double* b, std::int32_t nb);
AnalysisStatus ElpCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double ripple,
                             double atten, double* a, std::int32_t na, double* b, std::int32_t nb);

// Direct form I, y[i] = (sum_k b[k] x[i-k] - sum_{k>=1} a[k] y[i-k]) / a[0],
// each sum taken oldest term first from 0.0. y1 (na-1 values) and x1 (nb-1
// values) hold the outputs and inputs before x[0], oldest first, and are
// replaced by those after x[n-1], so that a record split over several calls
// gives the same output as one call. a[0] is used as given (a zero a[0]
// gives infinities). Runs the recursive form when na >= 1 and a and y1 are
// given, otherwise the FIR form with b and x1 only (na and y1 ignored).
// Recursive: na < 1 or nb < 1: -20003; FIR: nb < 1: -20003; then n < 1:
// -20003; a state array missing while its count is above 0 (x1 with
// nb > 1): -20008. y must not overlap x, a, b or the state arrays.
AnalysisStatus IIRFilterRun(const double* x, std::int32_t n, const double* a, double* y1, std::int32_t na,
                            const double* b, double* x1, std::int32_t nb, double* y);

}  // namespace vn
