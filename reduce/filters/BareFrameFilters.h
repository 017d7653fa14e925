#pragma once
// The filters of the Kordan, Velmar, Ostrel and Brennic camera families.
//
// Their camera headers are not decoded: no camera frame counter, time,
// preset or measurement value is read from a frame. Each frame is taken as
// bare unsigned 16-bit pixels with the geometry of the recording's source
// info, exactly as CGenericFilter takes a grayscale frame (the source info's
// offset skips a header row, adBitShift and adBits pick the pixel bits). The
// frame number counts parsed frames, the time is the PC's and the preset is 0.
//
// Each filter accepts its family's pixel type and pixelGrayscale. The stored
// header types of Brennic and Ostrel (guidBRGHdr, guidOSTHdr) are claimed so
// that such a recording finds its family, but without a header layout there
// is nothing to read from them: every operation on them returns false.
#include "orv/PixelType.h"
#include "reduce/filters/GenericFilter.h"
#include "reduce/filters/PixelTypes.h"

namespace orv::reduce {

class CBareFrameFilter : public CGenericFilter {
public:
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

protected:
    explicit CBareFrameFilter(SGuid frameType) : m_frameType(frameType) {}

private:
    bool Known(SGuid pixelType) const { return pixelType == m_frameType || pixelType == pixelGrayscale; }

    SGuid m_frameType;
};

class CKordanFilter : public TNamedFilter<CKordanFilter, CBareFrameFilter> {
public:
    static constexpr const char* kName = "Kordan";
    static constexpr SGuid kPixelTypes[] = {guidKordan};
    CKordanFilter() : TNamedFilter(guidKordan) {}
};

class CVelmarFilter : public TNamedFilter<CVelmarFilter, CBareFrameFilter> {
public:
    static constexpr const char* kName = "Velmar";
    static constexpr SGuid kPixelTypes[] = {guidVelmar};
    CVelmarFilter() : TNamedFilter(guidVelmar) {}
};

class COstrelFilter : public TNamedFilter<COstrelFilter, CBareFrameFilter> {
public:
    static constexpr const char* kName = "Ostrel";
    static constexpr SGuid kPixelTypes[] = {guidOST, guidOSTHdr};
    COstrelFilter() : TNamedFilter(guidOST) {}
};

class CBrennicFilter : public TNamedFilter<CBrennicFilter, CBareFrameFilter> {
public:
    static constexpr const char* kName = "Brennic";
    static constexpr SGuid kPixelTypes[] = {guidBRG, guidBRGHdr};
    CBrennicFilter() : TNamedFilter(guidBRG) {}
};

} // namespace orv::reduce
