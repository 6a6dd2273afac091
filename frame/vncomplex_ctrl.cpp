// VNComplex: complex arithmetic and complex linear algebra.
//
// A complex argument is a pair of parameters, real parts then imaginary
// parts; a complex result is a pair of by-reference outputs. Matrices are
// handed to the kernels as their data blocks with rows = size of dimension 1
// and element (i, j) at i * cols + j; results are built the same way, so a
// product or factor comes back in the orientation its input arrived in.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/complex/complex_matrix.h"
#include "analysis/complex/complex_ops.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

#include <algorithm>

namespace vn {
namespace complex_handlers {

namespace {

using ScalarBinaryKernel = AnalysisStatus (*)(double, double, double, double, double*, double*);
using ScalarUnaryKernel = AnalysisStatus (*)(double, double, double*, double*);
using ArrayBinaryKernel = AnalysisStatus (*)(const double*, const double*, const double*, const double*,
                                             std::int32_t, double*, double*);
using ArrayPairKernel = AnalysisStatus (*)(const double*, const double*, std::int32_t, double*, double*);

// Same dimension count and the same size in every dimension. The frame's
// same-shape check lets vectors of different lengths through (for real
// element-wise methods, which use the common length); the parts of a complex
// array, and complex operands, must match exactly.
void RequireSameSizes(const ArgArray& a, const ArgArray& first) {
    a.RequireSameShape(first);
    a.RequireSize(0, first.Size(0));
}

void Attach(ArgArray& a, Call& c, int i) {
    a.AttachByValue(c.In(i));
    a.Lock();
}

// The imaginary parts at parameter i + 1 of the real parts already checked.
void AttachPartner(ArgArray& im, Call& c, int i, const ArgArray& re) {
    Attach(im, c, i + 1);
    RequireSameSizes(im, re);
}

// Matrix (re, im) at parameters i, i + 1: two-dimensional, parts alike.
void AttachMatrix(ArgArray& re, ArgArray& im, Call& c, int i) {
    Attach(re, c, i);
    re.RequireDims(2);
    AttachPartner(im, c, i, re);
}

// As AttachMatrix, and square (-20040) before the imaginary part is looked at.
void AttachSquare(ArgArray& re, ArgArray& im, Call& c, int i) {
    Attach(re, c, i);
    re.RequireDims(2);
    re.RequireSquare();
    AttachPartner(im, c, i, re);
}

void AttachVector(ArgArray& re, ArgArray& im, Call& c, int i) {
    Attach(re, c, i);
    re.RequireDims(1);
    AttachPartner(im, c, i, re);
}

void ScalarBinary(Call& c, ScalarBinaryKernel kernel) {
    ArgScalar xr(c.In(0)), xi(c.In(1)), yr(c.In(2)), yi(c.In(3));
    const double a = xr.Double(), b = xi.Double(), p = yr.Double(), q = yi.Double();
    double zr = 0.0, zi = 0.0;
    ThrowAnalysisStatus(kernel(a, b, p, q, &zr, &zi));
    c.SetOutDouble(4, zr);
    c.SetOutDouble(5, zi);
}

void ScalarUnary(Call& c, ScalarUnaryKernel kernel) {
    ArgScalar xr(c.In(0)), xi(c.In(1));
    const double a = xr.Double(), b = xi.Double();
    double yr = 0.0, yi = 0.0;
    ThrowAnalysisStatus(kernel(a, b, &yr, &yi));
    c.SetOutDouble(2, yr);
    c.SetOutDouble(3, yi);
}

// Four arrays of the first one's shape in, two of that shape out. An empty
// first array passes the checks and is refused by the kernel (-20003).
void ArrayBinary(Call& c, ArrayBinaryKernel kernel) {
    ArgArray xr(c.In(0));
    xr.RequireMoreDims(0);
    ArgArray xi, yr, yi;
    AttachPartner(xi, c, 0, xr);
    Attach(yr, c, 2);
    RequireSameSizes(yr, xr);
    AttachPartner(yi, c, 2, xr);
    ArgArray zr, zi;
    zr.CreateLike(xr);
    zi.CreateLike(xr);
    ThrowAnalysisStatus(kernel(xr.AsDouble(), xi.AsDouble(), yr.AsDouble(), yi.AsDouble(), xr.Count(),
                               zr.AsDouble(), zi.AsDouble()));
    OutputArray(c, 4, zr);
    OutputArray(c, 5, zi);
}

// Polar and rectangular conversions: two arrays in, two of their shape out.
void ArrayPair(Call& c, ArrayPairKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireMoreDims(0);
    ArgArray y;
    AttachPartner(y, c, 0, x);
    ArgArray u, v;
    u.CreateLike(x);
    v.CreateLike(x);
    ThrowAnalysisStatus(kernel(x.AsDouble(), y.AsDouble(), x.Count(), u.AsDouble(), v.AsDouble()));
    OutputArray(c, 2, u);
    OutputArray(c, 3, v);
}

// Thin decompositions and singular values have K = min(m, n) columns / values.
std::int32_t ThinSize(const ArgArray& a) { return std::min(a.Size(0), a.Size(1)); }

}  // namespace

void CxAdd(Call& c) { ScalarBinary(c, ComplexAdd); }
void CxSub(Call& c) { ScalarBinary(c, ComplexSub); }
void CxMul(Call& c) { ScalarBinary(c, ComplexMul); }
void CxDiv(Call& c) { ScalarBinary(c, ComplexDiv); }
void CxRecip(Call& c) { ScalarUnary(c, ComplexRecip); }
void CxSqrt(Call& c) { ScalarUnary(c, ComplexSqrt); }
void CxLog(Call& c) { ScalarUnary(c, ComplexLog10); }
void CxLn(Call& c) { ScalarUnary(c, ComplexLn); }
void CxExp(Call& c) { ScalarUnary(c, ComplexExp); }
void ToPolar(Call& c) { ScalarUnary(c, RectToPolar); }
void ToRect(Call& c) { ScalarUnary(c, PolarToRect); }

void CxPow(Call& c) {
    ArgScalar xr(c.In(0)), xi(c.In(1)), a(c.In(2));
    const double re = xr.Double(), im = xi.Double(), power = a.Double();
    double yr = 0.0, yi = 0.0;
    ThrowAnalysisStatus(ComplexPow(re, im, power, &yr, &yi));
    c.SetOutDouble(3, yr);
    c.SetOutDouble(4, yi);
}

void CxAddArray(Call& c) { ArrayBinary(c, ComplexAddArrays); }
void CxSubArray(Call& c) { ArrayBinary(c, ComplexSubArrays); }
void CxMulArray(Call& c) { ArrayBinary(c, ComplexMulArrays); }
void CxDivArray(Call& c) { ArrayBinary(c, ComplexDivArrays); }
void ToPolarArray(Call& c) { ArrayPair(c, RectToPolarArrays); }
void ToRectArray(Call& c) { ArrayPair(c, PolarToRectArrays); }

void CxLinEvArray(Call& c) {
    ArgArray xr(c.In(0));
    xr.RequireMoreDims(0);
    ArgArray xi;
    AttachPartner(xi, c, 0, xr);
    ArgScalar ar(c.In(2)), ai(c.In(3)), br(c.In(4)), bi(c.In(5));
    const double a1 = ar.Double(), a2 = ai.Double(), b1 = br.Double(), b2 = bi.Double();
    ArgArray yr, yi;
    yr.CreateLike(xr);
    yi.CreateLike(xr);
    ThrowAnalysisStatus(
        ComplexLinearEvaluate(xr.AsDouble(), xi.AsDouble(), xr.Count(), a1, a2, b1, b2, yr.AsDouble(), yi.AsDouble()));
    OutputArray(c, 6, yr);
    OutputArray(c, 7, yi);
}

// ---- Matrices ------------------------------------------------------------

void CxCholesky(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    const std::int32_t n = ar.Size(0);
    ArgArray rr, ri;
    rr.Create2D(n, n);
    ri.Create2D(n, n);
    ThrowAnalysisStatus(ComplexCholesky(ar.AsDouble(), ai.AsDouble(), n, rr.AsDouble(), ri.AsDouble()));
    OutputArray(c, 2, rr);
    OutputArray(c, 3, ri);
}

void CxEigenValueVector(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    const std::int32_t n = ar.Size(0);
    ArgArray valr, vali, vecr, veci;
    valr.Create1D(n);
    vali.Create1D(n);
    vecr.Create2D(n, n);
    veci.Create2D(n, n);
    ThrowAnalysisStatus(ComplexEigenValueVector(ar.AsDouble(), ai.AsDouble(), n, valr.AsDouble(), vali.AsDouble(),
                                                vecr.AsDouble(), veci.AsDouble()));
    OutputArray(c, 2, valr);
    OutputArray(c, 3, vali);
    OutputArray(c, 4, vecr);
    OutputArray(c, 5, veci);
}

void CxGenInvMatrix(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    ArgScalar type(c.In(2));
    const std::int32_t matrixType = type.Int();
    const std::int32_t n = ar.Size(0);
    ArgArray br, bi;
    br.Create2D(n, n);
    bi.Create2D(n, n);
    ThrowAnalysisStatus(ComplexGenInvMatrix(ar.AsDouble(), ai.AsDouble(), n, matrixType, br.AsDouble(), bi.AsDouble()));
    OutputArray(c, 3, br);
    OutputArray(c, 4, bi);
}

// x (m-by-k) times y (k-by-n), or times a vector of k values, which gives a
// vector of m values.
void CxMatrixMul(Call& c) {
    ArgArray xr, xi;
    AttachMatrix(xr, xi, c, 0);
    ArgArray yr, yi;
    Attach(yr, c, 2);
    yr.RequireMoreDims(0);
    if (yr.Dims() > 2) ThrowAnalysisStatus(kErrWrongCount);
    const bool vector = yr.Dims() == 1;
    const std::int32_t m = xr.Size(0), k = xr.Size(1), n = vector ? 1 : yr.Size(1);
    if (yr.Size(0) != k) ThrowAnalysisStatus(kErrWrongCount);  // as MatrixMul
    AttachPartner(yi, c, 2, yr);
    ArgArray zr, zi;
    if (vector) {
        zr.Create1D(m);
        zi.Create1D(m);
    } else {
        zr.Create2D(m, n);
        zi.Create2D(m, n);
    }
    ThrowAnalysisStatus(ComplexMatrixMul(xr.AsDouble(), xi.AsDouble(), yr.AsDouble(), yi.AsDouble(), m, k, n,
                                         zr.AsDouble(), zi.AsDouble()));
    OutputArray(c, 4, zr);
    OutputArray(c, 5, zi);
}

void CxMatrixRank(Call& c) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    std::int32_t rank = 0;
    ThrowAnalysisStatus(ComplexMatrixRank(ar.AsDouble(), ai.AsDouble(), ar.Size(0), ar.Size(1), &rank));
    c.SetResultInt(rank);
}

// A (m-by-n) x = y (m values); x has n values. The kernel refuses a
// non-square matrix for the classes other than general (-20040).
void CxGenLinEqs(Call& c) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    const std::int32_t m = ar.Size(0), n = ar.Size(1);
    ArgArray yr, yi;
    Attach(yr, c, 2);
    yr.RequireDims(1);
    yr.RequireElements(m);
    AttachPartner(yi, c, 2, yr);
    ArgScalar type(c.In(4));
    const std::int32_t matrixType = type.Int();
    ArgArray xr, xi;
    xr.Create1D(n);
    xi.Create1D(n);
    const AnalysisStatus status = ComplexGenLinEqs(ar.AsDouble(), ai.AsDouble(), m, n, yr.AsDouble(), yi.AsDouble(),
                                                   matrixType, xr.AsDouble(), xi.AsDouble());
    ThrowAnalysisStatus(status);
    OutputArray(c, 5, xr);
    OutputArray(c, 6, xi);
    // A rank-deficient system still has its minimum-norm solution written.
    c.SetOutInt(7, status == kWarnRankDeficient ? 1 : 0);
}

