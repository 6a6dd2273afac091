// Dense complex linear algebra on matrices held as separate real and
// imaginary blocks.
//
// A complex m-by-n matrix is two row-major blocks of m*n doubles, ar and ai:
// element (r, c) is ar[r*n + c] + i*ai[r*n + c]. Vectors are two blocks of n
// doubles. Counts are signed 32-bit; routines that take a single n work on
// n-by-n matrices (the caller has checked that the matrix is square).
//
// Conventions shared by all routines:
// - Checks come first, in this order: counts below 1 (-20003), the selector
//   (-20061), the shape (-20040), then scratch allocation (-20001); only the
//   special matrices test their selector first, since it decides which counts
//   are used. Numerical failures follow: -20041 for a singular or not
//   positive definite matrix, -20999 when an iterative decomposition does not
//   converge (which is also what a matrix holding infinities or NaNs gives).
// - Outputs must not share storage with inputs, except where a routine says
//   otherwise. On a failure outputs may hold partial results.
// - Products and sums start from 0 and add terms in increasing index order.
// - The conjugate transpose of A is written A^H. Nothing is conjugated unless
//   a routine says so: products are the plain bilinear ones of the algebra of
//   complex matrices, and the transpose is the plain transpose.
// - The thin decompositions use K = min(m, n).
//
// Kernel behind each matrix method of the VNComplex control:
//   CxCholesky ComplexCholesky            CxEigenValueVector ComplexEigenValueVector
//   CxGenInvMatrix ComplexGenInvMatrix    CxMatrixMul ComplexMatrixMul
//   CxMatrixRank ComplexMatrixRank        CxGenLinEqs ComplexGenLinEqs
//   CxDeterminant ComplexDeterminant      CxDotProduct ComplexDotProduct
//   CxConditionNumber ComplexConditionNumber
//   CxOuterProduct ComplexOuterProduct    CxTranspose ComplexTranspose
//   CxSVD ComplexSVD                      CxTrace ComplexTrace
//   CxCheckPosDef ComplexCheckPosDef      CxSpecialMatrix ComplexSpecialMatrix
//   CxQR ComplexQR                        CxLU ComplexLUDecompose
//   CxMatrixNorm ComplexMatrixNorm        CxPseudoInverse ComplexPseudoInverse
//   CxSVDS ComplexSingularValues
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Matrix classes of ComplexGenInvMatrix and ComplexGenLinEqs. Only the part of
// the matrix named here is read.
enum : std::int32_t {
    kCxMatrixGeneral = 0,        // all entries
    kCxMatrixHermitianPosDef = 1,  // lower triangle with the diagonal; the
                                   // diagonal's imaginary parts are taken as 0
    kCxMatrixLower = 2,          // lower triangle with the diagonal
    kCxMatrixUpper = 3,          // upper triangle with the diagonal
};

// Norms of ComplexMatrixNorm and ComplexConditionNumber; |a| is the modulus.
enum : std::int32_t {
    kCxNorm2 = 0,          // largest singular value
    kCxNorm1 = 1,          // largest column sum of |a[i][j]|
    kCxNormFrobenius = 2,  // sqrt of the sum of |a[i][j]|^2
    kCxNormInfinity = 3,   // largest row sum of |a[i][j]|
};

// Matrices built by ComplexSpecialMatrix.
enum : std::int32_t {
    kCxSpecialIdentity = 0,     // size-by-size
    kCxSpecialDiagonal = 1,     // n1-by-n1 with Array1 on the diagonal
    kCxSpecialToeplitz = 2,     // n1-by-n2: first column Array1, first row Array2
    kCxSpecialVandermonde = 3,  // n1-by-n1
    kCxSpecialCompanion = 4,    // (n1-1)-by-(n1-1)
};

// ---- Products, transpose, trace ---------------------------------------------

// z = sum x[i] * y[i], without conjugation (the bilinear form). For the inner
// product <x, y> = sum conj(x[i]) * y[i], pass the negated imaginary part of
// x. n < 1: -20003.
AnalysisStatus ComplexDotProduct(const double* xr, const double* xi, const double* yr,
                                 const double* yi, std::int32_t n, double* zr, double* zi);

// z (m-by-n) = x (m-by-k) * y (k-by-n). A vector y is a k-by-1 matrix (n = 1).
// Any count below 1: -20003.
AnalysisStatus ComplexMatrixMul(const double* xr, const double* xi, const double* yr,
                                const double* yi, std::int32_t m, std::int32_t k, std::int32_t n,
                                double* zr, double* zi);

