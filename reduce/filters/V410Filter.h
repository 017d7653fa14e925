#pragma once
// CV410Filter: frames of the V410 cameras and of the R7Q family, whose
// infrared frames carry the same measurement block.
//
// Groups of pixel types and what ParseFrame writes:
//   IR    V410 F7M0, FNM0, GigE, GigE flipped: width x height 16-bit pixels,
//         then an optional 32-byte GigE prefix, then the camera block
//         (output data type 3, or 12 for objects only)
//   MJLS  R7Q IR: a big-endian length L, L bytes of JPEG-LS, the camera block (3, 12)
//   BGR   packed 3-byte pixels, rows bottom first (10, 12)
//   MJPG  one JPEG image (10, 12)
//   UYVY, YUY2  4 bytes for 2 pixels (10, 12)
// The camera block's SBasicData fills the Ombria object parameters, factory
// calibration and camera info frame by frame.
//
// The camera trusts its frames; this filter does not. Every read of a block,
// a record or a prefix is bounded by frameSize, and every copy out by the
// sizes the caller gave: a frame too short for what it claims gives false.
#include <cstdint>

#include "reduce/filters/NamedFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CV410Filter : public TNamedFilter<CV410Filter, IFilter> {
public:
    static constexpr const char* kName = "V410";
    // guidMJPG is decoded when asked directly, but not claimed (PixelTypes.h).
    static constexpr SGuid kPixelTypes[] = {guidV410F7M0, guidV410FNM0, guidV410GIGE, guidV410GIGEFlip,
                                            guidV410UYVY, guidV410YUY2, guidV410BGR8, guidMJLSIR};
    // The word that starts a camera block, compared little-endian.
    static constexpr uint32_t kBlockMagic = 0x464646;
    static constexpr uint32_t kPrefixSize = 32;

    bool HasPixels(SGuid pixelType) const override;
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;
    bool StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                    uint16_t height, uint16_t subFrames, uint16_t subFrameIndex, void* out,
                    uint32_t outSize) override;
    bool CheckForTrigger(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                         uint16_t height, uint16_t subFrameIndex, uint8_t field, bool& triggered,
                         uint16_t& position) override;
    bool HasTime(SGuid pixelType) const override;
    bool HasFrameCounter(SGuid pixelType) const override;
    uint64_t FrameCounterMaxValue(SGuid pixelType) const override;
    bool GetTriggerFields(SGuid pixelType, TArray<CString>& names) const override;

    uint32_t frameCount = 0;        // one step per ParseFrame, 65535 wraps to 0
    bool hasMeasData = false;       // the last frame had a camera block
    bool hasCameraTime = false;     // the last frame's time came from the camera
    uint32_t lastTriggerCount = 0;  // CheckForTrigger's last trigger count
    bool lastTriggerCountValid = false;

private:
    void StepCounter() { frameCount = frameCount >= 65535 ? 0 : frameCount + 1; }
};

} // namespace orv::reduce
