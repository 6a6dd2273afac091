// Arguments for any kernel, drawn either from fuzzer bytes or from a fixed
// configuration, and the table of every kernel (generated from the headers).
//
// The harness does not know each kernel's buffer contract, so every pointer
// gets a buffer of kBufferElements, certainly enough for sizes up to kMaxSize
// in one or two dimensions. What it finds is therefore what the parameters
// that are not sizes (orders, indices, selectors, shifts, any double) can
// do: reads and writes outside the buffers, undefined behaviour, loops that
// do not end, leaks, statuses that are not message codes, and writes into
// inputs that the kernel takes as const.
#pragma once

#include "analysis/status.h"

#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace vn_fuzz {

constexpr std::int32_t kMaxSize = 16;
constexpr std::size_t kBufferElements = 4 * (kMaxSize + 2) * (kMaxSize + 2) + 64;

// A fixed configuration (the allocation-failure test): every size, every
// free integer, doubles from a short cycle, buffers of pseudo-random values.
struct Fixed {
    std::int32_t size;
    std::int32_t free;
    unsigned seed;
};

class Args {
public:
    Args(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}
    explicit Args(const Fixed& fixed) : fixed_(true), config_(fixed), lcg_(fixed.seed) {}

    std::uint8_t Byte() { return pos_ < size_ ? data_[pos_++] : 0; }

    std::int32_t Size() {
        if (fixed_) return config_.size;
        return static_cast<std::int32_t>(Byte() % (kMaxSize + 4)) - 3;
    }

    std::int32_t Free() {
        if (fixed_) return config_.free;
        static const std::int32_t kEdges[] = {INT32_MIN, INT32_MIN + 1, -65536, -2, -1, 0, 1, 2, 3, 4, 7, 8,
                                              46341, 65536, 1 << 29, 1 << 30, INT32_MAX - 1, INT32_MAX};
        const std::uint8_t b = Byte();
        switch (b % 4) {
        case 0: return static_cast<std::int32_t>(Byte() % (kMaxSize + 4)) - 3;
        case 1: return kEdges[Byte() % (sizeof kEdges / sizeof kEdges[0])];
        case 2: {
            std::uint32_t v = 0;
            for (int i = 0; i < 4; ++i) v = v << 8 | Byte();
            return static_cast<std::int32_t>(v);
        }
        default: return static_cast<std::int32_t>(b / 4 % 12) - 2;
        }
    }

    double Double() {
        if (fixed_) {
            static const double kCycle[] = {0.25, 2.0, 0.1, 3.0, 0.4, 1.5};
            return kCycle[doubles_++ % 6];
        }
        static const double kEdges[] = {0.0, -0.0, 1.0, -1.0, 0.5, 2.0, 0.1, 100.0, 360.0, -360.0, 1e-300, 4.9e-324,
                                        1e300, -1e300, std::numeric_limits<double>::max(),
                                        std::numeric_limits<double>::infinity(),
                                        -std::numeric_limits<double>::infinity(),
                                        std::numeric_limits<double>::quiet_NaN(), 2147483648.0, -2147483649.0};
        const std::uint8_t b = Byte();
        switch (b % 4) {
        case 0: return kEdges[Byte() % (sizeof kEdges / sizeof kEdges[0])];
        case 1: {
            std::uint64_t v = 0;
            for (int i = 0; i < 8; ++i) v = v << 8 | Byte();
            double d;
            std::memcpy(&d, &v, sizeof d);
            return d;
        }
        default: return (static_cast<int>(Byte()) - 128) / 16.0;
        }
    }

    // Buffers start from fixed tables (copied, so that an execution costs
    // little beyond the kernel itself); the fuzzer's bytes set the leading
    // elements, where the small sizes look.
    double* DoubleBuffer(bool isConst) {
        buffers_.emplace_back(kBufferElements);
        std::vector<double>& v = buffers_.back();
        const std::uint8_t mode = fixed_ ? 0 : Byte() % 4;
        const std::vector<double>& table = mode == 1 ? Tables().ramp : Tables().random;
        if (mode != 2) std::memcpy(v.data(), table.data(), kBufferElements * sizeof(double));
        if (fixed_) {
            for (std::size_t i = 0; i < 64; ++i) v[(i * 37 + config_.seed) % kBufferElements] = Random();
        } else if (mode == 3) {
            for (std::size_t i = 0; i < 64; ++i) v[i] = Double();
        }
        if (isConst) watched_.push_back({&v, v});
        return v.data();
    }

