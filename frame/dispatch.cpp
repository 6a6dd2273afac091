#include "frame/dispatch.h"

#include "frame/arg_array.h"
#include "frame/errors.h"
#include "frame/fpu_guard.h"
#include "frame/guards.h"

#include <atomic>
#include <cstring>
#include <cwchar>
#include <new>
#include <string>

namespace vn {

namespace {

LONG g_objects = 0;
ITypeLib* g_typeLib = nullptr;

// Every name in the type library is plain ASCII, so folding A-Z to a-z is an
// exact case-insensitive match: a name holding any other character matches
// nothing, as it would under a locale-aware compare.
inline wchar_t FoldAscii(wchar_t c) { return (c >= L'A' && c <= L'Z') ? static_cast<wchar_t>(c + 32) : c; }

bool SameName(const wchar_t* a, const wchar_t* b) {
    for (;; ++a, ++b) {
        if (FoldAscii(*a) != FoldAscii(*b)) return false;
        if (*a == 0) return true;
    }
}

std::uint32_t FoldedHash(const wchar_t* name) {
    std::uint32_t h = 2166136261u;  // FNV-1a over the folded characters
    for (; *name; ++name) h = (h ^ static_cast<std::uint32_t>(FoldAscii(*name))) * 16777619u;
    return h;
}

// Name and identifier look-up of one dispatch table, built once per table on
// first use: an open-addressed hash of the folded method names (a quarter
// full at most) and the rows by dispatch identifier. Parameter names are few
// per method and are compared directly.
class TableIndex {
public:
    explicit TableIndex(const DispatchTable& table) : table_(table) {
        for (std::uint32_t& slot : slots_) slot = kEmpty;
        for (int r = 0; r < table.rowCount; ++r) {
            std::uint32_t s = FoldedHash(table.rows[r].name) & (kSlots - 1);
            while (slots_[s] != kEmpty) s = (s + 1) & (kSlots - 1);
            slots_[s] = static_cast<std::uint32_t>(r);
            const DISPID id = table.rows[r].id;
            if (id >= 0 && id < kMaxId) byId_[id] = &table.rows[r];
            else if (id == kAboutBoxId) about_ = &table.rows[r];
        }
    }

    const MethodRow* Find(const wchar_t* name) const {
        std::uint32_t s = FoldedHash(name) & (kSlots - 1);
        for (; slots_[s] != kEmpty; s = (s + 1) & (kSlots - 1))
            if (SameName(name, table_.rows[slots_[s]].name)) return &table_.rows[slots_[s]];
        return nullptr;
    }

    const MethodRow* ById(DISPID id) const {
        if (id >= 0 && id < kMaxId) return byId_[id];
        return id == kAboutBoxId ? about_ : nullptr;
    }

