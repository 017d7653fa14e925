#pragma once
// The ApplyLUT and GetStatsLUT kernels: one index rule, one body each,
// handed to the region walkers.
#include <bit>
#include <cmath>
#include <cstring>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "reduce/kernels/LUT.h"
#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce::priv {

// Table index of a value. For integers, limiting in integer arithmetic gives
// the same index as limiting the value converted to float, and costs less.
template <class S>
inline unsigned int LUTIndex(S v, unsigned short low, unsigned short high)
{
    if constexpr (std::is_integral_v<S>) {
        using W = std::conditional_t<std::is_signed_v<S>, int64_t, uint64_t>;
        const W w = W(v);
        if (W(low) > w) return low;
        if (w > W(high)) return high;
        return unsigned(w);
    } else {
        float f = float(v);
        const float lo = float(low), hi = float(high);
        if (lo > f) {
            f = lo;
        } else if (f > hi) {
            f = hi;
        } else {
            // Half away from zero; a NaN falls through to here.
            const float r = std::trunc(f);
            if (f >= 0 && f - r >= 0.5f) f = r + 1.0f;
            else if (f < 0 && r - f >= 0.5f) f = r - 1.0f;
            else f = r;
        }
        return ConvertValue<uint16_t>(f);
    }
}

// Single table or per-preset tables.
struct SLUTOne {
    const float* lut;
    const unsigned char* status;
    const float* Values(unsigned) const { return lut; }
    const unsigned char* Status(unsigned) const { return status; }
};
struct SLUTPresets {
    float* const* lut;
    unsigned char* const* status;
    const unsigned char* presets;
    const float* Values(unsigned flat) const { return lut[presets[flat]]; }
    const unsigned char* Status(unsigned flat) const { return status[presets[flat]]; }
};

// Whether every value of S is an index inside low .. high: an unsigned
// 8- or 16-bit source under a table that covers its whole range needs no
// limiting at all.
template <class S>
constexpr bool kNarrowUnsigned = std::is_integral_v<S> && std::is_unsigned_v<S> && sizeof(S) <= 2;
template <class S>
inline bool CoversType(unsigned short low, unsigned short high)
{
    if constexpr (kNarrowUnsigned<S>) return low == 0 && high >= std::numeric_limits<S>::max();
    else return false;
}

// Table index with or without the limits (kFull: CoversType was true).
template <bool kFull, class S>
inline unsigned int LUTIndexOf(S v, unsigned short low, unsigned short high)
{
    if constexpr (kFull && kNarrowUnsigned<S>) return unsigned(v);
    else return LUTIndex(v, low, high);
}

// The longest run of table entries low .. high whose status is zero (low >
// high when there is none worth using). Status tables flag the ends of the
// calibrated range; the pixels of a frame mostly lie between.
struct SZeroRun {
    unsigned int low, high;
};
SZeroRun LongestZeroRun(const unsigned char* lutStatus, unsigned int entries);
constexpr unsigned int kZeroRunPixels = 4096;

// The unsigned 16-bit to float loop, the one every counts frame takes: the
// plain loop and the AVX2 loop (false where the processor has none). Both
// copy table bits, so their results are identical.
void ApplyLUTU16Plain(const uint16_t* src, float* dst, unsigned char* status, unsigned int count, const float* lut,
                      const unsigned char* lutStatus, unsigned short low, unsigned short high);
bool ApplyLUTU16Wide(const uint16_t* src, float* dst, unsigned char* status, unsigned int count, const float* lut,
                     const unsigned char* lutStatus, unsigned short low, unsigned short high);
// The same with a table per pixel by its preset byte (luts and statuses
// indexed by the byte): blocks of pixels that share their preset take the
// AVX2 loop with that table.
bool ApplyLUTU16PresetsWide(const uint16_t* src, const unsigned char* presets, float* dst, unsigned char* status,
                            unsigned int count, const float* const* luts, const unsigned char* const* statuses,
                            unsigned short low, unsigned short high);
inline void ApplyLUTU16(const uint16_t* src, float* dst, unsigned char* status, unsigned int count, const float* lut,
                        const unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    if (!ApplyLUTU16Wide(src, dst, status, count, lut, lutStatus, low, high))
        ApplyLUTU16Plain(src, dst, status, count, lut, lutStatus, low, high);
}

template <class S, class D, class Tables, bool kStatus, bool kFull = false>
struct TApplyLUTBody {
    static constexpr bool kNeedsXY = false;
    const S* src;
    D* dst;
    unsigned char* status;
    Tables tables;
    unsigned short low, high;
    void operator()(size_t flat, size_t i, unsigned, unsigned) const
    {
        const unsigned idx = LUTIndexOf<kFull>(src[flat], low, high);
        dst[i] = ConvertValue<D>(tables.Values(flat)[idx]);
        if constexpr (kStatus) status[i] = tables.Status(flat)[idx];
    }
};

