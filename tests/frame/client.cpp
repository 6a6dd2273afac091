#include "client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

namespace vntest {

namespace {

Var WrapArray(VARTYPE type, SAFEARRAY* array) {
    Var v;
    V_VT(v.get()) = static_cast<VARTYPE>(VT_ARRAY | type);
    V_ARRAY(v.get()) = array;
    return v;
}

SAFEARRAY* ArrayOf(const Var& v) {
    const VARIANT* p = v.get();
    if (V_VT(p) == (VT_BYREF | VT_VARIANT)) p = V_VARIANTREF(p);
    if (!(V_VT(p) & VT_ARRAY)) return nullptr;
    return (V_VT(p) & VT_BYREF) ? *V_ARRAYREF(p) : V_ARRAY(p);
}

}  // namespace

Var DoubleArray(const std::vector<double>& values, LONG lowerBound) {
    return TypedArray(VT_R8, values, lowerBound);
}

Var TypedArray(VARTYPE type, const std::vector<double>& values, LONG lowerBound) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(values.size()), lowerBound};
    SAFEARRAY* array = SafeArrayCreate(type, 1, &bound);
    for (std::size_t i = 0; i < values.size(); ++i) {
        LONG index = lowerBound + static_cast<LONG>(i);
        VARIANT element;
        VariantInit(&element);
        V_VT(&element) = VT_R8;
        V_R8(&element) = values[i];
        VARIANT converted;
        VariantInit(&converted);
        VariantChangeType(&converted, &element, 0, type);
        SafeArrayPutElement(array, &index, &V_UI1(&converted));
    }
    return WrapArray(type, array);
}

Var DoubleMatrix(ULONG size1, ULONG size2, const std::vector<double>& block) {
    SAFEARRAYBOUND bounds[2] = {{size1, 0}, {size2, 0}};
    SAFEARRAY* array = SafeArrayCreate(VT_R8, 2, bounds);
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    std::memcpy(data, block.data(), block.size() * sizeof(double));
    SafeArrayUnaccessData(array);
    return WrapArray(VT_R8, array);
}

Var VariantArray(const std::vector<Var>& elements) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(elements.size()), 0};
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 1, &bound);
    for (std::size_t i = 0; i < elements.size(); ++i) {
        LONG index = static_cast<LONG>(i);
        SafeArrayPutElement(array, &index, const_cast<VARIANT*>(elements[i].get()));
    }
    return WrapArray(VT_VARIANT, array);
}

Var EmptyArray(VARTYPE type) {
    SAFEARRAYBOUND bound{0, 0};
    return WrapArray(type, SafeArrayCreate(type, 1, &bound));
}

Var RefTo(Var& target) {
    Var v;
    V_VT(v.get()) = VT_BYREF | VT_VARIANT;
    V_VARIANTREF(v.get()) = target.get();
    return v;
}

std::vector<double> Doubles(const Var& v) {
    std::vector<double> out;
    SAFEARRAY* array = ArrayOf(v);
    if (!array) {
        VARIANT d;
        VariantInit(&d);
        if (SUCCEEDED(VariantChangeType(&d, const_cast<VARIANT*>(v.get()), 0, VT_R8))) out.push_back(V_R8(&d));
        return out;
    }
    long long count = 1;
    for (LONG s : Sizes(v)) count *= s;
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    VARTYPE type = ElementType(v);
    for (long long i = 0; i < count; ++i) {
        if (type == VT_R8) {
            out.push_back(static_cast<double*>(data)[i]);
        } else {
            VARIANT element, d;
            VariantInit(&element);
            VariantInit(&d);
            if (type == VT_VARIANT) {
                VariantChangeType(&d, static_cast<VARIANT*>(data) + i, 0, VT_R8);
            } else {
                V_VT(&element) = type;
                std::memcpy(&V_UI1(&element), static_cast<char*>(data) + i * SafeArrayGetElemsize(array),
                            SafeArrayGetElemsize(array));
                VariantChangeType(&d, &element, 0, VT_R8);
            }
            out.push_back(V_R8(&d));
        }
    }
    SafeArrayUnaccessData(array);
    return out;
}

std::vector<LONG> Longs(const Var& v) {
    std::vector<LONG> out;
    for (double d : Doubles(v)) out.push_back(static_cast<LONG>(d));
    return out;
}

std::vector<LONG> Sizes(const Var& v) {
    std::vector<LONG> out;
    SAFEARRAY* array = ArrayOf(v);
    if (!array) return out;
    for (UINT d = 1; d <= SafeArrayGetDim(array); ++d) {
        LONG lo = 0, hi = -1;
        SafeArrayGetLBound(array, d, &lo);
        SafeArrayGetUBound(array, d, &hi);
        out.push_back(hi - lo + 1);
    }
    return out;
}

std::vector<LONG> LowerBounds(const Var& v) {
    std::vector<LONG> out;
    SAFEARRAY* array = ArrayOf(v);
    if (!array) return out;
    for (UINT d = 1; d <= SafeArrayGetDim(array); ++d) {
        LONG lo = 0;
        SafeArrayGetLBound(array, d, &lo);
        out.push_back(lo);
    }
    return out;
}

VARTYPE ElementType(const Var& v) {
    const VARIANT* p = v.get();
    if (V_VT(p) == (VT_BYREF | VT_VARIANT)) p = V_VARIANTREF(p);
    return V_VT(p) & VT_TYPEMASK;
}

