// VNArray: element-wise arithmetic, scaling, ordering and extrema.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/array/array_ops.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

#include <algorithm>

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

// Shape, index and search methods: not built yet.
VN_NOT_IMPLEMENTED(ArrayDims)
VN_NOT_IMPLEMENTED(ArrayDimSizes)
VN_NOT_IMPLEMENTED(IndexArray)
VN_NOT_IMPLEMENTED(Interleave1D)
VN_NOT_IMPLEMENTED(SubsetArray)
VN_NOT_IMPLEMENTED(BuildArray)
VN_NOT_IMPLEMENTED(ReshapeArray)
VN_NOT_IMPLEMENTED(SearchArray)
VN_NOT_IMPLEMENTED(ConcatenateArray)

}  // namespace array_handlers

#define VN_HANDLERS array_handlers
VN_DEFINE_DISPATCH_TABLE(VN_ARRAY_METHODS, L"VNAnalysisControlsLib.VNArray", CLSID_VNArray, DIID__DVNArray)
#undef VN_HANDLERS

const DispatchTable& CVNArrayCtrl::Table() { return kDispatchTable; }

}  // namespace vn
