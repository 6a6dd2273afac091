// IIR filtering kernels, coefficient designs and the direct-form runner.
//
// Speed without changing a single rounding: the sections of a cascade are
// independent recursions, so up to four of them are run in one pass over
// the samples (sample i goes through section 1, then 2, ...), which lets the
// processor overlap their dependency chains; every section still evaluates
// its own difference equation in its own order of operations (the forms of
// iir_design.h), as if it had run alone over the whole buffer. The direct-form runner computes the
// feed-forward sums of a block of samples first (vectorisable across
// samples, each sum in its own fixed order) and then the recursion.
#include "analysis/filter/iir.h"

#include "analysis/filter/iir_design.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

namespace vn {

namespace {

// --- Section runner ----------------------------------------------------------

// One output of a section in its form (iir_design.h), xs[1..L-1] and
// ys[1..L-1] holding x[n-1], y[n-1], ... Every form is written out with its
// own parentheses so that the compiler keeps its order of operations.
template <int L, IirForm F>
inline double SectionOut(double g, const double* num, const double* a, const double* xs, const double* ys, double v) {
    if constexpr (F == IirForm::kScaled) {
        double s = num[0] * v;
        for (int j = 1; j < L; ++j) s += num[j] * xs[j];
        double out = g * s;
        for (int j = 1; j < L; ++j) out -= a[j] * ys[j];
        return out;
    } else if constexpr (F == IirForm::kZeroPair) {
        static_assert(L == 3, "zero-pair sections have three taps");
        const double fb = (-a[1]) * ys[1] - a[2] * ys[2];
        return fb + g * (num[0] * (v + xs[2]) + num[1] * xs[1]);
    } else {
        double s = num[0] * v;
        for (int j = 1; j < L; ++j) s += num[j] * xs[j];
        double fb = a[1] * ys[1];
        for (int j = 2; j < L; ++j) fb += a[j] * ys[j];
        return s - fb;
    }
}

// Runs K sections of L taps and one form over y[0 .. n-1] in place, from
// rest. Sample i goes through section 0, then 1, ...; each section sees
// exactly the sequence it would see running alone over the whole buffer.
template <int L, IirForm F, int K>
void RunGroup(const IirSection* sec, double* y, std::int32_t n) {
    double g[K], num[K][L], a[K][L], xs[K][L], ys[K][L];
    for (int k = 0; k < K; ++k) {
        g[k] = sec[k].g;
        for (int j = 0; j < L; ++j) num[k][j] = sec[k].num[j], a[k][j] = sec[k].a[j], xs[k][j] = 0, ys[k][j] = 0;
    }
    for (std::int32_t i = 0; i < n; ++i) {
        double v = y[i];
        for (int k = 0; k < K; ++k) {
            const double out = SectionOut<L, F>(g[k], num[k], a[k], xs[k], ys[k], v);
            for (int j = L - 1; j > 1; --j) xs[k][j] = xs[k][j - 1], ys[k][j] = ys[k][j - 1];
            xs[k][1] = v, ys[k][1] = out;
            v = out;
        }
        y[i] = v;
    }
}

template <int L, IirForm F>
void RunGroupOf(const IirSection* sec, int count, double* y, std::int32_t n) {
    switch (count) {
    case 1: RunGroup<L, F, 1>(sec, y, n); break;
    case 2: RunGroup<L, F, 2>(sec, y, n); break;
    case 3: RunGroup<L, F, 3>(sec, y, n); break;
    default: RunGroup<L, F, 4>(sec, y, n); break;
    }
}

// The section kinds that occur: first-order (2 taps, scaled), pole pairs
// (3 taps, scaled or zero-pair), band sections (3 or 5 taps, direct).
void RunSections(const IirSection* sec, int count, double* y, std::int32_t n) {
    switch (sec[0].form) {
    case IirForm::kScaled:
        if (sec[0].len == 2)
            RunGroupOf<2, IirForm::kScaled>(sec, count, y, n);
        else
            RunGroupOf<3, IirForm::kScaled>(sec, count, y, n);
        break;
    case IirForm::kZeroPair: RunGroupOf<3, IirForm::kZeroPair>(sec, count, y, n); break;
    default:
        if (sec[0].len == 3)
            RunGroupOf<3, IirForm::kDirect>(sec, count, y, n);
        else
            RunGroupOf<5, IirForm::kDirect>(sec, count, y, n);
        break;
    }
}

// Designs and runs the cascade; the arguments have been validated.
void FilterCascade(IirFamily family, std::int32_t type, const double* x, std::int32_t n, double fs, double fl,
                   double fh, double param, double atten, std::int32_t order, double* y) {
    if (x != y) std::copy(x, x + n, y);
    IirSectionSource source(family, type, order, fs, fl, fh, param, atten);
    constexpr int kGroup = 4;
    IirSection sec[kGroup];
    int count = 0;
    IirSection s;
    while (source.Next(s)) {
        // Groups hold sections of one length and form: flush before a change.
        if (count == kGroup || (count > 0 && (sec[0].len != s.len || sec[0].form != s.form))) {
            RunSections(sec, count, y, n);
            count = 0;
        }
        sec[count++] = s;
    }
    if (count > 0) RunSections(sec, count, y, n);
}

// --- Validation ----------------------------------------------------------------

bool Positive(double v) { return v > 0; }

// The family's shape parameters: ripple for Chebyshev, attenuation for the
// inverse family, both for the elliptic one (the attenuation above the
// ripple), nothing for Butterworth.
AnalysisStatus CheckParam(IirFamily family, double param, double atten) {
    if (family == IirFamily::kChebyshev && !Positive(param)) return kErrRipple;
    if (family == IirFamily::kInverseChebyshev && !Positive(param)) return kErrAttenuation;
    if (family == IirFamily::kElliptic) {
        if (!Positive(param)) return kErrRipple;
        if (!Positive(atten)) return kErrAttenuation;
        if (!(atten > param)) return kErrAttenuationBelowRipple;
    }
    return kOk;
}

AnalysisStatus CheckSingle(IirFamily family, std::int32_t n, double fs, double fc, double param, double atten,
                           std::int32_t order) {
    if (n < 1) return kErrSamplesBelowOne;
    if (order < 1) return kErrOrderNotPositive;
    if (!Positive(fc) || !Positive(fs)) return kErrBandEdges;
    if (const AnalysisStatus st = CheckParam(family, param, atten)) return st;
    if (fc > fs / 2) return kErrCutoff;
    return kOk;
}

AnalysisStatus CheckBand(IirFamily family, std::int32_t n, double fs, double fl, double fh, double param,
                         double atten, std::int32_t order) {
    if (n < 1) return kErrSamplesBelowOne;
    if (order < 1) return kErrOrderNotPositive;
    if (!Positive(fl) || !Positive(fh) || !Positive(fs) || !(fh > fl)) return kErrBandEdges;
    if (const AnalysisStatus st = CheckParam(family, param, atten)) return st;
    if (fh > fs / 2) return kErrCutoff;
    return kOk;
}

AnalysisStatus SingleFilter(IirFamily family, std::int32_t type, const double* x, std::int32_t n, double fs,
                            double fc, double param, std::int32_t order, double* y, double atten = 0) {
    AnalysisStatus st = CheckSingle(family, n, fs, fc, param, atten, order);
    if (st == kOk) FilterCascade(family, type, x, n, fs, fc, 0, param, atten, order, y);
    return st;
}

AnalysisStatus BandFilter(IirFamily family, std::int32_t type, const double* x, std::int32_t n, double fs, double fl,
                          double fh, double param, std::int32_t order, double* y, double atten = 0) {
    AnalysisStatus st = CheckBand(family, n, fs, fl, fh, param, atten, order);
    if (st == kOk) FilterCascade(family, type, x, n, fs, fl, fh, param, atten, order, y);
    return st;
}

// --- Coefficient design ----------------------------------------------------------

AnalysisStatus CoefDesign(IirFamily family, std::int32_t type, std::int32_t order, double fs, double fl, double fh,
                          double param, double* a, std::int32_t na, double* b, std::int32_t nb, double atten = 0) {
    if (order < 1) return kErrOrderNotPositive;
    const bool single = type == kLowpass || type == kHighpass;
    if (single) fh = (fs / 2 + fl) / 2;
    if (!Positive(fl) || !Positive(fh) || !Positive(fs)) return kErrBandEdges;
    if (const AnalysisStatus st = CheckParam(family, param, atten)) return st;
    if (!(fl < fh)) return kErrBandEdges;
    if (fh > fs / 2) return kErrCutoff;
    const bool band = type == kBandpass || type == kBandstop;
    const std::int64_t m = band ? 2 * static_cast<std::int64_t>(order) + 1 : static_cast<std::int64_t>(order) + 1;
    if (m > na || m > nb) return kErrWrongCount;
    if (!single && !band) return kErrInvalidSelection;

    AnalysisStatus st = kOk;
    try {
        std::vector<double> sa(static_cast<std::size_t>(m)), sb(static_cast<std::size_t>(m));
        a[0] = 1, b[0] = 1;
        std::int32_t len = 1;
        IirSectionSource source(family, type, order, fs, fl, fh, param, atten);
        IirSection s;
        while (source.Next(s)) {
            double sb_sec[5];
            for (int j = 0; j < s.len; ++j) sb_sec[j] = s.g * s.num[j];
            PolyCopy(a, len, sa.data());
            PolyMul(sa.data(), len, s.a, s.len, a);
            PolyCopy(b, len, sb.data());
            PolyMul(sb.data(), len, sb_sec, s.len, b);
            len += s.len - 1;
        }
    } catch (const std::bad_alloc&) {
        st = kErrNoMemory;
    }
    return st;
}

// --- Direct form --------------------------------------------------------------------

constexpr std::int32_t kBlock = 256;

// Input i of the record, i < 0 reaching back into the state (x1[nb-2] is
// x[-1]).
inline double Before(const double* x, const double* state, std::int32_t count, std::int64_t i) {
    return i >= 0 ? x[i] : state[count + i];
}

// Feed-forward sums of samples i0 .. i0+len-1: 0.0 + b[nb-1] x[i-nb+1] + ...
// + b[0] x[i].
void FeedForward(const double* x, const double* b, const double* x1, std::int32_t nb, std::int32_t i0,
                 std::int32_t len, double* s) {
    for (std::int32_t j = 0; j < len; ++j) s[j] = 0.0;
    for (std::int32_t k = nb - 1; k >= 0; --k) {
        const double bk = b[k];
        // j < k - i0 reaches before x[0].
        const std::int32_t split = std::min<std::int64_t>(len, std::max<std::int64_t>(0, std::int64_t(k) - i0));
        for (std::int32_t j = 0; j < split; ++j) s[j] += bk * Before(x, x1, nb - 1, std::int64_t(i0) + j - k);
        const double* xs = x + (std::int64_t(i0) - k);
        for (std::int32_t j = split; j < len; ++j) s[j] += bk * xs[j];
    }
}

// One output from its feed-forward sum: subtract a[na-1] y[i-na+1] ... a[1]
// y[i-1] in that order, then divide by a[0] (skipped when a[0] is 1, which
// leaves every bit as it is).
inline double Recur(double t, const double* a, std::int32_t na, const double* y, const double* y1, std::int64_t i,
                    bool unit) {
    for (std::int32_t k = na - 1; k >= 1; --k) t -= a[k] * Before(y, y1, na - 1, i - k);
    return unit ? t : t / a[0];
}

// The recursion for i >= na - 1, where every delayed output is in y; NA > 0
// fixes the count at compile time.
template <int NA>
void RecurBlock(const double* s, const double* a, std::int32_t na, double* y, std::int32_t i0, std::int32_t len,
                bool unit) {
    const std::int32_t cnt = NA > 0 ? NA : na;
    for (std::int32_t j = 0; j < len; ++j) {
        const std::int64_t i = std::int64_t(i0) + j;
        double t = s[j];
        for (std::int32_t k = cnt - 1; k >= 1; --k) t -= a[k] * y[i - k];
        y[i] = unit ? t : t / a[0];
    }
}

void RecurFast(const double* s, const double* a, std::int32_t na, double* y, std::int32_t i0, std::int32_t len,
               bool unit) {
    switch (na) {
    case 1: RecurBlock<1>(s, a, na, y, i0, len, unit); break;
    case 2: RecurBlock<2>(s, a, na, y, i0, len, unit); break;
    case 3: RecurBlock<3>(s, a, na, y, i0, len, unit); break;
    case 4: RecurBlock<4>(s, a, na, y, i0, len, unit); break;
    case 5: RecurBlock<5>(s, a, na, y, i0, len, unit); break;
    case 6: RecurBlock<6>(s, a, na, y, i0, len, unit); break;
    case 7: RecurBlock<7>(s, a, na, y, i0, len, unit); break;
    case 8: RecurBlock<8>(s, a, na, y, i0, len, unit); break;
    case 9: RecurBlock<9>(s, a, na, y, i0, len, unit); break;
    default: RecurBlock<0>(s, a, na, y, i0, len, unit); break;
    }
}

// The last `count` values of the record (state followed by x) become the
// new state. Writing ascending reads only entries not yet overwritten.
void KeepTail(const double* x, std::int32_t n, double* state, std::int32_t count) {
    for (std::int32_t j = 0; j < count; ++j) state[j] = Before(x, state, count, std::int64_t(n) - count + j);
}

}  // namespace

// --- Filtering kernels -------------------------------------------------------------

AnalysisStatus BwLowPass(const double* x, std::int32_t n, double fs, double fc, std::int32_t order, double* y) {
    return SingleFilter(IirFamily::kButterworth, kLowpass, x, n, fs, fc, 0, order, y);
}
AnalysisStatus BwHighPass(const double* x, std::int32_t n, double fs, double fc, std::int32_t order, double* y) {
    return SingleFilter(IirFamily::kButterworth, kHighpass, x, n, fs, fc, 0, order, y);
}
AnalysisStatus BwBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, std::int32_t order,
                          double* y) {
    return BandFilter(IirFamily::kButterworth, kBandpass, x, n, fs, fl, fh, 0, order, y);
}
AnalysisStatus BwBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, std::int32_t order,
                          double* y) {
    return BandFilter(IirFamily::kButterworth, kBandstop, x, n, fs, fl, fh, 0, order, y);
}

