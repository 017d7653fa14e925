// GetStats over a rectangle, the whole frame, scan lines, an index list and
// a masked rectangle: tables of ten kernels by element type.
#include <array>

#include "reduce/kernels/StatsKernels.h"

namespace orv::reduce {
namespace priv {

template <class T>
bool GetStatsRect(CStats& stats, const void* data, const unsigned char* status, unsigned short width,
                  unsigned short, SArea area)
{
    ResetStats(stats);
    SStatsAcc acc;
    AccumulateRect(static_cast<const T*>(data), status, width, area, acc);
    FinishStats(stats, acc, status != nullptr, width, SStatsBox::Of(area));
    return true;
}

template <class T>
bool GetStatsScanLines(CStats& stats, const void* data, const unsigned char* status, unsigned short width,
                       unsigned short, TArray<SScanLine> const& lines)
{
    ResetStats(stats);
    SStatsAcc acc;
    SStatsBox box;
    // Each line is a contiguous run for the block pass, as rectangle rows
    // are; the walker redoes the lot when a run meets a NaN.
    const T* p = static_cast<const T*>(data);
    const bool done = status ? RunLineStats<T, true>(p, status, width, lines, acc, box)
                             : RunLineStats<T, false>(p, nullptr, width, lines, acc, box);
    if (!done) {
        acc = SStatsAcc{};
        box = SStatsBox{};
        WalkStats<T, true>(p, status, SWalkScanLines{width, &lines}, acc, box);
    }
    FinishStats(stats, acc, status != nullptr, width, box);
    return true;
}

template <class T>
bool GetStatsIndicies(CStats& stats, const void* data, const unsigned char* status, unsigned short width,
                      unsigned short, unsigned int const* indices, unsigned int count)
{
    ResetStats(stats);
    SStatsAcc acc;
    SStatsBox box;
    if (count && width) {
        // The first pixel's place is kept to 16 bits.
        box.any = true;
        box.x0 = box.x1 = uint16_t(indices[0] % width);
        box.y0 = box.y1 = uint16_t(indices[0] / width);
    }
    WalkStats<T, true>(static_cast<const T*>(data), status, SWalkIndices{indices, count, width ? width : 1u}, acc,
                       box);
    FinishStats(stats, acc, status != nullptr, width, box);
    return true;
}

using TGetStatsRectKernel = bool (*)(CStats&, const void*, const unsigned char*, unsigned short, unsigned short,
                                     SArea);
using TGetStatsScanLinesKernel = bool (*)(CStats&, const void*, const unsigned char*, unsigned short,
                                          unsigned short, TArray<SScanLine> const&);
using TGetStatsIndiciesKernel = bool (*)(CStats&, const void*, const unsigned char*, unsigned short,
                                         unsigned short, unsigned int const*, unsigned int);

namespace {
ORV_TYPE_TABLE(TGetStatsRectKernel, vecGetStatsRect, GetStatsRect);
ORV_TYPE_TABLE(TGetStatsScanLinesKernel, vecGetStatsScanLines, GetStatsScanLines);
ORV_TYPE_TABLE(TGetStatsIndiciesKernel, vecGetStatsIndicies, GetStatsIndicies);
// The masked form holds the rectangle kernels: the mask is ignored and the
// figures are those of the whole rectangle. Intended.
constexpr auto& vecGetStatsMask = vecGetStatsRect;
} // namespace

} // namespace priv

bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, SArea area)
{
    if (unsigned(data.type) > dtFlt64) return false;
    return priv::vecGetStatsRect[data.type](stats, data.data, status, width, height, area);
}

bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height)
{
    if (width == 0 || height == 0) return false;
    return GetStats(stats, data, status, width, height,
                    SArea{0, 0, uint16_t(height - 1), uint16_t(width - 1)});
}

bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, TArray<SScanLine> const& lines)
{
    if (unsigned(data.type) > dtFlt64) return false;
    return priv::vecGetStatsScanLines[data.type](stats, data.data, status, width, height, lines);
}

bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, unsigned int const* indices, unsigned int count)
{
    if (unsigned(data.type) > dtFlt64) return false;
    return priv::vecGetStatsIndicies[data.type](stats, data.data, status, width, height, indices, count);
}

bool GetStats(CStats& stats, STypedData data, unsigned char const* status, unsigned short width,
              unsigned short height, SArea area, unsigned char const*, unsigned int)
{
    if (unsigned(data.type) > dtFlt64) return false;
    return priv::vecGetStatsMask[data.type](stats, data.data, status, width, height, area);
}

} // namespace orv::reduce
