#include "analysis/stat/interpolation.h"

#include "analysis/stat/scratch.h"

#include <cmath>
#include <cstddef>

namespace vn {

namespace {

// Neville-style tableaux keep two columns of corrections: up[i] ("C") moves
// one row up the tableau, dn[i] ("D") one row down. Starting from the point
// nearest xVal, the path through the tableau takes up[ns + 1] while it can
// still stay centred and dn[ns] otherwise; this picks the corrections with
// the smallest magnitudes. ns may be -1 (before the first row).
double NextCorrection(const double* up, const double* dn, std::int32_t n, std::int32_t m, std::int32_t* ns) {
    if (2 * (*ns + 1) < n - m) return up[*ns + 1];
    const double dy = dn[*ns];
    --*ns;
    return dy;
}

}  // namespace

AnalysisStatus PolyInterp(const double* x, const double* y, std::int32_t n, double xVal, double* value,
                          double* error) {
    if (n < 1) return kErrSamplesBelowOne;
    const auto len = static_cast<std::size_t>(n);
    auto up = stat_detail::AllocateScratch<double>(len);
    auto dn = stat_detail::AllocateScratch<double>(len);
    if (!up || !dn) return kErrNoMemory;

    std::int32_t ns = 0;
    double dif = std::fabs(xVal - x[0]);
    for (std::int32_t i = 0; i < n; ++i) {
        const double dift = std::fabs(xVal - x[i]);
        if (dift < dif) {
            ns = i;
            dif = dift;
        }
        up[i] = y[i];
        dn[i] = y[i];
    }

    double est = y[ns];
    double dy = dif;  // the single-point error estimate |xVal - x[0]|
    --ns;
    for (std::int32_t m = 1; m < n; ++m) {
        for (std::int32_t i = 0; i < n - m; ++i) {
            if (x[i] == x[i + m]) return kErrXNotDistinct;
            const double ho = x[i] - xVal;
            const double hp = x[i + m] - xVal;
            const double w = up[i + 1] - dn[i];
            const double den = w / (ho - hp);
            dn[i] = hp * den;
            up[i] = ho * den;
        }
        dy = NextCorrection(up.get(), dn.get(), n, m, &ns);
        est += dy;
    }
    *value = est;
    *error = dy;
    return kOk;
}

AnalysisStatus RatInterp(const double* x, const double* y, std::int32_t n, double xVal, double* value,
                         double* error) {
    if (n < 1) return kErrSamplesBelowOne;
    const auto len = static_cast<std::size_t>(n);
    auto up = stat_detail::AllocateScratch<double>(len);
    auto dn = stat_detail::AllocateScratch<double>(len);
    if (!up || !dn) return kErrNoMemory;

    std::int32_t ns = 0;
    double dif = std::fabs(xVal - x[0]);
    for (std::int32_t i = 0; i < n; ++i) {
        const double h = std::fabs(xVal - x[i]);
        if (h == 0.0) {
            *value = y[i];
            *error = 0.0;
            return kOk;
        }
        if (h < dif) {
            ns = i;
            dif = h;
        }
        up[i] = y[i];
        // The offset keeps the first quotient away from 0/0 when neighbouring
        // y are equal; it is large enough to show in the result.
        dn[i] = y[i] + 1e-10;
    }

    double est = y[ns];
    if (n == 1) {
        *value = y[0];
        *error = dif;
        return kOk;
    }
    --ns;
    double dy = 0.0;
    for (std::int32_t m = 1; m < n; ++m) {
        for (std::int32_t i = 0; i < n - m; ++i) {
            const double w = up[i + 1] - dn[i];
            const double h = x[i + m] - xVal;  // never 0: exact hits returned above
            const double t = (x[i] - xVal) / h * dn[i];
            double dd = t - up[i + 1];
            if (dd == 0.0) return kErrPole;
            dd = w / dd;
            dn[i] = up[i + 1] * dd;
            up[i] = t * dd;
        }
        dy = NextCorrection(up.get(), dn.get(), n, m, &ns);
        est += dy;
    }
    *value = est;
    *error = dy;
    return kOk;
}

AnalysisStatus Spline(const double* x, const double* y, std::int32_t n, double b1, double b2, double* y2) {
    if (n < 1) return kErrSamplesBelowOne;
    auto u = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(n));
    if (!u) return kErrNoMemory;
    if (n == 1) {
        y2[0] = 0.0;
        return kOk;
    }

    // Tridiagonal system for the second derivatives, solved by forward
    // elimination (y2 holds the decomposition factors, u the right-hand
    // side) and back-substitution.
    if (b1 > kSplineNaturalEnd) {
        y2[0] = 0.0;
        u[0] = 0.0;
    } else {
        y2[0] = -0.5;
        u[0] = (3.0 / (x[1] - x[0])) * ((y[1] - y[0]) / (x[1] - x[0]) - b1);
    }
    for (std::int32_t i = 1; i < n - 1; ++i) {
        if (x[i - 1] == x[i] || x[i] == x[i + 1] || x[i - 1] == x[i + 1]) return kErrXNotDistinct;
        const double sig = (x[i] - x[i - 1]) / (x[i + 1] - x[i - 1]);
        const double p = sig * y2[i - 1] + 2.0;
        y2[i] = (sig - 1.0) / p;
        double r = (y[i + 1] - y[i]) / (x[i + 1] - x[i]) - (y[i] - y[i - 1]) / (x[i] - x[i - 1]);
        r = (6.0 * r / (x[i + 1] - x[i - 1]) - sig * u[i - 1]) / p;
        u[i] = r;
    }
    double qn, un;
    if (b2 > kSplineNaturalEnd) {
        qn = 0.0;
        un = 0.0;
    } else {
        const double h = x[n - 1] - x[n - 2];
        qn = 0.5;
        un = (3.0 / h) * (b2 - (y[n - 1] - y[n - 2]) / h);
    }
    y2[n - 1] = (un - qn * u[n - 2]) / (qn * y2[n - 2] + 1.0);
    for (std::int32_t k = n - 2; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
    return kOk;
}

AnalysisStatus SpInterp(const double* x, const double* y, const double* y2, std::int32_t n, double xVal,
                        double* value) {
    if (n < 1) return kErrSamplesBelowOne;
    std::int32_t lo = 0, hi = n - 1;
    while (hi - lo > 1) {
        const std::int32_t k = lo + ((hi - lo) >> 1);  // (hi + lo) / 2 without overflow
        if (xVal >= x[k])
            lo = k;
        else
            hi = k;
    }
    const double h = x[hi] - x[lo];
    if (h == 0.0) return kErrXNotDistinct;
    const double a = (x[hi] - xVal) / h;
    const double b = (xVal - x[lo]) / h;
    *value = a * y[lo] +
             (b * y[hi] + ((b * b - 1.0) * b * y2[hi] + (a * a - 1.0) * a * y2[lo]) * (h * h) * 0.16666666666666666);
    return kOk;
}

}  // namespace vn
