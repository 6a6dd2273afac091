#include "analysis/stat/anova.h"

#include "analysis/stat/distributions.h"
#include "analysis/stat/scratch.h"

#include <cstddef>
#include <cstdint>

namespace vn {

AnalysisStatus OneWayAnova(const double* y, const std::int32_t* level, std::int32_t n, std::int32_t k, double* ssa,
                           double* msa, double* f, double* sig, double* sse, double* mse, double* tss) {
    if (n < 1) return kErrSamplesBelowOne;
    if (k < 2 || k >= n) return kErrLevelCount;
    auto sum = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(k));
    auto count = stat_detail::AllocateScratch<std::int32_t>(static_cast<std::size_t>(k));
    if (!sum || !count) return kErrNoMemory;
    for (std::int32_t j = 0; j < k; ++j) {
        sum[j] = 0.0;
        count[j] = 0;
    }
    double s = 0.0, total = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        s += y[i];
        total += y[i] * y[i];
        const std::int32_t g = level[i];
        if (g < 0 || g >= k) return kErrLevelRange;
        sum[g] += y[i];
        ++count[g];
    }
    const double cf = s * s / n;
    total -= cf;
    double between = 0.0;
    for (std::int32_t j = 0; j < k; ++j) {
        if (count[j] == 0) return kErrEmptyLevel;
        between += sum[j] * sum[j] / count[j];
    }
    between -= cf;
    const double within = total - between;
    const double msBetween = between / (k - 1), msWithin = within / (n - k);
    const double ratio = msBetween / msWithin;
    double p = 0.0;
    const AnalysisStatus st = FisherLowerTail(ratio, k - 1, n - k, &p);
    if (st < 0) return st;
    *ssa = between;
    *msa = msBetween;
    *f = ratio;
    *sig = 1.0 - p;
    *sse = within;
    *mse = msWithin;
    *tss = total;
    return st;
}

AnalysisStatus ContingencyTest(std::int32_t r, std::int32_t c, const std::int32_t* table, double* testStat,
                               double* sig) {
    if (r < 0 || c < 0) return kErrSamplesBelowOne;
    auto colSum = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(c));
    auto rowSum = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(r));
    if (!colSum || !rowSum) return kErrNoMemory;
    const std::uint64_t cells = std::uint64_t(r) * std::uint64_t(c);
    if (cells > SIZE_MAX / sizeof(double)) return kErrNoMemory;
    auto expected = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(cells));
    if (!expected) return kErrNoMemory;
    if (r <= 1 || c <= 1) return kErrCategories;

    double total = 0.0;
    for (std::int32_t i = 0; i < r; ++i) {
        double s = 0.0;
        for (std::int32_t j = 0; j < c; ++j) {
            const std::int32_t o = table[std::int64_t(i) * c + j];
            if (o < 0) return kErrNegativeInTable;
            s += o;
        }
        rowSum[i] = s;
        total += s;
    }
    for (std::int32_t j = 0; j < c; ++j) {
        double s = 0.0;
        for (std::int32_t i = 0; i < r; ++i) s += table[std::int64_t(i) * c + j];
        colSum[j] = s;
    }
    double stat = 0.0;
    for (std::int32_t i = 0; i < r; ++i) {
        for (std::int32_t j = 0; j < c; ++j) {
            const std::int64_t at = std::int64_t(i) * c + j;
            expected[at] = colSum[j] * rowSum[i] / total;
            const double d = table[at] - expected[at];
            stat += d * d / expected[at];
        }
    }
    double p = 0.0;
    const AnalysisStatus st = ChiSquareLowerTail(stat, (c - 1) * (r - 1), &p);
    if (st < 0) return st;
    *testStat = stat;
    *sig = 1.0 - p;
    return st;
}

