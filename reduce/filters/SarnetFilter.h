#pragma once
// CSarnetFilter: Sarnet cameras. Infrared frames (guidSarnetF7M0) are width x
// height 16-bit pixels with the 1148-byte SMX515Header right behind them; the
// video stream (guidSarnetUYVY) is UYVY. The header fills the same Ombria
// objects as the V410 camera block; no extra frame info entries are added.
//
// The header is put into our byte order in the frame's own memory, once: a
// second call finds its mark right. A frame too short to hold the header
// gives false from ParseFrame and is read as a frame without one by the peeks.
#include <cstdint>

#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CSarnetFilter : public TNamedFilter<CSarnetFilter, IFilter> {
public:
    static constexpr const char* kName = "Sarnet";
    static constexpr SGuid kPixelTypes[] = {guidSarnetF7M0, guidSarnetUYVY};

    bool HasPixels(SGuid pixelType) const override;
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;
    // IR: output data type 3 (or 12); video: 10 (or 12).
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    // IR: the header's counter word with its two bytes exchanged, as the
    // camera's readers take it (ParseBasicInfo does not exchange them).
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;
    bool HasTime(SGuid pixelType) const override;
    bool HasFrameCounter(SGuid pixelType) const override;
    uint64_t FrameCounterMaxValue(SGuid pixelType) const override;

    bool hasCameraCounter = true;
    uint16_t frameCount = 0; // video frames, wraps from 65535 to 0
};

} // namespace orv::reduce
