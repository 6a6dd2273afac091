// A hostile host: every method of every control (from the type library)
// called with seeded random argument lists: every variant type by value and
// by reference, nested arrays, 0 to 3 dimensions with odd lower bounds, null
// arrays, huge and negative counts as numbers and strings, NaN and Inf,
// missing and extra arguments, unknown named arguments. After each call:
//   - the process is alive and the call took less than the time limit (a
//     watchdog ends the process, naming the call, when it does not);
//   - a failure is a dispatch-layer DISP_E_* (or E_NOTIMPL), an error of the
//     control facility with exactly its message text, or a system code
//     without description (facility dispatch, E_OUTOFMEMORY, E_INVALIDARG);
//     never E_UNEXPECTED, which would mean an unforeseen C++ exception;
//   - no array reachable from the arguments is left locked;
//   - by-value inputs are unchanged, and by-reference outputs too when the
//     call failed;
//   - the floating-point control word is what it was.
// VN_HOSTILE_CALLS sets the calls per method (default 12) and
// VN_HOSTILE_SEED the first seed (default 1) for longer runs.
#include "client.h"

#include "frame/errors.h"

#include <gtest/gtest.h>

#include <float.h>
#include <psapi.h>

#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

using namespace vntest;

namespace {

const wchar_t* const kProgIds[] = {L"VNAnalysisControlsLib.VNArray.1", L"VNAnalysisControlsLib.VNComplex.1",
                                   L"VNAnalysisControlsLib.VNMatrix.1", L"VNAnalysisControlsLib.VNStat.1",
                                   L"VNAnalysisControlsLib.VNDSP.1"};

struct Method {
    std::wstring name;
    DISPID id;
    std::vector<bool> out;  // per parameter: by reference
};

// The methods of a control as its type library describes them.
std::vector<Method> MethodsOf(const Control& control) {
    std::vector<Method> methods;
    ITypeInfo* info = nullptr;
    if (FAILED(control.get()->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info))) return methods;
    TYPEATTR* attr = nullptr;
    info->GetTypeAttr(&attr);
    for (UINT f = 0; f < attr->cFuncs; ++f) {
        FUNCDESC* fd = nullptr;
        if (FAILED(info->GetFuncDesc(f, &fd))) continue;
        BSTR name = nullptr;
        UINT got = 0;
        info->GetNames(fd->memid, &name, 1, &got);
        Method m{name ? name : L"", fd->memid, {}};
        SysFreeString(name);
        for (SHORT p = 0; p < fd->cParams; ++p) m.out.push_back(fd->lprgelemdescParam[p].tdesc.vt == VT_PTR);
        // The about box is user interface, not a computation.
        if (fd->memid > 0) methods.push_back(m);
        info->ReleaseFuncDesc(fd);
    }
    info->ReleaseTypeAttr(attr);
    info->Release();
    return methods;
}

// ------------------------------------------------------------ watchdog

std::atomic<ULONGLONG> g_callStart{0};
std::string g_callLabel;
DWORD g_limitMs = 20000;

DWORD WINAPI Watchdog(void*) {
    for (;;) {
        Sleep(250);
        const ULONGLONG start = g_callStart.load();
        if (start != 0 && GetTickCount64() - start > g_limitMs) {
            std::fprintf(stderr, "\nHUNG: %s ran longer than %lu ms\n", g_callLabel.c_str(), g_limitMs);
            std::fflush(stderr);
            TerminateProcess(GetCurrentProcess(), 3);
        }
    }
}

// ------------------------------------------------------------ arguments

// One call's arguments and everything they refer to.
struct Case {
    std::vector<Var> args;        // parameter order (extra ones at the end)
    std::deque<Var> targets;      // what by-reference arguments point to
    std::vector<DISPID> named;    // named ids of the last named.size() args
    std::string text;             // for messages
};

class Generator {
public:
    explicit Generator(unsigned seed) : rng_(seed) {}

    int Pick(int n) { return static_cast<int>(rng_() % static_cast<unsigned>(n)); }

