#pragma once
// The ApplyNUC kernels, templates over <Destination, Source>.
#include <array>
#include <cstdint>
#include <type_traits>

#include "orv/ValueConvert.h"
#include "reduce/kernels/Vector.h"

namespace orv::reduce::priv {

// The pairs without a kernel: unsigned 64-bit anywhere, and signed 32-bit
// from signed 8-bit (a hole that is intended and kept).
template <class D, class S>
constexpr bool kHasNUCKernel = !std::is_same_v<D, uint64_t> && !std::is_same_v<S, uint64_t> &&
                               !(std::is_same_v<D, int32_t> && std::is_same_v<S, int8_t>);

// Sum of two integers in the arithmetic of their promoted type, wrapping.
template <class A, class B>
inline auto WrappingSum(A a, B b)
{
    using P = decltype(a + b);
    using U = std::make_unsigned_t<P>;
    return P(U(P(a)) + U(P(b)));
}

// The corrected value before it is stored, by source type:
//  integer sources multiply in single precision, 32-bit float sources too,
//  64-bit float sources in double precision; an integer source with offset
//  only adds in integers.
template <class D, class S, bool G, bool O>
inline auto NUCValue(S s, float g, short o)
{
    if constexpr (!G && !O) {
        return s;
    } else if constexpr (!G) {
        if constexpr (std::is_same_v<S, double>) return double(o) + s;
        else if constexpr (std::is_same_v<S, float>) return float(o) + s;
        else if constexpr (std::is_integral_v<D>) return D(uint64_t(int64_t(s)) + uint64_t(int64_t(o))); // wraps in D
        else if constexpr (std::is_same_v<D, double>) return int64_t(uint64_t(int64_t(s)) + uint64_t(int64_t(o)));
        else return WrappingSum(s, o);
    } else if constexpr (!O) {
        if constexpr (std::is_same_v<S, double>) return double(g) * s;
        else if constexpr (std::is_same_v<S, float>) return s * g;
        else return float(s) * g;
    } else {
        if constexpr (std::is_same_v<S, double>) return double(g) * s + double(o);
        else if constexpr (std::is_same_v<S, float>) return s * g + float(o);
        else return float(s) * g + float(o);
    }
}

// Clamp bounds in the destination type: integer destinations truncate to
// signed 32 (or 64) bits and narrow.
template <class D>
inline D NUCLimit(double v)
{
    if constexpr (std::is_floating_point_v<D>) {
        return D(v);
    } else if constexpr (sizeof(D) <= 4) {
        const int32_t t = (v >= -2147483648.0 && v < 2147483648.0) ? int32_t(v) : INT32_MIN;
        return D(t);
    } else {
        return D(TruncateToInt64(v));
    }
}

// The value is converted (truncated and narrowed) first and only then
// compared with the bounds: an overflowing product wraps before the clamp.
// Intended.
template <bool C, class D>
inline D NUCClamp(D d, D lo, D hi)
{
    if constexpr (C) {
        if (lo > d) return lo;
        if (hi < d) return hi;
    }
    return d;
}

template <class D, bool C, class V>
inline D NUCStore(V v, D lo, D hi)
{
    return NUCClamp<C>(ConvertValue<D>(v), lo, hi);
}

// Plain and index-list forms, one loop per combination of gain, offset, map
// and clamp. Without a map, float-to-small-integer stores go through 32-bit
// truncation in blocks, which vectorises and gives the same low bits while
// every value of the block lies within the signed 32-bit range.
template <class D, class S, bool kIdx, bool G, bool O, bool M, bool C>
[[gnu::always_inline]] inline void NUCLoopBody(D* dst, const S* src, const unsigned int* indices, int n, const float* gain, const short* offset,
             const unsigned int* map, D lo, D hi)
{
    auto value = [&](int i) {
        const unsigned int q = kIdx ? indices[i] : unsigned(i);
        unsigned int k, j;
        if constexpr (M) {
            k = j = map[q];
        } else {
            k = q;
            j = unsigned(i);
        }
        return NUCValue<D, S, G, O>(src[j], G ? gain[k] : 0.0f, O ? offset[k] : short(0));
    };
    using V = decltype(value(0));
    if constexpr (!M && std::is_floating_point_v<V> && std::is_integral_v<D> && sizeof(D) <= 4) {
        constexpr int block = 256;
        int32_t truncated[block];
        for (int start = 0; start < n; start += block) {
            const int m = n - start < block ? n - start : block;
            int inRange = 1;
            for (int b = 0; b < m; ++b) {
                const V v = value(start + b);
                // '&', not '&&': no branch, so the loop vectorises. False for NaN.
                const bool ok = (v >= V(-2147483648.0)) & (v < V(2147483648.0));
                inRange &= ok;
                truncated[b] = int32_t(ok ? v : V(0));
            }
            D* out = dst + start;
            if (inRange) {
                for (int b = 0; b < m; ++b) out[b] = NUCClamp<C>(D(truncated[b]), lo, hi);
            } else {
                for (int b = 0; b < m; ++b) out[b] = NUCStore<D, C>(value(start + b), lo, hi);
            }
        }
    } else {
        for (int i = 0; i < n; ++i) dst[i] = NUCStore<D, C>(value(i), lo, hi);
    }
}

// The no-map whole-array loops stream over contiguous arrays: those are
// built for wider vectors too.
template <class D, class S, bool G, bool O, bool C>
ORV_VECTOR_CLONES void NUCLoopWide(D* dst, const S* src, int n, const float* gain, const short* offset, D lo, D hi)
{
    NUCLoopBody<D, S, false, G, O, false, C>(dst, src, nullptr, n, gain, offset, nullptr, lo, hi);
}

template <class D, class S, bool kIdx, bool G, bool O, bool M, bool C>
void NUCLoop(D* dst, const S* src, const unsigned int* indices, int n, const float* gain, const short* offset,
             const unsigned int* map, D lo, D hi)
{
    if constexpr (!kIdx && !M && (G || O)) NUCLoopWide<D, S, G, O, C>(dst, src, n, gain, offset, lo, hi);
    else NUCLoopBody<D, S, kIdx, G, O, M, C>(dst, src, indices, n, gain, offset, map, lo, hi);
}

template <class D, class S, bool kIdx>
void ApplyNUCFlat(void* destination, const void* source, const unsigned int* indices, unsigned int count,
                  const float* gain, const short* offset, const unsigned int* map, bool clamp, double minimum,
                  double maximum)
{
    const int n = int(count);
    if (n < 1) return;
    D* dst = static_cast<D*>(destination);
    const S* src = static_cast<const S*>(source);
    const D lo = NUCLimit<D>(minimum), hi = NUCLimit<D>(maximum);
    const unsigned combo = (gain ? 8u : 0u) | (offset ? 4u : 0u) | (map ? 2u : 0u) | (clamp ? 1u : 0u);
#define ORV_NUC_CASE(c)                                                                                       \
    case c:                                                                                                   \
        NUCLoop<D, S, kIdx, bool(c & 8), bool(c & 4), bool(c & 2), bool(c & 1)>(dst, src, indices, n, gain, \
                                                                                offset, map, lo, hi);        \
        break;
    switch (combo) {
        ORV_NUC_CASE(0) ORV_NUC_CASE(1) ORV_NUC_CASE(2) ORV_NUC_CASE(3)
        ORV_NUC_CASE(4) ORV_NUC_CASE(5) ORV_NUC_CASE(6) ORV_NUC_CASE(7)
        ORV_NUC_CASE(8) ORV_NUC_CASE(9) ORV_NUC_CASE(10) ORV_NUC_CASE(11)
        ORV_NUC_CASE(12) ORV_NUC_CASE(13) ORV_NUC_CASE(14) ORV_NUC_CASE(15)
    }
#undef ORV_NUC_CASE
}

template <class D, class S>
void ApplyNUC(void* destination, const void* source, unsigned int count, float* gain, short* offset,
              unsigned int* map, bool clamp, double minimum, double maximum)
{
    ApplyNUCFlat<D, S, false>(destination, source, nullptr, count, gain, offset, map, clamp, minimum, maximum);
}

template <class D, class S>
void ApplyNUC(void* destination, const void* source, unsigned int const* indices, unsigned int count, float* gain,
              short* offset, unsigned int* map, bool clamp, double minimum, double maximum)
{
    ApplyNUCFlat<D, S, true>(destination, source, indices, count, gain, offset, map, clamp, minimum, maximum);
}

// Per-pixel preset forms: the arrays change with each pixel's preset, so the
// tests on them stay in the loop; only the clamp is hoisted.
template <class D, class S, bool kIdx, bool C>
void NUCPresetLoop(D* dst, const S* src, const unsigned int* indices, const unsigned char* presets, int n,
                   float* const* gains, short* const* offsets, unsigned int* const* maps, D lo, D hi)
{
    for (int i = 0; i < n; ++i) {
        const unsigned int q = kIdx ? indices[i] : unsigned(i);
        const unsigned p = presets[q];
        const float* g = gains ? gains[p] : nullptr;
        const short* o = offsets ? offsets[p] : nullptr;
        const unsigned int* m = maps ? maps[p] : nullptr;
        unsigned int k = q;
        if (m) {
            // With an index list the unclamped path reads map[p][i], the
            // clamped one map[p][q]: an asymmetry kept as it stands.
            k = (kIdx && C) ? m[q] : m[i];
        }
        const S s = src[k];
        if (g) {
            if (o) dst[i] = NUCStore<D, C>(NUCValue<D, S, true, true>(s, g[k], o[k]), lo, hi);
            else dst[i] = NUCStore<D, C>(NUCValue<D, S, true, false>(s, g[k], 0), lo, hi);
        } else {
            if (o) dst[i] = NUCStore<D, C>(NUCValue<D, S, false, true>(s, 0.0f, o[k]), lo, hi);
            else dst[i] = NUCStore<D, C>(NUCValue<D, S, false, false>(s, 0.0f, 0), lo, hi);
        }
    }
}

template <class D, class S, bool kIdx>
void ApplyNUCPresets(void* destination, const void* source, const unsigned int* indices,
                     unsigned char const* presets, unsigned int count, float** gain, short** offset,
                     unsigned int** map, bool clamp, double minimum, double maximum)
{
    const int n = int(count);
    if (n < 1) return;
    D* dst = static_cast<D*>(destination);
    const S* src = static_cast<const S*>(source);
    const D lo = NUCLimit<D>(minimum), hi = NUCLimit<D>(maximum);
    if (clamp) NUCPresetLoop<D, S, kIdx, true>(dst, src, indices, presets, n, gain, offset, map, lo, hi);
    else NUCPresetLoop<D, S, kIdx, false>(dst, src, indices, presets, n, gain, offset, map, lo, hi);
}

template <class D, class S>
void ApplyNUC(void* destination, const void* source, unsigned char const* presets, unsigned int count,
              float** gain, short** offset, unsigned int** map, bool clamp, double minimum, double maximum)
{
    ApplyNUCPresets<D, S, false>(destination, source, nullptr, presets, count, gain, offset, map, clamp, minimum,
                                 maximum);
}

template <class D, class S>
void ApplyNUC(void* destination, const void* source, unsigned int const* indices, unsigned char const* presets,
              unsigned int count, float** gain, short** offset, unsigned int** map, bool clamp, double minimum,
              double maximum)
{
    ApplyNUCPresets<D, S, true>(destination, source, indices, presets, count, gain, offset, map, clamp, minimum,
                                maximum);
}

// A table of 100 entries indexed destination * 10 + source, null where there
// is no kernel.
template <class K, size_t I>
constexpr K NUCEntry()
{
    using D = TElement<EDataType(I / 10)>;
    using S = TElement<EDataType(I % 10)>;
    if constexpr (kHasNUCKernel<D, S>) return static_cast<K>(&ApplyNUC<D, S>);
    else return nullptr;
}

template <class K, size_t... I>
constexpr std::array<K, 100> MakeNUCTable(std::index_sequence<I...>)
{
    return {NUCEntry<K, I>()...};
}

// Entries Base to Base + N - 1 of such a table.
template <class K, size_t Base, size_t... I>
constexpr std::array<K, sizeof...(I)> MakeNUCTablePart(std::index_sequence<I...>)
{
    return {NUCEntry<K, Base + I>()...};
}

using TApplyNUCKernel = void (*)(void*, const void*, unsigned int, float*, short*, unsigned int*, bool, double,
                                 double);
// The plain form carries the AVX2 clones, so its table is split in two
// translation units to keep either one quick to compile: entries below
// kNUCSplit in ApplyNUC.cpp, the rest in ApplyNUCHigh.cpp.
constexpr size_t kNUCSplit = 30;
extern const std::array<TApplyNUCKernel, 100 - kNUCSplit> vecApplyNUCHigh;

} // namespace orv::reduce::priv
