// Section designs of the Butterworth, Chebyshev and inverse Chebyshev
// families.
//
// Frame shared by all of them. Frequencies are prewarped, Omega = tan(pi*f/fs),
// and the bilinear transform is s = (1 - z^-1)/(1 + z^-1), so the analog
// cutoff T = tan(pi*fc/fs) lands exactly on fc. The normalised lowpass
// prototype (variable s_n, cutoff 1) is mapped by
//     lowpass  s_n = s/T          highpass s_n = T/s
//     bandpass s_n = (s^2 + P)/(B*s)      bandstop s_n = B*s/(s^2 + P)
// with Tl, Th the prewarped band edges, B = Th - Tl and P = Th*Tl.
//
// Prototype poles, for the angle theta (cos theta < 0):
//     Butterworth           p = cos(theta) + j sin(theta)        |p| = 1
//     Chebyshev             p = sh*cos(theta) + j ch*sin(theta)
//     inverse Chebyshev     1/p (re = sh*cos, im = ch*sin, M = |p|^2),
//                           zeros at +-j/sin(m*pi/(2N))
// and, for an odd order, the real pole -1, -sh or -1/sh.
//
// A pole-pair section q/(s_n^2 - 2 Re(p) s_n + q), q = |p|^2, becomes
//   bandpass: q B^2 s^2 / (s^4 + e s^3 + S s^2 + P e s + P^2),
//             e = -2 B Re(p), S = 2P + B^2 q;
//   bandstop: (s^2 + P)^2 / (same form with e = -2 B Re(p)/q, S = 2P + B^2/q),
//             i.e. the band form of the reciprocal pole 1/p.
// A real-pole section sigma/(s_n + sigma) becomes v s/(s^2 + v s + P) with
// v = sigma*B (bandpass), or (s^2 + P)/(s^2 + v s + P) with v = B/sigma
// (bandstop). The bilinear transform of a quartic c4 s^4 + ... + c0 is the
// sum of c_k (1 - z^-1)^k (1 + z^-1)^(4-k), which gives the coefficient
// formulas of BandDenominator below; quadratics likewise.
#include "analysis/filter/iir_design.h"

#include <cmath>
#include <utility>

