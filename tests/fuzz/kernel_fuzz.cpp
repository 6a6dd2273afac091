// libFuzzer entry: the first two bytes choose a kernel of the table (of the
// group named by VN_FUZZ_GROUP when set), the rest are its arguments.
#include "kernel_args.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

std::vector<vn_fuzz::KernelRow> g_rows;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const char* group = std::getenv("VN_FUZZ_GROUP");
    for (const vn_fuzz::KernelRow& row : vn_fuzz::Kernels())
        if (!group || !*group || std::strcmp(group, row.group) == 0) g_rows.push_back(row);
    if (g_rows.empty()) {
        std::fprintf(stderr, "no kernels in group %s\n", group ? group : "");
        std::abort();
    }
    std::fprintf(stderr, "fuzzing %zu kernels\n", g_rows.size());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const vn_fuzz::KernelRow& row = g_rows[(data[0] | data[1] << 8) % g_rows.size()];
    vn_fuzz::Args args(data + 2, size - 2);
    row.call(args);
    args.CheckInputsUnchanged();
    if (!args.failure.empty()) {
        std::fprintf(stderr, "%s/%s: %s (status %d)\n", row.group, row.name, args.failure.c_str(),
                     static_cast<int>(args.status()));
        std::abort();
    }
    return 0;
}
