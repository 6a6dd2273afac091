// Complex matrix kernels that need no iterative decomposition: products,
// transpose, trace, LU with partial pivoting, Cholesky, triangular inverses
// and solves, norms and special matrices. The singular value and eigenvalue
// kernels are in complex_decomp.cpp.
#include "analysis/complex/complex_matrix.h"

#include "analysis/complex/complex_detail.h"

#include <cmath>
#include <cstddef>
#include <vector>

namespace vn {

using cxdetail::Allocate;
using cxdetail::Cx;
using cxdetail::Div;
using cxdetail::Mul;
using cxdetail::MulConj;

namespace {

// Smallest usable pivot modulus of the LU factorisation.
constexpr double kPivotThreshold = 1e-12;
// 2^-63: relative size below which a triangular factor's diagonal counts as 0.
constexpr double kTwoPowMinus63 = 1.0842021724855044e-19;
// 2^-31.5: the same for the Cholesky factor, whose diagonal is the square root
// of a pivot, so the threshold is the square root of the one above.
constexpr double kTwoPowMinus31p5 = 3.2927225399135965e-10;

inline std::size_t At(std::int32_t i, std::int32_t j, std::int32_t cols) {
    return static_cast<std::size_t>(i) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(j);
}

inline bool ValidMatrixType(std::int32_t t) { return t >= kCxMatrixGeneral && t <= kCxMatrixUpper; }

// Left-looking (Crout-Doolittle) elimination, column by column: rows above the
// diagonal receive their U entries, rows on and below it their updated column
// entries, among which the first of largest modulus above the threshold
// becomes the pivot. Exchanges swap whole rows, multipliers included, so the
// stored L matches the final row order.
AnalysisStatus LUCore(Cx* a, std::int32_t n, std::int32_t* p, std::int32_t* parity) {
    for (std::int32_t i = 0; i < n; ++i) p[i] = i;
    *parity = 0;
    for (std::int32_t j = 0; j < n; ++j) {
        for (std::int32_t i = 1; i < j; ++i) {
            Cx s = a[At(i, j, n)];
            for (std::int32_t k = 0; k < i; ++k) s -= Mul(a[At(i, k, n)], a[At(k, j, n)]);
            a[At(i, j, n)] = s;
        }
        double best = kPivotThreshold;
        std::int32_t pivot = -1;
        for (std::int32_t i = j; i < n; ++i) {
            Cx s = a[At(i, j, n)];
            for (std::int32_t k = 0; k < j; ++k) s -= Mul(a[At(i, k, n)], a[At(k, j, n)]);
            a[At(i, j, n)] = s;
            const double mag = std::abs(s);
            if (mag > best) {
                best = mag;
                pivot = i;
            }
        }
        if (pivot < 0) return kErrSingular;
        if (pivot != j) {
            for (std::int32_t k = 0; k < n; ++k) std::swap(a[At(pivot, k, n)], a[At(j, k, n)]);
            p[j] = pivot;
            *parity ^= 1;
        }
        const Cx d = a[At(j, j, n)];
        for (std::int32_t i = j + 1; i < n; ++i) a[At(i, j, n)] = Div(a[At(i, j, n)], d);
    }
    return kOk;
}

// Solves A x = b from LUCore's factors; x holds b on entry. The exchanges are
// applied one step ahead of the unit lower solve, which is equivalent to
// permuting b first since step i only moves entries not yet solved.
void LUSolve(const Cx* lu, std::int32_t n, const std::int32_t* p, Cx* x) {
    for (std::int32_t i = 0; i < n; ++i) {
        Cx t = x[p[i]];
        x[p[i]] = x[i];
        for (std::int32_t k = 0; k < i; ++k) t -= Mul(lu[At(i, k, n)], x[k]);
        x[i] = t;
    }
    for (std::int32_t i = n - 1; i >= 0; --i) {
        Cx t = x[i];
        for (std::int32_t k = i + 1; k < n; ++k) t -= Mul(lu[At(i, k, n)], x[k]);
        x[i] = Div(t, lu[At(i, i, n)]);
    }
}

// A = L L^H in place on the lower triangle of a (full storage; nothing above
// the diagonal is read). Left-looking: column j is updated with all earlier
// columns, then scaled by its pivot's square root. The diagonal's imaginary
// parts are ignored, as they are zero for a Hermitian matrix. Besides a
// non-positive pivot, a diagonal entry that becomes tiny relative to the
// largest factor entry seen so far marks the matrix as numerically not
// positive definite.
AnalysisStatus CholeskyCore(Cx* a, std::int32_t n) {
    double largest = 0.0;
    for (std::int32_t j = 0; j < n; ++j) {
        for (std::int32_t s = j - 1; s >= 0; --s) {
            const Cx ljs = a[At(j, s, n)];
            for (std::int32_t i = j; i < n; ++i) a[At(i, j, n)] -= MulConj(a[At(i, s, n)], ljs);
        }
        const double d = a[At(j, j, n)].real();
        if (!(d > 0.0)) return kErrSingular;
        const double ljj = std::sqrt(d);
        a[At(j, j, n)] = Cx(ljj, 0.0);
        if (ljj >= largest) largest = ljj;
        for (std::int32_t i = j + 1; i < n; ++i) {
            const Cx lij = a[At(i, j, n)] / ljj;
            a[At(i, j, n)] = lij;
            const double mag = std::abs(lij);
            if (mag >= largest) largest = mag;
        }
        const double tau = kTwoPowMinus31p5 * largest;
        for (std::int32_t k = j; k >= 0; --k)
            if (a[At(k, k, n)].real() < tau) return kErrSingular;
    }
    return kOk;
}

// Copies the lower triangle (with the diagonal) of a into t; the rest of t
// keeps its zeros.
void LoadLower(const double* ar, const double* ai, std::int32_t n, Cx* t) {
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = 0; j <= i; ++j) t[At(i, j, n)] = Cx(ar[At(i, j, n)], ai[At(i, j, n)]);
}

// Copies the upper triangle of a into t, transposed when 'transposed' is set
// (the result is then lower triangular).
void LoadUpper(const double* ar, const double* ai, std::int32_t n, bool transposed, Cx* t) {
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = i; j < n; ++j)
            t[transposed ? At(j, i, n) : At(i, j, n)] = Cx(ar[At(i, j, n)], ai[At(i, j, n)]);
}

