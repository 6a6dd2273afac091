// Spectra and network measurements against independent references: a naive
// DFT written here, Parseval's identity, tones at exact bins (A^2/2, A/sqrt 2),
// a circular FIR system whose transfer function and impulse response are
// known, a delayed impulse for the unwrapped phase, and the unit conversions
// of a known sinusoid.
#include "analysis/dsp/spectra.h"

#include "analysis/dsp/fft.h"
#include "analysis/dsp/windows.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
using Cx = std::complex<double>;
constexpr double kPi = 3.141592653589793;
constexpr double kSentinel = -12345.0;

std::vector<Cx> Dft(const Vec& x, int N) {  // x zero-padded to N
    std::vector<Cx> X(N);
    for (int k = 0; k < N; ++k)
        for (int j = 0; j < static_cast<int>(x.size()); ++j)
            X[k] += x[j] * std::polar(1.0, -2 * kPi * double(long(j) * k % N) / N);
    return X;
}

Vec Noise(int n, double seed) {
    Vec v(n);
    for (int i = 0; i < n; ++i) v[i] = std::sin(seed * (i + 1) * (i + 3)) + 0.2 * std::cos(seed * i);
    return v;
}

Vec Tone(int n, double amp, double bins, double phase = 0) {
    Vec v(n);
    for (int i = 0; i < n; ++i) v[i] = amp * std::cos(2 * kPi * bins * i / n + phase);
    return v;
}

// y = h (*) x, circular over n.
Vec CircularFir(const Vec& x, const Vec& h) {
    const int n = static_cast<int>(x.size());
    Vec y(n, 0.0);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < static_cast<int>(h.size()); ++j) y[(i + j) % n] += h[j] * x[i];
    return y;
}

double WrapPhase(double p) { return std::remainder(p, 2 * kPi); }

TEST(AutoPowerSpectrum, ToneAndParseval) {
    for (int n : {8, 64, 256}) {
        SCOPED_TRACE(n);
        // DC 0.75 plus tones below Nyquist: the dropped Nyquist bin is zero,
        // so the single-sided spectrum sums to the mean square.
        Vec x = Tone(n, 1.5, 1), t2 = Tone(n, 0.4, n / 2 - 1, 0.3);
        double ms = 0;
        for (int i = 0; i < n; ++i) x[i] += t2[i] + 0.75, ms += x[i] * x[i] / n;
        Vec s(n / 2, kSentinel);
        double df = 0;
        ASSERT_EQ(AutoPowerSpectrumCore(x.data(), n, 0.001, s.data(), &df), kOk);
        EXPECT_DOUBLE_EQ(df, 1000.0 / n);
        double total = 0;
        for (double v : s) total += v;
        EXPECT_NEAR(total, ms, 1e-13);
        EXPECT_NEAR(s[0], 0.5625, 1e-14);
        EXPECT_NEAR(s[1], 1.5 * 1.5 / 2, 1e-13);
        EXPECT_NEAR(s[n / 2 - 1], 0.4 * 0.4 / 2, 1e-13);
        EXPECT_NEAR(s[2], 0, 1e-13);
    }
}

