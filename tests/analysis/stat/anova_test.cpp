#include "analysis/stat/anova.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

namespace vn {
namespace {

using L = long double;
using Vec = std::vector<double>;
using Ints = std::vector<std::int32_t>;

// Upper tail of F with 2 numerator degrees of freedom: (1 + 2f/m)^(-m/2).
double FUpperTwo(double f, int m) { return std::pow(1 + 2 * f / m, -m / 2.0); }

double Noise(int i) { return std::fmod(std::sin(i * 12.9898) * 43758.5453, 1.0) * 3; }

TEST(OneWayAnova, HandExampleWithInterleavedGroups) {
    // Groups {1,2,3}, {4,5,6}, {7,8,9}: means 2, 5, 8 around 5.
    const Vec y{4, 1, 7, 5, 2, 8, 6, 3, 9};
    const Ints g{1, 0, 2, 1, 0, 2, 1, 0, 2};
    double ssa, msa, f, sig, sse, mse, tss;
    ASSERT_EQ(OneWayAnova(y.data(), g.data(), 9, 3, &ssa, &msa, &f, &sig, &sse, &mse, &tss), kOk);
    EXPECT_NEAR(ssa, 54, 1e-12);
    EXPECT_NEAR(msa, 27, 1e-12);
    EXPECT_NEAR(sse, 6, 1e-12);
    EXPECT_NEAR(mse, 1, 1e-12);
    EXPECT_NEAR(tss, 60, 1e-12);
    EXPECT_NEAR(f, 27, 1e-11);
    EXPECT_NEAR(sig, FUpperTwo(27, 6), 1e-7);

    // Equal means: nothing between the groups.
    const Vec e{1, 2, 3, 2};
    const Ints ge{0, 1, 0, 1};
    ASSERT_EQ(OneWayAnova(e.data(), ge.data(), 4, 2, &ssa, &msa, &f, &sig, &sse, &mse, &tss), kOk);
    EXPECT_EQ(ssa, 0);
    EXPECT_EQ(f, 0);
    EXPECT_EQ(sig, 1);
}

TEST(OneWayAnova, ChecksInOrder) {
    const Vec y{1, 2, 3, 4};
    struct Row {
        Ints g;
        int n, k;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {{0, 0, 0, 0}, 0, 9, kErrSamplesBelowOne}, {{0, 0, 0, 0}, 4, 1, kErrLevelCount},
        {{0, 1, 2, 3}, 4, 4, kErrLevelCount},      {{0, 1, 2, 0}, 4, 2, kErrLevelRange},
        {{0, -1, 1, 0}, 4, 2, kErrLevelRange},     {{0, 2, 2, 0}, 4, 3, kErrEmptyLevel},
    };
    for (const auto& r : rows) {
        double out[7] = {9, 9, 9, 9, 9, 9, 9};
        EXPECT_EQ(OneWayAnova(y.data(), r.g.data(), r.n, r.k, out, out + 1, out + 2, out + 3, out + 4, out + 5, out + 6),
                  r.status);
        EXPECT_EQ(out[0], 9);
    }
}

TEST(ContingencyTest, StatisticsAndChecks) {
    double stat = -1, sig = -1;
    const Ints independent{10, 20, 20, 40};
    ASSERT_EQ(ContingencyTest(2, 2, independent.data(), &stat, &sig), kOk);
    EXPECT_EQ(stat, 0);
    EXPECT_EQ(sig, 1);

    // Rows 60 and 60, columns 30, 40, 50 of 120: expected 15, 20, 25 in both
    // rows, so X^2 = 2 * (25/15 + 0 + 25/25) with 2 degrees of freedom.
    const Ints t{10, 20, 30, 20, 20, 20};
    ASSERT_EQ(ContingencyTest(2, 3, t.data(), &stat, &sig), kOk);
    EXPECT_NEAR(stat, 16.0 / 3, 1e-13);
    EXPECT_NEAR(sig, std::exp(-8.0 / 3), 1e-13);

    const Ints zeroRow{0, 0, 1, 2};
    ASSERT_EQ(ContingencyTest(2, 2, zeroRow.data(), &stat, &sig), kOk);
    EXPECT_FALSE(std::isfinite(stat));

    struct Row {
        int r, c;
        Ints table;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {-1, 2, {}, kErrSamplesBelowOne}, {2, -1, {}, kErrSamplesBelowOne}, {0, 3, {}, kErrCategories},
        {1, 3, {1, 2, 3}, kErrCategories}, {2, 2, {1, 2, -1, 4}, kErrNegativeInTable},
    };
    for (const auto& row : rows) {
        stat = sig = 5;
        EXPECT_EQ(ContingencyTest(row.r, row.c, row.table.data(), &stat, &sig), row.status);
        EXPECT_EQ(stat, 5);
    }
}

// Sums of squares of a balanced a x b x c layout by the classical
// correction-term formulas on cell and marginal totals (long double); c = 1
// gives the two-factor layout. Sources in the kernels' order A, B, C, AB, AC,
// BC, ABC.
struct AnovaRef {
    L ss[7], sse, tss;
};
AnovaRef TotalsRef(const Vec& y, const Ints& la, const Ints& lb, const Ints& lc, int a, int b, int c) {
    const int n = static_cast<int>(y.size());
    std::vector<L> t(a * b * c, 0);
    L sum = 0, sq = 0;
    for (int i = 0; i < n; ++i) {
        t[(la[i] * b + lb[i]) * c + (lc.empty() ? 0 : lc[i])] += y[i];
        sum += y[i];
        sq += L(y[i]) * y[i];
    }
    const L cf = sum * sum / n;
    // Sum of squared marginal totals over the factors kept in mask, divided
    // by the observations behind each total.
    auto term = [&](int mask) {
        std::vector<L> m(a * b * c, 0);
        for (int i = 0; i < a; ++i)
            for (int j = 0; j < b; ++j)
                for (int k = 0; k < c; ++k)
                    m[(((mask & 1) ? i : 0) * b + ((mask & 2) ? j : 0)) * c + ((mask & 4) ? k : 0)] +=
                        t[(i * b + j) * c + k];
        const int levels = ((mask & 1) ? a : 1) * ((mask & 2) ? b : 1) * ((mask & 4) ? c : 1);
        L s = 0;
        for (L v : m) s += v * v;
        return s / (n / levels) - cf;
    };
    AnovaRef r;
    const L A = term(1), B = term(2), C = term(4);
    const L AB = term(3) - A - B, AC = term(5) - A - C, BC = term(6) - B - C;
    const L ABC = term(7) - A - B - C - AB - AC - BC;
    const L values[7] = {A, B, C, AB, AC, BC, ABC};
    for (int q = 0; q < 7; ++q) r.ss[q] = values[q];
    r.sse = sq - sum * sum / n - term(7);
    r.tss = sq - cf;
    return r;
}

struct AnovaOut {
    double ss[7], ms[7], f[7], sig[7], sse, mse, tss;
};

TEST(TwoWayAnova, HandExampleAndMixedModels) {
    // Cells (A, B): 00 {1, 3}, 01 {5, 7}, 10 {2, 4}, 11 {10, 12}. Cell means
    // 2, 6, 3, 11 around 5.5: SS_A = 18, SS_B = 72, SS_AB = 8, SSE = 8
    // (4 degrees of freedom, MSE 2), TSS = 106.
    const Vec y{1, 5, 2, 10, 3, 7, 4, 12};
    const Ints la{0, 0, 1, 1, 0, 0, 1, 1}, lb{0, 1, 0, 1, 0, 1, 0, 1};
    struct Row {
        int random;
        double fA, fB, fAB;
    };
    const Row rows[] = {
        {0, 9, 36, 4},      // fixed: everything over MSE
        {1, 9, 9, 4},       // A random: B against AB
        {2, 2.25, 36, 4},   // B random: A against AB
        {3, 2.25, 9, 4},    // both random: main effects against AB
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.random);
        AnovaOut o;
        ASSERT_EQ(TwoWayAnova(y.data(), la.data(), lb.data(), 8, 2, 2, r.random, o.ss, o.ms, o.f, o.sig, &o.sse, &o.mse,
                              &o.tss),
                  kOk);
        const double ss[3] = {18, 72, 8}, f[3] = {r.fA, r.fB, r.fAB};
        for (int q = 0; q < 3; ++q) {
            EXPECT_NEAR(o.ss[q], ss[q], 1e-12);
            EXPECT_NEAR(o.ms[q], ss[q], 1e-12);  // one degree of freedom each
            EXPECT_NEAR(o.f[q], f[q], 1e-12);
        }
        EXPECT_NEAR(o.sse, 8, 1e-12);
        EXPECT_NEAR(o.mse, 2, 1e-12);
        EXPECT_NEAR(o.tss, 106, 1e-12);
    }