// A triangular matrix (the other triangle of t is zero) is treated as
// singular when a diagonal modulus is at most 2^-63 times the largest modulus
// of all its entries; an all-zero matrix is always singular.
bool TriangleIsSingular(const Cx* t, std::int32_t n) {
    double largest = 0.0;
    const std::size_t count = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    for (std::size_t k = 0; k < count; ++k) {
        const double mag = std::abs(t[k]);
        if (mag > largest) largest = mag;
    }
    const double tau = kTwoPowMinus63 * largest;
    for (std::int32_t k = 0; k < n; ++k)
        if (std::abs(t[At(k, k, n)]) <= tau) return true;
    return false;
}

// x = L^-1 for lower triangular L, column by column (x starts all zero, and
// its upper triangle stays so).
void LowerInverse(const Cx* l, std::int32_t n, Cx* x) {
    for (std::int32_t j = 0; j < n; ++j) {
        x[At(j, j, n)] = Div(Cx(1.0, 0.0), l[At(j, j, n)]);
        for (std::int32_t i = j + 1; i < n; ++i) {
            Cx s(0.0, 0.0);
            for (std::int32_t k = j; k < i; ++k) s += Mul(l[At(i, k, n)], x[At(k, j, n)]);
            x[At(i, j, n)] = Div(-s, l[At(i, i, n)]);
        }
    }
}

// L x = b, U x = b and L^H x = b by substitution; x holds b on entry.
void LowerSolve(const Cx* l, std::int32_t n, Cx* x) {
    for (std::int32_t i = 0; i < n; ++i) {
        Cx s = x[i];
        for (std::int32_t k = 0; k < i; ++k) s -= Mul(l[At(i, k, n)], x[k]);
        x[i] = Div(s, l[At(i, i, n)]);
    }
}

void UpperSolve(const Cx* u, std::int32_t n, Cx* x) {
    for (std::int32_t i = n - 1; i >= 0; --i) {
        Cx s = x[i];
        for (std::int32_t k = i + 1; k < n; ++k) s -= Mul(u[At(i, k, n)], x[k]);
        x[i] = Div(s, u[At(i, i, n)]);
    }
}

