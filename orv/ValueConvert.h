#pragma once
// The one element conversion rule used by every typed kernel and by
// ConvertArray: a plain value conversion, no scaling, no rounding, no
// saturation.
//  - integer -> integer: sign-extend or keep the low bits;
//  - integer -> float: nearest representable value;
//  - float -> integer up to 32 bits: truncate toward zero through a signed
//    64-bit integer, then keep the low bits (300.7 -> uint8 44, -1.5 -> uint16
//    65535);
//  - float -> int64: truncate toward zero;
//  - float -> uint64: truncate; values at or above 2^63 are reduced by 2^63,
//    truncated, and get the top bit set;
//  - double -> float rounds to nearest.
// Out-of-range and NaN inputs give the x86 "integer indefinite" value
// INT64_MIN at the 64-bit step, which keeps the rule defined for every input.
#include <cstdint>
#include <type_traits>

#include "orv/Types.h"

namespace orv {

template <class F>
inline int64_t TruncateToInt64(F v)
{
    constexpr F lo = static_cast<F>(-9223372036854775808.0);
    constexpr F hi = static_cast<F>(9223372036854775808.0);
    return (v >= lo && v < hi) ? static_cast<int64_t>(v) : INT64_MIN;
}

template <class D, class S>
inline D ConvertValue(S v)
{
    if constexpr (std::is_floating_point_v<S> && std::is_integral_v<D>) {
        if constexpr (std::is_same_v<D, uint64_t>) {
            constexpr S two63 = static_cast<S>(9223372036854775808.0);
            if (v >= two63) return static_cast<uint64_t>(TruncateToInt64<S>(v - two63)) | 0x8000000000000000ull;
            return static_cast<uint64_t>(TruncateToInt64<S>(v));
        } else {
            return static_cast<D>(TruncateToInt64<S>(v));
        }
    } else {
        return static_cast<D>(v);
    }
}

// The C++ type of each numeric EDataType, and back.
template <EDataType T> struct TElementOf;
template <> struct TElementOf<dtInt8> { using type = int8_t; };
template <> struct TElementOf<dtUInt8> { using type = uint8_t; };
template <> struct TElementOf<dtInt16> { using type = int16_t; };
template <> struct TElementOf<dtUInt16> { using type = uint16_t; };
template <> struct TElementOf<dtInt32> { using type = int32_t; };
template <> struct TElementOf<dtUInt32> { using type = uint32_t; };
template <> struct TElementOf<dtInt64> { using type = int64_t; };
template <> struct TElementOf<dtUInt64> { using type = uint64_t; };
template <> struct TElementOf<dtFlt32> { using type = float; };
template <> struct TElementOf<dtFlt64> { using type = double; };
template <EDataType T> using TElement = typename TElementOf<T>::type;

template <class T> struct TDataTypeOf;
template <> struct TDataTypeOf<int8_t> { static constexpr EDataType value = dtInt8; };
template <> struct TDataTypeOf<uint8_t> { static constexpr EDataType value = dtUInt8; };
template <> struct TDataTypeOf<int16_t> { static constexpr EDataType value = dtInt16; };
template <> struct TDataTypeOf<uint16_t> { static constexpr EDataType value = dtUInt16; };
template <> struct TDataTypeOf<int32_t> { static constexpr EDataType value = dtInt32; };
template <> struct TDataTypeOf<uint32_t> { static constexpr EDataType value = dtUInt32; };
template <> struct TDataTypeOf<int64_t> { static constexpr EDataType value = dtInt64; };
template <> struct TDataTypeOf<uint64_t> { static constexpr EDataType value = dtUInt64; };
template <> struct TDataTypeOf<float> { static constexpr EDataType value = dtFlt32; };
template <> struct TDataTypeOf<double> { static constexpr EDataType value = dtFlt64; };

// The ten numeric element types in table order, for generating kernel tables.
#define ORV_FOR_EACH_NUMERIC_TYPE(X) \
    X(int8_t) X(uint8_t) X(int16_t) X(uint16_t) X(int32_t) X(uint32_t) X(int64_t) X(uint64_t) X(float) X(double)

} // namespace orv
