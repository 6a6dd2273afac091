// Every kernel of the table, with each of its heap allocations failing in
// turn: the kernel must return -20001 (or, where it has a path without the
// memory, its ordinary status), let no exception escape, and free whatever
// it had taken. The global allocation functions are replaced in this
// executable by counting ones that can refuse the k-th request.
#include "kernel_args.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <set>
#include <string>

namespace {

bool g_counting = false;
long g_requests = 0;  // allocation requests since counting started
long g_failAt = 0;    // 1-based request to refuse; 0 refuses none
long g_live = 0;      // blocks taken and not yet given back while counting

void* Take(std::size_t size) {
    if (g_counting) {
        ++g_requests;
        if (g_requests == g_failAt) return nullptr;
    }
    void* p = std::malloc(size ? size : 1);
    if (p && g_counting) ++g_live;
    return p;
}

void Give(void* p) {
    if (!p) return;
    if (g_counting) --g_live;
    std::free(p);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* p = Take(size)) return p;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Take(size); }
void operator delete(void* p) noexcept { Give(p); }
void operator delete[](void* p) noexcept { Give(p); }
void operator delete(void* p, std::size_t) noexcept { Give(p); }
void operator delete[](void* p, std::size_t) noexcept { Give(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Give(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Give(p); }

namespace {

struct Outcome {
    vn::AnalysisStatus status = 0;
    long requests = 0;
    long live = 0;
    bool escaped = false;
};

void Arm() {
    g_requests = 0;
    g_live = 0;
    g_counting = true;
}
void Disarm() { g_counting = false; }

// One call of a kernel on the arguments of `config`, refusing the kernel's
// request number failAt (the harness's own buffers are not counted).
Outcome Call(const vn_fuzz::KernelRow& row, const vn_fuzz::Fixed& config, long failAt) {
    Outcome r;
    vn_fuzz::Args args(config);
    g_failAt = failAt;
    vn_fuzz::Args::onStart = Arm;
    vn_fuzz::Args::onStop = Disarm;
    try {
        row.call(args);
    } catch (...) {
        r.escaped = true;
    }
    Disarm();
    vn_fuzz::Args::onStart = nullptr;
    vn_fuzz::Args::onStop = nullptr;
    r.status = args.status();
    r.requests = g_requests;
    r.live = g_live;
    return r;
}

TEST(AllocationFailure, EveryKernelReportsMemoryAndFreesItsScratch) {
    // Sizes and free integers that get most kernels past their checks: a
    // power of two, small orders, selector values 0..2.
    const vn_fuzz::Fixed configs[] = {{8, 1, 7u}, {8, 0, 11u}, {16, 2, 13u}, {4, 1, 17u}, {6, 3, 19u}};
    int exercised = 0;
    std::set<std::string> kernels;
    for (const vn_fuzz::KernelRow& row : vn_fuzz::Kernels()) {
        for (const vn_fuzz::Fixed& config : configs) {
            const Outcome base = Call(row, config, 0);
            ASSERT_FALSE(base.escaped) << row.name << ": exception with no allocation refused";
            EXPECT_EQ(base.live, 0) << row.name << ": leaked with no allocation refused";
            for (long k = 1; k <= base.requests && k <= 64; ++k) {
                const Outcome r = Call(row, config, k);
                EXPECT_FALSE(r.escaped) << row.name << ": exception escaped, request " << k;
                EXPECT_TRUE(r.status == vn::kErrNoMemory || r.status == base.status)
                    << row.name << ": status " << r.status << " with request " << k << " refused (ordinary "
                    << base.status << ")";
                EXPECT_EQ(r.live, 0) << row.name << ": " << r.live << " blocks kept with request " << k
                                     << " refused";
                if (r.status == vn::kErrNoMemory) {
                    ++exercised;
                    kernels.insert(row.name);
                }
            }
        }
    }
    std::string names;
    for (const std::string& k : kernels) names += " " + k;
    std::printf("%d refusals reported as -20001 by %zu kernels:%s\n", exercised, kernels.size(), names.c_str());
    EXPECT_GE(kernels.size(), 25u);
}

}  // namespace
