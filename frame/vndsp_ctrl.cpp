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
#include "analysis/filter/fir.h"
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

// Not built yet.
VN_NOT_IMPLEMENTED(Convolve)
VN_NOT_IMPLEMENTED(Correlate)
VN_NOT_IMPLEMENTED(Integrate)
VN_NOT_IMPLEMENTED(Difference)
VN_NOT_IMPLEMENTED(PulseParam)
VN_NOT_IMPLEMENTED(Decimate)
VN_NOT_IMPLEMENTED(Deconvolve)
VN_NOT_IMPLEMENTED(UnWrap1D)
VN_NOT_IMPLEMENTED(BwLPF)
VN_NOT_IMPLEMENTED(BwHPF)
VN_NOT_IMPLEMENTED(BwBPF)
VN_NOT_IMPLEMENTED(BwBSF)
VN_NOT_IMPLEMENTED(ChLPF)
VN_NOT_IMPLEMENTED(ChHPF)
VN_NOT_IMPLEMENTED(ChBSF)
VN_NOT_IMPLEMENTED(ChBPF)
VN_NOT_IMPLEMENTED(InvChLPF)
VN_NOT_IMPLEMENTED(InvChHPF)
VN_NOT_IMPLEMENTED(InvChBPF)
VN_NOT_IMPLEMENTED(InvChBSF)
VN_NOT_IMPLEMENTED(ElpLPF)
VN_NOT_IMPLEMENTED(ElpHPF)
VN_NOT_IMPLEMENTED(ElpBPF)
VN_NOT_IMPLEMENTED(ElpBSF)
// --- FIR designs -------------------------------------------------------------

namespace {

// fs, fc (or fl, fh), n and the window selector in parameter order; the
// taps are returned. A count below 1 gets an empty array (the kernel
// reports it before writing).
void WindowedFirMethod(Call& c, std::int32_t type, bool band) {
    const int k = band ? 1 : 0;
    ArgScalar fs(c.In(0)), fl(c.In(1)), fh(c.In(1 + k)), count(c.In(2 + k)), window(c.In(3 + k));
    const double rate = fs.Double(), low = fl.Double(), high = band ? fh.Double() : 0.0;
    const std::int32_t n = count.Int(), code = window.Int();
    ArgArray h;
    CreateSamples(h, n);
    ThrowAnalysisStatus(WindowedFirDesign(type, rate, low, high, n, code, h.AsDouble()));
    ReturnArray(c, h);
}

void KaiserFirMethod(Call& c, std::int32_t type, bool band) {
    const int k = band ? 1 : 0;
    ArgScalar fs(c.In(0)), fl(c.In(1)), fh(c.In(1 + k)), count(c.In(2 + k)), shape(c.In(3 + k));
    const double rate = fs.Double(), low = fl.Double(), high = band ? fh.Double() : 0.0, beta = shape.Double();
    const std::int32_t n = count.Int();
    ArgArray h;
    CreateSamples(h, n);
    ThrowAnalysisStatus(KaiserFirDesign(type, rate, low, high, n, beta, h.AsDouble()));
    ReturnArray(c, h);
}

// fs, f1, f2 (, f3, f4), n, out delta: the shortcut band layouts.
void EquiRippleShortcut(Call& c, std::int32_t type, bool band) {
    const int k = band ? 2 : 0;
    ArgScalar fs(c.In(0)), f1(c.In(1)), f2(c.In(2)), f3(c.In(1 + k)), f4(c.In(2 + k)), count(c.In(3 + k));
    const double rate = fs.Double(), e1 = f1.Double(), e2 = f2.Double();
    const double e3 = band ? f3.Double() : 0.0, e4 = band ? f4.Double() : 0.0;
    const std::int32_t n = count.Int();
    ArgArray h;
    CreateSamples(h, n);
    double delta = 0.0;
    ThrowAnalysisStatus(EquiRippleBandDesign(type, rate, e1, e2, e3, e4, n, h.AsDouble(), &delta));
    c.SetOutDouble(4 + k, delta);
    ReturnArray(c, h);
}

}  // namespace

void WindLPCoef(Call& c) { WindowedFirMethod(c, 0, false); }
void WindHPCoef(Call& c) { WindowedFirMethod(c, 1, false); }
void WindBPCoef(Call& c) { WindowedFirMethod(c, 2, true); }
void WindBSCoef(Call& c) { WindowedFirMethod(c, 3, true); }
void KsrLPCoef(Call& c) { KaiserFirMethod(c, 0, false); }
void KsrHPCoef(Call& c) { KaiserFirMethod(c, 1, false); }
void KsrBPCoef(Call& c) { KaiserFirMethod(c, 2, true); }
void KsrBSCoef(Call& c) { KaiserFirMethod(c, 3, true); }

// Bands, a, wts, fs, Cutoffs, ftype, n, out delta. a and wts must hold at
// least Bands values and Cutoffs at least 2 Bands (-20008); the kernel then
// checks the rest. delta is the kernel's signed deviation.
void EquiRipple(Call& c) {
    ArgScalar bands(c.In(0));
    const std::int32_t nb = bands.Int();
    ArgArray a(c.In(1)), wts(c.In(2));
    ArgScalar fs(c.In(3));
    ArgArray cutoffs(c.In(4));
    ArgScalar ftype(c.In(5)), count(c.In(6));
    if (a.Count() < nb || wts.Count() < nb || cutoffs.Count() < 2 * static_cast<std::int64_t>(nb))
        ThrowAnalysisStatus(kErrWrongCount);
    const double rate = fs.Double();
    const std::int32_t type = ftype.Int(), n = count.Int();
    ArgArray h;
    CreateSamples(h, n);
    double delta = 0.0;
    ThrowAnalysisStatus(EquiRippleDesign(nb, a.AsDouble(), wts.AsDouble(), rate, cutoffs.AsDouble(), type, n,
                                         h.AsDouble(), &delta, 100));
    c.SetOutDouble(7, delta);
    ReturnArray(c, h);
}

void EquiRplLPCoef(Call& c) { EquiRippleShortcut(c, 0, false); }
void EquiRplHPCoef(Call& c) { EquiRippleShortcut(c, 1, false); }
void EquiRplBPCoef(Call& c) { EquiRippleShortcut(c, 2, true); }
void EquiRplBSCoef(Call& c) { EquiRippleShortcut(c, 3, true); }
// --- end of FIR designs ------------------------------------------------------
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
VN_NOT_IMPLEMENTED(IIRFiltering)
VN_NOT_IMPLEMENTED(SpectrumUnitConversion)
VN_NOT_IMPLEMENTED(ElpCoef)
VN_NOT_IMPLEMENTED(BwCoef)
VN_NOT_IMPLEMENTED(ChCoef)
VN_NOT_IMPLEMENTED(InvChCoef)

}  // namespace dsp_handlers

#define VN_HANDLERS dsp_handlers
VN_DEFINE_DISPATCH_TABLE(VN_DSP_METHODS, L"VNAnalysisControlsLib.VNDSP", CLSID_VNDSP, DIID__DVNDSP)
#undef VN_HANDLERS

const DispatchTable& CVNDSPCtrl::Table() { return kDispatchTable; }

}  // namespace vn
