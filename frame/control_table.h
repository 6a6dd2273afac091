// Expands the rows of frame/method_list.h into a control's dispatch table.
//
// A control's source defines its handlers in a namespace named by
// VN_HANDLERS (one function `void Name(Call&)` per implemented method, and
// VN_NOT_IMPLEMENTED(Name) for the others), then writes
//   VN_DEFINE_DISPATCH_TABLE(VN_ARRAY_METHODS, L"ProgID", CLSID_..., DIID_...)
#pragma once

#include "frame/dispatch.h"
#include "frame/method_list.h"

#define VN_WIDE2(s) L##s
#define VN_WIDE(s) VN_WIDE2(s)

#define VN_RETURN_VARIANT ::vn::ReturnKind::Variant
#define VN_RETURN_VOID ::vn::ReturnKind::Void
#define VN_RETURN_R8 ::vn::ReturnKind::R8
#define VN_RETURN_I4 ::vn::ReturnKind::I4

#define ARG_IN(n) {VN_WIDE(#n), ::vn::ParamKind::In}
#define ARG_OUT(n) {VN_WIDE(#n), ::vn::ParamKind::Out}
#define ARG_OPT(n) {VN_WIDE(#n), ::vn::ParamKind::Opt}

#define VN_NOT_IMPLEMENTED(nm) constexpr ::vn::Handler nm = nullptr;

// Each parameter list starts with a sentinel so that AboutBox's empty list
// is still a valid array.
#define VN_DECLARE_PARAMS(did, nm, rt, hs, ...) \
    const ::vn::ParamSpec kParams_##nm[] = {{nullptr, ::vn::ParamKind::In}, ##__VA_ARGS__};
#define VN_TABLE_ROW(did, nm, rt, hs, ...)                                                           \
    {did, VN_WIDE(#nm), VN_RETURN_##rt, kParams_##nm + 1,                                            \
     static_cast<int>(sizeof(kParams_##nm) / sizeof(kParams_##nm[0])) - 1, VN_HANDLERS::nm},

#define VN_DEFINE_DISPATCH_TABLE(LIST, progId, clsid, diid)                                     \
    namespace {                                                                                 \
    LIST(VN_DECLARE_PARAMS)                                                                     \
    const ::vn::MethodRow kRows[] = {LIST(VN_TABLE_ROW)};                                       \
    }                                                                                           \
    const ::vn::DispatchTable kDispatchTable = {progId, &clsid, &diid, kRows,                   \
                                                static_cast<int>(sizeof(kRows) / sizeof(kRows[0]))};
