// Interpolation on tabulated points (x[i], y[i]), i = 0 .. n-1.
//
// PolyInterp and RatInterp accept the abscissas in any order; Spline and
// SpInterp expect them increasing (SpInterp searches by bisection). Outputs
// are written only on success, except that Spline may have overwritten part
// of y2 when it reports coinciding abscissas.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// A spline end slope strictly greater than this requests a natural end (zero
// second derivative); this value itself is still a slope.
constexpr double kSplineNaturalEnd = 9.9e29;

// Value at xVal of the polynomial of degree n-1 through all points (Neville),
// with the last correction added as an error estimate. A single point gives
// y[0] with error |xVal - x[0]|. Coinciding abscissas: -20049.
// Scratch: 2n doubles.
AnalysisStatus PolyInterp(const double* x, const double* y, std::int32_t n, double xVal, double* value,
                          double* error);

// Value at xVal of the diagonal rational function through all points
// (Bulirsch-Stoer), with the last correction as an error estimate. An xVal
// equal to some x[i] returns y[i] (first match) with error 0. A pole at xVal
// gives -20050. Scratch: 2n doubles.
AnalysisStatus RatInterp(const double* x, const double* y, std::int32_t n, double xVal, double* value,
                         double* error);

// Second derivatives y2[0..n-1] of the cubic spline through the points, with
// end slopes b1 (at x[0]) and b2 (at x[n-1]), or natural ends for slopes
// above kSplineNaturalEnd. Equal abscissas among interior neighbours: -20049.
// A single point has no curvature to fit: y2[0] = 0 and success, whatever the
// end slopes (SpInterp refuses to evaluate on one point). Scratch: n doubles.
AnalysisStatus Spline(const double* x, const double* y, std::int32_t n, double b1, double b2, double* y2);

// Value at xVal of the cubic spline with second derivatives y2 (from Spline).
// Abscissas outside [x[0], x[n-1]] extrapolate with the cubic of the end
// interval. A zero-width bracket, including n = 1, gives -20049.
AnalysisStatus SpInterp(const double* x, const double* y, const double* y2, std::int32_t n, double xVal,
                        double* value);

}  // namespace vn
