// The temperature polynomial with a preset per pixel, all regions.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsImgPS, TCoeffsPS, SWalkCount, SCoeffsPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsIdxPS, TCoeffsPS, SWalkIndices, SCoeffsPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsRectPS, TCoeffsPS, SWalkRect, SCoeffsPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsScanLinesPS, TCoeffsPS, SWalkScanLines, SCoeffsPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsMaskPS, TCoeffsPS, SWalkMask, SCoeffsPSArgs);

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n,
                         double** coefficients, int* orders, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsImgPS, src, dst, SWalkCount{n},
                          SCoeffsPSArgs{presetIndex, coefficients, orders, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                         unsigned int n, double** coefficients, int* orders, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsIdxPS, src, dst, SWalkIndices{indices, n, 0},
                          SCoeffsPSArgs{presetIndex, coefficients, orders, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, double** coefficients, int* orders, double emissivity,
                         ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsRectPS, src, dst, SWalkRect{width, area},
                          SCoeffsPSArgs{presetIndex, coefficients, orders, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, const TArray<SScanLine>& lines, double** coefficients, int* orders,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsScanLinesPS, src, dst, SWalkScanLines{width, &lines},
                          SCoeffsPSArgs{presetIndex, coefficients, orders, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned short width,
                         unsigned short, SArea area, const unsigned char* mask, unsigned int maskWidth,
                         double** coefficients, int* orders, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsMaskPS, src, dst, SWalkMask{width, area, mask, maskWidth},
                          SCoeffsPSArgs{presetIndex, coefficients, orders, emissivity, tempType});
}

} // namespace orv::reduce
