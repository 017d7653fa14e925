// ApplyLUT over a dense array, an index list and the region value.
#include "reduce/kernels/LUTKernels.h"

namespace orv::reduce {
namespace priv {
namespace {
ORV_PAIR_TABLE(TApplyLUTKernel, vecApplyLUT, ApplyLUT);
ORV_PAIR_TABLE(TApplyLUTIdxKernel, vecApplyLUTIdx, ApplyLUTIdx);
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

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, const SPixelRegion& region, float* lut,
              unsigned char* lutStatus, unsigned short low, unsigned short high)
{
    if (BadLUTPair(source, destination)) return false;
    const size_t pair = LUTPairIndex(source, destination);
    if (region.kind == SPixelRegion::kindFrame || region.kind == SPixelRegion::kindIndices) {
        if (region.kind == SPixelRegion::kindFrame)
            vecApplyLUT[pair](source.data, destination.data, status, region.count, lut, lutStatus, low, high);
        else
            vecApplyLUTIdx[pair](source.data, destination.data, status, region.indices, region.count, lut,
                                 lutStatus, low, high);
        return true;
    }
    // Each run is a dense frame of its own: rows of a rectangle run as
    // vectorised loops, and no region form needs kernels of its own.
    const TApplyLUTKernel dense = vecApplyLUT[pair];
    const size_t ss = DataTypeSize(source.type), ds = DataTypeSize(destination.type);
    const unsigned char* s = static_cast<const unsigned char*>(source.data);
    unsigned char* d = static_cast<unsigned char*>(destination.data);
    region.ForEachRun([&](size_t flat, size_t i, unsigned int n) {
        dense(s + flat * ss, d + i * ds, status ? status + i : nullptr, n, lut, lutStatus, low, high);
    });
    return true;
}

bool ApplyLUT(STypedData source, STypedData destination, unsigned char* status, unsigned short width,
              unsigned short height, SArea area, float* lut, unsigned char* lutStatus, unsigned short low,
              unsigned short high)
{
    return ApplyLUT(source, destination, status, SPixelRegion::Rect(width, height, area), lut, lutStatus, low, high);
}

} // namespace orv::reduce
