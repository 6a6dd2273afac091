// VNMatrix: real dense linear algebra.
//
// A matrix argument is handed to its kernel in place: rows = size of
// dimension 1, columns = size of dimension 2, and the kernel reads element
// (i, j) at position i*cols + j of the safe array's own block. Results of r
// rows and q columns are created r-by-q the same way, so a result read back
// by the host has the layout of its input; nothing is transposed on either
// side. Vectors are one-dimensional.
//
// Several handlers share their names with the kernels they call, so every
// kernel is named with its namespace (vn::Trace) to get past the handler.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/array/array_ops.h"
#include "analysis/matrix/decompositions.h"
#include "analysis/matrix/linalg.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

#include <algorithm>

namespace vn {
namespace matrix_handlers {

namespace {

// Two-dimensional (-20008 otherwise, -20003 for no dimension).
void RequireMatrix(const ArgArray& a) { a.RequireDims(2); }

// Two-dimensional and square (-20040); returns the order.
std::int32_t RequireSquareMatrix(const ArgArray& a) {
    a.RequireDims(2);
    a.RequireSquare();
    return a.Size(0);
}

// A one-dimensional right-hand side (or interchange vector) of n entries.
void RequireVectorOf(const ArgArray& v, std::int32_t n) {
    v.RequireDims(1);
    v.RequireElements(n);
}

// A square matrix to one number, or to another n-by-n matrix.
using SquareKernel = AnalysisStatus (*)(const double*, std::int32_t, double*);
using ShapeToScalar = AnalysisStatus (*)(const double*, std::int32_t, std::int32_t, std::int32_t, double*);

void SquareScalarMethod(Call& c, SquareKernel kernel) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    double value = 0.0;
    ThrowAnalysisStatus(kernel(a.AsDouble(), n, &value));
    c.SetResultDouble(value);
}

void SquareMatrixMethod(Call& c, SquareKernel kernel) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray b;
    b.Create2D(n, n);
    ThrowAnalysisStatus(kernel(a.AsDouble(), n, b.AsDouble()));
    ReturnArray(c, b);
}

// A square matrix and a class selector (GenInvMatrix, GenDeterminant); the
// selector is read after the shape checks and judged by the kernel.
void RequireSquareWithType(Call& c, ArgArray& a, std::int32_t* n, std::int32_t* type) {
    *n = RequireSquareMatrix(a);
    ArgScalar selector(c.In(1));
    *type = selector.Int();
}

// A matrix of any shape and a norm selector to one number.
void NormMethod(Call& c, ShapeToScalar kernel) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    ArgScalar selector(c.In(1));
    const std::int32_t type = selector.Int();
    double value = 0.0;
    ThrowAnalysisStatus(kernel(a.AsDouble(), a.Size(0), a.Size(1), type, &value));
    c.SetResultDouble(value);
}

}  // namespace

void DotProduct(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireVectorOf(y, x.Count());
    double value = 0.0;
    ThrowAnalysisStatus(vn::DotProduct(x.AsDouble(), y.AsDouble(), x.Count(), &value));
    c.SetResultDouble(value);
}

void OuterProduct(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    const std::int32_t m = x.Count(), n = y.Count();
    ArgArray z;
    z.Create2D(m, n);
    ThrowAnalysisStatus(vn::OuterProduct(x.AsDouble(), m, y.AsDouble(), n, z.AsDouble()));
    ReturnArray(c, z);
}

// x (m-by-k) times y (k-by-n), or times a vector of k giving a vector of m.
// A y of the wrong inner size is -20039, not the generic -20008.
void MatrixMul(Call& c) {
    ArgArray x(c.In(0));
    RequireMatrix(x);
    ArgArray y(c.In(1));
    y.RequireMoreDims(0);
    const bool vector = y.Dims() == 1;
    if (!vector) y.RequireDims(2);
    const std::int32_t m = x.Size(0), k = x.Size(1);
    if (y.Size(0) != k) ThrowAnalysisStatus(kErrWrongCount);  // a partner of the wrong size
    const std::int32_t n = vector ? 1 : y.Size(1);
    ArgArray z;
    if (vector)
        z.Create1D(m);
    else
        z.Create2D(m, n);
    ThrowAnalysisStatus(vn::MatrixMul(x.AsDouble(), y.AsDouble(), m, k, n, z.AsDouble()));
    ReturnArray(c, z);
}

void Transpose(Call& c) {
    ArgArray x(c.In(0));
    RequireMatrix(x);
    const std::int32_t rows = x.Size(0), cols = x.Size(1);
    ArgArray z;
    z.Create2D(cols, rows);
    ThrowAnalysisStatus(TransposeMatrix(x.AsDouble(), rows, cols, z.AsDouble()));
    ReturnArray(c, z);
}