void LowerAdjointSolve(const Cx* l, std::int32_t n, Cx* x) {
    for (std::int32_t i = n - 1; i >= 0; --i) {
        Cx s = x[i];
        for (std::int32_t k = i + 1; k < n; ++k) s -= MulConj(x[k], l[At(k, i, n)]);
        x[i] = Div(s, l[At(i, i, n)]);
    }
}

// Norm types 1 to 3 (the 2-norm needs singular values).
double ElementNorm(const double* ar, const double* ai, std::int32_t m, std::int32_t n, std::int32_t type) {
    double result = 0.0;
    if (type == kCxNormFrobenius) {
        double s = 0.0;
        const std::size_t count = static_cast<std::size_t>(m) * static_cast<std::size_t>(n);
        for (std::size_t k = 0; k < count; ++k) s += ar[k] * ar[k] + ai[k] * ai[k];
        return std::sqrt(s);
    }
    const bool byColumn = type == kCxNorm1;
    const std::int32_t outer = byColumn ? n : m;
    const std::int32_t inner = byColumn ? m : n;
    for (std::int32_t o = 0; o < outer; ++o) {
        double s = 0.0;
        for (std::int32_t k = 0; k < inner; ++k) {
            const std::size_t at = byColumn ? At(k, o, n) : At(o, k, n);
            s += std::hypot(ar[at], ai[at]);
        }
        if (s > result) result = s;
    }
    return result;
}

}  // namespace

// ---- Products, transpose, trace ---------------------------------------------

AnalysisStatus ComplexDotProduct(const double* xr, const double* xi, const double* yr,
                                 const double* yi, std::int32_t n, double* zr, double* zi) {
    if (n < 1) return kErrSamplesBelowOne;
    double sr = 0.0, si = 0.0;
    for (std::int32_t k = 0; k < n; ++k) {
        sr += yr[k] * xr[k] - yi[k] * xi[k];
        si += yr[k] * xi[k] + yi[k] * xr[k];
    }
    *zr = sr;
    *zi = si;
    return kOk;
}

AnalysisStatus ComplexMatrixMul(const double* xr, const double* xi, const double* yr,
                                const double* yi, std::int32_t m, std::int32_t k, std::int32_t n,
                                double* zr, double* zi) {
    if (m < 1 || n < 1 || k < 1) return kErrSamplesBelowOne;
    // Row of z accumulated over the rows of y: contiguous reads of y, and
    // every z[i][j] still receives its terms in increasing order of the inner
    // index.
    for (std::int32_t i = 0; i < m; ++i) {
        double* rowr = zr + At(i, 0, n);
        double* rowi = zi + At(i, 0, n);
        for (std::int32_t j = 0; j < n; ++j) rowr[j] = rowi[j] = 0.0;
        for (std::int32_t t = 0; t < k; ++t) {
            const double ar = xr[At(i, t, k)], ai = xi[At(i, t, k)];
            const double* br = yr + At(t, 0, n);
            const double* bi = yi + At(t, 0, n);
            for (std::int32_t j = 0; j < n; ++j) {
                rowr[j] += ar * br[j] - ai * bi[j];
                rowi[j] += ar * bi[j] + ai * br[j];
            }
        }
    }
    return kOk;
}

AnalysisStatus ComplexOuterProduct(const double* xr, const double* xi, std::int32_t m,
                                   const double* yr, const double* yi, std::int32_t n, double* zr,
                                   double* zi) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < m; ++i)
        for (std::int32_t j = 0; j < n; ++j) {
            zr[At(i, j, n)] = xr[i] * yr[j] - xi[i] * yi[j];
            zi[At(i, j, n)] = xr[i] * yi[j] + xi[i] * yr[j];
        }
    return kOk;
}

AnalysisStatus ComplexTranspose(const double* ar, const double* ai, std::int32_t r, std::int32_t q,
                                double* br, double* bi) {
    if (r < 1 || q < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < r; ++i)
        for (std::int32_t j = 0; j < q; ++j) {
            br[At(j, i, r)] = ar[At(i, j, q)];
            bi[At(j, i, r)] = ai[At(i, j, q)];
        }
    return kOk;
}

