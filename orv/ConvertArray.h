#pragma once
// Element conversion between typed buffers of any two numeric types.
#include "orv/Types.h"

namespace orv {

// Converts count elements of source into target by the element conversion
// rule of ConvertValue (orv/ValueConvert.h): truncation toward zero, no
// saturation, no scaling. The destination comes first, as in every caller.
// Both types must be numeric (0 to 9); otherwise, or with a null pointer and
// a non-zero count, returns false and touches nothing. Equal types copy.
// Buffers must not overlap unless they are the same buffer of the same type.
bool ConvertArray(STypedData target, STypedData source, unsigned int count);

} // namespace orv
