// IIR designs against their analog prototypes: the magnitude of the returned
// coefficients at prewarped frequencies equals the closed-form Butterworth,
// Chebyshev or inverse Chebyshev magnitude; every pole lies inside the unit
// circle (Schur-Cohn step-down); the filtering kernels and the coefficient
// designs give the same impulse response; every section kind bit for bit
// against its equation written out here; the direct-form runner against a
// difference equation written out here, and split records against whole ones.
#include "analysis/filter/iir.h"
#include "analysis/filter/iir_design.h"

#include <gtest/gtest.h>

#include <cmath>
#include <algorithm>
#include <complex>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace vn {
namespace {

using Vec = std::vector<double>;
using Cx = std::complex<double>;
constexpr double kPi = 3.14159265358979323846;

enum Fam { kBw, kCh, kInvCh, kElp };
const char* const kFamName[] = {"Bw", "Ch", "InvCh", "Elp"};
const char* const kTypeName[] = {"LP", "HP", "BP", "BS"};

constexpr double kFs = 1000, kFc = 120, kFl = 100, kFh = 260, kRipple = 1.0, kAtten = 40.0;

// |B(z)/A(z)| at z = exp(j 2 pi f/fs).
double Magnitude(const Vec& a, const Vec& b, double f) {
    const Cx z1 = std::polar(1.0, -2 * kPi * f / kFs);
    Cx num = 0, den = 0, zk = 1;
    for (std::size_t k = 0; k < std::max(a.size(), b.size()); ++k, zk *= z1) {
        if (k < b.size()) num += b[k] * zk;
        if (k < a.size()) den += a[k] * zk;
    }
    return std::abs(num / den);
}

double Cheb(int n, double x) {
    x = std::fabs(x);
    return x <= 1 ? std::cos(n * std::acos(x)) : std::cosh(n * std::acosh(x));
}

// Closed-form magnitude of the analog prototype at the frequency the
// bilinear transform maps f to.
double Prototype(Fam fam, int type, int order, double f) {
    const double w = std::tan(kPi * f / kFs);
    double wn;
    if (type < 2) {
        const double t = std::tan(kPi * kFc / kFs);
        wn = type == 0 ? w / t : t / w;
    } else {
        const double tl = std::tan(kPi * kFl / kFs), th = std::tan(kPi * kFh / kFs), B = th - tl, P = th * tl;
        wn = type == 2 ? (w * w - P) / (B * w) : B * w / (P - w * w);
    }
    wn = std::fabs(wn);
    if (fam == kBw || (fam == kCh && order == 1 && type >= 2)) return 1 / std::sqrt(1 + std::pow(wn, 2 * order));
    if (fam == kCh) {
        const double eps2 = std::pow(10.0, kRipple / 10) - 1;
        // Unit gain at wn = 0 unless the lowpass/highpass correction applies.
        const double dc = (order % 2 == 0 && type >= 2) ? std::sqrt(1 + eps2) : 1.0;
        const double tn = Cheb(order, wn);
        return dc / std::sqrt(1 + eps2 * tn * tn);
    }
    const double e2 = 1 / (std::pow(10.0, kAtten / 10) - 1);
    const double tn = Cheb(order, 1 / wn);
    return 1 / std::sqrt(1 + 1 / (e2 * tn * tn));
}

AnalysisStatus Design(Fam fam, int type, int order, double fl, double fh, Vec& a, Vec& b) {
    switch (fam) {
    case kBw: return BwCoefDesign(type, order, kFs, fl, fh, a.data(), int(a.size()), b.data(), int(b.size()));
    case kCh: return ChCoefDesign(type, order, kFs, fl, fh, kRipple, a.data(), int(a.size()), b.data(), int(b.size()));
    case kElp:
        return ElpCoefDesign(type, order, kFs, fl, fh, kRipple, kAtten, a.data(), int(a.size()), b.data(),
                             int(b.size()));
    default:
        return InvChCoefDesign(type, order, kFs, fl, fh, kAtten, a.data(), int(a.size()), b.data(), int(b.size()));
    }
}

// The filtering kernel of (fam, type).
AnalysisStatus Filter(Fam fam, int type, const Vec& x, int order, Vec& y) {
    const int n = int(x.size());
    const double p = fam == kCh ? kRipple : kAtten;
    using Single = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, std::int32_t, double*);
    using Band = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, double, std::int32_t, double*);
    if (fam == kBw) {
        switch (type) {
        case 0: return BwLowPass(x.data(), n, kFs, kFc, order, y.data());
        case 1: return BwHighPass(x.data(), n, kFs, kFc, order, y.data());
        case 2: return BwBandPass(x.data(), n, kFs, kFl, kFh, order, y.data());
        default: return BwBandStop(x.data(), n, kFs, kFl, kFh, order, y.data());
        }
    }
    if (fam == kElp) {
        switch (type) {
        case 0: return ElpLowPass(x.data(), n, kFs, kFc, kRipple, kAtten, order, y.data());
        case 1: return ElpHighPass(x.data(), n, kFs, kFc, kRipple, kAtten, order, y.data());
        case 2: return ElpBandPass(x.data(), n, kFs, kFl, kFh, kRipple, kAtten, order, y.data());
        default: return ElpBandStop(x.data(), n, kFs, kFl, kFh, kRipple, kAtten, order, y.data());
        }
    }
    const Single single[2][2] = {{ChLowPass, ChHighPass}, {InvChLowPass, InvChHighPass}};
    const Band band[2][2] = {{ChBandPass, ChBandStop}, {InvChBandPass, InvChBandStop}};
    const int f = fam == kCh ? 0 : 1;
    if (type < 2) return single[f][type](x.data(), n, kFs, kFc, p, order, y.data());
    return band[f][type - 2](x.data(), n, kFs, kFl, kFh, p, order, y.data());
}

