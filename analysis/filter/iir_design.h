// Polynomial helpers and the section-by-section design of the IIR families
// (Butterworth, Chebyshev, inverse Chebyshev, elliptic), shared by the
// filtering kernels, the coefficient designs and the FIR work.
//
// A design is a cascade of sections produced one at a time, in the order in
// which they are run: for an odd order first the real-pole section (a
// first-order section for lowpass/highpass, a second-order one for the band
// types), then one section per prototype pole pair k = 0, 1, ... with the
// pole angles theta_k = (pi + pi/N)/2 + k*pi/N (the inverse Chebyshev
// family steps its angle by repeated addition of pi/N instead).
//
// Every section carries its direct-form coefficients b[k] = g * num[k] and
// a (a[0] = 1, a feedback term entering with a minus sign), which the
// coefficient designs multiply together, and a form that fixes the order in
// which the filtering kernels evaluate it, one rounding after another:
//   kScaled   y = g*(num[0]*x[n] + num[1]*x[n-1] + ...) - a[1]*y[n-1] - ...
//             (lowpass and highpass first-order and pole-pair sections,
//             whose num is 1, +-1 or 1, +-2, 1, so the inner sum is exact
//             up to its last addition);
//   kZeroPair y = (-a[1])*y[n-1] - a[2]*y[n-2]
//                 + g*(num[0]*(x[n] + x[n-2]) + num[1]*x[n-1])
//             (inverse Chebyshev and elliptic lowpass and highpass pole
//             pairs with finite zeros, whose
//             numerator is symmetric and num[1] = 2*((Z - 1)/D));
//   kDirect   y = (b[0]*x[n] + b[1]*x[n-1] + ...) - (a[1]*y[n-1] + ...)
//             (band sections, whose b are rounded coefficients of their
//             own; num holds b and g is 1).
// Sums run left to right as written. Running a section and running its
// coefficients through the direct-form runner differ in rounding only.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// Copies count doubles from source to destination (nothing when count < 1).
void PolyCopy(const double* source, std::int32_t count, double* destination);

// Full linear convolution: result[i] = sum over valid j of p[j]*q[i-j],
// summed from 0.0 in increasing j, for i = 0 .. np+nq-2. Writes nothing when
// np + nq - 1 < 1. result must not overlap p or q.
void PolyMul(const double* p, std::int32_t np, const double* q, std::int32_t nq, double* result);

enum class IirFamily { kButterworth, kChebyshev, kInverseChebyshev, kElliptic };

// Filter type codes of the coefficient methods.
enum IirType : std::int32_t { kLowpass = 0, kHighpass = 1, kBandpass = 2, kBandstop = 3 };

enum class IirForm { kScaled, kZeroPair, kDirect };

struct IirSection {
    std::int32_t len = 0;  // taps: 2, 3 or 5
    IirForm form = IirForm::kScaled;
    double g = 1.0;
    double num[5] = {};
    double a[5] = {};
};

// Produces the sections of one design in running order. The arguments must
// already have been validated (order >= 1, 0 < fl < fh <= fs/2 for band
// types, 0 < fc <= fs/2 otherwise, ripple or attenuation > 0, and for the
// elliptic family attenuation > ripple); `param` is the ripple (Chebyshev,
// elliptic) or the stopband attenuation (inverse Chebyshev) in dB and is
// ignored for Butterworth; `atten` is the elliptic stopband attenuation in
// dB. For lowpass and highpass fl is the cutoff and fh is ignored.
class IirSectionSource {
public:
    IirSectionSource(IirFamily family, std::int32_t type, std::int32_t order, double fs, double fl, double fh,
                     double param, double atten = 0);

    // Number of sections: order/2 + (order odd).
    std::int64_t Count() const { return order_ / 2 + (order_ & 1); }
    // Writes the next section; false when all have been produced.
    bool Next(IirSection& s);
    // Length of every section of this design (the first section of an odd
    // order is shorter: 2 taps for lowpass/highpass, 3 for band types).
    std::int32_t PairLength() const { return band_ ? 5 : 3; }
    std::int32_t RealLength() const { return band_ ? 3 : 2; }

private:
    void RealSection(IirSection& s) const;
    void PairSection(IirSection& s);
    void EllipticPair(IirSection& s) const;

    IirFamily family_;
    std::int32_t type_;
    std::int32_t order_;
    bool band_;
    double t_ = 0;            // tan(pi*fc/fs)
    double b_ = 0, p_ = 0;    // band: Th - Tl and Th*Tl
    double sh_ = 0, ch_ = 0;  // prototype: sinh and cosh of asinh(1/eps)/N
    double sqrtP_ = 1;        // Chebyshev: 10^(R/20)
    double theta0_ = 0, theta_ = 0, step_ = 0;
    std::int64_t k_ = 0;      // pole pairs produced so far
    std::int32_t m_ = 0;      // inverse Chebyshev zero index (odd N: 2, 4, ...; even: 1, 3, ...)
    bool realDone_ = false;
    // Elliptic prototype (iir_design.cpp): selectivity modulus and its
    // complement, K(k), sn/cn/dn of v0*K(k) to the complementary modulus,
    // and the gain 10^(-R/20) that an even order carries in its first pair.
    double k_ell_ = 0, kc_ell_ = 1, K_ell_ = 0, sy_ = 0, cy_ = 1, dy_ = 1, evenGain_ = 1;
};

}  // namespace vn