TEST(AmpPhaseSpectrum, TonesConstantsAndUnwrappedDelay) {
    const int n = 64;
    struct Row { double amp, bin, phase; } rows[] = {{2.0, 5, 0}, {1.0, 7, -kPi / 2}, {0.5, 31, 1.0}, {3.0, 1, -2.5}};
    for (const Row& r : rows) {
        const Vec x = Tone(n, r.amp, r.bin, r.phase);
        Vec amp(n / 2), ph(n / 2);
        double df = 0;
        ASSERT_EQ(AmpPhaseSpectrumCore(x.data(), n, 0, 0.5, amp.data(), ph.data(), &df), kOk);
        EXPECT_DOUBLE_EQ(df, 1.0 / 32);
        const int k0 = static_cast<int>(r.bin);
        EXPECT_NEAR(amp[k0], r.amp / std::sqrt(2.0), 1e-13);
        EXPECT_NEAR(ph[k0], r.phase, 1e-12);
        for (int k = 0; k < n / 2; ++k)
            if (k != k0) EXPECT_NEAR(amp[k], 0, 1e-13) << k;
    }
    const Vec neg(16, -3.0);
    Vec amp(8), ph(8);
    double df = 0;
    ASSERT_EQ(AmpPhaseSpectrumCore(neg.data(), 16, 0, 1, amp.data(), ph.data(), &df), kOk);
    EXPECT_DOUBLE_EQ(amp[0], 3.0);
    EXPECT_EQ(ph[0], kPi);

    // A unit impulse delayed by d samples: X[k] = exp(-2 pi i k d/n), whose
    // unwrapped phase is the straight line -2 pi k d/n.
    const int d = 3;
    Vec imp(n, 0.0);
    imp[d] = 1;
    Vec wrapped(n / 2), unwrapped(n / 2);
    amp.resize(n / 2);
    ASSERT_EQ(AmpPhaseSpectrumCore(imp.data(), n, 0, 1, amp.data(), wrapped.data(), &df), kOk);
    ASSERT_EQ(AmpPhaseSpectrumCore(imp.data(), n, 1, 1, amp.data(), unwrapped.data(), &df), kOk);
    for (int k = 1; k < n / 2; ++k) {
        const double line = -2 * kPi * k * d / n;
        EXPECT_NEAR(unwrapped[k], line, 1e-12) << k;
        EXPECT_NEAR(wrapped[k], WrapPhase(line), 1e-12) << k;
        EXPECT_NEAR(amp[k], std::sqrt(2.0) / n, 1e-15) << k;
    }
}

TEST(CrossSpectrum, AgainstNaiveDftWithPadding) {
    for (int n : {1, 2, 5, 8, 13, 32}) {
        SCOPED_TRACE(n);
        const int N = CrossSpectrumLength(n);
        ASSERT_GE(N, n);
        ASSERT_EQ(N & (N - 1), 0);
        ASSERT_LT(N, 2 * n);
        const Vec x = Noise(n, 0.37), y = Noise(n, 1.91);
        const std::vector<Cx> X = Dft(x, N), Y = Dft(y, N);
        Vec re(N + 1, kSentinel), im(N + 1, kSentinel);
        ASSERT_EQ(CrossSpectrumCore(x.data(), y.data(), n, re.data(), im.data()), kOk);
        for (int k = 0; k < N; ++k) {
            const Cx s = std::conj(X[k]) * Y[k] / double(N) / double(N);
            EXPECT_NEAR(re[k], s.real(), 1e-14) << k;
            EXPECT_NEAR(im[k], s.imag(), 1e-14) << k;
        }
        EXPECT_EQ(re[N], kSentinel);
        EXPECT_EQ(im[N], kSentinel);
        // With itself: the two-sided power spectrum and no imaginary part.
        if (n == N) {
            Vec p = x, sr(N), si(N);
            ASSERT_EQ(PowerSpectrum(p.data(), N), kOk);
            ASSERT_EQ(CrossSpectrumCore(x.data(), x.data(), n, sr.data(), si.data()), kOk);
            for (int k = 0; k < N; ++k) {
                EXPECT_NEAR(sr[k], p[k], 1e-15);
                EXPECT_EQ(si[k], 0.0);
            }
        }
    }
}

TEST(CrossPowerSpectrum, SingleSidedMagnitudeAndPhase) {
    const int n = 32;
    const Vec x = Noise(n, 0.61), y = Noise(n, 2.3);
    const std::vector<Cx> X = Dft(x, n), Y = Dft(y, n);
    Vec mag(n / 2), ph(n / 2);
    double df = 0;
    ASSERT_EQ(CrossPowerSpectrumCore(x.data(), y.data(), n, 0.25, mag.data(), ph.data(), &df), kOk);
    EXPECT_DOUBLE_EQ(df, 0.125);
    for (int k = 0; k < n / 2; ++k) {
        const Cx s = std::conj(X[k]) * Y[k] / double(n * n);
        EXPECT_NEAR(mag[k], (k == 0 ? 1 : 2) * std::abs(s), 1e-14) << k;
        EXPECT_NEAR(WrapPhase(ph[k] - std::arg(s)), 0, 1e-10) << k;
    }
    // With itself it is the auto power spectrum.
    Vec aps(n / 2);
    ASSERT_EQ(AutoPowerSpectrumCore(x.data(), n, 1, aps.data(), &df), kOk);
    ASSERT_EQ(CrossPowerSpectrumCore(x.data(), x.data(), n, 1, mag.data(), ph.data(), &df), kOk);
    for (int k = 0; k < n / 2; ++k) EXPECT_NEAR(mag[k], aps[k], 1e-15) << k;
}