Control::Control(const wchar_t* progId) {
    CLSID clsid;
    createResult_ = CLSIDFromProgID(progId, &clsid);
    if (SUCCEEDED(createResult_))
        createResult_ = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                         reinterpret_cast<void**>(&dispatch_));
}

Control::~Control() {
    if (dispatch_) dispatch_->Release();
}

DISPID Control::IdOf(const wchar_t* name) const {
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[1] = {const_cast<LPOLESTR>(name)};
    dispatch_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    return id;
}

Outcome Control::Call(const wchar_t* name, std::vector<VARIANT*> args) const {
    const DISPID id = IdOf(name);
    if (id == DISPID_UNKNOWN) {
        Outcome o;
        o.hr = o.code = DISP_E_UNKNOWNNAME;
        return o;
    }
    return Invoke(id, std::move(args), DISPATCH_METHOD);
}

Outcome Control::Invoke(DISPID id, std::vector<VARIANT*> args, WORD flags, std::vector<DISPID> namedIds) const {
    // rgvarg holds the arguments last-first; named ones come first.
    std::vector<VARIANT> reversed;
    for (auto it = args.rbegin(); it != args.rend(); ++it) reversed.push_back(**it);
    DISPPARAMS params{reversed.empty() ? nullptr : reversed.data(), namedIds.empty() ? nullptr : namedIds.data(),
                      static_cast<UINT>(reversed.size()), static_cast<UINT>(namedIds.size())};
    EXCEPINFO excep;
    std::memset(&excep, 0, sizeof excep);
    UINT argErr = 0;
    Outcome o;
    o.hr = dispatch_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, o.result.get(), &excep, &argErr);
    o.code = o.hr;
    if (o.hr == DISP_E_EXCEPTION) {
        o.code = excep.scode;
        if (excep.bstrDescription) {
            o.hasDescription = true;
            o.description.assign(excep.bstrDescription, SysStringLen(excep.bstrDescription));
        }
        if (excep.bstrSource) o.source.assign(excep.bstrSource, SysStringLen(excep.bstrSource));
        SysFreeString(excep.bstrDescription);
        SysFreeString(excep.bstrSource);
        SysFreeString(excep.bstrHelpFile);
    }
    return o;
}

double Only(const Var& v) {
    const std::vector<double> d = Doubles(v);
    return d.size() == 1 ? d[0] : std::nan("");
}

Outcome CallWith(const Control& control, const wchar_t* method, std::vector<Var>& args) {
    std::vector<VARIANT*> raw;
    for (auto& a : args) raw.push_back(a.get());
    return control.Call(method, raw);
}

Outcome CallWith(const Control& control, const wchar_t* method, std::vector<Var>&& args) {
    return CallWith(control, method, args);
}

void ExpectFailures(const Control& control, const std::vector<Failure>& rows, const wchar_t* source) {
    for (const Failure& row : rows) {
        SCOPED_TRACE(std::string(row.name) + " (" + Narrow(row.method) + ")");
        std::vector<Var> held = row.args, args = row.args;
        const std::size_t firstRef = args.size() - static_cast<std::size_t>(row.refs);
        for (std::size_t i = firstRef; i < args.size(); ++i) {
            if (held[i].vt() == VT_EMPTY) held[i] = Var(L"unchanged");
            args[i] = RefTo(held[i]);
        }
        const Outcome o = CallWith(control, row.method, args);
        EXPECT_EQ(o.code, row.code) << std::hex << o.code;
        if (HRESULT_FACILITY(row.code) == FACILITY_CONTROL) {
            EXPECT_EQ(o.hr, DISP_E_EXCEPTION);
            EXPECT_EQ(o.source, source);
        }
        if (row.text) {
            EXPECT_EQ(o.description, row.text);
        }
        EXPECT_EQ(o.result.vt(), VT_EMPTY);
        for (std::size_t i = firstRef; i < args.size(); ++i) {
            const Var before = row.args[i].vt() == VT_EMPTY ? Var(L"unchanged") : row.args[i];
            EXPECT_EQ(held[i].vt(), before.vt()) << "output " << i;
            if (before.vt() == VT_R8) {
                EXPECT_EQ(Only(held[i]), Only(before)) << "output " << i;
            }
        }
    }
}

std::string Narrow(const std::wstring& s) {
    return std::string(s.begin(), s.end());
}

std::wstring RegisteredModulePath() {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(L"VNAnalysisControlsLib.VNArray.1", &clsid))) return L"";
    wchar_t guid[64];
    StringFromGUID2(clsid, guid, 64);
    const std::wstring key = std::wstring(L"CLSID\\") + guid + L"\\InprocServer32";
    wchar_t path[MAX_PATH] = {};
    LONG size = sizeof path;
    if (RegQueryValueW(HKEY_CLASSES_ROOT, key.c_str(), path, &size) != ERROR_SUCCESS) return L"";
    return path;
}

namespace {

// Every test process is an apartment-threaded host.
class ComEnvironment : public ::testing::Environment {
public:
    void SetUp() override { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    void TearDown() override { CoUninitialize(); }
};

const auto* const kEnvironment = ::testing::AddGlobalTestEnvironment(new ComEnvironment);

}  // namespace

}  // namespace vntest
