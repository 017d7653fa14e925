// Radiance of whole frames and index lists without limits: the
// CountsToRadiance and ToRadiance forms that share these kernels.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

const TSourceByFloat<TRadianceKernel<SWalkCount>> vecCountsToRadianceImg =
    SourceByFloatTable<TRadianceKernel<SWalkCount>, TRadiance<SWalkCount>::K>();
const TSourceByFloat<TRadianceKernel<SWalkIndices>> vecCountsToRadianceIdx =
    SourceByFloatTable<TRadianceKernel<SWalkIndices>, TRadiance<SWalkIndices>::K>();

namespace {

template <class W>
bool Run(const TSourceByFloat<TRadianceKernel<W>>& table, STypedData src, STypedData dst, const W& walk,
         const SPoly& poly)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    table[t](src.data, dst.data, walk, poly, nullptr, SLimits{});
    return true;
}

} // namespace

bool CountsToRadiance(STypedData src, STypedData dst, unsigned int n, const SRadianceParams& params,
                      const SCommonParams& common)
{
    return Run(vecCountsToRadianceImg, src, dst, SWalkCount{n}, PolyOf(params, common.scale));
}

bool CountsToRadiance(STypedData src, STypedData dst, const unsigned int* indices, unsigned int n,
                      const SRadianceParams& params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceIdx, src, dst, SWalkIndices{indices, n, 0}, PolyOf(params, common.scale));
}

bool ToRadiance(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order, double background,
                double scale)
{
    return Run(vecCountsToRadianceImg, src, dst, SWalkCount{n}, SPoly{coefficients, order, background, nullptr, scale});
}

bool ToRadiance(STypedData dst, STypedData src, unsigned int n, double* coefficients, int order, double* background,
                double scale)
{
    return Run(vecCountsToRadianceImg, src, dst, SWalkCount{n}, SPoly{coefficients, order, 0.0, background, scale});
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* coefficients,
                int order, double background, double scale)
{
    return Run(vecCountsToRadianceIdx, src, dst, SWalkIndices{indices, n, 0},
               SPoly{coefficients, order, background, nullptr, scale});
}

bool ToRadiance(STypedData dst, STypedData src, const unsigned int* indices, unsigned int n, double* coefficients,
                int order, double* background, double scale)
{
    return Run(vecCountsToRadianceIdx, src, dst, SWalkIndices{indices, n, 0},
               SPoly{coefficients, order, 0.0, background, scale});
}

} // namespace orv::reduce