TEST(ACDCEstimator, ToneOnOffset) {
    struct Row { int n; double dc, amp, bin; } rows[] = {{64, 2.5, 0, 0}, {256, -1.25, 2.0, 9}, {100, 0.5, 1.0, 7}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.n);
        Vec x = Tone(r.n, r.amp, r.bin, 0.4);
        for (double& v : x) v += r.dc;
        double ac = kSentinel, dc = kSentinel;
        ASSERT_EQ(ACDCEstimatorCore(x.data(), r.n, &ac, &dc), kOk);
        EXPECT_NEAR(dc, r.dc, 1e-13);
        EXPECT_NEAR(ac, r.amp / std::sqrt(2.0), 1e-12);
    }
}

// A circular FIR system: transfer function sum h[j] exp(-2 pi i jk/n),
// impulse response h itself, coherence 1.
struct FirCase {
    Vec h;
    int n, frames;
};

TEST(NetworkMeasurements, KnownFirSystem) {
    const FirCase cases[] = {{{1.0, 0.5, -0.25}, 16, 1}, {{0.3, -0.8, 0.0, 0.45, 0.1}, 32, 3}, {{-2.0}, 8, 2}};
    for (const FirCase& fc : cases) {
        const int n = fc.n, half = n / 2;
        SCOPED_TRACE(n);
        Vec S, R;
        for (int f = 0; f < fc.frames; ++f) {
            const Vec s = Noise(n, 0.3 + 0.77 * f), r = CircularFir(s, fc.h);
            S.insert(S.end(), s.begin(), s.end());
            R.insert(R.end(), r.begin(), r.end());
        }
        Vec hpad = fc.h;
        hpad.resize(n, 0.0);
        const std::vector<Cx> H = Dft(hpad, n);

        Vec msxy(half), psxy(half), mhf(half), phf(half), coh(half), imp(n + 1, kSentinel);
        double df = 0;
        ASSERT_EQ(NetworkFunctionsCore(S.data(), R.data(), n, fc.frames, 0.01, msxy.data(), psxy.data(), mhf.data(),
                                       phf.data(), coh.data(), imp.data(), &df),
                  kOk);
        EXPECT_DOUBLE_EQ(df, 100.0 / n);
        EXPECT_EQ(imp[n], kSentinel);
        // Averaged cross spectrum from the naive DFT.
        std::vector<Cx> sxy(n);
        for (int f = 0; f < fc.frames; ++f) {
            const Vec s(S.begin() + f * n, S.begin() + (f + 1) * n), r(R.begin() + f * n, R.begin() + (f + 1) * n);
            const std::vector<Cx> X = Dft(s, n), Y = Dft(r, n);
            for (int k = 0; k < n; ++k) sxy[k] += std::conj(X[k]) * Y[k] / double(n * n) / double(fc.frames);
        }
        for (int k = 0; k < half; ++k) {
            EXPECT_NEAR(mhf[k], std::abs(H[k]), 1e-12) << k;
            EXPECT_NEAR(WrapPhase(phf[k] - std::arg(H[k])), 0, 1e-10) << k;
            EXPECT_NEAR(coh[k], 1.0, 1e-12) << k;
            EXPECT_NEAR(msxy[k], (k == 0 ? 1 : 2) * std::abs(sxy[k]), 1e-13) << k;
            EXPECT_NEAR(WrapPhase(psxy[k] - std::arg(sxy[k])), 0, 1e-9) << k;
        }
        for (int i = 0; i < n; ++i) EXPECT_NEAR(imp[i], hpad[i], 1e-13) << i;

        // One pair: TransferFunction and ImpulseResponse give the same system.
        Vec tmag(half + 1, kSentinel), tph(half + 1, kSentinel), ir(n + 1, kSentinel);
        ASSERT_EQ(TransferFunctionCore(S.data(), R.data(), n, 0.01, tmag.data(), tph.data(), &df), kOk);
        ASSERT_EQ(ImpulseResponseCore(S.data(), R.data(), n, ir.data()), kOk);
        EXPECT_EQ(tmag[half], kSentinel);
        EXPECT_EQ(ir[n], kSentinel);
        for (int k = 0; k < half; ++k) {
            EXPECT_NEAR(tmag[k], std::abs(H[k]), 1e-12) << k;
            EXPECT_NEAR(WrapPhase(tph[k] - std::arg(H[k])), 0, 1e-10) << k;
        }
        for (int i = 0; i < n; ++i) EXPECT_NEAR(ir[i], hpad[i], 1e-13) << i;
    }
}

