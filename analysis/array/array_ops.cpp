#include "analysis/array/array_ops.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace vn {

namespace {

// Comparators for qsort. A NaN is neither smaller nor larger than anything,
// so it compares equal to every element (the sort is then free to leave it
// anywhere, exactly as the library quicksort does).
int CompareAscending(const void* a, const void* b) {
    const double x = *static_cast<const double*>(a);
    const double y = *static_cast<const double*>(b);
    if (x < y) return -1;
    if (x > y) return 1;
    return 0;
}

int CompareDescending(const void* a, const void* b) {
    const double x = *static_cast<const double*>(a);
    const double y = *static_cast<const double*>(b);
    if (x > y) return -1;
    if (x < y) return 1;
    return 0;
}

template <typename Op>
AnalysisStatus Binary(const double* x, const double* y, std::int32_t n, double* z, Op op) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) z[i] = op(x[i], y[i]);
    return kOk;
}

template <typename Op>
AnalysisStatus Unary(const double* x, std::int32_t n, double* z, Op op) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) z[i] = op(x[i]);
    return kOk;
}

}  // namespace

AnalysisStatus AddArrays(const double* x, const double* y, std::int32_t n, double* z) {
    return Binary(x, y, n, z, [](double a, double b) { return a + b; });
}

AnalysisStatus SubArrays(const double* x, const double* y, std::int32_t n, double* z) {
    return Binary(x, y, n, z, [](double a, double b) { return a - b; });
}

AnalysisStatus MulArrays(const double* x, const double* y, std::int32_t n, double* z) {
    return Binary(x, y, n, z, [](double a, double b) { return a * b; });
}

AnalysisStatus DivArrays(const double* x, const double* y, std::int32_t n, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) {
        // Zero and NaN both fail "greater or less than 0".
        if (!(y[i] > 0.0) && !(y[i] < 0.0)) return kErrDivideByZero;
        z[i] = x[i] / y[i];
    }
    return kOk;
}

AnalysisStatus AbsArrayValues(const double* x, std::int32_t n, double* z) {
    return Unary(x, n, z, [](double a) { return std::fabs(a); });
}

AnalysisStatus NegArrayValues(const double* x, std::int32_t n, double* z) {
    return Unary(x, n, z, [](double a) { return -a; });
}

AnalysisStatus LinearEvaluate(const double* x, std::int32_t n, double a, double b, double* z) {
    return Unary(x, n, z, [a, b](double v) { return v * a + b; });
}

AnalysisStatus PolyEvaluate(const double* x, std::int32_t n, const double* c, std::int32_t m, double* z) {
    if (n < 1 || m < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) {
        // Powers by repeated multiplication (not Horner): this order of
        // operations decides the last bits and is kept deliberately.
        const double xi = x[i];
        double y = c[0];
        double p = 1.0;
        for (std::int32_t k = 1; k < m; ++k) {
            p = p * xi;
            y = y + p * c[k];
        }
        z[i] = y;
    }
    return kOk;
}

AnalysisStatus ScaleToUnit(const double* x, std::int32_t n, double* z, double* offset, double* scale) {
    if (n < 1) return kErrSamplesBelowOne;
    double hi, lo;
    std::int32_t ihi, ilo;
    MaxMinValues(x, n, &hi, &ihi, &lo, &ilo);
    const double s = (hi - lo) * 0.5;
    const double off = s + lo;
    const double r = 1.0 / s;  // constant input: division by zero, results NaN
    for (std::int32_t i = 0; i < n; ++i) z[i] = (x[i] - off) * r;
    *offset = off;
    *scale = s;
    return kOk;
}

AnalysisStatus QuickScale(const double* x, std::int32_t n, double* z, double* scale) {
    if (n < 1) return kErrSamplesBelowOne;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        const double a = std::fabs(x[i]);
        if (a > s) s = a;
    }
    const double r = 1.0 / s;
    for (std::int32_t i = 0; i < n; ++i) z[i] = x[i] * r;
    *scale = s;
    return kOk;
}

AnalysisStatus ClipValues(const double* x, std::int32_t n, double upper, double lower, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    if (lower > upper) return kErrUpperBelowLower;
    for (std::int32_t i = 0; i < n; ++i) {
        const double v = x[i];
        if (v > upper)
            z[i] = upper;
        else if (v >= lower)
            z[i] = v;
        else
            z[i] = lower;  // also NaN
    }
    return kOk;
}

