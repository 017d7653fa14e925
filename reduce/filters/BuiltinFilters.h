#pragma once
// The built-in filters in the order in which they enter filterFactory(). A
// pixel type goes to the first filter that claims it, so this order is
// behaviour: the camera filters come first, in the order V410, Bayer, TLK-RV,
// TLK-MX, Brennic, Sarnet, Kordan, MX515, Ostrel, Velmar, and the generic
// filter of bare frames always last.

namespace orv::reduce {

struct SBuiltinFilter {
    const char* name;
    bool (*Register)();
};

extern const SBuiltinFilter builtinFilters[];
extern const unsigned builtinFilterCount;

// Enters the pixel type rows that no filter claims, then each built-in filter
// in list order. Runs once, at library load; later calls do nothing.
bool RegisterBuiltinFilters();

} // namespace orv::reduce
