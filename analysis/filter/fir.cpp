#include "analysis/filter/fir.h"

#include "analysis/dsp/fft_internal.h"
#include "analysis/dsp/windows.h"
#include "analysis/filter/iir_design.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

namespace vn {

namespace {

constexpr double kPi = 3.14159265358979323846;

// The transforms' sine and cosine: the same bits on every platform.
double Sin(double a) {
    double s, c;
    fft_internal::SinCos(a, &s, &c);
    return s;
}
double Cos(double a) {
    double s, c;
    fft_internal::SinCos(a, &s, &c);
    return c;
}

}  // namespace

AnalysisStatus IdealFirResponse(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                                double* h) {
    if (type < kLowpass || type > kBandstop) return kErrInvalidSelection;
    if (type == kLowpass || type == kHighpass) f_high = (fs / 2.0 + f_low) / 2.0;
    if (n < 1) return kErrOrderNotPositive;
    if (f_low > fs / 2.0 || f_high > fs / 2.0) return kErrCutoff;
    const bool band = type == kBandpass || type == kBandstop;
    if (!band) {
        if (!(f_low > 0.0) || !(fs > 0.0)) return kErrBandEdges;
    } else {
        if (!(fs > 0.0) || !(f_low > 0.0) || !(f_high > 0.0) || !(f_high > f_low)) return kErrBandEdges;
    }
    if ((type == kHighpass || type == kBandstop) && n % 2 == 0) return kErrCoefficientsOdd;

    const double wl = 2.0 * kPi * f_low / fs;
    const double wh = band ? 2.0 * kPi * f_high / fs : 0.0;
    const double start = (1.0 - n) / 2.0;
    double phase_l = wl * start, phase_h = wh * start, den = kPi * start;
    for (std::int32_t i = 0; i < n / 2; ++i) {
        double v;
        switch (type) {
            case kLowpass: v = Sin(phase_l) / den; break;
            case kHighpass: v = -Sin(phase_l) / den; break;
            case kBandpass: v = (Sin(phase_h) - Sin(phase_l)) / den; break;
            default: v = (Sin(phase_l) - Sin(phase_h)) / den; break;
        }
        h[i] = v;
        h[n - 1 - i] = v;
        phase_l += wl;
        phase_h += wh;
        den += kPi;
    }
    if (n % 2 != 0) {
        double centre;
        switch (type) {
            case kLowpass: centre = wl / kPi; break;
            case kHighpass: centre = 1.0 - wl / kPi; break;
            case kBandpass: centre = (wh - wl) / kPi; break;
            default: centre = 1.0 - (wh - wl) / kPi; break;
        }
        h[(n - 1) / 2] = centre;
    }
    return kOk;
}

AnalysisStatus ApplyFirWindow(std::int32_t window_code, double* h, std::int32_t n, double beta) {
    if (n < 1) return window_code >= 2 && window_code <= 6 ? kErrSamplesBelowOne : kOk;
    try {
        std::vector<double> w(static_cast<std::size_t>(n));
        const AnalysisStatus st = SymmetricFirWindow(w.data(), n, window_code, beta);
        if (st < 0) return st;
        for (std::int32_t i = 0; i < n; ++i) h[i] *= w[i];
        return st;
    } catch (const std::bad_alloc&) {
        return kErrNoMemory;
    }
}

AnalysisStatus WindowedFirDesign(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                                 std::int32_t wind_type, double* h) {
    const std::int32_t code = (wind_type < 1 || wind_type > 5) ? 4 : wind_type;
    const AnalysisStatus st = IdealFirResponse(type, fs, f_low, f_high, n, h);
    if (st < 0) return st;
    return ApplyFirWindow(code, h, n, 0.0);
}

AnalysisStatus KaiserFirDesign(std::int32_t type, double fs, double f_low, double f_high, std::int32_t n,
                               double beta, double* h) {
    if (!(beta >= 0.0)) beta = 4.5;
    const AnalysisStatus st = IdealFirResponse(type, fs, f_low, f_high, n, h);
    if (st < 0) return st;
    return ApplyFirWindow(6, h, n, beta);
}

namespace {

// One candidate of the exchange: a grid index, |E| there and the sign of E.
struct Extremum {
    std::int32_t idx;
    double mag;
    int sign;
};

// The reduced approximation problem on the dense grid: find the polynomial
// P(x) of degree r - 1 in x = cos(2 pi f) minimising max |w (d - P)| over
// the grid, where d = D/Q and w = W*Q fold the factor Q(f) that the tap
// symmetry imposes on the response (1, cos(pi f), sin(2 pi f) or sin(pi f)).
struct RemezProblem {
    std::vector<double> x, d, w;
    std::vector<std::int32_t> band_of;  // band number of each grid point
};

// Barycentric weights 1/prod_{j != k} 2 (x_k - x_j) of the points x[ref[k]],
// all scaled by one power of two so the largest is in (1, 2]: the products
// of up to 510 factors would leave the double range, and a common factor
// cancels in every formula that uses them. frexp/ldexp are exact.
void BarycentricWeights(const std::vector<double>& x, const std::vector<std::int32_t>& ref,
                        std::vector<double>& gamma) {
    const std::size_t m = ref.size();
    std::vector<int> ex(m);
    int emax = 0;
    for (std::size_t k = 0; k < m; ++k) {
        const double xk = x[ref[k]];
        double prod = 1.0;
        int e = 0;
        for (std::size_t j = 0; j < m; ++j) {
            if (j == k) continue;
            int ej;
            prod = std::frexp(prod * (2.0 * (xk - x[ref[j]])), &ej);
            e += ej;
        }
        gamma[k] = 1.0 / prod;
        ex[k] = -e;
        if (k == 0 || ex[k] > emax) emax = ex[k];
    }
    for (std::size_t k = 0; k < m; ++k) gamma[k] = std::ldexp(gamma[k], ex[k] - emax);
}

// Second barycentric form through the nodes xs with weights beta and values c.
double Interpolate(double x, const double* xs, const double* beta, const double* c, std::int32_t m) {
    double num = 0.0, den = 0.0;
    for (std::int32_t k = 0; k < m; ++k) {
        const double diff = x - xs[k];
        if (diff == 0.0) return c[k];
        const double t = beta[k] / diff;
        num += t * c[k];
        den += t;
    }
    return num / den;
}

// New reference from the error curve: the local extrema of e with |e| >=
// |delta| plus the old reference points, merged so the signs alternate
// (keeping the larger of two neighbours of one sign), then thinned to r + 1
// points by dropping the smallest (an end point alone, an inner point with
// the merge of its two neighbours). The old points alternate, so at least
// r + 1 remain after the merge.
void Exchange(const RemezProblem& p, const std::vector<double>& e, double delta,
              const std::vector<std::int32_t>& ref, std::vector<std::int32_t>& out) {
    const std::int32_t ng = static_cast<std::int32_t>(e.size());
    const std::size_t want = ref.size();
    const double level = std::fabs(delta);
    const int dsign = delta < 0.0 ? -1 : 1;
    std::vector<Extremum> c;
    c.reserve(want * 2);
    std::size_t k = 0;
    for (std::int32_t g = 0; g < ng; ++g) {
        Extremum cand{g, std::fabs(e[g]), 0};
        if (k < want && ref[k] == g) {
            cand.sign = (k % 2 == 0) ? dsign : -dsign;
            ++k;
        } else {
            const bool has_prev = g > 0 && p.band_of[g - 1] == p.band_of[g];
            const bool has_next = g + 1 < ng && p.band_of[g + 1] == p.band_of[g];
            const double v = e[g];
            if (!(cand.mag >= level) || v == 0.0) continue;
            if (v > 0.0 && (has_prev && e[g - 1] > v)) continue;
            if (v > 0.0 && (has_next && e[g + 1] > v)) continue;
            if (v < 0.0 && (has_prev && e[g - 1] < v)) continue;
            if (v < 0.0 && (has_next && e[g + 1] < v)) continue;
            cand.sign = v > 0.0 ? 1 : -1;
        }
        if (!c.empty() && c.back().sign == cand.sign) {
            if (cand.mag > c.back().mag) c.back() = cand;
        } else {
            c.push_back(cand);
        }
    }
    while (c.size() > want) {
        if (c.size() == want + 1) {
            if (c.front().mag < c.back().mag) c.erase(c.begin());
            else c.pop_back();
            continue;
        }
        std::size_t imin = 0;
        for (std::size_t i = 1; i < c.size(); ++i)
            if (c[i].mag < c[imin].mag) imin = i;
        if (imin == 0 || imin + 1 == c.size()) {
            c.erase(c.begin() + static_cast<std::ptrdiff_t>(imin));
        } else {
            // Neighbours of one sign now: keep the larger of the two.
            const std::size_t keep = c[imin - 1].mag >= c[imin + 1].mag ? imin - 1 : imin + 1;
            const Extremum kept = c[keep];
            c.erase(c.begin() + static_cast<std::ptrdiff_t>(imin - 1), c.begin() + static_cast<std::ptrdiff_t>(imin + 2));
            c.insert(c.begin() + static_cast<std::ptrdiff_t>(imin - 1), kept);
        }
    }
    out.resize(c.size());
    for (std::size_t i = 0; i < c.size(); ++i) out[i] = c[i].idx;
}

AnalysisStatus RemezCore(std::int32_t bands, const double* desired, const double* weights, double fs,
                         const double* edges, std::int32_t ftype, std::int32_t n, std::int32_t r, double* h,
                         double* delta_out, std::int32_t limit) {
    const bool odd = n % 2 != 0;
    // The factor the symmetry imposes on the amplitude, and where it vanishes.
    enum { kNone, kCosHalf, kSinFull, kSinHalf } factor;
    if (ftype == 1) factor = odd ? kNone : kCosHalf;
    else factor = odd ? kSinFull : kSinHalf;
    const bool zero_at_dc = factor == kSinFull || factor == kSinHalf;
    const bool zero_at_nyquist = factor == kCosHalf || factor == kSinFull;

    // Dense grid: each band split into equal steps of at most 0.5/(16 r),
    // both edges included; an edge where the factor vanishes moves one
    // step inwards.
    const double step = 0.5 / (16.0 * r);
    RemezProblem p;
    std::vector<double> fgrid;
    for (std::int32_t b = 0; b < bands; ++b) {
        double lo = edges[2 * b] / fs, hi = edges[2 * b + 1] / fs;
        if (zero_at_dc && lo < step) lo = step;
        if (zero_at_nyquist && hi > 0.5 - step) hi = 0.5 - step;
        if (hi < lo) continue;  // a band narrower than the moved edge
        const double m = std::ceil((hi - lo) / step);
        const std::int32_t count = static_cast<std::int32_t>(m);
        for (std::int32_t j = 0; j <= count; ++j) {
            const double f = count == 0 ? lo : (j == count ? hi : lo + j * ((hi - lo) / m));
            double q;
            switch (factor) {
                case kNone: q = 1.0; break;
                case kCosHalf: q = Cos(kPi * f); break;
                case kSinFull: q = Sin(2.0 * kPi * f); break;
                default: q = Sin(kPi * f); break;
            }
            double dv = desired[b], wv = weights[b];
            if (ftype == 2) {
                // Differentiator: slope desired[b] per unit of f/fs, error
                // relative to the desired value where that is not zero.
                dv = desired[b] * f;
                if (desired[b] > 0.0) wv = weights[b] / f;
            }
            fgrid.push_back(f);
            p.x.push_back(Cos(2.0 * kPi * f));
            p.d.push_back(dv / q);
            p.w.push_back(wv * q);
            p.band_of.push_back(b);
        }
    }
    const std::int32_t ng = static_cast<std::int32_t>(p.x.size());
    if (ng < r + 1) return kErrFilterDesign;

    std::vector<std::int32_t> ref(static_cast<std::size_t>(r) + 1), next;
    for (std::int32_t k = 0; k <= r; ++k)
        ref[k] = static_cast<std::int32_t>(static_cast<std::int64_t>(k) * (ng - 1) / r);

    std::vector<double> gamma(static_cast<std::size_t>(r) + 1), xs(r), beta(r), c(r), e(ng);
    double delta = 0.0;
    bool converged = false;
    for (std::int32_t iter = 0; iter < limit && !converged; ++iter) {
        BarycentricWeights(p.x, ref, gamma);
        double num = 0.0, den = 0.0;
        for (std::int32_t k = 0; k <= r; ++k) {
            const double s = (k % 2 == 0) ? 1.0 : -1.0;
            num += gamma[k] * p.d[ref[k]];
            den += gamma[k] * s / p.w[ref[k]];
        }
        delta = num / den;
        if (!std::isfinite(delta)) return kErrFilterDesign;
        const double xr = p.x[ref[r]];
        for (std::int32_t k = 0; k < r; ++k) {
            const double s = (k % 2 == 0) ? 1.0 : -1.0;
            xs[k] = p.x[ref[k]];
            c[k] = p.d[ref[k]] - s * delta / p.w[ref[k]];
            // Dropping node r from the weights multiplies back its factor.
            beta[k] = gamma[k] * (xs[k] - xr);
        }
        double peak = 0.0;
        for (std::int32_t g = 0; g < ng; ++g) {
            e[g] = p.w[g] * (p.d[g] - Interpolate(p.x[g], xs.data(), beta.data(), c.data(), r));
            if (!std::isfinite(e[g])) return kErrFilterDesign;
            peak = std::max(peak, std::fabs(e[g]));
        }
        // Levelled: the grid's peak error is the reference's (to rounding).
        if (peak - std::fabs(delta) <= 1e-12 * peak) {
            converged = true;
            break;
        }
        Exchange(p, e, delta, ref, next);
        if (next == ref) converged = true;
        ref.swap(next);
    }
    if (!converged) return kErrMaxIterations;

    // Cosine coefficients a_k of P(f) = sum a_k cos(2 pi k f) from its values
    // at f_j = j/M, M = 2r - 1 (an exact inverse for degree r - 1). Angles
    // are taken from the exact fraction (j k mod M)/M for accuracy.
    const std::int32_t M = 2 * r - 1;
    std::vector<double> ct(M), pv(r), a(static_cast<std::size_t>(r) + 1, 0.0);
    for (std::int32_t m = 0; m < M; ++m) ct[m] = Cos(2.0 * kPi * m / M);
    for (std::int32_t j = 0; j < r; ++j) pv[j] = Interpolate(ct[j], xs.data(), beta.data(), c.data(), r);
    for (std::int32_t k = 0; k < r; ++k) {
        double sum = 0.0;
        for (std::int32_t j = 1; j < r; ++j) sum += pv[j] * ct[static_cast<std::int64_t>(j) * k % M];
        a[k] = (pv[0] + 2.0 * sum) / M * (k == 0 ? 1.0 : 2.0);
    }
    // a[r] = 0 pads the recurrences below.
    std::vector<double> taps(n);
    switch (factor) {
        case kNone:  // n = 2r - 1: h[r-1 -+ k] = a_k / 2, centre a_0.
            taps[r - 1] = a[0];
            for (std::int32_t k = 1; k < r; ++k) taps[r - 1 - k] = taps[r - 1 + k] = a[k] / 2.0;
            break;
        case kCosHalf:  // n = 2r: cos(pi f) P = sum b_k cos(2 pi (k - 1/2) f).
            for (std::int32_t k = 1; k <= r; ++k) {
                const double b = k == 1 ? a[0] + a[1] / 2.0 : (a[k - 1] + a[k]) / 2.0;
                taps[r - k] = taps[r - 1 + k] = b / 2.0;
            }
            break;
        case kSinFull: {  // n = 2r + 1: sin(2 pi f) P = sum d_m sin(2 pi m f).
            taps[r] = 0.0;
            for (std::int32_t m = 1; m <= r; ++m) {
                const double up = m + 1 < r ? a[m + 1] : 0.0;
                const double d = m == 1 ? a[0] - up / 2.0 : (a[m - 1] - up) / 2.0;
                taps[r - m] = d / 2.0;
                taps[r + m] = -d / 2.0;
            }
            break;
        }
        default:  // n = 2r: sin(pi f) P = sum e_m sin(2 pi (m - 1/2) f).
            for (std::int32_t m = 1; m <= r; ++m) {
                const double d = m == 1 ? a[0] - a[1] / 2.0 : (a[m - 1] - a[m]) / 2.0;
                taps[r - m] = d / 2.0;
                taps[r - 1 + m] = -d / 2.0;
            }
            break;
    }
    for (std::int32_t i = 0; i < n; ++i)
        if (!std::isfinite(taps[i])) return kErrFilterDesign;
    for (std::int32_t i = 0; i < n; ++i) h[i] = taps[i];
    *delta_out = delta;
    return kOk;
}

}  // namespace

AnalysisStatus EquiRippleDesign(std::int32_t bands, const double* desired, const double* weights, double fs,
                                const double* edges, std::int32_t ftype, std::int32_t n, double* h,
                                double* delta, std::int32_t iteration_limit) {
    if (n < 3) return kErrFilterDesign;
    if (iteration_limit < 1) iteration_limit = 100;
    if (bands < 1) return kErrSamplesBelowOne;
    if (!(fs > 0.0)) return kErrBandEdges;
    const std::int64_t ne = 2 * static_cast<std::int64_t>(bands);
    for (std::int64_t i = 0; i < ne; ++i)
        if (!(edges[i] >= 0.0)) return kErrBandEdges;
    for (std::int32_t b = 0; b < bands; ++b)
        if (!(weights[b] > 0.0) || !(desired[b] >= 0.0)) return kErrBandEdges;
    const double last = edges[ne - 1];
    if (!(last / fs <= 0.5)) return kErrCutoff;  // also inf/inf
    for (std::int64_t i = 1; i < ne; ++i)
        if (!(edges[i - 1] < edges[i])) return kErrBandEdges;
    const double half = fs / 2.0;
    const bool odd = n % 2 != 0;
    switch (ftype) {
        case 1:
            if (edges[0] != 0.0 || std::fabs(last - half) > 0.001) return kErrFilterDesign;
            if (!odd && desired[bands - 1] != 0.0) return kErrCoefficientsOdd;
            break;
        case 2:
            if (edges[0] != 0.0) return kErrFilterDesign;
            if (odd ? half - last < 0.01 : std::fabs(last - half) > 0.001) return kErrFilterDesign;
            break;
        case 3:
            if (edges[0] == 0.0) return kErrFilterDesign;
            if (odd ? half - last < 0.001 : std::fabs(last - half) > 0.001) return kErrFilterDesign;
            break;
        default: return kErrInvalidSelection;
    }
    const std::int32_t r = n / 2 + ((odd && ftype == 1) ? 1 : 0);
    if (r + 2 >= 512) return kErrNoMemory;
    try {
        return RemezCore(bands, desired, weights, fs, edges, ftype, n, r, h, delta, iteration_limit);
    } catch (const std::bad_alloc&) {
        return kErrNoMemory;
    }
}

AnalysisStatus EquiRippleBandDesign(std::int32_t type, double fs, double f1, double f2, double f3, double f4,
                                    std::int32_t n, double* h, double* delta) {
    if (type < kLowpass || type > kBandstop) return kErrInvalidSelection;
    const double half = fs / 2.0;
    const bool two = type == kLowpass || type == kHighpass;
    const double edges[6] = {0.0, f1, f2, two ? half : f3, f4, half};
    const double pass[3] = {1.0, 0.0, 1.0}, stop[3] = {0.0, 1.0, 0.0}, weights[3] = {1.0, 1.0, 1.0};
    const double* desired = (type == kLowpass || type == kBandstop) ? pass : stop;
    double d = 0.0;
    const AnalysisStatus st = EquiRippleDesign(two ? 2 : 3, desired, weights, fs, edges, 1, n, h, &d, 100);
    if (st < 0) return st;
    *delta = std::fabs(d);
    return st;
}

}  // namespace vn
