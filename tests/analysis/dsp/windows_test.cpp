// Windows against their closed forms evaluated here in long double (sums of
// cosines at theta = 2 pi i/n, the Bessel series summed from powers and
// factorials), applied to an arbitrary record so that the product with x is
// checked too; then the two code tables.
#include "analysis/dsp/windows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
using Kernel = std::function<AnalysisStatus(double*, int)>;
using Closed = std::function<long double(int i, int n)>;
constexpr long double kPiL = 3.141592653589793238462643383279502884L;

Vec Record(int n) {
    Vec x(n);
    for (int i = 0; i < n; ++i) x[i] = 1.0 + 0.25 * std::sin(1.3 * i) + 0.01 * i;
    return x;
}

Closed CosSum(std::vector<long double> a) {
    return [a](int i, int n) {
        long double w = 0, sign = 1;
        for (std::size_t k = 0; k < a.size(); ++k) w += sign * a[k] * std::cos(k * 2 * kPiL * i / n), sign = -sign;
        return w;
    };
}

// Bessel I0 as the Kaiser window defines it: terms ((z/2)^k/k!)^2 up to the
// first one <= 1e-8, at most k = 25 (so cut short for large z).
long double TruncatedI0(long double z) {
    long double sum = 1;
    for (int k = 1; k <= 25; ++k) {
        const long double t = std::pow(std::pow(z / 2, k) / std::tgamma(k + 1.0L), 2);
        sum += t;
        if (t <= 1e-8L) break;
    }
    return sum;
}

Closed Kaiser(double beta) {
    return [beta](int i, int n) {
        const long double t = 1 - 2.0L * i / n;
        return TruncatedI0(beta * std::sqrt(1 - t * t)) / TruncatedI0(beta);
    };
}

const Closed kHanning = [](int i, int n) { return std::pow(std::sin(kPiL * i / n), 2); };
const std::map<std::string, Closed> kForms = {
    {"hanning", kHanning},
    {"hamming", CosSum({0.54L, 0.46L})},
    {"blackman", CosSum({0.42L, 0.5L, 0.08L})},
    {"exact blackman", CosSum({7938 / 18608.0L, 9240 / 18608.0L, 1430 / 18608.0L})},
    {"blackman-harris", CosSum({0.42323L, 0.49755L, 0.07922L})},
    {"flat top", CosSum({0.2810638602L, 0.5208971735L, 0.1980389663L})},
    {"bh4", CosSum({0.35875L, 0.48829L, 0.14128L, 0.01168L})},
    {"bh7", CosSum({0.27105140069342415L, 0.43329793923448606L, 0.21812299954311062L, 0.0659254463880309L,
                    0.010811742098372268L, 0.0007765848252250934L, 1.3887217350903198e-05L})},
};

// Applies `kernel` to Record(n) and compares with x[i] * w(i) (relative tol).
void ExpectWindow(const Kernel& kernel, int n, const std::function<long double(int)>& w, double tol) {
    const Vec x = Record(n);
    Vec y = x;
    ASSERT_EQ(kernel(y.data(), n), kOk);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(y[i], double(x[i] * w(i)), tol * std::fabs(x[i])) << i;
}

