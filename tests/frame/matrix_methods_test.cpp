// VNMatrix through IDispatch: shapes and storage order of results, the
// defining identities of each factorisation, and automation errors.
#include "client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <utility>

using namespace vntest;

namespace {

constexpr HRESULT Err(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }

// A matrix as the kernels see it: r rows of q, row-major, which is the safe
// array's block with r the size of dimension 1.
struct Mat {
    int r = 0, q = 0;
    std::vector<double> v;
    double operator()(int i, int j) const { return v[i * q + j]; }
    Var host() const { return DoubleMatrix(r, q, v); }
};

Mat Mul(const Mat& a, const Mat& b) {
    Mat z{a.r, b.q, std::vector<double>(a.r * b.q, 0.0)};
    for (int i = 0; i < a.r; ++i)
        for (int j = 0; j < b.q; ++j)
            for (int k = 0; k < a.q; ++k) z.v[i * b.q + j] += a(i, k) * b(k, j);
    return z;
}
Mat T(const Mat& a) {
    Mat t{a.q, a.r, std::vector<double>(a.v.size())};
    for (int i = 0; i < a.r; ++i)
        for (int j = 0; j < a.q; ++j) t.v[j * a.r + i] = a(i, j);
    return t;
}
Mat Identity(int n) {
    Mat e{n, n, std::vector<double>(n * n, 0.0)};
    for (int i = 0; i < n; ++i) e.v[i * n + i] = 1;
    return e;
}
Mat Column(const std::vector<double>& x) { return Mat{static_cast<int>(x.size()), 1, x}; }

// A two-dimensional result, checked to have the expected sizes.
Mat Read(const Var& v, int r, int q) {
    EXPECT_EQ(Sizes(v), (std::vector<LONG>{r, q}));
    EXPECT_EQ(LowerBounds(v), (std::vector<LONG>{0, 0}));
    return Mat{r, q, Doubles(v)};
}

void ExpectNear(const Mat& got, const Mat& want, double tol, const char* what) {
    ASSERT_EQ(got.v.size(), want.v.size()) << what;
    for (std::size_t i = 0; i < got.v.size(); ++i) EXPECT_NEAR(got.v[i], want.v[i], tol) << what << " [" << i << "]";
}

class MatrixMethods : public ::testing::Test {
protected:
    Control mx_{L"VNAnalysisControlsLib.VNMatrix.1"};
    void SetUp() override { ASSERT_TRUE(mx_.valid()) << std::hex << mx_.createResult(); }

    Outcome Run(const wchar_t* method, std::vector<Var> args) const {
        std::vector<VARIANT*> raw;
        for (auto& a : args) raw.push_back(a.get());
        Outcome o = mx_.Call(method, raw);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        return o;
    }
    Var Result(const wchar_t* method, std::vector<Var> args) const { return Run(method, std::move(args)).result; }
    double Number(const wchar_t* method, std::vector<Var> args) const {
        const std::vector<double> d = Doubles(Result(method, std::move(args)));
        return d.size() == 1 ? d[0] : std::nan("");
    }
};

// The storage rule on non-square matrices: the block of a 2-by-3 array is
// read as two rows of three, and results come back in the same layout.
TEST_F(MatrixMethods, ProductsKeepTheStorageOrder) {
    const Mat a{2, 3, {1, 2, 3, 4, 5, 6}}, b{3, 2, {1, 2, 3, 4, 5, 6}};
    const Var ax = Result(L"MatrixMul", {a.host(), DoubleArray({1, 0, -1})});
    EXPECT_EQ(Sizes(ax), std::vector<LONG>{2});  // a vector y gives a vector
    EXPECT_EQ(Doubles(ax), (std::vector<double>{-2, -2}));
    EXPECT_EQ(Read(Result(L"MatrixMul", {a.host(), b.host()}), 2, 2).v, (std::vector<double>{22, 28, 49, 64}));
    EXPECT_EQ(Read(Result(L"MatrixMul", {b.host(), a.host()}), 3, 3).v,
              (std::vector<double>{9, 12, 15, 19, 26, 33, 29, 40, 51}));
    EXPECT_EQ(Read(Result(L"Transpose", {a.host()}), 3, 2).v, (std::vector<double>{1, 4, 2, 5, 3, 6}));
    EXPECT_EQ(Read(Result(L"OuterProduct", {DoubleArray({1, 2}), DoubleArray({3, 4, 5})}), 2, 3).v,
              (std::vector<double>{3, 4, 5, 6, 8, 10}));
    EXPECT_EQ(Number(L"DotProduct", {DoubleArray({1, 2, 3}), DoubleArray({4, 5, -6})}), -4);
    EXPECT_EQ(Number(L"Trace", {Mat{2, 2, {1, 2, 3, 4}}.host()}), 5);
}

TEST_F(MatrixMethods, SixteenBitMatrixIsConvertedNotReplaced) {
    SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 1}};  // lower bounds 1
    SAFEARRAY* array = SafeArrayCreate(VT_I2, 2, bounds);
    short* data = nullptr;
    SafeArrayAccessData(array, reinterpret_cast<void**>(&data));
    for (short i = 0; i < 6; ++i) data[i] = static_cast<short>(i + 1);
    SafeArrayUnaccessData(array);
    Var shorts;
    V_VT(shorts.get()) = VT_ARRAY | VT_I2;
    V_ARRAY(shorts.get()) = array;
    EXPECT_EQ(Doubles(Result(L"MatrixMul", {RefTo(shorts), DoubleArray({1, 1, 1})})), (std::vector<double>{6, 15}));
    EXPECT_EQ(Read(Result(L"Transpose", {shorts}), 3, 2).v, (std::vector<double>{1, 4, 2, 5, 3, 6}));
    EXPECT_EQ(ElementType(shorts), VT_I2);
}

