// VNComplex through IDispatch: scalar arithmetic against closed forms, the
// element-wise array forms, the matrix methods by the identities their
// results must satisfy, output shapes and types, and automation errors.
#include "client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <utility>
#include <vector>

using namespace vntest;

namespace {

using Cx = std::complex<double>;
constexpr HRESULT Err(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }
const double kPi = 3.14159265358979323846;
const Cx I(0, 1);

const wchar_t* const kSamples = L"The number of samples must be >0.";
const wchar_t* const kShape = L"The input arrays do not contain the correct number of data values for this function.";
const wchar_t* const kNotArray = L"The argument is not  an array.";
const wchar_t* const kDivide = L"Divide by zero error";
const wchar_t* const kSquare = L"The input matrix must be a square matrix.";
const wchar_t* const kInner =
    L"The number of columns in the first matrix is not equal to the number of rows in the second matrix or vector.";
const wchar_t* const kSelection = L"The selection is invalid.";
const wchar_t* const kSingular = L"The system of equations cannot be solved because the input matrix is singular.";

// A complex matrix held row-major, element (i, j) at i * cols + j: the block
// the methods read from and write to a two-dimensional array.
struct CMatrix {
    int rows = 0, cols = 0;
    std::vector<Cx> v;
    Cx& operator()(int i, int j) { return v[i * cols + j]; }
    Cx operator()(int i, int j) const { return v[i * cols + j]; }
};

CMatrix Make(int rows, int cols, std::vector<Cx> v) { return {rows, cols, std::move(v)}; }
CMatrix Zeros(int rows, int cols) { return {rows, cols, std::vector<Cx>(rows * cols)}; }
CMatrix Identity(int n) {
    CMatrix e = Zeros(n, n);
    for (int i = 0; i < n; ++i) e(i, i) = 1;
    return e;
}

CMatrix operator*(const CMatrix& a, const CMatrix& b) {
    CMatrix z = Zeros(a.rows, b.cols);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < b.cols; ++j)
            for (int k = 0; k < a.cols; ++k) z(i, j) += a(i, k) * b(k, j);
    return z;
}

CMatrix ConjTranspose(const CMatrix& a) {
    CMatrix t = Zeros(a.cols, a.rows);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) t(j, i) = std::conj(a(i, j));
    return t;
}

// Keeps the triangle on and below (lower) or on and above the diagonal.
CMatrix Triangle(CMatrix a, bool lower) {
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j)
            if (lower ? j > i : j < i) a(i, j) = 0;
    return a;
}

double MaxDiff(const CMatrix& a, const CMatrix& b) {
    if (a.rows != b.rows || a.cols != b.cols) return INFINITY;
    double d = 0;
    for (std::size_t k = 0; k < a.v.size(); ++k) d = std::max(d, std::abs(a.v[k] - b.v[k]));
    return d;
}

// One part of a matrix as a host passes it; a single column goes as a
// one-dimensional array (a vector).
Var Part(const CMatrix& a, bool imaginary) {
    std::vector<double> block;
    for (const Cx& z : a.v) block.push_back(imaginary ? z.imag() : z.real());
    return a.cols == 1 ? DoubleArray(block) : DoubleMatrix(a.rows, a.cols, block);
}
Var Re(const CMatrix& a) { return Part(a, false); }
Var Im(const CMatrix& a) { return Part(a, true); }

// A complex result from its two outputs: arrays of doubles with lower bound
// 0 and equal shapes; a vector comes back as one column.
CMatrix Read(const Var& re, const Var& im) {
    EXPECT_EQ(ElementType(re), VT_R8);
    EXPECT_EQ(ElementType(im), VT_R8);
    EXPECT_EQ(Sizes(re), Sizes(im));
    for (LONG lb : LowerBounds(re)) EXPECT_EQ(lb, 0);
    const std::vector<LONG> s = Sizes(re);
    const std::vector<double> r = Doubles(re), i = Doubles(im);
    CMatrix a = Zeros(s.empty() ? 0 : s[0], s.size() > 1 ? s[1] : 1);
    for (std::size_t k = 0; k < a.v.size() && k < i.size(); ++k) a.v[k] = {r[k], i[k]};
    return a;
}

