// Counts to temperature with a preset per pixel: radiance and temperature
// of each pixel in one pass, all regions.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

#define ORV_COUNTS_TABLE(name, W)                                                                                      \
    const TSourceByFloat<TCountsToTemperaturePSKernel<W>> name =                                                       \
        SourceByFloatTable<TCountsToTemperaturePSKernel<W>, TCountsToTemperaturePS<W>::K>()
ORV_COUNTS_TABLE(vecCountsToTemperatureImgPS, SWalkCount);
ORV_COUNTS_TABLE(vecCountsToTemperatureIdxPS, SWalkIndices);
ORV_COUNTS_TABLE(vecCountsToTemperatureRectPS, SWalkRect);
ORV_COUNTS_TABLE(vecCountsToTemperatureScanLinesPS, SWalkScanLines);
ORV_COUNTS_TABLE(vecCountsToTemperatureMaskPS, SWalkMask);
#undef ORV_COUNTS_TABLE

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                         const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureImgPS[t](src.data, dst.data, SWalkCount{n},
                                          PolySetOf(presetIndex, presetActive, radiance, common.scale),
                                          TempSetOf(temperature, 8, common, presetIndex));
}

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, const unsigned int* indices,
                         unsigned int n, const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureIdxPS[t](src.data, dst.data, SWalkIndices{indices, n, 0},
                                          PolySetOf(presetIndex, presetActive, radiance, common.scale),
                                          TempSetOf(temperature, 8, common, presetIndex));
}

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureRectPS[t](src.data, dst.data, SWalkRect{width, area},
                                           PolySetOf(presetIndex, presetActive, radiance, common.scale),
                                           TempSetOf(temperature, 8, common, presetIndex));
}

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, const TArray<SScanLine>& lines, const bool* presetActive,
                         const SRadianceParams* radiance, const STemperatureParams* temperature,
                         const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureScanLinesPS[t](src.data, dst.data, SWalkScanLines{width, &lines},
                                                PolySetOf(presetIndex, presetActive, radiance, common.scale),
                                                TempSetOf(temperature, 8, common, presetIndex));
}

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth,
                         const bool* presetActive, const SRadianceParams* radiance,
                         const STemperatureParams* temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureMaskPS[t](src.data, dst.data, SWalkMask{width, area, mask, maskWidth},
                                           PolySetOf(presetIndex, presetActive, radiance, common.scale),
                                           TempSetOf(temperature, 8, common, presetIndex));
}

} // namespace orv::reduce
