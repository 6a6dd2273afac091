#include "analysis/complex/complex_ops.h"

#include <cmath>

namespace vn {

namespace {

// Decimal literal kept as written: it is not the double nearest to 1/ln 10,
// and results must match it bit for bit.
constexpr double kLog10OfE = 0.434294481903252;

// Each pair of formulas below reads all four inputs into locals before the
// caller's outputs are written, so outputs may alias inputs.

inline void Mul(double xr, double xi, double yr, double yi, double& zr, double& zi) {
    const double r = yr * xr - yi * xi;
    const double i = yr * xi + yi * xr;
    zr = r;
    zi = i;
}

inline void DivByNonZero(double xr, double xi, double yr, double yi, double d, double& zr, double& zi) {
    const double r = (yi * xi + yr * xr) / d;
    const double i = (yr * xi - yi * xr) / d;
    zr = r;
    zi = i;
}

inline void ToPolarValue(double x, double y, double& mag, double& phase) {
    if (x == 0.0 && y == 0.0) {
        mag = 0.0;
        phase = 0.0;
        return;
    }
    const double m = std::sqrt(y * y + x * x);
    const double p = std::atan2(y, x);
    mag = m;
    phase = p;
}

inline void ToRectValue(double mag, double phase, double& x, double& y) {
    const double a = std::cos(phase) * mag;
    const double b = std::sin(phase) * mag;
    x = a;
    y = b;
}

template <typename Op>
AnalysisStatus Elementwise(const double* xr, const double* xi, const double* yr, const double* yi,
                           std::int32_t n, double* zr, double* zi, Op op) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t k = 0; k < n; ++k) op(xr[k], xi[k], yr[k], yi[k], zr[k], zi[k]);
    return kOk;
}

}  // namespace

AnalysisStatus ComplexAdd(double xr, double xi, double yr, double yi, double* zr, double* zi) {
    *zr = xr + yr;
    *zi = xi + yi;
    return kOk;
}

AnalysisStatus ComplexSub(double xr, double xi, double yr, double yi, double* zr, double* zi) {
    *zr = xr - yr;
    *zi = xi - yi;
    return kOk;
}

AnalysisStatus ComplexMul(double xr, double xi, double yr, double yi, double* zr, double* zi) {
    Mul(xr, xi, yr, yi, *zr, *zi);
    return kOk;
}

AnalysisStatus ComplexDiv(double xr, double xi, double yr, double yi, double* zr, double* zi) {
    if (yr == 0.0 && yi == 0.0) return kErrDivideByZero;
    const double d = yr * yr + yi * yi;
    DivByNonZero(xr, xi, yr, yi, d, *zr, *zi);
    return kOk;
}

AnalysisStatus ComplexRecip(double xr, double xi, double* yr, double* yi) {
    if (xr == 0.0 && xi == 0.0) return kErrDivideByZero;
    const double d = xi * xi + xr * xr;
    if (d == 0.0) return kErrDivideByZero;
    *yr = xr / d;
    *yi = -(xi / d);
    return kOk;
}

AnalysisStatus ComplexSqrt(double xr, double xi, double* yr, double* yi) {
    const double r2 = xi * xi + xr * xr;
    if (r2 == 0.0) {
        *yr = 0.0;
        *yi = 0.0;
        return kOk;
    }
    const double m = std::sqrt(std::sqrt(r2));
    const double theta = std::atan2(xi, xr) * 0.5;
    *yr = std::cos(theta) * m;
    *yi = m * std::sin(theta);
    return kOk;
}

AnalysisStatus ComplexLn(double xr, double xi, double* yr, double* yi) {
    const double r2 = xi * xi + xr * xr;
    if (r2 == 0.0 || std::isnan(r2)) return kErrDivideByZero;
    *yr = std::log(r2) * 0.5;
    *yi = std::atan2(xi, xr);
    return kOk;
}

AnalysisStatus ComplexLog10(double xr, double xi, double* yr, double* yi) {
    const double r2 = xi * xi + xr * xr;
    if (r2 == 0.0 || std::isnan(r2)) return kErrDivideByZero;
    *yr = std::log10(r2) * 0.5;
    *yi = std::atan2(xi, xr) * kLog10OfE;
    return kOk;
}

AnalysisStatus ComplexExp(double xr, double xi, double* yr, double* yi) {
    const double e = std::exp(xr);
    *yr = std::cos(xi) * e;
    *yi = e * std::sin(xi);
    return kOk;
}

AnalysisStatus ComplexPow(double xr, double xi, double a, double* yr, double* yi) {
    const double r2 = xr * xr + xi * xi;
    if (r2 == 0.0) {
        if (a == 0.0) return kErrDivideByZero;
        *yr = 0.0;
        *yi = 0.0;
        return kOk;
    }
    // The power of the squared magnitude saves one square root.
    const double m = std::pow(r2, a * 0.5);
    const double theta = std::atan2(xi, xr) * a;
    *yr = std::cos(theta) * m;
    *yi = m * std::sin(theta);
    return kOk;
}

AnalysisStatus RectToPolar(double x, double y, double* mag, double* phase) {
    ToPolarValue(x, y, *mag, *phase);
    return kOk;
}

AnalysisStatus PolarToRect(double mag, double phase, double* x, double* y) {
    ToRectValue(mag, phase, *x, *y);
    return kOk;
}

AnalysisStatus ComplexAddArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi) {
    return Elementwise(xr, xi, yr, yi, n, zr, zi,
                       [](double ar, double ai, double br, double bi, double& cr, double& ci) {
                           cr = ar + br;
                           ci = ai + bi;
                       });
}

AnalysisStatus ComplexSubArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi) {
    return Elementwise(xr, xi, yr, yi, n, zr, zi,
                       [](double ar, double ai, double br, double bi, double& cr, double& ci) {
                           cr = ar - br;
                           ci = ai - bi;
                       });
}

AnalysisStatus ComplexMulArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi) {
    return Elementwise(xr, xi, yr, yi, n, zr, zi, Mul);
}

AnalysisStatus ComplexDivArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t k = 0; k < n; ++k) {
        const double br = yr[k];
        const double bi = yi[k];
        const double d = br * br + bi * bi;
        if (d == 0.0 || std::isnan(d)) return kErrDivideByZero;
        DivByNonZero(xr[k], xi[k], br, bi, d, zr[k], zi[k]);
    }
    return kOk;
}

AnalysisStatus RectToPolarArrays(const double* x, const double* y, std::int32_t n, double* mag,
                                 double* phase) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t k = 0; k < n; ++k) ToPolarValue(x[k], y[k], mag[k], phase[k]);
    return kOk;
}

AnalysisStatus PolarToRectArrays(const double* mag, const double* phase, std::int32_t n, double* x,
                                 double* y) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t k = 0; k < n; ++k) ToRectValue(mag[k], phase[k], x[k], y[k]);
    return kOk;
}

AnalysisStatus ComplexLinearEvaluate(const double* xr, const double* xi, std::int32_t n, double ar,
                                     double ai, double br, double bi, double* yr, double* yi) {
    if (n < 1) return kErrSamplesBelowOne;
    for (std::int32_t k = 0; k < n; ++k) {
        const double pr = ar * xr[k] - ai * xi[k];
        const double pi = ar * xi[k] + ai * xr[k];
        yr[k] = pr + br;
        yi[k] = pi + bi;
    }
    return kOk;
}

}  // namespace vn
