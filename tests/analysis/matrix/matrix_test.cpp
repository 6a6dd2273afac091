#include "analysis/matrix/decompositions.h"
#include "analysis/matrix/linalg.h"
#include "analysis/matrix/matrix_internal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vn {
namespace {

using Mat = std::vector<double>;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

Mat Random(int rows, int cols, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> dist(-1.0, 1.0);
    Mat a(static_cast<std::size_t>(rows) * cols);
    for (double& v : a) v = dist(gen);
    return a;
}

// x (m-by-k) * y (k-by-n), each sum from 0.0 in increasing index.
Mat Mul(const Mat& x, int m, int k, const Mat& y, int n) {
    Mat z(static_cast<std::size_t>(m) * n);
    for (int i = 0; i < m; ++i)
        for (int j = 0; j < n; ++j) {
            double s = 0.0;
            for (int l = 0; l < k; ++l) s += x[i * k + l] * y[l * n + j];
            z[i * n + j] = s;
        }
    return z;
}

Mat T(const Mat& a, int rows, int cols) {
    Mat t(a.size());
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) t[j * rows + i] = a[i * cols + j];
    return t;
}

Mat Identity(int n) {
    Mat a(static_cast<std::size_t>(n) * n, 0.0);
    for (int i = 0; i < n; ++i) a[i * n + i] = 1.0;
    return a;
}

double MaxDiff(const Mat& a, const Mat& b) {
    double d = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) d = std::fmax(d, std::fabs(a[i] - b[i]));
    return d;
}

int Side(const Mat& a) { return static_cast<int>(std::lround(std::sqrt(double(a.size())))); }

// Symmetric positive definite: B^T*B + n*I.
Mat Spd(int n, unsigned seed) {
    const Mat b = Random(n, n, seed);
    Mat a = Mul(T(b, n, n), n, n, b, n);
    for (int i = 0; i < n; ++i) a[i * n + i] += n;
    return a;
}

// The factorisation as stated, column by column and one entry at a time:
// the oracle for the blocked kernel, which must reproduce it bit for bit.
AnalysisStatus ColumnByColumnLU(Mat& a, int n, std::vector<std::int32_t>& p, std::int32_t& parity) {
    p.resize(n);
    for (int i = 0; i < n; ++i) p[i] = i;
    parity = 0;
    for (int j = 0; j < n; ++j) {
        for (int i = 1; i < j; ++i)
            for (int k = 0; k < i; ++k) a[i * n + j] -= a[i * n + k] * a[k * n + j];
        double best = 1e-12;
        int piv = -1;
        for (int i = j; i < n; ++i) {
            for (int k = 0; k < j; ++k) a[i * n + j] -= a[i * n + k] * a[k * n + j];
            if (std::fabs(a[i * n + j]) > std::fabs(best)) best = a[i * n + j], piv = i;
        }
        if (piv < 0) return kErrSingular;
        if (piv != j) {
            for (int c = 0; c < n; ++c) std::swap(a[j * n + c], a[piv * n + c]);
            p[j] = piv;
            parity ^= 1;
        }
        for (int i = j + 1; i < n; ++i) a[i * n + j] /= best;
    }
    return kOk;
}

