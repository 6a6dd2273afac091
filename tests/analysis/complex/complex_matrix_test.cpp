#include "analysis/complex/complex_matrix.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

namespace vn {
namespace {

using Cx = std::complex<double>;

// A complex matrix in the kernels' split row-major layout, with the naive
// reference operations the tests compare against.
struct Mat {
    int rows = 0, cols = 0;
    std::vector<double> re, im;
    Mat(int r, int c) : rows(r), cols(c), re(std::size_t(r) * c), im(std::size_t(r) * c) {}
    Cx operator()(int i, int j) const { return {re[i * cols + j], im[i * cols + j]}; }
    void Set(int i, int j, Cx v) {
        re[i * cols + j] = v.real();
        im[i * cols + j] = v.imag();
    }
    const double* r() const { return re.data(); }
    const double* i() const { return im.data(); }
};

Mat Random(int r, int c, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    Mat a(r, c);
    for (auto& v : a.re) v = u(gen);
    for (auto& v : a.im) v = u(gen);
    return a;
}

Mat Identity(int n) {
    Mat a(n, n);
    for (int k = 0; k < n; ++k) a.Set(k, k, 1);
    return a;
}

Mat Product(const Mat& a, const Mat& b) {
    Mat c(a.rows, b.cols);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < b.cols; ++j) {
            Cx s = 0;
            for (int k = 0; k < a.cols; ++k) s += a(i, k) * b(k, j);
            c.Set(i, j, s);
        }
    return c;
}

Mat Adjoint(const Mat& a) {
    Mat b(a.cols, a.rows);
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) b.Set(j, i, std::conj(a(i, j)));
    return b;
}

double MaxDiff(const Mat& a, const Mat& b) {
    EXPECT_EQ(a.rows, b.rows);
    EXPECT_EQ(a.cols, b.cols);
    double d = 0;
    for (int i = 0; i < a.rows; ++i)
        for (int j = 0; j < a.cols; ++j) d = std::max(d, std::abs(a(i, j) - b(i, j)));
    return d;
}

// M M^H + n I: Hermitian positive definite. The strict upper triangle is then
// overwritten with garbage, which kernels reading the lower triangle ignore.
Mat HermitianPosDef(int n, unsigned seed, bool garbageAbove) {
    const Mat m = Random(n, n, seed);
    Mat a = Product(m, Adjoint(m));
    for (int k = 0; k < n; ++k) a.Set(k, k, a(k, k).real() + n);
    for (int i = 0; garbageAbove && i < n; ++i)
        for (int j = i + 1; j < n; ++j) a.Set(i, j, Cx(99, -99));
    return a;
}

Mat Hermitian(const Mat& lowerSource) {
    Mat a = lowerSource;
    for (int i = 0; i < a.rows; ++i)
        for (int j = i + 1; j < a.cols; ++j) a.Set(i, j, std::conj(a(j, i)));
    return a;
}

