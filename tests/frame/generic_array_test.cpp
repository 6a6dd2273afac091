// VNArray's shape, index and search methods through IDispatch, on arrays of
// every accepted element type. The platform's own element access
// (SafeArrayGetElement with the host's indices) is the reference for where
// an element lives.
#include "client.h"

#include <gtest/gtest.h>
#include <psapi.h>

#include <cmath>
#include <cstring>
#include <limits>

using namespace vntest;

namespace {

const wchar_t* const kSource = L"VNAnalysisControlsLib.VNArray";

SAFEARRAY* ArrayIn(const Var& v) {
    const VARIANT* p = v.get();
    if (V_VT(p) == (VT_BYREF | VT_VARIANT)) p = V_VARIANTREF(p);
    if (!(V_VT(p) & VT_ARRAY)) return nullptr;
    return (V_VT(p) & VT_BYREF) ? *V_ARRAYREF(p) : V_ARRAY(p);
}

// An array of `type` with the given sizes and lower bounds (dimension 1
// first); `values` in storage order, each converted to `type` (kept as it is
// for an array of variants).
Var MakeArray(VARTYPE type, std::vector<ULONG> sizes, std::vector<LONG> lower, const std::vector<Var>& values) {
    std::vector<SAFEARRAYBOUND> bounds;
    for (std::size_t d = 0; d < sizes.size(); ++d) bounds.push_back({sizes[d], lower[d]});
    SAFEARRAY* array = SafeArrayCreate(type, static_cast<UINT>(bounds.size()), bounds.data());
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    const ULONG size = SafeArrayGetElemsize(array);
    for (std::size_t i = 0; i < values.size(); ++i) {
        void* slot = static_cast<char*>(data) + i * size;
        if (type == VT_VARIANT) {
            VariantCopy(static_cast<VARIANT*>(slot), const_cast<VARIANT*>(values[i].get()));
            continue;
        }
        VARIANT converted;
        VariantInit(&converted);
        EXPECT_EQ(VariantChangeType(&converted, const_cast<VARIANT*>(values[i].get()), 0, type), S_OK);
        std::memcpy(slot, &V_UI1(&converted), size);  // a string's ownership moves to the array
    }
    SafeArrayUnaccessData(array);
    Var v;
    V_VT(v.get()) = static_cast<VARTYPE>(VT_ARRAY | type);
    V_ARRAY(v.get()) = array;
    return v;
}

// The element the host calls x(indices...), as a variant of its type.
Var HostElement(const Var& x, std::vector<LONG> indices) {
    SAFEARRAY* array = ArrayIn(x);
    VARTYPE type = VT_EMPTY;
    SafeArrayGetVartype(array, &type);
    Var out;
    if (type == VT_VARIANT) {
        EXPECT_EQ(SafeArrayGetElement(array, indices.data(), out.get()), S_OK);
    } else {
        EXPECT_EQ(SafeArrayGetElement(array, indices.data(), &V_UI1(out.get())), S_OK);
        V_VT(out.get()) = type;
    }
    return out;
}

std::vector<LONG> Lower(const Var& x) { return LowerBounds(x); }

// Equal type and equal value; arrays compare by shape and elements.
bool Same(const Var& a, const Var& b) {
    if (a.vt() != b.vt()) return false;
    if (a.vt() & VT_ARRAY) {
        if (Sizes(a) != Sizes(b)) return false;
        long long count = 1;
        for (LONG s : Sizes(a)) count *= s;
        const std::vector<LONG> la = Lower(a), lb = Lower(b);
        for (long long p = 0; p < count; ++p) {
            // Storage position p as host indices, dimension 1 fastest.
            std::vector<LONG> ia, ib;
            long long rest = p;
            for (std::size_t d = 0; d < la.size(); ++d) {
                ia.push_back(la[d] + static_cast<LONG>(rest % Sizes(a)[d]));
                ib.push_back(lb[d] + static_cast<LONG>(rest % Sizes(a)[d]));
                rest /= Sizes(a)[d];
            }
            if (!Same(HostElement(a, ia), HostElement(b, ib))) return false;
        }
        return true;
    }
    if (a.vt() == VT_BSTR) return VarBstrCmp(V_BSTR(a.get()), V_BSTR(b.get()), 0, 0) == VARCMP_EQ;
    if (a.vt() == VT_EMPTY || a.vt() == VT_NULL) return true;
    Var da, db;
    if (FAILED(VariantChangeType(da.get(), const_cast<VARIANT*>(a.get()), 0, VT_R8))) return false;
    if (FAILED(VariantChangeType(db.get(), const_cast<VARIANT*>(b.get()), 0, VT_R8))) return false;
    return V_R8(da.get()) == V_R8(db.get());
}

Var Missing() {
    Var v;
    V_VT(v.get()) = VT_ERROR;
    V_ERROR(v.get()) = DISP_E_PARAMNOTFOUND;
    return v;
}

Var Typed(VARTYPE type, double value) {
    Var d(value), out;
    VariantChangeType(out.get(), d.get(), 0, type);
    return out;
}

class GenericArray : public ::testing::Test {
protected:
    Control array_{L"VNAnalysisControlsLib.VNArray.1"};
    void SetUp() override { ASSERT_TRUE(array_.valid()) << std::hex << array_.createResult(); }

