#pragma once
// Gathering a region of a typed frame into a dense array, converting the
// element type on the way, with or without a status array.
#include "orv/Array.h"
#include "orv/Types.h"
#include "reduce/kernels/Regions.h"

namespace orv::reduce {

// With both status arrays the GetImageData kernels run; otherwise the
// ConvertSubArray kernels, which store 0 in a given destination status.
// False, touching nothing, when either type is above 9.
bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned int const* indices, unsigned int count);
bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height, SArea area);
bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height,
                  TArray<SScanLine> const& lines);
bool GetImageData(STypedData source, unsigned char const* sourceStatus, STypedData destination,
                  unsigned char* destinationStatus, unsigned short width, unsigned short height, SArea area,
                  unsigned char const* mask, unsigned int maskStride);

} // namespace orv::reduce
