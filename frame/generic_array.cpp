#include "frame/generic_array.h"

#include "frame/arg_array.h"
#include "frame/dispatch.h"
#include "frame/errors.h"

#include <cstring>
#include <new>

namespace vn {

namespace {

const VARIANT* Deref(const VARIANT* v) {
    return V_VT(v) == (VT_BYREF | VT_VARIANT) ? V_VARIANTREF(v) : v;
}

constexpr std::int64_t kMaxCount = 0x7FFFFFFF;

}  // namespace

std::int64_t ElementView::CountFrom(int first) const {
    std::int64_t count = 1;
    for (std::size_t d = static_cast<std::size_t>(first); d < sizes.size(); ++d) count *= sizes[d];
    return count;
}

ULONG ElementSizeOf(VARTYPE type) {
    switch (type) {
    case VT_I1: case VT_UI1: return 1;
    case VT_I2: case VT_UI2: case VT_BOOL: return 2;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_R4: return 4;
    case VT_R8: case VT_CY: case VT_DATE: return 8;
    case VT_BSTR: return sizeof(BSTR);
    case VT_VARIANT: return sizeof(VARIANT);
    default: return 0;
    }
}

bool HoldsArray(const VARIANT& argument) {
    return (V_VT(Deref(&argument)) & VT_ARRAY) != 0;
}

ElementView ViewOf(const ArgArray& array) {
    const SAFEARRAY* locked = array.Locked();
    if (!locked) ThrowAnalysisStatus(kErrNotAnArray);
    ElementView view;
    view.type = array.ElementType();
    view.elementSize = locked->cbElements;
    if (view.elementSize != ElementSizeOf(view.type)) ThrowAnalysisStatus(kErrDataType);
    view.data = locked->pvData;
    const int dims = array.Dims();
    for (int d = 0; d < dims; ++d) view.sizes.push_back(array.Size(d));
    return view;
}

ElementView ScalarView(const VARIANT& argument) {
    const VARIANT* v = Deref(&argument);
    const VARTYPE vt = V_VT(v);
    const VARTYPE type = vt & VT_TYPEMASK;
    ElementView view;
    if ((vt & VT_ARRAY) || type == VT_VARIANT || ElementSizeOf(type) == 0) ThrowAnalysisStatus(kErrDataType);
    view.type = type;
    view.elementSize = ElementSizeOf(type);
    // Every value of the union starts at its first byte, so the address of
    // one member is the address of the value whatever its type.
    view.data = (vt & VT_BYREF) ? V_BYREF(v) : static_cast<const void*>(&V_UI1(v));
    if (!view.data) ThrowAnalysisStatus(kErrDataType);  // a null reference
    return view;
}

void CopyElements(void* dest, std::size_t destStride, const void* src, std::size_t srcStride, std::size_t rows,
                  std::size_t cols, VARTYPE type, ULONG elementSize) {
    for (std::size_t j = 0; j < cols; ++j) {
        unsigned char* d = static_cast<unsigned char*>(dest) + j * destStride * elementSize;
        const unsigned char* s = static_cast<const unsigned char*>(src) + j * srcStride * elementSize;
        if (type == VT_BSTR) {
            BSTR* out = reinterpret_cast<BSTR*>(d);
            const BSTR* in = reinterpret_cast<const BSTR*>(s);
            for (std::size_t i = 0; i < rows; ++i) {
                // The byte length keeps strings of an odd number of bytes
                // intact; a null string stays null.
                BSTR copy = nullptr;
                if (in[i]) {
                    copy = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(in[i]), SysStringByteLen(in[i]));
                    if (!copy) throw std::bad_alloc();
                }
                SysFreeString(out[i]);
                out[i] = copy;
            }
        } else if (type == VT_VARIANT) {
            VARIANT* out = reinterpret_cast<VARIANT*>(d);
            const VARIANT* in = reinterpret_cast<const VARIANT*>(s);
            for (std::size_t i = 0; i < rows; ++i) CheckHResult(VariantCopy(&out[i], const_cast<VARIANT*>(&in[i])));
        } else {
            std::memcpy(d, s, rows * elementSize);
        }
    }
}

void ElementToVariant(VARIANT* dest, const void* element, VARTYPE type, ULONG elementSize) {
    VariantInit(dest);
    if (type == VT_VARIANT) {
        CheckHResult(VariantCopyInd(dest, const_cast<VARIANT*>(static_cast<const VARIANT*>(element))));
    } else if (type == VT_BSTR) {
        BSTR copy = nullptr;
        CopyElements(&copy, 1, element, 1, 1, 1, VT_BSTR, elementSize);
        V_VT(dest) = VT_BSTR;
        V_BSTR(dest) = copy;
    } else {
        std::memcpy(&V_UI1(dest), element, elementSize);
        V_VT(dest) = type;
    }
}

namespace {

SAFEARRAY* CreateResultArray(VARTYPE type, const std::vector<std::int32_t>& sizes) {
    std::int64_t count = 1;
    std::vector<SAFEARRAYBOUND> bounds;
    for (std::int32_t size : sizes) {
        // Sizes come from the handlers' checks and are never below 1; the
        // product is checked step by step so that it cannot wrap.
        if (size < 1) ThrowAnalysisStatus(kErrSamplesBelowOne);
        count *= size;
        if (count > kMaxCount) throw std::bad_alloc();
        bounds.push_back({static_cast<ULONG>(size), 0});
    }
    if (count * ElementSizeOf(type) > kMaxCount) throw std::bad_alloc();
    RequireBlock(type, static_cast<UINT>(bounds.size()), bounds.data());  // the per-block bound of every result
    SafeArrayGuard created(SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data()));
    if (!created.get() || !created.get()->pvData) throw std::bad_alloc();
    return created.release();
}

}  // namespace

GenericResult::GenericResult(VARTYPE type, const std::vector<std::int32_t>& sizes)
    : array_(CreateResultArray(type, sizes)), type_(type) {}

void GenericResult::Return(Call& call) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = static_cast<VARTYPE>(VT_ARRAY | type_);
    V_ARRAY(&v) = array_.release();
    call.SetResult(&v);
}

}  // namespace vn
