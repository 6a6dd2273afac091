// The table of every kernel, generated at build time from the headers.
#include "kernel_args.h"

#include KERNEL_TABLE_HEADERS

namespace vn_fuzz {

const std::vector<KernelRow>& Kernels() {
#define VN_KERNEL_ROW(group, name, ...) {group, name, __VA_ARGS__},
    static const std::vector<KernelRow> rows = {
#include KERNEL_TABLE_ROWS
    };
#undef VN_KERNEL_ROW
    return rows;
}

}  // namespace vn_fuzz
