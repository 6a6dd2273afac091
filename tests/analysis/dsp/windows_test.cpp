// Windows against their closed forms evaluated here in long double (sums of
// cosines at theta = 2 pi i/n, the Bessel series summed term by term from
// powers and factorials), applied to an arbitrary record so that the product
// with x is checked too, plus the two code tables.
#include "analysis/dsp/windows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
using Closed = std::function<long double(int i, int n)>;
constexpr long double kPiL = 3.141592653589793238462643383279502884L;

Vec Record(int n) {
    Vec x(n);
    for (int i = 0; i < n; ++i) x[i] = 1.0 + 0.25 * std::sin(1.3 * i) + 0.01 * i;
    return x;
}

long double CosSum(std::initializer_list<long double> a, int i, int n) {
    long double w = 0, sign = 1;
    int k = 0;
    for (long double c : a) w += sign * c * std::cos(k++ * 2 * kPiL * i / n), sign = -sign;
    return w;
}

// Bessel I0 as the Kaiser window defines it: terms ((z/2)^k/k!)^2 up to the
// first one <= 1e-8, at most k = 25.
long double TruncatedI0(long double z) {
    long double sum = 1;
    for (int k = 1; k <= 25; ++k) {
        const long double t = std::pow(std::pow(z / 2, k) / std::tgamma(k + 1.0L), 2);
        sum += t;
        if (t <= 1e-8L) break;
    }
    return sum;
}

struct FixedWindow {
    const char* name;
    std::function<AnalysisStatus(double*, int)> kernel;
    Closed w;       // periodic window at 0 < i < n
    double first;   // factor of element 0
};

// Mirror rule: for even n the middle element is unchanged; otherwise w.
long double Expected(const FixedWindow& f, int i, int n) {
    if (i == 0) return f.first;
    if (n % 2 == 0 && i == n / 2) return 1;
    return f.w(i, n);
}

TEST(Windows, FixedWindowsAgainstClosedForms) {
    const double kaiserBeta = 6.5, bigBeta = 45;  // 45: the series is cut at 25 terms
    const std::vector<FixedWindow> windows = {
        {"triangle", TriangleWindow, [](int i, int n) { return std::min(i, n - i) / (long double)(n / 2); }, 0},
        {"hanning", HanningWindow, [](int i, int n) { return std::pow(std::sin(kPiL * i / n), 2); }, 0},
        {"hamming", HammingWindow, [](int i, int n) { return CosSum({0.54L, 0.46L}, i, n); }, 0.08},
        {"blackman", BlackmanWindow, [](int i, int n) { return CosSum({0.42L, 0.5L, 0.08L}, i, n); },
         -1.3877787807814457e-17},
        {"exact blackman", ExactBlackmanWindow,
         [](int i, int n) { return CosSum({7938 / 18608.0L, 9240 / 18608.0L, 1430 / 18608.0L}, i, n); },
         0.006878761822871851},
        {"blackman-harris", BlackmanHarrisWindow,
         [](int i, int n) { return CosSum({0.42323L, 0.49755L, 0.07922L}, i, n); }, 0.004900000000000002},
        {"flat top", FlatTopWindow,
         [](int i, int n) { return CosSum({0.2810638602L, 0.5208971735L, 0.1980389663L}, i, n); },
         -0.041794346999999954},
        {"kaiser 6.5", [&](double* x, int n) { return KaiserWindow(x, n, kaiserBeta); },
         [&](int i, int n) {
             const long double t = 1 - 2.0L * i / n;
             return TruncatedI0(kaiserBeta * std::sqrt(1 - t * t)) / TruncatedI0(kaiserBeta);
         },
         double(1 / TruncatedI0(kaiserBeta))},
        {"kaiser 45", [&](double* x, int n) { return KaiserWindow(x, n, bigBeta); },
         [&](int i, int n) {
             const long double t = 1 - 2.0L * i / n;
             return TruncatedI0(bigBeta * std::sqrt(1 - t * t)) / TruncatedI0(bigBeta);
         },
         double(1 / TruncatedI0(bigBeta))},
    };
    for (const FixedWindow& f : windows) {
        for (int n : {1, 2, 3, 4, 5, 8, 9, 64, 257}) {
            SCOPED_TRACE(std::string(f.name) + " n=" + std::to_string(n));
            const Vec x = Record(n);
            Vec y = x;
            ASSERT_EQ(f.kernel(y.data(), n), kOk);
            // The Bessel series accumulates a few more roundings than a cosine.
            const bool kaiser = std::string(f.name).find("kaiser") != std::string::npos;
            for (int i = 0; i < n; ++i) {
                const long double want = x[i] * Expected(f, i, n);
                EXPECT_NEAR(y[i], double(want), (kaiser ? 3e-14 : 4e-15) * std::fabs(x[i])) << i;
            }
            // The first factor is exact: the stored value, not a rounding.
            if (!kaiser) {
                EXPECT_EQ(y[0], x[0] * f.first);
            }
        }
        Vec one(1, 1.0);
        EXPECT_EQ(f.kernel(one.data(), 0), kErrSamplesBelowOne);
    }
    // Hanning assigns element 0: a non-finite x[0] becomes 0, not NaN.
    Vec inf{INFINITY, 1, 1, 1};
    ASSERT_EQ(HanningWindow(inf.data(), 4), kOk);
    EXPECT_EQ(inf[0], 0.0);
    EXPECT_EQ(BesselI0(0.0), 1.0);
}

