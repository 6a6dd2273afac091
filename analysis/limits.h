// The largest block of memory a single call may take.
//
// Every result array the frame creates and every scratch buffer a kernel
// allocates is one block of at most kMaxBlockBytes bytes (2^30, that is
// 134,217,728 doubles). Sizes are multiplied in 64 bits and compared with the
// bound before anything is allocated, so a count near 2^31 or a product of
// two large sizes fails cleanly with "not enough memory" instead of wrapping
// the 32-bit byte counts of a 32-bit process or really taking gigabytes.
// A call therefore allocates at most its result arrays plus the few scratch
// blocks its kernel documents, each under this bound.
#pragma once

#include <cstdint>

namespace vn {

constexpr std::uint64_t kMaxBlockBytes = std::uint64_t(1) << 30;

// True when `count` elements of `elementSize` bytes fit in one block.
constexpr bool BlockFits(std::uint64_t count, std::uint64_t elementSize) {
    return elementSize != 0 && count <= kMaxBlockBytes / elementSize;
}

// Element count of an array with the given dimension sizes: 0 when any size
// is 0, UINT64_MAX when a size is negative or the product exceeds
// kMaxBlockBytes (so every later BlockFits check fails too). The product is
// never formed beyond the bound, so 64 bits cannot overflow.
inline std::uint64_t ElementCount(const std::int64_t* sizes, int dims) {
    for (int d = 0; d < dims; ++d)
        if (sizes[d] < 0) return UINT64_MAX;
    for (int d = 0; d < dims; ++d)
        if (sizes[d] == 0) return 0;
    std::uint64_t count = 1;
    for (int d = 0; d < dims; ++d) {
        const std::uint64_t size = static_cast<std::uint64_t>(sizes[d]);
        if (size > kMaxBlockBytes || count > kMaxBlockBytes / size) return UINT64_MAX;
        count *= size;
    }
    return count;
}

}  // namespace vn
