#pragma once
// Merging the frames of up to eight presets into one, pixel by pixel.
#include "orv/Types.h"

namespace orv::reduce {

// The selection rule is told apart only as 0 (first candidate in order that
// is not above its high limit) and non-zero (last candidate that is not below
// its low limit). Taken as a plain unsigned integer so that the kernels do not depend
// on the configuration object that stores it (EAbateMode converts to it).
//
// Type 3 (unsigned 16-bit) and 8 (32-bit float) only; false for any other
// type and when no preset is present, touching nothing.
bool Abate(EDataType type, void** frames, unsigned int count, void* destination, unsigned char* presetOut,
           bool* present, unsigned char* order, unsigned short* lowLimits, unsigned short* highLimits, unsigned int mode,
           float** gain, short** offset, unsigned int** map, bool clamp, double minimum, double maximum);

namespace priv {
template <class T>
bool Abate(T** frames, unsigned int count, T* destination, unsigned char* presetOut, bool* present,
           unsigned char* order, unsigned short* lowLimits, unsigned short* highLimits, unsigned int mode, float** gain,
           short** offset, unsigned int** map, bool clamp, double minimum, double maximum);
} // namespace priv

} // namespace orv::reduce