// Test matrices. A needs a row exchange at step 0 (|4 - i| is the largest
// modulus of column 0); H is Hermitian and diagonally dominant, hence
// positive definite; B has full column rank.
const CMatrix kA = Make(3, 3, {1.0, 2.0 * I, 3.0, 4.0 - I, 1.0, 0.0, 2.0, -1.0 + I, 5.0 * I});
const CMatrix kH = Make(3, 3, {4.0, 1.0 + I, 0.0, 1.0 - I, 3.0, 0.5 * I, 0.0, -0.5 * I, 2.0});
const CMatrix kB = Make(3, 2, {1.0, 2.0 * I, I, 1.0, 3.0, -1.0 + I});

struct Result { Outcome outcome; std::vector<Var> out; };

class ComplexMethods : public ::testing::Test {
protected:
    Control cx_{L"VNAnalysisControlsLib.VNComplex.1"};
    void SetUp() override { ASSERT_TRUE(cx_.valid()) << std::hex << cx_.createResult(); }

    // Calls `method` with `in` followed by `outputs` by-reference variants that
    // hold the string "old" beforehand.
    Result Call(const wchar_t* method, std::vector<Var> in, int outputs) const {
        Result r;
        r.out.reserve(outputs);
        for (int i = 0; i < outputs; ++i) r.out.emplace_back(L"old");
        std::vector<Var> refs;
        for (auto& o : r.out) refs.push_back(RefTo(o));
        std::vector<VARIANT*> raw;
        for (auto& a : in) raw.push_back(a.get());
        for (auto& a : refs) raw.push_back(a.get());
        r.outcome = cx_.Call(method, raw);
        return r;
    }
    Result Ok(const wchar_t* method, std::vector<Var> in, int outputs) const {
        Result r = Call(method, std::move(in), outputs);
        EXPECT_TRUE(r.outcome.ok()) << Narrow(method) << ": " << std::hex << r.outcome.code << " "
                                    << Narrow(r.outcome.description);
        return r;
    }
    // A complex matrix method with one complex matrix result (outputs k, k+1).
    CMatrix Matrix(const wchar_t* method, std::vector<Var> in, int outputs = 2, int k = 0) const {
        Result r = Ok(method, std::move(in), outputs);
        return Read(r.out[k], r.out[k + 1]);
    }
};

double Only(const Var& v) {
    const std::vector<double> d = Doubles(v);
    return d.size() == 1 ? d[0] : NAN;
}

