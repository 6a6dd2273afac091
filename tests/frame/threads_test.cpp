// Two client threads of the multithreaded apartment, each with objects of
// its own, calling at the same time, get bit for bit the results of one
// thread. (The noise generators share one state by design and are left out.)
#include "client.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace vntest;

namespace {

struct Job {
    const wchar_t* progId;
    const wchar_t* method;
    std::function<std::vector<Var>()> args;  // built afresh in each thread
    int resultArg;                           // -1: the return value; else a by-reference argument
};

std::vector<double> Ramp(int n, double a, double b) {
    std::vector<double> v(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) v[static_cast<std::size_t>(i)] = a * i + b * (i % 7);
    return v;
}

const std::vector<Job>& Jobs() {
    static const std::vector<Job> jobs = {
        {L"VNAnalysisControlsLib.VNMatrix.1", L"InvMatrix",
         [] {
             std::vector<double> a = Ramp(36, 0.1, 1.0);
             for (int i = 0; i < 6; ++i) a[static_cast<std::size_t>(i * 7)] += 10.0;
             return std::vector<Var>{DoubleMatrix(6, 6, a)};
         },
         -1},
        {L"VNAnalysisControlsLib.VNDSP.1", L"FHT", [] { return std::vector<Var>{DoubleArray(Ramp(256, 0.3, 1.5))}; }, -1},
        {L"VNAnalysisControlsLib.VNStat.1", L"Moment", [] { return std::vector<Var>{DoubleArray(Ramp(100, 0.01, 0.2)), Var(5)}; }, -1},
        {L"VNAnalysisControlsLib.VNArray.1", L"Sort1D", [] { return std::vector<Var>{DoubleArray(Ramp(500, -0.7, 3.0)), Var(1)}; }, -1},
    };
    return jobs;
}

std::vector<double> RunJob(const Control& control, const Job& job) {
    std::vector<Var> args = job.args();
    const Outcome o = CallWith(control, job.method, args);
    if (!o.ok()) {
        ADD_FAILURE() << Narrow(job.method) << " failed: " << std::hex << o.code << " " << Narrow(o.description);
        return {};
    }
    return Doubles(job.resultArg < 0 ? o.result : args[static_cast<std::size_t>(job.resultArg)]);
}

TEST(Threads, TwoMultithreadedClientsMatchOneThread) {
    std::vector<std::vector<double>> reference;
    {
        for (const Job& job : Jobs()) {
            Control control(job.progId);
            ASSERT_TRUE(control.valid());
            reference.push_back(RunJob(control, job));
            ASSERT_FALSE(reference.back().empty()) << Narrow(job.method);
        }
    }
    // Thread t starts at job t and walks the list, so the two threads work
    // on different controls and methods at the same moment.
    int mismatches[2] = {0, 0}, failures[2] = {0, 0};
    auto worker = [&](int t) {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            std::vector<std::unique_ptr<Control>> controls;
            for (const Job& job : Jobs()) controls.push_back(std::make_unique<Control>(job.progId));
            for (int round = 0; round < 200; ++round) {
                const std::size_t j = static_cast<std::size_t>(round + t) % Jobs().size();
                if (!controls[j]->valid()) {
                    ++failures[t];
                    continue;
                }
                const std::vector<double> got = RunJob(*controls[j], Jobs()[j]);
                if (got.size() != reference[j].size() ||
                    std::memcmp(got.data(), reference[j].data(), got.size() * sizeof(double)) != 0)
                    ++mismatches[t];
            }
        }
        CoUninitialize();
    };
    std::thread a(worker, 0), b(worker, 1);
    a.join();
    b.join();
    for (int t = 0; t < 2; ++t) {
        EXPECT_EQ(failures[t], 0) << "thread " << t;
        EXPECT_EQ(mismatches[t], 0) << "thread " << t;
    }
}

}  // namespace
