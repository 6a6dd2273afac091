#include "frame/arg_array.h"

#include "analysis/limits.h"
#include "frame/errors.h"
#include "frame/guards.h"

#include <cstring>
#include <cwchar>
#include <new>
#include <string>

namespace vn {

namespace {

const VARIANT* Deref(const VARIANT* v) {
    return V_VT(v) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(v) : v;
}

bool IsAcceptedElementType(VARTYPE type) {
    switch (type) {
    case VT_I2: case VT_I4: case VT_R4: case VT_R8: case VT_CY: case VT_DATE: case VT_BOOL:
    case VT_I1: case VT_UI1: case VT_UI2: case VT_UI4: case VT_INT: case VT_UINT:
    // Scripting hosts only have arrays of variants (and typed string arrays
    // come from older hosts); their elements are converted one by one.
    case VT_BSTR: case VT_VARIANT:
        return true;
    default:
        return false;
    }
}

// Reads element i of a locked block as a double. The numeric types convert
// exactly as the platform's variant conversion does; strings and variants go
// through ConvertValue.
double ElementAsDouble(const void* data, VARTYPE type, std::size_t i) {
    switch (type) {
    case VT_I2: return static_cast<const SHORT*>(data)[i];
    case VT_I4: case VT_INT: return static_cast<const LONG*>(data)[i];
    case VT_R4: return static_cast<const float*>(data)[i];
    case VT_R8: case VT_DATE: return static_cast<const double*>(data)[i];
    case VT_BOOL: return static_cast<const VARIANT_BOOL*>(data)[i];
    case VT_I1: return static_cast<const signed char*>(data)[i];
    case VT_UI1: return static_cast<const unsigned char*>(data)[i];
    case VT_UI2: return static_cast<const USHORT*>(data)[i];
    case VT_UI4: case VT_UINT: return static_cast<const ULONG*>(data)[i];
    default: break;
    }
    VARIANT element;
    VariantInit(&element);
    const VARIANT* source = &element;
    if (type == VT_VARIANT) {
        source = static_cast<const VARIANT*>(data) + i;
    } else if (type == VT_BSTR) {
        V_VT(&element) = VT_BSTR;  // borrowed, never cleared
        V_BSTR(&element) = static_cast<const BSTR*>(data)[i];
    } else if (type == VT_CY) {
        V_VT(&element) = VT_CY;
        V_CY(&element) = static_cast<const CY*>(data)[i];
    }
    VariantGuard converted;
    CheckHResult(ConvertValue(converted.get(), source, VT_R8));
    return V_R8(converted.get());
}

std::int32_t ElementAsInt32(const void* data, VARTYPE type, std::size_t i) {
    VARIANT element;
    VariantInit(&element);
    const VARIANT* source = &element;
    if (type == VT_VARIANT) {
        source = static_cast<const VARIANT*>(data) + i;
    } else if (type == VT_BSTR) {
        V_VT(&element) = VT_BSTR;
        V_BSTR(&element) = static_cast<const BSTR*>(data)[i];
    } else {
        // Copy the raw element into a variant of its own type, then let the
        // platform round it the way it rounds every conversion to integer.
        V_VT(&element) = type;
        const ULONG size = type == VT_CY || type == VT_R8 || type == VT_DATE ? 8
                           : type == VT_I2 || type == VT_UI2 || type == VT_BOOL ? 2
                           : type == VT_I1 || type == VT_UI1 ? 1 : 4;
        std::memcpy(&V_UI1(&element), static_cast<const unsigned char*>(data) + i * size, size);
    }
    VariantGuard converted;
    CheckHResult(ConvertValue(converted.get(), source, VT_I4));
    return V_I4(converted.get());
}

// The date-and-time reading of a string: "date time.fraction", with the part
// from the first full stop on taken as decimal seconds.
HRESULT StringAsDate(BSTR text, double* serial) {
    const std::wstring s(text ? text : L"", text ? SysStringLen(text) : 0);
    std::wstring datePart = s;
    double seconds = 0.0;
    const std::size_t dot = s.find(L'.');
    if (dot != std::wstring::npos) {
        datePart = s.substr(0, dot);
        const std::wstring fraction = s.substr(dot);
        wchar_t* end = nullptr;
        seconds = std::wcstod(fraction.c_str(), &end);
        if (end == fraction.c_str()) return DISP_E_TYPEMISMATCH;
        seconds = seconds * (1.0 / 86400.0);
    }
    BstrGuard datePartString(SysAllocStringLen(datePart.data(), static_cast<UINT>(datePart.size())));
    if (!datePartString.get()) return E_OUTOFMEMORY;
    DATE date = 0.0;
    const HRESULT hr = VarDateFromStr(datePartString.get(), LOCALE_USER_DEFAULT, 0, &date);
    if (FAILED(hr)) return hr;
    *serial = date + seconds;
    return S_OK;
}

}  // namespace

void RequireBlock(VARTYPE type, UINT dims, const SAFEARRAYBOUND* bounds) {
    std::int64_t sizes[64];
    if (dims > 64) CheckHResult(E_OUTOFMEMORY);
    for (UINT d = 0; d < dims; ++d) sizes[d] = bounds[d].cElements;
    const std::uint64_t elementSize = type == VT_VARIANT ? sizeof(VARIANT)
                                      : type == VT_BSTR || type == VT_UNKNOWN || type == VT_DISPATCH ? sizeof(void*)
                                      : type == VT_R8 || type == VT_CY || type == VT_DATE ? 8
                                      : type == VT_I2 || type == VT_UI2 || type == VT_BOOL ? 2
                                      : type == VT_I1 || type == VT_UI1 ? 1
                                      : 4;
    if (!BlockFits(ElementCount(sizes, static_cast<int>(dims)), elementSize)) CheckHResult(E_OUTOFMEMORY);
}

HRESULT ConvertValue(VARIANT* dest, const VARIANT* src, VARTYPE type) {
    const HRESULT first = VariantChangeType(dest, const_cast<VARIANT*>(src), 0, type);
    if (SUCCEEDED(first)) return first;
    const VARIANT* s = Deref(src);
    BSTR text = nullptr;
    if (V_VT(s) == VT_BSTR)
        text = V_BSTR(s);
    else if (V_VT(s) == (VT_BYREF | VT_BSTR))
        text = *V_BSTRREF(s);
    else
        return first;
    double serial = 0.0;
    if (FAILED(StringAsDate(text, &serial))) return first;
    VARIANT asDouble;
    VariantInit(&asDouble);
    V_VT(&asDouble) = VT_R8;
    V_R8(&asDouble) = serial;
    const HRESULT second = VariantChangeType(dest, &asDouble, 0, type);
    return SUCCEEDED(second) ? second : first;
}

bool IsMissingArgument(const VARIANT& arg) {
    const VARIANT* v = Deref(&arg);
    if (V_VT(v) == VT_EMPTY) return true;
    return V_VT(v) == VT_ERROR && V_ERROR(v) == DISP_E_PARAMNOTFOUND;
}

// ---------------------------------------------------------------- ArgArray

ArgArray::ArgArray() {
    VariantInit(&value_);
    target_ = &value_;
}

ArgArray::ArgArray(const VARIANT& argument) : ArgArray() {
    AttachByValue(argument);
    Lock();
}

ArgArray::~ArgArray() {
    Reset();
}

void ArgArray::Reset() {
    Unlock();
    array_ = nullptr;
    elementType_ = VT_EMPTY;
    VariantClear(&value_);
    target_ = &value_;
    ownsValue_ = true;
    readOnly_ = false;
    byReference_ = false;
}

void ArgArray::AttachByValue(const VARIANT& argument) {
    Reset();
    // The host's argument is only read; it stays valid for the whole call.
    target_ = const_cast<VARIANT*>(&argument);
    ownsValue_ = false;
    readOnly_ = true;
}

void ArgArray::AttachByReference(VARIANT* target) {
    Reset();
    target_ = target;
    ownsValue_ = false;
    byReference_ = true;
}

void ArgArray::Lock() {
    Unlock();
    const VARIANT* v = Deref(target_);
    SAFEARRAY* found = nullptr;
    if (V_VT(v) & VT_ARRAY) found = (V_VT(v) & VT_BYREF) ? *V_ARRAYREF(v) : V_ARRAY(v);
    if (!found || SafeArrayGetDim(found) == 0 || found->pvData == nullptr) ThrowAnalysisStatus(kErrNotAnArray);
    const VARTYPE type = V_VT(v) & VT_TYPEMASK;
    if (!IsAcceptedElementType(type)) ThrowAnalysisStatus(kErrDataType);
    CheckHResult(SafeArrayLock(found));
    array_ = found;
    elementType_ = type;
    locked_ = true;
}

void ArgArray::Unlock() {
    if (locked_ && array_) {
        locked_ = false;
        SafeArrayUnlock(array_);
    }
}

std::int32_t ArgArray::Dims() const {
    return array_ ? static_cast<std::int32_t>(SafeArrayGetDim(array_)) : 0;
}

std::int32_t ArgArray::Size(int i) const {
    LONG lower = 0, upper = -1;
    CheckHResult(SafeArrayGetLBound(array_, static_cast<UINT>(i + 1), &lower));
    CheckHResult(SafeArrayGetUBound(array_, static_cast<UINT>(i + 1), &upper));
    return static_cast<std::int32_t>(upper - lower + 1);
}

LONG ArgArray::LowerBound(int i) const {
    LONG lower = 0;
    CheckHResult(SafeArrayGetLBound(array_, static_cast<UINT>(i + 1), &lower));
    return lower;
}

std::int32_t ArgArray::Count() const {
    if (!array_) return 0;
    long long count = 1;
    const int dims = Dims();
    for (int i = 0; i < dims; ++i) count *= Size(i);
    return count > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<std::int32_t>(count);
}

void ArgArray::ConvertTo(VARTYPE type) {
    const UINT dims = SafeArrayGetDim(array_);
    SAFEARRAYBOUND bounds[64];
    if (dims > 64) ThrowAnalysisStatus(kErrWrongCount);
    for (UINT d = 0; d < dims; ++d) {
        bounds[d].lLbound = LowerBound(static_cast<int>(d));
        bounds[d].cElements = static_cast<ULONG>(Size(static_cast<int>(d)));
    }
    RequireBlock(type, dims, bounds);
    SafeArrayGuard converted(SafeArrayCreate(type, dims, bounds));
    if (!converted.get()) CheckHResult(E_OUTOFMEMORY);
    const std::size_t count = static_cast<std::size_t>(Count());
    const void* source = array_->pvData;
    void* dest = converted.get()->pvData;
    if (type == VT_R8) {
        double* out = static_cast<double*>(dest);
        for (std::size_t i = 0; i < count; ++i) out[i] = ElementAsDouble(source, elementType_, i);
    } else {
        std::int32_t* out = static_cast<std::int32_t*>(dest);
        for (std::size_t i = 0; i < count; ++i) out[i] = ElementAsInt32(source, elementType_, i);
    }
    // The converted copy becomes this adaptor's own value; the host's array
    // is unlocked and left as it was.
    Unlock();
    VariantClear(&value_);
    V_VT(&value_) = static_cast<VARTYPE>(VT_ARRAY | type);
    V_ARRAY(&value_) = converted.release();
    if (!byReference_) {
        target_ = &value_;
        ownsValue_ = true;
        readOnly_ = false;
    }
    array_ = V_ARRAY(&value_);
    elementType_ = type;
    CheckHResult(SafeArrayLock(array_));
    locked_ = true;
}

double* ArgArray::AsDouble() {
    if (!array_) ThrowAnalysisStatus(kErrNotAnArray);
    if (elementType_ != VT_R8) ConvertTo(VT_R8);
    return static_cast<double*>(array_->pvData);
}

std::int32_t* ArgArray::AsInt32() {
    if (!array_) ThrowAnalysisStatus(kErrNotAnArray);
    if (elementType_ != VT_I4 && elementType_ != VT_INT) ConvertTo(VT_I4);
    return static_cast<std::int32_t*>(array_->pvData);
}

void ArgArray::RequireMoreDims(int k) const {
    const int dims = Dims();
    if (dims > k) return;
    ThrowAnalysisStatus(dims == 0 ? kErrSamplesBelowOne : kErrWrongCount);
}

void ArgArray::RequireDims(int k) const {
    const int dims = Dims();
    if (dims == k) return;
    ThrowAnalysisStatus(dims == 0 ? kErrSamplesBelowOne : kErrWrongCount);
}

void ArgArray::RequireSameShape(const ArgArray& other) const {
    const int dims = Dims();
    if (dims != other.Dims()) ThrowAnalysisStatus(kErrWrongCount);
    if (dims == 1) return;  // one-dimensional arrays may differ in length
    for (int i = 0; i < dims; ++i)
        if (Size(i) != other.Size(i)) ThrowAnalysisStatus(kErrWrongCount);
}

void ArgArray::RequireSize(int i, std::int32_t n) const {
    if (i >= Dims() || Size(i) != n) ThrowAnalysisStatus(kErrWrongCount);
}

void ArgArray::RequireMoreElements(std::int32_t k) const {
    if (!(Count() > k)) ThrowAnalysisStatus(kErrWrongCount);
}

void ArgArray::RequireElements(std::int32_t n) const {
    if (Count() != n) ThrowAnalysisStatus(kErrWrongCount);
}

void ArgArray::RequireSquare() const {
    if (Dims() != 2 || Size(0) != Size(1)) ThrowAnalysisStatus(kErrNotSquare);
}

void ArgArray::Create(VARTYPE type, UINT dims, SAFEARRAYBOUND* bounds) {
    RequireBlock(type, dims, bounds);
    SafeArrayGuard created(SafeArrayCreate(type, dims, bounds));
    if (!created.get()) CheckHResult(E_OUTOFMEMORY);
    Reset();
    V_VT(&value_) = static_cast<VARTYPE>(VT_ARRAY | type);
    V_ARRAY(&value_) = created.release();
    array_ = V_ARRAY(&value_);
    elementType_ = type;
    // An empty array still needs a data block so that it can be locked and
    // read like any other.
    CheckHResult(SafeArrayLock(array_));
    locked_ = true;
}

void ArgArray::Create1D(std::int32_t n, VARTYPE type) {
    SAFEARRAYBOUND bound{static_cast<ULONG>(n < 0 ? 0 : n), 0};
    Create(type, 1, &bound);
}

void ArgArray::Create2D(std::int32_t size1, std::int32_t size2, VARTYPE type) {
    SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(size1 < 0 ? 0 : size1), 0},
                                {static_cast<ULONG>(size2 < 0 ? 0 : size2), 0}};
    Create(type, 2, bounds);
}

