// ApplyNUC, per-pixel preset forms.
#include "reduce/kernels/NUC.h"

#include "reduce/kernels/NUCKernels.h"

namespace orv::reduce {
namespace priv {
namespace {

using TApplyNUCPSKernel = void (*)(void*, const void*, unsigned char const*, unsigned int, float**, short**,
                                   unsigned int**, bool, double, double);
using TApplyNUCPSIdxKernel = void (*)(void*, const void*, unsigned int const*, unsigned char const*, unsigned int,
                                      float**, short**, unsigned int**, bool, double, double);

constexpr auto vecApplyNUCPS = MakeNUCTable<TApplyNUCPSKernel>(std::make_index_sequence<100>{});
constexpr auto vecApplyNUCPSIdx = MakeNUCTable<TApplyNUCPSIdxKernel>(std::make_index_sequence<100>{});

} // namespace
} // namespace priv

void ApplyNUC(STypedData destination, STypedData source, unsigned char const* presets, unsigned int count,
              float** gain, short** offset, unsigned int** map, bool clamp, double minimum, double maximum)
{
    if (unsigned(destination.type) > dtFlt64 || unsigned(source.type) > dtFlt64) return;
    const auto kernel = priv::vecApplyNUCPS[size_t(destination.type) * 10 + size_t(source.type)];
    if (kernel) kernel(destination.data, source.data, presets, count, gain, offset, map, clamp, minimum, maximum);
}

void ApplyNUC(STypedData destination, STypedData source, unsigned int const* indices, unsigned char const* presets,
              unsigned int count, float** gain, short** offset, unsigned int** map, bool clamp, double minimum,
              double maximum)
{
    if (unsigned(destination.type) > dtFlt64 || unsigned(source.type) > dtFlt64) return;
    const auto kernel = priv::vecApplyNUCPSIdx[size_t(destination.type) * 10 + size_t(source.type)];
    if (kernel)
        kernel(destination.data, source.data, indices, presets, count, gain, offset, map, clamp, minimum, maximum);
}

} // namespace orv::reduce
