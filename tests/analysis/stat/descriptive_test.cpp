#include "analysis/stat/descriptive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace vn {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<double> Samples(int n) {  // deterministic, values in [-5, 15)
    std::vector<double> x(n);
    std::uint32_t s = 12345u;
    for (double& v : x) {
        s = s * 1664525u + 1013904223u;
        v = -5.0 + 20.0 * (s >> 8) / 16777216.0;
    }
    return x;
}

// Two-pass long double references against the one-pass kernels.
TEST(Descriptive, MomentsMatchTwoPassReference) {
    for (int n : {1, 2, 7, 1000}) {
        SCOPED_TRACE(n);
        const std::vector<double> x = Samples(n);
        long double sum = 0, sq = 0;
        for (double v : x) sum += v, sq += (long double)v * v;
        const long double mean = sum / n;
        long double central[6] = {};
        for (double v : x)
            for (int k = 1; k <= 5; ++k) central[k] += std::pow((long double)v - mean, k) / n;

        double m = 0, m2 = 0, sd = 0, var = 0, rms = 0;
        ASSERT_EQ(Mean(x.data(), n, &m), kOk);
        EXPECT_NEAR(m, (double)mean, 1e-13);
        ASSERT_EQ(StdDev(x.data(), n, &m2, &sd), kOk);
        EXPECT_DOUBLE_EQ(m2, m);
        EXPECT_NEAR(sd, std::sqrt((double)central[2]), 1e-11);
        ASSERT_EQ(Variance(x.data(), n, &m2, &var), kOk);
        EXPECT_NEAR(var, (double)central[2], 1e-11);
        ASSERT_EQ(RMS(x.data(), n, &rms), kOk);
        EXPECT_NEAR(rms, std::sqrt((double)(sq / n)), 1e-13);
        for (int k = 1; k <= 5; ++k) {
            double mk = 0;
            ASSERT_EQ(Moment(x.data(), n, k, &mk), kOk);
            EXPECT_NEAR(mk, (double)central[k], 1e-10 * std::pow(10.0, k)) << "order " << k;
        }
    }
}

// One-pass cancellation: the variance is left negative, the deviation uses |.|.
TEST(Descriptive, ConstantArrayCancellation) {
    const std::vector<double> x(6, 100000000.1);
    double mean = 0, var = 0, sd = 0;
    ASSERT_EQ(Variance(x.data(), 6, &mean, &var), kOk);
    ASSERT_EQ(StdDev(x.data(), 6, &mean, &sd), kOk);
    EXPECT_LT(var, 0.0);
    EXPECT_EQ(sd, std::sqrt(-var));
}

TEST(Descriptive, Median) {
    struct Row { std::vector<double> x; double expected; };
    const Row rows[] = {{{3, 1, 2}, 2}, {{4, 1, 3, 2}, 2.5}, {{7}, 7}, {{-1, 5, -1, 2, -1}, -1}, {{9, -3}, 3}};
    for (const Row& r : rows) {
        std::vector<double> x = r.x;
        double med = 0;
        ASSERT_EQ(Median(x.data(), (std::int32_t)x.size(), &med), kOk);
        EXPECT_EQ(med, r.expected) << ::testing::PrintToString(r.x);
        EXPECT_EQ(x, r.x) << "input modified";
    }
}

