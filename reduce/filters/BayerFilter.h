#pragma once
// CBayerFilter: frames of a colour sensor behind a Bayer filter mosaic, one
// sample a pixel and no camera header. The four 8-bit patterns (BayerBG8,
// BayerGB8, BayerGR8, BayerRG8) are demosaiced to 24-bit RGB, the 16-bit
// GRBG pattern to 48-bit RGB, by bilinear interpolation (Demosaic.h).
//
// As for bare frames, the frame number is a count of parsed frames and the
// time the PC's (CGenericFilter).
#include <cstdint>

#include "reduce/filters/Demosaic.h"
#include "reduce/filters/GenericFilter.h"

namespace orv::reduce {

class CBayerFilter : public TNamedFilter<CBayerFilter, CGenericFilter> {
public:
    static constexpr const char* kName = "Bayer";
    static constexpr SGuid kPixelTypes[] = {guidBayerGRBG, pixelBayerBG8, pixelBayerGB8, pixelBayerGR8,
                                            pixelBayerRG8};

    // The mosaic of a pixel type, and its sample size in bytes (1 or 2); 0
    // for a type that is not one of the five.
    static unsigned SampleBytes(SGuid pixelType, EBayerPattern& pattern);

    // The frame holds the mosaic, not the RGB pixels of the type: no pixels
    // in place.
    bool HasPixels(SGuid pixelType) const override;
    // Output: 24-bit RGB for the 8-bit patterns, 48-bit RGB for the 16-bit
    // one, or no data with a null pointer for the objects alone. False for
    // another type, or a frame shorter than width * height samples.
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
};

} // namespace orv::reduce