    Var Ok(const wchar_t* method, std::vector<Var> args) {
        Outcome o = CallWith(array_, method, args);
        EXPECT_TRUE(o.ok()) << Narrow(method) << ": " << std::hex << o.code << " " << Narrow(o.description);
        return o.result;
    }
};

// Six elements of each type, for a 2-by-3 array in storage order.
std::vector<Var> SixOf(VARTYPE type) {
    std::vector<Var> v;
    if (type == VT_BSTR) {
        for (const wchar_t* s : {L"a", L"bb", L"", L"Dd", L"e e", L"\u00e9"}) v.emplace_back(s);
    } else if (type == VT_VARIANT) {
        v = {Var(1.5), Var(L"two"), Typed(VT_I2, 3), DoubleArray({4, 5}), Var(), Typed(VT_DATE, 6.25)};
    } else if (type == VT_BOOL) {
        for (int i = 0; i < 6; ++i) v.push_back(Typed(type, i % 3 == 0 ? 0 : 1));
    } else {
        for (int i = 0; i < 6; ++i) v.push_back(Typed(type, 10 + i));
    }
    return v;
}

const VARTYPE kAllTypes[] = {VT_I2, VT_I4, VT_R4, VT_R8, VT_CY, VT_DATE, VT_BOOL, VT_I1,
                             VT_UI1, VT_UI2, VT_UI4, VT_INT, VT_UINT, VT_BSTR, VT_VARIANT};

TEST_F(GenericArray, EveryElementTypeFollowsTheHostsIndices) {
    for (VARTYPE type : kAllTypes) {
        SCOPED_TRACE("element type " + std::to_string(type));
        const LONG lb1 = 1, lb2 = -2;
        Var x = MakeArray(type, {2, 3}, {lb1, lb2}, SixOf(type));

        Outcome dims = array_.Call(L"ArrayDims", {x.get()});
        ASSERT_TRUE(dims.ok());
        EXPECT_EQ(dims.result.vt(), VT_I4);
        EXPECT_EQ(Longs(dims.result), std::vector<LONG>{2});
        Var sizes = Ok(L"ArrayDimSizes", {x});
        EXPECT_EQ(ElementType(sizes), VT_VARIANT);
        EXPECT_TRUE(Same(HostElement(sizes, {0}), Var(2)));
        EXPECT_TRUE(Same(HostElement(sizes, {1}), Var(3)));

        for (int i = 0; i < 2; ++i) {
            Var row = Ok(L"IndexArray", {x, Var(i)});
            EXPECT_EQ(Sizes(row), std::vector<LONG>{3});
            EXPECT_EQ(Lower(row), std::vector<LONG>{0});
            for (int j = 0; j < 3; ++j) {
                const Var expected = HostElement(x, {lb1 + i, lb2 + j});
                EXPECT_TRUE(Same(Ok(L"IndexArray", {x, Var(i), Var(j)}), expected)) << i << "," << j;
                EXPECT_TRUE(Same(HostElement(row, {j}), expected));
                EXPECT_TRUE(Same(HostElement(Ok(L"IndexArray", {x, Var(), Var(j)}), {i}), expected));
            }
        }

        // Reshaping keeps storage order, so 6 and back to 2-by-3 is the
        // input array with lower bounds 0.
        Var flat = Ok(L"ReshapeArray", {x, Var(6)});
        EXPECT_EQ(ElementType(flat), type);
        Var back = Ok(L"ReshapeArray", {flat, Var(2), Var(3)});
        EXPECT_EQ(Lower(back), (std::vector<LONG>{0, 0}));
        EXPECT_TRUE(Same(back, x));
        for (int p = 0; p < 6; ++p)
            EXPECT_TRUE(Same(HostElement(flat, {p}), HostElement(x, {lb1 + p % 2, lb2 + p / 2})));

        // Concatenation along dimension 1, a block, stacking rows.
        Var both = Ok(L"ConcatenateArray", {x, x});
        EXPECT_EQ(Sizes(both), (std::vector<LONG>{4, 3}));
        Var block = Ok(L"SubsetArray", {x, Var(1), Var(1), Var(1), Missing()});
        EXPECT_EQ(Sizes(block), (std::vector<LONG>{1, 2}));
        Var row0 = Ok(L"IndexArray", {x, Var(0)}), row1 = Ok(L"IndexArray", {x, Var(1)});
        Var stacked = Ok(L"BuildArray", {row0, row1});
        EXPECT_TRUE(Same(stacked, back));
        for (int i = 0; i < 4; ++i) {
            for (int j = 0; j < 3; ++j) {
                const Var expected = HostElement(x, {lb1 + i % 2, lb2 + j});
                EXPECT_TRUE(Same(HostElement(both, {i, j}), expected));
                if (i == 1 && j > 0) {
                    EXPECT_TRUE(Same(HostElement(block, {0, j - 1}), expected));
                }
            }
        }

        // The host's array is left as it was and unlocked.
        EXPECT_EQ(ArrayIn(x)->cLocks, 0u);
        EXPECT_TRUE(Same(x, MakeArray(type, {2, 3}, {lb1, lb2}, SixOf(type))));
    }
}

TEST_F(GenericArray, VariantElementsAreCopiedDeeply) {
    Var nested = DoubleArray({4, 5});
    Var x = VariantArray({Var(L"s"), nested, Typed(VT_CY, 2.5)});
    Var inner = Ok(L"IndexArray", {x, Var(1)});
    EXPECT_EQ(inner.vt(), VT_ARRAY | VT_R8);
    EXPECT_NE(ArrayIn(inner), ArrayIn(HostElement(x, {1})));  // a copy, not the same block
    EXPECT_TRUE(Same(inner, nested));
    EXPECT_EQ(Longs(Ok(L"ArrayDims", {inner})), std::vector<LONG>{1});
    EXPECT_EQ(Ok(L"IndexArray", {x, Var(2)}).vt(), VT_CY);
    // A value of any type joins an array of variants, before or after it.
    Var grown = Ok(L"BuildArray", {Var(7), Ok(L"BuildArray", {x, Var(L"end")})});
    EXPECT_EQ(Sizes(grown), std::vector<LONG>{5});
    EXPECT_TRUE(Same(HostElement(grown, {0}), Var(7)));
    EXPECT_TRUE(Same(HostElement(grown, {2}), nested));
    EXPECT_TRUE(Same(HostElement(grown, {4}), Var(L"end")));
}

TEST_F(GenericArray, BuildArrayShapes) {
    struct Row {
        const char* name;
        Var x, y;
        std::vector<LONG> sizes;
        std::vector<double> storage;
    };
    Row rows[] = {
        {"two values", Var(1.0), Var(2.0), {2}, {1, 2}},
        {"append", DoubleArray({1, 2}, 5), Var(3.0), {3}, {1, 2, 3}},
        {"prepend", Var(0.0), DoubleArray({1, 2}), {3}, {0, 1, 2}},
        {"two rows", DoubleArray({1, 2, 3}), DoubleArray({4, 5, 6}), {2, 3}, {1, 4, 2, 5, 3, 6}},
        {"row below", DoubleMatrix(2, 2, {1, 2, 3, 4}), DoubleArray({8, 9}), {3, 2}, {1, 2, 8, 3, 4, 9}},
        {"row above", DoubleArray({8, 9}), DoubleMatrix(2, 2, {1, 2, 3, 4}), {3, 2}, {8, 1, 2, 9, 3, 4}},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(row.name);
        Var z = Ok(L"BuildArray", {row.x, row.y});
        EXPECT_EQ(ElementType(z), VT_R8);
        EXPECT_EQ(Sizes(z), row.sizes);
        EXPECT_EQ(Doubles(z), row.storage);
    }
    Var shorts = Ok(L"BuildArray", {Typed(VT_I2, 1), Typed(VT_I2, 2)});
    EXPECT_EQ(ElementType(shorts), VT_I2);
}

TEST_F(GenericArray, InterleaveAndDeinterleaveAreInverse) {
    Var x = DoubleArray({1, 2, 3, 4}, 1), y = DoubleArray({10, 20, 30}, -1);
    Var z = Ok(L"Interleave1D", {x, y});
    EXPECT_EQ(Doubles(z), (std::vector<double>{1, 10, 2, 20, 3, 30}));  // the shorter length
    Var parts = Ok(L"Interleave1D", {z, Var(2)});
    EXPECT_EQ(Sizes(parts), (std::vector<LONG>{2, 3}));
    EXPECT_EQ(Doubles(Ok(L"IndexArray", {parts, Var(0)})), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(Doubles(Ok(L"IndexArray", {parts, Var(1)})), (std::vector<double>{10, 20, 30}));
    // Three sequences in seven elements: the partial last group is left out.
    Var seven = DoubleArray({0, 1, 2, 3, 4, 5, 6});
    Var three = Ok(L"Interleave1D", {seven, Var(3)});
    EXPECT_EQ(Sizes(three), (std::vector<LONG>{3, 2}));
    EXPECT_EQ(Doubles(Ok(L"IndexArray", {three, Var(2)})), (std::vector<double>{2, 5}));
    // Storage order back to one dimension re-interleaves them.
    EXPECT_EQ(Doubles(Ok(L"ReshapeArray", {three, Var(6)})), (std::vector<double>{0, 1, 2, 3, 4, 5}));
}

TEST_F(GenericArray, SubsetAndReshapeEdges) {
    Var x = DoubleMatrix(3, 4, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});
    // Rows 1..2 from column 2 to the end (Length2 missing).
    Var s = Ok(L"SubsetArray", {x, Var(1), Var(2), Var(2)});
    EXPECT_EQ(Sizes(s), (std::vector<LONG>{2, 2}));
    EXPECT_EQ(Doubles(s), (std::vector<double>{7, 8, 10, 11}));
    Var v = TypedArray(VT_I4, {5, 6, 7}, 3);
    EXPECT_EQ(Doubles(Ok(L"SubsetArray", {v, Var(1), Var()})), (std::vector<double>{6, 7}));
    // Reshaping to more elements pads with zeros; to fewer drops the rest.
    EXPECT_EQ(Doubles(Ok(L"ReshapeArray", {v, Var(2), Var(2)})), (std::vector<double>{5, 6, 7, 0}));
    EXPECT_EQ(Doubles(Ok(L"ReshapeArray", {x, Var(2)})), (std::vector<double>{0, 1}));
    Var padded = Ok(L"ReshapeArray", {MakeArray(VT_BSTR, {1}, {0}, {Var(L"a")}), Var(2)});
    EXPECT_EQ(ElementType(padded), VT_BSTR);
    EXPECT_TRUE(Same(HostElement(padded, {1}), Var(L"")));
}

TEST_F(GenericArray, SearchArrayMatchesByValue) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Var doubles = DoubleArray({nan, 2, 3, 2}, 7);
    Var strings = MakeArray(VT_BSTR, {3}, {0}, {Var(L"Ab"), Var(L"ab"), Var(L"2")});
    Var mixed = VariantArray({DoubleArray({2}), Var(L"2"), Typed(VT_UI1, 2), Var(2.5)});
    struct Row {
        const char* name;
        Var x, element, start;
        LONG expected;
    };
    Row rows[] = {
        {"a 16-bit integer finds a double", doubles, Typed(VT_I2, 2), Missing(), 1},
        {"numeric text", doubles, Var(L"3"), Missing(), 2},
        {"from a start index", doubles, Var(2.0), Var(2), 3},
        {"start at n", doubles, Var(2.0), Var(4), -1},
        {"NaN equals nothing", doubles, Var(nan), Missing(), -1},
        {"case matters", strings, Var(L"ab"), Missing(), 1},
        {"a number read as text", strings, Var(2), Missing(), 2},
        {"variants: number skips a nested array and text", mixed, Var(2.0), Missing(), 2},
        {"variants: text matches text", mixed, Var(L"2"), Missing(), 1},
        {"not found", mixed, Var(7.0), Var(0), -1},
    };
    for (auto& row : rows) {
        SCOPED_TRACE(row.name);
        Var found = Ok(L"SearchArray", {row.x, row.element, row.start});
        EXPECT_EQ(found.vt(), VT_I4);
        EXPECT_EQ(Longs(found), std::vector<LONG>{row.expected});
    }
}

