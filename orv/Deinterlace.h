#pragma once
// Reassembly of interlaced frames whose two fields were stored one after the
// other.

namespace orv {

// Copies height rows of width pixels of bytesPerPixel bytes from src to dst.
// The input holds the even field first: its rows fill output rows 0, 2, 4,
// ... and the rows after them fill 1, 3, 5, .... With an odd height the even
// field has one row more: of five rows, input rows 0, 1, 2 go to 0, 2, 4 and
// rows 3, 4 to 1, 3.
//
// srcStride and dstStride are the row lengths in bytes of the two buffers,
// for padded rows; -1 (what the system passes) or 0 means width *
// bytesPerPixel. dst and src must not overlap.
//
// False, writing nothing, for a null pointer, a negative size, a
// bytesPerPixel below 1 or a stride shorter than a row. A width or height of
// 0 writes nothing and succeeds.
bool deinterlace(void* dst, const void* src, int width, int height, int bytesPerPixel, int srcStride, int dstStride);

} // namespace orv
