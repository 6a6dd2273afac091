#include "analysis/stat/fit.h"

#include "analysis/array/array_ops.h"
#include "analysis/matrix/decompositions.h"
#include "analysis/matrix/linalg.h"
#include "analysis/stat/scratch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace vn {

namespace {

// Correction steps after the first solution of codes 0-3. Each gains about
// -log10(cond(scaled A) * 2^-52) digits; three carry a scaled condition
// number up to about 1e11 (degree 10 on Filip's data) to the solution's own
// accuracy. Each step costs about 20 flops per entry of A (the compensated
// sums), so for few columns the steps take as long as the factorisation.
constexpr int kRefinementSteps = 3;

// Doubles of scratch, or null when the count (or its byte size on a 32-bit
// target) cannot be had.
std::unique_ptr<double[]> DoubleScratch(std::int64_t count) {
    if (count < 1) count = 1;
    if (static_cast<std::uint64_t>(count) > std::numeric_limits<std::size_t>::max() / sizeof(double))
        return nullptr;
    return stat_detail::AllocateScratch<double>(static_cast<std::size_t>(count));
}

double SumSquaredError(const double* z, const double* y, std::int32_t n) {
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double d = z[i] - y[i];
        s += d * d;
    }
    return s / n;
}

// g (k-by-k) = A^T D A and c = A^T D y for the n-by-k a, with D = diag(w)
// (the identity when w is null). Only the lower triangle is summed; the upper
// is mirrored so that the general solvers see an exactly symmetric matrix.
void NormalEquations(const double* a, std::int32_t n, std::int32_t k, const double* y, const double* w,
                     double* g, double* c) {
    for (std::int32_t p = 0; p < k; ++p) {
        for (std::int32_t q = 0; q <= p; ++q) {
            double s = 0.0;
            for (std::int32_t i = 0; i < n; ++i) {
                const double t = a[std::int64_t(i) * k + p] * a[std::int64_t(i) * k + q];
                s += w ? t * w[i] : t;
            }
            g[p * k + q] = s;
            g[q * k + p] = s;
        }
        double s = 0.0;
        for (std::int32_t i = 0; i < n; ++i) {
            const double t = a[std::int64_t(i) * k + p] * y[i];
            s += w ? t * w[i] : t;
        }
        c[p] = s;
    }
}

// Packs the upper triangle of the row-major k-by-k r (the factor of an n-row
// A) after refusing a numerically dependent column: such a column leaves a
// diagonal entry of R at rounding level rather than exactly zero, far above
// the triangular solver's own threshold, so the rank tolerance of the SVD
// code decides instead. packed: k(k+1)/2 doubles.
AnalysisStatus PackFactor(const double* r, std::int32_t n, std::int32_t k, double* packed) {
    double big = 0.0;
    for (std::int32_t j = 0; j < k; ++j) big = std::max(big, std::fabs(r[j * k + j]));
    const double tol = static_cast<double>(std::max(n, k)) * big * kRankEpsilon;
    for (std::int32_t j = 0; j < k; ++j)
        if (!(std::fabs(r[j * k + j]) > tol)) return kErrSingular;
    return PackTriangle(r, k, kPackUpper, packed);
}

// covar = R^-1 R^-T (the inverse of R^T R = A^T A) from the packed R, which is
// overwritten by its inverse.
AnalysisStatus CovarianceFromFactor(double* packed, std::int32_t k, double* covar) {
    const AnalysisStatus st = PackedTriangularInverse(packed, k, 1);
    if (st < 0) return st;
    // (R^-1 R^-T)[p][q] = sum over j >= max(p, q) of Rinv[p][j] * Rinv[q][j].
    for (std::int32_t p = 0; p < k; ++p) {
        for (std::int32_t q = 0; q <= p; ++q) {
            double s = 0.0;
            for (std::int32_t j = p; j < k; ++j) s += packed[PackedUpperIndex(p, j)] * packed[PackedUpperIndex(q, j)];
            covar[p * k + q] = s;
            covar[q * k + p] = s;
        }
    }
    return kOk;
}