// All roots of a(z) inside the unit circle: every reflection coefficient of
// the step-down recursion has magnitude below 1.
bool Stable(Vec a) {
    while (a.size() > 1) {
        const std::size_t m = a.size() - 1;
        const double k = a[m] / a[0];
        if (!(std::fabs(k) < 1)) return false;
        Vec next(m);
        for (std::size_t i = 0; i < m; ++i) next[i] = (a[i] - k * a[m - i]) / (1 - k * k);
        a = next;
    }
    return true;
}

struct Case {
    Fam fam;
    int type, order;
    std::string Name() const {
        return std::string(kFamName[fam]) + kTypeName[type] + " order " + std::to_string(order);
    }
};

std::vector<Case> AllCases(std::initializer_list<Fam> fams = {kBw, kCh, kInvCh}) {
    std::vector<Case> cases;
    for (Fam fam : fams)
        for (int type = 0; type < 4; ++type)
            for (int order = 1; order <= (type < 2 ? 8 : 5); ++order) cases.push_back({fam, type, order});
    return cases;
}

TEST(IirDesign, MagnitudeMatchesAnalogPrototypeAndPolesAreInside) {
    for (const Case& c : AllCases()) {
        SCOPED_TRACE(c.Name());
        const int m = c.type < 2 ? c.order + 1 : 2 * c.order + 1;
        Vec a(m + 3, 7.0), b(m + 2, 7.0);  // entries past m must stay untouched
        ASSERT_EQ(Design(c.fam, c.type, c.order, c.type < 2 ? kFc : kFl, kFh, a, b), kOk);
        for (int i = m; i < int(a.size()); ++i) EXPECT_EQ(a[i], 7.0);
        for (int i = m; i < int(b.size()); ++i) EXPECT_EQ(b[i], 7.0);
        a.resize(m), b.resize(m);
        EXPECT_EQ(a[0], 1.0);
        EXPECT_TRUE(Stable(a));
        Vec freqs = {0, kFc, kFl, kFh, kFs / 2, 0.999 * kFs / 2};
        for (int i = 1; i < 50; ++i) freqs.push_back(i * kFs / 100 + 0.37);
        for (double f : freqs) EXPECT_NEAR(Magnitude(a, b, f), Prototype(c.fam, c.type, c.order, f), 2e-9) << "f=" << f;
    }
}

// Closed forms named: Butterworth -3.01 dB at the cutoff, Chebyshev -R dB at
// the passband edge and the even-order lowpass DC gain, inverse Chebyshev
// -A dB at the stopband edge, and the band filters' unit gain at the centre.
TEST(IirDesign, EdgeGainsInDecibels) {
    auto db = [](Fam fam, int type, int order, double f) {
        const int m = type < 2 ? order + 1 : 2 * order + 1;
        Vec a(m), b(m);
        EXPECT_EQ(Design(fam, type, order, type < 2 ? kFc : kFl, kFh, a, b), kOk);
        return 20 * std::log10(Magnitude(a, b, f));
    };
    const double centre = std::atan(std::sqrt(std::tan(kPi * kFl / kFs) * std::tan(kPi * kFh / kFs))) * kFs / kPi;
    const double half = -10 * std::log10(2.0);
    struct Row {
        Fam fam;
        int type, order;
        double f, want;
    } rows[] = {
        {kBw, 0, 5, kFc, half},        {kBw, 1, 4, kFc, half},        {kBw, 2, 3, kFl, half},
        {kBw, 3, 2, kFh, half},        {kCh, 0, 4, kFc, -kRipple},    {kCh, 0, 4, 0, -kRipple},
        {kCh, 0, 5, 0, 0},             {kCh, 1, 6, kFs / 2, -kRipple}, {kCh, 1, 3, kFc, -kRipple},
        {kCh, 2, 4, centre, 0},        {kCh, 2, 4, kFh, 0},           {kCh, 3, 3, kFl, -kRipple},
        {kCh, 2, 1, kFh, half},        {kInvCh, 0, 5, kFc, -kAtten},  {kInvCh, 1, 4, kFc, -kAtten},
        {kInvCh, 2, 3, kFl, -kAtten},  {kInvCh, 3, 4, kFh, -kAtten},  {kInvCh, 0, 4, 0, 0},
        {kInvCh, 1, 3, kFs / 2, 0},    {kInvCh, 2, 4, centre, 0},     {kInvCh, 3, 3, 0, 0},
    };
    for (const Row& r : rows)
        EXPECT_NEAR(db(r.fam, r.type, r.order, r.f), r.want, 1e-8)
            << kFamName[r.fam] << kTypeName[r.type] << " order " << r.order << " f=" << r.f;
}

// ---------------------------------------------------------------------------
// Elliptic designs as a filter designer checks them. The selectivity modulus
// k comes from the degree equation K'(k)/K(k) = K'(k1)/(N K(k1)), k1 = ep/es,
// solved here by bisection with K from tanh-sinh quadrature (not the AGM
// and nome series of the design). Mapped to the prototype frequency W
// (passband |W| <= 1, stopband |W| >= 1/k), the response must hold the gain
// at 0 and -R dB alternately N times in the passband, be exactly -R dB at
// the passband edge and -A dB at the stopband edge, and stay below -A dB
// beyond it.