    // One observation per cell (the cell means): AB becomes the error.
    const Vec m{2, 6, 3, 11};
    const Ints ma{0, 0, 1, 1}, mb{0, 1, 0, 1};
    AnovaOut o;
    ASSERT_EQ(TwoWayAnova(m.data(), ma.data(), mb.data(), 4, 2, 2, 0, o.ss, o.ms, o.f, o.sig, &o.sse, &o.mse, &o.tss),
              kOk);
    EXPECT_NEAR(o.ss[0], 9, 1e-12);
    EXPECT_NEAR(o.ss[1], 36, 1e-12);
    EXPECT_NEAR(o.ss[2], 4, 1e-12);
    EXPECT_NEAR(o.ms[2], 4, 1e-12);
    EXPECT_NEAR(o.sse, 4, 1e-12);
    EXPECT_NEAR(o.mse, 4, 1e-12);
    EXPECT_NEAR(o.f[0], 2.25, 1e-12);
    EXPECT_NEAR(o.f[1], 9, 1e-12);
    EXPECT_EQ(o.f[2], 0);
    EXPECT_EQ(o.sig[2], 1);
    EXPECT_NEAR(o.tss, 49, 1e-12);
}

// Observations in scrambled order with a large common offset, against the
// correction-term formulas; Sig of A (2 degrees of freedom) in closed form.
TEST(TwoWayAnova, MatchesTotalsFormulas) {
    const int a = 3, b = 4, per = 3, n = a * b * per;
    Vec y(n);
    Ints la(n), lb(n);
    for (int i = 0; i < n; ++i) {
        const int cell = (i * 7) % (a * b);  // 7 is prime to 12: every cell per times
        la[i] = cell / b;
        lb[i] = cell % b;
        y[i] = 1000 + la[i] - 0.5 * lb[i] + 0.3 * la[i] * lb[i] + Noise(i);
    }
    const AnovaRef ref = TotalsRef(y, la, lb, {}, a, b, 1);
    AnovaOut o;
    ASSERT_EQ(TwoWayAnova(y.data(), la.data(), lb.data(), n, a, b, 0, o.ss, o.ms, o.f, o.sig, &o.sse, &o.mse, &o.tss),
              kOk);
    const int refIndex[3] = {0, 1, 3};
    for (int q = 0; q < 3; ++q) EXPECT_NEAR(o.ss[q], double(ref.ss[refIndex[q]]), 1e-9);
    EXPECT_NEAR(o.sse, double(ref.sse), 1e-9);
    EXPECT_NEAR(o.tss, double(ref.tss), 1e-9);
    EXPECT_NEAR(o.mse, double(ref.sse / (a * b * (per - 1))), 1e-10);
    EXPECT_NEAR(o.f[0], double(ref.ss[0] / 2 / (ref.sse / (a * b * (per - 1)))), 1e-9);
    EXPECT_NEAR(o.sig[0], FUpperTwo(o.f[0], a * b * (per - 1)), 1e-7);
}

TEST(TwoWayAnova, ChecksInOrder) {
    const Vec y{1, 5, 2, 10, 3, 7, 4, 12};
    const Vec flat{2, 6, 3, 11, 2, 6, 3, 11};  // no spread within cells
    const Ints la{0, 0, 1, 1, 0, 0, 1, 1}, lb{0, 1, 0, 1, 0, 1, 0, 1};
    struct Row {
        const char* name;
        int n, a, b, random;
        Ints la, lb;
        const Vec* y;
        AnalysisStatus status;
    };
    const Row rows[] = {
        {"no data", 0, 1, 1, 9, la, lb, &y, kErrSamplesBelowOne},
        {"one level", 8, 1, 2, 9, la, lb, &y, kErrLevelCount},
        {"more cells than data", 8, 3, 3, 9, la, lb, &y, kErrLevelCount},
        {"random mask", 8, 2, 2, 4, la, lb, &y, kErrInvalidSelection},
        {"negative mask", 8, 2, 2, -1, la, lb, &y, kErrInvalidSelection},
        {"not a multiple", 8, 2, 3, 0, la, lb, &y, kErrTotalPoints},
        {"level = count", 8, 2, 2, 0, {0, 0, 1, 2, 0, 0, 1, 1}, lb, &y, kErrLevelRange},
        {"negative level", 8, 2, 2, 0, la, {0, 1, 0, 1, 0, -1, 0, 1}, &y, kErrLevelRange},
        {"empty cell", 8, 2, 2, 0, la, {0, 1, 0, 0, 0, 1, 0, 0}, &y, kErrEmptyLevel},
        {"unbalanced", 8, 2, 2, 0, la, {0, 1, 0, 1, 0, 1, 1, 1}, &y, kErrUnbalanced},
        {"zero error", 8, 2, 2, 0, la, lb, &flat, kErrFOverflow},
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.name);
        AnovaOut o;
        o.ss[0] = o.sse = 42;
        EXPECT_EQ(TwoWayAnova(r.y->data(), r.la.data(), r.lb.data(), r.n, r.a, r.b, r.random, o.ss, o.ms, o.f, o.sig,
                              &o.sse, &o.mse, &o.tss),
                  r.status);
        EXPECT_EQ(o.ss[0], 42);
        EXPECT_EQ(o.sse, 42);
    }
}