AnalysisStatus ComplexTrace(const double* ar, const double* ai, std::int32_t n, double* tr, double* ti) {
    if (n < 1) return kErrSamplesBelowOne;
    double sr = 0.0, si = 0.0;
    for (std::int32_t k = 0; k < n; ++k) {
        sr += ar[At(k, k, n)];
        si += ai[At(k, k, n)];
    }
    *tr = sr;
    *ti = si;
    return kOk;
}

// ---- LU factorisation and what is built on it -------------------------------

AnalysisStatus ComplexLUDecompose(double* ar, double* ai, std::int32_t n, std::int32_t* p,
                                  std::int32_t* parity) {
    if (n < 1) return kErrSamplesBelowOne;
    std::vector<Cx> a;
    if (!Allocate(a, n, n)) return kErrNoMemory;
    cxdetail::Load(ar, ai, a.size(), a.data());
    const AnalysisStatus status = LUCore(a.data(), n, p, parity);
    cxdetail::Store(a.data(), a.size(), ar, ai);
    return status;
}

AnalysisStatus ComplexDeterminant(const double* ar, const double* ai, std::int32_t n, double* dr,
                                  double* di) {
    if (n < 1) return kErrSamplesBelowOne;
    std::vector<Cx> a;
    std::vector<std::int32_t> p;
    if (!Allocate(a, n, n) || !Allocate(p, n)) return kErrNoMemory;
    cxdetail::Load(ar, ai, a.size(), a.data());
    std::int32_t parity = 0;
    if (LUCore(a.data(), n, p.data(), &parity) != kOk) {
        // A singular matrix has determinant 0; that is an answer, not an error.
        *dr = 0.0;
        *di = 0.0;
        return kOk;
    }
    Cx d(1.0, 0.0);
    for (std::int32_t k = 0; k < n; ++k) d = Mul(d, a[At(k, k, n)]);
    if (parity) d = -d;
    *dr = d.real();
    *di = d.imag();
    return kOk;
}

AnalysisStatus ComplexCholesky(const double* ar, const double* ai, std::int32_t n, double* rr,
                               double* ri) {
    if (n < 1) return kErrSamplesBelowOne;
    std::vector<Cx> l;
    if (!Allocate(l, n, n)) return kErrNoMemory;
    LoadLower(ar, ai, n, l.data());
    const AnalysisStatus status = CholeskyCore(l.data(), n);
    if (status != kOk) return status;
    // R = L^H.
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = 0; j < n; ++j) {
            const Cx v = j >= i ? std::conj(l[At(j, i, n)]) : Cx(0.0, 0.0);
            rr[At(i, j, n)] = v.real();
            ri[At(i, j, n)] = v.imag();
        }
    return kOk;
}

AnalysisStatus ComplexGenInvMatrix(const double* ar, const double* ai, std::int32_t n,
                                   std::int32_t matrixType, double* br, double* bi) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!ValidMatrixType(matrixType)) return kErrInvalidSelection;
    std::vector<Cx> a, x;
    if (!Allocate(a, n, n) || !Allocate(x, n, n)) return kErrNoMemory;

    if (matrixType == kCxMatrixGeneral) {
        std::vector<std::int32_t> p;
        if (!Allocate(p, n)) return kErrNoMemory;
        cxdetail::Load(ar, ai, a.size(), a.data());
        std::int32_t parity = 0;
        const AnalysisStatus status = LUCore(a.data(), n, p.data(), &parity);
        if (status != kOk) return status;
        // Column j of the inverse solves A x = e_j; x's first n entries serve
        // as the right-hand side.
        Cx* col = x.data();
        for (std::int32_t j = 0; j < n; ++j) {
            for (std::int32_t i = 0; i < n; ++i) col[i] = Cx(i == j ? 1.0 : 0.0, 0.0);
            LUSolve(a.data(), n, p.data(), col);
            for (std::int32_t i = 0; i < n; ++i) {
                br[At(i, j, n)] = col[i].real();
                bi[At(i, j, n)] = col[i].imag();
            }
        }
        return kOk;
    }

    if (matrixType == kCxMatrixHermitianPosDef) {
        LoadLower(ar, ai, n, a.data());
        const AnalysisStatus status = CholeskyCore(a.data(), n);
        if (status != kOk) return status;
        // A^-1 = (L L^H)^-1 = X^H X with X = L^-1 lower triangular, so entry
        // (i, j) sums over k >= max(i, j) only.
        LowerInverse(a.data(), n, x.data());
        for (std::int32_t i = 0; i < n; ++i)
            for (std::int32_t j = i; j < n; ++j) {
                Cx s(0.0, 0.0);
                for (std::int32_t k = j; k < n; ++k) s += MulConj(x[At(k, j, n)], x[At(k, i, n)]);
                if (i == j) s = Cx(s.real(), 0.0);
                br[At(i, j, n)] = s.real();
                bi[At(i, j, n)] = s.imag();
                br[At(j, i, n)] = s.real();
                bi[At(j, i, n)] = -s.imag();
            }
        return kOk;
    }

    // Triangular: an upper matrix is inverted as its transpose, which is lower.
    const bool upper = matrixType == kCxMatrixUpper;
    if (upper)
        LoadUpper(ar, ai, n, true, a.data());
    else
        LoadLower(ar, ai, n, a.data());
    if (TriangleIsSingular(a.data(), n)) return kErrSingular;
    LowerInverse(a.data(), n, x.data());
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = 0; j < n; ++j) {
            const Cx v = x[upper ? At(j, i, n) : At(i, j, n)];
            br[At(i, j, n)] = v.real();
            bi[At(i, j, n)] = v.imag();
        }
    return kOk;
}