// z[i][j] = x[i] * y[j] (m-by-n), without conjugation: z = x * y^T.
// For x * y^H pass the negated imaginary part of y. m < 1 or n < 1: -20003.
AnalysisStatus ComplexOuterProduct(const double* xr, const double* xi, std::int32_t m,
                                   const double* yr, const double* yi, std::int32_t n, double* zr,
                                   double* zi);

// b (q-by-r) = a^T, the plain transpose of a (r-by-q): nothing is conjugated.
// r < 1 or q < 1: -20003.
AnalysisStatus ComplexTranspose(const double* ar, const double* ai, std::int32_t r, std::int32_t q,
                                double* br, double* bi);

// t = sum a[i][i]. n < 1: -20003.
AnalysisStatus ComplexTrace(const double* ar, const double* ai, std::int32_t n, double* tr, double* ti);

// ---- LU factorisation and what is built on it -------------------------------

// In-place LU factorisation with partial pivoting, P*A = L*U. On return a
// holds U on and above the diagonal and the multipliers of the unit lower
// triangular L below it. p[j] is the row exchanged with row j at step j (j
// itself when none): a sequence of exchanges applied in the order j = 0, 1,
// ..., not a permutation listing. parity is 0 for an even number of
// exchanges, 1 for an odd one.
// The pivot of each column is the first entry of largest modulus, and it must
// exceed 1e-12 in modulus; otherwise -20041. n < 1: -20003.
AnalysisStatus ComplexLUDecompose(double* ar, double* ai, std::int32_t n, std::int32_t* p,
                                  std::int32_t* parity);

// det A from the LU factors. A singular matrix (no pivot above 1e-12) is not
// an error: d = 0 and status 0. n < 1: -20003.
AnalysisStatus ComplexDeterminant(const double* ar, const double* ai, std::int32_t n, double* dr,
                                  double* di);

// Upper triangular R with R^H * R = A for a Hermitian positive definite A.
// Only the lower triangle of a is read (the diagonal's imaginary parts are
// taken as 0); R's strict lower triangle is written as zeros and its diagonal
// is real and positive. -20041 when a pivot is not positive or a diagonal
// entry of the factor falls below 2^-31.5 times its largest entry modulus.
// n < 1: -20003.
AnalysisStatus ComplexCholesky(const double* ar, const double* ai, std::int32_t n, double* rr,
                               double* ri);

// b = a^-1 (n-by-n) for a matrix of the given class (kCxMatrix*):
//   0 general: LU factorisation (-20041 as in ComplexLUDecompose);
//   1 Hermitian positive definite: through ComplexCholesky's factor (its
//     -20041); the result is the full Hermitian inverse;
//   2 lower, 3 upper triangular: the triangular inverse, zeros in the other
//     triangle; -20041 when a diagonal modulus is <= 2^-63 times the largest
//     modulus in the triangle (so a zero diagonal always fails).
// n < 1: -20003; matrixType outside 0..3: -20061.
AnalysisStatus ComplexGenInvMatrix(const double* ar, const double* ai, std::int32_t n,
                                   std::int32_t matrixType, double* br, double* bi);

// Solves A x = y for A m-by-n, y of m values, x of n values.
//   0 general, any shape: ComplexSvdSolve (least squares, minimum norm);
//     the positive warning 20001 when A is rank deficient;
//   1 Hermitian positive definite, 2 lower, 3 upper triangular: A must be
//     square (-20040); the factor and tests of ComplexGenInvMatrix.
// m < 1 or n < 1: -20003; matrixType outside 0..3: -20061.
AnalysisStatus ComplexGenLinEqs(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                const double* yr, const double* yi, std::int32_t matrixType, double* xr,
                                double* xi);

// ---- Decompositions ---------------------------------------------------------

// The singular values of a (m-by-n): K values in decreasing order.
// m < 1 or n < 1: -20003.
AnalysisStatus ComplexSingularValues(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                     double* s);

// Thin singular value decomposition A = U * diag(s) * V^H: U is m-by-K and V is
// n-by-K, both with orthonormal columns; s holds K values in decreasing order.
// The phases of the singular vector pairs are not normalised.
// m < 1 or n < 1: -20003.
AnalysisStatus ComplexSVD(const double* ar, const double* ai, std::int32_t m, std::int32_t n, double* ur,
                          double* ui, double* s, double* vr, double* vi);

// Number of singular values above max(m, n) * s[0] * 2^-52.
// m < 1 or n < 1: -20003.
AnalysisStatus ComplexMatrixRank(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                 std::int32_t* rank);

// Moore-Penrose pseudo-inverse b (n-by-m) of a (m-by-n): V * diag(1/s) * U^H
// over the singular values above the rank tolerance of ComplexMatrixRank.
// m < 1 or n < 1: -20003.
AnalysisStatus ComplexPseudoInverse(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                    double* br, double* bi);

