// VNArray: element-wise arithmetic, scaling, ordering and extrema.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/array/array_ops.h"
#include "frame/errors.h"
#include "frame/generic_array.h"
#include "frame/guards.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vn {
namespace array_handlers {

namespace {

using BinaryKernel = AnalysisStatus (*)(const double*, const double*, std::int32_t, double*);
using UnaryKernel = AnalysisStatus (*)(const double*, std::int32_t, double*);

// x and y of the same shape (one-dimensional arrays may differ in length:
// the shorter length is used); the result has x's shape.
void BinaryMethod(Call& c, BinaryKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    ArgArray y(c.In(1));
    y.RequireSameShape(x);
    const std::int32_t n = CommonLength({&x, &y});
    ArgArray z;
    z.CreateResultFor(x, n);
    ThrowAnalysisStatus(kernel(x.AsDouble(), y.AsDouble(), n, z.AsDouble()));
    ReturnArray(c, z);
}

// Element-wise over an array of any dimension count; result of x's shape.
void UnaryMethod(Call& c, UnaryKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.CreateResultFor(x, n);
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, z.AsDouble()));
    ReturnArray(c, z);
}

// One-dimensional input and result of the same length.
void Unary1DMethod(Call& c, UnaryKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.Create1D(n);
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, z.AsDouble()));
    ReturnArray(c, z);
}


using TwoScalarKernel = AnalysisStatus (*)(const double*, std::int32_t, double, double, double*);
using TwoOutputKernel = AnalysisStatus (*)(const double*, std::int32_t, double*, double*, double*);
using ReductionKernel = AnalysisStatus (*)(const double*, std::int32_t, double*);
using IntegerParameterKernel = AnalysisStatus (*)(const double*, std::int32_t, std::int32_t, double*);

// Element-wise with two scalar parameters (in parameters 1 and 2).
void TwoScalarMethod(Call& c, TwoScalarKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.CreateResultFor(x, n);
    ArgScalar first(c.In(1)), second(c.In(2));
    const double p1 = first.Double(), p2 = second.Double();
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, p1, p2, z.AsDouble()));
    ReturnArray(c, z);
}

// A transformed copy plus two statistics written to parameters 1 and 2.
void TwoOutputMethod(Call& c, TwoOutputKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.CreateResultFor(x, n);
    double first = 0.0, second = 0.0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, z.AsDouble(), &first, &second));
    c.SetOutDouble(1, first);
    c.SetOutDouble(2, second);
    ReturnArray(c, z);
}

// One-dimensional input with an integer parameter.
void IntegerParameter1DMethod(Call& c, IntegerParameterKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.Create1D(n);
    ArgScalar parameter(c.In(1));
    ThrowAnalysisStatus(kernel(x.AsDouble(), n, parameter.Int(), z.AsDouble()));
    ReturnArray(c, z);
}

// The whole array, of any dimension count, reduced to one double.
// MaxArray and MinArray also refuse an empty array here (-20008).
void ReductionMethod(Call& c, ReductionKernel kernel, bool requireElements) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    if (requireElements) x.RequireMoreElements(0);
    double value = 0.0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), &value));
    c.SetResultDouble(value);
}

}  // namespace

void AddArray(Call& c) { BinaryMethod(c, AddArrays); }
void SubArray(Call& c) { BinaryMethod(c, SubArrays); }
void MulArray(Call& c) { BinaryMethod(c, MulArrays); }
void DivArray(Call& c) { BinaryMethod(c, DivArrays); }
void AbsArray(Call& c) { UnaryMethod(c, AbsArrayValues); }
void NegArray(Call& c) { UnaryMethod(c, NegArrayValues); }
void CopyArray(Call& c) { UnaryMethod(c, CopyValues); }
void Reverse1D(Call& c) { Unary1DMethod(c, ReverseValues); }

void LinEvArray(Call& c) { TwoScalarMethod(c, LinearEvaluate); }
void ClipArray(Call& c) { TwoScalarMethod(c, ClipValues); }
void ScaleArray(Call& c) { TwoOutputMethod(c, ScaleToUnit); }
void NormalizeArray(Call& c) { TwoOutputMethod(c, NormalizeValues); }
void Shift1D(Call& c) { IntegerParameter1DMethod(c, ShiftValues); }
void Sort1D(Call& c) { IntegerParameter1DMethod(c, SortValues); }

