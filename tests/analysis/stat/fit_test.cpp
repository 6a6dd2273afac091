#include "analysis/stat/fit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace vn {
namespace {

using L = long double;
using Vec = std::vector<double>;

// Weighted least squares by the normal equations in long double, solved by
// Gauss-Jordan elimination with partial pivoting; also returns the inverse of
// H^T W H. Independent of every factorisation under test.
struct Reference {
    std::vector<L> b, cov;
};
Reference NormalEquationsRef(const Vec& h, int n, int k, const Vec& y, const Vec& sd) {
    std::vector<L> g(k * 2 * k, 0), c(k, 0);
    for (int i = 0; i < n; ++i) {
        const L w = sd.empty() ? 1 : 1 / (L(sd[i]) * sd[i]);
        for (int p = 0; p < k; ++p) {
            for (int q = 0; q < k; ++q) g[p * 2 * k + q] += w * h[i * k + p] * h[i * k + q];
            c[p] += w * h[i * k + p] * y[i];
        }
    }
    for (int p = 0; p < k; ++p) g[p * 2 * k + k + p] = 1;
    for (int col = 0; col < k; ++col) {
        int piv = col;
        for (int r = col + 1; r < k; ++r)
            if (std::fabs(g[r * 2 * k + col]) > std::fabs(g[piv * 2 * k + col])) piv = r;
        for (int j = 0; j < 2 * k; ++j) std::swap(g[col * 2 * k + j], g[piv * 2 * k + j]);
        const L d = g[col * 2 * k + col];
        for (int j = 0; j < 2 * k; ++j) g[col * 2 * k + j] /= d;
        for (int r = 0; r < k; ++r) {
            if (r == col) continue;
            const L m = g[r * 2 * k + col];
            for (int j = 0; j < 2 * k; ++j) g[r * 2 * k + j] -= m * g[col * 2 * k + j];
        }
    }
    Reference ref{std::vector<L>(k, 0), std::vector<L>(k * k)};
    for (int p = 0; p < k; ++p)
        for (int q = 0; q < k; ++q) {
            ref.cov[p * k + q] = g[p * 2 * k + k + q];
            ref.b[p] += ref.cov[p * k + q] * c[q];
        }
    return ref;
}

// Deterministic noise in [-0.5, 0.5).
double Noise(int i) { return std::fmod(std::sin(i * 12.9898) * 43758.5453, 1.0) * 0.5; }

TEST(LinearFit, ExactLinesAndLeastSquares) {
    struct Row {
        Vec x, y;
        double slope, intercept;
    };
    const Row rows[] = {
        {{0, 1, 2}, {1, 3, 5}, 2, 1},
        {{-3, 0.5, 4, 10}, {7, 7, 7, 7}, 0, 7},
        {{1e3, 1e3 + 1, 1e3 + 2, 1e3 + 3}, {-1, -1.5, -2, -2.5}, -0.5, 499},
    };
    for (const auto& r : rows) {
        const int n = static_cast<int>(r.x.size());
        Vec z(n);
        double m = 0, c = 0, mse = -1;
        ASSERT_EQ(LinearFit(r.x.data(), r.y.data(), n, z.data(), &m, &c, &mse), kOk);
        EXPECT_NEAR(m, r.slope, 1e-9);
        EXPECT_NEAR(c, r.intercept, 1e-6);
        EXPECT_NEAR(mse, 0, 1e-12);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(z[i], r.y[i], 1e-9);
    }
    // Noisy data against the normal equations of H = [1, x].
    const int n = 9;
    Vec x(n), y(n), h(2 * n), z(n);
    for (int i = 0; i < n; ++i) {
        x[i] = 0.7 * i - 1;
        y[i] = 3 - 2 * x[i] + Noise(i);
        h[2 * i] = 1;
        h[2 * i + 1] = x[i];
    }
    const Reference ref = NormalEquationsRef(h, n, 2, y, {});
    double m = 0, c = 0, mse = 0;
    ASSERT_EQ(LinearFit(x.data(), y.data(), n, z.data(), &m, &c, &mse), kOk);
    EXPECT_NEAR(m, double(ref.b[1]), 1e-13);
    EXPECT_NEAR(c, double(ref.b[0]), 1e-13);
    L s = 0;
    for (int i = 0; i < n; ++i) s += (ref.b[0] + ref.b[1] * x[i] - y[i]) * (ref.b[0] + ref.b[1] * x[i] - y[i]);
    EXPECT_NEAR(mse, double(s / n), 1e-14);
}

TEST(LinearFit, DegenerateInputs) {
    const Vec x{2, 2, 2}, y{1, 2, 3};
    Vec z(3);
    double m = 0, c = 0, mse = 0;
    EXPECT_EQ(LinearFit(x.data(), y.data(), 3, z.data(), &m, &c, &mse), kOk);
    EXPECT_FALSE(std::isfinite(m));
    EXPECT_FALSE(std::isfinite(c));
    EXPECT_EQ(LinearFit(x.data(), y.data(), 1, z.data(), &m, &c, &mse), kErrSamplesBelowTwo);
}

TEST(ExponentialFit, RecoversBothSignsAndRestoresY) {
    const double e = std::exp(1.0);
    struct Row {
        Vec x, y;
        double a, b;
    };
    const Row rows[] = {
        {{0, 1, 2}, {-2, -2 * e, -2 * e * e}, -2, 1},
        {{-1, 0, 1, 2.5}, {3 * std::exp(0.4), 3, 3 * std::exp(-0.4), 3 * std::exp(-1.0)}, 3, -0.4},
    };
    for (const auto& r : rows) {
        const int n = static_cast<int>(r.x.size());
        Vec y = r.y, z(n);
        double a = 0, b = 0, mse = -1;
        ASSERT_EQ(ExponentialFit(r.x.data(), y.data(), n, z.data(), &a, &b, &mse), kOk);
        EXPECT_NEAR(a, r.a, 1e-13);
        EXPECT_NEAR(b, r.b, 1e-14);
        EXPECT_NEAR(mse, 0, 1e-26);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(z[i], r.y[i], 1e-13);
        EXPECT_EQ(y, r.y);  // bit for bit
    }
}

TEST(ExponentialFit, RefusalsLeaveYAsItWas) {
    const Vec x{0, 1, 2};
    struct Row {
        Vec y;
        int n;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {{1, -1, 2}, 3, kErrYSign},
        {{-1, 2, -3}, 3, kErrYSign},  // negated for the check, then restored
        {{-1, -2, 0}, 3, kErrYSign},
        {{0, 1, 2}, 3, kErrYSign},
        {{-5, -5, -5}, 1, kErrSamplesBelowTwo},
    };
    for (const auto& r : rows) {
        Vec y = r.y, z(3, 9);
        double a = 7, b = 7, mse = 7;
        EXPECT_EQ(ExponentialFit(x.data(), y.data(), r.n, z.data(), &a, &b, &mse), r.status);
        EXPECT_EQ(y, r.y);
        EXPECT_EQ(a, 0.0);
        EXPECT_EQ(b, 0.0);
        EXPECT_EQ(z, Vec(3, 9));
    }
}

TEST(PolynomialFit, ExactPolynomialsAndChecks) {
    // y = 1 - 2x + 0.5x^3 sampled at 7 points, fitted with order 3 and 6.
    const int n = 7;
    Vec x(n), y(n);
    for (int i = 0; i < n; ++i) {
        x[i] = i - 2.5;
        y[i] = 1 - 2 * x[i] + 0.5 * x[i] * x[i] * x[i];
    }
    for (int order : {3, 6}) {
        Vec z(n), coef(order + 1);
        double mse = -1;
        ASSERT_EQ(PolynomialFit(x.data(), y.data(), n, order, z.data(), coef.data(), &mse), kOk);
        const Vec expected{1, -2, 0, 0.5, 0, 0, 0};
        for (int j = 0; j <= order; ++j) EXPECT_NEAR(coef[j], expected[j], 1e-11) << order << " " << j;
        EXPECT_NEAR(mse, 0, 1e-24);
    }
    // Order 0 is the mean.
    Vec z(n), coef(1);
    double mse = 0;
    ASSERT_EQ(PolynomialFit(x.data(), y.data(), n, 0, z.data(), coef.data(), &mse), kOk);
    L mean = 0;
    for (double v : y) mean += v;
    EXPECT_NEAR(coef[0], double(mean / n), 1e-14);

    Vec big(100, 1.0), out(100);
    struct Row {
        int n, order;
        AnalysisStatus status;
    };
    const Row checks[] = {
        {0, -1, kErrSamplesBelowOne},  {3, -1, kErrOrderNotPositive2},          {3, 3, kErrPointsNotAboveOrder},
        {3, 2147483647, kErrPointsNotAboveOrder}, {100, 90, kErrOrderNotPositive},
    };
    for (const auto& r : checks) {
        SCOPED_TRACE(std::to_string(r.n) + " " + std::to_string(r.order));
        EXPECT_EQ(PolynomialFit(big.data(), big.data(), r.n, r.order, out.data(), out.data(), &mse), r.status);
    }
    // Three points on two abscissas cannot fix a parabola: minimum-norm
    // coefficients and the rank warning, with the fitted values the means.
    const Vec xr{1, 1, -1}, yr{1, 3, 0};
    Vec zr(3), cr(3);
    EXPECT_EQ(PolynomialFit(xr.data(), yr.data(), 3, 2, zr.data(), cr.data(), &mse), kWarnRankDeficient);
    EXPECT_NEAR(zr[0], 2, 1e-13);
    EXPECT_NEAR(zr[2], 0, 1e-13);
    // Solutions: c1 = 1 and c0 + c2 = 1; the shortest has c0 = c2.
    EXPECT_NEAR(cr[0], 0.5, 1e-13);
    EXPECT_NEAR(cr[1], 1, 1e-13);
    EXPECT_NEAR(cr[2], 0.5, 1e-13);
}

// A weighted problem with four parameters: every algorithm code against the
// long-double normal equations, with and without standard deviations.
TEST(GeneralLeastSquares, AllCodesAgreeWithTheNormalEquations) {
    const int n = 12, k = 4;
    Vec h(n * k), y(n), sd(n);
    for (int i = 0; i < n; ++i) {
        const double t = 0.3 * i - 1.4;
        h[i * k] = 1;
        h[i * k + 1] = t;
        h[i * k + 2] = std::cos(t);
        h[i * k + 3] = std::exp(0.2 * t);
        y[i] = 0.5 + t - 2 * std::cos(t) + Noise(i);
        sd[i] = 0.5 + 0.1 * (i % 5);
    }
    for (const Vec& s : {Vec{}, sd}) {
        const Reference ref = NormalEquationsRef(h, n, k, y, s);
        for (int code = 0; code <= 5; ++code) {
            SCOPED_TRACE("code " + std::to_string(code) + (s.empty() ? " unweighted" : " weighted"));
            Vec z(n), b(k), cov(k * k);
            double mse = -1;
            ASSERT_EQ(GeneralLeastSquares(h.data(), n, k, y.data(), s.empty() ? nullptr : s.data(), code, z.data(),
                                          b.data(), cov.data(), &mse),
                      kOk);
            L sum = 0;
            for (int i = 0; i < n; ++i) {
                L zi = 0;
                for (int j = 0; j < k; ++j) zi += h[i * k + j] * ref.b[j];
                EXPECT_NEAR(z[i], double(zi), 1e-10);
                sum += (zi - y[i]) * (zi - y[i]);
            }
            EXPECT_NEAR(mse, double(sum / n), 1e-12);
            for (int j = 0; j < k; ++j) EXPECT_NEAR(b[j], double(ref.b[j]), 1e-9 * (1 + std::fabs(double(ref.b[j]))));
            for (int j = 0; j < k * k; ++j)
                EXPECT_NEAR(cov[j], double(ref.cov[j]), 1e-8 * (1 + std::fabs(double(ref.cov[j]))));
            // Without a covariance output the coefficients are the same.
            Vec b2(k);
            ASSERT_EQ(GeneralLeastSquares(h.data(), n, k, y.data(), s.empty() ? nullptr : s.data(), code, z.data(),
                                          b2.data(), nullptr, &mse),
                      kOk);
            EXPECT_EQ(b2, b);
        }
    }
}

TEST(GeneralLeastSquares, ChecksInOrder) {
    Vec h(200, 1.0), y(200, 1.0), sd(200, 1.0), out(10000, 5.0);
    double mse = 0;
    struct Row {
        const char* name;
        int n, k, code;
        double badSd;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {"n < 1 first", 0, 0, 9, 1, kErrSamplesBelowOne},
        {"k > n before k < 1", 2, 3, 9, 1, kErrPointsNotAboveOrder},
        {"k < 1", 2, 0, 9, 1, kErrOrderNotPositive},
        {"k > 90", 100, 91, 9, 1, kErrOrderNotPositive},
        {"code 6", 3, 1, 6, 0, kErrInvalidSelection},
        {"code -1", 3, 1, -1, 0, kErrInvalidSelection},
        {"zero deviation", 3, 1, 0, 0, kErrZeroStdDev},
        {"negative deviation", 3, 1, 4, -1, kErrZeroStdDev},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        sd[1] = r.badSd;
        EXPECT_EQ(GeneralLeastSquares(h.data(), r.n, r.k, y.data(), sd.data(), r.code, out.data(), out.data(),
                                      out.data(), &mse),
                  r.status);
    }
    EXPECT_EQ(out, Vec(10000, 5.0));
}

// H with two equal columns: only the SVD code answers (with the shortest
// solution, the weight split evenly); the others report a singular system and
// leave the outputs alone.
TEST(GeneralLeastSquares, RankDeficientDesign) {
    const int n = 5, k = 3;
    Vec h(n * k), y(n);
    for (int i = 0; i < n; ++i) {
        h[i * k] = 1;
        h[i * k + 1] = h[i * k + 2] = i;
        y[i] = 2 + 4 * i;
    }
    for (int code = 0; code <= 5; ++code) {
        SCOPED_TRACE(code);
        Vec z(n, -1), b(k, -1), cov(k * k, -1);
        double mse = -1;
        const AnalysisStatus st =
            GeneralLeastSquares(h.data(), n, k, y.data(), nullptr, code, z.data(), b.data(), cov.data(), &mse);
        if (code == kFitSvd) {
            EXPECT_EQ(st, kWarnRankDeficient);
            EXPECT_NEAR(b[0], 2, 1e-12);
            EXPECT_NEAR(b[1], 2, 1e-12);
            EXPECT_NEAR(b[2], 2, 1e-12);
            EXPECT_NEAR(mse, 0, 1e-24);
        } else {
            EXPECT_EQ(st, kErrSingular);
            EXPECT_EQ(b, Vec(k, -1));
            EXPECT_EQ(mse, -1);
        }
    }
}

// An infinite or NaN entry of H, or one that overflows when divided by its
// deviation, is refused by every factorising code before any output is
// written.
TEST(GeneralLeastSquares, NonFiniteDesignIsRefused) {
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        const char* name;
        double entry, sd;
    };
    const Row rows[] = {{"infinity", inf, 1}, {"NaN", nan, 1}, {"overflow by weight", 1e300, 1e-10}};
    for (const auto& r : rows) {
        Vec h{1, 0, 1, 1, 1, 2}, y{1, 2, 3}, sd{1, 1, 1};
        h[3] = r.entry;
        sd[1] = r.sd;
        for (int code = 0; code <= 3; ++code) {
            SCOPED_TRACE(std::string(r.name) + " code " + std::to_string(code));
            Vec z(3, 7), b(2, 7);
            double mse = 7;
            EXPECT_EQ(GeneralLeastSquares(h.data(), 3, 2, y.data(), sd.data(), code, z.data(), b.data(), nullptr, &mse),
                      kErrAlgorithmFailure);
            EXPECT_EQ(b, Vec(2, 7));
            EXPECT_EQ(mse, 7);
        }
    }
}

}  // namespace
}  // namespace vn