AnalysisStatus ComplexGenLinEqs(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                const double* yr, const double* yi, std::int32_t matrixType, double* xr,
                                double* xi) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (!ValidMatrixType(matrixType)) return kErrInvalidSelection;
    if (matrixType == kCxMatrixGeneral) return ComplexSvdSolve(ar, ai, m, n, yr, yi, xr, xi);
    if (m != n) return kErrNotSquare;

    std::vector<Cx> a, x;
    if (!Allocate(a, n, n) || !Allocate(x, n)) return kErrNoMemory;
    cxdetail::Load(yr, yi, x.size(), x.data());
    if (matrixType == kCxMatrixHermitianPosDef) {
        LoadLower(ar, ai, n, a.data());
        const AnalysisStatus status = CholeskyCore(a.data(), n);
        if (status != kOk) return status;
        LowerSolve(a.data(), n, x.data());
        LowerAdjointSolve(a.data(), n, x.data());
    } else if (matrixType == kCxMatrixLower) {
        LoadLower(ar, ai, n, a.data());
        if (TriangleIsSingular(a.data(), n)) return kErrSingular;
        LowerSolve(a.data(), n, x.data());
    } else {
        LoadUpper(ar, ai, n, false, a.data());
        if (TriangleIsSingular(a.data(), n)) return kErrSingular;
        UpperSolve(a.data(), n, x.data());
    }
    cxdetail::Store(x.data(), x.size(), xr, xi);
    return kOk;
}

// ---- Measures ----------------------------------------------------------------

AnalysisStatus ComplexMatrixNorm(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                 std::int32_t normType, double* norm) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (normType < kCxNorm2 || normType > kCxNormInfinity) return kErrInvalidSelection;
    if (normType != kCxNorm2) {
        *norm = ElementNorm(ar, ai, m, n, normType);
        return kOk;
    }
    std::vector<double> s;
    if (!Allocate(s, m < n ? m : n)) return kErrNoMemory;
    const AnalysisStatus status = ComplexSingularValues(ar, ai, m, n, s.data());
    if (status != kOk) return status;
    *norm = s[0];
    return kOk;
}

AnalysisStatus ComplexConditionNumber(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                      std::int32_t normType, double* cond) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (normType < kCxNorm2 || normType > kCxNormInfinity) return kErrInvalidSelection;
    if (normType != kCxNorm2) {
        if (m != n) return kErrNotSquare;
        std::vector<double> invr, invi;
        if (!Allocate(invr, n, n) || !Allocate(invi, n, n)) return kErrNoMemory;
        const AnalysisStatus status = ComplexGenInvMatrix(ar, ai, n, kCxMatrixGeneral, invr.data(), invi.data());
        if (status != kOk) return status;
        *cond = ElementNorm(ar, ai, n, n, normType) * ElementNorm(invr.data(), invi.data(), n, n, normType);
        return kOk;
    }
    const std::int32_t k = m < n ? m : n;
    std::vector<double> s;
    if (!Allocate(s, k)) return kErrNoMemory;
    const AnalysisStatus status = ComplexSingularValues(ar, ai, m, n, s.data());
    if (status != kOk) return status;
    const double smax = s[0];
    const double smin = s[k - 1];
    if (smin == 0.0 || std::isnan(smin)) return kErrSingular;
    // Below this the smallest singular value is rounding noise of the largest.
    const double tau = std::fabs(smax) * static_cast<double>(m > n ? m : n) * kTwoPowMinus63;
    if (std::fabs(smin) < tau) return kErrSingular;
    *cond = smax / smin;
    return kOk;
}