TEST(Matrix, StatusesInOrder) {
    const Mat a2 = {1, 2, 3, 4}, sing = {1, 2, 2, 4}, notpd = {1, 2, 2, 1}, tiny = {1e-13};
    const Mat zero_diag = {1, 2, 0, 0}, wide = {1, 0, 1, 0, 1, 1}, bad = {1, kNaN, 3, 4};
    Mat o(16), o2(16), o3(16), o4(16);
    double d;
    std::int32_t p[4], i32;
    struct Row {
        const char* name;
        std::function<AnalysisStatus()> call;
        AnalysisStatus expected;
    };
    const std::vector<Row> rows = {
        {"DotProduct n=0", [&] { return DotProduct(a2.data(), a2.data(), 0, &d); }, kErrSamplesBelowOne},
        {"MatrixMul k=0", [&] { return MatrixMul(a2.data(), a2.data(), 2, 0, 2, o.data()); }, kErrSamplesBelowOne},
        {"MatrixMul n=0", [&] { return MatrixMul(a2.data(), a2.data(), 2, 2, 0, o.data()); }, kErrSamplesBelowOne},
        {"OuterProduct m=0", [&] { return OuterProduct(a2.data(), 0, a2.data(), 2, o.data()); }, kErrSamplesBelowOne},
        {"Trace n=0", [&] { return Trace(a2.data(), 0, &d); }, kErrSamplesBelowOne},
        {"LUDecompose n=0", [&] { return LUDecompose(o.data(), 0, p, &i32); }, kErrSamplesBelowOne},
        {"ForwSub n=0", [&] { return ForwSub(a2.data(), a2.data(), 0, p, o.data()); }, kErrSamplesBelowOne},
        {"ForwSub p out of range", [&] { p[0] = 0, p[1] = 2; return ForwSub(a2.data(), a2.data(), 2, p, o.data()); }, kErrIndexRange},
        {"LUInverse p out of range", [&] { p[0] = -1, p[1] = 1; return LUInverse(a2.data(), 2, p, o.data()); }, kErrIndexRange},
        {"BackSub zero diagonal", [&] { return BackSub(zero_diag.data(), a2.data(), 2, o.data()); }, kErrSingular},
        {"BackSub NaN above the diagonal", [&] { return BackSub(bad.data(), a2.data(), 2, o.data()); }, kOk},
        {"LinEqs singular", [&] { return LinEqs(sing.data(), a2.data(), 2, o.data()); }, kErrSingular},
        {"LinEqs pivot 1e-13", [&] { return LinEqs(tiny.data(), a2.data(), 1, o.data()); }, kErrSingular},
        {"InvMatrix singular", [&] { return InvMatrix(sing.data(), 2, o.data()); }, kErrSingular},
        {"Determinant n=0", [&] { return Determinant(a2.data(), 0, &d); }, kErrSamplesBelowOne},
        {"Determinant singular", [&] { return Determinant(sing.data(), 2, &d); }, kOk},
        {"GenLinEqs n=0 before type", [&] { return GenLinEqs(a2.data(), 2, 0, a2.data(), 9, o.data()); }, kErrSamplesBelowOne},
        {"GenLinEqs type 4", [&] { return GenLinEqs(a2.data(), 2, 2, a2.data(), 4, o.data()); }, kErrInvalidSelection},
        {"GenLinEqs type -1 wide", [&] { return GenLinEqs(wide.data(), 2, 3, a2.data(), -1, o.data()); }, kErrInvalidSelection},
        {"GenLinEqs type 1 wide", [&] { return GenLinEqs(wide.data(), 2, 3, a2.data(), 1, o.data()); }, kErrNotSquare},
        {"GenLinEqs type 0 wide", [&] { return GenLinEqs(wide.data(), 2, 3, a2.data(), 0, o.data()); }, kOk},
        {"GenLinEqs type 1 not pd", [&] { return GenLinEqs(notpd.data(), 2, 2, a2.data(), 1, o.data()); }, kErrSingular},
        {"GenInvMatrix type 4", [&] { return GenInvMatrix(a2.data(), 2, 4, o.data()); }, kErrInvalidSelection},
        {"GenInvMatrix type 0 singular", [&] { return GenInvMatrix(sing.data(), 2, 0, o.data()); }, kErrSingular},
        {"GenInvMatrix type 3 zero diag", [&] { return GenInvMatrix(zero_diag.data(), 2, 3, o.data()); }, kErrSingular},
        {"GenDeterminant n=0 before type", [&] { return GenDeterminant(a2.data(), 0, 4, &d); }, kErrSamplesBelowOne},
        {"GenDeterminant type 4", [&] { return GenDeterminant(a2.data(), 2, 4, &d); }, kErrInvalidSelection},
        {"GenDeterminant type -1", [&] { return GenDeterminant(a2.data(), 2, -1, &d); }, kErrInvalidSelection},
        {"GenDeterminant type 1 not pd", [&] { return GenDeterminant(notpd.data(), 2, 1, &d); }, kOk},
        {"PackTriangle mode 3", [&] { return PackTriangle(a2.data(), 2, 3, o.data()); }, kErrInvalidSelection},
        {"PackedTriangularSolve flag 2", [&] { return PackedTriangularSolve(a2.data(), 2, 2, a2.data(), o.data()); }, kErrInvalidSelection},
        {"Cholesky n=0", [&] { return Cholesky(a2.data(), 0, o.data()); }, kErrSamplesBelowOne},
        {"Cholesky not pd", [&] { return Cholesky(notpd.data(), 2, o.data()); }, kErrSingular},
        {"CheckPosdef n=0", [&] { return CheckPosdef(a2.data(), 0, &i32); }, kErrSamplesBelowOne},
        {"MatrixNorm m=0 before type", [&] { return MatrixNorm(a2.data(), 0, 2, 9, &d); }, kErrSamplesBelowOne},
        {"MatrixNorm type 4", [&] { return MatrixNorm(a2.data(), 2, 2, 4, &d); }, kErrInvalidSelection},
        {"ConditionNumber n=0", [&] { return ConditionNumber(a2.data(), 2, 0, 1, &d); }, kErrSamplesBelowOne},
        {"ConditionNumber type 1 wide", [&] { return ConditionNumber(wide.data(), 2, 3, 1, &d); }, kErrNotSquare},
        {"ConditionNumber type 5 wide", [&] { return ConditionNumber(wide.data(), 2, 3, 5, &d); }, kErrInvalidSelection},
        {"ConditionNumber type 1 singular", [&] { return ConditionNumber(sing.data(), 2, 2, 1, &d); }, kErrSingular},
        {"ConditionNumber type 0 zero", [&] { return ConditionNumber(Mat(4, 0.0).data(), 2, 2, 0, &d); }, kErrSingular},
        {"SpecialMatrix type 5", [&] { return SpecialMatrix(5, 2, a2.data(), 2, a2.data(), 2, o.data()); }, kErrInvalidSelection},
        {"SpecialMatrix identity size 0", [&] { return SpecialMatrix(0, 0, a2.data(), 2, a2.data(), 2, o.data()); }, kErrSamplesBelowOne},
        {"SpecialMatrix Toeplitz q=0", [&] { return SpecialMatrix(2, 2, a2.data(), 2, a2.data(), 0, o.data()); }, kErrSamplesBelowOne},
        {"SpecialMatrix companion of a constant", [&] { return SpecialMatrix(4, 0, a2.data(), 1, a2.data(), 0, o.data()); }, kErrWrongCount},
        {"QRDecompose m=0", [&] { return QRDecompose(a2.data(), 0, 2, o.data(), o2.data()); }, kErrSamplesBelowOne},
        {"QRDecompose NaN", [&] { return QRDecompose(bad.data(), 2, 2, o.data(), o2.data()); }, kErrAlgorithmFailure},
        {"SVDecompose n=0", [&] { return SVDecompose(a2.data(), 2, 0, o.data(), o2.data(), o3.data()); }, kErrSamplesBelowOne},
        {"SingularValues NaN", [&] { return SingularValues(bad.data(), 2, 2, o.data()); }, kErrAlgorithmFailure},
        {"PseudoInverse m=0", [&] { return PseudoInverse(a2.data(), 0, 3, o.data()); }, kErrSamplesBelowOne},
        {"MatrixRank n=0", [&] { return MatrixRank(a2.data(), 3, 0, &i32); }, kErrSamplesBelowOne},
        {"GeneralEigen m=0 before shape", [&] { return GeneralEigen(a2.data(), 0, 3, o.data(), o2.data(), o3.data(), o4.data()); }, kErrSamplesBelowOne},
        {"GeneralEigen 2x3", [&] { return GeneralEigen(wide.data(), 2, 3, o.data(), o2.data(), o3.data(), o4.data()); }, kErrNotSquare},
        {"GeneralEigen NaN", [&] { return GeneralEigen(bad.data(), 2, 2, o.data(), o2.data(), nullptr, nullptr); }, kErrAlgorithmFailure},
        {"SymmetricEigen 3x2", [&] { return SymmetricEigen(wide.data(), 3, 2, o.data(), o2.data()); }, kErrNotSquare},
        // Only the lower triangle is data: a NaN above it is never read.
        {"SymmetricEigen NaN above", [&] { return SymmetricEigen(bad.data(), 2, 2, o.data(), o2.data()); }, kOk},
        {"SymmetricEigen NaN below", [&] { return SymmetricEigen(T(bad, 2, 2).data(), 2, 2, o.data(), nullptr); }, kErrAlgorithmFailure},
    };
    for (const Row& r : rows) EXPECT_EQ(r.call(), r.expected) << r.name;
}