    std::int32_t* IntBuffer(bool isConst) {
        intBuffers_.emplace_back(kBufferElements);
        std::vector<std::int32_t>& v = intBuffers_.back();
        const std::uint8_t mode = fixed_ ? 0 : Byte() % 4;
        const std::vector<std::int32_t>& table = mode == 1 ? Tables().fiveLevels : Tables().twoLevels;
        std::memcpy(v.data(), table.data(), kBufferElements * sizeof(std::int32_t));
        if (mode == 2) {
            for (std::size_t i = 0; i < 64; ++i) v[i] = static_cast<std::int32_t>(Byte() % 8) - 1;
        } else if (mode == 3) {
            for (std::size_t i = 0; i < 16; ++i) v[i] = Free();
        }
        if (isConst) watchedInts_.push_back({&v, v});
        return v.data();
    }

    // Called right before and right after the kernel itself (the
    // allocation-failure test counts only the kernel's own requests).
    static inline void (*onStart)() = nullptr;
    static inline void (*onStop)() = nullptr;
    void Start() {
        if (onStart) onStart();
    }
    void Stop() {
        if (onStop) onStop();
    }

    // A status must be success, a warning, or the code of a message.
    void CheckStatus(vn::AnalysisStatus status) {
        status_ = status;
        const std::int32_t c = -status;
        const bool known = status >= 0 || (c >= 20001 && c <= 20103) || c == 20999 || (c >= 30000 && c <= 30104);
        if (!known) Fail("status that is not a message code");
    }

    // Inputs taken as const must come back as they went in.
    void CheckInputsUnchanged() {
        for (auto& w : watched_)
            if (std::memcmp(w.first->data(), w.second.data(), w.second.size() * sizeof(double)) != 0)
                Fail("const input changed");
        for (auto& w : watchedInts_)
            if (*w.first != w.second) Fail("const input changed");
    }

    vn::AnalysisStatus status() const { return status_; }
    std::string failure;

private:
    struct Fill {
        std::vector<double> random, ramp;
        std::vector<std::int32_t> twoLevels, fiveLevels;
    };
    static const Fill& Tables() {
        static const Fill fill = [] {
            Fill f;
            unsigned lcg = 12345u;
            for (std::size_t i = 0; i < kBufferElements; ++i) {
                lcg = lcg * 1103515245u + 12345u;
                f.random.push_back(static_cast<double>((lcg >> 8) & 0xFFFF) / 32768.0 - 1.0);
                f.ramp.push_back(static_cast<double>(i % 17) * 0.37 - 1.0);
                f.twoLevels.push_back(static_cast<std::int32_t>(i % 2));
                f.fiveLevels.push_back(static_cast<std::int32_t>(i % 5));
            }
            return f;
        }();
        return fill;
    }

    double Random() {
        lcg_ = lcg_ * 1103515245u + 12345u;
        return static_cast<double>((lcg_ >> 8) & 0xFFFF) / 32768.0 - 1.0;
    }
    void Fail(const char* what) {
        if (failure.empty()) failure = what;
    }

    const std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0, pos_ = 0;
    bool fixed_ = false;
    Fixed config_{};
    unsigned lcg_ = 12345u;
    unsigned doubles_ = 0;
    vn::AnalysisStatus status_ = 0;
    // Deques: adding a buffer never moves the ones handed out before.
    std::deque<std::vector<double>> buffers_;
    std::deque<std::vector<std::int32_t>> intBuffers_;
    std::vector<std::pair<std::vector<double>*, std::vector<double>>> watched_;
    std::vector<std::pair<std::vector<std::int32_t>*, std::vector<std::int32_t>>> watchedInts_;
};

struct KernelRow {
    const char* group;
    const char* name;
    void (*call)(Args&);
};

// Every kernel of every public header (kernel_table.inc).
const std::vector<KernelRow>& Kernels();

}  // namespace vn_fuzz
