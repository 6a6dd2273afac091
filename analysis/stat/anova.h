// Analysis of variance (one, two and three factors) and the chi-square test
// of independence of a contingency table.
//
// Factor levels are given per observation as 0-based group numbers:
// level[i] in 0 .. k-1 is the group of y[i]. Significances are upper-tail
// probabilities, Sig = 1 - P(F <= f) or 1 - P(X^2 <= stat), from the lower
// tails of distributions.h (so they carry those routines' accuracy).
// Outputs are written only on success.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// One-way analysis of variance of n observations in k groups, by one pass of
// sums and the correction term S^2/n. Checks: n < 1 (-20003); k < 2 or
// k >= n (-20042); scratch (-20001); a level outside 0..k-1 (-20043); an
// empty group (-20044). Degrees of freedom k-1 and n-k.
AnalysisStatus OneWayAnova(const double* y, const std::int32_t* level, std::int32_t n, std::int32_t k, double* ssa,
                           double* msa, double* f, double* sig, double* sse, double* mse, double* tss);

// Pearson's chi-square statistic of the r-by-c row-major table of counts
// against independence, with (r-1)(c-1) degrees of freedom. Checks: r < 0 or
// c < 0 (-20003); scratch (-20001); r <= 1 or c <= 1 (-20055); a negative
// count (-20056). An all-zero row or column gives a zero expected count and
// a non-finite statistic, not an error.
AnalysisStatus ContingencyTest(std::int32_t r, std::int32_t c, const std::int32_t* table, double* testStat,
                               double* sig);

// Balanced two- and three-factor analyses of variance with L = n / (product of
// the level counts) observations per cell.
//
// Sources, in output order: two factors A, B, AB; three factors A, B, C, AB,
// AC, BC, ABC. ss, ms, f and sig hold one entry per source; sse, mse and tss
// are the error and (corrected) total sums. Sums of squares are formed from
// deviations of cell and marginal means (not from raw sums of squares), so
// data with a large common offset keeps its precision.
//
// random: bit mask of the factors with random effects (bit 0 A, bit 1 B,
// bit 2 C); the others are fixed. F ratios follow the expected mean squares
// of the restricted mixed model: a source T is tested against
//   - the error, when every factor outside T is fixed;
//   - the interaction of T with R, when R is the only random factor outside T.
// (A, B fixed: everything over the error; A random, B fixed: F_B = MS_B/MS_AB,
// F_A and F_AB over the error; both random: the main effects over MS_AB.)
// A source with two random factors outside it has no exact F ratio, so three
// factors with two or more random ones are refused (-20048).
//
// L = 1: the highest interaction has no replicate error left to test it; its
// mean square is the error (sse, mse are its sum and mean square, with its
// degrees of freedom), its own ss and ms entries repeat them, and its f is 0
// and sig 1 (not tested). The other sources are tested as above, the error
// standing in for the highest interaction.
//
// Checks, in order: n < 1 (-20003); a level count below 2, or the product of
// the level counts above n (-20042); random outside the factors' bits
// (-20061); n not a multiple of the product (-20045); for three factors, two
// or more random (-20048); scratch (-20001); a level outside 0..count-1
// (-20043); an empty cell (-20044); cells of unequal size (-20047); a zero
// denominator mean square, which would make an F ratio infinite or undefined
// (-20046).
AnalysisStatus TwoWayAnova(const double* y, const std::int32_t* levelA, const std::int32_t* levelB, std::int32_t n,
                           std::int32_t a, std::int32_t b, std::int32_t random, double* ss, double* ms, double* f,
                           double* sig, double* sse, double* mse, double* tss);

AnalysisStatus ThreeWayAnova(const double* y, const std::int32_t* levelA, const std::int32_t* levelB,
                             const std::int32_t* levelC, std::int32_t n, std::int32_t a, std::int32_t b,
                             std::int32_t c, std::int32_t random, double* ss, double* ms, double* f, double* sig,
                             double* sse, double* mse, double* tss);

}  // namespace vn
