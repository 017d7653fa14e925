// ApplyNUC, index-list form.
#include "reduce/kernels/NUC.h"

#include "reduce/kernels/NUCKernels.h"

namespace orv::reduce {
namespace priv {
namespace {

using TApplyNUCIdxKernel = void (*)(void*, const void*, unsigned int const*, unsigned int, float*, short*,
                                    unsigned int*, bool, double, double);

constexpr auto vecApplyNUCIdx = MakeNUCTable<TApplyNUCIdxKernel>(std::make_index_sequence<100>{});

} // namespace
} // namespace priv

void ApplyNUC(STypedData destination, STypedData source, unsigned int const* indices, unsigned int count,
              float* gain, short* offset, unsigned int* map, bool clamp, double minimum, double maximum)
{
    if (unsigned(destination.type) > dtFlt64 || unsigned(source.type) > dtFlt64) return;
    const auto kernel = priv::vecApplyNUCIdx[size_t(destination.type) * 10 + size_t(source.type)];
    if (kernel) kernel(destination.data, source.data, indices, count, gain, offset, map, clamp, minimum, maximum);
}

} // namespace orv::reduce
