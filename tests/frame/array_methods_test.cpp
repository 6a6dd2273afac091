// VNArray through IDispatch: results, shapes, outputs and automation errors.
#include "client.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace vntest;

namespace {

constexpr HRESULT Err(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }
const double kNaN = std::numeric_limits<double>::quiet_NaN();

class ArrayMethods : public ::testing::Test {
protected:
    Control array_{L"VNAnalysisControlsLib.VNArray.1"};
    void SetUp() override { ASSERT_TRUE(array_.valid()) << std::hex << array_.createResult(); }
};

struct ElementwiseRow {
    const wchar_t* method;
    std::vector<double> x, y;
    std::vector<double> expected;
};

TEST_F(ArrayMethods, ElementwiseOnCommonLength) {
    const ElementwiseRow rows[] = {
        {L"AddArray", {1, 2, 3, 4, 5}, {10, 20, 30}, {11, 22, 33}},
        {L"SubArray", {1, 2, 3}, {0.5, 4, -3}, {0.5, -2, 6}},
        {L"MulArray", {1.5, -2, 3}, {2, 2, 2, 9}, {3, -4, 6}},
        {L"DivArray", {1, 9, -4}, {4, 3, 8}, {0.25, 3, -0.5}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        Var x = DoubleArray(row.x), y = DoubleArray(row.y);
        Outcome o = array_.Call(row.method, {x.get(), y.get()});
        ASSERT_TRUE(o.ok()) << Narrow(o.description);
        EXPECT_EQ(ElementType(o.result), VT_R8);
        EXPECT_EQ(Doubles(o.result), row.expected);
        EXPECT_EQ(LowerBounds(o.result), std::vector<LONG>{0});
    }
}

TEST_F(ArrayMethods, TwoDimensionalKeepsShape) {
    Var x = DoubleMatrix(2, 3, {1, -2, 3, -4, 5, -6});
    Var y = DoubleMatrix(2, 3, {1, 1, 1, 1, 1, 1});
    Outcome sum = array_.Call(L"AddArray", {x.get(), y.get()});
    ASSERT_TRUE(sum.ok());
    EXPECT_EQ(Sizes(sum.result), (std::vector<LONG>{2, 3}));
    EXPECT_EQ(Doubles(sum.result), (std::vector<double>{2, -1, 4, -3, 6, -5}));
    Outcome abs = array_.Call(L"AbsArray", {x.get()});
    ASSERT_TRUE(abs.ok());
    EXPECT_EQ(Sizes(abs.result), (std::vector<LONG>{2, 3}));
    EXPECT_EQ(Doubles(abs.result), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    // Same element count, other shape: not the same shape.
    Var z = DoubleMatrix(3, 2, {1, 1, 1, 1, 1, 1});
    Outcome bad = array_.Call(L"AddArray", {x.get(), z.get()});
    EXPECT_EQ(bad.code, Err(20008));
    Var v = DoubleArray({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(array_.Call(L"AddArray", {x.get(), v.get()}).code, Err(20008));
}

struct ErrorRow {
    const char* name;
    const wchar_t* method;
    std::vector<Var> args;
    HRESULT code;
    const wchar_t* description;
};

TEST_F(ArrayMethods, StatusesBecomeAutomationErrors) {
    const std::vector<ErrorRow> rows = {
        {"zero divisor", L"DivArray", {DoubleArray({1, 2}), DoubleArray({1, 0})}, Err(20060), L"Divide by zero error"},
        {"NaN divisor", L"DivArray", {DoubleArray({1, 2}), DoubleArray({kNaN, 1})}, Err(20060), L"Divide by zero error"},
        {"clip bounds", L"ClipArray", {DoubleArray({1, 2}), Var(0.0), Var(1.0)}, Err(20019),
         L"The upper value must be >= the lower value."},
        {"shift n", L"Shift1D", {DoubleArray({1, 2, 3, 4}), Var(4)}, Err(20102),
         L"The shifts must meet: |shifts| < samples."},
        {"shift -n", L"Shift1D", {DoubleArray({1, 2, 3, 4}), Var(-4)}, Err(20102),
         L"The shifts must meet: |shifts| < samples."},
        {"subset too long", L"Subset1D", {DoubleArray({1, 2, 3, 4, 5}), Var(2), Var(4)}, Err(20018),
         L"The following condition must be met:  0 <= (index + length) < samples."},
        {"subset negative index", L"Subset1D", {DoubleArray({1, 2, 3}), Var(-1), Var(1)}, Err(20003),
         L"The number of samples must be >0."},
        {"empty array", L"SumArray", {EmptyArray(VT_R8)}, Err(20003), L"The number of samples must be >0."},
        {"scalar for array", L"AddArray", {DoubleArray({1}), Var(5.0)}, Err(30103), L"The argument is not  an array."},
        {"scalar first", L"NegArray", {Var(5.0)}, Err(30103), L"The argument is not  an array."},
        {"2-D where 1-D", L"Sort1D", {DoubleMatrix(2, 2, {1, 2, 3, 4}), Var(0)}, Err(20008),
         L"The input arrays do not contain the correct number of data values for this function."},
        {"1-D where 2-D", L"Transpose2D", {DoubleArray({1, 2})}, Err(20008),
         L"The input arrays do not contain the correct number of data values for this function."},
        {"max of empty", L"MaxArray", {EmptyArray(VT_R8)}, Err(20008),
         L"The input arrays do not contain the correct number of data values for this function."},
        {"8-byte integers", L"NegArray", {TypedArray(VT_I8, {1, 2})}, Err(30100), L"The data type is not correct."},
        {"polynomial 2-D", L"PolyEvArray", {DoubleArray({1}), DoubleMatrix(1, 2, {1, 2})}, Err(20008),
         L"The input arrays do not contain the correct number of data values for this function."},
    };
    for (auto row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<VARIANT*> args;
        for (auto& a : row.args) args.push_back(a.get());
        Outcome o = array_.Call(row.method, args);
        EXPECT_EQ(o.hr, DISP_E_EXCEPTION);
        EXPECT_EQ(o.code, row.code) << std::hex << o.code;
        EXPECT_TRUE(o.hasDescription);
        EXPECT_EQ(o.description, row.description);
        EXPECT_EQ(o.source, L"VNAnalysisControlsLib.VNArray");
    }
}

TEST_F(ArrayMethods, EvaluationAndScaling) {
    Var x = DoubleArray({-1, 0, 2, 3});
    Var a(2.0), b(1.0);
    Outcome lin = array_.Call(L"LinEvArray", {x.get(), a.get(), b.get()});
    ASSERT_TRUE(lin.ok());
    EXPECT_EQ(Doubles(lin.result), (std::vector<double>{-1, 1, 5, 7}));

    Var c = DoubleArray({1, 2, 3});  // 1 + 2x + 3x^2
    Outcome poly = array_.Call(L"PolyEvArray", {x.get(), c.get()});
    ASSERT_TRUE(poly.ok());
    EXPECT_EQ(Doubles(poly.result), (std::vector<double>{2, 1, 17, 34}));

    Var offset, scale;
    Var offsetRef = RefTo(offset), scaleRef = RefTo(scale);
    Var s = DoubleArray({0, 5, 10});
    Outcome scaled = array_.Call(L"ScaleArray", {s.get(), offsetRef.get(), scaleRef.get()});
    ASSERT_TRUE(scaled.ok());
    EXPECT_EQ(Doubles(scaled.result), (std::vector<double>{-1, 0, 1}));
    EXPECT_EQ(Doubles(offset), std::vector<double>{5});
    EXPECT_EQ(Doubles(scale), std::vector<double>{5});

    Var q = DoubleArray({-4, 2, 1});
    Outcome quick = array_.Call(L"QScaleArray", {q.get(), scaleRef.get()});
    ASSERT_TRUE(quick.ok());
    EXPECT_EQ(Doubles(quick.result), (std::vector<double>{-1, 0.5, 0.25}));
    EXPECT_EQ(Doubles(scale), std::vector<double>{4});

    Var mean, dev;
    Var meanRef = RefTo(mean), devRef = RefTo(dev);
    Var n = DoubleArray({2, 4});
    Outcome norm = array_.Call(L"NormalizeArray", {n.get(), meanRef.get(), devRef.get()});
    ASSERT_TRUE(norm.ok());
    EXPECT_EQ(Doubles(norm.result), (std::vector<double>{-1, 1}));
    EXPECT_EQ(Doubles(mean), std::vector<double>{3});
    EXPECT_EQ(Doubles(dev), std::vector<double>{1});

    Var upper(1.0), lower(1.0);
    Outcome clip = array_.Call(L"ClipArray", {x.get(), upper.get(), lower.get()});
    ASSERT_TRUE(clip.ok());
    EXPECT_EQ(Doubles(clip.result), (std::vector<double>{1, 1, 1, 1}));
}

TEST_F(ArrayMethods, OrderingMethods) {
    Var x = DoubleArray({1, 2, 3, 4});
    struct Row {
        const wchar_t* method;
        Var arg;
        std::vector<double> expected;
    };
    Row rows[] = {
        {L"Shift1D", Var(1), {0, 1, 2, 3}},
        {L"Shift1D", Var(-1), {2, 3, 4, 0}},
        {L"Shift1D", Var(0), {1, 2, 3, 4}},
        {L"Sort1D", Var(0), {1, 2, 3, 4}},
        {L"Sort1D", Var(1), {4, 3, 2, 1}},
        {L"Sort1D", Var(-1), {4, 3, 2, 1}},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(Narrow(row.method) + " " + std::to_string(Doubles(row.arg)[0]));
        Outcome o = array_.Call(row.method, {x.get(), row.arg.get()});
        ASSERT_TRUE(o.ok());
        EXPECT_EQ(Doubles(o.result), row.expected);
    }
    Var unsorted = DoubleArray({3, -1, 2, 10});
    Var ascending(0);
    EXPECT_EQ(Doubles(array_.Call(L"Sort1D", {unsorted.get(), ascending.get()}).result),
              (std::vector<double>{-1, 2, 3, 10}));
    EXPECT_EQ(Doubles(array_.Call(L"Reverse1D", {unsorted.get()}).result), (std::vector<double>{10, 2, -1, 3}));
    Var five = DoubleArray({1, 2, 3, 4, 5});
    Var index(2), length(3);
    Outcome subset = array_.Call(L"Subset1D", {five.get(), index.get(), length.get()});
    ASSERT_TRUE(subset.ok());
    EXPECT_EQ(Doubles(subset.result), (std::vector<double>{3, 4, 5}));
}

TEST_F(ArrayMethods, TransposeSwapsNonSquareSizes) {
    // Block positions i*cols + j with rows = size of dimension 1 (2) and
    // cols = size of dimension 2 (3).
    Var x = DoubleMatrix(2, 3, {0, 1, 2, 10, 11, 12});
    Outcome t = array_.Call(L"Transpose2D", {x.get()});
    ASSERT_TRUE(t.ok());
    EXPECT_EQ(Sizes(t.result), (std::vector<LONG>{3, 2}));
    EXPECT_EQ(Doubles(t.result), (std::vector<double>{0, 10, 1, 11, 2, 12}));
    Outcome back = array_.Call(L"Transpose2D", {t.result.get()});
    EXPECT_EQ(Doubles(back.result), Doubles(x));
}

TEST_F(ArrayMethods, ReductionsAndExtrema) {
    Var x = DoubleMatrix(2, 2, {1.5, 2, -3, 4});
    Outcome sum = array_.Call(L"SumArray", {x.get()});
    ASSERT_TRUE(sum.ok());
    EXPECT_EQ(sum.result.vt(), VT_R8);
    EXPECT_EQ(Doubles(sum.result), std::vector<double>{4.5});
    EXPECT_EQ(Doubles(array_.Call(L"ProdArray", {x.get()}).result), std::vector<double>{-36});

    Outcome max = array_.Call(L"MaxArray", {x.get()});
    ASSERT_TRUE(max.ok());
    EXPECT_EQ(max.result.vt(), VT_R8);  // a plain double, not an array
    EXPECT_EQ(Doubles(max.result), std::vector<double>{4});
    EXPECT_EQ(Doubles(array_.Call(L"MinArray", {x.get()}).result), std::vector<double>{-3});

    Var mx(99.0), imx(99), mn(99.0), imn(99);
    Var r1 = RefTo(mx), r2 = RefTo(imx), r3 = RefTo(mn), r4 = RefTo(imn);
    Var v = DoubleArray({3, 7, 7, 1, 1});
    ASSERT_TRUE(array_.Call(L"MaxMin1D", {v.get(), r1.get(), r2.get(), r3.get(), r4.get()}).ok());
    EXPECT_EQ(Doubles(mx)[0], 7);
    EXPECT_EQ(imx.vt(), VT_I4);
    EXPECT_EQ(Longs(imx)[0], 1);
    EXPECT_EQ(Doubles(mn)[0], 1);
    EXPECT_EQ(Longs(imn)[0], 3);

    // Largest at block position 5 and smallest at 1 of a 2-by-3 block: the
    // quotient and remainder by the size of dimension 2.
    Var m = DoubleMatrix(2, 3, {0, -5, 1, 2, 3, 9});
    Var jmx, jmn;
    Var r5 = RefTo(jmx), r6 = RefTo(jmn);
    ASSERT_TRUE(array_.Call(L"MaxMin2D", {m.get(), r1.get(), r2.get(), r5.get(), r3.get(), r4.get(), r6.get()}).ok());
    EXPECT_EQ(Doubles(mx)[0], 9);
    EXPECT_EQ(Longs(imx)[0], 1);
    EXPECT_EQ(Longs(jmx)[0], 2);
    EXPECT_EQ(Doubles(mn)[0], -5);
    EXPECT_EQ(Longs(imn)[0], 0);
    EXPECT_EQ(Longs(jmn)[0], 1);
}

TEST_F(ArrayMethods, ClearAndSetWriteTheCallersArray) {
    Var x = DoubleArray({1, 2, 3});
    Var ref = RefTo(x);
    ASSERT_TRUE(array_.Call(L"ClearArray", {ref.get()}).ok());
    EXPECT_EQ(Doubles(x), (std::vector<double>{0, 0, 0}));
    Var a(L"2.5");  // numeric strings are numbers
    ASSERT_TRUE(array_.Call(L"SetArray", {ref.get(), a.get()}).ok());
    EXPECT_EQ(Doubles(x), (std::vector<double>{2.5, 2.5, 2.5}));

    // A host's array of variants becomes an array of doubles.
    Var v = VariantArray({Var(1.0), Var(L"4")});
    Var vref = RefTo(v);
    ASSERT_TRUE(array_.Call(L"SetArray", {vref.get(), a.get()}).ok());
    EXPECT_EQ(ElementType(v), VT_R8);
    EXPECT_EQ(Doubles(v), (std::vector<double>{2.5, 2.5}));
}

}  // namespace
