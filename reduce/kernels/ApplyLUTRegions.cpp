// ApplyLUT over scan lines and a masked rectangle.
#include "reduce/kernels/LUTKernels.h"

namespace orv::reduce {
namespace priv {
namespace {
ORV_PAIR_TABLE(TApplyLUTScanLinesKernel, vecApplyLUTScanLines, ApplyLUTScanLines);
ORV_PAIR_TABLE(TApplyLUTMaskKernel, vecApplyLUTMask, ApplyLUTMask);
} // namespace
} // namespace priv

using namespace priv;

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, TArray<SScanLine> const& lines, float* lut, unsigned char* lutStatus,
              unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTScanLines[LUTPairIndex(source, destination)](source.data, destination.data, status, width, height,
                                                            lines, lut, lutStatus, low, high);
    return true;
}

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, unsigned char const* mask, unsigned int maskStride, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTMask[LUTPairIndex(source, destination)](source.data, destination.data, status, width, height, area,
                                                       mask, maskStride, lut, lutStatus, low, high);
    return true;
}

} // namespace orv::reduce
