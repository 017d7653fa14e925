#include "reduce/filters/SarnetFilter.h"

#include "reduce/filters/BasicData.h"

namespace orv::reduce {

namespace {
constexpr TAt<uint16_t> kCounterAt{24};
constexpr TAt<uint16_t> kZeroedAt{22}; // cleared in every stored header
} // namespace

bool CSarnetFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                               uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    SOmbriaFrameObjects o;
    unsigned char* header = nullptr;
    if (!BeginFrame(frame, pixelType, width, height, frameSize, pixels, objects, preset, o, header)) return false;
    if (header) {
        Put(header, kZeroedAt, 0);
        const SBasicFields f = StoreHeader(o, header);
        o.info->valid = true;
        o.info->frame = f.frameCounter;
        hasCameraCounter = true;
    } else {
        o.info->Default();
        StoreVideoFrameInfo(o);
        hasCameraCounter = false;
    }
    CopyPixels(frame, header != nullptr, width, height, pixels);
    return true;
}

bool CSarnetFilter::ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                      uint32_t frameSize, uint64_t& counter)
{
    const unsigned char* header = IsInfrared(pixelType) ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
    if (header) {
        const uint16_t word = Get(header, kCounterAt);
        counter = uint16_t(word << 8 | word >> 8);
        hasCameraCounter = true;
    } else {
        counter = frameCount;
        hasCameraCounter = false;
    }
    return true;
}

bool CSarnetFilter::ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                   uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time)
{
    preset = 0;
    unsigned char* header = IsInfrared(pixelType) ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
    if (!header) {
        counter = 0;
        time = CDateTime::Now();
        return true;
    }
    PutMX515HeaderInOrder(header);
    const SBasicFields f = MX515Fields(header);
    counter = f.frameCounter;
    time = BasicDataTime(f.seconds, f.millis);
    return true;
}

bool CSarnetFilter::HasFrameCounter(SGuid pixelType) const { return IsInfrared(pixelType); }
uint64_t CSarnetFilter::FrameCounterMaxValue(SGuid) const { return 65535; }

} // namespace orv::reduce