void PolyEvArray(Call& c) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    ArgArray coeffs(c.In(1));
    coeffs.RequireDims(1);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.CreateResultFor(x, n);
    ThrowAnalysisStatus(PolyEvaluate(x.AsDouble(), n, coeffs.AsDouble(), coeffs.Count(), z.AsDouble()));
    ReturnArray(c, z);
}

void QScaleArray(Call& c) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    const std::int32_t n = x.Count();
    ArgArray z;
    z.CreateResultFor(x, n);
    double scale = 0.0;
    ThrowAnalysisStatus(QuickScale(x.AsDouble(), n, z.AsDouble(), &scale));
    c.SetOutDouble(1, scale);
    ReturnArray(c, z);
}

void Subset1D(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    const std::int32_t n = x.Count();
    ArgScalar index(c.In(1)), length(c.In(2));
    const std::int32_t i = index.Int(), len = length.Int();
    // The routine rejects a length that does not fit; the result never needs
    // more than n elements.
    ArgArray z;
    z.Create1D(std::max<std::int32_t>(0, std::min(len, n)));
    ThrowAnalysisStatus(SubsetValues(x.AsDouble(), n, i, len, z.AsDouble()));
    ReturnArray(c, z);
}

void Transpose2D(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(2);
    const std::int32_t rows = x.Size(0), cols = x.Size(1);
    ArgArray z;
    z.Create2D(cols, rows);
    ThrowAnalysisStatus(TransposeMatrix(x.AsDouble(), rows, cols, z.AsDouble()));
    ReturnArray(c, z);
}

void SumArray(Call& c) { ReductionMethod(c, SumValues, false); }
void ProdArray(Call& c) { ReductionMethod(c, ProductValues, false); }
void MaxArray(Call& c) { ReductionMethod(c, LargestValue, true); }
void MinArray(Call& c) { ReductionMethod(c, SmallestValue, true); }

void ClearArray(Call& c) {
    ArgArray x;
    x.AttachByReference(c.Out(0));
    x.Lock();
    x.RequireMoreDims(0);
    ThrowAnalysisStatus(ClearValues(x.AsDouble(), x.Count()));
    x.CommitToTarget();
}

void SetArray(Call& c) {
    ArgArray x;
    x.AttachByReference(c.Out(0));
    x.Lock();
    x.RequireMoreDims(0);
    ArgScalar a(c.In(1));
    const double value = a.Double();
    ThrowAnalysisStatus(SetValues(x.AsDouble(), x.Count(), value));
    x.CommitToTarget();
}

void MaxMin1D(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    double max = 0.0, min = 0.0;
    std::int32_t imax = 0, imin = 0;
    ThrowAnalysisStatus(MaxMinValues(x.AsDouble(), x.Count(), &max, &imax, &min, &imin));
    c.SetOutDouble(1, max);
    c.SetOutInt(2, imax);
    c.SetOutDouble(3, min);
    c.SetOutInt(4, imin);
}

void MaxMin2D(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(2);
    double max = 0.0, min = 0.0;
    std::int32_t imax = 0, jmax = 0, imin = 0, jmin = 0;
    ThrowAnalysisStatus(
        MaxMinMatrix(x.AsDouble(), x.Size(0), x.Size(1), &max, &imax, &jmax, &min, &imin, &jmin));
    c.SetOutDouble(1, max);
    c.SetOutInt(2, imax);
    c.SetOutInt(3, jmax);
    c.SetOutDouble(4, min);
    c.SetOutInt(5, imin);
    c.SetOutInt(6, jmin);
}

void AboutBox(Call& c) { ShowAboutBox(c); }

// ------------------------------------------------ shape, index and search
//
// These work on arrays of every accepted element type, strings and variants
// included, and never convert an element: results keep the input's element
// type and have lower bound 0. Indices count from 0 at the first element of
// each dimension, whatever its lower bound, in the host's dimension order.

namespace {

// An argument that is an array (locked) or a single value.
struct Operand {
    explicit Operand(const VARIANT& argument) {
        if (HoldsArray(argument)) {
            array.AttachByValue(argument);
            array.Lock();
            view = ViewOf(array);
        } else {
            view = ScalarView(argument);
        }
    }
    ~Operand() { VariantClear(&asVariant); }
    Operand(const Operand&) = delete;
    Operand& operator=(const Operand&) = delete;

