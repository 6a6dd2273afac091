// VNDSP transforms and generators through IDispatch: transforms against a
// naive DFT and their inverses, generators against closed forms, the phase
// carried between calls, the shared noise sequence against the generator's
// defining recurrence, and failures.
#include "client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

using namespace vntest;

namespace {

constexpr double kPi = 3.141592653589793;
const wchar_t* const kSource = L"VNAnalysisControlsLib.VNDSP";
using Vec = std::vector<double>;
using Cx = std::complex<double>;

std::vector<Cx> NaiveDFT(const Vec& re, const Vec& im) {
    const std::size_t n = re.size();
    std::vector<Cx> out(n);
    for (std::size_t k = 0; k < n; ++k)
        for (std::size_t j = 0; j < n; ++j)
            out[k] += Cx(re[j], im[j]) * std::polar(1.0, -2 * kPi * double(j * k % n) / double(n));
    return out;
}

void ExpectNear(const Vec& got, const Vec& want, double tol, const char* what) {
    ASSERT_EQ(got.size(), want.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i) EXPECT_NEAR(got[i], want[i], tol) << what << " [" << i << "]";
}

// The shared generator's recurrence (three congruential components).
struct Recurrence {
    std::int32_t s1 = 0, s2 = 0, s3 = 0;
    explicit Recurrence(std::int32_t seed) {
        s1 = seed == 0 ? 32767 : seed;
        s2 = (s1 * 8191) & 16383;
        s3 = (s2 * 8191) & 16383;
    }
    long Next() {
        s1 = 171 * s1 % 30269, s2 = 172 * s2 % 30307, s3 = 170 * s3 % 30323;
        const double r = s2 / 30307.0 + s1 / 30269.0 + s3 / 30323.0;
        return static_cast<long>((r - std::trunc(r)) * 32768);
    }
};

class DspMethods : public ::testing::Test {
protected:
    Control dsp_{L"VNAnalysisControlsLib.VNDSP.1"};
    void SetUp() override { ASSERT_TRUE(dsp_.valid()) << std::hex << dsp_.createResult(); }

