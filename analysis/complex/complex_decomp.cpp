// Complex decompositions that need iterative or orthogonal methods: singular
// values and vectors (bidiagonal divide and conquer, which hands blocks below
// 16 columns to one-sided Jacobi, so small matrices get Jacobi's accuracy and
// large ones an O(n^3) cost with a small constant), Householder QR, the
// complex Schur form for eigenvalues and vectors, and the Hermitian
// eigenvalues of the positive-definiteness test.
//
// Eigen appears only in this file. Its only failure by exception is
// std::bad_alloc, which every entry point turns into kErrNoMemory.
#include "analysis/complex/complex_matrix.h"

#include "analysis/complex/complex_detail.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>
#include <vector>

namespace vn {

using cxdetail::Cx;

namespace {

using CMatrix = Eigen::Matrix<Cx, Eigen::Dynamic, Eigen::Dynamic>;
using CVector = Eigen::Matrix<Cx, Eigen::Dynamic, 1>;
using Svd = Eigen::BDCSVD<CMatrix>;

constexpr double kTwoPowMinus52 = 2.220446049250313e-16;
constexpr double kTwoPowMinus63 = 1.0842021724855044e-19;

template <typename Body>
AnalysisStatus Guarded(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        // Scratch allocation is the only thing that throws here.
        return kErrNoMemory;
    }
}

inline std::size_t At(Eigen::Index i, Eigen::Index j, Eigen::Index cols) {
    return static_cast<std::size_t>(i) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(j);
}

bool Load(const double* ar, const double* ai, std::int32_t m, std::int32_t n, CMatrix& a) {
    std::size_t count = 0;
    if (!cxdetail::BlockCount(m, n, &count)) return false;
    a.resize(m, n);
    for (Eigen::Index i = 0; i < m; ++i)
        for (Eigen::Index j = 0; j < n; ++j) a(i, j) = Cx(ar[At(i, j, n)], ai[At(i, j, n)]);
    return true;
}

void Store(const CMatrix& a, double* re, double* im) {
    for (Eigen::Index i = 0; i < a.rows(); ++i)
        for (Eigen::Index j = 0; j < a.cols(); ++j) {
            re[At(i, j, a.cols())] = a(i, j).real();
            im[At(i, j, a.cols())] = a(i, j).imag();
        }
}

// Singular values (and, when asked, the thin singular vectors) of a.
// Non-finite input is reported by Eigen as invalid, which maps to the
// non-convergence status.
AnalysisStatus Decompose(const double* ar, const double* ai, std::int32_t m, std::int32_t n, bool vectors,
                         Svd& svd) {
    CMatrix a;
    if (!Load(ar, ai, m, n, a)) return kErrNoMemory;
    svd.compute(a, vectors ? (Eigen::ComputeThinU | Eigen::ComputeThinV) : 0);
    if (svd.info() != Eigen::Success) return kErrAlgorithmFailure;
    return kOk;
}

// Number of singular values (decreasing) above max(m, n) * s[0] * 2^-52: the
// size below which a singular value cannot be told from rounding noise.
Eigen::Index NumericalRank(const Eigen::VectorXd& s, std::int32_t m, std::int32_t n) {
    const double tol = kTwoPowMinus52 * static_cast<double>(m > n ? m : n) * s(0);
    Eigen::Index r = 0;
    while (r < s.size() && s(r) > tol) ++r;
    return r;
}

}  // namespace

AnalysisStatus ComplexSingularValues(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                     double* s) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        Svd svd;
        const AnalysisStatus status = Decompose(ar, ai, m, n, false, svd);
        if (status != kOk) return status;
        const Eigen::VectorXd& v = svd.singularValues();
        for (Eigen::Index k = 0; k < v.size(); ++k) s[k] = v(k);
        return kOk;
    });
}

AnalysisStatus ComplexSVD(const double* ar, const double* ai, std::int32_t m, std::int32_t n, double* ur,
                          double* ui, double* s, double* vr, double* vi) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        Svd svd;
        const AnalysisStatus status = Decompose(ar, ai, m, n, true, svd);
        if (status != kOk) return status;
        Store(svd.matrixU(), ur, ui);
        Store(svd.matrixV(), vr, vi);
        const Eigen::VectorXd& v = svd.singularValues();
        for (Eigen::Index k = 0; k < v.size(); ++k) s[k] = v(k);
        return kOk;
    });
}

AnalysisStatus ComplexMatrixRank(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                 std::int32_t* rank) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        Svd svd;
        const AnalysisStatus status = Decompose(ar, ai, m, n, false, svd);
        if (status != kOk) return status;
        *rank = static_cast<std::int32_t>(NumericalRank(svd.singularValues(), m, n));
        return kOk;
    });
}

AnalysisStatus ComplexPseudoInverse(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                                    double* br, double* bi) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        Svd svd;
        const AnalysisStatus status = Decompose(ar, ai, m, n, true, svd);
        if (status != kOk) return status;
        const Eigen::VectorXd& s = svd.singularValues();
        const Eigen::Index r = NumericalRank(s, m, n);
        // A^+ = V_r diag(1/s) U_r^H over the r singular values that count.
        CMatrix vs = svd.matrixV().leftCols(r);
        for (Eigen::Index k = 0; k < r; ++k) vs.col(k) /= s(k);
        CMatrix b(n, m);
        if (r > 0)
            b.noalias() = vs * svd.matrixU().leftCols(r).adjoint();
        else
            b.setZero();
        Store(b, br, bi);
        return kOk;
    });
}