TEST(Matrix, Products) {
    const Mat x = {1, 2, 3, 4, 5, 6}, y = {7, 8, 9, 10, 11, 12}, v = {1, -1, 2};
    Mat z(6);
    ASSERT_EQ(MatrixMul(x.data(), y.data(), 2, 3, 2, z.data()), kOk);
    EXPECT_EQ(Mat(z.begin(), z.begin() + 4), (Mat{58, 64, 139, 154}));
    ASSERT_EQ(MatrixMul(x.data(), v.data(), 2, 3, 1, z.data()), kOk);  // 1-D y
    EXPECT_EQ(Mat(z.begin(), z.begin() + 2), (Mat{5, 11}));
    ASSERT_EQ(OuterProduct(v.data(), 3, x.data(), 2, z.data()), kOk);
    EXPECT_EQ(z, (Mat{1, 2, -1, -2, 2, 4}));
    double d;
    ASSERT_EQ(DotProduct(x.data(), y.data(), 6, &d), kOk);
    EXPECT_EQ(d, 217.0);
    ASSERT_EQ(Trace(Mat{1, 9, 9, 9, 2, 9, 9, 9, 3}.data(), 3, &d), kOk);
    EXPECT_EQ(d, 6.0);
    // The tiled product keeps every sum's order: bit-equal to the plain loop.
    for (const auto& s : {std::vector<int>{3, 5, 200}, {17, 33, 129}, {2, 300, 3}}) {
        const Mat a = Random(s[0], s[1], 1), b = Random(s[1], s[2], 2);
        Mat c(static_cast<std::size_t>(s[0]) * s[2]);
        ASSERT_EQ(MatrixMul(a.data(), b.data(), s[0], s[1], s[2], c.data()), kOk);
        EXPECT_EQ(c, Mul(a, s[0], s[1], b, s[2])) << s[0] << "x" << s[1] << "x" << s[2];
    }
}

TEST(Matrix, LUPivoting) {
    struct Row {
        const char* name;
        Mat a;
        std::vector<std::int32_t> p;
        std::int32_t parity;
        AnalysisStatus status;
    };
    const double up38 = 1.0 + std::ldexp(1.0, -38), up41 = 1.0 + std::ldexp(1.0, -41);
    const std::vector<Row> rows = {
        {"one exchange", {0, 1, 1, 0}, {1, 1}, 1, kOk},
        {"no exchange", {4, 1, 0, 1, 3, 1, 0, 1, 2}, {0, 1, 2}, 0, kOk},
        {"tie keeps upper row", {-2, 1, 2, 3}, {0, 1}, 0, kOk},
        {"tie below takes first", {0.5, 1, 0, 2, 0, 1, -2, 1, 1}, {1, 1, 2}, 1, kOk},
        {"pivot 1e-13", {1e-13}, {}, 0, kErrSingular},
        {"pivot exactly 1e-12", {1e-12}, {}, 0, kErrSingular},
        {"pivot just above 1e-12", {1.0000001e-12}, {0}, 0, kOk},
        {"second pivot 2^-38", {1, 1, 1, up38}, {0, 1}, 0, kOk},
        {"second pivot 2^-41", {1, 1, 1, up41}, {}, 0, kErrSingular},
        {"NaN spreads: no pivot left", {kNaN, 1, 1, 1}, {}, 0, kErrSingular},
    };
    for (const Row& r : rows) {
        const int n = Side(r.a);
        Mat a = r.a;
        std::vector<std::int32_t> p(n);
        std::int32_t parity = -1;
        ASSERT_EQ(LUDecompose(a.data(), n, p.data(), &parity), r.status) << r.name;
        if (r.status != kOk) continue;
        EXPECT_EQ(p, r.p) << r.name;
        EXPECT_EQ(parity, r.parity) << r.name;
    }
    double det;
    ASSERT_EQ(Determinant(rows[0].a.data(), 2, &det), kOk);
    EXPECT_EQ(det, -1.0);
}

// Every row-combination engine the processor has (the others fall back to
// the baseline one and would only repeat it).
std::vector<matrix_detail::LUEngine> LUEngines() {
    using matrix_detail::LUEngine;
    std::vector<LUEngine> engines;
    for (LUEngine e : {LUEngine::kBaseline, LUEngine::kAvx2, LUEngine::kAvx512})
        if (matrix_detail::LUEngineAvailable(e)) engines.push_back(e);
    return engines;
}