// The dense single-table form, with the pointers in restrict locals: a
// status store through a byte pointer would otherwise make the compiler
// reload every pointer and bound at each pixel. The status bytes of eight
// pixels go out as one word: stored byte by byte they halve the loop's speed.
template <class S, class D, bool kStatus, bool kFull>
void ApplyLUTDense(const S* __restrict src, D* __restrict dst, unsigned char* __restrict status, unsigned int count,
                   const float* __restrict lut, const unsigned char* __restrict lutStatus, unsigned short low,
                   unsigned short high)
{
    unsigned int i = 0;
    if constexpr (kStatus) {
        for (; i + 8 <= count; i += 8) {
            uint64_t word = 0;
            for (unsigned int k = 0; k < 8; ++k) {
                const unsigned idx = LUTIndexOf<kFull>(src[i + k], low, high);
                dst[i + k] = ConvertValue<D>(lut[idx]);
                const unsigned shift = std::endian::native == std::endian::little ? 8 * k : 56 - 8 * k;
                word |= uint64_t(lutStatus[idx]) << shift;
            }
            std::memcpy(status + i, &word, 8);
        }
    }
    for (; i < count; ++i) {
        const unsigned idx = LUTIndexOf<kFull>(src[i], low, high);
        dst[i] = ConvertValue<D>(lut[idx]);
        if constexpr (kStatus) status[i] = lutStatus[idx];
    }
}

template <class S, class D, class Tables, class W>
void ApplyLUTWalk(const void* source, void* destination, unsigned char* status, const W& walk, Tables tables,
                  unsigned short low, unsigned short high)
{
    const S* src = static_cast<const S*>(source);
    D* dst = static_cast<D*>(destination);
    const bool full = CoversType<S>(low, high);
    if constexpr (std::is_same_v<W, SWalkCount> && std::is_same_v<Tables, SLUTOne>) {
        if constexpr (std::is_same_v<S, uint16_t> && std::is_same_v<D, float>)
            return ApplyLUTU16(src, dst, status, walk.count, tables.lut, tables.status, low, high);
        const unsigned n = walk.count;
        if constexpr (kNarrowUnsigned<S>) {
            if (full) {
                if (status) ApplyLUTDense<S, D, true, true>(src, dst, status, n, tables.lut, tables.status, low, high);
                else ApplyLUTDense<S, D, false, true>(src, dst, nullptr, n, tables.lut, tables.status, low, high);
                return;
            }
        }
        if (status) ApplyLUTDense<S, D, true, false>(src, dst, status, n, tables.lut, tables.status, low, high);
        else ApplyLUTDense<S, D, false, false>(src, dst, nullptr, n, tables.lut, tables.status, low, high);
        return;
    }
    if constexpr (std::is_same_v<W, SWalkCount> && std::is_same_v<Tables, SLUTPresets> &&
                  std::is_same_v<S, uint16_t> && std::is_same_v<D, float>) {
        if (ApplyLUTU16PresetsWide(src, tables.presets, dst, status, walk.count, tables.lut, tables.status, low, high))
            return;
    }
    // The limits matter only where a source value can fall outside them.
    if constexpr (kNarrowUnsigned<S>) {
        if (full) {
            if (status) {
                TApplyLUTBody<S, D, Tables, true, true> body{src, dst, status, tables, low, high};
                walk(body);
            } else {
                TApplyLUTBody<S, D, Tables, false, true> body{src, dst, nullptr, tables, low, high};
                walk(body);
            }
            return;
        }
    }
    if (status) {
        TApplyLUTBody<S, D, Tables, true> body{src, dst, status, tables, low, high};
        walk(body);
    } else {
        TApplyLUTBody<S, D, Tables, false> body{src, dst, nullptr, tables, low, high};
        walk(body);
    }
}

