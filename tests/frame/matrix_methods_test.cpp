// VNMatrix through IDispatch: shapes and storage order of results, each
// method's wiring by the identity its result must satisfy, and automation
// errors.
#include "client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <string>
#include <utility>

using namespace vntest;

namespace {

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
// Scales column j of a by s[j].
Mat ScaleColumns(Mat a, const std::vector<double>& s) {
    for (int i = 0; i < a.r; ++i)
        for (int j = 0; j < a.q; ++j) a.v[i * a.q + j] *= s[j];
    return a;
}

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

    Var Result(const wchar_t* method, std::vector<Var> args) const {
        Outcome o = CallWith(mx_, method, args);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        return o.result;
    }
    double Number(const wchar_t* method, std::vector<Var> args) const { return Only(Result(method, std::move(args))); }
};

// The storage rule on non-square matrices: the block of a 2-by-3 array is
// read as two rows of three, and results come back in the same layout.
TEST_F(MatrixMethods, ProductsKeepTheStorageOrder) {
    const Mat a{2, 3, {1, 2, 3, 4, 5, 6}}, b{3, 2, {1, 2, 3, 4, 5, 6}};
    const Var ax = Result(L"MatrixMul", {a.host(), DoubleArray({1, 0, -1})});
    EXPECT_EQ(Sizes(ax), std::vector<LONG>{2});  // a vector y gives a vector
    EXPECT_EQ(Doubles(ax), (std::vector<double>{-2, -2}));
    EXPECT_EQ(Read(Result(L"MatrixMul", {a.host(), b.host()}), 2, 2).v, (std::vector<double>{22, 28, 49, 64}));
    EXPECT_EQ(Read(Result(L"Transpose", {a.host()}), 3, 2).v, (std::vector<double>{1, 4, 2, 5, 3, 6}));
    EXPECT_EQ(Read(Result(L"OuterProduct", {DoubleArray({1, 2}), DoubleArray({3, 4, 5})}), 2, 3).v,
              (std::vector<double>{3, 4, 5, 6, 8, 10}));
    EXPECT_EQ(Number(L"DotProduct", {DoubleArray({1, 2, 3}), DoubleArray({4, 5, -6})}), -4);
    EXPECT_EQ(Number(L"Trace", {Mat{2, 2, {1, 2, 3, 4}}.host()}), 5);

    // A 16-bit matrix with lower bounds 1 is converted, not replaced.
    SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 1}};
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
    const Mat a{3, 3, {2, -1, 0, 4, 1, 3, -2, 5, 1}};
    const int n = 3;
    Var b(L"old"), p(L"old"), sign(L"old");
    ASSERT_TRUE(CallWith(mx_, L"LU", {a.host(), RefTo(b), RefTo(p), RefTo(sign)}).ok());
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
    EXPECT_EQ(Only(sign), swaps % 2);

    const std::vector<double> y{1.5, 2.5, 3.5};
    ExpectNear(Mul(a, Column(Doubles(Result(L"LinEqs", {a.host(), DoubleArray(y)})))), Column(y), 1e-13, "LinEqs");
    // ForwSub then BackSub on the factors, p once as integers and once as doubles.
    for (const Var& perm : {p, DoubleArray(std::vector<double>(piv.begin(), piv.end()))}) {
        Var w(L"old");
        ASSERT_TRUE(CallWith(mx_, L"ForwSub", {b, DoubleArray(y), perm, RefTo(w)}).ok());
        ExpectNear(Mul(a, Column(Doubles(Result(L"BackSub", {b, w})))), Column(y), 1e-13, "ForwSub+BackSub");
    }
    ExpectNear(Mul(a, Read(Result(L"InvMatrix", {a.host()}), n, n)), Identity(n), 1e-13, "InvMatrix");
    ExpectNear(Mul(a, Read(Result(L"GenInvMatrix", {a.host(), Var(0)}), n, n)), Identity(n), 1e-13, "GenInv 0");
    Var x, warning(L"old");
    ASSERT_TRUE(CallWith(mx_, L"GenLinEqs", {a.host(), DoubleArray(y), Var(0), RefTo(x), RefTo(warning)}).ok());
    ExpectNear(Mul(a, Column(Doubles(x))), Column(y), 1e-12, "GenLinEqs 0");
    EXPECT_EQ(warning.vt(), VT_I4);
    EXPECT_EQ(Only(warning), 0);
    // Determinant by cofactors; class 3 reads the diagonal only.
    EXPECT_NEAR(Number(L"Determinant", {a.host()}), -18, 1e-13);
    EXPECT_NEAR(Number(L"GenDeterminant", {a.host(), Var(0)}), -18, 1e-13);
    EXPECT_EQ(Number(L"GenDeterminant", {a.host(), Var(3)}), 2 * 1 * 1);
}