// LU: P*A = L*U with P the interchange sequence applied in order; the
// solvers and inverses against A*x = y and A*B = I.
TEST_F(MatrixMethods, LUSolversAndInverses) {
    const Mat rows[] = {
        {2, 2, {0, 1, 1, 0}},
        {3, 3, {2, -1, 0, 4, 1, 3, -2, 5, 1}},
        {4, 4, {1, 2, 0, 3, 2, 1, 4, 0, 0, 3, 1, 2, 5, 0, 2, 1}},
    };
    for (const Mat& a : rows) {
        const int n = a.r;
        SCOPED_TRACE(n);
        Var b(L"old"), p(L"old"), sign(L"old");
        Run(L"LU", {a.host(), RefTo(b), RefTo(p), RefTo(sign)});
        EXPECT_EQ(ElementType(p), VT_I4);
        EXPECT_EQ(sign.vt(), VT_I4);
        const Mat lu = Read(b, n, n);
        const std::vector<LONG> piv = Longs(p);
        ASSERT_EQ(piv.size(), static_cast<std::size_t>(n));
        Mat l = Identity(n), u{n, n, std::vector<double>(n * n, 0.0)}, pa = a;
        int swaps = 0;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) (j < i ? l.v : u.v)[i * n + j] = lu(i, j);
        for (int j = 0; j < n; ++j) {
            swaps += piv[j] != j;
            for (int k = 0; k < n; ++k) std::swap(pa.v[j * n + k], pa.v[piv[j] * n + k]);
        }
        ExpectNear(Mul(l, u), pa, 1e-13, "P*A = L*U");
        EXPECT_EQ(Doubles(sign)[0], swaps % 2);

        std::vector<double> y(n);
        for (int i = 0; i < n; ++i) y[i] = i + 1.5;
        ExpectNear(Mul(a, Column(Doubles(Result(L"LinEqs", {a.host(), DoubleArray(y)})))), Column(y), 1e-13, "LinEqs");
        // ForwSub then BackSub on the factors, p once as integers and once
        // as doubles.
        for (const Var& perm : {p, DoubleArray(std::vector<double>(piv.begin(), piv.end()))}) {
            Var w(L"old");
            Run(L"ForwSub", {b, DoubleArray(y), perm, RefTo(w)});
            ExpectNear(Mul(a, Column(Doubles(Result(L"BackSub", {b, w})))), Column(y), 1e-13, "ForwSub+BackSub");
        }
        ExpectNear(Mul(a, Read(Result(L"InvMatrix", {a.host()}), n, n)), Identity(n), 1e-13, "InvMatrix");
        ExpectNear(Mul(a, Read(Result(L"GenInvMatrix", {a.host(), Var(0)}), n, n)), Identity(n), 1e-13, "GenInv 0");
        Var x, warning(L"old");
        Run(L"GenLinEqs", {a.host(), DoubleArray(y), Var(0), RefTo(x), RefTo(warning)});
        ExpectNear(Mul(a, Column(Doubles(x))), Column(y), 1e-12, "GenLinEqs 0");
        EXPECT_EQ(warning.vt(), VT_I4);
        EXPECT_EQ(Doubles(warning)[0], 0);
    }
    // Determinants by cofactors; a singular matrix is 0 without an error.
    const Mat a3 = rows[1];
    EXPECT_NEAR(Number(L"Determinant", {a3.host()}), 2 * (1 - 15) + 1 * (4 + 6), 1e-13);
    EXPECT_NEAR(Number(L"GenDeterminant", {a3.host(), Var(0)}), -18, 1e-13);
    EXPECT_EQ(Number(L"Determinant", {rows[0].host()}), -1);
    EXPECT_EQ(Number(L"Determinant", {Mat{2, 2, {1, 2, 2, 4}}.host()}), 0);
    EXPECT_EQ(Number(L"Determinant", {Mat{1, 1, {1e-13}}.host()}), 0);
    EXPECT_EQ(Number(L"GenDeterminant", {a3.host(), Var(3)}), 2 * 1 * 1);  // the diagonal only
}