TEST_F(ComplexMethods, ScalarsMatchClosedForms) {
    struct Row { const wchar_t* method; std::vector<Var> in; double re, im; };
    const double log10e = 0.434294481903252;  // the routine's own factor for the phase
    const Row rows[] = {
        {L"CxAdd", {1.0, 2.0, 3.0, -5.0}, 4, -3},
        {L"CxSub", {1.0, 2.0, 3.0, -5.0}, -2, 7},
        {L"CxMul", {1.0, 2.0, 3.0, 4.0}, -5, 10},
        {L"CxDiv", {-5.0, 10.0, 3.0, 4.0}, 1, 2},
        {L"CxDiv", {Var(L"-5"), 10, 3.0, Var(L"4")}, 1, 2},  // numeric strings and integers
        {L"CxRecip", {0.0, 2.0}, 0, -0.5},
        {L"CxSqrt", {-4.0, 0.0}, 0, 2},
        {L"CxSqrt", {-4.0, -0.0}, 0, -2},  // the sign of a zero picks the side of the cut
        {L"CxSqrt", {0.0, 0.0}, 0, 0},
        {L"CxLog", {10.0, 0.0}, 1, 0},
        {L"CxLog", {0.0, 1.0}, 0, kPi / 2 * log10e},
        {L"CxLn", {-1.0, 0.0}, 0, kPi},
        {L"CxExp", {0.0, kPi}, -1, 0},
        {L"CxExp", {std::log(2.0), kPi / 2}, 0, 2},
        {L"CxPow", {1.0, 1.0, 2.0}, 0, 2},
        {L"CxPow", {-1.0, 0.0, 0.5}, 0, 1},
        {L"CxPow", {0.0, 0.0, -1.0}, 0, 0},
        {L"ToPolar", {3.0, -4.0}, 5, std::atan2(-4.0, 3.0)},
        {L"ToPolar", {-1.0, 0.0}, 1, kPi},
        {L"ToPolar", {-1.0, -0.0}, 1, -kPi},
        {L"ToRect", {2.0, kPi / 2}, 0, 2},
        {L"ToRect", {-1.0, 0.0}, -1, 0},  // a negative magnitude is used as it is
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method) + " " + std::to_string(row.re) + " " + std::to_string(row.im));
        Result r = Ok(row.method, row.in, 2);
        EXPECT_EQ(r.outcome.result.vt(), VT_EMPTY);
        ASSERT_EQ(r.out[0].vt(), VT_R8);
        ASSERT_EQ(r.out[1].vt(), VT_R8);
        EXPECT_NEAR(Only(r.out[0]), row.re, 1e-15 * std::max(1.0, std::abs(row.re)));
        EXPECT_NEAR(Only(r.out[1]), row.im, 1e-15 * std::max(1.0, std::abs(row.im)));
    }

    // A divisor whose squared magnitude underflows is accepted by the scalar
    // division (its parts are not both zero) and gives a non-finite quotient.
    Result tiny = Ok(L"CxDiv", {1.0, 0.0, 1e-200, 0.0}, 2);
    EXPECT_FALSE(std::isfinite(Only(tiny.out[0])));
}