TEST_F(MatrixMethods, SymmetricPositiveDefinite) {
    const Mat a{3, 3, {4, 2, 0, 2, 5, 1, 0, 1, 3}};
    const Mat r = Read(Result(L"Cholesky", {a.host()}), 3, 3);
    ExpectNear(Mul(T(r), r), a, 1e-14, "R'R = A");
    const Var flag = Result(L"CheckPosdef", {a.host()});
    EXPECT_EQ(flag.vt(), VT_I4);
    EXPECT_EQ(Only(flag), 1);
    Var x, warning;
    ASSERT_TRUE(CallWith(mx_, L"GenLinEqs", {a.host(), DoubleArray({1, -2, 3}), Var(1), RefTo(x), RefTo(warning)}).ok());
    ExpectNear(Mul(a, Column(Doubles(x))), Column({1, -2, 3}), 1e-14, "GenLinEqs 1");
    EXPECT_NEAR(Number(L"GenDeterminant", {a.host(), Var(1)}), 4 * 14 - 2 * 6, 1e-12);

    Var values, vectors;
    ASSERT_TRUE(CallWith(mx_, L"SymEigenValueVector", {a.host(), RefTo(values), RefTo(vectors)}).ok());
    const std::vector<double> lambda = Doubles(values);
    ASSERT_EQ(lambda.size(), 3u);
    const Mat v = Read(vectors, 3, 3);
    ExpectNear(Mul(a, v), ScaleColumns(v, lambda), 1e-13, "A v = lambda v");
}

// QR, SVD, pseudo-inverse and rank on a tall and a wide matrix.
TEST_F(MatrixMethods, OrthogonalDecompositionsOfRectangles) {
    const Mat shapes[] = {{3, 2, {1, 2, 3, 4, 5, 7}}, {2, 3, {2, 0, 1, -1, 3, 4}}};
    for (const Mat& a : shapes) {
        const int m = a.r, n = a.q, k = std::min(m, n);
        SCOPED_TRACE(std::to_string(m) + "x" + std::to_string(n));
        Var q, r;
        ASSERT_TRUE(CallWith(mx_, L"Qr", {a.host(), RefTo(q), RefTo(r)}).ok());
        ExpectNear(Mul(Read(q, m, k), Read(r, k, n)), a, 1e-13, "QR = A");

        Var u, s, v, s2;
        ASSERT_TRUE(CallWith(mx_, L"SVD", {a.host(), RefTo(u), RefTo(s), RefTo(v)}).ok());
        const std::vector<double> sv = Doubles(s);
        ASSERT_EQ(sv.size(), static_cast<std::size_t>(k));
        ExpectNear(Mul(ScaleColumns(Read(u, m, k), sv), T(Read(v, n, k))), a, 1e-13, "U diag(s) V' = A");
        ASSERT_TRUE(CallWith(mx_, L"SVDS", {a.host(), RefTo(s2)}).ok());
        ExpectNear(Column(Doubles(s2)), Column(sv), 1e-13, "SVDS");
        EXPECT_NEAR(Number(L"MatrixNorm", {a.host(), Var(0)}), sv[0], 1e-13);
        EXPECT_NEAR(Number(L"ConditionNumber", {a.host(), Var(0)}), sv[0] / sv[1], 1e-12);

        const Mat pinv = Read(Result(L"PseudoInverse", {a.host()}), n, m);
        ExpectNear(Mul(Mul(a, pinv), a), a, 1e-13, "A A+ A = A");
        const Var rank = Result(L"MatrixRank", {a.host()});
        EXPECT_EQ(rank.vt(), VT_I4);
        EXPECT_EQ(Only(rank), 2);
    }
}

