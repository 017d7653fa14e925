// Radiance with a preset per pixel: the CountsToRadiance PS forms over all
// regions and the ToRadiance PS shapes over whole frames and index lists.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

#define ORV_PS_TABLE(name, W, kStatus)                                                                                 \
    const TSourceByFloat<TRadiancePSKernel<W>> name =                                                                  \
        SourceByFloatTable<TRadiancePSKernel<W>, TRadiancePS<W, kStatus>::K>()
ORV_PS_TABLE(vecCountsToRadianceImgPS, SWalkCount, false);
ORV_PS_TABLE(vecCountsToRadianceIdxPS, SWalkIndices, false);
ORV_PS_TABLE(vecCountsToRadianceRectPS, SWalkRect, false);
ORV_PS_TABLE(vecCountsToRadianceScanLinesPS, SWalkScanLines, false);
ORV_PS_TABLE(vecCountsToRadianceMaskPS, SWalkMask, false);
ORV_PS_TABLE(vecToRadianceImgStatusPS, SWalkCount, true);
ORV_PS_TABLE(vecToRadianceIdxStatusPS, SWalkIndices, true);
#undef ORV_PS_TABLE

namespace {

template <class W>
bool Run(const TSourceByFloat<TRadiancePSKernel<W>>& table, STypedData src, STypedData dst, const W& walk,
         const SPolyPS& set)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    table[t](src.data, dst.data, walk, set, nullptr);
    return true;
}

// Without a status array no limits apply.
template <class W>
bool RunStatus(const TSourceByFloat<TRadiancePSKernel<W>>& withStatus,
               const TSourceByFloat<TRadiancePSKernel<W>>& plain, STypedData src, STypedData dst, const W& walk,
               const SPolyPS& set, unsigned char* status)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    // Unsigned 64-bit sources are not offered with limits: intended.
    if (t < 0 || src.type == dtUInt64) return false;
    (status ? withStatus : plain)[t](src.data, dst.data, walk, set, status);
    return true;
}

// The ToRadiance records: every parameter by preset, a scalar background or
// a per-pixel one by preset.
SPolyPS SetOf(const unsigned char* presetIndex, double** coefficients, int* orders, const double* backgrounds,
              double* const* images, double* scales)
{
    SPolyPS set;
    set.presetIndex = presetIndex;
    for (int p = 0; p < 8; ++p)
        set.preset[p] = SPoly{coefficients[p], orders[p], backgrounds ? backgrounds[p] : 0.0,
                              images ? images[p] : nullptr, scales[p]};
    return set;
}

SPolyPS WithLimits(SPolyPS set, double* validLows, double* validHighs, double* clampLows, double* clampHighs)
{
    for (int p = 0; p < 8; ++p) set.limits[p] = SLimits{validLows[p], validHighs[p], clampLows[p], clampHighs[p]};
    return set;
}

} // namespace

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                      const bool* presetActive, const SRadianceParams* params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceImgPS, src, dst, SWalkCount{n},
               PolySetOf(presetIndex, presetActive, params, common.scale));
}

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, const unsigned int* indices,
                      unsigned int n, const bool* presetActive, const SRadianceParams* params,
                      const SCommonParams& common)
{
    return Run(vecCountsToRadianceIdxPS, src, dst, SWalkIndices{indices, n, 0},
               PolySetOf(presetIndex, presetActive, params, common.scale));
}

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short, SArea area, const bool* presetActive, const SRadianceParams* params,
                      const SCommonParams& common)
{
    return Run(vecCountsToRadianceRectPS, src, dst, SWalkRect{width, area},
               PolySetOf(presetIndex, presetActive, params, common.scale));
}

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short, const TArray<SScanLine>& lines, const bool* presetActive,
                      const SRadianceParams* params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceScanLinesPS, src, dst, SWalkScanLines{width, &lines},
               PolySetOf(presetIndex, presetActive, params, common.scale));
}

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                      unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth,
                      const bool* presetActive, const SRadianceParams* params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceMaskPS, src, dst, SWalkMask{width, area, mask, maskWidth},
               PolySetOf(presetIndex, presetActive, params, common.scale));
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double** coefficients,
                int* orders, double* backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return Run(vecCountsToRadianceImgPS, src, dst, SWalkCount{n},
               SetOf(presetIndex, coefficients, orders, backgrounds, nullptr, scales));
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double** coefficients,
                int* orders, double** backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return Run(vecCountsToRadianceImgPS, src, dst, SWalkCount{n},
               SetOf(presetIndex, coefficients, orders, nullptr, backgrounds, scales));
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                unsigned int n, double** coefficients, int* orders, double* backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return Run(vecCountsToRadianceIdxPS, src, dst, SWalkIndices{indices, n, 0},
               SetOf(presetIndex, coefficients, orders, backgrounds, nullptr, scales));
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                unsigned int n, double** coefficients, int* orders, double** backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return Run(vecCountsToRadianceIdxPS, src, dst, SWalkIndices{indices, n, 0},
               SetOf(presetIndex, coefficients, orders, nullptr, backgrounds, scales));
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned char* presetIndex, unsigned int n,
                double* validLows, double* validHighs, double* clampLows, double* clampHighs, double** coefficients,
                int* orders, double* backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return RunStatus(vecToRadianceImgStatusPS, vecCountsToRadianceImgPS, src, dst, SWalkCount{n},
                     WithLimits(SetOf(presetIndex, coefficients, orders, backgrounds, nullptr, scales), validLows,
                                validHighs, clampLows, clampHighs),
                     status);
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned char* presetIndex, unsigned int n,
                double* validLows, double* validHighs, double* clampLows, double* clampHighs, double** coefficients,
                int* orders, double** backgrounds, double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return RunStatus(vecToRadianceImgStatusPS, vecCountsToRadianceImgPS, src, dst, SWalkCount{n},
                     WithLimits(SetOf(presetIndex, coefficients, orders, nullptr, backgrounds, scales), validLows,
                                validHighs, clampLows, clampHighs),
                     status);
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices,
                const unsigned char* presetIndex, unsigned int n, double* validLows, double* validHighs,
                double* clampLows, double* clampHighs, double** coefficients, int* orders, double* backgrounds,
                double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return RunStatus(vecToRadianceIdxStatusPS, vecCountsToRadianceIdxPS, src, dst, SWalkIndices{indices, n, 0},
                     WithLimits(SetOf(presetIndex, coefficients, orders, backgrounds, nullptr, scales), validLows,
                                validHighs, clampLows, clampHighs),
                     status);
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices,
                const unsigned char* presetIndex, unsigned int n, double* validLows, double* validHighs,
                double* clampLows, double* clampHighs, double** coefficients, int* orders, double** backgrounds,
                double* scales)
{
    if (SourceByFloatIndex(src.type, dst.type) < 0) return false;
    return RunStatus(vecToRadianceIdxStatusPS, vecCountsToRadianceIdxPS, src, dst, SWalkIndices{indices, n, 0},
                     WithLimits(SetOf(presetIndex, coefficients, orders, nullptr, backgrounds, scales), validLows,
                                validHighs, clampLows, clampHighs),
                     status);
}

} // namespace orv::reduce