TEST(Windows, GeneralCosine) {
    const Vec bh4{0.35875, 0.48829, 0.14128, 0.01168};
    for (int n : {1, 2, 6, 7, 64, 65}) {
        SCOPED_TRACE(n);
        const Vec x = Record(n);
        Vec y = x, han = x;
        ASSERT_EQ(GeneralCosineWindow(y.data(), n, bh4.data(), 4), kOk);
        for (int i = 0; i < n; ++i) {
            // Unlike the fixed windows, the middle of an even n is windowed too.
            const long double w = CosSum({0.35875L, 0.48829L, 0.14128L, 0.01168L}, i, n);
            EXPECT_NEAR(y[i], double(x[i] * w), 4e-15) << i;
        }
        const Vec half{0.5, 0.5};
        y = x;
        ASSERT_EQ(GeneralCosineWindow(y.data(), n, half.data(), 2), kOk);
        ASSERT_EQ(HanningWindow(han.data(), n), kOk);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(y[i], han[i], 1e-15) << i;
        y = x;
        const Vec single{2.0};
        ASSERT_EQ(GeneralCosineWindow(y.data(), n, single.data(), 1), kOk);
        for (int i = 0; i < n; ++i) EXPECT_EQ(y[i], 2 * x[i]);
    }
    Vec y(4, 1.0);
    EXPECT_EQ(GeneralCosineWindow(y.data(), 4, bh4.data(), 0), kErrSamplesBelowOne);
    EXPECT_EQ(GeneralCosineWindow(y.data(), 0, bh4.data(), 4), kErrSamplesBelowOne);
    EXPECT_EQ(y, Vec(4, 1.0));
}

TEST(Windows, TaperExponentialAndForce) {
    struct Row {
        const char* name;
        int n;
        std::function<AnalysisStatus(double*, int)> kernel;
        std::function<long double(int i, int n)> w;
    };
    const auto taper = [](int i, int n) -> long double {
        const int k = n / 10, j = std::min(i, n - 1 - i);
        if (k < 1) return 1;
        return j == 0 ? 0 : j < k ? std::pow(std::sin(j * kPiL / (2 * k)), 2) : 1;
    };
    const std::vector<Row> rows = {
        {"taper 9: unchanged", 9, CosineTaperWindow, taper},
        {"taper 20", 20, CosineTaperWindow, taper},
        {"taper 105", 105, CosineTaperWindow, taper},
        {"exp 0.1", 50, [](double* x, int n) { return ExponentialWindow(x, n, 0.1); },
         [](int i, int n) { return std::pow(0.1L, (long double)i / (n - 1)); }},
        {"exp 3, n = 2", 2, [](double* x, int n) { return ExponentialWindow(x, n, 3.0); },
         [](int i, int) { return i == 0 ? 1.0L : 3.0L; }},
        {"force 50", 10, [](double* x, int n) { return ForceWindow(x, n, 50); },
         [](int i, int) { return i < 5 ? 1.0L : 0.0L; }},
        {"force 33.3", 10, [](double* x, int n) { return ForceWindow(x, n, 33.3); },
         [](int i, int) { return i < 3 ? 1.0L : 0.0L; }},
        {"force 150", 10, [](double* x, int n) { return ForceWindow(x, n, 150); }, [](int, int) { return 1.0L; }},
        {"force -5", 10, [](double* x, int n) { return ForceWindow(x, n, -5); }, [](int, int) { return 0.0L; }},
        {"force NaN", 10, [](double* x, int n) { return ForceWindow(x, n, NAN); }, [](int, int) { return 0.0L; }},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        const Vec x = Record(r.n);
        Vec y = x;
        ASSERT_EQ(r.kernel(y.data(), r.n), kOk);
        for (int i = 0; i < r.n; ++i) EXPECT_NEAR(y[i], double(x[i] * r.w(i, r.n)), 1e-14) << i;
    }
    Vec y(1, 1.0);
    EXPECT_EQ(ExponentialWindow(y.data(), 1, 0.5), kErrSamplesBelowTwo);
    EXPECT_EQ(ForceWindow(y.data(), 1, 50), kErrSamplesBelowTwo);
    EXPECT_EQ(CosineTaperWindow(y.data(), 0), kOk);
    EXPECT_EQ(y[0], 1.0);
}

