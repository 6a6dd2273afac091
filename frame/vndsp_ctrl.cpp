// VNDSP: signal generators, transforms, windows, spectra and filters.
//
// Transforms work in place, so every transform handler copies its inputs
// into freshly created outputs and lets the kernel overwrite the copies; the
// host's arrays are never touched. Generators create their result first and
// let the kernel judge every count and parameter.
#include "VNMATH_h.h"
#include "analysis/array/array_ops.h"
#include "analysis/dsp/fft.h"
#include "analysis/dsp/generators.h"
#include "analysis/dsp/spectra.h"
#include "analysis/dsp/timedomain.h"
#include "analysis/dsp/windows.h"
#include "analysis/filter/fir.h"
#include "analysis/filter/iir.h"
#include "frame/control_table.h"
#include "frame/controls.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include <utility>

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

// --- Time-domain operations -------------------------------------------------

namespace {

using PairKernel = AnalysisStatus (*)(const double*, std::int32_t, const double*, std::int32_t, double*);

// Two one-dimensional sequences in, nx + ny - 1 values returned. Counts below
// 1 get an empty result and the kernel's -20003.
void DirectSumMethod(Call& c, PairKernel kernel) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgArray y(c.In(1));
    RequireSignal(y);
    const std::int32_t nx = x.Count(), ny = y.Count();
    const std::int64_t total = static_cast<std::int64_t>(nx) + ny - 1;
    ArgArray z;
    z.Create1D(nx < 1 || ny < 1 || total > 0x7fffffff ? 0 : static_cast<std::int32_t>(total));
    ThrowAnalysisStatus(kernel(x.AsDouble(), nx, y.AsDouble(), ny, z.AsDouble()));
    ReturnArray(c, z);
}

using RunningKernel = AnalysisStatus (*)(const double*, std::int32_t, double, double, double, double*);

// x, dt, xInit, xFinal in; n values returned.
void RunningMethod(Call& c, RunningKernel kernel) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar step(c.In(1)), first(c.In(2)), last(c.In(3));
    const double dt = step.Double(), x0 = first.Double(), x1 = last.Double();
    const std::int32_t n = x.Count();
    ArgArray z;
    z.Create1D(n);
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, dt, x0, x1, z.AsDouble()));
    ReturnArray(c, z);
}

}  // namespace

void Convolve(Call& c) { DirectSumMethod(c, ConvolveDirect); }
void Correlate(Call& c) { DirectSumMethod(c, CorrelateDirect); }
void Integrate(Call& c) { RunningMethod(c, IntegrateSimpson); }
void Difference(Call& c) { RunningMethod(c, DifferenceCentral); }

// y (the convolution) first, then x; ny - nx + 1 values returned (empty for
// nx = ny + 1).
void Deconvolve(Call& c) {
    ArgArray y(c.In(0));
    RequireSignal(y);
    ArgArray x(c.In(1));
    RequireSignal(x);
    const std::int32_t ny = y.Count(), nx = x.Count();
    const std::int32_t nout = ny - nx + 1;
    ArgArray h;
    h.Create1D(nx < 1 || ny < 1 || nout < 0 ? 0 : nout);
    ThrowAnalysisStatus(DeconvolveFFT(y.AsDouble(), ny, x.AsDouble(), nx, h.AsDouble()));
    ReturnArray(c, h);
}

// The third argument switches block averaging on when it is non-zero.
void Decimate(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar factor(c.In(1)), averaging(c.In(2));
    const std::int32_t d = factor.Int();
    const bool average = averaging.Double() != 0.0;
    const std::int32_t n = x.Count();
    ArgArray z;
    z.Create1D(DecimatedLength(n, d));
    ThrowAnalysisStatus(DecimateCore(x.AsDouble(), n, d, average, z.AsDouble()));
    ReturnArray(c, z);
}

void UnWrap1D(Call& c) { RealTransformMethod(c, UnwrapPhase); }