template <class S, class D>
void ApplyLUT(const void* s, void* d, unsigned char* st, unsigned int count, float* lut, unsigned char* ls,
              unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkCount{count}, SLUTOne{lut, ls}, lo, hi);
}
template <class S, class D>
void ApplyLUTIdx(const void* s, void* d, unsigned char* st, unsigned int const* indices, unsigned int count,
                 float* lut, unsigned char* ls, unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkIndices{indices, count, 0}, SLUTOne{lut, ls}, lo, hi);
}
template <class S, class D>
void ApplyLUTRect(const void* s, void* d, unsigned char* st, unsigned short w, unsigned short, SArea area,
                  float* lut, unsigned char* ls, unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkRect{w, area}, SLUTOne{lut, ls}, lo, hi);
}
template <class S, class D>
void ApplyLUTScanLines(const void* s, void* d, unsigned char* st, unsigned short w, unsigned short,
                       TArray<SScanLine> const& lines, float* lut, unsigned char* ls, unsigned short lo,
                       unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkScanLines{w, &lines}, SLUTOne{lut, ls}, lo, hi);
}
template <class S, class D>
void ApplyLUTMask(const void* s, void* d, unsigned char* st, unsigned short w, unsigned short, SArea area,
                  unsigned char const* mask, unsigned int stride, float* lut, unsigned char* ls, unsigned short lo,
                  unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkMask{w, area, mask, stride}, SLUTOne{lut, ls}, lo, hi);
}

template <class S, class D>
void ApplyLUTPS(const void* s, unsigned char const* p, void* d, unsigned char* st, unsigned int count, float** lut,
                unsigned char** ls, unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkCount{count}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S, class D>
void ApplyLUTPSIdx(const void* s, unsigned char const* p, void* d, unsigned char* st, unsigned int const* indices,
                   unsigned int count, float** lut, unsigned char** ls, unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkIndices{indices, count, 0}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S, class D>
void ApplyLUTRectPS(const void* s, unsigned char const* p, void* d, unsigned char* st, unsigned short w,
                    unsigned short, SArea area, float** lut, unsigned char** ls, unsigned short lo,
                    unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkRect{w, area}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S, class D>
void ApplyLUTScanLinesPS(const void* s, unsigned char const* p, void* d, unsigned char* st, unsigned short w,
                         unsigned short, TArray<SScanLine> const& lines, float** lut, unsigned char** ls,
                         unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkScanLines{w, &lines}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S, class D>
void ApplyLUTMaskPS(const void* s, unsigned char const* p, void* d, unsigned char* st, unsigned short w,
                    unsigned short, SArea area, unsigned char const* mask, unsigned int stride, float** lut,
                    unsigned char** ls, unsigned short lo, unsigned short hi)
{
    ApplyLUTWalk<S, D>(s, d, st, SWalkMask{w, area, mask, stride}, SLUTPresets{lut, ls, p}, lo, hi);
}

using TApplyLUTKernel = void (*)(const void*, void*, unsigned char*, unsigned int, float*, unsigned char*,
                                 unsigned short, unsigned short);
using TApplyLUTIdxKernel = void (*)(const void*, void*, unsigned char*, unsigned int const*, unsigned int, float*,
                                    unsigned char*, unsigned short, unsigned short);
using TApplyLUTRectKernel = void (*)(const void*, void*, unsigned char*, unsigned short, unsigned short, SArea,
                                     float*, unsigned char*, unsigned short, unsigned short);
using TApplyLUTScanLinesKernel = void (*)(const void*, void*, unsigned char*, unsigned short, unsigned short,
                                          TArray<SScanLine> const&, float*, unsigned char*, unsigned short,
                                          unsigned short);
using TApplyLUTMaskKernel = void (*)(const void*, void*, unsigned char*, unsigned short, unsigned short, SArea,
                                     unsigned char const*, unsigned int, float*, unsigned char*, unsigned short,
                                     unsigned short);
using TApplyLUTPSKernel = void (*)(const void*, unsigned char const*, void*, unsigned char*, unsigned int, float**,
                                   unsigned char**, unsigned short, unsigned short);
using TApplyLUTPSIdxKernel = void (*)(const void*, unsigned char const*, void*, unsigned char*,
                                      unsigned int const*, unsigned int, float**, unsigned char**, unsigned short,
                                      unsigned short);
using TApplyLUTRectPSKernel = void (*)(const void*, unsigned char const*, void*, unsigned char*, unsigned short,
                                       unsigned short, SArea, float**, unsigned char**, unsigned short,
                                       unsigned short);
using TApplyLUTScanLinesPSKernel = void (*)(const void*, unsigned char const*, void*, unsigned char*,
                                            unsigned short, unsigned short, TArray<SScanLine> const&, float**,
                                            unsigned char**, unsigned short, unsigned short);
using TApplyLUTMaskPSKernel = void (*)(const void*, unsigned char const*, void*, unsigned char*, unsigned short,
                                       unsigned short, SArea, unsigned char const*, unsigned int, float**,
                                       unsigned char**, unsigned short, unsigned short);

inline bool BadLUTPair(STypedData a, STypedData b)
{
    return unsigned(a.type) > dtFlt64 || unsigned(b.type) > dtFlt64;
}
inline size_t LUTPairIndex(STypedData source, STypedData destination)
{
    return size_t(source.type) * 10 + size_t(destination.type);
}

} // namespace orv::reduce::priv
