// VNComplex through IDispatch: each method's wiring spot-checked against a
// closed form or the identity its result must satisfy, output shapes and
// types, and automation errors.
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
const double kPi = 3.14159265358979323846;
const Cx I(0, 1);

// A complex matrix held row-major: the block the methods read from and
// write to a two-dimensional array.
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

// One part of a matrix as a host passes it; a single column goes as a vector.
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

// A needs a row exchange at step 0; H is Hermitian positive definite; B has
// full column rank.
const CMatrix kA = Make(3, 3, {1.0, 2.0 * I, 3.0, 4.0 - I, 1.0, 0.0, 2.0, -1.0 + I, 5.0 * I});
const CMatrix kH = Make(3, 3, {4.0, 1.0 + I, 0.0, 1.0 - I, 3.0, 0.5 * I, 0.0, -0.5 * I, 2.0});
const CMatrix kB = Make(3, 2, {1.0, 2.0 * I, I, 1.0, 3.0, -1.0 + I});

struct Result { Outcome outcome; std::vector<Var> out; };

class ComplexMethods : public ::testing::Test {
protected:
    Control cx_{L"VNAnalysisControlsLib.VNComplex.1"};
    void SetUp() override { ASSERT_TRUE(cx_.valid()) << std::hex << cx_.createResult(); }

    // Calls `method` with `in` followed by `outputs` by-reference variants,
    // expecting success.
    Result Ok(const wchar_t* method, std::vector<Var> in, int outputs) const {
        Result r;
        r.out.assign(outputs, Var(L"old"));
        for (auto& o : r.out) in.push_back(RefTo(o));
        r.outcome = CallWith(cx_, method, in);
        EXPECT_TRUE(r.outcome.ok()) << Narrow(method) << ": " << std::hex << r.outcome.code << " "
                                    << Narrow(r.outcome.description);
        return r;
    }
    // A method with one complex matrix result (outputs k, k+1).
    CMatrix Matrix(const wchar_t* method, std::vector<Var> in, int outputs = 2, int k = 0) const {
        Result r = Ok(method, std::move(in), outputs);
        return Read(r.out[k], r.out[k + 1]);
    }
};

