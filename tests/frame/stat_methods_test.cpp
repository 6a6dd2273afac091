// VNStat through IDispatch: descriptive statistics, distributions and
// interpolation against closed forms, output types, and automation errors.
#include "client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

using namespace vntest;

namespace {

constexpr HRESULT Err(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }
const double kPi = 3.14159265358979323846;

const wchar_t* const kSamples = L"The number of samples must be >0.";
const wchar_t* const kShape = L"The input arrays do not contain the correct number of data values for this function.";
const wchar_t* const kNotArray = L"The argument is not  an array.";
const wchar_t* const kOrder = L"The order must be > 0.";
const wchar_t* const kTopBase = L"Parameter must meet the condition: Top>Base";
const wchar_t* const kDof = L"The degrees of freedom must be one or more.";
const wchar_t* const kProbability = L"The probability must be between zero and one.";
const wchar_t* const kDistinct = L"The x-values must be distinct.";
const wchar_t* const kPole = L"The interpolating function has a pole at the requested value.";

class StatMethods : public ::testing::Test {
protected:
    Control stat_{L"VNAnalysisControlsLib.VNStat.1"};
    void SetUp() override { ASSERT_TRUE(stat_.valid()) << std::hex << stat_.createResult(); }

    Outcome Run(const wchar_t* method, std::vector<Var>& args) const {
        std::vector<VARIANT*> raw;
        for (auto& a : args) raw.push_back(a.get());
        return stat_.Call(method, raw);
    }
    // A method returning one number: checks that it came back as a plain
    // double (not an array) and returns it.
    double Number(const wchar_t* method, std::vector<Var> args) const {
        Outcome o = Run(method, args);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        EXPECT_EQ(o.result.vt(), VT_R8) << Narrow(method);
        const std::vector<double> v = Doubles(o.result);
        return v.empty() ? std::nan("") : v[0];
    }
};

double Only(const Var& v) {
    const std::vector<double> d = Doubles(v);
    return d.size() == 1 ? d[0] : std::nan("");
}

struct ReductionRow {
    const wchar_t* method;
    std::vector<double> x;
    double expected;
};

TEST_F(StatMethods, ReductionsOfOneArray) {
    const ReductionRow rows[] = {
        {L"Mean", {1, 2, 3, 4}, 2.5},
        {L"Mean", {-1.5}, -1.5},
        {L"Mean", {1e300, -1e300, 6}, 2},
        {L"RMS", {3, 4}, std::sqrt(12.5)},
        {L"RMS", {1, -1, 1, -1}, 1},
        {L"Median", {3, 1, 2}, 2},
        {L"Median", {4, 1, 3, 2}, 2.5},
        {L"Median", {7}, 7},
        {L"Median", {9, 5, 1, 9, 5, 9}, 7},  // sorted 1 5 5 9 9 9
        {L"Median", {-2, -8}, -5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method) + " of " + std::to_string(row.x.size()));
        EXPECT_DOUBLE_EQ(Number(row.method, {DoubleArray(row.x)}), row.expected);
    }
}

