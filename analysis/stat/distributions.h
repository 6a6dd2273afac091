// Lower-tail probabilities of the standard normal, Student t, F and
// chi-square distributions, their inverses, and the log-gamma and regularised
// incomplete beta functions behind them.
//
// The approximations are deliberately short and their accuracy is part of the
// behaviour:
//   - NormalLowerTail: three-term polynomial in t = 1/(1 + 0.33267|x|),
//     absolute error below about 1.2e-5.
//   - NormalQuantile: rational approximation, absolute error below about
//     4.5e-4.
//   - LogGamma: six-term series, absolute error about 2e-10 for x >= 1/2.
//   - IncompleteBeta: continued fraction stopped at a relative change of
//     1e-7 (at most 100 terms).
//   - The t, F and chi-square inverses bisect the forward routine until the
//     bracket is at most 1e-4 wide and return its lower end, so they lie up to
//     1e-4 below the quantile of the forward routine; probabilities beyond the
//     search interval return values near its ends.
// The probability checks are p <= 0 or p >= 1; a NaN passes them (the normal
// quantile then returns NaN, a bisection the top of its interval).
// Degrees of freedom are integers; none of the routines allocates or keeps
// state. Results are written only on success.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// ln Gamma(x) for x > 0.
double LogGamma(double x);

// Continued fraction of the incomplete beta function (even/odd form, four-term
// recurrence). Returns the last convergent after 100 terms without error.
double BetaContinuedFraction(double a, double b, double x);

// Regularised incomplete beta I_x(a, b). x outside [0, 1] gives -20057.
AnalysisStatus IncompleteBeta(double a, double b, double x, double* result);

// P(Z <= x) for the standard normal. Never fails.
AnalysisStatus NormalLowerTail(double x, double* p);

// P(T <= t) with n degrees of freedom. n < 1: -20052.
AnalysisStatus StudentLowerTail(double t, std::int32_t n, double* p);

// P(F <= f) with n numerator and m denominator degrees of freedom.
// n < 1 or m < 1: -20052; f <= 0 gives 0.
AnalysisStatus FisherLowerTail(double f, std::int32_t n, std::int32_t m, double* p);

// P(X^2 <= x) with n degrees of freedom: closed-form finite series (odd n also
// uses NormalLowerTail, and carries its error). n < 1: -20052; x <= 0 gives 0.
// The series terms x^k and the factorial-like denominators overflow for large
// n (roughly n > 150 at x of a few hundred), which then gives NaN.
AnalysisStatus ChiSquareLowerTail(double x, std::int32_t n, double* p);

// x with P(Z <= x) = p. p <= 0 or p >= 1: -20053. Since the formula works with
// ln(1/p^2), p below about 1e-154 (or 1 - p that small) overflows to NaN.
AnalysisStatus NormalQuantile(double p, double* x);

// Checks: n < 1 (-20052), then p outside (0, 1) (-20053). Search on
// [-10000, 10000].
AnalysisStatus StudentQuantile(double p, std::int32_t n, double* t);

// Checks: n < 1 or m < 1 (-20052), then p outside (0, 1) (-20053). Search on
// [1e-6, 10000].
AnalysisStatus FisherQuantile(double p, std::int32_t n, std::int32_t m, double* f);

// Checks in the opposite order to the other inverses: p outside (0, 1)
// (-20053) first, then n < 1 (-20052). Search on [0, 10000].
AnalysisStatus ChiSquareQuantile(double p, std::int32_t n, double* x);

}  // namespace vn