// Methods with one complex number as their two outputs.
TEST_F(ComplexMethods, ScalarsMatchClosedForms) {
    // Bilinear dot product: (1+i)(1+i) + 2i = 4i, where the inner product
    // would give 2 + 2i.
    const CMatrix u = Make(2, 1, {1.0 + I, 2.0}), w = Make(2, 1, {1.0 + I, I});
    struct Row { const wchar_t* method; std::vector<Var> in; double re, im; };
    const Row rows[] = {
        {L"CxAdd", {1.0, 2.0, 3.0, -5.0}, 4, -3},
        {L"CxSub", {1.0, 2.0, 3.0, -5.0}, -2, 7},
        {L"CxMul", {1.0, 2.0, 3.0, 4.0}, -5, 10},
        {L"CxDiv", {Var(L"-5"), 10, 3.0, Var(L"4")}, 1, 2},  // numeric strings and integers
        {L"CxRecip", {0.0, 2.0}, 0, -0.5},
        {L"CxSqrt", {-4.0, 0.0}, 0, 2},
        {L"CxLog", {10.0, 0.0}, 1, 0},
        {L"CxLn", {-1.0, 0.0}, 0, kPi},
        {L"CxExp", {std::log(2.0), kPi / 2}, 0, 2},
        {L"CxPow", {1.0, 1.0, 2.0}, 0, 2},
        {L"ToPolar", {3.0, -4.0}, 5, std::atan2(-4.0, 3.0)},
        {L"ToRect", {2.0, kPi / 2}, 0, 2},
        {L"CxTrace", {Re(kA), Im(kA)}, 2, 5},
        {L"CxDotProduct", {Re(u), Im(u), Re(w), Im(w)}, 0, 4},
        {L"CxDeterminant", {DoubleMatrix(2, 2, {1, 0, 2, 3}), DoubleMatrix(2, 2, {0, 1, 0, 0})}, 3, -2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        Result r = Ok(row.method, row.in, 2);
        EXPECT_EQ(r.outcome.result.vt(), VT_EMPTY);
        ASSERT_EQ(r.out[0].vt(), VT_R8);
        ASSERT_EQ(r.out[1].vt(), VT_R8);
        EXPECT_NEAR(Only(r.out[0]), row.re, 1e-15 * std::max(1.0, std::abs(row.re)));
        EXPECT_NEAR(Only(r.out[1]), row.im, 1e-15 * std::max(1.0, std::abs(row.im)));
    }
}

// Methods with one complex array as their two outputs, against results
// worked by hand or with the helpers above.
TEST_F(ComplexMethods, ArrayResults) {
    // A 1-by-3 matrix, so that the shape must survive.
    const CMatrix x = Make(1, 3, {1.0 + 2.0 * I, -3.0 + 0.5 * I, -I});
    const CMatrix y = Make(1, 3, {3.0 + 4.0 * I, 2.0 - 2.0 * I, I});
    const CMatrix v = Make(3, 1, {1.0, I, 2.0 - I}), u = Make(2, 1, {1.0 + I, 2.0});
    const std::vector<Var> xy = {Re(x), Im(x), Re(y), Im(y)};
    struct Row { const char* name; const wchar_t* method; std::vector<Var> in; CMatrix z; };
    const Row rows[] = {
        {"add", L"CxAddArray", xy, Make(1, 3, {4.0 + 6.0 * I, -1.0 - 1.5 * I, 0.0})},
        {"sub", L"CxSubArray", xy, Make(1, 3, {-2.0 - 2.0 * I, -5.0 + 2.5 * I, -2.0 * I})},
        {"mul", L"CxMulArray", xy, Make(1, 3, {-5.0 + 10.0 * I, -5.0 + 7.0 * I, 1.0})},
        {"div", L"CxDivArray", xy, Make(1, 3, {0.44 + 0.08 * I, -0.875 - 0.625 * I, -1.0})},
        // a x + b with a = i, b = 1: a rotation and a shift.
        {"linear", L"CxLinEvArray", {Re(x), Im(x), 0.0, 1.0, 1.0, 0.0}, Make(1, 3, {-1.0 + I, 0.5 - 3.0 * I, 2.0})},
        {"square by tall", L"CxMatrixMul", {Re(kA), Im(kA), Re(kB), Im(kB)}, kA * kB},
        {"by a vector", L"CxMatrixMul", {Re(kA), Im(kA), Re(v), Im(v)}, kA * v},  // a vector gives a vector
        // The plain transpose: nothing is conjugated.
        {"transpose", L"CxTranspose", {Re(kB), Im(kB)}, Make(2, 3, {1.0, I, 3.0, 2.0 * I, 1.0, -1.0 + I})},
        {"outer", L"CxOuterProduct", {Re(u), Im(u), DoubleArray({2, 1, 0}), DoubleArray({0, -1, 3})},
         Make(2, 3, {2.0 + 2.0 * I, 2.0, -3.0 + 3.0 * I, 4.0, 2.0 - 2.0 * I, 6.0 * I})},
        {"identity ignores the arrays", L"CxSpecialMatrix", {0, 2, 0.0, L"x", 0.0, 0.0}, Identity(2)},
        {"diagonal", L"CxSpecialMatrix", {1, 0, DoubleArray({1, 2}), DoubleArray({1, 0}), 0.0, 0.0},
         Make(2, 2, {1.0 + I, 0.0, 0.0, 2.0})},
        {"Toeplitz 2 by 3", L"CxSpecialMatrix",
         {2, 0, DoubleArray({1, 2}), DoubleArray({0, 1}), DoubleArray({0, 5, 6}), DoubleArray({0, 0, -1})},
         Make(2, 3, {1.0, 5.0, 6.0 - I, 2.0 + I, 1.0, 5.0})},
        {"Vandermonde", L"CxSpecialMatrix", {3, 0, DoubleArray({2, 0}), DoubleArray({0, 1}), 0.0, 0.0},
         Make(2, 2, {2.0, 1.0, I, 1.0})},
        {"companion of x^2 - 3x + 2", L"CxSpecialMatrix", {4, 0, DoubleArray({1, -3, 2}), DoubleArray({0, 0, 0}), 0.0, 0.0},
         Make(2, 2, {3.0, -2.0, 1.0, 0.0})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Result r = Ok(row.method, row.in, 2);
        EXPECT_EQ(Sizes(r.out[0]).size(), row.z.cols == 1 ? 1u : 2u);
        EXPECT_LT(MaxDiff(Read(r.out[0], r.out[1]), row.z), 1e-14);
    }

    // Polar form and back, on 16-bit integers with lower bound 1.
    Var re = TypedArray(VT_I2, {3, -1, 0}, 1);
    Result polar = Ok(L"ToPolarArray", {RefTo(re), TypedArray(VT_I2, {-4, 0, 2}, 1)}, 2);
    EXPECT_EQ(ElementType(re), VT_I2);
    EXPECT_EQ(Doubles(polar.out[0]), (std::vector<double>{5, 1, 2}));
    EXPECT_EQ(Doubles(polar.out[1]), (std::vector<double>{std::atan2(-4.0, 3.0), kPi, kPi / 2}));
    const CMatrix back = Matrix(L"ToRectArray", {polar.out[0], polar.out[1]});
    EXPECT_LT(MaxDiff(back, Make(3, 1, {3.0 - 4.0 * I, -1.0, 2.0 * I})), 1e-14);
}

TEST_F(ComplexMethods, FailuresRaiseTheirStatusAndLeaveTheOutputsAlone) {
    const Var v3 = DoubleArray({1, 2, 3}), v2 = DoubleArray({1, 2}), e = EmptyArray(VT_R8), o;
    const Var m23 = DoubleMatrix(2, 3, {1, 2, 3, 4, 5, 6}), m32 = DoubleMatrix(3, 2, {1, 2, 3, 4, 5, 6});
    const Var m22 = DoubleMatrix(2, 2, {1, 2, 3, 4}), z22 = DoubleMatrix(2, 2, {0, 0, 0, 0});
    const Var singular = DoubleMatrix(2, 2, {1, 2, 2, 4});
    const wchar_t* const kDivide = L"Divide by zero error";
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"divide by zero", L"CxDiv", {1.0, 0.0, 0.0, -0.0, o, o}, 2, E(20060), kDivide},
        {"ln of zero", L"CxLn", {0.0, 0.0, o, o}, 2, E(20060), kDivide},
        {"zero to the zero", L"CxPow", {0.0, 0.0, 0.0, o, o}, 2, E(20060), kDivide},
        {"not a number", L"CxAdd", {1.0, Var(L"one"), 0.0, 0.0, o, o}, 2, DISP_E_TYPEMISMATCH, nullptr},
        {"array divisor underflows", L"CxDivArray", {v2, v2, DoubleArray({1, 1e-200}), DoubleArray({0, 0}), o, o}, 2,
         E(20060), kDivide},
        {"empty arrays", L"CxAddArray", {e, e, e, e, o, o}, 2, E(20003), msg::kSamples},
        {"empty linear", L"CxLinEvArray", {e, e, 1.0, 0.0, 0.0, 0.0, o, o}, 2, E(20003), msg::kSamples},
        {"shorter imaginary", L"CxAddArray", {v3, v2, v3, v3, o, o}, 2, E(20008), msg::kShape},
        {"vector and matrix", L"CxSubArray", {v3, v3, m23, m23, o, o}, 2, E(20008), msg::kShape},
        {"transposed shapes", L"CxDivArray", {m23, m23, m32, m32, o, o}, 2, E(20008), msg::kShape},
        {"polar lengths", L"ToPolarArray", {v3, v2, o, o}, 2, E(20008), msg::kShape},
        {"scalar for array", L"CxLinEvArray", {2.0, v2, 1.0, 0.0, 0.0, 0.0, o, o}, 2, E(30103), msg::kNotArray},
        {"vector for matrix", L"CxTranspose", {v3, v3, o, o}, 2, E(20008), msg::kShape},
        {"parts differ", L"CxMatrixRank", {m23, m32}, 0, E(20008), msg::kShape},
        {"not square", L"CxCholesky", {m23, m23, o, o}, 2, E(20040), msg::kSquare},
        {"not square first", L"CxLU", {m23, v2, o, o, o, o}, 4, E(20040), msg::kSquare},
        {"not positive definite", L"CxCholesky", {singular, z22, o, o}, 2, E(20041), msg::kSingular},
        {"singular inverse", L"CxGenInvMatrix", {singular, z22, 0, o, o}, 2, E(20041), msg::kSingular},
        {"inverse type", L"CxGenInvMatrix", {m22, z22, 4, o, o}, 2, E(20061), msg::kSelection},
        {"inner dimensions", L"CxMatrixMul", {m23, m23, m22, m22, o, o}, 2, E(20008), msg::kShape},
        {"vector length", L"CxMatrixMul", {m23, m23, v2, v2, o, o}, 2, E(20008), msg::kShape},
        {"vector parts", L"CxMatrixMul", {m23, m23, v3, v2, o, o}, 2, E(20008), msg::kShape},
        {"solve type 1 not square", L"CxGenLinEqs", {m32, m32, v3, v3, 1, o, o, o}, 3, E(20040), msg::kSquare},
        {"solve type", L"CxGenLinEqs", {m22, m22, v2, v2, -1, o, o, o}, 3, E(20061), msg::kSelection},
        {"right-hand side", L"CxGenLinEqs", {m32, m32, v2, v2, 0, o, o, o}, 3, E(20008), msg::kShape},
        {"dot lengths", L"CxDotProduct", {v3, v3, v2, v2, o, o}, 2, E(20008), msg::kShape},
        {"norm type", L"CxMatrixNorm", {m22, m22, 4}, 0, E(20061), msg::kSelection},
        {"condition 1 not square", L"CxConditionNumber", {m32, m32, 1}, 0, E(20040), msg::kSquare},
        {"condition singular", L"CxConditionNumber", {singular, z22, 1}, 0, E(20041), msg::kSingular},
        {"special type", L"CxSpecialMatrix", {5, 2, 0.0, 0.0, 0.0, 0.0, o, o}, 2, E(20061), msg::kSelection},
        {"identity of 0", L"CxSpecialMatrix", {0, 0, 0.0, 0.0, 0.0, 0.0, o, o}, 2, E(20003), msg::kSamples},
        {"constant companion", L"CxSpecialMatrix", {4, 0, DoubleArray({2}), DoubleArray({0}), 0.0, 0.0, o, o}, 2,
         E(20008), msg::kShape},
        {"Toeplitz without a row", L"CxSpecialMatrix", {2, 0, v2, v2, 0.0, 0.0, o, o}, 2, E(30103), msg::kNotArray},
    };
    ExpectFailures(cx_, rows, L"VNAnalysisControlsLib.VNComplex");
}