    // args[i] for i >= firstRef go by reference and hold the outputs after;
    // returns the arguments, then the return value last.
    std::vector<Var> Ok(const wchar_t* method, std::vector<Var> args, std::size_t firstRef = 99) const {
        std::vector<Var> call;
        for (std::size_t i = 0; i < args.size(); ++i) call.push_back(i >= firstRef ? RefTo(args[i]) : args[i]);
        const Outcome o = CallWith(dsp_, method, call);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        args.push_back(o.result);
        return args;
    }
    Vec Gen(const wchar_t* method, std::vector<Var> args) const { return Doubles(Ok(method, std::move(args)).back()); }
};

TEST_F(DspMethods, TransformsAgainstNaiveDFTAndTheirInverses) {
    const int n = 8;
    Vec re(n), im(n), zero(n, 0.0);
    for (int j = 0; j < n; ++j) re[j] = std::cos(0.7 * j) + 0.3 * j - 1, im[j] = std::sin(1.9 * j) - 0.2;
    const std::vector<Cx> X = NaiveDFT(re, im), R = NaiveDFT(re, zero);
    Vec Xr, Xi, Rr, Ri, power, hartley;
    for (int k = 0; k < n; ++k) {
        Xr.push_back(X[k].real()), Xi.push_back(X[k].imag()), Rr.push_back(R[k].real()), Ri.push_back(R[k].imag());
        power.push_back(std::norm(R[k]) / n / n), hartley.push_back(R[k].real() - R[k].imag());
    }
    const double tol = 1e-11;

    // Inputs by reference: the handler must not write into them.
    const auto f = Ok(L"FFT", {DoubleArray(re), DoubleArray(im), Var(L"old"), Var(L"old")}, 0);
    EXPECT_EQ(Doubles(f[0]), re);
    EXPECT_EQ(Doubles(f[1]), im);
    ExpectNear(Doubles(f[2]), Xr, tol, "FFT re");
    ExpectNear(Doubles(f[3]), Xi, tol, "FFT im");
    const auto inv = Ok(L"InvFFT", {f[2], f[3], Var(), Var()}, 2);
    ExpectNear(Doubles(inv[2]), re, tol, "InvFFT re");
    ExpectNear(Doubles(inv[3]), im, tol, "InvFFT im");

    const auto r = Ok(L"ReFFT", {DoubleArray(re), Var(), Var()}, 0);
    EXPECT_EQ(Doubles(r[0]), re);
    ExpectNear(Doubles(r[1]), Rr, tol, "ReFFT re");
    ExpectNear(Doubles(r[2]), Ri, tol, "ReFFT im");
    ExpectNear(Doubles(Ok(L"ReInvFFT", {r[1], r[2], Var()}, 2)[2]), re, tol, "ReInvFFT");

    ExpectNear(Gen(L"Spectrum", {DoubleArray(re)}), power, tol, "Spectrum");
    const Vec h = Gen(L"FHT", {DoubleArray(re)});
    ExpectNear(h, hartley, tol, "FHT = Re X - Im X");
    ExpectNear(Gen(L"InvFHT", {DoubleArray(h)}), re, tol, "InvFHT");

    // Integer input is converted, and the host's array keeps its type.
    const auto ri = Ok(L"ReFFT", {TypedArray(VT_I4, {1, 2, 3, 4}), Var(), Var()}, 0);
    EXPECT_EQ(ElementType(ri[0]), VT_I4);
    ExpectNear(Doubles(ri[1]), {10, -2, -2, -2}, 1e-15, "ReFFT 1..4 re");
    ExpectNear(Doubles(ri[2]), {0, 2, 0, -2}, 1e-15, "ReFFT 1..4 im");
}

TEST_F(DspMethods, TransformFailuresLeaveTheOutputsAlone) {
    const wchar_t* const kPow2 = L"The size of the input array must be a power of two:  size = 2^m, 0<m<23.";
    const Var v8 = DoubleArray(Vec(8, 1.0)), v4 = DoubleArray(Vec(4, 1.0)), v6 = DoubleArray(Vec(6, 1.0));
    const Var e = EmptyArray(VT_R8), m = DoubleMatrix(2, 2, {1, 2, 3, 4}), o;
    std::vector<Failure> rows;
    auto add = [&](const char* name, const wchar_t* method, std::vector<Var> in, HRESULT code, const wchar_t* text) {
        const std::wstring s = method;
        const int outputs = s == L"ReInvFFT" ? 1 : s == L"FFT" || s == L"InvFFT" || s == L"ReFFT" ? 2 : 0;
        for (int i = 0; i < outputs; ++i) in.push_back(o);
        rows.push_back({name, method, in, outputs, code, text});
    };
    for (const wchar_t* method : {L"FFT", L"InvFFT", L"ReInvFFT"}) {
        add("6 samples", method, {v6, v6}, VnError(20009), kPow2);
        add("empty", method, {e, e}, VnError(20003), msg::kSamples);
        add("2-D", method, {m, m}, VnError(20008), msg::kShape);
        add("lengths differ", method, {v8, v4}, VnError(20008), msg::kShape);
        add("vector and 2-D", method, {v4, m}, VnError(20008), msg::kShape);
    }
    for (const wchar_t* method : {L"ReFFT", L"Spectrum", L"FHT", L"InvFHT"}) {
        add("6 samples", method, {v6}, VnError(20009), kPow2);
        add("empty", method, {e}, VnError(20003), msg::kSamples);
        add("2-D", method, {m}, VnError(20008), msg::kShape);
    }
    ExpectFailures(dsp_, rows, kSource);
}

TEST_F(DspMethods, PatternsAgainstClosedForms) {
    ExpectNear(Gen(L"Ramp", {5, 1.0, 3.0}), {1, 1.5, 2, 2.5, 3}, 1e-15, "Ramp");
    // Scalars arrive as any numeric type or numeric string.
    EXPECT_EQ(Gen(L"Impulse", {Var(L"5"), 2.5, 3.0}), (Vec{0, 0, 0, 2.5, 0}));
    EXPECT_EQ(Gen(L"Pulse", {6, 2.0, 2, 4}), (Vec{0, 0, 2, 2, 2, 2}));
    EXPECT_EQ(Gen(L"Triangle", {5, 2.0}), (Vec{0, 1, 2, 1, 0}));
    const int n = 16;
    Vec sine, chirp, sinc;
    for (int i = 0; i < n; ++i) {
        sine.push_back(2 * std::sin(kPi / 6 + 2 * kPi * 3 * i / n));
        chirp.push_back(1.5 * std::sin(2 * kPi * 0.05 * i + kPi * (0.3 - 0.05) / n * i * i));
        const double t = (i * 0.5 - 1.5) * kPi;
        sinc.push_back(i == 3 ? 2 : 2 * std::sin(t) / t);
    }
    ExpectNear(Gen(L"SinePattern", {n, 2.0, 30.0, 3.0}), sine, 1e-13, "SinePattern");
    ExpectNear(Gen(L"Chirp", {n, 1.5, 0.05, 0.3}), chirp, 1e-13, "Chirp");
    ExpectNear(Gen(L"Sinc", {n, 2.0, 1.5, 0.5}), sinc, 1e-14, "Sinc");
}

// Every wave generated in one call of 10 and in calls of 4 and 6 with the
// Phase handed over: the same samples, and the phase handed back is that of
// the next sample, in [0, 360).
TEST_F(DspMethods, WavesContinueThroughTheirPhase) {
    const double amp = 1.5, f = 0.13, p0 = -90, duty = 30;
    const Vec table{0, 1, 4, 9};
    auto reduce = [](double p) { return std::fmod(std::fmod(p, 360) + 360, 360); };
    struct Wave {
        const wchar_t* method;
        std::function<double(double)> shape;
    };
    const Wave waves[] = {
        {L"SineWave", [](double p) { return std::sin(p * kPi / 180); }},
        {L"SawtoothWave", [&](double p) { return reduce(p) < 180 ? reduce(p) / 180 : reduce(p) / 180 - 2; }},
        {L"TriangleWave",
         [&](double p) { const double q = reduce(p); return q < 90 ? q / 90 : q < 270 ? 2 - q / 90 : q / 90 - 4; }},
        {L"SquareWave", [&](double p) { return reduce(p) < duty * 3.6 ? 1.0 : -1.0; }},
        {L"ArbitraryWave", [&](double p) {
             const double u = reduce(p) / 90;  // table units
             const int k = static_cast<int>(u);
             return table[k] + (u - k) * (table[(k + 1) % 4] - table[k]);
         }},
    };
    for (const Wave& w : waves) {
        SCOPED_TRACE(Narrow(w.method));
        const std::wstring name = w.method;
        auto call = [&](int n, double phase) {
            std::vector<Var> a{n, amp, f};
            if (name == L"SquareWave") a.push_back(duty);
            if (name == L"ArbitraryWave") a.push_back(DoubleArray(table)), a.push_back(1);
            a.push_back(phase);
            auto out = Ok(w.method, a, a.size() - 1);
            EXPECT_EQ(out[out.size() - 2].vt(), VT_R8);
            return std::make_pair(Doubles(out.back()), Only(out[out.size() - 2]));
        };
        const auto whole = call(10, p0);
        const auto first = call(4, p0);
        const auto second = call(6, first.second);
        Vec want, joined = first.first;
        joined.insert(joined.end(), second.first.begin(), second.first.end());
        for (int i = 0; i < 10; ++i) want.push_back(amp * w.shape(p0 + i * f * 360));
        ExpectNear(whole.first, want, 1e-12, "closed form");
        ExpectNear(joined, want, 1e-12, "in two calls");
        EXPECT_NEAR(first.second, reduce(p0 + 4 * f * 360), 1e-11);
        EXPECT_NEAR(whole.second, 18, 1e-11);  // -90 + 10 * 46.8
        EXPECT_NEAR(second.second, 18, 1e-11);
    }
    // Without interpolation, 315 degrees reads the last table entry itself.
    EXPECT_EQ(Gen(L"ArbitraryWave", {1, 1.0, 0.0, DoubleArray({0, 1, 2, 3}), 0, 315.0}), Vec{3});
}

// The three noise methods share one sequence: a seed >= 0 restarts it
// (0 counts as 32767), a negative seed continues it across methods, and a
// failing call neither reseeds nor advances it. Results are mapped back to
// the generator's integers and compared with its recurrence.
TEST_F(DspMethods, NoiseMethodsShareOneSequence) {
    struct Step {
        const wchar_t* method;
        int n;
        double scale;
        int seed;
    };
    const Step steps[] = {{L"Uniform", 5, 1, 11},      {L"WhiteNoise", 4, 2.5, -1}, {L"GaussNoise", 3, 1.5, -1},
                          {L"Uniform", 2, 1, -7},      {L"WhiteNoise", 3, 0.5, 11}, {L"GaussNoise", 2, 4, 0}};
    Recurrence ref(0);
    for (const Step& s : steps) {
        SCOPED_TRACE(Narrow(s.method) + " seed " + std::to_string(s.seed));
        if (s.seed >= 0) ref = Recurrence(s.seed);
        const std::wstring name = s.method;
        const Vec x = name == L"Uniform" ? Gen(s.method, {s.n, s.seed}) : Gen(s.method, {s.n, s.scale, s.seed});
        ASSERT_EQ(x.size(), static_cast<std::size_t>(s.n));
        for (double v : x) {
            if (name == L"Uniform") {
                EXPECT_EQ(std::lround(v * 32767), ref.Next());
            } else if (name == L"WhiteNoise") {
                EXPECT_EQ(std::lround(v / s.scale * 16384 + 16383), ref.Next());
            } else {
                long sum = 0;
                for (int k = 0; k < 12; ++k) sum += ref.Next();
                EXPECT_EQ(std::lround(v / s.scale * 32768 + 196596), sum);
            }
        }
        // A failing call with a fresh seed must leave the sequence alone.
        EXPECT_EQ(CallWith(dsp_, L"Uniform", {0, 3}).code, VnError(20003));
    }
}

TEST_F(DspMethods, GeneratorFailures) {
    const wchar_t* const kDelay = L"The following conditions must be met:  0 <= (delay + width) < samples.";
    const wchar_t* const kTwo = L"The number of samples must be >= 2.";
    auto E = VnError;
    // The waves' Phase goes by reference and keeps what it held.
    const std::vector<Failure> rows = {
        {"index = n", L"Impulse", {4, 1.0, 4}, 0, E(20017), msg::kIndex},
        {"index < 0", L"Impulse", {4, 1.0, -1}, 0, E(20017), msg::kIndex},
        {"no samples", L"Impulse", {0, 1.0, 0}, 0, E(20003), msg::kSamples},
        {"past the end", L"Pulse", {6, 1.0, 3, 4}, 0, E(20014), kDelay},
        {"delay < 0", L"Pulse", {6, 1.0, -1, 2}, 0, E(20014), kDelay},
        {"width < 0", L"Pulse", {6, 1.0, 1, -1}, 0, E(20014), kDelay},
        {"one sample", L"Ramp", {1, 0.0, 1.0}, 0, E(20006), kTwo},
        {"negative", L"Triangle", {-4, 1.0}, 0, E(20006), kTwo},
        {"cycles", L"SinePattern", {4, 1.0, 0.0, 4.5}, 0, E(20012),
         L"The number of cycles must be > 0 and <= the number of samples."},
        {"dt", L"Sinc", {4, 1.0, 0.0, 0.0}, 0, E(20016), L"dt must be > 0."},
        {"most negative", L"Chirp", {-2147483647 - 1, 1.0, 0.1, 0.2}, 0, E(20003), msg::kSamples},
        {"no samples", L"WhiteNoise", {0, 1.0, 1}, 0, E(20003), msg::kSamples},
        {"negative", L"GaussNoise", {-3, 1.0, 1}, 0, E(20003), msg::kSamples},
        {"not a number", L"Ramp", {Var(L"five"), 0.0, 1.0}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"2-D table", L"ArbitraryWave", {4, 1.0, 0.1, DoubleMatrix(2, 2, {1, 2, 3, 4}), 1, 123.0}, 1, E(20008), msg::kShape},
        {"no samples", L"ArbitraryWave", {0, 1.0, 0.1, DoubleArray({1, 2}), 1, 123.0}, 1, E(20003), msg::kSamples},
        {"no samples", L"SineWave", {0, 1.0, 0.1, 123.0}, 1, E(20003), msg::kSamples},
        {"negative", L"SawtoothWave", {-1, 1.0, 0.1, 123.0}, 1, E(20003), msg::kSamples},
        {"no samples", L"TriangleWave", {0, 1.0, 0.1, 123.0}, 1, E(20003), msg::kSamples},
        {"no samples", L"SquareWave", {0, 1.0, 0.1, 50.0, 123.0}, 1, E(20003), msg::kSamples},
    };
    ExpectFailures(dsp_, rows, kSource);
}

// --- IIR filters ---------------------------------------------------------------
//
// One wiring row per method: each filtering method's impulse response equals
// IIRFiltering run with the coefficients of the matching *Coef call, and
// those coefficients have the closed-form gain at the cutoff (Butterworth
// -3.01 dB, Chebyshev -R dB, inverse Chebyshev -A dB), so a parameter read
// in the wrong place shows.

double GainDb(const Vec& a, const Vec& b, double f, double fs) {
    const Cx z1 = std::polar(1.0, -2 * kPi * f / fs);
    Cx num = 0, den = 0, zk = 1;
    for (std::size_t k = 0; k < a.size(); ++k, zk *= z1) num += b[k] * zk, den += a[k] * zk;
    return 20 * std::log10(std::abs(num / den));
}

TEST_F(DspMethods, IirFiltersAgreeWithTheirCoefficients) {
    const double fs = 1000, fc = 150, fl = 100, fh = 300, ripple = 0.5, atten = 30;
    const int n = 64;
    Vec impulse(n, 0.0);
    impulse[0] = 1;
    struct Row {
        const wchar_t* method;
        const wchar_t* coef;
        int type, order;
        double param, edgeDb;
        double param2 = 0;  // the elliptic attenuation
    };
    const double half = -10 * std::log10(2.0);
    const Row rows[] = {
        {L"BwLPF", L"BwCoef", 0, 3, 0, half},          {L"BwHPF", L"BwCoef", 1, 4, 0, half},
        {L"BwBPF", L"BwCoef", 2, 3, 0, half},          {L"BwBSF", L"BwCoef", 3, 2, 0, half},
        {L"ChLPF", L"ChCoef", 0, 4, ripple, -ripple},  {L"ChHPF", L"ChCoef", 1, 3, ripple, -ripple},
        // An even-order Chebyshev bandstop ripples between 0 and +R dB: 0 dB
        // at its edges.
        {L"ChBPF", L"ChCoef", 2, 3, ripple, -ripple},  {L"ChBSF", L"ChCoef", 3, 2, ripple, 0},
        {L"InvChLPF", L"InvChCoef", 0, 5, atten, -atten}, {L"InvChHPF", L"InvChCoef", 1, 4, atten, -atten},
        {L"InvChBPF", L"InvChCoef", 2, 3, atten, -atten}, {L"InvChBSF", L"InvChCoef", 3, 2, atten, -atten},
        {L"ElpLPF", L"ElpCoef", 0, 4, ripple, -ripple, atten}, {L"ElpHPF", L"ElpCoef", 1, 3, ripple, -ripple, atten},
        {L"ElpBPF", L"ElpCoef", 2, 3, ripple, -ripple, atten}, {L"ElpBSF", L"ElpCoef", 3, 2, ripple, -ripple, atten},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(Narrow(r.method));
        const bool band = r.type >= 2;
        std::vector<Var> args{DoubleArray(impulse), fs};
        if (band) args.push_back(fl), args.push_back(fh);
        else args.push_back(fc);
        if (r.param != 0) args.push_back(r.param);
        if (r.param2 != 0) args.push_back(r.param2);
        args.push_back(r.order);
        const Vec y = Gen(r.method, args);

        const int m = band ? 2 * r.order + 1 : r.order + 1;
        std::vector<Var> cargs{r.type, r.order, fs, band ? fl : fc, band ? fh : 0.0};
        if (r.param != 0) cargs.push_back(r.param);
        if (r.param2 != 0) cargs.push_back(r.param2);
        cargs.push_back(m + 2), cargs.push_back(m), cargs.push_back(Var()), cargs.push_back(Var());
        const auto coef = Ok(r.coef, cargs, cargs.size() - 2);
        Vec a = Doubles(coef[coef.size() - 3]), b = Doubles(coef[coef.size() - 2]);
        ASSERT_EQ(a.size(), std::size_t(m + 2));
        ASSERT_EQ(b.size(), std::size_t(m));
        EXPECT_EQ(a[m], 0.0);
        EXPECT_EQ(a[m + 1], 0.0);
        a.resize(m);
        EXPECT_NEAR(GainDb(a, b, band ? fl : fc, fs), r.edgeDb, 1e-7);

        const auto run = Ok(L"IIRFiltering",
                            {DoubleArray(impulse), DoubleArray(a), DoubleArray(b), DoubleArray(Vec(m - 1, 0.0)),
                             DoubleArray(Vec(m - 1, 0.0)), Var()},
                            3);
        ExpectNear(y, Doubles(run[5]), 1e-12, "filter vs coefficients");
    }
}

TEST_F(DspMethods, IirFilteringCarriesItsState) {
    const Vec a{1, -0.5, 0.25}, b{0.5, 0.25, 0.125, 0.0625};
    Vec x(10);
    for (int i = 0; i < 10; ++i) x[i] = std::cos(0.9 * i) + 0.1 * i;
    const auto whole = Ok(L"IIRFiltering", {DoubleArray(x), DoubleArray(a), DoubleArray(b), DoubleArray({0, 0}),
                                            DoubleArray({0, 0, 0}), Var()}, 3);
    const auto first = Ok(L"IIRFiltering", {DoubleArray(Vec(x.begin(), x.begin() + 4)), DoubleArray(a), DoubleArray(b),
                                            DoubleArray({0, 0}), DoubleArray({0, 0, 0}), Var()}, 3);
    const auto second = Ok(L"IIRFiltering", {DoubleArray(Vec(x.begin() + 4, x.end())), DoubleArray(a), DoubleArray(b),
                                             first[3], first[4], Var()}, 3);
    Vec joined = Doubles(first[5]), tail = Doubles(second[5]);
    joined.insert(joined.end(), tail.begin(), tail.end());
    EXPECT_EQ(joined, Doubles(whole[5]));
    EXPECT_EQ(Doubles(second[4]), (Vec{x[7], x[8], x[9]}));
    EXPECT_EQ(Doubles(second[3]), Doubles(whole[3]));

    // No a: b alone as an FIR filter, from an empty array or from Empty; y1
    // is left as it was.
    Vec fir, xs{1, 2, 3};  // x1 = {1, 2, 3} holds x[-3], x[-2], x[-1]
    xs.insert(xs.end(), x.begin(), x.end());
    for (int i = 3; i < 13; ++i) fir.push_back(0.5 * xs[i] + 0.25 * xs[i - 1] + 0.125 * xs[i - 2] + 0.0625 * xs[i - 3]);
    for (const Var& noA : {EmptyArray(VT_R8), Var()}) {
        const auto f = Ok(L"IIRFiltering",
                          {DoubleArray(x), noA, DoubleArray(b), Var(L"untouched"), DoubleArray({1, 2, 3}), Var()}, 3);
        ExpectNear(Doubles(f[5]), fir, 1e-15, "FIR");
        EXPECT_EQ(f[3].vt(), VT_BSTR);
    }
}

TEST_F(DspMethods, IirFailures) {
    const wchar_t* const kEdges = L"The following conditions must be met:  0 <= f_low <= f_high <= fs/2.";
    const wchar_t* const kCut = L"The cut-off frequency, fc, must meet:  0 <= fc <= fs/2.";
    const wchar_t* const kOrder = L"The order must be > 0.";
    const Var x = DoubleArray({1, 2, 3}), e = EmptyArray(VT_R8), o;
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"fc = 0", L"BwLPF", {x, 1000.0, 0.0, 2}, 0, E(20023), kEdges},
        {"fc above fs/2", L"ChHPF", {x, 1000.0, 600.0, 1.0, 2}, 0, E(20020), kCut},
        {"order", L"InvChBSF", {x, 1000.0, 100.0, 200.0, 30.0, 0}, 0, E(20021), kOrder},
        {"ripple", L"ChBPF", {x, 1000.0, 100.0, 200.0, 0.0, 2}, 0, E(20024), L"The ripple amplitude must be > 0."},
        {"no samples", L"BwBSF", {e, 1000.0, 100.0, 200.0, 2}, 0, E(20003), msg::kSamples},
        {"f_low = 0", L"BwCoef", {2, 2, 1000.0, 0.0, 200.0, 9, 9, o, o}, 2, E(20023), kEdges},
        {"lowpass at fs/2", L"ChCoef", {0, 2, 1000.0, 500.0, 0.0, 1.0, 9, 9, o, o}, 2, E(20023), kEdges},
        {"na too small", L"BwCoef", {2, 3, 1000.0, 100.0, 200.0, 6, 9, o, o}, 2, E(20008), msg::kShape},
        {"type", L"InvChCoef", {4, 2, 1000.0, 100.0, 200.0, 30.0, 9, 9, o, o}, 2, E(20061), msg::kSelection},
        {"attenuation", L"InvChCoef", {0, 2, 1000.0, 100.0, 0.0, 0.0, 9, 9, o, o}, 2, E(20025),
         L"The attenuation must be > 0."},
        {"attenuation not above ripple", L"ElpLPF", {x, 1000.0, 100.0, 3.0, 2.0, 2}, 0, E(20028),
         L"The attenuation value must be greater than the ripple amplitude."},
        {"elliptic ripple", L"ElpCoef", {3, 2, 1000.0, 100.0, 200.0, 0.0, 40.0, 9, 9, o, o}, 2, E(20024),
         L"The ripple amplitude must be > 0."},
        {"y1 short", L"IIRFiltering", {x, DoubleArray({1, 0.5, 0.2}), DoubleArray({1}), DoubleArray({0}), e, o}, 3,
         E(20008), msg::kShape},
        {"x1 short", L"IIRFiltering", {x, DoubleArray({1}), DoubleArray({1, 1}), e, e, o}, 3, E(20008), msg::kShape},
        {"empty b", L"IIRFiltering", {x, DoubleArray({1}), e, e, e, o}, 3, E(20003), msg::kSamples},
    };
    ExpectFailures(dsp_, rows, kSource);
}