    // The index of a table, created by the first caller; a thread that loses
    // the race to publish it frees its own copy.
    static const TableIndex* Of(const DispatchTable& table);

private:
    static constexpr std::uint32_t kSlots = 512;  // > 4 x the largest control (88 methods)
    static constexpr std::uint32_t kEmpty = 0xFFFFFFFFu;
    static constexpr DISPID kMaxId = 128;
    static constexpr DISPID kAboutBoxId = -552;
    const DispatchTable& table_;
    std::uint32_t slots_[kSlots];
    const MethodRow* byId_[kMaxId] = {};
    const MethodRow* about_ = nullptr;
};

struct IndexSlot {
    std::atomic<const DispatchTable*> table{nullptr};
    std::atomic<TableIndex*> index{nullptr};
};
// One per control (the module has five). The indexes live as long as the
// module is loaded; a few kilobytes are left behind if a host unloads it.
IndexSlot g_indexes[8];

const TableIndex* TableIndex::Of(const DispatchTable& table) {
    for (IndexSlot& slot : g_indexes) {
        // Claim a free slot for this table, or find the slot it already has.
        const DispatchTable* owner = nullptr;
        if (!slot.table.compare_exchange_strong(owner, &table) && owner != &table) continue;
        if (TableIndex* index = slot.index.load()) return index;
        TableIndex* made = new (std::nothrow) TableIndex(table);
        if (!made) return nullptr;
        TableIndex* expected = nullptr;
        if (slot.index.compare_exchange_strong(expected, made)) return made;
        delete made;  // another thread published its index first
        return expected;
    }
    return nullptr;
}

const MethodRow* FindRow(const DispatchTable& table, const wchar_t* name) {
    if (const TableIndex* index = TableIndex::Of(table)) return index->Find(name);
    for (int r = 0; r < table.rowCount; ++r)  // only when the index could not be allocated
        if (SameName(name, table.rows[r].name)) return &table.rows[r];
    return nullptr;
}

const MethodRow* RowById(const DispatchTable& table, DISPID id) {
    if (const TableIndex* index = TableIndex::Of(table)) return index->ById(id);
    for (int r = 0; r < table.rowCount; ++r)
        if (table.rows[r].id == id) return &table.rows[r];
    return nullptr;
}

BSTR ToBstr(const std::string& text) {
    const int chars = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    BSTR result = SysAllocStringLen(nullptr, static_cast<UINT>(chars > 0 ? chars : 0));
    if (result && chars > 0)
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), result, chars);
    return result;
}

// Size of the value behind a typed by-reference pointer, 0 for types whose
// value cannot simply be copied.
std::size_t ScalarSize(VARTYPE type) {
    switch (type) {
    case VT_I1: case VT_UI1: return 1;
    case VT_I2: case VT_UI2: case VT_BOOL: return 2;
    case VT_I4: case VT_UI4: case VT_INT: case VT_UINT: case VT_R4: case VT_ERROR: return 4;
    case VT_R8: case VT_DATE: case VT_CY: case VT_I8: case VT_UI8: return 8;
    default: return 0;
    }
}

}  // namespace

LONG LiveObjectCount() { return g_objects; }
void AddModuleRef() { InterlockedIncrement(&g_objects); }
void ReleaseModuleRef() { InterlockedDecrement(&g_objects); }

HRESULT GetModuleTypeLib(ITypeLib** library) {
    if (!library) return E_POINTER;
    *library = nullptr;
    if (!g_typeLib) {
        wchar_t path[MAX_PATH];
        const DWORD length = GetModuleFileNameW(ResourceModule(), path, MAX_PATH);
        if (length == 0 || length >= MAX_PATH) return HRESULT_FROM_WIN32(GetLastError());
        ITypeLib* loaded = nullptr;
        const HRESULT hr = LoadTypeLibEx(path, REGKIND_NONE, &loaded);
        if (FAILED(hr)) return hr;
        if (InterlockedCompareExchangePointer(reinterpret_cast<void**>(&g_typeLib), loaded, nullptr) != nullptr)
            loaded->Release();  // another thread got there first
    }
    g_typeLib->AddRef();
    *library = g_typeLib;
    return S_OK;
}

// -------------------------------------------------------------------- Call

struct Call::Slot {
    VARIANT* direct = nullptr;  // the host's variant, written in place
    VARIANT* typedRef = nullptr;  // a typed by-reference argument
    VARIANT copy;               // private value for typed or by-value arguments
    VARIANT pending;
    bool hasCopy = false;
    bool hasPending = false;
    Slot() {
        VariantInit(&copy);
        VariantInit(&pending);
    }
};

Call::Call(const MethodRow& row, VARIANT** arguments)
    : row_(row), arguments_(arguments), slots_(static_cast<std::size_t>(row.paramCount)) {
    VariantInit(&result_);
}

Call::~Call() {
    for (Slot& slot : slots_) {
        VariantClear(&slot.copy);
        VariantClear(&slot.pending);
    }
    VariantClear(&result_);
}

bool Call::IsMissing(int i) const {
    return IsMissingArgument(*arguments_[i]);
}

