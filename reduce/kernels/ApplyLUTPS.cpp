// ApplyLUT with per-pixel preset tables over a dense array, an index list
// and a rectangle.
#include "reduce/kernels/LUTKernels.h"

namespace orv::reduce {
namespace priv {
namespace {
ORV_PAIR_TABLE(TApplyLUTPSKernel, vecApplyLUTPS, ApplyLUTPS);
ORV_PAIR_TABLE(TApplyLUTPSIdxKernel, vecApplyLUTPSIdx, ApplyLUTPSIdx);
ORV_PAIR_TABLE(TApplyLUTRectPSKernel, vecApplyLUTRectPS, ApplyLUTRectPS);
} // namespace
} // namespace priv

using namespace priv;

bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned int count, float** lut, unsigned char** lutStatus, unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTPS[LUTPairIndex(source, destination)](source.data, presets, destination.data, status, count, lut,
                                                     lutStatus, low, high);
    return true;
}

bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned int const* indices, unsigned int count, float** lut, unsigned char** lutStatus,
              unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTPSIdx[LUTPairIndex(source, destination)](source.data, presets, destination.data, status, indices,
                                                        count, lut, lutStatus, low, high);
    return true;
}

bool ApplyLUT(STypedData source, unsigned char const* presets, STypedData destination, unsigned char* status,
              unsigned short width, unsigned short height, SArea area, float** lut, unsigned char** lutStatus,
              unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    vecApplyLUTRectPS[LUTPairIndex(source, destination)](source.data, presets, destination.data, status, width,
                                                         height, area, lut, lutStatus, low, high);
    return true;
}

} // namespace orv::reduce