// Every kernel rejects a count below 1 before anything else, even before a
// bad selector.
TEST(ComplexMatrix, CountsBelowOneComeFirst) {
    const Mat a = Random(2, 2, 1);
    Mat o(4, 4), o2(4, 4);
    double x = 0, y = 0;
    std::int32_t flag = 0, p[4] = {};
    Mat w = a;
    const std::function<AnalysisStatus()> calls[] = {
        [&] { return ComplexDotProduct(a.r(), a.i(), a.r(), a.i(), 0, &x, &y); },
        [&] { return ComplexMatrixMul(a.r(), a.i(), a.r(), a.i(), 2, 0, 2, o.re.data(), o.im.data()); },
        [&] { return ComplexOuterProduct(a.r(), a.i(), 2, a.r(), a.i(), 0, o.re.data(), o.im.data()); },
        [&] { return ComplexTranspose(a.r(), a.i(), 0, 2, o.re.data(), o.im.data()); },
        [&] { return ComplexTrace(a.r(), a.i(), 0, &x, &y); },
        [&] { return ComplexLUDecompose(w.re.data(), w.im.data(), 0, p, &flag); },
        [&] { return ComplexDeterminant(a.r(), a.i(), -1, &x, &y); },
        [&] { return ComplexCholesky(a.r(), a.i(), 0, o.re.data(), o.im.data()); },
        [&] { return ComplexGenInvMatrix(a.r(), a.i(), 0, 9, o.re.data(), o.im.data()); },
        [&] { return ComplexGenLinEqs(a.r(), a.i(), 0, 2, a.r(), a.i(), 9, o.re.data(), o.im.data()); },
        [&] { return ComplexSingularValues(a.r(), a.i(), 2, 0, o.re.data()); },
        [&] { return ComplexSVD(a.r(), a.i(), 0, 2, o.re.data(), o.im.data(), &x, o2.re.data(), o2.im.data()); },
        [&] { return ComplexMatrixRank(a.r(), a.i(), 0, 2, &flag); },
        [&] { return ComplexPseudoInverse(a.r(), a.i(), 2, 0, o.re.data(), o.im.data()); },
        [&] { return ComplexSvdSolve(a.r(), a.i(), 0, 2, a.r(), a.i(), o.re.data(), o.im.data()); },
        [&] { return ComplexQR(a.r(), a.i(), 0, 2, o.re.data(), o.im.data(), o2.re.data(), o2.im.data()); },
        [&] { return ComplexEigenValueVector(a.r(), a.i(), 0, &x, &y, o.re.data(), o.im.data()); },
        [&] { return ComplexCheckPosDef(a.r(), a.i(), 0, &flag); },
        [&] { return ComplexMatrixNorm(a.r(), a.i(), 0, 2, 9, &x); },
        [&] { return ComplexConditionNumber(a.r(), a.i(), 2, 0, 9, &x); },
        [&] { return ComplexSpecialMatrix(kCxSpecialIdentity, 0, nullptr, nullptr, 0, nullptr, nullptr, 0,
                                          o.re.data(), o.im.data()); },
    };
    for (std::size_t k = 0; k < std::size(calls); ++k) EXPECT_EQ(calls[k](), kErrSamplesBelowOne) << "call " << k;
}

// Selector before shape: a bad type on a non-square matrix is a bad type.
TEST(ComplexMatrix, SelectorAndShapeStatuses) {
    const Mat a = Random(3, 2, 2);
    Mat o(3, 3);
    double x = 0;
    std::int32_t r = 0, c = 0;
    const auto inv = [&](std::int32_t t) { return ComplexGenInvMatrix(a.r(), a.i(), 2, t, o.re.data(), o.im.data()); };
    const auto lin = [&](std::int32_t t) {
        return ComplexGenLinEqs(a.r(), a.i(), 3, 2, a.r(), a.i(), t, o.re.data(), o.im.data());
    };
    const auto cond = [&](std::int32_t t) { return ComplexConditionNumber(a.r(), a.i(), 3, 2, t, &x); };
    const auto special = [&](std::int32_t t, std::int32_t n1, std::int32_t n2) {
        return ComplexSpecialMatrixSize(t, 0, n1, n2, &r, &c);
    };
    const struct {
        const char* name;
        AnalysisStatus got, want;
    } rows[] = {
        {"inv type 4", inv(4), kErrInvalidSelection},
        {"inv type -1", inv(-1), kErrInvalidSelection},
        {"lineqs type 4", lin(4), kErrInvalidSelection},
        {"lineqs type 1", lin(1), kErrNotSquare},
        {"lineqs type 3", lin(3), kErrNotSquare},
        {"norm type 4", ComplexMatrixNorm(a.r(), a.i(), 3, 2, 4, &x), kErrInvalidSelection},
        {"cond type 1", cond(1), kErrNotSquare},
        {"cond type 4", cond(4), kErrInvalidSelection},
        {"special type 5", special(5, 3, 3), kErrInvalidSelection},
        {"toeplitz without a row", special(2, 3, 0), kErrSamplesBelowOne},
        {"companion of a constant", special(4, 1, 0), kErrWrongCount},
    };
    for (const auto& row : rows) EXPECT_EQ(row.got, row.want) << row.name;
}

