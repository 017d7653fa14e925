// ApplyNUC, plain form.
#include "reduce/kernels/NUC.h"

#include "reduce/kernels/NUCKernels.h"

namespace orv::reduce {
namespace priv {
namespace {

constexpr auto vecApplyNUCLow = MakeNUCTablePart<TApplyNUCKernel, 0>(std::make_index_sequence<kNUCSplit>{});

} // namespace
} // namespace priv

void ApplyNUC(STypedData destination, STypedData source, unsigned int count, float* gain, short* offset,
              unsigned int* map, bool clamp, double minimum, double maximum)
{
    if (unsigned(destination.type) > dtFlt64 || unsigned(source.type) > dtFlt64) return;
    const size_t k = size_t(destination.type) * 10 + size_t(source.type);
    const auto kernel = k < priv::kNUCSplit ? priv::vecApplyNUCLow[k] : priv::vecApplyNUCHigh[k - priv::kNUCSplit];
    if (kernel) kernel(destination.data, source.data, count, gain, offset, map, clamp, minimum, maximum);
}

} // namespace orv::reduce
