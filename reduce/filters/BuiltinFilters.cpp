#include "reduce/filters/BuiltinFilters.h"

#include <atomic>

#include "reduce/filters/BareFrameFilters.h"
#include "reduce/filters/BayerFilter.h"
#include "reduce/filters/GenericFilter.h"
#include "reduce/filters/MX515Filter.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/SarnetFilter.h"
#include "reduce/filters/TLKFilter.h"
#include "reduce/filters/V410Filter.h"

namespace orv::reduce {

// Camera filters go above the generic one, in the order of the header.
const SBuiltinFilter builtinFilters[] = {
    {CV410Filter::kName, &CV410Filter::Register},
    {CBayerFilter::kName, &CBayerFilter::Register},
    {CTLKFilterRV::kName, &CTLKFilterRV::Register},
    {CTLKFilterMX::kName, &CTLKFilterMX::Register},
    {CBrennicFilter::kName, &CBrennicFilter::Register},
    {CSarnetFilter::kName, &CSarnetFilter::Register},
    {CKordanFilter::kName, &CKordanFilter::Register},
    {CMX515Filter::kName, &CMX515Filter::Register},
    {COstrelFilter::kName, &COstrelFilter::Register},
    {CVelmarFilter::kName, &CVelmarFilter::Register},
    {CGenericFilter::kName, &CGenericFilter::Register},
};
const unsigned builtinFilterCount = sizeof(builtinFilters) / sizeof(builtinFilters[0]);

bool RegisterBuiltinFilters()
{
    static std::atomic<bool> done{false};
    if (done.exchange(true)) return true;
    RegisterPixelTypeRows(nullptr);
    for (unsigned i = 0; i < builtinFilterCount; ++i) builtinFilters[i].Register();
    return true;
}

namespace {
// One initialiser for all built-in filters, so that their order is the list's
// and not the link order of their files.
[[maybe_unused]] const bool reg = RegisterBuiltinFilters();
} // namespace

} // namespace orv::reduce