AnalysisStatus ChLowPass(const double* x, std::int32_t n, double fs, double fc, double ripple, std::int32_t order,
                         double* y) {
    return SingleFilter(IirFamily::kChebyshev, kLowpass, x, n, fs, fc, ripple, order, y);
}
AnalysisStatus ChHighPass(const double* x, std::int32_t n, double fs, double fc, double ripple, std::int32_t order,
                          double* y) {
    return SingleFilter(IirFamily::kChebyshev, kHighpass, x, n, fs, fc, ripple, order, y);
}
AnalysisStatus ChBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                          std::int32_t order, double* y) {
    return BandFilter(IirFamily::kChebyshev, kBandpass, x, n, fs, fl, fh, ripple, order, y);
}
AnalysisStatus ChBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                          std::int32_t order, double* y) {
    return BandFilter(IirFamily::kChebyshev, kBandstop, x, n, fs, fl, fh, ripple, order, y);
}

AnalysisStatus InvChLowPass(const double* x, std::int32_t n, double fs, double fc, double atten, std::int32_t order,
                            double* y) {
    return SingleFilter(IirFamily::kInverseChebyshev, kLowpass, x, n, fs, fc, atten, order, y);
}
AnalysisStatus InvChHighPass(const double* x, std::int32_t n, double fs, double fc, double atten, std::int32_t order,
                             double* y) {
    return SingleFilter(IirFamily::kInverseChebyshev, kHighpass, x, n, fs, fc, atten, order, y);
}
AnalysisStatus InvChBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double atten,
                             std::int32_t order, double* y) {
    return BandFilter(IirFamily::kInverseChebyshev, kBandpass, x, n, fs, fl, fh, atten, order, y);
}
AnalysisStatus InvChBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double atten,
                             std::int32_t order, double* y) {
    return BandFilter(IirFamily::kInverseChebyshev, kBandstop, x, n, fs, fl, fh, atten, order, y);
}

