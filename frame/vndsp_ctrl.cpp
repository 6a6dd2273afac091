// VNDSP: signal generators, transforms, windows, spectra and filters.
//
// Transforms work in place, so every transform handler copies its inputs
// into freshly created outputs and lets the kernel overwrite the copies; the
// host's arrays are never touched. Generators create their result first and
// let the kernel judge every count and parameter.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/array/array_ops.h"
#include "analysis/dsp/fft.h"
#include "analysis/dsp/generators.h"
#include "analysis/filter/iir.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

namespace vn {
namespace dsp_handlers {

void AboutBox(Call& c) { ShowAboutBox(c); }

namespace {

// --- Transforms ------------------------------------------------------------

using ComplexKernel = AnalysisStatus (*)(double*, double*, std::int32_t);
using InPlaceKernel = AnalysisStatus (*)(double*, std::int32_t);

// The first array argument: one-dimensional (-20003 with no dimension,
// -20008 with two or more). Its element count is not checked here: an empty
// vector reaches the copy, which refuses it with -20003.
void RequireSignal(const ArgArray& x) { x.RequireDims(1); }

// The imaginary parts must match the real parts exactly (-20008): the
// frame's same-shape check alone lets vectors of different lengths through.
void RequirePartner(const ArgArray& xi, const ArgArray& xr) {
    xi.RequireSameShape(xr);
    xi.RequireSize(0, xr.Size(0));
}

// A result of n doubles holding a copy of x, for a kernel to overwrite.
void CreateCopy(ArgArray& y, ArgArray& x, std::int32_t n) {
    y.Create1D(n);
    ThrowAnalysisStatus(CopyValues(x.AsDouble(), n, y.AsDouble()));
}

// (xr, xi) in, (yr, yi) out at parameters 2 and 3.
void ComplexTransformMethod(Call& c, ComplexKernel kernel) {
    ArgArray xr(c.In(0));
    RequireSignal(xr);
    ArgArray xi(c.In(1));
    RequirePartner(xi, xr);
    const std::int32_t n = xr.Count();
    ArgArray yr, yi;
    CreateCopy(yr, xr, n);
    CreateCopy(yi, xi, n);
    ThrowAnalysisStatus(kernel(yr.AsDouble(), yi.AsDouble(), n));
    OutputArray(c, 2, yr);
    OutputArray(c, 3, yi);
}

// One real sequence in, its transform of the same length returned.
void RealTransformMethod(Call& c, InPlaceKernel kernel) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    const std::int32_t n = x.Count();
    ArgArray y;
    CreateCopy(y, x, n);
    ThrowAnalysisStatus(kernel(y.AsDouble(), n));
    ReturnArray(c, y);
}

// --- Generators ------------------------------------------------------------

// The result of a generator. A count below 1 gets an empty array, never an
// allocation of a negative size; the kernel then reports the count.
void CreateSamples(ArgArray& x, std::int32_t n) { x.Create1D(n < 1 ? 0 : n); }

using WaveKernel = AnalysisStatus (*)(std::int32_t, double, double, double*, double*);

// n, Amp, f and the running Phase (in/out, degrees) at parameter 3. The
// phase is written back only when the kernel succeeds, so a failing call
// leaves the host's variable as it was.
void WaveMethod(Call& c, WaveKernel kernel) {
    ArgScalar count(c.In(0)), amp(c.In(1)), f(c.In(2)), phase(*c.Out(3));
    const std::int32_t n = count.Int();
    const double a = amp.Double(), cycles = f.Double();
    double p = phase.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(kernel(n, a, cycles, &p, x.AsDouble()));
    c.SetOutDouble(3, p);
    ReturnArray(c, x);
}

}  // namespace

void FFT(Call& c) { ComplexTransformMethod(c, ComplexFFT); }
void InvFFT(Call& c) { ComplexTransformMethod(c, ComplexInvFFT); }
void Spectrum(Call& c) { RealTransformMethod(c, PowerSpectrum); }
void FHT(Call& c) { RealTransformMethod(c, HartleyTransform); }
void InvFHT(Call& c) { RealTransformMethod(c, InvHartleyTransform); }

// x in; y (out) receives Re X, z (out) Im X, both of length n.
void ReFFT(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    const std::int32_t n = x.Count();
    ArgArray y, z;
    CreateCopy(y, x, n);
    z.Create1D(n);
    ThrowAnalysisStatus(RealFFT(y.AsDouble(), z.AsDouble(), n));
    OutputArray(c, 1, y);
    OutputArray(c, 2, z);
}

// The kernel only reads xi, so it gets the host's imaginary parts directly;
// the real parts are copied into yr and overwritten there.
void ReInvFFT(Call& c) {
    ArgArray xr(c.In(0));
    RequireSignal(xr);
    ArgArray xi(c.In(1));
    RequirePartner(xi, xr);
    const std::int32_t n = xr.Count();
    ArgArray yr;
    CreateCopy(yr, xr, n);
    ThrowAnalysisStatus(RealInvFFT(yr.AsDouble(), xi.AsDouble(), n));
    OutputArray(c, 2, yr);
}

void Impulse(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1)), index(c.In(2));
    const std::int32_t n = count.Int(), i = index.Int();
    const double a = amp.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(ImpulsePattern(n, a, i, x.AsDouble()));
    ReturnArray(c, x);
}

