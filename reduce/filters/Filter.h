#pragma once
// IFilter: the decoder of one camera family's raw frames. Given one frame as
// stored in a recording it finds the pixels, the frame counter, the time, the
// preset and the per-frame measurement data, and moves them into the caller's
// object array and pixel buffer.
//
// Every operation takes the same leading arguments in the same order: the raw
// frame (never owned by the filter), the recording's pixel type, the frame's
// width and height in pixels as the recording declares them, and the number
// of bytes at frame.
//
// A filter keeps nothing about a recording but a few counters, which count
// calls: one instance serves one sequential reader.
#include <cstdint>

#include "orv/Array.h"
#include "orv/DateTime.h"
#include "orv/String.h"
#include "orv/Types.h"
#include "reduce/store/ReduceObjectArray.h"

namespace orv::reduce {

// Presets are numbered 0 to 7; CountPresets' counts has one slot for each.
inline constexpr unsigned kMaxFilterPresets = 8;

class IFilter {
public:
    virtual ~IFilter() = default;

    // The name the factory knows the filter by.
    virtual const char* GetName() const = 0;

    // True if the raw frame holds plain pixels in place.
    virtual bool HasPixels(SGuid pixelType) const = 0;
    // Address of the first pixel inside the frame and the row stride in
    // bytes, without a copy. A filter whose pixels need decoding sets null
    // and 0 and returns false.
    virtual bool GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                           void** pixels, int& stride) = 0;

    // The full decoder: always fills the frame's reduce objects, writes pixels
    // only when pixels.data is not null. A data type the filter does not
    // accept fails without touching a pixel.
    virtual bool ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                            uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset);
    // ParseFrame without pixels. No filter overrides it.
    virtual bool ParseReduceObjects(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                    uint32_t frameSize, CReduceObjectArray& objects, uint8_t& preset);

    // Cheap peeks that build no objects.
    virtual bool ParsePreset(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                             uint32_t frameSize, uint8_t& preset);
    virtual bool ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                           uint32_t frameSize, CDateTime& time) = 0;
    virtual bool ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                   uint32_t frameSize, uint64_t& counter);
    // The three peeks in one.
    virtual bool ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time) = 0;

    // Copies a raw frame into a recording's frame slot. subFrames is the
    // number of frames the camera packed into one (1 when none), subFrameIndex
    // the one to store. The default copies min(frameSize, outSize) bytes.
    virtual bool StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                            uint16_t height, uint16_t subFrames, uint16_t subFrameIndex, void* out,
                            uint32_t outSize);
    // Tests trigger field `field` (an index into GetTriggerFields). The
    // default reports no trigger at position 0 and succeeds.
    virtual bool CheckForTrigger(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                                 uint16_t height, uint16_t subFrameIndex, uint8_t field, bool& triggered,
                                 uint16_t& position);

    virtual bool HasTime(SGuid pixelType) const;
    virtual bool HasFrameCounter(SGuid pixelType) const;
    virtual uint64_t FrameCounterMaxValue(SGuid pixelType) const;
    virtual bool GetTriggerFields(SGuid pixelType, TArray<CString>& names) const;

    // For a pass over a whole recording: adds 1 to counts[preset] of the
    // frame. counts has kMaxFilterPresets slots.
    virtual bool CountPresets(unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                              uint16_t height, uint16_t subFrameIndex, uint32_t* counts);

    // Families whose frames carry a camera header that is stored by itself.
    virtual bool HasHeader(SGuid pixelType) const;
    virtual bool GetHeaderInfo(SGuid pixelType, uint16_t width, uint16_t height, uint32_t frameSize,
                               SGuid& headerType, uint32_t& headerSize) const;
    virtual bool ExtractHeader(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                               uint32_t frameSize, void* out, uint32_t outSize);

    // Hooks for a filter's private settings.
    virtual bool GetConfigSize(SGuid pixelType, uint32_t& size) const;
    virtual bool SetConfig(SGuid pixelType, const void* data, uint32_t size);
    virtual bool GetConfig(SGuid pixelType, void* data, uint32_t size) const;
};

} // namespace orv::reduce
