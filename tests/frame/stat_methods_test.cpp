// VNStat through IDispatch: each method's wiring spot-checked against a
// closed form, output types and shapes, conversions, and automation errors.
#include "client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace vntest;

namespace {

const double kPi = 3.14159265358979323846;

class StatMethods : public ::testing::Test {
protected:
    Control stat_{L"VNAnalysisControlsLib.VNStat.1"};
    void SetUp() override { ASSERT_TRUE(stat_.valid()) << std::hex << stat_.createResult(); }

    // A method returning one number, checked to come back as a plain double.
    double Number(const wchar_t* method, std::vector<Var> args) const {
        Outcome o = CallWith(stat_, method, args);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        EXPECT_EQ(o.result.vt(), VT_R8) << Narrow(method);
        return Only(o.result);
    }
};

// One row per method family; the tolerances are the approximations' own
// (normal tail 1.2e-5, bisection inverses 1e-4 below the exact quantile).
TEST_F(StatMethods, NumbersMatchClosedForms) {
    struct Row {
        const wchar_t* method;
        std::vector<Var> args;
        double expected, below, above;
    };
    const Row rows[] = {
        {L"Mean", {DoubleArray({1, 2, 3, 4})}, 2.5, 0, 0},
        {L"RMS", {DoubleArray({3, 4})}, std::sqrt(12.5), 1e-15, 1e-15},
        {L"Median", {DoubleArray({4, 1, 3, 2})}, 2.5, 0, 0},
        // {0, 0, 3}: mean 1, third moment (-1 - 1 + 8) / 3; the order may be a string.
        {L"Moment", {DoubleArray({0, 0, 3}), Var(L"3")}, 2, 1e-14, 1e-14},
        // The common length: differences 0, -2, -3.
        {L"MeanSquaredError", {DoubleArray({1, 2, 3}), DoubleArray({1, 4, 6, 100, 100})}, 13.0 / 3, 1e-15, 1e-15},
        // Bins of [0, 4] centred 0.5 .. 3.5; a tie goes to the lower bin.
        {L"Mode", {DoubleArray({1, 1, 3, 3}), Var(0.0), Var(4.0), Var(4)}, 1.5, 0, 0},
        {L"NDist", {Var(1.96)}, 0.5 * std::erfc(-1.96 / std::sqrt(2.0)), 1.2e-5, 1.2e-5},
        {L"TDist", {Var(0.5), Var(1)}, 0.5 + std::atan(0.5) / kPi, 1e-8, 1e-8},
        {L"FDist", {Var(1.5), Var(2), Var(4)}, 33.0 / 49, 1e-8, 1e-8},
        {L"XXDist", {Var(5.0), Var(4)}, 1 - std::exp(-2.5) * 3.5, 1e-14, 1e-14},
        {L"InvNDist", {Var(0.975)}, 1.959963984540054, 4.5e-4, 4.5e-4},
        {L"InvTDist", {Var(0.9), Var(1)}, std::tan(0.4 * kPi), 1e-4 + 1e-6, 1e-6},
        {L"InvFDist", {Var(0.5), Var(2), Var(4)}, 2 * (std::sqrt(2.0) - 1), 1e-4 + 1e-6, 1e-6},
        {L"InvXXDist", {Var(0.95), Var(2)}, -2 * std::log(0.05), 1e-4 + 1e-6, 1e-6},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        const double got = Number(row.method, row.args);
        EXPECT_GE(got, row.expected - row.below);
        EXPECT_LE(got, row.expected + row.above);
    }
}

TEST_F(StatMethods, MeanAndSpreadGoToTheOutputs) {
    const std::vector<double> x{2, 4, 4, 4, 5, 5, 7, 9};  // mean 5, population variance 4
    for (const auto& [method, spread] : {std::pair{L"StdDev", 2.0}, std::pair{L"Variance", 4.0}}) {
        SCOPED_TRACE(Narrow(method));
        Var mean(L"old"), out(L"old");
        Outcome o = CallWith(stat_, method, {DoubleArray(x), RefTo(mean), RefTo(out)});
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(o.result.vt(), VT_EMPTY);
        EXPECT_EQ(mean.vt(), VT_R8);
        EXPECT_EQ(out.vt(), VT_R8);
        EXPECT_DOUBLE_EQ(Only(mean), 5);
        EXPECT_DOUBLE_EQ(Only(out), spread);
    }
}

TEST_F(StatMethods, HistogramCountsAndCentres) {
    // Half-open bins [-1, 0) and [0, 1]; 1.5 and -2 fall outside.
    Var hist(L"old"), axis(L"old");
    Outcome o = CallWith(stat_, L"Histogram", {DoubleArray({-1, -0.5, 0, 0.25, 1, 1.5, -2}), Var(-1.0), Var(1.0), Var(2),
                                          RefTo(hist), RefTo(axis)});
    ASSERT_TRUE(o.ok()) << Narrow(o.description);
    EXPECT_EQ(ElementType(hist), VT_I4);
    EXPECT_EQ(ElementType(axis), VT_R8);
    EXPECT_EQ(Sizes(hist), std::vector<LONG>{2});
    EXPECT_EQ(LowerBounds(hist), std::vector<LONG>{0});
    EXPECT_EQ(LowerBounds(axis), std::vector<LONG>{0});
    EXPECT_EQ(Longs(hist), (std::vector<LONG>{2, 3}));
    EXPECT_EQ(Doubles(axis), (std::vector<double>{-0.5, 0.5}));
}

TEST_F(StatMethods, OtherElementTypesAreConverted) {
    Var shorts = TypedArray(VT_I2, {1, 2, 3, 6});
    EXPECT_DOUBLE_EQ(Number(L"Mean", {RefTo(shorts)}), 3);
    EXPECT_EQ(ElementType(shorts), VT_I2);  // the host's array is not replaced
    Var variants = VariantArray({Var(3), Var(L"1"), Var(2.5)});
    EXPECT_DOUBLE_EQ(Number(L"Median", {variants}), 2.5);
    EXPECT_EQ(ElementType(variants), VT_VARIANT);
    // Any lower bound; the scalars as strings.
    Var hist, axis;
    ASSERT_TRUE(CallWith(stat_, L"Histogram", {TypedArray(VT_I2, {0, 1, 1, 3}, 1), Var(L"0"), Var(L"4"), Var(L"2"),
                                          RefTo(hist), RefTo(axis)}).ok());
    EXPECT_EQ(Longs(hist), (std::vector<LONG>{3, 1}));
    EXPECT_EQ(Doubles(axis), (std::vector<double>{1, 3}));
    EXPECT_DOUBLE_EQ(Number(L"MeanSquaredError", {TypedArray(VT_UI1, {1, 2, 4}), VariantArray({Var(1), Var(0), Var(L"4")})}),
                     4.0 / 3);
}

TEST_F(StatMethods, InterpolationOutputs) {
    auto cubic = [](double t) { return t * t * t - 2 * t; };
    auto rational = [](double t) { return (2 * t + 1) / (t + 3); };
    struct Row {
        const wchar_t* method;
        std::vector<double> x, y;
        double at, expected, tolerance;
    };
    const Row rows[] = {
        // Any abscissa order; four points fix a cubic.
        {L"PolyInterp", {2, -1, 0, 3}, {cubic(2), cubic(-1), cubic(0), cubic(3)}, 1.5, cubic(1.5), 1e-12},
        // Three points fix a linear-over-linear function.
        {L"RatInterp", {0, 1, 4}, {rational(0), rational(1), rational(4)}, 2.5, rational(2.5), 1e-9},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        Var value(L"old"), error(L"old");
        Outcome o = CallWith(stat_, row.method, {DoubleArray(row.x), DoubleArray(row.y), Var(row.at), RefTo(value), RefTo(error)});
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(value.vt(), VT_R8);
        EXPECT_EQ(error.vt(), VT_R8);
        EXPECT_NEAR(Only(value), row.expected, row.tolerance);
        EXPECT_TRUE(std::isfinite(Only(error)));
    }

    // A spline clamped with the end slopes of x^3 is x^3: second derivatives
    // 6x, and the end cubic continues outside the table.
    Var x = DoubleArray({0, 1, 2, 3}), y = DoubleArray({0, 1, 8, 27});
    Outcome s = CallWith(stat_, L"Spline", {x, y, Var(0.0), Var(27.0)});
    ASSERT_TRUE(s.ok()) << Narrow(s.description);
    EXPECT_EQ(ElementType(s.result), VT_R8);
    EXPECT_EQ(Sizes(s.result), std::vector<LONG>{4});
    EXPECT_EQ(LowerBounds(s.result), std::vector<LONG>{0});
    const std::vector<double> y2 = Doubles(s.result);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(y2[i], 6.0 * i, 1e-12) << i;
    for (double at : {1.5, 3.5}) {
        Var value(L"old");
        ASSERT_TRUE(CallWith(stat_, L"SpInterp", {x, y, s.result, Var(at), RefTo(value)}).ok()) << at;
        EXPECT_EQ(value.vt(), VT_R8);
        EXPECT_NEAR(Only(value), at * at * at, 1e-12) << at;
    }
    // Natural ends (slopes above 9.9e29) on a straight line: no curvature.
    Outcome n = CallWith(stat_, L"Spline", {DoubleArray({-1, 0.5, 2, 4}), DoubleArray({-1, 2, 5, 9}), Var(1e30), Var(1e30)});
    ASSERT_TRUE(n.ok());
    for (double d : Doubles(n.result)) EXPECT_NEAR(d, 0, 1e-12);
}

TEST_F(StatMethods, FailuresRaiseTheirStatuses) {
    const wchar_t* const kOrder = L"The order must be > 0.";
    const wchar_t* const kTopBase = L"Parameter must meet the condition: Top>Base";
    const wchar_t* const kDof = L"The degrees of freedom must be one or more.";
    const wchar_t* const kProbability = L"The probability must be between zero and one.";
    const wchar_t* const kDistinct = L"The x-values must be distinct.";
    const wchar_t* const kPole = L"The interpolating function has a pole at the requested value.";
    const Var matrix = DoubleMatrix(2, 2, {1, 2, 3, 4}), empty = EmptyArray(VT_R8), three = DoubleArray({1, 2, 3});
    auto E = VnError;
    const std::vector<Failure> rows = {
        {"empty", L"Mean", {empty}, 0, E(20003), msg::kSamples},
        {"2-D", L"Mean", {matrix}, 0, E(20008), msg::kShape},
        {"scalar", L"Median", {Var(4.0)}, 0, E(30103), msg::kNotArray},
        {"not a number", L"Mean", {VariantArray({Var(1), Var(L"abc")})}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"empty", L"RMS", {empty}, 0, E(20003), msg::kSamples},
        {"2-D", L"StdDev", {matrix, Var(), Var()}, 2, E(20008), msg::kShape},
        {"empty", L"Variance", {empty, Var(), Var()}, 2, E(20003), msg::kSamples},
        {"order 0", L"Moment", {three, Var(0)}, 0, E(20021), kOrder},
        {"count before order", L"Moment", {empty, Var(0)}, 0, E(20003), msg::kSamples},
        {"order not a number", L"Moment", {three, Var(L"second")}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"top = base", L"Histogram", {empty, Var(1.0), Var(1.0), Var(4), Var(), Var()}, 2, E(20101), kTopBase},
        {"bounds before bins", L"Histogram", {three, Var(2.0), Var(1.0), Var(0), Var(), Var()}, 2, E(20101), kTopBase},
        {"no bins", L"Histogram", {three, Var(0.0), Var(1.0), Var(0), Var(), Var()}, 2, E(20003), msg::kSamples},
        {"empty x", L"Histogram", {empty, Var(0.0), Var(1.0), Var(3), Var(), Var()}, 2, E(20003), msg::kSamples},
        {"shape before bounds", L"Histogram", {matrix, Var(1.0), Var(0.0), Var(3), Var(), Var()}, 2, E(20008), msg::kShape},
        {"top = base", L"Mode", {three, Var(1.0), Var(1.0), Var(4)}, 0, E(20101), kTopBase},
        {"bins before bounds", L"Mode", {three, Var(1.0), Var(1.0), Var(0)}, 0, E(20003), msg::kSamples},
        {"empty y", L"MeanSquaredError", {three, empty}, 0, E(20003), msg::kSamples},
        {"2-D y", L"MeanSquaredError", {three, matrix}, 0, E(20008), msg::kShape},
        {"x before y", L"MeanSquaredError", {matrix, Var(1.0)}, 0, E(20008), msg::kShape},
        {"scalar y", L"MeanSquaredError", {three, Var(1.0)}, 0, E(30103), msg::kNotArray},
        {"n = 0", L"TDist", {Var(1.0), Var(0)}, 0, E(20052), kDof},
        {"x not a number", L"TDist", {Var(L"abc"), Var(3)}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"m = 0", L"FDist", {Var(1.0), Var(3), Var(0)}, 0, E(20052), kDof},
        {"n = -1", L"FDist", {Var(1.0), Var(-1), Var(2)}, 0, E(20052), kDof},
        {"n = 0", L"XXDist", {Var(1.0), Var(0)}, 0, E(20052), kDof},
        {"p = 0", L"InvNDist", {Var(0.0)}, 0, E(20053), kProbability},
        {"p = 1", L"InvNDist", {Var(1.0)}, 0, E(20053), kProbability},
        {"p = 1", L"InvTDist", {Var(1.0), Var(3)}, 0, E(20053), kProbability},
        {"dof before p", L"InvTDist", {Var(0.0), Var(0)}, 0, E(20052), kDof},
        {"dof before p", L"InvFDist", {Var(2.0), Var(1), Var(0)}, 0, E(20052), kDof},
        {"p = 0", L"InvFDist", {Var(0.0), Var(1), Var(1)}, 0, E(20053), kProbability},
        {"p before dof", L"InvXXDist", {Var(0.0), Var(0)}, 0, E(20053), kProbability},
        {"n = 0", L"InvXXDist", {Var(0.5), Var(0)}, 0, E(20052), kDof},
        {"n not a number", L"InvXXDist", {Var(0.5), Var(L"n")}, 0, DISP_E_TYPEMISMATCH, nullptr},
        {"lengths differ", L"PolyInterp", {three, DoubleArray({1, 2}), Var(0.0), Var(), Var()}, 2, E(20008), msg::kShape},
        {"empty", L"PolyInterp", {empty, empty, Var(0.0), Var(), Var()}, 2, E(20003), msg::kSamples},
        {"empty x, full y", L"PolyInterp", {empty, three, Var(0.0), Var(), Var()}, 2, E(20008), msg::kShape},
        {"x before y", L"PolyInterp", {matrix, Var(1.0), Var(0.0), Var(), Var()}, 2, E(20008), msg::kShape},
        {"scalar y", L"PolyInterp", {three, Var(1.0), Var(0.0), Var(), Var()}, 2, E(30103), msg::kNotArray},
        {"equal x", L"PolyInterp", {DoubleArray({0, 1, 0}), three, Var(0.5), Var(), Var()}, 2, E(20049), kDistinct},
        {"lengths differ", L"RatInterp", {DoubleArray({1, 2}), three, Var(0.0), Var(), Var()}, 2, E(20008), msg::kShape},
        // y = -1/x through -1 and 1, the start offset folded into the second
        // value so that the quotient is exactly 0.
        {"pole", L"RatInterp", {DoubleArray({-1, 1}), DoubleArray({1, -1 - 1e-10}), Var(0.0), Var(), Var()}, 2, E(20050), kPole},
        {"equal neighbours", L"Spline", {DoubleArray({0, 1, 1, 2}), DoubleArray({0, 1, 2, 3}), Var(1e30), Var(1e30)}, 0, E(20049), kDistinct},
        {"2-D y", L"Spline", {DoubleArray({0, 1}), DoubleMatrix(1, 2, {0, 1}), Var(1e30), Var(1e30)}, 0, E(20008), msg::kShape},
        {"empty", L"Spline", {empty, empty, Var(1e30), Var(1e30)}, 0, E(20003), msg::kSamples},
        {"one point", L"SpInterp", {DoubleArray({1}), DoubleArray({2}), DoubleArray({0}), Var(1.0), Var()}, 1, E(20049), kDistinct},
        {"short y2", L"SpInterp", {three, three, DoubleArray({0, 0}), Var(1.0), Var()}, 1, E(20008), msg::kShape},
        {"y before y2", L"SpInterp", {three, matrix, Var(1.0), Var(1.0), Var()}, 1, E(20008), msg::kShape},
        {"empty", L"SpInterp", {empty, empty, empty, Var(1.0), Var()}, 1, E(20003), msg::kSamples},
    };
    ExpectFailures(stat_, rows, L"VNAnalysisControlsLib.VNStat");
}

}  // namespace
