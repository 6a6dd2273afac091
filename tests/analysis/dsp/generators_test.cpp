// Generators against values re-derived here: closed forms, recurrences
// written out independently, and the combined congruential noise generator
// re-implemented with 64-bit arithmetic and explicit 32-bit wrap-around.
#include "analysis/dsp/generators.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;

// ---------------------------------------------------------------------------
// Reference noise generator.

struct RefNoise {
    std::int64_t s1 = 1234, s2 = 2345, s3 = 3456;

    static std::int64_t Wrap32(std::int64_t v) {
        v %= 4294967296LL;
        if (v >= 2147483648LL) v -= 4294967296LL;
        if (v < -2147483648LL) v += 4294967296LL;
        return v;
    }
    void Reseed(std::int64_t seed) {
        s1 = seed == 0 ? 32767 : seed;
        s2 = Wrap32(s1 * 8191) & 16383;
        s3 = Wrap32(s2 * 8191) & 16383;
    }
    int Next() {
        s1 = Wrap32(171 * s1) % 30269;  // % truncates toward zero, as in C
        s2 = Wrap32(172 * s2) % 30307;
        s3 = Wrap32(170 * s3) % 30323;
        const double r = static_cast<double>(s2) * 3.2995677566238825e-5 +
                         static_cast<double>(s1) * 3.3037100664045725e-5 +
                         static_cast<double>(s3) * 3.297826732183491e-5;
        return static_cast<int>((r - std::trunc(r)) * 32768.0);
    }
};

class Noise : public ::testing::Test {
protected:
    void SetUp() override { ResetNoiseGenerator(); }
    void TearDown() override { ResetNoiseGenerator(); }
};

TEST_F(Noise, LoadTimeStateAndContinuation) {
    RefNoise ref;
    Vec x(50);
    ASSERT_EQ(UniformNoise(50, -1, x.data()), kOk);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(x[i], ref.Next() * 3.051850947599719e-5) << i;
    // A second call with seed -1 continues the same sequence.
    ASSERT_EQ(UniformNoise(10, -1, x.data()), kOk);
    for (int i = 0; i < 10; ++i) EXPECT_EQ(x[i], ref.Next() * 3.051850947599719e-5) << i;
}

TEST_F(Noise, SharedStateAcrossTheThreeKernels) {
    RefNoise ref;
    ref.Reseed(42);
    Vec u(5), g(3), w(4);
    ASSERT_EQ(UniformNoise(5, 42, u.data()), kOk);
    ASSERT_EQ(GaussNoiseGen(3, 2.5, -1, g.data()), kOk);
    ASSERT_EQ(WhiteNoiseGen(4, 0.75, -7, w.data()), kOk);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(u[i], ref.Next() * 3.051850947599719e-5);
    for (int i = 0; i < 3; ++i) {
        int sum = 0;
        for (int k = 0; k < 12; ++k) sum += ref.Next();
        EXPECT_EQ(g[i], (sum - 196596) * (2.5 * 3.0517578125e-5));
    }
    for (int i = 0; i < 4; ++i) EXPECT_EQ(w[i], (ref.Next() - 16383) * (0.75 * 6.103515625e-5));
}

TEST_F(Noise, SeedsAndReseeding) {
    struct Row {
        std::int32_t seed;
        const char* why;
    };
    const Row rows[] = {
        {0, "zero means 32767"},
        {1, "smallest"},
        {16384, "s2 and s3 masked to zero for good"},
        {12558383, "largest seed without overflow"},
        {12558384, "smallest seed that overflows"},
        {1073754169, "first product wraps in 32 bits"},
        {2147483647, "largest"},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(r.why) + " seed=" + std::to_string(r.seed));
        RefNoise ref;
        ref.Reseed(r.seed);
        Vec x(40);
        ASSERT_EQ(WhiteNoiseGen(40, 3.0, r.seed, x.data()), kOk);
        for (int i = 0; i < 40; ++i) EXPECT_EQ(x[i], (ref.Next() - 16383) * (3.0 * 6.103515625e-5)) << i;
    }
    // Seed 0 and seed 32767 give the same sequence.
    Vec a(20), b(20);
    ASSERT_EQ(UniformNoise(20, 0, a.data()), kOk);
    ASSERT_EQ(UniformNoise(20, 32767, b.data()), kOk);
    EXPECT_EQ(a, b);
    // NoiseReseed / NoiseNext directly.
    RefNoise ref;
    ref.Reseed(777);
    NoiseReseed(777);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(NoiseNext(), ref.Next());
}