TEST_F(ComplexMethods, InversesAndSolvesSatisfyTheirEquations) {
    // `read` is the part of `a` that the matrix type reads.
    struct Row { const char* name; int type; CMatrix read; };
    const Row rows[] = {{"general", 0, kA}, {"lower", 2, Triangle(kA, true)}};
    const CMatrix x0 = Make(3, 1, {1.0, I, 2.0 - I});
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CMatrix inv = Matrix(L"CxGenInvMatrix", {Re(kA), Im(kA), row.type});
        EXPECT_LT(MaxDiff(row.read * inv, Identity(3)), 1e-14);
        const CMatrix y = row.read * x0;
        Result r = Ok(L"CxGenLinEqs", {Re(kA), Im(kA), Re(y), Im(y), row.type}, 3);
        EXPECT_LT(MaxDiff(Read(r.out[0], r.out[1]), x0), 1e-14);
        EXPECT_EQ(r.out[2].vt(), VT_I4);
        EXPECT_EQ(Only(r.out[2]), 0);
    }
    // Two equal columns: the rank deficiency is a warning, not an error.
    const CMatrix twin = Make(3, 2, {1.0, 1.0, I, I, 2.0, 2.0});
    const CMatrix y = twin * Make(2, 1, {1.0, 0.0});
    Result r = Ok(L"CxGenLinEqs", {Re(twin), Im(twin), Re(y), Im(y), 0}, 3);
    EXPECT_LT(MaxDiff(Read(r.out[0], r.out[1]), Make(2, 1, {0.5, 0.5})), 1e-14);
    EXPECT_EQ(Only(r.out[2]), 1);

    EXPECT_LT(MaxDiff(Matrix(L"CxPseudoInverse", {Re(kB), Im(kB)}) * kB, Identity(2)), 1e-14);
}