// ---- Special matrices -----------------------------------------------------------

AnalysisStatus ComplexSpecialMatrixSize(std::int32_t matrixType, std::int32_t size, std::int32_t n1,
                                        std::int32_t n2, std::int32_t* rows, std::int32_t* cols) {
    std::int32_t r = 0, c = 0;
    switch (matrixType) {
        case kCxSpecialIdentity:
            if (size < 1) return kErrSamplesBelowOne;
            r = c = size;
            break;
        case kCxSpecialDiagonal:
        case kCxSpecialVandermonde:
            if (n1 < 1) return kErrSamplesBelowOne;
            r = c = n1;
            break;
        case kCxSpecialToeplitz:
            if (n1 < 1 || n2 < 1) return kErrSamplesBelowOne;
            r = n1;
            c = n2;
            break;
        case kCxSpecialCompanion:
            if (n1 < 1) return kErrSamplesBelowOne;
            // A constant polynomial has no roots and no companion matrix.
            if (n1 < 2) return kErrWrongCount;
            r = c = n1 - 1;
            break;
        default:
            return kErrInvalidSelection;
    }
    *rows = r;
    *cols = c;
    return kOk;
}

AnalysisStatus ComplexSpecialMatrix(std::int32_t matrixType, std::int32_t size, const double* a1r,
                                    const double* a1i, std::int32_t n1, const double* a2r,
                                    const double* a2i, std::int32_t n2, double* br, double* bi) {
    std::int32_t rows = 0, cols = 0;
    const AnalysisStatus status = ComplexSpecialMatrixSize(matrixType, size, n1, n2, &rows, &cols);
    if (status != kOk) return status;
    const std::size_t count = static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols);
    for (std::size_t k = 0; k < count; ++k) br[k] = bi[k] = 0.0;

    switch (matrixType) {
        case kCxSpecialIdentity:
            for (std::int32_t k = 0; k < rows; ++k) br[At(k, k, cols)] = 1.0;
            break;
        case kCxSpecialDiagonal:
            for (std::int32_t k = 0; k < rows; ++k) {
                br[At(k, k, cols)] = a1r[k];
                bi[At(k, k, cols)] = a1i[k];
            }
            break;
        case kCxSpecialToeplitz:
            for (std::int32_t i = 0; i < rows; ++i)
                for (std::int32_t j = 0; j < cols; ++j) {
                    const std::int32_t d = i - j;
                    br[At(i, j, cols)] = d >= 0 ? a1r[d] : a2r[-d];
                    bi[At(i, j, cols)] = d >= 0 ? a1i[d] : a2i[-d];
                }
            break;
        case kCxSpecialVandermonde:
            for (std::int32_t i = 0; i < rows; ++i) {
                const Cx v(a1r[i], a1i[i]);
                Cx power(1.0, 0.0);
                for (std::int32_t j = cols - 1; j >= 0; --j) {
                    br[At(i, j, cols)] = power.real();
                    bi[At(i, j, cols)] = power.imag();
                    power = Mul(power, v);
                }
            }
            break;
        case kCxSpecialCompanion: {
            // Divisor -c[0] by the textbook formula, untested like the
            // leading coefficient itself.
            const double nr = -a1r[0], ni = -a1i[0];
            const double d = nr * nr + ni * ni;
            for (std::int32_t k = 0; k < cols; ++k) {
                const double cr = a1r[k + 1], ci = a1i[k + 1];
                br[At(0, k, cols)] = (ni * ci + nr * cr) / d;
                bi[At(0, k, cols)] = (nr * ci - ni * cr) / d;
            }
            for (std::int32_t k = 0; k + 1 < rows; ++k) br[At(k + 1, k, cols)] = 1.0;
            break;
        }
        default:
            break;
    }
    return kOk;
}

}  // namespace vn