TEST_F(Noise, RangesOfTheThreeKernels) {
    Vec u(20000), w(20000), g(2000);
    ASSERT_EQ(UniformNoise(20000, 5, u.data()), kOk);
    ASSERT_EQ(WhiteNoiseGen(20000, 2.0, 6, w.data()), kOk);
    ASSERT_EQ(GaussNoiseGen(2000, 1.0, 7, g.data()), kOk);
    for (double v : u) {
        EXPECT_GE(v, 0.0);
        EXPECT_LE(v, 1.0 + 4e-16);  // 32767 times the rounded 1/32767
    }
    for (double v : w) {
        EXPECT_GE(v, -2.0 * 16383.0 / 16384.0);
        EXPECT_LE(v, 2.0);
    }
    for (double v : g) EXPECT_LE(std::fabs(v), 6.0 + 1e-12);
}

TEST_F(Noise, FailingCallLeavesStateAndOutput) {
    Vec x(3, 9.0);
    EXPECT_EQ(UniformNoise(0, 99, x.data()), kErrSamplesBelowOne);
    EXPECT_EQ(WhiteNoiseGen(-1, 1.0, 98, x.data()), kErrSamplesBelowOne);
    EXPECT_EQ(GaussNoiseGen(0, 1.0, 97, x.data()), kErrSamplesBelowOne);
    EXPECT_EQ(x, Vec(3, 9.0));
    RefNoise ref;  // still the load-time state: no reseed happened
    ASSERT_EQ(UniformNoise(3, -1, x.data()), kOk);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(x[i], ref.Next() * 3.051850947599719e-5);
}

// ---------------------------------------------------------------------------
// Argument checks: status, and nothing written (output and phase).

