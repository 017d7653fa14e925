// Radiance to temperature by the method of each preset, all regions.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureImg, TRadianceToTemperature, SWalkCount, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureIdx, TRadianceToTemperature, SWalkIndices, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureRect, TRadianceToTemperature, SWalkRect, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureScanLines, TRadianceToTemperature, SWalkScanLines, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureMask, TRadianceToTemperature, SWalkMask, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureImgPS, TRadianceToTemperaturePS, SWalkCount, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureIdxPS, TRadianceToTemperaturePS, SWalkIndices, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureRectPS, TRadianceToTemperaturePS, SWalkRect, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureScanLinesPS, TRadianceToTemperaturePS, SWalkScanLines, STempSet);
ORV_TEMPERATURE_TABLE(vecRadianceToTemperatureMaskPS, TRadianceToTemperaturePS, SWalkMask, STempSet);

bool RadianceToTemperature(STypedData src, STypedData dst, unsigned int n, const STemperatureParams& params,
                           const SCommonParams& common)
{
    return RunTemperature(vecRadianceToTemperatureImg, src, dst, SWalkCount{n}, TempSetOf(&params, 1, common, nullptr));
}

bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                           const STemperatureParams& params, const SCommonParams& common)
{
    return RunTemperature(vecRadianceToTemperatureIdx, src, dst, SWalkIndices{indices, n, 0},
                          TempSetOf(&params, 1, common, nullptr));
}

bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                           const STemperatureParams& params, const SCommonParams& common)
{
    return RunTemperature(vecRadianceToTemperatureRect, src, dst, SWalkRect{width, area},
                          TempSetOf(&params, 1, common, nullptr));
}

bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short,
                           const TArray<SScanLine>& lines, const STemperatureParams& params,
                           const SCommonParams& common)
{
    return RunTemperature(vecRadianceToTemperatureScanLines, src, dst, SWalkScanLines{width, &lines},
                          TempSetOf(&params, 1, common, nullptr));
}

bool RadianceToTemperature(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                           const unsigned char* mask, unsigned int maskWidth, const STemperatureParams& params,
                           const SCommonParams& common)
{
    return RunTemperature(vecRadianceToTemperatureMask, src, dst, SWalkMask{width, area, mask, maskWidth},
                          TempSetOf(&params, 1, common, nullptr));
}

// Every preset's method comes from its record; the active flags only matter
// for the per-pixel backgrounds of the counts forms.
bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned int n,
                           const bool*, const STemperatureParams* params, const SCommonParams& common)
{
    if (FloatByFloatIndex(src.type, dst.type) < 0) return false;
    return RunTemperature(vecRadianceToTemperatureImgPS, src, dst, SWalkCount{n},
                          TempSetOf(params, 8, common, presetIndex));
}

bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex,
                           const unsigned int* indices, unsigned int n, const bool*, const STemperatureParams* params,
                           const SCommonParams& common)
{
    if (FloatByFloatIndex(src.type, dst.type) < 0) return false;
    return RunTemperature(vecRadianceToTemperatureIdxPS, src, dst, SWalkIndices{indices, n, 0},
                          TempSetOf(params, 8, common, presetIndex));
}

bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short, SArea area, const bool*, const STemperatureParams* params,
                           const SCommonParams& common)
{
    if (FloatByFloatIndex(src.type, dst.type) < 0) return false;
    return RunTemperature(vecRadianceToTemperatureRectPS, src, dst, SWalkRect{width, area},
                          TempSetOf(params, 8, common, presetIndex));
}

bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short, const TArray<SScanLine>& lines, const bool*,
                           const STemperatureParams* params, const SCommonParams& common)
{
    if (FloatByFloatIndex(src.type, dst.type) < 0) return false;
    return RunTemperature(vecRadianceToTemperatureScanLinesPS, src, dst, SWalkScanLines{width, &lines},
                          TempSetOf(params, 8, common, presetIndex));
}

bool RadianceToTemperature(STypedData src, STypedData dst, const unsigned char* presetIndex, unsigned short width,
                           unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth, const bool*,
                           const STemperatureParams* params, const SCommonParams& common)
{
    if (FloatByFloatIndex(src.type, dst.type) < 0) return false;
    return RunTemperature(vecRadianceToTemperatureMaskPS, src, dst, SWalkMask{width, area, mask, maskWidth},
                          TempSetOf(params, 8, common, presetIndex));
}

} // namespace orv::reduce
