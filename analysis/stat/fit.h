// Least-squares curve fitting: straight line, exponential, polynomial and the
// general linear model y ~ H*b.
//
// Every routine writes the fitted values z (n doubles), its parameters and the
// mean squared error mse = sum((z[i] - y[i])^2) / n of the fit against the
// data as given (unweighted, also when standard deviations weight the fit).
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Largest number of columns (parameters) GeneralLeastSquares accepts.
constexpr std::int32_t kMaxFitParameters = 90;

// Factorisations of GeneralLeastSquares. Codes 0-3 scale row i of H and y by
// 1/stdDev[i], then scale every column of that copy by a power of two that
// brings its 2-norm into [1/4, 1) (exact, and undone exactly afterwards), and
// factor the result A (n-by-k); after the first solution they take two
// correction steps from the residual (summed in twice the working precision)
// with the same factorisation. Codes 4 and 5 form the normal equations
// H^T W H b = H^T W y with W = diag(1/stdDev[i]^2) from H as given. All six
// give the same b to rounding when H has full column rank and is well
// conditioned; they differ in cost, in how much of the condition number they
// square, and in what they do with a rank-deficient H.
enum : std::int32_t {
    // Thin SVD A = U S V^T; b = V S^+ U^T y, dropping singular values of the
    // column-scaled A at or below max(n, k) * s[0] * 2^-52. Rank-deficient A
    // gives the minimum-norm solution (in the scaled unknowns) and the
    // warning kWarnRankDeficient; covar = V (S^+)^2 V^T, scaled back.
    kFitSvd = 0,
    // Householder QR A = Q R, Q kept as reflectors; R b = Q^T y. A diagonal
    // of R at or below max(n, k) * max|R_jj| * 2^-52 is -20041.
    // covar = R^-1 R^-T, scaled back.
    kFitHouseholder = 1,
    // QR by Givens rotations applied row by row to A (and kept, for y and the
    // residuals); then as code 1. Needs a third n-by-k block of scratch.
    kFitGivens = 2,
    // Cholesky factor of A^T A (packed); covar from the same factor. Squares
    // the condition number of the scaled A, so it refuses (-20041) designs
    // that codes 0-2 still solve.
    kFitCholesky = 3,
    // LU solution of the normal equations; covar = (H^T W H)^-1 by InvMatrix.
    kFitNormalLU = 4,
    // b = (H^T W H)^-1 H^T W y with the explicit inverse from InvMatrix, which
    // is also covar.
    kFitNormalInverse = 5,
};

// Straight line z = slope*x + intercept from the closed-form sums.
// n < 2: -20006. All x equal makes the denominator zero: slope and intercept
// are then non-finite and the status is still 0.
AnalysisStatus LinearFit(const double* x, const double* y, std::int32_t n, double* z, double* slope,
                         double* intercept, double* mse);

// y = a*exp(b*x) by a straight-line fit of ln|y| against x (not a nonlinear
// least-squares fit of y). a and b are set to 0 first. n < 2: -20006. The y
// values must be nonzero and of one sign (-20036). When y[0] < 0 the routine
// negates y in place for the duration of the call and restores it on every
// return path, so y must not be read by anyone else meanwhile.
AnalysisStatus ExponentialFit(const double* x, double* y, std::int32_t n, double* z, double* a, double* b,
                              double* mse);

// Polynomial z = sum coef[j] * x^j, j = 0 .. order, through
// GeneralLeastSquares with code kFitSvd and unit weights (so its warning for a
// rank-deficient design, e.g. repeated x, passes through). Its correction
// steps take their residuals from the powers of x carried in two doubles
// rather than from their rounded copies in the design matrix, so it reaches
// the least-squares solution of the exact power basis. Checks: n < 1
// (-20003), order < 0 (-20103), n <= order (-20037); scratch n*(order+1).
AnalysisStatus PolynomialFit(const double* x, const double* y, std::int32_t n, std::int32_t order, double* z,
                             double* coef, double* mse);

// Weighted linear least squares: b (k values) minimising
// sum(((y[i] - (H b)[i]) / stdDev[i])^2) for the n-by-k row-major H; z = H b;
// covar (k-by-k, may be null) the covariance of b, (H^T W H)^-1.
// stdDev may be null (unit weights). Checks, in order: n < 1 (-20003),
// k > n (-20037), k < 1 or k > 90 (-20021), algorithm outside 0..5 (-20061),
// scratch (-20001), a standard deviation that is not positive (-20035).
// Codes 0-3 answer -20999 when H divided by the deviations holds an infinity
// or NaN. A singular system is -20041 for codes 1-5 (code 0 answers it with
// the minimum-norm solution and +20001). Outputs are written only on success
// (a status >= 0).
AnalysisStatus GeneralLeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                                   const double* stdDev, std::int32_t algorithm, double* z, double* b,
                                   double* covar, double* mse);

}  // namespace vn
