// The temperature polynomial over whole frames and index lists.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsImg, TCoeffs, SWalkCount, SCoeffsArgs);
ORV_TEMPERATURE_TABLE(vecToTemperatureCoeffsIdx, TCoeffs, SWalkIndices, SCoeffsArgs);

bool ToTemperatureCoeffs(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order,
                         double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsImg, src, dst, SWalkCount{n},
                          SCoeffsArgs{coefficients, order, emissivity, tempType});
}

bool ToTemperatureCoeffs(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n,
                         double* coefficients, int order, double emissivity, ETempType tempType)
{
    return RunTemperature(vecToTemperatureCoeffsIdx, src, dst, SWalkIndices{indices, n, 0},
                          SCoeffsArgs{coefficients, order, emissivity, tempType});
}

} // namespace orv::reduce