TEST(NetworkMeasurements, ResponseOfOppositeSign) {
    const int n = 16;
    const Vec s = Noise(n, 0.9);
    Vec neg(n), mag(n / 2), ph(n / 2);
    for (int i = 0; i < n; ++i) neg[i] = -s[i];
    double df;
    ASSERT_EQ(TransferFunctionCore(s.data(), neg.data(), n, 1, mag.data(), ph.data(), &df), kOk);
    EXPECT_EQ(ph[0], kPi);
    for (int k = 0; k < n / 2; ++k) {
        EXPECT_NEAR(mag[k], 1, 1e-13);
        EXPECT_NEAR(std::fabs(ph[k]), kPi, 1e-13);
    }
}

// Statuses in their order, and records of one sample: single-sided outputs
// have no element and must not be written; the one-sample impulse response
// is r/s.
TEST(SpectraStatuses, ChecksAndOneSampleRecords) {
    Vec x(64, 1.0), o(64);
    double d = 0, e = 0;
    double* p = o.data();
    const double* q = x.data();
    using Call = std::function<AnalysisStatus(int n)>;
    struct Row { const char* name; Call call; int n; AnalysisStatus want; } rows[] = {
        {"aps", [&](int n) { return AutoPowerSpectrumCore(q, n, 1, p, &d); }, 0, kErrSamplesBelowOne},
        {"aps", [&](int n) { return AutoPowerSpectrumCore(q, n, 1, p, &d); }, 6, kErrNotPowerOfTwo},
        {"amp", [&](int n) { return AmpPhaseSpectrumCore(q, n, 1, 1, p, p, &d); }, 12, kErrNotPowerOfTwo},
        {"cross", [&](int n) { return CrossSpectrumCore(q, q, n, p, p); }, 0, kErrSamplesBelowOne},
        {"cross", [&](int n) { return CrossSpectrumCore(q, q, n, p, p); }, (1 << 30) + 1, kErrNoMemory},
        {"cpower", [&](int n) { return CrossPowerSpectrumCore(q, q, n, 1, p, p, &d); }, 5, kErrNotPowerOfTwo},
        {"acdc", [&](int n) { return ACDCEstimatorCore(q, n, &d, &e); }, 0, kErrSamplesBelowOne},
        {"net", [&](int n) { return NetworkFunctionsCore(q, q, n, 1, 1, p, p, p, p, p, p, &d); }, 0, kErrSamplesBelowOne},
        {"net frames", [&](int n) { return NetworkFunctionsCore(q, q, n, 0, 1, p, p, p, p, p, p, &d); }, 8,
         kErrSamplesBelowOne},
        {"net", [&](int n) { return NetworkFunctionsCore(q, q, n, 1, 1, p, p, p, p, p, p, &d); }, 24, kErrNotPowerOfTwo},
        {"tf", [&](int n) { return TransferFunctionCore(q, q, n, 1, p, p, &d); }, 3, kErrNotPowerOfTwo},
        {"ir", [&](int n) { return ImpulseResponseCore(q, q, n, p); }, 0, kErrSamplesBelowOne},
        {"peak", [&](int n) { return PeakPowerFrequency(q, n, -1, 1, 1, 1, 2, &d, &e); }, 0, kErrSamplesBelowOne},
    };
    for (const Row& r : rows) EXPECT_EQ(r.call(r.n), r.want) << r.name << " n = " << r.n;
    EXPECT_EQ(CrossSpectrumLength(0), 0);

    const double s1 = 4, r1 = -2;
    std::fill(o.begin(), o.end(), kSentinel);
    double imp = kSentinel, imp2 = kSentinel;
    EXPECT_EQ(NetworkFunctionsCore(&s1, &r1, 1, 1, 1, p, p, p, p, p, &imp, &d), kOk);
    EXPECT_EQ(ImpulseResponseCore(&s1, &r1, 1, &imp2), kOk);
    EXPECT_EQ(TransferFunctionCore(&s1, &r1, 1, 1, p, p, &d), kOk);
    EXPECT_EQ(CrossPowerSpectrumCore(&s1, &r1, 1, 1, p, p, &d), kOk);
    EXPECT_EQ(AmpPhaseSpectrumCore(&s1, 1, 1, 1, p, p, &d), kOk);
    EXPECT_EQ(AutoPowerSpectrumCore(&s1, 1, 1, p, &d), kOk);
    EXPECT_EQ(o[0], kSentinel);
    EXPECT_EQ(imp, -0.5);
    EXPECT_EQ(imp2, -0.5);
}