TEST(Descriptive, Histogram) {
    struct Row {
        const char* name; std::vector<double> x; double base, top; std::int32_t intervals;
        std::vector<std::int32_t> counts; std::vector<double> centres;
    };
    const Row rows[] = {
        {"top goes to last bin", {0, 1, 2, 3, 4}, 0, 4, 4, {1, 1, 1, 2}, {0.5, 1.5, 2.5, 3.5}},
        {"outside and NaN dropped", {-0.0001, 0, 1, 2, 3, 4, 4.0001, kNaN}, 0, 4, 4, {1, 1, 1, 2}, {0.5, 1.5, 2.5, 3.5}},
        {"half-open bins", {-1, -0.5, 0, 0.999, 1, 2, 2.5, -1.5}, -1, 2, 3, {2, 2, 2}, {-0.5, 0.5, 1.5}},
        {"inexact width", {0.05, 0.95, 0.999, 0.31, 0.35}, 0, 1, 10, {1, 0, 0, 2, 0, 0, 0, 0, 0, 2},
         {0.05, 0.15, 0.25, 0.35, 0.45, 0.55, 0.65, 0.75, 0.85, 0.95}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        std::vector<std::int32_t> counts(r.intervals, -1);
        std::vector<double> centres(r.intervals);
        ASSERT_EQ(Histogram(r.x.data(), (std::int32_t)r.x.size(), r.base, r.top, r.intervals, counts.data(),
                            centres.data()), kOk);
        EXPECT_EQ(counts, r.counts);
        for (std::int32_t i = 0; i < r.intervals; ++i) EXPECT_NEAR(centres[i], r.centres[i], 1e-14) << i;
    }
}

TEST(Descriptive, Mode) {
    struct Row { const char* name; std::vector<double> x; double expected; };
    const Row rows[] = {
        {"tie goes to lowest bin", {1, 1, 3, 3}, 1.5},
        {"fullest bin", {3, 3, 3, 1, 1}, 3.5},
        {"tie after a smaller bin", {0.2, 2.2, 2.3, 2.4, 3.9, 3.8, 3.7}, 2.5},
        {"nothing in range", {10, 11}, 0.5},
    };
    for (const Row& r : rows) {
        double mode = 0;
        ASSERT_EQ(Mode(r.x.data(), (std::int32_t)r.x.size(), 0, 4, 4, &mode), kOk) << r.name;
        EXPECT_EQ(mode, r.expected) << r.name;
    }
}

TEST(Descriptive, MeanSquaredErrorUsesShorterLength) {
    const double a[] = {1, 2, 3}, b[] = {2, 4, 6, 100, 100};
    double mse = 0;
    ASSERT_EQ(MeanSquaredError(a, 3, b, 5, &mse), kOk);
    EXPECT_DOUBLE_EQ(mse, 14.0 / 3.0);
    ASSERT_EQ(MeanSquaredError(b, 5, a, 3, &mse), kOk);
    EXPECT_DOUBLE_EQ(mse, 14.0 / 3.0);
}

TEST(Descriptive, StatusChecksInOrder) {
    const double x[] = {1, 2};
    double d = 0, e = 0;
    std::int32_t c[4];
    double ctr[4];
    struct Row { const char* name; AnalysisStatus got, expected; };
    const Row rows[] = {
        {"Mean n=0", Mean(x, 0, &d), kErrSamplesBelowOne},
        {"StdDev n<0", StdDev(x, -1, &d, &e), kErrSamplesBelowOne},
        {"Variance n=0", Variance(x, 0, &d, &e), kErrSamplesBelowOne},
        {"RMS n=0", RMS(x, 0, &d), kErrSamplesBelowOne},
        {"Median n=0", Median(x, 0, &d), kErrSamplesBelowOne},
        {"Moment order 0", Moment(x, 2, 0, &d), kErrOrderNotPositive},
        {"Moment n before order", Moment(x, 0, 0, &d), kErrSamplesBelowOne},
        {"MSE nx=0", MeanSquaredError(x, 0, x, 2, &d), kErrSamplesBelowOne},
        {"MSE ny=0", MeanSquaredError(x, 2, x, 0, &d), kErrSamplesBelowOne},
        {"Histogram top=base before n", Histogram(x, 0, 1, 1, 4, c, ctr), kErrTopNotAboveBase},
        {"Histogram top<base", Histogram(x, 2, 1, 0, 4, c, ctr), kErrTopNotAboveBase},
        {"Histogram NaN top", Histogram(x, 2, 0, kNaN, 4, c, ctr), kErrTopNotAboveBase},
        {"Histogram n=0", Histogram(x, 0, 0, 1, 4, c, ctr), kErrSamplesBelowOne},
        {"Histogram intervals=0", Histogram(x, 2, 0, 1, 0, c, ctr), kErrSamplesBelowOne},
        {"Mode intervals before range", Mode(x, 2, 1, 0, 0, &d), kErrSamplesBelowOne},
        {"Mode top<base", Mode(x, 2, 1, 0, 4, &d), kErrTopNotAboveBase},
        {"Mode n=0", Mode(x, 0, 0, 1, 4, &d), kErrSamplesBelowOne},
    };
    for (const Row& r : rows) EXPECT_EQ(r.got, r.expected) << r.name;
}

}  // namespace
}  // namespace vn
