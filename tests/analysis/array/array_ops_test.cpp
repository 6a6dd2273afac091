// Array kernels: element-wise results, ordering rules (ties, NaN), scaling
// statistics and the count and argument checks.
#include "analysis/array/array_ops.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace vn {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
using Vec = std::vector<double>;

TEST(ArrayOps, CountBelowOneFailsFirst) {
    double d = 0;
    std::int32_t i = 0;
    Vec x{1}, z(1);
    struct Row {
        const char* name;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {"add", AddArrays(x.data(), x.data(), 0, z.data())},
        {"div", DivArrays(x.data(), x.data(), -1, z.data())},
        {"poly n", PolyEvaluate(x.data(), 0, x.data(), 1, z.data())},
        {"poly m", PolyEvaluate(x.data(), 1, x.data(), 0, z.data())},
        {"clip before bounds", ClipValues(x.data(), 0, 0.0, 1.0, z.data())},
        {"shift before range", ShiftValues(x.data(), 0, 5, z.data())},
        {"scale", ScaleToUnit(x.data(), 0, z.data(), &d, &d)},
        {"normalize", NormalizeValues(x.data(), 0, z.data(), &d, &d)},
        {"sort", SortValues(x.data(), 0, 0, z.data())},
        {"transpose rows", TransposeMatrix(x.data(), 0, 1, z.data())},
        {"transpose cols", TransposeMatrix(x.data(), 1, 0, z.data())},
        {"sum", SumValues(x.data(), 0, &d)},
        {"maxmin", MaxMinValues(x.data(), 0, &d, &i, &d, &i)},
        {"maxmin matrix", MaxMinMatrix(x.data(), 1, 0, &d, &i, &i, &d, &i, &i)},
        {"subset n", SubsetValues(x.data(), 0, 0, 1, z.data())},
        {"subset index", SubsetValues(x.data(), 1, -1, 1, z.data())},
        {"subset length", SubsetValues(x.data(), 1, 0, 0, z.data())},
        {"set", SetValues(z.data(), 0, 1.0)},
        {"largest", LargestValue(x.data(), 0, &d)},
    };
    for (const Row& row : rows) EXPECT_EQ(row.status, kErrSamplesBelowOne) << row.name;
}

TEST(ArrayOps, DivisionStopsAtZeroOrNaNDivisor) {
    struct Row {
        Vec y;
        AnalysisStatus status;
        std::size_t written;  // elements computed before the stop
    };
    const Row rows[] = {
        {{2, 4, 8}, kOk, 3},
        {{2, 0, 8}, kErrDivideByZero, 1},
        {{-0.0, 4, 8}, kErrDivideByZero, 0},
        {{2, 4, kNaN}, kErrDivideByZero, 2},
        {{1e-300, 4, 8}, kOk, 3},
    };
    const Vec x{8, 8, 8};
    for (const Row& row : rows) {
        Vec z(3, -1.0);
        EXPECT_EQ(DivArrays(x.data(), row.y.data(), 3, z.data()), row.status);
        for (std::size_t i = 0; i < 3; ++i) {
            if (i < row.written)
                EXPECT_EQ(z[i], 8 / row.y[i]);
            else
                EXPECT_EQ(z[i], -1.0);
        }
    }
}

TEST(ArrayOps, PolynomialMatchesDirectPowers) {
    // c0 + c1 x + c2 x^2 + c3 x^3 against std::pow; identical for exactly
    // representable powers, close otherwise.
    const Vec c{0.5, -2, 0.25, 3};
    const Vec x{-3, -1, 0, 1, 2, 10, 0.1};
    Vec z(x.size());
    ASSERT_EQ(PolyEvaluate(x.data(), static_cast<std::int32_t>(x.size()), c.data(), 4, z.data()), kOk);
    for (std::size_t i = 0; i < x.size(); ++i) {
        double expected = 0;
        for (int k = 0; k < 4; ++k) expected += c[k] * std::pow(x[i], k);
        EXPECT_NEAR(z[i], expected, 1e-13 * std::fabs(expected) + 1e-15) << x[i];
    }
    // A single coefficient is a constant; in place works.
    Vec y{1, 2, 3};
    const double c0 = 7;
    ASSERT_EQ(PolyEvaluate(y.data(), 3, &c0, 1, y.data()), kOk);
    EXPECT_EQ(y, (Vec{7, 7, 7}));
}

TEST(ArrayOps, ClipOrderAndNaN) {
    const Vec x{-5, 0, 2, 5, kNaN};
    struct Row {
        double upper, lower;
        AnalysisStatus status;
        Vec expected;
    };
    const Row rows[] = {
        {3, -1, kOk, {-1, 0, 2, 3, -1}},  // NaN fails both tests and becomes lower
        {1, 1, kOk, {1, 1, 1, 1, 1}},
        {0, 1, kErrUpperBelowLower, {}},
    };
    for (const Row& row : rows) {
        Vec z(x.size());
        ASSERT_EQ(ClipValues(x.data(), 5, row.upper, row.lower, z.data()), row.status);
        if (row.status == kOk) {
            EXPECT_EQ(z, row.expected);
        }
    }
}