// K(k) = integral over 0..1 of dt/sqrt((1 - t^2)(1 - k^2 t^2)), by tanh-sinh
// quadrature (t = tanh(pi/2 sinh x)), whose nodes crowd the endpoint
// singularity. The complement kc enters 1 - k t = (1 - t) + t kc^2/(1 + k),
// so that a modulus within 1e-11 of 1 keeps its digits.
double EllipticK(double k, double kc) {
    const double h = 1.0 / 64;
    double sum = 0;
    for (int i = 0; i <= 64 * 6; ++i) {
        const double x = i * h, u = kPi / 2 * std::sinh(x), c = std::cosh(u);
        const double t = std::tanh(u), omt = 2 / (std::exp(2 * u) + 1);  // 1 - t without cancellation
        if (omt <= 0) break;
        const double w = (i == 0 ? 0.5 : 1.0) * kPi / 2 * std::cosh(x) / (c * c);
        sum += w / std::sqrt(omt * (1 + t) * (omt + t * kc * kc / (1 + k)) * (1 + k * t));
    }
    return sum * h;
}

double SelectivityModulus(int order, double ripple, double atten) {
    const double k1 = std::sqrt((std::pow(10.0, ripple / 10) - 1) / (std::pow(10.0, atten / 10) - 1));
    const double k1c = std::sqrt(1 - k1 * k1);
    const double target = EllipticK(k1c, k1) / (order * EllipticK(k1, k1c));
    double lo = 0, hi = 1;  // K'(k)/K(k) falls as k rises
    for (int i = 0; i < 60; ++i) {
        const double k = (lo + hi) / 2, kc = std::sqrt(1 - k * k);
        (EllipticK(kc, k) / EllipticK(k, kc) > target ? lo : hi) = k;
    }
    return (lo + hi) / 2;
}

// Prototype frequency |W| of f for the type (kFc, kFl, kFh as everywhere).
double PrototypeFrequency(int type, double f) {
    const double w = std::tan(kPi * f / kFs);
    const double t = std::tan(kPi * kFc / kFs);
    const double tl = std::tan(kPi * kFl / kFs), th = std::tan(kPi * kFh / kFs), B = th - tl, P = th * tl;
    switch (type) {
    case 0: return w / t;
    case 1: return t / w;
    case 2: return std::fabs((w * w - P) / (B * w));
    default: return std::fabs(B * w / (P - w * w));
    }
}

// A frequency (above the band centre for the band types) where |W| = target.
double FrequencyOf(int type, double target) {
    const double t = std::tan(kPi * kFc / kFs);
    const double tl = std::tan(kPi * kFl / kFs), th = std::tan(kPi * kFh / kFs), B = th - tl, P = th * tl;
    double w;
    switch (type) {
    case 0: w = t * target; break;
    case 1: w = t / target; break;
    case 2: w = (B * target + std::sqrt(B * B * target * target + 4 * P)) / 2; break;
    default: w = (B / target + std::sqrt(B * B / (target * target) + 4 * P)) / 2; break;
    }
    return std::atan(w) * kFs / kPi;
}

TEST(IirElliptic, PassbandStopbandAndTheNarrowestTransition) {
    struct Spec {
        double ripple, atten;
    } specs[] = {{1.0, 40.0}, {0.1, 60.0}, {3.0, 20.0}, {0.01, 80.0}};
    for (const Spec& sp : specs)
        for (int type = 0; type < 4; ++type)
            for (int order = 1; order <= (type < 2 ? 8 : 5); ++order) {
                SCOPED_TRACE(std::string(kTypeName[type]) + " order " + std::to_string(order) + " R " +
                             std::to_string(sp.ripple) + " A " + std::to_string(sp.atten));
                const int m = type < 2 ? order + 1 : 2 * order + 1;
                Vec a(m), b(m);
                ASSERT_EQ(ElpCoefDesign(type, order, kFs, type < 2 ? kFc : kFl, kFh, sp.ripple, sp.atten, a.data(), m,
                                        b.data(), m),
                          kOk);
                EXPECT_EQ(a[0], 1.0);
                EXPECT_TRUE(Stable(a));
                auto db = [&](double f) { return 20 * std::log10(Magnitude(a, b, f)); };
                const double k = SelectivityModulus(order, sp.ripple, sp.atten);
                // (The direct form of a degree-16 polynomial with poles near
                // the unit circle evaluates to about 1e-5 dB.)
                EXPECT_NEAR(db(FrequencyOf(type, 1)), -sp.ripple, 1e-4);
                EXPECT_NEAR(db(FrequencyOf(type, 1 / k)), -sp.atten, 1e-4);
                // The passband along the prototype axis W = sin(theta) (so
                // that the ripples crowding towards the edge are resolved):
                // bounds and crossings of the mid level. The stopband on a
                // dense grid of frequencies.
                int crossings = 0, side = 0;
                double top = -1e9, bottom = 1e9, stop = -1e9;
                const int grid = 20000;
                for (int i = 0; i <= grid; ++i) {
                    const double g = db(FrequencyOf(type, std::sin(kPi / 2 * i / grid)));
                    top = std::max(top, g), bottom = std::min(bottom, g);
                    const int s = g > -sp.ripple / 2 ? 1 : -1;
                    if (side != 0 && s != side) ++crossings;
                    side = s;
                }
                for (int i = 1; i < grid; ++i) {
                    const double f = i * (kFs / 2) / grid;
                    if (PrototypeFrequency(type, f) >= 1 / k) stop = std::max(stop, db(f));
                }
                EXPECT_LE(top, 1e-4);
                EXPECT_NEAR(top, 0, 1e-3);
                EXPECT_GE(bottom, -sp.ripple - 1e-4);
                EXPECT_EQ(crossings, order);
                EXPECT_LE(stop, -sp.atten + 1e-4);
            }
}