TEST(ComplexMatrix, ProductsAreBilinearAndTransposeIsPlain) {
    const Mat x = Random(3, 4, 4), y = Random(4, 2, 5);
    Mat z(3, 2);
    ASSERT_EQ(ComplexMatrixMul(x.r(), x.i(), y.r(), y.i(), 3, 4, 2, z.re.data(), z.im.data()), kOk);
    EXPECT_LT(MaxDiff(z, Product(x, y)), 1e-15);

    // Dot and outer products do not conjugate: (i)(i) = -1.
    const double one[] = {1}, zero[] = {0};
    double dr = 0, di = 0;
    ASSERT_EQ(ComplexDotProduct(zero, one, zero, one, 1, &dr, &di), kOk);
    EXPECT_EQ(dr, -1);
    EXPECT_EQ(di, 0);
    ASSERT_EQ(ComplexDotProduct(x.r(), x.i(), y.r(), y.i(), 8, &dr, &di), kOk);
    Cx dot = 0;
    for (int k = 0; k < 8; ++k) dot += Cx(x.re[k], x.im[k]) * Cx(y.re[k], y.im[k]);
    EXPECT_LT(std::abs(Cx(dr, di) - dot), 1e-15);

    Mat outer(3, 4);
    ASSERT_EQ(ComplexOuterProduct(x.r(), x.i(), 3, y.r(), y.i(), 4, outer.re.data(), outer.im.data()), kOk);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(outer(i, j), Cx(x.re[i], x.im[i]) * Cx(y.re[j], y.im[j]));

    Mat t(4, 3);
    ASSERT_EQ(ComplexTranspose(x.r(), x.i(), 3, 4, t.re.data(), t.im.data()), kOk);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j) EXPECT_EQ(t(j, i), x(i, j));

    double tr = 0, ti = 0;
    const Mat s = Random(3, 3, 6);
    ASSERT_EQ(ComplexTrace(s.r(), s.i(), 3, &tr, &ti), kOk);
    EXPECT_LT(std::abs(Cx(tr, ti) - (s(0, 0) + s(1, 1) + s(2, 2))), 1e-15);
}

TEST(ComplexMatrix, LUReproducesPermutedMatrix) {
    for (int n : {1, 2, 5}) {
        SCOPED_TRACE(n);
        const Mat a = Random(n, n, 10 + n);
        Mat f = a;
        std::vector<std::int32_t> p(n);
        std::int32_t parity = -1;
        ASSERT_EQ(ComplexLUDecompose(f.re.data(), f.im.data(), n, p.data(), &parity), kOk);
        Mat l = Identity(n), u(n, n), pa = a;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) (j < i ? l : u).Set(i, j, f(i, j));
        int swaps = 0;
        for (int j = 0; j < n; ++j) {  // apply the exchange sequence in order
            ASSERT_GE(p[j], j);
            if (p[j] == j) continue;
            ++swaps;
            for (int k = 0; k < n; ++k) {
                const Cx t = pa(j, k);
                pa.Set(j, k, pa(p[j], k));
                pa.Set(p[j], k, t);
            }
        }
        EXPECT_EQ(parity, swaps % 2);
        EXPECT_LT(MaxDiff(Product(l, u), pa), 1e-14);
    }

    Mat swap(2, 2);
    swap.Set(0, 1, 1);
    swap.Set(1, 0, 1);
    std::int32_t p[2], parity = 0;
    ASSERT_EQ(ComplexLUDecompose(swap.re.data(), swap.im.data(), 2, p, &parity), kOk);
    EXPECT_EQ(p[0], 1);
    EXPECT_EQ(p[1], 1);
    EXPECT_EQ(parity, 1);

    // Equal pivot moduli: the upper row stays, no exchange.
    Mat tie(2, 2);
    tie.Set(0, 0, Cx(0, 1));
    tie.Set(1, 0, Cx(-1, 0));
    tie.Set(1, 1, 1);
    ASSERT_EQ(ComplexLUDecompose(tie.re.data(), tie.im.data(), 2, p, &parity), kOk);
    EXPECT_EQ(p[0], 0);
    EXPECT_EQ(parity, 0);

    Mat tiny(1, 1);
    tiny.Set(0, 0, Cx(0, 1e-13));
    EXPECT_EQ(ComplexLUDecompose(tiny.re.data(), tiny.im.data(), 1, p, &parity), kErrSingular);
}

