// Element-wise arithmetic, scaling, ordering and extremum kernels.
//
// All routines take raw arrays and signed 32-bit counts, return an
// AnalysisStatus and never throw. The count test (n < 1: -20003) comes first.
// Unless noted, the output may be the same block as the input.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

AnalysisStatus AddArrays(const double* x, const double* y, std::int32_t n, double* z);
AnalysisStatus SubArrays(const double* x, const double* y, std::int32_t n, double* z);
AnalysisStatus MulArrays(const double* x, const double* y, std::int32_t n, double* z);
// Stops at the first y[i] that is zero or not a number (-20060); the elements
// before it are already written.
AnalysisStatus DivArrays(const double* x, const double* y, std::int32_t n, double* z);
AnalysisStatus AbsArrayValues(const double* x, std::int32_t n, double* z);
AnalysisStatus NegArrayValues(const double* x, std::int32_t n, double* z);
// z[i] = x[i] * a + b
AnalysisStatus LinearEvaluate(const double* x, std::int32_t n, double a, double b, double* z);
// Ascending coefficients c[0..m-1]; powers built by repeated multiplication.
AnalysisStatus PolyEvaluate(const double* x, std::int32_t n, const double* c, std::int32_t m, double* z);
// z in [-1, 1]: offset = (max + min) / 2, scale = (max - min) / 2.
AnalysisStatus ScaleToUnit(const double* x, std::int32_t n, double* z, double* offset, double* scale);
// z = x / max|x|.
AnalysisStatus QuickScale(const double* x, std::int32_t n, double* z, double* scale);
AnalysisStatus ClipValues(const double* x, std::int32_t n, double upper, double lower, double* z);
AnalysisStatus CopyValues(const double* x, std::int32_t n, double* z);
// Population statistics (divisor n): z = (x - mean) / sdev.
AnalysisStatus NormalizeValues(const double* x, std::int32_t n, double* z, double* mean, double* sdev);
// z must not alias x.
AnalysisStatus ReverseValues(const double* x, std::int32_t n, double* z);
// Positive s moves elements toward higher indices; vacated places are 0.
// z must not alias x.
AnalysisStatus ShiftValues(const double* x, std::int32_t n, std::int32_t s, double* z);
// direction 0 ascending, anything else descending; NaN compares equal to all.
AnalysisStatus SortValues(const double* x, std::int32_t n, std::int32_t direction, double* z);
// x is rows-by-cols in row order; z receives cols-by-rows. z must not alias x.
AnalysisStatus TransposeMatrix(const double* x, std::int32_t rows, std::int32_t cols, double* z);
AnalysisStatus SumValues(const double* x, std::int32_t n, double* sum);
AnalysisStatus ProductValues(const double* x, std::int32_t n, double* prod);
AnalysisStatus ClearValues(double* x, std::int32_t n);
AnalysisStatus SetValues(double* x, std::int32_t n, double a);
// Largest (ties keep the first) and smallest element with 0-based indices.
AnalysisStatus MaxMinValues(const double* x, std::int32_t n, double* max, std::int32_t* imax,
                            double* min, std::int32_t* imin);
// Same rules over a rows-by-cols block walked in storage order.
AnalysisStatus MaxMinMatrix(const double* x, std::int32_t rows, std::int32_t cols, double* max,
                            std::int32_t* imax, std::int32_t* jmax, double* min, std::int32_t* imin,
                            std::int32_t* jmin);
// z = x[index .. index + length - 1]
AnalysisStatus SubsetValues(const double* x, std::int32_t n, std::int32_t index, std::int32_t length,
                            double* z);
// Largest / smallest element by the rules of the MaxArray and MinArray methods
// (a NaN is taken and then replaced by the next element).
AnalysisStatus LargestValue(const double* x, std::int32_t n, double* result);
AnalysisStatus SmallestValue(const double* x, std::int32_t n, double* result);

}  // namespace vn
