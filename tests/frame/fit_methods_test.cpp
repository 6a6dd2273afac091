// VNStat through IDispatch: curve fitting, general least squares, analysis
// of variance and contingency tables — output slots, shapes and types, the
// host's arrays left alone, optional weights, and automation errors.
#include "client.h"
#include "tests/analysis/stat/strd_linear_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

using namespace vntest;

namespace {

const wchar_t* const kSource = L"VNAnalysisControlsLib.VNStat";

class FitMethods : public ::testing::Test {
protected:
    Control stat_{L"VNAnalysisControlsLib.VNStat.1"};
    void SetUp() override { ASSERT_TRUE(stat_.valid()) << std::hex << stat_.createResult(); }
};

Var Missing() {
    Var v;
    V_VT(v.get()) = VT_ERROR;
    V_ERROR(v.get()) = DISP_E_PARAMNOTFOUND;
    return v;
}

TEST_F(FitMethods, LineExponentialAndPolynomial) {
    Var z, p1, p2, mse;
    ASSERT_TRUE(CallWith(stat_, L"LinFit", {DoubleArray({0, 1, 2, 3}), DoubleArray({1, 3, 5}), RefTo(z), RefTo(p1),
                                       RefTo(p2), RefTo(mse)}).ok());
    EXPECT_EQ(Sizes(z), std::vector<LONG>{3});  // the shorter length
    EXPECT_EQ(Doubles(z), (std::vector<double>{1, 3, 5}));
    EXPECT_EQ(p1.vt(), VT_R8);
    EXPECT_DOUBLE_EQ(Only(p1), 2);  // slope, then intercept
    EXPECT_DOUBLE_EQ(Only(p2), 1);
    EXPECT_EQ(Only(mse), 0);

    // All-negative y of doubles is fitted through a copy: the host's array
    // is the same afterwards, on success and on failure.
    const double e = std::exp(1.0);
    const std::vector<double> negative{-2, -2 * e, -2 * e * e};
    std::vector<Var> ex = {TypedArray(VT_I4, {0, 1, 2}), DoubleArray(negative), RefTo(z), RefTo(p1), RefTo(p2), RefTo(mse)};
    ASSERT_TRUE(CallWith(stat_, L"ExpFit", ex).ok());
    EXPECT_NEAR(Only(p1), -2, 1e-13);
    EXPECT_NEAR(Only(p2), 1, 1e-14);
    EXPECT_EQ(Doubles(ex[1]), negative);
    const std::vector<double> mixed{-1, 2, -3};
    Var before(L"old");
    std::vector<Var> bad = {DoubleArray({0, 1, 2}), DoubleArray(mixed), RefTo(before), RefTo(p1), RefTo(p2), RefTo(mse)};
    Outcome o = CallWith(stat_, L"ExpFit", bad);
    EXPECT_EQ(o.code, VnError(20036));
    EXPECT_EQ(o.description,
              L"The elements of the Y Values array must be nonzero and either all positive or all negative.");
    EXPECT_EQ(Doubles(bad[1]), mixed);
    EXPECT_EQ(before.vt(), VT_BSTR);  // outputs untouched

    // Order 2 through three points interpolates; Coef has Order + 1 values.
    Var coef;
    ASSERT_TRUE(CallWith(stat_, L"PolyFit", {DoubleArray({-1, 0, 2}), DoubleArray({6, 1, 3}), Var(L"2"), RefTo(z),
                                        RefTo(coef), RefTo(mse)}).ok());
    const std::vector<double> c = Doubles(coef);
    ASSERT_EQ(c.size(), 3u);  // y = 1 - 3x + 2x^2
    EXPECT_NEAR(c[0], 1, 1e-13);
    EXPECT_NEAR(c[1], -3, 1e-13);
    EXPECT_NEAR(c[2], 2, 1e-13);
}

// y = 1 + 2t on four points, H = [1, t] row-major in the block.
TEST_F(FitMethods, GeneralLeastSquaresWeightsAndShapes) {
    const Var h = DoubleMatrix(4, 2, {1, 0, 1, 1, 1, 2, 1, 3});
    const Var y = DoubleArray({1, 3, 5, 7.5});
    // Unit weights however they are given, under every algorithm: one answer.
    const Var unit[] = {Missing(), Var(), EmptyArray(VT_R8), DoubleArray({1, 1, 1, 1}), Missing(), Var()};
    for (int code = 0; code <= 5; ++code) {
        SCOPED_TRACE(std::to_string(unit[code].vt()) + " code " + std::to_string(code));
        Var z, b, covar, mse;
        Outcome o = CallWith(stat_, L"GenLSFit", {h, y, unit[code], Var(code), RefTo(z), RefTo(b), RefTo(covar), RefTo(mse)});
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(Sizes(z), std::vector<LONG>{4});
        EXPECT_EQ(Sizes(covar), (std::vector<LONG>{2, 2}));
        // Normal equations [[4, 6], [6, 14]] b = [16.5, 35.5]; inverse
        // [[14, -6], [-6, 4]] / 20.
        const std::vector<double> bv = Doubles(b), cv = Doubles(covar);
        ASSERT_EQ(bv.size(), 2u);
        EXPECT_NEAR(bv[0], 0.9, 1e-13);
        EXPECT_NEAR(bv[1], 2.15, 1e-13);
        EXPECT_NEAR(cv[0], 0.7, 1e-13);
        EXPECT_NEAR(cv[1], -0.3, 1e-13);
        EXPECT_NEAR(Only(mse), 0.01875, 1e-14);  // residuals -0.1, 0.05, 0.2, -0.15
    }
    // A heavy weight on the last point pulls the line towards it.
    Var z, b, covar, mse;
    ASSERT_TRUE(CallWith(stat_, L"GenLSFit", {h, y, DoubleArray({1, 1, 1, 1e-3}), Var(1), RefTo(z), RefTo(b), RefTo(covar),
                                         RefTo(mse)}).ok());
    EXPECT_NEAR(Doubles(z)[3], 7.5, 1e-5);

    const Var o;
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"H one-dimensional", L"GenLSFit", {DoubleArray({1, 2}), y, o, 0, o, o, o, o}, 4, E(20008), msg::kShape},
        {"y too short", L"GenLSFit", {h, DoubleArray({1, 2, 3}), o, 0, o, o, o, o}, 4, E(20008), msg::kShape},
        {"StdDev too short", L"GenLSFit", {h, y, DoubleArray({1, 1}), 0, o, o, o, o}, 4, E(20008), msg::kShape},
        {"StdDev not an array", L"GenLSFit", {h, y, 2.0, 0, o, o, o, o}, 4, E(30103), msg::kNotArray},
        {"more columns than rows", L"GenLSFit", {DoubleMatrix(1, 2, {1, 1}), DoubleArray({1}), o, 0, o, o, o, o}, 4, E(20037), nullptr},
        {"algorithm", L"GenLSFit", {h, y, o, 6, o, o, o, o}, 4, E(20061), msg::kSelection},
        {"zero deviation", L"GenLSFit", {h, y, DoubleArray({1, 0, 1, 1}), 0, o, o, o, o}, 4, E(20035), nullptr},
        {"singular", L"GenLSFit", {DoubleMatrix(4, 2, {1, 2, 1, 2, 1, 2, 1, 2}), y, o, 4, o, o, o, o}, 4, E(20041), nullptr},
        {"order too high", L"PolyFit", {DoubleArray({-1, 0, 2}), DoubleArray({6, 1, 3}), 3, o, o, o}, 3, E(20037), nullptr},
        {"order overflows", L"PolyFit", {DoubleArray({-1, 0, 2}), DoubleArray({6, 1, 3}), 2147483647, o, o, o}, 3, E(20037), nullptr},
        {"2 x 3 cells for 8", L"ANOVA2Way", {DoubleArray({1, 5, 2, 10, 3, 7, 4, 12}), DoubleArray({0, 0, 1, 1, 0, 0, 1, 1}),
          DoubleArray({0, 1, 0, 1, 0, 1, 0, 1}), 2, 3, 1, o, o, o, o, o, o, o}, 7, E(20045), nullptr},
        {"vector table", L"ContingencyTable", {DoubleArray({1, 2, 3}), o, o}, 2, E(20008), msg::kShape},
        {"one row", L"ContingencyTable", {DoubleMatrix(1, 3, {1, 2, 3}), o, o}, 2, E(20055), nullptr},
    };
    ExpectFailures(stat_, rows, kSource);
}

