// Calibrated spectra of real records, network measurements of a system from
// stimulus and response records, the peak estimate of a power spectrum and
// the unit conversion of a power spectrum.
//
// All of them run on the real-input transform pair (RealFFTCore /
// RealInvFFTCore, packed layout, see fft.h). X[k] = sum_j x[j] e^(-2 pi i jk/n).
//
// Single-sided outputs hold n/2 bins, 0 .. n/2-1 (the Nyquist bin is
// dropped); bins 1 .. n/2-1 of power-like outputs carry the doubled power of
// the folded negative frequencies, bin 0 does not. With n = 1 a single-sided
// output has no element and nothing is written to it (df and, for
// NetworkFunctionsCore, the one-sample impulse response are still written).
// df = 1/(n*dt); dt is not checked (dt = 0 gives an infinite df).
//
// Checks, in this order, before any work: n < 1 (or frames < 1) -> -20003,
// n not a power of two -> -20009 (every kernel except CrossSpectrumCore,
// ACDCEstimatorCore and PeakPowerFrequency), scratch allocation -> -20001.
// Inputs are never modified; every kernel frees its scratch on every path.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// floor(log2 n); -1 for n < 1.
std::int32_t Log2Floor(std::int32_t n);

// S[k] = |X[k]|^2/n^2 for k = 0 .. n/2-1, bins 1 .. n/2-1 doubled: the mean
// square of each bin's sinusoid (a cosine of amplitude A at bin k0 gives
// A^2/2 there). out: n/2 doubles.
AnalysisStatus AutoPowerSpectrumCore(const double* x, std::int32_t n, double dt, double* out, double* df);

// amp[0] = |X[0]|/n with phase 0, or pi when X[0] < 0; amp[k] =
// sqrt(2)*|X[k]|/n (the bin's RMS amplitude), phase[k] = atan2(Im, Re) for
// k = 1 .. n/2-1. A non-zero `unwrap` unwraps the n/2 phases as UnwrapPhase
// does. amp, phase: n/2 doubles each.
AnalysisStatus AmpPhaseSpectrumCore(const double* x, std::int32_t n, std::int32_t unwrap, double dt, double* amp,
                                    double* phase, double* df);

// Length of CrossSpectrumCore's outputs: n rounded up to a power of two; 0
// for n < 1 and for n above 2^30 (whose padded length does not fit).
std::int32_t CrossSpectrumLength(std::int32_t n);

// Two-sided Hermitian cross spectrum S[k] = conj(X[k]) Y[k]/N^2 over the
// N = CrossSpectrumLength(n) bins of x and y zero-padded to N (any n >= 1 is
// accepted). re, im: N doubles each. n > 2^30 -> -20001.
AnalysisStatus CrossSpectrumCore(const double* x, const double* y, std::int32_t n, double* re, double* im);

// Single-sided magnitude and phase of the cross spectrum: mag[0] = |S[0]|,
// mag[k] = 2|S[k]| for k = 1 .. n/2-1, phase = atan2(Im S, Re S).
AnalysisStatus CrossPowerSpectrumCore(const double* x, const double* y, std::int32_t n, double dt, double* mag,
                                      double* phase, double* df);

// AC (RMS of the fluctuation) and DC estimates through a Hanning window:
// r = Hanning(x - mean x), mu = mean r, v = mean r^2 - mu^2;
// ac = sqrt((v - mu^2/2)*8/3), dc = 2 mu + mean x. A negative radicand (a
// constant record's rounding) gives NaN, as the square root does.
AnalysisStatus ACDCEstimatorCore(const double* x, std::int32_t n, double* ac, double* dc);

// `frames` record pairs of n samples, stored one after another in s and r.
// Sums over the pairs the cross spectrum Sxy = conj(S) R/n^2 and the power
// spectra Sxx, Syy; H = Sxy/Sxx over all n bins. Outputs (n/2 doubles each
// unless noted): mag_sxy = |Sxy|/frames (doubled from bin 1), phase_sxy,
// mag_hf = |H|, phase_hf, coherence |Sxy|^2/(Sxx Syy), impulse = real part of
// the inverse transform of H (n doubles).
AnalysisStatus NetworkFunctionsCore(const double* s, const double* r, std::int32_t n, std::int32_t frames, double dt,
                                    double* mag_sxy, double* phase_sxy, double* mag_hf, double* phase_hf,
                                    double* coherence, double* impulse, double* df);

// H = R/S per bin: mag_hf = |H| (not doubled), phase_hf = atan2(Im H, Re H)
// (pi at bin 0 when R0/S0 < 0), n/2 doubles each. A zero stimulus bin gives a
// non-finite bin, not an error.
AnalysisStatus TransferFunctionCore(const double* s, const double* r, std::int32_t n, double dt, double* mag_hf,
                                    double* phase_hf, double* df);

// Inverse transform of R/S (circular impulse response over n points). out:
// n doubles.
AnalysisStatus ImpulseResponseCore(const double* s, const double* r, std::int32_t n, double* out);

// Peak of a power spectrum S (n bins of width df). Centre bin k =
// trunc(search_freq/df) when search_freq >= 0 and that bin exists, else the
// index of the largest element (first of ties). Over bins k - w/2 .. k + w/2
// inside 0 .. n-1, w = 2 for span < 3 else span with its lowest bit cleared:
// power = sum S/enbw, freq = df * sum(i S)/sum S (k*df when sum S <= 0).
// coherent_gain is accepted and not used. Only n < 1 -> -20003 is checked.
AnalysisStatus PeakPowerFrequency(const double* s, std::int32_t n, double search_freq, double enbw,
                                  double coherent_gain, double df, std::int32_t span, double* freq_peak,
                                  double* power_peak);

// Unit conversion of a single-sided spectrum. The input's `spectrum_type`
// states what it holds, in volts (rms) and per bin of width df:
//   0 power spectrum (Vrms^2)        1 power spectral density (Vrms^2/Hz)
//   2 amplitude spectrum (Vrms)      3 amplitude spectral density (Vrms/sqrt Hz)
// It is first brought to the power per bin P (densities times df*enbw,
// amplitudes squared) and divided by coherent_gain^2, which undoes the
// amplitude loss of the window the record was taken through (1 for none).
// `display_unit` then selects the output quantity:
//   0 Vrms = sqrt P        1 Vpk = sqrt(2P)        2 Vrms^2 = P    3 Vpk^2 = 2P
//   4 Vrms/sqrt Hz   5 Vpk/sqrt Hz   6 Vrms^2/Hz   7 Vpk^2/Hz
// (4 .. 7: as 0 .. 3 with P replaced by P/(df*enbw)), and `scaling`:
//   0 linear   1 dB re 1 unit (10 log10 of a power unit, 20 log10 of an
//   amplitude unit: both give 10 log10 of the power quantity)
//   2 dBm re 1 mW into 50 ohm: 10 log10(P/(50 ohm * 1 mW)) from the rms
//   power P (per Hz for units 4 .. 7), so peak and rms units agree.
// Zero gives -inf in dB; df, enbw and coherent_gain are not checked.
// n < 1 -> -20003; a code outside its table -> -20061.
AnalysisStatus SpectrumUnitConversionCore(const double* s, std::int32_t n, std::int32_t spectrum_type,
                                          std::int32_t scaling, std::int32_t display_unit, double df, double enbw,
                                          double coherent_gain, double* out);

}  // namespace vn
