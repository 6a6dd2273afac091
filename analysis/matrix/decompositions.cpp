// Orthogonal decompositions and eigenproblems on top of Eigen. Eigen stays in
// this file: the public kernels see raw row-major arrays and status codes,
// and Eigen's allocation failures (std::bad_alloc) are turned into -20001 here.

#include "analysis/matrix/decompositions.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <complex>
#include <new>
#include <numeric>
#include <vector>

namespace vn {

namespace {

using Eigen::Index;
using RowMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using ConstRowMap = Eigen::Map<const RowMatrix>;
using RowMap = Eigen::Map<RowMatrix>;

template <typename F>
AnalysisStatus Guarded(F&& body) noexcept {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return kErrNoMemory;
    } catch (...) {
        return kErrAlgorithmFailure;
    }
}

bool AllFinite(const double* a, Index count) {
    for (Index i = 0; i < count; ++i)
        if (!std::isfinite(a[i])) return false;
    return true;
}

// Index of the largest |v[i]| (the first of equal ones).
template <typename Vector>
Index LargestComponent(const Vector& v) {
    Index best = 0;
    double mag = std::abs(v(0));
    for (Index i = 1; i < v.size(); ++i) {
        const double m = std::abs(v(i));
        if (m > mag) {
            mag = m;
            best = i;
        }
    }
    return best;
}

// Thin SVD with the sign convention of SVDecompose applied.
AnalysisStatus ThinSvd(const double* a, Index m, Index n, Eigen::MatrixXd& u, Eigen::VectorXd& s,
                       Eigen::MatrixXd& v) {
    Eigen::BDCSVD<Eigen::MatrixXd> svd(ConstRowMap(a, m, n), Eigen::ComputeThinU | Eigen::ComputeThinV);
    if (svd.info() != Eigen::Success) return kErrAlgorithmFailure;
    u = svd.matrixU();
    s = svd.singularValues();
    v = svd.matrixV();
    for (Index j = 0; j < s.size(); ++j) {
        if (v(LargestComponent(v.col(j)), j) < 0.0) {
            v.col(j) = -v.col(j);
            u.col(j) = -u.col(j);
        }
    }
    return kOk;
}

Index RankOf(const Eigen::VectorXd& s, Index m, Index n) {
    const double tol = static_cast<double>(std::max(m, n)) * s(0) * kRankEpsilon;
    Index r = 0;
    for (Index i = 0; i < s.size(); ++i)
        if (s(i) > tol) ++r;
    return r;
}

}  // namespace

AnalysisStatus QRDecompose(const double* a, std::int32_t m, std::int32_t n, double* q, double* r) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(m) * n)) return kErrAlgorithmFailure;
        const Index k = std::min<Index>(m, n);
        Eigen::HouseholderQR<Eigen::MatrixXd> qr(ConstRowMap(a, m, n));
        Eigen::MatrixXd qm = Eigen::MatrixXd::Identity(m, k);
        qm.applyOnTheLeft(qr.householderQ());
        Eigen::MatrixXd rm = qr.matrixQR().topRows(k).triangularView<Eigen::Upper>();
        // Householder reflections leave the diagonal's signs arbitrary; make
        // it non-negative so that the factorisation of a full-rank matrix is
        // unique.
        for (Index i = 0; i < k; ++i) {
            if (rm(i, i) < 0.0) {
                rm.row(i) = -rm.row(i);
                qm.col(i) = -qm.col(i);
            }
        }
        RowMap(q, m, k) = qm;
        RowMap(r, k, n) = rm;
        return kOk;
    });
}

AnalysisStatus SVDecompose(const double* a, std::int32_t m, std::int32_t n, double* u, double* s,
                           double* v) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(m) * n)) return kErrAlgorithmFailure;
        const Index k = std::min<Index>(m, n);
        Eigen::MatrixXd um, vm;
        Eigen::VectorXd sv;
        const AnalysisStatus status = ThinSvd(a, m, n, um, sv, vm);
        if (status != kOk) return status;
        RowMap(u, m, k) = um;
        Eigen::Map<Eigen::VectorXd>(s, k) = sv;
        RowMap(v, n, k) = vm;
        return kOk;
    });
}

AnalysisStatus SingularValues(const double* a, std::int32_t m, std::int32_t n, double* s) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(m) * n)) return kErrAlgorithmFailure;
        Eigen::BDCSVD<Eigen::MatrixXd> svd(ConstRowMap(a, m, n));
        if (svd.info() != Eigen::Success) return kErrAlgorithmFailure;
        Eigen::Map<Eigen::VectorXd>(s, std::min<Index>(m, n)) = svd.singularValues();
        return kOk;
    });
}

