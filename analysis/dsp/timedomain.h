// Time-domain operations on sampled records: direct convolution and
// correlation, deconvolution through the real transform, running integral,
// central difference, decimation, phase unwrapping and pulse measurement.
//
// Inputs are read-only and outputs are separate arrays that must not overlap
// them (UnwrapPhase works in place). All checks come before any work, so a
// failing call writes nothing.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// out[m] = sum over i of x[i]*y[m-i], m = 0 .. nx+ny-2, each output summed
// from 0.0 in increasing i: the direct sum for every size (no transform).
// nx < 1 or ny < 1 -> -20003; an output count above 2^31 - 1 or no memory for
// the padded copy of y -> -20001.
AnalysisStatus ConvolveDirect(const double* x, std::int32_t nx, const double* y, std::int32_t ny, double* out);

// out[m] = sum over i of x[i]*y[i + m - (nx-1)], m = 0 .. nx+ny-2, summed
// from 0.0 in increasing index of y: out[nx-1] is lag 0, lower indices are
// negative lags of y against x. Not normalised. Checks as ConvolveDirect.
AnalysisStatus CorrelateDirect(const double* x, std::int32_t nx, const double* y, std::int32_t ny, double* out);

// h of ny - nx + 1 values with y = x convolved with h, by dividing the real
// transforms of y and x zero-filled to N, the smallest power of two >= ny
// (circular over N points; exact when y really is such a convolution). No
// guard against a zero bin of X (the quotient is then not finite).
// ny < 1 or nx < 1 -> -20003; nx > ny + 1 -> -20008; nx = ny + 1 gives an
// empty result (nothing is computed); scratch -> -20001.
AnalysisStatus DeconvolveFFT(const double* y, std::int32_t ny, const double* x, std::int32_t nx, double* out);

// Running Simpson sum: with x[-1] = x_init, x[n] = x_final and
// h = dt * 0.16666666666666666, out[i] = out[i-1] + (x[i-1] + 4 x[i] + x[i+1]) h
// from out[-1] = 0. n < 1 -> -20003; dt <= 0 (or NaN) -> -20016.
AnalysisStatus IntegrateSimpson(const double* x, std::int32_t n, double dt, double x_init, double x_final,
                                double* out);

// out[i] = (x[i+1] - x[i-1]) * (0.5/dt) with the same extension. Checks as
// IntegrateSimpson.
AnalysisStatus DifferenceCentral(const double* x, std::int32_t n, double dt, double x_init, double x_final,
                                 double* out);

// Number of outputs of DecimateCore: ceil(n/d) (0 when the call would fail).
std::int32_t DecimatedLength(std::int32_t n, std::int32_t d);

// out[k] for k = 0 .. ceil(n/d)-1: x[k*d], or with `average` the mean of
// x[k*d .. k*d+d-1]; the last block, when n is not a multiple of d, is the
// mean of the samples it has. n < 1 -> -20003; d < 1 or d > n -> -20022.
AnalysisStatus DecimateCore(const double* x, std::int32_t n, std::int32_t d, bool average, double* out);

// In place. For i = 1 .. n-1, d = p[i] - p[i-1] on the corrected values: d > pi
// subtracts 2 pi from p[i] and every later element, d < -pi adds it; at most
// one correction per step, so a jump above 3 pi is only partly removed.
// Sequences of one or two samples are returned as they are. n < 1 -> -20003.
AnalysisStatus UnwrapPhase(double* p, std::int32_t n);

// Parameters of a single pulse. Levels are in the units of x; times are in
// samples.
struct PulseParameters {
    double amp = 0, amp90 = 0, amp50 = 0, amp10 = 0;  // amplitudes above base
    double top = 0, base = 0;
    double top_overshoot = 0, base_overshoot = 0;  // max - top, base - min
    std::int32_t delay = 0, width = 0, rise_time = 0, fall_time = 0;
    double slew_rate = 0;  // (amp90 - amp10)/rise_time; 1e30 when rise_time = 0
};

// Base and top are the modes of the lower and upper twelve intervals of a
// 25-interval histogram over [min, max] (bin centres, ties to the outermost
// interval); the edges come from one forward scan at 10, 50 and 90 % of the
// amplitude. A record without a pulse is no error: the scans run to the end.
// A constant record (max = min, or a NaN first sample) has no histogram: it
// reports top = base = its value, zero amplitudes, overshoots and times, and
// slew rate 0. n < 1 -> -20003.
AnalysisStatus PulseParamCore(const double* x, std::int32_t n, PulseParameters* out);

}  // namespace vn
