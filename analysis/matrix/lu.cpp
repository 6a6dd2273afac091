// LU factorisation with partial pivoting and the solvers built on it.
//
// The factorisation is defined column by column (left-looking): entry (i, j)
// of the factors is a[i][j] - a[i][0]*a[0][j] - a[i][1]*a[1][j] - ... over
// k < min(i, j), subtracted one term at a time in increasing k, and the pivot
// of column j is chosen from the fully updated column. Every entry therefore
// sees the same operations in the same order whether the updates are applied
// column by column or, as here, as delayed rank-kPanel updates of the
// trailing matrix (a right-looking blocked form): the rows move with their
// multipliers when exchanged, so the bits and pivot choices are identical
// and only the memory traffic changes.

#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vn {

using matrix_detail::CombineSubFn;
using matrix_detail::LUEngine;
using matrix_detail::CopyDoubles;
using matrix_detail::Index;
using matrix_detail::Product;
using matrix_detail::Scratch;

namespace {

// Columns factorised per panel before the trailing matrix is updated.
constexpr Index kPanel = 32;
// Columns of the trailing matrix (or of the right-hand sides) per sweep, so
// that the rows being combined stay in cache.
constexpr Index kColumnBlock = 128;

inline bool ZeroOrNaN(double d) { return !(d > 0.0) && !(d < 0.0); }

}  // namespace