TEST(PowerFrequencyEstimate, SpanCentreAndEdges) {
    const Vec ones(10, 1.0);
    struct Row { double search, df; int span; double bins; double freq; } rows[] = {
        {5.0, 1.0, 0, 3, 5},     {5.0, 1.0, 3, 3, 5},  {5.0, 1.0, 4, 5, 5},  {5.0, 1.0, 5, 5, 5},
        {5.0, 1.0, 6, 7, 5},     {0.4, 1.0, 4, 3, 1},  {9.9, 1.0, 6, 4, 7.5}, {2.5, 0.5, 2, 3, 5 * 0.5},
        {2000, 1.0, 2, 3, 1}};
    for (const Row& r : rows) {
        SCOPED_TRACE(r.span);
        double f = 0, p = 0;
        Vec s = ones;
        if (r.search > 100) s[1] = 3;  // beyond the last bin: centre on the maximum
        ASSERT_EQ(PeakPowerFrequency(s.data(), 10, r.search, 1.0, 0.5, r.df, r.span, &f, &p), kOk);
        EXPECT_DOUBLE_EQ(p, r.search > 100 ? 5 : r.bins);
        EXPECT_NEAR(f, r.search > 100 ? (0 + 3 + 2) / 5.0 : r.freq, 1e-14);
    }
    // A negative SearchFreq centres on the first largest element; an empty
    // run of power gives the centre bin's frequency.
    Vec s(16, 0.0);
    double f, p;
    ASSERT_EQ(PeakPowerFrequency(s.data(), 16, 3.0, 2.0, 1, 0.5, 4, &f, &p), kOk);
    EXPECT_EQ(f, 3.0);
    EXPECT_EQ(p, 0.0);
    s[11] = 4, s[3] = 4;
    ASSERT_EQ(PeakPowerFrequency(s.data(), 16, -1, 2.0, 1, 0.5, 2, &f, &p), kOk);
    EXPECT_EQ(f, 1.5);
    EXPECT_EQ(p, 2.0);
}

