#pragma once
// CMX515HeaderFilter: what the Sarnet and MX515 filters share. A filter's
// first claimed type is infrared: width x height 16-bit pixels with the
// 1148-byte SMX515Header right behind them; its other types are UYVY video.
//
// The header is put into our byte order in the frame's own memory, once: a
// second call finds its mark right. A frame too short to hold the header
// gives false from ParseFrame and is read as a frame without one by the peeks.
#include <cstdint>
#include <span>

#include "reduce/filters/Filter.h"

namespace orv::reduce {

struct SBasicFields;
struct SOmbriaFrameObjects;

class CMX515HeaderFilter : public IFilter {
public:
    bool HasPixels(SGuid pixelType) const override;
    bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   void** pixels, int& stride) override;
    bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                     uint8_t& preset) override;
    // The header's time; the PC's for video and for a frame without a header.
    bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                   CDateTime& time) override;
    bool HasTime(SGuid pixelType) const override;

    uint16_t frameCount = 0; // frames counted in software, wraps from 65535 to 0

protected:
    // types: the filter's claimed types, infrared first. Kept, not copied.
    explicit CMX515HeaderFilter(std::span<const SGuid> types) : m_types(types) {}

    // The head of ParseFrame: the four objects, made also for a frame that
    // fails, preset 0, and every test before anything changes: a claimed type,
    // 16-bit output for infrared and RGB for video (or no data), the header
    // inside the frame, a video frame long enough for its pixels. header is
    // the infrared frame's header, put in our order; null for video.
    bool BeginFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                    STypedData pixels, CReduceObjectArray& objects, uint8_t& preset, SOmbriaFrameObjects& o,
                    unsigned char*& header) const;
    // The header into the objects: camera info, object parameters, factory
    // calibration, and the frame info's preset 0, time and no extra entries.
    // The frame number and validity are the caller's.
    static SBasicFields StoreHeader(const SOmbriaFrameObjects& o, const unsigned char* header);
    // A video frame: no calibration or camera info, the PC's time, the next
    // software frame number.
    void StoreVideoFrameInfo(const SOmbriaFrameObjects& o);
    // The pixels, when pixels asks for them: infrared copied, video from UYVY.
    static void CopyPixels(const unsigned char* frame, bool infrared, uint16_t width, uint16_t height,
                           STypedData pixels);

    bool IsInfrared(SGuid pixelType) const { return pixelType == m_types.front(); }
    bool IsVideo(SGuid pixelType) const;

private:
    std::span<const SGuid> m_types;
};

} // namespace orv::reduce