// Twelve by-reference outputs: eight levels, four times in samples (32-bit
// integers) and the slew rate.
void PulseParam(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    PulseParameters p;
    ThrowAnalysisStatus(PulseParamCore(x.AsDouble(), x.Count(), &p));
    c.SetOutDouble(1, p.amp);
    c.SetOutDouble(2, p.amp90);
    c.SetOutDouble(3, p.amp50);
    c.SetOutDouble(4, p.amp10);
    c.SetOutDouble(5, p.top);
    c.SetOutDouble(6, p.base);
    c.SetOutDouble(7, p.top_overshoot);
    c.SetOutDouble(8, p.base_overshoot);
    c.SetOutInt(9, p.delay);
    c.SetOutInt(10, p.width);
    c.SetOutInt(11, p.rise_time);
    c.SetOutInt(12, p.fall_time);
    c.SetOutDouble(13, p.slew_rate);
}

// --- Windows -----------------------------------------------------------------
//
// x windowed in a copy and returned; the scalar parameters are never
// rejected.

namespace {

template <class Kernel>
void WindowMethod(Call& c, Kernel kernel) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    const std::int32_t n = x.Count();
    ArgArray y;
    CreateCopy(y, x, n);
    ThrowAnalysisStatus(kernel(y.AsDouble(), n));
    ReturnArray(c, y);
}

// x and one scalar parameter (beta, Final or Duty).
void WindowWithParameter(Call& c, AnalysisStatus (*kernel)(double*, std::int32_t, double)) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar parameter(c.In(1));
    const double v = parameter.Double();
    const std::int32_t n = x.Count();
    ArgArray y;
    CreateCopy(y, x, n);
    ThrowAnalysisStatus(kernel(y.AsDouble(), n, v));
    ReturnArray(c, y);
}

}  // namespace

void TriWin(Call& c) { WindowMethod(c, TriangleWindow); }
void HanWin(Call& c) { WindowMethod(c, HanningWindow); }
void HamWin(Call& c) { WindowMethod(c, HammingWindow); }
void BkmanWin(Call& c) { WindowMethod(c, BlackmanWindow); }
void BlkHarrisWin(Call& c) { WindowMethod(c, BlackmanHarrisWindow); }
void CosTaperedWin(Call& c) { WindowMethod(c, CosineTaperWindow); }
void ExBkmanWin(Call& c) { WindowMethod(c, ExactBlackmanWindow); }
void FlatTopWin(Call& c) { WindowMethod(c, FlatTopWindow); }
void KsrWin(Call& c) { WindowWithParameter(c, KaiserWindow); }
void ExpWin(Call& c) { WindowWithParameter(c, ExponentialWindow); }
void ForceWin(Call& c) { WindowWithParameter(c, ForceWindow); }

// x and the one-dimensional coefficient array a (its element count is m).
void GenCosWin(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgArray a(c.In(1));
    RequireSignal(a);
    const std::int32_t n = x.Count(), m = a.Count();
    ArgArray y;
    CreateCopy(y, x, n);
    ThrowAnalysisStatus(GeneralCosineWindow(y.AsDouble(), n, a.AsDouble(), m));
    ReturnArray(c, y);
}

// x, WindowType in; the scaled record (y), ENBW and CoherentGain out.
void ScaledWindow(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar type(c.In(1));
    const std::int32_t t = type.Int();
    const std::int32_t n = x.Count();
    ArgArray y;
    CreateCopy(y, x, n);
    double enbw = 0.0, gain = 0.0;
    ThrowAnalysisStatus(ScaledWindowCore(y.AsDouble(), n, t, &enbw, &gain));
    OutputArray(c, 2, y);
    c.SetOutDouble(3, enbw);
    c.SetOutDouble(4, gain);
}

// --- Power and cross spectra, network measurements -------------------------
//
// Records are one-dimensional; a second record must have the same length
// (-20008). Single-sided outputs get n/2 elements (none for n = 1); the
// kernels judge n (count, power of two) after the outputs are sized.