// Specifications at the ends of what a double can express still give a
// finite, stable cascade: a ripple of 1e-9 dB, attenuations far beyond
// any converter (all zeros then lie beyond 1e75 times the edge and are taken
// at infinity), an attenuation a hair above the ripple, and orders whose
// transition band is narrower than a double can resolve. Where the
// specification itself puts poles closer to the unit circle than a double
// resolves (onCircle), their sections may round onto it.
TEST(IirElliptic, ExtremeSpecificationsStayFiniteAndStable) {
    struct Row {
        int type, order;
        double ripple, atten;
        bool onCircle;
    } rows[] = {
        {0, 4, 1e-9, 60, false},    {1, 5, 1e-300, 40, true},   {0, 6, 1, 5000, false},
        {3, 3, 0.5, 1e6, false},    {2, 4, 1, 1.000001, true},  {0, 2, 1000, 1001, true},
        {0, 20, 1, 40, false},      {2, 40, 0.1, 30, true},     {1, 200, 3, 100, true},
        {3, 7, 1e-5, 1e300, false}, {0, 1, 2, 1e308, false},    {2, 9, 1e-12, 1e-11, false},
    };
    const int n = 400;
    Vec x(n, 0.0);
    x[0] = 1;
    for (const Row& r : rows) {
        SCOPED_TRACE(std::string(kTypeName[r.type]) + " order " + std::to_string(r.order) + " R " +
                     std::to_string(r.ripple) + " A " + std::to_string(r.atten));
        Vec y(n);
        const double fl = r.type < 2 ? kFc : kFl;
        AnalysisStatus st = r.type == 0   ? ElpLowPass(x.data(), n, kFs, fl, r.ripple, r.atten, r.order, y.data())
                            : r.type == 1 ? ElpHighPass(x.data(), n, kFs, fl, r.ripple, r.atten, r.order, y.data())
                            : r.type == 2 ? ElpBandPass(x.data(), n, kFs, kFl, kFh, r.ripple, r.atten, r.order, y.data())
                                          : ElpBandStop(x.data(), n, kFs, kFl, kFh, r.ripple, r.atten, r.order, y.data());
        ASSERT_EQ(st, kOk);
        // A stable cascade's impulse response is finite and dies away.
        double head = 0, tail = 0;
        for (int i = 0; i < n; ++i) {
            ASSERT_TRUE(std::isfinite(y[i])) << i;
            (i < n / 2 ? head : tail) = std::max(i < n / 2 ? head : tail, std::fabs(y[i]));
        }
        if (r.order <= 9) {
            EXPECT_LT(tail, head);
        }
        // Every section's poles inside the unit circle (the direct form of
        // the product rounds poles this close to the circle across it).
        IirSectionSource source(IirFamily::kElliptic, r.type, r.order, kFs, fl, kFh, r.ripple, r.atten);
        IirSection s;
        int sections = 0;
        while (source.Next(s)) {
            for (int i = 0; i < s.len; ++i) ASSERT_TRUE(std::isfinite(s.a[i]) && std::isfinite(s.g * s.num[i])) << i;
            if (!r.onCircle) {
                EXPECT_TRUE(Stable(Vec(s.a, s.a + s.len))) << "section " << sections;
            }
            ++sections;
        }
        EXPECT_EQ(sections, r.order / 2 + r.order % 2);
    }
}

// The filtering kernels run the sections, the designs multiply them: the
// same impulse response to rounding, and the same response when the input
// buffer is also the output.
TEST(IirDesign, FilteringEqualsCoefficientsOnAnImpulse) {
    const int n = 300;
    Vec x(n, 0.0);
    x[0] = 1;
    for (const Case& c : AllCases({kBw, kCh, kInvCh, kElp})) {
        SCOPED_TRACE(c.Name());
        const int m = c.type < 2 ? c.order + 1 : 2 * c.order + 1;
        Vec a(m), b(m), y1(m - 1, 0.0), x1(m - 1, 0.0), want(n), got(n);
        ASSERT_EQ(Design(c.fam, c.type, c.order, c.type < 2 ? kFc : kFl, kFh, a, b), kOk);
        ASSERT_EQ(IIRFilterRun(x.data(), n, a.data(), y1.data(), m, b.data(), x1.data(), m, want.data()), kOk);
        ASSERT_EQ(Filter(c.fam, c.type, x, c.order, got), kOk);
        double peak = 0;
        for (double v : want) peak = std::max(peak, std::fabs(v));
        for (int i = 0; i < n; ++i) ASSERT_NEAR(got[i], want[i], 1e-10 * peak) << "sample " << i;
        Vec inplace = x;
        ASSERT_EQ(Filter(c.fam, c.type, inplace, c.order, inplace), kOk);
        EXPECT_EQ(inplace, got);
    }
}

// ---------------------------------------------------------------------------
// The filtering kernels against the section equations written out plainly,
// bit for bit on a random record: a change in the order of operations of any
// section kind, in the pole angles or in the section order shows up here.

std::uint64_t Bits(double v) {
    std::uint64_t u;
    std::memcpy(&u, &v, sizeof u);
    return u;
}

// One section from rest; eq(X, Y) sees X[k] = x[n-k] and Y[k] = y[n-k].
template <class Eq>
Vec Section(const Vec& in, Eq eq) {
    Vec out(in.size());
    for (std::size_t n = 0; n < in.size(); ++n) {
        double X[5], Y[5];
        for (std::size_t k = 0; k < 5; ++k) {
            X[k] = n >= k ? in[n - k] : 0.0;
            Y[k] = k > 0 && n >= k ? out[n - k] : 0.0;
        }
        out[n] = eq(X, Y);
    }
    return out;
}

// y[n] = (b[0]x[n] + b[1]x[n-1] + ...) - (a[1]y[n-1] + a[2]y[n-2] + ...),
// over a[0].
Vec Direct(const Vec& in, const Vec& b, const Vec& a) {
    return Section(in, [&](const double* X, const double* Y) {
        double s = b[0] * X[0];
        for (std::size_t k = 1; k < b.size(); ++k) s = s + b[k] * X[k];
        double r = a[1] * Y[1];
        for (std::size_t k = 2; k < a.size(); ++k) r = r + a[k] * Y[k];
        return (s - r) / a[0];
    });
}

