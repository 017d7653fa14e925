// The temperature polynomial over rectangles, scan lines and masks.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsRect, TCoeffsRuns, SWalkRect, SCoeffsArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsScanLines, TCoeffsRuns, SWalkScanLines, SCoeffsArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsMask, TCoeffsRuns, SWalkMask, SCoeffsArgs);

bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         double* coefficients, int order, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsRect, src, dst, SWalkRect{width, area},
                          SCoeffsArgs{coefficients, order, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short,
                         const TArray<SScanLine>& lines, double* coefficients, int order, double emissivity,
                         ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsScanLines, src, dst, SWalkScanLines{width, &lines},
                          SCoeffsArgs{coefficients, order, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned short width, unsigned short, SArea area,
                         const unsigned char* mask, unsigned int maskWidth, double* coefficients, int order,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsMask, src, dst, SWalkMask{width, area, mask, maskWidth},
                          SCoeffsArgs{coefficients, order, emissivity, tempType});
}

} // namespace orv::reduce
