// GetImageData: the public overloads and the tables of the status-carrying
// gathers.
#include "reduce/kernels/ImageData.h"

#include <cstring>

#include "reduce/kernels/ImageDataKernels.h"

namespace orv::reduce {
namespace priv {
namespace {

using TGetImageDataKernel = void (*)(const void*, const unsigned char*, void*, unsigned char*, unsigned int const*,
                                     unsigned int);
using TGetImageDataRectKernel = void (*)(const void*, const unsigned char*, void*, unsigned char*, unsigned short,
                                         unsigned short, SArea);
using TGetImageDataScanLinesKernel = void (*)(const void*, const unsigned char*, void*, unsigned char*,
                                              unsigned short, unsigned short, TArray<SScanLine> const&);
using TGetImageDataMaskKernel = void (*)(const void*, const unsigned char*, void*, unsigned char*, unsigned short,
                                         unsigned short, SArea, unsigned char const*, unsigned int);

ORV_PAIR_TABLE(TGetImageDataKernel, vecGetImageData, GetImageData);
ORV_PAIR_TABLE(TGetImageDataRectKernel, vecGetImageDataRect, GetImageDataRect);
ORV_PAIR_TABLE(TGetImageDataScanLinesKernel, vecGetImageDataScanLines, GetImageDataScanLines);
ORV_PAIR_TABLE(TGetImageDataMaskKernel, vecGetImageDataMask, GetImageDataMask);

bool BadPair(STypedData a, STypedData b)
{
    return unsigned(a.type) > dtFlt64 || unsigned(b.type) > dtFlt64;
}

size_t PairIndex(STypedData source, STypedData destination)
{
    return size_t(source.type) * 10 + size_t(destination.type);
}

} // namespace
} // namespace priv

using namespace priv;

// A source status without a destination status is ignored: the plain
// conversion runs and clears the destination status, if any.

bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned int const* indices, unsigned int count)
{
    if (BadPair(source, destination)) return false;
    const size_t k = PairIndex(source, destination);
    if (sourceStatus && destinationStatus) {
        vecGetImageData[k](source.data, sourceStatus, destination.data, destinationStatus, indices, count);
        return true;
    }
    if (destinationStatus) std::memset(destinationStatus, 0, count);
    vecConvertSubArray[k](source.data, destination.data, destinationStatus, indices, count);
    return true;
}

bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height, SArea area)
{
    if (BadPair(source, destination)) return false;
    const size_t k = PairIndex(source, destination);
    if (sourceStatus && destinationStatus) {
        vecGetImageDataRect[k](source.data, sourceStatus, destination.data, destinationStatus, width, height, area);
        return true;
    }
    if (destinationStatus) std::memset(destinationStatus, 0, RegionPixels(area));
    vecConvertSubArrayRect[k](source.data, destination.data, destinationStatus, width, height, area);
    return true;
}

bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height,
                  TArray<SScanLine> const& lines)
{
    if (BadPair(source, destination)) return false;
    const size_t k = PairIndex(source, destination);
    if (sourceStatus && destinationStatus) {
        vecGetImageDataScanLines[k](source.data, sourceStatus, destination.data, destinationStatus, width, height,
                                    lines);
        return true;
    }
    if (destinationStatus) std::memset(destinationStatus, 0, RegionPixels(lines));
    vecConvertSubArrayScanLines[k](source.data, destination.data, destinationStatus, width, height, lines);
    return true;
}

bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height, SArea area,
                  unsigned char const* mask, unsigned int maskStride)
{
    if (BadPair(source, destination)) return false;
    const size_t k = PairIndex(source, destination);
    if (sourceStatus && destinationStatus) {
        vecGetImageDataMask[k](source.data, sourceStatus, destination.data, destinationStatus, width, height, area,
                               mask, maskStride);
        return true;
    }
    if (destinationStatus) std::memset(destinationStatus, 0, RegionPixels(area, mask, maskStride));
    vecConvertSubArrayMask[k](source.data, destination.data, destinationStatus, width, height, area, mask,
                              maskStride);
    return true;
}

} // namespace orv::reduce