TEST_F(MatrixMethods, SymmetricPositiveDefinite) {
    const Mat a{3, 3, {4, 2, 0, 2, 5, 1, 0, 1, 3}};
    const Mat r = Read(Result(L"Cholesky", {a.host()}), 3, 3);
    EXPECT_EQ(r(1, 0), 0);
    EXPECT_EQ(r(2, 0), 0);
    EXPECT_EQ(r(2, 1), 0);
    ExpectNear(Mul(T(r), r), a, 1e-14, "R'R = A");
    const Var flag = Result(L"CheckPosdef", {a.host()});
    EXPECT_EQ(flag.vt(), VT_I4);
    EXPECT_EQ(Doubles(flag)[0], 1);
    EXPECT_EQ(Doubles(Result(L"CheckPosdef", {Mat{2, 2, {2, 1, 1.0000001, 2}}.host()}))[0], 0);
    EXPECT_EQ(Doubles(Result(L"CheckPosdef", {Mat{2, 2, {1, 2, 2, 1}}.host()}))[0], 0);
    ExpectNear(Mul(a, Read(Result(L"GenInvMatrix", {a.host(), Var(1)}), 3, 3)), Identity(3), 1e-14, "GenInv 1");
    Var x, warning;
    Run(L"GenLinEqs", {a.host(), DoubleArray({1, -2, 3}), Var(1), RefTo(x), RefTo(warning)});
    ExpectNear(Mul(a, Column(Doubles(x))), Column({1, -2, 3}), 1e-14, "GenLinEqs 1");
    EXPECT_NEAR(Number(L"GenDeterminant", {a.host(), Var(1)}), 4 * 14 - 2 * 6, 1e-12);

    Var values, vectors;
    Run(L"SymEigenValueVector", {a.host(), RefTo(values), RefTo(vectors)});
    const std::vector<double> lambda = Doubles(values);
    const Mat v = Read(vectors, 3, 3);
    ASSERT_EQ(lambda.size(), 3u);
    EXPECT_LT(lambda[0], lambda[1]);
    EXPECT_LT(lambda[1], lambda[2]);
    EXPECT_NEAR(lambda[0] + lambda[1] + lambda[2], 12, 1e-13);  // the trace
    Mat scaled = v;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) scaled.v[i * 3 + j] *= lambda[j];
    ExpectNear(Mul(a, v), scaled, 1e-13, "A v = lambda v");
    ExpectNear(Mul(T(v), v), Identity(3), 1e-13, "V'V = I");
}

