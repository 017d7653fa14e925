#include "reduce/filters/MX515Filter.h"

#include <cstring>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/Yuv.h"

namespace orv::reduce {

namespace {
// Geometry words the filter writes into the stored header.
constexpr TAt<uint16_t> kWidthAt{2}, kHeightAt{4}, kLastColumnAt{12}, kLastRowAt{16};

bool IsVideo(SGuid t) { return t == guidMX515F7M3 || t == guidMX515UYVY; }
} // namespace

bool CMX515Filter::HasPixels(SGuid pixelType) const { return pixelType == guidMX515F7M2; }

bool CMX515Filter::GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t, uint32_t,
                             void** pixels, int& stride)
{
    if (pixelType != guidMX515F7M2) return false;
    if (pixels) *pixels = frame;
    stride = width * 2;
    return true;
}

bool CMX515Filter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                              uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    const SOmbriaFrameObjects o = FetchOmbriaObjects(objects);
    preset = 0;
    if (!o.complete()) return false;
    // "No data" never receives pixels, whatever pointer comes with it.
    const bool wantPixels = pixels.data && pixels.type != dtNoData;
    const size_t n = size_t(width) * height;
    CFrameInfoReduceObject& info = *o.info;

    if (pixelType == guidMX515F7M2) {
        if (pixels.type != dtUInt16 && pixels.type != dtNoData) return false;
        unsigned char* header = MX515HeaderOf(frame, frameSize, width, height);
        if (!header) return false;
        PutMX515HeaderInOrder(header);
        Put(header, kWidthAt, width);
        Put(header, kHeightAt, height);
        Put(header, kLastColumnAt, static_cast<uint16_t>(width - 1));
        Put(header, kLastRowAt, static_cast<uint16_t>(height - 1));
        StoreCameraInfo(*o.camera, header, SMX515Header::kSize, nullptr);
        const SBasicFields f = MX515Fields(header);
        BasicDataToObjectParameters(f, *o.params);
        BasicDataToFactoryCal(f, *o.cal);
        info.preset = 0;
        info.extra.Clear();
        info.time = BasicDataTime(f.seconds, f.millis);
        info.timeSource = timeSourceCamera;
        info.valid = f.infoInvalid == 0;
        info.frame = frameCount++;
        hasCameraTime = true;
        if (wantPixels) std::memcpy(pixels.data, frame, n * 2);
        return true;
    }
    if (!IsVideo(pixelType)) return false;
    if (pixels.type != dtRGB24 && pixels.type != dtNoData) return false;
    // A frame too short for its pixels fails before anything changes.
    if (wantPixels && (!frame || uint64_t(n / 2) * 4 > frameSize)) return false;
    o.cal->valid = false;
    o.camera->valid = false;
    info.preset = 0;
    info.valid = true;
    info.time = CDateTime::Now();
    info.timeSource = timeSourcePC;
    info.extra.Clear();
    info.frame = frameCount++;
    hasCameraTime = false;
    if (wantPixels) UYVYToRGB(static_cast<unsigned char*>(pixels.data), frame, n / 2);
    return true;
}

bool CMX515Filter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return true;
}

bool CMX515Filter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                             uint32_t frameSize, CDateTime& time)
{
    unsigned char* header = pixelType == guidMX515F7M2 ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
    if (!header) {
        time = CDateTime::Now();
        return true;
    }
    PutMX515HeaderInOrder(header);
    const SBasicFields f = MX515Fields(header);
    time = BasicDataTime(f.seconds, f.millis);
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
    const uint64_t S = uint64_t(width) * height * 2;
    if (S * subFrames > frameSize || (uint64_t(subFrameIndex) + 1) * S > frameSize) return false;
    const uint64_t T = frameSize - S * subFrames;
    // The slot must hold the sub-frame and the trailer, and the trailer the
    // time word: nothing is read or written outside either.
    constexpr uint64_t kMillisEnd = 908;
    if (!out || S + T > outSize || T < kMillisEnd) return false;
    auto* o = static_cast<unsigned char*>(out);
    std::memcpy(o, frame + subFrameIndex * S, S);
    std::memcpy(o + S, frame + S * subFrames, T);
    unsigned char* w = o + S + kMillisEnd - 4;
    uint32_t millis = uint32_t(w[0]) << 24 | uint32_t(w[1]) << 16 | uint32_t(w[2]) << 8 | w[3];
    millis += subFrameIndex * (33u / subFrames);
    w[0] = static_cast<unsigned char>(millis >> 24);
    w[1] = static_cast<unsigned char>(millis >> 16);
    w[2] = static_cast<unsigned char>(millis >> 8);
    w[3] = static_cast<unsigned char>(millis);
    return true;
}

bool CMX515Filter::HasTime(SGuid pixelType) const { return pixelType == guidMX515F7M2; }
bool CMX515Filter::HasFrameCounter(SGuid) const { return false; }
uint64_t CMX515Filter::FrameCounterMaxValue(SGuid) const { return 65535; }

} // namespace orv::reduce