TEST(ComplexMatrix, DeterminantIsMultiplicative) {
    const Mat a = Random(4, 4, 20), b = Random(4, 4, 21), ab = Product(a, b);
    double r1, i1, r2, i2, r3, i3;
    ASSERT_EQ(ComplexDeterminant(a.r(), a.i(), 4, &r1, &i1), kOk);
    ASSERT_EQ(ComplexDeterminant(b.r(), b.i(), 4, &r2, &i2), kOk);
    ASSERT_EQ(ComplexDeterminant(ab.r(), ab.i(), 4, &r3, &i3), kOk);
    EXPECT_LT(std::abs(Cx(r1, i1) * Cx(r2, i2) - Cx(r3, i3)), 1e-13);

    Mat swap(2, 2);  // one exchange: det = -(i * 2)
    swap.Set(0, 1, Cx(0, 1));
    swap.Set(1, 0, 2);
    ASSERT_EQ(ComplexDeterminant(swap.r(), swap.i(), 2, &r1, &i1), kOk);
    EXPECT_EQ(Cx(r1, i1), Cx(0, -2));

    Mat singular(2, 2);  // equal rows: 0 without an error
    for (int j = 0; j < 2; ++j) singular.Set(0, j, Cx(1, j)), singular.Set(1, j, Cx(1, j));
    r1 = i1 = 7;
    ASSERT_EQ(ComplexDeterminant(singular.r(), singular.i(), 2, &r1, &i1), kOk);
    EXPECT_EQ(Cx(r1, i1), Cx(0, 0));
}

TEST(ComplexMatrix, CholeskyFactorReadsLowerTriangle) {
    const int n = 4;
    const Mat a = HermitianPosDef(n, 30, true);
    Mat r(n, n);
    ASSERT_EQ(ComplexCholesky(a.r(), a.i(), n, r.re.data(), r.im.data()), kOk);
    for (int i = 0; i < n; ++i) {
        EXPECT_GT(r(i, i).real(), 0);
        EXPECT_EQ(r(i, i).imag(), 0);
        for (int j = 0; j < i; ++j) EXPECT_EQ(r(i, j), Cx(0, 0));
    }
    EXPECT_LT(MaxDiff(Product(Adjoint(r), r), Hermitian(a)), 1e-13);

    Mat bad(2, 2);  // [[1, 2], [2, 1]] is indefinite
    bad.Set(0, 0, 1), bad.Set(1, 1, 1), bad.Set(1, 0, 2), bad.Set(0, 1, 2);
    EXPECT_EQ(ComplexCholesky(bad.r(), bad.i(), 2, r.re.data(), r.im.data()), kErrSingular);
}

// A B = I for each matrix class, with the unread triangle full of garbage and
// the result's other triangle zero for the triangular classes.
TEST(ComplexMatrix, InverseOfEachClass) {
    const int n = 4;
    for (std::int32_t type = 0; type <= 3; ++type) {
        SCOPED_TRACE(type);
        Mat a = type == 1 ? HermitianPosDef(n, 40, true) : Random(n, n, 41);
        Mat used = type == 1 ? Hermitian(a) : a;
        for (int i = 0; type >= 2 && i < n; ++i) {
            used.Set(i, i, used(i, i) + 2.0);
            for (int j = 0; j < n; ++j)
                if ((type == 2 && j > i) || (type == 3 && j < i)) used.Set(i, j, 0);
        }
        if (type >= 2) {
            a = used;
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    if ((type == 2 && j > i) || (type == 3 && j < i)) a.Set(i, j, Cx(1e3, 5));
        }
        Mat b(n, n);
        ASSERT_EQ(ComplexGenInvMatrix(a.r(), a.i(), n, type, b.re.data(), b.im.data()), kOk);
        EXPECT_LT(MaxDiff(Product(used, b), Identity(n)), 1e-13);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if ((type == 2 && j > i) || (type == 3 && j < i)) {
                    EXPECT_EQ(b(i, j), Cx(0, 0));
                }

        Mat zeroDiag = a;  // singular in every class
        zeroDiag.Set(1, 1, 0);
        if (type == 0) zeroDiag = Mat(n, n);
        EXPECT_EQ(ComplexGenInvMatrix(zeroDiag.r(), zeroDiag.i(), n, type, b.re.data(), b.im.data()),
                  kErrSingular);
    }
}