// Periodic, mirrored, element 0 the stored first factor, the middle of an
// even n untouched.
TEST(Windows, FixedWindowsAgainstClosedForms) {
    struct Row {
        const char* name;
        Kernel kernel;
        Closed w;
        double first, tol;
    };
    const std::vector<Row> rows = {
        {"triangle", TriangleWindow, [](int i, int n) { return std::min(i, n - i) / (long double)(n / 2); }, 0, 4e-15},
        {"hanning", HanningWindow, kForms.at("hanning"), 0, 4e-15},
        {"hamming", HammingWindow, kForms.at("hamming"), 0.08, 4e-15},
        {"blackman", BlackmanWindow, kForms.at("blackman"), -1.3877787807814457e-17, 4e-15},
        {"exact blackman", ExactBlackmanWindow, kForms.at("exact blackman"), 0.006878761822871851, 4e-15},
        {"blackman-harris", BlackmanHarrisWindow, kForms.at("blackman-harris"), 0.004900000000000002, 4e-15},
        {"flat top", FlatTopWindow, kForms.at("flat top"), -0.041794346999999954, 4e-15},
        {"kaiser 6.5", [](double* x, int n) { return KaiserWindow(x, n, 6.5); }, Kaiser(6.5),
         double(1 / TruncatedI0(6.5)), 3e-14},
        {"kaiser 45 (series cut)", [](double* x, int n) { return KaiserWindow(x, n, 45); }, Kaiser(45),
         double(1 / TruncatedI0(45)), 3e-14},
    };
    for (const Row& r : rows) {
        for (int n : {1, 2, 3, 4, 5, 8, 9, 64, 257}) {
            SCOPED_TRACE(std::string(r.name) + " n=" + std::to_string(n));
            ExpectWindow(r.kernel, n, [&](int i) -> long double {
                return i == 0 ? r.first : (n % 2 == 0 && i == n / 2) ? 1 : r.w(i, n);
            }, r.tol);
        }
        Vec one{1.0};
        EXPECT_EQ(r.kernel(one.data(), 0), kErrSamplesBelowOne);
    }
    Vec inf{INFINITY, 1, 1, 1};  // Hanning assigns element 0 rather than multiplying
    ASSERT_EQ(HanningWindow(inf.data(), 4), kOk);
    EXPECT_EQ(inf[0], 0.0);
}

TEST(Windows, GeneralCosineTaperExponentialForce) {
    const Vec bh4{0.35875, 0.48829, 0.14128, 0.01168}, half{0.5, 0.5}, two{2.0};
    const auto taper = [](int i, int n) -> long double {
        const int k = n / 10, j = std::min(i, n - 1 - i);
        return k < 1 ? 1 : j == 0 ? 0 : j < k ? std::pow(std::sin(j * kPiL / (2 * k)), 2) : 1;
    };
    struct Row {
        const char* name;
        int n;
        Kernel kernel;
        Closed w;
    };
    const std::vector<Row> rows = {
        // Unlike the fixed windows, the middle of an even n is windowed too.
        {"bh4 n=64", 64, [&](double* x, int n) { return GeneralCosineWindow(x, n, bh4.data(), 4); }, kForms.at("bh4")},
        {"bh4 n=7", 7, [&](double* x, int n) { return GeneralCosineWindow(x, n, bh4.data(), 4); }, kForms.at("bh4")},
        {"[0.5, 0.5] is Hanning", 65, [&](double* x, int n) { return GeneralCosineWindow(x, n, half.data(), 2); },
         kHanning},
        {"one coefficient", 6, [&](double* x, int n) { return GeneralCosineWindow(x, n, two.data(), 1); },
         [](int, int) { return 2.0L; }},
        {"taper 9: unchanged", 9, CosineTaperWindow, taper},
        {"taper 20", 20, CosineTaperWindow, taper},
        {"taper 105", 105, CosineTaperWindow, taper},
        {"exp 0.1", 50, [](double* x, int n) { return ExponentialWindow(x, n, 0.1); },
         [](int i, int n) { return std::pow(0.1L, (long double)i / (n - 1)); }},
        {"force 50", 10, [](double* x, int n) { return ForceWindow(x, n, 50); }, [](int i, int) { return i < 5 ? 1.0L : 0; }},
        {"force 33.3", 10, [](double* x, int n) { return ForceWindow(x, n, 33.3); },
         [](int i, int) { return i < 3 ? 1.0L : 0; }},
        {"force 150", 10, [](double* x, int n) { return ForceWindow(x, n, 150); }, [](int, int) { return 1.0L; }},
        {"force -5", 10, [](double* x, int n) { return ForceWindow(x, n, -5); }, [](int, int) { return 0.0L; }},
        {"force NaN", 10, [](double* x, int n) { return ForceWindow(x, n, NAN); }, [](int, int) { return 0.0L; }},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        ExpectWindow(r.kernel, r.n, [&](int i) { return r.w(i, r.n); }, 1e-14);
    }
    Vec y(4, 1.0);
    EXPECT_EQ(GeneralCosineWindow(y.data(), 4, bh4.data(), 0), kErrSamplesBelowOne);
    EXPECT_EQ(ExponentialWindow(y.data(), 1, 0.5), kErrSamplesBelowTwo);
    EXPECT_EQ(ForceWindow(y.data(), 1, 50), kErrSamplesBelowTwo);
    EXPECT_EQ(CosineTaperWindow(y.data(), 0), kOk);
    EXPECT_EQ(y, Vec(4, 1.0));
}