void Pulse(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1)), delay(c.In(2)), width(c.In(3));
    const std::int32_t n = count.Int(), d = delay.Int(), w = width.Int();
    const double a = amp.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(PulsePattern(n, a, d, w, x.AsDouble()));
    ReturnArray(c, x);
}

void Ramp(Call& c) {
    ArgScalar count(c.In(0)), first(c.In(1)), last(c.In(2));
    const std::int32_t n = count.Int();
    const double x0 = first.Double(), x1 = last.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(RampPattern(n, x0, x1, x.AsDouble()));
    ReturnArray(c, x);
}

void Triangle(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1));
    const std::int32_t n = count.Int();
    const double a = amp.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(TrianglePattern(n, a, x.AsDouble()));
    ReturnArray(c, x);
}

// n and three doubles in parameter order. SinePattern's Phase is an input only
// (degrees): a pattern does not continue across calls.
void ThreeParameterPattern(Call& c, AnalysisStatus (*kernel)(std::int32_t, double, double, double, double*)) {
    ArgScalar count(c.In(0)), first(c.In(1)), second(c.In(2)), third(c.In(3));
    const std::int32_t n = count.Int();
    const double p1 = first.Double(), p2 = second.Double(), p3 = third.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(kernel(n, p1, p2, p3, x.AsDouble()));
    ReturnArray(c, x);
}

void SinePattern(Call& c) { ThreeParameterPattern(c, SinePatternGen); }
void Chirp(Call& c) { ThreeParameterPattern(c, ChirpPattern); }
void Sinc(Call& c) { ThreeParameterPattern(c, SincPattern); }

// The noise methods draw from the one generator shared by the whole process:
// Seed >= 0 restarts it, a negative Seed continues wherever the last noise
// call of any of the three left it.
void Uniform(Call& c) {
    ArgScalar count(c.In(0)), seed(c.In(1));
    const std::int32_t n = count.Int(), s = seed.Int();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(UniformNoise(n, s, x.AsDouble()));
    ReturnArray(c, x);
}

void WhiteNoise(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1)), seed(c.In(2));
    const std::int32_t n = count.Int(), s = seed.Int();
    const double a = amp.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(WhiteNoiseGen(n, a, s, x.AsDouble()));
    ReturnArray(c, x);
}

void GaussNoise(Call& c) {
    ArgScalar count(c.In(0)), sdev(c.In(1)), seed(c.In(2));
    const std::int32_t n = count.Int(), s = seed.Int();
    const double sd = sdev.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(GaussNoiseGen(n, sd, s, x.AsDouble()));
    ReturnArray(c, x);
}

void SineWave(Call& c) { WaveMethod(c, SineWaveGen); }
void SawtoothWave(Call& c) { WaveMethod(c, SawtoothWaveGen); }
void TriangleWave(Call& c) { WaveMethod(c, TriangleWaveGen); }