TEST(GeneratorChecks, StatusAndNoWrites) {
    const double table[3] = {1, 2, 3};
    struct Row {
        const char* name;
        std::function<AnalysisStatus(double*, double*)> call;  // (x, phase)
        AnalysisStatus want;
    };
    const Row rows[] = {
        {"Impulse n=0", [](double* x, double*) { return ImpulsePattern(0, 1, 0, x); }, kErrSamplesBelowOne},
        {"Impulse index=n", [](double* x, double*) { return ImpulsePattern(4, 1, 4, x); }, kErrIndexRange},
        {"Impulse index<0", [](double* x, double*) { return ImpulsePattern(4, 1, -1, x); }, kErrIndexRange},
        {"Pulse n=0", [](double* x, double*) { return PulsePattern(0, 1, 0, 0, x); }, kErrSamplesBelowOne},
        {"Pulse delay<0", [](double* x, double*) { return PulsePattern(4, 1, -1, 1, x); }, kErrDelayWidth},
        {"Pulse width<0", [](double* x, double*) { return PulsePattern(4, 1, 1, -1, x); }, kErrDelayWidth},
        {"Pulse delay+width=n+1", [](double* x, double*) { return PulsePattern(4, 1, 2, 3, x); }, kErrDelayWidth},
        {"Pulse huge", [](double* x, double*) { return PulsePattern(4, 1, 2147483647, 2147483647, x); },
         kErrDelayWidth},
        {"Ramp n=1", [](double* x, double*) { return RampPattern(1, 0, 1, x); }, kErrSamplesBelowTwo},
        {"Triangle n=1", [](double* x, double*) { return TrianglePattern(1, 1, x); }, kErrSamplesBelowTwo},
        {"SinePattern n=0", [](double* x, double*) { return SinePatternGen(0, 1, 0, 1, x); }, kErrSamplesBelowOne},
        {"SinePattern cycles>n", [](double* x, double*) { return SinePatternGen(4, 1, 0, 4.5, x); }, kErrCycles},
        {"Chirp n=0", [](double* x, double*) { return ChirpPattern(0, 1, 0, 0.5, x); }, kErrSamplesBelowOne},
        {"Sinc n=0", [](double* x, double*) { return SincPattern(0, 1, 0, 1, x); }, kErrSamplesBelowOne},
        {"Sinc dt=0", [](double* x, double*) { return SincPattern(4, 1, 0, 0, x); }, kErrDtNotPositive},
        {"Sinc dt<0", [](double* x, double*) { return SincPattern(4, 1, 0, -1, x); }, kErrDtNotPositive},
        {"SineWave n=0", [](double* x, double* p) { return SineWaveGen(0, 1, 0.1, p, x); }, kErrSamplesBelowOne},
        {"Sawtooth n=0", [](double* x, double* p) { return SawtoothWaveGen(0, 1, 0.1, p, x); }, kErrSamplesBelowOne},
        {"TriangleWave n=0", [](double* x, double* p) { return TriangleWaveGen(0, 1, 0.1, p, x); },
         kErrSamplesBelowOne},
        {"Square n=-2", [](double* x, double* p) { return SquareWaveGen(-2, 1, 0.1, 50, p, x); },
         kErrSamplesBelowOne},
        {"Arbitrary n=0",
         [&table](double* x, double* p) { return ArbitraryWaveGen(0, 1, 0.1, table, 3, 1, p, x); },
         kErrSamplesBelowOne},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.name);
        Vec x(4, -7.25);
        double phase = 123.5;
        EXPECT_EQ(r.call(x.data(), &phase), r.want);
        EXPECT_EQ(x, Vec(4, -7.25));
        EXPECT_EQ(phase, 123.5);
    }
}

// ---------------------------------------------------------------------------
// Deterministic patterns.

TEST(Patterns, ImpulseAndPulse) {
    Vec x(5, 9.0);
    ASSERT_EQ(ImpulsePattern(5, -2.5, 3, x.data()), kOk);
    EXPECT_EQ(x, (Vec{0, 0, 0, -2.5, 0}));
    struct Row {
        std::int32_t n, delay, width;
        Vec want;
    };
    const Row rows[] = {
        {6, 1, 3, {0, 2, 2, 2, 0, 0}},
        {6, 0, 0, {0, 0, 0, 0, 0, 0}},
        {6, 4, 2, {0, 0, 0, 0, 2, 2}},  // delay + width = n runs to the end
        {6, 0, 6, {2, 2, 2, 2, 2, 2}},
        {1, 0, 1, {2}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(std::to_string(r.delay) + "+" + std::to_string(r.width));
        Vec y(r.n, 9.0);
        ASSERT_EQ(PulsePattern(r.n, 2.0, r.delay, r.width, y.data()), kOk);
        EXPECT_EQ(y, r.want);
    }
}

TEST(Patterns, RampAndTriangle) {
    Vec x(11);
    ASSERT_EQ(RampPattern(11, -1.0, 0.3, x.data()), kOk);
    double v = -1.0;
    const double step = (0.3 - -1.0) / 10;
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(x[i], v) << i;  // accumulated, not i*step
        v = v + step;
    }
    EXPECT_NEAR(x[10], 0.3, 1e-15);

    struct Row {
        std::int32_t n;
        Vec want;
    };
    const Row rows[] = {
        {2, {0, 4}},
        {3, {0, 4, 0}},
        {4, {0, 2, 4, 2}},
        {5, {0, 2, 4, 2, 0}},
        {8, {0, 1, 2, 3, 4, 3, 2, 1}},
        {9, {0, 1, 2, 3, 4, 3, 2, 1, 0}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.n);
        Vec y(r.n, 9.0);
        ASSERT_EQ(TrianglePattern(r.n, 4.0, y.data()), kOk);
        EXPECT_EQ(y, r.want);
    }
}