TEST_F(ComplexMethods, ArraysWorkElementByElement) {
    // x = [1+2i, -3+0.5i, -i], y = [3+4i, 2-2i, i], as a 1-by-3 matrix so that
    // the shape must survive.
    const CMatrix x = Make(1, 3, {1.0 + 2.0 * I, -3.0 + 0.5 * I, -I});
    const CMatrix y = Make(1, 3, {3.0 + 4.0 * I, 2.0 - 2.0 * I, I});
    struct Row { const wchar_t* method; std::vector<Cx> z; };
    const Row rows[] = {
        {L"CxAddArray", {4.0 + 6.0 * I, -1.0 - 1.5 * I, 0.0}},
        {L"CxSubArray", {-2.0 - 2.0 * I, -5.0 + 2.5 * I, -2.0 * I}},
        {L"CxMulArray", {-5.0 + 10.0 * I, -5.0 + 7.0 * I, 1.0}},
        {L"CxDivArray", {0.44 + 0.08 * I, -0.875 - 0.625 * I, -1.0}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        EXPECT_LT(MaxDiff(Matrix(row.method, {Re(x), Im(x), Re(y), Im(y)}, 2), Make(1, 3, row.z)), 1e-15);
    }

    // Polar form and back, on 16-bit integers with lower bound 1.
    Result polar = Ok(L"ToPolarArray", {TypedArray(VT_I2, {3, -1, 0}, 1), TypedArray(VT_I2, {-4, 0, 2}, 1)}, 2);
    EXPECT_EQ(Doubles(polar.out[0]), (std::vector<double>{5, 1, 2}));
    EXPECT_EQ(Doubles(polar.out[1]), (std::vector<double>{std::atan2(-4.0, 3.0), kPi, kPi / 2}));
    const CMatrix back = Matrix(L"ToRectArray", {polar.out[0], polar.out[1]});
    EXPECT_LT(MaxDiff(back, Make(3, 1, {3.0 - 4.0 * I, -1.0, 2.0 * I})), 1e-14);

    // a x + b with a = 1 and b = 0 is x itself; with a = i, b = 1 a rotation
    // and a shift.
    EXPECT_EQ(MaxDiff(Matrix(L"CxLinEvArray", {Re(x), Im(x), 1.0, 0.0, 0.0, 0.0}), x), 0.0);
    const CMatrix rotated = Matrix(L"CxLinEvArray", {Re(x), Im(x), 0.0, 1.0, 1.0, 0.0});
    EXPECT_LT(MaxDiff(rotated, Make(1, 3, {-1.0 + I, 0.5 - 3.0 * I, 2.0})), 1e-15);
}

TEST_F(ComplexMethods, FailuresRaiseTheirStatusAndLeaveTheOutputsAlone) {
    struct Row {
        const char* name;
        const wchar_t* method;
        std::vector<Var> in;
        int outputs;
        HRESULT code;
        const wchar_t* description;  // nullptr: not checked
    };
    const Var v3 = DoubleArray({1, 2, 3}), v2 = DoubleArray({1, 2}), e = EmptyArray(VT_R8);
    const Var m23 = DoubleMatrix(2, 3, {1, 2, 3, 4, 5, 6}), m32 = DoubleMatrix(3, 2, {1, 2, 3, 4, 5, 6});
    const Var m22 = DoubleMatrix(2, 2, {1, 2, 3, 4}), z22 = DoubleMatrix(2, 2, {0, 0, 0, 0});
    const Var singular = DoubleMatrix(2, 2, {1, 2, 2, 4});
    const Row rows[] = {
        {"divide by zero", L"CxDiv", {1.0, 0.0, 0.0, -0.0}, 2, Err(20060), kDivide},
        {"ln of zero", L"CxLn", {0.0, 0.0}, 2, Err(20060), kDivide},
        {"zero to the zero", L"CxPow", {0.0, 0.0, 0.0}, 2, Err(20060), kDivide},
        {"not a number", L"CxAdd", {1.0, Var(L"one"), 0.0, 0.0}, 2, DISP_E_TYPEMISMATCH, nullptr},
        {"array divisor underflows", L"CxDivArray", {v2, v2, DoubleArray({1, 1e-200}), DoubleArray({0, 0})}, 2,
         Err(20060), kDivide},
        {"empty arrays", L"CxAddArray", {e, e, e, e}, 2, Err(20003), kSamples},
        {"empty linear", L"CxLinEvArray", {e, e, 1.0, 0.0, 0.0, 0.0}, 2, Err(20003), kSamples},
        {"shorter imaginary", L"CxAddArray", {v3, v2, v3, v3}, 2, Err(20008), kShape},
        {"vector and matrix", L"CxSubArray", {v3, v3, m23, m23}, 2, Err(20008), kShape},
        {"transposed shapes", L"CxDivArray", {m23, m23, m32, m32}, 2, Err(20008), kShape},
        {"polar lengths", L"ToPolarArray", {v3, v2}, 2, Err(20008), kShape},
        {"scalar for array", L"CxLinEvArray", {2.0, v2, 1.0, 0.0, 0.0, 0.0}, 2, Err(30103), kNotArray},
        {"vector for matrix", L"CxTranspose", {v3, v3}, 2, Err(20008), kShape},
        {"parts differ", L"CxMatrixRank", {m23, m32}, 0, Err(20008), kShape},
        {"not square", L"CxCholesky", {m23, m23}, 2, Err(20040), kSquare},
        {"not square first", L"CxLU", {m23, v2}, 4, Err(20040), kSquare},
        {"not positive definite", L"CxCholesky", {singular, z22}, 2, Err(20041), kSingular},
        {"singular inverse", L"CxGenInvMatrix", {singular, z22, 0}, 2, Err(20041), kSingular},
        {"inverse type", L"CxGenInvMatrix", {m22, z22, 4}, 2, Err(20061), kSelection},
        {"inner dimensions", L"CxMatrixMul", {m23, m23, m22, m22}, 2, Err(20039), kInner},
        {"vector length", L"CxMatrixMul", {m23, m23, v2, v2}, 2, Err(20039), kInner},
        {"vector parts", L"CxMatrixMul", {m23, m23, v3, v2}, 2, Err(20008), kShape},
        {"solve type 1 not square", L"CxGenLinEqs", {m32, m32, v3, v3, 1}, 3, Err(20040), kSquare},
        {"solve type", L"CxGenLinEqs", {m22, m22, v2, v2, -1}, 3, Err(20061), kSelection},
        {"right-hand side", L"CxGenLinEqs", {m32, m32, v2, v2, 0}, 3, Err(20008), kShape},
        {"dot lengths", L"CxDotProduct", {v3, v3, v2, v2}, 2, Err(20008), kShape},
        {"norm type", L"CxMatrixNorm", {m22, m22, 4}, 0, Err(20061), kSelection},
        {"condition 1 not square", L"CxConditionNumber", {m32, m32, 1}, 0, Err(20040), kSquare},
        {"condition singular", L"CxConditionNumber", {singular, z22, 1}, 0, Err(20041), kSingular},
        {"special type", L"CxSpecialMatrix", {5, 2, 0.0, 0.0, 0.0, 0.0}, 2, Err(20061), kSelection},
        {"identity of 0", L"CxSpecialMatrix", {0, 0, 0.0, 0.0, 0.0, 0.0}, 2, Err(20003), kSamples},
        {"constant companion", L"CxSpecialMatrix", {4, 0, DoubleArray({2}), DoubleArray({0}), 0.0, 0.0}, 2,
         Err(20008), kShape},
        {"Toeplitz without a row", L"CxSpecialMatrix", {2, 0, v2, v2, 0.0, 0.0}, 2, Err(30103), kNotArray},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Result r = Call(row.method, row.in, row.outputs);
        EXPECT_EQ(r.outcome.code, row.code) << std::hex << r.outcome.code;
        if (row.description) {
            EXPECT_EQ(r.outcome.description, row.description);
        }
        for (const Var& o : r.out) EXPECT_EQ(o.vt(), VT_BSTR);
    }
}

TEST_F(ComplexMethods, ProductsTransposeAndTrace) {
    // Square times non-square, and times a vector (which gives a vector).
    EXPECT_LT(MaxDiff(Matrix(L"CxMatrixMul", {Re(kA), Im(kA), Re(kB), Im(kB)}), kA * kB), 1e-14);
    const CMatrix x = Make(3, 1, {1.0, I, 2.0 - I});
    Result av = Ok(L"CxMatrixMul", {Re(kA), Im(kA), Re(x), Im(x)}, 2);
    EXPECT_EQ(Sizes(av.out[0]), std::vector<LONG>{3});
    EXPECT_LT(MaxDiff(Read(av.out[0], av.out[1]), kA * x), 1e-14);

    // The plain transpose: nothing is conjugated.
    const CMatrix bt = Make(2, 3, {1.0, I, 3.0, 2.0 * I, 1.0, -1.0 + I});
    EXPECT_EQ(MaxDiff(Matrix(L"CxTranspose", {Re(kB), Im(kB)}), bt), 0.0);

    Result tr = Ok(L"CxTrace", {Re(kA), Im(kA)}, 2);
    EXPECT_DOUBLE_EQ(Only(tr.out[0]), 2);
    EXPECT_DOUBLE_EQ(Only(tr.out[1]), 5);

    // Bilinear: (1+i)(1+i) + 2i = 4i, where the inner product would give 2 + 2i.
    const CMatrix u = Make(2, 1, {1.0 + I, 2.0}), w = Make(2, 1, {1.0 + I, I});
    Result dot = Ok(L"CxDotProduct", {Re(u), Im(u), Re(w), Im(w)}, 2);
    EXPECT_DOUBLE_EQ(Only(dot.out[0]), 0);
    EXPECT_DOUBLE_EQ(Only(dot.out[1]), 4);

    const CMatrix y = Make(3, 1, {2.0, 1.0 - I, 3.0 * I});
    const CMatrix outer = Make(2, 3, {2.0 + 2.0 * I, 2.0, -3.0 + 3.0 * I, 4.0, 2.0 - 2.0 * I, 6.0 * I});
    EXPECT_EQ(MaxDiff(Matrix(L"CxOuterProduct", {Re(u), Im(u), Re(y), Im(y)}), outer), 0.0);
}

TEST_F(ComplexMethods, InversesAndSolvesSatisfyTheirEquations) {
    // `read` is the part of `a` that the matrix type reads.
    struct Row { const char* name; CMatrix a; int type; CMatrix read; };
    const Row rows[] = {
        {"general", kA, 0, kA},
        {"Hermitian positive definite", kH, 1, kH},
        {"lower", kA, 2, Triangle(kA, true)},
        {"upper", kA, 3, Triangle(kA, false)},
    };
    const CMatrix x0 = Make(3, 1, {1.0, I, 2.0 - I});
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CMatrix inv = Matrix(L"CxGenInvMatrix", {Re(row.a), Im(row.a), row.type}, 2);
        EXPECT_LT(MaxDiff(row.read * inv, Identity(3)), 1e-14);

        const CMatrix y = row.read * x0;
        Result r = Ok(L"CxGenLinEqs", {Re(row.a), Im(row.a), Re(y), Im(y), row.type}, 3);
        EXPECT_LT(MaxDiff(Read(r.out[0], r.out[1]), x0), 1e-14);
        EXPECT_EQ(r.out[2].vt(), VT_I4);
        EXPECT_EQ(Only(r.out[2]), 0);
    }

    // Two equal columns: the minimum-norm solution splits the weight evenly,
    // and the rank deficiency is a warning, not an error.
    const CMatrix twin = Make(3, 2, {1.0, 1.0, I, I, 2.0, 2.0});
    const CMatrix y = twin * Make(2, 1, {1.0, 0.0});
    Result r = Ok(L"CxGenLinEqs", {Re(twin), Im(twin), Re(y), Im(y), 0}, 3);
    EXPECT_LT(MaxDiff(Read(r.out[0], r.out[1]), Make(2, 1, {0.5, 0.5})), 1e-14);
    EXPECT_EQ(r.out[2].vt(), VT_I4);
    EXPECT_EQ(Only(r.out[2]), 1);

    // Pseudo-inverse: a left inverse of a tall matrix of full column rank.
    const CMatrix pinv = Matrix(L"CxPseudoInverse", {Re(kB), Im(kB)});
    EXPECT_LT(MaxDiff(pinv * kB, Identity(2)), 1e-14);

    Result det = Ok(L"CxDeterminant", {DoubleMatrix(2, 2, {1, 0, 2, 3}), DoubleMatrix(2, 2, {0, 1, 0, 0})}, 2);
    EXPECT_DOUBLE_EQ(Only(det.out[0]), 3);
    EXPECT_DOUBLE_EQ(Only(det.out[1]), -2);
}