TEST(ComplexMatrix, LinearSystemsOfEachClass) {
    const int n = 3;
    const Mat y = Random(n, 1, 50);
    for (std::int32_t type = 0; type <= 3; ++type) {
        SCOPED_TRACE(type);
        Mat a = type == 1 ? HermitianPosDef(n, 51, false) : Random(n, n, 52);
        for (int i = 0; type >= 2 && i < n; ++i)
            for (int j = 0; j < n; ++j)
                if ((type == 2 && j > i) || (type == 3 && j < i)) a.Set(i, j, 0);
        Mat x(n, 1);
        ASSERT_EQ(ComplexGenLinEqs(a.r(), a.i(), n, n, y.r(), y.i(), type, x.re.data(), x.im.data()), kOk);
        EXPECT_LT(MaxDiff(Product(a, x), y), 1e-13);
        for (int j = 0; j < n; ++j) a.Set(2, j, 0);  // singular; type 0 only warns
        EXPECT_EQ(ComplexGenLinEqs(a.r(), a.i(), n, n, y.r(), y.i(), type, x.re.data(), x.im.data()),
                  type == 0 ? kWarnRankDeficient : kErrSingular);
    }
}

TEST(ComplexMatrix, LeastSquaresAndMinimumNorm) {
    // Over-determined: the residual is orthogonal to the columns.
    const Mat a = Random(3, 2, 60), y = Random(3, 1, 61);
    Mat x(2, 1);
    ASSERT_EQ(ComplexGenLinEqs(a.r(), a.i(), 3, 2, y.r(), y.i(), 0, x.re.data(), x.im.data()), kOk);
    Mat res = Product(a, x);
    for (int k = 0; k < 3; ++k) res.Set(k, 0, res(k, 0) - y(k, 0));
    EXPECT_LT(MaxDiff(Product(Adjoint(a), res), Mat(2, 1)), 1e-14);

    // Under-determined: exact, and orthogonal to the null vector r0 x r1.
    const Mat w = Random(2, 3, 62), v = Random(2, 1, 63);
    Mat u(3, 1);
    ASSERT_EQ(ComplexGenLinEqs(w.r(), w.i(), 2, 3, v.r(), v.i(), 0, u.re.data(), u.im.data()), kOk);
    EXPECT_LT(MaxDiff(Product(w, u), v), 1e-14);
    const Cx null[3] = {w(0, 1) * w(1, 2) - w(0, 2) * w(1, 1), w(0, 2) * w(1, 0) - w(0, 0) * w(1, 2),
                        w(0, 0) * w(1, 1) - w(0, 1) * w(1, 0)};
    EXPECT_LT(std::abs(std::conj(null[0]) * u(0, 0) + std::conj(null[1]) * u(1, 0) + std::conj(null[2]) * u(2, 0)),
              1e-14);

    // Two equal columns c: y = 2c has the minimum-norm solution (1, 1) and a
    // rank warning.
    Mat twin(3, 2), rhs(3, 1);
    for (int k = 0; k < 3; ++k) {
        const Cx c(k + 1, 1 - k);
        twin.Set(k, 0, c), twin.Set(k, 1, c), rhs.Set(k, 0, 2.0 * c);
    }
    ASSERT_EQ(ComplexGenLinEqs(twin.r(), twin.i(), 3, 2, rhs.r(), rhs.i(), 0, x.re.data(), x.im.data()),
              kWarnRankDeficient);
    EXPECT_LT(std::abs(x(0, 0) - 1.0), 1e-14);
    EXPECT_LT(std::abs(x(1, 0) - 1.0), 1e-14);
}

