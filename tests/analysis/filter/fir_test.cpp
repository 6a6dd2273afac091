// FIR designs. Windowed and Kaiser designs against the closed form: the
// ideal impulse response written out with std::sin, times the window
// written out from its formula (std::cyl_bessel_i for the Kaiser window).
// Equiripple designs against the alternation theorem: on a fine grid,
// independent of the design grid, the weighted error peaks at |delta| in
// every band, never exceeds it by more than the grid's resolution allows,
// and alternates in sign at least r + 1 times.
#include "analysis/filter/fir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
constexpr double kPi = 3.14159265358979323846;

// Ideal response at t = i - (n-1)/2 (type 0..3, frequencies over fs).
double Ideal(int type, double fl, double fh, int n, int i) {
    const double t = i - (n - 1) / 2.0;
    const double wl = 2 * kPi * fl, wh = 2 * kPi * fh;
    if (t == 0) {
        switch (type) {
            case 0: return 2 * fl;
            case 1: return 1 - 2 * fl;
            case 2: return 2 * (fh - fl);
            default: return 1 - 2 * (fh - fl);
        }
    }
    switch (type) {
        case 0: return std::sin(wl * t) / (kPi * t);
        case 1: return -std::sin(wl * t) / (kPi * t);
        case 2: return (std::sin(wh * t) - std::sin(wl * t)) / (kPi * t);
        default: return (std::sin(wl * t) - std::sin(wh * t)) / (kPi * t);
    }
}

// The symmetric window: the periodic window of m = n - 1 points, closed by
// repeating its first value.
double Window(int code, double beta, int n, int i) {
    const int m = n - 1;
    if (i == n - 1) i = 0;
    const double th = 2 * kPi * i / m;
    switch (code) {
        case 2: return double(std::min(i, m - i)) / (m / 2);
        case 3: return std::sin(kPi * i / m) * std::sin(kPi * i / m);
        case 4: return 0.54 - 0.46 * std::cos(th);
        case 5: return 0.42 - 0.5 * std::cos(th) + 0.08 * std::cos(2 * th);
        case 6: {
            const double u = 1 - 2.0 * i / m;
            return std::cyl_bessel_i(0.0, beta * std::sqrt(std::max(0.0, 1 - u * u))) / std::cyl_bessel_i(0.0, beta);
        }
        default: return 1.0;
    }
}

struct WindCase {
    int type, n, code;  // code 6 = Kaiser design
    double fs, fl, fh, beta;
};