void ArgArray::CreateLike(const ArgArray& other, VARTYPE type) {
    const int dims = other.Dims();
    SAFEARRAYBOUND bounds[64];
    if (dims < 1 || dims > 64) ThrowAnalysisStatus(kErrWrongCount);
    for (int d = 0; d < dims; ++d) bounds[d] = {static_cast<ULONG>(other.Size(d)), 0};
    Create(type, static_cast<UINT>(dims), bounds);
}

void ArgArray::CreateResultFor(const ArgArray& shape, std::int32_t n, VARTYPE type) {
    if (shape.Dims() == 1)
        Create1D(n, type);
    else
        CreateLike(shape, type);
}

void ArgArray::MoveTo(VARIANT* dest) {
    Unlock();
    VariantClear(dest);
    if (target_ == &value_) {
        *dest = value_;
        VariantInit(&value_);
    } else {
        CheckHResult(VariantCopyInd(dest, target_));
    }
    array_ = nullptr;
    elementType_ = VT_EMPTY;
    target_ = &value_;
    ownsValue_ = true;
    readOnly_ = false;
    byReference_ = false;
}

void ArgArray::CommitToTarget() {
    if (!byReference_ || V_VT(&value_) == VT_EMPTY) return;
    Unlock();
    VARIANT* dest = target_;
    if (V_VT(dest) == (VT_BYREF | VT_VARIANT)) dest = V_VARIANTREF(dest);
    VariantClear(dest);
    *dest = value_;
    VariantInit(&value_);
    array_ = nullptr;
    elementType_ = VT_EMPTY;
}