void CxDeterminant(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    double dr = 0.0, di = 0.0;
    ThrowAnalysisStatus(ComplexDeterminant(ar.AsDouble(), ai.AsDouble(), ar.Size(0), &dr, &di));
    c.SetOutDouble(2, dr);
    c.SetOutDouble(3, di);
}

void CxDotProduct(Call& c) {
    ArgArray xr, xi;
    AttachVector(xr, xi, c, 0);
    ArgArray yr, yi;
    Attach(yr, c, 2);
    yr.RequireDims(1);
    yr.RequireElements(xr.Count());
    AttachPartner(yi, c, 2, yr);
    double zr = 0.0, zi = 0.0;
    ThrowAnalysisStatus(
        ComplexDotProduct(xr.AsDouble(), xi.AsDouble(), yr.AsDouble(), yi.AsDouble(), xr.Count(), &zr, &zi));
    c.SetOutDouble(4, zr);
    c.SetOutDouble(5, zi);
}

// A real measure of a complex matrix in the norm selected by NormType.
void MatrixMeasure(Call& c, AnalysisStatus (*kernel)(const double*, const double*, std::int32_t, std::int32_t,
                                                      std::int32_t, double*)) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    ArgScalar type(c.In(2));
    const std::int32_t normType = type.Int();
    double value = 0.0;
    ThrowAnalysisStatus(kernel(ar.AsDouble(), ai.AsDouble(), ar.Size(0), ar.Size(1), normType, &value));
    c.SetResultDouble(value);
}

