// The block-wise extreme searches against the element-by-element rules they
// must reproduce bit for bit, on every scan engine: lengths around the
// vector widths and the block size, NaNs anywhere, ties, signed zeros.
#include "analysis/array/array_ops.h"
#include "analysis/array/extremes_internal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vn {
namespace {

using extremes_internal::Engine;
using Vec = std::vector<double>;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// The rules written out literally.
double RefLargest(const Vec& x) {
    double v = x[0];
    for (std::size_t i = 1; i < x.size(); ++i)
        if (!(x[i] <= v)) v = x[i];
    return v;
}

double RefSmallest(const Vec& x) {
    double v = x[0];
    for (std::size_t i = 1; i < x.size(); ++i)
        if (!(x[i] >= v)) v = x[i];
    return v;
}

void RefMaxMin(const Vec& x, double* max, std::int64_t* imax, double* min, std::int64_t* imin) {
    *max = *min = x[0];
    *imax = *imin = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
        if (x[i] > *max) {
            *max = x[i];
            *imax = static_cast<std::int64_t>(i);
        } else if (!(x[i] >= *min)) {
            *min = x[i];
            *imin = static_cast<std::int64_t>(i);
        }
    }
}

std::uint64_t Bits(double v) {
    std::uint64_t b;
    std::memcpy(&b, &v, sizeof b);
    return b;
}

std::vector<Engine> Engines() {
    std::vector<Engine> engines{Engine::kBaseline};
    if (extremes_internal::EngineAvailable(Engine::kAvx2)) engines.push_back(Engine::kAvx2);
    return engines;
}

void ExpectSameAsRules(const Vec& x, const std::string& what) {
    double rmax, rmin;
    std::int64_t rimax, rimin;
    RefMaxMin(x, &rmax, &rimax, &rmin, &rimin);
    const std::int64_t n = static_cast<std::int64_t>(x.size());
    for (Engine e : Engines()) {
        SCOPED_TRACE(what + (e == Engine::kAvx2 ? " avx2" : " baseline"));
        EXPECT_EQ(Bits(extremes_internal::Largest(e, x.data(), n)), Bits(RefLargest(x)));
        EXPECT_EQ(Bits(extremes_internal::Smallest(e, x.data(), n)), Bits(RefSmallest(x)));
        double max, min;
        std::int64_t imax, imin;
        extremes_internal::MaxMin(e, x.data(), n, &max, &imax, &min, &imin);
        EXPECT_EQ(Bits(max), Bits(rmax));
        EXPECT_EQ(imax, rimax);
        EXPECT_EQ(Bits(min), Bits(rmin));
        EXPECT_EQ(imin, rimin);
    }
}

TEST(Extremes, MatchTheElementRulesOnEveryEngine) {
    std::mt19937_64 rng(19);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    // Vector widths, the 8- and 16-element unrolled loops and the
    // 2048-element block, each with its neighbours.
    const std::int64_t lengths[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 2047, 2048, 2049, 4096, 6150};
    struct Pattern {
        const char* name;
        // returns the value of element i of n (given a random draw)
        double (*value)(std::int64_t i, std::int64_t n, double r);
    };
    const Pattern patterns[] = {
        {"random", [](std::int64_t, std::int64_t, double r) { return r; }},
        // few distinct values: ties everywhere, the first index must win
        {"ties", [](std::int64_t, std::int64_t, double r) { return static_cast<double>(static_cast<int>(r * 3)); }},
        {"signed zeros", [](std::int64_t, std::int64_t, double r) { return r < 0 ? -0.0 : 0.0; }},
        {"zeros above negatives",
         [](std::int64_t i, std::int64_t, double r) { return i % 5 == 3 ? (r < 0 ? -0.0 : 0.0) : -1.0 - r * r; }},
        {"ascending", [](std::int64_t i, std::int64_t, double) { return static_cast<double>(i); }},
        {"descending", [](std::int64_t i, std::int64_t n, double) { return static_cast<double>(n - i); }},
        {"infinities", [](std::int64_t i, std::int64_t, double r) { return i % 7 == 1 ? (r < 0 ? -kInf : kInf) : r; }},
    };
    // Where NaNs go (positions as functions of n; -1 = none).
    struct NanPlace {
        const char* name;
        std::vector<std::int64_t> (*where)(std::int64_t n);
    };
    const NanPlace nans[] = {
        {"no NaN", [](std::int64_t) { return std::vector<std::int64_t>{}; }},
        {"NaN first", [](std::int64_t) { return std::vector<std::int64_t>{0}; }},
        {"NaN last", [](std::int64_t n) { return std::vector<std::int64_t>{n - 1}; }},
        {"NaN middle", [](std::int64_t n) { return std::vector<std::int64_t>{n / 2}; }},
        {"NaN at a block end", [](std::int64_t n) { return std::vector<std::int64_t>{std::min<std::int64_t>(2047, n - 1)}; }},
        {"NaN pair", [](std::int64_t n) { return std::vector<std::int64_t>{n / 3, n / 3 + 1}; }},
        {"NaN every 100", [](std::int64_t n) {
             std::vector<std::int64_t> w;
             for (std::int64_t i = 50; i < n; i += 100) w.push_back(i);
             return w;
         }},
    };
    for (std::int64_t n : lengths)
        for (const Pattern& p : patterns)
            for (const NanPlace& np : nans) {
                Vec x(static_cast<std::size_t>(n));
                for (std::int64_t i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = p.value(i, n, uniform(rng));
                for (std::int64_t i : np.where(n))
                    if (i < n) x[static_cast<std::size_t>(i)] = kNaN;  // a pair does not fit n = 1
                ExpectSameAsRules(x, std::string(p.name) + ", " + np.name + ", n=" + std::to_string(n));
            }
}

TEST(Extremes, ExtremeInALaterBlockThanItsTie) {
    // The maximum value occurs in block 0 and again in block 2; a larger
    // value in block 1 of the other sign of zero must not disturb it.
    Vec x(3 * 2048, -5.0);
    x[10] = 7.0;
    x[2 * 2048 + 5] = 7.0;
    x[2048 + 1] = -0.0;
    x[2048 + 2] = 0.0;
    x[3 * 2048 - 1] = -9.0;
    x[3] = -9.0;
    ExpectSameAsRules(x, "ties across blocks");
    std::int32_t imax, imin;
    double max, min;
    ASSERT_EQ(MaxMinValues(x.data(), static_cast<std::int32_t>(x.size()), &max, &imax, &min, &imin), kOk);
    EXPECT_EQ(imax, 10);
    EXPECT_EQ(imin, 3);
}

TEST(Extremes, MatrixPositionsSplitIntoRowAndColumn) {
    // 3 x 2500: the extremes sit in different blocks and rows.
    const std::int32_t rows = 3, cols = 2500;
    Vec x(static_cast<std::size_t>(rows) * cols, 0.5);
    x[1 * cols + 2499] = 4.0;  // row 1, last column
    x[2 * cols + 0] = 4.0;     // a later tie
    x[2 * cols + 7] = -4.0;
    double max, min;
    std::int32_t imax, jmax, imin, jmin;
    ASSERT_EQ(MaxMinMatrix(x.data(), rows, cols, &max, &imax, &jmax, &min, &imin, &jmin), kOk);
    EXPECT_EQ(max, 4.0);
    EXPECT_EQ(imax, 1);
    EXPECT_EQ(jmax, 2499);
    EXPECT_EQ(min, -4.0);
    EXPECT_EQ(imin, 2);
    EXPECT_EQ(jmin, 7);
}

}  // namespace
}  // namespace vn