// Power-of-two column scales: d[j] = 2^-e with 2^e just above the 2-norm of
// column j of the n-by-k a, so that every scaled column has a norm in
// [1/4, 1). A polynomial basis spans many orders of magnitude, and a
// factorisation (and its rank decision) of the raw columns sees the small
// ones as noise; the scaled matrix has a condition number close to the
// smallest any column scaling can give. Multiplying by a power of two is
// exact, so A*D is the scaled problem itself and b = D*c returns its
// solution without rounding. A zero or non-finite column keeps scale 1.
void ColumnScales(const double* a, std::int32_t n, std::int32_t k, double* d) {
    for (std::int32_t j = 0; j < k; ++j) {
        double m = 0.0;
        bool finite = true;
        for (std::int32_t i = 0; i < n; ++i) {
            const double v = std::fabs(a[std::int64_t(i) * k + j]);
            if (!(v <= std::numeric_limits<double>::max())) finite = false;
            m = std::max(m, v);
        }
        d[j] = 1.0;
        if (!finite || m == 0.0) continue;
        double s = 0.0;  // sum of (a/m)^2: between 1 and n, no overflow
        for (std::int32_t i = 0; i < n; ++i) {
            const double t = a[std::int64_t(i) * k + j] / m;
            s += t * t;
        }
        int em = 0, es = 0;
        std::frexp(m, &em);
        std::frexp(std::sqrt(s), &es);
        // Clamped so that the scale itself stays a finite normal number.
        const int e = std::min(1020, std::max(-1020, em + es));
        d[j] = std::ldexp(1.0, -e);
    }
}

// Error-free transformations (no fused multiply-add: Dekker's splitting).
inline void TwoSum(double a, double b, double& s, double& e) {
    s = a + b;
    const double bb = s - a;
    e = (a - (s - bb)) + (b - bb);
}
inline void TwoProduct(double a, double b, double& p, double& e) {
    constexpr double kSplit = 134217729.0;  // 2^27 + 1
    p = a * b;
    const double ca = kSplit * a, cb = kSplit * b;
    const double ah = ca - (ca - a), al = a - ah;
    const double bh = cb - (cb - b), bl = b - bh;
    e = ((ah * bh - p) + ah * bl + al * bh) + al * bl;
}

// The weighted, column-scaled problem A c ~ ys of codes 0-3, built on the
// fly from H, y and the weights exactly as the copy that was factorised, so
// that the residual refers to the same matrix even where the factorisation
// has overwritten that copy.
//
// For a polynomial fit the design is the power basis of the abscissas x, and
// H holds its powers rounded to double. That rounding alone moves the
// solution of a badly conditioned basis (degree 10 on Filip's data) in the
// eighth digit, so there the residuals use the powers themselves, carried
// in two doubles (about 2^-104 relative): the corrections then converge to
// the least-squares solution of the exact powers, and H's rounded copy only
// serves as the factorised approximation.
struct ScaledProblem {
    const double* h;
    const double* y;
    const double* stdDev;  // may be null; always null with powersOf
    const double* d;       // column scales
    std::int32_t n, k;
    const double* powersOf;  // the abscissas when H is their power basis, or null

    // Row i of the scaled A in two doubles: hi[j] + lo[j].
    void Row(std::int32_t i, double w, double* hi, double* lo) const {
        if (!powersOf) {
            for (std::int32_t j = 0; j < k; ++j) {
                hi[j] = A(i, j, w);
                lo[j] = 0.0;
            }
            return;
        }
        // x^j = (ph + pl) from (ph + pl) * x with an exact product of ph;
        // the scale d[j] is a power of two.
        const double x = powersOf[i];
        double ph = 1.0, pl = 0.0;
        for (std::int32_t j = 0; j < k; ++j) {
            if (j > 0) {
                double p, e;
                TwoProduct(ph, x, p, e);
                const double l = pl * x + e;
                TwoSum(p, l, ph, pl);
            }
            hi[j] = ph * d[j];
            lo[j] = pl * d[j];
        }
    }

