// Signal generators: deterministic patterns, periodic waves driven by a
// running phase, and pseudo-random noise from one process-wide generator.
//
// Every kernel fills x[0 .. n-1] and returns an AnalysisStatus; all checks
// come before any work, so a failing call writes nothing and leaves the
// phase and the generator state untouched. Frequencies are in cycles per
// sample, phases in degrees, DutyCycle in percent.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {

// --- Deterministic patterns --------------------------------------------

// Zeros with x[index] = amp. n < 1: -20003; index outside [0, n): -20017.
AnalysisStatus ImpulsePattern(std::int32_t n, double amp, std::int32_t index, double* x);

// amp for delay <= i < delay + width, else 0. n < 1: -20003; delay < 0,
// width < 0 or delay + width > n: -20014 (delay + width == n is accepted).
AnalysisStatus PulsePattern(std::int32_t n, double amp, std::int32_t delay, std::int32_t width, double* x);

// x[0] = first, then repeated addition of (last - first)/(n - 1); x[n-1]
// equals last only to rounding. n < 2: -20006.
AnalysisStatus RampPattern(std::int32_t n, double first, double last, double* x);

// Rises from 0 by amp/(n div 2) per sample to amp at n div 2 and falls back
// symmetrically: n = 4 gives [0, a/2, a, a/2], n = 5 gives [0, a/2, a, a/2, 0].
// n < 2: -20006.
AnalysisStatus TrianglePattern(std::int32_t n, double amp, double* x);

// amp * sin(theta), theta starting at phase (degrees) and advanced by
// (cycles/n) * 2*pi per sample. n < 1: -20003; cycles > n: -20012 (zero and
// negative cycles are accepted).
AnalysisStatus SinePatternGen(std::int32_t n, double amp, double phase, double cycles, double* x);

// amp * sin(2*pi*f1*i + pi*c*i^2) with c = (f2 - f1)/n. n < 1: -20003.
AnalysisStatus ChirpPattern(std::int32_t n, double amp, double f1, double f2, double* x);

// amp * sin(t)/t with t = (i*dt - delay)*pi, and amp where t is exactly 0.
// n < 1: -20003; dt <= 0: -20016.
AnalysisStatus SincPattern(std::int32_t n, double amp, double delay, double dt, double* x);

// --- Periodic waves ------------------------------------------------------
//
// x[i] = amp * shape(p) with p = *phase + i * f * 360 accumulated by repeated
// addition; afterwards *phase receives the phase of the sample that would
// follow, reduced to [0, 360). n < 1: -20003 (phase untouched).

AnalysisStatus SineWaveGen(std::int32_t n, double amp, double f, double* phase, double* x);
AnalysisStatus SawtoothWaveGen(std::int32_t n, double amp, double f, double* phase, double* x);
AnalysisStatus TriangleWaveGen(std::int32_t n, double amp, double f, double* phase, double* x);
// duty_cycle in percent, clamped silently to [0, 100].
AnalysisStatus SquareWaveGen(std::int32_t n, double amp, double f, double duty_cycle, double* phase, double* x);

// One period given by table[0 .. m-1] (m = table size). The phase is carried
// in table units u = m*p/360, advanced by f*m per sample; interp == 1
// interpolates linearly (wrapping from the last entry to the first), any
// other value takes the entry at or before the position. m < 1 gives zeros.
AnalysisStatus ArbitraryWaveGen(std::int32_t n, double amp, double f, const double* table, std::int32_t m,
                                std::int32_t interp, double* phase, double* x);

// Shapes of a phase in degrees (any value; reduced into [0, 360) first).
double SawtoothShape(double p);                 // 0 .. 1 over [0, 180), -1 .. 0 over [180, 360)
double TriangleShape(double p);                 // 0 at 0, 1 at 90, -1 at 270
double SquareShape(double p, double duty);      // +1 while q < duty*360, else -1 (duty in [0, 1])

// --- Noise -------------------------------------------------------------
//
// One combined congruential generator (three signed 32-bit components,
// 1234, 2345, 3456 at load time) shared by the three noise kernels and kept
// between calls. seed >= 0 reseeds it first; a negative seed continues the
// current sequence, so that consecutive calls with seed -1 give one unbroken
// sequence across all three kernels. There is no lock: concurrent calls
// interleave the sequence unpredictably.

// NoiseNext() / 32767: values in [0, 1].
AnalysisStatus UniformNoise(std::int32_t n, std::int32_t seed, double* x);
// (NoiseNext() - 16383) * amp/16384: values in [-amp*16383/16384, amp].
AnalysisStatus WhiteNoiseGen(std::int32_t n, double amp, std::int32_t seed, double* x);
// (sum of 12 NoiseNext() - 196596) * sdev/32768; mean 6*sdev/32768 (kept).
AnalysisStatus GaussNoiseGen(std::int32_t n, double sdev, std::int32_t seed, double* x);

// s1 = seed (32767 for 0), s2 = (s1*8191) AND 16383, s3 = (s2*8191) AND 16383.
void NoiseReseed(std::int32_t seed);
// Next integer of the shared sequence: 0 .. 32767 from the load-time state
// and after any seed up to 12,558,383. Larger seeds overflow the first
// product of the 32-bit recurrence, which wraps around as the generator is
// defined; the first component may then turn negative, and so may results.
std::int32_t NoiseNext();

// Test support only: puts the shared generator back in its load-time state.
void ResetNoiseGenerator();

}  // namespace vn
