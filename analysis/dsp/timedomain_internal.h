// Internal entry points of the direct convolution, for the unit tests and
// the benchmark only: the same sums on a chosen vector engine (an engine the
// processor lacks runs on the baseline one). Every engine gives the bits of
// the plain loop nest.
#pragma once

#include "analysis/dsp/fft_internal.h"
#include "analysis/status.h"

#include <cstdint>

namespace vn {
namespace timedomain_internal {

AnalysisStatus Convolve(fft_internal::Engine e, const double* x, std::int32_t nx, const double* y, std::int32_t ny,
                        double* out);
AnalysisStatus Correlate(fft_internal::Engine e, const double* x, std::int32_t nx, const double* y,
                         std::int32_t ny, double* out);

}  // namespace timedomain_internal
}  // namespace vn