TEST(Matrix, BlockedLUMatchesColumnByColumnAndRebuilds) {
    // Sizes around the panel (32), the 256- and 512-bit register tiles (32
    // and 64 columns) and the column block (128).
    for (int n : {1, 2, 5, 31, 32, 33, 65, 150, 291})
    for (matrix_detail::LUEngine engine : LUEngines()) {
        SCOPED_TRACE(::testing::Message() << "engine " << static_cast<int>(engine));
        for (int kind = 0; kind < 2; ++kind) {
            Mat a = Random(n, n, 10 + n);
            // Small integers: exact ties and cancellations, some singular.
            if (kind == 1)
                for (double& v : a) v = std::floor(v * 2.5);
            Mat ref = a, lu = a;
            std::vector<std::int32_t> pr, p(n);
            std::int32_t parr, par;
            const AnalysisStatus sr = ColumnByColumnLU(ref, n, pr, parr);
            ASSERT_EQ(matrix_detail::LUFactor(lu.data(), n, p.data(), &par, engine), sr) << n << " kind " << kind;
            if (sr != kOk) continue;
            EXPECT_EQ(p, pr) << n;
            EXPECT_EQ(par, parr) << n;
            EXPECT_EQ(lu, ref) << n << " kind " << kind;
            // P*A = L*U with P applied as the sequence of exchanges.
            Mat pa = a, l(n * n, 0.0), u(n * n, 0.0);
            for (int j = 0; j < n; ++j)
                for (int c = 0; c < n; ++c) std::swap(pa[j * n + c], pa[p[j] * n + c]);
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) (j < i ? l : u)[i * n + j] = lu[i * n + j];
            for (int i = 0; i < n; ++i) l[i * n + i] = 1.0;
            EXPECT_LE(MaxDiff(Mul(l, n, n, u, n), pa), 1e-13 * n * 2.5) << n;
        }
    }
}

TEST(Matrix, SolveAndInvert) {
    for (int n : {1, 3, 40, 150}) {
        const Mat a = Random(n, n, 3 * n), xt = Random(n, 1, 7 * n), y = Mul(a, n, n, xt, 1);
        Mat x(n), inplace = y, inv(a.size()), alias = a;
        ASSERT_EQ(LinEqs(a.data(), y.data(), n, x.data()), kOk);
        EXPECT_EQ(a, Random(n, n, 3 * n)) << "input modified";
        EXPECT_LE(MaxDiff(x, xt), 1e-9) << n;
        ASSERT_EQ(LinEqs(a.data(), inplace.data(), n, inplace.data()), kOk);
        EXPECT_EQ(inplace, x);
        ASSERT_EQ(InvMatrix(a.data(), n, inv.data()), kOk);
        EXPECT_LE(MaxDiff(Mul(a, n, n, inv, n), Identity(n)), 1e-10) << n;
        ASSERT_EQ(InvMatrix(alias.data(), n, alias.data()), kOk);
        EXPECT_EQ(alias, inv) << "in place";
    }
    // Hilbert matrix: integer inverse in closed form.
    const int n = 5;
    auto binom = [](int a, int b) { double r = 1; for (int i = 1; i <= b; ++i) r = r * (a - b + i) / i; return r; };
    Mat h(n * n), inv(n * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) h[i * n + j] = 1.0 / (i + j + 1);
    ASSERT_EQ(InvMatrix(h.data(), n, inv.data()), kOk);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const double c = binom(i + j, i);
            const double exact = ((i + j) % 2 ? -1 : 1) * (i + j + 1) * binom(n + i, n - j - 1) * binom(n + j, n - i - 1) * c * c;
            EXPECT_NEAR(inv[i * n + j], exact, 1e-8 * std::fabs(exact)) << i << "," << j;
        }
}

TEST(Matrix, InverseEqualsColumnSolves) {
    // Every column of the inverse must be bit-equal to ForwSub + BackSub of
    // e_j, whatever the interchanges. n spans several blocks of right-hand
    // sides so that anything skipped per block shows.
    const int n = 140;
    Mat lu = Random(n, n, 77), fact = Random(n, n, 5);
    for (int i = 0; i < n; ++i) {
        for (int k = 0; k < i; ++k) lu[i * n + k] *= 0.1;
        lu[i * n + i] += 4.0;
    }
    Mat lu_inf = lu;
    lu_inf[135 * n + 5] = std::numeric_limits<double>::infinity();
    std::vector<std::int32_t> down(n), up(n), own(n);
    for (int i = 0; i < n; ++i) {
        down[i] = i % 3 == 0 ? std::min(n - 1, i + 11) : i;
        up[i] = i % 5 == 4 ? i - 3 : i;
    }
    std::int32_t parity;
    ASSERT_EQ(LUDecompose(fact.data(), n, own.data(), &parity), kOk);
    struct Row {
        const char* name;
        const Mat* factors;
        const std::vector<std::int32_t>* p;
    };
    const std::vector<Row> rows = {
        {"factors of LUDecompose", &fact, &own},
        {"exchanges downwards", &lu, &down},
        {"exchanges upwards", &lu, &up},
        {"infinite multiplier", &lu_inf, &down},
    };
    for (matrix_detail::LUEngine engine : LUEngines())
    for (const Row& r : rows) {
        SCOPED_TRACE(::testing::Message() << "engine " << static_cast<int>(engine));
        Mat inv(n * n), alias = *r.factors;
        ASSERT_EQ(matrix_detail::LUInverseInto(r.factors->data(), n, r.p->data(), inv.data(), engine), kOk) << r.name;
        ASSERT_EQ(LUInverse(alias.data(), n, r.p->data(), alias.data()), kOk) << r.name;
        for (int j = 0; j < n; ++j) {
            Mat e(n, 0.0);
            e[j] = 1.0;
            ForwSub(r.factors->data(), e.data(), n, r.p->data(), e.data());
            ASSERT_EQ(BackSub(r.factors->data(), e.data(), n, e.data()), kOk);
            for (int i = 0; i < n; ++i) {
                const double got = inv[i * n + j];
                ASSERT_TRUE(got == e[i] || (std::isnan(got) && std::isnan(e[i])))
                    << r.name << " (" << i << "," << j << ") " << got << " vs " << e[i];
                ASSERT_TRUE(alias[i * n + j] == got || std::isnan(got)) << r.name << " in place";
            }
        }
    }
}