TEST_F(StatMethods, MeanAndSpreadGoToTheOutputs) {
    struct Row {
        const wchar_t* method;
        std::vector<double> x;
        double mean, spread;
    };
    const Row rows[] = {
        {L"StdDev", {1, 2, 3, 4}, 2.5, std::sqrt(1.25)},  // population: divisor n
        {L"Variance", {1, 2, 3, 4}, 2.5, 1.25},
        {L"Variance", {2, 4, 4, 4, 5, 5, 7, 9}, 5, 4},
        {L"StdDev", {2, 4, 4, 4, 5, 5, 7, 9}, 5, 2},
        {L"StdDev", {-3}, -3, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        Var mean(L"old"), spread(L"old");
        std::vector<Var> args = {DoubleArray(row.x), RefTo(mean), RefTo(spread)};
        Outcome o = Run(row.method, args);
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(o.result.vt(), VT_EMPTY);
        EXPECT_EQ(mean.vt(), VT_R8);
        EXPECT_EQ(spread.vt(), VT_R8);
        EXPECT_DOUBLE_EQ(Only(mean), row.mean);
        EXPECT_DOUBLE_EQ(Only(spread), row.spread);
    }

    // One-pass formulas on a constant array: S2/n - mean^2 cancels to a few
    // units in the last place of mean^2 (about 1.2e-10 here), and for seven
    // copies of 1000.1 to a negative value. The variance keeps that sign;
    // the deviation is the root of its magnitude, never NaN.
    const std::vector<double> constant(7, 1000.1);
    Var mean, variance, deviation;
    std::vector<Var> varArgs = {DoubleArray(constant), RefTo(mean), RefTo(variance)};
    std::vector<Var> devArgs = {DoubleArray(constant), RefTo(mean), RefTo(deviation)};
    ASSERT_TRUE(Run(L"Variance", varArgs).ok());
    ASSERT_TRUE(Run(L"StdDev", devArgs).ok());
    EXPECT_LT(Only(variance), 0.0);
    EXPECT_GT(Only(variance), -1e-9);
    EXPECT_DOUBLE_EQ(Only(deviation), std::sqrt(-Only(variance)));
}

TEST_F(StatMethods, CentralMoments) {
    struct Row {
        std::vector<double> x;
        Var order;
        double expected;
    };
    // {1, 2, 3, 4}: deviations +-0.5, +-1.5. {0, 0, 3}: mean 1, deviations
    // -1, -1, 2, so the third moment is (-1 - 1 + 8) / 3 = 2.
    const Row rows[] = {
        {{1, 2, 3, 4}, Var(1), 0},
        {{1, 2, 3, 4}, Var(2), 1.25},
        {{1, 2, 3, 4}, Var(3), 0},
        {{1, 2, 3, 4}, Var(4), (2 * 5.0625 + 2 * 0.0625) / 4},
        {{0, 0, 3}, Var(3), 2},
        {{0, 0, 3}, Var(L"3"), 2},  // a numeric string is an integer order
        {{0, 0, 3}, Var(2.0), 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Only(row.order));
        EXPECT_NEAR(Number(L"Moment", {DoubleArray(row.x), row.order}), row.expected, 1e-14);
    }
}

TEST_F(StatMethods, HistogramCountsAndCentres) {
    struct Row {
        const char* name;
        std::vector<double> x;
        double base, top;
        int intervals;
        std::vector<LONG> counts;
        std::vector<double> centres;
    };
    const Row rows[] = {
        // A sample equal to top is counted in the last bin.
        {"top in last bin", {0, 1, 2, 3, 4}, 0, 4, 4, {1, 1, 1, 2}, {0.5, 1.5, 2.5, 3.5}},
        {"outside dropped", {0, 1, 2, 3, 4, -0.0001, 4.0001}, 0, 4, 4, {1, 1, 1, 2}, {0.5, 1.5, 2.5, 3.5}},
        // Half-open bins [-1, 0) and [0, 1]; 1.5 and -2 fall outside.
        {"half-open", {-1, -0.5, 0, 0.25, 1, 1.5, -2}, -1, 1, 2, {2, 3}, {-0.5, 0.5}},
        {"one bin", {5, 6, 7}, 5, 7, 1, {3}, {6}},
        {"nothing in range", {10, 20}, 0, 1, 2, {0, 0}, {0.25, 0.75}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Var hist(L"old"), axis(L"old");
        std::vector<Var> args = {DoubleArray(row.x), Var(row.base), Var(row.top), Var(row.intervals),
                                 RefTo(hist), RefTo(axis)};
        Outcome o = Run(L"Histogram", args);
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(ElementType(hist), VT_I4);
        EXPECT_EQ(ElementType(axis), VT_R8);
        EXPECT_EQ(Sizes(hist), std::vector<LONG>{row.intervals});
        EXPECT_EQ(LowerBounds(hist), std::vector<LONG>{0});
        EXPECT_EQ(LowerBounds(axis), std::vector<LONG>{0});
        EXPECT_EQ(Longs(hist), row.counts);
        const std::vector<double> centres = Doubles(axis);
        ASSERT_EQ(centres.size(), row.centres.size());
        for (std::size_t i = 0; i < centres.size(); ++i) EXPECT_DOUBLE_EQ(centres[i], row.centres[i]) << i;
    }
}

TEST_F(StatMethods, ModeIsTheCentreOfTheFirstFullestBin) {
    struct Row {
        const char* name;
        std::vector<double> x;
        double expected;
    };
    // xBase 0, xTop 4, 4 bins: centres 0.5, 1.5, 2.5, 3.5.
    const Row rows[] = {
        {"tie goes low", {1, 1, 3, 3}, 1.5},
        {"single peak", {0.2, 3.5, 3.6, 3.7}, 3.5},
        {"top sample", {4, 4, 0}, 3.5},
        {"nothing in range", {10, -1}, 0.5},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_DOUBLE_EQ(Number(L"Mode", {DoubleArray(row.x), Var(0.0), Var(4.0), Var(4)}), row.expected);
    }
}

TEST_F(StatMethods, MeanSquaredErrorUsesTheCommonLength) {
    // Three pairs of differences 0, -2, -3: (0 + 4 + 9) / 3.
    EXPECT_DOUBLE_EQ(Number(L"MeanSquaredError", {DoubleArray({1, 2, 3}), DoubleArray({1, 4, 6, 100, 100})}), 13.0 / 3);
    EXPECT_DOUBLE_EQ(Number(L"MeanSquaredError", {DoubleArray({1, 4, 6, 100}), DoubleArray({1, 2})}), 2.0);
    EXPECT_DOUBLE_EQ(Number(L"MeanSquaredError", {DoubleArray({0.5}), DoubleArray({0.5})}), 0.0);
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
    std::vector<Var> args = {TypedArray(VT_I2, {0, 1, 1, 3}, 1), Var(L"0"), Var(L"4"), Var(L"2"), RefTo(hist),
                             RefTo(axis)};
    ASSERT_TRUE(Run(L"Histogram", args).ok());
    EXPECT_EQ(Longs(hist), (std::vector<LONG>{3, 1}));
    EXPECT_EQ(Doubles(axis), (std::vector<double>{1, 3}));
    Var bytes = TypedArray(VT_UI1, {1, 2, 4});
    EXPECT_DOUBLE_EQ(Number(L"MeanSquaredError", {bytes, VariantArray({Var(1), Var(0), Var(L"4")})}), 4.0 / 3);
}

struct DistRow {
    const char* name;
    const wchar_t* method;
    std::vector<Var> args;
    double expected, tolerance;
};

// Closed forms: t with 1 and 2 degrees of freedom, F with 2 numerator
// degrees of freedom, chi-square with even n, and the normal and odd
// chi-square cases against erf. The tolerances are the approximations'
// documented errors (normal tail about 1.2e-5, twice that for chi-square
// with odd n, which uses it twice); the beta-function results are good to
// about 1e-9.
TEST_F(StatMethods, DistributionsMatchClosedForms) {
    auto normal = [](double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); };
    auto cauchy = [](double t) { return 0.5 + std::atan(t) / kPi; };
    auto t2 = [](double t) { return 0.5 + t / (2 * std::sqrt(2 + t * t)); };
    const std::vector<DistRow> rows = {
        {"N(0)", L"NDist", {Var(0.0)}, 0.5, 1.2e-5},
        {"N(1.96)", L"NDist", {Var(1.96)}, normal(1.96), 1.2e-5},
        {"N(-0.7)", L"NDist", {Var(-0.7)}, normal(-0.7), 1.2e-5},
        {"N(-3)", L"NDist", {Var(-3.0)}, normal(-3), 1.2e-5},
        {"N(8)", L"NDist", {Var(8.0)}, 1, 1e-12},
        {"t1(-3)", L"TDist", {Var(-3.0), Var(1)}, cauchy(-3), 1e-8},
        {"t1(0.5)", L"TDist", {Var(0.5), Var(1)}, cauchy(0.5), 1e-8},
        {"t1(40)", L"TDist", {Var(40.0), Var(1)}, cauchy(40), 1e-8},
        {"t2(-1.5)", L"TDist", {Var(-1.5), Var(2)}, t2(-1.5), 1e-8},
        {"t2(2.5)", L"TDist", {Var(2.5), Var(2)}, t2(2.5), 1e-8},
        {"t30(0)", L"TDist", {Var(0.0), Var(30)}, 0.5, 1e-12},
        {"t7(0)", L"TDist", {Var(0.0), Var(7)}, 0.5, 1e-12},
        {"F(2,2)", L"FDist", {Var(1.5), Var(2), Var(2)}, 1.5 / 2.5, 1e-8},
        {"F(2,4)", L"FDist", {Var(1.5), Var(2), Var(4)}, 33.0 / 49, 1e-8},
        {"F at 0", L"FDist", {Var(0.0), Var(3), Var(5)}, 0, 0},
        {"F below 0", L"FDist", {Var(-2.0), Var(3), Var(5)}, 0, 0},
        {"chi2 n=2", L"XXDist", {Var(3.0), Var(2)}, 1 - std::exp(-1.5), 1e-14},
        {"chi2 n=4", L"XXDist", {Var(5.0), Var(4)}, 1 - std::exp(-2.5) * (1 + 2.5), 1e-14},
        {"chi2 n=1", L"XXDist", {Var(2.0), Var(1)}, std::erf(1.0), 2.5e-5},
        {"chi2 n=3", L"XXDist", {Var(4.5), Var(3)}, std::erf(1.5) - std::sqrt(9 / kPi) * std::exp(-2.25), 2.5e-5},
        {"chi2 at 0", L"XXDist", {Var(0.0), Var(3)}, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(Number(row.method, row.args), row.expected, row.tolerance);
    }
    // Symmetry of the normal approximation is exact up to rounding.
    for (double x : {0.3, 1.0, 2.7}) {
        EXPECT_NEAR(Number(L"NDist", {Var(-x)}) + Number(L"NDist", {Var(x)}), 1.0, 1e-15) << x;
    }
}

// The bisection inverses return the lower end of a bracket at most 1e-4
// wide, so they lie in [q - 1e-4, q] around the exact quantile q (plus the
// forward routine's small error); the normal quantile is a rational
// approximation good to 4.5e-4.
TEST_F(StatMethods, InversesBracketTheExactQuantiles) {
    struct Row {
        const char* name;
        const wchar_t* method;
        std::vector<Var> args;
        double quantile;
    };
    const Row rows[] = {
        {"t1 0.9", L"InvTDist", {Var(0.9), Var(1)}, std::tan(0.4 * kPi)},
        {"t1 0.25", L"InvTDist", {Var(0.25), Var(1)}, -1.0},
        {"t2 0.8", L"InvTDist", {Var(0.8), Var(2)}, 0.6 * std::sqrt(2 / (1 - 0.36))},  // t = 2(p-1/2)sqrt(2/(1-(2p-1)^2))
        {"chi2 n=2 0.95", L"InvXXDist", {Var(0.95), Var(2)}, -2 * std::log(0.05)},
        {"chi2 n=2 0.5", L"InvXXDist", {Var(0.5), Var(2)}, 2 * std::log(2.0)},
        {"F(2,2) 0.75", L"InvFDist", {Var(0.75), Var(2), Var(2)}, 3.0},
        {"F(2,4) 0.5", L"InvFDist", {Var(0.5), Var(2), Var(4)}, 2 * (std::sqrt(2.0) - 1)},  // (4/(4+2f))^2 = 1/2
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const double q = Number(row.method, row.args);
        EXPECT_LE(q, row.quantile + 1e-6);
        EXPECT_GE(q, row.quantile - 1e-4 - 1e-6);
    }
    struct NormalRow {
        double p, quantile;
    };
    const NormalRow normals[] = {{0.5, 0}, {0.975, 1.959963984540054}, {0.025, -1.959963984540054},
                                 {0.999, 3.090232306167813}, {0.1, -1.2815515655446004}};
    for (const auto& row : normals) EXPECT_NEAR(Number(L"InvNDist", {Var(row.p)}), row.quantile, 4.5e-4) << row.p;

    // Forward after inverse gives p back, to the bracket width times the
    // density.
    for (double p : {0.05, 0.5, 0.9}) {
        const double x = Number(L"InvXXDist", {Var(p), Var(5)});
        EXPECT_NEAR(Number(L"XXDist", {Var(x), Var(5)}), p, 2e-5) << p;
        const double t = Number(L"InvTDist", {Var(p), Var(9)});
        EXPECT_NEAR(Number(L"TDist", {Var(t), Var(9)}), p, 5e-5) << p;
    }
}

TEST_F(StatMethods, PolynomialAndRationalInterpolation) {
    Var value(L"old"), error(L"old");
    struct Row {
        const char* name;
        const wchar_t* method;
        std::vector<double> x, y;
        double xVal, expected, tolerance;
    };
    auto cubic = [](double t) { return t * t * t - 2 * t; };
    auto rational = [](double t) { return (2 * t + 1) / (t + 3); };
    const Row rows[] = {
        {"parabola", L"PolyInterp", {0, 1, 2}, {0, 1, 4}, 3, 9, 1e-12},
        // Any abscissa order; four points fix a cubic.
        {"cubic unordered", L"PolyInterp", {2, -1, 0, 3}, {cubic(2), cubic(-1), cubic(0), cubic(3)}, 1.5, cubic(1.5), 1e-12},
        {"poly at a node", L"PolyInterp", {0, 1, 2}, {5, -1, 2}, 1, -1, 1e-12},
        // The diagonal rational function through three points reproduces a
        // linear-over-linear function; the 1e-10 start offset shows at 1e-10.
        {"rational", L"RatInterp", {0, 1, 4}, {rational(0), rational(1), rational(4)}, 2.5, rational(2.5), 1e-9},
        {"rat at a node", L"RatInterp", {0, 1, 4}, {3, 7, -2}, 4, -2, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<Var> args = {DoubleArray(row.x), DoubleArray(row.y), Var(row.xVal), RefTo(value), RefTo(error)};
        Outcome o = Run(row.method, args);
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(value.vt(), VT_R8);
        EXPECT_EQ(error.vt(), VT_R8);
        EXPECT_NEAR(Only(value), row.expected, row.tolerance);
        EXPECT_TRUE(std::isfinite(Only(error)));
    }
    // An exact hit reports no error; an exact polynomial a zero last
    // correction up to rounding.
    std::vector<Var> hit = {DoubleArray({0, 1, 4}), DoubleArray({3, 7, -2}), Var(1.0), RefTo(value), RefTo(error)};
    ASSERT_TRUE(Run(L"RatInterp", hit).ok());
    EXPECT_EQ(Only(value), 7);
    EXPECT_EQ(Only(error), 0);
    // One point: its value, with the distance as the error estimate.
    for (const wchar_t* method : {L"PolyInterp", L"RatInterp"}) {
        std::vector<Var> one = {DoubleArray({2}), DoubleArray({5}), Var(3.5), RefTo(value), RefTo(error)};
        ASSERT_TRUE(Run(method, one).ok()) << Narrow(method);
        EXPECT_EQ(Only(value), 5);
        EXPECT_EQ(Only(error), 1.5);
    }
}

TEST_F(StatMethods, SplineThroughACubicAndAStraightLine) {
    // A spline clamped with the end slopes of x^3 is x^3 itself: its second
    // derivatives are 6x, and the end cubic continues x^3 outside the table.
    Var x = DoubleArray({0, 1, 2, 3}), y = DoubleArray({0, 1, 8, 27});
    std::vector<Var> args = {x, y, Var(0.0), Var(27.0)};
    Outcome s = Run(L"Spline", args);
    ASSERT_TRUE(s.ok()) << Narrow(s.description);
    EXPECT_EQ(ElementType(s.result), VT_R8);
    EXPECT_EQ(Sizes(s.result), std::vector<LONG>{4});
    EXPECT_EQ(LowerBounds(s.result), std::vector<LONG>{0});
    const std::vector<double> y2 = Doubles(s.result);
    ASSERT_EQ(y2.size(), 4u);
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(y2[i], 6.0 * i, 1e-12) << i;
    Var value(L"old");
    for (double at : {0.0, 0.5, 1.5, 2.25, 3.0, 3.5, -0.5}) {
        std::vector<Var> ev = {x, y, s.result, Var(at), RefTo(value)};
        ASSERT_TRUE(Run(L"SpInterp", ev).ok()) << at;
        EXPECT_EQ(value.vt(), VT_R8);
        EXPECT_NEAR(Only(value), at * at * at, 1e-12) << at;
    }

    // Natural ends (slopes above 9.9e29) on a straight line: no curvature,
    // and the spline is the line, in and beyond the table.
    Var lx = DoubleArray({-1, 0.5, 2, 4}), ly = DoubleArray({-1, 2, 5, 9});
    std::vector<Var> natural = {lx, ly, Var(1e30), Var(1e30)};
    Outcome n = Run(L"Spline", natural);
    ASSERT_TRUE(n.ok());
    for (double d : Doubles(n.result)) EXPECT_NEAR(d, 0, 1e-12);
    for (double at : {-1.0, 0.0, 3.0, 5.0}) {
        std::vector<Var> ev = {lx, ly, n.result, Var(at), RefTo(value)};
        ASSERT_TRUE(Run(L"SpInterp", ev).ok());
        EXPECT_NEAR(Only(value), 2 * at + 1, 1e-12) << at;
    }
    // Two points: no bisection, the one interval is the bracket.
    std::vector<Var> two = {DoubleArray({0, 2}), DoubleArray({1, 5}), DoubleArray({0, 0}), Var(3.0), RefTo(value)};
    ASSERT_TRUE(Run(L"SpInterp", two).ok());
    EXPECT_NEAR(Only(value), 7, 1e-12);

    // 9.9e29 itself is a slope, not the natural-end request.
    std::vector<Var> boundary = {x, y, Var(9.9e29), Var(1e30)};
    Outcome b = Run(L"Spline", boundary);
    ASSERT_TRUE(b.ok());
    EXPECT_NE(Doubles(b.result)[0], 0.0);
    EXPECT_EQ(Doubles(b.result)[3], 0.0);
}

struct ErrorRow {
    const char* name;
    const wchar_t* method;
    std::vector<Var> args;
    unsigned code;
    const wchar_t* description;
};

TEST_F(StatMethods, ChecksRaiseTheirStatuses) {
    const Var matrix = DoubleMatrix(2, 2, {1, 2, 3, 4});
    const Var empty = EmptyArray(VT_R8);
    const Var three = DoubleArray({1, 2, 3});
    const std::vector<ErrorRow> rows = {
        {"mean empty", L"Mean", {empty}, 20003, kSamples},
        {"mean 2-D", L"Mean", {matrix}, 20008, kShape},
        {"median scalar", L"Median", {Var(4.0)}, 30103, kNotArray},
        {"rms empty", L"RMS", {empty}, 20003, kSamples},
        {"stddev 2-D", L"StdDev", {matrix, Var(), Var()}, 20008, kShape},
        {"moment order 0", L"Moment", {three, Var(0)}, 20021, kOrder},
        {"moment order -2", L"Moment", {three, Var(-2)}, 20021, kOrder},
        {"moment: count before order", L"Moment", {empty, Var(0)}, 20003, kSamples},
        {"histogram top = base, empty x", L"Histogram", {empty, Var(1.0), Var(1.0), Var(4), Var(), Var()}, 20101, kTopBase},
        {"histogram top < base", L"Histogram", {three, Var(2.0), Var(1.0), Var(4), Var(), Var()}, 20101, kTopBase},
        {"histogram: bounds before bins", L"Histogram", {three, Var(1.0), Var(1.0), Var(0), Var(), Var()}, 20101, kTopBase},
        {"histogram no bins", L"Histogram", {three, Var(0.0), Var(1.0), Var(0), Var(), Var()}, 20003, kSamples},
        {"histogram empty x", L"Histogram", {empty, Var(0.0), Var(1.0), Var(3), Var(), Var()}, 20003, kSamples},
        {"histogram: shape before bounds", L"Histogram", {matrix, Var(1.0), Var(0.0), Var(3), Var(), Var()}, 20008, kShape},
        {"mode top = base", L"Mode", {three, Var(1.0), Var(1.0), Var(4)}, 20101, kTopBase},
        {"mode: bins before bounds", L"Mode", {three, Var(1.0), Var(1.0), Var(0)}, 20003, kSamples},
        {"mse empty y", L"MeanSquaredError", {three, empty}, 20003, kSamples},
        {"mse 2-D y", L"MeanSquaredError", {three, matrix}, 20008, kShape},
        {"mse: x before y", L"MeanSquaredError", {matrix, Var(1.0)}, 20008, kShape},
        {"mse scalar y", L"MeanSquaredError", {three, Var(1.0)}, 30103, kNotArray},
        {"t n=0", L"TDist", {Var(1.0), Var(0)}, 20052, kDof},
        {"F m=0", L"FDist", {Var(1.0), Var(3), Var(0)}, 20052, kDof},
        {"F n=-1", L"FDist", {Var(1.0), Var(-1), Var(2)}, 20052, kDof},
        {"chi2 n=0", L"XXDist", {Var(1.0), Var(0)}, 20052, kDof},
        {"invN 0", L"InvNDist", {Var(0.0)}, 20053, kProbability},
        {"invN 1", L"InvNDist", {Var(1.0)}, 20053, kProbability},
        {"invN -0.5", L"InvNDist", {Var(-0.5)}, 20053, kProbability},
        {"invT p=1", L"InvTDist", {Var(1.0), Var(3)}, 20053, kProbability},
        {"invT: dof before p", L"InvTDist", {Var(0.0), Var(0)}, 20052, kDof},
        {"invF: dof before p", L"InvFDist", {Var(2.0), Var(1), Var(0)}, 20052, kDof},
        {"invF p=0", L"InvFDist", {Var(0.0), Var(1), Var(1)}, 20053, kProbability},
        {"invChi2: p before dof", L"InvXXDist", {Var(0.0), Var(0)}, 20053, kProbability},
        {"invChi2 n=0", L"InvXXDist", {Var(0.5), Var(0)}, 20052, kDof},
        {"poly lengths differ", L"PolyInterp", {three, DoubleArray({1, 2}), Var(0.0), Var(), Var()}, 20008, kShape},
        {"poly empty", L"PolyInterp", {empty, empty, Var(0.0), Var(), Var()}, 20003, kSamples},
        {"poly empty x, full y", L"PolyInterp", {empty, three, Var(0.0), Var(), Var()}, 20008, kShape},
        {"poly: x before y", L"PolyInterp", {matrix, Var(1.0), Var(0.0), Var(), Var()}, 20008, kShape},
        {"poly scalar y", L"PolyInterp", {three, Var(1.0), Var(0.0), Var(), Var()}, 30103, kNotArray},
        {"poly equal x", L"PolyInterp", {DoubleArray({0, 1, 0}), three, Var(0.5), Var(), Var()}, 20049, kDistinct},
        {"rat lengths differ", L"RatInterp", {DoubleArray({1, 2}), three, Var(0.0), Var(), Var()}, 20008, kShape},
        // y = -1/x through x = -1 and 1, with the 1e-10 start offset
        // folded into the second value so that the quotient is exactly 0.
        {"rat pole", L"RatInterp", {DoubleArray({-1, 1}), DoubleArray({1, -1 - 1e-10}), Var(0.0), Var(), Var()}, 20050, kPole},
        {"spline equal neighbours", L"Spline", {DoubleArray({0, 1, 1, 2}), DoubleArray({0, 1, 2, 3}), Var(1e30), Var(1e30)}, 20049, kDistinct},
        {"spline 2-D y", L"Spline", {DoubleArray({0, 1}), DoubleMatrix(1, 2, {0, 1}), Var(1e30), Var(1e30)}, 20008, kShape},
        {"spline empty", L"Spline", {empty, empty, Var(1e30), Var(1e30)}, 20003, kSamples},
        {"spinterp one point", L"SpInterp", {DoubleArray({1}), DoubleArray({2}), DoubleArray({0}), Var(1.0), Var()}, 20049, kDistinct},
        {"spinterp short y2", L"SpInterp", {three, three, DoubleArray({0, 0}), Var(1.0), Var()}, 20008, kShape},
        {"spinterp: y before y2", L"SpInterp", {three, matrix, Var(1.0), Var(1.0), Var()}, 20008, kShape},
        {"spinterp empty", L"SpInterp", {empty, empty, empty, Var(1.0), Var()}, 20003, kSamples},
    };
    for (auto row : rows) {
        SCOPED_TRACE(row.name);
        // Outputs passed by reference so that a failure can be seen not to
        // touch them.
        std::vector<Var> outs(row.args.size(), Var(L"unchanged"));
        std::vector<Var> args;
        for (std::size_t i = 0; i < row.args.size(); ++i)
            args.push_back(row.args[i].vt() == VT_EMPTY ? RefTo(outs[i]) : row.args[i]);
        Outcome o = Run(row.method, args);
        EXPECT_EQ(o.hr, DISP_E_EXCEPTION);
        EXPECT_EQ(o.code, Err(row.code)) << std::hex << o.code;
        EXPECT_TRUE(o.hasDescription);
        EXPECT_EQ(o.description, row.description);
        EXPECT_EQ(o.source, L"VNAnalysisControlsLib.VNStat");
        for (std::size_t i = 0; i < row.args.size(); ++i) {
            if (row.args[i].vt() != VT_EMPTY) continue;
            EXPECT_EQ(outs[i].vt(), VT_BSTR) << "output " << i;
        }
    }
}

TEST_F(StatMethods, ScalarsThatAreNotNumbersAreTypeMismatches) {
    const Var x = DoubleArray({1, 2, 3});
    const std::vector<std::pair<const wchar_t*, std::vector<Var>>> calls = {
        {L"Moment", {x, Var(L"second")}},
        {L"TDist", {Var(L"abc"), Var(3)}},
        {L"InvXXDist", {Var(0.5), Var(L"n")}},
        {L"Mean", {VariantArray({Var(1), Var(L"abc")})}},
    };
    for (auto call : calls) {
        Outcome o = Run(call.first, call.second);
        EXPECT_EQ(o.code, DISP_E_TYPEMISMATCH) << Narrow(call.first);
    }
}

}  // namespace
