#pragma once
// Non-uniformity correction: per-pixel gain, offset and replacement map,
// optionally clamped. Destination first, then source. Unsigned 64-bit on
// either side, any type above 9, and the pair destination signed 32-bit /
// source signed 8-bit do nothing.
#include "orv/Types.h"

namespace orv::reduce {

void ApplyNUC(STypedData destination, STypedData source, unsigned int count, float* gain, short* offset,
              unsigned int* map, bool clamp, double minimum, double maximum);
// Per-pixel preset: arrays of pointers indexed by presets[pixel].
void ApplyNUC(STypedData destination, STypedData source, unsigned char const* presets, unsigned int count,
              float** gain, short** offset, unsigned int** map, bool clamp, double minimum, double maximum);
// Index list: a dense source without a map, a full frame with one.
void ApplyNUC(STypedData destination, STypedData source, unsigned int const* indices, unsigned int count,
              float* gain, short* offset, unsigned int* map, bool clamp, double minimum, double maximum);
// Per-pixel preset with an index list, over a full frame.
void ApplyNUC(STypedData destination, STypedData source, unsigned int const* indices, unsigned char const* presets,
              unsigned int count, float** gain, short** offset, unsigned int** map, bool clamp, double minimum,
              double maximum);

} // namespace orv::reduce