// QR, SVD, pseudo-inverse and rank on a tall and a wide matrix.
TEST_F(MatrixMethods, OrthogonalDecompositionsOfRectangles) {
    const Mat shapes[] = {{3, 2, {1, 2, 3, 4, 5, 7}}, {2, 3, {2, 0, 1, -1, 3, 4}}};
    for (const Mat& a : shapes) {
        const int m = a.r, n = a.q, k = std::min(m, n);
        SCOPED_TRACE(std::to_string(m) + "x" + std::to_string(n));
        Var q, r;
        Run(L"Qr", {a.host(), RefTo(q), RefTo(r)});
        const Mat qm = Read(q, m, k), rm = Read(r, k, n);
        ExpectNear(Mul(T(qm), qm), Identity(k), 1e-14, "Q'Q = I");
        ExpectNear(Mul(qm, rm), a, 1e-13, "QR = A");
        for (int i = 1; i < k; ++i) EXPECT_EQ(rm(i, i - 1), 0);

        Var u, s, v, s2;
        Run(L"SVD", {a.host(), RefTo(u), RefTo(s), RefTo(v)});
        const Mat um = Read(u, m, k), vm = Read(v, n, k);
        const std::vector<double> sv = Doubles(s);
        ASSERT_EQ(sv.size(), static_cast<std::size_t>(k));
        EXPECT_GT(sv[0], sv[1]);
        Mat us = um;
        for (int i = 0; i < m; ++i)
            for (int j = 0; j < k; ++j) us.v[i * k + j] *= sv[j];
        ExpectNear(Mul(us, T(vm)), a, 1e-13, "U diag(s) V' = A");
        ExpectNear(Mul(T(vm), vm), Identity(k), 1e-14, "V'V = I");
        Run(L"SVDS", {a.host(), RefTo(s2)});
        ExpectNear(Column(Doubles(s2)), Column(sv), 1e-13, "SVDS");
        EXPECT_NEAR(Number(L"MatrixNorm", {a.host(), Var(0)}), sv[0], 1e-13);
        EXPECT_NEAR(Number(L"ConditionNumber", {a.host(), Var(0)}), sv[0] / sv[1], 1e-12);

        const Mat pinv = Read(Result(L"PseudoInverse", {a.host()}), n, m);
        ExpectNear(Mul(Mul(a, pinv), a), a, 1e-13, "A A+ A = A");
        const Var rank = Result(L"MatrixRank", {a.host()});
        EXPECT_EQ(rank.vt(), VT_I4);
        EXPECT_EQ(Doubles(rank)[0], 2);
    }
    EXPECT_EQ(Doubles(Result(L"MatrixRank", {Mat{3, 2, {1, 2, 2, 4, -1, -2}}.host()}))[0], 1);
}

TEST_F(MatrixMethods, GeneralLinearSystemsOfAnyShape) {
    // Tall, full rank: the least-squares normal equations A'(Ax - y) = 0.
    const Mat tall{3, 2, {1, 0, 1, 1, 1, 2}};
    Var x, warning;
    Run(L"GenLinEqs", {tall.host(), DoubleArray({1, 2, 4}), Var(0), RefTo(x), RefTo(warning)});
    ASSERT_EQ(Sizes(x), std::vector<LONG>{2});
    Mat residual = Mul(tall, Column(Doubles(x)));
    for (int i = 0; i < 3; ++i) residual.v[i] -= std::vector<double>{1, 2, 4}[i];
    ExpectNear(Mul(T(tall), residual), Column({0, 0}), 1e-13, "normal equations");
    EXPECT_EQ(Doubles(warning)[0], 0);
    // Two equal columns: rank 1, the minimum-norm solution splits evenly.
    Run(L"GenLinEqs", {Mat{2, 2, {1, 1, 2, 2}}.host(), DoubleArray({2, 4}), Var(0), RefTo(x), RefTo(warning)});
    ExpectNear(Column(Doubles(x)), Column({1, 1}), 1e-13, "minimum norm");
    EXPECT_EQ(Doubles(warning)[0], 1);
    // Wide: three unknowns from two equations, solved exactly.
    const Mat wide{2, 3, {1, 0, 1, 0, 1, 1}};
    Run(L"GenLinEqs", {wide.host(), DoubleArray({2, 3}), Var(0), RefTo(x), RefTo(warning)});
    ASSERT_EQ(Sizes(x), std::vector<LONG>{3});
    ExpectNear(Mul(wide, Column(Doubles(x))), Column({2, 3}), 1e-13, "wide");
    // Triangular classes read only their triangle.
    Run(L"GenLinEqs", {Mat{2, 2, {2, 99, 1, 4}}.host(), DoubleArray({2, 9}), Var(2), RefTo(x), RefTo(warning)});
    ExpectNear(Column(Doubles(x)), Column({1, 2}), 1e-15, "lower");
}