// Two certified reference problems through the DLL: the kernels are the same
// code as natively, so this checks that the digits survive the trip (and
// the 53-bit x87 start-up of a Windows host).
TEST_F(FitMethods, CertifiedReferenceProblemsKeepTheirDigits) {
    auto set = [](const char* name) -> const vn::strd::LinearSet& {
        for (const auto& s : vn::strd::LinearSets())
            if (std::strcmp(s.name, name) == 0) return s;
        throw std::out_of_range(name);
    };
    auto digits = [](const std::vector<double>& est, const std::vector<double>& cert) {
        double worst = 15;
        for (std::size_t j = 0; j < cert.size() && j < est.size(); ++j) {
            const double err = std::fabs(est[j] - cert[j]) / std::fabs(cert[j]);
            worst = std::min(worst, err == 0 ? 15 : std::isfinite(err) ? -std::log10(err) : 0.0);
        }
        return est.size() == cert.size() ? worst : 0.0;
    };
    // PolyFit, degree 10 on Filip.
    const vn::strd::LinearSet& filip = set("Filip");
    Var z, coef, mse;
    ASSERT_TRUE(CallWith(stat_, L"PolyFit", {DoubleArray(filip.x), DoubleArray(filip.y), Var(10), RefTo(z), RefTo(coef),
                                        RefTo(mse)}).ok());
    EXPECT_GE(digits(Doubles(coef), filip.b), 13.5);
    // GenLSFit, Givens, on Longley's design [1, x1 .. x6].
    const vn::strd::LinearSet& longley = set("Longley");
    const int n = static_cast<int>(longley.y.size());
    std::vector<double> h;
    for (int i = 0; i < n; ++i) {
        h.push_back(1);
        h.insert(h.end(), longley.x.begin() + 6 * i, longley.x.begin() + 6 * i + 6);
    }
    Var b, covar;
    ASSERT_TRUE(CallWith(stat_, L"GenLSFit", {DoubleMatrix(n, 7, h), DoubleArray(longley.y), Missing(), Var(2), RefTo(z),
                                         RefTo(b), RefTo(covar), RefTo(mse)}).ok());
    EXPECT_GE(digits(Doubles(b), longley.b), 14.0);
}

