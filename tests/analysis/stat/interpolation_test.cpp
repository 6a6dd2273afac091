#include "analysis/stat/interpolation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace vn {
namespace {

using Fn = std::function<double(double)>;
using Kernel = AnalysisStatus (*)(const double*, const double*, std::int32_t, double, double*, double*);

std::vector<double> Apply(const std::vector<double>& x, const Fn& f) {
    std::vector<double> y;
    for (double v : x) y.push_back(f(v));
    return y;
}

// A degree n-1 polynomial (or diagonal rational function) through n samples of
// a function of that class reproduces it everywhere, nodes in any order. The
// 1e-10 offset of the rational scheme perturbs its results in proportion,
// up to about 1e-7 when extrapolating.
TEST(Interpolation, NevilleAndBulirschStoerReproduceTheirClass) {
    struct Row { const char* name; Kernel kernel; std::vector<double> x; Fn f; double tol; };
    const Row rows[] = {
        {"poly cubic", PolyInterp, {3, -1, 0.5, 2, -2.5}, [](double t) { return ((2 * t - 1) * t + 3) * t - 5; }, 1e-11},
        {"rat 1/1", RatInterp, {-1, 0.5, 4}, [](double t) { return (t + 1) / (t + 3); }, 5e-8},
        {"rat 2/2", RatInterp, {0, 3, 1, 5, 2}, [](double t) { return (t * t + 1) / (t * t + 2 * t + 3); }, 5e-8},
        {"rat 1/x", RatInterp, {1, 2, 4}, [](double t) { return 1 / t; }, 1e-9},
    };
    for (const Row& r : rows)
        for (double xv : {-2.9, 0.25, 1.7, 3.0, 4.6}) {
            const std::vector<double> y = Apply(r.x, r.f);
            double value = 0, err = 0;
            ASSERT_EQ(r.kernel(r.x.data(), y.data(), (std::int32_t)y.size(), xv, &value, &err), kOk) << r.name << xv;
            EXPECT_NEAR(value, r.f(xv), r.tol * (1 + std::fabs(r.f(xv)))) << r.name << " at " << xv;
            if (r.kernel == PolyInterp && r.x.size() > 3) {
                EXPECT_NEAR(err, 0.0, 1e-9) << r.name << " at " << xv;
            }
        }
}

TEST(Interpolation, ErrorEstimatesAndSinglePoints) {
    const double x[] = {0, 1, 2}, y[] = {0, 1, 4};
    double v = 0, e = 0;
    // The last correction is the step from the line through the two nearest
    // points (7 at x = 3) to the parabola (9).
    ASSERT_EQ(PolyInterp(x, y, 3, 3.0, &v, &e), kOk);
    EXPECT_DOUBLE_EQ(v, 9.0);
    EXPECT_DOUBLE_EQ(e, 2.0);
    // Of two equally close nodes the first starts the tableau, so the error is
    // measured from y[0]: line 1 + x, and 3 / (3 - x) through (0, 1), (2, 3).
    const double xt[] = {0, 2}, yt[] = {1, 3};
    ASSERT_EQ(PolyInterp(xt, yt, 2, 1.0, &v, &e), kOk);
    EXPECT_EQ(v, 2.0);
    EXPECT_EQ(e, 1.0);
    ASSERT_EQ(RatInterp(xt, yt, 2, 1.0, &v, &e), kOk);
    EXPECT_NEAR(v, 1.5, 1e-9);
    EXPECT_NEAR(e, 0.5, 1e-9);
    // x^4 on 0..4: starting from node 2 the path takes the left neighbour
    // first, so the last step is from the cubic through 0..3, and the
    // correction is x^4 minus that cubic: x (x-1) (x-2) (x-3).
    const double x5[] = {0, 1, 2, 3, 4}, y5[] = {0, 1, 16, 81, 256};
    for (double xv : {1.9, 2.1}) {
        ASSERT_EQ(PolyInterp(x5, y5, 5, xv, &v, &e), kOk);
        EXPECT_NEAR(v, std::pow(xv, 4), 1e-12);
        EXPECT_NEAR(e, xv * (xv - 1) * (xv - 2) * (xv - 3), 1e-12) << xv;
    }
    for (Kernel k : {PolyInterp, RatInterp}) {
        ASSERT_EQ(k(x + 2, y + 2, 1, -0.5, &v, &e), kOk);
        EXPECT_EQ(v, 4.0);
        EXPECT_EQ(e, 2.5);
    }
    // An exact hit returns the first matching ordinate with no error.
    const double xd[] = {0, 1, 1}, yd[] = {5, 6, 7};
    ASSERT_EQ(RatInterp(xd, yd, 3, 1.0, &v, &e), kOk);
    EXPECT_EQ(v, 6.0);
    EXPECT_EQ(e, 0.0);
}

TEST(Interpolation, StatusChecks) {
    const double x3[] = {0, 1, 0}, xa[] = {1, 1, 2}, y[] = {1, 2, 3}, y2[] = {0, 0, 0};
    // c / (x - 1) through (0, 1) and (2, -1), with the 1e-10 offset that the
    // first quotient adds to y[0]: the denominator vanishes exactly at x = 1.
    const double xp[] = {0, 2}, yp[] = {1, -(1 + 1e-10)}, xz[] = {0, 0, 1}, xr[] = {0, 1, 1};
    double v, e, out[3];
    struct Row { const char* name; AnalysisStatus got, expected; };
    const Row rows[] = {
        {"poly n=0", PolyInterp(x3, y, 0, 0.5, &v, &e), kErrSamplesBelowOne},
        {"poly repeated x at distance 2", PolyInterp(x3, y, 3, 0.5, &v, &e), kErrXNotDistinct},
        {"poly repeated neighbours", PolyInterp(xa, y, 3, 0.5, &v, &e), kErrXNotDistinct},
        {"rat n=0", RatInterp(x3, y, 0, 0.5, &v, &e), kErrSamplesBelowOne},
        {"rat pole", RatInterp(xp, yp, 2, 1.0, &v, &e), kErrPole},
        {"spline n=0", Spline(x3, y, 0, 0, 0, out), kErrSamplesBelowOne},
        {"spline repeated neighbours", Spline(xa, y, 3, 1e30, 1e30, out), kErrXNotDistinct},
        {"spline x[i-1] = x[i+1]", Spline(x3, y, 3, 1e30, 1e30, out), kErrXNotDistinct},
        {"spinterp n=0", SpInterp(x3, y, y2, 0, 0.5, &v), kErrSamplesBelowOne},
        {"spinterp one point", SpInterp(x3, y, y2, 1, 0.0, &v), kErrXNotDistinct},
        {"spinterp zero-width bracket", SpInterp(xz, y, y2, 3, -1.0, &v), kErrXNotDistinct},
        {"spinterp wide bracket ok", SpInterp(xz, y, y2, 3, 0.5, &v), kOk},
        {"spinterp node goes to upper bracket", SpInterp(xa, y, y2, 3, 1.0, &v), kOk},
        {"spinterp upper bracket zero-width", SpInterp(xr, y, y2, 3, 1.0, &v), kErrXNotDistinct},
    };
    for (const Row& r : rows) EXPECT_EQ(r.got, r.expected) << r.name;
    out[0] = 7;
    EXPECT_EQ(Spline(x3, y, 1, 0.5, 0.5, out), kOk);  // a lone point has no curvature
    EXPECT_EQ(out[0], 0.0);
}

// A natural spline reproduces a line, a clamped spline with the true end
// slopes reproduces a cubic (second derivatives included), both also when
// extrapolating with the end intervals.
TEST(Interpolation, SplineReproducesLinesAndCubics) {
    const double natural = 1e30;
    struct Row { const char* name; std::vector<double> x; Fn f, df, d2f; bool clamped; };
    const Row rows[] = {
        {"line natural", {-2, -0.5, 0, 1.5, 4}, [](double t) { return 3 * t - 1; }, [](double) { return 3.0; },
         [](double) { return 0.0; }, false},
        {"cubic clamped", {-2, -0.5, 0, 1.5, 4}, [](double t) { return ((t - 2) * t + 1) * t + 1; },
         [](double t) { return (3 * t - 4) * t + 1; }, [](double t) { return 6 * t - 4; }, true},
        {"cubic clamped two points", {0.5, 2}, [](double t) { return ((t - 2) * t + 1) * t + 1; },
         [](double t) { return (3 * t - 4) * t + 1; }, [](double t) { return 6 * t - 4; }, true},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const auto n = (std::int32_t)r.x.size();
        const std::vector<double> y = Apply(r.x, r.f);
        std::vector<double> y2(n);
        const double b1 = r.clamped ? r.df(r.x.front()) : natural, b2 = r.clamped ? r.df(r.x.back()) : natural;
        ASSERT_EQ(Spline(r.x.data(), y.data(), n, b1, b2, y2.data()), kOk);
        for (std::int32_t i = 0; i < n; ++i) EXPECT_NEAR(y2[i], r.d2f(r.x[i]), 1e-12) << i;
        for (double xv : {-3.0, -1.0, -0.5, 0.7, 1.9, 4.0, 5.5}) {
            double v = 0;
            ASSERT_EQ(SpInterp(r.x.data(), y.data(), y2.data(), n, xv, &v), kOk);
            EXPECT_NEAR(v, r.f(xv), 1e-12 * (1 + std::fabs(r.f(xv)))) << xv;
        }
    }
}

TEST(Interpolation, SplineEndSentinel) {
    // Natural spline on three equally spaced points: M1 = 3 (y0 - 2 y1 + y2) / (2 h^2).
    const double x[] = {1, 1.5, 2}, y[] = {2, -1, 3};
    double y2[3];
    ASSERT_EQ(Spline(x, y, 3, std::nextafter(9.9e29, 1e30), 1e30, y2), kOk);
    EXPECT_EQ(y2[0], 0.0);
    EXPECT_EQ(y2[2], 0.0);
    EXPECT_NEAR(y2[1], 3 * (2 + 2 + 3) / (2 * 0.25), 1e-12);
    ASSERT_EQ(Spline(x, y, 3, 9.9e29, 1e30, y2), kOk);  // the boundary itself is a slope
    EXPECT_GT(std::fabs(y2[0]), 1e29);
    EXPECT_EQ(y2[2], 0.0);
}

}  // namespace
}  // namespace vn
