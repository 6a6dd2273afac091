// Cholesky factor, positive-definiteness test, norms, condition number and
// special matrices.

#include "analysis/matrix/decompositions.h"
#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

#include <cmath>

namespace vn {

using matrix_detail::CopyDoubles;
using matrix_detail::Index;
using matrix_detail::kTwoPowMinus63;
using matrix_detail::PackedCount;
using matrix_detail::Product;
using matrix_detail::Scratch;

AnalysisStatus Cholesky(const double* a, std::int32_t n, double* r) {
    if (n < 1) return kErrSamplesBelowOne;
    Scratch<double> packed(PackedCount(n));
    if (!packed) return kErrNoMemory;
    const Index nn = n;
    CopyDoubles(a, Product(n, n), r);
    PackTriangle(r, n, kPackLower, packed.get());
    const AnalysisStatus status = PackedCholesky(packed.get(), n);
    if (status != kOk) return status;
    // R = L^T: row i of R is column i of L.
    const double* l = packed.get();
    for (Index i = 0; i < nn; ++i) {
        const double* ci = l + i * nn - i * (i - 1) / 2 - i;  // ci[j] = L[j][i]
        double* ri = r + i * nn;
        for (Index j = 0; j < i; ++j) ri[j] = 0.0;
        for (Index j = i; j < nn; ++j) ri[j] = ci[j];
    }
    return kOk;
}

AnalysisStatus CheckPosdef(const double* a, std::int32_t n, std::int32_t* flag) {
    *flag = 0;
    if (n < 1) return kErrSamplesBelowOne;
    const Index nn = n;
    Scratch<double> values(static_cast<std::uint64_t>(n));
    if (!values) return kErrNoMemory;
    // Exact symmetry is required (a NaN never equals its mirror).
    for (Index i = 0; i < nn; ++i)
        for (Index j = i + 1; j < nn; ++j)
            if (!(a[i * nn + j] == a[j * nn + i])) return kOk;
    const AnalysisStatus status = SymmetricEigen(a, n, n, values.get(), nullptr);
    if (status != kOk) return status;
    const double* ev = values.get();
    double largest = 0.0;
    for (Index i = 0; i < nn; ++i) {
        if (ev[i] <= 0.0) return kOk;
        if (ev[i] > largest) largest = ev[i];
    }
    const double tau = largest * kTwoPowMinus63;
    for (Index i = 0; i < nn; ++i)
        if (ev[i] <= tau) return kOk;
    *flag = 1;
    return kOk;
}

AnalysisStatus MatrixNorm(const double* a, std::int32_t m, std::int32_t n, std::int32_t norm_type,
                          double* result) {
    *result = 0.0;
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (norm_type < kNormTwo || norm_type > kNormInfinity) return kErrInvalidSelection;
    const Index rows = m, cols = n;
    double best = 0.0;
    switch (norm_type) {
    case kNormOne: {
        // Column sums down the rows, a block of columns per sweep so the
        // matrix is read along its rows; the maximum is taken in column order.
        constexpr Index kBlock = 64;
        double sums[kBlock];
        for (Index c0 = 0; c0 < cols; c0 += kBlock) {
            const Index w = cols - c0 < kBlock ? cols - c0 : kBlock;
            for (Index j = 0; j < w; ++j) sums[j] = 0.0;
            for (Index i = 0; i < rows; ++i) {
                const double* row = a + i * cols + c0;
                for (Index j = 0; j < w; ++j) sums[j] += std::fabs(row[j]);
            }
            for (Index j = 0; j < w; ++j)
                if (sums[j] > best) best = sums[j];
        }
        break;
    }
    case kNormInfinity:
        for (Index i = 0; i < rows; ++i) {
            const double* row = a + i * cols;
            double s = 0.0;
            for (Index j = 0; j < cols; ++j) s += std::fabs(row[j]);
            if (s > best) best = s;
        }
        break;
    case kNormFrobenius: {
        double s = 0.0;
        const Index count = rows * cols;
        for (Index i = 0; i < count; ++i) s += a[i] * a[i];
        best = std::sqrt(s);
        break;
    }
    default: {
        Scratch<double> s(static_cast<std::uint64_t>(m < n ? m : n));
        if (!s) return kErrNoMemory;
        const AnalysisStatus status = SingularValues(a, m, n, s.get());
        if (status != kOk) return status;
        best = s.get()[0];
        break;
    }
    }
    *result = best;
    return kOk;
}

AnalysisStatus ConditionNumber(const double* a, std::int32_t m, std::int32_t n,
                               std::int32_t norm_type, double* result) {
    *result = 0.0;
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    Scratch<double> work(Product(m, n));
    if (!work) return kErrNoMemory;
    if (norm_type >= kNormOne && norm_type <= kNormInfinity) {
        if (m != n) return kErrNotSquare;
        double norm_a, norm_inv;
        MatrixNorm(a, n, n, norm_type, &norm_a);
        const AnalysisStatus status = InvMatrix(a, n, work.get());
        if (status != kOk) return status;
        MatrixNorm(work.get(), n, n, norm_type, &norm_inv);
        *result = norm_a * norm_inv;
        return kOk;
    }
    if (norm_type != kNormTwo) return kErrInvalidSelection;
    const Index k = m < n ? m : n;
    const AnalysisStatus status = SingularValues(a, m, n, work.get());
    if (status != kOk) return status;
    const double s_max = work.get()[0];
    const double s_min = work.get()[k - 1];
    if (!(s_min > 0.0) && !(s_min < 0.0)) return kErrSingular;  // zero or NaN
    const double tau = std::fabs(s_max) * static_cast<double>(m > n ? m : n) * kTwoPowMinus63;
    if (std::fabs(s_min) < tau) return kErrSingular;
    *result = s_max / s_min;
    return kOk;
}

AnalysisStatus SpecialMatrixShape(std::int32_t matrix_type, std::int32_t size, std::int32_t n1,
                                  std::int32_t n2, std::int32_t* rows, std::int32_t* cols) {
    switch (matrix_type) {
    case kSpecialIdentity:
        if (size < 1) return kErrSamplesBelowOne;
        *rows = *cols = size;
        return kOk;
    case kSpecialDiagonal:
    case kSpecialVandermonde:
        if (n1 < 1) return kErrSamplesBelowOne;
        *rows = *cols = n1;
        return kOk;
    case kSpecialToeplitz:
        if (n1 < 1 || n2 < 1) return kErrSamplesBelowOne;
        *rows = n1;
        *cols = n2;
        return kOk;
    case kSpecialCompanion:
        if (n1 < 1) return kErrSamplesBelowOne;
        if (n1 == 1) return kErrWrongCount;  // a constant has no companion matrix
        *rows = *cols = n1 - 1;
        return kOk;
    default:
        return kErrInvalidSelection;
    }
}

AnalysisStatus SpecialMatrix(std::int32_t matrix_type, std::int32_t size, const double* array1,
                             std::int32_t n1, const double* array2, std::int32_t n2, double* out) {
    std::int32_t r, c;
    const AnalysisStatus status = SpecialMatrixShape(matrix_type, size, n1, n2, &r, &c);
    if (status != kOk) return status;
    const Index rows = r, cols = c;
    switch (matrix_type) {
    case kSpecialToeplitz:
        // Constant along each diagonal: the first column below and on the
        // diagonal, the first row above it.
        for (Index i = 0; i < rows; ++i)
            for (Index j = 0; j < cols; ++j)
                out[i * cols + j] = j > i ? array2[j - i] : array1[i - j];
        return kOk;
    case kSpecialVandermonde:
        for (Index i = 0; i < rows; ++i)
            for (Index j = 0; j < cols; ++j)
                out[i * cols + j] = std::pow(array1[i], static_cast<double>(cols - 1 - j));
        return kOk;
    default:
        break;
    }
    for (Index i = 0; i < rows * cols; ++i) out[i] = 0.0;
    if (matrix_type == kSpecialIdentity) {
        for (Index i = 0; i < rows; ++i) out[i * cols + i] = 1.0;
    } else if (matrix_type == kSpecialDiagonal) {
        for (Index i = 0; i < rows; ++i) out[i * cols + i] = array1[i];
    } else {
        // Companion matrix of c[0]*x^(n-1) + ... + c[n-1]: ones on the
        // subdiagonal, first row -c[k+1]/c[0]; its eigenvalues are the roots.
        const double lead = -array1[0];
        for (Index i = 0; i + 1 < rows; ++i) out[(i + 1) * cols + i] = 1.0;
        for (Index k = 0; k < cols; ++k) out[k] = array1[k + 1] / lead;
    }
    return kOk;
}

}  // namespace vn
