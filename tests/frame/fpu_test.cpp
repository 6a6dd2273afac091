// The floating-point guard seen from a host: the control word inside and
// after calls, after failures, and in calls nested through a host callback.
#include "client.h"

#include <gtest/gtest.h>

#include <float.h>

#include <functional>

// mingw's float.h has no status-word constants.
#ifndef _SW_ZERODIVIDE
#define _SW_ZERODIVIDE 0x00000008
#endif
#ifndef _SW_INVALID
#define _SW_INVALID 0x00000010
#endif

using namespace vntest;

namespace {

constexpr unsigned kAllMasked = _MCW_EM;  // the six exception mask bits

unsigned ControlWord() { return _controlfp(0, 0); }

// A host object whose default value calls back into the host; the frame asks
// for that value while converting a scalar argument, that is, inside the call.
class Callback final : public IDispatch {
public:
    explicit Callback(std::function<double()> f) : f_(std::move(f)) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch)) {
            *object = this;
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs_; }  // lives on the stack
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override { *n = 0; return S_OK; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (id != DISPID_VALUE || !result) return DISP_E_MEMBERNOTFOUND;
        ++calls;
        V_VT(result) = VT_R8;
        V_R8(result) = f_();
        return S_OK;
    }
    int calls = 0;

private:
    std::function<double()> f_;
    ULONG refs_ = 1;
};

Var DispatchArg(Callback& cb) {
    Var v;
    V_VT(v.get()) = VT_DISPATCH;
    V_DISPATCH(v.get()) = &cb;
    cb.AddRef();
    return v;
}

class FpuGuard : public ::testing::Test {
protected:
    Control array_{L"VNAnalysisControlsLib.VNArray.1"};
    unsigned hostWord_ = 0;
    void SetUp() override {
        ASSERT_TRUE(array_.valid());
        hostWord_ = ControlWord();
    }
    void TearDown() override { _controlfp(hostWord_, 0xFFFFFFFFu); }

    // LinEvArray(x, a, 0) with `a` supplied by a callback.
    Outcome CallWithCallback(Callback& cb) {
        Var x = DoubleArray({1, 2});
        Var a = DispatchArg(cb), b(0.0);
        return array_.Call(L"LinEvArray", {x.get(), a.get(), b.get()});
    }
};

TEST_F(FpuGuard, HostWordIsUnchangedAfterSuccessAndFailure) {
    EXPECT_EQ(hostWord_ & kAllMasked, kAllMasked) << "the host starts with all exceptions masked";
    Var x = DoubleArray({1, 0}), y = DoubleArray({2, 0});
    ASSERT_TRUE(array_.Call(L"AddArray", {x.get(), y.get()}).ok());
    EXPECT_EQ(ControlWord(), hostWord_);
    EXPECT_EQ(array_.Call(L"DivArray", {x.get(), y.get()}).code, static_cast<HRESULT>(0x800A4E5C));
    EXPECT_EQ(ControlWord(), hostWord_);
    // Invalid operations inside a call leave no pending status behind.
    _clearfp();
    Var zeros = DoubleArray({0, 0});
    Var scale;
    Var scaleRef = RefTo(scale);
    ASSERT_TRUE(array_.Call(L"QScaleArray", {zeros.get(), scaleRef.get()}).ok());  // 0 * (1/0)
    EXPECT_EQ(_statusfp() & (_SW_ZERODIVIDE | _SW_INVALID), 0u);
    EXPECT_EQ(ControlWord(), hostWord_);
}

TEST_F(FpuGuard, ExceptionsAreMaskedInsideACall) {
    // With zero-divide unmasked by the host, the call still runs masked.
    unsigned inside = 0;
    Callback cb([&] {
        inside = ControlWord();
        return 2.0;
    });
    _controlfp(hostWord_ & ~_EM_ZERODIVIDE, _MCW_EM);
    Outcome o = CallWithCallback(cb);
    const unsigned after = ControlWord();
    _controlfp(hostWord_, 0xFFFFFFFFu);
    ASSERT_TRUE(o.ok()) << std::hex << o.code;
    ASSERT_EQ(cb.calls, 1);
    EXPECT_EQ(inside & kAllMasked, kAllMasked);
    // The restore sets again every bit that was set on entry and leaves the
    // others alone, so the bit the host had cleared stays masked.
    EXPECT_EQ(after & kAllMasked, kAllMasked);
}

TEST_F(FpuGuard, AFailedCallLeavesTheGuardReadyForTheNextCall) {
    Var empty = EmptyArray(VT_R8);
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        EXPECT_EQ(array_.Call(L"NegArray", {empty.get()}).code, static_cast<HRESULT>(0x800A4E23));
        EXPECT_EQ(ControlWord(), hostWord_);
        // If the failure had left the thread's guard marked busy, this call
        // would run with the host's unmasked word.
        unsigned inside = 0;
        Callback cb([&] {
            inside = ControlWord();
            return 1.0;
        });
        _controlfp(hostWord_ & ~_EM_INVALID, _MCW_EM);
        Outcome o = CallWithCallback(cb);
        _controlfp(hostWord_, 0xFFFFFFFFu);
        ASSERT_TRUE(o.ok());
        EXPECT_EQ(inside & kAllMasked, kAllMasked);
    }
}

TEST_F(FpuGuard, NestedCallsLeaveTheWordToTheOutermostGuard) {
    unsigned beforeInner = 0, afterInner = 0;
    Outcome inner;
    Outcome innerFailure;
    Callback cb([&] {
        beforeInner = ControlWord();
        Var x = DoubleArray({1, 2, 3});
        inner = array_.Call(L"SumArray", {x.get()});
        Var empty = EmptyArray(VT_R8);
        innerFailure = array_.Call(L"SumArray", {empty.get()});
        afterInner = ControlWord();
        return 3.0;
    });
    // Unmasked invalid-operation on entry: the outer guard masks it, and
    // neither nested call may restore the host's word while the outer one
    // is still running.
    _controlfp(hostWord_ & ~_EM_INVALID, _MCW_EM);
    Outcome outer = CallWithCallback(cb);
    _controlfp(hostWord_, 0xFFFFFFFFu);
    ASSERT_TRUE(outer.ok());
    EXPECT_EQ(Doubles(outer.result), (std::vector<double>{3, 6}));
    ASSERT_TRUE(inner.ok());
    EXPECT_EQ(Doubles(inner.result), std::vector<double>{6});
    EXPECT_EQ(innerFailure.code, static_cast<HRESULT>(0x800A4E23));
    EXPECT_EQ(beforeInner & kAllMasked, kAllMasked);
    EXPECT_EQ(afterInner, beforeInner);
    // And the guard is free again afterwards.
    unsigned inside = 0;
    Callback again([&] {
        inside = ControlWord();
        return 1.0;
    });
    _controlfp(hostWord_ & ~_EM_OVERFLOW, _MCW_EM);
    Outcome next = CallWithCallback(again);
    _controlfp(hostWord_, 0xFFFFFFFFu);
    ASSERT_TRUE(next.ok());
    EXPECT_EQ(inside & kAllMasked, kAllMasked);
}

}  // namespace