    double RowScale(std::int32_t i) const { return stdDev ? 1.0 / stdDev[i] : 1.0; }
    double A(std::int32_t i, std::int32_t j, double rowScale) const {
        const double v = h[std::int64_t(i) * k + j];
        return (stdDev ? v * rowScale : v) * d[j];
    }
    double Y(std::int32_t i, double rowScale) const { return stdDev ? y[i] * rowScale : y[i]; }

    // The two residuals of the augmented system of the least-squares problem,
    //   f = ys - r - A c   and   g = -A^T r,
    // each summed in twice the working precision (the compensated dot
    // product of Ogita, Rump and Oishi) and rounded once. Both are small
    // differences of large terms near the solution, and a correction step is
    // only as good as its residuals. g is accumulated in index order of i for
    // every j; ghi and glo are k doubles of scratch.
    // ahi and alo: k doubles of scratch for one row of A.
    void Residuals(const double* c, const double* r, double* f, double* g, double* ghi, double* glo, double* ahi,
                   double* alo) const {
        for (std::int32_t j = 0; j < k; ++j) ghi[j] = glo[j] = 0.0;
        for (std::int32_t i = 0; i < n; ++i) {
            const double w = RowScale(i);
            Row(i, w, ahi, alo);
            double hi, lo, p, pe, e;
            TwoSum(Y(i, w), -r[i], hi, lo);
            for (std::int32_t j = 0; j < k; ++j) {
                TwoProduct(ahi[j], c[j], p, pe);
                TwoSum(hi, -p, hi, e);
                lo += e - pe - alo[j] * c[j];
                TwoProduct(ahi[j], r[i], p, pe);
                TwoSum(ghi[j], -p, ghi[j], e);
                glo[j] += e - pe - alo[j] * r[i];
            }
            f[i] = hi + lo;
        }
        for (std::int32_t j = 0; j < k; ++j) g[j] = ghi[j] + glo[j];
    }
    // v -= A x in working precision.
    void SubtractProduct(const double* x, double* v) const {
        for (std::int32_t i = 0; i < n; ++i) {
            const double w = RowScale(i);
            double s = 0.0;
            for (std::int32_t j = 0; j < k; ++j) s += A(i, j, w) * x[j];
            v[i] -= s;
        }
    }
};

// v = R^-1 v and v = R^-T v for the upper triangle of the row-major k-by-k r
// (its diagonal checked by PackFactor).
void SolveUpper(const double* r, std::int32_t k, double* v) {
    for (std::int32_t p = k - 1; p >= 0; --p) {
        double s = v[p];
        for (std::int32_t q = p + 1; q < k; ++q) s -= r[p * k + q] * v[q];
        v[p] = s / r[p * k + p];
    }
}
void SolveUpperTransposed(const double* r, std::int32_t k, double* v) {
    for (std::int32_t p = 0; p < k; ++p) {
        double s = v[p];
        for (std::int32_t q = 0; q < p; ++q) s -= r[q * k + p] * v[q];
        v[p] = s / r[p * k + p];
    }
}