    double Number() {
        static const double kValues[] = {0.0, 1.0, -1.0, 2.0, 3.0, 0.5, 4.0, 8.0, 16.0, -5.0, 100.0, 360.0,
                                         1e-300, 1e300, 536870912.0, 536870913.0, 1073741824.0, 2147483647.0,
                                         -2147483648.0, 65536.0, 46341.0, 4294967296.0, 1e10,
                                         std::numeric_limits<double>::quiet_NaN(),
                                         std::numeric_limits<double>::infinity(),
                                         -std::numeric_limits<double>::infinity()};
        if (Pick(3) == 0) return Pick(12) - 2;
        return kValues[Pick(sizeof kValues / sizeof kValues[0])];
    }

    std::wstring Text() {
        static const wchar_t* const kTexts[] = {L"3", L"-1", L"0.25", L"1073741824", L"536870913", L"2147483648",
                                                L"1e308", L"NaN", L"abc", L"", L"12:00:00.5", L"1/2/2000",
                                                L"  7  ", L"65536"};
        return kTexts[Pick(sizeof kTexts / sizeof kTexts[0])];
    }

    // A scalar of any variant type.
    Var Scalar() {
        Var v;
        VARIANT* p = v.get();
        const double d = Number();
        switch (Pick(17)) {
        case 0: break;  // VT_EMPTY
        case 1: V_VT(p) = VT_NULL; break;
        case 2: V_VT(p) = VT_ERROR; V_ERROR(p) = DISP_E_PARAMNOTFOUND; break;
        case 3: V_VT(p) = VT_I2; V_I2(p) = static_cast<SHORT>(Pick(7) - 2); break;
        case 4: V_VT(p) = VT_I4; V_I4(p) = std::isfinite(d) && std::fabs(d) < 2e9 ? static_cast<LONG>(d) : LONG_MAX; break;
        case 5: V_VT(p) = VT_R4; V_R4(p) = static_cast<float>(d); break;
        case 6: case 7: V_VT(p) = VT_R8; V_R8(p) = d; break;
        case 8: V_VT(p) = VT_CY; V_CY(p).int64 = static_cast<LONGLONG>(Pick(100000)) - 5000; break;
        case 9: V_VT(p) = VT_DATE; V_DATE(p) = d; break;
        case 10: case 11: V_VT(p) = VT_BSTR; V_BSTR(p) = SysAllocString(Text().c_str()); break;
        case 12: V_VT(p) = VT_BOOL; V_BOOL(p) = Pick(2) ? VARIANT_TRUE : VARIANT_FALSE; break;
        case 13: V_VT(p) = VT_DISPATCH; V_DISPATCH(p) = nullptr; break;
        case 14: V_VT(p) = VT_UI1; V_UI1(p) = static_cast<BYTE>(Pick(256)); break;
        case 15: V_VT(p) = VT_UI4; V_UI4(p) = Pick(2) ? 0xFFFFFFFFu : 3u; break;
        default: V_VT(p) = VT_I8; V_I8(p) = Pick(2) ? (LONGLONG(1) << 40) : 5; break;
        }
        return v;
    }