TEST(Patterns, SinePatternChirpSinc) {
    // Sine pattern: angle accumulated from phase in degrees.
    for (double cycles : {2.5, 0.0, -3.0}) {
        SCOPED_TRACE(cycles);
        Vec x(16);
        ASSERT_EQ(SinePatternGen(16, 1.5, 30.0, cycles, x.data()), kOk);
        double th = 30.0 * 0.017453292519943295;
        const double step = (cycles / 16) * 6.283185307179586;
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(x[i], 1.5 * std::sin(th)) << i;
            th = th + step;
        }
    }
    Vec y(16);
    ASSERT_EQ(SinePatternGen(16, 1.0, 0.0, 16.0, y.data()), kOk);  // cycles = n accepted

    // Chirp: instantaneous frequency from f1 at 0 to f2 at n.
    Vec c(64);
    ASSERT_EQ(ChirpPattern(64, 2.0, 0.05, 0.3, c.data()), kOk);
    for (int i = 0; i < 64; ++i) {
        const long double t = i;
        const long double arg = 2 * 3.14159265358979323846L * 0.05L * t +
                                3.14159265358979323846L * ((0.3L - 0.05L) / 64) * t * t;
        EXPECT_NEAR(c[i], static_cast<double>(2 * std::sin(arg)), 1e-13) << i;
    }

    // Sinc: amp where t is exactly zero, sin(t)/t elsewhere.
    Vec s(9);
    ASSERT_EQ(SincPattern(9, 3.0, 1.0, 0.25, s.data()), kOk);
    for (int i = 0; i < 9; ++i) {
        const double t = (i * 0.25 - 1.0) * 3.141592653589793;
        EXPECT_EQ(s[i], t == 0.0 ? 3.0 : 3.0 * std::sin(t) / t) << i;
    }
    EXPECT_EQ(s[4], 3.0);
    ASSERT_EQ(SincPattern(3, 2.0, 0.0, 1.0, s.data()), kOk);
    EXPECT_EQ(s[0], 2.0);
    EXPECT_NEAR(s[1], 0.0, 1e-15);
}

// ---------------------------------------------------------------------------
// Periodic waves and the phase handed back.

TEST(Waves, Shapes) {
    struct Row {
        double p, saw, tri;
    };
    const Row rows[] = {{0, 0, 0},         {90, 0.5, 1},          {180, -1, 0},   {270, -0.5, -1},
                        {360, 0, 0},       {-90, -0.5, -1},       {45, 0.25, 0.5}, {720 + 135, 0.75, 0.5},
                        {179.99, 179.99 / 180.0, 2.0 * (1.0 - 179.99 / 180.0)}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.p);
        EXPECT_NEAR(SawtoothShape(r.p), r.saw, 1e-15);
        EXPECT_NEAR(TriangleShape(r.p), r.tri, 1e-15);
    }
    EXPECT_EQ(SquareShape(89.9, 0.25), 1.0);
    EXPECT_EQ(SquareShape(90.0, 0.25), -1.0);
    EXPECT_EQ(SquareShape(-1.0, 1.0), 1.0);
    EXPECT_EQ(SquareShape(0.0, 0.0), -1.0);
}