    // A value joining an array of variants becomes a variant of its own.
    void MakeVariant(const VARIANT& argument) {
        VariantInit(&asVariant);
        CheckHResult(VariantCopyInd(&asVariant, const_cast<VARIANT*>(&argument)));
        view.data = &asVariant;
        view.type = VT_VARIANT;
        view.elementSize = sizeof(VARIANT);
    }

    ArgArray array;
    ElementView view;
    VARIANT asVariant = {};
};

void RequireSameType(const ElementView& x, const ElementView& y) {
    if (x.type != y.type) ThrowAnalysisStatus(kErrMixedTypes);
}

// An index into a dimension of `size` elements: 0 <= index < size.
std::int32_t IndexIn(const VARIANT& argument, std::int32_t size) {
    ArgScalar scalar(argument);
    const std::int32_t index = scalar.Int();
    if (index < 0 || index >= size) ThrowAnalysisStatus(kErrIndexRange);
    return index;
}

// A range of one dimension: a missing index is 0, a missing length runs to
// the end of the dimension.
struct Range {
    std::int32_t index, length;
};

Range RangeIn(Call& c, int indexParam, int lengthParam, std::int32_t size) {
    const std::int32_t index = c.IsMissing(indexParam) ? 0 : IndexIn(c.In(indexParam), size);
    std::int32_t length = size - index;
    if (!c.IsMissing(lengthParam)) {
        ArgScalar scalar(c.In(lengthParam));
        length = scalar.Int();
    }
    if (length < 1) ThrowAnalysisStatus(kErrSamplesBelowOne);
    if (static_cast<std::int64_t>(index) + length > size) ThrowAnalysisStatus(kErrIndexLength);
    return {index, length};
}

// The whole of `x` with lower bounds 0.
void ReturnCopy(Call& c, const ElementView& x) {
    GenericResult z(x.type, x.sizes);
    CopyElements(z.Data(), 1, x.data, 1, static_cast<std::size_t>(x.Count()), 1, x.type, x.elementSize);
    z.Return(c);
}

// Numbers compare by value as doubles (a NaN equals nothing); strings by
// their exact characters.
bool IsNumericType(VARTYPE type) {
    return type != VT_BSTR && type != VT_VARIANT && ElementSizeOf(type) != 0;
}

double NumberAt(const void* p, VARTYPE type) {
    switch (type) {
    case VT_I1: return *static_cast<const signed char*>(p);
    case VT_UI1: return *static_cast<const unsigned char*>(p);
    case VT_I2: return *static_cast<const SHORT*>(p);
    case VT_UI2: return *static_cast<const USHORT*>(p);
    case VT_BOOL: return *static_cast<const VARIANT_BOOL*>(p);
    case VT_I4: case VT_INT: return *static_cast<const LONG*>(p);
    case VT_UI4: case VT_UINT: return *static_cast<const ULONG*>(p);
    case VT_R4: return *static_cast<const float*>(p);
    case VT_R8: case VT_DATE: return *static_cast<const double*>(p);
    case VT_CY: {
        double d = 0.0;
        CheckHResult(VarR8FromCy(*static_cast<const CY*>(p), &d));
        return d;
    }
    default: return 0.0;
    }
}

bool SameString(BSTR a, BSTR b) {
    const UINT n = SysStringLen(a);
    return n == SysStringLen(b) && (n == 0 || std::memcmp(a, b, n * sizeof(OLECHAR)) == 0);
}

}  // namespace

void ArrayDims(Call& c) {
    ArgArray x(c.In(0));
    c.SetResultInt(x.Dims());
}

// An array of variants holding 32-bit integers, so that a script can index
// it directly.
void ArrayDimSizes(Call& c) {
    ArgArray x(c.In(0));
    const std::int32_t dims = x.Dims();
    GenericResult z(VT_VARIANT, {dims});
    VARIANT* sizes = static_cast<VARIANT*>(z.Data());
    for (std::int32_t d = 0; d < dims; ++d) {
        V_VT(&sizes[d]) = VT_I4;
        V_I4(&sizes[d]) = x.Size(d);
    }
    z.Return(c);
}