AnalysisStatus ElpLowPass(const double* x, std::int32_t n, double fs, double fc, double ripple, double atten,
                          std::int32_t order, double* y) {
    return SingleFilter(IirFamily::kElliptic, kLowpass, x, n, fs, fc, ripple, order, y, atten);
}
AnalysisStatus ElpHighPass(const double* x, std::int32_t n, double fs, double fc, double ripple, double atten,
                           std::int32_t order, double* y) {
    return SingleFilter(IirFamily::kElliptic, kHighpass, x, n, fs, fc, ripple, order, y, atten);
}
AnalysisStatus ElpBandPass(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                           double atten, std::int32_t order, double* y) {
    return BandFilter(IirFamily::kElliptic, kBandpass, x, n, fs, fl, fh, ripple, order, y, atten);
}
AnalysisStatus ElpBandStop(const double* x, std::int32_t n, double fs, double fl, double fh, double ripple,
                           double atten, std::int32_t order, double* y) {
    return BandFilter(IirFamily::kElliptic, kBandstop, x, n, fs, fl, fh, ripple, order, y, atten);
}

// --- Coefficient kernels ---------------------------------------------------------------

AnalysisStatus BwCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double* a,
                            std::int32_t na, double* b, std::int32_t nb) {
    return CoefDesign(IirFamily::kButterworth, type, order, fs, fl, fh, 0, a, na, b, nb);
}
AnalysisStatus ChCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double ripple,
                            double* a, std::int32_t na, double* b, std::int32_t nb) {
    return CoefDesign(IirFamily::kChebyshev, type, order, fs, fl, fh, ripple, a, na, b, nb);
}
AnalysisStatus InvChCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double atten,
                               double* a, std::int32_t na, double* b, std::int32_t nb) {
    return CoefDesign(IirFamily::kInverseChebyshev, type, order, fs, fl, fh, atten, a, na, b, nb);
}
AnalysisStatus ElpCoefDesign(std::int32_t type, std::int32_t order, double fs, double fl, double fh, double ripple,
                             double atten, double* a, std::int32_t na, double* b, std::int32_t nb) {
    return CoefDesign(IirFamily::kElliptic, type, order, fs, fl, fh, ripple, a, na, b, nb, atten);
}

