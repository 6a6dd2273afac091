// What a late-bound host pays for a call through the automation frame, next
// to the same kernel called directly in this process.
//
// The controls are created by ProgID (the module must be registered) and
// called through IDispatch::Invoke with safe arrays, as a script host does.
// Cases: a frame-only call (MaxArray on one element), GetIDsOfNames for a
// method name, AddArray on 10^3 and 10^6 elements, FFT at 2^10, 2^16, 2^20
// and LinEqs at n = 100 and 500. The direct side calls the kernel on the
// same data; where the method keeps the host's input (FFT), the direct side
// copies the input first as a host would. Times are CPU time of the calling
// thread (GetThreadTimes), each case repeated for at least 0.1 s, in
// interleaved rounds (through COM, then directly). Output: one line
//   ratio bench_com_<arch> <case> ours_us=<COM> ref=kernel ref_us=<direct> ratio=.. spread=..
// per case (GetIDsOfNames is set against the frame-only call instead).
#include "analysis/array/array_ops.h"
#include "analysis/dsp/fft.h"
#include "analysis/matrix/linalg.h"

#include <windows.h>
#include <oleauto.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

#if defined(_WIN64)
const char kProgram[] = "bench_com_x64";
#else
const char kProgram[] = "bench_com_x86";
#endif

constexpr int kRounds = 5;

double ThreadSeconds() {
    FILETIME created, exited, kernel, user;
    GetThreadTimes(GetCurrentThread(), &created, &exited, &kernel, &user);
    auto value = [](const FILETIME& f) {
        return static_cast<double>((static_cast<unsigned long long>(f.dwHighDateTime) << 32) | f.dwLowDateTime);
    };
    return 1e-7 * (value(kernel) + value(user));
}

// Microseconds of CPU time per call.
double MicrosPerCall(const std::function<void()>& f) {
    f();  // warm
    long reps = 1;
    for (;;) {
        const double t0 = ThreadSeconds();
        for (long k = 0; k < reps; ++k) f();
        const double t = ThreadSeconds() - t0;
        if (t >= 0.1) return 1e6 * t / static_cast<double>(reps);
        reps *= t > 0.02 ? 2 : 10;
    }
}

std::vector<double> Random(std::size_t n, unsigned seed) {
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    std::vector<double> v(n);
    for (double& x : v) x = u(rng);
    return v;
}

// A variant holding a safe array of doubles (1-D, or 2-D with the host's
// dimension order: rows first).
VARIANT ArrayVariant(const std::vector<double>& data, ULONG rows = 0, ULONG cols = 0) {
    VARIANT v;
    VariantInit(&v);
    SAFEARRAY* sa;
    if (rows == 0) {
        sa = SafeArrayCreateVector(VT_R8, 0, static_cast<ULONG>(data.size()));
    } else {
        SAFEARRAYBOUND b[2] = {{rows, 0}, {cols, 0}};
        sa = SafeArrayCreate(VT_R8, 2, b);
    }
    void* p = nullptr;
    SafeArrayAccessData(sa, &p);
    std::memcpy(p, data.data(), data.size() * sizeof(double));
    SafeArrayUnaccessData(sa);
    V_VT(&v) = VT_ARRAY | VT_R8;
    V_ARRAY(&v) = sa;
    return v;
}

IDispatch* Create(const wchar_t* progId) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(progId, &clsid))) return nullptr;
    IDispatch* d = nullptr;
    if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, reinterpret_cast<void**>(&d))))
        return nullptr;
    return d;
}

DISPID IdOf(IDispatch* d, const wchar_t* name) {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[1] = {const_cast<LPOLESTR>(name)};
    d->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

// Invoke with arguments in parameter order; the result is cleared.
bool Call(IDispatch* d, DISPID id, std::vector<VARIANT*> args) {
    std::vector<VARIANT> reversed;
    for (auto it = args.rbegin(); it != args.rend(); ++it) reversed.push_back(**it);
    DISPPARAMS params = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    VARIANT result;
    VariantInit(&result);
    const HRESULT hr = d->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, &result, nullptr, nullptr);
    VariantClear(&result);
    return hr == S_OK;
}

struct Case {
    std::string name;
    std::function<void()> com;
    std::function<void()> direct;  // empty: set against the frame-only call
};

}  // namespace

