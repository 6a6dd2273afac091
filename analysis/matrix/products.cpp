#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

namespace vn {

using matrix_detail::CombineRows;
using matrix_detail::Index;

namespace {

// Columns of the product computed per sweep over the rows of x, so that the
// k-by-kColumnBlock slice of y stays in cache while it is reused.
constexpr Index kColumnBlock = 128;

}  // namespace

AnalysisStatus DotProduct(const double* x, const double* y, std::int32_t n, double* result) {
    if (n < 1) return kErrSamplesBelowOne;
    double s = 0.0;
    for (std::int32_t i = 0; i < n; ++i) s += x[i] * y[i];
    *result = s;
    return kOk;
}

AnalysisStatus MatrixMul(const double* x, const double* y, std::int32_t m, std::int32_t k,
                         std::int32_t n, double* z) {
    if (m < 1 || n < 1 || k < 1) return kErrSamplesBelowOne;
    const Index rows = m, inner = k, cols = n;
    // Each z[i][j] starts at 0.0 and adds x[i][0]*y[0][j], x[i][1]*y[1][j], ...
    // in that order; the blocking only changes which entries are in flight.
    for (Index c0 = 0; c0 < cols; c0 += kColumnBlock) {
        const Index w = cols - c0 < kColumnBlock ? cols - c0 : kColumnBlock;
        for (Index i = 0; i < rows; ++i) {
            double* zi = z + i * cols + c0;
            for (Index j = 0; j < w; ++j) zi[j] = 0.0;
            CombineRows<true>(zi, w, x + i * inner, inner, y + c0, cols);
        }
    }
    return kOk;
}

AnalysisStatus OuterProduct(const double* x, std::int32_t m, const double* y, std::int32_t n,
                            double* z) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    for (Index i = 0; i < m; ++i) {
        const double xi = x[i];
        double* zi = z + i * n;
        for (Index j = 0; j < n; ++j) zi[j] = xi * y[j];
    }
    return kOk;
}

AnalysisStatus Trace(const double* a, std::int32_t n, double* result) {
    if (n < 1) return kErrSamplesBelowOne;
    double s = 0.0;
    for (Index i = 0; i < n; ++i) s += a[i * n + i];
    *result = s;
    return kOk;
}

}  // namespace vn
