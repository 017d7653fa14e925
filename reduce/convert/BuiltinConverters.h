#pragma once
// The built-in converters in the order in which they enter converterFactory().
// A unit goes to the first converter that offers it, so this order is
// behaviour: Corvane, Tessel, Marlowe, RGB, Ombria, Temperature, User.
// Plug-ins register theirs after these.

namespace orv::reduce {

struct SBuiltinConverter {
    const char* name;
    bool (*Register)();
};

extern const SBuiltinConverter builtinConverters[];
extern const unsigned builtinConverterCount;

// Registers each built-in converter in list order. Runs once, at library
// load; later calls do nothing.
bool RegisterBuiltinConverters();

} // namespace orv::reduce