TEST(PowerFrequencyEstimate, ToneBetweenBinsThroughScaledHanning) {
    // A Hanning-windowed record divided by the coherent gain: summing the
    // main lobe and dividing by ENBW gives the tone's power A^2/2, and the
    // centroid its frequency.
    const int n = 512;
    const double dt = 1e-3, amp = 1.7;
    for (double bins : {40.0, 40.25, 40.5, 63.8}) {
        SCOPED_TRACE(bins);
        Vec x = Tone(n, amp, bins, 0.3);
        double enbw, cg;
        ASSERT_EQ(ScaledWindowCore(x.data(), n, 1, &enbw, &cg), kOk);
        Vec s(n / 2);
        double df, f, p;
        ASSERT_EQ(AutoPowerSpectrumCore(x.data(), n, dt, s.data(), &df), kOk);
        ASSERT_EQ(PeakPowerFrequency(s.data(), n / 2, bins * df, enbw, cg, df, 8, &f, &p), kOk);
        EXPECT_NEAR(p, amp * amp / 2, 2e-3 * amp * amp);
        EXPECT_NEAR(f / df, bins, 0.02);
    }
}

TEST(SpectrumUnitConversion, EveryCombinationOnAKnownSinusoid) {
    // Cosine of amplitude A at bin k0 through an unscaled Hanning window:
    // its power spectrum holds (cg A)^2/2 at k0.
    const int n = 64, k0 = 6;
    const double A = 3.0, dt = 1e-4;
    Vec x = Tone(n, A, k0, 0.7);
    ASSERT_EQ(HanningWindow(x.data(), n), kOk);
    Vec ps(n / 2);
    double df;
    ASSERT_EQ(AutoPowerSpectrumCore(x.data(), n, dt, ps.data(), &df), kOk);
    const double cg = 0.5, enbw = 1.5, bw = df * enbw, power = A * A / 2, seen = cg * cg * power;
    ASSERT_NEAR(ps[k0], seen, 1e-12);

    // The same bin stated in each input type.
    const double input[4] = {seen, seen / bw, std::sqrt(seen), std::sqrt(seen / bw)};
    // Linear value of each display unit: Vrms, Vpk, Vrms^2, Vpk^2, then per Hz.
    const double lin[8] = {A / std::sqrt(2.0), A, power, A * A,
                           A / std::sqrt(2.0 * bw), A / std::sqrt(bw), power / bw, A * A / bw};
    for (int type = 0; type < 4; ++type)
        for (int unit = 0; unit < 8; ++unit)
            for (int scaling = 0; scaling < 3; ++scaling) {
                SCOPED_TRACE(std::to_string(type) + "/" + std::to_string(unit) + "/" + std::to_string(scaling));
                const double amplitude_unit = (unit & 3) < 2;
                const double want = scaling == 0   ? lin[unit]
                                    : scaling == 1 ? (amplitude_unit ? 20 : 10) * std::log10(lin[unit])
                                                   : 10 * std::log10((unit >= 4 ? power / bw : power) / 50 / 1e-3);
                double out[2] = {kSentinel, kSentinel};
                ASSERT_EQ(SpectrumUnitConversionCore(&input[type], 1, type, scaling, unit, df, enbw, cg, out), kOk);
                EXPECT_NEAR(out[0], want, 1e-12 * std::fabs(want) + 1e-13);
                EXPECT_EQ(out[1], kSentinel);
            }
    // Whole spectrum: the zero bins become -inf in dB.
    Vec out(n / 2);
    ASSERT_EQ(SpectrumUnitConversionCore(ps.data(), n / 2, 0, 1, 2, df, enbw, cg, out.data()), kOk);
    EXPECT_NEAR(out[k0], 10 * std::log10(power), 1e-12);
    EXPECT_LT(out[k0 + 3], -200);

    struct Row { int n, type, scaling, unit; AnalysisStatus want; } rows[] = {
        {0, 9, 0, 0, kErrSamplesBelowOne}, {1, 4, 0, 0, kErrInvalidSelection}, {1, -1, 0, 0, kErrInvalidSelection},
        {1, 0, 3, 0, kErrInvalidSelection}, {1, 0, 0, 8, kErrInvalidSelection}, {1, 0, 0, -1, kErrInvalidSelection}};
    for (const Row& r : rows) {
        double o = kSentinel;
        EXPECT_EQ(SpectrumUnitConversionCore(ps.data(), r.n, r.type, r.scaling, r.unit, 1, 1, 1, &o), r.want);
        EXPECT_EQ(o, kSentinel);
    }
}

}  // namespace
}  // namespace vn