// GenLinEqs on any shape: the solution satisfies the equations the class
// reads, in the shape of the unknowns; rank deficiency is a warning.
TEST_F(MatrixMethods, GeneralLinearSystemsOfAnyShape) {
    struct Row { const char* name; Mat a, read; std::vector<double> y; int cls, warning; };
    const Mat tall{3, 2, {1, 0, 1, 1, 1, 2}}, wide{2, 3, {1, 0, 1, 0, 1, 1}}, twin{2, 2, {1, 1, 2, 2}};
    const Row rows[] = {
        {"tall", tall, tall, {1, 3, 5}, 0, 0},
        {"wide", wide, wide, {2, 3}, 0, 0},
        {"two equal columns", twin, twin, {2, 4}, 0, 1},
        {"lower triangle only", {2, 2, {2, 99, 1, 4}}, {2, 2, {2, 0, 1, 4}}, {2, 9}, 2, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Var x, warning;
        ASSERT_TRUE(CallWith(mx_, L"GenLinEqs", {row.a.host(), DoubleArray(row.y), Var(row.cls), RefTo(x), RefTo(warning)}).ok());
        EXPECT_EQ(Sizes(x), std::vector<LONG>{row.a.q});
        ExpectNear(Mul(row.read, Column(Doubles(x))), Column(row.y), 1e-13, "A x = y");
        EXPECT_EQ(Only(warning), row.warning);
    }
}

// A*v = lambda*v in complex arithmetic, for a matrix with a complex pair.
TEST_F(MatrixMethods, GeneralEigenpairs) {
    const Mat a{3, 3, {0, -2, 1, 1, 0, 0, 0, 0, 3}};
    Var re, im, vre, vim;
    ASSERT_TRUE(CallWith(mx_, L"GenEigenValueVector", {a.host(), RefTo(re), RefTo(im), RefTo(vre), RefTo(vim)}).ok());
    const std::vector<double> lr = Doubles(re), li = Doubles(im);
    const Mat vr = Read(vre, 3, 3), vi = Read(vim, 3, 3);
    ASSERT_EQ(lr.size(), 3u);
    EXPECT_NEAR(li[1], std::sqrt(2.0), 1e-13);  // 3, then +-i*sqrt(2)
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
    // ||A||_1 * ||A^-1||_1 with A^-1 = [[4, 2], [-3, 1]] / 10.
    EXPECT_NEAR(Number(L"ConditionNumber", {a, Var(1)}), 6 * 0.7, 1e-14);
    struct Row {
        int type, size;
        std::vector<double> a1, a2;
        Mat expected;
    };
    const Row rows[] = {
        {0, 3, {}, {}, Identity(3)},
        {1, 0, {2, -1}, {}, {2, 2, {2, 0, 0, -1}}},
        {2, 0, {1, 2}, {9, 5, 6}, {2, 3, {1, 5, 6, 2, 1, 5}}},
        {4, 0, {2, -6, 4}, {}, {2, 2, {3, -2, 1, 0}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.type);
        // Unused arguments may be scalars.
        const Var a1 = row.a1.empty() ? Var(0) : DoubleArray(row.a1), a2 = row.a2.empty() ? Var(0) : DoubleArray(row.a2);
        const Var z = Result(L"SpecialMatrix", {Var(row.type), Var(row.size), a1, a2});
        EXPECT_EQ(Read(z, row.expected.r, row.expected.q).v, row.expected.v);
    }
}

TEST_F(MatrixMethods, FailuresRaiseTheirStatusesAndKeepOutputs) {
    const Var wide = Mat{2, 3, {1, 2, 3, 4, 5, 6}}.host(), sq = Mat{2, 2, {1, 2, 3, 4}}.host();
    const Var sing = Mat{2, 2, {1, 2, 2, 4}}.host(), two = DoubleArray({1, 2}), out;  // out: by reference
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"inverse of 2x3", L"InvMatrix", {wide}, 0, E(20040), msg::kSquare},
        {"LU of 2x3", L"LU", {wide, out, out, out}, 3, E(20040), msg::kSquare},
        {"eigen of 2x3", L"GenEigenValueVector", {wide, out, out, out, out}, 4, E(20040), msg::kSquare},
        {"GenLinEqs class 1 on 2x3", L"GenLinEqs", {wide, two, Var(1), out, out}, 2, E(20040), msg::kSquare},
        {"condition 1-norm of 2x3", L"ConditionNumber", {wide, Var(1)}, 0, E(20040), msg::kSquare},
        {"inner size 2-D", L"MatrixMul", {wide, sq}, 0, E(20008), msg::kShape},
        {"inner size vector", L"MatrixMul", {wide, two}, 0, E(20008), msg::kShape},
        {"LinEqs singular", L"LinEqs", {sing, two}, 0, E(20041), msg::kSingular},
        {"LU singular", L"LU", {sing, out, out, out}, 3, E(20041), msg::kSingular},
        {"Cholesky not pd", L"Cholesky", {sing}, 0, E(20041), msg::kSingular},
        {"BackSub zero diagonal", L"BackSub", {Mat{2, 2, {1, 2, 0, 0}}.host(), two}, 0, E(20041), msg::kSingular},
        {"GenInvMatrix class 4", L"GenInvMatrix", {sq, Var(4)}, 0, E(20061), msg::kSelection},
        {"GenDeterminant class -1", L"GenDeterminant", {sq, Var(-1)}, 0, E(20061), msg::kSelection},
        {"GenLinEqs class 4", L"GenLinEqs", {sq, two, Var(4), out, out}, 2, E(20061), msg::kSelection},
        {"norm type 4", L"MatrixNorm", {sq, Var(4)}, 0, E(20061), msg::kSelection},
        {"special type 5", L"SpecialMatrix", {Var(5), Var(2), two, two}, 0, E(20061), msg::kSelection},
        {"dot of nothing", L"DotProduct", {EmptyArray(VT_R8), EmptyArray(VT_R8)}, 0, E(20003), msg::kSamples},
        {"identity of 0", L"SpecialMatrix", {Var(0), Var(0), Var(0), Var(0)}, 0, E(20003), msg::kSamples},
        {"dot lengths differ", L"DotProduct", {two, DoubleArray({1, 2, 3})}, 0, E(20008), msg::kShape},
        {"LinEqs short y", L"LinEqs", {sq, DoubleArray({1})}, 0, E(20008), msg::kShape},
        {"transpose of a vector", L"Transpose", {two}, 0, E(20008), msg::kShape},
        {"companion of a constant", L"SpecialMatrix", {Var(4), Var(0), DoubleArray({3}), Var(0)}, 0, E(20008), msg::kShape},
        {"ForwSub p too large", L"ForwSub", {sq, two, DoubleArray({0, 2}), out}, 1, E(20017), msg::kIndex},
        {"ForwSub p negative", L"ForwSub", {sq, two, TypedArray(VT_I2, {-1, 1}), out}, 1, E(20017), msg::kIndex},
    };
    ExpectFailures(mx_, rows, L"VNAnalysisControlsLib.VNMatrix");
}

}  // namespace