    // An array of 0 to 3 dimensions (0: a null array), any element type.
    Var Array(int depth) {
        static const VARTYPE kTypes[] = {VT_R8, VT_R8, VT_R8, VT_VARIANT, VT_VARIANT, VT_I2, VT_I4, VT_R4,
                                         VT_BSTR, VT_UI1, VT_BOOL, VT_CY, VT_DATE, VT_I1, VT_UI4, VT_DECIMAL};
        const VARTYPE type = kTypes[Pick(sizeof kTypes / sizeof kTypes[0])];
        Var v;
        const int dims = Pick(8) == 0 ? 0 : Pick(5) == 0 ? 3 : Pick(3) == 0 ? 2 : 1;
        V_VT(v.get()) = static_cast<VARTYPE>(VT_ARRAY | type);
        if (dims == 0) return v;  // V_ARRAY is null
        static const LONG kLower[] = {0, 0, 0, 1, -3, 7};
        static const ULONG kSizes[] = {0, 1, 2, 3, 4, 5, 8, 9, 16, 33};
        SAFEARRAYBOUND bounds[3];
        for (int d = 0; d < dims; ++d)
            bounds[d] = {kSizes[Pick(dims == 1 ? 10 : 8)], kLower[Pick(6)]};
        SAFEARRAY* array = SafeArrayCreate(type, static_cast<UINT>(dims), bounds);
        V_ARRAY(v.get()) = array;
        if (!array) return v;
        ULONG count = 1;
        for (int d = 0; d < dims; ++d) count *= bounds[d].cElements;
        for (ULONG i = 0; i < count; ++i) {
            Var element = Pick(4) == 0 && type == VT_VARIANT && depth < 1 ? Array(depth + 1) : Scalar();
            if (type == VT_VARIANT) {
                VariantCopy(static_cast<VARIANT*>(array->pvData) + i, element.get());
                continue;
            }
            if (Pick(3)) {  // mostly plain numbers
                VARIANT r8;
                VariantInit(&r8);
                V_VT(&r8) = VT_R8;
                V_R8(&r8) = Pick(4) ? (Pick(200) - 100) / 8.0 : Number();
                element = Var();
                *element.get() = r8;
            }
            Var converted;
            if (FAILED(VariantChangeType(converted.get(), element.get(), 0, type))) continue;
            void* slot = static_cast<BYTE*>(array->pvData) + i * array->cbElements;
            if (type == VT_BSTR) {
                *static_cast<BSTR*>(slot) = V_BSTR(converted.get());
                V_VT(converted.get()) = VT_EMPTY;  // ownership moved into the array
            } else if (type == VT_DECIMAL) {
                *static_cast<DECIMAL*>(slot) = V_DECIMAL(converted.get());
            } else {
                std::memcpy(slot, &V_UI1(converted.get()), array->cbElements);
            }
        }
        return v;
    }

    // A value for an input: scalar, array, or either by reference.
    Var Value(Case& c) {
        const int kind = Pick(10);
        if (kind < 3) return Scalar();
        if (kind < 8) return Array(0);
        // By reference: to a variant holding anything, or typed.
        c.targets.push_back(Pick(2) ? Array(0) : Scalar());
        Var& target = c.targets.back();
        Var v;
        const VARTYPE tvt = V_VT(target.get());
        if (Pick(2) == 0 && (tvt == VT_R8 || (tvt & VT_ARRAY) || tvt == VT_BSTR || tvt == VT_I4)) {
            V_VT(v.get()) = static_cast<VARTYPE>(VT_BYREF | tvt);
            V_BYREF(v.get()) = (tvt & VT_ARRAY) ? static_cast<void*>(&V_ARRAY(target.get()))
                                                : static_cast<void*>(&V_UI1(target.get()));
        } else {
            V_VT(v.get()) = VT_BYREF | VT_VARIANT;
            V_VARIANTREF(v.get()) = target.get();
        }
        return v;
    }

    // An output: mostly a reference to a variant holding something.
    Var Output(Case& c) {
        if (Pick(12) == 0) return Value(c);
        c.targets.push_back(Pick(3) ? Var() : Pick(2) ? Scalar() : Array(0));
        return RefTo(c.targets.back());
    }

    Case Make(const Method& m) {
        Case c;
        const int n = static_cast<int>(m.out.size());
        int count = n;
        const int shape = Pick(12);
        if (shape == 0 && n > 0) count = Pick(n);   // missing arguments
        if (shape == 1) count = n + 1 + Pick(2);    // extra arguments
        for (int i = 0; i < count; ++i) c.args.push_back(i < n && m.out[i] ? Output(c) : Value(c));
        if (Pick(15) == 0 && !c.args.empty()) {
            // The last argument named: by its own position, an unknown id, or a negative one.
            const int last = static_cast<int>(c.args.size()) - 1;
            static const DISPID kIds[] = {0, 999, -1, -552};
            c.named.push_back(Pick(2) ? static_cast<DISPID>(last) : kIds[Pick(4)]);
        }
        return c;
    }

private:
    std::mt19937 rng_;
};

// ------------------------------------------------------------ checks