// --- Direct-form runner ----------------------------------------------------------------

AnalysisStatus IIRFilterRun(const double* x, std::int32_t n, const double* a, double* y1, std::int32_t na,
                            const double* b, double* x1, std::int32_t nb, double* y) {
    const bool recursive = na >= 1 && a != nullptr && y1 != nullptr;
    if (recursive && na < 1) return kErrSamplesBelowOne;
    if (nb < 1 || b == nullptr) return kErrSamplesBelowOne;
    if (n < 1) return kErrSamplesBelowOne;
    if (nb > 1 && x1 == nullptr) return kErrWrongCount;

    const bool unit = recursive && a[0] == 1.0;
    double s[kBlock];
    for (std::int32_t i0 = 0; i0 < n; i0 += kBlock) {
        const std::int32_t len = std::min(kBlock, n - i0);
        FeedForward(x, b, x1, nb, i0, len, s);
        if (!recursive) {
            for (std::int32_t j = 0; j < len; ++j) y[i0 + j] = s[j];
            continue;
        }
        // Outputs before na - 1 reach back into y1.
        std::int32_t j = 0;
        for (; j < len && std::int64_t(i0) + j < na - 1; ++j)
            y[i0 + j] = Recur(s[j], a, na, y, y1, std::int64_t(i0) + j, unit);
        if (j < len) RecurFast(s + j, a, na, y, i0 + j, len - j, unit);
    }
    KeepTail(x, n, x1, nb - 1);
    if (recursive) KeepTail(y, n, y1, na - 1);
    return kOk;
}

}  // namespace vn