TEST_F(ComplexMethods, FactorsReproduceTheirMatrix) {
    const CMatrix r = Matrix(L"CxCholesky", {Re(kH), Im(kH)});
    EXPECT_EQ(MaxDiff(r, Triangle(r, false)), 0.0);
    EXPECT_LT(MaxDiff(ConjTranspose(r) * r, kH), 1e-14);

    // P A = L U, P built by applying the exchanges p[0], p[1], ... in order.
    Result lu = Ok(L"CxLU", {Re(kA), Im(kA)}, 4);
    const CMatrix b = Read(lu.out[0], lu.out[1]);
    EXPECT_EQ(ElementType(lu.out[2]), VT_I4);
    EXPECT_EQ(lu.out[3].vt(), VT_I4);
    const std::vector<LONG> p = Longs(lu.out[2]);
    ASSERT_EQ(p.size(), 3u);
    EXPECT_EQ(p[0], 1);
    CMatrix pa = kA;
    int exchanges = 0;
    for (int j = 0; j < 3; ++j) {
        if (p[j] == j) continue;
        ++exchanges;
        for (int k = 0; k < 3; ++k) std::swap(pa(j, k), pa(p[j], k));
    }
    CMatrix l = Triangle(b, true);
    for (int i = 0; i < 3; ++i) l(i, i) = 1;
    EXPECT_LT(MaxDiff(l * Triangle(b, false), pa), 1e-14);
    EXPECT_EQ(Only(lu.out[3]), exchanges % 2);

    // Thin forms of a tall matrix and of its (wide) transpose.
    for (const CMatrix& a : {kB, ConjTranspose(kB)}) {
        SCOPED_TRACE(a.rows);
        const int k = std::min(a.rows, a.cols);
        Result qr = Ok(L"CxQR", {Re(a), Im(a)}, 4);
        const CMatrix q = Read(qr.out[0], qr.out[1]), rr = Read(qr.out[2], qr.out[3]);
        EXPECT_EQ(Sizes(qr.out[0]), (std::vector<LONG>{a.rows, k}));
        EXPECT_EQ(Sizes(qr.out[2]), (std::vector<LONG>{k, a.cols}));
        EXPECT_LT(MaxDiff(q * rr, a), 1e-14);
        EXPECT_LT(MaxDiff(ConjTranspose(q) * q, Identity(k)), 1e-14);
        EXPECT_EQ(MaxDiff(rr, Triangle(rr, false)), 0.0);

        Result svd = Ok(L"CxSVD", {Re(a), Im(a)}, 5);
        const CMatrix u = Read(svd.out[0], svd.out[1]), v = Read(svd.out[3], svd.out[4]);
        const std::vector<double> s = Doubles(svd.out[2]);
        EXPECT_EQ(Sizes(svd.out[0]), (std::vector<LONG>{a.rows, k}));
        EXPECT_EQ(Sizes(svd.out[3]), (std::vector<LONG>{a.cols, k}));
        ASSERT_EQ(s.size(), static_cast<std::size_t>(k));
        CMatrix sigma = Zeros(k, k);
        for (int i = 0; i < k; ++i) sigma(i, i) = s[i];
        EXPECT_LT(MaxDiff(u * sigma * ConjTranspose(v), a), 1e-14);

        // Singular values decrease, and their squares add up to the squared
        // Frobenius norm; CxSVDS gives the same values.
        EXPECT_GE(s[0], s[1]);
        double frobenius = 0;
        for (const Cx& z : a.v) frobenius += std::norm(z);
        EXPECT_NEAR(s[0] * s[0] + s[1] * s[1], frobenius, 1e-13);
        EXPECT_EQ(Doubles(Ok(L"CxSVDS", {Re(a), Im(a)}, 1).out[0]), s);
    }
}