AnalysisStatus PseudoInverse(const double* a, std::int32_t m, std::int32_t n, double* b) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(m) * n)) return kErrAlgorithmFailure;
        Eigen::MatrixXd um, vm;
        Eigen::VectorXd sv;
        const AnalysisStatus status = ThinSvd(a, m, n, um, sv, vm);
        if (status != kOk) return status;
        const Index r = RankOf(sv, m, n);
        RowMap out(b, n, m);
        if (r == 0) {
            out.setZero();
            return kOk;
        }
        // pinv(a) = V_r * S_r^-1 * U_r^T over the singular values kept.
        Eigen::MatrixXd vs = vm.leftCols(r) * sv.head(r).cwiseInverse().asDiagonal();
        out = vs * um.leftCols(r).transpose();
        return kOk;
    });
}

AnalysisStatus MatrixRank(const double* a, std::int32_t m, std::int32_t n, std::int32_t* rank) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(m) * n)) return kErrAlgorithmFailure;
        Eigen::BDCSVD<Eigen::MatrixXd> svd(ConstRowMap(a, m, n));
        if (svd.info() != Eigen::Success) return kErrAlgorithmFailure;
        *rank = static_cast<std::int32_t>(RankOf(svd.singularValues(), m, n));
        return kOk;
    });
}

AnalysisStatus GeneralEigen(const double* a, std::int32_t m, std::int32_t n, double* val_re,
                            double* val_im, double* vec_re, double* vec_im) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (m != n) return kErrNotSquare;
    return Guarded([&]() -> AnalysisStatus {
        if (!AllFinite(a, Index(n) * n)) return kErrAlgorithmFailure;
        const bool want_vectors = vec_re != nullptr || vec_im != nullptr;
        Eigen::EigenSolver<Eigen::MatrixXd> es(ConstRowMap(a, n, n), want_vectors);
        if (es.info() != Eigen::Success) return kErrAlgorithmFailure;
        const Eigen::VectorXcd values = es.eigenvalues();

        // Decreasing modulus, then real part, then imaginary part. A
        // conjugate pair has bitwise equal moduli and real parts, so it stays
        // together with +imag first.
        std::vector<Index> order(static_cast<std::size_t>(n));
        std::iota(order.begin(), order.end(), Index(0));
        std::stable_sort(order.begin(), order.end(), [&](Index x, Index y) {
            const std::complex<double> vx = values(x), vy = values(y);
            const double mx = std::abs(vx), my = std::abs(vy);
            if (mx != my) return mx > my;
            if (vx.real() != vy.real()) return vx.real() > vy.real();
            return vx.imag() > vy.imag();
        });

        Eigen::MatrixXcd vectors;
        if (want_vectors) vectors = es.eigenvectors();
        for (Index jj = 0; jj < n; ++jj) {
            const Index j = order[static_cast<std::size_t>(jj)];
            val_re[jj] = values(j).real();
            val_im[jj] = values(j).imag();
            if (!want_vectors) continue;
            Eigen::VectorXcd v = vectors.col(j);
            const double norm = v.norm();
            if (norm > 0.0) v /= norm;
            // Rotate the phase so the largest component is real and positive.
            const Index big = LargestComponent(v);
            const std::complex<double> c = v(big);
            const double mag = std::abs(c);
            if (mag > 0.0) {
                v *= std::conj(c) / mag;
                v(big) = std::complex<double>(mag, 0.0);
            }
            for (Index i = 0; i < n; ++i) {
                if (vec_re) vec_re[i * n + jj] = v(i).real();
                if (vec_im) vec_im[i * n + jj] = v(i).imag();
            }
        }
        return kOk;
    });
}

AnalysisStatus SymmetricEigen(const double* a, std::int32_t m, std::int32_t n, double* values,
                              double* vectors) {
    if (m < 1 || n < 1) return kErrSamplesBelowOne;
    if (m != n) return kErrNotSquare;
    return Guarded([&]() -> AnalysisStatus {
        // Only the lower triangle is data; the rest is never looked at.
        Eigen::MatrixXd lower = Eigen::MatrixXd::Zero(n, n);
        for (Index i = 0; i < n; ++i)
            for (Index j = 0; j <= i; ++j) {
                const double x = a[i * n + j];
                if (!std::isfinite(x)) return kErrAlgorithmFailure;
                lower(i, j) = x;
            }
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(
            lower, vectors ? Eigen::ComputeEigenvectors : Eigen::EigenvaluesOnly);
        if (es.info() != Eigen::Success) return kErrAlgorithmFailure;
        Eigen::Map<Eigen::VectorXd>(values, n) = es.eigenvalues();  // ascending
        if (vectors) {
            Eigen::MatrixXd ev = es.eigenvectors();
            for (Index j = 0; j < n; ++j)
                if (ev(LargestComponent(ev.col(j)), j) < 0.0) ev.col(j) = -ev.col(j);
            RowMap(vectors, n, n) = ev;
        }
        return kOk;
    });
}

}  // namespace vn
