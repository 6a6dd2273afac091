#include "analysis/stat/distributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

namespace vn {
namespace {

using L = long double;
const double kPi = 3.14159265358979323846;

L NormalCdfRef(L x) { return 0.5L * std::erfc(-x / std::sqrt(2.0L)); }

L NormalQuantileRef(L p) {
    L lo = -40, hi = 40;
    for (int i = 0; i < 200; ++i) (NormalCdfRef((lo + hi) / 2) < p ? lo : hi) = (lo + hi) / 2;
    return lo;
}

// Regularised incomplete beta by Simpson's rule after t = s^2, which makes the
// integrand 2 s^(2a-1) (1-s^2)^(b-1) smooth on [0, sqrt(x)] for a, b >= 1/2
// and x <= 1/2 (larger x by symmetry).
L BetaRef(L a, L b, L x) {
    if (x > 0.5L) return 1 - BetaRef(b, a, 1 - x);
    const int kSteps = 4000;
    const L h = std::sqrt(x) / kSteps;
    L s = 0;
    for (int i = 0; i <= kSteps; ++i) {
        const L u = i * h, w = (i == 0 || i == kSteps) ? 1 : (i % 2 ? 4 : 2);
        s += w * 2 * std::pow(u, 2 * a - 1) * std::pow(1 - u * u, b - 1);
    }
    return s * h / 3 * std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b));
}

// Regularised lower incomplete gamma by its power series.
L GammaPRef(L a, L x) {
    L s = 0, t = 1 / a;
    for (int k = 0; k < 10000 && t > 1e-22L * s; ++k) s += t, t *= x / (a + k + 1);
    return std::exp(a * std::log(x) - x - std::lgamma(a)) * s;
}

double Call(std::function<AnalysisStatus(double*)> f, AnalysisStatus expect = kOk) {
    double r = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(f(&r), expect);
    return r;
}

TEST(Distributions, StatusChecksInOrder) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    double r;
    struct Row { const char* name; AnalysisStatus got, expected; };
    const Row rows[] = {
        {"beta x<0", IncompleteBeta(1, 1, -1e-300, &r), kErrBetaParameter},
        {"beta x>1", IncompleteBeta(1, 1, 1.0000001, &r), kErrBetaParameter},
        {"t n=0", StudentLowerTail(1, 0, &r), kErrDegreesOfFreedom},
        {"F m=0 before f<=0", FisherLowerTail(-1, 1, 0, &r), kErrDegreesOfFreedom},
        {"F n=0", FisherLowerTail(1, 0, 1, &r), kErrDegreesOfFreedom},
        {"chi n=0 before x<=0", ChiSquareLowerTail(-1, 0, &r), kErrDegreesOfFreedom},
        {"invN p=0", NormalQuantile(0, &r), kErrProbability},
        {"invN p=1", NormalQuantile(1, &r), kErrProbability},
        {"invN NaN passes the check", NormalQuantile(nan, &r), kOk},
        {"invT n before p", StudentQuantile(0, 0, &r), kErrDegreesOfFreedom},
        {"invT p=1", StudentQuantile(1, 3, &r), kErrProbability},
        {"invF m before p", FisherQuantile(0, 1, 0, &r), kErrDegreesOfFreedom},
        {"invF p>1", FisherQuantile(1.5, 1, 1, &r), kErrProbability},
        {"invChi p before n", ChiSquareQuantile(0, 0, &r), kErrProbability},
        {"invChi n=0", ChiSquareQuantile(0.5, 0, &r), kErrDegreesOfFreedom},
        {"invChi NaN passes the check", ChiSquareQuantile(nan, 2, &r), kOk},
    };
    for (const Row& row : rows) EXPECT_EQ(row.got, row.expected) << row.name;
    EXPECT_EQ(Call([](double* p) { return IncompleteBeta(2, 3, -0.0, p); }), 0.0);
    EXPECT_EQ(Call([](double* p) { return IncompleteBeta(2, 3, 1.0, p); }), 1.0);
    EXPECT_EQ(Call([](double* p) { return FisherLowerTail(0, 3, 4, p); }), 0.0);
    EXPECT_EQ(Call([](double* p) { return ChiSquareLowerTail(0, 3, p); }), 0.0);
}

TEST(Distributions, LogGammaSixTermSeries) {
    for (double x = 0.5; x <= 200; x *= 1.07)
        EXPECT_NEAR(LogGamma(x), (double)std::lgamma((L)x), 3e-10) << x;
}

// The normal tail is good to about 1.15e-5, its inverse to 4.5e-4.
TEST(Distributions, NormalApproximations) {
    for (double x = -7; x <= 7; x += 0.01) {
        const double p = Call([x](double* r) { return NormalLowerTail(x, r); });
        EXPECT_NEAR(p, (double)NormalCdfRef(x), 1.2e-5) << x;
        EXPECT_NEAR(p + Call([x](double* r) { return NormalLowerTail(-x, r); }), 1.0, 1e-15) << x;
    }
    for (double p : {1e-12, 1e-6, 0.001, 0.02, 0.2, 0.5, 0.7, 0.975, 0.999999})
        EXPECT_NEAR(Call([p](double* r) { return NormalQuantile(p, r); }), (double)NormalQuantileRef(p), 4.5e-4)
            << p;
}

TEST(Distributions, IncompleteBetaClosedForms) {
    struct Row { double a, b; std::function<double(double)> ref; };
    const Row rows[] = {
        {1, 4.5, [](double x) { return 1 - std::pow(1 - x, 4.5); }},
        {3.5, 1, [](double x) { return std::pow(x, 3.5); }},
        {2, 2, [](double x) { return x * x * (3 - 2 * x); }},
        {0.5, 0.5, [](double x) { return 2 / kPi * std::asin(std::sqrt(x)); }},
    };
    for (const Row& r : rows)
        for (double x : {1e-6, 0.1, 0.35, 0.5, 0.8, 0.999})  // both sides of the branch point
            EXPECT_NEAR(Call([&](double* p) { return IncompleteBeta(r.a, r.b, x, p); }), r.ref(x), 1e-8)
                << "a=" << r.a << " b=" << r.b << " x=" << x;
}