// As the other waves, with DutyCycle (percent) before the Phase.
void SquareWave(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1)), f(c.In(2)), duty(c.In(3)), phase(*c.Out(4));
    const std::int32_t n = count.Int();
    const double a = amp.Double(), cycles = f.Double(), d = duty.Double();
    double p = phase.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(SquareWaveGen(n, a, cycles, d, &p, x.AsDouble()));
    c.SetOutDouble(4, p);
    ReturnArray(c, x);
}

// One period given by the one-dimensional WaveTable; an empty table is left
// to the kernel, which then generates zeros.
void ArbitraryWave(Call& c) {
    ArgScalar count(c.In(0)), amp(c.In(1)), f(c.In(2));
    const std::int32_t n = count.Int();
    const double a = amp.Double(), cycles = f.Double();
    ArgArray table(c.In(3));
    table.RequireDims(1);
    ArgScalar interp(c.In(4)), phase(*c.Out(5));
    const std::int32_t mode = interp.Int();
    double p = phase.Double();
    ArgArray x;
    CreateSamples(x, n);
    ThrowAnalysisStatus(ArbitraryWaveGen(n, a, cycles, table.AsDouble(), table.Count(), mode, &p, x.AsDouble()));
    c.SetOutDouble(5, p);
    ReturnArray(c, x);
}

// --- IIR filters -------------------------------------------------------------
//
// The filtering methods return x run through the designed cascade; the
// coefficient methods hand back a and b of na and nb elements, zero past the
// designed ones; IIRFiltering runs any a/b pair and hands its state back.

namespace {

using SingleIirKernel = AnalysisStatus (*)(const double*, std::int32_t, double, double, std::int32_t, double*);
using SingleIirKernelP = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, std::int32_t,
                                            double*);
using BandIirKernel = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, std::int32_t, double*);
using BandIirKernelP = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, double, std::int32_t,
                                          double*);

// x is one-dimensional; an empty x reaches the kernel, which reports it.
// The kernel copies x into the result and filters it there.
void IirFilterMethod(Call& c, int scalars, double* v, std::int32_t& order, ArgArray& x, ArgArray& y) {
    x.AttachByValue(c.In(0));
    x.Lock();
    x.RequireDims(1);
    for (int i = 0; i < scalars; ++i) {
        ArgScalar s(c.In(1 + i));
        v[i] = s.Double();
    }
    ArgScalar ord(c.In(1 + scalars));
    order = ord.Int();
    y.Create1D(x.Count());
}

void SingleIir(Call& c, SingleIirKernel kernel) {
    ArgArray x, y;
    double v[2];
    std::int32_t order = 0;
    IirFilterMethod(c, 2, v, order, x, y);
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), v[0], v[1], order, y.AsDouble()));
    ReturnArray(c, y);
}

void SingleIirP(Call& c, SingleIirKernelP kernel) {
    ArgArray x, y;
    double v[3];
    std::int32_t order = 0;
    IirFilterMethod(c, 3, v, order, x, y);
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), v[0], v[1], v[2], order, y.AsDouble()));
    ReturnArray(c, y);
}

void BandIir(Call& c, BandIirKernel kernel) {
    ArgArray x, y;
    double v[3];
    std::int32_t order = 0;
    IirFilterMethod(c, 3, v, order, x, y);
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), v[0], v[1], v[2], order, y.AsDouble()));
    ReturnArray(c, y);
}

void BandIirP(Call& c, BandIirKernelP kernel) {
    ArgArray x, y;
    double v[4];
    std::int32_t order = 0;
    IirFilterMethod(c, 4, v, order, x, y);
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), v[0], v[1], v[2], v[3], order, y.AsDouble()));
    ReturnArray(c, y);
}

