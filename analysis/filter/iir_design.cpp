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
                                   double fh, double param)
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
        switch (type_) {
        case kLowpass: {
            const double a = sh * t;
            SetFirst(s, a / (1 + a), 1, -((1 - a) / (1 + a)));
            return;
        }
        case kHighpass: SetFirst(s, sh / (t + sh), -1, -((sh - t) / (t + sh))); return;
        // Order 1 uses v = B in both band types, so a first-order Chebyshev
        // band filter equals the Butterworth one whatever the ripple.
        case kBandpass: BandRealPass(s, order_ == 1 ? b_ : sh * b_, p_); return;
        default: BandRealStop(s, order_ == 1 ? b_ : b_ / sh, p_); return;
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
    }
}

}  // namespace vn
