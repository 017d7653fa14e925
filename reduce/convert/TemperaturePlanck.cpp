// Planck's law inverted over all regions, and the calibration curve over
// whole frames and index lists.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecToTemperaturePlanckImg, TPlanck, SWalkCount, SPlanckArgs);
ORV_TEMPERATURE_TABLE(vecToTemperaturePlanckIdx, TPlanck, SWalkIndices, SPlanckArgs);
ORV_TEMPERATURE_TABLE(vecToTemperaturePlanckRect, TPlanck, SWalkRect, SPlanckArgs);
ORV_TEMPERATURE_TABLE(vecToTemperaturePlanckScanLines, TPlanck, SWalkScanLines, SPlanckArgs);
ORV_TEMPERATURE_TABLE(vecToTemperaturePlanckMask, TPlanck, SWalkMask, SPlanckArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureRBFImg, TRBF, SWalkCount, SRBFArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureRBFIdx, TRBF, SWalkIndices, SRBFArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureRBFImgPS, TRBFPS, SWalkCount, SRBFPSArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureRBFIdxPS, TRBFPS, SWalkIndices, SRBFPSArgs);

bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned int n, double bandEnd, double bandStart,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperaturePlanckImg, src, dst, SWalkCount{n},
                          SPlanckArgs{bandEnd, bandStart, emissivity, tempType});
}

bool ToTemperaturePlanck(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double bandEnd,
                         double bandStart, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperaturePlanckIdx, src, dst, SWalkIndices{indices, n, 0},
                          SPlanckArgs{bandEnd, bandStart, emissivity, tempType});
}

bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         double bandEnd, double bandStart, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperaturePlanckRect, src, dst, SWalkRect{width, area},
                          SPlanckArgs{bandEnd, bandStart, emissivity, tempType});
}

bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short,
                         const TArray<SScanLine>& lines, double bandEnd, double bandStart, double emissivity,
                         ETempType tempType)
{
    return RunTemperature(vecToTemperaturePlanckScanLines, src, dst, SWalkScanLines{width, &lines},
                          SPlanckArgs{bandEnd, bandStart, emissivity, tempType});
}

bool ToTemperaturePlanck(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double bandEnd, double bandStart,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperaturePlanckMask, src, dst, SWalkMask{width, area, mask, maskWidth},
                          SPlanckArgs{bandEnd, bandStart, emissivity, tempType});
}

bool ToTemperatureRBF(STypedData dst, STypedData src, unsigned int n, double R, double B, double F, double O, float,
                      float, float, float, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureRBFImg, src, dst, SWalkCount{n}, SRBFArgs{R, B, F, O, emissivity, tempType});
}

bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double R, double B,
                      double F, double O, float, float, float, float, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureRBFIdx, src, dst, SWalkIndices{indices, n, 0},
                          SRBFArgs{R, B, F, O, emissivity, tempType});
}

bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned char* presetIndex, unsigned int n, double* R,
                      double* B, double* F, double* O, float, float, float, float, double emissivity,
                      ETempType tempType)
{
    return RunTemperature(vecToTemperatureRBFImgPS, src, dst, SWalkCount{n},
                          SRBFPSArgs{presetIndex, R, B, F, O, emissivity, tempType});
}

bool ToTemperatureRBF(STypedData dst, STypedData src, const unsigned int* indices, const unsigned char* presetIndex,
                      unsigned int n, double* R, double* B, double* F, double* O, float, float, float, float,
                      double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureRBFIdxPS, src, dst, SWalkIndices{indices, n, 0},
                          SRBFPSArgs{presetIndex, R, B, F, O, emissivity, tempType});
}

} // namespace orv::reduce