// One wiring row per time-domain and window method: small inputs whose
// results follow from the definitions by hand (the numerics are tested with
// the kernels). Inputs go by reference where the handler must not write
// into them.
TEST_F(DspMethods, TimeDomainAndWindowWiring) {
    const double twoPi = 6.283185307179586;
    const Var ones4 = DoubleArray(Vec(4, 1.0)), ramp10 = DoubleArray({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    auto i0 = [](double z) {  // the Bessel series, converged for small z
        double sum = 1, term = 1;
        for (int k = 1; k < 30; ++k) term *= (z / 2) * (z / 2) / (k * k), sum += term;
        return sum;
    };
    const double k1 = i0(2 * std::sqrt(0.75)) / i0(2);
    Vec taper(20, 1.0);
    taper[0] = taper[19] = 0, taper[1] = taper[18] = 0.5;
    struct Row {
        const wchar_t* method;
        std::vector<Var> args;
        Vec want;
        double tol;
    };
    const std::vector<Row> rows = {
        {L"Convolve", {DoubleArray({1, 2}), TypedArray(VT_I4, {1, 1, 1})}, {1, 3, 3, 2}, 0},
        {L"Correlate", {DoubleArray({1, 2}), DoubleArray({1, 1, 1})}, {2, 3, 3, 1}, 0},
        {L"Deconvolve", {DoubleArray({1, 3, 3, 2}), DoubleArray({1, 2})}, {1, 1, 1}, 1e-15},
        {L"Integrate", {DoubleArray({1, 1, 1}), 1.0, 1.0, 1.0}, {1, 2, 3}, 1e-15},
        {L"Difference", {DoubleArray({0, 1, 2, 3}), 1.0, -1.0, 4.0}, {1, 1, 1, 1}, 0},
        {L"Decimate", {ramp10, 3, 0}, {0, 3, 6, 9}, 0},
        {L"UnWrap1D", {DoubleArray({0, 3.5, 0})}, {0, 3.5 - twoPi, 0}, 1e-15},
        {L"TriWin", {DoubleArray(Vec(5, 2.0))}, {0, 1, 2, 2, 1}, 0},
        {L"HanWin", {ones4}, {0, 0.5, 1, 0.5}, 1e-15},
        {L"HamWin", {ones4}, {0.08, 0.54, 1, 0.54}, 1e-15},
        {L"BkmanWin", {ones4}, {-1.3877787807814457e-17, 0.34, 1, 0.34}, 1e-15},
        {L"KsrWin", {ones4, 2.0}, {1 / i0(2), k1, 1, k1}, 1e-9},
        {L"BlkHarrisWin", {ones4}, {0.0049, 0.34401, 1, 0.34401}, 1e-15},
        {L"CosTaperedWin", {DoubleArray(Vec(20, 1.0))}, taper, 1e-15},
        {L"ExBkmanWin", {ones4}, {0.006878761822871851, 0.3497420464316423, 1, 0.3497420464316423}, 1e-15},
        {L"ExpWin", {DoubleArray({1, 1, 1}), 0.25}, {1, 0.5, 0.25}, 1e-15},
        {L"FlatTopWin", {ones4}, {-0.041794346999999954, 0.0830248939, 1, 0.0830248939}, 1e-15},
        {L"ForceWin", {ones4, Var(L"50")}, {1, 1, 0, 0}, 0},
        {L"GenCosWin", {ones4, DoubleArray({0.5, 0.5})}, {0, 0.5, 1, 0.5}, 1e-15},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(Narrow(r.method));
        const auto out = Ok(r.method, r.args, 0);
        for (std::size_t i = 0; i < r.args.size(); ++i) {
            if (r.args[i].vt() & VT_ARRAY) EXPECT_EQ(Doubles(out[i]), Doubles(r.args[i])) << "input " << i;
        }
        EXPECT_EQ(LowerBounds(out.back()), std::vector<LONG>{0});
        ExpectNear(Doubles(out.back()), r.want, r.tol, "result");
    }
    // The averaging switch of Decimate is any non-zero value (True is -1).
    Var on;
    V_VT(on.get()) = VT_BOOL, V_BOOL(on.get()) = VARIANT_TRUE;
    EXPECT_EQ(Gen(L"Decimate", {ramp10, 3, on}), (Vec{1, 4, 7, 9}));

    // ScaledWindow: y, ENBW and CoherentGain by reference.
    const auto sw = Ok(L"ScaledWindow", {ones4, 1, Var(), Var(), Var()}, 2);
    ExpectNear(Doubles(sw[2]), {0, 1, 2, 1}, 1e-15, "ScaledWindow y");
    EXPECT_EQ(Only(sw[3]), 1.5);
    EXPECT_EQ(Only(sw[4]), 0.5);

    // PulseParam of a clean rectangle: levels at the outer histogram bin
    // centres 0.02 and 0.98, times as 32-bit integers.
    std::vector<Var> pp{DoubleArray({0, 0, 1, 1, 1, 0, 0})};
    for (int i = 0; i < 13; ++i) pp.push_back(Var());
    const auto p = Ok(L"PulseParam", pp, 1);
    const double want[] = {0.96, 0.864, 0.48, 0.096, 0.98, 0.02, 0.02, 0.02, 2, 3, 1, 1, 0.768};
    for (int i = 1; i <= 13; ++i) {
        EXPECT_NEAR(Only(p[i]), want[i - 1], 1e-14) << "output " << i;
        EXPECT_EQ(p[i].vt(), i >= 9 && i <= 12 ? VT_I4 : VT_R8) << "output " << i;
    }
}

TEST_F(DspMethods, TimeDomainAndWindowFailures) {
    const Var v4 = DoubleArray(Vec(4, 1.0)), e = EmptyArray(VT_R8), m = DoubleMatrix(2, 2, {1, 2, 3, 4}), o;
    const wchar_t* const kDt = L"dt must be > 0.";
    auto E = VnError;
    std::vector<Failure> rows = {
        {"empty", L"Convolve", {e, v4}, 0, E(20003), msg::kSamples},
        {"2-D", L"Correlate", {v4, m}, 0, E(20008), msg::kShape},
        {"nx > ny + 1", L"Deconvolve", {DoubleArray({1, 2}), v4}, 0, E(20008), msg::kShape},
        {"dt = 0", L"Integrate", {v4, 0.0, 0.0, 0.0}, 0, E(20016), kDt},
        {"dt < 0", L"Difference", {v4, -1.0, 0.0, 0.0}, 0, E(20016), kDt},
        {"factor 5 of 4", L"Decimate", {v4, 5, 0}, 0, E(20022),
         L"The decimating factor must meet:  0 < decimating factor <= samples."},
        {"scalar", L"UnWrap1D", {1.0}, 0, E(30103), msg::kNotArray},
        {"one sample", L"ExpWin", {DoubleArray({1}), 0.5}, 0, E(20006), L"The number of samples must be >= 2."},
        {"no coefficients", L"GenCosWin", {v4, e}, 0, E(20003), msg::kSamples},
        {"2-D coefficients", L"GenCosWin", {v4, m}, 0, E(20008), msg::kShape},
        {"not a number", L"KsrWin", {v4, Var(L"beta")}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"empty", L"ScaledWindow", {e, 1, o, o, o}, 3, E(20003), msg::kSamples},
    };
    for (const wchar_t* w : {L"TriWin", L"HanWin", L"HamWin", L"BkmanWin", L"BlkHarrisWin", L"CosTaperedWin",
                             L"ExBkmanWin", L"FlatTopWin"}) {
        rows.push_back({"empty", w, {e}, 0, E(20003), msg::kSamples});
        rows.push_back({"2-D", w, {m}, 0, E(20008), msg::kShape});
    }
    std::vector<Var> pp{e};
    for (int i = 0; i < 13; ++i) pp.push_back(i % 2 ? Var(7.0) : Var());
    rows.push_back({"empty", L"PulseParam", pp, 13, E(20003), msg::kSamples});
    ExpectFailures(dsp_, rows, kSource);
}

// --- Spectra and network measurements: one wiring row per method ------------

// A cosine of amplitude 2 at bin 2 of 8 samples (dt = 0.125 s, df = 1 Hz):
// power 2 at bin 2, RMS amplitude sqrt 2, phase 0.
TEST_F(DspMethods, SpectraReachTheirKernels) {
    Vec x(8), twice(8);
    for (int i = 0; i < 8; ++i) x[i] = 2 * std::cos(2 * kPi * 2 * i / 8), twice[i] = 2 * x[i];
    const Var X = DoubleArray(x), Y = DoubleArray(twice);
    const double tol = 1e-14;

    auto a = Ok(L"AutoPowerSpectrum", {X, 0.125, Var(), Var()}, 2);
    ExpectNear(Doubles(a[2]), {0, 0, 2, 0}, tol, "AutoPowerSpectrum");
    EXPECT_EQ(Only(a[3]), 1.0);

    a = Ok(L"AmpPhaseSpectrum", {X, 1, 0.125, Var(), Var(), Var()}, 3);
    EXPECT_NEAR(Doubles(a[3])[2], std::sqrt(2.0), tol);
    EXPECT_EQ(Doubles(a[4]).size(), 4u);
    EXPECT_EQ(Only(a[5]), 1.0);

    a = Ok(L"CrossSpectrum", {DoubleArray({1, 2, 3}), DoubleArray({1, 2, 3}), Var(), Var()}, 2);
    ExpectNear(Doubles(a[2]), {36.0 / 16, (4 + 4) / 16.0, 4.0 / 16, 8.0 / 16}, tol, "CrossSpectrum re");
    ExpectNear(Doubles(a[3]), {0, 0, 0, 0}, tol, "CrossSpectrum im");

    a = Ok(L"CrossPowerSpectrum", {X, Y, 0.125, Var(), Var(), Var()}, 3);
    ExpectNear(Doubles(a[3]), {0, 0, 4, 0}, tol, "CrossPowerSpectrum");
    EXPECT_EQ(Only(a[5]), 1.0);

    a = Ok(L"ACDCEstimator", {DoubleArray(Vec(8, 3.0)), Var(), Var()}, 1);
    EXPECT_EQ(Only(a[1]), 0.0);
    EXPECT_EQ(Only(a[2]), 3.0);

    a = Ok(L"TransferFunction", {X, Y, 0.125, Var(), Var(), Var()}, 3);
    EXPECT_NEAR(Doubles(a[3])[2], 2, tol);
    EXPECT_EQ(Doubles(a[4]).size(), 4u);
    EXPECT_EQ(Only(a[5]), 1.0);

    Vec s = x, r = twice;
    s[0] += 1, r[0] += 2;  // every bin excited
    ExpectNear(Doubles(Ok(L"ImpulseResponse", {DoubleArray(s), DoubleArray(r)}).back()), {2, 0, 0, 0, 0, 0, 0, 0}, 1e-13,
               "ImpulseResponse");

    Vec s2 = s, r2 = r;
    s2.insert(s2.end(), s.rbegin(), s.rend());
    r2.insert(r2.end(), r.rbegin(), r.rend());
    a = Ok(L"NetworkFunctions",
           {DoubleMatrix(2, 8, s2), DoubleMatrix(2, 8, r2), 0.125, Var(), Var(), Var(), Var(), Var(), Var(), Var()}, 3);
    for (int i = 3; i <= 7; ++i) EXPECT_EQ(Doubles(a[i]).size(), 4u) << i;
    ExpectNear(Doubles(a[5]), {2, 2, 2, 2}, 1e-13, "magHf");
    ExpectNear(Doubles(a[7]), {1, 1, 1, 1}, 1e-13, "Coherence");
    ExpectNear(Doubles(a[8]), {2, 0, 0, 0, 0, 0, 0, 0}, 1e-13, "Impulse");
    EXPECT_EQ(Only(a[9]), 1.0);

    a = Ok(L"PowerFrequencyEstimate", {DoubleArray({0, 1, 4, 1, 0}), 2.0, 2.0, 0.5, 1.0, 3, Var(), Var()}, 6);
    EXPECT_EQ(Only(a[6]), 2.0);
    EXPECT_EQ(Only(a[7]), 3.0);

    // Power 2 per bin: Vpk = 2, returned and in ConvertedSpectrum.
    a = Ok(L"SpectrumUnitConversion", {DoubleArray({2, 0.5}), 0, 0, 1, 1.0, 1.5, 1.0, Var()}, 7);
    ExpectNear(Doubles(a[7]), {2, 1}, tol, "ConvertedSpectrum");
    ExpectNear(Doubles(a[8]), {2, 1}, tol, "returned");
}

TEST_F(DspMethods, SpectrumFailures) {
    const wchar_t* const kPow2 = L"The size of the input array must be a power of two:  size = 2^m, 0<m<23.";
    const Var v6 = DoubleArray(Vec(6, 1.0)), v4 = DoubleArray(Vec(4, 1.0)), v8 = DoubleArray(Vec(8, 1.0));
    const Var e = EmptyArray(VT_R8), m = DoubleMatrix(2, 4, {1, 2, 3, 4, 5, 6, 7, 8}), o;
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"6 samples", L"AutoPowerSpectrum", {v6, 1.0, o, o}, 2, E(20009), kPow2},
        {"empty", L"AmpPhaseSpectrum", {e, 0, 1.0, o, o, o}, 3, E(20003), msg::kSamples},
        {"2-D", L"ACDCEstimator", {m, o, o}, 2, E(20008), msg::kShape},
        {"lengths differ", L"CrossSpectrum", {v8, v4, o, o}, 2, E(20008), msg::kShape},
        {"6 samples", L"CrossPowerSpectrum", {v6, v6, 1.0, o, o, o}, 3, E(20009), kPow2},
        {"lengths differ", L"TransferFunction", {v8, v4, 1.0, o, o, o}, 3, E(20008), msg::kShape},
        {"6 samples", L"ImpulseResponse", {v6, v6}, 0, E(20009), kPow2},
        {"1-D stimulus", L"NetworkFunctions", {v8, v8, 1.0, o, o, o, o, o, o, o}, 7, E(20008), msg::kShape},
        {"shapes differ", L"NetworkFunctions", {m, DoubleMatrix(4, 2, {1, 2, 3, 4, 5, 6, 7, 8}), 1.0, o, o, o, o, o, o, o},
         7, E(20008), msg::kShape},
        {"empty", L"PowerFrequencyEstimate", {e, 1.0, 1.0, 1.0, 1.0, 2, o, o}, 2, E(20003), msg::kSamples},
        {"unit 8", L"SpectrumUnitConversion", {v4, 0, 0, 8, 1.0, 1.0, 1.0, o}, 1, E(20061), msg::kSelection},
    };
    ExpectFailures(dsp_, rows, kSource);
}