void CxConditionNumber(Call& c) { MatrixMeasure(c, ComplexConditionNumber); }
void CxMatrixNorm(Call& c) { MatrixMeasure(c, ComplexMatrixNorm); }

void CxOuterProduct(Call& c) {
    ArgArray xr, xi;
    AttachVector(xr, xi, c, 0);
    ArgArray yr, yi;
    AttachVector(yr, yi, c, 2);
    const std::int32_t m = xr.Count(), n = yr.Count();
    ArgArray zr, zi;
    zr.Create2D(m, n);
    zi.Create2D(m, n);
    ThrowAnalysisStatus(ComplexOuterProduct(xr.AsDouble(), xi.AsDouble(), m, yr.AsDouble(), yi.AsDouble(), n,
                                            zr.AsDouble(), zi.AsDouble()));
    OutputArray(c, 4, zr);
    OutputArray(c, 5, zi);
}

// An m-by-n complex matrix in, an n-by-m one out (by-reference 2 and 3).
void SwappedShapeMethod(Call& c, AnalysisStatus (*kernel)(const double*, const double*, std::int32_t,
                                                          std::int32_t, double*, double*)) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    const std::int32_t m = ar.Size(0), n = ar.Size(1);
    ArgArray br, bi;
    br.Create2D(n, m);
    bi.Create2D(n, m);
    ThrowAnalysisStatus(kernel(ar.AsDouble(), ai.AsDouble(), m, n, br.AsDouble(), bi.AsDouble()));
    OutputArray(c, 2, br);
    OutputArray(c, 3, bi);
}

