#pragma once
// CSarnetFilter: Sarnet cameras. Infrared frames (guidSarnetF7M0) are width x
// height 16-bit pixels with the 1148-byte SMX515Header right behind them
// (CMX515HeaderFilter); the video stream (guidSarnetUYVY) is UYVY. The header
// fills the same Ombria objects as the V410 camera block; no extra frame info
// entries are added.
#include <cstdint>

#include "reduce/filters/MX515HeaderFilter.h"
#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CSarnetFilter : public TNamedFilter<CSarnetFilter, CMX515HeaderFilter> {
public:
    static constexpr const char* kName = "Sarnet";
    static constexpr SGuid kPixelTypes[] = {guidSarnetF7M0, guidSarnetUYVY};

    CSarnetFilter() : TNamedFilter(kPixelTypes) {}

    // IR: output data type 3 (or 12); video: 10 (or 12).
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    // IR: the header's counter word with its two bytes exchanged, as the
    // camera's readers take it (ParseBasicInfo does not exchange them).
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;
    bool HasFrameCounter(SGuid pixelType) const override;
    uint64_t FrameCounterMaxValue(SGuid pixelType) const override;

    bool hasCameraCounter = true;
};

} // namespace orv::reduce