double Theta(int k, int N) { return (kPi + kPi / N) / 2 + k * kPi / N; }

Vec RefButterworth(int type, int N, Vec x) {
    if (type < 2) {
        const double T = std::tan(kPi * kFc / kFs);
        if (N % 2 == 1) {
            if (type == 0) {
                const double g = T / (1 + T), r = (1 - T) / (1 + T);
                x = Section(x, [&](const double* X, const double* Y) { return g * (X[0] + X[1]) + r * Y[1]; });
            } else {
                const double g = 1 / (1 + T);
                x = Section(x, [&](const double* X, const double* Y) { return g * (X[0] - X[1]) + (1 - T) * g * Y[1]; });
            }
        }
        for (int k = 0; k < N / 2; ++k) {
            const double u = 2 * T * std::cos(Theta(k, N));
            if (type == 0) {
                const double d = T * T - u + 1;
                x = Section(x, [&](const double* X, const double* Y) {
                    return (T * T / d) * (X[0] + 2 * X[1] + X[2]) + ((2 - 2 * T * T) / d) * Y[1] -
                           ((T * T + u + 1) / d) * Y[2];
                });
            } else {
                const double g = 1 / (T * T + 1 - u);
                x = Section(x, [&](const double* X, const double* Y) {
                    return g * (X[0] - 2 * X[1] + X[2]) + g * (2 - 2 * T * T) * Y[1] - g * (T * T + 1 + u) * Y[2];
                });
            }
        }
        return x;
    }
    const double Tl = std::tan(kPi * kFl / kFs), Th = std::tan(kPi * kFh / kFs), B = Th - Tl, P = Th * Tl;
    if (N % 2 == 1) {
        if (type == 2) {
            const double D = B + P + 1;
            x = Direct(x, {B / D, 0, -B / D}, {1, -2 * (1 - P) / D, (P - B + 1) / D});
        } else {
            const double D = P + B + 1;
            x = Direct(x, {(1 + P) / D, -2 * (1 - P) / D, (1 + P) / D}, {1, -2 * (1 - P) / D, (P - B + 1) / D});
        }
    }
    for (int k = 0; k < N / 2; ++k) {
        const double e = -2 * B * std::cos(Theta(k, N)), f = P * e, S = B * B + 2 * P;
        const double D = P * P + f + S + e + 1;
        const Vec a = {1, (2 * (2 * (P * P) - (e - f)) - 4) / D, (2 * (3 * (P * P) - S) + 6) / D,
                       (2 * ((e - f) + 2 * (P * P)) - 4) / D, (S - f - e + P * P + 1) / D};
        const double g = B * B / D;
        const double n0 = (P * P + 2 * P + 1) / D, n1 = -4 * (1 - P * P) / D,
                     n2 = (2 * (3 * (P * P) - 2 * P) + 6) / D;
        x = type == 2 ? Direct(x, {g, 0, -2 * g, 0, g}, a) : Direct(x, {n0, n1, n2, n1, n0}, a);
    }
    return x;
}

// Chebyshev lowpass, highpass and bandpass.
Vec RefChebyshev(int type, int N, Vec x) {
    const double P0 = std::pow(10.0, 0.1 * kRipple), eps = std::sqrt(P0 - 1);
    const double w = std::pow((1 + std::sqrt(P0)) / eps, 1.0 / N), sh = (w - 1 / w) / 2, ch = (w + 1 / w) / 2;
    const double T = std::tan(kPi * kFc / kFs);
    if (type < 2) {
        if (N % 2 == 1) {
            if (type == 0) {
                const double A = sh * T;
                x = Section(x, [&](const double* X, const double* Y) {
                    return (A / (1 + A)) * (X[0] + X[1]) + ((1 - A) / (1 + A)) * Y[1];
                });
            } else {
                x = Section(x, [&](const double* X, const double* Y) {
                    return (sh / (T + sh)) * (X[0] - X[1]) + ((sh - T) / (T + sh)) * Y[1];
                });
            }
        }
        for (int k = 0; k < N / 2; ++k) {
            const double th = Theta(k, N);
            const double corr = (N % 2 == 0 && k == 0) ? std::sqrt(P0) : 1.0;
            if (type == 0) {
                const double u = 2 * sh * T * std::cos(th);
                const double q = T * T * ((sh * sh - ch * ch) * std::cos(2 * th) + ch * ch + sh * sh) / 2;
                const double d = q - u + 1, g = q / d / corr;
                x = Section(x, [&](const double* X, const double* Y) {
                    return g * (X[0] + 2 * X[1] + X[2]) + ((2 - 2 * q) / d) * Y[1] - ((q + u + 1) / d) * Y[2];
                });
            } else {
                const double q = ((sh * sh - ch * ch) * std::cos(2 * th) + ch * ch + sh * sh) / 2;
                const double u = 2 * T * sh * std::cos(th), d = q - u + T * T, g = q / d / corr;
                x = Section(x, [&](const double* X, const double* Y) {
                    return g * (X[0] - 2 * X[1] + X[2]) + (2 * (q - T * T) / d) * Y[1] - ((u + q + T * T) / d) * Y[2];
                });
            }
        }
        return x;
    }
    const double Tl = std::tan(kPi * kFl / kFs), Th = std::tan(kPi * kFh / kFs), B = Th - Tl, P = Th * Tl;
    if (N % 2 == 1) {
        const double v = N == 1 ? B : sh * B, D = P + v + 1, g = v / D;
        x = Direct(x, {g, 0, -g}, {1, -2 * (1 - P) / D, (P - v + 1) / D});
    }
    for (int k = 0; k < N / 2; ++k) {
        const double c = std::cos(Theta(k, N));
        const double q = B * B * ((sh * sh - ch * ch) * (c * c) + ch * ch);
        const double e = -2 * sh * B * c, f = P * e, S = 2 * P + q, D = P * P + S + f + e + 1;
        x = Direct(x, {q / D, 0, -2 * q / D, 0, q / D},
                   {1, (2 * (2 * (P * P) - (e - f)) - 4) / D, (2 * (3 * (P * P) - S) + 6) / D,
                    (2 * ((e - f) + 2 * (P * P)) - 4) / D, (P * P - f - e + S + 1) / D});
    }
    return x;
}

