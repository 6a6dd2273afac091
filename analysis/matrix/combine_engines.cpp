// The engines of the row combination behind the LU family, and the choice
// among them at run time (the same scheme as the transform engines).
#include "analysis/matrix/matrix_internal.h"

#include <cstring>

// Keep every product and difference separately rounded: the wide
// instruction sets would otherwise let the compiler fuse them.
#pragma GCC optimize("fp-contract=off")

// Wide builds where GCC can target them per function. On Windows the build
// must also encode aligned vector moves as unaligned ones, because GCC there
// may spill wide vectors to stack slots aligned to 16 bytes (64-bit) or
// 4 bytes (32-bit) only; without that option the wide builds are left out.
#if defined(__GNUC__) && !defined(__clang__) && (defined(__x86_64__) || defined(__i386__)) && \
    (!defined(_WIN32) || defined(VN_UNALIGNED_VECTOR_MOVES))
#define VN_COMBINE_HAVE_WIDE 1
#else
#define VN_COMBINE_HAVE_WIDE 0
#endif

namespace vn {
namespace matrix_detail {

namespace {

void CombineSubBaseline(double* dst, Index w, const double* s, Index count, const double* b, Index ldb) {
    CombineRows<false>(dst, w, s, count, b, ldb);
}

}  // namespace

#if VN_COMBINE_HAVE_WIDE
#pragma GCC push_options
#pragma GCC target("avx2")
namespace combine_avx2 {
#define VN_COMBINE_LANES 4
#include "analysis/matrix/combine_wide.inc"
#undef VN_COMBINE_LANES
}  // namespace combine_avx2
#pragma GCC pop_options
#pragma GCC push_options
#pragma GCC target("avx512f,avx512dq,avx512vl")
namespace combine_avx512 {
#define VN_COMBINE_LANES 8
#include "analysis/matrix/combine_wide.inc"
#undef VN_COMBINE_LANES
}  // namespace combine_avx512
#pragma GCC pop_options
#endif

namespace {

bool Supports(LUEngine e) {
    switch (e) {
        case LUEngine::kBaseline:
            return true;
#if VN_COMBINE_HAVE_WIDE
        case LUEngine::kAvx2:
            __builtin_cpu_init();
            return __builtin_cpu_supports("avx2") != 0;
        case LUEngine::kAvx512:
            __builtin_cpu_init();
            return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512dq") != 0 &&
                   __builtin_cpu_supports("avx512vl") != 0;
#endif
        default:
            return false;
    }
}

}  // namespace

bool LUEngineAvailable(LUEngine e) {
    static const bool avx2 = Supports(LUEngine::kAvx2);
    static const bool avx512 = Supports(LUEngine::kAvx512);
    switch (e) {
        case LUEngine::kBaseline:
            return true;
        case LUEngine::kAvx2:
            return avx2;
        case LUEngine::kAvx512:
            return avx512;
    }
    return false;
}

LUEngine DefaultLUEngine() {
    static const LUEngine best = LUEngineAvailable(LUEngine::kAvx512) ? LUEngine::kAvx512
                                 : LUEngineAvailable(LUEngine::kAvx2) ? LUEngine::kAvx2
                                                                      : LUEngine::kBaseline;
    return best;
}

CombineSubFn CombineSubFor(LUEngine e) {
#if VN_COMBINE_HAVE_WIDE
    if (e == LUEngine::kAvx512 && LUEngineAvailable(e)) return combine_avx512::CombineSub;
    if (e == LUEngine::kAvx2 && LUEngineAvailable(e)) return combine_avx2::CombineSub;
#endif
    return CombineSubBaseline;
}

}  // namespace matrix_detail
}  // namespace vn