namespace matrix_detail {

AnalysisStatus LUFactor(double* a, Index n, std::int32_t* p, std::int32_t* parity, LUEngine e) {
    const CombineSubFn combine = CombineSubFor(e);
    for (Index i = 0; i < n; ++i) p[i] = static_cast<std::int32_t>(i);
    std::int32_t par = 0;
    AnalysisStatus status = kOk;

    for (Index j0 = 0; j0 < n && status == kOk; j0 += kPanel) {
        const Index j1 = std::min(j0 + kPanel, n);

        // Panel: columns j0..j1-1 already carry every update from columns
        // before j0; factorise them with immediate updates inside the panel.
        for (Index j = j0; j < j1; ++j) {
            double best = kPivotThreshold;
            Index piv = -1;
            for (Index i = j; i < n; ++i) {
                const double v = a[i * n + j];
                if (std::fabs(v) > std::fabs(best)) {
                    best = v;
                    piv = i;
                }
            }
            if (piv < 0) {
                status = kErrSingular;
                break;
            }
            double* rowj = a + j * n;
            if (piv != j) {
                std::swap_ranges(rowj, rowj + n, a + piv * n);
                p[j] = static_cast<std::int32_t>(piv);
                par ^= 1;
            }
            for (Index i = j + 1; i < n; ++i) {
                double* rowi = a + i * n;
                const double l = rowi[j] / best;
                rowi[j] = l;
                for (Index c = j + 1; c < j1; ++c) rowi[c] -= l * rowj[c];
            }
        }
        if (status != kOk || j1 == n) break;

        // Rows j0..j1-1 of U right of the panel: each row subtracts the
        // panel rows above it, in increasing order.
        for (Index c0 = j1; c0 < n; c0 += kColumnBlock) {
            const Index w = std::min(kColumnBlock, n - c0);
            for (Index k = j0 + 1; k < j1; ++k)
                combine(a + k * n + c0, w, a + k * n + j0, k - j0, a + j0 * n + c0, n);
            // Trailing rows: the panel's kPanel terms, in increasing k.
            for (Index i = j1; i < n; ++i)
                combine(a + i * n + c0, w, a + i * n + j0, j1 - j0, a + j0 * n + c0, n);
        }
    }
    *parity = par;
    return status;
}

AnalysisStatus LUInverseInto(const double* lu, Index n, const std::int32_t* p, double* b, LUEngine e) {
    const CombineSubFn combine = CombineSubFor(e);
    // Column j of the inverse solves A*x = e_j by ForwSub then BackSub. All
    // columns are solved together, a block of columns at a time, so that
    // the rows being combined are contiguous; every entry still receives
    // exactly the operations of the one-column solve.
    //
    // Shortcut for interchanges as LUDecompose makes them (p[i] >= i): they
    // only move e_j's 1 down to row q with perm[q] = j, and the forward
    // sweep then starts with zeros above row q. Subtracting
    // L[i][k]*(+0.0) from a value leaves it unchanged bit for bit (a +0.0
    // stays +0.0) as long as L[i][k] is finite, so those terms can be left
    // out: the forward sweep of e_q gives column q of L^-1, and the result
    // is the same as the full solve with the columns permuted at the end.
    // This saves a quarter of the work. Other interchange sequences, or
    // non-finite multipliers, take the plain full solve.
    bool shortcut = true;
    for (Index i = 0; i < n && shortcut; ++i) shortcut = p[i] >= i && p[i] < n;
    for (Index i = 1; i < n && shortcut; ++i)
        for (Index k = 0; k < i; ++k)
            if (!std::isfinite(lu[i * n + k])) {
                shortcut = false;
                break;
            }
    Scratch<double> row(shortcut ? static_cast<std::uint64_t>(n) : 1);
    Scratch<Index> perm(shortcut ? static_cast<std::uint64_t>(n) : 1);
    if (!row || !perm) shortcut = false;

    for (Index i = 0; i < n; ++i) {
        double* bi = b + i * n;
        for (Index j = 0; j < n; ++j) bi[j] = 0.0;
        bi[i] = 1.0;
    }
    for (Index c0 = 0; c0 < n; c0 += kColumnBlock) {
        const Index w = std::min(kColumnBlock, n - c0);
        if (shortcut) {
            // Rows above c0 and multipliers left of c0 meet only zeros.
            for (Index i = c0 + 1; i < n; ++i)
                combine(b + i * n + c0, w, lu + i * n + c0, i - c0, b + c0 * n + c0, n);
        } else {
            for (Index i = 0; i < n; ++i) {
                double* bi = b + i * n + c0;
                const Index pi = p[i];
                if (pi != i) std::swap_ranges(bi, bi + w, b + pi * n + c0);
                combine(bi, w, lu + i * n, i, b + c0, n);
            }
        }
        for (Index i = n - 1; i >= 0; --i) {
            double* bi = b + i * n + c0;
            combine(bi, w, lu + i * n + i + 1, n - 1 - i, b + (i + 1) * n + c0, n);
            const double d = lu[i * n + i];
            if (ZeroOrNaN(d)) return kErrSingular;
            for (Index j = 0; j < w; ++j) bi[j] = bi[j] / d;
        }
    }
    if (shortcut) {
        // Column q of the solution belongs to right-hand side perm[q], the
        // row that the interchanges bring to position q.
        Index* pm = perm.get();
        for (Index i = 0; i < n; ++i) pm[i] = i;
        for (Index i = 0; i < n; ++i) std::swap(pm[i], pm[p[i]]);
        double* tmp = row.get();
        for (Index i = 0; i < n; ++i) {
            double* bi = b + i * n;
            for (Index q = 0; q < n; ++q) tmp[pm[q]] = bi[q];
            std::memcpy(bi, tmp, static_cast<std::size_t>(n) * sizeof(double));
        }
    }
    return kOk;
}

}  // namespace matrix_detail

AnalysisStatus LUDecompose(double* a, std::int32_t n, std::int32_t* p, std::int32_t* parity) {
    if (n < 1) return kErrSamplesBelowOne;
    return matrix_detail::LUFactor(a, n, p, parity);
}