// Inverse Chebyshev lowpass; the odd-order first section is this library's
// own (pole T/sh, unit DC gain, in the Butterworth first-order form).
Vec RefInvChebyshevLowpass(int N, Vec x) {
    const double P0 = std::pow(10.0, 0.1 * kAtten), e = 1 / std::sqrt(P0 - 1);
    const double w = std::pow((1 + std::sqrt(1 + e * e)) / e, 1.0 / N), sh = (w - 1 / w) / 2, ch = (w + 1 / w) / 2;
    const double T = std::tan(kPi * kFc / kFs);
    if (N % 2 == 1) {
        const double A = T / sh;
        x = Section(x, [&](const double* X, const double* Y) {
            return (A / (1 + A)) * (X[0] + X[1]) + ((1 - A) / (1 + A)) * Y[1];
        });
    }
    double th = (kPi + kPi / N) / 2;
    for (int m = N % 2 == 1 ? 2 : 1; m <= N - 1; m += 2, th += kPi / N) {
        const double sz = std::sin(m * kPi / (2.0 * N));
        const double Z = T * T / (sz * sz);
        const double re = sh * std::cos(th), im = ch * std::sin(th), M = re * re + im * im;
        const double p1 = -2 * T * re / M, p2 = T * T / M, D = p2 + p1 + 1;
        x = Section(x, [&](const double* X, const double* Y) {
            return (2 * (1 - p2) / D) * Y[1] - ((p2 - p1 + 1) / D) * Y[2] +
                   (p2 / Z) * (((Z + 1) / D) * (X[0] + X[2]) + 2 * ((Z - 1) / D) * X[1]);
        });
    }
    return x;
}

TEST(IirSections, KernelsEvaluateEachSectionAsWritten) {
    std::mt19937_64 rng(20261123);
    std::uniform_real_distribution<double> uni(-1, 1);
    Vec x(600);
    for (double& v : x) v = uni(rng);
    // Orders: one section of each kind alone, odd and even cascades, k up to
    // 4 (angles), and more than four sections of one kind (two groups).
    struct Row {
        Fam fam;
        int type;
        std::vector<int> orders;
    } rows[] = {
        {kBw, 0, {1, 2, 7, 10}}, {kBw, 1, {1, 2, 9}},     {kBw, 2, {1, 2, 5}},   {kBw, 3, {1, 2, 6}},
        {kCh, 0, {1, 2, 5, 10}}, {kCh, 1, {1, 2, 7, 8}},  {kCh, 2, {1, 2, 3, 6}},
        {kInvCh, 0, {2, 3, 7, 10}},
    };
    for (const Row& r : rows) {
        for (int order : r.orders) {
            SCOPED_TRACE((Case{r.fam, r.type, order}.Name()));
            const Vec want = r.fam == kBw   ? RefButterworth(r.type, order, x)
                             : r.fam == kCh ? RefChebyshev(r.type, order, x)
                                            : RefInvChebyshevLowpass(order, x);
            Vec got(x.size());
            ASSERT_EQ(Filter(r.fam, r.type, x, order, got), kOk);
            for (std::size_t i = 0; i < x.size(); ++i)
                ASSERT_EQ(Bits(got[i]), Bits(want[i])) << "sample " << i << ": " << got[i] << " vs " << want[i];
        }
    }
}

// The derived forms keep the frame: a band section runs as the difference
// equation of its own coefficients (for one section these are exactly what
// the coefficient design returns), and the inverse Chebyshev highpass pair
// (gain 1) runs like the lowpass pair.
TEST(IirSections, DerivedFormsRunTheirCoefficientsInTheSameOrder) {
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<double> uni(-1, 1);
    Vec x(400);
    for (double& v : x) v = uni(rng);
    const Case cases[] = {{kCh, 3, 1},    {kCh, 3, 2},    {kInvCh, 2, 1}, {kInvCh, 2, 2},
                          {kInvCh, 3, 1}, {kInvCh, 3, 2}, {kInvCh, 1, 2}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.Name());
        const int m = c.type < 2 ? c.order + 1 : 2 * c.order + 1;
        Vec a(m), b(m), got(x.size());
        ASSERT_EQ(Design(c.fam, c.type, c.order, c.type < 2 ? kFc : kFl, kFh, a, b), kOk);
        ASSERT_EQ(Filter(c.fam, c.type, x, c.order, got), kOk);
        const Vec want = c.type >= 2 ? Direct(x, b, a) : Section(x, [&](const double* X, const double* Y) {
            return (-a[1]) * Y[1] - a[2] * Y[2] + 1 * (b[0] * (X[0] + X[2]) + b[1] * X[1]);
        });
        for (std::size_t i = 0; i < x.size(); ++i) ASSERT_EQ(Bits(got[i]), Bits(want[i])) << "sample " << i;
    }
}