TEST(ComplexMatrix, SingularValueDecompositionShapes) {
    const int shapes[][2] = {{4, 3}, {3, 5}, {1, 1}, {1, 4}, {40, 25}, {20, 33}};  // large ones split blocks
    for (const auto& sh : shapes) {
        const int m = sh[0], n = sh[1], k = std::min(m, n);
        SCOPED_TRACE(testing::Message() << m << "x" << n);
        const Mat a = Random(m, n, 70 + m * 7 + n);
        Mat u(m, k), v(n, k), sd(k, k);
        std::vector<double> s(k), s2(k);
        ASSERT_EQ(ComplexSVD(a.r(), a.i(), m, n, u.re.data(), u.im.data(), s.data(), v.re.data(), v.im.data()),
                  kOk);
        for (int j = 0; j < k; ++j) {
            sd.Set(j, j, s[j]);
            if (j > 0) {
                EXPECT_GE(s[j - 1], s[j]);
            }
        }
        EXPECT_LT(MaxDiff(Product(Product(u, sd), Adjoint(v)), a), 1e-14);
        EXPECT_LT(MaxDiff(Product(Adjoint(u), u), Identity(k)), 1e-14);
        EXPECT_LT(MaxDiff(Product(Adjoint(v), v), Identity(k)), 1e-14);
        ASSERT_EQ(ComplexSingularValues(a.r(), a.i(), m, n, s2.data()), kOk);
        for (int j = 0; j < k; ++j) EXPECT_NEAR(s2[j], s[j], 1e-14);
        // Frobenius norm^2 is the sum of squared singular values.
        double fro = 0, sum = 0;
        ASSERT_EQ(ComplexMatrixNorm(a.r(), a.i(), m, n, kCxNormFrobenius, &fro), kOk);
        for (double sv : s) sum += sv * sv;
        EXPECT_NEAR(fro * fro, sum, 1e-14 * sum);
    }
    const double nan[] = {std::numeric_limits<double>::quiet_NaN(), 0}, zero[] = {0, 0};
    double s[1];
    EXPECT_EQ(ComplexSingularValues(nan, zero, 1, 2, s), kErrAlgorithmFailure);
}

TEST(ComplexMatrix, RankAndPseudoInverse) {
    Mat rank1(4, 3);  // outer product of two vectors
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j) rank1.Set(i, j, Cx(i + 1, -1) * Cx(0.5, j));
    const struct {
        const char* name;
        Mat a;
        std::int32_t rank;
    } cases[] = {{"rank 1", rank1, 1},
                 {"wide", Random(3, 5, 80), 3},
                 {"tall", Random(5, 2, 81), 2},
                 {"zero", Mat(2, 3), 0},
                 {"30x20 of rank 12", Product(Random(30, 12, 82), Random(12, 20, 83)), 12}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const Mat& a = c.a;
        std::int32_t rank = -1;
        ASSERT_EQ(ComplexMatrixRank(a.r(), a.i(), a.rows, a.cols, &rank), kOk);
        EXPECT_EQ(rank, c.rank);
        // The four Penrose conditions identify A^+ uniquely.
        Mat b(a.cols, a.rows);
        ASSERT_EQ(ComplexPseudoInverse(a.r(), a.i(), a.rows, a.cols, b.re.data(), b.im.data()), kOk);
        const Mat ab = Product(a, b), ba = Product(b, a);
        EXPECT_LT(MaxDiff(Product(ab, a), a), 1e-13);
        EXPECT_LT(MaxDiff(Product(ba, b), b), 1e-13);
        EXPECT_LT(MaxDiff(Adjoint(ab), ab), 1e-13);
        EXPECT_LT(MaxDiff(Adjoint(ba), ba), 1e-13);
    }
}

TEST(ComplexMatrix, QRShapes) {
    const int shapes[][2] = {{4, 3}, {3, 5}, {2, 2}};
    for (const auto& sh : shapes) {
        const int m = sh[0], n = sh[1], k = std::min(m, n);
        SCOPED_TRACE(testing::Message() << m << "x" << n);
        const Mat a = Random(m, n, 90 + m + n);
        Mat q(m, k), r(k, n);
        ASSERT_EQ(ComplexQR(a.r(), a.i(), m, n, q.re.data(), q.im.data(), r.re.data(), r.im.data()), kOk);
        EXPECT_LT(MaxDiff(Product(q, r), a), 1e-14);
        EXPECT_LT(MaxDiff(Product(Adjoint(q), q), Identity(k)), 1e-14);
        for (int i = 0; i < k; ++i) {
            EXPECT_GE(r(i, i).real(), 0);
            EXPECT_EQ(r(i, i).imag(), 0);
            for (int j = 0; j < i; ++j) EXPECT_EQ(r(i, j), Cx(0, 0));
        }
    }
}