namespace {

// The second record of a pair: one-dimensional and as long as the first.
void RequireSecondRecord(const ArgArray& y, const ArgArray& x) {
    y.RequireSameShape(x);
    y.RequireSize(0, x.Size(0));
}

// Half-length outputs of a single-sided spectrum (n/2 doubles; 0 for n < 2).
void CreateHalf(ArgArray& z, std::int32_t n) { z.Create1D(n < 2 ? 0 : n / 2); }

// x, y, dt in; two single-sided arrays and df out at parameters 3, 4, 5.
using PairSpectrumKernel = AnalysisStatus (*)(const double*, const double*, std::int32_t, double, double*, double*,
                                              double*);
void PairSpectrumMethod(Call& c, PairSpectrumKernel kernel) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgArray y(c.In(1));
    RequireSecondRecord(y, x);
    ArgScalar step(c.In(2));
    const double dt = step.Double();
    const std::int32_t n = x.Count();
    ArgArray a, b;
    CreateHalf(a, n);
    CreateHalf(b, n);
    double df = 0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), y.AsDouble(), n, dt, a.AsDouble(), b.AsDouble(), &df));
    OutputArray(c, 3, a);
    OutputArray(c, 4, b);
    c.SetOutDouble(5, df);
}

}  // namespace

void AutoPowerSpectrum(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar step(c.In(1));
    const double dt = step.Double();
    const std::int32_t n = x.Count();
    ArgArray s;
    CreateHalf(s, n);
    double df = 0;
    ThrowAnalysisStatus(AutoPowerSpectrumCore(x.AsDouble(), n, dt, s.AsDouble(), &df));
    OutputArray(c, 2, s);
    c.SetOutDouble(3, df);
}

void AmpPhaseSpectrum(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgScalar flag(c.In(1)), step(c.In(2));
    const std::int32_t unwrap = flag.Int();
    const double dt = step.Double();
    const std::int32_t n = x.Count();
    ArgArray amp, phase;
    CreateHalf(amp, n);
    CreateHalf(phase, n);
    double df = 0;
    ThrowAnalysisStatus(AmpPhaseSpectrumCore(x.AsDouble(), n, unwrap, dt, amp.AsDouble(), phase.AsDouble(), &df));
    OutputArray(c, 3, amp);
    OutputArray(c, 4, phase);
    c.SetOutDouble(5, df);
}

// Any length is accepted: both outputs have n rounded up to a power of two.
void CrossSpectrum(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    ArgArray y(c.In(1));
    RequireSecondRecord(y, x);
    const std::int32_t n = x.Count(), padded = CrossSpectrumLength(n);
    ArgArray re, im;
    re.Create1D(padded);
    im.Create1D(padded);
    ThrowAnalysisStatus(CrossSpectrumCore(x.AsDouble(), y.AsDouble(), n, re.AsDouble(), im.AsDouble()));
    OutputArray(c, 2, re);
    OutputArray(c, 3, im);
}

void CrossPowerSpectrum(Call& c) { PairSpectrumMethod(c, CrossPowerSpectrumCore); }
void TransferFunction(Call& c) { PairSpectrumMethod(c, TransferFunctionCore); }

void ACDCEstimator(Call& c) {
    ArgArray x(c.In(0));
    RequireSignal(x);
    double ac = 0, dc = 0;
    ThrowAnalysisStatus(ACDCEstimatorCore(x.AsDouble(), x.Count(), &ac, &dc));
    c.SetOutDouble(1, ac);
    c.SetOutDouble(2, dc);
}

void ImpulseResponse(Call& c) {
    ArgArray s(c.In(0));
    RequireSignal(s);
    ArgArray r(c.In(1));
    RequireSecondRecord(r, s);
    const std::int32_t n = s.Count();
    ArgArray h;
    h.Create1D(n);
    ThrowAnalysisStatus(ImpulseResponseCore(s.AsDouble(), r.AsDouble(), n, h.AsDouble()));
    ReturnArray(c, h);
}

