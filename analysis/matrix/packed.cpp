// Packed-triangle storage and the Cholesky and triangular routines on it.
//
// A packed triangle holds n(n+1)/2 doubles column by column, so a column of a
// lower triangle (rows j..n-1) or of an upper triangle (rows 0..j) is
// contiguous; every inner loop below runs down one column.

#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

#include <cmath>

namespace vn {

using matrix_detail::CopyDoubles;
using matrix_detail::Index;
using matrix_detail::kTwoPowMinus31p5;
using matrix_detail::kTwoPowMinus63;
using matrix_detail::PackedCount;
using matrix_detail::Scratch;

namespace {

// Start of column j of a packed lower triangle: rows j..n-1 follow.
inline Index LowerColumn(Index j, Index n) { return j * n - j * (j - 1) / 2; }
// Start of column j of a packed upper triangle: rows 0..j follow.
inline Index UpperColumn(Index j) { return j * (j + 1) / 2; }

// The relative singularity test of the packed triangular routines: a
// diagonal entry at or below 2^-63 times the largest magnitude of the whole
// triangle counts as zero, so an all-zero matrix is always rejected.
bool PackedTriangleSingular(const double* t, Index n, bool upper) {
    const Index count = n * (n + 1) / 2;
    double largest = 0.0;
    for (Index i = 0; i < count; ++i) {
        const double v = std::fabs(t[i]);
        if (v > largest) largest = v;
    }
    const double tau = kTwoPowMinus63 * largest;
    for (Index j = 0; j < n; ++j) {
        const double d = upper ? t[UpperColumn(j) + j] : t[LowerColumn(j, n)];
        if (std::fabs(d) <= tau) return true;
    }
    return false;
}

}  // namespace

AnalysisStatus PackTriangle(const double* a, std::int32_t n, std::int32_t mode, double* packed) {
    if (n < 1) return kErrSamplesBelowOne;
    if (mode < kPackLower || mode > kPackSymmetric) return kErrInvalidSelection;
    Index idx = 0;
    if (mode == kPackUpper) {
        for (Index j = 0; j < n; ++j)
            for (Index i = 0; i <= j; ++i) packed[idx++] = a[i * n + j];
    } else {
        for (Index j = 0; j < n; ++j)
            for (Index i = j; i < n; ++i) packed[idx++] = a[i * n + j];
    }
    return kOk;
}

AnalysisStatus UnpackTriangle(const double* packed, std::int32_t n, std::int32_t mode, double* a) {
    if (n < 1) return kErrSamplesBelowOne;
    if (mode < kPackLower || mode > kPackSymmetric) return kErrInvalidSelection;
    for (Index i = 0; i < n; ++i) {
        double* row = a + i * n;
        for (Index j = 0; j < n; ++j) {
            if (mode == kPackUpper)
                row[j] = j >= i ? packed[UpperColumn(j) + i] : 0.0;
            else if (j <= i)
                row[j] = packed[LowerColumn(j, n) + (i - j)];
            else
                row[j] = mode == kPackSymmetric ? packed[LowerColumn(i, n) + (j - i)] : 0.0;
        }
    }
    return kOk;
}

AnalysisStatus PackedCholesky(double* l, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    const Index nn = n;
    double largest = 0.0;  // largest entry of the factor so far
    for (Index j = 0; j < nn; ++j) {
        double* cj = l + LowerColumn(j, nn);  // cj[i - j] = a[i][j]
        const Index len = nn - j;
        // a[i][j] -= L[j][s] * L[i][s], earlier columns taken from s = j-1
        // down to 0.
        for (Index s = j - 1; s >= 0; --s) {
            const double* cs = l + LowerColumn(s, nn) + (j - s);  // cs[i - j] = L[i][s]
            const double ljs = cs[0];
            for (Index i = 0; i < len; ++i) cj[i] -= ljs * cs[i];
        }
        const double d = cj[0];
        if (d <= 0.0) return kErrSingular;
        const double ljj = std::sqrt(d);
        cj[0] = ljj;
        if (ljj >= largest) largest = ljj;
        for (Index i = 1; i < len; ++i) {
            const double v = cj[i] / ljj;
            cj[i] = v;
            if (std::fabs(v) >= largest) largest = std::fabs(v);
        }
        // A diagonal tiny against the factor's scale means the matrix is
        // positive definite only within rounding.
        const double tau = kTwoPowMinus31p5 * largest;
        for (Index k = j; k >= 0; --k)
            if (l[LowerColumn(k, nn)] < tau) return kErrSingular;
    }
    return kOk;
}

AnalysisStatus PackedCholeskySolve(const double* l, std::int32_t n, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    const Index nn = n;
    // L*w = b, column-oriented.
    for (Index j = 0; j < nn; ++j) {
        const double* cj = l + LowerColumn(j, nn) - j;  // cj[i] = L[i][j]
        const double xj = x[j] / cj[j];
        x[j] = xj;
        for (Index i = j + 1; i < nn; ++i) x[i] -= xj * cj[i];
    }
    // L^T*x = w: row j of L^T is column j of L, taken from the bottom up.
    for (Index j = nn - 1; j >= 0; --j) {
        const double* cj = l + LowerColumn(j, nn) - j;
        double t = x[j];
        for (Index i = nn - 1; i > j; --i) t -= cj[i] * x[i];
        x[j] = t / cj[j];
    }
    return kOk;
}

AnalysisStatus PackedTriangularSolve(const double* t, std::int32_t n, std::int32_t upper,
                                     const double* y, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    if (upper != 0 && upper != 1) return kErrInvalidSelection;
    const Index nn = n;
    CopyDoubles(y, static_cast<std::uint64_t>(n), x);
    if (PackedTriangleSingular(t, nn, upper == 1)) return kErrSingular;
    if (upper == 0) {
        for (Index j = 0; j < nn; ++j) {
            const double* cj = t + LowerColumn(j, nn) - j;  // cj[i] = L[i][j]
            const double xj = x[j] / cj[j];
            x[j] = xj;
            for (Index i = j + 1; i < nn; ++i) x[i] -= xj * cj[i];
        }
    } else {
        for (Index j = nn - 1; j >= 0; --j) {
            const double* cj = t + UpperColumn(j);  // cj[i] = U[i][j]
            const double xj = x[j] / cj[j];
            x[j] = xj;
            for (Index i = j - 1; i >= 0; --i) x[i] -= xj * cj[i];
        }
    }
    return kOk;
}

AnalysisStatus PackedTriangularInverse(double* t, std::int32_t n, std::int32_t upper) {
    if (n < 1) return kErrSamplesBelowOne;
    if (upper != 0 && upper != 1) return kErrInvalidSelection;
    const Index nn = n;
    if (PackedTriangleSingular(t, nn, upper == 1)) return kErrSingular;
    if (upper == 0) {
        // X = L^-1 from X*L = I: for i > j,
        //   X[i][j] = -(sum_{k=j+1..i} X[i][k]*L[k][j]) / L[j][j].
        // Columns right to left; within column j rows bottom up, so that
        // L[k][j] (k <= i) is still in place when X[i][j] overwrites L[i][j].
        for (Index j = nn - 1; j >= 0; --j) {
            double* cj = t + LowerColumn(j, nn) - j;  // cj[i] = entry (i, j)
            const double d = cj[j];
            for (Index i = nn - 1; i > j; --i) {
                double s = 0.0;
                for (Index k = j + 1; k <= i; ++k) s += t[LowerColumn(k, nn) + (i - k)] * cj[k];
                cj[i] = -s / d;
            }
            cj[j] = 1.0 / d;
        }
    } else {
        // X = U^-1 from X*U = I: for i < j,
        //   X[i][j] = -(sum_{k=i..j-1} X[i][k]*U[k][j]) / U[j][j].
        // Columns left to right; within column j rows top down, so that
        // U[k][j] (k >= i) is still in place when X[i][j] overwrites U[i][j].
        for (Index j = 0; j < nn; ++j) {
            double* cj = t + UpperColumn(j);  // cj[i] = entry (i, j)
            const double d = cj[j];
            for (Index i = 0; i < j; ++i) {
                double s = 0.0;
                for (Index k = i; k < j; ++k) s += t[UpperColumn(k) + i] * cj[k];
                cj[i] = -s / d;
            }
            cj[j] = 1.0 / d;
        }
    }
    return kOk;
}

AnalysisStatus PackedCholeskyInverse(double* l, std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    const Index nn = n;
    Scratch<double> inv(PackedCount(n));
    Scratch<double> x(static_cast<std::uint64_t>(n));
    if (!inv || !x) return kErrNoMemory;
    // Column j of A^-1 solves L*L^T*x = e_j. Only rows j..n-1 are kept, and
    // they depend only on the forward solution from row j on (the entries
    // above j stay exactly zero), so both sweeps start at j.
    for (Index j = 0; j < nn; ++j) {
        double* xv = x.get();
        for (Index i = j; i < nn; ++i) xv[i] = 0.0;
        xv[j] = 1.0;
        for (Index c = j; c < nn; ++c) {
            const double* lc = l + LowerColumn(c, nn) - c;  // lc[i] = L[i][c]
            const double xc = xv[c] / lc[c];
            xv[c] = xc;
            for (Index i = c + 1; i < nn; ++i) xv[i] -= xc * lc[i];
        }
        for (Index c = nn - 1; c >= j; --c) {
            const double* lc = l + LowerColumn(c, nn) - c;
            double t = xv[c];
            for (Index i = nn - 1; i > c; --i) t -= lc[i] * xv[i];
            xv[c] = t / lc[c];
        }
        double* out = inv.get() + LowerColumn(j, nn) - j;
        for (Index i = j; i < nn; ++i) out[i] = xv[i];
    }
    CopyDoubles(inv.get(), PackedCount(n), l);
    return kOk;
}

}  // namespace vn