TEST_F(GenericArray, ChecksComeFirstWithTheirStatuses) {
    const wchar_t* kIndexLength = L"The following condition must be met:  0 <= (index + length) < samples.";
    const wchar_t* kMixed = L"The input parameters must all contain the same data type.";
    const wchar_t* kType = L"The data type is not correct.";
    Var v3 = DoubleArray({1, 2, 3});
    Var m = DoubleMatrix(2, 2, {1, 2, 3, 4});
    Var cube = MakeArray(VT_R8, {1, 1, 1}, {0, 0, 0}, {Var(1.0)});
    const std::vector<Failure> rows = {
        {"scalar", L"ArrayDims", {Var(5.0)}, 0, VnError(30103), msg::kNotArray},
        {"8-byte integers", L"ArrayDimSizes", {TypedArray(VT_I8, {1})}, 0, VnError(30100), kType},
        {"three dimensions", L"IndexArray", {cube, Var(0)}, 0, VnError(20008), msg::kShape},
        {"second index of 1-D", L"IndexArray", {v3, Var(0), Var(0)}, 0, VnError(20008), msg::kShape},
        {"index n", L"IndexArray", {v3, Var(3)}, 0, VnError(20017), msg::kIndex},
        {"index -1", L"IndexArray", {m, Var(0), Var(-1)}, 0, VnError(20017), msg::kIndex},
        {"subset index", L"SubsetArray", {v3, Var(3), Var(1)}, 0, VnError(20017), msg::kIndex},
        {"subset length 0", L"SubsetArray", {v3, Var(0), Var(0)}, 0, VnError(20003), msg::kSamples},
        {"subset too long", L"SubsetArray", {m, Var(0), Var(1), Var(1), Var(2)}, 0, VnError(20018), kIndexLength},
        {"subset 1-D, Index2", L"SubsetArray", {v3, Var(0), Var(1), Var(0)}, 0, VnError(20008), msg::kShape},
        {"interleave types", L"Interleave1D", {v3, TypedArray(VT_R4, {1})}, 0, VnError(30104), kMixed},
        {"interleave 2-D", L"Interleave1D", {m, v3}, 0, VnError(20008), msg::kShape},
        {"types before shapes", L"Interleave1D", {m, TypedArray(VT_R4, {1})}, 0, VnError(30104), kMixed},
        {"Element's type before x's shape", L"SearchArray", {m, v3}, 0, VnError(30100), kType},
        {"de-interleave 0", L"Interleave1D", {v3, Var(0)}, 0, VnError(20003), msg::kSamples},
        {"de-interleave > n", L"Interleave1D", {v3, Var(4)}, 0, VnError(20008), msg::kShape},
        {"build types", L"BuildArray", {Typed(VT_I2, 1), Var(2.5)}, 0, VnError(30104), kMixed},
        {"build lengths", L"BuildArray", {v3, DoubleArray({1, 2})}, 0, VnError(20008), msg::kShape},
        {"build ranks", L"BuildArray", {Var(1.0), m}, 0, VnError(20008), msg::kShape},
        {"build Empty", L"BuildArray", {Var(), Var(1.0)}, 0, VnError(30100), kType},
        {"reshape 0", L"ReshapeArray", {v3, Var(2), Var(0)}, 0, VnError(20003), msg::kSamples},
        {"search 2-D", L"SearchArray", {m, Var(1.0)}, 0, VnError(20008), msg::kShape},
        {"search start -1", L"SearchArray", {v3, Var(1.0), Var(-1)}, 0, VnError(20017), msg::kIndex},
        {"search start n + 1", L"SearchArray", {v3, Var(1.0), Var(4)}, 0, VnError(20017), msg::kIndex},
        {"search for an array", L"SearchArray", {v3, v3}, 0, VnError(30100), kType},
        {"concatenate types", L"ConcatenateArray", {v3, VariantArray({Var(1.0)})}, 0, VnError(30104), kMixed},
        {"concatenate ranks", L"ConcatenateArray", {v3, m}, 0, VnError(20008), msg::kShape},
        {"concatenate columns", L"ConcatenateArray", {m, DoubleMatrix(2, 3, {1, 2, 3, 4, 5, 6})}, 0,
         VnError(20008), msg::kShape},
        {"concatenate a value", L"ConcatenateArray", {v3, Var(1.0)}, 0, VnError(30103), msg::kNotArray},
    };
    ExpectFailures(array_, rows, kSource);
    EXPECT_EQ(ArrayIn(v3)->cLocks, 0u);
    EXPECT_EQ(ArrayIn(m)->cLocks, 0u);
}