// Minimum-norm least-squares solution x = A^+ y (A m-by-n, y of m, x of n
// values), over the singular values above the tolerance of
// ComplexMatrixRank. Returns the positive warning 20001 (the solution is
// still written) when fewer than K singular values pass. m < 1 or n < 1: -20003.
AnalysisStatus ComplexSvdSolve(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                               const double* yr, const double* yi, double* xr, double* xi);

// Economy QR factorisation A = Q * R: Q is m-by-K with orthonormal columns, R
// is K-by-n and upper triangular (zeros below the diagonal) with a real,
// non-negative diagonal, which makes the factors unique for a matrix of full
// column rank. m < 1 or n < 1: -20003.
AnalysisStatus ComplexQR(const double* ar, const double* ai, std::int32_t m, std::int32_t n, double* qr,
                         double* qi, double* rr, double* ri);

// Eigenvalues and right eigenvectors of a general square matrix, A v = lambda v.
// valr/vali receive n eigenvalues ordered by decreasing modulus (exact ties by
// decreasing real part, then decreasing imaginary part). Column k of the
// n-by-n block vecr/veci is the eigenvector of eigenvalue k, scaled to unit
// 2-norm and turned so that its first entry of largest modulus is real and
// positive. A defective matrix gives nearly parallel vectors for a repeated
// eigenvalue. n < 1: -20003; no convergence (also for infinities or NaNs):
// -20999.
AnalysisStatus ComplexEigenValueVector(const double* ar, const double* ai, std::int32_t n, double* valr,
                                       double* vali, double* vecr, double* veci);

// flag = 1 when a is Hermitian (a[j][i] equals conj(a[i][j]) exactly, for the
// diagonal too: its imaginary parts must be 0) and all its eigenvalues exceed
// 2^-63 times the largest one and 0; else 0. The answer is never an error:
// status 0 for every matrix that is not positive definite. n < 1: -20003;
// no convergence of the eigenvalue iteration: -20999.
AnalysisStatus ComplexCheckPosDef(const double* ar, const double* ai, std::int32_t n, std::int32_t* flag);

// ---- Measures ----------------------------------------------------------------

// Norm of a (m-by-n) by kCxNorm*. m < 1 or n < 1: -20003; other normType: -20061.
AnalysisStatus ComplexMatrixNorm(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                 std::int32_t normType, double* norm);

// Condition number of a (m-by-n).
//   normType 0 (any shape): s[0] / s[K-1]; -20041 when s[K-1] is 0, NaN or
//     below |s[0]| * max(m, n) * 2^-63.
//   normType 1, 2, 3: ||A|| * ||A^-1||; A must be square (-20040); -20041
//     when the general inverse fails.
// m < 1 or n < 1: -20003; another normType: -20061.
AnalysisStatus ComplexConditionNumber(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                      std::int32_t normType, double* cond);

// ---- Special matrices -----------------------------------------------------------

// Shape of the matrix that ComplexSpecialMatrix builds, with the same checks:
// matrixType outside 0..4: -20061; then, for the type's inputs, a count below
// 1: -20003; a companion matrix needs at least two coefficients (-20008).
// Unused counts are ignored.
AnalysisStatus ComplexSpecialMatrixSize(std::int32_t matrixType, std::int32_t size, std::int32_t n1,
                                        std::int32_t n2, std::int32_t* rows, std::int32_t* cols);

// Builds a special matrix into b (rows-by-cols as ComplexSpecialMatrixSize
// gives). Array1 (a1r/a1i, n1 values) and Array2 (a2r/a2i, n2 values) are read
// only by the types that use them and may be null otherwise.
//   0 identity of order size;
//   1 diagonal: b[i][i] = Array1[i];
//   2 Toeplitz: b[i][j] = Array1[i-j] on and below the diagonal and
//     Array2[j-i] above it (Array2[0] is never used); any n1 and n2;
//   3 Vandermonde: b[i][j] = Array1[i]^(n1-1-j), powers decreasing to the
//     right, the last column all 1 (0^0 = 1), formed by repeated
//     multiplication so that integer powers of exact values stay exact;
//   4 companion of the polynomial c[0] x^(n1-1) + ... + c[n1-1] (Array1,
//     highest power first): b[0][k] = c[k+1] / (-c[0]), ones on the
//     subdiagonal; its eigenvalues are the polynomial's roots. The division is
//     the plain formula; c[0] = 0 is not tested and yields infinities or NaNs.
AnalysisStatus ComplexSpecialMatrix(std::int32_t matrixType, std::int32_t size, const double* a1r,
                                    const double* a1i, std::int32_t n1, const double* a2r,
                                    const double* a2i, std::int32_t n2, double* br, double* bi);

}  // namespace vn
