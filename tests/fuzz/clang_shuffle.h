// The fuzz build compiles the kernels with clang, which lacks GCC's
// __builtin_shuffle (it has __builtin_shufflevector, which takes constant
// indices, not a mask vector). This header, forced into that build only,
// supplies it as an element-wise selection: data movement only, so results
// are the same bits, just slower.
#pragma once
#if defined(__clang__) && defined(__cplusplus)

template <typename V, typename M>
inline V vn_fuzz_shuffle(V a, M mask) {
    constexpr int n = static_cast<int>(sizeof(V) / sizeof(a[0]));
    V r = a;
    for (int i = 0; i < n; ++i) r[i] = a[static_cast<int>(mask[i]) & (n - 1)];
    return r;
}

template <typename V, typename M>
inline V vn_fuzz_shuffle(V a, V b, M mask) {
    constexpr int n = static_cast<int>(sizeof(V) / sizeof(a[0]));
    V r = a;
    for (int i = 0; i < n; ++i) {
        const int k = static_cast<int>(mask[i]) & (2 * n - 1);
        r[i] = k < n ? a[k] : b[k - n];
    }
    return r;
}

#define __builtin_shuffle vn_fuzz_shuffle

#endif