// x(i) of a 1-D array; x(i, j), row i (Index2 missing) or column j (Index1
// missing) of a 2-D array. With no index at all, a copy of the array.
void IndexArray(Call& c) {
    ArgArray x(c.In(0));
    if (x.Dims() > 2) ThrowAnalysisStatus(kErrWrongCount);
    const bool has1 = !c.IsMissing(1), has2 = !c.IsMissing(2);
    if (x.Dims() == 1 && has2) ThrowAnalysisStatus(kErrWrongCount);
    const ElementView v = ViewOf(x);
    const std::int32_t rows = v.sizes[0], cols = v.Dims() == 2 ? v.sizes[1] : 1;
    const std::int32_t i = has1 ? IndexIn(c.In(1), rows) : 0;
    const std::int32_t j = has2 ? IndexIn(c.In(2), cols) : 0;
    if (has1 && (has2 || v.Dims() == 1)) {
        VARIANT element;
        ElementToVariant(&element, v.At(i + static_cast<std::int64_t>(rows) * j), v.type, v.elementSize);
        c.SetResult(&element);
    } else if (has1) {  // row i: stride `rows` through the block
        GenericResult z(v.type, {cols});
        CopyElements(z.Data(), 1, v.At(i), static_cast<std::size_t>(rows), 1, static_cast<std::size_t>(cols), v.type,
                     v.elementSize);
        z.Return(c);
    } else if (has2) {  // column j: contiguous
        GenericResult z(v.type, {rows});
        CopyElements(z.Data(), 1, v.At(static_cast<std::int64_t>(rows) * j), 1, static_cast<std::size_t>(rows), 1,
                     v.type, v.elementSize);
        z.Return(c);
    } else {
        ReturnCopy(c, v);
    }
}

// Two 1-D arrays: x0, y0, x1, y1, ... over the shorter length. One 1-D array
// and a count k: the k sequences interleaved in it, as the rows of a k-by-m
// array (m = n / k, a partial last group is left out), which is the block
// of x read with dimension 1 fastest.
void Interleave1D(Call& c) {
    ArgArray x(c.In(0));
    const ElementView xv = ViewOf(x);
    if (HoldsArray(c.In(1))) {
        ArgArray y(c.In(1));
        const ElementView yv = ViewOf(y);
        RequireSameType(xv, yv);
        x.RequireDims(1);
        y.RequireDims(1);
        const std::int32_t n = xv.sizes[0];
        const std::int32_t m = std::min(n, yv.sizes[0]);
        if (m > 0x3FFFFFFF) throw std::bad_alloc();
        GenericResult z(xv.type, {2 * m});
        CopyElements(z.Data(), 2, xv.data, 1, 1, static_cast<std::size_t>(m), xv.type, xv.elementSize);
        CopyElements(z.At(1), 2, yv.data, 1, 1, static_cast<std::size_t>(m), xv.type, xv.elementSize);
        z.Return(c);
        return;
    }
    x.RequireDims(1);
    const std::int32_t n = xv.sizes[0];
    ArgScalar count(c.In(1));
    const std::int32_t k = count.Int();
    if (k < 1) ThrowAnalysisStatus(kErrSamplesBelowOne);
    if (k > n) ThrowAnalysisStatus(kErrWrongCount);
    const std::int32_t m = n / k;
    GenericResult z(xv.type, {k, m});
    CopyElements(z.Data(), 1, xv.data, 1, static_cast<std::size_t>(k) * static_cast<std::size_t>(m), 1, xv.type,
                 xv.elementSize);
    z.Return(c);
}

// Length1 elements of a 1-D array from Index1; or the block of Length1 rows
// from Index1 and Length2 columns from Index2 of a 2-D array. A missing
// index is 0 and a missing length runs to the end of its dimension.
void SubsetArray(Call& c) {
    ArgArray x(c.In(0));
    if (x.Dims() > 2) ThrowAnalysisStatus(kErrWrongCount);
    if (x.Dims() == 1 && !(c.IsMissing(3) && c.IsMissing(4))) ThrowAnalysisStatus(kErrWrongCount);
    const ElementView v = ViewOf(x);
    const Range r1 = RangeIn(c, 1, 2, v.sizes[0]);
    const Range r2 = v.Dims() == 2 ? RangeIn(c, 3, 4, v.sizes[1]) : Range{0, 1};
    std::vector<std::int32_t> sizes{r1.length};
    if (v.Dims() == 2) sizes.push_back(r2.length);
    GenericResult z(v.type, sizes);
    CopyElements(z.Data(), static_cast<std::size_t>(r1.length),
                 v.At(r1.index + static_cast<std::int64_t>(v.sizes[0]) * r2.index),
                 static_cast<std::size_t>(v.sizes[0]), static_cast<std::size_t>(r1.length),
                 static_cast<std::size_t>(r2.length), v.type, v.elementSize);
    z.Return(c);
}

