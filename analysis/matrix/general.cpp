// Solvers, inverses and determinants that pick a method by matrix class:
// general (LU or SVD), symmetric positive definite (packed Cholesky), lower
// and upper triangular (packed triangle).

#include "analysis/array/array_ops.h"
#include "analysis/matrix/decompositions.h"
#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

namespace vn {

using matrix_detail::CopyDoubles;
using matrix_detail::Index;
using matrix_detail::PackedCount;
using matrix_detail::Product;
using matrix_detail::Scratch;

namespace {

bool ValidMatrixType(std::int32_t t) { return t >= kMatrixGeneral && t <= kMatrixUpperTriangular; }

}  // namespace

AnalysisStatus SvdSolve(const double* a, std::int32_t m, std::int32_t n, const double* y, double* x) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    // Decompose a matrix with at least as many rows as columns: a itself, or
    // a^T when there are more unknowns than equations.
    const bool transposed = n > m;
    const Index rows = transposed ? n : m;  // R
    const Index cols = transposed ? m : n;  // C = K = min(m, n)
    Scratch<double> at(transposed ? Product(rows, cols) : 1);
    Scratch<double> u(Product(rows, cols));
    Scratch<double> s(static_cast<std::uint64_t>(cols));
    Scratch<double> v(Product(cols, cols));
    Scratch<double> t(static_cast<std::uint64_t>(cols));
    if (!at || !u || !s || !v || !t) return kErrNoMemory;
    const double* work = a;
    if (transposed) {
        TransposeMatrix(a, m, n, at.get());
        work = at.get();
    }
    const AnalysisStatus status = SVDecompose(work, static_cast<std::int32_t>(rows),
                                              static_cast<std::int32_t>(cols), u.get(), s.get(), v.get());
    if (status != kOk) return status;

    const double* sv = s.get();
    const double tol = kRankEpsilon * static_cast<double>(rows) * sv[0];
    Index rank = 0;
    for (Index i = 0; i < cols; ++i)
        if (sv[i] > tol) ++rank;

    // a = U*S*V^T gives x = V*S^-1*U^T*y; for a^T = U*S*V^T the roles of U
    // and V swap. left is the factor applied to y, right builds x.
    const double* left = transposed ? v.get() : u.get();
    const double* right = transposed ? u.get() : v.get();
    double* tv = t.get();
    for (Index i = 0; i < rank; ++i) {
        double acc = 0.0;
        for (Index k = 0; k < m; ++k) acc += left[k * cols + i] * y[k];
        tv[i] = acc / sv[i];
    }
    for (Index j = 0; j < n; ++j) {
        double acc = 0.0;
        for (Index i = 0; i < rank; ++i) acc += right[j * cols + i] * tv[i];
        x[j] = acc;
    }
    return rank == cols ? kOk : kWarnRankDeficient;
}

AnalysisStatus GenLinEqs(const double* a, std::int32_t m, std::int32_t n, const double* y,
                         std::int32_t matrix_type, double* x) {
    if (n < 1 || m < 1) return kErrSamplesBelowOne;
    if (!ValidMatrixType(matrix_type)) return kErrInvalidSelection;
    if (matrix_type == kMatrixGeneral) return SvdSolve(a, m, n, y, x);
    if (n != m) return kErrNotSquare;
    Scratch<double> packed(PackedCount(n));
    if (!packed) return kErrNoMemory;
    switch (matrix_type) {
    case kMatrixPositiveDefinite: {
        PackTriangle(a, n, kPackLower, packed.get());
        const AnalysisStatus status = PackedCholesky(packed.get(), n);
        if (status != kOk) return status;
        CopyDoubles(y, static_cast<std::uint64_t>(n), x);
        return PackedCholeskySolve(packed.get(), n, x);
    }
    case kMatrixLowerTriangular:
        PackTriangle(a, n, kPackLower, packed.get());
        return PackedTriangularSolve(packed.get(), n, 0, y, x);
    default:
        PackTriangle(a, n, kPackUpper, packed.get());
        return PackedTriangularSolve(packed.get(), n, 1, y, x);
    }
}

AnalysisStatus GenInvMatrix(const double* a, std::int32_t n, std::int32_t matrix_type, double* b) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!ValidMatrixType(matrix_type)) return kErrInvalidSelection;
    if (matrix_type == kMatrixGeneral) {
        Scratch<std::int32_t> p(static_cast<std::uint64_t>(n));
        if (!p) return kErrNoMemory;
        CopyDoubles(a, Product(n, n), b);
        std::int32_t parity;
        const AnalysisStatus status = matrix_detail::LUFactor(b, n, p.get(), &parity);
        if (status != kOk) return status;
        return LUInverse(b, n, p.get(), b);
    }
    Scratch<double> packed(PackedCount(n));
    if (!packed) return kErrNoMemory;
    AnalysisStatus status;
    std::int32_t unpack_mode;
    switch (matrix_type) {
    case kMatrixPositiveDefinite:
        PackTriangle(a, n, kPackSymmetric, packed.get());
        status = PackedCholesky(packed.get(), n);
        if (status == kOk) status = PackedCholeskyInverse(packed.get(), n);
        unpack_mode = kPackSymmetric;
        break;
    case kMatrixLowerTriangular:
        PackTriangle(a, n, kPackLower, packed.get());
        status = PackedTriangularInverse(packed.get(), n, 0);
        unpack_mode = kPackLower;
        break;
    default:
        PackTriangle(a, n, kPackUpper, packed.get());
        status = PackedTriangularInverse(packed.get(), n, 1);
        unpack_mode = kPackUpper;
        break;
    }
    if (status != kOk) return status;
    return UnpackTriangle(packed.get(), n, unpack_mode, b);
}

AnalysisStatus GenDeterminant(const double* a, std::int32_t n, std::int32_t matrix_type, double* det) {
    *det = 0.0;
    if (n < 1) return kErrSamplesBelowOne;
    switch (matrix_type) {
    case kMatrixGeneral:
        return Determinant(a, n, det);
    case kMatrixPositiveDefinite: {
        Scratch<double> packed(PackedCount(n));
        if (!packed) return kErrNoMemory;
        PackTriangle(a, n, kPackLower, packed.get());
        // Not positive definite (or numerically singular): 0.0, no error.
        if (PackedCholesky(packed.get(), n) != kOk) return kOk;
        double prod = 1.0;
        for (Index j = 0; j < n; ++j) prod *= packed.get()[j * n - j * (j - 1) / 2];
        *det = prod * prod;
        return kOk;
    }
    case kMatrixLowerTriangular:
    case kMatrixUpperTriangular: {
        double prod = 1.0;
        for (Index i = 0; i < n; ++i) prod *= a[i * n + i];
        *det = prod;
        return kOk;
    }
    default:
        return kErrInvalidSelection;
    }
}

}  // namespace vn
