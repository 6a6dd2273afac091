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

// Solves R b = qty for the upper triangle of the row-major k-by-k r (from
// an n-row A) and, when covar is wanted, forms R^-1 R^-T (the inverse of
// R^T R = A^T A). packed: k(k+1)/2 doubles of scratch.
AnalysisStatus SolveTriangularFactor(const double* r, std::int32_t n, std::int32_t k, const double* qty, double* b,
                                     double* covar, double* packed) {
    // Dependent columns of A leave a diagonal entry of R at rounding level
    // rather than exactly zero, far above the triangular solver's own
    // threshold; refuse those with the rank tolerance of the SVD code.
    double big = 0.0;
    for (std::int32_t j = 0; j < k; ++j) big = std::max(big, std::fabs(r[j * k + j]));
    const double tol = static_cast<double>(std::max(n, k)) * big * kRankEpsilon;
    for (std::int32_t j = 0; j < k; ++j)
        if (!(std::fabs(r[j * k + j]) > tol)) return kErrSingular;
    AnalysisStatus st = PackTriangle(r, k, kPackUpper, packed);
    if (st < 0) return st;
    st = PackedTriangularSolve(packed, k, 1, qty, b);
    if (st < 0) return st;
    if (!covar) return kOk;
    st = PackedTriangularInverse(packed, k, 1);
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
    return GeneralLeastSquares(h.get(), n, k, y, nullptr, kFitSvd, z, coef, nullptr, mse);
}

AnalysisStatus GeneralLeastSquares(const double* h, std::int32_t n, std::int32_t k, const double* y,
                                   const double* stdDev, std::int32_t algorithm, double* z, double* b,
                                   double* covar, double* mse) {
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
    // Codes 0-3: scaled copies of H and y, plus room for the factors
    // (U n-by-k for the SVD, Q n-by-k for Householder). Codes 4-5: weights.
    auto work = DoubleScratch(scaled ? 2 * nk + n : n);
    // k-by-k blocks (V or R or A^T A, the covariance), the packed triangle
    // and three k-vectors.
    auto small = DoubleScratch(2 * kk + kk / 2 + k + 3 * std::int64_t(k));
    if (!work || !small) return kErrNoMemory;

    if (stdDev)
        for (std::int32_t i = 0; i < n; ++i)
            if (!(stdDev[i] > 0)) return kErrZeroStdDev;

    double* const mk = small.get();        // k-by-k
    double* const cov = mk + kk;           // k-by-k
    double* const packed = cov + kk;       // k(k+1)/2
    double* const vec = packed + kk / 2 + k;  // k
    double* const bs = vec + k;            // k
    double* const sv = bs + k;             // k
    double* const cv = covar ? cov : nullptr;
    AnalysisStatus st = kOk;

    if (scaled) {
        double* const a = work.get();
        double* const f = a + nk;          // n-by-k factor (U or Q)
        double* const ys = f + nk;         // n
        for (std::int32_t i = 0; i < n; ++i) {
            const double s = stdDev ? 1.0 / stdDev[i] : 1.0;
            for (std::int32_t j = 0; j < k; ++j) {
                const std::int64_t at = std::int64_t(i) * k + j;
                a[at] = stdDev ? h[at] * s : h[at];
            }
            ys[i] = stdDev ? y[i] * s : y[i];
        }
        switch (algorithm) {
        case kFitSvd: {
            st = SVDecompose(a, n, k, f, sv, mk);
            if (st < 0) return st;
            // Same rank decision as the pseudo-inverse: the singular values
            // at or below this are noise from rounding, and inverting them
            // would blow the solution up along their directions.
            const double tol = static_cast<double>(std::max(n, k)) * sv[0] * kRankEpsilon;
            std::int32_t rank = 0;
            for (std::int32_t j = 0; j < k; ++j) {
                if (sv[j] > tol) ++rank;
                double s = 0.0;
                if (sv[j] > tol) {
                    for (std::int32_t i = 0; i < n; ++i) s += f[std::int64_t(i) * k + j] * ys[i];
                    s /= sv[j];
                }
                vec[j] = s;  // (S^+ U^T y)[j]
            }
            for (std::int32_t p = 0; p < k; ++p) {
                double s = 0.0;
                for (std::int32_t j = 0; j < rank; ++j) s += mk[p * k + j] * vec[j];
                bs[p] = s;
            }
            if (cv) {
                for (std::int32_t p = 0; p < k; ++p)
                    for (std::int32_t q = 0; q < k; ++q) {
                        double s = 0.0;
                        for (std::int32_t j = 0; j < rank; ++j)
                            s += mk[p * k + j] * mk[q * k + j] / (sv[j] * sv[j]);
                        cv[p * k + q] = s;
                    }
            }
            if (rank < k) st = kWarnRankDeficient;
            break;
        }
        case kFitHouseholder: {
            st = QRDecompose(a, n, k, f, mk);
            if (st < 0) return st;
            for (std::int32_t j = 0; j < k; ++j) {
                double s = 0.0;
                for (std::int32_t i = 0; i < n; ++i) s += f[std::int64_t(i) * k + j] * ys[i];
                vec[j] = s;
            }
            st = SolveTriangularFactor(mk, n, k, vec, bs, cv, packed);
            if (st < 0) return st;
            break;
        }
        case kFitGivens: {
            // Column by column, rotate each lower row into the diagonal row so
            // that its entry in this column vanishes. The rotations are
            // orthogonal, so the residual norm is preserved and the top k rows
            // end as R with Q^T y beside them.
            for (std::int32_t j = 0; j < k; ++j) {
                double* const rj = a + std::int64_t(j) * k;
                for (std::int32_t i = j + 1; i < n; ++i) {
                    double* const ri = a + std::int64_t(i) * k;
                    if (ri[j] == 0.0) continue;
                    const double r = std::hypot(rj[j], ri[j]);
                    const double c = rj[j] / r, s = ri[j] / r;
                    rj[j] = r;
                    ri[j] = 0.0;
                    for (std::int32_t l = j + 1; l < k; ++l) {
                        const double u = rj[l], v = ri[l];
                        rj[l] = c * u + s * v;
                        ri[l] = c * v - s * u;
                    }
                    const double u = ys[j], v = ys[i];
                    ys[j] = c * u + s * v;
                    ys[i] = c * v - s * u;
                }
            }
            // The first k rows of the row-major n-by-k block are R itself.
            st = SolveTriangularFactor(a, n, k, ys, bs, cv, packed);
            if (st < 0) return st;
            break;
        }
        case kFitCholesky: {
            NormalEquations(a, n, k, ys, nullptr, mk, vec);
            st = PackTriangle(mk, k, kPackLower, packed);
            if (st >= 0) st = PackedCholesky(packed, k);
            if (st < 0) return st;
            std::copy(vec, vec + k, bs);
            st = PackedCholeskySolve(packed, k, bs);
            if (st < 0) return st;
            if (cv) {
                st = PackedCholeskyInverse(packed, k);
                if (st >= 0) st = UnpackTriangle(packed, k, kPackSymmetric, cv);
                if (st < 0) return st;
            }
            break;
        }
        }
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

}  // namespace vn
