// Complex arithmetic on numbers held as separate real and imaginary parts.
//
// A complex value is two doubles (re, im); a complex array is two blocks of n
// doubles. Every formula is evaluated in double precision in a fixed order of
// operations, so that results are reproducible to the last bit. Nothing is
// scaled to avoid overflow or underflow: infinities and NaNs pass through,
// and the only error tests are those listed with each routine.
//
// Scalar routines write their outputs only on success. Array routines run in
// increasing index order, never fail on the values except where noted, and
// accept output blocks that are the same as input blocks (each element is
// read completely before it is written).
//
// Phases are in radians, as returned by atan2: (-pi, pi], with -pi for a zero
// imaginary part of negative sign.
//
// Kernel behind each method of the VNComplex control:
//   CxAdd ComplexAdd         CxSub ComplexSub          CxMul ComplexMul
//   CxDiv ComplexDiv         CxRecip ComplexRecip      CxSqrt ComplexSqrt
//   CxLog ComplexLog10       CxLn ComplexLn            CxExp ComplexExp
//   CxPow ComplexPow         ToPolar RectToPolar       ToRect PolarToRect
//   CxAddArray ComplexAddArrays     CxSubArray ComplexSubArrays
//   CxMulArray ComplexMulArrays     CxDivArray ComplexDivArrays
//   ToPolarArray RectToPolarArrays  ToRectArray PolarToRectArrays
//   CxLinEvArray ComplexLinearEvaluate
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// z = x + y, z = x - y.
AnalysisStatus ComplexAdd(double xr, double xi, double yr, double yi, double* zr, double* zi);
AnalysisStatus ComplexSub(double xr, double xi, double yr, double yi, double* zr, double* zi);

// z = x * y: zr = yr*xr - yi*xi, zi = yr*xi + yi*xr.
AnalysisStatus ComplexMul(double xr, double xi, double yr, double yi, double* zr, double* zi);

// z = x / y by the textbook formula over d = yr^2 + yi^2.
// -20060 when both parts of y are zero (of either sign). The parts are tested,
// not d: a divisor whose squared magnitude underflows (|y| below about 1e-154)
// is accepted and gives infinities or NaNs.
AnalysisStatus ComplexDiv(double xr, double xi, double yr, double yi, double* zr, double* zi);

// y = 1 / x. -20060 when both parts of x are zero or when xi^2 + xr^2 is zero.
AnalysisStatus ComplexRecip(double xr, double xi, double* yr, double* yi);

// Principal square root through polar form: 0 for x = 0. The branch cut is
// the negative real axis; the sign of yi follows the sign of xi there,
// including a signed zero (sqrt(-4 + 0i) = 2i, sqrt(-4 - 0i) = -2i, each with
// a real part near 1e-16 from cos(pi/2)). Also 0 when |x|^2 underflows.
AnalysisStatus ComplexSqrt(double xr, double xi, double* yr, double* yi);

// Natural logarithm: yr = ln(|x|^2) / 2, yi = atan2(xi, xr).
// -20060 when |x|^2 is zero (including underflow) or NaN.
AnalysisStatus ComplexLn(double xr, double xi, double* yr, double* yi);

// Base-10 logarithm: yr = log10(|x|^2) / 2, yi = atan2(xi, xr) times the
// decimal constant 0.434294481903252 (which is not the double nearest to
// 1/ln 10; the imaginary part therefore differs from ln(x)/ln(10) in the last
// digits). Same error test as ComplexLn.
AnalysisStatus ComplexLog10(double xr, double xi, double* yr, double* yi);

// y = e^x = e^xr (cos xi + i sin xi). Never fails.
AnalysisStatus ComplexExp(double xr, double xi, double* yr, double* yi);

// y = x^a for a real exponent a, principal branch:
// |y| = (|x|^2)^(a/2), arg y = a * atan2(xi, xr).
// For x = 0: -20060 when a is zero (0^0 is an error), otherwise 0 + 0i, also
// for negative a.
AnalysisStatus ComplexPow(double xr, double xi, double a, double* yr, double* yi);

// Rectangular (x, y) to polar (mag, phase). x = y = 0 (either sign) gives
// (0, 0); otherwise mag = sqrt(y^2 + x^2) and phase = atan2(y, x).
AnalysisStatus RectToPolar(double x, double y, double* mag, double* phase);

// Polar to rectangular: x = cos(phase) * mag, y = sin(phase) * mag. A
// negative magnitude is used as it is.
AnalysisStatus PolarToRect(double mag, double phase, double* x, double* y);

// Element-wise forms of the above over n elements; n < 1: -20003.
AnalysisStatus ComplexAddArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi);
AnalysisStatus ComplexSubArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi);
AnalysisStatus ComplexMulArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi);
// Unlike ComplexDiv this tests d = yr^2 + yi^2 itself: the first element whose
// d is zero (also by underflow) or NaN stops the loop with -20060, leaving the
// elements before it written.
AnalysisStatus ComplexDivArrays(const double* xr, const double* xi, const double* yr, const double* yi,
                                std::int32_t n, double* zr, double* zi);
AnalysisStatus RectToPolarArrays(const double* x, const double* y, std::int32_t n, double* mag,
                                 double* phase);
AnalysisStatus PolarToRectArrays(const double* mag, const double* phase, std::int32_t n, double* x,
                                 double* y);

// y = a * x + b element-wise for complex scalars a and b: first the product
// by the ComplexMul formula with a in the place of y (ar*xr - ai*xi,
// ar*xi + ai*xr), then the sum with b. n < 1: -20003.
AnalysisStatus ComplexLinearEvaluate(const double* xr, const double* xi, std::int32_t n, double ar,
                                     double ai, double br, double bi, double* yr, double* yi);

}  // namespace vn