AnalysisStatus ForwSub(const double* lu, const double* y, std::int32_t n, const std::int32_t* p,
                       double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    // p may come from a caller rather than from LUDecompose: an entry outside
    // the vector would be read and written through.
    for (Index i = 0; i < n; ++i)
        if (p[i] < 0 || p[i] >= n) return kErrIndexRange;
    CopyDoubles(y, static_cast<std::uint64_t>(n), x);
    for (Index i = 0; i < n; ++i) {
        const Index pi = p[i];
        double t = x[pi];
        x[pi] = x[i];
        const double* row = lu + i * n;
        for (Index k = 0; k < i; ++k) t -= row[k] * x[k];
        x[i] = t;
    }
    return kOk;
}

AnalysisStatus BackSub(const double* u, const double* y, std::int32_t n, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    CopyDoubles(y, static_cast<std::uint64_t>(n), x);
    for (Index i = n - 1; i >= 0; --i) {
        const double* row = u + i * n;
        double t = x[i];
        for (Index k = i + 1; k < n; ++k) t -= row[k] * x[k];
        const double d = row[i];
        if (ZeroOrNaN(d)) return kErrSingular;
        x[i] = t / d;
    }
    return kOk;
}

AnalysisStatus LinEqs(const double* a, const double* y, std::int32_t n, double* x) {
    if (n < 1) return kErrSamplesBelowOne;
    CopyDoubles(y, static_cast<std::uint64_t>(n), x);
    Scratch<double> lu(Product(n, n));
    Scratch<std::int32_t> p(static_cast<std::uint64_t>(n));
    if (!lu || !p) return kErrNoMemory;
    CopyDoubles(a, Product(n, n), lu.get());
    std::int32_t parity;
    if (matrix_detail::LUFactor(lu.get(), n, p.get(), &parity) != kOk) return kErrSingular;
    ForwSub(lu.get(), x, n, p.get(), x);
    // Every pivot exceeds kPivotThreshold, so the back substitution cannot
    // meet a zero diagonal.
    BackSub(lu.get(), x, n, x);
    return kOk;
}

AnalysisStatus Determinant(const double* a, std::int32_t n, double* det) {
    if (n < 1) return kErrSamplesBelowOne;
    Scratch<double> lu(Product(n, n));
    Scratch<std::int32_t> p(static_cast<std::uint64_t>(n));
    if (!lu || !p) return kErrNoMemory;
    CopyDoubles(a, Product(n, n), lu.get());
    std::int32_t parity;
    if (matrix_detail::LUFactor(lu.get(), n, p.get(), &parity) != kOk) {
        *det = 0.0;  // singular: a value, not an error
        return kOk;
    }
    double d = 1.0;
    for (Index i = 0; i < n; ++i) d *= lu.get()[i * n + i];
    *det = parity ? -d : d;
    return kOk;
}

AnalysisStatus InvMatrix(const double* a, std::int32_t n, double* b) {
    if (n < 1) return kErrSamplesBelowOne;
    Scratch<double> lu(Product(n, n));
    Scratch<std::int32_t> p(static_cast<std::uint64_t>(n));
    if (!lu || !p) return kErrNoMemory;
    CopyDoubles(a, Product(n, n), lu.get());
    std::int32_t parity;
    const AnalysisStatus status = matrix_detail::LUFactor(lu.get(), n, p.get(), &parity);
    if (status != kOk) return status;
    return matrix_detail::LUInverseInto(lu.get(), n, p.get(), b);
}

AnalysisStatus LUInverse(const double* lu, std::int32_t n, const std::int32_t* p, double* b) {
    if (n < 1) return kErrSamplesBelowOne;
    // The interchanges come from the caller: one that points outside the
    // matrix would swap rows that do not exist.
    for (std::int32_t i = 0; i < n; ++i)
        if (p[i] < 0 || p[i] >= n) return kErrIndexRange;
    if (lu != b) return matrix_detail::LUInverseInto(lu, n, p, b);
    Scratch<double> factors(Product(n, n));
    if (!factors) return kErrNoMemory;
    CopyDoubles(lu, Product(n, n), factors.get());
    return matrix_detail::LUInverseInto(factors.get(), n, p, b);
}

}  // namespace vn
