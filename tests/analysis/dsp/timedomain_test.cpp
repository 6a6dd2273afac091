// Time-domain operations against references written here: the convolution
// and correlation loop nests (bit for bit, on every vector engine),
// deconvolution undoing a convolution, Simpson and central differences on
// polynomials they reproduce exactly, unwrapping of a wrapped ramp, and a
// synthetic pulse with known levels and edges.
#include "analysis/dsp/timedomain.h"

#include "analysis/dsp/fft_internal.h"
#include "analysis/dsp/timedomain_internal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
using fft_internal::Engine;

Vec Signal(int n, double seed) {
    Vec v(n);
    for (int i = 0; i < n; ++i) v[i] = std::sin(seed * (i + 1)) + 0.3 * std::cos(2.1 * seed * i);
    return v;
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The defining loop nests.
Vec NaiveConvolve(const Vec& x, const Vec& y) {
    Vec out(x.size() + y.size() - 1, 0.0);
    for (std::size_t i = 0; i < x.size(); ++i)
        for (std::size_t j = 0; j < y.size(); ++j) out[i + j] += y[j] * x[i];
    return out;
}
Vec NaiveCorrelate(const Vec& x, const Vec& y) {
    const std::size_t nx = x.size();
    Vec out(nx + y.size() - 1, 0.0);
    for (std::size_t j = 0; j < y.size(); ++j)
        for (std::size_t k = 0; k < nx; ++k) out[j + k] += x[nx - 1 - k] * y[j];
    return out;
}

TEST(TimeDomain, DirectSumsMatchTheLoopNestOnEveryEngine) {
    const std::pair<int, int> sizes[] = {{1, 1}, {2, 3}, {3, 2}, {7, 1}, {1, 9},   {31, 33},
                                         {64, 64}, {65, 7}, {100, 17}, {5, 130}, {300, 64}};
    for (Engine e : {Engine::kBaseline, Engine::kAvx2, Engine::kAvx512}) {
        if (!fft_internal::EngineAvailable(e)) continue;
        for (auto [nx, ny] : sizes) {
            for (int special = 0; special < 3; ++special) {
                SCOPED_TRACE("engine " + std::to_string(int(e)) + " nx=" + std::to_string(nx) +
                             " ny=" + std::to_string(ny) + " special " + std::to_string(special));
                Vec x = Signal(nx, 0.37), y = Signal(ny, 1.11);
                // Signed zeros, and non-finite values, which take the loop nest.
                if (special == 1) x[nx / 2] = -0.0, y[0] = -0.0;
                if (special == 2) x[nx - 1] = INFINITY, y[ny / 2] = NAN;
                const Vec c = NaiveConvolve(x, y), r = NaiveCorrelate(x, y);
                Vec got(nx + ny - 1, 99.0);
                ASSERT_EQ(timedomain_internal::Convolve(e, x.data(), nx, y.data(), ny, got.data()), kOk);
                for (std::size_t m = 0; m < c.size(); ++m) EXPECT_TRUE(SameBits(got[m], c[m])) << m;
                ASSERT_EQ(timedomain_internal::Correlate(e, x.data(), nx, y.data(), ny, got.data()), kOk);
                for (std::size_t m = 0; m < r.size(); ++m) EXPECT_TRUE(SameBits(got[m], r[m])) << m;
            }
        }
    }
    Vec out(4);
    const Vec x{1, 2}, y{1, 1, 1};
    ASSERT_EQ(ConvolveDirect(x.data(), 2, y.data(), 3, out.data()), kOk);
    EXPECT_EQ(out, (Vec{1, 3, 3, 2}));
    ASSERT_EQ(CorrelateDirect(x.data(), 2, y.data(), 3, out.data()), kOk);
    EXPECT_EQ(out, (Vec{2, 3, 3, 1}));  // lag 0 at index nx - 1 = 1
    EXPECT_EQ(ConvolveDirect(x.data(), 0, y.data(), 3, out.data()), kErrSamplesBelowOne);
    EXPECT_EQ(CorrelateDirect(x.data(), 2, y.data(), 0, out.data()), kErrSamplesBelowOne);
}

TEST(TimeDomain, DeconvolveUndoesConvolve) {
    const std::pair<int, int> sizes[] = {{1, 1}, {1, 5}, {2, 3}, {5, 12}, {8, 9}, {30, 100}};
    for (auto [nx, nh] : sizes) {
        SCOPED_TRACE(std::to_string(nx) + " " + std::to_string(nh));
        Vec x = Signal(nx, 0.9), h = Signal(nh, 0.23);
        x[0] += 3;  // keeps the transform of x away from zero
        const Vec y = NaiveConvolve(x, h);
        Vec got(nh, 99.0);
        ASSERT_EQ(DeconvolveFFT(y.data(), int(y.size()), x.data(), nx, got.data()), kOk);
        for (int i = 0; i < nh; ++i) EXPECT_NEAR(got[i], h[i], 1e-12) << i;
    }
    Vec out(3, 99.0);
    const Vec y{1, 3, 3, 2}, x{1, 2};
    ASSERT_EQ(DeconvolveFFT(y.data(), 4, x.data(), 2, out.data()), kOk);
    for (double v : out) EXPECT_NEAR(v, 1.0, 1e-15);
    // One point: bin 0 is also bin N/2 and is divided once.
    const Vec six{6}, two{2};
    ASSERT_EQ(DeconvolveFFT(six.data(), 1, two.data(), 1, out.data()), kOk);
    EXPECT_EQ(out[0], 3.0);
    // nx = ny + 1 with ny a power of two: empty result, nothing written.
    const Vec five(5, 1.0);
    out.assign(3, 99.0);
    EXPECT_EQ(DeconvolveFFT(y.data(), 4, five.data(), 5, out.data()), kOk);
    EXPECT_EQ(out, Vec(3, 99.0));
    EXPECT_EQ(DeconvolveFFT(y.data(), 4, Vec(6, 1.0).data(), 6, out.data()), kErrWrongCount);
    EXPECT_EQ(DeconvolveFFT(y.data(), 0, x.data(), 2, out.data()), kErrSamplesBelowOne);
    EXPECT_EQ(DeconvolveFFT(y.data(), 4, x.data(), 0, out.data()), kErrSamplesBelowOne);
}

// Simpson's weights reproduce a straight line, (x[i-1] + 4x[i] + x[i+1])/6 =
// x[i], so the running integral of a + b t is dt * (sum of samples so far);
// central differences of t^2 give 2t exactly.
TEST(TimeDomain, IntegrateAndDifference) {
    const double dt = 0.25, a = 1.5, b = -0.75;
    const int n = 12;
    Vec line(n), square(n), sum(n), deriv(n);
    double s = 0;
    for (int i = 0; i < n; ++i) {
        const double t = i * dt;
        line[i] = a + b * t, square[i] = t * t, s += line[i], sum[i] = dt * s, deriv[i] = 2 * t;
    }
    Vec out(n);
    ASSERT_EQ(IntegrateSimpson(line.data(), n, dt, a - b * dt, a + b * n * dt, out.data()), kOk);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(out[i], sum[i], 1e-13) << i;
    ASSERT_EQ(DifferenceCentral(square.data(), n, dt, dt * dt, n * n * dt * dt, out.data()), kOk);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(out[i], deriv[i], 1e-13) << i;

    const Vec ones(4, 1.0);
    ASSERT_EQ(IntegrateSimpson(ones.data(), 4, 1.0, 1.0, 1.0, out.data()), kOk);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(out[i], i + 1, 1e-15);
    const Vec one{2.0};
    ASSERT_EQ(IntegrateSimpson(one.data(), 1, 6.0, 1.0, 3.0, out.data()), kOk);
    EXPECT_NEAR(out[0], 12.0, 1e-14);  // (1 + 4*2 + 3) * 6/6
    const Vec ramp{0, 1, 2, 3};
    ASSERT_EQ(DifferenceCentral(ramp.data(), 4, 1.0, -1.0, 4.0, out.data()), kOk);
    EXPECT_EQ(Vec(out.begin(), out.begin() + 4), Vec(4, 1.0));

    for (double bad : {0.0, -1.0, double(NAN)}) {
        EXPECT_EQ(IntegrateSimpson(ones.data(), 4, bad, 0, 0, out.data()), kErrDtNotPositive);
        EXPECT_EQ(DifferenceCentral(ones.data(), 4, bad, 0, 0, out.data()), kErrDtNotPositive);
    }
    EXPECT_EQ(IntegrateSimpson(ones.data(), 0, -1.0, 0, 0, out.data()), kErrSamplesBelowOne);
    EXPECT_EQ(DifferenceCentral(ones.data(), 0, 1.0, 0, 0, out.data()), kErrSamplesBelowOne);
}

TEST(TimeDomain, Decimate) {
    struct Row {
        int n, d;
        bool average;
        Vec want;
    };
    // x[i] = i: block means are the block centres; the last, short block is
    // the mean of the samples it has.
    const std::vector<Row> rows = {
        {10, 3, false, {0, 3, 6, 9}},  {10, 3, true, {1, 4, 7, 9}}, {10, 5, true, {2, 7}},
        {10, 10, true, {4.5}},         {10, 1, false, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
        {7, 4, true, {1.5, 5}},        {1, 1, true, {0}},
    };
    for (const Row& r : rows) {
        Vec x(r.n);
        for (int i = 0; i < r.n; ++i) x[i] = i;
        ASSERT_EQ(DecimatedLength(r.n, r.d), int(r.want.size()));
        Vec out(r.want.size());
        ASSERT_EQ(DecimateCore(x.data(), r.n, r.d, r.average, out.data()), kOk);
        EXPECT_EQ(out, r.want) << r.n << " " << r.d;
    }
    Vec x(4, 1.0), out(4);
    EXPECT_EQ(DecimateCore(x.data(), 4, 0, false, out.data()), kErrDecimatingFactor);
    EXPECT_EQ(DecimateCore(x.data(), 4, 5, true, out.data()), kErrDecimatingFactor);
    EXPECT_EQ(DecimateCore(x.data(), 0, 1, false, out.data()), kErrSamplesBelowOne);
    EXPECT_EQ(DecimatedLength(4, 5), 0);
    EXPECT_EQ(DecimatedLength(2147483647, 2), 1073741824);
}

TEST(TimeDomain, Unwrap) {
    const double twoPi = 6.283185307179586;
    // A steep phase ramp wrapped into (-pi, pi] comes back (steps below pi).
    const int n = 200;
    Vec ramp(n), p(n);
    for (int i = 0; i < n; ++i) ramp[i] = 0.3 - 2.9 * i, p[i] = std::remainder(ramp[i], twoPi);
    ASSERT_EQ(UnwrapPhase(p.data(), n), kOk);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(p[i], ramp[i], 1e-10) << i;

    struct Row {
        Vec in, want;
    };
    const std::vector<Row> rows = {
        {{0, 3.5}, {0, 3.5}},                        // two samples are left alone
        {{5.0}, {5.0}},
        {{0, 3.5, 0}, {0, 3.5 - twoPi, 0}},          // corrected, then corrected back
        {{0, 10, 10}, {0, 10 - twoPi, 10 - twoPi}},  // a jump above 3 pi: one 2 pi only
        {{1, -1, 2.1}, {1, -1, 2.1}},            // steps below pi
    };
    for (const Row& r : rows) {
        Vec q = r.in;
        ASSERT_EQ(UnwrapPhase(q.data(), int(q.size())), kOk);
        for (std::size_t i = 0; i < q.size(); ++i) EXPECT_NEAR(q[i], r.want[i], 1e-15) << i;
    }
    EXPECT_EQ(UnwrapPhase(p.data(), 0), kErrSamplesBelowOne);
}

// A trapezoid from 1 to 3 with overshoot and undershoot spikes: levels are
// the centres of the histogram bins holding 1 and 3 (25 bins over
// [min, max]); the 10/50/90 % crossings are read off the ramp.
TEST(TimeDomain, PulseParameters) {
    const double low = 1, high = 3, lo = 0.6, hi = 3.5;  // min and max of the record
    Vec x;
    for (int i = 0; i < 20; ++i) x.push_back(low);
    x[3] = lo;
    for (int k = 1; k <= 4; ++k) x.push_back(low + (high - low) * k / 5.0);  // 1.4 .. 2.6
    for (int i = 0; i < 30; ++i) x.push_back(high);
    x[30] = hi;
    for (int k = 4; k >= 1; --k) x.push_back(low + (high - low) * k / 5.0);
    for (int i = 0; i < 20; ++i) x.push_back(low);

    const double w = (hi - lo) / 25;
    const double base = lo + (std::floor((low - lo) / w) + 0.5) * w;
    const double top = lo + (std::floor((high - lo) / w) + 0.5) * w;
    const double amp = top - base;
    PulseParameters p;
    ASSERT_EQ(PulseParamCore(x.data(), int(x.size()), &p), kOk);
    const double got[] = {p.base, p.top, p.amp, p.amp10, p.amp50, p.amp90, p.top_overshoot, p.base_overshoot};
    const double want[] = {base, top, amp, 0.1 * amp, 0.5 * amp, 0.9 * amp, hi - top, base - lo};
    for (int k = 0; k < 8; ++k) EXPECT_NEAR(got[k], want[k], 1e-12) << k;
    // L10 ~ 1.20, L50 ~ 1.99, L90 ~ 2.78 (base 1.006, top 2.978): the ramp
    // 1.4, 1.8, 2.2, 2.6 starts at index 20; last low sample 19, 50 % at 22,
    // 90 % reached at 24 (the top); the top ends at 54 + 2 (2.2 > L50), the
    // last sample above 90 % is 53, and the fall ends at 54 + 4.
    EXPECT_EQ(p.delay, 22);
    EXPECT_EQ(p.rise_time, 24 - 19);
    EXPECT_EQ(p.width, 56 - 22);
    EXPECT_EQ(p.fall_time, 58 - 53);
    EXPECT_NEAR(p.slew_rate, 0.8 * amp / 5, 1e-12);

    struct Row {
        const char* name;
        Vec x;
        int delay, width, rise, fall;
        double slew;  // in units of amp; NaN: the 1e30 sentinel
    };
    const std::vector<Row> rows = {
        {"clean rectangle", {0, 0, 1, 1, 1, 0, 0}, 2, 3, 1, 1, 0.8},
        {"starts high", {1, 1, 1, 0, 0}, 0, 3, 0, 1, NAN},
        {"no fall", {0, 0, 1, 1}, 2, 2, 1, 1, 0.8},
        {"step down only", {1, 0, 0, 0}, 0, 1, 0, 1, NAN},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        ASSERT_EQ(PulseParamCore(r.x.data(), int(r.x.size()), &p), kOk);
        EXPECT_EQ(p.delay, r.delay);
        EXPECT_EQ(p.width, r.width);
        EXPECT_EQ(p.rise_time, r.rise);
        EXPECT_EQ(p.fall_time, r.fall);
        if (std::isnan(r.slew))
            EXPECT_EQ(p.slew_rate, 1e30);
        else
            EXPECT_NEAR(p.slew_rate, r.slew * p.amp, 1e-15);
    }
    // A flat record: no pulse, levels at its value, slew rate 0.
    const Vec flat(6, 2.5);
    ASSERT_EQ(PulseParamCore(flat.data(), 6, &p), kOk);
    EXPECT_TRUE(p.top == 2.5 && p.base == 2.5 && p.amp == 0 && p.top_overshoot == 0 && p.slew_rate == 0);
    EXPECT_EQ(p.delay + p.width + p.rise_time + p.fall_time, 0);
    EXPECT_EQ(PulseParamCore(flat.data(), 0, &p), kErrSamplesBelowOne);
}

}  // namespace
}  // namespace vn