TEST(Distributions, StudentLowerTail) {
    const std::function<double(double)> closed[] = {
        [](double t) { return 0.5 + std::atan(t) / kPi; },
        [](double t) { return 0.5 + t / (2 * std::sqrt(2 + t * t)); },
    };
    for (int n = 1; n <= 2; ++n)
        for (double t = -30; t <= 30; t += 0.37)
            EXPECT_NEAR(Call([&](double* p) { return StudentLowerTail(t, n, p); }), closed[n - 1](t), 1e-8)
                << "n=" << n << " t=" << t;
    for (int n : {3, 12, 30})
        for (double t : {-4.0, -1.3, 0.0, 0.2, 2.5}) {
            const L x = n / ((L)t * t + n), tail = BetaRef(n / 2.0L, 0.5L, x) / 2;
            EXPECT_NEAR(Call([&](double* p) { return StudentLowerTail(t, n, p); }), (double)(t < 0 ? tail : 1 - tail),
                        1e-8) << "n=" << n << " t=" << t;
        }
}

TEST(Distributions, FisherLowerTail) {
    struct Row { int n, m; std::function<double(double)> ref; };
    const auto t1 = [](double t) { return 0.5 + std::atan(t) / kPi; };
    const Row rows[] = {
        {2, 5, [](double f) { return 1 - std::pow(5 / (5 + 2 * f), 2.5); }},
        {5, 2, [](double f) { return std::pow(5 * f / (5 * f + 2), 2.5); }},
        {1, 1, [&](double f) { return 2 * t1(std::sqrt(f)) - 1; }},  // F(1, m) = T_m^2
        {3, 10, [](double f) { return (double)BetaRef(1.5L, 5.0L, 3 * (L)f / (3 * f + 10)); }},
        {10, 3, [](double f) { return (double)BetaRef(5.0L, 1.5L, 10 * (L)f / (10 * f + 3)); }},
    };
    for (const Row& r : rows)
        for (double f : {0.01, 0.3, 1.0, 2.2, 7.5, 60.0})
            EXPECT_NEAR(Call([&](double* p) { return FisherLowerTail(f, r.n, r.m, p); }), r.ref(f), 1e-8)
                << "n=" << r.n << " m=" << r.m << " f=" << f;
}

// Even n is exact to rounding. Odd n inherits twice the error of the normal
// tail at sqrt(x), which is added back so the rest is checked tightly.
TEST(Distributions, ChiSquareLowerTail) {
    for (int n = 1; n <= 15; ++n)
        for (double x : {0.05, 0.7, 1.0, 3.3, 9.0, 24.0, 60.0}) {
            double expected = (double)GammaPRef(n / 2.0L, x / 2.0L);
            if (n % 2) {
                const double z = std::sqrt(x);
                expected += 2 * (Call([z](double* p) { return NormalLowerTail(z, p); }) - (double)NormalCdfRef(z));
            }
            EXPECT_NEAR(Call([&](double* p) { return ChiSquareLowerTail(x, n, p); }), expected, n % 2 ? 3e-7 : 1e-14)
                << "n=" << n << " x=" << x;
        }
}

// The inverses return the lower end of a bracket of width <= 1e-4 around the
// quantile: exact - 1e-4 < result <= exact (up to the forward error).
TEST(Distributions, QuantilesApproachFromBelow) {
    struct Row { std::string name; std::function<AnalysisStatus(double, double*)> inv; std::function<double(double)> exact; };
    const Row rows[] = {
        {"t1", [](double p, double* r) { return StudentQuantile(p, 1, r); }, [](double p) { return std::tan(kPi * (p - 0.5)); }},
        {"t2", [](double p, double* r) { return StudentQuantile(p, 2, r); },
         [](double p) { return (2 * p - 1) / std::sqrt(2 * p * (1 - p)); }},
        {"chi2", [](double p, double* r) { return ChiSquareQuantile(p, 2, r); }, [](double p) { return -2 * std::log1p(-p); }},
        {"F(2,2)", [](double p, double* r) { return FisherQuantile(p, 2, 2, r); }, [](double p) { return p / (1 - p); }},
        {"F(2,5)", [](double p, double* r) { return FisherQuantile(p, 2, 5, r); },
         [](double p) { return 2.5 * (std::pow(1 - p, -0.4) - 1); }},
        {"F(5,2)", [](double p, double* r) { return FisherQuantile(p, 5, 2, r); },
         [](double p) { return 2 * std::pow(p, 0.4) / (5 * (1 - std::pow(p, 0.4))); }},
    };
    for (const Row& r : rows)
        for (double p : {0.03, 0.25, 0.5, 0.61, 0.9, 0.975}) {
            const double q = r.exact(p);
            const double got = Call([&](double* out) { return r.inv(p, out); });
            EXPECT_LE(got, q + 1e-7 * (1 + std::fabs(q))) << r.name << " p=" << p;
            EXPECT_GT(got, q - 1e-4) << r.name << " p=" << p;
        }
    EXPECT_EQ(Call([](double* r) { return StudentQuantile(1e-12, 1, r); }), -10000.0);
    const double top = Call([](double* r) { return StudentQuantile(1 - 1e-12, 1, r); });
    EXPECT_LT(top, 10000.0);
    EXPECT_GE(top, 10000.0 - 1e-4);
}

}  // namespace
}  // namespace vn