TEST_F(ComplexMethods, FactorsReproduceTheirMatrix) {
    const CMatrix r = Matrix(L"CxCholesky", {Re(kH), Im(kH)});
    EXPECT_LT(MaxDiff(ConjTranspose(r) * r, kH), 1e-14);

    // P A = L U, P built by applying the exchanges p[0], p[1], ... in order.
    Result lu = Ok(L"CxLU", {Re(kA), Im(kA)}, 4);
    const CMatrix b = Read(lu.out[0], lu.out[1]);
    EXPECT_EQ(ElementType(lu.out[2]), VT_I4);
    EXPECT_EQ(lu.out[3].vt(), VT_I4);
    const std::vector<LONG> p = Longs(lu.out[2]);
    ASSERT_EQ(p.size(), 3u);
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
        EXPECT_EQ(Sizes(qr.out[0]), (std::vector<LONG>{a.rows, k}));
        EXPECT_EQ(Sizes(qr.out[2]), (std::vector<LONG>{k, a.cols}));
        EXPECT_LT(MaxDiff(Read(qr.out[0], qr.out[1]) * Read(qr.out[2], qr.out[3]), a), 1e-14);

        Result svd = Ok(L"CxSVD", {Re(a), Im(a)}, 5);
        const std::vector<double> s = Doubles(svd.out[2]);
        EXPECT_EQ(Sizes(svd.out[0]), (std::vector<LONG>{a.rows, k}));
        EXPECT_EQ(Sizes(svd.out[3]), (std::vector<LONG>{a.cols, k}));
        ASSERT_EQ(s.size(), static_cast<std::size_t>(k));
        CMatrix sigma = Zeros(k, k);
        for (int i = 0; i < k; ++i) sigma(i, i) = s[i];
        const CMatrix u = Read(svd.out[0], svd.out[1]), v = Read(svd.out[3], svd.out[4]);
        EXPECT_LT(MaxDiff(u * sigma * ConjTranspose(v), a), 1e-14);
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
    }
}

