// Orthogonal decompositions and eigenproblems of dense real matrices: QR,
// singular values and vectors, pseudo-inverse and rank, and the eigenvalues
// and eigenvectors of general and symmetric matrices.
//
// Matrices are row-major (element (i, j) of a matrix with q columns at
// i*q + j); outputs are caller-provided. Common statuses, checked in this
// order: -20003 for a size below 1, -20040 for a non-square matrix where one
// is needed, -20001 when memory runs out, and -20999 when the input holds an
// infinity or NaN or the iteration fails to converge. None of these routines
// reports a singular matrix: rank deficiency shows in the results (zero
// diagonal entries of R, zero singular values, a truncated pseudo-inverse).
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Relative tolerance of the rank decisions: a singular value counts as zero
// when it is at or below max(m, n) * s[0] * kRankEpsilon.
constexpr double kRankEpsilon = 2.220446049250313e-16;  // 2^-52

// Economy QR of the m-by-n a: q is m-by-k with orthonormal columns, r is
// k-by-n upper trapezoidal, k = min(m, n), a = q*r. Householder reflections
// without column pivoting; signs are fixed so that r's diagonal is >= 0.
AnalysisStatus QRDecompose(const double* a, std::int32_t m, std::int32_t n, double* q, double* r);

// Thin SVD of the m-by-n a: u is m-by-k, s holds k = min(m, n) values in
// decreasing order, v is n-by-k, a = u*diag(s)*v^T. Each pair of singular
// vectors is signed so that the largest-magnitude entry of v's column (the
// first of equal ones) is positive.
AnalysisStatus SVDecompose(const double* a, std::int32_t m, std::int32_t n, double* u, double* s,
                           double* v);
// The min(m, n) singular values, decreasing.
AnalysisStatus SingularValues(const double* a, std::int32_t m, std::int32_t n, double* s);

// n-by-m Moore-Penrose inverse of the m-by-n a; singular values at or below
// max(m, n) * s[0] * 2^-52 are treated as zero (the zero matrix gives zero).
AnalysisStatus PseudoInverse(const double* a, std::int32_t m, std::int32_t n, double* b);
// Number of singular values above max(m, n) * s[0] * 2^-52.
AnalysisStatus MatrixRank(const double* a, std::int32_t m, std::int32_t n, std::int32_t* rank);

// Eigenvalues and eigenvectors of a general square matrix (m == n).
// Eigenvalues come in decreasing modulus, equal moduli by decreasing real
// part, then decreasing imaginary part, so each complex-conjugate pair is
// adjacent with the positive imaginary part first. Column j of the n-by-n
// vec_re/vec_im is the eigenvector of value j, scaled to unit 2-norm with its
// largest-modulus component (the first of equal ones) real and positive.
// For a defective matrix the vectors of a repeated value are (nearly)
// parallel. vec_re and vec_im may both be null when only values are wanted.
AnalysisStatus GeneralEigen(const double* a, std::int32_t m, std::int32_t n, double* val_re,
                            double* val_im, double* vec_re, double* vec_im);

// Eigenvalues (ascending) and orthonormal eigenvectors (columns of the n-by-n
// vectors) of a symmetric matrix given by its lower triangle; the strict
// upper triangle is not read. Each vector's largest-magnitude component (the
// first of equal ones) is positive. vectors may be null.
AnalysisStatus SymmetricEigen(const double* a, std::int32_t m, std::int32_t n, double* values,
                              double* vectors);

}  // namespace vn