// Stimulus and Response hold one record per row: dimension 1 counts the
// records, dimension 2 is the record length. The rows lie one after another
// in the data block, as the kernel takes them.
void NetworkFunctions(Call& c) {
    ArgArray s(c.In(0));
    s.RequireDims(2);
    ArgArray r(c.In(1));
    r.RequireSameShape(s);
    ArgScalar step(c.In(2));
    const double dt = step.Double();
    const std::int32_t frames = s.Size(0), n = s.Size(1);
    ArgArray mag_sxy, phase_sxy, mag_hf, phase_hf, coherence, impulse;
    for (ArgArray* z : {&mag_sxy, &phase_sxy, &mag_hf, &phase_hf, &coherence}) CreateHalf(*z, n);
    impulse.Create1D(n);
    double df = 0;
    ThrowAnalysisStatus(NetworkFunctionsCore(s.AsDouble(), r.AsDouble(), n, frames, dt, mag_sxy.AsDouble(),
                                             phase_sxy.AsDouble(), mag_hf.AsDouble(), phase_hf.AsDouble(),
                                             coherence.AsDouble(), impulse.AsDouble(), &df));
    OutputArray(c, 3, mag_sxy);
    OutputArray(c, 4, phase_sxy);
    OutputArray(c, 5, mag_hf);
    OutputArray(c, 6, phase_hf);
    OutputArray(c, 7, coherence);
    OutputArray(c, 8, impulse);
    c.SetOutDouble(9, df);
}

void PowerFrequencyEstimate(Call& c) {
    ArgArray s(c.In(0));
    RequireSignal(s);
    ArgScalar search(c.In(1)), enbw(c.In(2)), gain(c.In(3)), bin(c.In(4)), span(c.In(5));
    const double f = search.Double(), e = enbw.Double(), g = gain.Double(), df = bin.Double();
    const std::int32_t w = span.Int();
    double freq = 0, power = 0;
    ThrowAnalysisStatus(PeakPowerFrequency(s.AsDouble(), s.Count(), f, e, g, df, w, &freq, &power));
    c.SetOutDouble(6, freq);
    c.SetOutDouble(7, power);
}

// The converted spectrum goes both to ConvertedSpectrum and to the return
// value.
void SpectrumUnitConversion(Call& c) {
    ArgArray s(c.In(0));
    RequireSignal(s);
    ArgScalar type(c.In(1)), scaling(c.In(2)), unit(c.In(3)), bin(c.In(4)), enbw(c.In(5)), gain(c.In(6));
    const std::int32_t t = type.Int(), sc = scaling.Int(), u = unit.Int();
    const double df = bin.Double(), e = enbw.Double(), g = gain.Double();
    const std::int32_t n = s.Count();
    ArgArray z, copy;
    z.Create1D(n);
    ThrowAnalysisStatus(SpectrumUnitConversionCore(s.AsDouble(), n, t, sc, u, df, e, g, z.AsDouble()));
    CreateCopy(copy, z, n);
    OutputArray(c, 7, z);
    ReturnArray(c, copy);
}


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

// --- IIR filters -------------------------------------------------------------
//
// The filtering methods return x run through the designed cascade; the
// coefficient methods hand back a and b of na and nb elements, zero past the
// designed ones; IIRFiltering runs any a/b pair and hands its state back.

namespace {

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

// x, then Scalars doubles (fs, cut-offs, ripple or attenuation), then Order:
// the filtered record of x's length.
template <int Scalars, typename Kernel, std::size_t... I>
void RunIir(Call& c, Kernel kernel, std::index_sequence<I...>) {
    ArgArray x, y;
    double v[Scalars];
    std::int32_t order = 0;
    IirFilterMethod(c, Scalars, v, order, x, y);
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), v[I]..., order, y.AsDouble()));
    ReturnArray(c, y);
}

template <int Scalars, typename Kernel>
void IirMethod(Call& c, Kernel kernel) { RunIir<Scalars>(c, kernel, std::make_index_sequence<Scalars>{}); }