void CxTranspose(Call& c) { SwappedShapeMethod(c, ComplexTranspose); }
void CxPseudoInverse(Call& c) { SwappedShapeMethod(c, ComplexPseudoInverse); }

void CxSVD(Call& c) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    const std::int32_t m = ar.Size(0), n = ar.Size(1), k = ThinSize(ar);
    ArgArray ur, ui, s, vr, vi;
    ur.Create2D(m, k);
    ui.Create2D(m, k);
    s.Create1D(k);
    vr.Create2D(n, k);
    vi.Create2D(n, k);
    ThrowAnalysisStatus(ComplexSVD(ar.AsDouble(), ai.AsDouble(), m, n, ur.AsDouble(), ui.AsDouble(), s.AsDouble(),
                                   vr.AsDouble(), vi.AsDouble()));
    OutputArray(c, 2, ur);
    OutputArray(c, 3, ui);
    OutputArray(c, 4, s);
    OutputArray(c, 5, vr);
    OutputArray(c, 6, vi);
}

void CxTrace(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    double tr = 0.0, ti = 0.0;
    ThrowAnalysisStatus(ComplexTrace(ar.AsDouble(), ai.AsDouble(), ar.Size(0), &tr, &ti));
    c.SetOutDouble(2, tr);
    c.SetOutDouble(3, ti);
}

void CxCheckPosDef(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    std::int32_t flag = 0;
    ThrowAnalysisStatus(ComplexCheckPosDef(ar.AsDouble(), ai.AsDouble(), ar.Size(0), &flag));
    c.SetResultInt(flag);
}