TEST(Matrix, SubstitutionEdges) {
    // The stored diagonal of L is ignored (unit diagonal).
    const Mat l = {99, 0, 0, 2, 99, 0, -1, 3, 99}, y = {1, 4, 2};
    const std::int32_t none[] = {0, 1, 2}, swap01[] = {1, 1, 2};
    Mat x(3);
    ASSERT_EQ(ForwSub(l.data(), y.data(), 3, none, x.data()), kOk);
    EXPECT_EQ(x, (Mat{1, 2, 2 + 1 - 6}));
    ASSERT_EQ(ForwSub(l.data(), y.data(), 3, swap01, x.data()), kOk);
    EXPECT_EQ(x, (Mat{4, 1 - 8, 2 + 4 + 21}));  // L*w = P*y
    ASSERT_EQ(BackSub(Mat{1e-300, 1, 0, 2}.data(), Mat{1, 4}.data(), 2, x.data()), kOk);
    EXPECT_EQ(x[1], 2.0);
    EXPECT_DOUBLE_EQ(x[0], -1e300);
    EXPECT_EQ(BackSub(Mat{1, 0, 0, kNaN}.data(), y.data(), 2, x.data()), kErrSingular);
}

TEST(Matrix, Determinants) {
    // Vandermonde with decreasing powers: prod_{i<j} (x_j - x_i) times
    // (-1)^(n(n-1)/2) = +1 for n = 5.
    const Mat xs = {1, 2, 4, 7, 11};
    Mat v(25);
    ASSERT_EQ(SpecialMatrix(kSpecialVandermonde, 0, xs.data(), 5, nullptr, 0, v.data()), kOk);
    double exact = 1.0, det, det2;
    for (int i = 0; i < 5; ++i)
        for (int j = i + 1; j < 5; ++j) exact *= xs[j] - xs[i];
    ASSERT_EQ(Determinant(v.data(), 5, &det), kOk);
    EXPECT_NEAR(det, exact, 1e-9 * exact);
    for (const Mat& s : {Mat{1, 2, 2, 4}, Mat{1e-13}}) {
        det = 7;
        ASSERT_EQ(Determinant(s.data(), Side(s), &det), kOk);
        EXPECT_EQ(det, 0.0) << "singular is not an error";
    }
    const Mat spd = Spd(6, 5);
    ASSERT_EQ(Determinant(spd.data(), 6, &det), kOk);
    ASSERT_EQ(GenDeterminant(spd.data(), 6, kMatrixPositiveDefinite, &det2), kOk);
    EXPECT_NEAR(det2, det, 1e-12 * det);
    ASSERT_EQ(GenDeterminant(Mat{1, 2, 2, 1}.data(), 2, kMatrixPositiveDefinite, &det), kOk);
    EXPECT_EQ(det, 0.0);
    for (std::int32_t t : {kMatrixLowerTriangular, kMatrixUpperTriangular}) {
        ASSERT_EQ(GenDeterminant(Mat{2, kNaN, kNaN, 3}.data(), 2, t, &det), kOk);
        EXPECT_EQ(det, 6.0) << "type " << t << " reads only the diagonal";
    }
}

TEST(Matrix, SvdSolveLeastSquaresAndRankWarning) {
    struct Row {
        const char* name;
        int m, n;
        Mat a, y, x;
        AnalysisStatus status;
    };
    const std::vector<Row> rows = {
        // Normal equations [[3,3],[3,5]] x = [7,10].
        {"3x2 least squares", 3, 2, {1, 0, 1, 1, 1, 2}, {1, 2, 4}, {5.0 / 6, 1.5}, kOk},
        {"equal columns, minimum norm", 3, 2, {1, 1, 2, 2, 3, 3}, {1, 2, 3}, {0.5, 0.5}, kWarnRankDeficient},
        // x = A^T (A A^T)^-1 y.
        {"2x3 minimum norm", 2, 3, {1, 0, 1, 0, 1, 1}, {1, 2}, {0, 1, 1}, kOk},
        {"zero matrix", 2, 2, {0, 0, 0, 0}, {1, 2}, {0, 0}, kWarnRankDeficient},
    };
    for (const Row& r : rows) {
        Mat x(r.n, kNaN);
        ASSERT_EQ(GenLinEqs(r.a.data(), r.m, r.n, r.y.data(), kMatrixGeneral, x.data()), r.status) << r.name;
        EXPECT_LE(MaxDiff(x, r.x), 1e-14) << r.name;
    }
}

TEST(Matrix, MatrixClassesSolveAndInvertIgnoringTheUnreadTriangle) {
    const int n = 7;
    const Mat spd = Spd(n, 9), r = Random(n, n, 4), y = Random(n, 1, 8);
    for (std::int32_t type : {kMatrixGeneral, kMatrixPositiveDefinite, kMatrixLowerTriangular, kMatrixUpperTriangular}) {
        // full: the matrix the class describes; given: NaN where not read.
        Mat full(n * n), given(n * n), x(n), inv(n * n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const int k = i * n + j;
                const bool unread = (type == kMatrixUpperTriangular && j < i) || (type >= 1 && type <= 2 && j > i);
                full[k] = type == kMatrixPositiveDefinite ? spd[k] : (unread ? 0.0 : r[k] + (i == j ? 3 : 0));
                given[k] = unread ? kNaN : full[k];
            }
        ASSERT_EQ(GenLinEqs(given.data(), n, n, y.data(), type, x.data()), kOk) << type;
        EXPECT_LE(MaxDiff(Mul(full, n, n, x, 1), y), 1e-12) << "type " << type;
        ASSERT_EQ(GenInvMatrix(given.data(), n, type, inv.data()), kOk) << type;
        EXPECT_LE(MaxDiff(Mul(full, n, n, inv, n), Identity(n)), 1e-12) << "type " << type;
        if (type == kMatrixPositiveDefinite) { EXPECT_EQ(inv, T(inv, n, n)) << "exactly symmetric"; }
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if (given[i * n + j] != given[i * n + j] && type != kMatrixPositiveDefinite) {
                    EXPECT_EQ(inv[i * n + j], 0.0) << "type " << type;
                }
    }
}

