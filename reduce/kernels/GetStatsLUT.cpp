// GetStatsLUT: the statistics of looked-up values over every region form,
// tables of ten kernels by source type.
#include "reduce/kernels/LUTKernels.h"

namespace orv::reduce {
namespace priv {

template <class S, class Tables>
struct TStatsLUTBody {
    static constexpr bool kNeedsXY = true;
    const S* src;
    Tables tables;
    unsigned short low, high;
    CStatsCalculator* calc;
    void operator()(size_t flat, size_t, unsigned x, unsigned y) const
    {
        const unsigned idx = LUTIndex(src[flat], low, high);
        calc->AddData(double(tables.Values(flat)[idx]), tables.Status(flat)[idx], int(x), int(y));
    }
};

template <class S, class Tables, class W>
bool StatsLUTWalk(const void* source, CStats& stats, const W& walk, Tables tables, unsigned short low,
                  unsigned short high)
{
    CStatsCalculator calc(stats);
    calc.Start();
    TStatsLUTBody<S, Tables> body{static_cast<const S*>(source), tables, low, high, &calc};
    walk(body);
    calc.Finish();
    return true;
}

inline SArea FrameArea(unsigned short width, unsigned short height)
{
    // A zero height walks nothing: only Start and Finish run.
    if (width == 0 || height == 0) return SArea{1, 1, 0, 0};
    return SArea{0, 0, uint16_t(height - 1), uint16_t(width - 1)};
}

// Index lists need a width for the coordinates.
inline SWalkIndices IndexWalk(unsigned int const* indices, unsigned int count, unsigned short width)
{
    return width ? SWalkIndices{indices, count, width} : SWalkIndices{indices, 0, 1};
}

template <class S>
bool GetStatsLUT(const void* s, CStats& st, unsigned short w, unsigned short h, float* lut, unsigned char* ls,
                 unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkRect{w, FrameArea(w, h)}, SLUTOne{lut, ls}, lo, hi);
}
template <class S>
bool GetStatsLUTIdx(const void* s, CStats& st, unsigned short w, unsigned short, unsigned int const* indices,
                    unsigned int count, float* lut, unsigned char* ls, unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, IndexWalk(indices, count, w), SLUTOne{lut, ls}, lo, hi);
}
template <class S>
bool GetStatsLUTRect(const void* s, CStats& st, unsigned short w, unsigned short, SArea area, float* lut,
                     unsigned char* ls, unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkRect{w, area}, SLUTOne{lut, ls}, lo, hi);
}
template <class S>
bool GetStatsLUTScanLines(const void* s, CStats& st, unsigned short w, unsigned short,
                          TArray<SScanLine> const& lines, float* lut, unsigned char* ls, unsigned short lo,
                          unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkScanLines{w, &lines}, SLUTOne{lut, ls}, lo, hi);
}
template <class S>
bool GetStatsLUTMask(const void* s, CStats& st, unsigned short w, unsigned short, SArea area,
                     unsigned char const* mask, unsigned int stride, float* lut, unsigned char* ls,
                     unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkMask{w, area, mask, stride}, SLUTOne{lut, ls}, lo, hi);
}
template <class S>
bool GetStatsLUTPS(const void* s, unsigned char const* p, CStats& st, unsigned short w, unsigned short h,
                   float** lut, unsigned char** ls, unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkRect{w, FrameArea(w, h)}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S>
bool GetStatsLUTPSIdx(const void* s, unsigned char const* p, CStats& st, unsigned short w, unsigned short,
                      unsigned int const* indices, unsigned int count, float** lut, unsigned char** ls,
                      unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, IndexWalk(indices, count, w), SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S>
bool GetStatsLUTRectPS(const void* s, unsigned char const* p, CStats& st, unsigned short w, unsigned short,
                       SArea area, float** lut, unsigned char** ls, unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkRect{w, area}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S>
bool GetStatsLUTScanLinesPS(const void* s, unsigned char const* p, CStats& st, unsigned short w, unsigned short,
                            TArray<SScanLine> const& lines, float** lut, unsigned char** ls, unsigned short lo,
                            unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkScanLines{w, &lines}, SLUTPresets{lut, ls, p}, lo, hi);
}
template <class S>
bool GetStatsLUTMaskPS(const void* s, unsigned char const* p, CStats& st, unsigned short w, unsigned short,
                       SArea area, unsigned char const* mask, unsigned int stride, float** lut, unsigned char** ls,
                       unsigned short lo, unsigned short hi)
{
    return StatsLUTWalk<S>(s, st, SWalkMask{w, area, mask, stride}, SLUTPresets{lut, ls, p}, lo, hi);
}

namespace {
using K1 = bool (*)(const void*, CStats&, unsigned short, unsigned short, float*, unsigned char*, unsigned short,
                    unsigned short);
using K2 = bool (*)(const void*, CStats&, unsigned short, unsigned short, unsigned int const*, unsigned int, float*,
                    unsigned char*, unsigned short, unsigned short);
using K3 = bool (*)(const void*, CStats&, unsigned short, unsigned short, SArea, float*, unsigned char*,
                    unsigned short, unsigned short);
using K4 = bool (*)(const void*, CStats&, unsigned short, unsigned short, TArray<SScanLine> const&, float*,
                    unsigned char*, unsigned short, unsigned short);
using K5 = bool (*)(const void*, CStats&, unsigned short, unsigned short, SArea, unsigned char const*, unsigned int,
                    float*, unsigned char*, unsigned short, unsigned short);
using P1 = bool (*)(const void*, unsigned char const*, CStats&, unsigned short, unsigned short, float**,
                    unsigned char**, unsigned short, unsigned short);
using P2 = bool (*)(const void*, unsigned char const*, CStats&, unsigned short, unsigned short, unsigned int const*,
                    unsigned int, float**, unsigned char**, unsigned short, unsigned short);
using P3 = bool (*)(const void*, unsigned char const*, CStats&, unsigned short, unsigned short, SArea, float**,
                    unsigned char**, unsigned short, unsigned short);
using P4 = bool (*)(const void*, unsigned char const*, CStats&, unsigned short, unsigned short,
                    TArray<SScanLine> const&, float**, unsigned char**, unsigned short, unsigned short);
using P5 = bool (*)(const void*, unsigned char const*, CStats&, unsigned short, unsigned short, SArea,
                    unsigned char const*, unsigned int, float**, unsigned char**, unsigned short, unsigned short);

ORV_TYPE_TABLE(K1, vecGetStatsLUT, GetStatsLUT);
ORV_TYPE_TABLE(K2, vecGetStatsLUTIdx, GetStatsLUTIdx);
ORV_TYPE_TABLE(K3, vecGetStatsLUTRect, GetStatsLUTRect);
ORV_TYPE_TABLE(K4, vecGetStatsLUTScanLines, GetStatsLUTScanLines);
ORV_TYPE_TABLE(K5, vecGetStatsLUTMask, GetStatsLUTMask);
ORV_TYPE_TABLE(P1, vecGetStatsLUTPS, GetStatsLUTPS);
ORV_TYPE_TABLE(P2, vecGetStatsLUTPSIdx, GetStatsLUTPSIdx);
ORV_TYPE_TABLE(P3, vecGetStatsLUTRectPS, GetStatsLUTRectPS);
ORV_TYPE_TABLE(P4, vecGetStatsLUTScanLinesPS, GetStatsLUTScanLinesPS);
ORV_TYPE_TABLE(P5, vecGetStatsLUTMaskPS, GetStatsLUTMaskPS);
} // namespace

} // namespace priv

using namespace priv;

#define ORV_STATS_LUT_CHECK(source) \
    if (unsigned(source.type) > dtFlt64) return false

bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, float* lut,
                 unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUT[source.type](source.data, stats, width, height, lut, lutStatus, low, high);
}

bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height,
                 unsigned int const* indices, unsigned int count, float* lut, unsigned char* lutStatus,
                 unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTIdx[source.type](source.data, stats, width, height, indices, count, lut, lutStatus, low,
                                          high);
}

bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, SArea area,
                 float* lut, unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTRect[source.type](source.data, stats, width, height, area, lut, lutStatus, low, high);
}

bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height,
                 TArray<SScanLine> const& lines, float* lut, unsigned char* lutStatus, unsigned short low,
                 unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTScanLines[source.type](source.data, stats, width, height, lines, lut, lutStatus, low, high);
}

bool GetStatsLUT(STypedData source, CStats& stats, unsigned short width, unsigned short height, SArea area,
                 unsigned char const* mask, unsigned int maskStride, float* lut, unsigned char* lutStatus,
                 unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTMask[source.type](source.data, stats, width, height, area, mask, maskStride, lut, lutStatus,
                                           low, high);
}

bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, float** lut, unsigned char** lutStatus, unsigned short low,
                 unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTPS[source.type](source.data, presets, stats, width, height, lut, lutStatus, low, high);
}

bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, unsigned int const* indices, unsigned int count, float** lut,
                 unsigned char** lutStatus, unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTPSIdx[source.type](source.data, presets, stats, width, height, indices, count, lut,
                                            lutStatus, low, high);
}

bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, SArea area, float** lut, unsigned char** lutStatus, unsigned short low,
                 unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTRectPS[source.type](source.data, presets, stats, width, height, area, lut, lutStatus, low,
                                             high);
}

bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, TArray<SScanLine> const& lines, float** lut, unsigned char** lutStatus,
                 unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTScanLinesPS[source.type](source.data, presets, stats, width, height, lines, lut, lutStatus,
                                                  low, high);
}

bool GetStatsLUT(STypedData source, unsigned char const* presets, CStats& stats, unsigned short width,
                 unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride,
                 float** lut, unsigned char** lutStatus, unsigned short low, unsigned short high)
{
    ORV_STATS_LUT_CHECK(source);
    return vecGetStatsLUTMaskPS[source.type](source.data, presets, stats, width, height, area, mask, maskStride,
                                             lut, lutStatus, low, high);
}

#undef ORV_STATS_LUT_CHECK

} // namespace orv::reduce
