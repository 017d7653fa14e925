#pragma once
// The ConvertSubArray and GetImageData kernels, templates over
// <Source, Destination>, and their tables (defined in ConvertSubArray.cpp and
// GetImageData.cpp).
#include <array>

#include "reduce/kernels/RegionWalk.h"

namespace orv::reduce::priv {

template <class S, class D, bool kStatus>
struct TConvertBody {
    static constexpr bool kNeedsXY = false;
    const S* src;
    D* dst;
    unsigned char* status;
    void operator()(size_t flat, size_t i, unsigned, unsigned) const
    {
        dst[i] = ConvertValue<D>(src[flat]);
        if constexpr (kStatus) status[i] = 0;
    }
};

// kRowStart: read the first element of the pixel's row instead of the pixel.
template <class S, class D, bool kRowStart>
struct TGatherBody {
    static constexpr bool kNeedsXY = kRowStart;
    const S* src;
    const unsigned char* srcStatus;
    D* dst;
    unsigned char* status;
    void operator()(size_t flat, size_t i, unsigned x, unsigned) const
    {
        const unsigned at = kRowStart ? flat - x : flat;
        dst[i] = ConvertValue<D>(src[at]);
        status[i] = srcStatus[at];
    }
};

template <class S, class D, class W>
void ConvertSubArrayWalk(const void* source, void* destination, unsigned char* status, const W& walk)
{
    if (status) {
        TConvertBody<S, D, true> body{static_cast<const S*>(source), static_cast<D*>(destination), status};
        walk(body);
    } else {
        TConvertBody<S, D, false> body{static_cast<const S*>(source), static_cast<D*>(destination), nullptr};
        walk(body);
    }
}

template <class S, class D>
void ConvertSubArray(const void* source, void* destination, unsigned char* status, unsigned int const* indices,
                     unsigned int count)
{
    ConvertSubArrayWalk<S, D>(source, destination, status, SWalkIndices{indices, count, 0});
}

template <class S, class D>
void ConvertSubArrayRect(const void* source, void* destination, unsigned char* status, unsigned short width,
                         unsigned short, SArea area)
{
    ConvertSubArrayWalk<S, D>(source, destination, status, SWalkRect{width, area});
}

template <class S, class D>
void ConvertSubArrayScanLines(const void* source, void* destination, unsigned char* status, unsigned short width,
                              unsigned short, TArray<SScanLine> const& lines)
{
    ConvertSubArrayWalk<S, D>(source, destination, status, SWalkScanLines{width, &lines});
}

template <class S, class D>
void ConvertSubArrayMask(const void* source, void* destination, unsigned char* status, unsigned short width,
                         unsigned short, SArea area, unsigned char const* mask, unsigned int maskStride)
{
    ConvertSubArrayWalk<S, D>(source, destination, status, SWalkMask{width, area, mask, maskStride});
}

template <class S, class D, bool kRowStart, class W>
void GetImageDataWalk(const void* source, const unsigned char* sourceStatus, void* destination,
                      unsigned char* status, const W& walk)
{
    TGatherBody<S, D, kRowStart> body{static_cast<const S*>(source), sourceStatus, static_cast<D*>(destination),
                                      status};
    walk(body);
}

template <class S, class D>
void GetImageData(const void* source, const unsigned char* sourceStatus, void* destination, unsigned char* status,
                  unsigned int const* indices, unsigned int count)
{
    GetImageDataWalk<S, D, false>(source, sourceStatus, destination, status, SWalkIndices{indices, count, 0});
}

// The rectangle and scan-line gathers read column 0 of each row for every
// pixel of the run: intended, callers rely on it.
template <class S, class D>
void GetImageDataRect(const void* source, const unsigned char* sourceStatus, void* destination,
                      unsigned char* status, unsigned short width, unsigned short, SArea area)
{
    GetImageDataWalk<S, D, true>(source, sourceStatus, destination, status, SWalkRect{width, area});
}

template <class S, class D>
void GetImageDataScanLines(const void* source, const unsigned char* sourceStatus, void* destination,
                           unsigned char* status, unsigned short width, unsigned short,
                           TArray<SScanLine> const& lines)
{
    GetImageDataWalk<S, D, true>(source, sourceStatus, destination, status, SWalkScanLines{width, &lines});
}

template <class S, class D>
void GetImageDataMask(const void* source, const unsigned char* sourceStatus, void* destination,
                      unsigned char* status, unsigned short width, unsigned short, SArea area,
                      unsigned char const* mask, unsigned int maskStride)
{
    GetImageDataWalk<S, D, false>(source, sourceStatus, destination, status,
                                  SWalkMask{width, area, mask, maskStride});
}

using TConvertSubArrayKernel = void (*)(const void*, void*, unsigned char*, unsigned int const*, unsigned int);
using TConvertSubArrayRectKernel = void (*)(const void*, void*, unsigned char*, unsigned short, unsigned short,
                                            SArea);
using TConvertSubArrayScanLinesKernel = void (*)(const void*, void*, unsigned char*, unsigned short,
                                                 unsigned short, TArray<SScanLine> const&);
using TConvertSubArrayMaskKernel = void (*)(const void*, void*, unsigned char*, unsigned short, unsigned short,
                                            SArea, unsigned char const*, unsigned int);

extern const std::array<TConvertSubArrayKernel, 100> vecConvertSubArray;
extern const std::array<TConvertSubArrayRectKernel, 100> vecConvertSubArrayRect;
extern const std::array<TConvertSubArrayScanLinesKernel, 100> vecConvertSubArrayScanLines;
extern const std::array<TConvertSubArrayMaskKernel, 100> vecConvertSubArrayMask;

} // namespace orv::reduce::priv