void Trace(Call& c) { SquareScalarMethod(c, vn::Trace); }
// A singular matrix gives 0.0, not an error (the kernel's rule).
void Determinant(Call& c) { SquareScalarMethod(c, vn::Determinant); }
void InvMatrix(Call& c) { SquareMatrixMethod(c, vn::InvMatrix); }
void Cholesky(Call& c) { SquareMatrixMethod(c, vn::Cholesky); }

void CheckPosdef(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    std::int32_t flag = 0;
    ThrowAnalysisStatus(vn::CheckPosdef(a.AsDouble(), n, &flag));
    c.SetResultInt(flag);
}

void LinEqs(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray y(c.In(1));
    RequireVectorOf(y, n);
    ArgArray x;
    x.Create1D(n);
    ThrowAnalysisStatus(vn::LinEqs(a.AsDouble(), y.AsDouble(), n, x.AsDouble()));
    ReturnArray(c, x);
}

// The factorisation overwrites its matrix, so it runs on b holding a copy of
// a; the host's a is never touched. Sign is the interchange parity (0 or 1).
void LU(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray b, p;
    b.Create2D(n, n);
    p.Create1D(n, VT_I4);
    const double* source = a.AsDouble();
    std::copy(source, source + static_cast<std::ptrdiff_t>(n) * n, b.AsDouble());
    std::int32_t parity = 0;
    ThrowAnalysisStatus(LUDecompose(b.AsDouble(), n, p.AsInt32(), &parity));
    OutputArray(c, 1, b);
    OutputArray(c, 2, p);
    c.SetOutInt(3, parity);
}

// p comes from the host as any numeric array and is taken as 32-bit
// integers; the kernel refuses entries outside [0, n) (-20017).
void ForwSub(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray y(c.In(1));
    RequireVectorOf(y, n);
    ArgArray p(c.In(2));
    RequireVectorOf(p, n);
    ArgArray x;
    x.Create1D(n);
    ThrowAnalysisStatus(vn::ForwSub(a.AsDouble(), y.AsDouble(), n, p.AsInt32(), x.AsDouble()));
    OutputArray(c, 3, x);
}

void BackSub(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray y(c.In(1));
    RequireVectorOf(y, n);
    ArgArray x;
    x.Create1D(n);
    ThrowAnalysisStatus(vn::BackSub(a.AsDouble(), y.AsDouble(), n, x.AsDouble()));
    ReturnArray(c, x);
}

// a is m-by-n of any shape for class 0 (minimum-norm least squares); the
// kernel itself refuses a non-square matrix for the other classes (-20040)
// after judging the class. A rank-deficient class-0 matrix still gives a
// solution: the warning becomes Warning = 1 instead of an error.
void GenLinEqs(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    const std::int32_t m = a.Size(0), n = a.Size(1);
    ArgArray y(c.In(1));
    RequireVectorOf(y, m);
    ArgScalar selector(c.In(2));
    const std::int32_t type = selector.Int();
    ArgArray x;
    x.Create1D(n);
    const AnalysisStatus status = vn::GenLinEqs(a.AsDouble(), m, n, y.AsDouble(), type, x.AsDouble());
    ThrowAnalysisStatus(status);
    OutputArray(c, 3, x);
    c.SetOutInt(4, status == kWarnRankDeficient ? 1 : 0);
}

void GenInvMatrix(Call& c) {
    ArgArray a(c.In(0));
    std::int32_t n = 0, type = 0;
    RequireSquareWithType(c, a, &n, &type);
    ArgArray b;
    b.Create2D(n, n);
    ThrowAnalysisStatus(vn::GenInvMatrix(a.AsDouble(), n, type, b.AsDouble()));
    ReturnArray(c, b);
}

void GenDeterminant(Call& c) {
    ArgArray a(c.In(0));
    std::int32_t n = 0, type = 0;
    RequireSquareWithType(c, a, &n, &type);
    double det = 0.0;
    ThrowAnalysisStatus(vn::GenDeterminant(a.AsDouble(), n, type, &det));
    c.SetResultDouble(det);
}

void MatrixNorm(Call& c) { NormMethod(c, vn::MatrixNorm); }
// Any shape for the 2-norm; the kernel asks for a square matrix (-20040)
// with the other norms, which need the inverse.
void ConditionNumber(Call& c) { NormMethod(c, vn::ConditionNumber); }

// Economy form: q is m-by-k, r is k-by-n with k = min(m, n).
void Qr(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    const std::int32_t m = a.Size(0), n = a.Size(1), k = std::min(m, n);
    ArgArray q, r;
    q.Create2D(m, k);
    r.Create2D(k, n);
    ThrowAnalysisStatus(QRDecompose(a.AsDouble(), m, n, q.AsDouble(), r.AsDouble()));
    OutputArray(c, 1, q);
    OutputArray(c, 2, r);
}