TEST_F(FitMethods, AnalysisOfVarianceAndContingency) {
    // One way: groups {1,2,3}, {4,5,6}, {7,8,9}; levels as doubles.
    std::vector<Var> one = {DoubleArray({4, 1, 7, 5, 2, 8, 6, 3, 9}), DoubleArray({1, 0, 2, 1, 0, 2, 1, 0, 2}), Var(3)};
    std::vector<Var> outs(7);
    for (auto& v : outs) one.push_back(RefTo(v));
    ASSERT_TRUE(CallWith(stat_, L"ANOVA1Way", one).ok());
    const double expected[7] = {54, 27, 27, 1e-3, 6, 1, 60};  // Sig = (1 + 2*27/6)^-3
    for (int i = 0; i < 7; ++i) EXPECT_NEAR(Only(outs[i]), expected[i], 1e-7) << i;
    one[1] = DoubleArray({1, 0, 3, 1, 0, 2, 1, 0, 2});
    EXPECT_EQ(CallWith(stat_, L"ANOVA1Way", one).code, VnError(20043));

    // Two way, A random: SS 18, 72, 8; F_B = 72 / MS_AB; levels as variants
    // and 16-bit integers.
    Var ss, ms, f, sig, sse, mse, tss;
    ASSERT_TRUE(CallWith(stat_, L"ANOVA2Way", {DoubleArray({1, 5, 2, 10, 3, 7, 4, 12}), VariantArray({0, 0, 1, 1, 0, 0, 1, 1}),
                                          TypedArray(VT_I2, {0, 1, 0, 1, 0, 1, 0, 1}), Var(2), Var(2), Var(1), RefTo(ss),
                                          RefTo(ms), RefTo(f), RefTo(sig), RefTo(sse), RefTo(mse), RefTo(tss)}).ok());
    EXPECT_EQ(Sizes(ss), std::vector<LONG>{3});
    EXPECT_EQ(Sizes(sig), std::vector<LONG>{3});
    const std::vector<double> s = Doubles(ss);
    EXPECT_NEAR(s[1], 72, 1e-12);
    EXPECT_NEAR(Doubles(f)[1], 9, 1e-12);
    EXPECT_NEAR(Only(mse), 2, 1e-12);
    EXPECT_NEAR(Only(tss), 106, 1e-12);

    // Three way, 2 x 2 x 2 with one observation per cell: seven sources.
    // The only interaction is in cell 111, so each of AB, AC, BC, ABC has
    // SS = 8/64.
    std::vector<double> y(8), la(8), lb(8), lc(8);
    for (int i = 0; i < 8; ++i) {
        la[i] = i / 4, lb[i] = i / 2 % 2, lc[i] = i % 2;
        y[i] = la[i] + 2 * lb[i] + 4 * lc[i] + (i == 7 ? 1 : 0);
    }
    std::vector<Var> three = {DoubleArray(y), DoubleArray(la), DoubleArray(lb), DoubleArray(lc), Var(2), Var(2),
                              Var(2), Var(0), RefTo(ss), RefTo(ms), RefTo(f), RefTo(sig), RefTo(sse), RefTo(mse),
                              RefTo(tss)};
    ASSERT_TRUE(CallWith(stat_, L"ANOVA3Way", three).ok());
    EXPECT_EQ(Sizes(ss), std::vector<LONG>{7});
    const std::vector<double> s3 = Doubles(ss);
    for (int q = 3; q < 7; ++q) EXPECT_NEAR(s3[q], 0.125, 1e-13) << q;
    EXPECT_NEAR(Only(sse), 0.125, 1e-13);
    EXPECT_EQ(Doubles(sig)[6], 1);
    three[7] = Var(3);
    Outcome o = CallWith(stat_, L"ANOVA3Way", three);
    EXPECT_EQ(o.code, VnError(20048));
    EXPECT_EQ(o.description, L"The Random Effect model was requested when the Fixed Effect model is required.");
    EXPECT_EQ(Doubles(ss), s3);  // the earlier results stay

    // 2 x 3 table: X^2 = 16/3 with 2 degrees of freedom.
    Var stat, p;
    ASSERT_TRUE(CallWith(stat_, L"ContingencyTable", {DoubleMatrix(2, 3, {10, 20, 30, 20, 20, 20}), RefTo(stat), RefTo(p)}).ok());
    EXPECT_NEAR(Only(stat), 16.0 / 3, 1e-13);
    EXPECT_NEAR(Only(p), std::exp(-8.0 / 3), 1e-13);
}

}  // namespace