SAFEARRAY* ArrayIn(const VARIANT* v) {
    if (!(V_VT(v) & VT_ARRAY)) return nullptr;
    return (V_VT(v) & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
}

// A textual image of a value (reading array memory directly, so that the
// lock count is not touched), and whether any reachable array is locked.
void Describe(const VARIANT* v, std::wostringstream& out, bool* locked, int depth = 0) {
    if (depth > 4) return;
    const VARTYPE vt = V_VT(v);
    out << L'<' << vt << L':';
    if (vt == (VT_BYREF | VT_VARIANT)) {
        Describe(V_VARIANTREF(v), out, locked, depth + 1);
    } else if (vt & VT_ARRAY) {
        SAFEARRAY* a = ArrayIn(v);
        if (a) {
            if (a->cLocks != 0) *locked = true;
            out << a->cDims << L',' << a->cbElements;
            ULONG count = 1;
            for (USHORT d = 0; d < a->cDims; ++d) {
                out << L'[' << a->rgsabound[d].lLbound << L',' << a->rgsabound[d].cElements << L']';
                count *= a->rgsabound[d].cElements;
            }
            const VARTYPE et = vt & VT_TYPEMASK;
            for (ULONG i = 0; a->pvData && i < count; ++i) {
                const BYTE* slot = static_cast<const BYTE*>(a->pvData) + i * a->cbElements;
                if (et == VT_VARIANT) {
                    Describe(reinterpret_cast<const VARIANT*>(slot), out, locked, depth + 1);
                } else if (et == VT_BSTR) {
                    const BSTR s = *reinterpret_cast<const BSTR*>(slot);
                    out << L'"' << (s ? std::wstring(s, SysStringLen(s)) : L"(null)") << L'"';
                } else {
                    for (ULONG b = 0; b < a->cbElements; ++b) out << std::hex << slot[b] << L' ';
                    out << std::dec;
                }
            }
        } else {
            out << L"null";
        }
    } else if (vt == VT_BSTR) {
        out << L'"' << std::wstring(V_BSTR(v), SysStringLen(V_BSTR(v))) << L'"';
    } else if (vt & VT_BYREF) {
        const VARTYPE base = vt & VT_TYPEMASK;
        if (base == VT_BSTR) {
            const BSTR s = *V_BSTRREF(v);
            out << L"&\"" << (s ? std::wstring(s, SysStringLen(s)) : L"") << L'"';
        } else {
            const BYTE* p = static_cast<const BYTE*>(V_BYREF(v));
            for (int b = 0; b < 8; ++b) out << std::hex << p[b] << L' ';
            out << std::dec;
        }
    } else {
        const BYTE* p = reinterpret_cast<const BYTE*>(&V_UI1(v));
        for (int b = 0; b < 8; ++b) out << std::hex << p[b] << L' ';
        out << std::dec;
    }
    out << L'>';
}

std::wstring Image(const VARIANT* v, bool* locked) {
    std::wostringstream out;
    Describe(v, out, locked);
    return out.str();
}

bool IsAllowedSystemCode(HRESULT code) {
    return HRESULT_FACILITY(code) == FACILITY_DISPATCH || code == E_OUTOFMEMORY || code == E_INVALIDARG;
}

class HostileHost : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        module_ = LoadLibraryExW(RegisteredModulePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        vn::SetResourceModule(module_);
        if (const char* s = std::getenv("VN_HOSTILE_CALLS")) calls_ = std::atoi(s);
        if (const char* s = std::getenv("VN_HOSTILE_SEED")) seed_ = static_cast<unsigned>(std::atoi(s));
        static HANDLE watchdog = CreateThread(nullptr, 0, Watchdog, nullptr, 0, nullptr);
        (void)watchdog;
    }
    static void TearDownTestSuite() {
        vn::SetResourceModule(nullptr);
        if (module_) FreeLibrary(module_);
    }
    static HMODULE module_;
    static int calls_;
    static unsigned seed_;
};
HMODULE HostileHost::module_ = nullptr;
int HostileHost::calls_ = 12;
unsigned HostileHost::seed_ = 1;

