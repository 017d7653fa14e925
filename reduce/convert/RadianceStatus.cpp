// Radiance of whole frames and index lists with limits and status.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

const TSourceByFloat<TRadianceKernel<SWalkCount>> vecToRadianceImgStatus =
    SourceByFloatTable<TRadianceKernel<SWalkCount>, TRadianceThenLimits<SWalkCount>::K>();
const TSourceByFloat<TRadianceKernel<SWalkIndices>> vecToRadianceIdxStatus =
    SourceByFloatTable<TRadianceKernel<SWalkIndices>, TRadianceThenLimits<SWalkIndices>::K>();

namespace {

// Without a status array no limits apply.
template <class W>
bool Run(const TSourceByFloat<TRadianceKernel<W>>& withStatus, const TSourceByFloat<TRadianceKernel<W>>& plain,
         STypedData src, STypedData dst, const W& walk, const SPoly& poly, unsigned char* status, const SLimits& limits)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    // Unsigned 64-bit sources are not offered with limits: intended.
    if (t < 0 || src.type == dtUInt64) return false;
    (status ? withStatus : plain)[t](src.data, dst.data, walk, poly, status, limits);
    return true;
}

} // namespace

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, unsigned int n, double validLow,
                double validHigh, double clampLow, double clampHigh, double* coefficients, int order, double background,
                double scale)
{
    return Run(vecToRadianceImgStatus, vecCountsToRadianceImg, src, dst, SWalkCount{n},
               SPoly{coefficients, order, background, nullptr, scale}, status,
               SLimits{validLow, validHigh, clampLow, clampHigh});
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, unsigned int n, double validLow,
                double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double* background, double scale)
{
    return Run(vecToRadianceImgStatus, vecCountsToRadianceImg, src, dst, SWalkCount{n},
               SPoly{coefficients, order, 0.0, background, scale}, status,
               SLimits{validLow, validHigh, clampLow, clampHigh});
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices, unsigned int n,
                double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double background, double scale)
{
    return Run(vecToRadianceIdxStatus, vecCountsToRadianceIdx, src, dst, SWalkIndices{indices, n, 0},
               SPoly{coefficients, order, background, nullptr, scale}, status,
               SLimits{validLow, validHigh, clampLow, clampHigh});
}

bool ToRadiance(STypedData dst, STypedData src, unsigned char* status, const unsigned int* indices, unsigned int n,
                double validLow, double validHigh, double clampLow, double clampHigh, double* coefficients, int order,
                double* background, double scale)
{
    return Run(vecToRadianceIdxStatus, vecCountsToRadianceIdx, src, dst, SWalkIndices{indices, n, 0},
               SPoly{coefficients, order, 0.0, background, scale}, status,
               SLimits{validLow, validHigh, clampLow, clampHigh});
}

} // namespace orv::reduce
