// Floating-point state of a method call.
#pragma once

#include <cstdint>

namespace vn {

// Per-thread record: whether a guard is active on this thread, and the
// control word the outermost guard saved.
struct FpuThreadRecord {
    std::int32_t free = 1;
    std::uint32_t savedWord = 0;
};

FpuThreadRecord& CurrentFpuRecord();

// Masks all floating-point exceptions for the duration of a method call, so
// that infinities and NaNs flow into results instead of trapping. Nested
// guards on one thread leave the control word to the outermost one.
class FpuGuard {
public:
    FpuGuard();
    ~FpuGuard();
    FpuGuard(const FpuGuard&) = delete;
    FpuGuard& operator=(const FpuGuard&) = delete;

private:
    std::int32_t active_ = 0;
    std::uint32_t saved_ = 0;
};

}  // namespace vn