TEST(Matrix, PackedLayoutsAndRelativeThresholds) {
    const int n = 4;
    Mat a(n * n), packed(10), back(n * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) a[i * n + j] = 10 * i + j;
    // Column by column: lower from the diagonal down, upper from row 0 down.
    const Mat lower = {0, 10, 20, 30, 11, 21, 31, 22, 32, 33}, upper = {0, 1, 11, 2, 12, 22, 3, 13, 23, 33};
    ASSERT_EQ(PackTriangle(a.data(), n, kPackLower, packed.data()), kOk);
    EXPECT_EQ(packed, lower);
    ASSERT_EQ(PackTriangle(a.data(), n, kPackSymmetric, packed.data()), kOk);
    EXPECT_EQ(packed, lower);
    ASSERT_EQ(PackTriangle(a.data(), n, kPackUpper, packed.data()), kOk);
    EXPECT_EQ(packed, upper);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            if (i >= j) { EXPECT_EQ(lower[PackedLowerIndex(i, j, n)], a[i * n + j]); }
            if (i <= j) { EXPECT_EQ(upper[PackedUpperIndex(i, j)], a[i * n + j]); }
        }
    for (std::int32_t mode : {kPackLower, kPackUpper, kPackSymmetric}) {
        ASSERT_EQ(UnpackTriangle((mode == kPackUpper ? upper : lower).data(), n, mode, back.data()), kOk);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                const double want = mode == kPackSymmetric ? a[std::max(i, j) * n + std::min(i, j)]
                                    : (mode == kPackLower ? j <= i : j >= i) ? a[i * n + j] : 0.0;
                EXPECT_EQ(back[i * n + j], want) << "mode " << mode << " (" << i << "," << j << ")";
            }
    }
    struct Row {
        const char* name;
        Mat a;
        std::int32_t type;
        AnalysisStatus status;
    };
    // Cholesky: L = diag(1, sqrt(d)) fails below 2^-31.5 (3.29e-10).
    // Triangular: |diagonal| <= 2^-63 * max|entry| (5 * 1.08e-19) fails.
    const std::vector<Row> rows = {
        {"cholesky diag 1e-20", {1, 0, 0, 1e-20}, kMatrixPositiveDefinite, kErrSingular},
        {"cholesky diag 1e-18", {1, 0, 0, 1e-18}, kMatrixPositiveDefinite, kOk},
        {"cholesky zero pivot", {1, 1, 1, 1}, kMatrixPositiveDefinite, kErrSingular},
        {"lower diag 5e-19", {1, 0, 5, 5e-19}, kMatrixLowerTriangular, kErrSingular},
        {"lower diag 6e-19", {1, 0, 5, 6e-19}, kMatrixLowerTriangular, kOk},
        {"upper diag 5e-19", {1, 5, 0, 5e-19}, kMatrixUpperTriangular, kErrSingular},
        {"upper all zero", {0, 0, 0, 0}, kMatrixUpperTriangular, kErrSingular},
    };
    for (const Row& r : rows) {
        Mat x(2), inv(4);
        EXPECT_EQ(GenLinEqs(r.a.data(), 2, 2, Mat{1, 1}.data(), r.type, x.data()), r.status) << r.name;
        EXPECT_EQ(GenInvMatrix(r.a.data(), 2, r.type, inv.data()), r.status) << r.name;
    }
}

TEST(Matrix, CholeskyAndPositiveDefiniteness) {
    Mat r(4);
    ASSERT_EQ(Cholesky(Mat{4, 2, 2, 3}.data(), 2, r.data()), kOk);
    EXPECT_EQ(r, (Mat{2, 1, 0, std::sqrt(2.0)}));
    const int n = 9;
    const Mat a = Spd(n, 3);
    Mat given = a;
    for (int i = 0; i < n; ++i)
        for (int j = i + 1; j < n; ++j) given[i * n + j] = kNaN;  // never read
    ASSERT_EQ(Cholesky(given.data(), n, given.data()), kOk);
    EXPECT_LE(MaxDiff(Mul(T(given, n, n), n, n, given, n), a), 1e-12 * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j) EXPECT_EQ(given[i * n + j], 0.0);
    struct Row {
        const char* name;
        Mat a;
        std::int32_t flag;
    };
    const std::vector<Row> rows = {
        {"[[2,1],[1,2]]", {2, 1, 1, 2}, 1},
        {"not exactly symmetric", {2, 1, 1.0000001, 2}, 0},
        {"semidefinite", {1, 0, 0, 0}, 0},
        {"negative 1x1", {-1}, 0},
        {"eigenvalue 1e-20 against 1", {1, 0, 0, 1e-20}, 0},
        {"eigenvalue 1e-18 against 1", {1, 0, 0, 1e-18}, 1},
        {"NaN off the diagonal", {1, kNaN, kNaN, 1}, 0},
    };
    for (const Row& c : rows) {
        std::int32_t flag = -1;
        ASSERT_EQ(CheckPosdef(c.a.data(), Side(c.a), &flag), kOk) << c.name;
        EXPECT_EQ(flag, c.flag) << c.name;
    }
}

TEST(Matrix, NormsAndConditionNumbers) {
    struct Row {
        const char* name;
        int m, n;
        Mat a;
        std::int32_t type;
        double expected;
    };
    Mat wide(3 * 150, 0.0);  // largest column sum far into the rows
    wide[140] = 1, wide[2 * 150 + 140] = -7, wide[150 + 3] = 5;
    const Mat m23 = {1, 2, 3, 4, 5, 6};
    const double s0 = std::sqrt((91 + std::sqrt(8065.0)) / 2);  // A*A^T = [[14,32],[32,77]]
    const std::vector<Row> rows = {
        {"one", 2, 2, {1, -2, 3, 4}, kNormOne, 6},
        {"infinity", 2, 2, {1, -2, 3, 4}, kNormInfinity, 7},
        {"frobenius", 2, 2, {1, -2, 3, 4}, kNormFrobenius, std::sqrt(30.0)},
        {"one 2x3", 2, 3, m23, kNormOne, 9},
        {"infinity 2x3", 2, 3, m23, kNormInfinity, 15},
        {"two 2x3", 2, 3, m23, kNormTwo, s0},
        {"two 3x2", 3, 2, T(m23, 2, 3), kNormTwo, s0},
        {"one 3x150", 3, 150, wide, kNormOne, 8},
        {"infinity 3x150", 3, 150, wide, kNormInfinity, 7},
    };
    for (const Row& r : rows) {
        double v = -1;
        ASSERT_EQ(MatrixNorm(r.a.data(), r.m, r.n, r.type, &v), kOk) << r.name;
        EXPECT_NEAR(v, r.expected, 1e-14 * r.expected) << r.name;
    }
    const double identity3[] = {1, 1, 3, 1};  // the Frobenius norm of I is sqrt(n)
    for (std::int32_t t = 0; t < 4; ++t) {
        double c;
        ASSERT_EQ(ConditionNumber(Identity(3).data(), 3, 3, t, &c), kOk) << t;
        EXPECT_NEAR(c, identity3[t], 1e-15) << t;
    }
    double c;
    ASSERT_EQ(ConditionNumber(Mat{1, 0, 0, 2, 0, 0}.data(), 3, 2, kNormTwo, &c), kOk);
    EXPECT_NEAR(c, 2.0, 1e-15);
    ASSERT_EQ(ConditionNumber(Mat{4, 1, 2, 3}.data(), 2, 2, kNormOne, &c), kOk);
    EXPECT_NEAR(c, 6 * 0.5, 1e-14);  // inverse [[3,-1],[-2,4]]/10
}

