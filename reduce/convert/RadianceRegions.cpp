// Radiance of rectangles, scan lines and masks; the ToRadiance tables of
// these regions are the same kernels.
#include "reduce/convert/RadiometryKernels.h"

namespace orv::reduce {

using namespace priv;

const TSourceByFloat<TRadianceKernel<SWalkRect>> vecCountsToRadianceRect =
    SourceByFloatTable<TRadianceKernel<SWalkRect>, TRadianceRuns<SWalkRect>::K>();
const TSourceByFloat<TRadianceKernel<SWalkScanLines>> vecCountsToRadianceScanLines =
    SourceByFloatTable<TRadianceKernel<SWalkScanLines>, TRadianceRuns<SWalkScanLines>::K>();
const TSourceByFloat<TRadianceKernel<SWalkMask>> vecCountsToRadianceMask =
    SourceByFloatTable<TRadianceKernel<SWalkMask>, TRadianceRuns<SWalkMask>::K>();

namespace {

template <class W>
bool Run(const TSourceByFloat<TRadianceKernel<W>>& table, STypedData src, STypedData dst, const W& walk,
         const SRadianceParams& params, const SCommonParams& common)
{
    const int t = SourceByFloatIndex(src.type, dst.type);
    if (t < 0) return false;
    table[t](src.data, dst.data, walk, PolyOf(params, common.scale), nullptr, SLimits{});
    return true;
}

} // namespace

bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                      const SRadianceParams& params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceRect, src, dst, SWalkRect{width, area}, params, common);
}

bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short,
                      const TArray<SScanLine>& lines, const SRadianceParams& params, const SCommonParams& common)
{
    return Run(vecCountsToRadianceScanLines, src, dst, SWalkScanLines{width, &lines}, params, common);
}

bool CountsToRadiance(STypedData src, STypedData dst, unsigned short width, unsigned short, SArea area,
                      const unsigned char* mask, unsigned int maskWidth, const SRadianceParams& params,
                      const SCommonParams& common)
{
    return Run(vecCountsToRadianceMask, src, dst, SWalkMask{width, area, mask, maskWidth}, params, common);
}

} // namespace orv::reduce