// Householder QR of the row-major n-by-k a in place: R on and above the
// diagonal, the essential part of reflector j (its leading 1 implied) below
// the diagonal of column j, its factor in tau[j]; H_j = I - tau v v^T. The
// columns have been scaled to norms below 1, so the sums of squares cannot
// overflow.
void HouseholderFactor(double* a, std::int32_t n, std::int32_t k, double* tau) {
    for (std::int32_t j = 0; j < k; ++j) {
        double* const col = a + j;  // column j, stride k
        double xx = 0.0;
        for (std::int32_t i = j + 1; i < n; ++i) xx += col[std::int64_t(i) * k] * col[std::int64_t(i) * k];
        const double alpha = col[std::int64_t(j) * k];
        tau[j] = 0.0;
        if (xx == 0.0) continue;  // already triangular in this column
        const double beta = -std::copysign(std::sqrt(alpha * alpha + xx), alpha);
        tau[j] = (beta - alpha) / beta;
        const double scale = 1.0 / (alpha - beta);  // |alpha - beta| >= |beta| > 0
        for (std::int32_t i = j + 1; i < n; ++i) col[std::int64_t(i) * k] *= scale;
        col[std::int64_t(j) * k] = beta;
        for (std::int32_t l = j + 1; l < k; ++l) {
            double* const other = a + l;
            double w = other[std::int64_t(j) * k];
            for (std::int32_t i = j + 1; i < n; ++i) w += col[std::int64_t(i) * k] * other[std::int64_t(i) * k];
            w *= tau[j];
            other[std::int64_t(j) * k] -= w;
            for (std::int32_t i = j + 1; i < n; ++i) other[std::int64_t(i) * k] -= w * col[std::int64_t(i) * k];
        }
    }
}

// v = Q^T v with the reflectors of HouseholderFactor.
void HouseholderApply(const double* a, std::int32_t n, std::int32_t k, const double* tau, double* v) {
    for (std::int32_t j = 0; j < k; ++j) {
        if (tau[j] == 0.0) continue;
        const double* const col = a + j;
        double w = v[j];
        for (std::int32_t i = j + 1; i < n; ++i) w += col[std::int64_t(i) * k] * v[i];
        w *= tau[j];
        v[j] -= w;
        for (std::int32_t i = j + 1; i < n; ++i) v[i] -= w * col[std::int64_t(i) * k];
    }
}

// Column by column, rotate each lower row into the diagonal row so that its
// entry in this column vanishes. The rotations are orthogonal, so the top k
// rows of a end as R. Rotation (j, i) is kept as cs/sn[j * n + i] (1 and 0
// where none was needed) so that Q^T can be applied to other vectors.
void GivensFactor(double* a, std::int32_t n, std::int32_t k, double* cs, double* sn) {
    for (std::int32_t j = 0; j < k; ++j) {
        double* const rj = a + std::int64_t(j) * k;
        for (std::int32_t i = j + 1; i < n; ++i) {
            double* const ri = a + std::int64_t(i) * k;
            const std::int64_t at = std::int64_t(j) * n + i;
            cs[at] = 1.0;
            sn[at] = 0.0;
            if (ri[j] == 0.0) continue;
            const double r = std::hypot(rj[j], ri[j]);
            const double c = rj[j] / r, s = ri[j] / r;
            cs[at] = c;
            sn[at] = s;
            rj[j] = r;
            ri[j] = 0.0;
            for (std::int32_t l = j + 1; l < k; ++l) {
                const double u = rj[l], v = ri[l];
                rj[l] = c * u + s * v;
                ri[l] = c * v - s * u;
            }
        }
    }
}

void GivensApply(std::int32_t n, std::int32_t k, const double* cs, const double* sn, double* v) {
    for (std::int32_t j = 0; j < k; ++j)
        for (std::int32_t i = j + 1; i < n; ++i) {
            const std::int64_t at = std::int64_t(j) * n + i;
            if (sn[at] == 0.0 && cs[at] == 1.0) continue;
            const double u = v[j], w = v[i];
            v[j] = cs[at] * u + sn[at] * w;
            v[i] = cs[at] * w - sn[at] * u;
        }
}

}  // namespace