TEST(ArrayOps, ExtremaTiesAndNaN) {
    struct Row {
        const char* name;
        Vec x;
        double max;
        std::int32_t imax;
        double min;
        std::int32_t imin;
    };
    const Row rows[] = {
        {"ties keep first", {3, 7, 7, 1, 1}, 7, 1, 1, 3},
        {"single", {4}, 4, 0, 4, 0},
        {"descending", {5, 4, 3}, 5, 0, 3, 2},
        // A new maximum is not compared with the minimum; NaN never becomes a
        // maximum but always replaces the minimum.
        {"nan last", {1, 2, kNaN}, 2, 1, kNaN, 2},
        {"nan first", {kNaN, 1, 2}, kNaN, 0, 1, 1},  // any number is "not >= NaN"
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        double max, min;
        std::int32_t imax, imin;
        ASSERT_EQ(MaxMinValues(row.x.data(), static_cast<std::int32_t>(row.x.size()), &max, &imax, &min, &imin), kOk);
        EXPECT_TRUE(max == row.max || (std::isnan(max) && std::isnan(row.max)));
        EXPECT_TRUE(min == row.min || (std::isnan(min) && std::isnan(row.min)));
        EXPECT_EQ(imax, row.imax);
        EXPECT_EQ(imin, row.imin);
    }
    // Largest/smallest take a NaN and drop it at the next element.
    const Vec x{1, kNaN, 0.5};
    double v;
    ASSERT_EQ(LargestValue(x.data(), 3, &v), kOk);
    EXPECT_EQ(v, 0.5);
    ASSERT_EQ(SmallestValue(x.data(), 3, &v), kOk);
    EXPECT_EQ(v, 0.5);
    const Vec y{2, 9, -4, 9};
    ASSERT_EQ(LargestValue(y.data(), 4, &v), kOk);
    EXPECT_EQ(v, 9);
    ASSERT_EQ(SmallestValue(y.data(), 4, &v), kOk);
    EXPECT_EQ(v, -4);
}

TEST(ArrayOps, MatrixExtremaReportQuotientAndRemainder) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-1, 1);
    for (auto [rows, cols] : {std::pair{1, 1}, {1, 5}, {5, 1}, {3, 7}, {8, 2}}) {
        Vec x(static_cast<std::size_t>(rows * cols));
        for (auto& v : x) v = u(rng);
        const std::size_t hi = 3 % x.size(), lo = (x.size() - 1);
        x[hi] = 5;
        if (lo != hi) x[lo] = -5;
        double max, min;
        std::int32_t imax, jmax, imin, jmin;
        ASSERT_EQ(MaxMinMatrix(x.data(), rows, cols, &max, &imax, &jmax, &min, &imin, &jmin), kOk);
        EXPECT_EQ(max, 5);
        EXPECT_EQ(imax, static_cast<std::int32_t>(hi) / cols);
        EXPECT_EQ(jmax, static_cast<std::int32_t>(hi) % cols);
        if (lo != hi) {
            EXPECT_EQ(imin, static_cast<std::int32_t>(lo) / cols);
            EXPECT_EQ(jmin, static_cast<std::int32_t>(lo) % cols);
        }
    }
}

TEST(ArrayOps, ScalingStatistics) {
    Vec z(3);
    double offset, scale;
    const Vec x{0, 5, 10};
    ASSERT_EQ(ScaleToUnit(x.data(), 3, z.data(), &offset, &scale), kOk);
    EXPECT_EQ(offset, 5);
    EXPECT_EQ(scale, 5);
    EXPECT_EQ(z, (Vec{-1, 0, 1}));
    const Vec constant{2, 2, 2};
    ASSERT_EQ(ScaleToUnit(constant.data(), 3, z.data(), &offset, &scale), kOk);  // unreported 0/0
    EXPECT_TRUE(std::isnan(z[0]));

    const Vec q{-4, 2, 1};
    ASSERT_EQ(QuickScale(q.data(), 3, z.data(), &scale), kOk);
    EXPECT_EQ(scale, 4);
    EXPECT_EQ(z, (Vec{-1, 0.5, 0.25}));

    double mean, sdev;
    const Vec n{2, 4};
    Vec w(2);
    ASSERT_EQ(NormalizeValues(n.data(), 2, w.data(), &mean, &sdev), kOk);
    EXPECT_EQ(mean, 3);
    EXPECT_EQ(sdev, 1);
    EXPECT_EQ(w, (Vec{-1, 1}));
    // Population deviation against a two-pass reference.
    std::mt19937 rng(3);
    std::normal_distribution<double> g(10, 3);
    Vec big(1000), out(1000);
    for (auto& v : big) v = g(rng);
    ASSERT_EQ(NormalizeValues(big.data(), 1000, out.data(), &mean, &sdev), kOk);
    const double m = std::accumulate(big.begin(), big.end(), 0.0) / 1000;
    double ss = 0;
    for (double v : big) ss += (v - m) * (v - m);
    EXPECT_NEAR(mean, m, 1e-12);
    EXPECT_NEAR(sdev, std::sqrt(ss / 1000), 1e-10);
}

