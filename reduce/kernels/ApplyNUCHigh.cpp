// ApplyNUC, plain form: the upper part of its table.
#include "reduce/kernels/NUCKernels.h"

namespace orv::reduce::priv {

const std::array<TApplyNUCKernel, 100 - kNUCSplit> vecApplyNUCHigh =
    MakeNUCTablePart<TApplyNUCKernel, kNUCSplit>(std::make_index_sequence<100 - kNUCSplit>{});

} // namespace orv::reduce::priv