TEST_F(GenericArray, RepeatedCallsLeakNoStringOrVariant) {
    // 2000 strings of 100 characters (400 KB) and variants holding them and
    // nested arrays.
    std::vector<Var> text;
    for (int i = 0; i < 2000; ++i) text.emplace_back(std::wstring(100, static_cast<wchar_t>(L'a' + i % 26)).c_str());
    Var strings = MakeArray(VT_BSTR, {2000}, {0}, text);
    std::vector<Var> mixed(text.begin(), text.begin() + 1000);
    for (int i = 0; i < 1000; ++i) mixed.push_back(DoubleArray({1, 2, 3, 4}));
    Var variants = MakeArray(VT_VARIANT, {2000}, {0}, mixed);
    auto round = [&] {
        for (int i = 0; i < 25; ++i) {
            for (Var* x : {&strings, &variants}) {
                Ok(L"ConcatenateArray", {*x, *x});
                Ok(L"ReshapeArray", {*x, Var(50), Var(50)});
                Ok(L"BuildArray", {*x, *x});
                Ok(L"Interleave1D", {*x, Var(4)});
                Ok(L"SubsetArray", {*x, Var(10), Var(1900)});
                Ok(L"IndexArray", {*x, Var(1500)});
                Ok(L"SearchArray", {*x, Var(L"zz")});
                EXPECT_FALSE(CallWith(array_, L"SubsetArray", {*x, Var(10), Var(1991)}).ok());
            }
        }
    };
    round();
    PROCESS_MEMORY_COUNTERS before{}, after{};
    GetProcessMemoryInfo(GetCurrentProcess(), &before, sizeof before);
    round();
    round();
    GetProcessMemoryInfo(GetCurrentProcess(), &after, sizeof after);
    // Each round copies about 40 MB of strings; a leak of any copy would add
    // tens of megabytes.
    EXPECT_LT(static_cast<long long>(after.PagefileUsage) - static_cast<long long>(before.PagefileUsage), 8LL << 20);
}

}  // namespace