TEST_F(ComplexMethods, EigenvectorsSatisfyTheirEquation) {
    Result r = Ok(L"CxEigenValueVector", {Re(kA), Im(kA)}, 4);
    const CMatrix values = Read(r.out[0], r.out[1]), vectors = Read(r.out[2], r.out[3]);
    EXPECT_EQ(Sizes(r.out[0]), std::vector<LONG>{3});
    for (int k = 0; k < 3; ++k) {
        SCOPED_TRACE(k);
        CMatrix v = Zeros(3, 1);
        for (int i = 0; i < 3; ++i) v(i, 0) = vectors(i, k);
        EXPECT_LT(MaxDiff(kA * v, v * Make(1, 1, {values.v[k]})), 1e-13);
        EXPECT_NEAR((ConjTranspose(v) * v).v[0].real(), 1, 1e-14);
    }
    EXPECT_GE(std::abs(values.v[0]), std::abs(values.v[1]));
    EXPECT_GE(std::abs(values.v[1]), std::abs(values.v[2]));

    // The companion matrix of x^2 - 3x + 2 has the roots 2 and 1.
    const CMatrix c = Matrix(L"CxSpecialMatrix", {4, 0, DoubleArray({1, -3, 2}), DoubleArray({0, 0, 0}), 0.0, 0.0});
    EXPECT_EQ(MaxDiff(c, Make(2, 2, {3.0, -2.0, 1.0, 0.0})), 0.0);
    Result roots = Ok(L"CxEigenValueVector", {Re(c), Im(c)}, 4);
    EXPECT_LT(MaxDiff(Read(roots.out[0], roots.out[1]), Make(2, 1, {2.0, 1.0})), 1e-14);
}