// --- FIR designs: one wiring row per method -------------------------------

// Three-tap designs have closed forms: with fs = 8, fl = 1, fh = 2 the outer
// ideal taps are +-1/pi (lowpass/highpass at fs = 4, fc = 1) and
// +-(1 - sqrt(2)/2)/pi (bandpass/bandstop). The 3-tap symmetric Hamming
// window is (0.08, 1, 0.08) and the Kaiser one (1/I0(beta), 1, 1/I0(beta)).
TEST_F(DspMethods, FirDesignsRouteTheirArguments) {
    const double lp = 1 / kPi, bp = (1 - std::sqrt(0.5)) / kPi, ham = 0.08;
    const double ksr = 1 / 2.2795853023360673;  // 1/I0(2)
    struct Row {
        const wchar_t* method;
        std::vector<Var> args;
        Vec want;
    };
    const std::vector<Row> rows = {
        {L"WindLPCoef", {4.0, 1.0, 3, 4}, {lp * ham, 0.5, lp * ham}},
        {L"WindHPCoef", {4.0, 1.0, 3, 1}, {-lp, 0.5, -lp}},
        {L"WindBPCoef", {8.0, 1.0, 2.0, 3, 4}, {bp * ham, 0.25, bp * ham}},
        {L"WindBSCoef", {8.0, 1.0, 2.0, 3, 1}, {-bp, 0.75, -bp}},
        {L"KsrLPCoef", {4.0, 1.0, 3, 2.0}, {lp * ksr, 0.5, lp * ksr}},
        {L"KsrHPCoef", {4.0, 1.0, 3, 2.0}, {-lp * ksr, 0.5, -lp * ksr}},
        {L"KsrBPCoef", {8.0, 1.0, 2.0, 3, 2.0}, {bp * ksr, 0.25, bp * ksr}},
        {L"KsrBSCoef", {8.0, 1.0, 2.0, 3, 2.0}, {-bp * ksr, 0.75, -bp * ksr}},
        // A single band asking 1 everywhere: the unit impulse, delta 0.
        {L"EquiRipple", {1, DoubleArray({1}), DoubleArray({1}), 1.0, DoubleArray({0, 0.5}), 1, 5, Var()},
         {0, 0, 1, 0, 0}},
    };
    for (const auto& r : rows) {
        const std::size_t refs = r.args.size();
        ExpectNear(Doubles(Ok(r.method, r.args, r.method == std::wstring(L"EquiRipple") ? 7 : refs).back()), r.want,
                   1e-8, Narrow(r.method).c_str());
    }
    // Each shortcut equals the general design with its band layout, and
    // hands back |delta|.
    struct Short {
        const wchar_t* method;
        std::vector<Var> args;
        int bands;
        Vec desired, edges;
    };
    const std::vector<Short> shorts = {
        {L"EquiRplLPCoef", {1000.0, 100.0, 150.0, 25, Var()}, 2, {1, 0}, {0, 100, 150, 500}},
        {L"EquiRplHPCoef", {1000.0, 100.0, 150.0, 25, Var()}, 2, {0, 1}, {0, 100, 150, 500}},
        {L"EquiRplBPCoef", {1000.0, 100.0, 150.0, 250.0, 300.0, 31, Var()}, 3, {0, 1, 0}, {0, 100, 150, 250, 300, 500}},
        {L"EquiRplBSCoef", {1000.0, 100.0, 150.0, 250.0, 300.0, 31, Var()}, 3, {1, 0, 1}, {0, 100, 150, 250, 300, 500}},
    };
    for (const auto& sh : shorts) {
        const std::vector<Var> got = Ok(sh.method, sh.args, sh.args.size() - 1);
        const std::vector<Var> ref = Ok(L"EquiRipple",
                                        {sh.bands, DoubleArray(sh.desired), DoubleArray(Vec(sh.bands, 1.0)), 1000.0,
                                         DoubleArray(sh.edges), 1, sh.args[sh.args.size() - 2], Var()},
                                        7);
        ExpectNear(Doubles(got.back()), Doubles(ref.back()), 0, Narrow(sh.method).c_str());
        EXPECT_GT(Only(got[got.size() - 2]), 0) << Narrow(sh.method);
        EXPECT_EQ(Only(got[got.size() - 2]), std::fabs(Only(ref[7]))) << Narrow(sh.method);
    }
}