// Type, Order, SampleFreq, CutoffFreqLow, CutoffFreqHigh, [Ripple |
// Attenuation], na, nb, out a, out b. Negative counts give empty arrays; the
// kernel then reports them (-20008).
template <typename Design>
void IirCoefMethod(Call& c, bool withParam, Design design) {
    ArgScalar type(c.In(0)), order(c.In(1)), fs(c.In(2)), fl(c.In(3)), fh(c.In(4));
    const std::int32_t t = type.Int(), o = order.Int();
    const double s = fs.Double(), lo = fl.Double(), hi = fh.Double();
    double param = 0;
    int next = 5;
    if (withParam) {
        ArgScalar p(c.In(next++));
        param = p.Double();
    }
    ArgScalar countA(c.In(next)), countB(c.In(next + 1));
    const std::int32_t na = countA.Int(), nb = countB.Int();
    ArgArray a, b;
    a.Create1D(na < 0 ? 0 : na);
    b.Create1D(nb < 0 ? 0 : nb);
    ThrowAnalysisStatus(design(t, o, s, lo, hi, param, a.AsDouble(), na, b.AsDouble(), nb));
    OutputArray(c, next + 2, a);
    OutputArray(c, next + 3, b);
}

// A state array of IIRFiltering (in/out parameter i) that must hold at least
// `needed` values. It is copied into `state`, which the kernel updates and
// which is handed back. A state of no values may be an empty array, Empty
// or omitted; it is then left as it was.
bool ReadState(Call& c, int i, std::int32_t needed, ArgArray& state) {
    if (needed <= 0 && IsMissingArgument(*c.Out(i))) return false;
    ArgArray given;
    given.AttachByValue(*c.Out(i));
    given.Lock();
    given.RequireMoreElements(needed - 1);
    const std::int32_t count = given.Count();
    state.Create1D(count);
    if (count > 0) ThrowAnalysisStatus(CopyValues(given.AsDouble(), count, state.AsDouble()));
    return true;
}

}  // namespace

void BwLPF(Call& c) { SingleIir(c, BwLowPass); }
void BwHPF(Call& c) { SingleIir(c, BwHighPass); }
void BwBPF(Call& c) { BandIir(c, BwBandPass); }
void BwBSF(Call& c) { BandIir(c, BwBandStop); }
void ChLPF(Call& c) { SingleIirP(c, ChLowPass); }
void ChHPF(Call& c) { SingleIirP(c, ChHighPass); }
void ChBPF(Call& c) { BandIirP(c, ChBandPass); }
void ChBSF(Call& c) { BandIirP(c, ChBandStop); }
void InvChLPF(Call& c) { SingleIirP(c, InvChLowPass); }
void InvChHPF(Call& c) { SingleIirP(c, InvChHighPass); }
void InvChBPF(Call& c) { BandIirP(c, InvChBandPass); }
void InvChBSF(Call& c) { BandIirP(c, InvChBandStop); }

void BwCoef(Call& c) {
    IirCoefMethod(c, false,
                  [](std::int32_t t, std::int32_t o, double fs, double fl, double fh, double, double* a, std::int32_t na,
                     double* b, std::int32_t nb) { return BwCoefDesign(t, o, fs, fl, fh, a, na, b, nb); });
}
void ChCoef(Call& c) { IirCoefMethod(c, true, ChCoefDesign); }
void InvChCoef(Call& c) { IirCoefMethod(c, true, InvChCoefDesign); }

// x, a, b, in/out y1, in/out x1, out y. An empty a (an array of no
// elements, Empty or omitted) runs b alone as an FIR filter; y1 is then not
// read and is left as it was.
void IIRFiltering(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray a;
    std::int32_t na = 0;
    if (!c.IsMissing(1)) {
        a.AttachByValue(c.In(1));
        a.Lock();
        a.RequireDims(1);
        na = a.Count();
    }
    ArgArray b(c.In(2));
    b.RequireDims(1);
    const std::int32_t nb = b.Count();
    ArgArray y1, x1;
    double none = 0;  // y1 of a one-coefficient a, which holds no values
    const bool hasY1 = na > 0 && ReadState(c, 3, na - 1, y1);
    const bool hasX1 = ReadState(c, 4, nb - 1, x1);
    const std::int32_t n = x.Count();
    ArgArray y;
    y.Create1D(n);
    double* y1Data = na > 0 ? (hasY1 && y1.Count() > 0 ? y1.AsDouble() : &none) : nullptr;
    double* x1Data = hasX1 && x1.Count() > 0 ? x1.AsDouble() : nullptr;
    ThrowAnalysisStatus(IIRFilterRun(x.AsDouble(), n, na > 0 ? a.AsDouble() : nullptr, y1Data, na, b.AsDouble(),
                                     x1Data, nb, y.AsDouble()));
    if (hasY1) OutputArray(c, 3, y1);
    if (hasX1) OutputArray(c, 4, x1);
    OutputArray(c, 5, y);
}