TEST_F(ComplexMethods, SpecialMatricesReadOnlyTheArraysTheyUse) {
    struct Row { const char* name; std::vector<Var> in; CMatrix expected; };
    const Row rows[] = {
        {"identity ignores the arrays", {0, 2, 0.0, L"x", 0.0, 0.0}, Identity(2)},
        {"diagonal", {1, 0, DoubleArray({1, 2}), DoubleArray({1, 0}), 0.0, 0.0}, Make(2, 2, {1.0 + I, 0.0, 0.0, 2.0})},
        {"Toeplitz",
         {2, 0, DoubleArray({1, 2, 3}), DoubleArray({0, 1, 0}), DoubleArray({9, 5, 6}), DoubleArray({0, 0, -1})},
         Make(3, 3, {1.0, 5.0, 6.0 - I, 2.0 + I, 1.0, 5.0, 3.0, 2.0 + I, 1.0})},
        {"Toeplitz 2 by 3",
         {2, 0, DoubleArray({1, 2}), DoubleArray({0, 0}), DoubleArray({0, 5, 6}), DoubleArray({0, 0, 0})},
         Make(2, 3, {1.0, 5.0, 6.0, 2.0, 1.0, 5.0})},
        {"Vandermonde", {3, 0, DoubleArray({2, 0}), DoubleArray({0, 1}), 0.0, 0.0}, Make(2, 2, {2.0, 1.0, I, 1.0})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(MaxDiff(Matrix(L"CxSpecialMatrix", row.in), row.expected), 0.0);
    }
}

TEST_F(ComplexMethods, MeasuresOfAMatrix) {
    // |entries| of [[1, -2], [3, 4i]]: column sums 4 and 6, row sums 3 and 7.
    const CMatrix m = Make(2, 2, {1.0, -2.0, 3.0, 4.0 * I});
    const CMatrix d = Make(2, 2, {3.0, 0.0, 0.0, -4.0 * I});
    struct Row { const wchar_t* method; CMatrix a; int type; double expected; };
    const Row rows[] = {
        {L"CxMatrixNorm", m, 1, 6},
        {L"CxMatrixNorm", m, 3, 7},
        {L"CxMatrixNorm", m, 2, std::sqrt(30.0)},
        {L"CxMatrixNorm", d, 0, 4},
        {L"CxConditionNumber", d, 0, 4.0 / 3},
        {L"CxConditionNumber", d, 1, 4.0 / 3},
        {L"CxConditionNumber", d, 2, 5 * std::sqrt(1.0 / 9 + 1.0 / 16)},
        {L"CxConditionNumber", Identity(3), 2, 3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method) + " " + std::to_string(row.type));
        Result r = Ok(row.method, {Re(row.a), Im(row.a), row.type}, 0);
        EXPECT_EQ(r.outcome.result.vt(), VT_R8);
        EXPECT_NEAR(Only(r.outcome.result), row.expected, 1e-14);
    }
    // Any shape in the 2-norm: the ratio of the extreme singular values.
    Result sv = Ok(L"CxSVDS", {Re(kB), Im(kB)}, 1);
    const std::vector<double> s = Doubles(sv.out[0]);
    Result cond = Ok(L"CxConditionNumber", {Re(kB), Im(kB), 0}, 0);
    EXPECT_NEAR(Only(cond.outcome.result), s[0] / s[1], 1e-14);

    struct IntRow { const char* name; const wchar_t* method; CMatrix a; int expected; };
    const CMatrix rank1 = Make(3, 2, {1.0, 2.0, I, 2.0 * I, 3.0, 6.0});
    const CMatrix notHermitian = Make(2, 2, {2.0, I, I, 2.0});
    const IntRow ints[] = {
        {"full rank", L"CxMatrixRank", kB, 2},
        {"rank one", L"CxMatrixRank", rank1, 1},
        {"positive definite", L"CxCheckPosDef", kH, 1},
        {"symmetric, not Hermitian", L"CxCheckPosDef", notHermitian, 0},
        {"semidefinite", L"CxCheckPosDef", Make(2, 2, {1.0, 0.0, 0.0, 0.0}), 0},
    };
    for (const auto& row : ints) {
        SCOPED_TRACE(row.name);
        Result r = Ok(row.method, {Re(row.a), Im(row.a)}, 0);
        EXPECT_EQ(r.outcome.result.vt(), VT_I4);
        EXPECT_EQ(Only(r.outcome.result), row.expected);
    }
}

}  // namespace