TEST(FirWindowed, MatchesIdealTimesWindow) {
    const WindCase cases[] = {
        {0, 31, 4, 1000, 100, 0, 0},    {0, 32, 3, 2, 0.3, 0, 0},     {0, 64, 5, 1, 0.25, 0, 0},
        {0, 7, 1, 10, 2.5, 0, 0},       {0, 2, 1, 1, 0.1, 0, 0},      {1, 41, 2, 1000, 200, 0, 0},
        {1, 101, 5, 48000, 6000, 0, 0}, {2, 50, 4, 1000, 100, 250, 0}, {2, 33, 3, 1, 0.1, 0.5, 0},
        {3, 45, 2, 1000, 120, 300, 0},  {3, 3, 5, 8, 1, 3, 0},        {0, 51, 6, 1000, 150, 0, 5.0},
        {1, 51, 6, 1000, 150, 0, 8.6},  {2, 64, 6, 1, 0.2, 0.3, 2.0}, {3, 63, 6, 1, 0.2, 0.3, 0.0},
        {0, 255, 6, 1, 0.45, 0, 12.0},  {0, 9, 5, 1, 0.5, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("type " + std::to_string(c.type) + " n " + std::to_string(c.n) + " code " +
                     std::to_string(c.code));
        Vec h(c.n, 99.0);
        const AnalysisStatus st = c.code == 6 ? KaiserFirDesign(c.type, c.fs, c.fl, c.fh, c.n, c.beta, h.data())
                                              : WindowedFirDesign(c.type, c.fs, c.fl, c.fh, c.n, c.code, h.data());
        ASSERT_EQ(st, 0);
        for (int i = 0; i < c.n; ++i) {
            const double ref = Ideal(c.type, c.fl / c.fs, c.fh / c.fs, c.n, i) * Window(c.code, c.beta, c.n, i);
            EXPECT_NEAR(h[i], ref, 1e-12 + 1e-9 * std::fabs(ref)) << "tap " << i;
        }
        EXPECT_EQ(h.front(), h.back());
    }
}

TEST(FirWindowed, EquivalentArguments) {
    Vec a(41), b(41);
    // Codes outside 1..5 are Hamming.
    ASSERT_EQ(WindowedFirDesign(0, 1, 0.2, 0, 41, 4, a.data()), 0);
    for (int code : {0, 6, 99, -3}) {
        ASSERT_EQ(WindowedFirDesign(0, 1, 0.2, 0, 41, code, b.data()), 0);
        EXPECT_EQ(a, b) << code;
    }
    // A negative (or NaN) beta is 4.5; beta 0 is the rectangular window.
    ASSERT_EQ(KaiserFirDesign(2, 1, 0.1, 0.3, 41, 4.5, a.data()), 0);
    for (double beta : {-1.0, std::nan("")}) {
        ASSERT_EQ(KaiserFirDesign(2, 1, 0.1, 0.3, 41, beta, b.data()), 0);
        EXPECT_EQ(a, b);
    }
    ASSERT_EQ(KaiserFirDesign(3, 1, 0.1, 0.3, 41, 0.0, a.data()), 0);
    ASSERT_EQ(WindowedFirDesign(3, 1, 0.1, 0.3, 41, 1, b.data()), 0);
    EXPECT_EQ(a, b);
    // n = 1 with no window: the single tap 2 fc/fs.
    ASSERT_EQ(WindowedFirDesign(0, 1000, 100, 0, 1, 1, a.data()), 0);
    EXPECT_DOUBLE_EQ(a[0], 0.2);
}

TEST(FirWindowed, ChecksInOrder) {
    struct E {
        int type;
        double fs, fl, fh;
        int n, code;
        bool kaiser;
        AnalysisStatus want;
    };
    const E cases[] = {
        {4, 1, 0.1, 0.2, 0, 4, false, -20061},   // type before n
        {-1, 1, 0.1, 0.2, 11, 4, true, -20061},
        {0, 1, 0.1, 0, 0, 4, false, -20021},     // n before frequencies
        {0, 1, 0.6, 0, 11, 4, false, -20020},
        {0, 0, 0.1, 0, 11, 4, false, -20020},    // fs = 0, fc > 0: the fs/2 test comes first
        {0, 1, 0.0, 0, 11, 4, false, -20023},
        {0, -1, -1, 0, 11, 4, false, -20023},
        {1, 1, 0.5, 0, 11, 4, false, 0},         // fs/2 itself is accepted
        {1, 1, 0.1, 0, 10, 4, true, -20033},
        {3, 1, 0.1, 0.2, 10, 4, false, -20033},
        {1, 1, 0.0, 0, 10, 4, false, -20023},    // band test before parity
        {2, 1, 0.1, 0.6, 11, 4, false, -20020},
        {2, 1, 0.2, 0.2, 11, 4, false, -20023},
        {2, 1, 0.0, 0.2, 11, 4, false, -20023},
        {2, 1, 0.1, 0.2, 10, 4, false, 0},       // bandpass takes an even n
        {0, 1, 0.1, 0, 1, 5, false, -20003},     // the window needs 0 points
        {0, 1, 0.1, 0, 1, 1, true, -20003},      // the Kaiser window too
        {0, 1, std::nan(""), 0, 11, 4, false, -20023},
    };
    for (const auto& c : cases) {
        Vec h(std::max(c.n, 1), 7.0);
        const AnalysisStatus st = c.kaiser ? KaiserFirDesign(c.type, c.fs, c.fl, c.fh, c.n, 3.0, h.data())
                                           : WindowedFirDesign(c.type, c.fs, c.fl, c.fh, c.n, c.code, h.data());
        EXPECT_EQ(st, c.want) << "type " << c.type << " fs " << c.fs << " fl " << c.fl << " fh " << c.fh << " n "
                              << c.n;
        if (c.want < 0 && c.want != -20003) {
            EXPECT_EQ(h[0], 7.0);
        }
    }
}

// ---- Equiripple ---------------------------------------------------------

struct Design {
    const char* name;
    int ftype, n;
    Vec edges, desired, weights;  // edges over fs = 1
};

// Amplitude A(f) with H(f) = e^{-j w (n-1)/2} A(f) (symmetric) or
// j e^{-j w (n-1)/2} A(f) (antisymmetric), from the taps by a direct sum.
double Amplitude(const Vec& h, bool anti, double f) {
    const int n = int(h.size());
    const double c = (n - 1) / 2.0;
    // exp(j (c - i) theta) by rotation: ~1e-13 drift over 1000 taps.
    const double theta = 2 * kPi * f;
    std::complex<double> z = std::polar(1.0, c * theta);
    const std::complex<double> step = std::polar(1.0, -theta);
    double s = 0;
    for (int i = 0; i < n; ++i, z *= step) s += h[i] * (anti ? z.imag() : z.real());
    return s;
}

TEST(FirEquiRipple, AlternationTheorem) {
    const Design designs[] = {
        {"LP31", 1, 31, {0, 0.2, 0.25, 0.5}, {1, 0}, {1, 1}},
        {"LP32", 1, 32, {0, 0.2, 0.25, 0.5}, {1, 0}, {1, 1}},
        {"LP weighted", 1, 45, {0, 0.1, 0.15, 0.5}, {1, 0}, {1, 10}},
        {"HP51", 1, 51, {0, 0.2, 0.24, 0.5}, {0, 1}, {1, 1}},
        {"BP61", 1, 61, {0, 0.1, 0.15, 0.3, 0.35, 0.5}, {0, 1, 0}, {1, 1, 1}},
        {"BS41", 1, 41, {0, 0.1, 0.18, 0.3, 0.38, 0.5}, {1, 0, 1}, {1, 1, 1}},
        {"BP even", 1, 60, {0, 0.1, 0.15, 0.3, 0.35, 0.5}, {0, 1, 0}, {2, 1, 3}},
        {"multiband", 1, 81, {0, 0.05, 0.08, 0.15, 0.18, 0.3, 0.33, 0.5}, {0, 1, 0.5, 0}, {5, 1, 2, 5}},
        {"short", 1, 3, {0, 0.1, 0.3, 0.5}, {1, 0}, {1, 1}},
        {"LP255", 1, 255, {0, 0.1, 0.11, 0.5}, {1, 0}, {1, 1}},
        {"LP1017", 1, 1017, {0, 0.25, 0.252, 0.5}, {1, 0}, {1, 1}},
        {"LP1016", 1, 1016, {0, 0.1, 0.102, 0.5}, {1, 0}, {1, 1}},
        {"diff odd", 2, 31, {0, 0.4}, {1}, {1}},
        {"diff even", 2, 32, {0, 0.5}, {1}, {1}},
        {"Hilbert odd", 3, 31, {0.05, 0.45}, {1}, {1}},
        {"Hilbert even", 3, 30, {0.05, 0.5}, {1}, {1}},
    };
    for (const auto& d : designs) {
        SCOPED_TRACE(d.name);
        const bool anti = d.ftype != 1;
        const int nb = int(d.desired.size());
        const int r = d.n / 2 + ((d.n % 2 && d.ftype == 1) ? 1 : 0);
        Vec h(d.n, 0.0);
        double delta = 0;
        ASSERT_EQ(EquiRippleDesign(nb, d.desired.data(), d.weights.data(), 1.0, d.edges.data(), d.ftype, d.n,
                                   h.data(), &delta, 100),
                  0);
        const double level = std::fabs(delta);
        ASSERT_GT(level, 0);
        for (int i = 0; i < d.n; ++i) ASSERT_NEAR(h[i], anti ? -h[d.n - 1 - i] : h[d.n - 1 - i], 1e-15);
        // Weighted error on a grid 8 times finer than the design grid.
        const double step = 0.5 / (16.0 * r * 8);
        std::vector<double> ext;  // signed error at the alternation points
        int prev_sign = 0;
        for (int b = 0; b < nb; ++b) {
            double lo = d.edges[2 * b], hi = d.edges[2 * b + 1];
            // The shapes' forced zeros: the error there is not controllable,
            // and the design moves such an edge one grid step inwards.
            const double grid = 0.5 / (16.0 * r);
            if (anti && lo < grid) lo = grid;
            if (((anti && d.n % 2) || (!anti && d.n % 2 == 0)) && hi > 0.5 - grid) hi = 0.5 - grid;
            const int m = std::max(1, int(std::ceil((hi - lo) / step)));
            double band_peak = 0;
            for (int j = 0; j <= m; ++j) {
                const double f = lo + (hi - lo) * j / m;
                double want = d.desired[b], w = d.weights[b];
                if (d.ftype == 2) want *= f, w /= f;
                const double e = w * (want - Amplitude(h, anti, f));
                band_peak = std::max(band_peak, std::fabs(e));
                // Count sign changes among points at the peak level.
                if (std::fabs(e) >= level * (1 - 1e-3)) {
                    const int s = e > 0 ? 1 : -1;
                    if (s != prev_sign) ext.push_back(e), prev_sign = s;
                }
            }
            // Between the points of the design grid (density 16) the error
            // may overshoot delta by a few per cent near a band edge.
            EXPECT_LE(band_peak, level * 1.03) << "band " << b;
            EXPECT_GE(band_peak, level * (1 - 1e-3)) << "band " << b;
        }
        EXPECT_GE(int(ext.size()), r + 1);
    }
}

TEST(FirEquiRipple, KnownExactCases) {
    // One band asking a constant: P is that constant, delta 0, centre tap 1.
    const double e[] = {0, 0.5}, one[] = {1}, w[] = {1};
    Vec h(21, 5.0);
    double delta = 9;
    ASSERT_EQ(EquiRippleDesign(1, one, w, 1.0, e, 1, 21, h.data(), &delta, 100), 0);
    EXPECT_NEAR(delta, 0, 1e-14);
    for (int i = 0; i < 21; ++i) EXPECT_NEAR(h[i], i == 10 ? 1.0 : 0.0, 1e-13);
    // Same design in another unit: only f/fs matters.
    const Vec e1 = {0, 100, 150, 500}, e2 = {0, 0.1, 0.15, 0.5};
    const double des[] = {1, 0}, wts[] = {1, 1};
    Vec h1(25), h2(25);
    double d1, d2;
    ASSERT_EQ(EquiRippleDesign(2, des, wts, 1000, e1.data(), 1, 25, h1.data(), &d1, 0), 0);
    ASSERT_EQ(EquiRippleDesign(2, des, wts, 1, e2.data(), 1, 25, h2.data(), &d2, 0), 0);
    for (int i = 0; i < 25; ++i) EXPECT_NEAR(h1[i], h2[i], 1e-12);
    EXPECT_NEAR(d1, d2, 1e-12);
}

TEST(FirEquiRipple, ChecksInOrder) {
    struct E {
        const char* what;
        int nb, ftype, n;
        double fs;
        Vec edges, desired, weights;
        AnalysisStatus want;
    };
    const Vec lp = {0, 0.2, 0.3, 0.5};
    const E cases[] = {
        {"n < 3 first", 0, 9, 2, -1, lp, {1, 0}, {1, 1}, -20031},
        {"bands", 0, 1, 11, 1, lp, {1, 0}, {1, 1}, -20003},
        {"fs", 2, 1, 11, 0, lp, {1, 0}, {1, 1}, -20023},
        {"negative edge", 2, 1, 11, 1, {-0.1, 0.2, 0.3, 0.5}, {1, 0}, {1, 1}, -20023},
        {"weight", 2, 1, 11, 1, lp, {1, 0}, {1, 0}, -20023},
        {"desired", 2, 1, 11, 1, lp, {1, -1}, {1, 1}, -20023},
        {"above fs/2", 2, 1, 11, 1, {0, 0.2, 0.3, 0.6}, {1, 0}, {1, 1}, -20020},
        {"infinite fs and edge", 2, 1, 11, HUGE_VAL, {0, 0.2, 0.3, HUGE_VAL}, {1, 0}, {1, 1}, -20020},
        {"increasing", 2, 1, 11, 1, {0, 0.3, 0.3, 0.5}, {1, 0}, {1, 1}, -20023},
        {"ftype 1 start", 2, 1, 11, 1, {0.01, 0.2, 0.3, 0.5}, {1, 0}, {1, 1}, -20031},
        {"ftype 1 end", 2, 1, 11, 1, {0, 0.2, 0.3, 0.49}, {1, 0}, {1, 1}, -20031},
        {"ftype 1 end tolerance", 2, 1, 11, 1, {0, 0.2, 0.3, 0.4995}, {1, 0}, {1, 1}, 0},
        {"ftype 1 even n", 2, 1, 12, 1, lp, {0, 1}, {1, 1}, -20033},
        {"ftype 2 start", 1, 2, 11, 1, {0.1, 0.4}, {1}, {1}, -20031},
        {"ftype 2 odd end", 1, 2, 11, 1, {0, 0.495}, {1}, {1}, -20031},
        {"ftype 2 even end", 1, 2, 12, 1, {0, 0.45}, {1}, {1}, -20031},
        {"ftype 3 start", 1, 3, 11, 1, {0, 0.4}, {1}, {1}, -20031},
        {"ftype 3 odd end", 1, 3, 11, 1, {0.1, 0.4995}, {1}, {1}, -20031},
        {"ftype 3 even end", 1, 3, 12, 1, {0.1, 0.45}, {1}, {1}, -20031},
        {"ftype", 2, 4, 11, 1, lp, {1, 0}, {1, 1}, -20061},
        {"capacity", 2, 1, 1019, 1, lp, {1, 0}, {1, 1}, -20001},
        {"largest", 2, 1, 1017, 1, {0, 0.25, 0.252, 0.5}, {1, 0}, {1, 1}, 0},
        {"grid too coarse", 2, 1, 101, 1, {0, 1e-4, 0.4999, 0.5}, {1, 0}, {1, 1}, -20031},
    };
    for (const auto& c : cases) {
        Vec h(std::max(c.n, 1), 3.0);
        double delta = 3.0;
        const AnalysisStatus st = EquiRippleDesign(c.nb, c.desired.data(), c.weights.data(), c.fs, c.edges.data(),
                                                   c.ftype, c.n, h.data(), &delta, 100);
        EXPECT_EQ(st, c.want) << c.what;
        if (st < 0) {
            EXPECT_EQ(delta, 3.0) << c.what;
        }
    }
}

// A deviation far below what double precision resolves (about 190 dB):
// the exchange must stop within its limit with an error, never hand back
// taps built from rounding noise.
TEST(FirEquiRipple, BeyondPrecisionFailsCleanly) {
    const double e[] = {0, 0.2, 0.25, 0.5}, des[] = {1, 0}, w[] = {1, 1};
    Vec h(255, 4.0);
    double delta = 4.0;
    const AnalysisStatus st = EquiRippleDesign(2, des, w, 1.0, e, 1, 255, h.data(), &delta, 100);
    EXPECT_TRUE(st == -20062 || st == -20031) << st;
    EXPECT_EQ(delta, 4.0);
    EXPECT_EQ(h, Vec(255, 4.0));
}

}  // namespace
}  // namespace vn
