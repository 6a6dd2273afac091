// Elements of any accepted type, for the shape, index and search methods of
// VNArray, which move elements around without looking at their values.
//
// Layout: a safe array stores its elements with dimension 1 varying fastest,
// so the element a host calls x(lb1 + i1, lb2 + i2, ...) sits at block
// position i1 + s1 * (i2 + s2 * (...)), s_k being the size of dimension k.
// Every offset below counts from the first element of the block, whatever the
// lower bounds.
//
// Copying: strings are reallocated with the same byte length, variants are
// copied with the platform's variant copy (nested arrays are copied deeply),
// all other types are copied byte by byte with their element size.
#pragma once

#include "frame/guards.h"

#include <windows.h>
#include <oleauto.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vn {

class ArgArray;
class Call;

// A run of elements of one variant type: the data block of a locked array,
// or a single scalar value (no sizes).
struct ElementView {
    const void* data = nullptr;
    VARTYPE type = VT_EMPTY;
    ULONG elementSize = 0;
    std::vector<std::int32_t> sizes;  // dimension 1 first; empty for a scalar

    int Dims() const { return static_cast<int>(sizes.size()); }
    // Product of the sizes from dimension `first` on (1 when there are none).
    std::int64_t CountFrom(int first) const;
    std::int64_t Count() const { return CountFrom(0); }
    const void* At(std::int64_t position) const {
        return static_cast<const unsigned char*>(data) + static_cast<std::size_t>(position) * elementSize;
    }
};

// True when the argument (or the variant it refers to) holds an array.
bool HoldsArray(const VARIANT& argument);

// The locked array of `array`. Raises -30100 when the array's stored element
// size does not belong to its declared type, so a host that mislabels an
// array cannot make the copy read pointers out of plain bytes.
ElementView ViewOf(const ArgArray& array);

// One scalar argument in place (through a reference when it is one). Numbers
// of every accepted width, currency, dates, booleans and strings; any other
// type raises -30100. The view points into the argument, which outlives the
// call.
ElementView ScalarView(const VARIANT& argument);

// Size in bytes of one element of an accepted type (0 for any other type).
ULONG ElementSizeOf(VARTYPE type);

// Copies a rows-by-cols block of elements:
//   dest[i + destStride * j] = src[i + srcStride * j]
// for i < rows, j < cols (positions in elements). `dest` must hold elements
// of `type` that are valid (a freshly created array is: null strings, Empty
// variants); what they held is released.
void CopyElements(void* dest, std::size_t destStride, const void* src, std::size_t srcStride, std::size_t rows,
                  std::size_t cols, VARTYPE type, ULONG elementSize);

// A copy of one element as a scalar variant of the element's type (an
// element of an array of variants is copied with its reference resolved).
// `dest` must be empty.
void ElementToVariant(VARIANT* dest, const void* element, VARTYPE type, ULONG elementSize);

// A new array with every lower bound 0 and zeroed elements (0, null
// strings, Empty variants), handed to the method's return value by Return.
// More than 2^31 - 1 elements, or more than 2^31 - 1 bytes, count as out of
// memory, as a failed creation does.
class GenericResult {
public:
    GenericResult(VARTYPE type, const std::vector<std::int32_t>& sizes);
    void* Data() const { return array_.get()->pvData; }
    ULONG ElementSize() const { return array_.get()->cbElements; }
    void* At(std::int64_t position) const {
        return static_cast<unsigned char*>(Data()) + static_cast<std::size_t>(position) * ElementSize();
    }
    void Return(Call& call);

private:
    SafeArrayGuard array_;
    VARTYPE type_;
};

}  // namespace vn
