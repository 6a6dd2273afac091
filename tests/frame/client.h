// A small automation client for the tests: creates controls by ProgID and
// calls their methods through IDispatch exactly as a scripting host does.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <vector>

namespace vntest {

// A VARIANT that clears itself.
class Var {
public:
    Var() { VariantInit(&v_); }
    Var(double d) : Var() { V_VT(&v_) = VT_R8; V_R8(&v_) = d; }
    Var(int i) : Var() { V_VT(&v_) = VT_I4; V_I4(&v_) = i; }
    Var(const wchar_t* s) : Var() { V_VT(&v_) = VT_BSTR; V_BSTR(&v_) = SysAllocString(s); }
    Var(const Var& other) : Var() { VariantCopy(&v_, const_cast<VARIANT*>(&other.v_)); }
    Var& operator=(const Var& other) {
        if (this != &other) VariantCopy(&v_, const_cast<VARIANT*>(&other.v_));
        return *this;
    }
    ~Var() { VariantClear(&v_); }
    VARIANT* get() { return &v_; }
    const VARIANT* get() const { return &v_; }
    VARTYPE vt() const { return V_VT(&v_); }

private:
    VARIANT v_;
};

// Arrays the way hosts build them.
Var DoubleArray(const std::vector<double>& values, LONG lowerBound = 0);
Var TypedArray(VARTYPE type, const std::vector<double>& values, LONG lowerBound = 0);
// A two-dimensional array of doubles: `block` in the safe array's storage
// order (dimension 1 fastest), sizes in dimension order.
Var DoubleMatrix(ULONG size1, ULONG size2, const std::vector<double>& block);
// An array of variants as a script host passes it (elements are given as
// variants, e.g. numbers and strings).
Var VariantArray(const std::vector<Var>& elements);
Var EmptyArray(VARTYPE type);
// A variant holding a reference to `target` (VT_BYREF | VT_VARIANT).
Var RefTo(Var& target);

// Contents of a result.
std::vector<double> Doubles(const Var& v);
std::vector<LONG> Longs(const Var& v);
std::vector<LONG> Sizes(const Var& v);        // per dimension, dimension 1 first
std::vector<LONG> LowerBounds(const Var& v);  // per dimension
VARTYPE ElementType(const Var& v);

struct Outcome {
    HRESULT hr = E_FAIL;       // what Invoke returned
    HRESULT code = S_OK;       // EXCEPINFO.scode on DISP_E_EXCEPTION, else hr
    std::wstring description;  // EXCEPINFO.bstrDescription
    bool hasDescription = false;
    std::wstring source;
    Var result;
    bool ok() const { return hr == S_OK; }
};

class Control {
public:
    explicit Control(const wchar_t* progId);
    ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    IDispatch* get() const { return dispatch_; }
    bool valid() const { return dispatch_ != nullptr; }
    HRESULT createResult() const { return createResult_; }

    DISPID IdOf(const wchar_t* name) const;
    // Arguments in parameter order; the variants are passed as they are
    // (use RefTo for by-reference outputs).
    Outcome Call(const wchar_t* name, std::vector<VARIANT*> args) const;
    Outcome Invoke(DISPID id, std::vector<VARIANT*> args, WORD flags = DISPATCH_METHOD,
                   std::vector<DISPID> namedIds = {}) const;

private:
    IDispatch* dispatch_ = nullptr;
    HRESULT createResult_ = E_FAIL;
};

// Helpers shared by the per-control method tests.

// The status a control raises: the automation facility plus the code.
constexpr HRESULT VnError(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }

namespace msg {
inline const wchar_t* const kSamples = L"The number of samples must be >0.";
inline const wchar_t* const kShape =
    L"The input arrays do not contain the correct number of data values for this function.";
inline const wchar_t* const kNotArray = L"The argument is not  an array.";
inline const wchar_t* const kIndex = L"The following condition must be met:  0 <= index < samples.";
inline const wchar_t* const kSquare = L"The input matrix must be a square matrix.";
inline const wchar_t* const kSingular =
    L"The system of equations cannot be solved because the input matrix is singular.";
inline const wchar_t* const kSelection = L"The selection is invalid.";
}  // namespace msg

// The single number a result or output holds (NaN when it is not one).
double Only(const Var& v);

// Calls `method` with `args` in parameter order, passed as they are (the
// caller's variants, so their arrays can be checked afterwards).
Outcome CallWith(const Control& control, const wchar_t* method, std::vector<Var>& args);
Outcome CallWith(const Control& control, const wchar_t* method, std::vector<Var>&& args);

// A call that must fail. The last `refs` arguments go by reference: an Empty
// one is filled with a string first; all must hold what they held before.
struct Failure {
    const char* name;
    const wchar_t* method;
    std::vector<Var> args;
    int refs;
    HRESULT code;
    const wchar_t* text;  // nullptr: not checked
};
// Checks every row; `source` is the error source expected for the
// control's own statuses.
void ExpectFailures(const Control& control, const std::vector<Failure>& rows, const wchar_t* source);

std::string Narrow(const std::wstring& s);

// Path of the module registered for the VNArray ProgID ("" when none).
std::wstring RegisteredModulePath();

}  // namespace vntest