// Two values or arrays of the same rank are stacked along a new first
// dimension (two scalars give a 1-D array of 2, two 1-D arrays of equal
// length a 2-by-n array); a value or array one rank lower than the other is
// added as one more element or row, before or after it. A value of any type
// joins an array of variants.
void BuildArray(Call& c) {
    Operand x(c.In(0));
    Operand y(c.In(1));
    if (x.view.type != y.view.type) {
        if (x.view.type == VT_VARIANT && y.view.Dims() == 0)
            y.MakeVariant(c.In(1));
        else if (y.view.type == VT_VARIANT && x.view.Dims() == 0)
            x.MakeVariant(c.In(0));
        else
            ThrowAnalysisStatus(kErrMixedTypes);
    }
    const ElementView& xv = x.view;
    const ElementView& yv = y.view;
    const int rx = xv.Dims(), ry = yv.Dims();
    // The higher-ranked operand sets the shape; its rows are its first
    // dimension, and the other operand must match its remaining sizes.
    std::vector<std::int32_t> sizes;
    std::int32_t rowsX = 1, rowsY = 1;
    if (rx == ry) {
        if (xv.sizes != yv.sizes) ThrowAnalysisStatus(kErrWrongCount);
        sizes.push_back(2);
        sizes.insert(sizes.end(), xv.sizes.begin(), xv.sizes.end());
    } else if (rx == ry + 1 || ry == rx + 1) {
        const ElementView& high = rx > ry ? xv : yv;
        const ElementView& low = rx > ry ? yv : xv;
        if (!std::equal(low.sizes.begin(), low.sizes.end(), high.sizes.begin() + 1))
            ThrowAnalysisStatus(kErrWrongCount);
        (rx > ry ? rowsX : rowsY) = high.sizes[0];
        if (high.sizes[0] == 0x7FFFFFFF) throw std::bad_alloc();
        sizes = high.sizes;
        sizes[0] += 1;
    } else {
        ThrowAnalysisStatus(kErrWrongCount);
    }
    // Each row holds as many elements as the lower-ranked operand.
    const std::int64_t columns = (rx > ry ? yv : xv).Count();
    GenericResult z(xv.type, sizes);
    const std::size_t rows = static_cast<std::size_t>(rowsX) + static_cast<std::size_t>(rowsY);
    CopyElements(z.Data(), rows, xv.data, static_cast<std::size_t>(rowsX), static_cast<std::size_t>(rowsX),
                 static_cast<std::size_t>(columns), xv.type, xv.elementSize);
    CopyElements(z.At(rowsX), rows, yv.data, static_cast<std::size_t>(rowsY), static_cast<std::size_t>(rowsY),
                 static_cast<std::size_t>(columns), xv.type, xv.elementSize);
    z.Return(c);
}

// The elements of x in storage order (dimension 1 fastest) placed into a
// Dim1 or Dim1-by-Dim2 array in the same order. Extra elements of x are left
// out; missing ones are zero, empty strings or Empty variants.
void ReshapeArray(Call& c) {
    ArgArray x(c.In(0));
    const ElementView v = ViewOf(x);
    ArgScalar dim1(c.In(1));
    std::vector<std::int32_t> sizes{dim1.Int()};
    if (!c.IsMissing(2)) {
        ArgScalar dim2(c.In(2));
        sizes.push_back(dim2.Int());
    }
    for (std::int32_t size : sizes)
        if (size < 1) ThrowAnalysisStatus(kErrSamplesBelowOne);
    GenericResult z(v.type, sizes);
    std::int64_t count = 1;
    for (std::int32_t size : sizes) count *= size;
    CopyElements(z.Data(), 1, v.data, 1, static_cast<std::size_t>(std::min(count, v.Count())), 1, v.type,
                 v.elementSize);
    z.Return(c);
}