TEST(ThreeWayAnova, MatchesTotalsFormulasAndModels) {
    const int a = 2, b = 3, c = 2;
    for (int per : {2, 1}) {
        SCOPED_TRACE(per);
        const int n = a * b * c * per;
        Vec y(n);
        Ints la(n), lb(n), lc(n);
        for (int i = 0; i < n; ++i) {
            const int cell = (i * 5) % (a * b * c);
            la[i] = cell / (b * c);
            lb[i] = cell / c % b;
            lc[i] = cell % c;
            y[i] = 10 + 2 * la[i] - lb[i] + lc[i] * lb[i] + Noise(i);
        }
        const AnovaRef ref = TotalsRef(y, la, lb, lc, a, b, c);
        const L dof[7] = {1, 2, 1, 2, 1, 2, 2};
        const L errSs = per == 1 ? ref.ss[6] : ref.sse, errDof = per == 1 ? 2 : a * b * c * (per - 1);
        L ms[7];
        for (int q = 0; q < 7; ++q) ms[q] = ref.ss[q] / dof[q];
        const L e = errSs / errDof;
        // Denominators per source A, B, C, AB, AC, BC, ABC for each model.
        struct Model {
            int random;
            L den[7];
        };
        const Model models[] = {
            {0, {e, e, e, e, e, e, e}},
            {1, {e, ms[3], ms[4], e, e, ms[6], e}},  // A random
            {2, {ms[3], e, ms[5], e, ms[6], e, e}},  // B random
            {4, {ms[4], ms[5], e, ms[6], e, e, e}},  // C random
        };
        for (const auto& m : models) {
            SCOPED_TRACE(m.random);
            AnovaOut o;
            ASSERT_EQ(ThreeWayAnova(y.data(), la.data(), lb.data(), lc.data(), n, a, b, c, m.random, o.ss, o.ms, o.f,
                                    o.sig, &o.sse, &o.mse, &o.tss),
                      kOk);
            for (int q = 0; q < 7; ++q) {
                EXPECT_NEAR(o.ss[q], double(ref.ss[q]), 1e-10) << q;
                EXPECT_NEAR(o.ms[q], double(ms[q]), 1e-10) << q;
                if (per == 1 && q == 6) {
                    EXPECT_EQ(o.f[q], 0);
                    EXPECT_EQ(o.sig[q], 1);
                } else {
                    EXPECT_NEAR(o.f[q], double(ms[q] / m.den[q]), 1e-9 * (1 + o.f[q])) << q;
                }
            }
            EXPECT_NEAR(o.sse, double(errSs), 1e-10);
            EXPECT_NEAR(o.mse, double(e), 1e-10);
            EXPECT_NEAR(o.tss, double(ref.tss), 1e-10);
            // B has 2 numerator degrees of freedom.
            const double bDof = (m.random & 5) ? 2 : double(errDof);  // against AB or BC
            EXPECT_NEAR(o.sig[1], FUpperTwo(o.f[1], int(bDof)), 1e-7);
        }
        for (int random : {3, 5, 6, 7, 8}) {
            AnovaOut o;
            EXPECT_EQ(ThreeWayAnova(y.data(), la.data(), lb.data(), lc.data(), n, a, b, c, random, o.ss, o.ms, o.f,
                                    o.sig, &o.sse, &o.mse, &o.tss),
                      random == 8 ? kErrInvalidSelection : kErrRandomEffect);
        }
    }
}

}  // namespace
}  // namespace vn
