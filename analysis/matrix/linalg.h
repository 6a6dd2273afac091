// Dense real linear algebra: products, LU factorisation and the solvers and
// inverses built on it, the packed-triangle routines behind the symmetric and
// triangular matrix classes, and the measures that reuse them (Cholesky
// factor, positive-definiteness test, norms, condition number, special
// matrices).
//
// Matrices are row-major: element (i, j) of a matrix with q columns is at
// index i*q + j. Sizes are signed 32-bit; a size below 1 gives -20003 before
// anything else is looked at. Routines never throw; scratch memory is taken
// per call and released on every path (-20001 when it cannot be had).
//
// The transpose of a matrix is TransposeMatrix of analysis/array/array_ops.h.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Smallest magnitude accepted as an LU pivot (absolute, no row scaling).
constexpr double kPivotThreshold = 1e-12;

// Matrix classes of GenLinEqs, GenInvMatrix and GenDeterminant.
enum : std::int32_t {
    kMatrixGeneral = 0,
    kMatrixPositiveDefinite = 1,  // reads the lower triangle only
    kMatrixLowerTriangular = 2,
    kMatrixUpperTriangular = 3,
};

// ---------------------------------------------------------------------------
// Products. Every sum starts from 0.0 and adds its terms in increasing index.

AnalysisStatus DotProduct(const double* x, const double* y, std::int32_t n, double* result);
// z (m-by-n) = x (m-by-k) * y (k-by-n). z must not overlap x or y.
AnalysisStatus MatrixMul(const double* x, const double* y, std::int32_t m, std::int32_t k,
                         std::int32_t n, double* z);
// z (m-by-n) with z[i][j] = x[i] * y[j].
AnalysisStatus OuterProduct(const double* x, std::int32_t m, const double* y, std::int32_t n,
                            double* z);
AnalysisStatus Trace(const double* a, std::int32_t n, double* result);

// ---------------------------------------------------------------------------
// LU factorisation with partial pivoting: P*A = L*U.
//
// On return a holds the multipliers of the unit lower factor strictly below
// the diagonal and U on and above it. p is the interchange sequence: at step
// j row j was exchanged with row p[j] (p[j] == j: no exchange; always
// p[j] >= j). parity is 0 for an even number of exchanges, 1 for odd.
// The pivot of column j is the first row (from j down) whose updated entry
// exceeds the largest magnitude seen so far, starting from kPivotThreshold;
// when none exceeds it the status is -20041 and a, p are partly processed.
AnalysisStatus LUDecompose(double* a, std::int32_t n, std::int32_t* p, std::int32_t* parity);

// Solves L*w = P*y for the factors of LUDecompose (unit diagonal; the
// diagonal of lu is not read), applying the interchanges on the fly.
// x may be y. An entry of p outside [0, n) gives -20017 before x is written.
AnalysisStatus ForwSub(const double* lu, const double* y, std::int32_t n, const std::int32_t* p,
                       double* x);
// Solves U*x = y reading the upper triangle of u. An exactly zero or NaN
// diagonal entry stops with -20041 (x then partly computed). x may be y.
AnalysisStatus BackSub(const double* u, const double* y, std::int32_t n, double* x);
// Solves a*x = y; a is not modified; x may be y. Any LU failure is -20041.
AnalysisStatus LinEqs(const double* a, const double* y, std::int32_t n, double* x);
// A singular matrix (no pivot above kPivotThreshold) gives 0.0 and status 0.
AnalysisStatus Determinant(const double* a, std::int32_t n, double* det);
// b = a^-1 (b may be a). -20041 when a is singular.
AnalysisStatus InvMatrix(const double* a, std::int32_t n, double* b);
// b = A^-1 from the factors and interchanges of LUDecompose, solving against
// the unit vectors exactly as ForwSub and BackSub do. b may be lu. An
// interchange outside 0..n-1 gives -20017 (after the n < 1 check).
AnalysisStatus LUInverse(const double* lu, std::int32_t n, const std::int32_t* p, double* b);

// ---------------------------------------------------------------------------
// Packed triangles: one triangle of an n-by-n matrix stored column by column
// in n(n+1)/2 doubles.
//   lower: column j holds rows j..n-1; (i, j) is at j*n - j*(j-1)/2 + (i - j)
//   upper: column j holds rows 0..j;   (i, j) is at j*(j+1)/2 + i
inline std::int64_t PackedLowerIndex(std::int64_t i, std::int64_t j, std::int64_t n) {
    return j * n - j * (j - 1) / 2 + (i - j);
}
inline std::int64_t PackedUpperIndex(std::int64_t i, std::int64_t j) {
    return j * (j + 1) / 2 + i;
}

// Packing modes.
enum : std::int32_t {
    kPackLower = 0,
    kPackUpper = 1,
    kPackSymmetric = 2,  // packs like kPackLower; unpacks to both triangles
};

// mode outside 0..2: -20061.
AnalysisStatus PackTriangle(const double* a, std::int32_t n, std::int32_t mode, double* packed);
// kPackLower writes zeros above the diagonal, kPackUpper zeros below it,
// kPackSymmetric mirrors every entry.
AnalysisStatus UnpackTriangle(const double* packed, std::int32_t n, std::int32_t mode, double* a);

