// Loops over scalars that a host controls (a moment's order, the degrees of
// freedom of a chi-square series, bisections fed NaN) end in bounded time and
// give the step-by-step results wherever those are kept bit for bit.
#include "analysis/stat/descriptive.h"
#include "analysis/stat/distributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace vn {
namespace {

const double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The moment's recipe, literally: the mean, then d multiplied order-1 times.
double NaiveMoment(const std::vector<double>& x, std::int32_t order) {
    double m = 0.0;
    for (double v : x) m += v;
    m /= static_cast<double>(x.size());
    double s = 0.0;
    for (double v : x) {
        const double d = v - m;
        double p = d;
        for (std::int32_t k = 1; k < order; ++k) p *= d;
        s += p;
    }
    return s / static_cast<double>(x.size());
}

// Samples whose deviations from the mean (0) are exactly the listed values.
std::vector<double> Symmetric(std::initializer_list<double> d) {
    std::vector<double> x;
    for (double v : d) {
        x.push_back(v);
        x.push_back(-v);
    }
    return x;
}

TEST(BoundedLoops, MomentKeepsStepByStepBits) {
    struct Row { const char* name; std::vector<double> x; std::int32_t order; };
    const Row rows[] = {
        // Orders up to the exact bound: every deviation, near 1 included.
        {"mixed, order 7", {0.3, 1.7, -2.2, 0.9, 5.0}, 7},
        {"near one, order 2048", {0.999, 1.001, 1.3, -0.77, 0.1}, 2048},
        // Beyond the bound, deviations that reach 0, +-inf or stay at +-1.
        {"underflow, odd order", Symmetric({0.5, 0.25, 1e-3}), 100001},
        {"overflow, odd order", {3.0, -2.0, -1.0}, 100001},
        {"overflow, even order", {3.0, -2.0, -1.0}, 100000},
        {"unit deviations", {1.0, -1.0, 1.0, -1.0, 3.0, -3.0}, 99999},
        {"all equal", {4.0, 4.0, 4.0}, 123457},
        {"NaN sample", {1.0, kNaN, 2.0}, 50001},
        {"inf sample", {1.0, kInf, 2.0}, 50001},
    };
    for (const Row& r : rows) {
        double got = 0.0;
        ASSERT_EQ(Moment(r.x.data(), static_cast<std::int32_t>(r.x.size()), r.order, &got), kOk) << r.name;
        const double want = NaiveMoment(r.x, r.order);
        EXPECT_TRUE(SameBits(got, want) || (std::isnan(got) && std::isnan(want)))
            << r.name << ": " << got << " vs " << want;
    }
}

TEST(BoundedLoops, MomentOfHugeOrderMatchesClosedForm) {
    // Deviations +-1.0001 and +-0.9999 (mean 0): beyond the exact bound the
    // power is finished by binary powering; compare with pow to a few ulps
    // times the number of roundings' worth of relative error.
    const std::vector<double> x = Symmetric({1.0001, 0.9999});
    for (std::int32_t order : {4096, 100000, 2000000}) {
        double got = 0.0;
        ASSERT_EQ(Moment(x.data(), 4, order, &got), kOk);
        const long double a = 1.0001, b = 0.9999;  // the doubles, widened
        const double want = static_cast<double>((std::pow(a, order) + std::pow(b, order)) / 2);
        EXPECT_NEAR(got / want, 1.0, 1e-9) << order;
    }
    // Odd order: the symmetric pairs cancel exactly.
    double odd = 1.0;
    ASSERT_EQ(Moment(x.data(), 4, 100001, &odd), kOk);
    EXPECT_EQ(odd, 0.0);
    // The worst case of the issue: 128 samples, order 2^31 - 2, returns.
    std::vector<double> y(128);
    for (int i = 0; i < 128; ++i) y[i] = std::sin(i * 0.37) * 1.5;
    double big = 0.0;
    EXPECT_EQ(Moment(y.data(), 128, 2147483646, &big), kOk);
}

// The chi-square lower tail as the recipe writes it, with the full loop.
double NaiveChiSquare(double x, std::int32_t n) {
    const double z = std::sqrt(x);
    double pz;
    NormalLowerTail(z, &pz);
    if (n == 1) return 1.0 - 2.0 * (1.0 - pz);
    if (n % 2 == 0) {
        double sum = 1.0, term = 1.0, den = 1.0;
        for (std::int32_t k = 1; k <= n / 2 - 1; ++k) {
            term = term * x;
            den = den * (2.0 * k);
            sum = sum + term / den;
        }
        return 1.0 - static_cast<double>(std::exp(static_cast<long double>(-x / 2.0))) * sum;
    }
    double sum = 0.0, term = 1.0 / z, den = 1.0;
    for (std::int32_t k = 1; k <= (n - 1) / 2; ++k) {
        term = term * x;
        den = den * (2.0 * k - 1.0);
        sum = sum + term / den;
    }
    return 1.0 - 2.0 * (0.3989422 * static_cast<double>(std::exp(static_cast<long double>(-x / 2.0))) * sum +
                        (1.0 - pz));
}

TEST(BoundedLoops, ChiSquareSeriesKeepsStepByStepBits) {
    // Counts far past the denominator's overflow, with x below, at and just
    // above 1 (where the term overflows late or never) and large x.
    const double xs[] = {1e-3, 0.5, 1.0, 1.0 + 1e-4, 1.01, 3.0, 57.0, 400.0, 9999.0};
    const std::int32_t ns[] = {1, 2, 3, 4, 151, 300, 301, 5000, 200000, 200001, 2000000};
    for (double x : xs)
        for (std::int32_t n : ns) {
            double got = 0.0;
            ASSERT_EQ(ChiSquareLowerTail(x, n, &got), kOk);
            const double want = NaiveChiSquare(x, n);
            EXPECT_TRUE(SameBits(got, want) || (std::isnan(got) && std::isnan(want)))
                << "x=" << x << " n=" << n << ": " << got << " vs " << want;
        }
}

TEST(BoundedLoops, HugeOrNaNArgumentsReturn) {
    // Each of these ran for minutes or forever when the loops followed the
    // host's numbers; here they only have to come back with their status.
    double r = 0.0;
    struct Row { const char* name; AnalysisStatus got, expected; };
    const Row rows[] = {
        {"XXDist huge n", ChiSquareLowerTail(5.0, 2147483647, &r), kOk},
        {"XXDist huge even n", ChiSquareLowerTail(1.0 + 1e-12, 2147483646, &r), kOk},
        {"InvXXDist huge n", ChiSquareQuantile(0.5, 2147483647, &r), kOk},
        {"InvXXDist NaN p", ChiSquareQuantile(kNaN, 3, &r), kOk},
        {"InvTDist NaN p", StudentQuantile(kNaN, 3, &r), kOk},
        {"InvFDist NaN p", FisherQuantile(kNaN, 3, 4, &r), kOk},
        {"InvFDist huge dof", FisherQuantile(0.5, 2147483647, 2147483647, &r), kOk},
    };
    for (const Row& row : rows) EXPECT_EQ(row.got, row.expected) << row.name;
}

}  // namespace
}  // namespace vn
