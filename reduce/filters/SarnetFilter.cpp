#include "reduce/filters/SarnetFilter.h"

#include <cstring>

#include "reduce/filters/BasicData.h"
#include "reduce/filters/PixelTypes.h"
#include "reduce/filters/Yuv.h"

namespace orv::reduce {

namespace {
constexpr TAt<uint16_t> kCounterAt{24};
constexpr TAt<uint16_t> kZeroedAt{22}; // cleared in every stored header
} // namespace

bool CSarnetFilter::HasPixels(SGuid pixelType) const { return pixelType == guidSarnetF7M0; }

bool CSarnetFilter::GetPixels(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t, uint32_t,
                              void** pixels, int& stride)
{
    if (pixelType != guidSarnetF7M0) return false;
    if (pixels) *pixels = frame;
    stride = width * 2;
    return true;
}

bool CSarnetFilter::ParseFrame(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                               uint32_t frameSize, STypedData pixels, CReduceObjectArray& objects, uint8_t& preset)
{
    const SOmbriaFrameObjects o = FetchOmbriaObjects(objects);
    preset = 0;
    if (!o.complete()) return false;
    // "No data" never receives pixels, whatever pointer comes with it.
    const bool wantPixels = pixels.data && pixels.type != dtNoData;
    const size_t n = size_t(width) * height;
    CFrameInfoReduceObject& info = *o.info;

    if (pixelType == guidSarnetF7M0) {
        if (pixels.type != dtUInt16 && pixels.type != dtNoData) return false;
        unsigned char* header = MX515HeaderOf(frame, frameSize, width, height);
        if (!header) return false;
        PutMX515HeaderInOrder(header);
        Put(header, kZeroedAt, 0);
        StoreCameraInfo(*o.camera, header, SMX515Header::kSize, nullptr);
        const SBasicFields f = MX515Fields(header);
        BasicDataToObjectParameters(f, *o.params);
        BasicDataToFactoryCal(f, *o.cal);
        info.preset = 0;
        info.extra.Clear();
        info.time = BasicDataTime(f.seconds, f.millis);
        info.timeSource = timeSourceCamera;
        info.valid = true;
        info.frame = f.frameCounter;
        hasCameraCounter = true;
        if (wantPixels) std::memcpy(pixels.data, frame, n * 2);
        return true;
    }
    if (pixelType != guidSarnetUYVY) return false;
    if (pixels.type != dtRGB24 && pixels.type != dtNoData) return false;
    // A frame too short for its pixels fails before anything changes.
    if (wantPixels && (!frame || uint64_t(n / 2) * 4 > frameSize)) return false;
    o.cal->valid = false;
    o.camera->valid = false;
    info.Default();
    info.preset = 0;
    info.valid = true;
    info.time = CDateTime::Now();
    info.timeSource = timeSourcePC;
    info.extra.Clear();
    info.frame = frameCount++;
    hasCameraCounter = false;
    if (wantPixels) UYVYToRGB(static_cast<unsigned char*>(pixels.data), frame, n / 2);
    return true;
}

bool CSarnetFilter::ParsePreset(unsigned char*, SGuid, uint16_t, uint16_t, uint32_t, uint8_t& preset)
{
    preset = 0;
    return true;
}

bool CSarnetFilter::ParseTime(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                              uint32_t frameSize, CDateTime& time)
{
    unsigned char* header = pixelType == guidSarnetF7M0 ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
    if (!header) {
        time = CDateTime::Now();
        return true;
    }
    PutMX515HeaderInOrder(header);
    const SBasicFields f = MX515Fields(header);
    time = BasicDataTime(f.seconds, f.millis);
    return true;
}

bool CSarnetFilter::ParseFrameCounter(unsigned char* frame, SGuid pixelType, uint16_t width, uint16_t height,
                                      uint32_t frameSize, uint64_t& counter)
{
    const unsigned char* header =
        pixelType == guidSarnetF7M0 ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
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
    unsigned char* header = pixelType == guidSarnetF7M0 ? MX515HeaderOf(frame, frameSize, width, height) : nullptr;
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

bool CSarnetFilter::HasTime(SGuid pixelType) const { return pixelType == guidSarnetF7M0; }
bool CSarnetFilter::HasFrameCounter(SGuid pixelType) const { return pixelType == guidSarnetF7M0; }
uint64_t CSarnetFilter::FrameCounterMaxValue(SGuid) const { return 65535; }

} // namespace orv::reduce