VARIANT* Call::Out(int i) {
    Slot& slot = slots_[static_cast<std::size_t>(i)];
    if (slot.direct) return slot.direct;
    if (slot.hasCopy) return &slot.copy;
    VARIANT* arg = arguments_[i];
    if (V_VT(arg) == (VT_BYREF | VT_VARIANT)) {
        slot.direct = V_VARIANTREF(arg);
        return slot.direct;
    }
    // A typed reference is read through a dereferenced copy and written back
    // at commit; a value argument gets a copy whose result is discarded.
    CheckHResult(VariantCopyInd(&slot.copy, arg));
    slot.hasCopy = true;
    if (V_VT(arg) & VT_BYREF) slot.typedRef = arg;
    return &slot.copy;
}

void Call::SetOut(int i, VARIANT* value) {
    Out(i);  // classify the slot
    Slot& slot = slots_[static_cast<std::size_t>(i)];
    VariantClear(&slot.pending);
    slot.pending = *value;
    VariantInit(value);
    slot.hasPending = true;
}

void Call::SetOutDouble(int i, double value) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_R8;
    V_R8(&v) = value;
    SetOut(i, &v);
}

void Call::SetOutInt(int i, std::int32_t value) {
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    SetOut(i, &v);
}

void Call::SetResult(VARIANT* value) {
    VariantClear(&result_);
    result_ = *value;
    VariantInit(value);
}

void Call::SetResultDouble(double value) {
    VariantClear(&result_);
    V_VT(&result_) = VT_R8;
    V_R8(&result_) = value;
}

void Call::SetResultInt(std::int32_t value) {
    VariantClear(&result_);
    V_VT(&result_) = VT_I4;
    V_I4(&result_) = value;
}

void Call::Commit(VARIANT* result) {
    // Phase 1: everything that can fail. A typed reference receives its
    // result converted to its own type.
    for (Slot& slot : slots_) {
        if (!slot.typedRef) continue;
        VARIANT* value = slot.hasPending ? &slot.pending : &slot.copy;
        const VARTYPE base = V_VT(slot.typedRef) & static_cast<VARTYPE>(~VT_BYREF);
        if (V_VT(value) == base) continue;
        if ((base & VT_ARRAY) || (V_VT(value) & VT_ARRAY) || (ScalarSize(base) == 0 && base != VT_BSTR))
            ThrowAutomationError(DISP_E_TYPEMISMATCH, nullptr, -1);
        VariantGuard converted;
        CheckHResult(VariantChangeType(converted.get(), value, 0, base));
        VariantClear(value);
        converted.MoveTo(value);
    }
    // Phase 2: hand everything over; nothing here can fail.
    for (Slot& slot : slots_) {
        if (slot.typedRef) {
            VARIANT* value = slot.hasPending ? &slot.pending : &slot.copy;
            const VARTYPE base = V_VT(value);
            void* where = V_BYREF(slot.typedRef);
            if (base & VT_ARRAY) {
                SAFEARRAY** target = static_cast<SAFEARRAY**>(where);
                if (*target) SafeArrayDestroy(*target);
                *target = V_ARRAY(value);
            } else if (base == VT_BSTR) {
                BSTR* target = static_cast<BSTR*>(where);
                SysFreeString(*target);
                *target = V_BSTR(value);
            } else {
                std::memcpy(where, &V_UI1(value), ScalarSize(base));
            }
            VariantInit(value);
        } else if (slot.direct && slot.hasPending) {
            VariantClear(slot.direct);
            *slot.direct = slot.pending;
            VariantInit(&slot.pending);
        }
    }
    if (result) {
        *result = result_;
        VariantInit(&result_);
    }
}

// ------------------------------------------------------------- dispatching

HRESULT TypeInfoOfGuid(REFGUID guid, ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    ITypeLib* library = nullptr;
    HRESULT hr = GetModuleTypeLib(&library);
    if (FAILED(hr)) return hr;
    hr = library->GetTypeInfoOfGuid(guid, info);
    library->Release();
    return hr;
}