// ScaledWindow: the window divided by the stored coherent gain; ENBW and
// gain are the stored constants whatever the data.
TEST(Windows, ScaledWindowTable) {
    struct Row {
        int type;
        double enbw, gain;
        Closed w;
    };
    const auto none = [](int, int) { return 1.0L; };
    const std::vector<Row> rows = {
        {0, 1.0, 1.0, none},
        {42, 1.0, 1.0, none},
        {-1, 1.0, 1.0, none},
        {1, 1.5, 0.5, [](int i, int n) { return std::pow(std::sin(kPiL * i / n), 2); }},
        {2, 1.36, 0.54, [](int i, int n) { return CosSum({0.54L, 0.46L}, i, n); }},
        {3, 1.708538, 0.42323, [](int i, int n) { return CosSum({0.42323L, 0.49755L, 0.07922L}, i, n); }},
        {4, 1.693699, 0.42659071367,
         [](int i, int n) { return CosSum({7938 / 18608.0L, 9240 / 18608.0L, 1430 / 18608.0L}, i, n); }},
        {5, 1.726757, 0.42, [](int i, int n) { return CosSum({0.42L, 0.5L, 0.08L}, i, n); }},
        {6, 2.965606, 0.28106388,
         [](int i, int n) { return CosSum({0.2810638602L, 0.5208971735L, 0.1980389663L}, i, n); }},
        {7, 2.004353, 0.35875, [](int i, int n) { return CosSum({0.35875L, 0.48829L, 0.14128L, 0.01168L}, i, n); }},
        {8, 2.631905, 0.27105140069342415,
         [](int i, int n) {
             return CosSum({0.27105140069342415L, 0.43329793923448606L, 0.21812299954311062L, 0.0659254463880309L,
                            0.010811742098372268L, 0.0007765848252250934L, 1.3887217350903198e-05L},
                           i, n);
         }},
    };
    const int n = 33;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.type);
        const Vec x = Record(n);
        Vec y = x;
        double enbw = 0, gain = 0;
        ASSERT_EQ(ScaledWindowCore(y.data(), n, r.type, &enbw, &gain), kOk);
        EXPECT_EQ(enbw, r.enbw);
        EXPECT_EQ(gain, r.gain);
        for (int i = 1; i < n; ++i) EXPECT_NEAR(y[i], double(x[i] * r.w(i, n) / r.gain), 1e-14) << i;
        const WindowConstants k = ScaledWindowConstants(r.type);
        EXPECT_EQ(k.enbw, r.enbw);
        EXPECT_EQ(k.coherent_gain, r.gain);
    }
    double enbw = 0, gain = 0;
    EXPECT_EQ(ScaledWindowCore(nullptr, 0, 1, &enbw, &gain), kOk);
    EXPECT_EQ(gain, 0.5);
    enbw = gain = 7;
    EXPECT_EQ(ScaledWindowCore(nullptr, -1, 1, &enbw, &gain), kErrSamplesNegative);
    EXPECT_EQ(enbw, 7);
}

// The FIR designs' table: codes 2 .. 6 run the periodic kernels, any other
// leaves the data; the symmetric window closes an (n-1)-point periodic one.
TEST(Windows, FirWindowTable) {
    const double beta = 3.0;
    const std::vector<std::pair<int, std::function<AnalysisStatus(double*, int)>>> codes = {
        {2, TriangleWindow}, {3, HanningWindow}, {4, HammingWindow}, {5, BlackmanWindow},
        {6, [&](double* x, int n) { return KaiserWindow(x, n, beta); }}};
    for (const auto& [code, kernel] : codes) {
        for (int n : {2, 7, 16}) {
            SCOPED_TRACE(std::to_string(code) + " n=" + std::to_string(n));
            Vec want(n, 1.0), got(n, 1.0), sym(n, 0.0);
            ASSERT_EQ(kernel(want.data(), n), kOk);
            ASSERT_EQ(ApplyFirWindowType(got.data(), n, code, beta), kOk);
            EXPECT_EQ(got, want);
            ASSERT_EQ(SymmetricFirWindow(sym.data(), n, code, beta), kOk);
            Vec periodic(n - 1, 1.0);
            ASSERT_EQ(kernel(periodic.data(), n - 1), kOk);
            for (int i = 0; i < n - 1; ++i) EXPECT_EQ(sym[i], periodic[i]);
            EXPECT_EQ(sym[n - 1], sym[0]);
            for (int i = 0; i < n; ++i) EXPECT_NEAR(sym[i], sym[n - 1 - i], 1e-15);  // symmetric
        }
        Vec one(1, 5.0);
        EXPECT_EQ(SymmetricFirWindow(one.data(), 1, code, beta), kErrSamplesBelowOne);
    }
    for (int code : {0, 1, 7, -3}) {
        Vec x = Record(5), sym(1, 0.0);
        EXPECT_EQ(ApplyFirWindowType(x.data(), 5, code, beta), kOk);
        EXPECT_EQ(x, Record(5));
        EXPECT_EQ(SymmetricFirWindow(sym.data(), 1, code, beta), kOk);
        EXPECT_EQ(sym[0], 1.0);
    }
}

}  // namespace
}  // namespace vn