TEST(Matrix, SpecialMatrices) {
    struct Row {
        const char* name;
        std::int32_t type, size;
        Mat a1, a2;
        int rows, cols;
        Mat expected;
    };
    const std::vector<Row> rows = {
        {"identity", kSpecialIdentity, 2, {}, {}, 2, 2, {1, 0, 0, 1}},
        {"diagonal", kSpecialDiagonal, 0, {3, -1}, {}, 2, 2, {3, 0, 0, -1}},
        {"toeplitz", kSpecialToeplitz, 0, {1, 2, 3}, {9, 5, 6}, 3, 3, {1, 5, 6, 2, 1, 5, 3, 2, 1}},
        {"toeplitz 2x4", kSpecialToeplitz, 0, {1, 2}, {9, 5, 6, 7}, 2, 4, {1, 5, 6, 7, 2, 1, 5, 6}},
        {"toeplitz 3x1", kSpecialToeplitz, 0, {1, 2, 3}, {9}, 3, 1, {1, 2, 3}},
        {"vandermonde", kSpecialVandermonde, 0, {2, 3}, {}, 2, 2, {2, 1, 3, 1}},
        {"vandermonde with 0", kSpecialVandermonde, 0, {0, 2, -1}, {}, 3, 3, {0, 0, 1, 4, 2, 1, 1, -1, 1}},
        {"companion", kSpecialCompanion, 0, {2, -6, 4}, {}, 2, 2, {3, -2, 1, 0}},
        {"companion cubic", kSpecialCompanion, 0, {1, -6, 11, -6}, {}, 3, 3, {6, -11, 6, 1, 0, 0, 0, 1, 0}},
    };
    for (const Row& r : rows) {
        std::int32_t rr = 0, cc = 0;
        const auto n1 = static_cast<std::int32_t>(r.a1.size()), n2 = static_cast<std::int32_t>(r.a2.size());
        ASSERT_EQ(SpecialMatrixShape(r.type, r.size, n1, n2, &rr, &cc), kOk) << r.name;
        EXPECT_EQ(rr, r.rows) << r.name;
        EXPECT_EQ(cc, r.cols) << r.name;
        Mat out(static_cast<std::size_t>(rr) * cc, kNaN);
        ASSERT_EQ(SpecialMatrix(r.type, r.size, r.a1.data(), n1, r.a2.data(), n2, out.data()), kOk) << r.name;
        EXPECT_EQ(out, r.expected) << r.name;
    }
}

// ---------------------------------------------------------------------------
// Decompositions, on shapes where rows and columns cannot be confused.

struct Shape {
    int m, n, rank;  // rank < min(m, n): built as a product of thin factors
};
const Shape kShapes[] = {{1, 1, 1}, {1, 5, 1}, {5, 1, 1}, {4, 4, 4}, {7, 3, 3},
                         {3, 7, 3}, {6, 5, 2}, {5, 6, 2}, {40, 25, 25}, {25, 40, 10}};

Mat Build(const Shape& s, unsigned seed) {
    if (s.rank >= std::min(s.m, s.n)) return Random(s.m, s.n, seed);
    return Mul(Random(s.m, s.rank, seed), s.m, s.rank, Random(s.rank, s.n, seed + 1), s.n);
}