// Not built yet.
VN_NOT_IMPLEMENTED(Convolve)
VN_NOT_IMPLEMENTED(Correlate)
VN_NOT_IMPLEMENTED(Integrate)
VN_NOT_IMPLEMENTED(Difference)
VN_NOT_IMPLEMENTED(PulseParam)
VN_NOT_IMPLEMENTED(Decimate)
VN_NOT_IMPLEMENTED(Deconvolve)
VN_NOT_IMPLEMENTED(UnWrap1D)
VN_NOT_IMPLEMENTED(ElpLPF)
VN_NOT_IMPLEMENTED(ElpHPF)
VN_NOT_IMPLEMENTED(ElpBPF)
VN_NOT_IMPLEMENTED(ElpBSF)
VN_NOT_IMPLEMENTED(WindLPCoef)
VN_NOT_IMPLEMENTED(WindHPCoef)
VN_NOT_IMPLEMENTED(WindBPCoef)
VN_NOT_IMPLEMENTED(WindBSCoef)
VN_NOT_IMPLEMENTED(KsrLPCoef)
VN_NOT_IMPLEMENTED(KsrHPCoef)
VN_NOT_IMPLEMENTED(KsrBPCoef)
VN_NOT_IMPLEMENTED(KsrBSCoef)
VN_NOT_IMPLEMENTED(EquiRipple)
VN_NOT_IMPLEMENTED(EquiRplLPCoef)
VN_NOT_IMPLEMENTED(EquiRplHPCoef)
VN_NOT_IMPLEMENTED(EquiRplBPCoef)
VN_NOT_IMPLEMENTED(EquiRplBSCoef)
VN_NOT_IMPLEMENTED(TriWin)
VN_NOT_IMPLEMENTED(HanWin)
VN_NOT_IMPLEMENTED(HamWin)
VN_NOT_IMPLEMENTED(BkmanWin)
VN_NOT_IMPLEMENTED(KsrWin)
VN_NOT_IMPLEMENTED(BlkHarrisWin)
VN_NOT_IMPLEMENTED(CosTaperedWin)
VN_NOT_IMPLEMENTED(ExBkmanWin)
VN_NOT_IMPLEMENTED(ExpWin)
VN_NOT_IMPLEMENTED(FlatTopWin)
VN_NOT_IMPLEMENTED(ForceWin)
VN_NOT_IMPLEMENTED(GenCosWin)
VN_NOT_IMPLEMENTED(ACDCEstimator)
VN_NOT_IMPLEMENTED(AmpPhaseSpectrum)
VN_NOT_IMPLEMENTED(AutoPowerSpectrum)
VN_NOT_IMPLEMENTED(ImpulseResponse)
VN_NOT_IMPLEMENTED(NetworkFunctions)
VN_NOT_IMPLEMENTED(ScaledWindow)
VN_NOT_IMPLEMENTED(TransferFunction)
VN_NOT_IMPLEMENTED(CrossSpectrum)
VN_NOT_IMPLEMENTED(CrossPowerSpectrum)
VN_NOT_IMPLEMENTED(PowerFrequencyEstimate)
VN_NOT_IMPLEMENTED(SpectrumUnitConversion)
VN_NOT_IMPLEMENTED(ElpCoef)

}  // namespace dsp_handlers

#define VN_HANDLERS dsp_handlers
VN_DEFINE_DISPATCH_TABLE(VN_DSP_METHODS, L"VNAnalysisControlsLib.VNDSP", CLSID_VNDSP, DIID__DVNDSP)
#undef VN_HANDLERS

const DispatchTable& CVNDSPCtrl::Table() { return kDispatchTable; }

}  // namespace vn