// A*v = lambda*v in complex arithmetic, for a matrix with a complex pair.
TEST_F(MatrixMethods, GeneralEigenpairs) {
    const Mat a{3, 3, {0, -2, 1, 1, 0, 0, 0, 0, 3}};
    Var re, im, vre, vim;
    Run(L"GenEigenValueVector", {a.host(), RefTo(re), RefTo(im), RefTo(vre), RefTo(vim)});
    const std::vector<double> lr = Doubles(re), li = Doubles(im);
    const Mat vr = Read(vre, 3, 3), vi = Read(vim, 3, 3);
    ASSERT_EQ(lr.size(), 3u);
    EXPECT_NEAR(lr[0], 3, 1e-13);  // decreasing modulus: 3, then +-i*sqrt(2)
    EXPECT_NEAR(li[1], std::sqrt(2.0), 1e-13);
    EXPECT_NEAR(li[2], -std::sqrt(2.0), 1e-13);
    for (int j = 0; j < 3; ++j) {
        const std::complex<double> lambda(lr[j], li[j]);
        for (int i = 0; i < 3; ++i) {
            std::complex<double> av = 0;
            for (int k = 0; k < 3; ++k) av += a(i, k) * std::complex<double>(vr(k, j), vi(k, j));
            EXPECT_NEAR(std::abs(av - lambda * std::complex<double>(vr(i, j), vi(i, j))), 0, 1e-13) << i << j;
        }
    }
}

