#include "reduce/convert/BuiltinConverters.h"

#include <atomic>

#include "reduce/convert/RGBConverter.h"
#include "reduce/convert/TemperatureConverter.h"
#include "reduce/convert/UserConverter.h"
#include "reduce/families/corvane/CorvaneConverter.h"
#include "reduce/families/ombria/OmbriaConverter.h"

namespace orv::reduce {

// The camera family converters take the places marked below.
const SBuiltinConverter builtinConverters[] = {
    {CCorvaneConverter::kName, &CCorvaneConverter::Register},
    // Tessel
    // Marlowe
    {CRGBConverter::kName, &CRGBConverter::Register},
    {COmbriaConverter::kName, &COmbriaConverter::Register},
    {CTemperatureConverter::kName, &CTemperatureConverter::Register},
    {CUserConverter::kName, &CUserConverter::Register},
};
const unsigned builtinConverterCount = sizeof(builtinConverters) / sizeof(builtinConverters[0]);

bool RegisterBuiltinConverters()
{
    static std::atomic<bool> done{false};
    if (done.exchange(true)) return true;
    for (unsigned i = 0; i < builtinConverterCount; ++i) builtinConverters[i].Register();
    return true;
}

namespace {
// One initialiser for all built-in converters, so that their order is the
// list's and not the link order of their files.
[[maybe_unused]] const bool reg = RegisterBuiltinConverters();
} // namespace

} // namespace orv::reduce