AnalysisStatus LinearFit(const double* x, const double* y, std::int32_t n, double* z, double* slope,
                         double* intercept, double* mse) {
    if (n < 2) return kErrSamplesBelowTwo;
    double sx = 0.0, sxx = 0.0, sy = 0.0, sxy = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        sx += x[i];
        sxx += x[i] * x[i];
        sy += y[i];
        sxy += x[i] * y[i];
    }
    const double d = sx * sx - sxx * n;
    const double m = (sy * sx - sxy * n) / d;
    const double c = (sxy * sx - sy * sxx) / d;
    for (std::int32_t i = 0; i < n; ++i) z[i] = m * x[i] + c;
    *slope = m;
    *intercept = c;
    *mse = SumSquaredError(z, y, n);
    return kOk;
}

AnalysisStatus ExponentialFit(const double* x, double* y, std::int32_t n, double* z, double* a, double* b,
                              double* mse) {
    *a = 0.0;
    *b = 0.0;
    if (n < 2) return kErrSamplesBelowTwo;

    // All-negative data is fitted as -y, so y is flipped for the sums and
    // flipped back before any return: the caller's array is borrowed, not
    // owned.
    struct Restore {
        double* y;
        std::int32_t n;
        bool active;
        ~Restore() {
            if (active) NegArrayValues(y, n, y);
        }
    } restore{y, n, false};
    if (y[0] < 0) {
        NegArrayValues(y, n, y);
        restore.active = true;
    }
    for (std::int32_t i = 0; i < n; ++i)
        if (!(y[i] > 0)) return kErrYSign;

    double sx = 0.0, sxx = 0.0, sl = 0.0, sxl = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double l = std::log(y[i]);
        sx += x[i];
        sxx += x[i] * x[i];
        sl += l;
        sxl += x[i] * l;
    }
    const double bb = (sxl * n - sl * sx) / (sxx * n - sx * sx);
    double aa = std::exp((sl - bb * sx) / n);
    if (restore.active) {
        aa = -aa;
        NegArrayValues(y, n, y);
        restore.active = false;
    }
    for (std::int32_t i = 0; i < n; ++i) z[i] = aa * std::exp(bb * x[i]);
    *a = aa;
    *b = bb;
    *mse = SumSquaredError(z, y, n);
    return kOk;
}

namespace {
AnalysisStatus LeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                            const double* stdDev, std::int32_t algorithm, double* z, double* b, double* covar,
                            double* mse, const double* powersOf);
}  // namespace

AnalysisStatus PolynomialFit(const double* x, const double* y, std::int32_t n, std::int32_t order, double* z,
                             double* coef, double* mse) {
    if (n < 1) return kErrSamplesBelowOne;
    if (order < 0) return kErrOrderNotPositive2;
    if (n <= order) return kErrPointsNotAboveOrder;
    const std::int32_t k = order + 1;  // no overflow: order < n <= INT32_MAX
    auto h = DoubleScratch(std::int64_t(n) * k);
    if (!h) return kErrNoMemory;
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = 0; j < k; ++j) h[std::int64_t(i) * k + j] = std::pow(x[i], static_cast<double>(j));
    return LeastSquares(h.get(), n, k, y, nullptr, kFitSvd, z, coef, nullptr, mse, x);
}