AnalysisStatus ComplexSvdSolve(const double* ar, const double* ai, std::int32_t m, std::int32_t n,
                               const double* yr, const double* yi, double* xr, double* xi) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        Svd svd;
        const AnalysisStatus status = Decompose(ar, ai, m, n, true, svd);
        if (status != kOk) return status;
        const Eigen::VectorXd& s = svd.singularValues();
        const Eigen::Index r = NumericalRank(s, m, n);
        CVector y(m);
        for (Eigen::Index k = 0; k < m; ++k) y(k) = Cx(yr[k], yi[k]);
        // x = sum over the r significant singular triplets of v_i (u_i^H y) / s_i.
        CVector t = svd.matrixU().leftCols(r).adjoint() * y;
        for (Eigen::Index k = 0; k < r; ++k) t(k) /= s(k);
        const CMatrix& v = svd.matrixV();
        for (Eigen::Index j = 0; j < n; ++j) {
            Cx sum(0.0, 0.0);
            for (Eigen::Index k = 0; k < r; ++k) sum += v(j, k) * t(k);
            xr[j] = sum.real();
            xi[j] = sum.imag();
        }
        return r == s.size() ? kOk : kWarnRankDeficient;
    });
}

AnalysisStatus ComplexQR(const double* ar, const double* ai, std::int32_t m, std::int32_t n, double* qr,
                         double* qi, double* rr, double* ri) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        CMatrix a;
        if (!Load(ar, ai, m, n, a)) return kErrNoMemory;
        const Eigen::Index k = m < n ? m : n;
        Eigen::HouseholderQR<CMatrix> qrf(a);
        CMatrix q = qrf.householderQ() * CMatrix::Identity(m, k);
        CMatrix r = qrf.matrixQR().topRows(k).triangularView<Eigen::Upper>();
        // Move the phase of each diagonal entry of R into the matching column
        // of Q: Q R is unchanged and R's diagonal becomes real and
        // non-negative.
        for (Eigen::Index j = 0; j < k; ++j) {
            const double mag = std::abs(r(j, j));
            if (mag == 0.0) continue;
            const Cx phase = r(j, j) / mag;
            r.row(j) *= std::conj(phase);
            r(j, j) = Cx(mag, 0.0);
            q.col(j) *= phase;
        }
        Store(q, qr, qi);
        Store(r, rr, ri);
        return kOk;
    });
}

AnalysisStatus ComplexEigenValueVector(const double* ar, const double* ai, std::int32_t n, double* valr,
                                       double* vali, double* vecr, double* veci) {
    if (n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        CMatrix a;
        if (!Load(ar, ai, n, n, a)) return kErrNoMemory;
        Eigen::ComplexEigenSolver<CMatrix> es(a, true);
        if (es.info() != Eigen::Success) return kErrAlgorithmFailure;
        const CVector& lambda = es.eigenvalues();
        const CMatrix& v = es.eigenvectors();

        std::vector<Eigen::Index> order(static_cast<std::size_t>(n));
        std::iota(order.begin(), order.end(), Eigen::Index(0));
        std::stable_sort(order.begin(), order.end(), [&](Eigen::Index p, Eigen::Index q) {
            const double mp = std::abs(lambda(p)), mq = std::abs(lambda(q));
            if (mp != mq) return mp > mq;
            if (lambda(p).real() != lambda(q).real()) return lambda(p).real() > lambda(q).real();
            return lambda(p).imag() > lambda(q).imag();
        });

        for (Eigen::Index c = 0; c < n; ++c) {
            const Eigen::Index src = order[static_cast<std::size_t>(c)];
            valr[c] = lambda(src).real();
            vali[c] = lambda(src).imag();
            CVector col = v.col(src);
            const double norm = col.norm();
            if (norm > 0.0) col /= norm;
            // An eigenvector is defined up to a unit factor; fix it so that the
            // first entry of largest modulus is real and positive.
            Eigen::Index top = 0;
            for (Eigen::Index i = 1; i < n; ++i)
                if (std::abs(col(i)) > std::abs(col(top))) top = i;
            const double mag = std::abs(col(top));
            if (mag > 0.0) {
                col *= std::conj(col(top) / mag);
                col(top) = Cx(mag, 0.0);
            }
            for (Eigen::Index i = 0; i < n; ++i) {
                vecr[At(i, c, n)] = col(i).real();
                veci[At(i, c, n)] = col(i).imag();
            }
        }
        return kOk;
    });
}

AnalysisStatus ComplexCheckPosDef(const double* ar, const double* ai, std::int32_t n, std::int32_t* flag) {
    *flag = 0;
    if (n < 1) return kErrSamplesBelowOne;
    // Exact Hermitian symmetry, the diagonal included (its imaginary parts
    // must vanish). A NaN anywhere fails here.
    for (std::int32_t i = 0; i < n; ++i)
        for (std::int32_t j = i; j < n; ++j)
            if (!(ar[At(i, j, n)] == ar[At(j, i, n)]) || !(ai[At(i, j, n)] == -ai[At(j, i, n)])) return kOk;
    return Guarded([&]() -> AnalysisStatus {
        CMatrix a;
        if (!Load(ar, ai, n, n, a)) return kErrNoMemory;
        Eigen::SelfAdjointEigenSolver<CMatrix> es(a, Eigen::EigenvaluesOnly);
        if (es.info() != Eigen::Success) return kErrAlgorithmFailure;
        const Eigen::VectorXd& ev = es.eigenvalues();
        double largest = 0.0;
        for (Eigen::Index k = 0; k < n; ++k) {
            if (!(ev(k) > 0.0)) return kOk;
            if (ev(k) > largest) largest = ev(k);
        }
        // Eigenvalues this far below the largest are zero within rounding.
        const double tau = largest * kTwoPowMinus63;
        for (Eigen::Index k = 0; k < n; ++k)
            if (!(ev(k) > tau)) return kOk;
        *flag = 1;
        return kOk;
    });
}

}  // namespace vn
