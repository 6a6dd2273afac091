#include "analysis/stat/distributions.h"

#include <cfloat>
#include <cmath>
#include <cstdint>

namespace vn {

namespace {

// Exponentials are evaluated in extended precision and rounded once, so that
// their last bit does not depend on the double-precision libm in use.
double ExpExtended(double v) {
    return static_cast<double>(std::exp(static_cast<long double>(v)));
}

// 1/sqrt(2*pi) to the precision the approximations were fitted with.
constexpr double kInvSqrtTwoPi = 0.3989422;

// Rational part of the normal quantile approximation, as a function of
// t = sqrt(ln(1/q^2)) for the tail probability q.
double QuantileRational(double t) {
    return (2.515517 + 0.802853 * t + 0.010328 * t * t) /
           (1.0 + 1.432788 * t + 0.189269 * t * t + 0.001308 * t * t * t);
}

// Bisection for the increasing function cdf on [lo, hi]. Invariant:
// cdf(lo) < p <= cdf(hi) once an end has moved. Returns the lower end of the
// final bracket (width <= 1e-4), not the midpoint.
// The bracket is finite and halves every step, so the 27 or 28 steps the
// starting intervals need always end it; the cap of 64 only makes that bound
// explicit (a NaN p or a NaN cdf value just moves lo up every step).
template <typename Cdf>
double BisectLower(double p, double lo, double hi, Cdf cdf) {
    int steps = 0;
    do {
        const double mid = (lo + hi) / 2.0;
        const double r = cdf(mid);
        if (p <= r)
            hi = mid;
        else
            lo = mid;
    } while (!(std::fabs(hi - lo) <= 0.0001) && ++steps < 64);
    return lo;
}

// sum + sum_{k=1..last} term_k / den_k with term_k = term_{k-1} * x and
// den_k = den_{k-1} * (2k - 1 if odd else 2k), den_0 = 1, added in order, for
// x > 0: the chi-square series. Bit for bit the step-by-step loop, but in
// bounded time for any count. The denominator overflows to +inf within a few
// hundred steps; from then on every term adds +0 and leaves the sum as it is,
// until term * x overflows too and inf/inf makes it NaN. So: a NaN sum is
// final; with x <= 1 (or term * x == term) the term can never overflow and
// the sum is final; otherwise the growing term is followed exactly for up to
// 2^20 further steps, and beyond that whether it overflows before the count
// ends is decided from logarithms (the only place where a count above about
// 2^21 degrees of freedom could, at the border, give a number instead of NaN
// or the reverse).
double ChiSquareSeries(double x, double sum, double term, std::int32_t last, bool odd) {
    double den = 1.0;
    std::int64_t k = 1;
    for (; k <= last; ++k) {
        term = term * x;
        den = den * (odd ? 2.0 * static_cast<double>(k) - 1.0 : 2.0 * static_cast<double>(k));
        sum = sum + term / den;
        if (sum != sum) return sum;
        if (!(den < HUGE_VAL)) break;
    }
    if (k >= last) return sum;
    if (!(x > 1.0)) return sum;
    std::int64_t rest = last - k;  // steps left, each adding term/inf
    constexpr std::int64_t kFollowed = std::int64_t(1) << 20;
    for (std::int64_t j = 0; j < rest && j < kFollowed; ++j) {
        const double t = term * x;
        if (t == term) return sum;
        term = t;
        if (!(term < HUGE_VAL)) return sum + term / den;
    }
    rest -= kFollowed;
    if (rest <= 0) return sum;
    const double room = std::log(DBL_MAX) - std::log(term);
    if (static_cast<double>(rest) * std::log(x) > room) return sum + HUGE_VAL / den;
    return sum;
}

}  // namespace

double LogGamma(double x) {
    static const double kCoef[6] = {76.18009173,  -86.50532033,   24.01409822,
                                    -1.231739516, 0.00120858003, -5.36382e-06};
    double y = x - 1.0;
    const double tmp = y + 5.5;
    double ser = 1.0;
    for (double c : kCoef) {
        y = y + 1.0;
        ser = ser + c / y;
    }
    return std::log(2.50662827465 * ser) + ((x - 1.0) + 0.5) * std::log(tmp) - tmp;
}

double BetaContinuedFraction(double a, double b, double x) {
    double am = 1.0, bm = 1.0, az = 1.0;
    double bz = 1.0 - x * (a + b) / (a + 1.0);
    for (int m = 1; m <= 100; ++m) {
        const double em = m;
        const double tem = em + em;
        double d = em * (b - em) * x / ((a - 1.0 + tem) * (a + tem));
        const double ap = az + d * am;
        const double bp = bz + d * bm;
        d = -(a + em) * (a + b + em) * x / ((a + 1.0 + tem) * (a + tem));
        const double app = ap + d * az;
        const double bpp = bp + d * bz;
        const double aold = az;
        // Renormalise by bpp every step so the convergents stay bounded.
        am = ap / bpp;
        bm = bp / bpp;
        az = app / bpp;
        bz = 1.0;
        if (std::fabs(az - aold) < 1e-07 * std::fabs(az)) break;
    }
    return az;
}

AnalysisStatus IncompleteBeta(double a, double b, double x, double* result) {
    if (x < 0.0 || x > 1.0) return kErrBetaParameter;
    if (x == 0.0) {  // also -0.0
        *result = 0.0;
        return kOk;
    }
    if (x == 1.0) {
        *result = 1.0;
        return kOk;
    }
    const double bt = ExpExtended(LogGamma(a + b) - LogGamma(a) - LogGamma(b) + a * std::log(x) +
                                  b * std::log(1.0 - x));
    // The continued fraction converges fast only below the mean of the
    // distribution; above it use the symmetry I_x(a, b) = 1 - I_{1-x}(b, a).
    if (x < (a + 1.0) / (a + b + 2.0))
        *result = bt * BetaContinuedFraction(a, b, x) / a;
    else
        *result = 1.0 - bt * BetaContinuedFraction(b, a, 1.0 - x) / b;
    return kOk;
}

AnalysisStatus NormalLowerTail(double x, double* p) {
    const bool negative = x < 0.0;
    const double ax = std::fabs(x);
    const double t = 1.0 / (1.0 + 0.33267 * ax);
    const double upper = 1.0 - t * (kInvSqrtTwoPi * ExpExtended(-ax * ax / 2.0)) *
                                   ((0.937298 * t - 0.1201676) * t + 0.4361836);
    *p = negative ? 1.0 - upper : upper;
    return kOk;
}

AnalysisStatus StudentLowerTail(double t, std::int32_t n, double* p) {
    if (n < 1) return kErrDegreesOfFreedom;
    const bool negative = t < 0.0;
    const double at = std::fabs(t);
    const double dn = n;
    // P(|T| > t) = I_{n/(n+t^2)}(n/2, 1/2). The argument is always in [0, 1],
    // so the status of IncompleteBeta carries no information here.
    double two_tail = 0.0;
    IncompleteBeta(dn / 2.0, 0.5, dn / (at * at + dn), &two_tail);
    *p = negative ? two_tail / 2.0 : 1.0 - two_tail / 2.0;
    return kOk;
}

AnalysisStatus FisherLowerTail(double f, std::int32_t n, std::int32_t m, double* p) {
    if (n < 1 || m < 1) return kErrDegreesOfFreedom;
    if (f <= 0.0) {
        *p = 0.0;
        return kOk;
    }
    const double dn = n, dm = m;
    // P(F > f) = I_{m/(m + n f)}(m/2, n/2).
    double upper = 0.0;
    const AnalysisStatus st = IncompleteBeta(dm / 2.0, dn / 2.0, dm / (f * dn + dm), &upper);
    *p = 1.0 - upper;
    return st;
}

AnalysisStatus ChiSquareLowerTail(double x, std::int32_t n, double* p) {
    if (n < 1) return kErrDegreesOfFreedom;
    if (x <= 0.0) {
        *p = 0.0;
        return kOk;
    }
    // n = 2 (1 - exp(-x/2)) needs no special case: the even series below has
    // no terms then and gives exactly that value.
    const double z = std::sqrt(x);
    double pz;
    NormalLowerTail(z, &pz);
    double result;
    if (n == 1) {
        result = 1.0 - 2.0 * (1.0 - pz);
    } else if (n % 2 == 0) {
        // Q = exp(-x/2) * sum_{k < n/2} (x/2)^k / k!, with (x/2)^k / k!
        // written as x^k / (2*4*...*2k).
        const double sum = ChiSquareSeries(x, 1.0, 1.0, n / 2 - 1, false);
        result = 1.0 - ExpExtended(-x / 2.0) * sum;
    } else {
        // Q = 2(1 - Phi(z)) + 2 phi(z) * sum_{k=1}^{(n-1)/2} z^(2k-1) / (1*3*...*(2k-1)).
        const double sum = ChiSquareSeries(x, 0.0, 1.0 / z, (n - 1) / 2, true);
        result = 1.0 - 2.0 * (kInvSqrtTwoPi * ExpExtended(-x / 2.0) * sum + (1.0 - pz));
    }
    *p = result;
    return kOk;
}

AnalysisStatus NormalQuantile(double p, double* x) {
    if (p <= 0.0 || p >= 1.0) return kErrProbability;  // a NaN passes and gives NaN
    if (p < 0.5) {
        const double t = std::sqrt(std::log(1.0 / (p * p)));
        *x = QuantileRational(t) - t;
    } else {
        const double q = 1.0 - p;
        const double t = std::sqrt(std::log(1.0 / (q * q)));
        *x = t - QuantileRational(t);
    }
    return kOk;
}

AnalysisStatus StudentQuantile(double p, std::int32_t n, double* t) {
    if (n < 1) return kErrDegreesOfFreedom;
    if (p >= 1.0 || p <= 0.0) return kErrProbability;  // a NaN passes, as specified
    *t = BisectLower(p, -10000.0, 10000.0, [n](double v) {
        double r = 0.0;
        StudentLowerTail(v, n, &r);
        return r;
    });
    return kOk;
}

AnalysisStatus FisherQuantile(double p, std::int32_t n, std::int32_t m, double* f) {
    if (n < 1 || m < 1) return kErrDegreesOfFreedom;
    if (p >= 1.0 || p <= 0.0) return kErrProbability;  // a NaN passes, as specified
    *f = BisectLower(p, 1e-6, 10000.0, [n, m](double v) {
        double r = 0.0;
        FisherLowerTail(v, n, m, &r);
        return r;
    });
    return kOk;
}

AnalysisStatus ChiSquareQuantile(double p, std::int32_t n, double* x) {
    if (p >= 1.0 || p <= 0.0) return kErrProbability;  // a NaN passes, as specified
    if (n < 1) return kErrDegreesOfFreedom;
    *x = BisectLower(p, 0.0, 10000.0, [n](double v) {
        double r = 0.0;
        ChiSquareLowerTail(v, n, &r);
        return r;
    });
    return kOk;
}

}  // namespace vn
