// ApplyNUC, plain form: the kernels for destinations 5 to 9.
#include "reduce/kernels/NUCKernels.h"

namespace orv::reduce::priv {

const std::array<TApplyNUCKernel, 50> vecApplyNUCHigh =
    MakeNUCTablePart<TApplyNUCKernel, 50>(std::make_index_sequence<50>{});

} // namespace orv::reduce::priv
