// Transforms against independent references: a naive DFT in long double,
// transform identities for long records, the closed forms of small cases,
// and straightforward stage-by-stage transcriptions of the algorithms (same
// twiddle values, same butterflies, plain loops), which every engine must
// reproduce bit for bit whatever order it runs the butterflies in.
#include "analysis/dsp/fft.h"
#include "analysis/dsp/fft_internal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace vn {
namespace {

using fft_internal::Engine;
using Vec = std::vector<double>;
using LVec = std::vector<long double>;

constexpr double kTwoPi = 6.283185307179586;
constexpr double kSqrtHalf = 0.7071067811865476;
constexpr double kEps = 1.1102230246251565e-16;  // 2^-53

Vec Random(std::size_t n, unsigned seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Vec v(n);
    for (double& x : v) x = u(rng);
    return v;
}

int Log2(std::int64_t n) {
    int m = 0;
    while ((std::int64_t{1} << m) < n) ++m;
    return m;
}

// Error budget of an n-point transform, relative to its largest output.
double Budget(std::int64_t n) { return static_cast<double>(n) * std::max(1, Log2(n)) * kEps; }

bool SameBits(const Vec& a, const Vec& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

// ---------------------------------------------------------------------------
// Naive DFT in long double. cs/sn hold cos/sin(2 pi k/n).

struct Dft {
    LVec re, im;
};

Dft NaiveDft(const Vec& xr, const Vec& xi) {
    const std::size_t n = xr.size();
    const long double tau = 6.283185307179586476925286766559L;
    LVec cs(n), sn(n);
    for (std::size_t k = 0; k < n; ++k) {
        cs[k] = std::cos(tau * static_cast<long double>(k) / n);
        sn[k] = std::sin(tau * static_cast<long double>(k) / n);
    }
    Dft X{LVec(n), LVec(n)};
    for (std::size_t k = 0; k < n; ++k) {
        long double sr = 0.0L, si = 0.0L;
        for (std::size_t j = 0; j < n; ++j) {
            const std::size_t t = (j * k) % n;  // exp(-i tau jk/n) = cs - i sn
            sr += xr[j] * cs[t] + xi[j] * sn[t];
            si += xi[j] * cs[t] - xr[j] * sn[t];
        }
        X.re[k] = sr;
        X.im[k] = si;
    }
    return X;
}

long double MaxAbs(const LVec& a, const LVec& b) {
    long double m = 0.0L;
    for (std::size_t k = 0; k < a.size(); ++k) m = std::max(m, std::fabs(a[k]) + std::fabs(b[k]));
    return m;
}

// ---------------------------------------------------------------------------
// Stage-by-stage transcriptions: j outer, group walk inner, angles
// accumulated by repeated addition, sin/cos from the library's routine.

void RefBitReverse(double* x, std::int64_t n) {
    std::int64_t r = 0;
    for (std::int64_t i = 1; i < n; ++i) {
        std::int64_t k = n / 2;
        while (r + k >= n) k /= 2;
        r = k + (r % k);
        if (r > i) std::swap(x[i], x[r]);
    }
}

void RefComplexFft(double* re, double* im, std::int64_t n) {
    if (n == 1) return;
    const int m = Log2(n);
    std::int64_t N2 = 2 * n;
    for (int stage = 0; stage < m - 1; ++stage) {
        N2 /= 2;
        const std::int64_t N4 = N2 / 4;
        const double e = kTwoPi / static_cast<double>(N2);
        const double e3 = 3.0 * e;
        double a = 0.0, a3 = 0.0;
        for (std::int64_t j = 0; j < N4; ++j) {
            double c1, s1, c3, s3;
            fft_internal::SinCos(a, &s1, &c1);
            fft_internal::SinCos(a3, &s3, &c3);
            a = a + e;
            a3 = a3 + e3;
            std::int64_t s = j, d = 2 * N2;
            do {
                for (std::int64_t i0 = s; i0 < n - 1; i0 += d) {
                    const std::int64_t i1 = i0 + N4, i2 = i1 + N4, i3 = i2 + N4;
                    const double dr = re[i0] - re[i2], di = im[i0] - im[i2];
                    const double er = re[i1] - re[i3], ei = im[i1] - im[i3];
                    re[i0] = re[i0] + re[i2];
                    im[i0] = im[i0] + im[i2];
                    re[i1] = re[i1] + re[i3];
                    im[i1] = im[i1] + im[i3];
                    const double x2 = dr + ei, y2 = di - er, x3 = dr - ei, y3 = di + er;
                    if (j == 0) {
                        re[i2] = x2;
                        im[i2] = y2;
                        re[i3] = x3;
                        im[i3] = y3;
                    } else {
                        re[i2] = x2 * c1 + y2 * s1;
                        im[i2] = y2 * c1 - x2 * s1;
                        re[i3] = x3 * c3 + y3 * s3;
                        im[i3] = y3 * c3 - x3 * s3;
                    }
                }
                s = j + 2 * d - N2;
                d *= 4;
            } while (s < n - 1);
        }
    }
    std::int64_t s = 0, d = 4;
    do {
        for (std::int64_t i = s; i < n; i += d) {
            const double r0 = re[i], m0 = im[i];
            re[i] = r0 + re[i + 1];
            im[i] = m0 + im[i + 1];
            re[i + 1] = r0 - re[i + 1];
            im[i + 1] = m0 - im[i + 1];
        }
        s = 2 * d - 2;
        d *= 4;
    } while (s < n);
    RefBitReverse(re, n);
    RefBitReverse(im, n);
}

void RefPairs(double* x, std::int64_t n) {
    std::int64_t s = 0, d = 4;
    do {
        for (std::int64_t i = s; i < n; i += d) {
            const double t = x[i];
            x[i] = t + x[i + 1];
            x[i + 1] = t - x[i + 1];
        }
        s = 2 * d - 2;
        d *= 4;
    } while (s < n);
}

// Group walk of the real cores (block length N2).
template <class F>
void RefWalk(std::int64_t n, std::int64_t N2, F f) {
    std::int64_t s = 0, d = 2 * N2;
    do {
        for (std::int64_t i = s; i < n; i += d) f(i);
        s = 2 * d - N2;
        d *= 4;
    } while (s < n);
}

void RefRealFft(double* x, std::int64_t n) {
    if (n <= 1) return;
    RefBitReverse(x, n);
    RefPairs(x, n);
    double e = 1.5707963267948966;
    for (std::int64_t N2 = 4; N2 <= n; N2 *= 2, e = e * 0.5) {
        const std::int64_t N4 = N2 / 4, N8 = N2 / 8;
        RefWalk(n, N2, [&](std::int64_t i1) {
            const std::int64_t i2 = i1 + N4, i3 = i2 + N4, i4 = i3 + N4;
            double t1 = x[i4] + x[i3];
            x[i4] = x[i4] - x[i3];
            x[i3] = x[i1] - t1;
            x[i1] = x[i1] + t1;
            if (N2 > 4) {
                const std::int64_t p1 = i1 + N8, p2 = i2 + N8, p3 = i3 + N8, p4 = i4 + N8;
                t1 = (x[p4] + x[p3]) * kSqrtHalf;
                const double t2 = (x[p3] - x[p4]) * kSqrtHalf;
                x[p4] = x[p2] - t1;
                x[p3] = -(t1 + x[p2]);
                x[p2] = x[p1] - t2;
                x[p1] = x[p1] + t2;
            }
        });
        const double e3 = 3.0 * e;
        double a = 0.0, a3 = 0.0;
        for (std::int64_t j = 1; j < N8; ++j) {
            a = a + e;
            a3 = a3 + e3;
            double cc1, ss1, cc3, ss3;
            fft_internal::SinCos(a, &ss1, &cc1);
            fft_internal::SinCos(a3, &ss3, &cc3);
            RefWalk(n, N2, [&](std::int64_t g) {
                const std::int64_t i1 = g + j, i2 = i1 + N4, i3 = i2 + N4, i4 = i3 + N4;
                const std::int64_t i5 = g + N4 - j, i6 = i5 + N4, i7 = i6 + N4, i8 = i7 + N4;
                const double t1 = x[i3] * cc1 + x[i7] * ss1;
                const double t2 = x[i7] * cc1 - x[i3] * ss1;
                const double t3 = x[i4] * cc3 + x[i8] * ss3;
                const double t4 = x[i8] * cc3 - x[i4] * ss3;
                const double t5 = t1 + t3, t6 = t2 + t4, d3 = t1 - t3, d4 = t2 - t4;
                const double v1 = x[i1], v2 = x[i2], v5 = x[i5], v6 = x[i6];
                x[i3] = t6 - v6;
                x[i8] = v6 + t6;
                x[i4] = v2 - d3;
                x[i7] = -v2 - d3;
                x[i1] = v1 + t5;
                x[i6] = v1 - t5;
                x[i2] = v5 + d4;
                x[i5] = v5 - d4;
            });
        }
    }
}

void RefRealInv(double* x, std::int64_t n) {
    if (n < 2) return;
    const double r = 1.0 / static_cast<double>(n);
    for (std::int64_t i = 0; i < n; ++i) x[i] = x[i] * r;
    for (std::int64_t N2 = n; N2 >= 4; N2 /= 2) {
        const std::int64_t N4 = N2 / 4, N8 = N2 / 8;
        const double e = kTwoPi / static_cast<double>(N2);
        RefWalk(n, N2, [&](std::int64_t i1) {
            const std::int64_t i2 = i1 + N4, i3 = i2 + N4, i4 = i3 + N4;
            double t1 = x[i1] - x[i3];
            x[i1] = x[i1] + x[i3];
            x[i2] = x[i2] * 2.0;
            x[i3] = t1 - 2.0 * x[i4];
            x[i4] = t1 + 2.0 * x[i4];
            if (N2 > 4) {
                const std::int64_t p1 = i1 + N8, p2 = i2 + N8, p3 = i3 + N8, p4 = i4 + N8;
                t1 = (x[p2] - x[p1]) * kSqrtHalf;
                const double t2 = (x[p4] + x[p3]) * kSqrtHalf;
                x[p1] = x[p1] + x[p2];
                x[p2] = x[p4] - x[p3];
                x[p3] = 2.0 * (-t2 - t1);
                x[p4] = 2.0 * (-t2 + t1);
            }
        });
        const double e3 = 3.0 * e;
        double a = 0.0, a3 = 0.0;
        for (std::int64_t j = 1; j < N8; ++j) {
            a = a + e;
            a3 = a3 + e3;
            double cc1, ss1, cc3, ss3;
            fft_internal::SinCos(a, &ss1, &cc1);
            fft_internal::SinCos(a3, &ss3, &cc3);
            RefWalk(n, N2, [&](std::int64_t g) {
                const std::int64_t i1 = g + j, i2 = i1 + N4, i3 = i2 + N4, i4 = i3 + N4;
                const std::int64_t i5 = g + N4 - j, i6 = i5 + N4, i7 = i6 + N4, i8 = i7 + N4;
                double t1 = x[i1] - x[i6];
                x[i1] = x[i1] + x[i6];
                double t2 = x[i5] - x[i2];
                x[i5] = x[i5] + x[i2];
                const double t3 = x[i8] + x[i3];
                x[i6] = x[i8] - x[i3];
                double t4 = x[i4] + x[i7];
                x[i2] = x[i4] - x[i7];
                const double t5 = t1 - t4;
                t1 = t1 + t4;
                t4 = t2 - t3;
                t2 = t2 + t3;
                x[i3] = t5 * cc1 + t4 * ss1;
                x[i7] = t5 * ss1 - t4 * cc1;
                x[i4] = t1 * cc3 - t2 * ss3;
                x[i8] = t2 * cc3 + t1 * ss3;
            });
        }
    }
    RefPairs(x, n);
    RefBitReverse(x, n);
}

void RefHartley(double* x, std::int64_t n) {
    if (n == 1) return;
    double e = kTwoPi / static_cast<double>(n);
    std::int64_t L = n, h = n / 2;
    for (int stage = 0; stage < Log2(n) - 1; ++stage) {
        for (std::int64_t b = 0; b < n; b += L) {
            for (std::int64_t t = 0; t < h; ++t) {
                const double u = x[b + t], v = x[b + t + h];
                x[b + t] = u + v;
                x[b + t + h] = u - v;
            }
        }
        if (h >= 4) {
            double th = e;
            for (std::int64_t t = 1; t < h / 2; ++t) {
                double c, s;
                fft_internal::SinCos(th, &s, &c);
                th = th + e;
                for (std::int64_t b = 0; b < n; b += L) {
                    const double p = x[b + h + t], q = x[b + L - t];
                    x[b + h + t] = p * c + q * s;
                    x[b + L - t] = p * s - q * c;
                }
            }
        }
        e = 2.0 * e;
        L /= 2;
        h /= 2;
    }
    for (std::int64_t i = 0; i < n; i += 2) {
        const double u = x[i];
        x[i] = u + x[i + 1];
        x[i + 1] = u - x[i + 1];
    }
    RefBitReverse(x, n);
}

std::vector<Engine> Engines() {
    std::vector<Engine> out;
    for (Engine e : {Engine::kBaseline, Engine::kAvx2, Engine::kAvx512})
        if (fft_internal::EngineAvailable(e)) out.push_back(e);
    return out;
}

const char* EngineName(Engine e) {
    return e == Engine::kBaseline ? "baseline" : e == Engine::kAvx2 ? "avx2" : "avx512";
}

// ---------------------------------------------------------------------------
// Argument checks

TEST(FftChecks, CountAndPowerOfTwo) {
    struct Row {
        std::int32_t n;
        AnalysisStatus want;
    };
    const Row rows[] = {{0, kErrSamplesBelowOne}, {-4, kErrSamplesBelowOne}, {3, kErrNotPowerOfTwo},
                        {6, kErrNotPowerOfTwo},   {12, kErrNotPowerOfTwo},    {1000, kErrNotPowerOfTwo},
                        {(1 << 30) + 1, kErrNotPowerOfTwo}};
    using Kernel = AnalysisStatus (*)(double*, double*, std::int32_t);
    const std::pair<const char*, Kernel> kernels[] = {
        {"ComplexFFT", ComplexFFT},
        {"ComplexInvFFT", ComplexInvFFT},
        {"RealFFT", RealFFT},
        {"RealInvFFT", [](double* a, double* b, std::int32_t n) { return RealInvFFT(a, b, n); }},
        {"PowerSpectrum", [](double* a, double*, std::int32_t n) { return PowerSpectrum(a, n); }},
        {"HartleyTransform", [](double* a, double*, std::int32_t n) { return HartleyTransform(a, n); }},
        {"InvHartleyTransform", [](double* a, double*, std::int32_t n) { return InvHartleyTransform(a, n); }},
    };
    for (const auto& k : kernels) {
        for (const Row& r : rows) {
            SCOPED_TRACE(std::string(k.first) + " n=" + std::to_string(r.n));
            Vec a(16, 7.5), b(16, -2.5);
            EXPECT_EQ(k.second(a.data(), b.data(), r.n), r.want);
            EXPECT_EQ(a, Vec(16, 7.5));
            EXPECT_EQ(b, Vec(16, -2.5));
        }
    }
}

TEST(FftChecks, CoresAndPermutationWithoutCountChecks) {
    Vec x(8, 3.0);
    EXPECT_EQ(RealFFTCore(x.data(), 1, 0), kOk);
    EXPECT_EQ(RealFFTCore(x.data(), 0, 0), kOk);
    EXPECT_EQ(RealFFTCore(x.data(), -8, 0), kOk);
    EXPECT_EQ(RealInvFFTCore(x.data(), 1, 0), kOk);
    EXPECT_EQ(RealFFTCore(x.data(), 6, 2), kErrNotPowerOfTwo);
    EXPECT_EQ(RealInvFFTCore(x.data(), 6, 2), kErrNotPowerOfTwo);
    EXPECT_EQ(BitReversePermute(x.data(), nullptr, 6), kErrNotPowerOfTwo);
    EXPECT_EQ(BitReversePermute(x.data(), x.data(), 2), kOk);
    EXPECT_EQ(x, Vec(8, 3.0));
}

// ---------------------------------------------------------------------------
// Against the naive DFT, every power of two from 1 to 4096. The largest
// error relative to the largest output is recorded per size.

TEST(FftAccuracy, NaiveDftAllSizesTo4096) {
    std::cout << "      n   complex      real      hartley   spectrum   (max error / max |X|)\n";
    for (int m = 0; m <= 12; ++m) {
        const std::int32_t n = 1 << m;
        SCOPED_TRACE("n=" + std::to_string(n));
        const Vec xr = Random(n, 100 + m), xi = Random(n, 200 + m);
        const Dft X = NaiveDft(xr, xi);
        const Dft R = NaiveDft(xr, Vec(n, 0.0));
        const long double scale = MaxAbs(X.re, X.im), rscale = MaxAbs(R.re, R.im);

        Vec yr = xr, yi = xi;
        ASSERT_EQ(ComplexFFT(yr.data(), yi.data(), n), kOk);
        long double ec = 0.0L;
        for (int k = 0; k < n; ++k) ec = std::max(ec, std::fabs(yr[k] - X.re[k]) + std::fabs(yi[k] - X.im[k]));

        Vec r = xr, z(n, 9.0);
        ASSERT_EQ(RealFFT(r.data(), z.data(), n), kOk);
        long double er = 0.0L;
        for (int k = 0; k < n; ++k) er = std::max(er, std::fabs(r[k] - R.re[k]) + std::fabs(z[k] - R.im[k]));

        // Packed layout of the core: Re X[0 .. n/2], Im X[k] at n - k.
        Vec p = xr;
        ASSERT_EQ(RealFFTCore(p.data(), n, m), kOk);
        long double ep = 0.0L;
        for (int k = 0; k <= n / 2 && k < n; ++k) ep = std::max(ep, std::fabs(p[k] - R.re[k]));
        for (int k = 1; k < n / 2; ++k) ep = std::max(ep, std::fabs(p[n - k] - R.im[k]));

        // Hartley: H[k] = Re X[k] - Im X[k] for real input.
        Vec h = xr;
        ASSERT_EQ(HartleyTransform(h.data(), n), kOk);
        long double eh = 0.0L;
        for (int k = 0; k < n; ++k) eh = std::max(eh, std::fabs(h[k] - (R.re[k] - R.im[k])));

        Vec s = xr;
        ASSERT_EQ(PowerSpectrum(s.data(), n), kOk);
        long double es = 0.0L, smax = 0.0L;
        for (int k = 0; k < n; ++k) {
            const long double want = (R.re[k] * R.re[k] + R.im[k] * R.im[k]) / (static_cast<long double>(n) * n);
            es = std::max(es, std::fabs(s[k] - want));
            smax = std::max(smax, want);
        }

        const double rc = static_cast<double>(ec / scale), rr = static_cast<double>(std::max(er, ep) / rscale);
        const double rh = static_cast<double>(eh / rscale), rs = static_cast<double>(es / smax);
        std::printf("%7d  %9.2e  %9.2e  %9.2e  %9.2e\n", n, rc, rr, rh, rs);
        RecordProperty("max_rel_error_complex_" + std::to_string(n), std::to_string(rc));
        RecordProperty("max_rel_error_real_" + std::to_string(n), std::to_string(rr));
        EXPECT_LE(rc, Budget(n));
        EXPECT_LE(rr, Budget(n));
        EXPECT_LE(rh, Budget(n));
        EXPECT_LE(rs, 2 * Budget(n));
    }
}

// ---------------------------------------------------------------------------
// Identities for long records, up to 2^20 (2^22 for the complex pair).

TEST(FftAccuracy, IdentitiesForLongRecords) {
    for (int m : {13, 14, 16, 18, 20, 22}) {
        const std::int32_t n = 1 << m;
        SCOPED_TRACE("n=" + std::to_string(n));
        const Vec xr = Random(n, 300 + m), xi = Random(n, 400 + m);
        const double tol = Budget(n);
        // Forward then inverse, complex.
        Vec yr = xr, yi = xi;
        ASSERT_EQ(ComplexFFT(yr.data(), yi.data(), n), kOk);
        // Parseval: sum |x|^2 = sum |X|^2 / n.
        long double ex = 0.0L, eX = 0.0L;
        for (int k = 0; k < n; ++k) {
            ex += static_cast<long double>(xr[k]) * xr[k] + static_cast<long double>(xi[k]) * xi[k];
            eX += static_cast<long double>(yr[k]) * yr[k] + static_cast<long double>(yi[k]) * yi[k];
        }
        EXPECT_NEAR(static_cast<double>(eX / n / ex), 1.0, tol);
        ASSERT_EQ(ComplexInvFFT(yr.data(), yi.data(), n), kOk);
        double back = 0.0;
        for (int k = 0; k < n; ++k) back = std::max(back, std::fabs(yr[k] - xr[k]) + std::fabs(yi[k] - xi[k]));
        EXPECT_LE(back, tol);
        if (m == 22) continue;  // the remaining checks up to 2^20

        // Real against complex with zero imaginary part, and the Hartley
        // relation H = Re X - Im X.
        Vec cr = xr, ci(n, 0.0);
        ASSERT_EQ(ComplexFFT(cr.data(), ci.data(), n), kOk);
        double scale = 0.0;
        for (int k = 0; k < n; ++k) scale = std::max(scale, std::fabs(cr[k]) + std::fabs(ci[k]));
        Vec r = xr, z(n);
        ASSERT_EQ(RealFFT(r.data(), z.data(), n), kOk);
        Vec h = xr;
        ASSERT_EQ(HartleyTransform(h.data(), n), kOk);
        double er = 0.0, eh = 0.0;
        for (int k = 0; k < n; ++k) {
            er = std::max(er, std::fabs(r[k] - cr[k]) + std::fabs(z[k] - ci[k]));
            eh = std::max(eh, std::fabs(h[k] - (cr[k] - ci[k])));
        }
        EXPECT_LE(er / scale, tol);
        EXPECT_LE(eh / scale, tol);

        // Round trips of the real pairs.
        ASSERT_EQ(RealInvFFT(r.data(), z.data(), n), kOk);
        ASSERT_EQ(InvHartleyTransform(h.data(), n), kOk);
        Vec p = xr;
        ASSERT_EQ(RealFFTCore(p.data(), n, m), kOk);
        ASSERT_EQ(RealInvFFTCore(p.data(), n, m), kOk);
        double e1 = 0.0, e2 = 0.0, e3 = 0.0;
        for (int k = 0; k < n; ++k) {
            e1 = std::max(e1, std::fabs(r[k] - xr[k]));
            e2 = std::max(e2, std::fabs(h[k] - xr[k]));
            e3 = std::max(e3, std::fabs(p[k] - xr[k]));
        }
        EXPECT_LE(e1, tol);
        EXPECT_LE(e2, tol);
        EXPECT_LE(e3, tol);

        // The power spectrum sums to the mean square of the signal.
        Vec s = xr;
        ASSERT_EQ(PowerSpectrum(s.data(), n), kOk);
        long double ss = 0.0L, ms = 0.0L;
        for (int k = 0; k < n; ++k) {
            ss += s[k];
            ms += static_cast<long double>(xr[k]) * xr[k];
        }
        EXPECT_NEAR(static_cast<double>(ss / (ms / n)), 1.0, tol);
    }
}

// ---------------------------------------------------------------------------
// Closed forms of small and special cases.

TEST(FftClosedForms, SmallCases) {
    {  // n = 1
        Vec r{2.5}, i{-1.5};
        EXPECT_EQ(ComplexFFT(r.data(), i.data(), 1), kOk);
        EXPECT_EQ(r, Vec{2.5});
        EXPECT_EQ(i, Vec{-1.5});
        EXPECT_EQ(ComplexInvFFT(r.data(), i.data(), 1), kOk);
        EXPECT_EQ(r, Vec{2.5});
        EXPECT_EQ(i, Vec{-1.5});
        Vec x{-3.0}, z{7.0};
        EXPECT_EQ(RealFFT(x.data(), z.data(), 1), kOk);
        EXPECT_EQ(x, Vec{-3.0});
        EXPECT_EQ(z, Vec{0.0});
        EXPECT_EQ(PowerSpectrum(x.data(), 1), kOk);
        EXPECT_EQ(x, Vec{9.0});
        Vec h{4.0};
        EXPECT_EQ(HartleyTransform(h.data(), 1), kOk);
        EXPECT_EQ(InvHartleyTransform(h.data(), 1), kOk);
        EXPECT_EQ(h, Vec{4.0});
    }
    {  // n = 2
        Vec r{3.0, 5.0}, i{0.0, 0.0};
        EXPECT_EQ(ComplexFFT(r.data(), i.data(), 2), kOk);
        EXPECT_EQ(r, (Vec{8.0, -2.0}));
        EXPECT_EQ(i, (Vec{0.0, 0.0}));
        Vec s{3.0, 5.0};
        EXPECT_EQ(PowerSpectrum(s.data(), 2), kOk);
        EXPECT_EQ(s, (Vec{16.0, 1.0}));
    }
    {  // ReFFT of [1, 2, 3, 4] and the packed core at n = 4
        Vec y{1, 2, 3, 4}, z(4, 5.0);
        EXPECT_EQ(RealFFT(y.data(), z.data(), 4), kOk);
        EXPECT_EQ(y, (Vec{10, -2, -2, -2}));
        EXPECT_EQ(z, (Vec{0, 2, 0, -2}));
        Vec p{1.5, -2.0, 4.0, 0.25};
        EXPECT_EQ(RealFFTCore(p.data(), 4, 2), kOk);
        EXPECT_EQ(p, (Vec{1.5 - 2.0 + 4.0 + 0.25, 1.5 - 4.0, 1.5 + 2.0 + 4.0 - 0.25, 0.25 + 2.0}));
    }
    {  // n = 8 bit-reversal order
        Vec x{0, 1, 2, 3, 4, 5, 6, 7}, y{10, 11, 12, 13, 14, 15, 16, 17};
        EXPECT_EQ(BitReversePermute(x.data(), y.data(), 8), kOk);
        EXPECT_EQ(x, (Vec{0, 4, 2, 6, 1, 5, 3, 7}));
        EXPECT_EQ(y, (Vec{10, 14, 12, 16, 11, 15, 13, 17}));
    }
}

TEST(FftClosedForms, CosineGivesTwoLinesAndHalfPower) {
    const std::int32_t n = 256, k0 = 37;
    Vec x(n);
    for (int j = 0; j < n; ++j) x[j] = std::cos(kTwoPi * k0 * j / n);
    Vec yr = x, yi(n, 0.0);
    ASSERT_EQ(ComplexFFT(yr.data(), yi.data(), n), kOk);
    Vec s = x;
    ASSERT_EQ(PowerSpectrum(s.data(), n), kOk);
    for (int k = 0; k < n; ++k) {
        SCOPED_TRACE(k);
        const double want = (k == k0 || k == n - k0) ? n / 2.0 : 0.0;
        EXPECT_NEAR(yr[k], want, 1e-12);
        EXPECT_NEAR(yi[k], 0.0, 1e-12);
        EXPECT_NEAR(s[k], want == 0.0 ? 0.0 : 0.25, 1e-15);
    }
}

TEST(FftClosedForms, RealInverseReadsOnlyTheHermitianHalf) {
    const std::int32_t n = 64;
    const Vec x = Random(n, 7);
    Vec y = x, z(n);
    ASSERT_EQ(RealFFT(y.data(), z.data(), n), kOk);
    Vec a = y, b = y;
    Vec za = z, zb = z;
    for (int k = 0; k <= n / 2; ++k) zb[k] = 100.0 + k;      // ignored imaginary parts
    for (int k = n / 2 + 1; k < n; ++k) b[k] = -50.0 * k;    // ignored real parts
    ASSERT_EQ(RealInvFFT(a.data(), za.data(), n), kOk);
    ASSERT_EQ(RealInvFFT(b.data(), zb.data(), n), kOk);
    EXPECT_TRUE(SameBits(a, b));
    for (int k = 0; k < n; ++k) EXPECT_NEAR(a[k], x[k], 1e-14);
    EXPECT_EQ(za, z);  // xi is not modified
}

TEST(FftClosedForms, InverseScalesByReciprocalOfN) {
    // A constant spectrum X[k] = n transforms back to an impulse of 1.
    for (std::int32_t n : {2, 8, 64, 1024}) {
        SCOPED_TRACE(n);
        Vec r(n, static_cast<double>(n)), i(n, 0.0);
        ASSERT_EQ(ComplexInvFFT(r.data(), i.data(), n), kOk);
        EXPECT_NEAR(r[0], static_cast<double>(n), 1e-12 * n);
        for (int k = 1; k < n; ++k) EXPECT_NEAR(r[k], 0.0, 1e-12 * n);
        Vec h(n, 0.0);
        h[0] = n;
        ASSERT_EQ(InvHartleyTransform(h.data(), n), kOk);
        for (int k = 0; k < n; ++k) EXPECT_EQ(h[k], 1.0);
    }
}

// ---------------------------------------------------------------------------
// Bit-exact agreement with the stage-by-stage transcriptions, every engine.

TEST(FftExact, EnginesMatchStageByStageTranscription) {
    for (Engine e : Engines()) {
        for (int m = 1; m <= 16; ++m) {
            const std::int64_t n = std::int64_t{1} << m;
            SCOPED_TRACE(std::string(EngineName(e)) + " n=" + std::to_string(n));
            const Vec xr = Random(n, 500 + m), xi = Random(n, 600 + m);

            Vec ar = xr, ai = xi, br = xr, bi = xi;
            fft_internal::ComplexForward(e, ar.data(), ai.data(), n);
            RefComplexFft(br.data(), bi.data(), n);
            EXPECT_TRUE(SameBits(ar, br));
            EXPECT_TRUE(SameBits(ai, bi));

            Vec p = xr, q = xr;
            fft_internal::RealForward(e, p.data(), n);
            RefRealFft(q.data(), n);
            EXPECT_TRUE(SameBits(p, q));

            // RealInverse is unscaled; the transcription includes the 1/n.
            Vec u = xr, v = xr;
            const double r = 1.0 / static_cast<double>(n);
            for (double& t : u) t = t * r;
            fft_internal::RealInverse(e, u.data(), n);
            RefRealInv(v.data(), n);
            EXPECT_TRUE(SameBits(u, v));

            Vec h = xr, g = xr;
            fft_internal::Hartley(e, h.data(), n);
            RefHartley(g.data(), n);
            EXPECT_TRUE(SameBits(h, g));

            Vec b1 = xr, b2 = xr;
            fft_internal::BitReverse(e, b1.data(), n);
            RefBitReverse(b2.data(), n);
            EXPECT_TRUE(SameBits(b1, b2));
        }
    }
}

TEST(FftExact, PublicKernelsUseTheSameButterflies) {
    for (int m : {1, 5, 6, 7, 10, 12}) {
        const std::int32_t n = 1 << m;
        SCOPED_TRACE(n);
        const Vec x = Random(n, 700 + m);
        Vec a = x, b = x;
        ASSERT_EQ(RealFFTCore(a.data(), n, m), kOk);
        RefRealFft(b.data(), n);
        EXPECT_TRUE(SameBits(a, b));
        Vec c = x, d = x;
        ASSERT_EQ(RealInvFFTCore(c.data(), n, m), kOk);
        RefRealInv(d.data(), n);
        EXPECT_TRUE(SameBits(c, d));
        Vec h = x, g = x;
        ASSERT_EQ(HartleyTransform(h.data(), n), kOk);
        RefHartley(g.data(), n);
        EXPECT_TRUE(SameBits(h, g));
    }
}

// Special values travel through the butterflies as IEEE arithmetic says
// (j = 0 is never rotated, so a zero stays a signed zero there).
TEST(FftExact, SignedZerosAndNonFinite) {
    Vec r(16, -0.0), i(16, -0.0);
    ASSERT_EQ(ComplexFFT(r.data(), i.data(), 16), kOk);
    EXPECT_TRUE(std::signbit(r[0]));
    Vec x(32, 0.0);
    x[5] = INFINITY;
    ASSERT_EQ(HartleyTransform(x.data(), 32), kOk);
    EXPECT_TRUE(std::isinf(x[0]));
}

// The angle sequences of every stage up to 2^22 points, as produced by the
// engines, equal plain repeated addition bit for bit.
TEST(FftExact, AngleSequencesAreRepeatedSums) {
    Vec got(1 << 20), want(1 << 20);
    for (Engine eng : Engines()) {
        for (int m = 3; m <= 22; ++m) {
            const double e = kTwoPi / static_cast<double>(std::int64_t{1} << m);
            const std::ptrdiff_t count = std::min<std::ptrdiff_t>(std::ptrdiff_t{1} << (m - 2), 1 << 20);
            for (const auto& seq : {std::make_pair(0.0, e), std::make_pair(0.0, 3.0 * e),
                                    std::make_pair(e, e), std::make_pair(3.0 * e, 3.0 * e)}) {
                SCOPED_TRACE(std::string(EngineName(eng)) + " m=" + std::to_string(m) + " step=" +
                             std::to_string(seq.second / e));
                fft_internal::AccumulatedAngles(eng, seq.first, seq.second, count, got.data());
                double a = seq.first;
                for (std::ptrdiff_t i = 0; i < count; ++i) {
                    want[i] = a;
                    a = a + seq.second;
                }
                ASSERT_EQ(std::memcmp(got.data(), want.data(), count * sizeof(double)), 0);
            }
        }
    }
}

// ---------------------------------------------------------------------------
// The sine/cosine routine the transforms evaluate their angles with.

TEST(FftTrig, SinCosAboutOneUlpOnTheTransformRange) {
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> u(0.0, kTwoPi);
    double worst = 0.0;
    for (int k = 0; k < 200000; ++k) {
        const double x = k < 64 ? k * (kTwoPi / 64) : u(rng);
        double s, c;
        fft_internal::SinCos(x, &s, &c);
        const long double ls = std::sin(static_cast<long double>(x)), lc = std::cos(static_cast<long double>(x));
        // Error in units of the last place of the true value (at least 2^-60
        // so that values near zero are judged on absolute error).
        auto ulps = [](long double got, long double want) {
            long double unit = std::ldexp(1.0L, -60);
            if (std::fabs(want) > unit) unit = std::max(unit, std::ldexp(1.0L, std::ilogb(std::fabs(want)) - 52));
            return static_cast<double>(std::fabs(got - want) / unit);
        };
        worst = std::max({worst, ulps(s, ls), ulps(c, lc)});
    }
    std::printf("sin/cos worst error: %.3f ulp\n", worst);
    EXPECT_LE(worst, 1.1);
}

TEST(FftTrig, FirstOctantShortcutIsExact) {
    std::mt19937_64 rng(12);
    std::uniform_real_distribution<double> u(0.0, 0.7853981633974483);
    for (int k = 0; k < 100000; ++k) {
        const double x = k < 100 ? std::nextafter(0.7853981633974483, 0.0) - k * 1e-17 : u(rng);
        double s1, c1, s2, c2;
        fft_internal::SinCos(x, &s1, &c1);
        fft_internal::SinCosFirstOctant(x, &s2, &c2);
        ASSERT_EQ(std::memcmp(&s1, &s2, sizeof s1), 0) << x;
        ASSERT_EQ(std::memcmp(&c1, &c2, sizeof c1), 0) << x;
    }
}

}  // namespace
}  // namespace vn
