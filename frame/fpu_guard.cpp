#include "frame/fpu_guard.h"

#include <float.h>

namespace vn {

namespace {

// All six exceptions masked (invalid, denormal, zero-divide, overflow,
// underflow, inexact) and the low bit of the precision field set.
constexpr unsigned kGuardWord = 0x000F031Fu;
constexpr unsigned kGuardMask = 0x0009001Fu;

}  // namespace

FpuThreadRecord& CurrentFpuRecord() {
    static thread_local FpuThreadRecord record;
    return record;
}

FpuGuard::FpuGuard() {
    FpuThreadRecord& record = CurrentFpuRecord();
    if (record.free == 0) return;  // nested: the outer guard owns the word
    saved_ = _controlfp(kGuardWord, kGuardMask);
    record.free = 0;
    record.savedWord = saved_;
    active_ = 1;
}

FpuGuard::~FpuGuard() {
    if (active_ == 0) return;
    // The restoring call takes the constant as the new value and the saved
    // word as the mask: every bit that was set before is set again, and bits
    // that were clear keep their current value. Kept exactly so; a host
    // running with the usual all-masked word gets its word back unchanged.
    _controlfp(kGuardWord, saved_);
    _clearfp();
    CurrentFpuRecord().free = 1;
}

}  // namespace vn