TEST_F(ComplexMethods, MeasuresOfAMatrix) {
    // |entries| of [[1, -2], [3, 4i]]: column sums 4 and 6.
    const CMatrix m = Make(2, 2, {1.0, -2.0, 3.0, 4.0 * I});
    const CMatrix d = Make(2, 2, {3.0, 0.0, 0.0, -4.0 * I});
    const CMatrix rank1 = Make(3, 2, {1.0, 2.0, I, 2.0 * I, 3.0, 6.0});
    struct Row { const wchar_t* method; CMatrix a; std::vector<Var> type; VARTYPE vt; double expected; };
    const Row rows[] = {
        {L"CxMatrixNorm", m, {1}, VT_R8, 6},
        {L"CxConditionNumber", d, {1}, VT_R8, 4.0 / 3},
        {L"CxMatrixRank", kB, {}, VT_I4, 2},
        {L"CxMatrixRank", rank1, {}, VT_I4, 1},
        {L"CxCheckPosDef", kH, {}, VT_I4, 1},
        {L"CxCheckPosDef", Make(2, 2, {2.0, I, I, 2.0}), {}, VT_I4, 0},  // symmetric, not Hermitian
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method) + " " + std::to_string(row.expected));
        std::vector<Var> in = {Re(row.a), Im(row.a)};
        in.insert(in.end(), row.type.begin(), row.type.end());
        Result r = Ok(row.method, in, 0);
        EXPECT_EQ(r.outcome.result.vt(), row.vt);
        EXPECT_NEAR(Only(r.outcome.result), row.expected, 1e-14);
    }
}

}  // namespace
