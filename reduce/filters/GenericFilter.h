#pragma once
// CGenericFilter: frames that are bare pixels, without any camera header,
// with the geometry of the recording's CSourceInfoReduceObject. Claims the
// root types pixelGrayscale, pixelRGB and pixelYUV themselves (not the types
// derived from them).
#include <cstdint>

#include "reduce/filters/NamedFilter.h"

namespace orv::reduce {

class CGenericFilter : public TNamedFilter<CGenericFilter, IFilter> {
public:
    static constexpr const char* kName = "Generic";
    // The camera table has no row of this filter's own: the roots it claims
    // come with the base library.
    static constexpr SGuid kPixelTypes[] = {pixelGrayscale, pixelRGB, pixelYUV};

    bool HasPixels(SGuid pixelType) const override;
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;

    // Output types: 1 (bytes copied as they are) or 3 for grayscale types, 10
    // for exactly pixelRGB or pixelYUV, or 12 with a null pointer for objects
    // only. Fills the preset 0 frame info: frame number from the counter,
    // which then advances, time now from the PC, extra entries cleared.
    bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    // The counter's present value; only ParseFrame advances it.
    bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, uint64_t& counter) override;
    bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                        uint8_t& preset, uint64_t& counter, CDateTime& time) override;

    uint16_t frameCounter() const { return m_frameCounter; }
    void setFrameCounter(uint16_t value) { m_frameCounter = value; }

protected:
    // The preset 0 frame info of a frame without a camera header: frame
    // number from the counter, which then advances, time now from the PC,
    // extra entries cleared. For the filters of bare frames built on this one.
    void NextFrameInfo(CReduceObjectArray& objects);

private:
    uint16_t m_frameCounter = 0; // wraps from 65535 to 0
};

} // namespace orv::reduce
