// The compare-based reductions with an explicit scan engine, so that tests
// can hold every engine against the plain element-by-element rules.
#pragma once

#include "analysis/status.h"

#include <cstdint>

namespace vn {
namespace extremes_internal {

enum class Engine { kBaseline, kAvx2 };

// False for an engine the processor (or this build) lacks; the functions
// below then use the baseline engine.
bool EngineAvailable(Engine e);
Engine DefaultEngine();

// Results of the rules of MaxArray / MinArray / MaxMinValues over n >= 1
// elements (n may exceed 2^31 - 1 for a matrix).
double Largest(Engine e, const double* x, std::int64_t n);
double Smallest(Engine e, const double* x, std::int64_t n);
void MaxMin(Engine e, const double* x, std::int64_t n, double* max, std::int64_t* imax, double* min,
            std::int64_t* imin);

}  // namespace extremes_internal
}  // namespace vn
