#include "analysis/complex/complex_ops.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <limits>
#include <vector>

namespace vn {
namespace {

using Cx = std::complex<double>;
using Unary = std::function<AnalysisStatus(double, double, double*, double*)>;

const double kPi = std::acos(-1.0);
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kSentinel = -12345.0;

// Fixed cases of the scalar kernels: exact answers, error codes, branch cuts.
struct ScalarCase {
    const char* name;
    std::function<AnalysisStatus(double*, double*)> run;
    AnalysisStatus status;
    double re, im, tol;
};

TEST(ComplexScalar, FixedCases) {
    const ScalarCase cases[] = {
        {"add", [](double* a, double* b) { return ComplexAdd(1, 2, 3, -5, a, b); }, kOk, 4, -3, 0},
        {"sub", [](double* a, double* b) { return ComplexSub(1, 2, 3, -5, a, b); }, kOk, -2, 7, 0},
        {"mul", [](double* a, double* b) { return ComplexMul(1, 2, 3, -5, a, b); }, kOk, 13, 1, 0},
        {"div", [](double* a, double* b) { return ComplexDiv(13, 1, 3, -5, a, b); }, kOk, 1, 2, 1e-15},
        {"div by 0", [](double* a, double* b) { return ComplexDiv(1, 0, 0, 0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"div by -0-0i", [](double* a, double* b) { return ComplexDiv(1, 0, -0.0, -0.0, a, b); },
         kErrDivideByZero, 0, 0, 0},
        {"recip", [](double* a, double* b) { return ComplexRecip(0, 2, a, b); }, kOk, 0, -0.5, 0},
        {"recip 0", [](double* a, double* b) { return ComplexRecip(0, -0.0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"recip underflow", [](double* a, double* b) { return ComplexRecip(1e-200, 0, a, b); },
         kErrDivideByZero, 0, 0, 0},
        {"sqrt -4+0i", [](double* a, double* b) { return ComplexSqrt(-4, 0.0, a, b); }, kOk, 0, 2, 1e-15},
        {"sqrt -4-0i", [](double* a, double* b) { return ComplexSqrt(-4, -0.0, a, b); }, kOk, 0, -2, 1e-15},
        {"sqrt 0", [](double* a, double* b) { return ComplexSqrt(0, 0, a, b); }, kOk, 0, 0, 0},
        {"sqrt 2i", [](double* a, double* b) { return ComplexSqrt(0, 2, a, b); }, kOk, 1, 1, 1e-15},
        {"ln -1", [](double* a, double* b) { return ComplexLn(-1, 0, a, b); }, kOk, 0, kPi, 0},
        {"ln -1-0i", [](double* a, double* b) { return ComplexLn(-1, -0.0, a, b); }, kOk, 0, -kPi, 0},
        {"ln 0", [](double* a, double* b) { return ComplexLn(0, 0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"ln underflow", [](double* a, double* b) { return ComplexLn(0, 1e-200, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"ln NaN", [](double* a, double* b) { return ComplexLn(kNaN, 1, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"log 10", [](double* a, double* b) { return ComplexLog10(10, 0, a, b); }, kOk, 1, 0, 0},
        // The imaginary part uses the decimal constant itself, bit for bit.
        {"log i", [](double* a, double* b) { return ComplexLog10(0, 1, a, b); }, kOk, 0,
         kPi / 2 * 0.434294481903252, 0},
        {"log 0", [](double* a, double* b) { return ComplexLog10(-0.0, 0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"exp i pi", [](double* a, double* b) { return ComplexExp(0, kPi, a, b); }, kOk, -1, 0, 1e-15},
        {"pow 0^0", [](double* a, double* b) { return ComplexPow(0, 0, 0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"pow 0^-0", [](double* a, double* b) { return ComplexPow(-0.0, 0, -0.0, a, b); }, kErrDivideByZero, 0, 0, 0},
        {"pow 0^-1", [](double* a, double* b) { return ComplexPow(0, 0, -1, a, b); }, kOk, 0, 0, 0},
        {"pow (-1)^0.5", [](double* a, double* b) { return ComplexPow(-1, 0, 0.5, a, b); }, kOk, 0, 1, 1e-15},
        {"pow (1+i)^2", [](double* a, double* b) { return ComplexPow(1, 1, 2, a, b); }, kOk, 0, 2, 1e-15},
        {"polar 0", [](double* a, double* b) { return RectToPolar(-0.0, -0.0, a, b); }, kOk, 0, 0, 0},
        {"polar -1", [](double* a, double* b) { return RectToPolar(-1, 0.0, a, b); }, kOk, 1, kPi, 0},
        {"polar -1-0i", [](double* a, double* b) { return RectToPolar(-1, -0.0, a, b); }, kOk, 1, -kPi, 0},
        {"polar 3+4i", [](double* a, double* b) { return RectToPolar(3, 4, a, b); }, kOk, 5, std::atan2(4, 3), 0},
        {"rect negative mag", [](double* a, double* b) { return PolarToRect(-2, kPi / 2, a, b); }, kOk, 0, -2,
         1e-15},
    };
    for (const ScalarCase& c : cases) {
        SCOPED_TRACE(c.name);
        double re = kSentinel, im = kSentinel;
        ASSERT_EQ(c.run(&re, &im), c.status);
        if (c.status != kOk) {
            EXPECT_EQ(re, kSentinel);  // outputs untouched on failure
            EXPECT_EQ(im, kSentinel);
            continue;
        }
        EXPECT_NEAR(re, c.re, c.tol);
        EXPECT_NEAR(im, c.im, c.tol);
        if (c.im == 0 && c.tol == 0) {
            EXPECT_FALSE(std::signbit(im));
        }
    }
}

// The scalar division tests the divisor's parts, so a divisor whose squared
// magnitude underflows divides by zero; the array form rejects it.
TEST(ComplexScalar, DivisionAsymmetry) {
    double re = 0, im = 0;
    ASSERT_EQ(ComplexDiv(1, 0, 1e-200, 0, &re, &im), kOk);
    EXPECT_FALSE(std::isfinite(re));

    const double xr[] = {4, 1, 7}, xi[] = {2, 0, 7}, yr[] = {2, 1e-200, 1}, yi[] = {0, 0, 0};
    double zr[] = {kSentinel, kSentinel, kSentinel}, zi[] = {kSentinel, kSentinel, kSentinel};
    EXPECT_EQ(ComplexDivArrays(xr, xi, yr, yi, 3, zr, zi), kErrDivideByZero);
    EXPECT_EQ(zr[0], 2);  // elements before the failing one are written
    EXPECT_EQ(zi[0], 1);
    EXPECT_EQ(zr[2], kSentinel);  // nothing after it

    const double nr[] = {kNaN}, ni[] = {0};
    EXPECT_EQ(ComplexDivArrays(xr, xi, nr, ni, 1, zr, zi), kErrDivideByZero);
    EXPECT_EQ(ComplexDiv(1, 0, kNaN, 0, &re, &im), kOk);  // scalar: NaN passes
}

// The transcendental kernels against the standard library's complex
// functions, over all four quadrants, both axes and both sides of the cut.
TEST(ComplexScalar, AgreesWithStandardLibrary) {
    const double parts[] = {-3.5, -1, -0.0, 0.0, 0.25, 2};
    struct Fn {
        const char* name;
        Unary kernel;
        std::function<Cx(Cx)> reference;
        bool atZero;  // defined at 0
    };
    const Fn fns[] = {
        {"sqrt", ComplexSqrt, [](Cx z) { return std::sqrt(z); }, true},
        {"ln", ComplexLn, [](Cx z) { return std::log(z); }, false},
        {"log10", ComplexLog10, [](Cx z) { return std::log10(z); }, false},
        {"exp", ComplexExp, [](Cx z) { return std::exp(z); }, true},
        {"recip", ComplexRecip, [](Cx z) { return 1.0 / z; }, false},
        {"pow 2.5", [](double r, double i, double* a, double* b) { return ComplexPow(r, i, 2.5, a, b); },
         [](Cx z) { return std::pow(z, 2.5); }, true},
        {"pow -1.5", [](double r, double i, double* a, double* b) { return ComplexPow(r, i, -1.5, a, b); },
         [](Cx z) { return std::pow(z, -1.5); }, false},
    };
    for (const Fn& f : fns)
        for (double xr : parts)
            for (double xi : parts) {
                if (xr == 0 && xi == 0 && !f.atZero) continue;
                SCOPED_TRACE(testing::Message() << f.name << "(" << xr << ", " << xi << ")");
                double re = 0, im = 0;
                ASSERT_EQ(f.kernel(xr, xi, &re, &im), kOk);
                const Cx want = f.reference(Cx(xr, xi));
                const double tol = 4e-15 * (1 + std::abs(want));
                EXPECT_NEAR(re, want.real(), tol);
                EXPECT_NEAR(im, want.imag(), tol);
                if (xr < 0 && xi == 0 && want.imag() != 0) {  // which side of the cut
                    EXPECT_EQ(std::signbit(im), std::signbit(want.imag()));
                }
            }
}

TEST(ComplexScalar, PolarRoundTrip) {
    const double pts[][2] = {{3, -4}, {-2, 0.5}, {-1e-3, -7}, {1e150, -1e150}};
    for (const auto& p : pts) {
        double mag = 0, phase = 0, x = 0, y = 0;
        RectToPolar(p[0], p[1], &mag, &phase);
        EXPECT_NEAR(mag, std::hypot(p[0], p[1]), 1e-15 * mag);
        PolarToRect(mag, phase, &x, &y);
        EXPECT_NEAR(x, p[0], 1e-14 * mag);
        EXPECT_NEAR(y, p[1], 1e-14 * mag);
    }
    double mag = 0, phase = 0;
    RectToPolar(1e200, 1e200, &mag, &phase);  // no scaling: y^2 + x^2 overflows
    EXPECT_TRUE(std::isinf(mag));
}

// Every array kernel is its scalar kernel applied per element, writes in
// place when an output is an input block, and rejects n < 1.
TEST(ComplexArrays, MatchScalarKernelsInPlace) {
    using Binary = std::function<AnalysisStatus(double, double, double, double, double*, double*)>;
    using BinaryArrays = std::function<AnalysisStatus(const double*, const double*, const double*,
                                                      const double*, std::int32_t, double*, double*)>;
    const auto polar = [](double x, double y, double, double, double* a, double* b) { return RectToPolar(x, y, a, b); };
    const auto rect = [](double x, double y, double, double, double* a, double* b) { return PolarToRect(x, y, a, b); };
    const auto polarArrays = [](const double* x, const double* y, const double*, const double*, std::int32_t n,
                                double* a, double* b) { return RectToPolarArrays(x, y, n, a, b); };
    const auto rectArrays = [](const double* x, const double* y, const double*, const double*, std::int32_t n,
                               double* a, double* b) { return PolarToRectArrays(x, y, n, a, b); };
    const auto linEv = [](double x, double y, double, double, double* a, double* b) {
        double pr, pi;
        ComplexMul(x, y, 0.5, -2, &pr, &pi);
        return ComplexAdd(pr, pi, 3, 0.25, a, b);
    };
    const auto linEvArrays = [](const double* x, const double* y, const double*, const double*, std::int32_t n,
                                double* a, double* b) { return ComplexLinearEvaluate(x, y, n, 0.5, -2, 3, 0.25, a, b); };
    const struct {
        const char* name;
        Binary scalar;
        BinaryArrays arrays;
    } kernels[] = {
        {"add", ComplexAdd, ComplexAddArrays}, {"sub", ComplexSub, ComplexSubArrays},
        {"mul", ComplexMul, ComplexMulArrays}, {"div", ComplexDiv, ComplexDivArrays},
        {"polar", polar, polarArrays},         {"rect", rect, rectArrays},
        {"linev", linEv, linEvArrays},
    };
    const std::vector<double> xr = {1.5, -2, 0, -0.0, 1e-3}, xi = {-0.0, 3, -1, 0, 7};
    const std::vector<double> yr = {2, -0.5, 4, 1, -3}, yi = {1, 0, -0.0, 6, 0.125};
    for (const auto& k : kernels) {
        SCOPED_TRACE(k.name);
        std::vector<double> zr = xr, zi = xi;  // outputs alias x
        ASSERT_EQ(k.arrays(zr.data(), zi.data(), yr.data(), yi.data(), 5, zr.data(), zi.data()), kOk);
        for (int i = 0; i < 5; ++i) {
            double re = 0, im = 0;
            k.scalar(xr[i], xi[i], yr[i], yi[i], &re, &im);
            EXPECT_EQ(zr[i], re) << i;  // bit for bit, signed zeros included
            EXPECT_EQ(std::signbit(zr[i]), std::signbit(re)) << i;
            EXPECT_EQ(zi[i], im) << i;
        }
        EXPECT_EQ(k.arrays(xr.data(), xi.data(), yr.data(), yi.data(), 0, zr.data(), zi.data()),
                  kErrSamplesBelowOne);
        EXPECT_EQ(k.arrays(xr.data(), xi.data(), yr.data(), yi.data(), -1, zr.data(), zi.data()),
                  kErrSamplesBelowOne);
    }
}

TEST(ComplexArrays, LinearEvaluateIdentity) {
    const double xr[] = {1.25, -0.0, 1e300}, xi[] = {-3, 0.0, -1e-300};
    double yr[3], yi[3];
    ASSERT_EQ(ComplexLinearEvaluate(xr, xi, 3, 1, 0, 0, 0, yr, yi), kOk);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(yr[i], xr[i]);
        EXPECT_EQ(yi[i], xi[i]);
    }
}

}  // namespace
}  // namespace vn