namespace {

constexpr int kMaxFactors = 3;

int BitCount(std::int32_t m) {
    int c = 0;
    for (; m; m &= m - 1) ++c;
    return c;
}

// Position of a combination of levels in the table of the factors in mask s:
// mixed radix over those factors, the first factor slowest.
std::int64_t CellIndex(const std::int32_t* lv, const std::int32_t* count, int nf, std::int32_t s) {
    std::int64_t at = 0;
    for (int f = 0; f < nf; ++f)
        if (s & (1 << f)) at = at * count[f] + lv[f];
    return at;
}

// Balanced factorial analysis of variance for nf = 2 or 3 factors. Sources
// are the non-empty factor masks in `order` (main effects, then
// interactions).
AnalysisStatus FactorialAnova(const double* y, const std::int32_t* const* level, int nf, std::int32_t n,
                              const std::int32_t* count, std::int32_t random, const std::int32_t* order,
                              double* ss, double* ms, double* f, double* sig, double* sse, double* mse,
                              double* tss) {
    if (n < 1) return kErrSamplesBelowOne;
    std::int64_t cells = 1;
    for (int j = 0; j < nf; ++j) {
        if (count[j] < 2) return kErrLevelCount;
        cells *= count[j];
        if (cells > n) return kErrLevelCount;
    }
    const std::int32_t full = (1 << nf) - 1;
    if (random < 0 || random > full) return kErrInvalidSelection;
    if (n % cells != 0) return kErrTotalPoints;
    // Two random factors outside a main effect leave no single mean square
    // with its expectation under the null hypothesis.
    if (nf == 3 && BitCount(random) >= 2) return kErrRandomEffect;
    const std::int32_t perCell = static_cast<std::int32_t>(n / cells);

    // Marginal tables for every factor subset s, one after the other:
    // size[s] = product of the counts in s (the empty subset is the grand
    // total).
    std::int64_t size[1 << kMaxFactors], offset[1 << kMaxFactors], all = 0;
    for (std::int32_t s = 0; s <= full; ++s) {
        size[s] = 1;
        for (int j = 0; j < nf; ++j)
            if (s & (1 << j)) size[s] *= count[j];
        offset[s] = all;
        all += size[s];
    }
    if (static_cast<std::uint64_t>(all) > SIZE_MAX / sizeof(double)) return kErrNoMemory;
    auto mean = stat_detail::AllocateScratch<double>(static_cast<std::size_t>(all));
    auto cellCount = stat_detail::AllocateScratch<std::int32_t>(static_cast<std::size_t>(cells));
    if (!mean || !cellCount) return kErrNoMemory;
    for (std::int64_t j = 0; j < all; ++j) mean[j] = 0.0;
    for (std::int64_t j = 0; j < cells; ++j) cellCount[j] = 0;
    double* const cellMean = mean.get() + offset[full];

    std::int32_t lv[kMaxFactors] = {};
    for (std::int32_t i = 0; i < n; ++i) {
        for (int j = 0; j < nf; ++j) {
            lv[j] = level[j][i];
            if (lv[j] < 0 || lv[j] >= count[j]) return kErrLevelRange;
        }
        const std::int64_t at = CellIndex(lv, count, nf, full);
        cellMean[at] += y[i];
        ++cellCount[at];
    }
    for (std::int64_t j = 0; j < cells; ++j)
        if (cellCount[j] == 0) return kErrEmptyLevel;
    for (std::int64_t j = 0; j < cells; ++j)
        if (cellCount[j] != perCell) return kErrUnbalanced;

    // Every marginal sum is a sum of cell sums; with equal cells each
    // marginal mean then averages n / size[s] observations.
    for (std::int64_t cell = 0; cell < cells; ++cell) {
        std::int64_t rest = cell;
        for (int j = nf - 1; j >= 0; --j) {
            lv[j] = static_cast<std::int32_t>(rest % count[j]);
            rest /= count[j];
        }
        for (std::int32_t s = 0; s < full; ++s) mean[offset[s] + CellIndex(lv, count, nf, s)] += cellMean[cell];
    }
    for (std::int32_t s = 0; s <= full; ++s) {
        const double m = static_cast<double>(n / size[s]);
        for (std::int64_t j = 0; j < size[s]; ++j) mean[offset[s] + j] /= m;
    }
    const double grand = mean[offset[0]];

    double within = 0.0, total = 0.0;
    for (std::int32_t i = 0; i < n; ++i) {
        for (int j = 0; j < nf; ++j) lv[j] = level[j][i];
        const double e = y[i] - cellMean[CellIndex(lv, count, nf, full)], d = y[i] - grand;
        within += e * e;
        total += d * d;
    }

    // Effect of source t at one of its cells: the inclusion-exclusion sum
    // over subsets s of t of (-1)^(|t|-|s|) * mean_s, e.g. for AB
    // mean_ij - mean_i - mean_j + grand. Each effect is shared by the
    // n / size[t] observations of that cell.
    double sumSq[1 << kMaxFactors] = {}, dof[1 << kMaxFactors] = {};
    for (std::int32_t t = 1; t <= full; ++t) {
        double acc = 0.0;
        for (std::int64_t cell = 0; cell < size[t]; ++cell) {
            std::int64_t rest = cell;
            for (int j = nf - 1; j >= 0; --j) {
                if (!(t & (1 << j))) continue;
                lv[j] = static_cast<std::int32_t>(rest % count[j]);
                rest /= count[j];
            }
            double effect = 0.0;
            for (std::int32_t s = t;; s = (s - 1) & t) {
                const double m = mean[offset[s] + CellIndex(lv, count, nf, s)];
                effect += ((BitCount(t) - BitCount(s)) % 2) ? -m : m;
                if (s == 0) break;
            }
            acc += effect * effect;
        }
        sumSq[t] = acc * static_cast<double>(n / size[t]);
        dof[t] = 1;
        for (int j = 0; j < nf; ++j)
            if (t & (1 << j)) dof[t] *= count[j] - 1;
    }

    double errSs = within, errDof = static_cast<double>(cells) * (perCell - 1);
    if (perCell == 1) {
        // No replicates: the highest interaction is all that is left to
        // estimate the error.
        errSs = sumSq[full];
        errDof = dof[full];
    }
    const double errMs = errSs / errDof;

    double outSs[7], outMs[7], outF[7], outSig[7];
    const int sources = full;
    for (int q = 0; q < sources; ++q) {
        const std::int32_t t = order[q];
        outSs[q] = sumSq[t];
        outMs[q] = sumSq[t] / dof[t];
        if (t == full && perCell == 1) {
            outF[q] = 0.0;
            outSig[q] = 1.0;
            continue;
        }
        const std::int32_t outside = random & ~t & full;
        double den = errMs, denDof = errDof;
        if (outside != 0 && !(perCell == 1 && (t | outside) == full)) {
            den = sumSq[t | outside] / dof[t | outside];
            denDof = dof[t | outside];
        }
        if (!(den > 0)) return kErrFOverflow;
        outF[q] = outMs[q] / den;
        double p = 0.0;
        const AnalysisStatus st = FisherLowerTail(outF[q], static_cast<std::int32_t>(dof[t]),
                                                  static_cast<std::int32_t>(denDof), &p);
        if (st < 0) return st;
        outSig[q] = 1.0 - p;
    }
    for (int q = 0; q < sources; ++q) {
        ss[q] = outSs[q];
        ms[q] = outMs[q];
        f[q] = outF[q];
        sig[q] = outSig[q];
    }
    *sse = errSs;
    *mse = errMs;
    *tss = total;
    return kOk;
}

}  // namespace

