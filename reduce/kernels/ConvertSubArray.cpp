// Instances of the ConvertSubArray kernels: four tables of 100.
#include "reduce/kernels/ImageDataKernels.h"

namespace orv::reduce::priv {
namespace {
ORV_PAIR_TABLE(TConvertSubArrayKernel, tIndex, ConvertSubArray);
ORV_PAIR_TABLE(TConvertSubArrayRectKernel, tRect, ConvertSubArrayRect);
ORV_PAIR_TABLE(TConvertSubArrayScanLinesKernel, tScanLines, ConvertSubArrayScanLines);
ORV_PAIR_TABLE(TConvertSubArrayMaskKernel, tMask, ConvertSubArrayMask);
} // namespace

const std::array<TConvertSubArrayKernel, 100> vecConvertSubArray = tIndex;
const std::array<TConvertSubArrayRectKernel, 100> vecConvertSubArrayRect = tRect;
const std::array<TConvertSubArrayScanLinesKernel, 100> vecConvertSubArrayScanLines = tScanLines;
const std::array<TConvertSubArrayMaskKernel, 100> vecConvertSubArrayMask = tMask;

} // namespace orv::reduce::priv