TEST(ComplexMatrix, EigenpairsOfGeneralMatrix) {
    const int n = 5;
    const Mat a = Random(n, n, 100);
    std::vector<double> lr(n), li(n);
    Mat v(n, n);
    ASSERT_EQ(ComplexEigenValueVector(a.r(), a.i(), n, lr.data(), li.data(), v.re.data(), v.im.data()), kOk);
    Cx sum = 0;
    for (int k = 0; k < n; ++k) {
        const Cx lambda(lr[k], li[k]);
        sum += lambda;
        if (k > 0) {
            EXPECT_GE(std::abs(Cx(lr[k - 1], li[k - 1])), std::abs(lambda));
        }
        double norm2 = 0;
        for (int i = 0; i < n; ++i) norm2 += std::norm(v(i, k));
        EXPECT_NEAR(norm2, 1, 1e-14);
        for (int i = 0; i < n; ++i) {
            Cx av = 0;
            for (int j = 0; j < n; ++j) av += a(i, j) * v(j, k);
            EXPECT_LT(std::abs(av - lambda * v(i, k)), 1e-13) << "pair " << k << " row " << i;
        }
    }
    EXPECT_LT(std::abs(sum - (a(0, 0) + a(1, 1) + a(2, 2) + a(3, 3) + a(4, 4))), 1e-13);  // trace

    Mat bad = a;
    bad.re[7] = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ComplexEigenValueVector(bad.r(), bad.i(), n, lr.data(), li.data(), v.re.data(), v.im.data()),
              kErrAlgorithmFailure);
}

Mat Special(std::int32_t type, std::int32_t size, const std::vector<Cx>& a1, const std::vector<Cx>& a2) {
    std::vector<double> r1, i1, r2, i2;
    for (Cx v : a1) r1.push_back(v.real()), i1.push_back(v.imag());
    for (Cx v : a2) r2.push_back(v.real()), i2.push_back(v.imag());
    const auto n1 = std::int32_t(a1.size()), n2 = std::int32_t(a2.size());
    std::int32_t rows = 0, cols = 0;
    EXPECT_EQ(ComplexSpecialMatrixSize(type, size, n1, n2, &rows, &cols), kOk);
    Mat b(rows, cols);
    EXPECT_EQ(ComplexSpecialMatrix(type, size, r1.data(), i1.data(), n1, r2.data(), i2.data(), n2, b.re.data(),
                                   b.im.data()),
              kOk);
    return b;
}

TEST(ComplexMatrix, SpecialMatrices) {
    const Cx i(0, 1);
    const struct {
        const char* name;
        Mat got;
        std::vector<std::vector<Cx>> want;
    } cases[] = {
        {"identity", Special(0, 2, {}, {}), {{1, 0}, {0, 1}}},
        {"diagonal", Special(1, 0, {i, 2}, {}), {{i, 0}, {0, 2}}},
        // Array2[0] gives way to Array1[0]; a row longer than the column.
        {"toeplitz", Special(2, 0, {1, 2.0 + i}, {9, 5, 6.0 - i}), {{1, 5, 6.0 - i}, {2.0 + i, 1, 5}}},
        {"vandermonde", Special(3, 0, {i, 2, 0}, {}), {{-1, i, 1}, {4, 2, 1}, {0, 0, 1}}},
        {"companion of 2x^2 - 6x + 4", Special(4, 0, {2, -6, 4}, {}), {{3, -2}, {1, 0}}},
    };
    for (const auto& c : cases) {
        ASSERT_EQ(c.got.rows, int(c.want.size())) << c.name;
        ASSERT_EQ(c.got.cols, int(c.want[0].size())) << c.name;
        for (int r = 0; r < c.got.rows; ++r)
            for (int k = 0; k < c.got.cols; ++k) EXPECT_EQ(c.got(r, k), c.want[r][k]) << c.name << " " << r << k;
    }
}

// The companion matrix's eigenvalues are the roots of its polynomial, here
// i (x + 3)(x - 2i)(x - 1 - i), listed by decreasing modulus.
TEST(ComplexMatrix, PolynomialRootsByCompanionEigenvalues) {
    const Cx roots[] = {-3.0, Cx(0, 2), Cx(1, 1)}, i(0, 1);
    const Mat c = Special(4, 0,
                          {i, -i * (roots[0] + roots[1] + roots[2]),
                           i * (roots[0] * roots[1] + roots[0] * roots[2] + roots[1] * roots[2]),
                           -i * roots[0] * roots[1] * roots[2]},
                          {});
    double lr[3], li[3];
    Mat v(3, 3);
    ASSERT_EQ(ComplexEigenValueVector(c.r(), c.i(), 3, lr, li, v.re.data(), v.im.data()), kOk);
    for (int k = 0; k < 3; ++k) EXPECT_LT(std::abs(Cx(lr[k], li[k]) - roots[k]), 1e-13) << k;
}