// The window divided by the stored coherent gain; ENBW and gain are the
// table's constants whatever the data.
TEST(Windows, ScaledWindowTable) {
    struct Row {
        int type;
        double enbw, gain;
        const char* form;  // nullptr: rectangular
    };
    const std::vector<Row> rows = {
        {0, 1.0, 1.0, nullptr},          {42, 1.0, 1.0, nullptr},
        {-1, 1.0, 1.0, nullptr},         {1, 1.5, 0.5, "hanning"},
        {2, 1.36, 0.54, "hamming"},      {3, 1.708538, 0.42323, "blackman-harris"},
        {4, 1.693699, 0.42659071367, "exact blackman"},
        {5, 1.726757, 0.42, "blackman"}, {6, 2.965606, 0.28106388, "flat top"},
        {7, 2.004353, 0.35875, "bh4"},   {8, 2.631905, 0.27105140069342415, "bh7"},
    };
    const int n = 33;
    for (const Row& r : rows) {
        SCOPED_TRACE(r.type);
        double enbw = 0, gain = 0;
        const auto kernel = [&](double* x, int m) { return ScaledWindowCore(x, m, r.type, &enbw, &gain); };
        ExpectWindow(kernel, n, [&](int i) { return (r.form ? kForms.at(r.form)(i, n) : 1) / r.gain; }, 1e-14);
        EXPECT_EQ(enbw, r.enbw);
        EXPECT_EQ(gain, r.gain);
        EXPECT_EQ(ScaledWindowConstants(r.type).enbw, r.enbw);
    }
    double enbw = 7, gain = 7;
    EXPECT_EQ(ScaledWindowCore(nullptr, -1, 1, &enbw, &gain), kErrSamplesNegative);
    EXPECT_EQ(enbw, 7);
    EXPECT_EQ(ScaledWindowCore(nullptr, 0, 1, &enbw, &gain), kOk);
    EXPECT_EQ(gain, 0.5);
}

// The FIR designs' table: codes 2 .. 6 run the periodic kernels, any other
// leaves the data; the symmetric window closes an (n-1)-point periodic one.
TEST(Windows, FirWindowTable) {
    const double beta = 3.0;
    const std::vector<std::pair<int, Kernel>> codes = {
        {2, TriangleWindow}, {3, HanningWindow}, {4, HammingWindow}, {5, BlackmanWindow},
        {6, [&](double* x, int n) { return KaiserWindow(x, n, beta); }}};
    for (const auto& [code, kernel] : codes) {
        for (int n : {2, 7, 16}) {
            SCOPED_TRACE(std::to_string(code) + " n=" + std::to_string(n));
            Vec want(n, 1.0), got(n, 1.0), sym(n, 0.0), periodic(n - 1, 1.0);
            ASSERT_EQ(kernel(want.data(), n), kOk);
            ASSERT_EQ(ApplyFirWindowType(got.data(), n, code, beta), kOk);
            EXPECT_EQ(got, want);
            ASSERT_EQ(SymmetricFirWindow(sym.data(), n, code, beta), kOk);
            ASSERT_EQ(kernel(periodic.data(), n - 1), kOk);
            periodic.push_back(periodic[0]);
            EXPECT_EQ(sym, periodic);
            for (int i = 0; i < n; ++i) EXPECT_NEAR(sym[i], sym[n - 1 - i], 1e-15);
        }
        Vec one{5.0};
        EXPECT_EQ(SymmetricFirWindow(one.data(), 1, code, beta), kErrSamplesBelowOne);
    }
    for (int code : {0, 1, 7, -3}) {
        Vec x = Record(5), sym{0.0};
        EXPECT_EQ(ApplyFirWindowType(x.data(), 5, code, beta), kOk);
        EXPECT_EQ(x, Record(5));
        EXPECT_EQ(SymmetricFirWindow(sym.data(), 1, code, beta), kOk);
        EXPECT_EQ(sym[0], 1.0);
    }
}

}  // namespace
}  // namespace vn