TEST(Waves, SineQuarterCycleAndContinuation) {
    Vec x(4);
    double phase = 0.0;
    ASSERT_EQ(SineWaveGen(4, 2.0, 0.25, &phase, x.data()), kOk);
    EXPECT_NEAR(x[0], 0.0, 1e-15);
    EXPECT_NEAR(x[1], 2.0, 1e-15);
    EXPECT_NEAR(x[2], 0.0, 1e-15);
    EXPECT_NEAR(x[3], -2.0, 1e-15);
    EXPECT_EQ(phase, 0.0);
    ASSERT_EQ(SineWaveGen(4, 2.0, 0.25, &phase, x.data()), kOk);
    EXPECT_NEAR(x[1], 2.0, 1e-15);
    EXPECT_EQ(phase, 0.0);

    // Two calls continue one waveform.
    Vec whole(10), a(4), b(6);
    double p1 = 33.0, p2 = 33.0;
    ASSERT_EQ(SineWaveGen(10, 1.0, 0.137, &p1, whole.data()), kOk);
    ASSERT_EQ(SineWaveGen(4, 1.0, 0.137, &p2, a.data()), kOk);
    ASSERT_EQ(SineWaveGen(6, 1.0, 0.137, &p2, b.data()), kOk);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(a[i], whole[i]);
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(b[i], whole[4 + i], 1e-13);
    EXPECT_NEAR(p1, p2, 1e-11);
}

TEST(Waves, PhaseHandedBackInRange) {
    struct Row {
        double phase, f;
        std::int32_t n;
    };
    const Row rows[] = {{-90, 0.1, 3}, {0, -0.3, 7}, {1e6 + 0.5, 0.01, 5}, {-1e-14, 0.0, 1}, {359.999, 0.25, 2}};
    using Wave = AnalysisStatus (*)(std::int32_t, double, double, double*, double*);
    const Wave waves[] = {SineWaveGen, SawtoothWaveGen, TriangleWaveGen};
    for (const Row& r : rows) {
        for (Wave w : waves) {
            SCOPED_TRACE(std::to_string(r.phase) + " f=" + std::to_string(r.f));
            Vec x(r.n);
            double p = r.phase;
            ASSERT_EQ(w(r.n, 1.0, r.f, &p, x.data()), kOk);
            // p_next = phase + n * f * 360, accumulated, then reduced.
            double acc = r.phase;
            for (int i = 0; i < r.n; ++i) acc = acc + r.f * 360.0;
            double want = std::fmod(acc, 360.0);
            if (want < 0) want += 360.0;
            if (want >= 360.0) want = 0.0;
            EXPECT_EQ(p, want);
            EXPECT_GE(p, 0.0);
            EXPECT_LT(p, 360.0);
        }
    }
    // Negative phase: the first sample is that phase's value.
    Vec x(1);
    double p = -90.0;
    ASSERT_EQ(SineWaveGen(1, 1.0, 0.0, &p, x.data()), kOk);
    EXPECT_EQ(x[0], -1.0);
    EXPECT_EQ(p, 270.0);
}

TEST(Waves, SquareDutyCycleClampedAndSawtoothTriangle) {
    struct Row {
        double duty;
        Vec want;
    };
    const Row rows[] = {
        {150, {1, 1, 1, 1, 1, 1, 1, 1}},
        {100, {1, 1, 1, 1, 1, 1, 1, 1}},
        {-10, {-1, -1, -1, -1, -1, -1, -1, -1}},
        {0, {-1, -1, -1, -1, -1, -1, -1, -1}},
        {25, {1, 1, -1, -1, -1, -1, -1, -1}},
        {50, {1, 1, 1, 1, -1, -1, -1, -1}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.duty);
        Vec x(8);
        double p = 0.0;
        ASSERT_EQ(SquareWaveGen(8, 1.0, 0.125, r.duty, &p, x.data()), kOk);
        EXPECT_EQ(x, r.want);
        EXPECT_EQ(p, 0.0);
    }
    Vec s(8), t(8);
    double ps = 0.0, pt = 0.0;
    ASSERT_EQ(SawtoothWaveGen(8, 2.0, 0.125, &ps, s.data()), kOk);
    ASSERT_EQ(TriangleWaveGen(8, 2.0, 0.125, &pt, t.data()), kOk);
    const Vec saw{0, 0.5, 1, 1.5, -2, -1.5, -1, -0.5}, tri{0, 1, 2, 1, 0, -1, -2, -1};
    for (int i = 0; i < 8; ++i) {
        EXPECT_NEAR(s[i], saw[i], 1e-15) << i;
        EXPECT_NEAR(t[i], tri[i], 1e-15) << i;
    }
}