TEST(ComplexMatrix, PositiveDefinitenessFlag) {
    const Mat hpd = Hermitian(HermitianPosDef(3, 110, false));
    Mat asym = hpd, complexDiag = hpd, indefinite = hpd, semi(2, 2);
    asym.im[1] += 1e-15;  // no longer exactly Hermitian
    complexDiag.im[4] = 1e-3;
    indefinite.Set(2, 2, -50);
    semi.Set(0, 0, 1);
    const struct {
        const char* name;
        const Mat* a;
        std::int32_t want;
    } cases[] = {{"hpd", &hpd, 1}, {"not Hermitian", &asym, 0}, {"complex diagonal", &complexDiag, 0},
                 {"indefinite", &indefinite, 0}, {"semidefinite", &semi, 0}};
    for (const auto& c : cases) {
        std::int32_t flag = -1;
        EXPECT_EQ(ComplexCheckPosDef(c.a->r(), c.a->i(), c.a->rows, &flag), kOk) << c.name;
        EXPECT_EQ(flag, c.want) << c.name;
    }
}

TEST(ComplexMatrix, NormsAndConditionNumbers) {
    Mat a(2, 2);  // [[3+4i, -2], [1, i]]
    a.Set(0, 0, Cx(3, 4)), a.Set(0, 1, -2), a.Set(1, 0, 1), a.Set(1, 1, Cx(0, 1));
    const struct {
        std::int32_t type;
        double want;
    } norms[] = {{kCxNorm1, 6}, {kCxNormInfinity, 7}, {kCxNormFrobenius, std::sqrt(31.0)}};
    for (const auto& c : norms) {
        double v = 0;
        ASSERT_EQ(ComplexMatrixNorm(a.r(), a.i(), 2, 2, c.type, &v), kOk);
        EXPECT_NEAR(v, c.want, 1e-15) << c.type;
    }
    // 2-norm of a 2x3 matrix with orthogonal rows of lengths 5 and 2.
    Mat w(2, 3);
    w.Set(0, 0, Cx(0, 3)), w.Set(0, 2, 4), w.Set(1, 1, Cx(-2, 0));
    double v = 0;
    ASSERT_EQ(ComplexMatrixNorm(w.r(), w.i(), 2, 3, kCxNorm2, &v), kOk);
    EXPECT_NEAR(v, 5, 1e-14);
    ASSERT_EQ(ComplexConditionNumber(w.r(), w.i(), 2, 3, 0, &v), kOk);
    EXPECT_NEAR(v, 2.5, 1e-14);

    const Mat id = Identity(3);
    for (std::int32_t type = 0; type <= 3; ++type) {
        ASSERT_EQ(ComplexConditionNumber(id.r(), id.i(), 3, 3, type, &v), kOk);
        EXPECT_NEAR(v, type == kCxNormFrobenius ? 3 : 1, 1e-15) << type;
    }
    // cond_1 by its definition, with the inverse from the closed form of a 2x2.
    const Cx det = a(0, 0) * a(1, 1) - a(0, 1) * a(1, 0);
    Mat inv(2, 2);
    inv.Set(0, 0, a(1, 1) / det), inv.Set(1, 1, a(0, 0) / det);
    inv.Set(0, 1, -a(0, 1) / det), inv.Set(1, 0, -a(1, 0) / det);
    double invNorm = 0;
    ASSERT_EQ(ComplexMatrixNorm(inv.r(), inv.i(), 2, 2, kCxNorm1, &invNorm), kOk);
    ASSERT_EQ(ComplexConditionNumber(a.r(), a.i(), 2, 2, kCxNorm1, &v), kOk);
    EXPECT_NEAR(v, 6 * invNorm, 1e-14);

    Mat singular(2, 2);
    singular.Set(0, 0, Cx(1, 1));
    EXPECT_EQ(ComplexConditionNumber(singular.r(), singular.i(), 2, 2, 0, &v), kErrSingular);
    EXPECT_EQ(ComplexConditionNumber(singular.r(), singular.i(), 2, 2, 3, &v), kErrSingular);
}

}  // namespace
}  // namespace vn