AnalysisStatus CopyValues(const double* x, std::int32_t n, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    if (x != z) std::memmove(z, x, sizeof(double) * static_cast<std::size_t>(n));
    return kOk;
}

AnalysisStatus NormalizeValues(const double* x, std::int32_t n, double* z, double* mean, double* sdev) {
    if (n < 1) return kErrSamplesBelowOne;
    double sum = 0.0, sumsq = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        sum += x[i];
        sumsq += x[i] * x[i];
    }
    const double m = sum / n;
    // One-pass population deviation; the absolute value absorbs a slightly
    // negative difference left by rounding.
    const double s = std::sqrt(std::fabs(sumsq / n - m * m));
    const double r = 1.0 / s;
    for (std::int32_t i = 0; i < n; ++i) z[i] = (x[i] - m) * r;
    *mean = m;
    *sdev = s;
    return kOk;
}

AnalysisStatus ReverseValues(const double* x, std::int32_t n, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) z[i] = x[n - 1 - i];
    return kOk;
}

AnalysisStatus ShiftValues(const double* x, std::int32_t n, std::int32_t s, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    // Compare in 64 bits: -INT32_MIN does not fit in 32.
    const std::int64_t s64 = s;
    if ((s64 > -s64 ? s64 : -s64) >= n) return kErrShiftRange;
    if (s >= 0) {
        for (std::int32_t i = 0; i < s; ++i) z[i] = 0.0;
        for (std::int32_t i = s; i < n; ++i) z[i] = x[i - s];
    } else {
        for (std::int32_t i = 0; i < n + s; ++i) z[i] = x[i - s];
        for (std::int32_t i = n + s; i < n; ++i) z[i] = 0.0;
    }
    return kOk;
}

AnalysisStatus SortValues(const double* x, std::int32_t n, std::int32_t direction, double* z) {
    if (n < 1) return kErrSamplesBelowOne;
    if (x != z) std::memcpy(z, x, sizeof(double) * static_cast<std::size_t>(n));
    if (n >= 2)
        std::qsort(z, static_cast<std::size_t>(n), sizeof(double),
                   direction == 0 ? CompareAscending : CompareDescending);
    return kOk;
}

AnalysisStatus TransposeMatrix(const double* x, std::int32_t rows, std::int32_t cols, double* z) {
    if (rows < 1 || cols < 1) return kErrSamplesBelowOne;
    // Blocked so that both the reads and the writes stay in cache for large
    // matrices.
    constexpr std::int32_t kBlock = 32;
    for (std::int32_t i0 = 0; i0 < rows; i0 += kBlock) {
        const std::int32_t i1 = i0 + kBlock < rows ? i0 + kBlock : rows;
        for (std::int32_t j0 = 0; j0 < cols; j0 += kBlock) {
            const std::int32_t j1 = j0 + kBlock < cols ? j0 + kBlock : cols;
            for (std::int32_t i = i0; i < i1; ++i)
                for (std::int32_t j = j0; j < j1; ++j)
                    z[static_cast<std::size_t>(j) * rows + i] = x[static_cast<std::size_t>(i) * cols + j];
        }
    }
    return kOk;
}

AnalysisStatus SumValues(const double* x, std::int32_t n, double* sum) {
    if (n < 1) return kErrSamplesBelowOne;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) s += x[i];
    *sum = s;
    return kOk;
}

AnalysisStatus ProductValues(const double* x, std::int32_t n, double* prod) {
    if (n < 1) return kErrSamplesBelowOne;
    double p = 1.0;
    for (std::int32_t i = 0; i < n; ++i) p *= x[i];
    *prod = p;
    return kOk;
}

AnalysisStatus ClearValues(double* x, std::int32_t n) {
    return SetValues(x, n, 0.0);
}

AnalysisStatus SetValues(double* x, std::int32_t n, double a) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t i = 0; i < n; ++i) x[i] = a;
    return kOk;
}

AnalysisStatus SubsetValues(const double* x, std::int32_t n, std::int32_t index, std::int32_t length,
                            double* z) {
    if (n < 1 || index < 0 || length < 1) return kErrSamplesBelowOne;
    // index + length == n is accepted (the last element may be included).
    if (static_cast<std::int64_t>(index) + length > n) return kErrIndexLength;
    std::memmove(z, x + index, sizeof(double) * static_cast<std::size_t>(length));
    return kOk;
}

}  // namespace vn