TEST(Waves, ArbitraryTable) {
    const double table[4] = {0, 1, 2, 3};
    struct Row {
        std::int32_t interp;
        Vec want;
    };
    const Row rows[] = {
        {1, {0, 0.5, 1, 1.5, 2, 2.5, 3, 1.5}},  // wraps between the last and first entries
        {0, {0, 0, 1, 1, 2, 2, 3, 3}},
        {2, {0, 0, 1, 1, 2, 2, 3, 3}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.interp);
        Vec x(8);
        double p = 0.0;
        ASSERT_EQ(ArbitraryWaveGen(8, 1.0, 0.125, table, 4, r.interp, &p, x.data()), kOk);
        EXPECT_EQ(x, r.want);
        EXPECT_EQ(p, 0.0);  // u = 4 table units = 360 degrees
    }
    // Phase in table units: 90 degrees starts at entry 1; negative phases wrap.
    Vec x(3);
    double p = 90.0;
    ASSERT_EQ(ArbitraryWaveGen(3, 2.0, 0.25, table, 4, 0, &p, x.data()), kOk);
    EXPECT_EQ(x, (Vec{2, 4, 6}));
    double u = 4.0 * 0.002777777777777778 * 90.0;  // phase 90 in table units
    for (int i = 0; i < 3; ++i) u = u + 0.25 * 4.0;
    double want = std::fmod(u * 360.0 / 4.0, 360.0);
    if (want < 0.0) want += 360.0;
    EXPECT_EQ(p, want);
    EXPECT_TRUE(p < 1e-12 || p > 360.0 - 1e-12) << p;  // 90 + 3 * 90 degrees
    p = -45.0;
    ASSERT_EQ(ArbitraryWaveGen(1, 1.0, 0.0, table, 4, 1, &p, x.data()), kOk);
    EXPECT_NEAR(x[0], 3.0 + 0.5 * (0.0 - 3.0), 1e-14);
    EXPECT_NEAR(p, 315.0, 1e-12);
    // An empty table gives zeros; the phase is only reduced.
    p = 725.0;
    x.assign(3, 9.0);
    ASSERT_EQ(ArbitraryWaveGen(3, 1.0, 0.2, table, 0, 1, &p, x.data()), kOk);
    EXPECT_EQ(x, Vec(3, 0.0));
    EXPECT_EQ(p, 5.0);
}

TEST(Generators, ArbitraryWaveWithoutATablePositionGivesNaN) {
    // NaN or infinite frequency or phase: no table index can be formed, so
    // every sample is NaN (and nothing is read outside the table).
    const double table[4] = {1, 2, 3, 4};
    const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
    struct Row { const char* name; double f, phase; };
    const Row rows[] = {{"f NaN", nan, 0.0}, {"f inf", inf, 0.0}, {"phase NaN", 0.1, nan}, {"phase -inf", 0.1, -inf}};
    for (const Row& r : rows)
        for (std::int32_t interp : {0, 1}) {
            double p = r.phase;
            std::vector<double> x(5, 0.0);
            ASSERT_EQ(ArbitraryWaveGen(5, 1.0, r.f, table, 4, interp, &p, x.data()), kOk) << r.name;
            // The first sample sits at the starting phase, finite when only f is bad.
            for (std::size_t i = std::isfinite(r.phase) ? 1 : 0; i < x.size(); ++i)
                EXPECT_TRUE(std::isnan(x[i])) << r.name << " sample " << i;
        }
}

}  // namespace
}  // namespace vn