TEST(IirDesign, FilteringChecksInOrder) {
    const Vec x(4, 1.0);
    Vec y(4, 5.0);
    const double* p = x.data();
    double* q = y.data();
    struct Row {
        const char* what;
        AnalysisStatus got, want;
    } rows[] = {
        {"n = 0 before order", BwLowPass(p, 0, 1000, 100, 0, q), kErrSamplesBelowOne},
        {"order before fc", BwHighPass(p, 4, 1000, 0, 0, q), kErrOrderNotPositive},
        {"fc = 0 is an edge error", BwLowPass(p, 4, 1000, 0, 2, q), kErrBandEdges},
        {"fs < 0", BwLowPass(p, 4, -1000, 100, 2, q), kErrBandEdges},
        {"NaN fc", BwLowPass(p, 4, 1000, std::nan(""), 2, q), kErrBandEdges},
        {"fc above fs/2", BwLowPass(p, 4, 1000, 501, 2, q), kErrCutoff},
        {"edges before ripple", ChLowPass(p, 4, 1000, -1, 0, 2, q), kErrBandEdges},
        {"ripple before cutoff", ChHighPass(p, 4, 1000, 600, 0, 2, q), kErrRipple},
        {"attenuation before cutoff", InvChLowPass(p, 4, 1000, 600, -3, 2, q), kErrAttenuation},
        {"f_low = 0", BwBandPass(p, 4, 1000, 0, 200, 2, q), kErrBandEdges},
        {"fh = fl", BwBandStop(p, 4, 1000, 200, 200, 2, q), kErrBandEdges},
        {"fh above fs/2", ChBandPass(p, 4, 1000, 100, 501, 1, 2, q), kErrCutoff},
        {"band ripple", ChBandStop(p, 4, 1000, 100, 200, 0, 2, q), kErrRipple},
        {"band attenuation", InvChBandPass(p, 4, 1000, 100, 600, 0, 2, q), kErrAttenuation},
        {"band order", InvChBandStop(p, 4, 1000, 100, 200, 30, -1, q), kErrOrderNotPositive},
        {"elliptic ripple", ElpLowPass(p, 4, 1000, 100, 0, 40, 2, q), kErrRipple},
        {"elliptic attenuation", ElpHighPass(p, 4, 1000, 100, 1, 0, 2, q), kErrAttenuation},
        {"attenuation equal to ripple", ElpBandPass(p, 4, 1000, 100, 200, 3, 3, 2, q), kErrAttenuationBelowRipple},
        {"NaN attenuation", ElpBandStop(p, 4, 1000, 100, 200, 1, std::nan(""), 2, q), kErrAttenuation},
        {"attenuation order before cutoff", ElpLowPass(p, 4, 1000, 600, 3, 1, 2, q), kErrAttenuationBelowRipple},
        {"fc = fs/2 accepted", BwLowPass(p, 4, 1000, 500, 3, q), kOk},
    };
    for (const Row& r : rows) EXPECT_EQ(r.got, r.want) << r.what;
    // Failures wrote nothing; only the last row filled y.
    Vec fresh(4, 5.0);
    EXPECT_EQ(BwHighPass(p, 4, 1000, 0, 2, fresh.data()), kErrBandEdges);
    EXPECT_EQ(fresh, Vec(4, 5.0));
}

TEST(IirDesign, CoefficientChecksInOrder) {
    Vec a(20, 0.0), b(20, 0.0);
    auto bw = [&](int type, int order, double fs, double fl, double fh, int na, int nb) {
        return BwCoefDesign(type, order, fs, fl, fh, a.data(), na, b.data(), nb);
    };
    struct Row {
        const char* what;
        AnalysisStatus got, want;
    } rows[] = {
        {"order first", bw(9, 0, -1, 0, 0, 0, 0), kErrOrderNotPositive},
        {"lowpass at fs/2: substituted f_high = f_low", bw(0, 2, 1000, 500, 0, 20, 20), kErrBandEdges},
        {"highpass ignores f_high", bw(1, 2, 1000, 100, -5, 20, 20), kOk},
        {"f_low = 0", bw(2, 2, 1000, 0, 200, 20, 20), kErrBandEdges},
        {"f_low >= f_high", bw(3, 2, 1000, 300, 200, 20, 20), kErrBandEdges},
        {"f_high above fs/2", bw(2, 2, 1000, 100, 600, 20, 20), kErrCutoff},
        {"type 2 order 3 needs 7 in a", bw(2, 3, 1000, 100, 200, 6, 7), kErrWrongCount},
        {"type 2 order 3 needs 7 in b", bw(2, 3, 1000, 100, 200, 7, 6), kErrWrongCount},
        {"type 2 order 3 fits in 7", bw(2, 3, 1000, 100, 200, 7, 7), kOk},
        {"counts before type", bw(4, 3, 1000, 100, 200, 3, 3), kErrWrongCount},
        {"type last", bw(4, 3, 1000, 100, 200, 20, 20), kErrInvalidSelection},
        {"negative type", bw(-1, 3, 1000, 100, 200, 20, 20), kErrInvalidSelection},
        {"ripple before edge order", ChCoefDesign(2, 2, 1000, 300, 200, 0, a.data(), 20, b.data(), 20), kErrRipple},
        {"attenuation", InvChCoefDesign(0, 2, 1000, 100, 0, -1, a.data(), 20, b.data(), 20), kErrAttenuation},
        {"huge order counts in 64 bits", bw(2, 2147483647, 1000, 100, 200, 20, 20), kErrWrongCount},
        {"elliptic ripple first", ElpCoefDesign(0, 2, 1000, 100, 0, 0, 0, a.data(), 20, b.data(), 20), kErrRipple},
        {"elliptic attenuation below ripple",
         ElpCoefDesign(3, 2, 1000, 300, 200, 2, 1, a.data(), 20, b.data(), 20), kErrAttenuationBelowRipple},
    };
    for (const Row& r : rows) EXPECT_EQ(r.got, r.want) << r.what;
}

