// Declarative dispatch tables and the IDispatch implementation shared by the
// five controls.
#pragma once

#include <windows.h>
#include <ocidl.h>
#include <oleauto.h>

#include <cstdint>
#include <vector>

namespace vn {

enum class ParamKind : std::uint8_t { In, Out, Opt };
enum class ReturnKind : std::uint8_t { Variant, Void, R8, I4 };

struct ParamSpec {
    const wchar_t* name;
    ParamKind kind;
};

class Call;
using Handler = void (*)(Call&);

// One row per method: dispatch identifier, name, return and parameter kinds,
// and the handler (null while the method is not implemented; it then answers
// E_NOTIMPL).
struct MethodRow {
    DISPID id;
    const wchar_t* name;
    ReturnKind returns;
    const ParamSpec* params;
    int paramCount;
    Handler handler;
};

struct DispatchTable {
    const wchar_t* progId;  // version-independent, used as the error source
    const CLSID* clsid;
    const IID* dispatchIid;
    const MethodRow* rows;
    int rowCount;
};

// The arguments of one method call in parameter order, and the results that
// are written back only when the whole call has succeeded.
class Call {
public:
    Call(const MethodRow& row, VARIANT** arguments);
    ~Call();
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    // Input parameter i (0-based) as the host passed it.
    const VARIANT& In(int i) const { return *arguments_[i]; }
    bool IsMissing(int i) const;
    // The variant behind by-reference parameter i: the host's own variable
    // when it passed a variant by reference, otherwise a private copy whose
    // content is converted back when the call succeeds.
    VARIANT* Out(int i);

    // Results, held until Commit.
    void SetOut(int i, VARIANT* value);  // takes the content of *value
    void SetOutDouble(int i, double value);
    void SetOutInt(int i, std::int32_t value);
    void SetResult(VARIANT* value);  // takes the content of *value
    void SetResultDouble(double value);
    void SetResultInt(std::int32_t value);

    // Writes the pending results into the host's variants. May raise before
    // anything is written (a typed by-reference argument that cannot take
    // its result); once writing starts it cannot fail.
    void Commit(VARIANT* result);

private:
    struct Slot;
    const MethodRow& row_;
    VARIANT** arguments_;
    std::vector<Slot> slots_;
    VARIANT result_;
};


// Creates an instance of a control (the COM object, frame/ole_control.cpp)
// for a dispatch table.
HRESULT CreateControl(const DispatchTable& table, REFIID iid, void** object);

// The IDispatch half of every control: names to identifiers (parameter
// names give their 0-based positions) and the method path of a call.
HRESULT DispatchGetIDsOfNames(const DispatchTable& table, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids);
HRESULT DispatchInvoke(const DispatchTable& table, DISPID id, REFIID iid, WORD flags, DISPPARAMS* params,
                       VARIANT* result, EXCEPINFO* excep, UINT* argErr);
// A type description of the module's type library by its GUID.
HRESULT TypeInfoOfGuid(REFGUID guid, ITypeInfo** info);

// Object count of the module, for DllCanUnloadNow.
LONG LiveObjectCount();
void AddModuleRef();
void ReleaseModuleRef();

// The module's type library, loaded once from its own resources.
HRESULT GetModuleTypeLib(ITypeLib** library);

}  // namespace vn