int main() {
    if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 1;
    IDispatch* array = Create(L"VNAnalysisControlsLib.VNArray.1");
    IDispatch* dsp = Create(L"VNAnalysisControlsLib.VNDSP.1");
    IDispatch* matrix = Create(L"VNAnalysisControlsLib.VNMatrix.1");
    if (!array || !dsp || !matrix) {
        std::printf("the module is not registered (regsvr32 VNMATH.dll first)\n");
        return 1;
    }
    const DISPID maxArray = IdOf(array, L"MaxArray"), addArray = IdOf(array, L"AddArray");
    const DISPID fft = IdOf(dsp, L"FFT"), linEqs = IdOf(matrix, L"LinEqs");
    bool ok = true;

    std::vector<Case> cases;
    std::vector<VARIANT> keep;  // inputs, cleared at the end
    keep.reserve(32);           // never reallocated: the cases hold pointers into it
    const std::vector<double> one = {0.5};
    keep.push_back(ArrayVariant(one));
    VARIANT* oneVar = &keep.back();
    cases.push_back({"frame-only (MaxArray, 1 element)", [&, oneVar] { ok &= Call(array, maxArray, {oneVar}); },
                     [&] {
                         double v;
                         vn::LargestValue(one.data(), 1, &v);
                     }});
    cases.push_back({"GetIDsOfNames", [&] { IdOf(array, L"maxmin2d"); }, {}});

    static std::vector<double> add[2][2], addOut[2];
    const int addSizes[2] = {1000, 1000000};
    for (int s = 0; s < 2; ++s) {
        const int n = addSizes[s];
        add[s][0] = Random(n, 1);
        add[s][1] = Random(n, 2);
        addOut[s].resize(n);
        keep.push_back(ArrayVariant(add[s][0]));
        VARIANT* x = &keep.back();
        keep.push_back(ArrayVariant(add[s][1]));
        VARIANT* y = &keep.back();
        cases.push_back({std::string("AddArray/n=") + (s ? "10^6" : "10^3"),
                         [&, x, y] { ok &= Call(array, addArray, {x, y}); },
                         [s, n] { vn::AddArrays(add[s][0].data(), add[s][1].data(), n, addOut[s].data()); }});
    }

    static std::vector<double> fftIn[3][2], fftWork[3][2];
    const int fftLogs[3] = {10, 16, 20};
    for (int s = 0; s < 3; ++s) {
        const int n = 1 << fftLogs[s];
        for (int k = 0; k < 2; ++k) {
            fftIn[s][k] = Random(n, 3 + k);
            fftWork[s][k].resize(n);
        }
        keep.push_back(ArrayVariant(fftIn[s][0]));
        VARIANT* xr = &keep.back();
        keep.push_back(ArrayVariant(fftIn[s][1]));
        VARIANT* xi = &keep.back();
        cases.push_back({"FFT/2^" + std::to_string(fftLogs[s]),
                         [&, xr, xi] {
                             VARIANT yr, yi, ryr, ryi;
                             VariantInit(&yr);
                             VariantInit(&yi);
                             V_VT(&ryr) = VT_BYREF | VT_VARIANT;
                             V_VARIANTREF(&ryr) = &yr;
                             V_VT(&ryi) = VT_BYREF | VT_VARIANT;
                             V_VARIANTREF(&ryi) = &yi;
                             ok &= Call(dsp, fft, {xr, xi, &ryr, &ryi});
                             VariantClear(&yr);
                             VariantClear(&yi);
                         },
                         [s, n] {
                             std::memcpy(fftWork[s][0].data(), fftIn[s][0].data(), n * sizeof(double));
                             std::memcpy(fftWork[s][1].data(), fftIn[s][1].data(), n * sizeof(double));
                             vn::ComplexFFT(fftWork[s][0].data(), fftWork[s][1].data(), n);
                         }});
    }

    static std::vector<double> la[2], ly[2], lx[2];
    const int linSizes[2] = {100, 500};
    for (int s = 0; s < 2; ++s) {
        const int n = linSizes[s];
        la[s] = Random(static_cast<std::size_t>(n) * n, 7);
        ly[s] = Random(n, 8);
        lx[s].resize(n);
        keep.push_back(ArrayVariant(la[s], n, n));
        VARIANT* a = &keep.back();
        keep.push_back(ArrayVariant(ly[s]));
        VARIANT* y = &keep.back();
        cases.push_back({"LinEqs/n=" + std::to_string(n), [&, a, y] { ok &= Call(matrix, linEqs, {a, y}); },
                         [s, n] { vn::LinEqs(la[s].data(), ly[s].data(), n, lx[s].data()); }});
    }

    std::vector<std::vector<double>> com(cases.size()), direct(cases.size());
    for (int round = 0; round < kRounds; ++round)
        for (std::size_t c = 0; c < cases.size(); ++c) {
            com[c].push_back(MicrosPerCall(cases[c].com));
            if (cases[c].direct) direct[c].push_back(MicrosPerCall(cases[c].direct));
        }
    if (!ok) std::printf("some call through the frame failed\n");

    auto print = [](const std::string& name, const std::vector<double>& ours, const char* ref,
                    const std::vector<double>& theirs) {
        std::vector<double> ratios;
        for (std::size_t k = 0; k < ours.size() && k < theirs.size(); ++k) ratios.push_back(ours[k] / theirs[k]);
        std::sort(ratios.begin(), ratios.end());
        const double median = ratios[ratios.size() / 2];
        const double o = *std::min_element(ours.begin(), ours.end());
        const double r = *std::min_element(theirs.begin(), theirs.end());
        std::string label = name;
        for (char& ch : label)
            if (ch == ' ') ch = '_';
        std::printf("ratio %s %s ours_us=%.3f ref=%s ref_us=%.3f ratio=%.3f spread=%.1f\n", kProgram, label.c_str(), o,
                    ref, r, o / r, 50.0 * (ratios.back() - ratios.front()) / median);
    };
    for (std::size_t c = 0; c < cases.size(); ++c) {
        if (cases[c].direct)
            print(cases[c].name, com[c], "kernel", direct[c]);
        else
            print(cases[c].name, com[c], "frame-only-call", com[0]);
    }

    for (VARIANT& v : keep) VariantClear(&v);
    array->Release();
    dsp->Release();
    matrix->Release();
    CoUninitialize();
    return ok ? 0 : 1;
}