AnalysisStatus TwoWayAnova(const double* y, const std::int32_t* levelA, const std::int32_t* levelB, std::int32_t n,
                           std::int32_t a, std::int32_t b, std::int32_t random, double* ss, double* ms, double* f,
                           double* sig, double* sse, double* mse, double* tss) {
    const std::int32_t* level[] = {levelA, levelB};
    const std::int32_t count[] = {a, b};
    static const std::int32_t order[] = {1, 2, 3};
    return FactorialAnova(y, level, 2, n, count, random, order, ss, ms, f, sig, sse, mse, tss);
}

AnalysisStatus ThreeWayAnova(const double* y, const std::int32_t* levelA, const std::int32_t* levelB,
                             const std::int32_t* levelC, std::int32_t n, std::int32_t a, std::int32_t b,
                             std::int32_t c, std::int32_t random, double* ss, double* ms, double* f, double* sig,
                             double* sse, double* mse, double* tss) {
    const std::int32_t* level[] = {levelA, levelB, levelC};
    const std::int32_t count[] = {a, b, c};
    static const std::int32_t order[] = {1, 2, 4, 3, 5, 6, 7};
    return FactorialAnova(y, level, 3, n, count, random, order, ss, ms, f, sig, sse, mse, tss);
}

}  // namespace vn