TEST(IirDesign, PolyMulIsTheFullConvolution) {
    const Vec p = {1, -2, 3}, q = {4, 0.5};
    Vec r(4, 9.0);
    PolyMul(p.data(), 3, q.data(), 2, r.data());
    EXPECT_EQ(r, (Vec{4, -7.5, 11, 1.5}));
    Vec none(1, 9.0);
    PolyMul(p.data(), 0, q.data(), 0, none.data());
    EXPECT_EQ(none[0], 9.0);
}

// ---------------------------------------------------------------------------
// Direct-form runner.

// y[i] = (sum_k b[k] x[i-k] - sum_{k>=1} a[k] y[i-k]) / a[0] over the record
// prefixed by its state.
Vec Difference(const Vec& a, const Vec& b, const Vec& x1, const Vec& y1, const Vec& x) {
    Vec xs = x1, ys = y1;
    xs.insert(xs.end(), x.begin(), x.end());
    const std::size_t ox = x1.size(), oy = y1.size();
    for (std::size_t i = 0; i < x.size(); ++i) {
        double s = 0;
        for (std::size_t k = 0; k < b.size(); ++k) s += b[k] * xs[ox + i - k];
        for (std::size_t k = 1; k < a.size(); ++k) s -= a[k] * ys[oy + i - k];
        ys.push_back(a.empty() ? s : s / a[0]);
    }
    return Vec(ys.begin() + oy, ys.end());
}

TEST(IirRun, AgainstTheDifferenceEquationAndSplitRecords) {
    Vec x(700);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = std::sin(0.37 * i) + 0.1 * ((i * 7919) % 13) - 0.6;
    struct Row {
        const char* what;
        Vec a, b;
    } rows[] = {
        {"a[0] != 1", {2, -1.2, 0.5}, {0.3, 0.1, -0.2, 0.05}},
        {"na = 1", {4}, {1, 2, 1}},
        {"nb = 1", {1, -0.5, 0.1, 0.02}, {0.7}},
        {"long a (generic path)", {1, -0.3, 0.1, 0.05, -0.02, 0.01, 0.004, -0.002, 0.001, 0.0005, 0.0002, 0.0001},
         {0.2, 0.1}},
        {"FIR (empty a)", {}, {0.25, 0.5, 0.25, -0.1}},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.what);
        const int na = int(r.a.size()), nb = int(r.b.size());
        // y1 gets one spare slot so that na = 1 passes a pointer (a missing
        // y1 would select the FIR form).
        Vec x1(nb - 1), y1(na > 0 ? na : 0);
        for (std::size_t i = 0; i < x1.size(); ++i) x1[i] = 0.5 - 0.25 * i;
        for (std::size_t i = 0; i < y1.size(); ++i) y1[i] = -0.3 + 0.2 * i;
        const Vec want = Difference(r.a, r.b, x1, Vec(y1.begin(), y1.begin() + std::max(na - 1, 0)), x);

        Vec sx1 = x1, sy1 = y1, whole(x.size());
        ASSERT_EQ(IIRFilterRun(x.data(), int(x.size()), na ? r.a.data() : nullptr, na ? sy1.data() : nullptr, na,
                               r.b.data(), sx1.data(), nb, whole.data()),
                  kOk);
        for (std::size_t i = 0; i < x.size(); ++i) ASSERT_NEAR(whole[i], want[i], 1e-12) << i;
        // The state now holds the last inputs and outputs, oldest first.
        for (int j = 0; j < nb - 1; ++j) EXPECT_EQ(sx1[j], x[x.size() - (nb - 1) + j]);
        for (int j = 0; j < na - 1; ++j) EXPECT_EQ(sy1[j], whole[x.size() - (na - 1) + j]);
        if (na > 0) {
            EXPECT_EQ(sy1[na - 1], y1[na - 1]);  // past the state: untouched
        }

        // Split at 1 (shorter than the state), 300 (across a block) and the
        // rest: the very same bits.
        Vec px1 = x1, py1 = y1, joined;
        for (auto [from, to] : {std::pair<int, int>{0, 1}, {1, 300}, {300, 700}}) {
            Vec part(to - from);
            ASSERT_EQ(IIRFilterRun(x.data() + from, to - from, na ? r.a.data() : nullptr, na ? py1.data() : nullptr,
                                   na, r.b.data(), px1.data(), nb, part.data()),
                      kOk);
            joined.insert(joined.end(), part.begin(), part.end());
        }
        EXPECT_EQ(joined, whole);
        EXPECT_EQ(px1, sx1);
        EXPECT_EQ(py1, sy1);
    }
}

TEST(IirRun, Checks) {
    const Vec x(3, 1.0), a{1, 0.5}, b{1, 1};
    Vec y1{0}, x1{0}, y(3, 9.0);
    EXPECT_EQ(IIRFilterRun(x.data(), 3, a.data(), y1.data(), 2, b.data(), x1.data(), 0, y.data()), kErrSamplesBelowOne);
    EXPECT_EQ(IIRFilterRun(x.data(), 0, a.data(), y1.data(), 2, b.data(), x1.data(), 2, y.data()), kErrSamplesBelowOne);
    EXPECT_EQ(IIRFilterRun(x.data(), 3, nullptr, nullptr, 0, b.data(), x1.data(), 0, y.data()), kErrSamplesBelowOne);
    EXPECT_EQ(IIRFilterRun(x.data(), 3, a.data(), y1.data(), 2, b.data(), nullptr, 2, y.data()), kErrWrongCount);
    EXPECT_EQ(y, Vec(3, 9.0));
    // A zero a[0] is used as given: infinities, no error.
    const Vec a0{0, 0.5};
    EXPECT_EQ(IIRFilterRun(x.data(), 3, a0.data(), y1.data(), 2, b.data(), x1.data(), 2, y.data()), kOk);
    EXPECT_TRUE(std::isinf(y[0]));
}

}  // namespace
}  // namespace vn
