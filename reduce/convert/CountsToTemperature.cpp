// Counts to temperature with one preset, all regions.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

#define ORV_COUNTS_TABLE(name, W)                                                                                      \
    const TSourceByFloat<TCountsToTemperatureKernel<W>> name =                                                         \
        SourceByFloatTable<TCountsToTemperatureKernel<W>, TCountsToTemperature<W>::K>()
ORV_COUNTS_TABLE(vecCountsToTemperatureImg, SWalkCount);
ORV_COUNTS_TABLE(vecCountsToTemperatureIdx, SWalkIndices);
ORV_COUNTS_TABLE(vecCountsToTemperatureRect, SWalkRect);
ORV_COUNTS_TABLE(vecCountsToTemperatureScanLines, SWalkScanLines);
ORV_COUNTS_TABLE(vecCountsToTemperatureMask, SWalkMask);
#undef ORV_COUNTS_TABLE

bool CountsToTemperature(STypedData src, STypedData dst, unsigned int n, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureImg[t](src.data, dst.data, SWalkCount{n}, PolyOf(radiance, common.scale),
                                        TempSetOf(&temperature, 1, common, nullptr));
}

bool CountsToTemperature(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                         const SRadianceParams& radiance, const STemperatureParams& temperature,
                         const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureIdx[t](src.data, dst.data, SWalkIndices{indices, n, 0}, PolyOf(radiance, common.scale),
                                        TempSetOf(&temperature, 1, common, nullptr));
}

bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                         const SRadianceParams& radiance, const STemperatureParams& temperature,
                         const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureRect[t](src.data, dst.data, SWalkRect{width, area}, PolyOf(radiance, common.scale),
                                         TempSetOf(&temperature, 1, common, nullptr));
}

bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short,
                         const TArray<SScanLine>& lines, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureScanLines[t](src.data, dst.data, SWalkScanLines{width, &lines},
                                              PolyOf(radiance, common.scale),
                                              TempSetOf(&temperature, 1, common, nullptr));
}

bool CountsToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, const SRadianceParams& radiance,
                         const STemperatureParams& temperature, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    return vecCountsToTemperatureMask[t](src.data, dst.data, SWalkMask{width, area, mask, maskWidth},
                                         PolyOf(radiance, common.scale), TempSetOf(&temperature, 1, common, nullptr));
}

} // namespace orv::reduce
