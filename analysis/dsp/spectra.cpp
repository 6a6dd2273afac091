#include "analysis/dsp/spectra.h"

#include "analysis/array/array_ops.h"
#include "analysis/dsp/fft.h"
#include "analysis/dsp/timedomain.h"
#include "analysis/dsp/windows.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <vector>

// Products and sums are rounded exactly as written (no fused multiply-add).
#pragma GCC optimize("fp-contract=off")

namespace vn {

namespace {

constexpr double kPi = 3.141592653589793;
using Scratch = std::vector<double>;

bool IsPowerOfTwo(std::int32_t n) { return n > 0 && (n & (n - 1)) == 0; }

AnalysisStatus CheckRecord(std::int32_t n) {
    if (n < 1) return kErrSamplesBelowOne;
    if (!IsPowerOfTwo(n)) return kErrNotPowerOfTwo;
    return kOk;
}

// Forward real transform of a copy of x[0 .. n-1] into `out` (n doubles,
// packed layout), zero-padded up to out.size().
void PackedTransform(const double* x, std::int32_t n, Scratch& out) {
    std::copy(x, x + n, out.begin());
    std::fill(out.begin() + n, out.end(), 0.0);
    const std::int32_t len = static_cast<std::int32_t>(out.size());
    RealFFTCore(out.data(), len, Log2Floor(len));
}

double Magnitude(double re, double im) { return std::sqrt(re * re + im * im); }

}  // namespace

std::int32_t Log2Floor(std::int32_t n) {
    if (n < 1) return -1;
    std::int32_t m = 0;
    while (n > 1) n >>= 1, ++m;
    return m;
}

AnalysisStatus AutoPowerSpectrumCore(const double* x, std::int32_t n, double dt, double* out, double* df) {
    AnalysisStatus st = CheckRecord(n);
    if (st != kOk) return st;
    try {
        Scratch p(x, x + n);
        st = PowerSpectrum(p.data(), n);
        if (st == kOk) {
            const std::int32_t half = n / 2;
            if (half > 0) out[0] = p[0];
            for (std::int32_t k = 1; k < half; ++k) out[k] = p[k] * 2.0;
            *df = 1.0 / (n * dt);
        }
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus AmpPhaseSpectrumCore(const double* x, std::int32_t n, std::int32_t unwrap, double dt, double* amp,
                                    double* phase, double* df) {
    AnalysisStatus st = CheckRecord(n);
    if (st != kOk) return st;
    try {
        Scratch X(n);
        PackedTransform(x, n, X);
        const std::int32_t half = n / 2;
        if (half > 0) {
            amp[0] = std::fabs(X[0]) / n;
            phase[0] = X[0] < 0 ? kPi : 0.0;
        }
        const double scale = std::sqrt(2.0) * (1.0 / n);
        for (std::int32_t k = 1; k < half; ++k) {
            amp[k] = Magnitude(X[k], X[n - k]) * scale;
            phase[k] = std::atan2(X[n - k], X[k]);
        }
        if (unwrap != 0 && half > 0) st = UnwrapPhase(phase, half);
        *df = 1.0 / (dt * n);
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

std::int32_t CrossSpectrumLength(std::int32_t n) {
    if (n < 1 || n > (1 << 30)) return 0;
    std::int32_t m = Log2Floor(n);
    if ((std::int32_t{1} << m) != n) ++m;
    return std::int32_t{1} << m;
}

AnalysisStatus CrossSpectrumCore(const double* x, const double* y, std::int32_t n, double* re, double* im) {
    if (n < 1) return kErrSamplesBelowOne;
    // A padded length of 2^31 would not fit the counts (nor the memory).
    const std::int32_t N = CrossSpectrumLength(n);
    if (N == 0) return kErrNoMemory;
    AnalysisStatus st = kOk;
    try {
        Scratch X(N), Y(N);
        PackedTransform(x, n, X);
        PackedTransform(y, n, Y);
        const double nn = static_cast<double>(N);
        const double f = 1.0 / (nn * nn);
        re[0] = X[0] * Y[0] * f;
        im[0] = 0.0;
        for (std::int32_t k = 1; k < N / 2; ++k) {
            const double xr = X[k], xi = X[N - k], yr = Y[k], yi = Y[N - k];
            const double sr = (xr * yr + xi * yi) * f;
            const double si = (xr * yi - xi * yr) * f;
            re[k] = sr, im[k] = si;
            re[N - k] = sr, im[N - k] = -si;
        }
        if (N >= 2) {
            re[N / 2] = X[N / 2] * Y[N / 2] * f;
            im[N / 2] = 0.0;
        }
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus CrossPowerSpectrumCore(const double* x, const double* y, std::int32_t n, double dt, double* mag,
                                      double* phase, double* df) {
    AnalysisStatus st = CheckRecord(n);
    if (st != kOk) return st;
    try {
        Scratch re(n), im(n);
        st = CrossSpectrumCore(x, y, n, re.data(), im.data());
        if (st == kOk) {
            const std::int32_t half = n / 2;
            if (half > 0) {
                mag[0] = Magnitude(re[0], im[0]);
                phase[0] = std::atan2(im[0], re[0]);
            }
            for (std::int32_t k = 1; k < half; ++k) {
                mag[k] = 2.0 * Magnitude(re[k], im[k]);
                phase[k] = std::atan2(im[k], re[k]);
            }
            *df = 1.0 / (n * dt);
        }
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus ACDCEstimatorCore(const double* x, std::int32_t n, double* ac, double* dc) {
    if (n < 1) return kErrSamplesBelowOne;
    AnalysisStatus st = kOk;
    try {
        double sum = 0.0;
        for (std::int32_t i = 0; i < n; ++i) sum += x[i];
        const double dc0 = sum / n;
        Scratch r(n);
        for (std::int32_t i = 0; i < n; ++i) r[i] = x[i] - dc0;
        HanningWindow(r.data(), n);
        double s1 = 0.0, s2 = 0.0;
        for (std::int32_t i = 0; i < n; ++i) {
            s1 += r[i];
            s2 += r[i] * r[i];
        }
        const double mu = s1 / n;
        const double v = s2 / n - mu * mu;
        // 8/3 undoes the Hanning window's mean square 3/8, 2 its mean 1/2.
        *ac = std::sqrt((v - 0.5 * mu * mu) * 2.6666666666666665);
        *dc = 2.0 * mu + dc0;
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus NetworkFunctionsCore(const double* s, const double* r, std::int32_t n, std::int32_t frames, double dt,
                                    double* mag_sxy, double* phase_sxy, double* mag_hf, double* phase_hf,
                                    double* coherence, double* impulse, double* df) {
    if (n < 1 || frames < 1) return kErrSamplesBelowOne;
    if (!IsPowerOfTwo(n)) return kErrNotPowerOfTwo;
    AnalysisStatus st = kOk;
    try {
        Scratch X(n), Y(n), sre(n, 0.0), sim(n, 0.0), sxx(n, 0.0), syy(n, 0.0);
        const double nn = static_cast<double>(n);
        const double f = 1.0 / (nn * nn);
        const std::int32_t half = n / 2;
        for (std::int32_t fr = 0; fr < frames; ++fr) {
            const std::ptrdiff_t off = static_cast<std::ptrdiff_t>(fr) * n;
            PackedTransform(s + off, n, X);
            PackedTransform(r + off, n, Y);
            // The cross spectrum conj(X) Y/n^2 and the power spectra
            // |X|^2/n^2, |Y|^2/n^2, each rounded as a single record's
            // spectrum and then added to the sums.
            sre[0] += X[0] * Y[0] * f;
            sxx[0] += X[0] * X[0] * f;
            syy[0] += Y[0] * Y[0] * f;
            for (std::int32_t k = 1; k < half; ++k) {
                const double xr = X[k], xi = X[n - k], yr = Y[k], yi = Y[n - k];
                const double cr = (xr * yr + xi * yi) * f;
                const double ci = (xr * yi - xi * yr) * f;
                const double px = (xr * xr + xi * xi) * f;
                const double py = (yr * yr + yi * yi) * f;
                sre[k] += cr, sim[k] += ci, sxx[k] += px, syy[k] += py;
                sre[n - k] += cr, sim[n - k] += -ci, sxx[n - k] += px, syy[n - k] += py;
            }
            if (n >= 2) {
                sre[half] += X[half] * Y[half] * f;
                sxx[half] += X[half] * X[half] * f;
                syy[half] += Y[half] * Y[half] * f;
            }
        }
        // H = Sxy/Sxx over all bins; its real part is built in `impulse`,
        // its imaginary part in X, and the pair is inverted in place.
        for (std::int32_t k = 0; k < n; ++k) {
            impulse[k] = sre[k] / sxx[k];
            X[k] = sim[k] / sxx[k];
        }
        for (std::int32_t k = 0; k < half; ++k) {
            mag_hf[k] = Magnitude(impulse[k], X[k]);
            phase_hf[k] = std::atan2(X[k], impulse[k]);
        }
        ComplexInvFFT(impulse, X.data(), n);
        const double a = 1.0 / frames;
        for (std::int32_t k = 0; k < half; ++k) {
            const double m = Magnitude(sre[k], sim[k]);
            mag_sxy[k] = k == 0 ? a * m : 2.0 * a * m;
            phase_sxy[k] = std::atan2(sim[k], sre[k]);
            coherence[k] = (sre[k] * sre[k] + sim[k] * sim[k]) / (syy[k] * sxx[k]);
        }
        *df = 1.0 / (n * dt);
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus TransferFunctionCore(const double* s, const double* r, std::int32_t n, double dt, double* mag_hf,
                                    double* phase_hf, double* df) {
    AnalysisStatus st = CheckRecord(n);
    if (st != kOk) return st;
    try {
        Scratch S(n), R(n);
        PackedTransform(s, n, S);
        PackedTransform(r, n, R);
        const std::int32_t half = n / 2;
        if (half > 0) {
            const double h0 = R[0] / S[0];
            mag_hf[0] = std::fabs(h0);
            phase_hf[0] = std::atan2(0.0, h0);
        }
        for (std::int32_t k = 1; k < half; ++k) {
            const double sr = S[k], si = S[n - k], rr = R[k], ri = R[n - k];
            const double d = 1.0 / (sr * sr + si * si);
            const double hr = (rr * sr + ri * si) * d;
            const double hi = (sr * ri - rr * si) * d;
            mag_hf[k] = Magnitude(hr, hi);
            phase_hf[k] = std::atan2(hi, hr);
        }
        *df = 1.0 / (n * dt);
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus ImpulseResponseCore(const double* s, const double* r, std::int32_t n, double* out) {
    AnalysisStatus st = CheckRecord(n);
    if (st != kOk) return st;
    try {
        Scratch S(n);
        PackedTransform(s, n, S);
        const std::int32_t m = Log2Floor(n);
        std::copy(r, r + n, out);
        RealFFTCore(out, n, m);
        const std::int32_t half = n / 2;
        out[0] = out[0] / S[0];
        if (n >= 2) out[half] = out[half] / S[half];
        for (std::int32_t k = 1; k < half; ++k) {
            const double sr = S[k], si = S[n - k], rr = out[k], ri = out[n - k];
            const double d = 1.0 / (sr * sr + si * si);
            out[k] = (rr * sr + ri * si) * d;
            out[n - k] = (sr * ri - rr * si) * d;
        }
        RealInvFFTCore(out, n, m);
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

AnalysisStatus PeakPowerFrequency(const double* s, std::int32_t n, double search_freq, double enbw,
                                  double /*coherent_gain*/, double df, std::int32_t span, double* freq_peak,
                                  double* power_peak) {
    if (n < 1) return kErrSamplesBelowOne;
    // The quotient is truncated only where it fits a bin index; beyond the
    // last bin (and for a NaN quotient) the largest element is the centre.
    std::int32_t k = 0;
    const double q = search_freq / df;
    if (search_freq >= 0 && q < n && q > -1e9) {
        k = static_cast<std::int32_t>(q);
    } else {
        double hi, lo;
        std::int32_t ilo;
        MaxMinValues(s, n, &hi, &k, &lo, &ilo);
    }
    const std::int64_t w = span < 3 ? 2 : (span & ~std::int32_t{1});
    const std::int64_t first = std::max<std::int64_t>(std::int64_t{k} - w / 2, 0);
    const std::int64_t last = std::min<std::int64_t>(std::int64_t{k} + w / 2, std::int64_t{n} - 1);
    double p = 0.0, moment = 0.0;
    for (std::int64_t i = first; i <= last; ++i) {
        p += s[i];
        moment += static_cast<double>(i) * s[i];
    }
    *power_peak = p / enbw;
    *freq_peak = p > 0 ? moment * df / p : k * df;
    return kOk;
}

AnalysisStatus SpectrumUnitConversionCore(const double* s, std::int32_t n, std::int32_t spectrum_type,
                                          std::int32_t scaling, std::int32_t display_unit, double df, double enbw,
                                          double coherent_gain, double* out) {
    if (n < 1) return kErrSamplesBelowOne;
    if (spectrum_type < 0 || spectrum_type > 3 || scaling < 0 || scaling > 2 || display_unit < 0 ||
        display_unit > 7)
        return kErrInvalidSelection;
    const double bandwidth = df * enbw;  // noise bandwidth of one bin, Hz
    const bool in_density = spectrum_type == 1 || spectrum_type == 3;
    const bool in_amplitude = spectrum_type >= 2;
    const bool out_density = display_unit >= 4;
    const bool out_peak = (display_unit & 1) != 0;
    const bool out_amplitude = (display_unit & 3) < 2;
    const double gain2 = coherent_gain * coherent_gain;
    for (std::int32_t i = 0; i < n; ++i) {
        double p = in_amplitude ? s[i] * s[i] : s[i];  // Vrms^2 per bin or per Hz
        if (in_density) p = p * bandwidth;
        p = p / gain2;
        if (out_density) p = p / bandwidth;
        double v;
        if (scaling == 2) {
            v = 10.0 * std::log10(p / 0.05);  // 50 ohm * 1 mW = 0.05 V^2
        } else {
            const double q = out_peak ? 2.0 * p : p;  // peak^2 = 2 rms^2 of a sinusoid
            if (scaling == 1)
                v = 10.0 * std::log10(q);  // = 20 log10 of the amplitude
            else
                v = out_amplitude ? std::sqrt(q) : q;
        }
        out[i] = v;
    }
    return kOk;
}

}  // namespace vn
