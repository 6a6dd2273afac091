// Per-call scratch memory for the statistics kernels.
//
// Kernels must never let an exception escape, so allocation failure (including
// a length beyond the bound of one block, analysis/limits.h) comes back as an
// empty pointer that the caller turns into -20001.
#pragma once

#include "analysis/limits.h"

#include <cstddef>
#include <memory>
#include <new>

namespace vn {
namespace stat_detail {

template <typename T>
std::unique_ptr<T[]> AllocateScratch(std::size_t count) noexcept {
    if (!BlockFits(count, sizeof(T))) return nullptr;
    try {
        return std::unique_ptr<T[]>(new T[count]);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace stat_detail
}  // namespace vn