// Thin form: u is m-by-k, s has k values (decreasing), v is n-by-k.
void SVD(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    const std::int32_t m = a.Size(0), n = a.Size(1), k = std::min(m, n);
    ArgArray u, s, v;
    u.Create2D(m, k);
    s.Create1D(k);
    v.Create2D(n, k);
    ThrowAnalysisStatus(SVDecompose(a.AsDouble(), m, n, u.AsDouble(), s.AsDouble(), v.AsDouble()));
    OutputArray(c, 1, u);
    OutputArray(c, 2, s);
    OutputArray(c, 3, v);
}

void SVDS(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    const std::int32_t m = a.Size(0), n = a.Size(1);
    ArgArray s;
    s.Create1D(std::min(m, n));
    ThrowAnalysisStatus(SingularValues(a.AsDouble(), m, n, s.AsDouble()));
    OutputArray(c, 1, s);
}

// The pseudo-inverse of an m-by-n matrix is n-by-m.
void PseudoInverse(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    const std::int32_t m = a.Size(0), n = a.Size(1);
    ArgArray b;
    b.Create2D(n, m);
    ThrowAnalysisStatus(vn::PseudoInverse(a.AsDouble(), m, n, b.AsDouble()));
    ReturnArray(c, b);
}

void MatrixRank(Call& c) {
    ArgArray a(c.In(0));
    RequireMatrix(a);
    std::int32_t rank = 0;
    ThrowAnalysisStatus(vn::MatrixRank(a.AsDouble(), a.Size(0), a.Size(1), &rank));
    c.SetResultInt(rank);
}

// Values in decreasing modulus; column j of the vector parts belongs to
// value j.
void GenEigenValueVector(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray valRe, valIm, vecRe, vecIm;
    valRe.Create1D(n);
    valIm.Create1D(n);
    vecRe.Create2D(n, n);
    vecIm.Create2D(n, n);
    ThrowAnalysisStatus(GeneralEigen(a.AsDouble(), n, n, valRe.AsDouble(), valIm.AsDouble(), vecRe.AsDouble(),
                                     vecIm.AsDouble()));
    OutputArray(c, 1, valRe);
    OutputArray(c, 2, valIm);
    OutputArray(c, 3, vecRe);
    OutputArray(c, 4, vecIm);
}

// Only the lower triangle of a is read; values ascend, column j of Vectors
// belongs to value j.
void SymEigenValueVector(Call& c) {
    ArgArray a(c.In(0));
    const std::int32_t n = RequireSquareMatrix(a);
    ArgArray values, vectors;
    values.Create1D(n);
    vectors.Create2D(n, n);
    ThrowAnalysisStatus(SymmetricEigen(a.AsDouble(), n, n, values.AsDouble(), vectors.AsDouble()));
    OutputArray(c, 1, values);
    OutputArray(c, 2, vectors);
}

// Each argument is read only when the matrix type uses it (MatrixSize for
// the identity, Array2 for Toeplitz, Array1 otherwise), so a host may pass
// anything, a scalar included, in the unused places. A type outside 0..4
// reads nothing further and is refused by the shape routine (-20061).
void SpecialMatrix(Call& c) {
    ArgScalar selector(c.In(0));
    const std::int32_t type = selector.Int();
    std::int32_t size = 0;
    if (type == kSpecialIdentity) {
        ArgScalar order(c.In(1));
        size = order.Int();
    }
    const bool usesArray1 = type >= kSpecialDiagonal && type <= kSpecialCompanion;
    const bool usesArray2 = type == kSpecialToeplitz;
    ArgArray array1, array2;
    if (usesArray1) {
        array1.AttachByValue(c.In(2));
        array1.Lock();
        array1.RequireDims(1);
    }
    if (usesArray2) {
        array2.AttachByValue(c.In(3));
        array2.Lock();
        array2.RequireDims(1);
    }
    const std::int32_t n1 = usesArray1 ? array1.Count() : 0, n2 = usesArray2 ? array2.Count() : 0;
    std::int32_t rows = 0, cols = 0;
    ThrowAnalysisStatus(SpecialMatrixShape(type, size, n1, n2, &rows, &cols));
    ArgArray z;
    z.Create2D(rows, cols);
    ThrowAnalysisStatus(vn::SpecialMatrix(type, size, usesArray1 ? array1.AsDouble() : nullptr, n1,
                                          usesArray2 ? array2.AsDouble() : nullptr, n2, z.AsDouble()));
    ReturnArray(c, z);
}

void AboutBox(Call& c) { ShowAboutBox(c); }

}  // namespace matrix_handlers

#define VN_HANDLERS matrix_handlers
VN_DEFINE_DISPATCH_TABLE(VN_MATRIX_METHODS, L"VNAnalysisControlsLib.VNMatrix", CLSID_VNMatrix, DIID__DVNMatrix)
#undef VN_HANDLERS

const DispatchTable& CVNMatrixCtrl::Table() { return kDispatchTable; }

}  // namespace vn
