#pragma once
// CMX515Filter: MX515 cameras. Infrared frames (guidMX515F7M2) carry the
// 1148-byte SMX515Header behind the pixels, as Sarnet frames do
// (CMX515HeaderFilter); the screen and video streams (guidMX515F7M3,
// guidMX515UYVY) are UYVY. Frame numbers are counted in software for every
// type.
#include <cstdint>

#include "reduce/filters/MX515HeaderFilter.h"
#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CMX515Filter : public TNamedFilter<CMX515Filter, CMX515HeaderFilter> {
public:
    static constexpr const char* kName = "MX515";
    static constexpr SGuid kPixelTypes[] = {guidMX515F7M2, guidMX515F7M3, guidMX515UYVY};

    CMX515Filter() : TNamedFilter(kPixelTypes) {}

    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
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
    // False, although ParseFrameCounter answers: the camera has no counter.
    bool HasFrameCounter(SGuid pixelType) const override;
    uint64_t FrameCounterMaxValue(SGuid pixelType) const override;

    bool hasCameraTime = false;
};

} // namespace orv::reduce