TEST_F(DspMethods, FirDesignFailures) {
    auto E = VnError;
    const wchar_t* const kOdd = L"The number of coefficients must be odd for this filter.";
    const wchar_t* const kCut = L"The cut-off frequency, fc, must meet:  0 <= fc <= fs/2.";
    const wchar_t* const kDesign = L"The filter cannot be designed with the specified input values.";
    const std::vector<Failure> rows = {
        {"even n", L"WindHPCoef", {1.0, 0.1, 10, 4}, 0, E(20033), kOdd},
        {"fs = 0", L"KsrLPCoef", {0.0, 0.1, 11, 4.0}, 0, E(20020), kCut},
        {"no window points", L"WindLPCoef", {1.0, 0.1, 1, 5}, 0, E(20003), msg::kSamples},
        {"short a", L"EquiRipple",
         {2, DoubleArray({1}), DoubleArray({1, 1}), 1.0, DoubleArray({0, .2, .3, .5}), 1, 11, 123.0}, 1, E(20008),
         msg::kShape},
        {"short cutoffs", L"EquiRipple",
         {2, DoubleArray({1, 0}), DoubleArray({1, 1}), 1.0, DoubleArray({0, .2, .3}), 1, 11, 123.0}, 1, E(20008),
         msg::kShape},
        {"two taps", L"EquiRplLPCoef", {1.0, 0.2, 0.3, 2, 123.0}, 1, E(20031), kDesign},
        {"edges", L"EquiRplBPCoef", {1.0, 0.2, 0.1, 0.3, 0.4, 21, 123.0}, 1, E(20023), nullptr},
    };
    ExpectFailures(dsp_, rows, kSource);
}
// --- end of FIR designs ---------------------------------------------------

}  // namespace