namespace {

// GeneralLeastSquares, and for PolynomialFit the same with H known to be the
// power basis of powersOf (see ScaledProblem; stdDev is then null).
AnalysisStatus LeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                            const double* stdDev, std::int32_t algorithm, double* z, double* b, double* covar,
                            double* mse, const double* powersOf) {
    if (n < 1) return kErrSamplesBelowOne;
    if (k > n) return kErrPointsNotAboveOrder;
    if (k < 1 || k > kMaxFitParameters) return kErrOrderNotPositive;
    if (algorithm < kFitSvd || algorithm > kFitNormalInverse) return kErrInvalidSelection;

    const std::int64_t nk = std::int64_t(n) * k, kk = std::int64_t(k) * k;
    // Fitted values, coefficients and covariance are built in scratch and
    // copied out at the end, so a failure leaves the outputs untouched.
    auto zs = DoubleScratch(n);
    if (!zs) return kErrNoMemory;
    const bool scaled = algorithm <= kFitCholesky;
    // Codes 0-3: the weighted, column-scaled copy A of H (factorised in place
    // by codes 1 and 2), a second n-by-k block (U for the SVD, the Givens
    // cosines; the sines get a third), and four n-vectors (A's right-hand
    // side, the residual, its correction and a copy to transform). Codes
    // 4-5: the weights.
    auto work = DoubleScratch(scaled ? 2 * nk + 4 * std::int64_t(n) : n);
    auto sines = DoubleScratch(algorithm == kFitGivens ? nk : 1);
    // k-by-k blocks (V or R or A^T A, the covariance), the packed triangle
    // and twelve k-vectors.
    auto small = DoubleScratch(2 * kk + kk / 2 + k + 12 * std::int64_t(k));
    if (!work || !small || !sines) return kErrNoMemory;

    if (stdDev)
        for (std::int32_t i = 0; i < n; ++i)
            if (!(stdDev[i] > 0)) return kErrZeroStdDev;

    double* const mk = small.get();           // k-by-k
    double* const cov = mk + kk;              // k-by-k
    double* const packed = cov + kk;          // k(k+1)/2
    double* const vec = packed + kk / 2 + k;  // k
    double* const bs = vec + k;               // k
    double* const sv = bs + k;                // k
    double* const dc = sv + k;                // k
    double* const scale = dc + k;             // k
    double* const tau = scale + k;            // k
    double* const gv = tau + k;               // k
    double* const ghi = gv + k;               // k
    double* const glo = ghi + k;              // k
    double* const vec2 = glo + k;             // k
    double* const rowHi = vec2 + k;           // k
    double* const rowLo = rowHi + k;          // k
    double* const cv = covar ? cov : nullptr;
    AnalysisStatus st = kOk;

    if (scaled) {
        double* const a = work.get();
        double* const f = a + nk;   // n-by-k: U, or the Givens cosines
        double* const ys = f + nk;  // n
        double* const r = ys + n;   // n
        double* const fv = r + n;   // n
        double* const t = fv + n;   // n
        for (std::int32_t i = 0; i < n; ++i) {
            const double s = stdDev ? 1.0 / stdDev[i] : 1.0;
            for (std::int32_t j = 0; j < k; ++j) {
                const std::int64_t at = std::int64_t(i) * k + j;
                a[at] = stdDev ? h[at] * s : h[at];
            }
        }
        // The factorisations below assume finite data (the SVD refuses
        // anything else); one answer for all four codes.
        for (std::int64_t at = 0; at < nk; ++at)
            if (!std::isfinite(a[at])) return kErrAlgorithmFailure;
        ColumnScales(a, n, k, scale);
        for (std::int64_t at = 0; at < nk; ++at) a[at] *= scale[at % k];
        const ScaledProblem problem{h, y, stdDev, scale, n, k, powersOf};
        for (std::int32_t i = 0; i < n; ++i) ys[i] = problem.Y(i, problem.RowScale(i));

        // Each code factorises A = Q1 T once (Q1 n-by-k with orthonormal
        // columns; T = R for codes 1-3, S V^T for the SVD) and then offers
        // u = Q1^T v (v an n-vector, destroyed), x = T^-1 u and T^-T g.
        // Code 3 has no Q1: there Q1^T v is R^-T A^T v, which is the same
        // thing when A = Q1 R holds exactly.
        std::int32_t rank = k;
        double* const u = dc;  // k
        auto applyQ1T = [&](double* v, double* out) {
            switch (algorithm) {
            case kFitSvd:
                for (std::int32_t j = 0; j < k; ++j) {
                    double s = 0.0;
                    for (std::int32_t i = 0; i < n; ++i) s += f[std::int64_t(i) * k + j] * v[i];
                    out[j] = s;
                }
                break;
            case kFitHouseholder:
                HouseholderApply(a, n, k, tau, v);
                std::copy(v, v + k, out);
                break;
            case kFitGivens:
                GivensApply(n, k, f, sines.get(), v);
                std::copy(v, v + k, out);
                break;
            default:
                for (std::int32_t p = 0; p < k; ++p) {
                    double s = 0.0;
                    for (std::int32_t i = 0; i < n; ++i) s += a[std::int64_t(i) * k + p] * v[i];
                    out[p] = s;
                }
                SolveUpperTransposed(mk, k, out);
            }
        };
        auto solveT = [&](const double* in, double* x) {  // x = T^-1 in (x may not be in)
            if (algorithm == kFitSvd) {
                // x = V S^+ in over the first rank singular values.
                for (std::int32_t p = 0; p < k; ++p) {
                    double s = 0.0;
                    for (std::int32_t j = 0; j < rank; ++j) s += mk[p * k + j] * (in[j] / sv[j]);
                    x[p] = s;
                }
            } else {
                std::copy(in, in + k, x);
                SolveUpper(mk, k, x);
            }
        };
        auto solveTT = [&](double* g) {  // g = T^-T g in place
            if (algorithm == kFitSvd) {
                for (std::int32_t j = 0; j < k; ++j) {
                    double s = 0.0;
                    if (j < rank) {
                        for (std::int32_t p = 0; p < k; ++p) s += mk[p * k + j] * g[p];
                        s /= sv[j];
                    }
                    vec[j] = s;
                }
                std::copy(vec, vec + k, g);
            } else {
                SolveUpperTransposed(mk, k, g);
            }
        };

        switch (algorithm) {
        case kFitSvd: {
            st = SVDecompose(a, n, k, f, sv, mk);
            if (st < 0) return st;
            // The pseudo-inverse's rank decision, made on the scaled matrix:
            // singular values at or below this are rounding noise, and
            // inverting them would blow the solution up along their
            // directions.
            const double tol = static_cast<double>(std::max(n, k)) * sv[0] * kRankEpsilon;
            rank = 0;
            while (rank < k && sv[rank] > tol) ++rank;
            if (cv) {
                for (std::int32_t p = 0; p < k; ++p)
                    for (std::int32_t q = 0; q < k; ++q) {
                        double s = 0.0;
                        for (std::int32_t j = 0; j < rank; ++j)
                            s += mk[p * k + j] * mk[q * k + j] / (sv[j] * sv[j]);
                        cv[p * k + q] = s;
                    }
            }
            break;
        }
        case kFitHouseholder:
        case kFitGivens:
            if (algorithm == kFitHouseholder)
                HouseholderFactor(a, n, k, tau);
            else
                GivensFactor(a, n, k, f, sines.get());
            st = PackFactor(a, n, k, packed);  // R: the top k rows of a
            if (st < 0) return st;
            for (std::int32_t p = 0; p < k; ++p)
                for (std::int32_t q = 0; q < k; ++q) mk[p * k + q] = q < p ? 0.0 : a[std::int64_t(p) * k + q];
            break;
        case kFitCholesky:
            NormalEquations(a, n, k, ys, nullptr, mk, bs);
            st = PackTriangle(mk, k, kPackLower, packed);
            if (st >= 0) st = PackedCholesky(packed, k);
            if (st < 0) return st;
            // R = L^T, row-major.
            for (std::int32_t p = 0; p < k; ++p)
                for (std::int32_t q = 0; q < k; ++q)
                    mk[p * k + q] = q < p ? 0.0 : packed[PackedLowerIndex(q, p, k)];
            break;
        }

        // First solution c = T^-1 Q1^T ys and its residual r = ys - A c.
        std::copy(ys, ys + n, t);
        applyQ1T(t, u);
        solveT(u, bs);
        std::fill(r, r + n, 0.0);
        problem.Residuals(bs, r, r, gv, ghi, glo, rowHi, rowLo);  // r = ys - 0 - A c
        // Refinement on the augmented system [I A; A^T 0] [r; c] = [ys; 0]
        // (Bjorck): with f = ys - r - A c and g = -A^T r from the compensated
        // sums, the corrections are dc = T^-1 (Q1^T f - T^-T g) and
        // dr = f - A dc. Unlike a correction of c alone, this also removes
        // the error a large residual causes (condition squared times the
        // residual's size), so each step gains about as many digits as the
        // scaled A's condition number leaves. A correction that is not
        // finite (overflow in the residuals) is not applied.
        for (int step = 0; step < kRefinementSteps; ++step) {
            problem.Residuals(bs, r, fv, gv, ghi, glo, rowHi, rowLo);
            std::copy(fv, fv + n, t);
            applyQ1T(t, u);
            solveTT(gv);
            for (std::int32_t j = 0; j < k; ++j) u[j] -= gv[j];
            solveT(u, vec2);
            bool finite = true;
            for (std::int32_t j = 0; j < k; ++j) finite = finite && std::isfinite(vec2[j]);
            if (!finite) break;
            problem.SubtractProduct(vec2, fv);  // dr = f - A dc
            for (std::int32_t j = 0; j < k; ++j) bs[j] += vec2[j];
            for (std::int32_t i = 0; i < n; ++i) r[i] += fv[i];
        }

        if (cv && algorithm != kFitSvd) {
            if (algorithm == kFitCholesky) {
                st = PackedCholeskyInverse(packed, k);
                if (st >= 0) st = UnpackTriangle(packed, k, kPackSymmetric, cv);
            } else {
                st = CovarianceFromFactor(packed, k, cv);
            }
            if (st < 0) return st;
        }
        // Back from the scaled unknowns: b = D c, covar = D C D (exact).
        for (std::int32_t j = 0; j < k; ++j) bs[j] *= scale[j];
        if (cv)
            for (std::int32_t p = 0; p < k; ++p)
                for (std::int32_t q = 0; q < k; ++q) cv[p * k + q] *= scale[p] * scale[q];
        st = rank < k ? kWarnRankDeficient : kOk;
    } else {
        double* const w = work.get();
        for (std::int32_t i = 0; i < n; ++i) w[i] = stdDev ? 1.0 / (stdDev[i] * stdDev[i]) : 1.0;
        NormalEquations(h, n, k, y, w, mk, vec);
        if (algorithm == kFitNormalLU) {
            st = LinEqs(mk, vec, k, bs);
            if (st < 0) return st;
            if (cv) {
                st = InvMatrix(mk, k, cv);
                if (st < 0) return st;
            }
        } else {
            st = InvMatrix(mk, k, cov);
            if (st < 0) return st;
            for (std::int32_t p = 0; p < k; ++p) {
                double s = 0.0;
                for (std::int32_t q = 0; q < k; ++q) s += cov[p * k + q] * vec[q];
                bs[p] = s;
            }
        }
    }

    double* const zz = zs.get();
    for (std::int32_t i = 0; i < n; ++i) {
        double s = 0.0;
        for (std::int32_t j = 0; j < k; ++j) s += h[std::int64_t(i) * k + j] * bs[j];
        zz[i] = s;
    }
    *mse = SumSquaredError(zz, y, n);
    std::copy(zz, zz + n, z);
    std::copy(bs, bs + k, b);
    if (covar) std::copy(cov, cov + kk, covar);
    return st;
}

}  // namespace

AnalysisStatus GeneralLeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                                   const double* stdDev, std::int32_t algorithm, double* z, double* b,
                                   double* covar, double* mse) {
    return LeastSquares(h, n, k, y, stdDev, algorithm, z, b, covar, mse, nullptr);
}

}  // namespace vn
