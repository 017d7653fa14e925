#include "reduce/filters/MX515Filter.h"

#include "reduce/filters/BasicData.h"

namespace orv::reduce {

namespace {
// Geometry words the filter writes into the stored header.
constexpr TAt<uint16_t> kWidthAt{2}, kHeightAt{4}, kLastColumnAt{12}, kLastRowAt{16};
} // namespace

bool CMX515Filter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                              uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    SOmbriaFrameObjects o;
    unsigned char* header = nullptr;
    if (!BeginFrame(frame, pixelType, width, height, frameSize, pixels, objects, preset, o, header)) return false;
    if (header) {
        Put(header, kWidthAt, width);
        Put(header, kHeightAt, height);
        Put(header, kLastColumnAt, static_cast<uint16_t>(width - 1));
        Put(header, kLastRowAt, static_cast<uint16_t>(height - 1));
        const SBasicFields f = StoreHeader(o, header);
        o.info->valid = f.infoInvalid == 0;
        o.info->frame = frameCount++;
        hasCameraTime = true;
    } else {
        StoreVideoFrameInfo(o);
        hasCameraTime = false;
    }
    CopyPixels(frame, header != nullptr, width, height, pixels);
    return true;
}

bool CMX515Filter::ParseFrameCounter(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint64_t& counter)
{
    counter = frameCount;
    return true;
}

bool CMX515Filter::ParseBasicInfo(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                  uint32_t frameSize, uint8_t& preset, uint64_t& counter, CDateTime& time)
{
    preset = 0;
    counter = frameCount;
    return ParseTime(frame, pixelType, width, height, frameSize, time);
}

bool CMX515Filter::StoreFrame(const unsigned char* frame, uint32_t frameSize, SGuid pixelType, uint16_t width,
                              uint16_t height, uint16_t subFrames, uint16_t subFrameIndex, void* out,
                              uint32_t outSize)
{
    if (subFrames < 2) return IFilter::StoreFrame(frame, frameSize, pixelType, width, height, subFrames,
                                                  subFrameIndex, out, outSize);
    // The trailer must hold the time word: nothing is read or written outside it.
    constexpr uint64_t kMillisEnd = 908;
    uint64_t T = 0;
    unsigned char* t =
        CopySubFrame(frame, frameSize, width, height, subFrames, subFrameIndex, out, outSize, kMillisEnd, T);
    if (!t) return false;
    unsigned char* w = t + kMillisEnd - 4;
    uint32_t millis = uint32_t(w[0]) << 24 | uint32_t(w[1]) << 16 | uint32_t(w[2]) << 8 | w[3];
    millis += subFrameIndex * (33u / subFrames);
    w[0] = static_cast<unsigned char>(millis >> 24);
    w[1] = static_cast<unsigned char>(millis >> 16);
    w[2] = static_cast<unsigned char>(millis >> 8);
    w[3] = static_cast<unsigned char>(millis);
    return true;
}

bool CMX515Filter::HasFrameCounter(SGuid) const { return false; }
uint64_t CMX515Filter::FrameCounterMaxValue(SGuid) const { return 65535; }

} // namespace orv::reduce