TEST(ArrayOps, ShiftFillsWithZeros) {
    const Vec x{1, 2, 3, 4};
    struct Row {
        std::int32_t s;
        AnalysisStatus status;
        Vec expected;
    };
    const Row rows[] = {
        {0, kOk, {1, 2, 3, 4}},        {1, kOk, {0, 1, 2, 3}},           {3, kOk, {0, 0, 0, 1}},
        {-1, kOk, {2, 3, 4, 0}},       {-3, kOk, {4, 0, 0, 0}},          {4, kErrShiftRange, {}},
        {-4, kErrShiftRange, {}},      {INT32_MIN, kErrShiftRange, {}}, {INT32_MAX, kErrShiftRange, {}},
    };
    for (const Row& row : rows) {
        Vec z(4, -9);
        ASSERT_EQ(ShiftValues(x.data(), 4, row.s, z.data()), row.status) << row.s;
        if (row.status == kOk) {
            EXPECT_EQ(z, row.expected) << row.s;
        }
    }
}

TEST(ArrayOps, SortDirections) {
    std::mt19937 rng(11);
    std::uniform_int_distribution<int> u(-50, 50);
    Vec x(257);
    for (auto& v : x) v = u(rng);
    for (std::int32_t direction : {0, 1, -1, 7}) {
        Vec z(x.size());
        ASSERT_EQ(SortValues(x.data(), 257, direction, z.data()), kOk);
        Vec expected = x;
        std::sort(expected.begin(), expected.end());
        if (direction != 0) std::reverse(expected.begin(), expected.end());
        EXPECT_EQ(z, expected) << direction;
    }
    Vec in{3, 1, 2};
    ASSERT_EQ(SortValues(in.data(), 3, 0, in.data()), kOk);  // in place
    EXPECT_EQ(in, (Vec{1, 2, 3}));
}

TEST(ArrayOps, TransposeNonSquareRoundTrip) {
    for (auto [rows, cols] : {std::pair{1, 1}, {1, 7}, {7, 1}, {3, 5}, {33, 65}, {100, 3}}) {
        Vec x(static_cast<std::size_t>(rows * cols)), t(x.size()), back(x.size());
        std::iota(x.begin(), x.end(), 0.0);
        ASSERT_EQ(TransposeMatrix(x.data(), rows, cols, t.data()), kOk);
        for (int i = 0; i < rows; ++i)
            for (int j = 0; j < cols; ++j) ASSERT_EQ(t[j * rows + i], x[i * cols + j]);
        ASSERT_EQ(TransposeMatrix(t.data(), cols, rows, back.data()), kOk);
        EXPECT_EQ(back, x);
    }
}

TEST(ArrayOps, SubsetBounds) {
    const Vec x{1, 2, 3, 4, 5};
    struct Row {
        std::int32_t index, length;
        AnalysisStatus status;
        Vec expected;
    };
    const Row rows[] = {
        {2, 3, kOk, {3, 4, 5}},  // index + length == n is accepted
        {0, 5, kOk, {1, 2, 3, 4, 5}},
        {4, 1, kOk, {5}},
        {2, 4, kErrIndexLength, {}},
        {5, 1, kErrIndexLength, {}},
        {-1, 2, kErrSamplesBelowOne, {}},
        {0, 0, kErrSamplesBelowOne, {}},
        {1, INT32_MAX, kErrIndexLength, {}},
    };
    for (const Row& row : rows) {
        Vec z(5, -1);
        ASSERT_EQ(SubsetValues(x.data(), 5, row.index, row.length, z.data()), row.status)
            << row.index << "," << row.length;
        if (row.status == kOk) {
            EXPECT_EQ(Vec(z.begin(), z.begin() + row.length), row.expected);
        }
    }
}

TEST(ArrayOps, SumsAndProductsInStorageOrder) {
    // 1e16 + 1 - 1e16 in order is 0 (the 1 is lost): no compensation.
    const Vec x{1e16, 1, -1e16};
    double s, p;
    ASSERT_EQ(SumValues(x.data(), 3, &s), kOk);
    EXPECT_EQ(s, 0);
    const Vec y{2, -3, 0.5};
    ASSERT_EQ(ProductValues(y.data(), 3, &p), kOk);
    EXPECT_EQ(p, -3);
    Vec z{4, 5};
    ASSERT_EQ(ClearValues(z.data(), 2), kOk);
    EXPECT_EQ(z, (Vec{0, 0}));
    ASSERT_EQ(SetValues(z.data(), 2, -2.5), kOk);
    EXPECT_EQ(z, (Vec{-2.5, -2.5}));
}

}  // namespace
}  // namespace vn