// Runs one case; returns true when the call succeeded.
bool RunCase(const Control& control, const Method& m, Case& c, unsigned seed) {
    const std::string label = Narrow(m.name) + " seed " + std::to_string(seed);
    SCOPED_TRACE(label);
    bool lockedBefore = false;
    std::vector<std::wstring> before;
    for (Var& a : c.args) before.push_back(Image(a.get(), &lockedBefore));
    std::vector<VARIANT> reversed;
    for (auto it = c.args.rbegin(); it != c.args.rend(); ++it) reversed.push_back(*it->get());
    DISPPARAMS params{reversed.empty() ? nullptr : reversed.data(), c.named.empty() ? nullptr : c.named.data(),
                      static_cast<UINT>(reversed.size()), static_cast<UINT>(c.named.size())};
    EXCEPINFO excep{};
    UINT argErr = 0;
    Var result;
    const unsigned word = _controlfp(0, 0);
    g_callLabel = label;
    g_callStart = GetTickCount64();
    const HRESULT hr =
        control.get()->Invoke(m.id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result.get(), &excep, &argErr);
    g_callStart = 0;
    EXPECT_EQ(_controlfp(0, 0), word) << "control word";

    const bool ok = hr == S_OK;
    if (hr == DISP_E_EXCEPTION) {
        const HRESULT code = excep.scode;
        const bool hasText = excep.bstrDescription != nullptr;
        const std::wstring text = hasText ? std::wstring(excep.bstrDescription, SysStringLen(excep.bstrDescription)) : L"";
        if ((static_cast<unsigned>(code) & 0xFFFF0000u) == 0x800A0000u) {
            const std::string want = vn::LoadAnalysisMessage(static_cast<short>(code & 0xFFFF));
            EXPECT_EQ(Narrow(text), want) << "code " << std::hex << code;
        } else {
            EXPECT_TRUE(IsAllowedSystemCode(code)) << "system code " << std::hex << code;
            EXPECT_FALSE(hasText) << "system code " << std::hex << code << " with text " << Narrow(text);
        }
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrHelpFile);
    } else if (!ok) {
        EXPECT_TRUE(HRESULT_FACILITY(hr) == FACILITY_DISPATCH || hr == E_NOTIMPL) << "returned " << std::hex << hr;
    }

    bool locked = false;
    for (std::size_t i = 0; i < c.args.size(); ++i) {
        const std::wstring after = Image(c.args[i].get(), &locked);
        const bool isOut = i < m.out.size() && m.out[i];
        if (!isOut || !ok) {
            EXPECT_EQ(Narrow(after), Narrow(before[i])) << "argument " << i << (isOut ? " (output)" : "");
        }
    }
    EXPECT_FALSE(locked && !lockedBefore) << "an array was left locked";
    return ok;
}

TEST_F(HostileHost, EveryMethodSurvivesRandomArguments) {
    std::map<HRESULT, int> outcomes;
    int calls = 0, succeeded = 0;
    for (const wchar_t* progId : kProgIds) {
        Control control(progId);
        ASSERT_TRUE(control.valid());
        const std::vector<Method> methods = MethodsOf(control);
        ASSERT_FALSE(methods.empty());
        for (std::size_t k = 0; k < methods.size(); ++k) {
            for (int i = 0; i < calls_; ++i) {
                const unsigned seed = seed_ + static_cast<unsigned>(i * 7919 + k * 104729);
                Generator gen(seed);
                Case c = gen.Make(methods[k]);
                if (RunCase(control, methods[k], c, seed)) ++succeeded;
                ++calls;
                if (::testing::Test::HasFailure()) {
                    ADD_FAILURE() << "stopping after the first failing call";
                    return;
                }
            }
        }
    }
    std::printf("%d hostile calls, %d succeeded\n", calls, succeeded);
    EXPECT_GT(succeeded, 0);
}

// Sizes whose byte count does not fit one block: refused before anything is
// allocated, as numbers and as strings, in one and two dimensions.
TEST_F(HostileHost, HugeSizesFailWithOutOfMemory) {
    const Var small = DoubleArray({1, 2, 3, 4});
    struct Row { const wchar_t* progId; Failure failure; };
    const Row rows[] = {
        {kProgIds[4], {"count 2^30", L"Ramp", {Var(1073741824), Var(1), Var(1)}, 0, E_OUTOFMEMORY, nullptr}},
        {kProgIds[4], {"count 2^29 as a double", L"Ramp", {Var(536870912.0), Var(0), Var(1)}, 0, E_OUTOFMEMORY, nullptr}},
        {kProgIds[4], {"count 2^29 + 1 as a string", L"Uniform", {Var(L"536870913"), Var(1)}, 0, E_OUTOFMEMORY, nullptr}},
        {kProgIds[4], {"count 2^31 - 1", L"Impulse", {Var(2147483647), Var(1), Var(0)}, 0, E_OUTOFMEMORY, nullptr}},
        {kProgIds[2], {"65536 squared", L"SpecialMatrix", {Var(0), Var(65536), DoubleArray({1}), small}, 0,
                       E_OUTOFMEMORY, nullptr}},
        {kProgIds[1], {"46341 squared", L"CxSpecialMatrix",
                       {Var(0), Var(46341), DoubleArray({1}), DoubleArray({0}), small, small, Var(), Var()}, 2,
                       E_OUTOFMEMORY, nullptr}},
    };
    for (const Row& row : rows) {
        Control control(row.progId);
        ExpectFailures(control, {row.failure}, row.progId);
    }
}