std::int32_t CommonLength(std::initializer_list<const ArgArray*> arguments) {
    auto it = arguments.begin();
    std::int32_t n = (*it)->Count();
    for (++it; it != arguments.end(); ++it) {
        const std::int32_t count = (*it)->Count();
        if (count <= n) n = count;
        if ((*it)->Dims() != 1) break;
    }
    return n;
}

// --------------------------------------------------------------- ArgScalar

ArgScalar::ArgScalar(const VARIANT& argument) {
    VariantInit(&value_);
    CheckHResult(VariantCopyInd(&value_, const_cast<VARIANT*>(&argument)));
}

ArgScalar::~ArgScalar() {
    VariantClear(&value_);
}

void ArgScalar::Reset() {
    VariantClear(&value_);
}

double* ArgScalar::AsDouble() {
    if (V_VT(&value_) != VT_R8) {
        VariantGuard converted;
        CheckHResult(ConvertValue(converted.get(), &value_, VT_R8));
        VariantClear(&value_);
        converted.MoveTo(&value_);
    }
    return &V_R8(&value_);
}

std::int32_t* ArgScalar::AsInt32() {
    if (V_VT(&value_) != VT_I4) {
        VariantGuard converted;
        CheckHResult(ConvertValue(converted.get(), &value_, VT_I4));
        VariantClear(&value_);
        converted.MoveTo(&value_);
    }
    return reinterpret_cast<std::int32_t*>(&V_I4(&value_));
}

double ExactNumber(const VARIANT& value) {
    const VARIANT* v = Deref(&value);
    switch (V_VT(v)) {
    case VT_I2: return V_I2(v);
    case VT_I4: return V_I4(v);
    case VT_R4: return V_R4(v);
    case VT_R8: return V_R8(v);
    case VT_I1: return V_I1(v);
    case VT_UI1: return V_UI1(v);
    case VT_UI2: return V_UI2(v);
    case VT_UI4: return V_UI4(v);
    default: ThrowAutomationError(DISP_E_TYPEMISMATCH, nullptr, -1);
    }
    return 0.0;
}

}  // namespace vn