namespace vn {

namespace {

constexpr double kPi = 3.14159265358979323846;

void SetFirst(IirSection& s, double g, double n1, double a1) {
    s.len = 2;
    s.g = g;
    s.num[0] = 1, s.num[1] = n1;
    s.a[0] = 1, s.a[1] = a1;
}

void SetPair(IirSection& s, double g, double n0, double n1, double n2, double a1, double a2) {
    s.len = 3;
    s.g = g;
    s.num[0] = n0, s.num[1] = n1, s.num[2] = n2;
    s.a[0] = 1, s.a[1] = a1, s.a[2] = a2;
}

// Band second-order section of a real pole: denominator s^2 + v s + P.
void BandRealDenominator(IirSection& s, double v, double p, double d) {
    s.len = 3;
    s.a[0] = 1;
    s.a[1] = -2 * (1 - p) / d;
    s.a[2] = (p - v + 1) / d;
}

// Bandpass numerator v s over the denominator with sum d: b = (g, 0, -g),
// g = v/d. (P + v + 1 and v + P + 1 are the same double: one addition
// commutes exactly.)
void BandRealPass(IirSection& s, double v, double p) {
    const double d = p + v + 1;
    BandRealDenominator(s, v, p, d);
    const double g = v / d;
    s.form = IirForm::kDirect;
    s.g = 1;
    s.num[0] = g, s.num[1] = 0, s.num[2] = -g;
}

// Bandstop numerator s^2 + P.
void BandRealStop(IirSection& s, double v, double p) {
    const double d = p + v + 1;
    BandRealDenominator(s, v, p, d);
    s.form = IirForm::kDirect;
    s.g = 1;
    s.num[0] = (1 + p) / d, s.num[1] = -2 * (1 - p) / d, s.num[2] = (1 + p) / d;
}

// Denominator s^4 + e s^3 + S s^2 + P e s + P^2 after the bilinear transform,
// normalised by its sum D; returns D. The last coefficient is left to the
// caller, whose families sum it in different orders.
double BandDenominator(IirSection& s, double e, double sum, double p, double d) {
    const double f = p * e, p2 = p * p;
    s.len = 5;
    s.a[0] = 1;
    s.a[1] = (2 * (2 * p2 - (e - f)) - 4) / d;
    s.a[2] = (2 * (3 * p2 - sum) + 6) / d;
    s.a[3] = (2 * ((e - f) + 2 * p2) - 4) / d;
    return d;
}

// Chebyshev-style quartic section: D = P^2 + S + f + e + 1,
// a4 = (P^2 - f - e + S + 1)/D. Returns D.
double QuarticDenominator(IirSection& s, double e, double sum, double p) {
    const double f = p * e, p2 = p * p;
    const double d = p2 + sum + f + e + 1;
    BandDenominator(s, e, sum, p, d);
    s.a[4] = (p2 - f - e + sum + 1) / d;
    return d;
}

// Numerator (s^2 + P)^2 over D: unit gain at DC and at fs/2.
void NotchNumerator(IirSection& s, double p, double d) {
    const double p2 = p * p;
    s.form = IirForm::kDirect;
    s.g = 1;
    s.num[0] = (p2 + 2 * p + 1) / d;
    s.num[1] = -4 * (1 - p2) / d;
    s.num[2] = (2 * (3 * p2 - 2 * p) + 6) / d;
    s.num[3] = -4 * (1 - p2) / d;
    s.num[4] = (p2 + 2 * p + 1) / d;
}

// Numerator g*(s^4 + Sz s^2 + P^2) (a zero pair at s^2 = -w with
// Sz = 2P + w), over D: b[k] = g*(c_k/D).
void ZeroPairNumerator(IirSection& s, double g, double sz, double p, double d) {
    const double p2 = p * p;
    s.form = IirForm::kDirect;
    s.g = 1;
    s.num[0] = g * ((1 + sz + p2) / d);
    s.num[1] = g * ((-4 + 4 * p2) / d);
    s.num[2] = g * ((6 - 2 * sz + 6 * p2) / d);
    s.num[3] = g * ((-4 + 4 * p2) / d);
    s.num[4] = g * ((1 + sz + p2) / d);
}

// b = (q/D, 0, -2q/D, 0, q/D).
void BandPassNumerator(IirSection& s, double q, double d) {
    s.form = IirForm::kDirect;
    s.g = 1;
    s.num[0] = q / d, s.num[1] = 0, s.num[2] = -2 * q / d, s.num[3] = 0, s.num[4] = q / d;
}

// --- Elliptic prototype ----------------------------------------------------------
//
// Normalised lowpass with passband edge 1, where the gain is 1/sqrt(1 + ep^2)
// (ep^2 = 10^(R/10) - 1), and stopband edge 1/k, from where on the gain stays
// at or below 1/sqrt(1 + es^2) (es^2 = 10^(A/10) - 1). The discrimination
// modulus k1 = ep/es and the order N fix the selectivity modulus k by the
// degree equation K'(k)/K(k) = K'(k1)/(N K(k1)): the nome of k is the N-th
// root of the nome of k1. With u_i = (2i - 1)/N, i = 1 .. floor(N/2):
//     zeros  +-j/(k cd(u_i K, k)),
//     poles  j cd((u_i - j v0) K, k),   v0 = F(atan(1/ep), k1')/(N K(k1)),
// and for an odd order the real pole j sn(j v0 K, k) = -sc(v0 K, k').
//
// Everything is computed in double (the bits must not depend on the x87
// precision a 32-bit host sets): the AGM for complete integrals, Carlson's
// R_F for the incomplete one, theta series of the nome for k, and the
// descending Landen sequence for sn, cn, dn. Every loop has a fixed bound.
// The decibel values enter through their logarithms, so that neither a tiny
// ripple nor a huge attenuation overflows or cancels.

constexpr double kLn10 = 2.302585092994045684;

// ln(10^(a/10) - 1) for a > 0.
double LogPowerMinusOne(double a) {
    const double x = a * (kLn10 / 10);
    return x < 1 ? std::log(std::expm1(x)) : x + std::log1p(-std::exp(-x));
}

// AGM(a, b) for a >= b >= 0; quadratic convergence, at most 64 steps.
double Agm(double a, double b) {
    for (int i = 0; i < 64 && a - b > 4e-16 * a; ++i) {
        const double m = (a + b) / 2;
        b = std::sqrt(a * b);
        a = m;
    }
    return (a + b) / 2;
}

// Carlson's R_F(x, y, z) by duplication (x, y, z >= 0, at most one zero).
double CarlsonRF(double x, double y, double z) {
    for (int i = 0; i < 100; ++i) {
        const double mu = (x + y + z) / 3;
        const double dx = (mu - x) / mu, dy = (mu - y) / mu, dz = (mu - z) / mu;
        if (std::fmax(std::fabs(dx), std::fmax(std::fabs(dy), std::fabs(dz))) < 1e-3) {
            const double e2 = dx * dy - dz * dz, e3 = dx * dy * dz;
            return (1 + (e2 / 24 - 0.1 - 3 * e3 / 44) * e2 + e3 / 14) / std::sqrt(mu);
        }
        const double sx = std::sqrt(x), sy = std::sqrt(y), sz = std::sqrt(z);
        const double l = sx * (sy + sz) + sy * sz;
        x = (x + l) / 4, y = (y + l) / 4, z = (z + l) / 4;
    }
    return 1 / std::sqrt((x + y + z) / 3);
}

// Modulus and complementary modulus of the nome exp(lnq), lnq <= 0, from
// k = theta2^2/theta3^2 and k' = theta4^2/theta3^2. For a nome above
// e^-pi the conjugate nome exp(pi^2/lnq) is used and the two are swapped, so
// that the series always run at q <= e^-pi, where five terms are exact.
void ModulusFromNome(double lnq, double& k, double& kc) {
    const bool swap = lnq > -kPi;
    if (swap) lnq = kPi * kPi / lnq;
    double s2 = 1, s3 = 0, s4 = 0;
    for (int m = 1; m <= 6; ++m) {
        s2 += std::exp(lnq * (m * (m + 1)));
        const double e = std::exp(lnq * (m * m));
        s3 += e;
        s4 += (m & 1) ? -e : e;
    }
    const double t2 = 2 * std::exp(lnq / 4) * s2, t3 = 1 + 2 * s3, t4 = 1 + 2 * s4;
    k = (t2 / t3) * (t2 / t3);
    kc = (t4 / t3) * (t4 / t3);
    if (swap) std::swap(k, kc);
}

// sn, cn, dn of u to the modulus k (complement kc) by the descending Landen
// sequence (AGM of 1 and kc, then back through the amplitudes).
void Jacobi(double u, double k, double kc, double& sn, double& cn, double& dn) {
    constexpr int kMax = 40;
    double a[kMax + 1], c[kMax + 1];
    a[0] = 1, c[0] = k;
    double b = kc;
    int n = 0;
    while (n < kMax && std::fabs(c[n]) > 1e-16 * a[n]) {
        a[n + 1] = (a[n] + b) / 2;
        c[n + 1] = (a[n] - b) / 2;
        b = std::sqrt(a[n] * b);
        ++n;
    }
    double phi = std::ldexp(a[n] * u, n), prev = phi;
    for (int i = n; i > 0; --i) {
        prev = phi;
        phi = (phi + std::asin(c[i] / a[i] * std::sin(phi))) / 2;
    }
    sn = std::sin(phi);
    cn = std::cos(phi);
    dn = n == 0 ? 1.0 : cn / std::cos(prev - phi);
}

// sn, cn, dn of f*K (0 <= f <= 1, K = K(k)) with cn and dn accurate in
// relative terms also near K, where they fall towards 0 and kc: beyond K/2
// they come from v = (1 - f)K by sn(K - v) = cd(v), cn(K - v) = kc sd(v)
// and dn(K - v) = kc nd(v).
void JacobiOfFraction(double f, double bigK, double k, double kc, double& sn, double& cn, double& dn) {
    if (f <= 0.5) {
        Jacobi(f * bigK, k, kc, sn, cn, dn);
        return;
    }
    double s, c, d;
    Jacobi((1 - f) * bigK, k, kc, s, c, d);
    sn = c / d, cn = kc * (s / d), dn = kc / d;
}

// A zero beyond this squared frequency (about 10^75 times the passband
// edge) is taken at infinity: its factor (s^2 + W)/W differs from 1 by less
// than 10^-118 anywhere a double frequency can reach after prewarping.
constexpr double kZeroAtInfinity = 1e150;

}  // namespace

void PolyCopy(const double* source, std::int32_t count, double* destination) {
    for (std::int32_t i = 0; i < count; ++i) destination[i] = source[i];
}

void PolyMul(const double* p, std::int32_t np, const double* q, std::int32_t nq, double* result) {
    const std::int64_t nr = static_cast<std::int64_t>(np) + nq - 1;
    for (std::int64_t i = 0; i < nr; ++i) {
        // Valid j: 0 <= j < np and 0 <= i - j < nq.
        const std::int64_t lo = i - nq + 1 > 0 ? i - nq + 1 : 0;
        const std::int64_t hi = i < np - 1 ? i : np - 1;
        double s = 0.0;
        for (std::int64_t j = lo; j <= hi; ++j) s += p[j] * q[i - j];
        result[i] = s;
    }
}

IirSectionSource::IirSectionSource(IirFamily family, std::int32_t type, std::int32_t order, double fs, double fl,
                                   double fh, double param, double atten)
    : family_(family), type_(type), order_(order), band_(type == kBandpass || type == kBandstop) {
    if (band_) {
        const double tl = std::tan(kPi * fl / fs), th = std::tan(kPi * fh / fs);
        b_ = th - tl;
        p_ = th * tl;
    } else {
        t_ = std::tan(kPi * fl / fs);
    }
    const double n = order;
    if (family == IirFamily::kChebyshev) {
        const double p = std::pow(10.0, 0.1 * param);
        const double eps = std::sqrt(p - 1);
        const double w = std::pow((1 + std::sqrt(p)) / eps, 1 / n);
        sh_ = (w - 1 / w) / 2, ch_ = (w + 1 / w) / 2;
        sqrtP_ = std::sqrt(p);
    } else if (family == IirFamily::kInverseChebyshev) {
        const double p = std::pow(10.0, 0.1 * param);
        const double e = 1 / std::sqrt(p - 1);
        const double w = std::pow((1 + std::sqrt(1 + e * e)) / e, 1 / n);
        sh_ = (w - 1 / w) / 2, ch_ = (w + 1 / w) / 2;
    } else if (family == IirFamily::kElliptic) {
        const double lnEp2 = LogPowerMinusOne(param), lnEs2 = LogPowerMinusOne(atten);
        const double lnK1 = (lnEp2 - lnEs2) / 2;  // ln(ep/es) < 0
        const double k1 = std::exp(lnK1), k1c = std::sqrt(-std::expm1(2 * lnK1));
        const double bigK1 = kPi / (2 * Agm(1, k1c));
        // K'(k1) = K(k1'); below 1e-8 its series ln(4/k1) + O(k1^2 ln k1) is
        // exact in double.
        const double bigK1p = k1 > 1e-8 ? kPi / (2 * Agm(1, k1)) : std::log(4.0) - lnK1;
        ModulusFromNome(-kPi * bigK1p / (bigK1 * n), k_ell_, kc_ell_);
        // Moduli below 1e-300 only serve as AGM partners: there they stand
        // for 0 (all zeros at infinity) or 1 (a transition band narrower than
        // 1e-300 of the edge), which the clamp keeps finite.
        const double kk = std::fmax(k_ell_, 1e-300), kkc = std::fmax(kc_ell_, 1e-300);
        K_ell_ = kPi / (2 * Agm(1, kkc));
        const double bigKp = kPi / (2 * Agm(1, kk));  // K'(k)
        // v0 N K(k1) = F(phi, k1') with tan(phi) = 1/ep, written as
        // sin(phi) R_F(cos^2 phi, 1 - k1'^2 sin^2 phi, 1).
        const double log1pEp2 = lnEp2 > 30 ? lnEp2 + std::log1p(std::exp(-lnEp2)) : std::log1p(std::exp(lnEp2));
        const double sinPhi = std::exp(-log1pEp2 / 2);
        const double cos2 = 1 / (1 + std::exp(-lnEp2));
        const double delta2 = cos2 + std::exp(2 * lnK1 - log1pEp2);
        const double v0 = sinPhi * CarlsonRF(cos2, delta2, 1) / (n * bigK1);
        JacobiOfFraction(std::fmin(v0 * K_ell_ / bigKp, 1.0), bigKp, kkc, kk, sy_, cy_, dy_);
        k_ell_ = kk, kc_ell_ = kkc;
        evenGain_ = sinPhi;  // 1/sqrt(1 + ep^2) = 10^(-R/20)
        sh_ = sy_ / cy_;     // the real pole's magnitude sc(v0 K, k')
    }
    step_ = kPi / n;
    theta0_ = theta_ = (kPi + kPi / n) / 2;
    m_ = (order & 1) ? 2 : 1;
    realDone_ = (order & 1) == 0;
}

bool IirSectionSource::Next(IirSection& s) {
    s = IirSection();
    if (!realDone_) {
        RealSection(s);
        realDone_ = true;
        return true;
    }
    if (k_ >= order_ / 2) return false;
    // Butterworth and Chebyshev: theta_k = theta_0 + (k*pi)/N. The inverse
    // family runs its angle from theta_0 by repeated addition of pi/N.
    if (family_ != IirFamily::kInverseChebyshev) theta_ = theta0_ + static_cast<double>(k_) * kPi / order_;
    PairSection(s);
    ++k_;
    if (family_ == IirFamily::kInverseChebyshev) theta_ += step_;
    m_ += 2;
    return true;
}

// The real pole of an odd order.
void IirSectionSource::RealSection(IirSection& s) const {
    const double t = t_, sh = sh_;
    switch (family_) {
    case IirFamily::kButterworth:
        switch (type_) {
        case kLowpass: SetFirst(s, t / (1 + t), 1, -((1 - t) / (1 + t))); return;
        case kHighpass: {
            const double g = 1 / (1 + t);
            SetFirst(s, g, -1, -((1 - t) * g));
            return;
        }
        case kBandpass: BandRealPass(s, b_, p_); return;
        default: BandRealStop(s, b_, p_); return;
        }
    case IirFamily::kChebyshev:
    case IirFamily::kElliptic: {
        // Real pole -sh (elliptic: sh_ holds sc(v0 K, k')). A first-order
        // Chebyshev band filter uses v = B in both band types, and so equals
        // the Butterworth one whatever the ripple; the elliptic one does not.
        const bool plainB = family_ == IirFamily::kChebyshev && order_ == 1;
        switch (type_) {
        case kLowpass: {
            const double a = sh * t;
            SetFirst(s, a / (1 + a), 1, -((1 - a) / (1 + a)));
            return;
        }
        case kHighpass: SetFirst(s, sh / (t + sh), -1, -((sh - t) / (t + sh))); return;
        case kBandpass: BandRealPass(s, plainB ? b_ : sh * b_, p_); return;
        default: BandRealStop(s, plainB ? b_ : b_ / sh, p_); return;
        }
    }
    case IirFamily::kInverseChebyshev:
        // Real pole -1/sh: lowpass s + T/sh, highpass s + T*sh, bandpass
        // v = B/sh, bandstop v = B*sh.
        switch (type_) {
        case kLowpass: {
            const double a = t / sh;
            SetFirst(s, a / (1 + a), 1, -((1 - a) / (1 + a)));
            return;
        }
        case kHighpass: {
            const double a = t * sh, g = 1 / (1 + a);
            SetFirst(s, g, -1, -((1 - a) * g));
            return;
        }
        case kBandpass: BandRealPass(s, b_ / sh, p_); return;
        default: BandRealStop(s, b_ * sh, p_); return;
        }
    }
}

void IirSectionSource::PairSection(IirSection& s) {
    if (family_ == IirFamily::kElliptic) {
        EllipticPair(s);
        return;
    }
    const double t = t_, b = b_, p = p_, sh = sh_, ch = ch_;
    const double c = std::cos(theta_);
    switch (family_) {
    case IirFamily::kButterworth:
        switch (type_) {
        case kLowpass: {
            const double u = 2 * t * c, t2 = t * t, d = t2 - u + 1;
            SetPair(s, t2 / d, 1, 2, 1, -((2 - 2 * t2) / d), (t2 + u + 1) / d);
            return;
        }
        case kHighpass: {
            const double u = 2 * t * c, t2 = t * t, g = 1 / (t2 + 1 - u);
            SetPair(s, g, 1, -2, 1, -(g * (2 - 2 * t2)), g * (t2 + 1 + u));
            return;
        }
        default: {
            const double e = -2 * b * c, f = p * e, sum = b * b + 2 * p, p2 = p * p;
            const double d = p2 + f + sum + e + 1;
            BandDenominator(s, e, sum, p, d);
            s.a[4] = (sum - f - e + p2 + 1) / d;
            if (type_ == kBandpass) {
                // g = B^2/D, b = (g, 0, -2g, 0, g).
                const double g = b * b / d;
                s.form = IirForm::kDirect;
                s.num[0] = g, s.num[1] = 0, s.num[2] = -2 * g, s.num[3] = 0, s.num[4] = g;
            } else {
                NotchNumerator(s, p, d);
            }
            return;
        }
        }
    case IirFamily::kChebyshev: {
        // |p|^2 = sh^2 cos^2 + ch^2 sin^2, written with cos(2 theta).
        const double qn = ((sh * sh - ch * ch) * std::cos(2 * theta_) + ch * ch + sh * sh) / 2;
        // Even orders: the first pair carries 10^(-R/20), so that the
        // lowpass and highpass ripple between -R dB and 0 dB. The band forms
        // keep unit gain at the band centre (and so peak at +R dB).
        const double corr = (order_ % 2 == 0 && k_ == 0) ? sqrtP_ : 1.0;
        switch (type_) {
        case kLowpass: {
            const double u = 2 * sh * t * c, q = t * t * qn, d = q - u + 1;
            SetPair(s, q / d / corr, 1, 2, 1, -((2 - 2 * q) / d), (q + u + 1) / d);
            return;
        }
        case kHighpass: {
            const double u = 2 * t * sh * c, t2 = t * t, d = qn - u + t2;
            SetPair(s, qn / d / corr, 1, -2, 1, -(2 * (qn - t2) / d), (u + qn + t2) / d);
            return;
        }
        case kBandpass: {
            const double q = b * b * ((sh * sh - ch * ch) * (c * c) + ch * ch);
            const double e = -2 * sh * b * c;
            const double d = QuarticDenominator(s, e, 2 * p + q, p);
            BandPassNumerator(s, q, d);
            return;
        }
        default: {
            // Band form of the reciprocal pole: Re(1/p) = Re(p)/|p|^2 and
            // |1/p|^2 = 1/|p|^2.
            const double e = -2 * sh * b * c / qn;
            const double d = QuarticDenominator(s, e, 2 * p + b * b / qn, p);
            NotchNumerator(s, p, d);
            return;
        }
        }
    }
    case IirFamily::kInverseChebyshev: {
        const double re = sh * c, im = ch * std::sin(theta_), mm = re * re + im * im;
        const double sz = std::sin(m_ * kPi / (2.0 * order_));
        switch (type_) {
        case kLowpass: {
            // (s^2 + Z)/(s^2 + p1 s + p2) * p2/Z: unit gain at DC.
            const double z = t * t / (sz * sz), p1 = -2 * t * re / mm, p2 = t * t / mm, d = p2 + p1 + 1;
            SetPair(s, p2 / z, (z + 1) / d, 2 * ((z - 1) / d), (z + 1) / d, -(2 * (1 - p2) / d), (p2 - p1 + 1) / d);
            s.form = IirForm::kZeroPair;
            return;
        }
        case kHighpass: {
            // s_n = T/s turns the section into (s^2 + T^2 sz^2)/(s^2 - 2 T re s
            // + T^2 M): unit gain at fs/2.
            const double z = t * t * (sz * sz), p1 = -2 * t * re, p2 = t * t * mm, d = p2 + p1 + 1;
            SetPair(s, 1, (z + 1) / d, 2 * ((z - 1) / d), (z + 1) / d, -(2 * (1 - p2) / d), (p2 - p1 + 1) / d);
            s.form = IirForm::kZeroPair;
            return;
        }
        case kBandpass: {
            // Poles 1/p, zeros s_n^2 = -1/sz^2; gain (1/M)/(1/sz^2) = unity at
            // the band centre.
            const double e = -2 * b * re / mm;
            const double d = QuarticDenominator(s, e, 2 * p + b * b / mm, p);
            ZeroPairNumerator(s, sz * sz / mm, 2 * p + b * b / (sz * sz), p, d);
            return;
        }
        default: {
            // Bandstop of the poles 1/p is the band form of p itself; the
            // zeros move to s_n^2 = -sz^2. Unit gain at DC and fs/2.
            const double e = -2 * b * re;
            const double d = QuarticDenominator(s, e, 2 * p + b * b * mm, p);
            ZeroPairNumerator(s, 1, 2 * p + b * b * (sz * sz), p, d);
            return;
        }
        }
    }
    default: return;  // kElliptic: EllipticPair
    }
}

// Pole pair i = k_ + 1 of the elliptic prototype: the pole (re, M = |p|^2)
// and the zero pair +-j sqrt(W). Every section has unit gain where the
// prototype is at s_n = 0 (DC for lowpass and bandstop, fs/2 for highpass,
// the band centre for bandpass); an even order carries 10^(-R/20) in its
// first pair, so that every passband lies within [-R, 0] dB.
//
// With x' = K - u_i K, cd(u_i K - j y) = sn(x' + j y), and by the addition
// theorem (sn1, cn1, dn1 of y to the complementary modulus)
//     p = j sn(x' + j y) = (-cn dn sn1 cn1 + j sn dn1)/(cn1^2 + k^2 sn^2 sn1^2),
// whose real part is negative term by term; the zero is 1/(k sn(x')).
void IirSectionSource::EllipticPair(IirSection& s) const {
    const double k = k_ell_;
    double sn, cn, dn;
    JacobiOfFraction(static_cast<double>(order_ - 2 * k_ - 1) / order_, K_ell_, k, kc_ell_, sn, cn, dn);
    const double den = cy_ * cy_ + k * k * (sn * sn) * (sy_ * sy_);
    const double re = -(cn * dn * sy_ * cy_) / den, im = sn * dy_ / den;
    const double mm = re * re + im * im;
    const double ks = k * sn;
    const double w = 1 / (ks * ks);  // zero at +-j/(k sn(x'))
    const bool finite = w < kZeroAtInfinity;
    const double gain = (order_ % 2 == 0 && k_ == 0) ? evenGain_ : 1.0;
    const double t = t_, b = b_, p = p_;
    switch (type_) {
    case kLowpass: {
        const double p1 = -2 * t * re, p2 = t * t * mm, d = p2 + p1 + 1;
        if (!finite) {
            SetPair(s, p2 / d * gain, 1, 2, 1, -((2 - 2 * p2) / d), (p2 - p1 + 1) / d);
            return;
        }
        // (s^2 + Z)/(s^2 + p1 s + p2) * p2/Z.
        const double z = t * t * w;
        SetPair(s, p2 / z * gain, (z + 1) / d, 2 * ((z - 1) / d), (z + 1) / d, -(2 * (1 - p2) / d),
                (p2 - p1 + 1) / d);
        s.form = IirForm::kZeroPair;
        return;
    }
    case kHighpass: {
        // s_n = T/s: (W/M) (s^2 + T^2/W)/(s^2 - 2 T re/M s + T^2/M), unit at fs/2.
        const double p1 = -2 * t * re / mm, p2 = t * t / mm, d = p2 + p1 + 1;
        if (!finite) {
            SetPair(s, 1 / d * gain, 1, -2, 1, -((2 - 2 * p2) / d), (p2 - p1 + 1) / d);
            return;
        }
        const double z = t * t / w;
        SetPair(s, gain, (z + 1) / d, 2 * ((z - 1) / d), (z + 1) / d, -(2 * (1 - p2) / d), (p2 - p1 + 1) / d);
        s.form = IirForm::kZeroPair;
        return;
    }
    case kBandpass: {
        const double e = -2 * b * re;
        const double d = QuarticDenominator(s, e, 2 * p + b * b * mm, p);
        if (!finite) {
            BandPassNumerator(s, b * b * mm * gain, d);
            return;
        }
        ZeroPairNumerator(s, mm / w * gain, 2 * p + b * b * w, p, d);
        return;
    }
    default: {
        // The band form of the reciprocal pole 1/p, zeros at s_n^2 = -1/W.
        const double e = -2 * b * re / mm;
        const double d = QuarticDenominator(s, e, 2 * p + b * b / mm, p);
        if (!finite) {
            NotchNumerator(s, p, d);
            if (gain != 1.0)
                for (int j = 0; j < 5; ++j) s.num[j] *= gain;
            return;
        }
        ZeroPairNumerator(s, gain, 2 * p + b * b / w, p, d);
        return;
    }
    }
}

}  // namespace vn
