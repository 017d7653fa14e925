#pragma once
// Baseline JPEG decoding of camera screen frames.

namespace orv {

// Decodes the JPEG stream src of srcSize bytes into dst as packed 24-bit
// RGB: three bytes a pixel in the order red, green, blue, rows top-down with
// no padding (width * 3 bytes a row). Grayscale streams are expanded to
// three equal bytes. Nothing is written at or beyond dst + dstSize: when the
// image does not fit, the rows that do are written (the last one possibly in
// part) and the result is false. Also false, without a message, for a null
// pointer, an empty or corrupt stream, or a stream that ends early (libjpeg
// warnings count as failures, so a truncated frame is not passed off as
// good).
bool JpegDecode(void* dst, unsigned long dstSize, const void* src, unsigned long srcSize);

} // namespace orv
