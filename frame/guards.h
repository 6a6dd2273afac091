// Small RAII owners for automation resources.
#pragma once

#include <windows.h>
#include <oleauto.h>

namespace vn {

// Owns a VARIANT and clears it on destruction.
class VariantGuard {
public:
    VariantGuard() { VariantInit(&v_); }
    ~VariantGuard() { VariantClear(&v_); }
    VariantGuard(const VariantGuard&) = delete;
    VariantGuard& operator=(const VariantGuard&) = delete;

    VARIANT* get() { return &v_; }
    const VARIANT* get() const { return &v_; }
    VARIANT& operator*() { return v_; }
    // Hands the content over to `dest` (which must be cleared or
    // uninitialised) and leaves this guard empty.
    void MoveTo(VARIANT* dest) {
        *dest = v_;
        VariantInit(&v_);
    }

private:
    VARIANT v_;
};

// Owns a BSTR.
class BstrGuard {
public:
    explicit BstrGuard(BSTR s = nullptr) : s_(s) {}
    ~BstrGuard() { SysFreeString(s_); }
    BstrGuard(const BstrGuard&) = delete;
    BstrGuard& operator=(const BstrGuard&) = delete;
    BSTR get() const { return s_; }
    BSTR release() {
        BSTR s = s_;
        s_ = nullptr;
        return s;
    }

private:
    BSTR s_;
};

// Owns a safe array that has not yet been handed to a variant.
class SafeArrayGuard {
public:
    explicit SafeArrayGuard(SAFEARRAY* a = nullptr) : a_(a) {}
    ~SafeArrayGuard() {
        if (a_) SafeArrayDestroy(a_);
    }
    SafeArrayGuard(const SafeArrayGuard&) = delete;
    SafeArrayGuard& operator=(const SafeArrayGuard&) = delete;
    SAFEARRAY* get() const { return a_; }
    SAFEARRAY* release() {
        SAFEARRAY* a = a_;
        a_ = nullptr;
        return a;
    }

private:
    SAFEARRAY* a_;
};

}  // namespace vn