// Only the arrays that the matrix type uses are looked at, so a host may pass
// anything (say 0) for the others: none for the identity, Array1 for the
// diagonal, Vandermonde and companion matrices, both for Toeplitz.
void CxSpecialMatrix(Call& c) {
    ArgScalar type(c.In(0)), size(c.In(1));
    const std::int32_t matrixType = type.Int(), order = size.Int();
    const bool usesArray1 = matrixType >= kCxSpecialDiagonal && matrixType <= kCxSpecialCompanion;
    const bool usesArray2 = matrixType == kCxSpecialToeplitz;
    ArgArray a1r, a1i, a2r, a2i;
    if (usesArray1) AttachVector(a1r, a1i, c, 2);
    if (usesArray2) AttachVector(a2r, a2i, c, 4);
    const std::int32_t n1 = usesArray1 ? a1r.Count() : 0, n2 = usesArray2 ? a2r.Count() : 0;
    std::int32_t rows = 0, cols = 0;
    ThrowAnalysisStatus(ComplexSpecialMatrixSize(matrixType, order, n1, n2, &rows, &cols));
    ArgArray br, bi;
    br.Create2D(rows, cols);
    bi.Create2D(rows, cols);
    ThrowAnalysisStatus(ComplexSpecialMatrix(matrixType, order, usesArray1 ? a1r.AsDouble() : nullptr,
                                             usesArray1 ? a1i.AsDouble() : nullptr, n1,
                                             usesArray2 ? a2r.AsDouble() : nullptr,
                                             usesArray2 ? a2i.AsDouble() : nullptr, n2, br.AsDouble(), bi.AsDouble()));
    OutputArray(c, 6, br);
    OutputArray(c, 7, bi);
}

void CxQR(Call& c) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    const std::int32_t m = ar.Size(0), n = ar.Size(1), k = ThinSize(ar);
    ArgArray qr, qi, rr, ri;
    qr.Create2D(m, k);
    qi.Create2D(m, k);
    rr.Create2D(k, n);
    ri.Create2D(k, n);
    ThrowAnalysisStatus(
        ComplexQR(ar.AsDouble(), ai.AsDouble(), m, n, qr.AsDouble(), qi.AsDouble(), rr.AsDouble(), ri.AsDouble()));
    OutputArray(c, 2, qr);
    OutputArray(c, 3, qi);
    OutputArray(c, 4, rr);
    OutputArray(c, 5, ri);
}

// The factorisation works in place, so it runs on a copy of A in the output;
// p is the sequence of row exchanges and Sign their parity (0 or 1).
void CxLU(Call& c) {
    ArgArray ar, ai;
    AttachSquare(ar, ai, c, 0);
    const std::int32_t n = ar.Size(0);
    ArgArray br, bi, p;
    br.Create2D(n, n);
    bi.Create2D(n, n);
    p.Create1D(n, VT_I4);
    const std::size_t count = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    std::copy_n(ar.AsDouble(), count, br.AsDouble());
    std::copy_n(ai.AsDouble(), count, bi.AsDouble());
    std::int32_t parity = 0;
    ThrowAnalysisStatus(ComplexLUDecompose(br.AsDouble(), bi.AsDouble(), n, p.AsInt32(), &parity));
    OutputArray(c, 2, br);
    OutputArray(c, 3, bi);
    OutputArray(c, 4, p);
    c.SetOutInt(5, parity);
}

void CxSVDS(Call& c) {
    ArgArray ar, ai;
    AttachMatrix(ar, ai, c, 0);
    ArgArray s;
    s.Create1D(ThinSize(ar));
    ThrowAnalysisStatus(ComplexSingularValues(ar.AsDouble(), ai.AsDouble(), ar.Size(0), ar.Size(1), s.AsDouble()));
    OutputArray(c, 2, s);
}

void AboutBox(Call& c) { ShowAboutBox(c); }

}  // namespace complex_handlers

#define VN_HANDLERS complex_handlers
VN_DEFINE_DISPATCH_TABLE(VN_COMPLEX_METHODS, L"VNAnalysisControlsLib.VNComplex", CLSID_VNComplex, DIID__DVNComplex)
#undef VN_HANDLERS

const DispatchTable& CVNComplexCtrl::Table() { return kDispatchTable; }

}  // namespace vn
