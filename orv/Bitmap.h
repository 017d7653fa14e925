#pragma once
// In-memory bitmaps (SBitmap, orv/Types.h) and their file form. The system
// uses 24-bit images: three bytes a pixel, blue-green-red, rows top-down in
// memory, each row padded to a multiple of four bytes.
#include "orv/File.h"
#include "orv/String.h"
#include "orv/Types.h"

namespace orv {

// Empties the structure without freeing anything.
void InitBitmap(SBitmap& bitmap);

// Allocates a zeroed bitmap of width by height pixels with bitsPerPixel a
// multiple of 8 from 8 to 64; bytesPerRow is padded to four bytes. Whatever
// the structure held before is overwritten, not freed (SBitmap is copied by
// value, so it cannot tell whether it owns its pixels): destroy it first.
// False, with the bitmap emptied, for a zero size, an unsupported depth, an
// image beyond 2 GiB or exhausted memory.
bool CreateBitmap(unsigned int width, unsigned int height, unsigned int bitsPerPixel, SBitmap& bitmap);

// Frees the pixels of a bitmap made by CreateBitmap and empties it.
void DestroyBitmap(SBitmap& bitmap);

// Resampling filters of ResizeImage.
enum EResizeMode {
    // Bilinear interpolation between the four nearest source pixels, pixel
    // centres aligned. For enlarging; reducing with it skips source pixels.
    resizeBilinear = 1,
    // Area average: each target pixel is the mean of the source area it
    // covers, partly covered source pixels weighted by the covered fraction.
    // For reducing; enlarging with it gives sharp-edged, blended blocks.
    resizeArea = 2,
};

// Resamples source into target, whose size was set by CreateBitmap. Both
// must be 24-bit with pixels, non-zero sizes and rows of at least 3 * width
// bytes. Each channel is rounded to nearest. False, target untouched, for
// anything else or a mode other than 1 or 2.
bool ResizeImage(const SBitmap& source, SBitmap& target, int mode);

// Writes a 24-bit bitmap as a BMP file: 14-byte file header ("BM", file
// size, 0, pixel offset 54), 40-byte information header (positive height, so
// rows run bottom-up; 1 plane, 24 bits, no compression, 2835 pixels a metre),
// then the rows, each padded with zeroes to four bytes. The file is opened
// with mode 40 (create or overwrite). False for a bitmap that is not 24-bit
// or has no pixels, a file that cannot be opened, or a failed write.
bool SaveBitmapFile(const SBitmap& bitmap, IFileSystem* fileSystem, const CString& path);

} // namespace orv
