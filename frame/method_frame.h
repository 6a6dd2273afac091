// Helpers for method handlers: moving results into place.
#pragma once

#include "frame/arg_array.h"
#include "frame/dispatch.h"

namespace vn {

// The array becomes the method's return value (written when the call
// succeeds).
inline void ReturnArray(Call& call, ArgArray& result) {
    VARIANT v;
    VariantInit(&v);
    result.MoveTo(&v);
    call.SetResult(&v);
}

// The array becomes by-reference output i (written when the call succeeds).
inline void OutputArray(Call& call, int i, ArgArray& result) {
    VARIANT v;
    VariantInit(&v);
    result.MoveTo(&v);
    call.SetOut(i, &v);
}

}  // namespace vn
