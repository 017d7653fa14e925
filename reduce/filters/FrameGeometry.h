#pragma once
// AdjustFrameData: brings a bare frame into the shape the rest of the system
// expects: crops and shifts grayscale counts, reorders interlaced fields,
// mirrors, and turns 4:2:2 YUV into RGB.
#include "orv/Types.h"

namespace orv::reduce {

// dst: width * height unsigned 16-bit values for grayscale types, width *
// height 3-byte RGB pixels (R, G, B) otherwise. src: the frame.
//
// The family is found with IsPixelBaseType, tested in the order
// pixelGrayscale, pixelRGB, pixelYUV; a type of none of them does nothing.
//
// Grayscale: interlaced is ignored. Output row r, column c comes from row
// offset.top + r and column offset.left + c of a source of rows width
// values long (mirrored as the flips say), shifted left by |shift| (modulo
// 32, in 32-bit arithmetic) and masked with mask, taken as 16 bits. Only
// offset.left and offset.top are used, and the read area is not checked
// against the frame: the caller makes sure it lies inside.
//
// RGB: offset, shift and mask are not used. Interlaced frames hold the even
// field first (the base library's deinterlace).
//
// YUV: 4 bytes Y0 U Y1 V per pair of pixels, width / 2 pairs a row, rows
// back to back. With an odd width the last column (the first when mirrored)
// stays unwritten.
//
// Returns false when nothing was done: a null pointer or a type of no family.
// A width or height of 0 or below writes nothing and succeeds.
bool AdjustFrameData(void* dst, const void* src, int width, int height, SGuid pixelType, SRect offset, int shift,
                     int mask, bool interlaced, bool flipHorizontal, bool flipVertical);

} // namespace orv::reduce
