#pragma once
// CMX515Filter: MX515 cameras. Infrared frames (guidMX515F7M2) carry the
// 1148-byte SMX515Header behind the pixels, as Sarnet frames do; the screen
// and video streams (guidMX515F7M3, guidMX515UYVY) are UYVY. Frame numbers
// are counted in software for every type.
//
// The header is put into our byte order in the frame's own memory, once. A
// frame too short to hold the header gives false from ParseFrame and is read
// as a frame without one by the peeks.
#include <cstdint>

#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CMX515Filter : public TNamedFilter<CMX515Filter, IFilter> {
public:
    static constexpr const char* kName = "MX515";
    static constexpr SGuid kPixelTypes[] = {guidMX515F7M2, guidMX515F7M3, guidMX515UYVY};

    bool HasPixels(SGuid pixelType) const override;
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    // frameCount for every type; nothing advances it here.
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;
    // Sub-frames as the V410 filter splits them; the stored header's
    // millisecond word, still big-endian as recorded, moves forward by the
    // sub-frame's share of a 33 ms frame.
    bool StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                    uint16_t height, uint16_t subFrames, uint16_t subFrameIndex, void* out,
                    uint32_t outSize) override;
    bool HasTime(SGuid pixelType) const override;
    // False, although ParseFrameCounter answers: the camera has no counter.
    bool HasFrameCounter(SGuid pixelType) const override;
    uint64_t FrameCounterMaxValue(SGuid pixelType) const override;

    uint16_t frameCount = 0; // wraps from 65535 to 0
    bool hasCameraTime = false;
};

} // namespace orv::reduce
