// How arguments reach the routines: conversions, bounds, references, and the
// dispatch rules hosts rely on.
#include "client.h"

#include <gtest/gtest.h>

#include <psapi.h>

using namespace vntest;

namespace {

constexpr HRESULT Err(unsigned code) { return static_cast<HRESULT>(0x800A0000u | code); }

class Arguments : public ::testing::Test {
protected:
    Control array_{L"VNAnalysisControlsLib.VNArray"};  // version-independent ProgID
    void SetUp() override { ASSERT_TRUE(array_.valid()) << std::hex << array_.createResult(); }
};

TEST_F(Arguments, AnyLowerBoundIsAcceptedAndResultsStartAtZero) {
    Var x = DoubleArray({5, 6, 7}, 1);
    Var y = DoubleArray({1, 1, 1}, -4);
    Outcome o = array_.Call(L"SubArray", {x.get(), y.get()});
    ASSERT_TRUE(o.ok());
    EXPECT_EQ(Doubles(o.result), (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(LowerBounds(o.result), std::vector<LONG>{0});
    Var index(0), length(2);
    Outcome subset = array_.Call(L"Subset1D", {x.get(), index.get(), length.get()});
    EXPECT_EQ(Doubles(subset.result), (std::vector<double>{5, 6}));
}

TEST_F(Arguments, NonDoubleArraysAreConvertedWithoutTouchingTheHostArray) {
    struct Row {
        VARTYPE type;
        std::vector<double> values;
        std::vector<double> asDouble;
    };
    const Row rows[] = {
        {VT_I2, {-3, 7, 32767}, {-3, 7, 32767}},
        {VT_I4, {-100000, 5}, {-100000, 5}},
        {VT_R4, {0.5, -2.25}, {0.5, -2.25}},
        {VT_UI1, {255, 1}, {255, 1}},
        {VT_I1, {-128, 3}, {-128, 3}},
        {VT_UI2, {65535}, {65535}},
        {VT_UI4, {4000000000.0}, {4000000000.0}},
        {VT_BOOL, {1, 0}, {-1, 0}},  // VARIANT_TRUE is -1
        {VT_CY, {1.2345, -7}, {1.2345, -7}},
        {VT_DATE, {36526.25}, {36526.25}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        Var x = TypedArray(row.type, row.values);
        Outcome o = array_.Call(L"CopyArray", {x.get()});
        ASSERT_TRUE(o.ok()) << std::hex << o.code;
        EXPECT_EQ(ElementType(o.result), VT_R8);
        EXPECT_EQ(Doubles(o.result), row.asDouble);
        EXPECT_EQ(ElementType(x), row.type);  // the host's array is unchanged
        EXPECT_EQ(Doubles(x), Doubles(TypedArray(row.type, row.values)));
    }
    // Passed by reference as a script host does: the variable still holds
    // its 16-bit array afterwards.
    Var shorts = TypedArray(VT_I2, {1, 2, 3});
    Var ref = RefTo(shorts);
    Var two(2);
    Outcome o = array_.Call(L"MulArray", {ref.get(), ref.get()});
    ASSERT_TRUE(o.ok());
    EXPECT_EQ(Doubles(o.result), (std::vector<double>{1, 4, 9}));
    EXPECT_EQ(ElementType(shorts), VT_I2);
}

TEST_F(Arguments, StringElementsAreReadAsNumbersOrDates) {
    Var x = VariantArray({Var(L"12:00:00.5"), Var(L"2.5"), Var(1)});
    Outcome o = array_.Call(L"CopyArray", {x.get()});
    ASSERT_TRUE(o.ok()) << std::hex << o.code;
    const std::vector<double> values = Doubles(o.result);
    ASSERT_EQ(values.size(), 3u);
    EXPECT_DOUBLE_EQ(values[0], 0.5 + 0.5 / 86400.0);
    EXPECT_EQ(values[1], 2.5);
    EXPECT_EQ(values[2], 1);
    // A scalar goes through the same conversion.
    Var ones = DoubleArray({1, 1});
    Var a(L"12:00:00"), b(0.0);
    Outcome lin = array_.Call(L"LinEvArray", {ones.get(), a.get(), b.get()});
    ASSERT_TRUE(lin.ok());
    EXPECT_EQ(Doubles(lin.result), (std::vector<double>{0.5, 0.5}));
}

TEST_F(Arguments, UnconvertibleValuesRaiseThePlatformCodeWithoutText) {
    Var x = DoubleArray({1, 2, 3});
    Var shifts(L"not a number");
    Outcome o = array_.Call(L"Shift1D", {x.get(), shifts.get()});
    EXPECT_EQ(o.hr, DISP_E_EXCEPTION);
    EXPECT_EQ(o.code, DISP_E_TYPEMISMATCH);
    EXPECT_FALSE(o.hasDescription);
    Var bad = VariantArray({Var(1), Var(L"abc")});
    EXPECT_EQ(array_.Call(L"SumArray", {bad.get()}).code, DISP_E_TYPEMISMATCH);
}

TEST_F(Arguments, OutputsKeepTheirValuesWhenTheCallFails) {
    Var mx(L"old"), imx(-7), mn(L"old"), imn(-7);
    Var r1 = RefTo(mx), r2 = RefTo(imx), r3 = RefTo(mn), r4 = RefTo(imn);
    Var empty = EmptyArray(VT_R8);
    Outcome o = array_.Call(L"MaxMin1D", {empty.get(), r1.get(), r2.get(), r3.get(), r4.get()});
    EXPECT_EQ(o.code, Err(20003));
    EXPECT_EQ(mx.vt(), VT_BSTR);
    EXPECT_EQ(imx.vt(), VT_I4);
    EXPECT_EQ(Longs(imx)[0], -7);

    // A failing ClearArray leaves the host's array of variants alone.
    Var v = EmptyArray(VT_VARIANT);
    Var vref = RefTo(v);
    EXPECT_EQ(array_.Call(L"ClearArray", {vref.get()}).code, Err(20003));
    EXPECT_EQ(ElementType(v), VT_VARIANT);
}

TEST_F(Arguments, TypedReferencesReceiveTheirOwnType) {
    double max = 0, min = 0;
    LONG imax = 0;
    short imin = 0;
    Var p1, p2, p3, p4;
    V_VT(p1.get()) = VT_BYREF | VT_R8;
    V_R8REF(p1.get()) = &max;
    V_VT(p2.get()) = VT_BYREF | VT_I4;
    V_I4REF(p2.get()) = &imax;
    V_VT(p3.get()) = VT_BYREF | VT_R8;
    V_R8REF(p3.get()) = &min;
    V_VT(p4.get()) = VT_BYREF | VT_I2;
    V_I2REF(p4.get()) = &imin;
    Var x = DoubleArray({4, -2, 8});
    ASSERT_TRUE(array_.Call(L"MaxMin1D", {x.get(), p1.get(), p2.get(), p3.get(), p4.get()}).ok());
    EXPECT_EQ(max, 8);
    EXPECT_EQ(imax, 2);
    EXPECT_EQ(min, -2);
    EXPECT_EQ(imin, 1);
    // The variants only borrowed the locals.
    V_VT(p1.get()) = V_VT(p2.get()) = V_VT(p3.get()) = V_VT(p4.get()) = VT_EMPTY;
}

TEST_F(Arguments, DispatchRules) {
    Var x = DoubleArray({1, 2}), y = DoubleArray({10, 20});
    const DISPID add = array_.IdOf(L"addarray");  // names are case-insensitive
    EXPECT_EQ(add, 8);
    // Named arguments in any order.
    Outcome named = array_.Invoke(add, {y.get(), x.get()}, DISPATCH_METHOD, {1, 0});
    ASSERT_TRUE(named.ok());
    EXPECT_EQ(Doubles(named.result), (std::vector<double>{11, 22}));
    // Wrong argument counts.
    EXPECT_EQ(array_.Invoke(add, {x.get()}).hr, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(array_.Invoke(add, {x.get(), y.get(), y.get()}).hr, DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(array_.Invoke(add, {x.get()}, DISPATCH_METHOD, {1}).hr, DISP_E_PARAMNOTOPTIONAL);
    // Property-get calls (how some hosts call a method with a result) work.
    EXPECT_TRUE(array_.Invoke(add, {x.get(), y.get()}, DISPATCH_METHOD | DISPATCH_PROPERTYGET).ok());
    EXPECT_EQ(array_.Invoke(add, {x.get(), y.get()}, DISPATCH_PROPERTYPUT).hr, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(array_.Invoke(4711, {}).hr, DISP_E_MEMBERNOTFOUND);

    // Parameter names resolve to their positions.
    LPOLESTR names[3] = {const_cast<LPOLESTR>(L"MaxMin1D"), const_cast<LPOLESTR>(L"IMIN"),
                         const_cast<LPOLESTR>(L"x")};
    DISPID ids[3];
    ASSERT_EQ(array_.get()->GetIDsOfNames(IID_NULL, names, 3, 0, ids), S_OK);
    EXPECT_EQ(ids[0], 10);
    EXPECT_EQ(ids[1], 4);
    EXPECT_EQ(ids[2], 0);
    LPOLESTR unknown[2] = {const_cast<LPOLESTR>(L"AddArray"), const_cast<LPOLESTR>(L"nope")};
    EXPECT_EQ(array_.get()->GetIDsOfNames(IID_NULL, unknown, 2, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[1], DISPID_UNKNOWN);
}


TEST_F(Arguments, NameLookUpFoldsAsciiCaseOnly) {
    struct Row {
        const wchar_t* name;
        DISPID id;
    };
    const Row rows[] = {
        {L"MAXMIN2D", 33},
        {L"maxmin2d", 33},
        {L"mAxMiN1d", 10},
        {L"aboutbox", -552},
        {L"ArrayDims", 1},
        {L"ConcatenateArray", 35},
        {L"AddArra", DISPID_UNKNOWN},          // a prefix is not the name
        {L"AddArrayX", DISPID_UNKNOWN},
        {L"", DISPID_UNKNOWN},
        {L"Add\u0391rray", DISPID_UNKNOWN},   // Greek capital alpha is not 'A'
        {L"AddArr\u0430y", DISPID_UNKNOWN},   // Cyrillic a is not 'a'
        {L"ADD[RRAY", DISPID_UNKNOWN},         // '[' is 'A' + 26, '{' its fold: no folding outside A-Z
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.id);
        LPOLESTR names[1] = {const_cast<LPOLESTR>(row.name)};
        DISPID id = 12345;
        EXPECT_EQ(array_.get()->GetIDsOfNames(IID_NULL, names, 1, 0, &id),
                  row.id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK);
        EXPECT_EQ(id, row.id);
    }
    // A parameter name belongs to its own method only; the first unknown
    // name does not stop the others from being resolved.
    LPOLESTR names[4] = {const_cast<LPOLESTR>(L"maxmin2d"), const_cast<LPOLESTR>(L"JMIN"),
                         const_cast<LPOLESTR>(L"y"), const_cast<LPOLESTR>(L"Max")};
    DISPID ids[4];
    EXPECT_EQ(array_.get()->GetIDsOfNames(IID_NULL, names, 4, 0, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], 33);
    EXPECT_EQ(ids[1], 6);
    EXPECT_EQ(ids[2], DISPID_UNKNOWN);
    EXPECT_EQ(ids[3], 1);
    // Identifiers outside the table and next to its ends are not members.
    for (DISPID id : {0, 36, 37, 127, 128, -551, -553, -1})
        EXPECT_EQ(array_.Invoke(id, {}).hr, DISP_E_MEMBERNOTFOUND) << id;
}

}  // namespace

namespace {

TEST_F(Arguments, NoArrayStaysLockedAfterAFailure) {
    struct Row {
        const char* name;
        const wchar_t* method;
        HRESULT code;
    };
    const Row rows[] = {
        {"kernel failure after conversion", L"DivArray", static_cast<HRESULT>(0x800A4E5C)},
        {"shape failure", L"AddArray", static_cast<HRESULT>(0x800A4E28)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Var x = TypedArray(VT_I2, {1, 2, 3});
        Var y = row.code == static_cast<HRESULT>(0x800A4E28) ? DoubleMatrix(1, 3, {1, 1, 1}) : DoubleArray({1, 0, 1});
        Var xref = RefTo(x);
        EXPECT_EQ(array_.Call(row.method, {xref.get(), y.get()}).code, row.code);
        // A locked array cannot be destroyed.
        EXPECT_EQ(VariantClear(x.get()), S_OK);
        EXPECT_EQ(VariantClear(y.get()), S_OK);
    }
}

TEST_F(Arguments, RepeatedCallsDoNotGrowTheProcess) {
    Var x = DoubleArray(std::vector<double>(20000, 1.5));
    Var shorts = TypedArray(VT_I2, std::vector<double>(20000, 3));
    Var zeros = DoubleArray(std::vector<double>(20000, 0.0));
    auto round = [&] {
        for (int i = 0; i < 200; ++i) {
            Outcome sum = array_.Call(L"AddArray", {x.get(), shorts.get()});
            ASSERT_TRUE(sum.ok());
            Outcome fail = array_.Call(L"DivArray", {shorts.get(), zeros.get()});
            ASSERT_EQ(fail.hr, DISP_E_EXCEPTION);
        }
    };
    round();  // let the heap settle
    PROCESS_MEMORY_COUNTERS before{}, after{};
    GetProcessMemoryInfo(GetCurrentProcess(), &before, sizeof before);
    round();
    round();
    GetProcessMemoryInfo(GetCurrentProcess(), &after, sizeof after);
    // 400 calls each allocate a 160 KB result and a 160 KB conversion; a leak
    // of either would add over 60 MB.
    EXPECT_LT(static_cast<long long>(after.PagefileUsage) - static_cast<long long>(before.PagefileUsage),
              8LL << 20);
}

}  // namespace
