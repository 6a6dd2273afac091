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