TEST_F(MatrixMethods, NormsAndSpecialMatrices) {
    const Var a = Mat{2, 2, {1, -2, 3, 4}}.host();
    EXPECT_EQ(Number(L"MatrixNorm", {a, Var(1)}), 6);
    EXPECT_EQ(Number(L"MatrixNorm", {a, Var(3)}), 7);
    EXPECT_NEAR(Number(L"MatrixNorm", {a, Var(2)}), std::sqrt(30.0), 1e-15);
    // ||A||_1 * ||A^-1||_1 with A^-1 = [[4, 2], [-3, 1]] / 10.
    EXPECT_NEAR(Number(L"ConditionNumber", {a, Var(1)}), 6 * 0.7, 1e-14);
    const Var three = Result(L"SpecialMatrix", {Var(0), Var(3), Var(0), Var(0)});
    EXPECT_EQ(Read(three, 3, 3).v, Identity(3).v);
    EXPECT_NEAR(Number(L"ConditionNumber", {three, Var(2)}), 3, 1e-15);

    struct Row {
        int type;
        std::vector<double> a1, a2;
        Mat expected;
    };
    const Row rows[] = {
        {1, {2, -1}, {}, {2, 2, {2, 0, 0, -1}}},
        {2, {1, 2, 3}, {9, 5, 6}, {3, 3, {1, 5, 6, 2, 1, 5, 3, 2, 1}}},
        {2, {1, 2}, {9, 5, 6}, {2, 3, {1, 5, 6, 2, 1, 5}}},
        {3, {2, 3}, {}, {2, 2, {2, 1, 3, 1}}},
        {4, {2, -6, 4}, {}, {2, 2, {3, -2, 1, 0}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        const Var a2 = row.a2.empty() ? Var(0) : DoubleArray(row.a2);  // unused arguments may be scalars
        const Var z = Result(L"SpecialMatrix", {Var(row.type), Var(), DoubleArray(row.a1), a2});
        EXPECT_EQ(Read(z, row.expected.r, row.expected.q).v, row.expected.v);
    }
}

TEST_F(MatrixMethods, FailuresRaiseTheirStatusesAndKeepOutputs) {
    const wchar_t* kSamples = L"The number of samples must be >0.";
    const wchar_t* kShape = L"The input arrays do not contain the correct number of data values for this function.";
    const wchar_t* kIndex = L"The following condition must be met:  0 <= index < samples.";
    const wchar_t* kInner =
        L"The number of columns in the first matrix is not equal to the number of rows in the second matrix or vector.";
    const wchar_t* kSquare = L"The input matrix must be a square matrix.";
    const wchar_t* kSingular = L"The system of equations cannot be solved because the input matrix is singular.";
    const wchar_t* kSelection = L"The selection is invalid.";
    const Var wide = Mat{2, 3, {1, 2, 3, 4, 5, 6}}.host(), sq = Mat{2, 2, {1, 2, 3, 4}}.host();
    const Var sing = Mat{2, 2, {1, 2, 2, 4}}.host(), two = DoubleArray({1, 2}), out;  // out: by reference
    struct Row {
        const char* name;
        const wchar_t* method;
        std::vector<Var> args;
        unsigned code;
        const wchar_t* text;
    };
    const Row rows[] = {
        {"inverse of 2x3", L"InvMatrix", {wide}, 20040, kSquare},
        {"LU of 2x3", L"LU", {wide, out, out, out}, 20040, kSquare},
        {"eigen of 2x3", L"GenEigenValueVector", {wide, out, out, out, out}, 20040, kSquare},
        {"GenLinEqs class 1 on 2x3", L"GenLinEqs", {wide, two, Var(1), out, out}, 20040, kSquare},
        {"condition 1-norm of 2x3", L"ConditionNumber", {wide, Var(1)}, 20040, kSquare},
        {"inner size 2-D", L"MatrixMul", {wide, sq}, 20039, kInner},
        {"inner size vector", L"MatrixMul", {wide, two}, 20039, kInner},
        {"LinEqs singular", L"LinEqs", {sing, two}, 20041, kSingular},
        {"LU singular", L"LU", {sing, out, out, out}, 20041, kSingular},
        {"Cholesky not pd", L"Cholesky", {sing, }, 20041, kSingular},
        {"BackSub zero diagonal", L"BackSub", {Mat{2, 2, {1, 2, 0, 0}}.host(), two}, 20041, kSingular},
        {"GenInvMatrix class 4", L"GenInvMatrix", {sq, Var(4)}, 20061, kSelection},
        {"GenDeterminant class -1", L"GenDeterminant", {sq, Var(-1)}, 20061, kSelection},
        {"GenLinEqs class 4", L"GenLinEqs", {sq, two, Var(4), out, out}, 20061, kSelection},
        {"norm type 4", L"MatrixNorm", {sq, Var(4)}, 20061, kSelection},
        {"special type 5", L"SpecialMatrix", {Var(5), Var(2), two, two}, 20061, kSelection},
        {"dot of nothing", L"DotProduct", {EmptyArray(VT_R8), EmptyArray(VT_R8)}, 20003, kSamples},
        {"identity of 0", L"SpecialMatrix", {Var(0), Var(0), Var(0), Var(0)}, 20003, kSamples},
        {"dot lengths differ", L"DotProduct", {two, DoubleArray({1, 2, 3})}, 20008, kShape},
        {"LinEqs short y", L"LinEqs", {sq, DoubleArray({1})}, 20008, kShape},
        {"transpose of a vector", L"Transpose", {two}, 20008, kShape},
        {"companion of a constant", L"SpecialMatrix", {Var(4), Var(0), DoubleArray({3}), Var(0)}, 20008, kShape},
        {"ForwSub p too large", L"ForwSub", {sq, two, DoubleArray({0, 2}), out}, 20017, kIndex},
        {"ForwSub p negative", L"ForwSub", {sq, two, TypedArray(VT_I2, {-1, 1}), out}, 20017, kIndex},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Var> outs(row.args.size(), Var(L"unchanged"));
        std::vector<VARIANT*> raw;
        std::vector<Var> args;
        for (std::size_t i = 0; i < row.args.size(); ++i)
            args.push_back(row.args[i].vt() == VT_EMPTY ? RefTo(outs[i]) : row.args[i]);
        for (auto& a : args) raw.push_back(a.get());
        const Outcome o = mx_.Call(row.method, raw);
        EXPECT_EQ(o.hr, DISP_E_EXCEPTION);
        EXPECT_EQ(o.code, Err(row.code)) << std::hex << o.code;
        EXPECT_EQ(o.description, row.text);
        EXPECT_EQ(o.source, L"VNAnalysisControlsLib.VNMatrix");
        for (std::size_t i = 0; i < row.args.size(); ++i) {
            if (row.args[i].vt() == VT_EMPTY) {
                EXPECT_EQ(outs[i].vt(), VT_BSTR) << "output " << i;
            }
        }
    }
}

}  // namespace
