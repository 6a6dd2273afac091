#include "analysis/stat/distributions.h"

#include <cmath>

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
template <typename Cdf>
double BisectLower(double p, double lo, double hi, Cdf cdf) {
    do {
        const double mid = (lo + hi) / 2.0;
        const double r = cdf(mid);
        if (p <= r)
            hi = mid;
        else
            lo = mid;
    } while (!(std::fabs(hi - lo) <= 0.0001));
    return lo;
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
        double sum = 1.0, term = 1.0, den = 1.0;
        for (std::int32_t k = 1; k <= n / 2 - 1; ++k) {
            term = term * x;
            den = den * (2.0 * k);
            sum = sum + term / den;
        }
        result = 1.0 - ExpExtended(-x / 2.0) * sum;
    } else {
        // Q = 2(1 - Phi(z)) + 2 phi(z) * sum_{k=1}^{(n-1)/2} z^(2k-1) / (1*3*...*(2k-1)).
        double sum = 0.0, term = 1.0 / z, den = 1.0;
        for (std::int32_t k = 1; k <= (n - 1) / 2; ++k) {
            term = term * x;
            den = den * (2.0 * k - 1.0);
            sum = sum + term / den;
        }
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
