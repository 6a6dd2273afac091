// Adaptors between automation arguments and the numeric routines.
//
// An ArgArray finds the safe array inside one argument, checks its shape,
// exposes its data block as doubles (converting a non-double array once into
// a copy of its own; the host's array is never changed) and builds result
// arrays with every lower bound 0. An ArgScalar does the same for a number.
#pragma once

#include "analysis/status.h"

#include <windows.h>
#include <oleauto.h>

#include <cstdint>
#include <initializer_list>

namespace vn {

// Changes `src` to `type` into `dest` (which must be initialised). When the
// platform conversion fails and `src` is a string, the string is read as a
// date and time with an optional decimal fraction of seconds after the first
// full stop ("12:00:00.5"). Returns the platform result of the first attempt
// when both fail.
HRESULT ConvertValue(VARIANT* dest, const VARIANT* src, VARTYPE type);

// Refuses (E_OUTOFMEMORY), before anything is allocated, an array whose byte
// size exceeds the bound of one block (analysis/limits.h). The platform
// multiplies the sizes in 32 bits on a 32-bit host; checked here in 64 bits,
// a count such as 2^29 doubles or a 65536-square matrix fails cleanly
// instead of wrapping to a tiny data block. Every SafeArrayCreate of the
// frame is preceded by this check.
void RequireBlock(VARTYPE type, UINT dims, const SAFEARRAYBOUND* bounds);

// True for an omitted optional argument or an explicitly empty one.
bool IsMissingArgument(const VARIANT& arg);

class ArgBase {
public:
    virtual ~ArgBase() = default;
    virtual std::int32_t* AsInt32() = 0;
    virtual double* AsDouble() = 0;
    virtual std::int32_t Count() const = 0;
    virtual void Reset() = 0;
};

class ArgArray final : public ArgBase {
public:
    ArgArray();
    // Attaches an input argument by value and locks it.
    explicit ArgArray(const VARIANT& argument);
    ~ArgArray() override;
    ArgArray(const ArgArray&) = delete;
    ArgArray& operator=(const ArgArray&) = delete;

    // Uses the caller's argument read-only; a conversion goes into a copy.
    void AttachByValue(const VARIANT& argument);
    // Uses the caller's variant (a by-reference output). A conversion is kept
    // aside and written back by CommitToTarget, so a failing call leaves the
    // caller's variant as it was.
    void AttachByReference(VARIANT* target);
    // Finds the array (-30103 when there is none), checks its element type
    // (-30100) and locks it.
    void Lock();

    std::int32_t Dims() const;
    // Size and lower bound of dimension i, 0-based (dimension 1 is i = 0).
    std::int32_t Size(int i) const;
    LONG LowerBound(int i) const;
    std::int32_t Count() const override;
    VARTYPE ElementType() const { return elementType_; }
    // The locked safe array (null when none): the generic shape methods copy
    // its elements without converting them.
    const SAFEARRAY* Locked() const { return array_; }

    double* AsDouble() override;
    std::int32_t* AsInt32() override;
    void Reset() override;

    // Shape checks; each raises its status on failure.
    void RequireMoreDims(int k) const;       // dims > k   (-20003 if 0 else -20008)
    void RequireDims(int k) const;           // dims == k  (-20003 if 0 else -20008)
    void RequireSameShape(const ArgArray& other) const;  // -20008
    void RequireSize(int i, std::int32_t n) const;       // -20008
    void RequireMoreElements(std::int32_t k) const;      // -20008
    void RequireElements(std::int32_t n) const;          // -20008
    void RequireSquare() const;                          // -20040

    // Result creation (lower bounds 0), replacing what the target held.
    void Create1D(std::int32_t n, VARTYPE type = VT_R8);
    void CreateLike(const ArgArray& other, VARTYPE type = VT_R8);
    void Create2D(std::int32_t size1, std::int32_t size2, VARTYPE type = VT_R8);
    // One-dimensional with n elements when `shape` is one-dimensional,
    // otherwise with the sizes of `shape`.
    void CreateResultFor(const ArgArray& shape, std::int32_t n, VARTYPE type = VT_R8);

    // Hands the target's content to `dest` (cleared first) and leaves this
    // adaptor empty.
    void MoveTo(VARIANT* dest);
    // For a by-reference attachment whose data was converted: replaces the
    // caller's array by the converted one.
    void CommitToTarget();

private:
    void Unlock();
    void ConvertTo(VARTYPE type);
    void Create(VARTYPE type, UINT dims, SAFEARRAYBOUND* bounds);

    VARIANT value_;
    VARIANT* target_ = nullptr;
    bool ownsValue_ = true;
    bool readOnly_ = false;
    bool byReference_ = false;
    SAFEARRAY* array_ = nullptr;
    VARTYPE elementType_ = VT_EMPTY;
    bool locked_ = false;
};

// Element count that element-wise routines use: the first argument's count,
// lowered by each further argument's count, stopping after the first further
// argument that is not one-dimensional.
std::int32_t CommonLength(std::initializer_list<const ArgArray*> arguments);

class ArgScalar final : public ArgBase {
public:
    explicit ArgScalar(const VARIANT& argument);
    ~ArgScalar() override;
    ArgScalar(const ArgScalar&) = delete;
    ArgScalar& operator=(const ArgScalar&) = delete;

    std::int32_t* AsInt32() override;
    double* AsDouble() override;
    std::int32_t Count() const override { return 1; }
    void Reset() override;

    double Double() { return *AsDouble(); }
    std::int32_t Int() { return *AsInt32(); }

private:
    VARIANT value_;
};

// Reads a variant of one exact numeric type without conversion; any other
// type raises the platform's type mismatch.
double ExactNumber(const VARIANT& value);

}  // namespace vn