// A = L*L^T on a packed lower triangle, in place. -20041 for a pivot <= 0 or
// a diagonal of L below 2^-31.5 times the largest entry of L so far.
AnalysisStatus PackedCholesky(double* l, std::int32_t n);
// Solves L*L^T*x = b in place on x (holding b on entry).
AnalysisStatus PackedCholeskySolve(const double* l, std::int32_t n, double* x);
// Triangular solve with a packed triangle: upper 0 (lower) or 1 (upper),
// anything else -20061. -20041 when some |diagonal| <= 2^-63 * max|entry|.
// x may be y.
AnalysisStatus PackedTriangularSolve(const double* t, std::int32_t n, std::int32_t upper,
                                     const double* y, double* x);
// Inverts a packed triangle in place; same flag values and singularity test
// as PackedTriangularSolve.
AnalysisStatus PackedTriangularInverse(double* t, std::int32_t n, std::int32_t upper);
// Replaces the packed Cholesky factor L by the packed lower triangle of
// (L*L^T)^-1 (unpack with kPackSymmetric for the full inverse).
AnalysisStatus PackedCholeskyInverse(double* l, std::int32_t n);

// ---------------------------------------------------------------------------
// General solvers selecting by matrix class.

// a is m-by-n, y has m entries, x receives n. Class 0 accepts any shape and
// returns the minimum-norm least-squares solution (SvdSolve); classes 1-3
// need m == n (-20040). Returns kWarnRankDeficient (+20001) when class 0
// finds the matrix rank deficient; x is still written. x may be y if m == n.
AnalysisStatus GenLinEqs(const double* a, std::int32_t m, std::int32_t n, const double* y,
                         std::int32_t matrix_type, double* x);
// x = pinv(a) * y through the thin SVD of a (of a^T when n > m). Singular
// values at or below 2^-52 * max(m, n) * s[0] are dropped; if any of the
// min(m, n) values is dropped the status is kWarnRankDeficient.
AnalysisStatus SvdSolve(const double* a, std::int32_t m, std::int32_t n, const double* y, double* x);
// b = a^-1 for the given class (b may be a). Class 1 gives the full
// symmetric inverse; classes 2 and 3 zero the other triangle.
AnalysisStatus GenInvMatrix(const double* a, std::int32_t n, std::int32_t matrix_type, double* b);
// det is 0.0 (status 0) for a singular general matrix and for a class-1
// matrix that is not positive definite; classes 2 and 3 multiply the
// diagonal and read nothing else.
AnalysisStatus GenDeterminant(const double* a, std::int32_t n, std::int32_t matrix_type, double* det);

// ---------------------------------------------------------------------------
// Measures and special matrices.

// Upper triangular r with r^T*r = a, from the lower triangle of a (the strict
// upper triangle is never read). r may be a. -20041 if a is not positive
// definite by the test of PackedCholesky.
AnalysisStatus Cholesky(const double* a, std::int32_t n, double* r);
// flag = 1 when a is exactly symmetric and every eigenvalue exceeds both 0
// and 2^-63 times the largest; 0 otherwise (status 0 either way).
AnalysisStatus CheckPosdef(const double* a, std::int32_t n, std::int32_t* flag);

enum : std::int32_t {
    kNormTwo = 0,        // largest singular value
    kNormOne = 1,        // largest column sum of |a|
    kNormFrobenius = 2,  // sqrt of the sum of squares
    kNormInfinity = 3,   // largest row sum of |a|
};

// a is m-by-n; result is 0.0 on any failure.
AnalysisStatus MatrixNorm(const double* a, std::int32_t m, std::int32_t n, std::int32_t norm_type,
                          double* result);
// ||a|| * ||a^-1|| for norm types 1-3 (square only, -20040), s_max / s_min
// for type 0 (any shape). -20041 when a is singular: the inverse fails, or
// s_min is zero, NaN or below 2^-63 * max(m, n) * s_max.
AnalysisStatus ConditionNumber(const double* a, std::int32_t m, std::int32_t n,
                               std::int32_t norm_type, double* result);

enum : std::int32_t {
    kSpecialIdentity = 0,     // size x size
    kSpecialDiagonal = 1,     // n1 x n1, array1 on the diagonal
    kSpecialToeplitz = 2,     // n1 x n2, first column array1, first row array2
    kSpecialVandermonde = 3,  // n1 x n1, out[i][j] = array1[i]^(n1-1-j)
    kSpecialCompanion = 4,    // (n1-1) x (n1-1), array1 = coefficients, highest power first
};

// Result shape of SpecialMatrix, with the same checks in the same order:
// type outside 0..4: -20061; the size or array lengths it uses below 1:
// -20003; a companion matrix of a single coefficient (0 x 0): -20008.
AnalysisStatus SpecialMatrixShape(std::int32_t matrix_type, std::int32_t size, std::int32_t n1,
                                  std::int32_t n2, std::int32_t* rows, std::int32_t* cols);
// Writes rows*cols values (see SpecialMatrixShape) to out. The Toeplitz
// diagonal is array1[0]; array2[0] is not used. Any p-by-q shape is built,
// including q > p. The companion matrix divides by -array1[0] unchecked.
AnalysisStatus SpecialMatrix(std::int32_t matrix_type, std::int32_t size, const double* array1,
                             std::int32_t n1, const double* array2, std::int32_t n2, double* out);

}  // namespace vn