// Index of the first element from StartIndex on that equals Element, or -1.
// StartIndex may be n (nothing left to search), so that a loop can go on
// from the last match + 1. Numeric arrays compare numbers as doubles
// (Element may be a numeric string or a date); string arrays compare exact
// text (Element is read as text); in an array of variants a number matches
// numeric elements and a string matches string elements.
void SearchArray(Call& c) {
    ArgArray x(c.In(0));
    const ElementView v = ViewOf(x);
    if (HoldsArray(c.In(1))) ThrowAnalysisStatus(kErrDataType);
    x.RequireDims(1);
    const std::int32_t n = v.sizes[0];
    std::int32_t start = 0;
    if (!c.IsMissing(2)) {
        ArgScalar scalar(c.In(2));
        start = scalar.Int();
        if (start < 0 || start > n) ThrowAnalysisStatus(kErrIndexRange);
    }
    // What Element is compared as.
    bool byNumber = IsNumericType(v.type);
    double number = 0.0;
    VariantGuard text;
    if (v.type == VT_VARIANT) {
        const ElementView e = ScalarView(c.In(1));
        byNumber = e.type != VT_BSTR;
        if (byNumber) {
            number = NumberAt(e.data, e.type);
        } else {
            V_VT(text.get()) = VT_BSTR;
            V_BSTR(text.get()) = nullptr;
            CopyElements(&V_BSTR(text.get()), 1, e.data, 1, 1, 1, VT_BSTR, sizeof(BSTR));
        }
    } else if (byNumber) {
        ArgScalar element(c.In(1));
        number = element.Double();
    } else {
        CheckHResult(ConvertValue(text.get(), &c.In(1), VT_BSTR));
    }
    std::int32_t found = -1;
    for (std::int32_t i = start; i < n && found < 0; ++i) {
        const void* p = v.At(i);
        VARTYPE type = v.type;
        if (type == VT_VARIANT) {
            const VARIANT* e = static_cast<const VARIANT*>(p);
            if (V_VT(e) == (VT_BYREF | VT_VARIANT)) e = V_VARIANTREF(e);
            type = V_VT(e) & VT_TYPEMASK;
            if ((V_VT(e) & VT_ARRAY) || type == VT_VARIANT || ElementSizeOf(type) == 0) continue;
            p = (V_VT(e) & VT_BYREF) ? V_BYREF(e) : static_cast<const void*>(&V_UI1(e));
            if (!p) continue;
        }
        if (byNumber ? (IsNumericType(type) && NumberAt(p, type) == number)
                     : (type == VT_BSTR && SameString(*static_cast<const BSTR*>(p), V_BSTR(text.get()))))
            found = i;
    }
    VARIANT result;
    VariantInit(&result);
    V_VT(&result) = VT_I4;
    V_I4(&result) = found;
    c.SetResult(&result);
}

// y after x along dimension 1: 1-D arrays are joined end to end; arrays of
// more dimensions must agree in every size but the first.
void ConcatenateArray(Call& c) {
    ArgArray x(c.In(0));
    ArgArray y(c.In(1));
    const ElementView xv = ViewOf(x), yv = ViewOf(y);
    RequireSameType(xv, yv);
    if (xv.Dims() != yv.Dims() || !std::equal(xv.sizes.begin() + 1, xv.sizes.end(), yv.sizes.begin() + 1))
        ThrowAnalysisStatus(kErrWrongCount);
    std::vector<std::int32_t> sizes = xv.sizes;
    const std::int64_t rows = static_cast<std::int64_t>(xv.sizes[0]) + yv.sizes[0];
    if (rows > 0x7FFFFFFF) throw std::bad_alloc();
    sizes[0] = static_cast<std::int32_t>(rows);
    GenericResult z(xv.type, sizes);
    const std::size_t columns = static_cast<std::size_t>(xv.CountFrom(1));
    CopyElements(z.Data(), static_cast<std::size_t>(rows), xv.data, static_cast<std::size_t>(xv.sizes[0]),
                 static_cast<std::size_t>(xv.sizes[0]), columns, xv.type, xv.elementSize);
    CopyElements(z.At(xv.sizes[0]), static_cast<std::size_t>(rows), yv.data, static_cast<std::size_t>(yv.sizes[0]),
                 static_cast<std::size_t>(yv.sizes[0]), columns, xv.type, xv.elementSize);
    z.Return(c);
}

}  // namespace array_handlers

#define VN_HANDLERS array_handlers
VN_DEFINE_DISPATCH_TABLE(VN_ARRAY_METHODS, L"VNAnalysisControlsLib.VNArray", CLSID_VNArray, DIID__DVNArray)
#undef VN_HANDLERS

const DispatchTable& CVNArrayCtrl::Table() { return kDispatchTable; }

}  // namespace vn