HRESULT DispatchGetIDsOfNames(const DispatchTable& table, REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    if (!names || !ids) return E_POINTER;
    if (count == 0) return S_OK;
    const MethodRow* row = names[0] ? FindRow(table, names[0]) : nullptr;
    HRESULT hr = S_OK;
    ids[0] = row ? row->id : DISPID_UNKNOWN;
    if (!row) hr = DISP_E_UNKNOWNNAME;
    for (UINT k = 1; k < count; ++k) {
        ids[k] = DISPID_UNKNOWN;
        for (int p = 0; row && names[k] && p < row->paramCount; ++p)
            if (SameName(names[k], row->params[p].name)) {
                ids[k] = p;
                break;
            }
        if (ids[k] == DISPID_UNKNOWN) hr = DISP_E_UNKNOWNNAME;
    }
    return hr;
}

namespace {

HRESULT InvokeRow(const DispatchTable& table, const MethodRow& row, const DISPPARAMS& params, VARIANT* result,
                  EXCEPINFO* excep, UINT* argErr) {
    const int count = static_cast<int>(params.cArgs);
    const int named = static_cast<int>(params.cNamedArgs);
    if (count > row.paramCount || named > count) return DISP_E_BADPARAMCOUNT;
    VARIANT missing;
    VariantInit(&missing);
    V_VT(&missing) = VT_ERROR;
    V_ERROR(&missing) = DISP_E_PARAMNOTFOUND;
    VARIANT* args[64] = {};
    // Positional arguments arrive last-first after the named ones.
    const int positional = count - named;
    for (int k = 0; k < positional; ++k) args[k] = &params.rgvarg[count - 1 - k];
    for (int k = 0; k < named; ++k) {
        const DISPID p = params.rgdispidNamedArgs[k];
        if (p < 0 || p >= row.paramCount || args[p]) {
            if (argErr) *argErr = static_cast<UINT>(k);
            return DISP_E_PARAMNOTFOUND;
        }
        args[p] = &params.rgvarg[k];
    }
    for (int p = 0; p < row.paramCount; ++p) {
        if (args[p]) continue;
        if (row.params[p].kind != ParamKind::Opt) return named ? DISP_E_PARAMNOTOPTIONAL : DISP_E_BADPARAMCOUNT;
        args[p] = &missing;
    }
    if (!row.handler) return E_NOTIMPL;
    if (result) VariantInit(result);

    HRESULT code = S_OK;
    std::string description;
    bool hasDescription = false;
    try {
        FpuGuard guard;
        Call call(row, args);
        row.handler(call);
        call.Commit(result);
        return S_OK;
    } catch (const AutomationError& e) {
        code = e.code;
        description = e.description;
        hasDescription = e.hasDescription;
    } catch (const std::bad_alloc&) {
        code = E_OUTOFMEMORY;
    } catch (...) {
        code = E_UNEXPECTED;
    }
    if (!excep) return code;
    std::memset(excep, 0, sizeof *excep);
    excep->scode = code;
    excep->bstrSource = SysAllocString(table.progId);
    if (hasDescription) excep->bstrDescription = ToBstr(description);
    return DISP_E_EXCEPTION;
}

}  // namespace

HRESULT DispatchInvoke(const DispatchTable& table, DISPID id, REFIID iid, WORD flags, DISPPARAMS* params,
                       VARIANT* result, EXCEPINFO* excep, UINT* argErr) {
    if (!IsEqualIID(iid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
    const MethodRow* row = RowById(table, id);
    if (!row) return DISP_E_MEMBERNOTFOUND;
    if (!(flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET))) return DISP_E_MEMBERNOTFOUND;
    DISPPARAMS none = {nullptr, nullptr, 0, 0};
    if (!params) params = &none;
    return InvokeRow(table, *row, *params, result, excep, argErr);
}

}  // namespace vn
