// Descriptive statistics over one array of samples.
//
// Population statistics throughout (divisor n), one-pass formulas, and every
// sum starts from 0.0 and adds the terms in index order. No kernel fails on
// values: infinities and NaNs flow through the arithmetic. Outputs are written
// only on success.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// mean = sum(x) / n.
AnalysisStatus Mean(const double* x, std::int32_t n, double* mean);

// Population standard deviation sqrt(|S2/n - mean^2|). The absolute value
// keeps cancellation from ever producing the root of a negative number.
AnalysisStatus StdDev(const double* x, std::int32_t n, double* mean, double* sdev);

// Population variance S2/n - mean^2, left as computed: a constant array of
// large values may give a tiny negative variance.
AnalysisStatus Variance(const double* x, std::int32_t n, double* mean, double* variance);

// Root mean square sqrt(sum(x^2) / n).
AnalysisStatus RMS(const double* x, std::int32_t n, double* rms);

// Central moment of integer order >= 1: sum((x - mean)^order) / n, the power
// formed by repeated multiplication. Checks: n < 1 (-20003), then
// order < 1 (-20021). Time is bounded whatever the order: up to order 2048
// (and beyond it for every |x - mean| outside (1/2, 2), or equal to 1) the
// powers are the step-by-step products bit for bit; other powers of a higher
// order are finished by binary powering and may differ in the last bits.
AnalysisStatus Moment(const double* x, std::int32_t n, std::int32_t order, double* moment);

// Median of a sorted copy (x is not modified): the middle element for odd n,
// the mean of the two middle elements for even n. Scratch: n doubles.
AnalysisStatus Median(const double* x, std::int32_t n, double* median);

// Histogram over [base, top] split into `intervals` bins of equal width w.
// Bin i holds the samples in [base + i*w, base + (i+1)*w); the last bin also
// takes samples equal to top; samples outside [base, top] and NaNs are not
// counted. centres[i] is the middle of bin i, accumulated by repeated
// addition of w. Checks: top <= base (-20101, before any count test), then
// n < 1 or intervals < 1 (-20003).
AnalysisStatus Histogram(const double* x, std::int32_t n, double base, double top, std::int32_t intervals,
                         std::int32_t* counts, double* centres);

// Centre of the fullest histogram bin; ties go to the lowest bin, and with no
// sample in range the result is the centre of bin 0. Checks: intervals < 1
// (-20003) first, then those of Histogram. Scratch: the counts and centres.
AnalysisStatus Mode(const double* x, std::int32_t n, double base, double top, std::int32_t intervals,
                    double* mode);

// Mean squared difference over the first min(nx, ny) pairs.
AnalysisStatus MeanSquaredError(const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                                double* mse);

}  // namespace vn