TEST(Matrix, QrSvdPseudoInverseRank) {
    for (const Shape& s : kShapes) {
        const int m = s.m, n = s.n, k = std::min(m, n);
        const std::string name = std::to_string(m) + "x" + std::to_string(n);
        const Mat a = Build(s, 11 * m + n);
        Mat q(m * k), r(k * n), u(m * k), sv(k), v(n * k), only(k), p(n * m);
        ASSERT_EQ(QRDecompose(a.data(), m, n, q.data(), r.data()), kOk) << name;
        EXPECT_LE(MaxDiff(Mul(q, m, k, r, n), a), 1e-14 * m) << name;
        EXPECT_LE(MaxDiff(Mul(T(q, m, k), k, m, q, k), Identity(k)), 1e-14 * m) << name;
        for (int i = 0; i < k; ++i) {
            EXPECT_GE(r[i * n + i], 0.0) << name << " R diagonal " << i;
            for (int j = 0; j < i; ++j) EXPECT_EQ(r[i * n + j], 0.0) << name;
        }

        ASSERT_EQ(SVDecompose(a.data(), m, n, u.data(), sv.data(), v.data()), kOk) << name;
        ASSERT_EQ(SingularValues(a.data(), m, n, only.data()), kOk) << name;
        Mat us = u;
        for (int i = 0; i < m * k; ++i) us[i] *= sv[i % k];
        EXPECT_LE(MaxDiff(Mul(us, m, k, T(v, n, k), n), a), 1e-13) << name;
        EXPECT_LE(MaxDiff(Mul(T(v, n, k), k, n, v, k), Identity(k)), 1e-13) << name;
        EXPECT_LE(MaxDiff(only, sv), 1e-13 * sv[0]) << name;
        std::int32_t rank = -1;
        ASSERT_EQ(MatrixRank(a.data(), m, n, &rank), kOk);
        EXPECT_EQ(rank, std::min(s.rank, k)) << name;
        for (int j = 0; j < k; ++j) {
            EXPECT_GE(sv[j], 0.0) << name;
            if (j > 0) { EXPECT_GE(sv[j - 1], sv[j]) << name; }
            double big = 0.0;
            for (int i = 0; i < n; ++i)
                if (std::fabs(v[i * k + j]) > std::fabs(big)) big = v[i * k + j];
            EXPECT_GT(big, 0.0) << name << " sign convention, column " << j;
        }

        // Moore-Penrose: A P A = A, P A P = P, A P and P A symmetric.
        ASSERT_EQ(PseudoInverse(a.data(), m, n, p.data()), kOk) << name;
        const Mat ap = Mul(a, m, n, p, m), pa = Mul(p, n, m, a, n);
        EXPECT_LE(MaxDiff(Mul(ap, m, m, a, n), a), 1e-11) << name;
        EXPECT_LE(MaxDiff(Mul(pa, n, n, p, m), p), 1e-11) << name;
        EXPECT_LE(MaxDiff(ap, T(ap, m, m)), 1e-11) << name;
        EXPECT_LE(MaxDiff(pa, T(pa, n, n)), 1e-11) << name;
    }
    Mat s2(2), z(6, 1.0);
    ASSERT_EQ(SingularValues(Mat{3, 0, 4, 5}.data(), 2, 2, s2.data()), kOk);  // A^T*A: eigenvalues 45, 5
    EXPECT_LE(MaxDiff(s2, Mat{std::sqrt(45.0), std::sqrt(5.0)}), 1e-14);
    std::int32_t rank = -1;
    ASSERT_EQ(MatrixRank(Mat(12, 0.0).data(), 3, 4, &rank), kOk);
    EXPECT_EQ(rank, 0);
    ASSERT_EQ(PseudoInverse(Mat(6, 0.0).data(), 2, 3, z.data()), kOk);
    EXPECT_EQ(z, Mat(6, 0.0));
    const Mat a = Random(6, 6, 3);
    Mat p(36), inv(36);
    ASSERT_EQ(PseudoInverse(a.data(), 6, 6, p.data()), kOk);
    ASSERT_EQ(InvMatrix(a.data(), 6, inv.data()), kOk);
    EXPECT_LE(MaxDiff(p, inv), 1e-11);
}

TEST(Matrix, GeneralEigenOrderAndResiduals) {
    using C = std::complex<double>;
    struct Row {
        const char* name;
        Mat a;
        std::vector<C> values;  // empty: residuals only
    };
    Mat companion(9);  // (x-1)(x-2)(x-3)
    ASSERT_EQ(SpecialMatrix(kSpecialCompanion, 0, Mat{1, -6, 11, -6}.data(), 4, nullptr, 0, companion.data()), kOk);
    const std::vector<Row> rows = {
        {"companion roots", companion, {3, 2, 1}},
        {"rotation", {0, -1, 1, 0}, {C(0, 1), C(0, -1)}},
        {"equal moduli", {-1, 0, 0, 1}, {1, -1}},
        {"random 8x8", Random(8, 8, 21), {}},
    };
    for (const Row& r : rows) {
        const int n = Side(r.a);
        Mat re(n), im(n), vr(n * n), vi(n * n);
        ASSERT_EQ(GeneralEigen(r.a.data(), n, n, re.data(), im.data(), vr.data(), vi.data()), kOk) << r.name;
        for (int j = 0; j < n; ++j) {
            const C lambda(re[j], im[j]);
            if (!r.values.empty()) { EXPECT_LE(std::abs(lambda - r.values[j]), 1e-12) << r.name << " value " << j; }
            if (j > 0) { EXPECT_GE(std::abs(C(re[j - 1], im[j - 1])), std::abs(lambda) * (1 - 1e-15)) << r.name; }
            double norm = 0.0, big = 0.0, resid = 0.0;
            int ibig = 0;
            for (int i = 0; i < n; ++i) {
                const C vij(vr[i * n + j], vi[i * n + j]);
                norm += std::norm(vij);
                if (std::abs(vij) > big) big = std::abs(vij), ibig = i;
                C av = 0.0;
                for (int k = 0; k < n; ++k) av += r.a[i * n + k] * C(vr[k * n + j], vi[k * n + j]);
                resid = std::fmax(resid, std::abs(av - lambda * vij));
            }
            EXPECT_NEAR(norm, 1.0, 1e-13) << r.name;
            EXPECT_LE(resid, 1e-12) << r.name << " A*v = lambda*v, vector " << j;
            EXPECT_GT(vr[ibig * n + j], 0.0) << r.name;
            EXPECT_EQ(vi[ibig * n + j], 0.0) << r.name;
        }
    }
}

TEST(Matrix, SymmetricEigenAscendingOrthonormal) {
    // Tridiagonal (-1, 2, -1): eigenvalues 2 - 2cos(k*pi/(n+1)), k = 1..n.
    const int n = 6;
    Mat full(n * n, 0.0), given(n * n), values(n), vectors(n * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            full[i * n + j] = i == j ? 2 : (std::abs(i - j) == 1 ? -1 : 0);
            given[i * n + j] = j > i ? kNaN : full[i * n + j];
        }
    ASSERT_EQ(SymmetricEigen(given.data(), n, n, values.data(), vectors.data()), kOk);
    for (int k = 0; k < n; ++k) EXPECT_NEAR(values[k], 2 - 2 * std::cos((k + 1) * std::acos(-1.0) / (n + 1)), 1e-14);
    EXPECT_LE(MaxDiff(Mul(T(vectors, n, n), n, n, vectors, n), Identity(n)), 1e-14);
    Mat vl = vectors;
    for (int i = 0; i < n * n; ++i) vl[i] *= values[i % n];
    EXPECT_LE(MaxDiff(Mul(full, n, n, vectors, n), vl), 1e-14);
}

}  // namespace
}  // namespace vn
