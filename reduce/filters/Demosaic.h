#pragma once
// Bilinear demosaicing of a Bayer colour mosaic into interleaved RGB.
//
// Each output pixel keeps the sensor's own sample for its colour and takes
// each missing colour as the mean of the nearest samples of that colour: the
// two horizontal or two vertical neighbours, or the four orthogonal (green)
// or four diagonal (red or blue) ones. Integer means round half up. Edges
// are mirrored without repeating the edge sample (index -1 reads 1), which
// keeps the mosaic's phase, so border pixels are interpolated like the rest.
//
// Why bilinear: it reproduces a flat colour field exactly and a linear
// gradient exactly in each channel, never leaves the range of the
// neighbouring samples (no overshoot to clip, which matters when channels
// are measured), and costs a few additions a pixel. Its known cost is
// colour fringes at sharp edges; see docs/filters.md.
#include <cstdint>

namespace orv::reduce {

// Where red sits in the 2 x 2 cell that starts the mosaic; blue is
// diagonal to it, green on the other two sites.
enum EBayerPattern : uint8_t {
    bayerRG = 0, // R G / G B
    bayerGR = 1, // G R / B G
    bayerGB = 2, // G B / R G
    bayerBG = 3, // B G / G R
};

// src: width * height samples, rows back to back. dst: width * height RGB
// triples, red first. Nothing is written for a zero width or height.
void DemosaicBilinear(const uint8_t* src, uint8_t* dst, unsigned width, unsigned height, EBayerPattern pattern);
void DemosaicBilinear(const uint16_t* src, uint16_t* dst, unsigned width, unsigned height, EBayerPattern pattern);

} // namespace orv::reduce
