// ApplyLUT over a dense array, an index list and a rectangle.
#include "reduce/kernels/LUTKernels.h"

namespace orv::reduce {
namespace priv {
namespace {
ORV_PAIR_TABLE(TApplyLUTKernel, vecApplyLUT, ApplyLUT);
ORV_PAIR_TABLE(TApplyLUTIdxKernel, vecApplyLUTIdx, ApplyLUTIdx);
ORV_PAIR_TABLE(TApplyLUTRectKernel, vecApplyLUTRect, ApplyLUTRect);
} // namespace
} // namespace priv

using namespace priv;

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned int count, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUT[LUTPairIndex(source, destination)](source.data, destination.data, status, count, lut, lutStatus, low,
                                                   high);
    return true;
}

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned int const* indices,
              unsigned int count, float* lut, unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTIdx[LUTPairIndex(source, destination)](source.data, destination.data, status, indices, count, lut,
                                                      lutStatus, low, high);
    return true;
}

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, float* lut, unsigned char* lutStatus, unsigned short low,
              unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTRect[LUTPairIndex(source, destination)](source.data, destination.data, status, width, height, area,
                                                       lut, lutStatus, low, high);
    return true;
}

} // namespace orv::reduce