// Arguments that once made a method run for minutes or forever now return
// at once, with a result or a status.
TEST_F(HostileHost, UnboundedLoopsReturn) {
    std::vector<double> samples(128);
    for (int i = 0; i < 128; ++i) samples[static_cast<std::size_t>(i)] = std::sin(i * 0.37) * 1.5;
    struct Row { const wchar_t* progId; const wchar_t* method; std::vector<Var> args; };
    const Row rows[] = {
        {kProgIds[3], L"Moment", {DoubleArray(samples), Var(2147483646)}},
        {kProgIds[3], L"InvXXDist", {Var(0.5), Var(std::numeric_limits<double>::quiet_NaN())}},
        {kProgIds[3], L"InvXXDist", {Var(std::numeric_limits<double>::quiet_NaN()), Var(3)}},
        {kProgIds[3], L"InvXXDist", {Var(0.5), Var(2147483647)}},
        {kProgIds[3], L"XXDist", {Var(3.0), Var(2147483646)}},
    };
    for (const Row& row : rows) {
        Control control(row.progId);
        std::vector<Var> args = row.args;
        g_callLabel = Narrow(row.method);
        g_callStart = GetTickCount64();  // the watchdog ends a call that hangs
        const Outcome o = CallWith(control, row.method, args);
        g_callStart = 0;
        EXPECT_TRUE(o.ok() || HRESULT_FACILITY(o.code) == FACILITY_CONTROL || HRESULT_FACILITY(o.code) == FACILITY_DISPATCH)
            << Narrow(row.method) << std::hex << o.code;
    }
}

// Valid calls (those that succeed with random arguments), repeated 10^4
// times in all: resident memory stays flat after the first round.
TEST_F(HostileHost, MemoryStaysFlatOverValidCalls) {
    struct Kept {
        std::size_t control;
        Method method;
        unsigned seed;
    };
    std::vector<std::unique_ptr<Control>> controls;
    std::vector<Kept> kept;
    for (std::size_t ci = 0; ci < 5; ++ci) {
        controls.push_back(std::make_unique<Control>(kProgIds[ci]));
        const std::vector<Method> methods = MethodsOf(*controls.back());
        for (std::size_t k = 0; k < methods.size(); ++k)
            for (unsigned s = 1; s < 40; ++s) {
                Generator gen(s * 31 + static_cast<unsigned>(k));
                Case c = gen.Make(methods[k]);
                if (RunCase(*controls[ci], methods[k], c, s)) {
                    kept.push_back({ci, methods[k], s * 31 + static_cast<unsigned>(k)});
                    break;
                }
            }
    }
    ASSERT_GT(kept.size(), 50u);
    auto privateBytes = [] {
        PROCESS_MEMORY_COUNTERS_EX pmc{};
        GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&pmc), sizeof pmc);
        return static_cast<double>(pmc.PrivateUsage);
    };
    const int total = 10000;
    const int rounds = static_cast<int>(total / kept.size()) + 1;
    double afterFirst = 0.0;
    for (int r = 0; r < rounds; ++r) {
        for (const Kept& k : kept) {
            Generator gen(k.seed);
            Case c = gen.Make(k.method);
            RunCase(*controls[k.control], k.method, c, k.seed);
        }
        if (r == 0) afterFirst = privateBytes();
    }
    const double growth = privateBytes() - afterFirst;
    std::printf("%d rounds of %zu valid calls; private bytes grew by %.0f KB after the first round\n", rounds,
                kept.size(), growth / 1024);
    EXPECT_LT(growth, 4.0 * 1024 * 1024);
}

}  // namespace