// Type, Order, SampleFreq, CutoffFreqLow, CutoffFreqHigh, then Params
// doubles (none, Ripple, Attenuation, or Ripple and Attenuation), na, nb,
// out a, out b. Negative counts give empty arrays; the kernel then reports
// them (-20008).
template <int Params, typename Design>
void IirCoefMethod(Call& c, Design design) {
    ArgScalar type(c.In(0)), order(c.In(1)), fs(c.In(2)), fl(c.In(3)), fh(c.In(4));
    const std::int32_t t = type.Int(), o = order.Int();
    const double s = fs.Double(), lo = fl.Double(), hi = fh.Double();
    double param[Params + 1] = {};
    int next = 5;
    for (int i = 0; i < Params; ++i) {
        ArgScalar p(c.In(next++));
        param[i] = p.Double();
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

void BwLPF(Call& c) { IirMethod<2>(c, BwLowPass); }
void BwHPF(Call& c) { IirMethod<2>(c, BwHighPass); }
void BwBPF(Call& c) { IirMethod<3>(c, BwBandPass); }
void BwBSF(Call& c) { IirMethod<3>(c, BwBandStop); }
void ChLPF(Call& c) { IirMethod<3>(c, ChLowPass); }
void ChHPF(Call& c) { IirMethod<3>(c, ChHighPass); }
void ChBPF(Call& c) { IirMethod<4>(c, ChBandPass); }
void ChBSF(Call& c) { IirMethod<4>(c, ChBandStop); }
void InvChLPF(Call& c) { IirMethod<3>(c, InvChLowPass); }
void InvChHPF(Call& c) { IirMethod<3>(c, InvChHighPass); }
void InvChBPF(Call& c) { IirMethod<4>(c, InvChBandPass); }
void InvChBSF(Call& c) { IirMethod<4>(c, InvChBandStop); }

void ElpLPF(Call& c) { IirMethod<4>(c, ElpLowPass); }
void ElpHPF(Call& c) { IirMethod<4>(c, ElpHighPass); }
void ElpBPF(Call& c) { IirMethod<5>(c, ElpBandPass); }
void ElpBSF(Call& c) { IirMethod<5>(c, ElpBandStop); }

void BwCoef(Call& c) {
    IirCoefMethod<0>(c, [](std::int32_t t, std::int32_t o, double fs, double fl, double fh, const double*, double* a,
                           std::int32_t na, double* b, std::int32_t nb) {
        return BwCoefDesign(t, o, fs, fl, fh, a, na, b, nb);
    });
}
void ChCoef(Call& c) {
    IirCoefMethod<1>(c, [](std::int32_t t, std::int32_t o, double fs, double fl, double fh, const double* p,
                           double* a, std::int32_t na, double* b, std::int32_t nb) {
        return ChCoefDesign(t, o, fs, fl, fh, p[0], a, na, b, nb);
    });
}
void InvChCoef(Call& c) {
    IirCoefMethod<1>(c, [](std::int32_t t, std::int32_t o, double fs, double fl, double fh, const double* p,
                           double* a, std::int32_t na, double* b, std::int32_t nb) {
        return InvChCoefDesign(t, o, fs, fl, fh, p[0], a, na, b, nb);
    });
}
void ElpCoef(Call& c) {
    IirCoefMethod<2>(c, [](std::int32_t t, std::int32_t o, double fs, double fl, double fh, const double* p,
                           double* a, std::int32_t na, double* b, std::int32_t nb) {
        return ElpCoefDesign(t, o, fs, fl, fh, p[0], p[1], a, na, b, nb);
    });
}

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

}  // namespace dsp_handlers

#define VN_HANDLERS dsp_handlers
VN_DEFINE_DISPATCH_TABLE(VN_DSP_METHODS, L"VNAnalysisControlsLib.VNDSP", CLSID_VNDSP, DIID__DVNDSP)
#undef VN_HANDLERS

const DispatchTable& CVNDSPCtrl::Table() { return kDispatchTable; }

}  // namespace vn
